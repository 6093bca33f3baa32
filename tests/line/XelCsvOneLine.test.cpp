// A single line is read as a pass over the file would read it.
#include "csv/line/XelCsvOneLine.h"

#include <gtest/gtest.h>

#include <string>

#include "csv/line/XelCsvLines.h"
#include "tests/support/TestEnv.h"

namespace {

// The line at an offset, read by itself; nothing behind the block may be written.
std::string readAlone(const DataFile& file, long offset) {
  XelCsvFile opened;
  EXPECT_EQ(opened.open(file.getName(), "r"), 0);
  EXPECT_TRUE(opened.seek(offset));
  std::string block(XelLineSize + 1, '~');
  const XelCsvSpan line = XelReadOneLine(opened, block.data());
  EXPECT_EQ(block.back(), '~');
  if (line.begin != block.data()) {
    EXPECT_LE(line.getLength(), XelShortLine);
    EXPECT_GE(line.begin, block.data() + line.getLength() + 1 + XelTextPadding) << "room for the formatted line";
    EXPECT_LE(line.end, block.data() + XelLineSize - XelTextPadding);
  }
  return {line.begin, line.end};
}

}  // namespace

TEST(ReadOneLine, ReadsWhatAPassOverTheFileReads) {
  TestEnv env;
  std::string content;
  for (const std::size_t length :
       {0U, 1U, 510U, 511U, 512U, 513U, 1023U, 1024U, 9997U, 9998U, 9999U, 10'000U, 30'000U}) {
    content += std::string(length, static_cast<char>('a' + length % 26)) + "\n";
  }
  content += "the last line has no line feed";
  for (const std::string& text : {content, std::string(512, 'x'), std::string(9999, 'x'), std::string()}) {
    const DataFile file(text);
    XelCsvLines lines(env);
    ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
    for (bool isThere = true; isThere;) {
      const long offset = lines.getOffset();
      isThere = lines.read();
      const XelCsvSpan line = lines.getLine();
      const std::string expected = isThere ? std::string(line.begin, line.end) : std::string();
      EXPECT_EQ(readAlone(file, offset), expected) << "at " << offset;
    }
    EXPECT_EQ(readAlone(file, static_cast<long>(text.size()) + 5), "");
  }
}
