#include "csv/line/XelCsvNumbers.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "xelcsv/XelEnv.h"

namespace {

constexpr int Decimal = 10;

// 1 or -1 when the text spells plus or minus infinity, else 0.
int getInfinitySign(const char* text) noexcept {
  if (*text != '+' && *text != '-') return 0;
  for (const char* spelling : {"INF", "1.#INF", "Inf", "Infinity"}) {
    if (std::strcmp(text + 1, spelling) == 0) return *text == '+' ? 1 : -1;
  }
  return 0;
}

bool fitsIn32Bits(long value) { return value == static_cast<long>(static_cast<std::int32_t>(value)); }

}  // namespace

double XelParseFloat(const char* text) noexcept {
  const int sign = getInfinitySign(text);
  if (sign == 0) return std::strtod(text, nullptr);
  return sign > 0 ? XelGetInfinity() : -XelGetInfinity();
}

double XelParseFloatOrUnbounded(const char* text) noexcept {
  return std::strcmp(text, "U") == 0 ? XelGetInfinity() : XelParseFloat(text);
}

bool XelParseInt(const char* text, long& value) noexcept {
  errno = 0;
  // Where a long has 32 bits itself, a number too large for it is cut to one that fits, and only errno tells.
  constexpr bool IsErrnoAsked = sizeof(long) == sizeof(std::int32_t);
  const bool fits = XelParseIntIgnoringErrno(text, value) && !(IsErrnoAsked && errno == ERANGE);
  if (!fits) value = 0;
  return fits;
}

bool XelParseIntIgnoringErrno(const char* text, long& value) noexcept {
  value = std::strtol(text, nullptr, Decimal);
  return fitsIn32Bits(value);
}
