// Memory for an environment that knows how much of it is out.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "xelcsv/XelEnv.h"

namespace bench {

class CountingAllocator : public XelAllocator {
 public:
  void* allocate(long size) override {
    used += size;
    peak = std::max(peak, used);
    return std::malloc(static_cast<std::size_t>(size));
  }
  void free(void* pointer, long size) override {
    used -= size;
    std::free(pointer);
  }

  // Bytes that are out, as they were asked for.
  long getBytesInUse() const { return used; }

  // The most that ever were.
  long getPeak() const { return peak; }

 private:
  long used = 0;
  long peak = 0;
};

}  // namespace bench
