// The directions in which a process may round floating-point numbers.
#pragma once

#include <cfenv>
#include <cstdlib>
#include <vector>

// Until the end of the scope the process rounds in this direction, one of FE_TONEAREST and the like.
class RoundingDirection {
 public:
  explicit RoundingDirection(int direction) : former(std::fegetround()) { std::fesetround(direction); }
  ~RoundingDirection() { std::fesetround(former); }
  RoundingDirection(const RoundingDirection&) = delete;
  RoundingDirection& operator=(const RoundingDirection&) = delete;

 private:
  int former;
};

// The four directions. With XELCSV_ROUNDS_TO_NEAREST in the environment that one alone: valgrind emulates a processor that
// rounds to the nearest whatever it is told.
inline std::vector<int> listRoundingDirections() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): tests have one thread
  if (std::getenv("XELCSV_ROUNDS_TO_NEAREST") != nullptr) return {FE_TONEAREST};
  return {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
}
