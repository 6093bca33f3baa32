#include "csv/line/XelCsvLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "csv/line/XelCsvFormat.h"
#include "tests/support/TestEnv.h"

namespace {

// The same numbers in every run.
std::mt19937 seedWith(unsigned seed) { return std::mt19937(seed); }

using namespace std::string_literals;

constexpr XelCsvReach BothReaches[] = {XelCsvReach::OneLine, XelCsvReach::ManyLines};

// The same lines by way of the C library: fgets into a buffer of a line's size, ftell and feof.
class StdioLines {
 public:
  explicit StdioLines(const char* name) : file(std::fopen(name, "rb")) {}

  bool read() {
    const long before = getOffset();
    char buffer[XelLineSize];
    if (std::fgets(buffer, XelLineSize, file.get()) == nullptr) return false;
    line.assign(buffer, static_cast<std::size_t>(getOffset() - before));
    return true;
  }

  bool skipCommentAndEmptyLines(char comment, long& lineNumber, long& offset) {
    bool found = false;
    anyRead = false;
    while (!found && !isEnded()) {
      offset = getOffset();
      if (read()) {
        anyRead = true;
        const std::size_t text = line.find_first_not_of(" \t");
        const bool isEmpty =
            text == std::string::npos || line[text] == '\n' || line[text] == '\r' || line[text] == '\0';
        found = line[0] != comment && !isEmpty;
      }
      ++lineNumber;
    }
    return found;
  }

  bool seek(long offset) { return std::fseek(file.get(), offset, SEEK_SET) == 0; }
  long getOffset() const { return std::ftell(file.get()); }
  bool isEnded() const { return std::feof(file.get()) != 0; }
  bool hasRead() const { return anyRead; }
  const std::string& getLine() const { return line; }

 private:
  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  std::unique_ptr<std::FILE, Close> file;
  std::string line;
  bool anyRead = false;
};

std::string getText(const XelCsvLines& lines) { return {lines.getLine().begin, lines.getLine().end}; }

// One try to read by each of the two; false when they differ.
bool readBoth(XelCsvLines& lines, StdioLines& stdio, bool& hasLine) {
  hasLine = lines.read();
  const bool expected = stdio.read();
  return hasLine == expected && lines.isEnded() == stdio.isEnded() && lines.getOffset() == stdio.getOffset() &&
         (!hasLine || getText(lines) == stdio.getLine());
}

// How a file is opened, and the size that is expected of it.
struct Opening {
  XelCsvReach reach;
  long expectedSize;
};

// Nothing expected, the size itself, less and more.
std::vector<Opening> getOpenings(const std::string& content) {
  const long size = static_cast<long>(content.size());
  return {{XelCsvReach::OneLine, 0},
          {XelCsvReach::ManyLines, 0},
          {XelCsvReach::ManyLines, size},
          {XelCsvReach::ManyLines, size / 2 + 1},
          {XelCsvReach::OneLine, size + 5000}};
}

// Reads the file to its end and beyond.
void expectSameLines(const std::string& content) {
  const DataFile file(content);
  for (const Opening& opening : getOpenings(content)) {
    SCOPED_TRACE(std::string(opening.reach == XelCsvReach::OneLine ? "one line" : "many lines") + ", expected size " +
                 std::to_string(opening.expectedSize));
    TestEnv env;
    XelCsvLines lines(env);
    ASSERT_EQ(lines.open(file.getName(), "rb", opening.reach), 0);
    lines.expectSize(opening.expectedSize);
    StdioLines stdio(file.getName());
    bool hasLine = true;
    for (long number = 0; hasLine; ++number) {
      ASSERT_TRUE(readBoth(lines, stdio, hasLine)) << "line " << number << ", offset " << stdio.getOffset();
    }
    ASSERT_TRUE(readBoth(lines, stdio, hasLine));
    EXPECT_FALSE(hasLine);
    EXPECT_TRUE(lines.isEnded());
    EXPECT_EQ(lines.getOffset(), static_cast<long>(content.size()));
  }
}

void expectSameSkipping(const std::string& content) {
  const DataFile file(content);
  for (const Opening& opening : getOpenings(content)) {
    TestEnv env;
    XelCsvLines lines(env);
    ASSERT_EQ(lines.open(file.getName(), "r", opening.reach), 0);
    lines.expectSize(opening.expectedSize);
    StdioLines stdio(file.getName());
    long number = -1;
    long offset = 0;
    long expectedNumber = -1;
    long expectedOffset = 0;
    for (int triesAtTheEnd = 0; triesAtTheEnd < 3;) {
      const bool found = lines.skipCommentAndEmptyLines('#', number, offset);
      ASSERT_EQ(found, stdio.skipCommentAndEmptyLines('#', expectedNumber, expectedOffset));
      ASSERT_EQ(number, expectedNumber);
      ASSERT_EQ(offset, expectedOffset);
      ASSERT_EQ(lines.isEnded(), stdio.isEnded());
      ASSERT_EQ(lines.hasRead(), stdio.hasRead());
      if (stdio.hasRead()) {
        ASSERT_EQ(getText(lines), stdio.getLine());
      }
      if (!found) ++triesAtTheEnd;
    }
  }
}

// lengthsOfLines around those at which a line is cut, line ends of all kinds, comments, blank lines and zero bytes.
std::string makeContent(std::mt19937& random) {
  constexpr std::size_t lengthsOfLines[] = {0,    0,    1,    2,     7,     80,    511,   512,
                                            9997, 9998, 9999, 10000, 10001, 19997, 19998, 30001};
  std::string content;
  const auto lines = random() % 30;
  for (auto line = lines; line > 0; --line) {
    std::string text(lengthsOfLines[random() % std::size(lengthsOfLines)], 'x');
    const auto kind = random() % 8;
    if (kind == 0) std::fill(text.begin(), text.end(), ' ');
    if (kind == 1) std::fill(text.begin(), text.end(), random() % 2 == 0 ? '\t' : '\0');
    if (kind == 2 && !text.empty()) text[0] = '#';
    if (kind == 3 && !text.empty()) text[random() % text.size()] = '\0';
    if (kind == 4 && !text.empty()) text[random() % text.size()] = '\r';
    content += text + (random() % 3 == 0 ? "\r\n" : "\n");
  }
  if (random() % 2 == 0 && !content.empty()) content.pop_back();
  return content;
}

}  // namespace

TEST(Lines, AreThoseOfFgets) {
  for (const std::string& content :
       {""s, "\n"s, "a"s, "a\n"s, "a\nb"s, "a\r\nb\r\n"s, "\n\n"s, "\0\n"s, "a\0b\nc\0"s, "\r"s, " \n\t\n"s}) {
    SCOPED_TRACE(testing::PrintToString(content));
    expectSameLines(content);
  }
}

TEST(Lines, AreCutAt9999Bytes) {
  for (const std::size_t length :
       {9997U, 9998U, 9999U, 10000U, 10001U, 12000U, 19997U, 19998U, 19999U, 50000U, 99990U}) {
    SCOPED_TRACE(length);
    const std::string line(length, 'x');
    expectSameLines(line);
    expectSameLines(line + "\n");
    expectSameLines(line + "\r\n");
    expectSameLines(line + "\nend\n");
    expectSameLines("start\n" + line + "\n" + line);
  }
}

TEST(Lines, OfALongPhysicalLineAreCounted) {
  const struct {
    std::size_t length;
    std::vector<long> lines;
  } cases[] = {
      {9997, {9998}},     {9998, {9999}},        {9999, {9999, 1}},
      {10000, {9999, 2}}, {12000, {9999, 2002}}, {19998, {9999, 9999, 1}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.length);
    const DataFile file(std::string(row.length, 'x') + "\n");
    TestEnv env;
    XelCsvLines lines(env);
    ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
    std::vector<long> lengths;
    while (lines.read()) lengths.push_back(lines.getLine().getLength());
    EXPECT_EQ(lengths, row.lines);
  }
}

TEST(Lines, AreThoseOfFgetsWhereBlocksEnd) {
  for (const std::size_t block : {512U, 2048U, 4096U, 8192U, 16384U, 65536U, 262144U, 524288U}) {
    for (const std::size_t size : {block - 1, block, block + 1}) {
      SCOPED_TRACE(size);
      std::string tens;
      while (tens.size() < size) tens += "123456789\n";
      tens.resize(size);
      expectSameLines(tens);
      tens.back() = '\n';
      expectSameLines(tens);
      expectSameLines(std::string(size, 'x'));
      expectSameLines(std::string(size - 1, 'x') + "\nabc");
      expectSameLines(tens + tens + "abc\n");
    }
  }
}

TEST(Lines, AreThoseOfFgetsInRandomFiles) {
  std::mt19937 random = seedWith(41);
  for (int round = 0; round < 120; ++round) {
    SCOPED_TRACE(round);
    expectSameLines(makeContent(random));
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(Lines, StayAfterTheEndUntilTheNextSeek) {
  const DataFile file("a\nbc");
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::OneLine), 0);
  EXPECT_EQ(lines.getLine().getLength(), 0);
  ASSERT_TRUE(lines.read());
  EXPECT_FALSE(lines.isEnded());
  ASSERT_TRUE(lines.read());
  EXPECT_TRUE(lines.isEnded()) << "a last line without line feed meets the end";
  EXPECT_FALSE(lines.read());
  EXPECT_EQ(getText(lines), "bc");
}

TEST(Lines, WithALastLineFeedMeetTheEndOnlyByTryingAgain) {
  const DataFile file("a\n");
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
  ASSERT_TRUE(lines.read());
  EXPECT_FALSE(lines.isEnded());
  EXPECT_FALSE(lines.read());
  EXPECT_TRUE(lines.isEnded());
  EXPECT_EQ(getText(lines), "a\n");
}

TEST(Lines, AreFoundAgainBySeeking) {
  std::mt19937 random = seedWith(42);
  for (int round = 0; round < 40; ++round) {
    std::string content = makeContent(random);
    if (round % 4 == 0) {
      for (int line = 0; line < 3000; ++line) content += std::string(random() % 200, 'y') + "\n";
    }
    const DataFile file(content);
    TestEnv env;
    XelCsvLines lines(env);
    ASSERT_EQ(lines.open(file.getName(), "rb", BothReaches[round % 2]), 0);
    StdioLines stdio(file.getName());
    const auto size = static_cast<long>(content.size());
    for (int step = 0; step < 300; ++step) {
      SCOPED_TRACE(step);
      long to = static_cast<long>(random() % static_cast<unsigned long>(size + 20));
      const auto kind = random() % 4;
      if (kind == 0) to = lines.getOffset() + static_cast<long>(random() % 400);
      if (kind == 1) to = std::max(0L, lines.getOffset() - static_cast<long>(random() % 400));
      if (kind == 2) to = random() % 2 == 0 ? size : lines.getOffset();
      ASSERT_TRUE(lines.seek(to));
      ASSERT_TRUE(stdio.seek(to));
      EXPECT_FALSE(lines.isEnded());
      EXPECT_EQ(lines.getOffset(), to);
      for (auto count = random() % 5; count > 0; --count) {
        bool hasLine = false;
        ASSERT_TRUE(readBoth(lines, stdio, hasLine)) << "from " << to << ", size " << size;
      }
    }
  }
}

TEST(Lines, AreNoneAfterASeekUntilTheNextIsRead) {
  const DataFile file("a\nb\n" + std::string(2000, 'x') + "\nc\n");
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::OneLine), 0);
  for (const long offset : {0L, 2L, 2005L, 4L}) {
    ASSERT_TRUE(lines.read());
    EXPECT_GT(lines.getLine().getLength(), 0);
    ASSERT_TRUE(lines.seek(offset));
    EXPECT_EQ(lines.getLine().getLength(), 0) << offset;
    EXPECT_EQ(lines.getOffset(), offset);
  }
}

TEST(Lines, OfAFileThatIsOpenedAgainAfterItsEndBeginAnew) {
  const DataFile file("#c\na");
  TestEnv env;
  XelCsvLines lines(env);
  for (int round = 0; round < 3; ++round) {
    ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
    EXPECT_FALSE(lines.isEnded());
    EXPECT_EQ(lines.getLine().getLength(), 0);
    EXPECT_EQ(lines.getOffset(), 0);
    long lineNumber = -1;
    long offset = 0;
    EXPECT_TRUE(lines.skipCommentAndEmptyLines('#', lineNumber, offset));
    EXPECT_EQ(getText(lines), "a");
    EXPECT_EQ(lineNumber, 1);
    EXPECT_EQ(offset, 3);
    EXPECT_TRUE(lines.isEnded());
  }
}

TEST(Lines, AreReadOnBehindASeekInsideALargeBlock) {
  // The block has grown to its full size; then one line is read at its start, and the next at its very end.
  std::string content;
  while (content.size() < 1500000) content += "123456789\n";
  const auto start = static_cast<long>(content.size());
  content += "start\n";
  while (content.size() < static_cast<std::size_t>(start) + 262144 - 5) content += std::string(4, '#') + "\n";
  const auto last = static_cast<long>(content.size());
  content += "the line that crosses the end of the block\nnext\n";
  content += std::string(300000, 'x');
  const DataFile file(content);
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
  while (lines.getOffset() < start) ASSERT_TRUE(lines.read());
  ASSERT_TRUE(lines.seek(0));
  ASSERT_TRUE(lines.read());
  ASSERT_TRUE(lines.seek(start));
  ASSERT_TRUE(lines.read());
  EXPECT_EQ(getText(lines), "start\n");
  ASSERT_TRUE(lines.seek(last));
  ASSERT_TRUE(lines.read());
  EXPECT_EQ(getText(lines), "the line that crosses the end of the block\n");
  ASSERT_TRUE(lines.read());
  EXPECT_EQ(getText(lines), "next\n");
}

TEST(Lines, CannotBeSoughtBeforeTheStart) {
  const DataFile file("a\n");
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
  EXPECT_FALSE(lines.seek(-1));
}

TEST(Lines, KnowTheSizeOfTheFile) {
  for (const std::string& content : {""s, "a"s, "a\nb\n"s, std::string(300000, 'x')}) {
    const DataFile file(content);
    TestEnv env;
    XelCsvLines lines(env);
    ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
    EXPECT_EQ(lines.goToEnd(), static_cast<long>(content.size()));
    ASSERT_TRUE(lines.seek(0));
    EXPECT_EQ(lines.read(), !content.empty());
  }
}

TEST(Lines, OfAFileThatCannotBeOpenedGiveItsErrno) {
  const DataFile file("a\n");
  file.remove();
  TestEnv env;
  XelCsvLines lines(env);
  EXPECT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), ENOENT);
  EXPECT_EQ(errno, ENOENT);
}

TEST(Lines, OfADirectoryEndAtOnce) {
  const DataDirectory directory;
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(directory.getName(), "rb", XelCsvReach::ManyLines), 0);
  long number = -1;
  long offset = 0;
  EXPECT_FALSE(lines.skipCommentAndEmptyLines('#', number, offset)) << "a read error ends the file";
  EXPECT_FALSE(lines.hasRead());
  EXPECT_TRUE(lines.isEnded());
  EXPECT_FALSE(lines.read());
}

TEST(Lines, OfAnotherFileAfterAnotherOpen) {
  const DataFile first("a\nb\n");
  const DataFile second("c\n");
  TestEnv env;
  const long openFiles = countOpenFiles();
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(first.getName(), "rb", XelCsvReach::ManyLines), 0);
  ASSERT_TRUE(lines.read());
  ASSERT_EQ(lines.open(second.getName(), "rb", XelCsvReach::OneLine), 0);
  EXPECT_EQ(countOpenFiles(), openFiles + 1);
  EXPECT_EQ(lines.getOffset(), 0);
  ASSERT_TRUE(lines.read());
  EXPECT_EQ(getText(lines), "c\n");
  errno = 77;
  lines.close();
  EXPECT_EQ(errno, 77);
  EXPECT_EQ(countOpenFiles(), openFiles);
  EXPECT_EQ(env.getAllocator().getBytesOut(), TestEnv().getAllocator().getBytesOut());
}

TEST(Lines, OfASingleLookupTakeASmallBlock) {
  const DataFile file("a\n" + std::string(100000, 'x') + "\n");
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::OneLine), 0);
  const long before = env.getAllocator().getBytesOut();
  ASSERT_TRUE(lines.read());
  EXPECT_LE(env.getAllocator().getBytesOut() - before, 1024);
}

TEST(SkipCommentAndEmptyLines, CountsEveryTryAndStoresItsOffset) {
  const struct {
    const char* name;
    std::string content;
    struct Try {
      bool found;
      long lineNumber;
      long offset;
      std::string line;  // the line read last
    };
    std::vector<Try> tries;
  } cases[] = {
      {"lines with a last line feed",
       "a\nb\n",
       {{true, 0, 0, "a\n"}, {true, 1, 2, "b\n"}, {false, 2, 4, "b\n"}, {false, 2, 4, "b\n"}}},
      {"a last line without line feed changes nothing any more",
       "a\nb",
       {{true, 0, 0, "a\n"}, {true, 1, 2, "b"}, {false, 1, 2, "b"}}},
      {"comments and empty lines", "#x\n\n \t\r\na\n", {{true, 3, 8, "a\n"}, {false, 4, 10, "a\n"}}},
      {"a comment at the end", "a\n#x", {{true, 0, 0, "a\n"}, {false, 1, 2, "#x"}, {false, 1, 2, "#x"}}},
      {"a blank before the comment character", " #x\n", {{true, 0, 0, " #x\n"}, {false, 1, 4, " #x\n"}}},
      {"a zero byte ends a line's text but not the line",
       "\0a\n \0\nb\0c\n"s,
       {{true, 2, 6, "b\0c\n"s}, {false, 3, 10, "b\0c\n"s}}},
      {"an empty file", "", {{false, 0, 0, ""}, {false, 0, 0, ""}}},
      {"only comments", "#a\n#b\n", {{false, 2, 6, "#b\n"}, {false, 2, 6, "#b\n"}}},
      {"a carriage return first", "\rabc\nd\n", {{true, 1, 5, "d\n"}}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    const DataFile file(row.content);
    TestEnv env;
    XelCsvLines lines(env);
    ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
    long lineNumber = -1;
    long offset = 0;
    for (const auto& expected : row.tries) {
      EXPECT_EQ(lines.skipCommentAndEmptyLines('#', lineNumber, offset), expected.found);
      EXPECT_EQ(lineNumber, expected.lineNumber);
      EXPECT_EQ(offset, expected.offset);
      EXPECT_EQ(getText(lines), expected.line);
    }
  }
}

TEST(SkipCommentAndEmptyLines, CountsThePiecesOfALongLine) {
  const DataFile file(std::string(12000, 'x') + "\nb\n");
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
  long lineNumber = -1;
  long offset = 0;
  EXPECT_TRUE(lines.skipCommentAndEmptyLines('#', lineNumber, offset));
  EXPECT_TRUE(lines.skipCommentAndEmptyLines('#', lineNumber, offset));
  EXPECT_EQ(lineNumber, 1);
  EXPECT_EQ(offset, 9999);
  EXPECT_TRUE(lines.skipCommentAndEmptyLines('#', lineNumber, offset));
  EXPECT_EQ(lineNumber, 2);
  EXPECT_EQ(offset, 12001);
}

TEST(SkipCommentAndEmptyLines, DoesWhatFgetsDoesInRandomFiles) {
  std::mt19937 random = seedWith(43);
  for (int round = 0; round < 120; ++round) {
    SCOPED_TRACE(round);
    expectSameSkipping(makeContent(random));
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(Lines, LoseNothingWhenMemoryIsExhausted) {
  std::string content(12000, 'x');
  for (int line = 0; line < 9000; ++line) content += "123456789\n";
  const DataFile file(content);
  const long injected = forEachFailingAllocation([&](XelEnv env) {
    XelCsvLines lines(env);
    ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::OneLine), 0);
    long bytes = 0;
    try {
      while (lines.read()) bytes += lines.getLine().getLength();
    } catch (const std::bad_alloc&) {
      // The same place can be tried again.
      EXPECT_EQ(lines.getOffset(), bytes);
      throw;
    }
    EXPECT_EQ(bytes, static_cast<long>(content.size()));
  });
  EXPECT_GE(injected, 8);
}

// A pass over a file of any length needs a bounded number of blocks.
TEST(Lines, TakeNoFurtherBlockOnceBlocksAreAsLargeAsTheyGet) {
  std::string content;
  while (content.size() < 1024U * 1024U) content += "a line of text, one of many\n";
  const DataFile file(content);
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
  const long before = env.getAllocator().getAllocations();
  while (lines.getOffset() < 512L * 1024) ASSERT_TRUE(lines.read());
  const long halfway = env.getAllocator().getAllocations();
  EXPECT_GT(halfway, before);
  EXPECT_LE(env.getAllocator().getBytesOut(), 300000) << "one block of 256 KiB and little else";
  while (lines.read()) continue;
  EXPECT_EQ(lines.getOffset(), static_cast<long>(content.size()));
  EXPECT_EQ(env.getAllocator().getAllocations(), halfway);
}
