// The handle of a table.
#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <utility>

#include "tests/support/ExpectAssertion.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* Cities =
    "Cities|NAMES,city,year,value\nCities|KEYS,1,1,0\nCities,Paris,2004,7\nCities,Rome,2004,8\nOther,x\n";
constexpr const char* OneTable = "|NAMES,city,year,value\n|KEYS,1,1,0\nParis,2004,7\nRome,2004,8\n";

std::string printedBy(const XelCsvTableReader& table) {
  testing::internal::CaptureStdout();
  const bool answer = table.printKeys();
  const std::string text = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(answer);
  return text;
}

// Knows which blocks are out.
class Watcher : public TestAllocator {
 public:
  void* allocate(long size) override {
    void* block = TestAllocator::allocate(size);
    blocks[static_cast<char*>(block)] = size;
    return block;
  }

  void free(void* pointer, long size) override {
    blocks.erase(static_cast<char*>(pointer));
    TestAllocator::free(pointer, size);
  }

  // Whether the address lies in a block that is out.
  bool holds(const void* address) const {
    for (const auto& block : blocks) {
      if (address >= block.first && address < block.first + block.second) return true;
    }
    return false;
  }

 private:
  std::map<char*, long> blocks;
};

}  // namespace

// ---- Construction.

TEST(TableHandle, OfAnEmptyOneIsEmpty) {
  XelCsvTableReader table;
  EXPECT_TRUE(table.isEmpty());
  EXPECT_EQ(table.getImpl(), nullptr);
  table.end();
  table.end();
  EXPECT_TRUE(table.isEmpty());
  EXPECT_TRUE(XelCsvTableReader(nullptr).isEmpty());
}

TEST(TableHandle, MadeFromAReaderIsATableOfItsOwn) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelCsvTableReader table(open.reader.getImpl(), "Other");
    EXPECT_STREQ(table.getNameOfTable(), "Other");
    EXPECT_EQ(table.isCached(), kind == Kind::Cached);
    EXPECT_EQ(textOf(table.getLineByKey(1, "x")), "4: [Other][x]");
    table.end();
    EXPECT_TRUE(table.isEmpty());
    table.end();
    EXPECT_EQ(open.getByKey("Rome", "2004"), "3: [Cities][Rome][2004][8]");
  });
}

TEST(TableHandle, SaysThatThereIsNoSuchTable) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_XEL_THROW(XelCsvTableReader(open.reader.getImpl(), "Nowhere"), XelCsvReader::XelTableNotFoundException,
                     "XelCsvReader::XelTableNotFoundException : No Table having this name Nowhere.");
    EXPECT_XEL_THROW(XelCsvTableReader(open.reader.getImpl(), nullptr), XelCsvReader::XelTableNotFoundException,
                     "XelCsvReader::XelTableNotFoundException : No Table having this name .");
    OpenTable one(OneTable, kind);
    EXPECT_XEL_THROW(XelCsvTableReader(one.reader.getImpl(), "Cities"), XelCsvReader::XelTableNotFoundException,
                     "XelCsvReader::XelTableNotFoundException : No Table having this name Cities.");
  });
}

TEST(TableHandle, NamesTheDuplicatedKey) {
  TestEnv env;
  DataFile file("T|KEYS,1,1,0\nT,a,b,1\nT,c,d,2\nT,a,b,3\nT,c,d,4\n");
  XelCsvReader cached = openReader(env, file, Kind::Cached, true);
  EXPECT_XEL_THROW(XelCsvTableReader(cached.getImpl(), "T"), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  a-b already exists in table T");
  cached.end();
  XelCsvReader scanning = openReader(env, file, Kind::Scanning, true);
  XelCsvTableReader table(scanning.getImpl(), "T");
  EXPECT_EQ(textOf(table.getLineByKey(2, "a", "b")), "1: [T][a][b][1]");
  table.end();
  scanning.end();
}

TEST(TableHandle, SaysThatTheFileIsGone) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    open.file.remove();
    EXPECT_XEL_THROW(XelCsvTableReader(open.reader.getImpl(), "Other"), XelCsvReader::XelFileNotFoundException,
                     textOfMissing(open.file));
  });
}

TEST(TableHandle, KeepsNoPointerToTheNameThatItWasAskedWith) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Other");
    std::string name = "Cities";
    XelCsvTableReader table(open.reader.getImpl(), name.c_str());
    name = "overwritten";
    name.clear();
    name.shrink_to_fit();
    EXPECT_STREQ(table.getNameOfTable(), "Cities");
    EXPECT_THROW(table.getLineByKey(2, "no", "such"), XelCsvReader::XelLineNotFoundException);
    table.end();
  });
}

TEST(TableHandle, DestroysNothingWhenItIsDestroyed) {
  static_assert(std::is_trivially_destructible_v<XelCsvTableReader>);
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelCsvTableReaderI* impl = nullptr;
    {
      const XelCsvTableReader table = open.reader.getTableByName("Other");
      impl = table.getImpl();
    }
    XelCsvTableReader table(impl);
    EXPECT_EQ(textOf(table.getLineByKey(1, "x")), "4: [Other][x]");
    table.end();
  });
}

static_assert(sizeof(XelCsvTableReader) == 3 * sizeof(void*),
              "the table reader, the last line, and whether it is lent");

// ---- Facts about the table.

TEST(TableHandle, TellsNameColumnsKeysAndHeadings) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_STREQ(open.table.getNameOfTable(), "Cities");
    EXPECT_EQ(open.table.isCached(), kind == Kind::Cached);
    EXPECT_EQ(open.table.getNumberOfColumns(), 4);
    EXPECT_EQ(open.table.getNumberOfKeys(), 2);
    EXPECT_EQ(open.table.getNumberOfItems(), 2);
    EXPECT_EQ(open.table.getPosition("value"), 3);
    EXPECT_TRUE(open.table.isHeadingExists("year"));
    EXPECT_FALSE(open.table.isHeadingExists("nothing"));
    EXPECT_FALSE(open.table.isHeadingExists(nullptr));
    EXPECT_EQ(textOf(open.table.getFirstLine()), "0: [Cities|NAMES][city][year][value]");
    EXPECT_EQ(open.table.getEnv().getImpl(), open.env.get().getImpl());
    EXPECT_EQ(printedBy(open.table), "key 0 ----> city\nkey 1 ----> year\n");

    OpenTable one(OneTable, kind);
    EXPECT_EQ(one.table.getNameOfTable(), nullptr);
    EXPECT_EQ(one.table.getNumberOfColumns(), 3);
    EXPECT_EQ(one.table.getPosition("value"), 2);
    EXPECT_EQ(printedBy(one.table), "key 0 ----> |NAMES\nkey 1 ----> city\n");
  });
}

TEST(TableHandle, WithoutHeadingLineHasNoFirstLine) {
  forBothKinds([](Kind kind) {
    OpenTable open("T,a,1\n", kind, "T");
    EXPECT_TRUE(open.table.getFirstLine().isEmpty());
    EXPECT_FALSE(open.table.isHeadingExists("a"));
    EXPECT_XEL_THROW(open.table.getPosition("a"), XelCsvReader::XelColumnHeaderNotFoundException,
                     "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in table T ");
    EXPECT_EQ(printedBy(open.table), "key 0 ----> Column 1\nkey 1 ----> Column 2\n");
  });
}

TEST(TableHandle, FirstLineLivesAsLongAsTheTable) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelCsvLine headings = open.table.getFirstLine();
    EXPECT_FALSE(open.table.getLineByNumber(0).isEmpty());
    EXPECT_FALSE(open.table.getLineByNumber(1).isEmpty());
    EXPECT_STREQ(headings.getStringByPosition(1), "city");
    headings.end();  // lent, so only let go
    EXPECT_EQ(open.table.getPosition("city"), 1);
  });
}

// ---- getLineByKey.

TEST(TableHandleGetLineByKey, TakesAsManyValuesAsThereAreKeyColumns) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_EQ(open.getByKey("Paris", "2004"), "2: [Cities][Paris][2004][7]");
    // Values beyond the key columns are not looked at.
    EXPECT_EQ(outcomeOf([&] { return open.table.getLineByKey(3, "Rome", "2004", static_cast<const char*>(nullptr)); }),
              "3: [Cities][Rome][2004][8]");
    EXPECT_EQ(outcomeOf([&] { return open.table.getLineByKey(1000000, "Rome", "2004"); }),
              "3: [Cities][Rome][2004][8]");
    OpenTable one("a,1\nb,2\n", kind);
    OpenTable single("T|KEYS,1,0\nT,a,b\n", kind, "T");
    EXPECT_EQ(single.getByKey("a", "b"), "1: [T][a][b]");
  });
}

TEST(TableHandleGetLineByKey, SaysHowManyKeysThereAreWhenTooFewValuesAreGiven) {
  forBothKinds([](Kind kind) {
    OpenTable named("T,a,b,c\n", kind, "T");
    EXPECT_XEL_THROW(
        named.table.getLineByKey(2, "a", "b"), XelCsvReader::XelLineNotFoundException,
        "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 3 for table T");
    OpenTable one("a,b,c\n", kind);
    EXPECT_XEL_THROW(one.table.getLineByKey(2, "a", "b"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 3");
    EXPECT_XEL_THROW(one.table.getLineByKey(0, "a"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 3");
    EXPECT_XEL_THROW(one.table.getLineByKey(-1, "a"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 3");
    EXPECT_EQ(one.getByKey("a", "b", "c"), "0: [a][b][c]");
  });
}

TEST(TableHandleGetLineByKey, OfANullValueFindsNothing) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_EQ(outcomeOf([&] { return open.table.getLineByKey(2, nullptr, "2004"); }).substr(0, 24),
              "XelLineNotFoundException");
    EXPECT_EQ(
        outcomeOf([&] { return open.table.getLineByKey(2, "Paris", static_cast<const char*>(nullptr)); }).substr(0, 24),
        "XelLineNotFoundException");
  });
}

TEST(TableHandleGetLineByKey, ReadsItsValuesBeforeTheFormerLineGoes) {
  forBothKinds([](Kind kind) {
    OpenTable open("|NAMES,id,parent\n|KEYS,1,0\nchild,mother\nmother,grandmother\n", kind);
    const XelCsvLine child = open.table.getLineByKey(1, "child");
    const XelCsvLine mother = open.table.getLineByKey(1, child.getStringByHeader("parent"));
    EXPECT_EQ(textOf(mother), "3: [mother][grandmother]");
    EXPECT_XEL_THROW(open.table.getLineByKey(1, mother.getStringByHeader("parent")),
                     XelCsvReader::XelLineNotFoundException,
                     kind == Kind::Cached ? "XelCsvReader::XelLineNotFoundException : No line having key grandmother ."
                                          : "XelCsvReader::XelLineNotFoundException : No line having key grandmother.");
  });
}

TEST(TableHandleGetLineByKey, GrowsForKeysLongerThanALine) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const std::string value(30000, 'v');
    const std::string message = "XelCsvReader::XelLineNotFoundException : No line having key " + value;
    EXPECT_XEL_THROW(open.table.getLineByKey(2, value.c_str(), value.c_str()), XelCsvReader::XelLineNotFoundException,
                     message.substr(0, 499));
  });
}

TEST(TableHandleGetLineByKey, TakesValuesForTextAndNeverForAFormat) {
  forBothKinds([](Kind kind) {
    OpenTable open("T|KEYS,1\nT,%s%n%d\n", kind, "T");
    EXPECT_EQ(open.getByKey("%s%n%d"), "1: [T][%s%n%d]");
    EXPECT_XEL_THROW(open.table.getLineByKey(1, "%s%s%n"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line having key %s%s%n in table T.");
  });
}

// ---- The last line.

TEST(TableHandle, NextLookupEndsTheLineOfTheOneBefore) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_FALSE(open.table.getLineByNumber(0).isEmpty());
    const long withOneLine = open.env.getAllocator().getBlocksOut();
    for (int repeat = 0; repeat < 5; ++repeat) {
      EXPECT_EQ(open.getByKey("Rome", "2004"), "3: [Cities][Rome][2004][8]");
      EXPECT_EQ(open.env.getAllocator().getBlocksOut(), withOneLine);
      EXPECT_EQ(open.getByNumber(0), "2: [Cities][Paris][2004][7]");
      EXPECT_EQ(open.env.getAllocator().getBlocksOut(), withOneLine);
    }
  });
}

TEST(TableHandle, ALookupThatFailsEndsTheFormerLineToo) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const long withoutLine = open.env.getAllocator().getBlocksOut();
    const auto haveLine = [&] { EXPECT_EQ(open.getByNumber(0), "2: [Cities][Paris][2004][7]"); };
    haveLine();
    EXPECT_GT(open.env.getAllocator().getBlocksOut(), withoutLine);
    EXPECT_THROW(open.table.getLineByNumber(-1), XelCsvReader::XelLineNotFoundException);
    EXPECT_EQ(open.env.getAllocator().getBlocksOut(), withoutLine);
    haveLine();
    EXPECT_THROW(open.table.getLineByKey(2, "x", "y"), XelCsvReader::XelLineNotFoundException);
    EXPECT_EQ(open.env.getAllocator().getBlocksOut(), withoutLine);
    haveLine();
    EXPECT_THROW(open.table.getLineByKey(1, "x"), XelCsvReader::XelLineNotFoundException);
    EXPECT_EQ(open.env.getAllocator().getBlocksOut(), withoutLine);
  });
}

TEST(TableHandle, CopiesShareTheTableButNotTheLastLine) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const XelCsvLine first = open.table.getLineByNumber(0);
    {
      XelCsvTableReader copied(open.table);
      EXPECT_EQ(copied.getImpl(), open.table.getImpl());
      EXPECT_EQ(textOf(copied.getLineByNumber(1)), "3: [Cities][Rome][2004][8]");
      EXPECT_EQ(textOf(first), "2: [Cities][Paris][2004][7]");
      EXPECT_THROW(copied.getLineByNumber(-1), XelCsvReader::XelLineNotFoundException);
    }
    EXPECT_EQ(textOf(first), "2: [Cities][Paris][2004][7]");
  });
}

TEST(TableHandle, AssignmentEndsTheOwnLastLineAndSharesTheTable) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const XelCsvLine line = open.table.getLineByNumber(0);
    const long before = open.env.getAllocator().getBlocksOut();
    XelCsvTableReader other(open.table);
    EXPECT_FALSE(other.getLineByNumber(1).isEmpty());
    other = open.table;
    EXPECT_EQ(open.env.getAllocator().getBlocksOut(), before);
    XelCsvTableReader& same = open.table;
    open.table = same;
    EXPECT_EQ(textOf(line), "2: [Cities][Paris][2004][7]");
    EXPECT_EQ(other.getNumberOfItems(), 2);
  });
}

TEST(TableHandle, MovingTakesTheLastLineAlong) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const XelCsvLine line = open.table.getLineByNumber(0);
    XelCsvTableReader moved(std::move(open.table));
    EXPECT_EQ(textOf(line), "2: [Cities][Paris][2004][7]");
    XelCsvTableReader assigned;
    assigned = std::move(moved);
    EXPECT_EQ(textOf(line), "2: [Cities][Paris][2004][7]");
    XelCsvTableReader& same = assigned;
    assigned = std::move(same);
    EXPECT_EQ(textOf(line), "2: [Cities][Paris][2004][7]");
    EXPECT_EQ(textOf(assigned.getLineByNumber(1)), "3: [Cities][Rome][2004][8]");
    assigned.end();
  });
  static_assert(std::is_nothrow_move_constructible_v<XelCsvTableReader>);
  static_assert(std::is_nothrow_move_assignable_v<XelCsvTableReader>);
}

TEST(TableHandle, EndOfALentTableOnlyLetsItGo) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    XelCsvTableReader lent = open.reader.getReaderForUniqueTableFile();
    EXPECT_FALSE(lent.getLineByNumber(0).isEmpty());
    lent.end();
    EXPECT_TRUE(lent.isEmpty());
    EXPECT_EQ(open.getByNumber(1), "3: [Rome][2004][8]");
  });
}

TEST(TableHandle, TablesEndAfterTheirReaderWithoutHarm) {
  forBothKinds([](Kind kind) {
    TestEnv env;
    DataFile file(Cities);
    XelCsvReader reader = openReader(env, file, kind, true);
    XelCsvTableReader table = reader.getTableByName("Cities");
    XelCsvLine line;
    line.copy(table.getLineByNumber(0));
    EXPECT_FALSE(table.getLineByNumber(1).isEmpty());
    reader.end();
    table.end();
    line.end();
  });
}

// ---- copy.

TEST(CopyTable, IntoAnEmptyHandleMakesATableOfTheReadersKind) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelCsvTableReader copied;
    copied.copy(open.table);
    EXPECT_NE(copied.getImpl(), open.table.getImpl());
    open.table.end();
    EXPECT_EQ(copied.isCached(), kind == Kind::Cached);
    EXPECT_STREQ(copied.getNameOfTable(), "Cities");
    EXPECT_EQ(copied.getPosition("year"), 2);
    EXPECT_EQ(textOf(copied.getLineByKey(2, "Rome", "2004")), "3: [Cities][Rome][2004][8]");
    EXPECT_EQ(copied.getLineByNumber(0).getIntByHeader("value"), 7);
    copied.end();
  });
}

TEST(CopyTable, OfATableOfAOneTableFileIsTheUsers) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    XelCsvTableReader copied;
    copied.copy(open.table);
    EXPECT_EQ(textOf(copied.getLineByKey(2, "Rome", "2004")), "3: [Rome][2004][8]");
    EXPECT_EQ(printedBy(copied), "key 0 ----> |NAMES\nkey 1 ----> city\n");
    copied.end();
    EXPECT_EQ(open.getByNumber(0), "2: [Paris][2004][7]");
  });
}

TEST(CopyTable, IntoATableOfTheOtherKindKeepsItsKind) {
  forBothKinds([](Kind kind) {
    const Kind other = kind == Kind::Cached ? Kind::Scanning : Kind::Cached;
    OpenTable source(Cities, kind, "Cities");
    OpenTable target("U,9\n", other, "U");
    const XelCsvTableReaderI* impl = target.table.getImpl();
    target.table.copy(source.table);
    EXPECT_EQ(target.table.getImpl(), impl);
    EXPECT_EQ(target.getByKey("Paris", "2004"), "2: [Cities][Paris][2004][7]");
    EXPECT_EQ(target.table.getNumberOfItems(), 2);
    // One number past the end tells the kinds apart.
    EXPECT_EQ(target.getByNumber(2).substr(0, 24),
              other == Kind::Cached ? "XelLineNotFoundException" : "4: [Other][x]");
    EXPECT_EQ(target.getAll(), (Lines{"2: [Cities][Paris][2004][7]", "3: [Cities][Rome][2004][8]"}));
    // What the handle says is the setting of the file reader that the table was copied from.
    EXPECT_EQ(target.table.isCached(), kind == Kind::Cached);
    // Its memory is of two environments now, so it goes before the other one is looked at.
    target.table.end();
  });
}

TEST(CopyTable, OfItselfOrOfAHandleOfTheSameTableChangesNothing) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const XelCsvLine line = open.table.getLineByNumber(0);
    open.table.copy(open.table);
    EXPECT_EQ(textOf(line), "2: [Cities][Paris][2004][7]");
    XelCsvTableReader shared(open.table);
    shared.copy(open.table);
    EXPECT_EQ(shared.getImpl(), open.table.getImpl());
    EXPECT_EQ(textOf(line), "2: [Cities][Paris][2004][7]");
    EXPECT_EQ(textOf(shared.getLineByNumber(1)), "3: [Cities][Rome][2004][8]");
    EXPECT_THROW(shared.getLineByNumber(-1), XelCsvReader::XelLineNotFoundException);
  });
}

TEST(CopyTable, CopiesTheLastLineIntoTheHandlesLine) {
  forBothKinds([](Kind kind) {
    Watcher watcher;
    XelEnv env(&watcher);
    DataFile file(Cities);
    XelCsvReader reader = openReader(env, file, kind, true);
    XelCsvTableReader source = reader.getTableByName("Cities");
    XelCsvTableReader target = reader.getTableByName("Other");
    const XelCsvLine line = target.getLineByNumber(0);
    EXPECT_EQ(textOf(line), "4: [Other][x]");
    EXPECT_FALSE(source.getLineByNumber(1).isEmpty());
    target.copy(source);
    // A line lives until the next lookup of its handle, and a copy is none.
    if (watcher.holds(line.getImpl())) {
      EXPECT_EQ(textOf(line), "3: [Cities][Rome][2004][8]");
      source.end();
      EXPECT_EQ(line.getIntByHeader("value"), 8);
    } else {
      ADD_FAILURE() << "the line of the handle was destroyed by copy()";
    }
    source.end();
    target.end();
    reader.end();
    env.end();
    EXPECT_EQ(watcher.getBlocksOut(), 0);
  });
}

TEST(CopyTable, OfATableWithoutLastLineEndsTheHandlesLine) {
  forBothKinds([](Kind kind) {
    OpenTable source(Cities, kind, "Cities");
    XelCsvTableReader target = source.reader.getTableByName("Cities");
    target.copy(source.table);
    const long withoutLine = source.env.getAllocator().getBlocksOut();
    EXPECT_EQ(textOf(target.getLineByNumber(1)), "3: [Cities][Rome][2004][8]");
    EXPECT_GT(source.env.getAllocator().getBlocksOut(), withoutLine);
    target.copy(source.table);
    EXPECT_EQ(source.env.getAllocator().getBlocksOut(), withoutLine);
    EXPECT_EQ(textOf(target.getLineByNumber(0)), "2: [Cities][Paris][2004][7]");
    target.end();
  });
}

TEST(CopyTable, IntoAnEmptyHandleIsOfTheFileReadersKindNotOfItsSources) {
  forBothKinds([](Kind kind) {
    const Kind other = kind == Kind::Cached ? Kind::Scanning : Kind::Cached;
    OpenTable source(Cities, kind, "Cities");
    OpenTable between("U,9\n", other, "U");
    between.table.copy(source.table);  // of the other kind than its file reader now
    EXPECT_EQ(between.getByNumber(2).substr(0, 24),
              other == Kind::Cached ? "XelLineNotFoundException" : "4: [Other][x]");
    XelCsvTableReader copied;
    copied.copy(between.table);
    // One number past the end tells the kinds apart.
    EXPECT_EQ(outcomeOf([&] { return copied.getLineByNumber(2); }).substr(0, 24),
              kind == Kind::Cached ? "XelLineNotFoundException" : "4: [Other][x]");
    EXPECT_EQ(textOf(copied.getLineByKey(2, "Rome", "2004")), "3: [Cities][Rome][2004][8]");
    copied.end();
    between.table.end();
  });
}

TEST(CopyTable, LastLineOfTheCopyOutlivesItsSource) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelCsvTableReader copied;
    EXPECT_FALSE(open.table.getLineByNumber(1).isEmpty());
    const long before = open.env.getAllocator().getBlocksOut();
    copied.copy(open.table);
    open.table.end();
    // The copy has a line of its own, which its next lookup replaces.
    const long withLine = open.env.getAllocator().getBlocksOut();
    EXPECT_EQ(textOf(copied.getLineByNumber(0)), "2: [Cities][Paris][2004][7]");
    EXPECT_EQ(open.env.getAllocator().getBlocksOut(), withLine);
    EXPECT_LT(withLine, 2 * before);
    copied.end();
  });
}

TEST(CopyTable, ThatFailsLeavesAnEmptyHandle) {
  forBothKinds([](Kind kind) {
    OpenTable source(Cities, kind, "Cities");
    OpenTable target("U,9\n", kind, "U");
    EXPECT_FALSE(source.table.getLineByNumber(0).isEmpty());
    EXPECT_FALSE(target.table.getLineByNumber(0).isEmpty());
    source.file.remove();
    XelCsvTableReader empty;
    EXPECT_XEL_THROW(empty.copy(source.table), XelCsvReader::XelFileNotFoundException, textOfMissing(source.file));
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_XEL_THROW(target.table.copy(source.table), XelCsvReader::XelFileNotFoundException,
                     textOfMissing(source.file));
    EXPECT_TRUE(target.table.isEmpty());
    target.table.end();
  });
}

TEST(CopyTable, OfAScanningTableIntoACachedOneNamesTheDuplicatedKey) {
  OpenTable named("T|KEYS,1,0\nT,a,1\nT,a,2\n", Kind::Scanning, "T");
  OpenTable target("U,9\n", Kind::Cached, "U");
  EXPECT_XEL_THROW(target.table.copy(named.table), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  a already exists in table T");
  EXPECT_TRUE(target.table.isEmpty());
}

TEST(CopyTable, OfAScanningTableOfAOneTableFileIsSilentAboutADuplicatedKey) {
  OpenTable one("|KEYS,1,0\na,1\nb,2\na,3\nc,4\n", Kind::Scanning);
  OpenTable target("U,9\n", Kind::Cached, "U");
  target.table.copy(one.table);
  EXPECT_EQ(target.table.getNumberOfItems(), 3);
  EXPECT_EQ(target.getByKey("a"), "1: [a][1]");
  EXPECT_EQ(target.getByNumber(2), "1: [a][1]");
  EXPECT_EQ(target.getByKey("c").substr(0, 24), "XelLineNotFoundException");
  target.table.end();
}

TEST(CopyTable, WithoutHeadingLineDoesNotKnowAnyHeading) {
  forBothKinds([](Kind kind) {
    OpenTable open("T,a,1\n", kind, "T");
    XelCsvTableReader copied;
    copied.copy(open.table);
    EXPECT_XEL_THROW(copied.getPosition("a"), XelCsvReader::XelColumnHeaderNotFoundException,
                     "XelCsvReader::XelColumnHeaderNotFoundException : Heading a not found in table T");
    EXPECT_EQ(printedBy(copied), "key 0 ----> Column 1\nkey 1 ----> Column 2\n");
    EXPECT_EQ(textOf(copied.getLineByKey(2, "a", "1")), "0: [T][a][1]");
    copied.end();
  });
}

TEST(TableHandle, OtherTablesAreNotDisturbedByAnException) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelCsvTableReader other = open.reader.getTableByName("Other");
    const XelCsvLine line = other.getLineByNumber(0);
    EXPECT_THROW(open.table.getLineByKey(1, "x"), XelCsvReader::XelLineNotFoundException);
    EXPECT_THROW(open.reader.getTableByName("Nowhere"), XelCsvReader::XelTableNotFoundException);
    EXPECT_EQ(textOf(line), "4: [Other][x]");
    EXPECT_EQ(open.getByKey("Rome", "2004"), "3: [Cities][Rome][2004][8]");
    other.end();
  });
}

// ---- Mistakes of the caller.

#ifndef NDEBUG
TEST(TableHandleDeathTest, UsingAnEmptyHandleIsAnAssertion) {
  XelCsvTableReader empty;
  XelCsvTableReader target;
  EXPECT_XEL_ASSERTION(empty.getLineByKey(1, "k"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getLineByNumber(0), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.isCached(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNameOfTable(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNumberOfKeys(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.printKeys(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getPosition("h"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getFirstLine(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(target.copy(empty), "other.impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNumberOfColumns(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNumberOfItems(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getEnv(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.isHeadingExists("h"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(XelCsvTableReader::LineIterator{empty}, "!= nullptr");
  EXPECT_XEL_ASSERTION(XelCsvTableReader(nullptr, "T"), "reader != nullptr");
}

TEST(TableHandleDeathTest, UsingAnEndedHandleIsAnAssertion) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    open.table.end();
    EXPECT_XEL_ASSERTION(open.table.getNumberOfItems(), "impl != nullptr");
  });
}
#endif
