// A guard for handles, as your own program may have one.
#pragma once

#include <utility>

// Owner of a handle (XelEnv, XelCsvReader, a table from getTableByName): ends it at the end of the scope, on every way
// out. Declared after what the handle needs, it is ended before it.
template <class Handle>
class Owned {
 public:
  template <class... Arguments>
  explicit Owned(Arguments&&... arguments) : handle(std::forward<Arguments>(arguments)...) {}
  ~Owned() { handle.end(); }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;

  Handle& operator*() { return handle; }
  Handle* operator->() { return &handle; }

 private:
  Handle handle;
};
