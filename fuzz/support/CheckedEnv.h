// An environment that watches what an input does with memory and files.
#pragma once

#include <unordered_map>

#include "xelcsv/XelEnv.h"

namespace fuzz {

// Gives out blocks of exactly the size asked for, filled with a pattern, checks every size given back, and can be told to
// fail.
class CheckedAllocator : public XelAllocator {
 public:
  CheckedAllocator() = default;
  ~CheckedAllocator() override;
  CheckedAllocator(const CheckedAllocator&) = delete;
  CheckedAllocator& operator=(const CheckedAllocator&) = delete;

  void* allocate(long size) override;
  void free(void* pointer, long size) override;

  // The allocation number countdown from now (0: the next one) fails; with always set, all after it fail too.
  void failAfter(long countdown, bool always);
  void neverFail() { countdown = -1; }

  // Allocations that failed since failAfter().
  long getFailures() const { return failures; }
  long getBlocksOut() const { return static_cast<long>(sizes.size()); }

 private:
  std::unordered_map<void*, long> sizes;
  long countdown = -1;
  bool failAlways = false;
  long failures = 0;
};

// An environment over a CheckedAllocator. At its end no block may be out, and as many files open as at its beginning.
class CheckedEnv {
 public:
  CheckedEnv();
  ~CheckedEnv();
  CheckedEnv(const CheckedEnv&) = delete;
  CheckedEnv& operator=(const CheckedEnv&) = delete;

  operator XelEnv() const { return env; }
  CheckedAllocator& getAllocator() { return allocator; }

 private:
  long openFiles;
  CheckedAllocator allocator;
  XelEnv env;
};

}  // namespace fuzz
