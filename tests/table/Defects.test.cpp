// Defects that were found once, each with the test that showed it.
#include <gtest/gtest.h>

#include <string>

#include "csv/line/XelCsvLines.h"
#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"

namespace {

// Lines that fill the largest block of a pass before the walk jumps over the rest.
std::string makeFileWithAGapInFullBlocks() {
  std::string content;
  for (long line = 0; line < 1500; ++line) content += "A,k" + std::to_string(line) + ',' + std::string(60, 'x') + '\n';
  const std::string comment = '#' + std::string(9000, 'c') + '\n';
  for (long line = 0; line < 80; ++line) content += comment;
  content += "A,first,s\n";
  for (long line = 0; line < 29; ++line) content += comment;
  content += "A,last," + std::string(9000, 'y') + '\n';
  return content;
}

}  // namespace

// Going to an offset inside the block left the line read before in place, and a full block then had no room to read into.
TEST(CachedIterator, WalksOverGapsAsLargeAsABlock) {
  TestEnv env;
  const DataFile file(makeFileWithAGapInFullBlocks());
  XelCsvReader reader(env, file.getName(), 1);
  XelCsvTableReader table = reader.getTableByName("A");
  long lines = 0;
  std::string last;
  for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) {
    ++lines;
    last = (*it).getStringByPosition(1);
  }
  EXPECT_EQ(lines, 1502);
  EXPECT_EQ(last, "last");
  table.end();
  reader.end();
}

// The line read before stood for one that could not be read after going to an offset.
TEST(CsvLines, HasNoLineAfterGoingToAnOffset) {
  TestEnv env;
  const DataFile file("first\nsecond\n");
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
  ASSERT_TRUE(lines.read());
  ASSERT_TRUE(lines.seek(6));
  EXPECT_EQ(lines.getLine().getLength(), 0);
  ASSERT_TRUE(lines.read());
  EXPECT_EQ(std::string(lines.getLine().begin, lines.getLine().end), "second\n");
}

// The record of an iterator kept the environment of a line of another one that was copied into it.
TEST(IteratorsLine, IsOfItsTablesEnvironmentAgainAfterALineOfAnotherWasCopiedIntoIt) {
  TestEnv env;
  TestEnv otherEnv;
  const DataFile file("a,1\nb,2\n");
  XelCsvReader reader(env, file.getName());
  XelCsvReader otherReader(otherEnv, file.getName());
  XelCsvReader::LineIterator it(reader);
  XelCsvLine line = *it;
  line.copy(otherReader.getLineByNumber(1));
  ++it;
  EXPECT_EQ((*it).getEnv().getImpl(), env.get().getImpl());
  XelCsvLine kept;
  kept.copy(*it);
  EXPECT_STREQ(kept.getStringByPosition(0), "b");
  kept.end();
  it.end();
  reader.end();
  otherReader.end();
}

// The key was composed in the reader's environment and given back to that of the table.
TEST(ReaderGetLineByKey, GivesTheKeyBackWhenTheOneTableIsACopyFromAnotherEnvironment) {
  TestEnv env;
  TestEnv otherEnv;
  const DataFile file("|KEYS,1,1,0\na,1,x\n");
  XelCsvReader reader(env, file.getName());
  XelCsvReader otherReader(otherEnv, file.getName());
  XelCsvTableReader table = reader.getReaderForUniqueTableFile();
  table.copy(otherReader.getReaderForUniqueTableFile());
  EXPECT_STREQ(reader.getLineByKey(2, "a", "1").getStringByPosition(2), "x");
  EXPECT_THROW(reader.getLineByKey(2, "b", "1"), XelCsvReader::XelLineNotFoundException);
  table.end();
  reader.end();
  otherReader.end();
}

// A copy that failed left a reader's own table half empty.
TEST(TableCopy, IntoALentTableThatFailsLeavesItAsItWas) {
  for (const long isCached : {0L, 1L}) {
    SCOPED_TRACE(isCached);
    TestEnv env;
    const DataFile file("a,1\nb,2\n");
    const DataFile other("c,3\n");
    XelCsvReader reader(env, file.getName(), 0, 0, ",", '.', '"', '#', isCached);
    XelCsvReader otherReader(env, other.getName(), 0, 0, ",", '.', '"', '#', isCached);
    other.remove();
    XelCsvTableReader table = reader.getReaderForUniqueTableFile();
    EXPECT_THROW(table.copy(otherReader.getReaderForUniqueTableFile()), XelCsvReader::XelFileNotFoundException);
    EXPECT_TRUE(table.isEmpty());
    EXPECT_EQ(reader.getNumberOfItems(), 2);
    EXPECT_STREQ(reader.getLineByNumber(1).getStringByPosition(0), "b");
    reader.end();
    otherReader.end();
  }
}

TEST(TableCopy, IntoALentTableLosesNothingWhateverAllocationFails) {
  const DataFile file("|NAMES,n,v\na,1\nb,2\n");
  const long failures = forEachFailingAllocation([&](XelEnv env) {
    XelCsvReader reader;
    XelCsvReader otherReader;
    const EndGuard endReader(reader);
    const EndGuard endOtherReader(otherReader);
    reader = XelCsvReader(env, file.getName());
    otherReader = XelCsvReader(env, file.getName());
    XelCsvTableReader table = reader.getReaderForUniqueTableFile();
    try {
      table.copy(otherReader.getReaderForUniqueTableFile());
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(table.isEmpty());
      EXPECT_EQ(reader.getNumberOfItems(), 2);
      EXPECT_EQ(reader.getPosition("v"), 1);
      throw;
    }
  });
  EXPECT_GT(failures, 0);
}

// The last line was replaced by another record, and its handles pointed to nothing.
TEST(TableCopy, OfALastLineShowsInTheHandlesOfTheOldOne) {
  TestEnv env;
  const DataFile file("A,1\nA,2\nB,x\n");
  XelCsvReader reader(env, file.getName(), 1);
  XelCsvTableReader table = reader.getTableByName("A");
  XelCsvTableReader other = reader.getTableByName("B");
  const XelCsvLine line = table.getLineByNumber(0);
  other.getLineByNumber(0);
  table.copy(other);
  EXPECT_STREQ(line.getStringByPosition(1), "x");
  EXPECT_EQ(line.getLineNumber(), 2);
  table.end();
  other.end();
  reader.end();
}

// A copy between two handles of one table that failed destroyed the table of both.
TEST(TableCopy, BetweenHandlesOfOneTableThatFailsLeavesTheTable) {
  const DataFile file("A,1\nA,2\n");
  const long failures = forEachFailingAllocation([&](XelEnv env) {
    XelCsvReader reader;
    XelCsvTableReader table;
    const EndGuard endReader(reader);
    const EndGuard endTable(table);
    reader = XelCsvReader(env, file.getName(), 1);
    table = reader.getTableByName("A");
    table.getLineByNumber(1);
    XelCsvTableReader other = table;
    try {
      other.copy(table);
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(other.isEmpty());
      EXPECT_EQ(table.getNumberOfItems(), 2);
      throw;
    }
    other = XelCsvTableReader();
  });
  EXPECT_GT(failures, 0);
}

// The end of the table before a duplicated one was that of its first line.
TEST(FileScan, KeepsTheEndOfTheTableBeforeADuplicatedOne) {
  TestEnv env;
  const DataFile file("A,1\nB,1\nB,2\nA,2\n");
  const XelEnvOwner<XelCsvReaderI> reader =
      XelNew<XelCsvReaderI>(env.get(), env.get(), file.getName(), 1, 1, 0, ",", '.', '"', '#');
  EXPECT_TRUE(reader->isDuplicatedTableFound());
  EXPECT_EQ(reader->getEndOffset("A"), 0);
  EXPECT_EQ(reader->getEndOffset("B"), 8);
}

// A lookup that found nothing left the number of fields of an earlier line behind.
TEST(GetLineByNumberScanning, LeavesTheNumberOfFieldsOfTheLastLineLookedAtWhenItFails) {
  TestEnv env;
  const DataFile file("A,1,2\nA,3,4\nB,1,2,3,4\nC,1\n");
  XelCsvReader reader(env, file.getName(), 1, 0, ",", '.', '"', '#', 0);
  XelCsvTableReader table = reader.getTableByName("A");
  EXPECT_EQ(table.getImpl()->getNumberOfFields(), 3);
  EXPECT_XEL_THROW(table.getLineByNumber(99), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 99 in table A.");
  EXPECT_EQ(table.getImpl()->getNumberOfFields(), 5);
  table.end();
  reader.end();
}

// A handle asked what it was lent whether it was lent, also when that was gone.
TEST(EndOfALentHandle, LooksAtNothingThatIsGone) {
  TestEnv env;
  const DataFile file("A,1\nA,2\nB,3\n");
  const DataFile oneTable("a,1\nb,2\n");

  XelCsvReader reader(env, oneTable.getName());
  XelCsvTableReader table = reader.getReaderForUniqueTableFile();
  table.getLineByNumber(0);
  reader.end();
  table.end();

  XelCsvReader tables(env, file.getName(), 1);
  XelCsvReader::TableIterator it(tables);
  XelCsvTableReader current = *it;
  current.getLineByNumber(0);
  ++it;
  current.end();
  it.end();

  XelCsvTableReader owned = tables.getTableByName("A");
  XelCsvLine line = owned.getLineByNumber(0);
  owned.end();
  line.end();
  EXPECT_TRUE(line.isEmpty());
  tables.end();
}

// A lent line's handle ended a line of the user's that had taken its memory.
TEST(EndOfALentHandle, EndsNoOtherLine) {
  XelEnv env;  // its own manager hands a block that came back out again at once
  const DataFile file("a,1\nb,2\nc,3\n");
  XelCsvReader reader(env, file.getName());
  XelCsvTableReader table = reader.getReaderForUniqueTableFile();
  const XelCsvLine second = reader.getLineByNumber(1);
  XelCsvLine lent = table.getLineByNumber(0);
  table = XelCsvTableReader();  // the line is gone
  XelCsvLine kept;
  kept.copy(second);
  lent.end();
  XelCsvLine another;
  another.copy(reader.getLineByNumber(2));
  EXPECT_STREQ(kept.getStringByPosition(0), "b");
  EXPECT_STREQ(another.getStringByPosition(0), "c");
  kept.end();
  another.end();
  reader.end();
  env.end();
}

// A step that ran out of memory left a scanning iterator where it was, with a wrong number for the lines that followed.
TEST(ScanningIterator, HasEndedAfterAStepThatThrows) {
  std::string content;
  for (long line = 0; line < 2000; ++line) content += "A," + std::to_string(line) + ",some text to fill the line\n";
  const DataFile file(content);
  for (const long isMultiTable : {0L, 1L}) {
    SCOPED_TRACE(isMultiTable);
    TestEnv env;
    XelCsvReader reader(env, file.getName(), isMultiTable, 0, ",", '.', '"', '#', 0);
    XelCsvTableReader table = isMultiTable != 0 ? reader.getTableByName("A") : reader.getReaderForUniqueTableFile();
    XelCsvTableReader::LineIterator it(table);
    long number = 0;
    bool hasFailed = false;
    while (!hasFailed && it.ok()) {
      EXPECT_EQ((*it).getLineNumber(), number);
      env.getAllocator().failAfter(0);
      try {
        ++it;
        ++number;
      } catch (const std::bad_alloc&) {
        hasFailed = true;
      }
      env.getAllocator().neverFail();
    }
    EXPECT_TRUE(hasFailed) << "the file is too small for a larger block";
    EXPECT_TRUE((*it).isEmpty());
    ++it;
    EXPECT_FALSE(it.ok());
    table.end();
    reader.end();
  }
}

// Assigning an iterator whose walk could not begin left the target in its old walk.
TEST(LineIterator, IsOverNothingAfterAnAssignmentThatThrows) {
  for (const long isCached : {0L, 1L}) {
    SCOPED_TRACE(isCached);
    TestEnv env;
    const DataFile file("a,1\nb,2\n");
    const DataFile other("c,3\nd,4\n");
    XelCsvReader reader(env, file.getName(), 0, 0, ",", '.', '"', '#', isCached);
    XelCsvReader otherReader(env, other.getName(), 0, 0, ",", '.', '"', '#', 1 - isCached);
    XelCsvTableReader::LineIterator target(reader.getReaderForUniqueTableFile());
    const XelCsvTableReader::LineIterator source(otherReader.getReaderForUniqueTableFile());
    other.remove();
    EXPECT_THROW(target = source, XelCsvReader::XelFileNotFoundException);
    EXPECT_TRUE((*target).isEmpty());
    ++target;
    EXPECT_FALSE(target.ok());
    target.end();
    reader.end();
    otherReader.end();
  }
}
