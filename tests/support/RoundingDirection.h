// The directions in which a process may round floating-point numbers.
#pragma once

#include <cfenv>
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

// The four directions; where processors are emulated that round to the nearest whatever they are told, as under
// valgrind, that one alone.
inline std::vector<int> listRoundingDirections() {
  const RoundingDirection up(FE_UPWARD);
  const volatile double one = 1;
  const volatile double little = 1e-30;
  const volatile double sum = one + little;
  if (sum == one) return {FE_TONEAREST};
  return {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
}
