#include "csv/line/XelCsvNumbers.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "tests/support/DecimalPoint.h"
#include "xelcsv/XelEnv.h"

namespace {

// The same numbers in every run.
std::mt19937 seedWith(unsigned seed) { return std::mt19937(seed); }

constexpr double Infinity = std::numeric_limits<double>::infinity();

bool isSame(double left, double right) {
  if (std::isnan(left) || std::isnan(right)) return std::isnan(left) && std::isnan(right);
  return left == right && std::signbit(left) == std::signbit(right);
}

// What a float is by the rules: eight spellings as whole texts, else strtod.
double readFloat(const std::string& text) {
  for (const char* spelling : {"+INF", "+1.#INF", "+Inf", "+Infinity"}) {
    if (text == spelling) return Infinity;
  }
  for (const char* spelling : {"-INF", "-1.#INF", "-Inf", "-Infinity"}) {
    if (text == spelling) return -Infinity;
  }
  return std::strtod(text.c_str(), nullptr);
}

std::string makeText(std::mt19937& random, const std::string& alphabet, std::size_t longest) {
  std::string text(random() % (longest + 1), ' ');
  for (char& c : text) c = alphabet[random() % alphabet.size()];
  return text;
}

}  // namespace

TEST(ParseFloat, ReadsTheSpellingsOfInfinity) {
  const struct {
    const char* text;
    double value;
    double valueOrUnbounded;
  } cases[] = {
      {"+INF", Infinity, Infinity},
      {"+1.#INF", Infinity, Infinity},
      {"+Inf", Infinity, Infinity},
      {"+Infinity", Infinity, Infinity},
      {"-INF", -Infinity, -Infinity},
      {"-1.#INF", -Infinity, -Infinity},
      {"-Inf", -Infinity, -Infinity},
      {"-Infinity", -Infinity, -Infinity},
      {"U", 0.0, Infinity},
      {"u", 0.0, 0.0},
      {"+U", 0.0, 0.0},
      {"-U", -0.0, -0.0},
      {"UU", 0.0, 0.0},
      {"U ", 0.0, 0.0},
      // Whole texts only, upper and lower case as they are; the rest is up to strtod.
      {"+1.#INF ", 1.0, 1.0},
      {" +1.#INF", 1.0, 1.0},
      {"+1.#INFINITY", 1.0, 1.0},
      {"+1.#Inf", 1.0, 1.0},
      {"-1.#inf", -1.0, -1.0},
      {"1.#INF", 1.0, 1.0},
      {"+-INF", 0.0, 0.0},
      // What strtod spells as infinity by itself.
      {"INF", Infinity, Infinity},
      {"+inf", Infinity, Infinity},
      {"-infinity", -Infinity, -Infinity},
      {"+INF ", Infinity, Infinity},
      {"nan", std::nan(""), std::nan("")},
  };
  for (const auto& row : cases) {
    const double value = XelParseFloat(row.text);
    const double unbounded = XelParseFloatOrUnbounded(row.text);
    if (std::isnan(row.value)) {
      EXPECT_TRUE(std::isnan(value) && std::isnan(unbounded)) << row.text;
    } else {
      EXPECT_EQ(value, row.value) << row.text;
      EXPECT_EQ(unbounded, row.valueOrUnbounded) << row.text;
    }
  }
  EXPECT_EQ(XelParseFloat("+INF"), XelGetInfinity());
  EXPECT_EQ(XelParseFloat("-INF"), -XelGetInfinity());
}

TEST(ParseFloat, ReadsNumbers) {
  const DecimalPoint point;
  const struct {
    const char* text;
    double value;
  } cases[] = {
      {"", 0.0},           {"0", 0.0},
      {"3.5e2", 350.0},    {"  7.25", 7.25},
      {"7.25 ", 7.25},     {"12abc", 12.0},
      {"abc", 0.0},        {"-0.5", -0.5},
      {"+.5", 0.5},        {"5.", 5.0},
      {"1e", 1.0},         {"0x10", 16.0},
      {"1,5", 1.0},        {".", 0.0},
      {"1e999", Infinity}, {"-1e999", -Infinity},
      {"1e-999", 0.0},     {"9007199254740993", 9007199254740992.0},
      {"\t\n8", 8.0},
  };
  for (const auto& row : cases) EXPECT_EQ(XelParseFloat(row.text), row.value) << row.text;
}

TEST(ParseFloat, DoesWhatStrtodDoesWithRandomTexts) {
  std::mt19937 random = seedWith(33);
  const std::string alphabets[] = {"0123456789", "0123456789.", "0123456789+-.eE", "0123456789+-.eExXpPaAfF \t",
                                   "+-1.#INFinfty nNaA()U0"};
  for (int round = 0; round < 200000; ++round) {
    const std::string text = makeText(random, alphabets[random() % 5], 24);
    const double expected = readFloat(text);
    ASSERT_TRUE(isSame(XelParseFloat(text.c_str()), expected)) << '"' << text << '"';
    ASSERT_TRUE(isSame(XelParseFloatOrUnbounded(text.c_str()), text == "U" ? Infinity : expected))
        << '"' << text << '"';
  }
}

TEST(ParseInt, Takes32BitsOnly) {
  const struct {
    const char* text;
    bool fits;
    long value;
  } cases[] = {
      {"", true, 0},
      {"0", true, 0},
      {"2147483647", true, 2147483647},
      {"2147483648", false, 0},
      {"-2147483648", true, -2147483647L - 1},
      {"-2147483649", false, 0},
      {"3000000000", false, 0},
      {"4294967296", false, 0},
      {"4294967297", false, 0},
      {"-4294967297", false, 0},
      {"9223372036854775807", false, 0},
      {"-9223372036854775808", false, 0},
      {"99999999999999999999", false, 0},
      {"-99999999999999999999", false, 0},
      {"12abc", true, 12},
      {"abc", true, 0},
      {" \t42 ", true, 42},
      {"+7", true, 7},
      {"-7", true, -7},
      {"- 7", true, 0},
      {"0x10", true, 0},
      {"010", true, 10},
      {"3.9", true, 3},
      {"1e3", true, 1},
      {"00000000000000000000000000000005", true, 5},
      {"+INF", true, 0},
      {"U", true, 0},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    long value = -5;
    EXPECT_EQ(XelParseInt(row.text, value), row.fits);
    EXPECT_EQ(value, row.value);
    long other = -5;
    EXPECT_EQ(XelParseIntIgnoringErrno(row.text, other), row.fits);
    if (row.fits) {
      EXPECT_EQ(other, row.value);
    }
  }
}

TEST(ParseInt, DoesWhatStrtolDoesWithRandomTexts) {
  std::mt19937 random = seedWith(34);
  const std::string alphabets[] = {"0123456789", "0123456789+-", "0123456789+- \tabxX.e"};
  for (int round = 0; round < 200000; ++round) {
    const std::string text = makeText(random, alphabets[random() % 3], 22);
    errno = 0;
    const long wide = std::strtol(text.c_str(), nullptr, 10);
    const bool isOutOfRange = errno == ERANGE;
    const bool fits = !isOutOfRange && wide == static_cast<long>(static_cast<std::int32_t>(wide));
    long value = -5;
    ASSERT_EQ(XelParseInt(text.c_str(), value), fits) << '"' << text << '"';
    ASSERT_EQ(value, fits ? wide : 0) << '"' << text << '"';
  }
}

TEST(ParseInt, LooksAtNoErrnoFromBefore) {
  long value = 0;
  errno = ERANGE;
  EXPECT_TRUE(XelParseInt("5", value));
  EXPECT_EQ(value, 5);
  EXPECT_EQ(errno, 0);
  errno = ERANGE;
  EXPECT_TRUE(XelParseIntIgnoringErrno("6", value));
  EXPECT_EQ(value, 6);
  EXPECT_EQ(errno, ERANGE);
}
