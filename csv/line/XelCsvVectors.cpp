#include "csv/line/XelCsvVectors.h"

#include <algorithm>
#include <atomic>

namespace {

// Zero until the level is first asked for: one more than the level.
std::atomic<int> levelInUse{0};

}  // namespace

XelVectorLevel XelGetBestVectorLevel() noexcept {
#if XELCSV_HAS_VECTORS
  const bool has32 = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0 &&
                     __builtin_cpu_supports("popcnt") != 0;
  if (has32) return XelVectorLevel::Bytes32;
  return XelVectorLevel::Bytes16;
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
