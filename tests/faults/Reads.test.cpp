// Reads that give less than was asked for, and reads that fail.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "csv/errors/XelCsvOpen.h"
#include "csv/line/XelCsvLines.h"
#include "tests/faults/FileFaults.h"
#include "tests/faults/Operations.h"
#include "tests/support/DataFile.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"

namespace {

using FileNotFound = XelCsvReader::XelFileNotFoundException;
using LineNotFound = XelCsvReader::XelLineNotFoundException;

// Sizes at which the blocks of a reader may begin and end, and sizes that meet no line.
constexpr std::size_t Limits[] = {1, 7, 511, 512, 4095, 4097, 9999, 16383};

// A line of a given number of bytes, its line feed included, whose first field is unique.
std::string makeLine(const std::string& prefix, long number, std::size_t length) {
  std::string line = prefix + "k" + std::to_string(number) + ", v" + std::to_string(number * number) + " ,";
  // Separators too, so that what is cut off a line that is too long has fields.
  while (line.size() + 1 < length)
    line.push_back(line.size() % 100 == 99 ? ',' : static_cast<char>('a' + line.size() % 26));
  return line + "\n";
}

// Lines of lengths from a few bytes to some thousand, with comments and empty lines between them.
std::string makeLines(const std::string& prefix, long count, long seed) {
  std::string text;
  for (long number = 0; number < count; ++number) {
    const long noise = (number * 37 + seed * 11) % 97;
    const std::size_t length = noise == 13 ? 4096 : noise == 17 ? 3000 : static_cast<std::size_t>(10 + noise);
    if (noise % 9 == 0) text += "# a comment of table " + prefix + "\n";
    if (noise % 10 == 0) text += "  \t \n";
    text += makeLine(prefix, number + 1000 * seed, length);
  }
  return text;
}

std::string makeManyTables() {
  std::string text = "XELO_CSV_FORMAT,2.5\nXELO_DATA_SCHEMA,planner,3\n\n";
  for (long number = 0; number < 5; ++number) {
    const std::string name = "Table" + std::to_string(number);
    text += name + "|NAMES,id,value,filler\n" + name + "|KEYS,1,1,0\n";
    text += makeLines(name + ",", 25, number);
  }
  return text;
}

// Two tables in several pieces.
std::string makeSplitTables() {
  std::string text = "A|KEYS,1,1,0\n";
  for (long piece = 0; piece < 4; ++piece) {
    text += makeLines("A,", 8, 10 + piece);
    text += makeLines("B,", 9, 20 + piece);
  }
  text.pop_back();
  return text;
}

// With a line that is longer than a line can be.
std::string makeOneTable() {
  std::string text = "|NAMES,id,value,filler\n|KEYS,1,1,0\n" + makeLines("", 40, 1);
  text += makeLine("", 77777, 12000) + makeLines("", 40, 2) + makeLine("", 88888, 9999) + makeLines("", 5, 3);
  text.pop_back();
  return text;
}

// Everything that can be asked of a table.
std::string dump(XelCsvTableReader table) {
  const EndGuard<XelCsvTableReader> guard(table);
  const long items = table.getNumberOfItems();
  std::string text = std::to_string(items) + " items, " + std::to_string(table.getNumberOfColumns()) + " columns, " +
                     std::to_string(table.getNumberOfKeys()) + " keys, " + describe(table.getFirstLine()) + "\n";
  std::vector<std::string> values;
  for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) text += describe(*it) + "\n";
  for (const long number : {0L, 1L, items / 2, items - 1}) {
    const XelCsvLine line = table.getLineByNumber(number);
    const std::string id = line.getStringByPosition(table.getNameOfTable() == nullptr ? 0 : 1);
    const std::string value = line.getStringByPosition(table.getNameOfTable() == nullptr ? 1 : 2);
    text += describe(line) + "\n";
    text += describe(table.getLineByKey(3, id.c_str(), value.c_str(), "")) + "\n";
  }
  return text;
}

struct Content {
  const char* name;
  std::string text;
  long isMultiTable;
  long isSplit;
  std::vector<std::string> tables;
};

const std::vector<Content>& getContents() {
  static const std::vector<Content> contents{
      {"many tables", makeManyTables(), 1, 0, {"Table0", "Table1", "Table2", "Table3", "Table4"}},
      {"split tables", makeSplitTables(), 1, 1, {"A"}},
      {"one table", makeOneTable(), 0, 0, {}},
  };
  return contents;
}

// Everything that can be asked of a file.
std::string dump(XelEnv env, const char* file, const Content& content, long isCached) {
  XelCsvReader reader(env, file, content.isMultiTable, content.isSplit, ",", '.', '"', '#', isCached);
  const EndGuard<XelCsvReader> guard(reader);
  std::string text = std::to_string(reader.getNumberOfTables()) + " tables\n";
  if (content.isMultiTable == 0) return text + dump(reader.getReaderForUniqueTableFile());
  for (const std::string& table : content.tables) text += dump(reader.getTableByName(table.c_str()));
  return text;
}

// Whether making what the operation answers looks at errno afterwards.
bool makesATable(const Operation& operation) {
  static const std::set<std::string> names{"reader of many tables", "reader of one table",  "getTableByName",
                                           "getTableByNumber",      "table of a reader",    "table iterator",
                                           "table iterator's ++",   "table iterator's copy"};
  return names.count(operation.name) > 0;
}

std::string getOpenMessage(int error, const std::string& file) {
  char text[XelMessageSize];
  XelFormatOpenError(error, file.c_str(), text);
  return text;
}

}  // namespace

TEST(ShortReads, GiveTheSameAnswersAsWholeReads) {
  for (const Content& content : getContents()) {
    const DataFile file(content.text);
    for (const long isCached : {0L, 1L}) {
      SCOPED_TRACE(std::string(content.name) + (isCached != 0 ? ", cached" : ", scanning"));
      TestEnv env;
      const std::string whole = dump(env, file.getName(), content, isCached);
      EXPECT_GT(whole.size(), content.text.size() / 2) << "nearly everything of the file is asked for";
      for (const std::size_t limit : Limits) {
        FileFaults faults(file.getName());
        faults.limitReads(limit);
        EXPECT_EQ(dump(env, file.getName(), content, isCached), whole) << "reads of at most " << limit << " bytes";
        EXPECT_GE(faults.getReads(), static_cast<long>(content.text.size() / limit));
      }
    }
  }
}

TEST(ShortReads, BelongToEveryOperation) {
  for (const Operation& operation : getOperations()) {
    for (const bool isCached : {false, true}) {
      SCOPED_TRACE(operation.name);
      TestEnv env;
      const DataFile file(operation.isMultiTable ? ManyTables : OneTable);
      FileFaults faults(file.getName());
      faults.limitReads(1);
      operation.run({env, file.getName(), isCached, operation.isMultiTable},
                    [&](const Action& action) { EXPECT_EQ(action(), operation.answer); });
    }
  }
}

TEST(ReadFailures, EndEveryOperationAndLoseNothing) {
  for (const Operation& operation : getOperations()) {
    for (const bool isCached : {false, true}) {
      SCOPED_TRACE(std::string(operation.name) + (isCached ? ", cached" : ", scanning"));
      TestEnv env;
      const DataFile file(operation.isMultiTable ? ManyTables : OneTable);
      FileFaults faults(file.getName());
      for (const std::size_t bytes : {std::size_t{0}, std::size_t{5}}) {
        bool hasFailed = true;
        for (long read = 0; hasFailed; ++read) {
          SCOPED_TRACE("read " + std::to_string(read) + " fails after " + std::to_string(bytes) + " bytes");
          operation.run({env, file.getName(), isCached, operation.isMultiTable}, [&](const Action& action) {
            faults.reset();
            faults.limitReads(16);
            faults.failRead(read, EIO, bytes);
            std::string answer;
            try {
              answer = action();
            } catch (const XelCsvReader::XelCsvReaderException& exception) {
              EXPECT_STRNE(exception.getMessage(), "");
            }
            hasFailed = faults.getFaults() > 0;
            if (!hasFailed) {
              EXPECT_EQ(answer, operation.answer);
            }
            faults.reset();
            if (operation.isRepeatable) {
              EXPECT_EQ(action(), operation.answer) << "nothing of the failure stays";
            }
          });
          faults.reset();
        }
      }
    }
  }
}

TEST(ReadFailures, ThatLeaveAKnownErrnoAreReportedByWhoMakesAReaderOrATable) {
  long reported = 0;
  for (const Operation& operation : getOperations()) {
    if (!makesATable(operation)) continue;
    for (const bool isCached : {false, true}) {
      SCOPED_TRACE(std::string(operation.name) + (isCached ? ", cached" : ", scanning"));
      TestEnv env;
      const DataFile file(operation.isMultiTable ? ManyTables : OneTable);
      FileFaults faults(file.getName());
      const long opens = static_cast<long>(operation.getUse(isCached).modes.size());
      for (const int error : {EISDIR, ENOMEM, ENXIO}) {
        for (long open = 0; open < opens; ++open) {
          SCOPED_TRACE("open " + std::to_string(open));
          operation.run({env, file.getName(), isCached, operation.isMultiTable}, [&](const Action& action) {
            faults.reset();
            faults.failReadsOfOpen(open, error);
            try {
              EXPECT_EQ(action(), operation.answer);
              EXPECT_EQ(faults.getFaults(), 0) << "only the test of the file's name reads nothing";
            } catch (const FileNotFound& exception) {
              EXPECT_EQ(std::string(exception.getMessage()), getOpenMessage(error, file.getName()));
              ++reported;
            }
            faults.reset();
          });
          faults.reset();
        }
      }
    }
  }
  EXPECT_GE(reported, 3 * 8 * 2);
}

TEST(ReadFailures, AreForgottenByASeekAndByAnotherOpen) {
  const DataFile file("a\nb");
  FileFaults faults(file.getName());
  TestEnv env;
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::OneLine), 0);
  for (const bool isOpenedAgain : {false, true}) {
    SCOPED_TRACE(isOpenedAgain ? "open" : "seek");
    faults.reset();
    faults.failRead(0, EIO);
    if (isOpenedAgain) {
      ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::OneLine), 0);
    } else {
      ASSERT_TRUE(lines.seek(2));
    }
    EXPECT_FALSE(lines.read());
    EXPECT_TRUE(lines.isEnded());
    faults.reset();
    if (isOpenedAgain) {
      ASSERT_EQ(lines.open(file.getName(), "rb", XelCsvReach::OneLine), 0);
    } else {
      ASSERT_TRUE(lines.seek(0));
    }
    EXPECT_FALSE(lines.isEnded());
    ASSERT_TRUE(lines.read());
    EXPECT_EQ(std::string(lines.getLine().begin, lines.getLine().end), "a\n");
    ASSERT_TRUE(lines.read()) << "the last line, which no line feed ends";
    EXPECT_EQ(std::string(lines.getLine().begin, lines.getLine().end), "b");
  }
}

TEST(ReadFailures, OfTheDirectoryScanEndItLikeTheEndOfTheFile) {
  TestEnv env;
  const DataFile file("A,1\nB,2\nC,3\n");
  FileFaults faults(file.getName());
  faults.failReadsOfOpen(1, EIO);
  XelCsvReader none(env, file.getName(), 1);
  EXPECT_EQ(none.getNumberOfTables(), 0);
  none.end();
  faults.reset();
  faults.limitReads(6);  // the first line and half of the second
  faults.failRead(1, EIO);
  XelCsvReader one(env, file.getName(), 1);
  EXPECT_EQ(one.getNumberOfTables(), 1) << "what is left of a line is not taken for one";
  EXPECT_TRUE(one.isTableExists("A"));
  one.end();
}

TEST(ReadFailures, EndAScanningPassAfterTheLastWholeLine) {
  TestEnv env;
  std::string content;
  for (long number = 0; number < 40; ++number)
    content += std::string(static_cast<std::size_t>(number % 7), 'x') + "y\n";
  const DataFile file(content);
  FileFaults faults(file.getName());
  XelCsvReader reader = Place{env, file.getName(), false, false}.makeReader();
  for (const std::size_t bytes : {0U, 1U, 3U}) {
    for (long read = 0; read < static_cast<long>(content.size() / 7); ++read) {
      faults.reset();
      faults.limitReads(7);
      faults.failRead(read, EIO, bytes);
      const std::size_t came = static_cast<std::size_t>(read) * 7 + bytes;
      const auto lines = std::count(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(came), '\n');
      EXPECT_EQ(reader.getNumberOfItems(), lines) << came << " bytes came";
      EXPECT_EQ(faults.getFaults(), 1) << "after a failure nothing more is read";
    }
  }
  faults.reset();
  EXPECT_EQ(reader.getNumberOfItems(), 40);
  reader.end();
}

TEST(ReadFailures, OfALookupByKeyFindNoLine) {
  for (const bool isMultiTable : {false, true}) {
    TestEnv env;
    const DataFile file(isMultiTable ? ManyTables : OneTable);
    FileFaults faults(file.getName());
    XelCsvReader reader = Place{env, file.getName(), false, isMultiTable}.makeReader();
    XelCsvTableReader table = isMultiTable ? reader.getTableByName("Cities") : reader.getReaderForUniqueTableFile();
    faults.reset();
    faults.failReadsOfOpen(0, EIO);
    EXPECT_XEL_THROW(table.getLineByKey(2, "Rome", "2005"), LineNotFound,
                     isMultiTable
                         ? "XelCsvReader::XelLineNotFoundException : No line having key Rome-2005 in table Cities."
                         : "XelCsvReader::XelLineNotFoundException : No line having key Rome-2005.");
    EXPECT_GT(faults.getFaults(), 0);
    table.end();
    reader.end();
  }
}

TEST(ReadFailures, OfAnIteratorEndTheWalk) {
  for (const bool isMultiTable : {false, true}) {
    TestEnv env;
    std::string content;  // of more than one block
    for (long number = 0; number < 400; ++number) content += makeLine(isMultiTable ? "A," : "", number, 300);
    const DataFile file(content);
    FileFaults faults(file.getName());
    XelCsvReader reader = Place{env, file.getName(), false, isMultiTable}.makeReader();
    XelCsvTableReader table = isMultiTable ? reader.getTableByName("A") : reader.getReaderForUniqueTableFile();
    {
      faults.reset();
      faults.failReadsOfOpen(FileFaults::Every, EIO);
      const XelCsvTableReader::LineIterator it(table);
      EXPECT_FALSE(it.ok());
      EXPECT_TRUE((*it).isEmpty());
    }
    {
      faults.reset();
      XelCsvTableReader::LineIterator it(table);
      faults.failRead(faults.getReads(), EIO, 150);
      long count = 0;
      for (; it.ok(); ++it) {
        ASSERT_EQ((*it).getLineNumber(), count);
        ASSERT_EQ((*it).getFields()[isMultiTable ? 1 : 0], "k" + std::to_string(count));
        ++count;
      }
      EXPECT_GT(count, 0);
      EXPECT_LT(count, 400);
      EXPECT_EQ(faults.getFaults(), 1);
      EXPECT_EQ(faults.getOpenStreams(), 0) << "an iterator that has ended holds no stream";
    }
    table.end();
    reader.end();
  }
}

TEST(ReadFailures, OfTheIndexEndItLikeTheEndOfTheTable) {
  TestEnv env;
  const DataFile file(ManyTables);
  FileFaults faults(file.getName());
  XelCsvReader reader = Place{env, file.getName(), true, true}.makeReader();
  faults.reset();
  faults.failReadsOfOpen(1, EIO);  // the first open reads the heading lines
  XelCsvTableReader table = reader.getTableByName("Cities");
  EXPECT_GT(faults.getFaults(), 0);
  EXPECT_EQ(table.getNumberOfItems(), 0);
  EXPECT_EQ(table.getNumberOfColumns(), 4);
  EXPECT_XEL_THROW(table.getLineByKey(2, "Rome", "2005"), LineNotFound,
                   "XelCsvReader::XelLineNotFoundException : No line having key Rome-2005 in table Cities.");
  table.end();
  reader.end();
}

// The index notices a duplicated key some lines late and goes back to its line, which here lies a block before. What fails
// on that way changes nothing: the duplicate is named, and nothing is lost.
TEST(ReadFailures, OnTheWayBackToADuplicatedLineNameTheDuplicateAllTheSame) {
  std::string content = "T|KEYS,1,0\nT,same,1\nT,same,2\n";
  for (long number = 0; number < 60; ++number) content += makeLine("T,", number, 9000);
  const DataFile file(content);
  for (const FileCall call : {FileCall::Seek, FileCall::Read}) {
    TestEnv env;
    FileFaults faults(file.getName());
    XelCsvReader reader = Place{env, file.getName(), true, true}.makeReader();
    const EndGuard<XelCsvReader> guard(reader);
    const auto expectDuplicate = [&] {
      EXPECT_XEL_THROW(
          reader.getTableByName("T"), XelCsvReader::XelDuplicatedLineException,
          "XelCsvReader::XelDuplicatedLineException : Another line with key  same already exists In Table T .");
      EXPECT_EQ(faults.getOpenStreams(), 0);
    };
    faults.reset();
    expectDuplicate();
    const long lastCall = faults.getCalls(call) - 1;
    EXPECT_EQ(faults.getCalls(FileCall::Seek), 3) << "to the heading zone, to the lines, and back";
    faults.reset();
    faults.fail(call, lastCall, true, EIO);
    expectDuplicate();
    EXPECT_GT(faults.getFaults(), 0);
  }
}

TEST(ReadFailures, OfACachedLookupGiveAnEmptyLineOfTheRightNumber) {
  TestEnv env;
  const DataFile file(OneTable);
  FileFaults faults(file.getName());
  XelCsvReader reader = Place{env, file.getName(), true, false}.makeReader();
  faults.reset();
  faults.failReadsOfOpen(0, EIO);
  const XelCsvLine line = reader.getLineByKey(2, "Rome", "2005");
  EXPECT_EQ(line.getLineNumber(), 3);
  for (long field = 0; field < line.getNumberOfFields(); ++field) EXPECT_STREQ(line.getFields()[field], "");
  EXPECT_LE(line.getNumberOfFields(), 1);
  faults.reset();
  EXPECT_EQ(describe(reader.getLineByKey(2, "Rome", "2005")), "Rome;2005;9;@3");
  reader.end();
}

// A line that does not end within the first read of a lookup is cut by a failure of the second.
TEST(ReadFailures, InALongLineOfACachedLookupGiveAnEmptyLine) {
  TestEnv env;
  const std::string text(2000, 'x');
  const DataFile file("|KEYS,1,0\nshort,1\nlong," + text + "\n");
  FileFaults faults(file.getName());
  XelCsvReader reader(env, file.getName());
  for (const std::size_t bytes : {0U, 100U}) {
    SCOPED_TRACE(bytes);
    faults.reset();
    faults.failRead(1, EIO, bytes);
    EXPECT_EQ(describe(reader.getLineByKey(1, "long")), ";@2");
    EXPECT_EQ(faults.getReads(), 2);
    EXPECT_EQ(describe(reader.getLineByKey(1, "long")), "long;" + text + ";@2");
  }
  reader.end();
}

TEST(ReadFailures, ADirectoryIsToldAsSuch) {
  const DataDirectory directory;
  for (const bool isMultiTable : {false, true}) {
    for (const bool isCached : {false, true}) {
      TestEnv env;
      EXPECT_XEL_THROW((Place{env, directory.getName(), isCached, isMultiTable}.makeReader()), FileNotFound,
                       getOpenMessage(EISDIR, directory.getName()));
    }
  }
}

// What allocations do between two faults of the file.
TEST(ReadFailures, TogetherWithFailingAllocationsLoseNothing) {
  const DataFile file(ManyTables);
  const long injected = forEachFailingAllocation([&](XelEnv env) {
    FileFaults faults(file.getName());
    faults.limitReads(16);
    faults.failRead(9, EIO, 5);
    XelCsvReader reader = Place{env, file.getName(), true, true}.makeReader();
    const EndGuard<XelCsvReader> readerGuard(reader);
    faults.reset();
    XelCsvTableReader table = reader.getTableByName("XELO_CSV_FORMAT");
    const EndGuard<XelCsvTableReader> tableGuard(table);
    EXPECT_EQ(describe(table.getLineByKey(1, "2.5")), "XELO_CSV_FORMAT;2.5;@0");
  });
  EXPECT_GT(injected, 20);
}
