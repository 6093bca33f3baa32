// Lines by key: composition, order of checks, and who owns the key.
#include <gtest/gtest.h>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

// Looks a key up in the implementation, which must free it when it throws and leave it alone when it answers.
std::string lookUpOwned(OpenTable& open, const std::string& key) {
  const XelEnv env = open.env;
  const long before = open.env.getAllocator().getBlocksOut();
  const char* given = XelCopyString(env, key.c_str()).release();
  const std::string outcome = outcomeOf([&]() -> std::string {
    const XelEnvOwner<XelCsvLineI> line(open.table.getImpl()->getLineByKey(given));
    EXPECT_EQ(std::string(given), key);
    XelFreeString(env, given);
    return textOf(XelCsvLine(line.get()));
  });
  EXPECT_EQ(open.env.getAllocator().getBlocksOut(), before) << "who frees the key " << key << "?";
  return outcome;
}

}  // namespace

TEST(GetLineByKey, JoinsTheTrimmedKeyFieldsInTheOrderOfTheirColumns) {
  forBothKinds([](Kind kind) {
    OpenTable open("T|KEYS,1,0,1\nT, a ,b,c\nT,a,b,d\n", kind, "T");
    EXPECT_EQ(open.table.getNumberOfKeys(), 2);
    // The scanning lookup trims the key fields of the line that it hands out, the cached one reads it afresh.
    EXPECT_EQ(open.getByKey("a", "c"), kind == Kind::Cached ? "1: [T][ a ][b][c]" : "1: [T][a][b][c]");
    EXPECT_EQ(open.getByKey("a", "d"), "2: [T][a][b][d]");
    EXPECT_EQ(open.getByKey("a-d", ""),
              "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line "
              "having key a-d- in table T.");
    EXPECT_EQ(lookUpOwned(open, "a-c"), kind == Kind::Cached ? "1: [T][ a ][b][c]" : "1: [T][a][b][c]");
    EXPECT_EQ(lookUpOwned(open, "a-d"), "2: [T][a][b][d]");
  });
}

TEST(GetLineByKey, DoesNotTellAJoiningHyphenFromOneInAValue) {
  forBothKinds([](Kind kind) {
    OpenTable open("a-b,c\nx,y\n", kind);
    EXPECT_EQ(open.getByKey("a", "b-c"), "0: [a-b][c]");
    EXPECT_EQ(open.getByKey("a-b", "c"), "0: [a-b][c]");
  });
}

TEST(GetLineByKey, DoesNotTrimTheCallersValues) {
  forBothKinds([](Kind kind) {
    OpenTable open("T|KEYS,1,0\nT,a,1\n", kind, "T");
    EXPECT_XEL_THROW(open.table.getLineByKey(1, " a"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line having key  a in table T.");
  });
}

TEST(GetLineByKey, FindsEmptyAndBlankKeyFieldsByAnEmptyValue) {
  forBothKinds([](Kind kind) {
    OpenTable open("|KEYS,1,1,0\n,  ,1\nx,,2\n", kind);
    EXPECT_EQ(open.getByKey("", ""), kind == Kind::Cached ? "1: [][  ][1]" : "1: [][][1]");
    EXPECT_EQ(open.getByKey("x", ""), "2: [x][][2]");
  });
}

TEST(GetLineByKey, TakesFieldsAsFormatted) {
  TestEnv env;
  for (const long cached : {0L, 1L}) {
    DataFile file("\"a;b\";1\n3,5;2\nx\"\"y;3\n");
    XelCsvReader reader(env, file.getName(), 0, 0, ";", ',', '"', '#', cached);
    EXPECT_EQ(textOf(reader.getLineByKey(2, "a;b", "1")), "0: [a;b][1]");
    EXPECT_EQ(textOf(reader.getLineByKey(2, "3.5", "2")), "1: [3.5][2]");
    EXPECT_EQ(textOf(reader.getLineByKey(2, "xy", "3")), "2: [xy][3]");
    reader.end();
  }
}

TEST(GetLineByKey, WithoutKeyLineEveryColumnIsAKey) {
  forBothKinds([](Kind kind) {
    OpenTable one("a,1\na,2\n", kind);
    EXPECT_EQ(one.table.getNumberOfKeys(), 2);
    EXPECT_EQ(one.getByKey("a", "2"), "1: [a][2]");
    OpenTable named("T,a,1\nT,a,2\n", kind, "T");
    EXPECT_EQ(named.table.getNumberOfKeys(), 2);
    EXPECT_EQ(named.getByKey("a", "2"), "1: [T][a][2]");
  });
}

TEST(GetLineByKey, OfATableWithoutAnyKeyColumnComposesTheEmptyKey) {
  forBothKinds([](Kind kind) {
    OpenTable open("T\n", kind, "T");
    EXPECT_EQ(open.table.getNumberOfKeys(), 0);
    EXPECT_EQ(outcomeOf([&] { return open.table.getLineByKey(0, ""); }), "0: [T]");
    EXPECT_EQ(lookUpOwned(open, ""), "0: [T]");
    EXPECT_EQ(lookUpOwned(open, "x"),
              "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line having "
              "key x in table T.");
  });
  // The second line of a cached table has the empty key too.
  EXPECT_XEL_THROW(OpenTable("T\nT\n", Kind::Cached, "T"), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key   already exists In Table T .");
  OpenTable twice("T\nT\n", Kind::Scanning, "T");
  EXPECT_EQ(lookUpOwned(twice, ""), "0: [T]");
}

TEST(GetLineByKey, RepeatedKeyLinesRepeatTheKeyFields) {
  forBothKinds([](Kind kind) {
    OpenTable open("|KEYS,0,1,0\n|KEYS,1,1,0\na,b,c\n", kind);
    EXPECT_EQ(open.table.getNumberOfKeys(), 3);
    EXPECT_EQ(open.getByKey("b", "a", "b"), "2: [a][b][c]");
  });
}

TEST(GetLineByKey, OfTheNameColumnIsPossible) {
  forBothKinds([](Kind kind) {
    OpenTable open("1|KEYS,0,1\n1, x,y\n", kind, "1");
    EXPECT_EQ(open.table.getNumberOfKeys(), 2);
    EXPECT_EQ(open.getByKey("1", "y"), "1: [1][ x][y]");
  });
}

TEST(GetLineByKey, SaysThatTheKeyIsNotThere) {
  OpenTable scanned("a\n", Kind::Scanning);
  EXPECT_XEL_THROW(scanned.table.getLineByKey(1, "zz"), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key zz.");
  OpenTable cached("a\n", Kind::Cached);
  EXPECT_XEL_THROW(cached.table.getLineByKey(1, "zz"), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key zz .");
  forBothKinds([](Kind kind) {
    OpenTable named("T,a\nU,b\n", kind, "T");
    EXPECT_XEL_THROW(named.table.getLineByKey(1, "b"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line having key b in table T.");
  });
}

TEST(GetLineByKey, PrefixesAndExtensionsOfAKeyAreOtherKeys) {
  forBothKinds([](Kind kind) {
    OpenTable open("|KEYS,1,1\nab,cd\n", kind);
    for (const char* key : {"ab", "ab-", "ab-c", "ab-cde", "ab-cd-", "-ab-cd", "b-cd", "ab cd", ""}) {
      EXPECT_EQ(lookUpOwned(open, key).substr(0, 24), "XelLineNotFoundException") << key;
    }
    EXPECT_EQ(lookUpOwned(open, "ab-cd"), "1: [ab][cd]");
  });
}

TEST(GetLineByKey, FindsKeysThatAreLongerThanALine) {
  forBothKinds([](Kind kind) {
    // Repeated key columns make a key longer than the line that it comes from.
    const std::string value(4000, 'v');
    OpenTable open("|KEYS,1,0,0\n|KEYS,1,0,0\n|KEYS,1,0,0\n" + value + ",1,2\n", kind);
    EXPECT_EQ(open.getByKey(value.c_str(), value.c_str(), value.c_str()), "3: [" + value + "][1][2]");
    EXPECT_EQ(open.getByKey(value.c_str(), value.c_str(), "w").substr(0, 24), "XelLineNotFoundException");
  });
}

TEST(GetLineByKey, CutsItsMessageAt499Bytes) {
  const std::string key(600, 'k');
  const std::string text = "XelCsvReader::XelLineNotFoundException : No line having key ";
  forBothKinds([&](Kind kind) {
    OpenTable open("a\n", kind);
    EXPECT_XEL_THROW(open.table.getLineByKey(1, key.c_str()), XelCsvReader::XelLineNotFoundException,
                     (text + key).substr(0, 499));
  });
}

TEST(GetLineByKey, OfANullKeyFindsNothing) {
  forBothKinds([](Kind kind) {
    OpenTable open("T,a\n", kind, "T");
    EXPECT_XEL_THROW(open.table.getImpl()->getLineByKey(nullptr), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line having key  in table T.");
  });
}

TEST(GetLineByKey, OfASplitTablePassesOverTheLinesOfOthers) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1,x\nB,2,y\nA,2,z\n", kind, "A", true);
    EXPECT_EQ(open.getByKey("2", "z"), "2: [A][2][z]");
    EXPECT_XEL_THROW(open.table.getLineByKey(2, "2", "y"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line having key 2-y in table A.");
  });
}

TEST(GetLineByKey, StopsAtTheEndOfItsTable) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nB,2\n", kind, "A");
    EXPECT_XEL_THROW(open.table.getLineByKey(1, "2"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line having key 2 in table A.");
  });
}

// ---- The order of checks.

TEST(GetLineByKeyScanning, FindsTheFirstOfTwoLinesWithTheKey) {
  OpenTable open("T|KEYS,1,0\nT,a,1\nT,a,2\n", Kind::Scanning, "T");
  EXPECT_EQ(open.getByKey("a"), "1: [T][a][1]");
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
}

TEST(GetLineByKeyScanning, ReachesALineWithTooFewFieldsOnlyWhenItIsBeforeTheKey) {
  OpenTable named("T|KEYS,1,1,1\nT,a,b,c\nT,d\nT,e,f,g\n", Kind::Scanning, "T");
  EXPECT_EQ(named.getByKey("a", "b", "c"), "1: [T][a][b][c]");
  EXPECT_EQ(
      lookUpOwned(named, "e-f-g"),
      "XelCsvReaderException | XelCsvReader::XelCsvReaderException : corrupted file the number of keys (3) exceeds "
      "the number of fields of the current line (2), line number 2 in table T");
  OpenTable one("a,b,c\n\nd,e\n", Kind::Scanning);
  EXPECT_EQ(
      lookUpOwned(one, "d-e-f"),
      "XelCsvReaderException | XelCsvReader::XelCsvReaderException : corrupted file the number of keys (3) exceeds "
      "the number of fields of the current line (2), line number 2");
  EXPECT_EQ(lookUpOwned(one, "a-b-c"), "0: [a][b][c]");
}

TEST(GetLineByKeyScanning, CountsTheFieldsOfOtherTablesLinesToo) {
  constexpr const char* Content = "A,1,2,3\nB\nA,4,5,6\n";
  OpenTable scanned(Content, Kind::Scanning, "A", true);
  EXPECT_EQ(
      lookUpOwned(scanned, "4-5-6"),
      "XelCsvReaderException | XelCsvReader::XelCsvReaderException : corrupted file the number of keys (3) exceeds "
      "the number of fields of the current line (1), line number 1 in table A");
  // The cached reader looks at the name first.
  OpenTable cached(Content, Kind::Cached, "A", true);
  EXPECT_EQ(lookUpOwned(cached, "4-5-6"), "2: [A][4][5][6]");
}

TEST(GetLineByKeyScanning, TakesAllKeyFieldsBeforeItComparesAny) {
  // The second line has as many fields as there are key columns, but not the fourth; its first key field differs.
  OpenTable named("T|KEYS,1,0,1\nT,a,b,c\nT,x,y\nT,d,e,f\n", Kind::Scanning, "T");
  EXPECT_EQ(named.getByKey("a", "c"), "1: [T][a][b][c]");
  EXPECT_EQ(
      lookUpOwned(named, "d-f"),
      "XelFieldNotFoundException | XelCsvReader::XelFieldNotFoundException : Field Not Found at position 3 in line "
      "number 2, in table T while trying getStringByPosition");
  OpenTable one("|KEYS,0,0,1\na,b,c\nd\n", Kind::Scanning);
  EXPECT_EQ(
      lookUpOwned(one, "zz"),
      "XelFieldNotFoundException | XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line "
      "number 2 while trying getStringByPosition");
}

TEST(GetLineByKeyScanning, OfALineOfAnotherTableTakesNoKeyField) {
  OpenTable open("A|KEYS,0,0,1\nA,1,2,3\nB,1\nA,4,5,6\n", Kind::Scanning, "A", true);
  EXPECT_EQ(lookUpOwned(open, "6"), "3: [A][4][5][6]");
}

TEST(GetLineByKeyCached, LooksAtItsOwnLinesWhenItIsMade) {
  EXPECT_XEL_THROW(OpenTable("T|KEYS,1,1,1\nT,a,b,c\n#\nT,d\n", Kind::Cached, "T"), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (3) exceeds the number of "
                   "fields of the current line (2), line number 3 in table T");
  EXPECT_XEL_THROW(OpenTable("a,b,c\nd,e\n", Kind::Cached), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (3) exceeds the number of "
                   "fields of the current line (2), line number 1");
  EXPECT_XEL_THROW(
      OpenTable("T|KEYS,1,0,1\nT,x,y\n", Kind::Cached, "T"), XelCsvReader::XelFieldNotFoundException,
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 3 in line number 1, in table T "
      "while trying getStringByPosition");
  EXPECT_XEL_THROW(
      OpenTable("|KEYS,0,0,1\na,b,c\nd\n", Kind::Cached), XelCsvReader::XelFieldNotFoundException,
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 2 while trying "
      "getStringByPosition");
}

TEST(GetLineByKeyCached, AFailedTableLeavesTheOthersAlone) {
  TestEnv env;
  DataFile file("A,1,2\nA,3\nB,4\n");
  XelCsvReader reader = openReader(env, file, Kind::Cached, true);
  EXPECT_THROW(reader.getTableByName("A"), XelCsvReader::XelCsvReaderException);
  XelCsvTableReader table = reader.getTableByName("B");
  EXPECT_EQ(textOf(table.getLineByKey(1, "4")), "2: [B][4]");
  table.end();
  reader.end();
}

// ---- Who frees the key.

TEST(GetLineByKey, FreesTheKeyWheneverItThrowsAndOnlyThen) {
  forBothKinds([](Kind kind) {
    OpenTable open("|KEYS,1,0\na,1\nb,2\n", kind);
    EXPECT_EQ(lookUpOwned(open, "b"), "2: [b][2]");
    EXPECT_EQ(lookUpOwned(open, "c").substr(0, 24), "XelLineNotFoundException");
    open.file.remove();
    EXPECT_EQ(lookUpOwned(open, "b"), "XelFileNotFoundException | " + textOfMissing(open.file));
  });
}

TEST(GetLineByKey, FreesTheKeyWhenMemoryRunsOut) {
  forBothKinds([](Kind kind) {
    OpenTable open("|KEYS,1,0\na,1\nb,2\n", kind);
    TestAllocator& allocator = open.env.getAllocator();
    const long before = allocator.getBlocksOut();
    long failures = 0;
    for (bool isDone = false; !isDone; ++failures) {
      const char* key = XelCopyString(open.env, "b").release();
      allocator.failAfter(failures);
      try {
        const XelEnvOwner<XelCsvLineI> line(open.table.getImpl()->getLineByKey(key));
        allocator.neverFail();
        EXPECT_EQ(textOf(XelCsvLine(line.get())), "2: [b][2]");
        XelFreeString(open.env, key);
        isDone = true;
      } catch (const std::bad_alloc&) {
        allocator.neverFail();
      }
      EXPECT_EQ(allocator.getBlocksOut(), before) << failures;
    }
    EXPECT_GT(failures, 1);
  });
}

TEST(GetLineByNumberCached, TakesTheCopyOfItsKeyBack) {
  OpenTable open("a\nb\n", Kind::Cached);
  const long before = open.env.getAllocator().getBlocksOut();
  {
    const XelEnvOwner<XelCsvLineI> line(open.table.getImpl()->getLineByNumber(1));
    EXPECT_EQ(textOf(XelCsvLine(line.get())), "1: [b]");
  }
  EXPECT_EQ(open.env.getAllocator().getBlocksOut(), before);
  open.file.remove();
  EXPECT_XEL_THROW(open.table.getImpl()->getLineByNumber(1), XelCsvReader::XelFileNotFoundException,
                   textOfMissing(open.file));
  EXPECT_EQ(open.env.getAllocator().getBlocksOut(), before);
}

TEST(GetNumberOfItems, CountsTheFileEachTimeUnlessTheTableIsCached) {
  forBothKinds([](Kind kind) {
    OpenTable open("a\nb\nc\n", kind);
    open.file.write("a\nb\n");
    EXPECT_EQ(open.table.getNumberOfItems(), kind == Kind::Cached ? 3 : 2);
    open.file.remove();
    if (kind == Kind::Cached) {
      EXPECT_EQ(open.table.getNumberOfItems(), 3);
    } else {
      EXPECT_XEL_THROW(open.table.getNumberOfItems(), XelCsvReader::XelFileNotFoundException, textOfMissing(open.file));
    }
  });
}
