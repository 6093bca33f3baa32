// The hash and the comparison of string keys.
#include "env/XelReaderHash.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <string>

namespace {

// The hash written from its description: a 64-bit accumulator, four bits to the left for each byte, the byte with its
// sign, and bits 28 to 31 folded back. Sums and products wrap at 2 to the 64th.
long computeHash(const std::string& key, long size) {
  std::uint64_t h = 0;
  for (const char character : key) {
    const int byte = static_cast<unsigned char>(character);
    h *= 16;
    if (byte < 128) {
      h += static_cast<std::uint64_t>(byte);
    } else {
      h -= static_cast<std::uint64_t>(256 - byte);
    }
    const std::uint64_t g = h & 0xF0000000ULL;
    if (g != 0) {
      h = h ^ (g / 16777216);
      h = h ^ g;
    }
  }
  return static_cast<long>(h % static_cast<std::uint64_t>(size));
}

struct Case {
  const char* key;
  long in128;
  long in256;
  long in1000003;
  long inMost;  // buckets: the greatest long
};

// Computed apart from this program, with integers of any length.
constexpr Case Cases[] = {
    {"", 0, 0, 0, 0},
    {"a", 97, 97, 97, 97},
    {"Z", 90, 90, 90, 90},
    {"-", 45, 45, 45, 45},
    {"Paris-2004", 36, 164, 634386, 6634404},
    {"XELO_CSV_FORMAT", 68, 68, 840750, 50840900},
    {"XELO_DATA_SCHEMA", 17, 145, 654610, 21654673},
    {"\xE9", 25, 25, 830697, 9223372032828243738},
    {"\xE9t\xE9", 89, 217, 402800, 9223370937611530202},
    {"caf\xE9", 73, 73, 431945, 431945},
    {"\x80", 112, 112, 830784, 9223372032828243825},
    {"\xFF", 15, 15, 830687, 9223372032828243728},
    {"\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 127, 255, 808777, 18808831},
    {"\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F", 63, 63, 480244, 89480511},
    {"abcdefghijklmnopqrstuvwxyz0123456789", 9, 9, 887493, 108887817},
    {"\xC3\xA9"
     "cole-1",
     33, 33, 756991, 8070450532256044578},
};

}  // namespace

TEST(XeldReaderHashFunction, HasTheseValues) {
  for (const Case& row : Cases) {
    SCOPED_TRACE(row.key);
    EXPECT_EQ(XeldReaderHashFunction(row.key, 128), row.in128);
    EXPECT_EQ(XeldReaderHashFunction(row.key, 256), row.in256);
    EXPECT_EQ(XeldReaderHashFunction(row.key, 1000003), row.in1000003);
    EXPECT_EQ(XeldReaderHashFunction(row.key, LONG_MAX), row.inMost);
    EXPECT_EQ(XeldReaderHashFunction(row.key, 1), 0);
  }
}

TEST(XeldReaderHashFunction, OfTheEmptyKeyIsZero) {
  for (const long size : {1L, 2L, 128L, LONG_MAX}) EXPECT_EQ(XeldReaderHashFunction("", size), 0);
}

TEST(XeldReaderHashFunction, FollowsItsDescriptionForBytesOfEveryKind) {
  std::mt19937 random(4711);
  for (int round = 0; round < 20000; ++round) {
    std::string key(random() % 40, ' ');
    const bool isPlain = round % 2 == 0;
    for (char& character : key) character = static_cast<char>(isPlain ? 32 + random() % 95 : 1 + random() % 255);
    for (const long size : {1L, 3L, 128L, 256L, 512L, 1000003L, 1L << 40, LONG_MAX}) {
      const long value = XeldReaderHashFunction(key.c_str(), size);
      ASSERT_EQ(value, computeHash(key, size));
      ASSERT_GE(value, 0);
      ASSERT_LT(value, size);
    }
  }
}

TEST(XeldReaderHashFunction, NeverClearsTheBitsAboveTheFoldedOnes) {
  // -23 has all bits set above 31; a 32-bit accumulator would answer 4294967273 folded.
  EXPECT_EQ(XeldReaderHashFunction("\xE9", 1L << 62), computeHash("\xE9", 1L << 62));
  EXPECT_GT(XeldReaderHashFunction("\xE9", 1L << 62), 1L << 32);
}

TEST(XeldReaderCmpFunction, IsOneForTheSameTextAndElseZero) {
  const std::string copy("Paris-2004");
  EXPECT_EQ(XeldReaderCmpFunction("Paris-2004", copy.c_str()), 1);
  EXPECT_EQ(XeldReaderCmpFunction("", ""), 1);
  EXPECT_EQ(XeldReaderCmpFunction("paris", "Paris"), 0) << "case counts";
  EXPECT_EQ(XeldReaderCmpFunction("Paris", "Paris "), 0);
  EXPECT_EQ(XeldReaderCmpFunction("Paris", ""), 0);
  EXPECT_EQ(XeldReaderCmpFunction("", "Paris"), 0);
  EXPECT_EQ(XeldReaderCmpFunction("b", "a"), 0);
  EXPECT_EQ(XeldReaderCmpFunction("\xE9", "\xE9"), 1);
}
