// Slow and obvious readings of a number's text.
#pragma once

#include <string>

namespace fuzz {

// The spellings of infinity, else what strtod reads.
double slowFloat(const std::string& text);

// The same with "U" for infinity.
double slowFloatOrUnbounded(const std::string& text);

struct SlowInt {
  long value = 0;
  bool fits = true;  // in 32 bits
};

// Blanks, a sign, digits; whatever follows is ignored.
SlowInt slowInt(const std::string& text);

// Every bit of the value readable; all not-a-numbers are one.
std::string shownFloat(double value);

}  // namespace fuzz
