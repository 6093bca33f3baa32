// The iterators of the two kinds of tables, by themselves.
#include <gtest/gtest.h>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

using Lines = std::vector<std::string>;

XelNonCachedCsvTableReaderI* scanning(const OpenTable& open) {
  return dynamic_cast<XelNonCachedCsvTableReaderI*>(open.table.getImpl());
}

XelCachedCsvTableReaderI* cached(const OpenTable& open) {
  return dynamic_cast<XelCachedCsvTableReaderI*>(open.table.getImpl());
}

template <class Iterator>
std::string current(const Iterator& it) {
  return textOf(XelCsvLine(it.getLine()));
}

template <class Iterator>
Lines stepThrough(Iterator& it) {
  Lines lines;
  for (; it.isOk(); ++it) lines.push_back(current(it));
  return lines;
}

}  // namespace

// ---- Scanning.

TEST(ScanningIterator, FirstLineIsNotNameTested) {
  OpenTable open("A|NAMES,h\nB,1\nA,2\nB,3\nA,4\n", Kind::Scanning, "A", true);
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
  EXPECT_EQ(open.getAll(), (Lines{"1: [B][1]", "2: [A][2]", "4: [A][4]"}));
}

TEST(ScanningIterator, OfAOneTableFileRunsToTheEndOfTheFile) {
  OpenTable open("a,1\nb,2\n", Kind::Scanning);
  open.file.write("a,1\nb,2\nc,3\nd,4\n");
  // A line that begins where the file ended belongs to the table, those after it only to the walk.
  EXPECT_EQ(open.table.getNumberOfItems(), 3);
  EXPECT_EQ(open.getAll(), (Lines{"0: [a][1]", "1: [b][2]", "2: [c][3]", "3: [d][4]"}));
}

TEST(ScanningIterator, OfANamedTableStopsAtItsEnd) {
  OpenTable open("A,1\nA,2\nB,3\nC,4\n", Kind::Scanning, "A");
  EXPECT_EQ(open.getAll(), (Lines{"0: [A][1]", "1: [A][2]"}));
}

TEST(ScanningIterator, CopyInAOneTableFileStandsOnTheFirstLine) {
  OpenTable open("# comment\na,1\nb,2\nc,3\n", Kind::Scanning);
  XelNonCachedCsvLineIteratorI it(scanning(open));
  ++it;
  ++it;
  EXPECT_EQ(current(it), "3: [c][3]");
  XelNonCachedCsvLineIteratorI copied(it);
  EXPECT_EQ(it.getLine(), nullptr);
  EXPECT_EQ(stepThrough(copied), (Lines{"3: [a][1]", "4: [b][2]", "5: [c][3]"}));
}

TEST(ScanningIterator, CopyInAFileOfSeveralTablesGoesOnFromTheLine) {
  for (const bool isSplit : {false, true}) {
    SCOPED_TRACE(isSplit);
    OpenTable open("A,1\nA,2\n#\nA,3\nB,4\n", Kind::Scanning, "A", isSplit);
    XelNonCachedCsvLineIteratorI it(scanning(open));
    ++it;
    XelNonCachedCsvLineIteratorI copied(it);
    EXPECT_TRUE(it.isOk());
    EXPECT_EQ(it.getLine(), nullptr);
    EXPECT_EQ(stepThrough(copied), (Lines{"1: [A][2]", "3: [A][3]"}));
    ++it;
    EXPECT_FALSE(it.isOk());
  }
}

TEST(ScanningIterator, OfASplitTablePassesOverTheLinesOfOthers) {
  OpenTable open("A,1\nB,2\nB,3\n# A\n A ,4\nB,5\n", Kind::Scanning, "A", true);
  EXPECT_EQ(open.getAll(), (Lines{"0: [A][1]", "4: [A][4]"}));
}

TEST(ScanningIterator, EndsWhereNoOtherLineHasTheName) {
  // A name in quotes never equals the name as the directory has it; the walk ends with the file, however that ends.
  for (const char* content : {"\"Q\",1\n\"Q\",2\n", "\"Q\",1\n\"Q\",2", "\"Q\",1\n\"Q\",2\n\"Q\",3", "\"Q\",1"}) {
    SCOPED_TRACE(content);
    OpenTable open(content, Kind::Scanning, "\"Q\"", true);
    EXPECT_EQ(open.getAll(), (Lines{"0: [Q][1]"}));
  }
}

TEST(ScanningIterator, FirstLineBeyondTheEndOfTheTableIsNone) {
  OpenTable open("A|NAMES,h\nB,1\n", Kind::Scanning, "A");
  EXPECT_TRUE(open.getAll().empty());
  EXPECT_EQ(open.table.getNumberOfItems(), 0);
}

TEST(ScanningIterator, HeadingLineThatEndsTheFileIsTheOneDataLine) {
  OpenTable open("|NAMES,a,b", Kind::Scanning);
  EXPECT_EQ(open.table.getNumberOfItems(), 1);
  EXPECT_EQ(open.getAll(), (Lines{"0: [|NAMES][a][b]"}));
  OpenTable indexed("|NAMES,a,b", Kind::Cached);
  EXPECT_EQ(indexed.table.getNumberOfItems(), 1);
  EXPECT_EQ(indexed.getAll(), (Lines{"0: [|NAMES][a][b]"}));
}

TEST(ScanningIterator, OverNoLineKeepsItsFileUntilItEnds) {
  OpenTable open("A|NAMES,h\nB,1\n", Kind::Scanning, "A");
  const long openFiles = countOpenFiles();
  const long blocks = open.env.getAllocator().getBlocksOut();
  {
    const XelNonCachedCsvLineIteratorI it(scanning(open));
    EXPECT_FALSE(it.isOk());
    EXPECT_EQ(countOpenFiles(), openFiles + 1);
  }
  EXPECT_EQ(countOpenFiles(), openFiles);
  const XelNonCachedCsvLineIteratorI it(scanning(open));
  it.clear();
  EXPECT_EQ(countOpenFiles(), openFiles);
  EXPECT_EQ(open.env.getAllocator().getBlocksOut(), blocks);
}

// ---- Both.

TEST(TableIterators, AssignmentTakesThePositionOverAndEndsTheSource) {
  OpenTable open("A,1\nA,2\nA,3\nB,4\nB,5\n", Kind::Scanning, "A");
  XelNonCachedCsvLineIteratorI it(scanning(open));
  ++it;
  XelNonCachedCsvLineIteratorI other(scanning(open));
  other = it;
  EXPECT_EQ(it.getLine(), nullptr);
  EXPECT_EQ(stepThrough(other), (Lines{"1: [A][2]", "2: [A][3]"}));

  OpenTable indexed("A,1\nA,2\nA,3\nB,4\nB,5\n", Kind::Cached, "A");
  XelCachedCsvLineIteratorI at(cached(indexed));
  ++at;
  XelCachedCsvLineIteratorI another(cached(indexed));
  another = at;
  EXPECT_EQ(at.getLine(), nullptr);
  EXPECT_EQ(stepThrough(another), (Lines{"1: [A][2]", "2: [A][3]"}));
}

TEST(TableIterators, AssignmentToItselfChangesNothing) {
  OpenTable open("A,1\nA,2\n", Kind::Scanning, "A");
  XelNonCachedCsvLineIteratorI it(scanning(open));
  XelNonCachedCsvLineIteratorI& same = it;
  it = same;
  EXPECT_EQ(stepThrough(it), (Lines{"0: [A][1]", "1: [A][2]"}));
  OpenTable indexed("A,1\nA,2\n", Kind::Cached, "A");
  XelCachedCsvLineIteratorI at(cached(indexed));
  XelCachedCsvLineIteratorI& sameAt = at;
  at = sameAt;
  EXPECT_EQ(stepThrough(at), (Lines{"0: [A][1]", "1: [A][2]"}));
}

TEST(TableIterators, CopyOfAnEndedOrEmptyOneIsEmpty) {
  OpenTable open("a\n", Kind::Scanning);
  XelNonCachedCsvLineIteratorI it(scanning(open));
  it.clear();
  EXPECT_TRUE(it.isOk());
  const XelNonCachedCsvLineIteratorI copied(it);
  EXPECT_FALSE(copied.isOk());
  EXPECT_EQ(copied.getLine(), nullptr);
  const XelNonCachedCsvLineIteratorI empty;
  const XelNonCachedCsvLineIteratorI emptyCopy(empty);
  EXPECT_FALSE(emptyCopy.isOk());

  OpenTable indexed("a\n", Kind::Cached);
  XelCachedCsvLineIteratorI at(cached(indexed));
  at.clear();
  EXPECT_TRUE(at.isOk());
  const XelCachedCsvLineIteratorI copiedAt(at);
  EXPECT_FALSE(copiedAt.isOk());
  EXPECT_EQ(copiedAt.getLine(), nullptr);
  const XelCachedCsvLineIteratorI none;
  const XelCachedCsvLineIteratorI noneCopy(none);
  EXPECT_FALSE(noneCopy.isOk());
}

TEST(TableIterators, TableThatHasNoLinesOpensAndLosesNothing) {
  OpenTable open("A|NAMES,h\nB,1\n", Kind::Scanning, "A");
  XelNonCachedCsvLineIteratorI it(scanning(open));
  EXPECT_FALSE(it.isOk());
  ++it;
  EXPECT_FALSE(it.isOk());
  const XelNonCachedCsvLineIteratorI copied(it);
  EXPECT_FALSE(copied.isOk());
  OpenTable indexed("A|NAMES,h\nB,1\n", Kind::Cached, "A");
  XelCachedCsvLineIteratorI at(cached(indexed));
  EXPECT_FALSE(at.isOk());
  ++at;
  EXPECT_FALSE(at.isOk());
}

TEST(TableIterators, AnOpenThatFailsThrowsAndLosesNothing) {
  OpenTable open("A,1\nA,2\n", Kind::Scanning, "A");
  OpenTable indexed("A,1\nA,2\n", Kind::Cached, "A");
  const XelNonCachedCsvLineIteratorI it(scanning(open));
  const XelCachedCsvLineIteratorI at(cached(indexed));
  open.file.remove();
  indexed.file.remove();
  EXPECT_XEL_THROW(XelNonCachedCsvLineIteratorI(scanning(open)), XelCsvReader::XelFileNotFoundException,
                   textOfMissing(open.file));
  EXPECT_XEL_THROW(XelNonCachedCsvLineIteratorI(it), XelCsvReader::XelFileNotFoundException, textOfMissing(open.file));
  EXPECT_EQ(it.getLine(), nullptr);
  EXPECT_XEL_THROW(XelCachedCsvLineIteratorI(cached(indexed)), XelCsvReader::XelFileNotFoundException,
                   textOfMissing(indexed.file));
  EXPECT_XEL_THROW(XelCachedCsvLineIteratorI(at), XelCsvReader::XelFileNotFoundException, textOfMissing(indexed.file));
  EXPECT_EQ(at.getLine(), nullptr);
}

TEST(TableIterators, CachedTableWithoutLinesOpensNoFile) {
  OpenTable open("|NAMES,a\n", Kind::Cached);
  open.file.remove();
  EXPECT_TRUE(open.getAll().empty());
}

TEST(TableIterators, InitIteratorStartsAWalkAgain) {
  OpenTable open("A,1\nA,2\n", Kind::Scanning, "A");
  XelNonCachedCsvLineIteratorI it(scanning(open));
  ++it;
  it.initIterator();
  EXPECT_EQ(stepThrough(it), (Lines{"0: [A][1]", "1: [A][2]"}));
  OpenTable indexed("A,1\nA,2\nA,3\n", Kind::Cached, "A");
  XelCachedCsvLineIteratorI at(cached(indexed));
  ++at;
  at.initIterator();  // the index is not reset
  EXPECT_EQ(stepThrough(at), (Lines{"1: [A][2]", "2: [A][3]"}));
}

TEST(CachedIterator, YieldsTheLinesInTheOrderOfTheFileWithTheNumbersOfTheIndexing) {
  OpenTable open("#\n|KEYS,1\nzz\n\nb\n# c\na\nzzz\n", Kind::Cached);
  EXPECT_EQ(open.getAll(), (Lines{"1: [|KEYS][1]", "2: [zz]", "4: [b]", "6: [a]", "7: [zzz]"}));
}

TEST(CachedIterator, DoesNotSeeLinesThatCameAfterTheIndexing) {
  OpenTable open("a\nb\n", Kind::Cached);
  open.file.write("a\nb\nc\n");
  EXPECT_EQ(open.getAll(), (Lines{"0: [a]", "1: [b]"}));
}

TEST(CachedIterator, LeavesItsLineUntrimmed) {
  OpenTable open(" A , 1 \nA, 2\n", Kind::Cached, "A", true);
  EXPECT_EQ(open.getAll(), (Lines{"0: [ A ][ 1 ]", "1: [A][ 2]"}));
}
