#include "csv/line/XelCsvRounding.h"

#include <cstring>

#if defined(__SIZEOF_INT128__) && (defined(__GNUC__) || defined(__clang__))

// A double has 53 bits. The product or quotient of mantissa and power of ten is computed as an integer of 61 to 63 bits,
// the bits behind which are cut away; when any of those is not zero the lowest bit is set in their place:
//
//   1 0 1 1 ... 0 1 | 1 0 0 ... 0 0 1          61 to 63 bits, the rest together in the lowest
//   the 53 of a double  half of the last place, and whether there is more
//
// Since at least two bits come behind those of the double, this integer lies on the same side of every double, and of every
// middle between two, as the number itself. The processor's conversion of the integer is the one step that rounds, in the
// process's own direction; what follows is a multiplication by a power of two, which changes the exponent only.
namespace {

__extension__ using Wide = unsigned __int128;

constexpr std::uint64_t Powers[] = {1U,
                                    10U,
                                    100U,
                                    1000U,
                                    10000U,
                                    100000U,
                                    1000000U,
                                    10000000U,
                                    100000000U,
                                    1000000000U,
                                    10000000000U,
                                    100000000000U,
                                    1000000000000U,
                                    10000000000000U,
                                    100000000000000U,
                                    1000000000000000U,
                                    10000000000000000U,
                                    100000000000000000U,
                                    1000000000000000000U,
                                    10000000000000000000U};
static_assert(sizeof(Powers) / sizeof(Powers[0]) == XelMostPowersOfTen + 1, "a power for every exponent");

constexpr int WordBits = 64;
constexpr int KeptBits = 62;

// bits * 2^shift, where bits has 61 to 63 of them; shift is small enough for the exponents of doubles.
double scale(std::uint64_t bits, bool isNegative, int shift) noexcept {
  constexpr int MantissaBits = 52;
  constexpr int Bias = 1023;
  const auto whole = static_cast<std::int64_t>(bits);
  const std::uint64_t exponent = static_cast<std::uint64_t>(Bias + shift) << MantissaBits;
  double power = 0.0;
  std::memcpy(&power, &exponent, sizeof power);
  return static_cast<double>(isNegative ? -whole : whole) * power;
}

double multiply(std::uint64_t mantissa, bool isNegative, std::uint64_t power) noexcept {
  Wide product = static_cast<Wide>(mantissa) * power;
  const auto high = static_cast<std::uint64_t>(product >> WordBits);
  const int zeros = high != 0 ? __builtin_clzll(high) : WordBits + __builtin_clzll(static_cast<std::uint64_t>(product));
  product <<= zeros;  // the highest bit is set now
  constexpr int Cut = 2 * WordBits - KeptBits;
  const auto bits = static_cast<std::uint64_t>(product >> Cut);
  const bool isCut = product << KeptBits != 0;
  return scale(bits | static_cast<std::uint64_t>(isCut), isNegative, Cut - zeros);
}

double divide(std::uint64_t mantissa, bool isNegative, std::uint64_t power) noexcept {
  const int zeros = __builtin_clzll(mantissa);
  const int zerosOfPower = __builtin_clzll(power);
  // Both with their highest bit set the quotient lies between 1/2 and 2, and gets 62 or 63 bits.
  const Wide dividend = static_cast<Wide>(mantissa << zeros) << KeptBits;
  const std::uint64_t divisor = power << zerosOfPower;
  const auto bits = static_cast<std::uint64_t>(dividend / divisor);
  const bool isCut = static_cast<Wide>(bits) * divisor != dividend;
  return scale(bits | static_cast<std::uint64_t>(isCut), isNegative, zerosOfPower - zeros - KeptBits);
}

}  // namespace

double XelRound(std::uint64_t mantissa, bool isNegative, long exponent) noexcept {
  return exponent < 0 ? divide(mantissa, isNegative, Powers[-exponent])
                      : multiply(mantissa, isNegative, Powers[exponent]);
}

#endif
