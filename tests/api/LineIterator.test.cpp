// The iterator over the lines of a table.
#include <gtest/gtest.h>

#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

using Lines = std::vector<std::string>;
using LineIterator = XelCsvTableReader::LineIterator;

constexpr const char* FiveLines = "A|NAMES,h\nA,1\nA,2\n\nA,3\n# comment\nA,4\nA,5\nB,6\n";
const Lines AllFive = {"1: [A][1]", "2: [A][2]", "4: [A][3]", "6: [A][4]", "7: [A][5]"};

}  // namespace

TEST(LineIterator, YieldsTheLinesInTheOrderOfTheFile) {
  forBothKinds([](Kind kind) {
    OpenTable named(FiveLines, kind, "A");
    EXPECT_EQ(named.getAll(), AllFive);
    OpenTable one("z,1\na,2\nm,3", kind);
    EXPECT_EQ(one.getAll(), (Lines{"0: [z][1]", "1: [a][2]", "2: [m][3]"}));
    OpenTable split("A,1\nB,1\nA,2\nB,2\nA,3\n", kind, "B", true);
    EXPECT_EQ(split.getAll(), (Lines{"1: [B][1]", "3: [B][2]"}));
  });
}

TEST(LineIterator, OfAnEmptyTableHasEndedFromTheStart) {
  forBothKinds([](Kind kind) {
    OpenTable open("A|NAMES,h\nB,1\n", kind, "A");
    LineIterator it(open.table);
    EXPECT_FALSE(it.ok());
    EXPECT_TRUE((*it).isEmpty());
    ++it;
    EXPECT_FALSE(it.ok());
    EXPECT_TRUE((*it).isEmpty());
    it.end();
    it.end();
    EXPECT_FALSE(it.ok());
  });
}

TEST(LineIterator, OverNothingHasEnded) {
  LineIterator it;
  EXPECT_FALSE(it.ok());
  EXPECT_TRUE((*it).isEmpty());
  ++it;
  EXPECT_FALSE(it.ok());
  const LineIterator copied(it);
  EXPECT_FALSE(copied.ok());
  LineIterator assigned;
  assigned = it;
  EXPECT_FALSE(assigned.ok());
  it.end();
}

TEST(LineIterator, StaysAtItsEnd) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nA,2\nB,3\n", kind, "A");
    LineIterator it(open.table);
    ++it;
    EXPECT_TRUE(it.ok());
    for (int repeat = 0; repeat < 4; ++repeat) {
      ++it;
      EXPECT_FALSE(it.ok());
      EXPECT_TRUE((*it).isEmpty());
    }
  });
}

TEST(LineIterator, EndLeavesOkAsItWasAndNoLine) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    const long openFiles = countOpenFiles();
    it.end();
    EXPECT_EQ(countOpenFiles(), openFiles - 1);
    EXPECT_TRUE(it.ok());
    EXPECT_TRUE((*it).isEmpty());
    it.end();
    ++it;
    EXPECT_FALSE(it.ok());
  });
}

TEST(LineIterator, ClosesItsFileAtTheEndOfTheTable) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nB,2\n", kind, "A");
    const long before = countOpenFiles();
    LineIterator it(open.table);
    EXPECT_EQ(countOpenFiles(), before + 1);
    ++it;
    EXPECT_EQ(countOpenFiles(), before);
  });
}

TEST(LineIterator, CopyTakesThePositionOverAndEndsTheSource) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    ++it;
    ++it;
    LineIterator copied(it);
    EXPECT_TRUE(it.ok());
    EXPECT_TRUE((*it).isEmpty());
    EXPECT_EQ(textOf(*copied), "4: [A][3]");
    EXPECT_EQ(walk(copied), (Lines{"4: [A][3]", "6: [A][4]", "7: [A][5]"}));
    ++it;
    EXPECT_FALSE(it.ok());
    const LineIterator again(it);
    EXPECT_FALSE(again.ok());
    EXPECT_TRUE((*again).isEmpty());
  });
}

TEST(LineIterator, CopyOfOneThatEndIsCalledOnIsEmpty) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    it.end();
    const LineIterator copied(it);
    EXPECT_FALSE(copied.ok());
    EXPECT_TRUE((*copied).isEmpty());
  });
}

TEST(LineIterator, AssigningStartsAgainAtTheFirstLine) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    for (int step = 0; step < 4; ++step) ++it;
    EXPECT_EQ(textOf(*it), "7: [A][5]");
    LineIterator assigned;
    assigned = it;
    EXPECT_EQ(textOf(*assigned), "1: [A][1]");
    // The source is left alone.
    EXPECT_EQ(textOf(*it), "7: [A][5]");
    EXPECT_EQ(walk(assigned), AllFive);
    ++it;
    EXPECT_FALSE(it.ok());
    // One that has ended starts again too.
    assigned = it;
    EXPECT_EQ(walk(assigned), AllFive);
  });
}

TEST(LineIterator, AssigningItselfStartsAgain) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    ++it;
    const LineIterator& same = it;
    it = same;
    EXPECT_EQ(walk(it), AllFive);
    it = same;
    EXPECT_EQ(walk(it), AllFive);
  });
}

TEST(LineIterator, AssigningGoesFromOneKindToTheOther) {
  OpenTable cached(FiveLines, Kind::Cached, "A");
  OpenTable scanned("x\ny\n", Kind::Scanning);
  {
    LineIterator it(cached.table);
    it = LineIterator(scanned.table);
    EXPECT_EQ(walk(it), (Lines{"0: [x]", "1: [y]"}));
    it = LineIterator(cached.table);
    ++it;
    EXPECT_EQ(textOf(*it), "2: [A][2]");
    LineIterator other(scanned.table);
    it = other;
    EXPECT_EQ(textOf(*it), "0: [x]");
    it = LineIterator();
    EXPECT_FALSE(it.ok());
  }
}

TEST(LineIterator, AssigningGivesBackWhatTheFormerWalkHeld) {
  forBothKinds([](Kind kind) {
    const Kind other = kind == Kind::Cached ? Kind::Scanning : Kind::Cached;
    OpenTable former(FiveLines, kind, "A");
    const long blocks = former.env.getAllocator().getBlocksOut();
    OpenTable next("x\ny\n", other);
    const long openFiles = countOpenFiles();
    LineIterator it(former.table);
    EXPECT_GT(former.env.getAllocator().getBlocksOut(), blocks);
    it = LineIterator(next.table);
    EXPECT_EQ(former.env.getAllocator().getBlocksOut(), blocks);
    EXPECT_EQ(countOpenFiles(), openFiles + 1);
    it.end();
    EXPECT_EQ(countOpenFiles(), openFiles);
  });
}

TEST(LineIterator, UsesOneRecordAndTakesNoMemoryPerLine) {
  std::string content;
  for (long number = 0; number < 3000; ++number) content += "key" + std::to_string(number) + ",value\n";
  forBothKinds([&](Kind kind) {
    OpenTable open(content, kind);
    LineIterator it(open.table);
    const XelCsvLineI* record = (*it).getImpl();
    const long allocations = open.env.getAllocator().getAllocations();
    long lines = 0;
    for (; it.ok(); ++it, ++lines) ASSERT_EQ((*it).getImpl(), record);
    EXPECT_EQ(lines, 3000);
    // The blocks that the file is read in grow with a long walk, and there are few of them.
    EXPECT_LT(open.env.getAllocator().getAllocations() - allocations, 20);
  });
}

TEST(LineIterator, ReturnedByValueGoesOn) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    const auto make = [&](int steps) {
      LineIterator it(open.table);
      for (int step = 0; step < steps; ++step) ++it;
      return it;
    };
    LineIterator it = make(2);
    EXPECT_EQ(walk(it), (Lines{"4: [A][3]", "6: [A][4]", "7: [A][5]"}));
  });
}

TEST(LineIterator, IncrementAnswersTheIterator) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    EXPECT_EQ(&++it, &it);
    EXPECT_EQ(textOf(*++it), "4: [A][3]");
  });
}

TEST(LineIterator, IsChosenByWhatTheTableIsNotByItsFileReader) {
  forBothKinds([](Kind kind) {
    const Kind other = kind == Kind::Cached ? Kind::Scanning : Kind::Cached;
    OpenTable source(FiveLines, kind, "A");
    OpenTable target("U,9\n", other, "U");
    target.table.copy(source.table);
    {
      LineIterator it(target.table);
      ++it;
      LineIterator copied(it);
      EXPECT_EQ(walk(copied), (Lines{"2: [A][2]", "4: [A][3]", "6: [A][4]", "7: [A][5]"}));
      it = copied;
      EXPECT_EQ(walk(it), AllFive);
    }
    target.table.end();
  });
}

TEST(LineIterator, OfACopiedTableWalksThroughItsIndexWhenItHasOne) {
  forBothKinds([](Kind kind) {
    const Kind other = kind == Kind::Cached ? Kind::Scanning : Kind::Cached;
    OpenTable source("x\ny\n", kind);
    OpenTable target("U,9\n", other, "U");
    target.table.copy(source.table);
    source.file.write("x\ny\nz\n");
    Lines expected = {"0: [x]", "1: [y]"};
    if (other == Kind::Scanning) expected.push_back("2: [z]");
    EXPECT_EQ(target.getAll(), expected);
    target.table.end();
  });
}

TEST(LineIterator, SharesATableWithLookupsAndOtherIterators) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator one(open.table);
    LineIterator two(open.table);
    ++one;
    EXPECT_EQ(open.getByKey("5"), "7: [A][5]");
    EXPECT_EQ(textOf(*one), "2: [A][2]");
    EXPECT_EQ(textOf(*two), "1: [A][1]");
    EXPECT_EQ(open.table.getNumberOfItems(), 5);
    EXPECT_EQ(walk(two), AllFive);
    EXPECT_EQ((*one).getIntByHeader("h"), 2);
    EXPECT_EQ(open.getByNumber(0), "1: [A][1]");
    ++one;
    EXPECT_EQ(textOf(*one), "4: [A][3]");
  });
}

TEST(LineIterator, FileThatIsGoneIsReported) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    const LineIterator other(open.table);
    open.file.remove();
    const std::string message = textOfMissing(open.file);
    EXPECT_XEL_THROW(LineIterator(open.table), XelCsvReader::XelFileNotFoundException, message);
    LineIterator assigned;
    EXPECT_XEL_THROW(assigned = it, XelCsvReader::XelFileNotFoundException, message);
    EXPECT_EQ(textOf(*it), "1: [A][1]");
    EXPECT_XEL_THROW(LineIterator(it), XelCsvReader::XelFileNotFoundException, message);
    EXPECT_TRUE((*it).isEmpty());
    EXPECT_EQ(textOf(*other), "1: [A][1]");
  });
}

// ---- Records.

TEST(LineIterator, LineCopiedOutLivesOn) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    XelCsvLine kept;
    {
      LineIterator it(open.table);
      ++it;
      kept.copy(*it);
      ++it;
      EXPECT_EQ(textOf(*it), "4: [A][3]");
      EXPECT_EQ(textOf(kept), "2: [A][2]");
    }
    EXPECT_EQ(kept.getIntByHeader("h"), 2);
    kept.end();
  });
}

TEST(LineIterator, CurrentLineCanBeCopiedIntoAndTheWalkGoesOn) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    XelCsvLine current = *it;
    current.copy(open.table.getLineByNumber(4));
    EXPECT_EQ(textOf(*it), "7: [A][5]");
    ++it;
    EXPECT_EQ(textOf(*it), "2: [A][2]");
    // From an empty handle the current line becomes a line without fields.
    current = *it;
    current.copy(XelCsvLine());
    EXPECT_EQ((*it).getNumberOfFields(), 0);
    EXPECT_THROW((*it).getStringByPosition(0), XelCsvReader::XelFieldNotFoundException);
    ++it;
    EXPECT_EQ(textOf(*it), "4: [A][3]");
    current = *it;
    current.copy(*it);
    EXPECT_EQ(textOf(*it), "4: [A][3]");
    current.copy(open.table.getLineByNumber(0));
    it.end();
  });
}

TEST(LineIterator, CurrentLineOfOneIteratorCanBeCopiedIntoThatOfAnother) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator one(open.table);
    LineIterator two(open.table);
    ++two;
    XelCsvLine current = *one;
    current.copy(*two);
    two.end();
    EXPECT_EQ(textOf(*one), "2: [A][2]");
    ++one;
    EXPECT_EQ(textOf(*one), "2: [A][2]");
  });
}

TEST(LineIterator, EndOfItsLineOnlyLetsItGo) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it(open.table);
    XelCsvLine line = *it;
    line.end();
    EXPECT_TRUE(line.isEmpty());
    EXPECT_EQ(textOf(*it), "1: [A][1]");
  });
}

TEST(LineIterator, GettersTrimTheCurrentLineAndTheNextOneIsFresh) {
  forBothKinds([](Kind kind) {
    OpenTable open("| NAMES , h \n a \n b \n", kind);
    LineIterator it(open.table);
    EXPECT_STREQ((*it).getStringByPosition(0), "a");
    EXPECT_EQ(textOf(*it), "1: [a]");
    ++it;
    EXPECT_EQ(textOf(*it), "2: [ b ]");
  });
}

TEST(LineIterator, LineOf10000FieldsFitsItsArray) {
  forBothKinds([](Kind kind) {
    OpenTable open("|KEYS,1\na\n" + std::string(9999, ',') + "\nb\n", kind);
    LineIterator it(open.table);
    ++it;
    EXPECT_EQ((*it).getNumberOfFields(), 10000);
    EXPECT_STREQ((*it).getFields()[9999], "");
    XelCsvLine kept;
    kept.copy(*it);
    EXPECT_EQ(kept.getNumberOfFields(), 10000);
    EXPECT_EQ((*it).getLineNumber(), 2);
    // The line feed of the long line did not fit: an empty line of its own, skipped and counted.
    ++it;
    EXPECT_EQ(textOf(*it), "4: [b]");
    kept.end();
  });
}

TEST(LineIterator, OutlivesTheHandleThatItWasMadeFrom) {
  forBothKinds([](Kind kind) {
    OpenTable open(FiveLines, kind, "A");
    LineIterator it;
    {
      const XelCsvTableReader handle(open.table);
      it = LineIterator(handle);
    }
    EXPECT_EQ(walk(it), AllFive);
  });
}

TEST(LineIterator, IsDestroyedAfterTableAndReaderWithoutHarm) {
  forBothKinds([](Kind kind) {
    TestEnv env;
    DataFile file(FiveLines);
    XelCsvReader reader = openReader(env, file, kind, true);
    XelCsvTableReader table = reader.getTableByName("A");
    const LineIterator it(table);
    EXPECT_TRUE(it.ok());
    table.end();
    reader.end();
  });
}
