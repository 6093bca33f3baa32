// The levels of vector instructions, for what has to come out the same under each.
#pragma once

#include <vector>

#include "csv/line/XelCsvVectors.h"

// Takes a level to the end of the scope.
class AtVectorLevel {
 public:
  explicit AtVectorLevel(XelVectorLevel level) : former(XelGetVectorLevel()) { XelSetVectorLevel(level); }
  ~AtVectorLevel() { XelSetVectorLevel(former); }
  AtVectorLevel(const AtVectorLevel&) = delete;
  AtVectorLevel& operator=(const AtVectorLevel&) = delete;

 private:
  XelVectorLevel former;
};

// The levels of this machine above the plain one.
inline std::vector<XelVectorLevel> getVectorLevels() {
  std::vector<XelVectorLevel> levels;
  for (const XelVectorLevel level : {XelVectorLevel::Bytes16, XelVectorLevel::Bytes32}) {
    if (level <= XelGetBestVectorLevel()) levels.push_back(level);
  }
  return levels;
}
