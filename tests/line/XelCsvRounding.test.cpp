#include "csv/line/XelCsvRounding.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "csv/line/XelCsvNumbers.h"
#include "tests/support/DecimalPoint.h"
#include "tests/support/RoundingDirection.h"

namespace {

constexpr std::uint64_t Greatest = 9999999999999999999U;  // 19 digits

bool hasSameBits(double left, double right) { return std::memcmp(&left, &right, sizeof left) == 0; }

// Without an exponent: digits, and a point where the exponent puts it.
std::string writeWithPoint(std::uint64_t mantissa, long exponent) {
  std::string digits = std::to_string(mantissa);
  if (exponent >= 0) return digits + std::string(static_cast<std::size_t>(exponent), '0');
  const auto places = static_cast<std::size_t>(-exponent);
  if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
  return digits.insert(digits.size() - places, ".");
}

// Compares with strtod, as a function and as what becomes of the number written in two ways.
void expectWhatStrtodGives(std::uint64_t mantissa, bool isNegative, long exponent) {
  const std::string sign = isNegative ? "-" : "";
  const std::string text = sign + std::to_string(mantissa) + "e" + std::to_string(exponent);
  const double expected = std::strtod(text.c_str(), nullptr);
  if constexpr (XelCanRound) {
    const bool isKnown = std::labs(exponent) <= XelMostPowersOfTen;
    ASSERT_TRUE(!isKnown || hasSameBits(XelRound(mantissa, isNegative, exponent), expected)) << text;
  }
  ASSERT_TRUE(hasSameBits(XelParseFloat(text.c_str()), expected)) << text;
  const std::string plain = sign + writeWithPoint(mantissa, exponent);
  ASSERT_TRUE(hasSameBits(XelParseFloat(plain.c_str()), expected)) << plain;
}

}  // namespace

TEST(Rounding, IsThatOfStrtodForRandomNumbersOfUpTo19DigitsInEveryDirection) {
  const DecimalPoint point;
  const std::vector<int> directions = listRoundingDirections();
  std::mt19937_64 random(2053);
  for (std::size_t round = 0; round < 200000; ++round) {
    const RoundingDirection direction(directions[round % directions.size()]);
    const std::uint64_t range = random() % 4 == 0 ? std::uint64_t{1} << (random() % 63 + 1) : Greatest;
    const std::uint64_t mantissa = 1 + random() % range;
    const long exponent = static_cast<long>(random() % (2 * XelMostPowersOfTen + 1)) - XelMostPowersOfTen;
    expectWhatStrtodGives(mantissa, random() % 2 == 0, exponent);
    if (HasFatalFailure()) return;
  }
}

// Halfway between two doubles, and the least that can be told from it on either side.
TEST(Rounding, IsThatOfStrtodAroundTheMiddleOfTwoDoubles) {
  const DecimalPoint point;
  const std::vector<int> directions = listRoundingDirections();
  std::mt19937_64 random(54);
  for (std::size_t round = 0; round < 40000; ++round) {
    const RoundingDirection direction(directions[round % directions.size()]);
    // Of doubles with this many bits in front of the point: an odd number of halves, quarters, ... of their last place.
    const std::uint64_t bits = (std::uint64_t{1} << 52U) + random() % (std::uint64_t{1} << 52U);
    const std::uint64_t middle = 2 * bits + 1;
    struct {
      std::uint64_t mantissa;
      long exponent;
    } const middles[] = {
        {middle, 0},         // one above 2^53
        {middle * 5, -1},    // with .5 behind 2^52
        {middle * 25, -2},   // with .25 and .75 behind 2^51
        {middle * 125, -3},  // in eighths behind 2^50
        {middle << (random() % 10), 0},
        {middle * 64, static_cast<long>(random() % 4)},
    };
    for (const auto& each : middles) {
      for (const std::uint64_t mantissa : {each.mantissa - 1, each.mantissa, each.mantissa + 1}) {
        if (mantissa > Greatest) continue;
        expectWhatStrtodGives(mantissa, round % 8 < 4, each.exponent);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(Rounding, IsThatOfStrtodForTheLeastAndTheGreatestNumbersOfEachLengthAndExponent) {
  const DecimalPoint point;
  for (const int direction : listRoundingDirections()) {
    const RoundingDirection taken(direction);
    constexpr long Most = XelMostPowersOfTen + 5;
    for (long exponent = -Most; exponent <= Most; ++exponent) {
      for (std::uint64_t power = 1; power <= Greatest / 10; power *= 10) {
        for (const std::uint64_t mantissa : {power - 1, power, power + 1, 10 * power - 1}) {
          if (mantissa > 0) expectWhatStrtodGives(mantissa, false, exponent);
        }
      }
      for (int bit = 0; bit < 64; ++bit) {
        const std::uint64_t power = std::uint64_t{1} << bit;
        for (const std::uint64_t mantissa : {power - 1, power, power + 1}) {
          if (mantissa > 0 && mantissa <= Greatest) expectWhatStrtodGives(mantissa, true, exponent);
        }
      }
      if (HasFatalFailure()) return;
    }
  }
}
