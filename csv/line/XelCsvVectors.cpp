#include "csv/line/XelCsvVectors.h"

#include <algorithm>
#include <atomic>
#include <initializer_list>

namespace {

// Zero until the level is first asked for: one more than the level.
std::atomic<int> levelInUse{0};

}  // namespace

XelVectorLevel XelGetBestVectorLevel() noexcept {
#if XELCSV_HAS_VECTORS
  // Machines with the first of these have the others, unless something hides them.
  for (const bool has :
       {static_cast<bool>(__builtin_cpu_supports("avx2")), static_cast<bool>(__builtin_cpu_supports("bmi")),
        static_cast<bool>(__builtin_cpu_supports("popcnt"))}) {
    if (!has) return XelVectorLevel::Bytes16;
  }
  return XelVectorLevel::Bytes32;
#else
  return XelVectorLevel::Plain;
#endif
}

XelVectorLevel XelGetVectorLevel() noexcept {
  const int level = levelInUse.load(std::memory_order_relaxed);
  if (level > 0) return static_cast<XelVectorLevel>(level - 1);
  XelSetVectorLevel(XelGetBestVectorLevel());
  return XelGetBestVectorLevel();
}

void XelSetVectorLevel(XelVectorLevel level) noexcept {
  levelInUse.store(1 + static_cast<int>(std::min(level, XelGetBestVectorLevel())), std::memory_order_relaxed);
}
