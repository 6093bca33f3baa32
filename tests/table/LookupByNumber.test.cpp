// Lines by number, and the number of lines.
#include <gtest/gtest.h>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

constexpr const char* TwoTables = "A,1,x\nA,2,y\nB,3,z\nB,4,w\n";

}  // namespace

// ---- Both kinds.

TEST(GetLineByNumber, AnswersTheDataLinesInTheOrderOfTheFile) {
  forBothKinds([](Kind kind) {
    OpenTable one("|NAMES,id,name\n|KEYS,1,0\n3,c\n1,a\n2,b\n", kind);
    EXPECT_EQ(one.table.getNumberOfItems(), 3);
    EXPECT_EQ(one.getByNumber(2), "4: [2][b]");
    EXPECT_EQ(one.getByNumber(0), "2: [3][c]");
    EXPECT_EQ(one.getByNumber(1), "3: [1][a]");
    OpenTable named(TwoTables, kind, "B");
    EXPECT_EQ(named.table.getNumberOfItems(), 2);
    EXPECT_EQ(named.getByNumber(0), "2: [B][3][z]");
    EXPECT_EQ(named.getByNumber(1), "3: [B][4][w]");
  });
}

TEST(GetLineByNumber, CountsCommentAndEmptyLinesInLineNumbersAlone) {
  forBothKinds([](Kind kind) {
    OpenTable open("# first\nA,1\n\n#A,9\n \t\nA,2\n\r\nA,3\n", kind, "A");
    EXPECT_EQ(open.table.getNumberOfItems(), 3);
    EXPECT_EQ(open.getByNumber(0), "1: [A][1]");
    EXPECT_EQ(open.getByNumber(1), "5: [A][2]");
    EXPECT_EQ(open.getByNumber(2), "7: [A][3]");
  });
}

TEST(GetLineByNumber, OfALineOf9998BytesAndALineFeedIsOneLineAndOf9999IsTwo) {
  forBothKinds([](Kind kind) {
    const std::string longest(9996, 'x');
    OpenTable one("a," + longest + "\nb,2\n", kind);
    EXPECT_EQ(one.table.getNumberOfItems(), 2);
    EXPECT_EQ(one.getByNumber(0), "0: [a][" + longest + "]");
    EXPECT_EQ(one.getByNumber(1), "1: [b][2]");
    // The line feed that does not fit is an empty line of its own: skipped, and counted.
    OpenTable two("a,x" + longest + "\nb,2\n", kind);
    EXPECT_EQ(two.table.getNumberOfItems(), 2);
    EXPECT_EQ(two.getByNumber(0), "0: [a][x" + longest + "]");
    EXPECT_EQ(two.getByNumber(1), "2: [b][2]");
  });
}

TEST(GetLineByNumber, TakesEachPieceOfALongerLineForALine) {
  forBothKinds([](Kind kind) {
    const std::string text(9997, 'x');
    OpenTable open("|KEYS,1,0\na," + text + "r,s\nb,2\n", kind);
    EXPECT_EQ(open.table.getNumberOfItems(), 3);
    EXPECT_EQ(open.getByNumber(0), "1: [a][" + text + "]");
    EXPECT_EQ(open.getByNumber(1), "2: [r][s]");
    EXPECT_EQ(open.getByNumber(2), "3: [b][2]");
  });
}

TEST(GetLineByNumber, OfALineOfNothingButSeparatorsHas10000Fields) {
  forBothKinds([](Kind kind) {
    OpenTable open("|KEYS,1\n" + std::string(9999, ',') + "\nb\n", kind);
    const XelCsvLine line = open.table.getLineByNumber(0);
    EXPECT_EQ(line.getNumberOfFields(), 10000);
    EXPECT_STREQ(line.getFields()[0], "");
    EXPECT_STREQ(line.getFields()[9999], "");
    EXPECT_EQ(open.getByNumber(1), "3: [b]");
  });
}

TEST(GetLineByNumber, CutsALineAtAZeroByteAndGoesOnAfterItsLineFeed) {
  forBothKinds([](Kind kind) {
    OpenTable open(std::string_view("a,b\0c,d\ne,f\n", 12), kind);
    EXPECT_EQ(open.getByNumber(0), "0: [a][b]");
    EXPECT_EQ(open.getByNumber(1), "1: [e][f]");
  });
}

TEST(GetLineByNumber, CutsALineAtACarriageReturn) {
  forBothKinds([](Kind kind) {
    OpenTable open("a,b\rc,d\r\ne,f\r\n", kind);
    EXPECT_EQ(open.getByNumber(0), "0: [a][b]");
    EXPECT_EQ(open.getByNumber(1), "1: [e][f]");
  });
}

TEST(GetLineByNumber, OfASplitTablePassesOverTheLinesOfOthers) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nB,9\n A ,2\nB|NAMES,h\nA,3\nB,8\n", kind, "A", true);
    EXPECT_EQ(open.table.getNumberOfItems(), 3);
    EXPECT_EQ(open.getByNumber(0), "0: [A][1]");
    EXPECT_EQ(open.getByNumber(2), "4: [A][3]");
  });
}

TEST(GetLineByNumber, OfATableThatIsNotSplitOwnsEveryLineOfItsBytes) {
  forBothKinds([](Kind kind) {
    // A line without a name belongs to no table of the directory, but it stands between two lines of this one.
    OpenTable open("A,1\n,lost\nA,2\nB,3\n", kind, "A");
    EXPECT_EQ(open.table.getNumberOfItems(), 3);
    EXPECT_EQ(open.getByNumber(1), "1: [][lost]");
    EXPECT_EQ(open.getByNumber(2), "2: [A][2]");
  });
}

TEST(GetLineByNumber, OfATableWhoseNameIsWrittenInQuotesFindsNoLineWhereTablesAreSplit) {
  forBothKinds([](Kind kind) {
    for (const char* content : {"\"Q\",1\n\"Q\",2\n", "\"Q\",1\n\"Q\",2"}) {
      SCOPED_TRACE(content);
      OpenTable open(content, kind, "\"Q\"", true);
      EXPECT_EQ(open.table.getNumberOfItems(), 0);
      const char* message = kind == Kind::Cached
                                ? "XelCsvReader::XelLineNotFoundException : No line number 0 in table \"Q\""
                                : "XelCsvReader::XelLineNotFoundException : No line number 0 in table \"Q\".";
      EXPECT_XEL_THROW(open.table.getLineByNumber(0), XelCsvReader::XelLineNotFoundException, message);
      const char* far = kind == Kind::Cached
                            ? "XelCsvReader::XelLineNotFoundException : No line number 1099511627776 in table \"Q\""
                            : "XelCsvReader::XelLineNotFoundException : No line number 1099511627776 in table \"Q\".";
      EXPECT_XEL_THROW(open.table.getLineByNumber(1L << 40), XelCsvReader::XelLineNotFoundException, far);
    }
  });
}

TEST(GetLineByNumber, OfATableWhoseNameHoldsTheDecimalCharacterFindsNoLineWhereTablesAreSplit) {
  TestEnv env;
  for (const long cached : {0L, 1L}) {
    DataFile file("a!b;1\na!b;2");
    XelCsvReader reader(env, file.getName(), 1, 1, ";", '!', '"', '#', cached);
    XelCsvTableReader table = reader.getTableByName("a!b");
    EXPECT_EQ(table.getNumberOfItems(), 0);
    table.end();
    reader.end();
  }
}

TEST(GetLineByNumber, NegativeNumbersAreNotFound) {
  OpenTable scanned("1\n", Kind::Scanning);
  EXPECT_XEL_THROW(scanned.table.getLineByNumber(-1), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number -1 .");
  OpenTable scannedNamed(TwoTables, Kind::Scanning, "A");
  EXPECT_XEL_THROW(scannedNamed.table.getLineByNumber(-7), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number -7 in table A.");
  OpenTable cached("1\n", Kind::Cached);
  EXPECT_XEL_THROW(cached.table.getLineByNumber(-1), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number -1 ");
  OpenTable cachedNamed(TwoTables, Kind::Cached, "A");
  EXPECT_XEL_THROW(cachedNamed.table.getLineByNumber(-7), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number -7 in table A");
}

TEST(GetLineByNumber, GoesOnAfterAFailedLookup) {
  forBothKinds([](Kind kind) {
    OpenTable open(TwoTables, kind, "A");
    EXPECT_THROW(open.table.getLineByNumber(-1), XelCsvReader::XelLineNotFoundException);
    EXPECT_EQ(open.getByNumber(1), "1: [A][2][y]");
  });
}

TEST(GetLineByNumber, OfAnEmptyFileHasNoItems) {
  forBothKinds([](Kind kind) {
    for (const char* content :
         {"", "\n", "# only a comment\n", "# only a comment", "|NAMES,a\n", "|NAMES,a\n|KEYS,1\n"}) {
      SCOPED_TRACE(content);
      OpenTable open(content, kind);
      EXPECT_EQ(open.table.getNumberOfItems(), 0);
      EXPECT_TRUE(open.getAll().empty());
    }
  });
}

// ---- Scanning.

TEST(GetLineByNumberScanning, OnePastTheEndYieldsTheNextTablesLine) {
  OpenTable open(TwoTables, Kind::Scanning, "A");
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
  EXPECT_EQ(open.getByNumber(2), "2: [B][3][z]");
  EXPECT_XEL_THROW(open.table.getLineByNumber(3), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 3 in table A.");
}

TEST(GetLineByNumberScanning, OnePastTheEndYieldsTheNextTablesHeadingLineToo) {
  OpenTable open("A,1\n\n# B\nB|NAMES,h\nB,2\n", Kind::Scanning, "A");
  EXPECT_EQ(open.getByNumber(1), "3: [B|NAMES][h]");
}

TEST(GetLineByNumberScanning, PastTheEndOfTheFileYieldsTheLastLineFormattedAgain) {
  // The end of the file is met by trying to read after the last line feed, which counts as a line number.
  OpenTable open(TwoTables, Kind::Scanning, "B");
  EXPECT_EQ(open.getByNumber(2), "4: [B]");
  EXPECT_XEL_THROW(open.table.getLineByNumber(3), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 3 in table B.");
}

TEST(GetLineByNumberScanning, PastALastLineWithoutLineFeedYieldsItForEveryNumber) {
  OpenTable open("A,1,x\nA,2,y", Kind::Scanning, "A");
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
  EXPECT_EQ(open.getByNumber(1), "1: [A][2][y]");
  for (const long number : {2L, 3L, 1000L, 1L << 40}) EXPECT_EQ(open.getByNumber(number), "1: [A]");
}

TEST(GetLineByNumberScanning, PastTheEndOfAOneTableFileYieldsTheLastLineForEveryNumber) {
  OpenTable open("1,x\n2,y\n", Kind::Scanning);
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
  for (const long number : {2L, 3L, 1000L, 1L << 40}) EXPECT_EQ(open.getByNumber(number), "2: [2]");
  OpenTable unfinished("1,x\n2,y", Kind::Scanning);
  for (const long number : {2L, 3L, 1000L, 1L << 40}) EXPECT_EQ(unfinished.getByNumber(number), "1: [2]");
}

TEST(GetLineByNumberScanning, PastTheEndYieldsACommentOrBlankLineThatEndsTheFile) {
  struct Case {
    const char* content;
    const char* pastTheEnd;
  };
  const Case cases[] = {
      {"1,x\n#two,words\n", "2: [#two][words]"},
      {"1,x\n#two,words", "1: [#two][words]"},
      {"1,x\n  \t \n", "2: [  \t ]"},
      {"1,x\n  ", "1: [  ]"},
      {"1,x\n\n\n", "3: []"},
      {"1,x\n\r\n", "2: []"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.content);
    OpenTable open(test.content, Kind::Scanning);
    EXPECT_EQ(open.table.getNumberOfItems(), 1);
    EXPECT_EQ(open.getByNumber(0), "0: [1][x]");
    EXPECT_EQ(open.getByNumber(1), test.pastTheEnd);
    // Once more the comment is one field.
    const std::string again = std::string(test.pastTheEnd).substr(0, std::string(test.pastTheEnd).find(']') + 1);
    EXPECT_EQ(open.getByNumber(2), again);
    EXPECT_EQ(open.getByNumber(1L << 40), again);
  }
}

TEST(GetLineByNumberScanning, PastTheEndFormatsTheFirstFieldOnceMoreForEachNumber) {
  // A separator that quotes kept together separates the next time, and then the first part is left.
  OpenTable open("0,x\n\"a,b\",c", Kind::Scanning);
  EXPECT_EQ(open.getByNumber(1), "1: [a,b][c]");
  EXPECT_EQ(open.getByNumber(2), "1: [a][b]");
  EXPECT_EQ(open.getByNumber(3), "1: [a]");
  EXPECT_EQ(open.getByNumber(4), "1: [a]");
}

TEST(GetLineByNumberScanning, OfAnEmptyFileYieldsAnEmptyLine) {
  OpenTable open("", Kind::Scanning);
  EXPECT_EQ(open.getByNumber(0), "0: []");
  EXPECT_EQ(open.getByNumber(5), "0: []");
}

TEST(GetLineByNumberScanning, OfASplitTableFindsNothingPastItsEnd) {
  OpenTable open("A,1\nB,2\nA,3\nB,4\n", Kind::Scanning, "A", true);
  EXPECT_XEL_THROW(open.table.getLineByNumber(2), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 2 in table A.");
  // The last line of the file is counted again as long as its name stays.
  OpenTable last("A,1\nB,2\nA,3\nB,4\n", Kind::Scanning, "B", true);
  EXPECT_EQ(last.getByNumber(2), "4: [B]");
  OpenTable unfinished("A,1\nB,2\nA,3\nB,4", Kind::Scanning, "B", true);
  EXPECT_EQ(unfinished.getByNumber(1L << 40), "3: [B]");
}

TEST(GetLineByNumberScanning, LooksForTheNameWhereverSplittingIsAllowedAndTrimsIt) {
  OpenTable open(" A ,1\nB,2\n A , 3 \n", Kind::Scanning, "A", true);
  EXPECT_EQ(open.getByNumber(0), "0: [A][1]");
  EXPECT_EQ(open.getByNumber(1), "2: [A][ 3 ]");
  OpenTable whole(" A ,1\nB,2\n", Kind::Scanning, "A");
  EXPECT_EQ(whole.getByNumber(0), "0: [ A ][1]");
}

TEST(GetLineByNumberScanning, DoesNotLookForANameInAOneTableFile) {
  TestEnv env;
  DataFile file("x,1\ny,2\n");
  XelCsvReader reader(env, file.getName(), 0, 1, ",", '.', '"', '#', 0);
  EXPECT_EQ(textOf(reader.getLineByNumber(1)), "1: [y][2]");
  EXPECT_EQ(reader.getNumberOfItems(), 2);
  reader.end();
}

TEST(GetLineByNumberScanning, AsksForANameEvenInAOneTableFileWhenItsTableHasOne) {
  // The other operations take every line of such a file.
  TestEnv env;
  const DataFile file("x,1\ny,2\n x ,3\n");
  for (const long isSplit : {0L, 1L}) {
    SCOPED_TRACE(isSplit);
    XelCsvReader reader(env, file.getName(), 0, isSplit, ",", '.', '"', '#', 0);
    {
      const XelEnvOwner<XelNonCachedCsvTableReaderI> table =
          XelNew<XelNonCachedCsvTableReaderI>(env, reader.getImpl(), "x", nullptr);
      const XelEnvOwner<XelCsvLineI> line(table->getLineByNumber(1));
      EXPECT_EQ(textOf(XelCsvLine(line.get())), isSplit != 0 ? "2: [x][3]" : "1: [y][2]");
      EXPECT_EQ(table->getNumberOfItems(), 3);
      const char* key = XelCopyString(env, "y-2").release();
      const XelEnvOwner<XelCsvLineI> found(table->getLineByKey(key));
      XelFreeString(env, key);
      EXPECT_EQ(textOf(XelCsvLine(found.get())), "1: [y][2]");
      XelNonCachedCsvLineIteratorI it(table.get());
      ++it;
      EXPECT_EQ(textOf(XelCsvLine(it.getLine())), "1: [y][2]");
    }
    reader.end();
  }
}

TEST(GetLineByNumberScanning, OfATableOfHeadingsAloneFindsNothing) {
  OpenTable open("A|NAMES,h\nB,1\n", Kind::Scanning, "A");
  for (const long number : {0L, 1L, 1L << 40}) {
    EXPECT_XEL_THROW(
        open.table.getLineByNumber(number), XelCsvReader::XelLineNotFoundException,
        "XelCsvReader::XelLineNotFoundException : No line number " + std::to_string(number) + " in table A.");
  }
}

TEST(GetLineByNumberScanning, HoldsNoMemoryBetweenLookups) {
  OpenTable open(TwoTables, Kind::Scanning, "A");
  const long blocks = open.env.getAllocator().getBlocksOut();
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
  EXPECT_THROW(open.table.getLineByNumber(9), XelCsvReader::XelLineNotFoundException);
  EXPECT_THROW(open.table.getLineByKey(2, "9", "9"), XelCsvReader::XelLineNotFoundException);
  EXPECT_EQ(open.env.getAllocator().getBlocksOut(), blocks);
}

// ---- Cached.

TEST(GetLineByNumberCached, OnePastTheEndIsNotFound) {
  OpenTable one("1,x\n2,y\n", Kind::Cached);
  EXPECT_XEL_THROW(one.table.getLineByNumber(2), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 2 ");
  EXPECT_XEL_THROW(one.table.getLineByNumber(1L << 40), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 1099511627776 ");
  OpenTable named(TwoTables, Kind::Cached, "A");
  EXPECT_XEL_THROW(named.table.getLineByNumber(2), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 2 in table A");
}

TEST(GetLineByNumberCached, LeavesTheFieldsAsTheyAreInTheFile) {
  OpenTable open(" A , 1 \nA,2\n", Kind::Cached, "A", true);
  EXPECT_EQ(open.getByNumber(0), "0: [ A ][ 1 ]");
}
