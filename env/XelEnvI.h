// Implementation of an environment: a user's allocator, or a memory manager of its own.
#pragma once

#include "env/XelMemory.h"
#include "xelcsv/XelEnv.h"

class XelEnvI {
 public:
  // A new environment. It lives in the user's allocator when there is one, else in the system's memory.
  // Throws std::bad_alloc.
  static XelEnvI* make(XelAllocator* allocator);

  // Ends an environment of make().
  static void destroy(XelEnvI* environment) noexcept;

  // As the operations of XelEnv.
  void* allocate(long size);
  void free(void* pointer, long size) noexcept;
  long getBytesInUse() const noexcept { return memory.getBytesInUse(); }
  long getBytesAllocated() const noexcept { return memory.getBytesAllocated(); }

  // The allocator for the storage of arrays; it lives as long as the environment.
  XelGenAlloc* getGenAlloc() noexcept { return &genAlloc; }

 private:
  class GenAlloc final : public XelGenAlloc {
   public:
    explicit GenAlloc(XelEnvI* environment) noexcept : env(environment) {}
    void* allocate(long size) override { return env->allocate(size); }
    void free(void* block, long size) noexcept override { env->free(block, size); }

   private:
    XelEnvI* env;
  };

  explicit XelEnvI(XelAllocator* allocator) noexcept : user(allocator), genAlloc(this) {}

  XelAllocator* user;
  XelMemory memory;
  GenAlloc genAlloc;
};
