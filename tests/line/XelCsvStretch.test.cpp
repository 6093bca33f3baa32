#include "csv/line/XelCsvStretch.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/DataFile.h"
#include "tests/support/TestEnv.h"

namespace {

// A file of lines of eight bytes, open at its second line.
class Stretch : public testing::Test {
 protected:
  Stretch() : file(makeContent()), lines(env), stretch(lines) {
    EXPECT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
    EXPECT_TRUE(lines.read());
  }

  static constexpr long LineSize = 8;
  static constexpr long NumberOfLines = 200;

  static std::string makeContent() {
    std::string content;
    for (long number = 0; number < NumberOfLines; ++number) content += std::to_string(1'000'000 + number) + "\n";
    return content;
  }

  std::string getLine(long index) const { return {stretch.getLine(index), stretch.getLine(index + 1)}; }

  static std::string lineOf(long number) { return std::to_string(1'000'000 + number) + "\n"; }

  TestEnv env;
  DataFile file;
  XelCsvLines lines;
  XelCsvStretch stretch;
};

}  // namespace

TEST_F(Stretch, FindsTheWholeLinesThatFollowInMemory) {
  ASSERT_EQ(stretch.find(), NumberOfLines - 1);
  EXPECT_EQ(getLine(0), lineOf(1));
  EXPECT_EQ(getLine(NumberOfLines - 2), lineOf(NumberOfLines - 1));
  EXPECT_EQ(stretch.getOffset(0), LineSize);
  EXPECT_EQ(stretch.countUpTo(LineSize - 1), 0);
  EXPECT_EQ(stretch.countUpTo(3 * LineSize - 1), 2);
  EXPECT_EQ(stretch.countUpTo(3 * LineSize), 3);
  EXPECT_EQ(stretch.countUpTo(1'000'000), NumberOfLines - 1);
}

TEST_F(Stretch, GoesOnBehindLinesAsIfTheyHadBeenRead) {
  ASSERT_EQ(stretch.find(), NumberOfLines - 1);
  stretch.goOn(0);
  EXPECT_EQ(lines.getOffset(), LineSize);
  stretch.goOn(5);
  EXPECT_EQ(lines.getOffset(), 6 * LineSize);
  EXPECT_EQ(std::string(lines.getLine().begin, lines.getLine().end), lineOf(5));
  ASSERT_EQ(stretch.find(), NumberOfLines - 6);
  EXPECT_EQ(getLine(0), lineOf(6));
}

TEST_F(Stretch, FollowsTheFileThatReadSomeLines) {
  ASSERT_EQ(stretch.find(), NumberOfLines - 1);
  for (long number = 1; number < 4; ++number) ASSERT_TRUE(lines.read());
  ASSERT_EQ(stretch.find(), NumberOfLines - 4);
  EXPECT_EQ(getLine(0), lineOf(4));
  while (lines.read()) continue;
  EXPECT_EQ(stretch.find(), 0);
}

// No line begins there, but the rest of one is read from there.
TEST_F(Stretch, BeginsAnewWhereTheFileWasSentToTheMiddleOfALine) {
  ASSERT_EQ(stretch.find(), NumberOfLines - 1);
  ASSERT_TRUE(lines.seek(10 * LineSize + 3));
  ASSERT_TRUE(lines.read());
  ASSERT_TRUE(lines.seek(20 * LineSize + 3));
  if (lines.getRest().getLength() == 0) {
    ASSERT_TRUE(lines.read());
  }
  const std::string expected = makeContent().substr(static_cast<std::size_t>(lines.getOffset()));
  ASSERT_GT(stretch.find(), 0);
  EXPECT_EQ(getLine(0), expected.substr(0, expected.find('\n') + 1));
  EXPECT_EQ(stretch.getOffset(0), lines.getOffset());
}

TEST_F(Stretch, CountsTheLinesThatHaveSoManyBytesToLookAt) {
  ASSERT_EQ(stretch.find(), NumberOfLines - 1);
  EXPECT_EQ(stretch.countReadable(NumberOfLines - 1, LineSize), NumberOfLines - 1);
  EXPECT_EQ(stretch.countReadable(NumberOfLines - 1, LineSize + 1), NumberOfLines - 2);
  EXPECT_EQ(stretch.countReadable(NumberOfLines - 1, 100 * LineSize), NumberOfLines - 100);
  EXPECT_EQ(stretch.countReadable(NumberOfLines - 1, 1'000'000), 0);
}
