// What the file reader does with the text of a line: reading on to the next line of a table, emptiness, first field,
// trimming, greatest separator.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "csv/line/XelCsvLines.h"
#include "csv/reader/XelCsvReaderI.h"
#include "tests/support/DataFile.h"
#include "tests/support/TestEnv.h"

namespace {

XelEnvOwner<XelCsvReaderI> makeReader(XelEnv env, const DataFile& file, const char* separators) {
  return XelNew<XelCsvReaderI>(env, env, file.getName(), 1L, 1L, 1L, separators, '.', '"', '#');
}

// One call of the reading loop and what it leaves.
struct Step {
  long found = 0;
  std::string text;
  long lineNumber = 0;
  long offset = 0;

  bool operator==(const Step& other) const {
    return found == other.found && text == other.text && lineNumber == other.lineNumber && offset == other.offset;
  }
};

std::ostream& operator<<(std::ostream& stream, const Step& step) {
  return stream << "found " << step.found << ", line " << step.lineNumber << ", offset " << step.offset << ", text '"
                << step.text.substr(0, 60) << "' of length " << step.text.size();
}

// The loop as it is told, on a stream of the standard library.
Step readSlowly(std::FILE* stream, char* buffer, char comment, Step step) {
  step.found = 0;
  while (step.found == 0 && std::feof(stream) == 0) {
    step.offset = std::ftell(stream);
    if (std::fgets(buffer, 10000, stream) != nullptr && buffer[0] != comment) {
      const char* at = buffer;
      while (*at == ' ' || *at == '\t') ++at;
      if (*at != '\n' && *at != '\r' && *at != '\0') step.found = 1;
    }
    ++step.lineNumber;
  }
  step.text = buffer;
  return step;
}

void expectTheSameSteps(const std::string& content, XelCsvReach reach) {
  TestEnv env;
  const DataFile file(content);
  std::FILE* stream = std::fopen(file.getName(), "rb");
  ASSERT_NE(stream, nullptr);
  std::vector<char> slowBuffer(10000, '\0');
  std::vector<char> buffer(10000, '\0');
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", reach), 0);
  Step slow{0, "", -1, 0};
  Step step{0, "", -1, 0};
  for (int callsAfterTheEnd = 0; callsAfterTheEnd < 3;) {
    slow = readSlowly(stream, slowBuffer.data(), '#', slow);
    step.found = XelCsvReaderI::skipCommentAndEmptyLines(lines, buffer.data(), '#', &step.lineNumber, &step.offset);
    step.text = buffer.data();
    ASSERT_EQ(step, slow) << "in " << testing::PrintToString(content.substr(0, 400));
    if (slow.found == 0) ++callsAfterTheEnd;
  }
  std::fclose(stream);
}

std::string makeContent(std::mt19937& random) {
  static const std::vector<std::string> pieces = {
      "A", "B;1", ";", " ", "\t", "#", "\n", "\n", "\n", "\r\n", "\r", std::string(1, '\0'), "|", "\"", "\v"};
  std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
  std::uniform_int_distribution<int> length(0, 30);
  std::uniform_int_distribution<int> rare(0, 40);
  std::uniform_int_distribution<std::size_t> nearTheLimit(9990, 10010);
  std::string content;
  for (int left = length(random); left > 0; --left) {
    content += rare(random) == 0 ? std::string(nearTheLimit(random), "x #"[rare(random) % 3]) : pieces[pick(random)];
  }
  return content;
}

TEST(SkipCommentAndEmptyLines, ReadsWhatTheStandardLibraryReads) {
  std::mt19937 random(20240501);
  for (int run = 0; run < 1500; ++run) {
    const std::string content = makeContent(random);
    expectTheSameSteps(content, run % 2 == 0 ? XelCsvReach::ManyLines : XelCsvReach::OneLine);
    if (HasFatalFailure()) return;
  }
}

TEST(SkipCommentAndEmptyLines, CutsLinesAtTheLimitAndCountsThePieces) {
  // 9998 bytes and a line feed are one line, 9999 and a line feed are two: the second piece is an empty line.
  for (const std::size_t length : {9997U, 9998U, 9999U, 10000U, 12000U, 19998U, 19999U, 300000U}) {
    SCOPED_TRACE(length);
    for (const char* end : {"", "\n", "\r\n", "\nA;1", "\nA;1\n"}) {
      for (const XelCsvReach reach : {XelCsvReach::ManyLines, XelCsvReach::OneLine}) {
        expectTheSameSteps("A;0\n" + std::string(length, 'x') + end, reach);
      }
    }
  }
}

TEST(SkipCommentAndEmptyLines, CountsCommentsAndEmptyLines) {
  TestEnv env;
  const DataFile file("# one\n\n \t\n #two\nlast");
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
  std::vector<char> buffer(10000, 'x');
  long lineNumber = -1;
  long offset = -1;
  EXPECT_EQ(XelCsvReaderI::skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, &offset), 1);
  EXPECT_STREQ(buffer.data(), " #two\n");  // a blank in front: no comment
  EXPECT_EQ(lineNumber, 3);
  EXPECT_EQ(offset, 10);
  // Without an offset to store.
  EXPECT_EQ(XelCsvReaderI::skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, nullptr), 1);
  EXPECT_STREQ(buffer.data(), "last");
  EXPECT_EQ(lineNumber, 4);
  // The end of the file was met while the last line was read: nothing is tried any more.
  EXPECT_EQ(XelCsvReaderI::skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, &offset), 0);
  EXPECT_STREQ(buffer.data(), "last");
  EXPECT_EQ(lineNumber, 4);
  EXPECT_EQ(offset, 10);
}

TEST(SkipCommentAndEmptyLines, CountsTheTryThatMeetsTheEnd) {
  TestEnv env;
  const DataFile file("A\n");
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
  std::vector<char> buffer(10000, '\0');
  long lineNumber = -1;
  long offset = -1;
  EXPECT_EQ(XelCsvReaderI::skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, &offset), 1);
  EXPECT_EQ(XelCsvReaderI::skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, &offset), 0);
  EXPECT_EQ(lineNumber, 1);
  EXPECT_EQ(offset, 2);
  EXPECT_STREQ(buffer.data(), "A\n");
  EXPECT_EQ(XelCsvReaderI::skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, &offset), 0);
  EXPECT_EQ(lineNumber, 1);
}

TEST(IsEmpty, SeesOnlySpacesAndTabsBeforeTheEndOfTheLine) {
  const struct {
    const char* line;
    bool isEmpty;
  } rows[] = {
      {"", true},      {"\n", true},   {"\r\n", true},  {"\r", true}, {" \t \n", true},  {" \t", true},
      {" \rx", true},  {"x", false},   {"  x", false},  {"#", false}, {"\v\n", false},   {";\n", false},
      {"\f\n", false}, {"\t.", false}, {"\"\"", false}, {"|", false}, {"\xA0\n", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(XelCsvReaderI::isEmpty(row.line), row.isEmpty) << testing::PrintToString(row.line);
  }
}

TEST(GetFirstField, CutsTheLineInPlace) {
  const struct {
    const char* separators;
    const char* line;
    const char* field;
  } rows[] = {
      {";", "A;b;c\n", "A"},
      {";", "A,b;c\n", "A,b"},
      {";,", "A,b;c\n", "A"},
      {",;", "A;b", "A"},
      {";", "A\n;b", "A"},
      {";", "A\r\n", "A"},
      {";", "A", "A"},
      {";", "", ""},
      {";", ";b", ""},
      {";", "\n", ""},
      {";", "\r", ""},
      {";", " A b ;c", " A b "},
      {";", "\"A;B\";c", "\"A"},  // quotes are not looked at here
      {";", "A|NAMES;x", "A|NAMES"},
      {"", "A;b,c\n", "A;b,c"},
      {" ", "A b", "A"},
      {"\t", "A\tb", "A"},
      {";|", "A|NAMES;x", "A"},
      {"\xE9", "A\xE9z;", "A"},  // a set of negative characters
      {"\xE9", "A\xEAz;", "A\xEAz;"},
      {"\xE9;", "A\xE9z", "A"},
      {"\xE9;", "\xEA;z", "\xEA"},
      {"\x01", "A\x01z", "A"},
      {"\x7F", "A~\x7Fz", "A~"},
  };
  TestEnv env;
  const DataFile file("");
  for (const auto& row : rows) {
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, row.separators);
    std::string line(row.line);
    line += '\0';
    EXPECT_EQ(reader->getFirstField(line.data()), line.data());
    EXPECT_STREQ(line.c_str(), row.field) << row.line << " with " << row.separators;
    // Nothing but the one terminator is written.
    line[std::strlen(row.field)] = row.line[std::strlen(row.field)];
    EXPECT_STREQ(line.c_str(), row.line);
  }
}

TEST(Trim, RemovesSpacesAndNothingElse) {
  const struct {
    const char* text;
    const char* trimmed;
  } rows[] = {
      {"", ""},
      {" ", ""},
      {"    ", ""},
      {"a", "a"},
      {"  a b  ", "a b"},
      {"a  ", "a"},
      {"  a", "a"},
      {"\ta\t", "\ta\t"},
      {" \t a ", "\t a"},
      {"a\n ", "a\n"},
      {" a\r", "a\r"},
      {" \n ", "\n"},
      {"   abcdef", "abcdef"},
  };
  TestEnv env;
  const DataFile file("");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ";");
  for (const auto& row : rows) {
    std::string text(row.text);
    reader->trim(text.data());
    EXPECT_STREQ(text.c_str(), row.trimmed) << testing::PrintToString(row.text);
  }
}

TEST(ComputeMaxChar, ComparesSignedCharacters) {
  const struct {
    const char* set;
    char greatest;
  } rows[] = {
      {"", '\0'},       {";", ';'},           {",;", ';'},    {";,", ';'},    {" \t", ' '},     {"~ a", '~'},
      {"\xE9", '\xE9'}, {"\x80\xFF", '\xFF'}, {"\xE9,", ','}, {",\xFF", ','}, {"\x01", '\x01'},
  };
  TestEnv env;
  const DataFile file("");
  for (const auto& row : rows) {
    EXPECT_EQ(XelCsvReaderI::computeMaxChar(row.set), row.greatest) << testing::PrintToString(row.set);
    EXPECT_EQ(makeReader(env, file, row.set)->getMaxSeparator(), row.greatest) << testing::PrintToString(row.set);
  }
}

}  // namespace
