// A guard for the library's handles.
#pragma once

#include <utility>

namespace xeltools {

// Owner of a handle (environment, reader, table): ends it at the end of the scope, on every way out. Declared after what
// the handle needs, it is ended before it.
template <class Handle>
class Owned {
 public:
  template <class... Arguments>
  explicit Owned(Arguments&&... arguments) : handle(std::forward<Arguments>(arguments)...) {}
  ~Owned() { handle.end(); }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;

  Handle& operator*() { return handle; }
  const Handle& operator*() const { return handle; }
  Handle* operator->() { return &handle; }
  const Handle* operator->() const { return &handle; }

 private:
  Handle handle;
};

}  // namespace xeltools
