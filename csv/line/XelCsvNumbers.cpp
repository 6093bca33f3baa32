#include "csv/line/XelCsvNumbers.h"

#include <cerrno>
#include <cfloat>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>

#if __has_include(<langinfo.h>)
#include <langinfo.h>
#endif

#include "csv/line/XelCsvRounding.h"
#include "xelcsv/XelEnv.h"

// Most numbers are short. Their digits are read here, and what is not that simple is left to strtod and strtol, so that
// every result is theirs to the last bit.
namespace {

constexpr int Decimal = 10;

// Numbers below are integers that a double holds exactly, and so are the powers of ten: one multiplication or division
// of the two rounds once, as strtod does, in whatever direction the process rounds.
constexpr std::uint64_t LargestExact = std::uint64_t{1} << 53;
constexpr double Powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                             1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr long LargestPower = 22;
constexpr bool AreDoublesExact = FLT_EVAL_METHOD == 0 && std::numeric_limits<double>::is_iec559;

constexpr long MostDigits = 19;     // whatever they are, they fit in 64 bits
constexpr long MostIntDigits = 18;  // the same with a sign

// 1 or -1 when the text spells plus or minus infinity, else 0.
int getInfinitySign(const char* text) noexcept {
  if (*text != '+' && *text != '-') return 0;
  if (text[1] != 'I' && text[1] != '1') return 0;
  for (const char* spelling : {"INF", "1.#INF", "Inf", "Infinity"}) {
    if (std::strcmp(text + 1, spelling) == 0) return *text == '+' ? 1 : -1;
  }
  return 0;
}

// Whether strtod reads "." as the decimal point: in the locale of this thread, which may have changed since last asked.
// Where there is nl_langinfo(), it answers at once with the locale's own text; localeconv() fills in a static struct.
bool isPointDecimal() noexcept {
#ifdef RADIXCHAR
  const char* point = nl_langinfo(RADIXCHAR);  // NOLINT(concurrency-mt-unsafe): only setlocale() meanwhile disturbs it
#else
  const char* point = std::localeconv()->decimal_point;  // NOLINT(concurrency-mt-unsafe)
#endif
  return std::strcmp(point, ".") == 0;
}

// Reads on over digits and appends them to a number, which must have room for them or not be used any more.
const char* readDigits(const char* at, std::uint64_t& number) noexcept {
  for (;; ++at) {
    const unsigned digit = static_cast<unsigned char>(*at) - static_cast<unsigned>('0');
    if (digit >= Decimal) return at;
    number = number * Decimal + digit;
  }
}

// A number that fits with a sign. Without a jump, since no one knows which sign comes next.
inline std::int64_t sign(std::uint64_t number, bool isNegative) noexcept {
  const std::uint64_t ones = std::uint64_t{0} - static_cast<std::uint64_t>(isNegative);
  return static_cast<std::int64_t>((number ^ ones) - ones);
}

// A mantissa of at most LargestExact as a double. It is signed before it is rounded, which the step after this does: where
// a process rounds upwards or downwards, a negative number rounds the other way.
inline double toDouble(std::uint64_t mantissa, bool isNegative) noexcept {
  if (mantissa == 0) return isNegative ? -0.0 : 0.0;
  return static_cast<double>(sign(mantissa, isNegative));
}

// Reads the exponent of a number from behind its "e"; false unless it is a short one that ends the text.
bool readExponent(const char* at, long& exponent) noexcept {
  const bool isNegative = *at == '-';
  if (*at == '-' || *at == '+') ++at;
  std::uint64_t number = 0;
  const char* end = readDigits(at, number);
  if (end == at || end - at > MostIntDigits || *end != '\0') return false;
  exponent = sign(number, isNegative);
  return true;
}

// Reads a text that is a short decimal number and nothing else. False for any other text, and where the value takes more
// than one rounding.
bool readShortFloat(const char* text, double& value) noexcept {
  const bool isNegative = *text == '-';
  const char* const begin = text + (*text == '-' || *text == '+' ? 1 : 0);
  std::uint64_t mantissa = 0;
  const char* at = readDigits(begin, mantissa);
  long digits = at - begin;
  long exponent = 0;
  if (*at == '.') {
    const char* const fraction = at + 1;
    at = readDigits(fraction, mantissa);
    exponent = fraction - at;
    digits += at - fraction;
    if (!isPointDecimal()) return false;
  }
  if (digits == 0 || digits > MostDigits) return false;
  if (*at != '\0') {
    long shift = 0;
    if ((*at != 'e' && *at != 'E') || !readExponent(at + 1, shift)) return false;
    exponent += shift;
  }
  if (mantissa > LargestExact) {
    if (exponent < -XelMostPowersOfTen || exponent > XelMostPowersOfTen) return false;
    if constexpr (XelCanRound) value = XelRound(mantissa, isNegative, exponent);
    return XelCanRound;
  }
  if (exponent < -LargestPower || exponent > LargestPower) return false;
  const double whole = toDouble(mantissa, isNegative);
  value = exponent < 0 ? whole / Powers[-exponent] : whole * Powers[exponent];
  return true;
}

// What strtol reads in base 10.
inline long readInt(const char* text) noexcept {
  const char* begin = text;
  while (*begin == ' ') ++begin;
  const bool isNegative = *begin == '-';
  if (*begin == '-' || *begin == '+') ++begin;
  std::uint64_t number = 0;
  const char* const end = readDigits(begin, number);
  if (end == begin || end - begin > MostIntDigits) return std::strtol(text, nullptr, Decimal);
  return sign(number, isNegative);
}

// Floats of all kinds.
[[gnu::noinline]] double parseFurther(const char* text) noexcept {
  const int infinity = getInfinitySign(text);
  if (infinity != 0) return infinity > 0 ? XelGetInfinity() : -XelGetInfinity();
  double value = 0.0;
  if (AreDoublesExact && readShortFloat(text, value)) return value;
  return std::strtod(text, nullptr);
}

bool fitsIn32Bits(long value) { return value == static_cast<long>(static_cast<std::int32_t>(value)); }

}  // namespace

double XelParseFloat(const char* text) noexcept {
  const bool isNegative = *text == '-';
  const char* const begin = text + static_cast<long>(isNegative);
  std::uint64_t mantissa = 0;
  const char* at = readDigits(begin, mantissa);
  long digits = at - begin;
  const bool hasPoint = *at == '.';
  long decimals = 0;
  if (hasPoint) {
    const char* const fraction = at + 1;
    at = readDigits(fraction, mantissa);
    decimals = at - fraction;
    digits += decimals;
  }
  const bool isShort = *at == '\0' && digits > 0 && digits <= MostDigits && mantissa <= LargestExact;
  if (!AreDoublesExact || !isShort) return parseFurther(text);
  const double whole = toDouble(mantissa, isNegative);
  if (!hasPoint) return whole;
  return isPointDecimal() ? whole / Powers[decimals] : parseFurther(text);
}

double XelParseFloatOrUnbounded(const char* text) noexcept {
  return text[0] == 'U' && text[1] == '\0' ? XelGetInfinity() : XelParseFloat(text);
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
  value = readInt(text);
  return fitsIn32Bits(value);
}
