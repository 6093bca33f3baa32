#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/DecimalPoint.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TableOfFile.h"
#include "tests/support/TestEnv.h"

namespace {

using Texts = std::vector<std::string>;
using Positions = std::vector<long>;
using Overflow = XelCsvReader::XelOverflowException;

// What the zone of a table is expected to give. No headings: no heading line.
struct Zone {
  long columns;
  Positions keys;
  Texts headings;
  long headingLineNumber;
  std::string firstData;  // the file from the first data line on
  long firstDataLineNumber;
  long items;
};

struct ZoneCase {
  const char* name;
  std::string content;
  Zone zone;
};

Positions getKeys(const XelCsvTableReaderI& table) {
  Positions keys;
  for (long key = 0; key < table.getNumberOfKeys(); ++key) keys.push_back(table.getKeyPosition(key));
  return keys;
}

void expectZone(XelCsvTableReaderI& table, const std::string& content, const Zone& zone) {
  EXPECT_EQ(table.getNumberOfColumns(), zone.columns);
  EXPECT_EQ(getKeys(table), zone.keys);
  const XelCsvLineI* headings = table.getFirstLine();
  EXPECT_EQ(headings != nullptr, !zone.headings.empty());
  if (headings != nullptr) {
    EXPECT_EQ(Texts(headings->getFields(), headings->getFields() + headings->getNumberOfFields()), zone.headings);
    EXPECT_EQ(headings->getLineNumber(), zone.headingLineNumber);
  }
  EXPECT_EQ(content.substr(static_cast<std::size_t>(table.getFirstDataOffset())), zone.firstData);
  EXPECT_EQ(table.getFirstDataLineNumber(), zone.firstDataLineNumber);
  EXPECT_EQ(table.getNumberOfItems(), zone.items);
}

// Reads the zone by both kinds of tables; the file is one table when no name is given.
void expectZones(const ZoneCase& row, const char* tableName, bool isSplit = false) {
  for (const long isCached : {1L, 0L}) {
    SCOPED_TRACE(std::string(row.name) + (isCached != 0 ? ", cached" : ", scanning"));
    FileSettings settings;
    settings.isCached = isCached;
    settings.allowTableSplitting = isSplit ? 1 : 0;
    TestEnv env;
    TableOfFile table(env, row.content, tableName, settings);
    expectZone(*table->getImpl(), row.content, row.zone);
  }
}

template <class Cases>
void expectAllZones(const Cases& cases, const char* tableName, bool isSplit = false) {
  for (const ZoneCase& row : cases) expectZones(row, tableName, isSplit);
}

}  // namespace

TEST(HeadingZone, OfAOneTableFile) {
  const ZoneCase cases[] = {
      {"heading line, then key line",
       "|NAMES,city,year,value\n|KEYS,1,1,0\nParis,2004,7\n",
       {3, {0, 1}, {"|NAMES", "city", "year", "value"}, 0, "Paris,2004,7\n", 2, 1}},
      {"key line, then heading line",
       "|KEYS,1,1,0\n|NAMES,city,year,value\nParis,2004,7\n",
       {3, {0, 1}, {"|NAMES", "city", "year", "value"}, 1, "Paris,2004,7\n", 2, 1}},
      {"heading line only", "|NAMES,a,b\nv,w\nx,y\n", {2, {0, 1}, {"|NAMES", "a", "b"}, 0, "v,w\nx,y\n", 1, 2}},
      {"key line only", "|KEYS,0,1,0\nv,w,x\n", {3, {1}, {}, 0, "v,w,x\n", 1, 1}},
      {"no zone", "v,w,x\na,b,c\n", {3, {0, 1, 2}, {}, 0, "v,w,x\na,b,c\n", 0, 2}},
      {"lines that hold neither word are skipped",
       "|OTHER,1,1\n|NAMES,a\nx|,q\nv\n",
       {1, {0}, {"|NAMES", "a"}, 1, "v\n", 3, 1}},
      {"nothing but a line that holds neither word", "|OTHER,1,1\nv,w,x\n", {3, {0, 1, 2}, {}, 0, "v,w,x\n", 1, 1}},
      {"words in lower case", "|names,a,b\n|Keys,1,0\nv,w,x\n", {3, {0, 1, 2}, {}, 0, "v,w,x\n", 2, 1}},
      {"comments and empty lines between",
       "|NAMES,a,b\n#c\n\n \t\r\n|KEYS,1,0\n#d\nv,w\n",
       {2, {0}, {"|NAMES", "a", "b"}, 0, "v,w\n", 6, 1}},
      {"a comment as the first line ends the zone",
       "#c\n|NAMES,a,b\nv,w\n",
       {1, {0}, {}, 0, "#c\n|NAMES,a,b\nv,w\n", 0, 2}},
      {"an empty first line ends the zone", "\n|NAMES,a\nv,w\n", {1, {0}, {}, 0, "\n|NAMES,a\nv,w\n", 0, 2}},
      {"a first line is taken as it stands, comment character or not",
       "#|NAMES,a,b\nv,w\n",
       {2, {0, 1}, {"#|NAMES", "a", "b"}, 0, "v,w\n", 1, 1}},
      {"a bar in another field", "NAMES,|a\nv,w\n", {2, {0, 1}, {}, 0, "NAMES,|a\nv,w\n", 0, 2}},
      {"the words without a bar", "NAMES KEYS,1\nv,w\n", {2, {0, 1}, {}, 0, "NAMES KEYS,1\nv,w\n", 0, 2}},
      {"a word in another field", "|x,NAMES,KEYS\nv,w,x\n", {3, {0, 1, 2}, {}, 0, "v,w,x\n", 1, 1}},
      {"a quoted marker", "\"|NAMES\",a,\"b,c\"\nv,w\n", {2, {0, 1}, {"|NAMES", "a", "b,c"}, 0, "v,w\n", 1, 1}},
      {"a word cut by a quoted separator", "\"|NA,MES\",a\nv,w\n", {2, {0, 1}, {}, 0, "v,w\n", 1, 1}},
      {"a word put together by quotes", "|NA\"\"MES,a\nv\n", {1, {0}, {"|NAMES", "a"}, 0, "v\n", 1, 1}},
      {"the decimal character is a point in headings too",
       "|NAMES.,a.b\nv\n",
       {1, {0}, {"|NAMES.", "a.b"}, 0, "v\n", 1, 1}},
      {"headings are not trimmed yet",
       " |NAMES , a ,b \nv,w\n",
       {2, {0, 1}, {" |NAMES ", " a ", "b "}, 0, "v,w\n", 1, 1}},
      {"a data line like a heading line ends nothing later",
       "v,w\n|NAMES,a\n",
       {2, {0, 1}, {}, 0, "v,w\n|NAMES,a\n", 0, 2}},
      {"zero byte in the marker", std::string("|NA\0MES,a\nv\n", 12), {1, {0}, {}, 0, "v\n", 1, 1}},
      {"carriage returns", "|NAMES,a,b\r\n|KEYS,0,1\r\nv,w\r\n", {2, {1}, {"|NAMES", "a", "b"}, 0, "v,w\r\n", 2, 1}},
  };
  expectAllZones(cases, nullptr);
}

TEST(HeadingZone, OfATableOfAFileOfSeveralTables) {
  const ZoneCase cases[] = {
      {"heading line, then key line",
       "A,1\nT|NAMES,city,year\nT|KEYS,1,0\nT,Paris,2004\nB,1\n",
       {3, {1}, {"T|NAMES", "city", "year"}, 1, "T,Paris,2004\nB,1\n", 3, 1}},
      {"key line, then heading line: columns are those of the first line",
       "T|KEYS,1,0,0\nT|NAMES,a\nT,x,y,z\n",
       {4, {1}, {"T|NAMES", "a"}, 1, "T,x,y,z\n", 2, 1}},
      {"heading line only", "T|NAMES,a,b\nT,v,w\n", {3, {1, 2}, {"T|NAMES", "a", "b"}, 0, "T,v,w\n", 1, 1}},
      {"key line only", "T|KEYS,0,1\nT,v,w\n", {3, {2}, {}, 0, "T,v,w\n", 1, 1}},
      {"no zone", "#c\nT,v,w\nT,x,y\n", {3, {1, 2}, {}, 0, "T,v,w\nT,x,y\n", 1, 2}},
      {"lines that hold neither word are skipped",
       "T|OTHER,1\nT|NAMES,a\nT,v\n",
       {2, {1}, {"T|NAMES", "a"}, 1, "T,v\n", 2, 1}},
      {"words in lower case", "T|names,a\nT|keys,0\nT,v\n", {2, {1}, {}, 0, "T,v\n", 2, 1}},
      {"comments and empty lines between",
       "T|NAMES,a\n#c\n\nT|KEYS,1\n  \nT,v\n",
       {2, {1}, {"T|NAMES", "a"}, 0, "T,v\n", 5, 1}},
      {"a heading line after data is data", "T,v\nT|NAMES,a\nT,w\n", {2, {1}, {}, 0, "T,v\nT|NAMES,a\nT,w\n", 0, 3}},
      {"a key line of zeros", "T|KEYS,0,0\nT,v,w\n", {3, {1, 2}, {}, 0, "T,v,w\n", 1, 1}},
      {"a marker that reads as 0", "T|KEYS,1,0\nT,v,w\n", {3, {1}, {}, 0, "T,v,w\n", 1, 1}},
      {"the zone stops behind the table's last line",
       "T|NAMES,a\nU|NAMES,b\nU,1\n",
       {2, {1}, {"T|NAMES", "a"}, 0, "U|NAMES,b\nU,1\n", 1, 0}},
      {"the last line of the table ends the zone of another kind",
       "T|NAMES,a\nT|KEYS,1\nU|KEYS,0\nU,1\n",
       {2, {1}, {"T|NAMES", "a"}, 0, "U|KEYS,0\nU,1\n", 2, 0}},
      {"a table of headings at the end of the file", "T|NAMES,a\n", {2, {1}, {"T|NAMES", "a"}, 0, "", 1, 0}},
  };
  expectAllZones(cases, "T");
}

TEST(HeadingZone, IsReadWithTheSettingsOfItsFile) {
  const DecimalPoint point;
  const std::string content = "|NAMES;'a;b';c,d\n%|KEYS;0;1\n  \n#|KEYS;'1';0\n%comment\n#1;1,5\n%2;2,5\n#3;3,5\n";
  for (const long isCached : {1L, 0L}) {
    SCOPED_TRACE(isCached);
    TestEnv env;
    TableOfFile table(env, content, nullptr, {isCached, ";", ',', '\'', '%', 0});
    expectZone(*table->getImpl(), content, {2, {0}, {"|NAMES", "a;b", "c.d"}, 0, "#1;1,5\n%2;2,5\n#3;3,5\n", 5, 2});
    const XelCsvLine line = table->getLineByNumber(1);
    EXPECT_EQ(getFieldTexts(line), (Texts{"#3", "3.5"}));
    EXPECT_EQ(line.getLineNumber(), 7);
    EXPECT_EQ(table->getLineByKey(1, "#1").getFloatByHeader("c.d"), 1.5);
    EXPECT_THROW(table->getLineByKey(1, "%2"), XelCsvReader::XelLineNotFoundException);
  }
}

TEST(HeadingZone, LeavesNumberOfFieldsAndLengthOfTheLineReadLast) {
  const struct {
    const char* name;
    const char* content;
    const char* tableName;
    long fields;
    long length;  // of the formatted line, terminators included
  } cases[] = {
      {"no zone", "a,b,c\nd\n", nullptr, 3, 6},
      {"the first data line", "|NAMES,a,b\n|KEYS,1,0\nv,w,x,y\nz\n", nullptr, 4, 8},
      {"the zone's last line, when the file ends", "|NAMES,a,b\n", nullptr, 3, 11},
      {"the zone's last line, when only comments follow", "|NAMES,a,b\n#c\n", nullptr, 3, 11},
      {"an empty file", "", nullptr, 1, 1},
      {"a line behind the table", "T|NAMES,a\nU,1,2,3\n", "T", 4, 8},
      {"a heading line behind the table", "T|NAMES,a\nU|NAMES,1,2\nU,5\n", "T", 3, 12},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    FileSettings settings;
    settings.isCached = 0;  // a cached table goes on to its data lines
    TestEnv env;
    TableOfFile table(env, row.content, row.tableName, settings);
    EXPECT_EQ(table->getImpl()->getNumberOfFields(), row.fields);
    EXPECT_EQ(table->getImpl()->getLineLength(), row.length);
  }
}

TEST(HeadingZone, MarkerOneMakesTheColumnOfTheTablesNameAKey) {
  expectZones({"", "1|KEYS,0,1\n1,v,w\n", {3, {0, 2}, {}, 0, "1,v,w\n", 1, 1}}, "1");
}

TEST(HeadingZone, WordsCountAnywhereInTheFirstField) {
  const ZoneCase oneTable[] = {
      {"around the bar", "xxNAMESyy|zz,a\nxKEYS|,1\nv\n", {1, {0}, {"xxNAMESyy|zz", "a"}, 0, "v\n", 2, 1}},
      {"glued to other letters",
       "|FILENAMES,a,b\nMONKEYS|,0,1\nv,w\n",
       {2, {1}, {"|FILENAMES", "a", "b"}, 0, "v,w\n", 2, 1}},
  };
  expectAllZones(oneTable, nullptr);
  expectZones({"in the table's name",
               "TABLENAMES|x,1\nTABLENAMES,v\n",
               {2, {1}, {"TABLENAMES|x", "1"}, 0, "TABLENAMES,v\n", 1, 1}},
              "TABLENAMES");
  expectZones({"both words in name and marker",
               "MONKEYS|NAMES,a,1\nMONKEYS,v,w\n",
               {3, {2}, {"MONKEYS|NAMES", "a", "1"}, 0, "MONKEYS,v,w\n", 1, 1}},
              "MONKEYS");
}

TEST(HeadingZone, OneLineMayBeHeadingAndKeyLine) {
  expectZones({"", "|NAMES KEYS,1,x,1\nv,w,z\n", {3, {0, 2}, {"|NAMES KEYS", "1", "x", "1"}, 0, "v,w,z\n", 1, 1}},
              nullptr);
  expectZones({"", "T|KEYSNAMES,1,x\nT,v,w\n", {3, {1}, {"T|KEYSNAMES", "1", "x"}, 0, "T,v,w\n", 1, 1}}, "T");
}

TEST(HeadingZone, ASecondHeadingLineReplacesTheFirst) {
  expectZones({"", "|NAMES,a,b\n|NAMES,c\nv,w\n", {1, {0}, {"|NAMES", "c"}, 1, "v,w\n", 2, 1}}, nullptr);
  expectZones({"", "T|NAMES,a,b\nT|NAMES,c\nT,v,w\n", {3, {1, 2}, {"T|NAMES", "c"}, 1, "T,v,w\n", 2, 1}}, "T");
}

TEST(HeadingZone, KeyLineOfZerosMakesEveryColumnAKey) {
  expectZones({"", "|KEYS,0,0\nv,w\n", {2, {0, 1}, {}, 0, "v,w\n", 1, 1}}, nullptr);
  expectZones({"", "|NAMES,a,b\n|KEYS,0,0\nv,w\n", {2, {0, 1}, {"|NAMES", "a", "b"}, 0, "v,w\n", 2, 1}}, nullptr);
  expectZones({"", "T|KEYS,0,2\nT,v,w\n", {3, {1, 2}, {}, 0, "T,v,w\n", 1, 1}}, "T");
}

TEST(HeadingZone, OnlyTheNumberOneMarksAKey) {
  const std::string line = "1,01,+1, 1,1abc,1.5,2,0,-1,,x,11,\"1\",1 ";
  expectZones(
      {"", "|KEYS," + line + "\n,,,,,,,,,,,,,\n", {14, {0, 1, 2, 3, 4, 5, 12, 13}, {}, 0, ",,,,,,,,,,,,,\n", 1, 1}},
      nullptr);
  expectZones({"",
               "T|KEYS," + line + "\nT,,,,,,,,,,,,,,\n",
               {15, {1, 2, 3, 4, 5, 6, 13, 14}, {}, 0, "T,,,,,,,,,,,,,,\n", 1, 1}},
              "T");
}

TEST(HeadingZone, RepeatedKeyLinesRepeatPositions) {
  expectZones({"", "|KEYS,1,0\n|KEYS,1,0\nv,w\n", {2, {0, 0}, {}, 0, "v,w\n", 2, 1}}, nullptr);
  expectZones({"", "T|KEYS,1,0\nT|KEYS,1,1\nT,v,w\n", {3, {1, 1, 2}, {}, 0, "T,v,w\n", 2, 1}}, "T");
}

TEST(HeadingZone, WithoutHeadingLineTheLastKeyLineCountsTheColumns) {
  expectZones({"", "|KEYS,1,0\n|KEYS,0,0,1,0\nv,w,x,y\n", {4, {0, 2}, {}, 0, "v,w,x,y\n", 2, 1}}, nullptr);
  expectZones({"", "|KEYS,1,0,0,0\n|KEYS,0,1\nv,w,x,y\n", {2, {0, 1}, {}, 0, "v,w,x,y\n", 2, 1}}, nullptr);
}

TEST(HeadingZone, AKeyLineBehindAHeadingLineDoesNotCountTheColumns) {
  expectZones({"", "|NAMES,a,b\n|KEYS,0,0,0,1\nv,w,x,y\n", {2, {3}, {"|NAMES", "a", "b"}, 0, "v,w,x,y\n", 2, 1}},
              nullptr);
}

TEST(HeadingZone, ATableWithoutColumnsHasNoKeys) {
  expectZones({"a heading line of its marker alone", "|NAMES\nv\n", {0, {}, {"|NAMES"}, 0, "v\n", 1, 1}}, nullptr);
  expectZones({"a key line of its marker alone", "|KEYS\nv\n", {0, {}, {}, 0, "v\n", 1, 1}}, nullptr);
  expectZones({"a table of its name alone", "T\nU,1\n", {1, {}, {}, 0, "T\nU,1\n", 0, 1}}, "T");
}

TEST(HeadingZone, HeadingLineThatEndsTheFileWithoutLineFeedIsADataLineToo) {
  const ZoneCase oneTable[] = {
      {"heading line", "|NAMES,a,b", {2, {0, 1}, {"|NAMES", "a", "b"}, 0, "|NAMES,a,b", 0, 1}},
      {"heading line with line feed", "|NAMES,a,b\n", {2, {0, 1}, {"|NAMES", "a", "b"}, 0, "", 1, 0}},
      {"second line of the zone", "|KEYS,1,0\n|NAMES,a,b", {2, {0}, {"|NAMES", "a", "b"}, 1, "|NAMES,a,b", 1, 1}},
      {"key line", "|KEYS,1", {1, {0}, {}, 0, "|KEYS,1", 0, 1}},
      {"a comment behind it", "|NAMES,a\n#x", {1, {0}, {"|NAMES", "a"}, 0, "#x", 1, 0}},
      {"a comment and a line feed behind it", "|NAMES,a\n#x\n", {1, {0}, {"|NAMES", "a"}, 0, "", 2, 0}},
  };
  expectAllZones(oneTable, nullptr);
  expectZones({"", "A,1\nT|NAMES,a", {2, {1}, {"T|NAMES", "a"}, 1, "T|NAMES,a", 1, 1}}, "T");
  TestEnv env;
  TableOfFile table(env, "|NAMES,a,b");
  EXPECT_EQ(getFieldTexts(table->getLineByNumber(0)), (Texts{"|NAMES", "a", "b"}));
}

TEST(HeadingZone, OfAnEmptyFileIsThatOfAnEmptyLine) { expectZones({"", "", {1, {0}, {}, 0, "", 0, 0}}, nullptr); }

TEST(HeadingZone, OfATableThatTheFileLostIsThatOfAnEmptyLine) {
  for (const long isCached : {1L, 0L}) {
    TestEnv env;
    const DataFile file("A,1\nT|NAMES,a\nT,v\n");
    XelCsvReader reader(env, file.getName(), 1, 0, ",", '.', '"', '#', isCached);
    file.write("A,1\n");
    XelCsvTableReader table = reader.getTableByName("T");
    expectZone(*table.getImpl(), "A,1\n", {1, {}, {}, 0, "", 1, 0});
    table.end();
    reader.end();
  }
}

TEST(HeadingZone, EndsAtAPieceOfALongLine) {
  const std::string start = "|NAMES,";
  const std::string heading(9999 - start.size(), 'h');
  const std::string rest(2001, 'h');
  expectZones({"", start + heading + rest + "\nv\n", {1, {0}, {"|NAMES", heading}, 0, rest + "\nv\n", 1, 2}}, nullptr);
}

TEST(HeadingZone, GoesOnInAPieceThatHoldsABar) {
  const std::string start = "|NAMES,a,";
  const std::string second = "|KEYS,1,0\n";
  const std::string content = start + std::string(9999 - start.size(), 'b') + second + "v,w\n";
  expectZones({"", content, {2, {0}, {"|NAMES", "a", std::string(9999 - start.size(), 'b')}, 0, "v,w\n", 2, 1}},
              nullptr);
}

TEST(HeadingZone, OfASplitTableSwallowsOtherTablesHeadings) {
  expectZones({"a key line", "A|NAMES,x\nB|KEYS,1\nA,1\nB,2\n", {2, {1}, {"A|NAMES", "x"}, 0, "A,1\nB,2\n", 2, 1}}, "A",
              true);
  expectZones({"a heading line", "A|NAMES,x\nB|NAMES,y\nA,1\n", {2, {1}, {"B|NAMES", "y"}, 1, "A,1\n", 2, 1}}, "A",
              true);
  expectZones(
      {"the other table", "A|NAMES,x\nB|NAMES,y\nA,1\nB,2\n", {2, {1}, {"B|NAMES", "y"}, 1, "A,1\nB,2\n", 2, 1}}, "B",
      true);
  expectZones({"a data line of another table ends the zone",
               "A|NAMES,x\nB,7\nA|KEYS,0\nA,1\n",
               {2, {1}, {"A|NAMES", "x"}, 0, "B,7\nA|KEYS,0\nA,1\n", 1, 1}},
              "A", true);
  expectZones(
      {"behind the table's last line", "A|NAMES,x\nB|NAMES,y\n", {2, {1}, {"A|NAMES", "x"}, 0, "B|NAMES,y\n", 1, 0}},
      "A", true);
}

TEST(HeadingZone, KnowsWhereTheTableEnds) {
  TestEnv env;
  const std::string content = "A|NAMES,x\nA,1\nA,2\nB,3\n";
  TableOfFile table(env, content, "A");
  EXPECT_EQ(table->getImpl()->getEndOffset(), static_cast<long>(content.find("A,2")));
  TableOfFile oneTable(env, content);
  EXPECT_EQ(oneTable->getImpl()->getEndOffset(), static_cast<long>(content.size()));
}

TEST(HeadingZone, ReportsAnOverflowInAKeyLine) {
  for (const long isCached : {1L, 0L}) {
    FileSettings settings;
    settings.isCached = isCached;
    TestEnv env;
    EXPECT_XEL_THROW(
        TableOfFile(env, "|NAMES,a,b\n|KEYS,1,3000000000\nv,w\n", nullptr, settings), Overflow,
        "XelCsvReader::XelOverflowException : OVERFLOW while reading field 2  of line number 1 as integer");
    EXPECT_XEL_THROW(
        TableOfFile(env, "A,1\nT|KEYS,1,99999999999999999999\nT,v,w\n", "T", settings), Overflow,
        "XelCsvReader::XelOverflowException : OVERFLOW while reading field 2  of line number 1 in table T as integer");
    EXPECT_XEL_THROW(TableOfFile(env, "-2147483649|KEYS,1\n-2147483649,v\n", "-2147483649", settings), Overflow,
                     "XelCsvReader::XelOverflowException : OVERFLOW while reading field 0  of line number 0 in table "
                     "-2147483649 as integer");
  }
}

TEST(HeadingZone, OfAOneTableFileDoesNotReadItsMarkerAsANumber) {
  expectZones({"", "99999999999|KEYS,0,1\nv,w\n", {2, {1}, {}, 0, "v,w\n", 1, 1}}, nullptr);
}

TEST(HeadingZone, OverflowInOneTableLeavesTheOthersAlone) {
  TestEnv env;
  const DataFile file("T|KEYS,3000000000\nT,v\nU|NAMES,a\nU,w\n");
  XelCsvReader reader(env, file.getName(), 1);
  EXPECT_THROW(reader.getTableByName("T"), Overflow);
  XelCsvTableReader table = reader.getTableByName("U");
  EXPECT_STREQ(table.getLineByNumber(0).getStringByHeader("a"), "w");
  EXPECT_THROW(reader.getTableByName("T"), Overflow);
  table.end();
  reader.end();
}

TEST(HeadingZone, WithoutAStartIsReadFromTheBeginningOfTheFile) {
  TestEnv env;
  const std::string content = "A|NAMES,x\nA,1\nB,2\n";
  const DataFile file(content);
  XelCsvReader reader(env, file.getName(), 1);
  {
    const auto table = XelNew<XelNonCachedCsvTableReaderI>(env, reader.getImpl(), nullptr, nullptr);
    expectZone(*table, content, {2, {1}, {"A|NAMES", "x"}, 0, "A,1\nB,2\n", 1, 2});
    EXPECT_EQ(table->getEndOffset(), static_cast<long>(content.size()));
    EXPECT_EQ(table->getNameOfTable(), nullptr);
  }
  reader.end();
}

TEST(HeadingZone, OfAOneTableFileTakesNoStart) {
  TestEnv env;
  const std::string content = "|NAMES,x\n1\n";
  TableOfFile oneTable(env, content);
  const OffsetAndLineNumber start{9, 1};
  const auto table = XelNew<XelNonCachedCsvTableReaderI>(env, oneTable->getImpl()->getReader(), nullptr, &start);
  expectZone(*table, content, {1, {0}, {"|NAMES", "x"}, 0, "1\n", 1, 1});
}

TEST(HeadingZone, OfATableThatTheDirectoryDoesNotKnowIsNotRead) {
  TestEnv env;
  TableOfFile known(env, "A,1\n", "A");
  XelCsvReaderI* reader = known->getImpl()->getReader();
  const OffsetAndLineNumber start{0, 0};
  EXPECT_XEL_THROW(XelNew<XelNonCachedCsvTableReaderI>(env, reader, "Z", &start), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : No Table having this name Z.");
  EXPECT_XEL_THROW(XelNew<XelCachedCsvTableReaderI>(env, reader, "Z", &start), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : No Table having this name Z.");
}

TEST(HeadingZone, ThatCannotBeReachedIsACorruptedFile) {
  TestEnv env;
  TableOfFile known(env, "A,1\n", "A");
  XelCsvReaderI* reader = known->getImpl()->getReader();
  const OffsetAndLineNumber start{-1, 0};
  EXPECT_XEL_THROW(XelNew<XelNonCachedCsvTableReaderI>(env, reader, "A", &start), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table A");
  EXPECT_XEL_THROW(XelNew<XelCachedCsvTableReaderI>(env, reader, "A", &start), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table A");
}

TEST(HeadingZone, OfAFileThatCannotBeOpenedIsNotRead) {
  TestEnv env;
  TableOfFile known(env, "A|NAMES,x\nA,1\n", "A");
  XelCsvReaderI* reader = known->getImpl()->getReader();
  known.getFile().remove();
  const OffsetAndLineNumber start{0, 0};
  const auto table = XelNew<XelNonCachedCsvTableReaderI>(env, reader, "A", &start);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(table->getOpenError(), ENOENT);
  EXPECT_EQ(table->getFirstLine(), nullptr);
  EXPECT_EQ(table->getNumberOfColumns(), 0);
  EXPECT_EQ(table->getNumberOfFields(), 0);
  EXPECT_EQ(table->getNumberOfKeys(), 0);
  EXPECT_EQ(table->getFirstDataOffset(), 0);
  EXPECT_EQ(table->getEndOffset(), 0);
  EXPECT_STREQ(table->getNameOfTable(), "A");
}

TEST(HeadingZone, KeepsItsTablesNameWhenTheCallersIsGone) {
  TestEnv env;
  TableOfFile known(env, "A|NAMES,x\nA,1\n", "A");
  XelEnvOwner<XelNonCachedCsvTableReaderI> table;
  {
    std::string name = "A";
    const OffsetAndLineNumber start{0, 0};
    table = XelNew<XelNonCachedCsvTableReaderI>(env, known->getImpl()->getReader(), name.c_str(), &start);
    name = "Z";
  }
  EXPECT_STREQ(table->getNameOfTable(), "A");
}

TEST(HeadingZone, LosesNothingWhenMemoryIsExhausted) {
  const char* const contents[] = {"|NAMES,a,b\n|NAMES,c,d\n|KEYS,1,0\nv,w\nx,y\n",
                                  "T|NAMES,a,b\nT|NAMES,c,d\nT|KEYS,1,0\nT,v,w\nT,x,y\n"};
  for (const long isCached : {1L, 0L}) {
    for (const char* content : contents) {
      const char* const name = content[0] == 'T' ? "T" : nullptr;
      const long injected = forEachFailingAllocation([&](XelEnv env) {
        FileSettings settings;
        settings.isCached = isCached;
        TableOfFile table(env, content, name, settings);
        EXPECT_EQ(table->getNumberOfKeys(), 1);
        EXPECT_EQ(table->getPosition("d"), name == nullptr ? 1 : 2);
      });
      EXPECT_GE(injected, 20);
    }
  }
}

TEST(HeadingZone, CanBeReadAgainAfterMemoryWasExhausted) {
  TestEnv env;
  const DataFile file("T|NAMES,a\nT|KEYS,1\nT,v\n");
  XelCsvReader reader(env, file.getName(), 1);
  for (long countdown = 0;; ++countdown) {
    env.getAllocator().failAfter(countdown);
    try {
      XelCsvTableReader table = reader.getTableByName("T");
      env.getAllocator().neverFail();
      EXPECT_STREQ(table.getLineByKey(1, "v").getStringByHeader("a"), "v");
      table.end();
      break;
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(reader.isTableExists("T"));
    }
  }
  reader.end();
}
