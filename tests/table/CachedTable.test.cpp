// The index of a cached table.
#include <gtest/gtest.h>

#include <cerrno>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

using Lines = std::vector<std::string>;

XelCachedCsvTableReaderI* implOf(const OpenTable& open) {
  return dynamic_cast<XelCachedCsvTableReaderI*>(open.table.getImpl());
}

// The reader of a table as it is before anybody asks it for a duplicated key.
XelEnvOwner<XelCachedCsvTableReaderI> makeTable(XelCsvReader& reader, const char* name) {
  XelCsvReaderI* impl = reader.getImpl();
  return XelNew<XelCachedCsvTableReaderI>(impl->getEnv(), impl, name, impl->getOffsetAndLineNumber(name));
}

}  // namespace

TEST(CachedTable, DuplicatedKeyIsTheLastKeyAndHasNoRecord) {
  TestEnv env;
  DataFile file("T|KEYS,1,0\nT,a,1\nT,b,2\n\nT, a,3\nT,c,4\n");
  XelCsvReader reader = openReader(env, file, Kind::Cached, true);
  {
    const XelEnvOwner<XelCachedCsvTableReaderI> table = makeTable(reader, "T");
    EXPECT_STREQ(table->getDuplicatedKey(), "a");
    EXPECT_EQ(table->getNumberOfItems(), 3);
    EXPECT_STREQ(table->getLineKey(0), "a");
    EXPECT_STREQ(table->getLineKey(1), "b");
    EXPECT_STREQ(table->getLineKey(2), "a");
    EXPECT_EQ(table->getLineKey(3), nullptr);
    // The record is that of the first line; the lines after the duplicate are not indexed.
    EXPECT_EQ(table->getOffsetAndLineNumber("a")->lineNumber, 1);
    EXPECT_EQ(table->getOffsetAndLineNumber("a")->offset, 11);
    EXPECT_EQ(table->getOffsetAndLineNumber("c"), nullptr);
  }
  reader.end();
}

TEST(CachedTable, DuplicatedKeyIsNamedByGetTableByNameAndByTheHandleInTheirOwnWords) {
  TestEnv env;
  DataFile file("A|KEYS,1,0\nA,x y,1\nA,b,2\nA, x y ,3\nB,b\n");
  XelCsvReader reader = openReader(env, file, Kind::Cached, true);
  EXPECT_XEL_THROW(reader.getTableByName("A"), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  x y already exists In Table A .");
  EXPECT_XEL_THROW(reader.getTableByNumber(0), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  x y already exists In Table A .");
  EXPECT_XEL_THROW(XelCsvTableReader(reader.getImpl(), "A"), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  x y already exists in table A");
  // The key of a line of another table is no duplicate.
  XelCsvTableReader table = reader.getTableByName("B");
  EXPECT_EQ(textOf(table.getLineByKey(1, "b")), "4: [B][b]");
  table.end();
  reader.end();
}

TEST(CachedTable, DuplicatedKeyInAOneTableFileIsSilent) {
  OpenTable open("a,1\nb,2\na,1\nc,3\n", Kind::Cached);
  EXPECT_EQ(open.table.getNumberOfItems(), 3);
  EXPECT_EQ(open.getByNumber(2), "0: [a][1]");
  EXPECT_EQ(open.getByKey("a", "1"), "0: [a][1]");
  EXPECT_XEL_THROW(open.table.getLineByKey(2, "c", "3"), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key c-3 .");
  EXPECT_XEL_THROW(open.table.getLineByNumber(3), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 3 ");
  EXPECT_EQ(open.getAll(), (Lines{"0: [a][1]", "1: [b][2]", "0: [a][1]"}));
}

TEST(CachedTable, ADuplicateOfALineOfAnotherTableIsNoneWhereTablesAreSplit) {
  OpenTable open("A,1\nB,1\nA,2\nB,1\n", Kind::Cached, "A", true);
  EXPECT_EQ(open.getAll(), (Lines{"0: [A][1]", "2: [A][2]"}));
}

TEST(CachedTable, AShortLineOfAnotherTableIsNotLookedAtWhereTablesAreSplit) {
  OpenTable open("A,1,2\nB\nA,3,4\n", Kind::Cached, "A", true);
  EXPECT_EQ(open.getAll(), (Lines{"0: [A][1][2]", "2: [A][3][4]"}));
}

// Values of columns that stand side by side are joined where they lie; the result is that of joining them elsewhere.
TEST(CachedTable, KeysOfColumnsSideBySideAndApartAreComposedAlike) {
  struct Case {
    const char* keys;
    std::string line;
    std::string key;
    std::string fields;  // as they stand in the file
  };
  const std::string text(9000, 'x');
  const Case cases[] = {
      {"1,0,0", "a,b,c\n", "a", "[a][b][c]"},
      {"0,0,1", "a,b, c \n", "c", "[a][b][ c ]"},
      {"1,1,0", "a,b,c\n", "a-b", "[a][b][c]"},
      {"0,1,1", "a,b,c\n", "b-c", "[a][b][c]"},
      {"0,1,1", "a,b,c", "b-c", "[a][b][c]"},
      {"1,0,1", "a,b,c\r\n", "a-c", "[a][b][c]"},
      {"1,1,1", "a,b,c\r\n", "a-b-c", "[a][b][c]"},
      {"1,1,1", " a,b,c\n", "a-b-c", "[ a][b][c]"},
      {"1,1,1", "a,b ,c\n", "a-b-c", "[a][b ][c]"},
      {"1,1,1", "a,b,c \n", "a-b-c", "[a][b][c ]"},
      {"1,1,1", ",,\n", "--", "[][][]"},
      {"1,1,0", " ,,c\n", "-", "[ ][][c]"},
      {"1,1,0", "\"a,x\",b\"\",c\n", "a,x-b", "[a,x][b][c]"},
      {"1,1,0", "a-b,-,c\n", "a-b--", "[a-b][-][c]"},
      {"1,1,1", "a,b,c,d\n", "a-b-c", "[a][b][c][d]"},
      {"1,1,0", "a," + text + ",c\n", "a-" + text, "[a][" + text + "][c]"},
      {"1,1,0", text + "," + text.substr(0, 997) + ",\n", text + "-" + text.substr(0, 997),
       "[" + text + "][" + text.substr(0, 997) + "][]"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(std::string(test.keys) + ": " + test.line.substr(0, 20));
    // A line before it, for the first one of a file is read in another way.
    OpenTable open("|KEYS," + std::string(test.keys) + "\nfirst,of,all\n" + test.line, Kind::Cached);
    const XelCachedCsvTableReaderI* table = implOf(open);
    EXPECT_STREQ(table->getLineKey(1), test.key.c_str());
    const OffsetAndLineNumber* start = table->getOffsetAndLineNumber(test.key.c_str());
    ASSERT_NE(start, nullptr);
    EXPECT_EQ(start->offset, 25);
    EXPECT_EQ(start->lineNumber, 2);
    EXPECT_EQ(textOf(open.table.getLineByNumber(1)), "2: " + test.fields);
  }
}

TEST(CachedTable, KeysAreIndexedTrimmedAndJoined) {
  OpenTable open("|KEYS,0,1,1\nx, a ,b-c\n", Kind::Cached);
  EXPECT_STREQ(implOf(open)->getLineKey(0), "a-b-c");
  EXPECT_EQ(implOf(open)->getOffsetAndLineNumber("a-b-c")->offset, 12);
  EXPECT_EQ(implOf(open)->getOffsetAndLineNumber(" a -b-c"), nullptr);
}

TEST(CachedTable, ALookupDoesNotCompareTheLineWithTheKeyAgain) {
  OpenTable open("a,1\nb,2\n", Kind::Cached);
  open.file.write("x,y\nz,w\n");
  EXPECT_EQ(open.getByKey("b", "2"), "1: [z][w]");
}

TEST(CachedTable, OfAnEmptyReaderHasNoItems) {
  TestEnv env;
  const XelEnvOwner<XelCachedCsvTableReaderI> table = XelNew<XelCachedCsvTableReaderI>(env, env.get());
  EXPECT_EQ(table->getNumberOfItems(), 0);
  EXPECT_EQ(table->getOffsetAndLineNumber("a"), nullptr);
  EXPECT_EQ(table->getOffsetAndLineNumber(nullptr), nullptr);
  EXPECT_EQ(table->getDuplicatedKey(), nullptr);
  EXPECT_XEL_THROW(table->getLineByKey(XelCopyString(env, "a").release()), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key a .");
  EXPECT_XEL_THROW(table->getLineByNumber(0), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 0 ");
  table->clearTable();
  EXPECT_EQ(table->getNumberOfItems(), 0);
}

TEST(CachedTable, OfAFileThatIsGoneHasAnEmptyIndexAndThrowsNothing) {
  TestEnv env;
  DataFile file("T,a\nT,b\n");
  XelCsvReader reader = openReader(env, file, Kind::Cached, true);
  file.remove();
  {
    const XelEnvOwner<XelCachedCsvTableReaderI> table = makeTable(reader, "T");
    EXPECT_EQ(table->getOpenError(), ENOENT);
    EXPECT_EQ(table->getNumberOfItems(), 0);
    EXPECT_EQ(table->getDuplicatedKey(), nullptr);
    EXPECT_EQ(table->getOffsetAndLineNumber("a"), nullptr);
  }
  reader.end();
}

TEST(CachedTable, StockLineOffsetsTellsWhetherItStoppedAtADuplicate) {
  struct Case {
    const char* content;
    long answer;
    long items;
  };
  for (const Case& test : {Case{"a\nb\nc\n", 0, 3}, Case{"a\nb\na\nc\n", 1, 3}, Case{"", 0, 0}}) {
    SCOPED_TRACE(test.content);
    OpenTable open("a\nb\nc\nd\n", Kind::Cached);
    open.file.write(test.content);
    implOf(open)->clearCachedTable();
    XelCsvLines lines(open.env);
    ASSERT_EQ(lines.open(open.file.getName(), "rb", XelCsvReach::ManyLines), 0);
    EXPECT_EQ(implOf(open)->stockLineOffsets(lines), test.answer);
    EXPECT_EQ(implOf(open)->getNumberOfItems(), test.items);
    EXPECT_EQ(lines.read(), test.answer != 0);  // nothing behind a duplicate is read
  }
}

TEST(CachedTable, AddLineOffsetKeepsTheFirstRecordOfAKey) {
  TestEnv env;
  const XelEnvOwner<XelCachedCsvTableReaderI> table = XelNew<XelCachedCsvTableReaderI>(env, env.get());
  const auto makeRecord = [&](long offset) {
    XelEnvBlock<OffsetAndLineNumber> record(env, 1);
    record[0] = {offset, 0};
    return record;
  };
  XelEnvBlock<OffsetAndLineNumber> first = makeRecord(7);
  XelEnvBlock<OffsetAndLineNumber> second = makeRecord(8);
  EXPECT_EQ(table->addLineOffset("key", first.get()), 1);
  first.release();
  EXPECT_EQ(table->addLineOffset("key", second.get()), 0);
  EXPECT_EQ(table->getOffsetAndLineNumber("key")->offset, 7);
}

TEST(CachedTable, AddLineOffsetKeepsTheVeryRecordAndClearTableGivesItBack) {
  OpenTable open("a,1\nb,2\n", Kind::Cached);
  XelCachedCsvTableReaderI* table = implOf(open);
  XelEnvBlock<OffsetAndLineNumber> record(open.env, 1);
  record[0] = {4, 77};
  EXPECT_EQ(table->addLineOffset("a-1", record.get()), 0);  // the list has it
  EXPECT_EQ(table->addLineOffset("c", record.get()), 1);
  OffsetAndLineNumber* kept = record.release();
  EXPECT_EQ(table->getOffsetAndLineNumber("c"), kept);
  EXPECT_EQ(open.getByKey("a", "1"), "0: [a][1]");
  EXPECT_EQ(outcomeOf([&]() -> std::string {
              const char* key = XelCopyString(open.env, "c").release();
              const XelEnvOwner<XelCsvLineI> line(table->getLineByKey(key));
              XelFreeString(open.env, key);
              return textOf(XelCsvLine(line.get()));
            }),
            "77: [b][2]");
  // It is no line of the table.
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
  EXPECT_EQ(open.getAll(), (Lines{"0: [a][1]", "1: [b][2]"}));
  XelCachedCsvTableReaderI copied(open.env);
  copied.copy(table);
  EXPECT_EQ(copied.getOffsetAndLineNumber("c"), nullptr);
  EXPECT_EQ(copied.getOffsetAndLineNumber("b-2")->offset, 4);
  table->clearTable();
  EXPECT_EQ(table->getOffsetAndLineNumber("c"), nullptr);
}

TEST(CachedTable, ALineThatAddLineOffsetAddedIsADuplicateForTheLinesOfTheFile) {
  OpenTable open("a\nb\nc\nd\n", Kind::Cached);
  XelCachedCsvTableReaderI* table = implOf(open);
  table->clearCachedTable();
  XelEnvBlock<OffsetAndLineNumber> record(open.env, 1);
  record[0] = {100, 50};
  ASSERT_EQ(table->addLineOffset("c", record.get()), 1);
  record.release();
  XelCsvLines lines(open.env);
  ASSERT_EQ(lines.open(open.file.getName(), "rb", XelCsvReach::ManyLines), 0);
  EXPECT_EQ(table->stockLineOffsets(lines), 1);
  EXPECT_EQ(table->getNumberOfItems(), 3);
  EXPECT_STREQ(table->getLineKey(2), "c");
  EXPECT_EQ(table->getOffsetAndLineNumber("c")->lineNumber, 50);
  EXPECT_EQ(table->getOffsetAndLineNumber("d"), nullptr);
  EXPECT_EQ(lines.getOffset(), 6);
}

TEST(CachedTable, LinesOfTheFileWithOneKeyAreDuplicatesAlsoWhereALineWasAdded) {
  OpenTable open("a\nb\na\nd\n", Kind::Cached);
  XelCachedCsvTableReaderI* table = implOf(open);
  table->clearCachedTable();
  XelEnvBlock<OffsetAndLineNumber> record(open.env, 1);
  record[0] = {100, 50};
  ASSERT_EQ(table->addLineOffset("z", record.get()), 1);
  record.release();
  XelCsvLines lines(open.env);
  ASSERT_EQ(lines.open(open.file.getName(), "rb", XelCsvReach::ManyLines), 0);
  EXPECT_EQ(table->stockLineOffsets(lines), 1);
  EXPECT_EQ(table->getNumberOfItems(), 3);
  EXPECT_STREQ(table->getLineKey(2), "a");
  EXPECT_EQ(table->getOffsetAndLineNumber("a")->lineNumber, 0);
  EXPECT_EQ(lines.getOffset(), 6);
}

TEST(CachedTable, AddLineOffsetLosesNothingWhenMemoryRunsOut) {
  EXPECT_GT(forEachFailingAllocation([&](XelEnv env) {
              const XelEnvOwner<XelCachedCsvTableReaderI> table = XelNew<XelCachedCsvTableReaderI>(env, env);
              XelEnvBlock<OffsetAndLineNumber> record(env, 1);
              record[0] = {7, 0};
              ASSERT_EQ(table->addLineOffset("key", record.get()), 1);
              record.release();
              EXPECT_EQ(table->getOffsetAndLineNumber("key")->offset, 7);
            }),
            2);
}

TEST(CachedTable, ADuplicateEndsTheIndexThoughALineBehindItIsDefective) {
  // The duplicate is noticed when lines behind it have been read; none of them counts.
  for (long between = 0; between < 40; ++between) {
    SCOPED_TRACE(between);
    std::string content = "T|KEYS,0,1\nT,a,1\nT,b,1,x\n";
    for (long number = 0; number < between; ++number) content += "T,c," + std::to_string(number) + ",y,z\n";
    TestEnv env;
    DataFile file(content + "T\n");
    XelCsvReader reader = openReader(env, file, Kind::Cached, true);
    EXPECT_XEL_THROW(reader.getTableByName("T"), XelCsvReader::XelDuplicatedLineException,
                     "XelCsvReader::XelDuplicatedLineException : Another line with key  1 already exists In Table T .");
    {
      const XelEnvOwner<XelCachedCsvTableReaderI> table = makeTable(reader, "T");
      EXPECT_EQ(table->getNumberOfItems(), 2);
      // The table's number of fields and length are those of the duplicated line.
      EXPECT_EQ(table->getNumberOfFields(), 4);
      EXPECT_EQ(table->getLineLength(), 8);
      table->clearCachedTable();
      XelCsvLines lines(env);
      ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::ManyLines), 0);
      ASSERT_TRUE(lines.seek(table->getFirstDataOffset()));
      EXPECT_EQ(table->stockLineOffsets(lines), 1);
      EXPECT_EQ(lines.getOffset(), 25);
      EXPECT_EQ(table->getOffsetAndLineNumber("1")->lineNumber, 1);
    }
    reader.end();
  }
}

TEST(CachedTable, ADefectiveLineLeavesTheLinesBeforeItInTheIndex) {
  for (long before = 1; before < 40; ++before) {
    std::string content;
    for (long number = 0; number < before; ++number) content += std::to_string(number) + ",x\n";
    OpenTable open(content, Kind::Cached);
    XelCachedCsvTableReaderI* table = implOf(open);
    table->clearCachedTable();
    open.file.write(content + "short\n1000,x\n");
    // The region ends where the file ended; the defective line begins there.
    XelCsvLines lines(open.env);
    ASSERT_EQ(lines.open(open.file.getName(), "rb", XelCsvReach::ManyLines), 0);
    EXPECT_THROW(table->stockLineOffsets(lines), XelCsvReader::XelCsvReaderException);
    ASSERT_EQ(table->getNumberOfItems(), before);
    for (long number = 0; number < before; ++number) {
      const std::string key = std::to_string(number) + "-x";
      EXPECT_EQ(table->getOffsetAndLineNumber(key.c_str())->lineNumber, number);
    }
  }
}

TEST(ClearTable, LeavesAnEmptyUsableCachedTable) {
  OpenTable open("T|NAMES,a,b\nT|KEYS,1,0\nT,x,1\nT,y,2\n", Kind::Cached, "T");
  EXPECT_EQ(open.getByKey("y"), "3: [T][y][2]");
  open.table.getImpl()->clearTable();
  EXPECT_EQ(open.table.getNumberOfItems(), 0);
  EXPECT_EQ(open.table.getNumberOfKeys(), 0);
  EXPECT_TRUE(open.table.getFirstLine().isEmpty());
  EXPECT_FALSE(open.table.isHeadingExists("a"));
  EXPECT_XEL_THROW(open.table.getLineByKey(1, "y"), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key  in table T.");
  EXPECT_XEL_THROW(open.table.getImpl()->getLineByKey(XelCopyString(open.env, "y").release()),
                   XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key y in table T.");
  EXPECT_XEL_THROW(open.table.getLineByNumber(0), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 0 in table T");
  EXPECT_TRUE(open.getAll().empty());
  open.table.getImpl()->clearTable();
  EXPECT_EQ(open.table.getNumberOfItems(), 0);
}

TEST(ClearTable, ClearCachedTableForgetsTheIndexAlone) {
  OpenTable open("T|NAMES,a,b\nT|KEYS,1,0\nT,x,1\n", Kind::Cached, "T");
  implOf(open)->clearCachedTable();
  EXPECT_EQ(open.table.getNumberOfItems(), 0);
  EXPECT_EQ(open.table.getNumberOfKeys(), 1);
  EXPECT_EQ(open.table.getPosition("b"), 2);
}

TEST(ClearTable, OfAWalkedTableEndsTheWalkAtTheKeyThatIsGone) {
  OpenTable open("T|KEYS,1,0\nT,x,1\nT,y,2\n", Kind::Cached, "T");
  XelCsvTableReader::LineIterator it(open.table);
  implOf(open)->clearCachedTable();
  EXPECT_EQ(textOf(*it), "1: [T][x][1]");
  EXPECT_XEL_THROW(++it, XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key  found in table T.");
  EXPECT_TRUE((*it).isEmpty());
}

TEST(ClearTable, LeavesTheRegionOfAScanningTable) {
  OpenTable open("T|NAMES,a,b\nT|KEYS,1,0\nT,x,1\nT,y,2\n", Kind::Scanning, "T");
  open.table.getImpl()->clearTable();
  EXPECT_EQ(open.table.getNumberOfKeys(), 0);
  EXPECT_TRUE(open.table.getFirstLine().isEmpty());
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
  EXPECT_EQ(open.getByNumber(1), "3: [T][y][2]");
  EXPECT_EQ(open.getAll(), (Lines{"2: [T][x][1]", "3: [T][y][2]"}));
}

TEST(CachedTable, GrowsToManyLinesWithAwkwardKeys) {
  // Long common beginnings, anagrams, bytes above 127, keys that differ in one byte far from the end.
  constexpr long Count = 50000;
  std::string content;
  std::vector<std::string> keys;
  keys.reserve(Count);
  for (long number = 0; number < Count; ++number) {
    std::string digits = std::to_string(number);
    std::string key;
    switch (number % 4) {
      case 0:
        key = "the-very-same-long-beginning-of-every-key-of-this-kind-" + digits;
        break;
      case 1:
        key = digits + "-and-the-very-same-long-end-of-every-key-of-this-kind";
        break;
      case 2:
        for (const char digit : digits) key += std::string("\xe9\xff\x80") + digit;
        break;
      default:
        key = std::string(static_cast<std::size_t>(number % 100), 'a') + digits;
        break;
    }
    keys.push_back(key);
    content += key + ",v" + std::to_string(number) + "\n";
    if (number % 1000 == 0) content += "# a comment\n\n";
  }
  OpenTable open("|KEYS,1,0\n" + content, Kind::Cached);
  ASSERT_EQ(open.table.getNumberOfItems(), Count);
  long number = 0;
  for (XelCsvTableReader::LineIterator it(open.table); it.ok(); ++it, ++number) {
    const XelCsvLine line = *it;
    ASSERT_EQ(std::string(line.getFields()[0]), keys[static_cast<std::size_t>(number)]);
    ASSERT_EQ(line.getLineNumber(), 1 + number + 2 * ((number + 999) / 1000));
  }
  EXPECT_EQ(number, Count);
  for (number = 0; number < Count; number += 37) {
    const std::string& key = keys[static_cast<std::size_t>(number)];
    ASSERT_STREQ(open.table.getLineByKey(1, key.c_str()).getFields()[1], ("v" + std::to_string(number)).c_str());
    ASSERT_STREQ(open.table.getLineByNumber(number).getFields()[0], key.c_str());
  }
  EXPECT_EQ(open.getByKey("the-very-same-long-beginning-of-every-key-of-this-kind-").substr(0, 24),
            "XelLineNotFoundException");
}
