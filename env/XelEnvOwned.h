// Guards of environment memory: whatever is taken goes back on every way out.
#pragma once

#include <cstring>
#include <utility>

#include "env/XelEnvObjectI.h"
#include "xelcsv/XelEnv.h"

// A block of count elements of plain type T, given back with its size. Move-only.
template <class T>
class XelEnvBlock {
 public:
  // No block.
  XelEnvBlock() noexcept = default;

  // A new block, its elements not set; no block for count 0. Throws std::bad_alloc.
  XelEnvBlock(XelEnv environment, long elements)
      : env(environment), data(static_cast<T*>(env.allocate(elements * Width))), count(elements) {}

  // Owns an existing block of count elements from env.
  XelEnvBlock(XelEnv environment, T* block, long elements) noexcept : env(environment), data(block), count(elements) {}

  XelEnvBlock(XelEnvBlock&& other) noexcept : env(other.env), data(other.data), count(other.count) {
    other.data = nullptr;
  }

  XelEnvBlock& operator=(XelEnvBlock&& other) noexcept {
    std::swap(env, other.env);
    std::swap(data, other.data);
    std::swap(count, other.count);
    return *this;
  }

  ~XelEnvBlock() {
    if (data != nullptr) env.free(data, count * Width);
  }

  T* get() const noexcept { return data; }
  T& operator[](long index) const noexcept { return data[index]; }
  long getCount() const noexcept { return data == nullptr ? 0 : count; }

  // The block passes to the caller.
  T* release() noexcept { return std::exchange(data, nullptr); }

 private:
  static constexpr long Width = static_cast<long>(sizeof(T));

  XelEnv env = nullptr;
  T* data = nullptr;
  long count = 0;
};

// One object that lives in an environment; deleted by the guard. Move-only.
template <class T>
class XelEnvOwner {
 public:
  XelEnvOwner() = default;
  explicit XelEnvOwner(T* owned) noexcept : object(owned) {}
  template <class U>
  XelEnvOwner(XelEnvOwner<U>&& other) noexcept : object(other.release()) {}
  XelEnvOwner(XelEnvOwner&& other) noexcept : object(other.release()) {}
  XelEnvOwner& operator=(XelEnvOwner&& other) noexcept {
    std::swap(object, other.object);
    return *this;
  }
  ~XelEnvOwner() { delete object; }

  T* get() const noexcept { return object; }
  T* operator->() const noexcept { return object; }
  T& operator*() const noexcept { return *object; }

  // The object passes to the caller.
  T* release() noexcept { return std::exchange(object, nullptr); }

 private:
  T* object = nullptr;
};

// A new object in an environment, owned. A throwing constructor gives the memory back. Throws std::bad_alloc.
template <class T, class... Arguments>
XelEnvOwner<T> XelNew(XelEnv env, Arguments&&... arguments) {
  return XelEnvOwner<T>(new (env) T(std::forward<Arguments>(arguments)...));
}

// A copy of length bytes of text and a terminator, in a block of exactly length + 1 bytes. Throws std::bad_alloc.
inline XelEnvBlock<char> XelCopyString(XelEnv env, const char* text, long length) {
  XelEnvBlock<char> copy(env, length + 1);
  if (length > 0) std::memcpy(copy.get(), text, static_cast<std::size_t>(length));
  copy[length] = '\0';
  return copy;
}

inline XelEnvBlock<char> XelCopyString(XelEnv env, const char* text) {
  return XelCopyString(env, text, static_cast<long>(std::strlen(text)));
}

// Gives back a block of count elements of plain type T; null is ignored.
template <class T>
void XelFree(XelEnv env, T* block, long count = 1) noexcept {
  env.free(block, count * static_cast<long>(sizeof(T)));
}

// Gives back a string in a block of its length + 1 bytes; null is ignored.
inline void XelFreeString(XelEnv env, const char* text) noexcept {
  if (text != nullptr) XelFree(env, const_cast<char*>(text), static_cast<long>(std::strlen(text)) + 1);
}
