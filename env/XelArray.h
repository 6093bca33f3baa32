// Growable array in an environment, in the order of insertion.
#pragma once

#include <type_traits>

#include "env/XelArrayI.h"
#include "env/XelEnvI.h"

// An array of pointers or integers. A handle of one pointer; copies share the array, end() destroys it. Strings that
// the elements point to belong to whoever added them.
template <class T>
class XelArray {
  static_assert(std::is_trivially_copyable_v<T> && sizeof(T) == sizeof(void*), "elements have the width of a pointer");

 public:
  // An empty handle: no array.
  XelArray() = default;

  // A new array of size elements, all zero. Throws std::bad_alloc.
  XelArray(XelEnv env, long size)
      : impl(new (env) XelArrayI(env.getImpl()->getGenAlloc(), size, static_cast<long>(sizeof(T)))) {}

  // Appends a value. A throw leaves the array as it was. Throws std::bad_alloc.
  //
  // Kept: the room is asked for one element ahead of the slot that is written, so the array grows one element early
  // (test: XelArray.GrowsOneElementEarly).
  void add(T value) const {
    const long oldSize = impl->getSize();
    const long newSize = oldSize + 1;
    if (impl->getCapacity() <= newSize) impl->grow(newSize);
    impl->setSize(newSize);
    (*this)[oldSize] = value;
  }

  // Element index, 0 <= index < getSize(); not checked.
  T& operator[](long index) const noexcept { return *static_cast<T*>(impl->getElement(index)); }

  long getSize() const noexcept { return impl->getSize(); }

  // No element is left; the array stays usable.
  void clear() const noexcept { impl->clear(); }

  // Destroys the array. The handle is empty afterwards; twice is harmless.
  void end() noexcept {
    delete impl;
    impl = nullptr;
  }

  // The array behind the handle, null for an empty one.
  XelArrayI* getImpl() const noexcept { return impl; }

 private:
  XelArrayI* impl = nullptr;
};
