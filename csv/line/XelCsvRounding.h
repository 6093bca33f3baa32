// Numbers of up to 19 digits, rounded once.
#pragma once

#include <cstdint>

// Powers of ten that XelRound() knows.
constexpr long XelMostPowersOfTen = 19;

// Where mantissa * 10^exponent can be rounded with integers of 128 bits: true, and the double that strtod gives in whatever
// direction the process rounds. mantissa > 0, exponent from -XelMostPowersOfTen to XelMostPowersOfTen.
bool XelRound(std::uint64_t mantissa, bool isNegative, long exponent, double& value) noexcept;
