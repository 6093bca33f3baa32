// Numbers of up to 19 digits, rounded once.
#pragma once

#include <cstdint>

// Whether this compiler has integers of 128 bits; there is no XelRound() where it has none.
#if defined(__SIZEOF_INT128__) && (defined(__GNUC__) || defined(__clang__))
constexpr bool XelCanRound = true;
#else
constexpr bool XelCanRound = false;
#endif

// Powers of ten that XelRound() knows.
constexpr long XelMostPowersOfTen = 19;

// The double that strtod gives for mantissa * 10^exponent, in whatever direction the process rounds. mantissa > 0, exponent
// from -XelMostPowersOfTen to XelMostPowersOfTen.
double XelRound(std::uint64_t mantissa, bool isNegative, long exponent) noexcept;
