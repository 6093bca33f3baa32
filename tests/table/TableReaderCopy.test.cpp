// Copies of table readers, of one kind and of the other, in one environment and across two.
#include <gtest/gtest.h>

#include <cerrno>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelCsvTableFactory.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* Content = "A|NAMES,id,name\nA|KEYS,1,0\nA,1,x\nA,2,y\nB,9,z\n";

XelEnvOwner<XelCsvTableReaderI> makeEmpty(XelEnv env, Kind kind) {
  return XelMakeEmptyTableReader(env, kind == Kind::Cached);
}

// Runs a test for each kind of source and each kind of target.
template <class Body>
void forAllPairs(Body body) {
  forBothKinds([&](Kind source) {
    forBothKinds([&](Kind target) {
      SCOPED_TRACE(std::string("into ") + nameOf(target));
      body(source, target);
    });
  });
}

}  // namespace

TEST(TableReaderCopy, HoldsWhatItsSourceHolds) {
  forAllPairs([](Kind source, Kind target) {
    OpenTable open(Content, source, "A");
    const XelEnvOwner<XelCsvTableReaderI> copied = makeEmpty(open.env, target);
    copied->copy(open.table.getImpl());
    EXPECT_EQ(copied->getOpenError(), 0);
    EXPECT_EQ(copied->getNumberOfColumns(), 3);
    EXPECT_EQ(copied->getNumberOfKeys(), 1);
    EXPECT_EQ(copied->getKeyPosition(0), 1);
    EXPECT_EQ(copied->getPosition("name"), 2);
    EXPECT_STREQ(copied->getNameOfTable(), "A");
    EXPECT_EQ(copied->getFirstDataOffset(), open.table.getImpl()->getFirstDataOffset());
    EXPECT_EQ(copied->getFirstDataLineNumber(), 2);
    EXPECT_EQ(copied->getEndOffset(), open.table.getImpl()->getEndOffset());
    EXPECT_EQ(copied->getNumberOfItems(), 2);
    const XelEnvOwner<XelCsvLineI> line(copied->getLineByNumber(1));
    EXPECT_EQ(textOf(XelCsvLine(line.get())), "3: [A][2][y]");
  });
}

TEST(TableReaderCopy, TakesOverWhatItsSourceFormattedLast) {
  // A cached copy of a scanning table makes its index and has formatted lines of its own then; the others read no line.
  forAllPairs([](Kind source, Kind target) {
    if (source == Kind::Scanning && target == Kind::Cached) return;
    OpenTable open("A|KEYS,1\nA,1,xy\nA,2\nA,3,4,5\nB,9\n", source, "A");
    EXPECT_EQ(open.getByNumber(0), "1: [A][1][xy]");
    const XelEnvOwner<XelCsvTableReaderI> copied = makeEmpty(open.env, target);
    copied->copy(open.table.getImpl());
    EXPECT_EQ(copied->getNumberOfFields(), 3);
    EXPECT_EQ(copied->getLineLength(), open.table.getImpl()->getLineLength());
    EXPECT_GT(copied->getLineLength(), 0);
  });
}

TEST(TableReaderCopy, OutlivesItsSource) {
  forAllPairs([](Kind source, Kind target) {
    OpenTable open(Content, source, "A");
    const XelEnvOwner<XelCsvTableReaderI> copied = makeEmpty(open.env, target);
    copied->copy(open.table.getImpl());
    open.table.end();
    XelCsvTableReader handle(copied.get());
    EXPECT_STREQ(handle.getFirstLine().getStringByHeader("name"), "name");
    EXPECT_STREQ(handle.getLineByNumber(0).getStringByHeader("name"), "x");
    EXPECT_STREQ(handle.getLineByKey(1, "2").getStringByHeader("name"), "y");
    handle = XelCsvTableReader();
  });
}

TEST(TableReaderCopy, ReplacesWhatWasThere) {
  forAllPairs([](Kind source, Kind target) {
    OpenTable first(Content, source, "A");
    OpenTable second("U,only\n", target, "U");
    XelCsvTableReader handle(second.table);
    second.table.getImpl()->copy(first.table.getImpl());
    EXPECT_EQ(outcomeOf([&] { return handle.getLineByKey(1, "2"); }), "3: [A][2][y]");
    EXPECT_EQ(
        outcomeOf([&] { return handle.getLineByKey(1, "only"); }),
        "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line having key only in table A.");
    handle = XelCsvTableReader();
    // The copy reads the first file, and its memory is of two environments now: each block goes back to its own.
    second.table.end();
  });
}

TEST(TableReaderCopy, AcrossEnvironmentsLivesInItsSources) {
  forAllPairs([](Kind source, Kind target) {
    TestEnv own;
    OpenTable open(Content, source, "A");
    {
      const XelEnvOwner<XelCsvTableReaderI> copied = makeEmpty(own, target);
      copied->copy(open.table.getImpl());
      EXPECT_EQ(copied->getEnv().getImpl(), open.env.get().getImpl());
      EXPECT_EQ(copied->getNumberOfItems(), 2);
      copied->clearTable();
      copied->copy(open.table.getImpl());
      const XelEnvOwner<XelCsvLineI> line(copied->getLineByNumber(0));
      EXPECT_EQ(line->getEnv().getImpl(), open.env.get().getImpl());
      EXPECT_EQ(textOf(XelCsvLine(line.get())), "2: [A][1][x]");
    }
    EXPECT_EQ(own.getAllocator().getBlocksOut(), 1);  // the environment itself
  });
}

TEST(TableReaderCopy, OfItselfChangesNothing) {
  forBothKinds([](Kind kind) {
    OpenTable open(Content, kind, "A");
    open.table.getImpl()->copy(open.table.getImpl());
    EXPECT_EQ(open.table.getNumberOfItems(), 2);
    EXPECT_EQ(open.getByKey("2"), "3: [A][2][y]");
    EXPECT_EQ(open.table.getPosition("name"), 2);
  });
}

TEST(TableReaderCopy, OfATableWithoutHeadingLineAnswersAsIfItsHeadingsWereUnknown) {
  forAllPairs([](Kind source, Kind target) {
    OpenTable open("A,1\nB,2\n", source, "A");
    EXPECT_XEL_THROW(open.table.getPosition("id"), XelCsvReader::XelColumnHeaderNotFoundException,
                     "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in table A ");
    const XelEnvOwner<XelCsvTableReaderI> copied = makeEmpty(open.env, target);
    copied->copy(open.table.getImpl());
    EXPECT_XEL_THROW(copied->getPosition("id"), XelCsvReader::XelColumnHeaderNotFoundException,
                     "XelCsvReader::XelColumnHeaderNotFoundException : Heading id not found in table A");
    EXPECT_FALSE(copied->isHeadingExists("id"));
    EXPECT_EQ(copied->getNumberOfItems(), 1);
  });
}

TEST(TableReaderCopy, OfAClearedTableIsEmptyAndCanBeCopiedIntoAgain) {
  forAllPairs([](Kind source, Kind target) {
    OpenTable open(Content, source, "A");
    OpenTable cleared(Content, source, "A");
    cleared.table.getImpl()->clearTable();
    const XelEnvOwner<XelCsvTableReaderI> copied = makeEmpty(open.env, target);
    if (source == Kind::Cached && target == Kind::Cached) {
      copied->copy(cleared.table.getImpl());
      EXPECT_EQ(copied->getNumberOfItems(), 0);
      EXPECT_EQ(copied->getNumberOfKeys(), 0);
    }
    copied->copy(open.table.getImpl());
    EXPECT_EQ(copied->getNumberOfItems(), 2);
    EXPECT_EQ(copied->getNumberOfKeys(), 1);
  });
}

TEST(TableReaderCopy, OfATableOfAOneTableFileHasNoName) {
  forAllPairs([](Kind source, Kind target) {
    OpenTable open("|NAMES,a,b\n|KEYS,1,0\n1,x\n", source);
    const XelEnvOwner<XelCsvTableReaderI> copied = makeEmpty(open.env, target);
    copied->copy(open.table.getImpl());
    EXPECT_EQ(copied->getNameOfTable(), nullptr);
    EXPECT_EQ(copied->getPosition("b"), 1);
    const XelEnvOwner<XelCsvLineI> line(copied->getLineByNumber(0));
    EXPECT_EQ(textOf(XelCsvLine(line.get())), "2: [1][x]");
  });
}

TEST(TableReaderCopy, OfAMissingFileIsLeftForTheCreatorToAsk) {
  forAllPairs([](Kind source, Kind target) {
    OpenTable open(Content, source, "A");
    open.file.remove();
    const XelEnvOwner<XelCsvTableReaderI> copied = makeEmpty(open.env, target);
    copied->copy(open.table.getImpl());
    EXPECT_EQ(copied->getOpenError(), ENOENT);
    EXPECT_EQ(copied->getNumberOfKeys(), 0);
  });
}

TEST(TableReaderCopy, OfACachedTableCopiesTheIndexAndReadsNoLine) {
  OpenTable open("a,1\nb,2\n", Kind::Cached);
  open.file.write("c,3\nd,4\n");
  XelCachedCsvTableReaderI copied(open.env);
  copied.copy(open.table.getImpl());
  EXPECT_STREQ(copied.getLineKey(0), "a-1");
  EXPECT_STREQ(copied.getLineKey(1), "b-2");
  EXPECT_EQ(copied.getOffsetAndLineNumber("c-3"), nullptr);
}

TEST(TableReaderCopy, OfACachedTableWithADuplicateCountsItAndForgetsThatItIsOne) {
  OpenTable open("a,1\nb,2\na,1\nc,3\n", Kind::Cached);
  XelCachedCsvTableReaderI copied(open.env);
  copied.copy(open.table.getImpl());
  EXPECT_EQ(copied.getNumberOfItems(), 3);
  EXPECT_EQ(copied.getDuplicatedKey(), nullptr);
  EXPECT_STREQ(copied.getLineKey(2), "a-1");
  EXPECT_EQ(copied.getOffsetAndLineNumber("a-1")->lineNumber, 0);
}

TEST(TableReaderCopy, IntoACachedTableWithADuplicateForgetsTheDuplicate) {
  OpenTable open("a,1\na,1\n", Kind::Cached);
  auto* target = dynamic_cast<XelCachedCsvTableReaderI*>(open.table.getImpl());
  EXPECT_STREQ(target->getDuplicatedKey(), "a-1");
  const DataFile file("b,1\nc,2\n");
  XelCsvReader reader = openReader(open.env, file, Kind::Cached, false);
  target->copy(reader.getReaderForUniqueTableFile().getImpl());
  EXPECT_EQ(target->getDuplicatedKey(), nullptr);
  EXPECT_EQ(target->getNumberOfItems(), 2);
  reader.end();
}

TEST(TableReaderCopy, OfAScanningTableIntoACachedOneBuildsTheIndexFromTheFile) {
  OpenTable open("A,1\nB,2\nA,3\n", Kind::Scanning, "A", true);
  open.file.write("A,1\nB,2\nA,4\n");
  XelCachedCsvTableReaderI copied(open.env);
  copied.copy(open.table.getImpl());
  EXPECT_EQ(copied.getNumberOfItems(), 2);
  EXPECT_EQ(copied.getOffsetAndLineNumber("3"), nullptr);
  EXPECT_EQ(copied.getOffsetAndLineNumber("4")->lineNumber, 2);
}
