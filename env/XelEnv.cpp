#include "xelcsv/XelEnv.h"

#include <cassert>
#include <cerrno>
#include <limits>
#include <new>

#include "env/XelEnvI.h"

XelAllocator::~XelAllocator() = default;

XelEnvI* XelEnvI::make(XelAllocator* allocator) {
  if (allocator == nullptr) return new XelEnvI(nullptr);
  void* memory = allocator->allocate(static_cast<long>(sizeof(XelEnvI)));
  if (memory == nullptr) throw std::bad_alloc();
  return new (memory) XelEnvI(allocator);
}

void XelEnvI::destroy(XelEnvI* environment) noexcept {
  XelAllocator* allocator = environment->user;
  if (allocator == nullptr) {
    delete environment;
    return;
  }
  environment->~XelEnvI();
  allocator->free(environment, static_cast<long>(sizeof(XelEnvI)));
}

void* XelEnvI::allocate(long size) {
  if (size == 0) return nullptr;
  if (size < 0) throw std::bad_alloc();
  // Whoever opened a file asks errno about it after buffers were taken and given back.
  const int error = errno;
  void* block = user == nullptr ? memory.allocate(size) : user->allocate(size);
  if (block == nullptr) throw std::bad_alloc();
  errno = error;
  return block;
}

void XelEnvI::free(void* pointer, long size) noexcept {
  if (pointer == nullptr || size <= 0) return;
  if (user == nullptr) {
    memory.free(pointer, size);
    return;
  }
  const int error = errno;
  user->free(pointer, size);
  errno = error;
}

XelEnv::XelEnv() : impl(XelEnvI::make(nullptr)) {}

XelEnv::XelEnv(XelAllocator* allocator) : impl(XelEnvI::make(allocator)) {}

XelEnv::XelEnv(std::nullptr_t) : impl(nullptr) {}

XelEnv::XelEnv(XelEnvI* environment) : impl(environment) {}

void XelEnv::end() {
  if (impl == nullptr) return;
  XelEnvI::destroy(impl);
  impl = nullptr;
}

void* XelEnv::allocate(long size) const {
  assert(impl != nullptr);
  return impl->allocate(size);
}

void XelEnv::free(void* pointer, long size) const {
  assert(impl != nullptr || pointer == nullptr);
  if (pointer != nullptr) impl->free(pointer, size);
}

long XelEnv::getBytesInUse() const {
  assert(impl != nullptr);
  return impl->getBytesInUse();
}

long XelEnv::getBytesAllocated() const {
  assert(impl != nullptr);
  return impl->getBytesAllocated();
}

bool XelEnv::isEmpty() const { return impl == nullptr; }

double XelGetInfinity() { return std::numeric_limits<double>::infinity(); }
