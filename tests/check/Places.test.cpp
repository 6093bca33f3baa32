// Where a finding is: lines as people and the library count them, columns, offsets, excerpts.
#include "tests/check/Checking.h"

namespace {

XelCsvFinding onlyFinding(const std::string& text, const char* code, XelCsvCheckParameters parameters = oneTable()) {
  CheckedFile file(text, std::move(parameters), only({code}));
  EXPECT_EQ(file.getFindings().size(), 1U) << file.show();
  return file.getFindings().empty() ? XelCsvFinding() : file.getFindings()[0];
}

}  // namespace

TEST(Place, IsALineAColumnAndAnOffset) {
  const XelCsvFinding finding = onlyFinding("# a\n\nStock,1\nStock,a\x02z\n", "control-character", manyTables());
  EXPECT_EQ(finding.lineNumber, 3);
  EXPECT_EQ(finding.line, 4);
  EXPECT_EQ(finding.column, 8);
  EXPECT_EQ(finding.offset, 20);
  EXPECT_EQ(finding.length, 1);
  EXPECT_EQ(finding.excerpt, "Stock,a\x02z");
  EXPECT_EQ(finding.excerptOffset, 13);
}

TEST(Place, CarriesFileAndTable) {
  CheckedFile file("Stock,1,2\nStock,1\n", manyTables(), only({"ragged"}));
  ASSERT_EQ(file.getFindings().size(), 1U);
  EXPECT_EQ(file.getFindings()[0].file, file.getName());
  EXPECT_EQ(file.getFindings()[0].table, "Stock");
}

TEST(Place, OfTheWholeFileHasNoLine) {
  const XelCsvFinding finding = onlyFinding("", "empty-table");
  EXPECT_EQ(finding.lineNumber, -1);
  EXPECT_EQ(finding.line, 0);
  EXPECT_EQ(finding.column, 0);
  EXPECT_EQ(finding.excerpt, "");
}

TEST(Place, BehindALongLineIsCountedInTwoWays) {
  const XelCsvFinding finding = onlyFinding(std::string(20000, 'x') + "\nb\x02\n", "control-character");
  EXPECT_EQ(finding.lineNumber, 3);
  EXPECT_EQ(finding.line, 2);
  EXPECT_EQ(finding.column, 2);
}

TEST(Place, InTheRestOfALongLineHasTheColumnThatPeopleSee) {
  const XelCsvFinding finding = onlyFinding(std::string(12344, 'x') + "\x02\n", "control-character");
  EXPECT_EQ(finding.lineNumber, 1);
  EXPECT_EQ(finding.line, 1);
  EXPECT_EQ(finding.column, 12345);
  EXPECT_EQ(finding.offset, 12344);
}

TEST(Place, OfASuspectIsThatOfItsLine) {
  const XelCsvFinding finding = onlyFinding("|NAMES,a,b\n|KEYS,1,0\n1,n/a\n2,1\n3,1\n4,1\n5,1\n", "not-a-number");
  EXPECT_EQ(finding.lineNumber, 2);
  EXPECT_EQ(finding.line, 3);
  EXPECT_EQ(finding.column, 3);
  EXPECT_EQ(finding.length, 3);
  EXPECT_EQ(finding.offset, 23);
  EXPECT_EQ(finding.excerpt, "1,n/a");
}

TEST(Place, OfAFieldInQuotesHasTheQuotes) {
  const XelCsvFinding finding = onlyFinding("1\n2\n3\n4\n\"n, a\"\n", "not-a-number");
  EXPECT_EQ(finding.column, 1);
  EXPECT_EQ(finding.length, 6);
}

TEST(Excerpt, IsTheLineWithoutItsEnd) { EXPECT_EQ(onlyFinding("a\x02\r\n", "control-character").excerpt, "a\x02"); }

TEST(Excerpt, OfALongLineIsAWindowAroundThePlace) {
  const std::string before(500, 'x');
  const std::string after(500, 'y');
  const XelCsvFinding finding = onlyFinding(before + '\x02' + after + '\n', "control-character");
  EXPECT_EQ(finding.excerpt, std::string(60, 'x') + '\x02' + std::string(99, 'y'));
  EXPECT_EQ(finding.excerptOffset, 440);
  const XelCsvFinding first = onlyFinding('\x02' + after + '\n', "control-character");
  EXPECT_EQ(first.excerpt, '\x02' + std::string(159, 'y'));
  EXPECT_EQ(first.excerptOffset, 0);
  const XelCsvFinding last = onlyFinding(before + "\x02\n", "control-character");
  EXPECT_EQ(last.excerpt, std::string(159, 'x') + '\x02');
  EXPECT_EQ(last.excerptOffset, 341);
}

TEST(Excerpt, OfALongLineBeginsWithAWholeCharacter) {
  std::string line;
  for (int index = 0; index < 200; ++index) line += "\xC3\xA9";
  const XelCsvFinding finding = onlyFinding("a" + line + '\x02' + line + '\n', "control-character");
  EXPECT_EQ(finding.excerpt.substr(0, 2), "\xC3\xA9");
}
