// The way from a file reader to its tables: guards, tables by name and number, the one table of a one-table file.
#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "csv/line/XelCsvLineI.h"
#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/DataFile.h"
#include "tests/support/DecimalPoint.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"

namespace {

using UseException = XelCsvReader::XelIncorrectCsvReaderUseException;
using TableException = XelCsvReader::XelTableNotFoundException;

enum Kind : long { OneTable = 0, ManyTables = 1 };
constexpr long BothReaders[] = {0, 1};

XelEnvOwner<XelCsvReaderI> makeReader(XelEnv env, const DataFile& file, Kind kind, long isCached) {
  return XelNew<XelCsvReaderI>(env, env, file.getName(), isCached, static_cast<long>(kind), 0L, ",", '.', '"', '#');
}

XelEnvOwner<XelCsvTableReaderI> own(XelCsvTableReaderI* table) { return XelEnvOwner<XelCsvTableReaderI>(table); }

std::string isMultiTableFile(const DataFile& file, const std::string& operation) {
  return std::string("XelCsvReader::XelIncorrectCsvReaderUseException : ") + file.getName() +
         " is a multi-Table file. No table have been specified while trying to do a " + operation + ".";
}

std::string isUniqueTableFile(const DataFile& file, const std::string& operation) {
  return std::string("XelCsvReader::XelIncorrectCsvReaderUseException : ") + file.getName() +
         " is a unique-Table file. cann't use this member function " + operation + " with this reader.";
}

std::string noTable(const std::string& name) {
  return "XelCsvReader::XelTableNotFoundException : No Table having this name " + name + ".";
}

// Answers what the operation prints on standard output.
std::string getOutput(const std::function<void()>& operation) {
  std::ostringstream output;
  std::streambuf* former = std::cout.rdbuf(output.rdbuf());
  operation();
  std::cout.rdbuf(former);
  return output.str();
}

struct Operation {
  const char* guardName;  // the name that the guard tells
  std::function<void(XelCsvReaderI&)> run;
};

TEST(Guards, RefuseTheOperationsOfOneTableFilesOnAFileOfSeveralTables) {
  const std::vector<Operation> operations = {
      {"getLineByNumber", [](XelCsvReaderI& reader) { reader.getLineByNumber(0); }},
      {"getLineByKey", [](XelCsvReaderI& reader) { reader.getLineByKey("k"); }},
      {"getNumberOfItems", [](XelCsvReaderI& reader) { reader.getNumberOfItems(); }},
      {"getNumberOfColumns", [](XelCsvReaderI& reader) { reader.getNumberOfColumns(); }},
      {"getFirstLine", [](XelCsvReaderI& reader) { reader.getFirstLine(); }},
      {"isHeadingExists", [](XelCsvReaderI& reader) { reader.isHeadingExists("h"); }},
      {"getNumberOfKeys", [](XelCsvReaderI& reader) { reader.getNumberOfKeys(); }},
      {"printKeys", [](XelCsvReaderI& reader) { reader.printKeys(); }},
      {"getPosition", [](XelCsvReaderI& reader) { reader.getPosition("h"); }},
      {"testNumberOfFields", [](XelCsvReaderI& reader) { reader.testNumberOfFields(nullptr); }},
      {"getTable", [](XelCsvReaderI& reader) { reader.getTable(); }},
  };
  for (const char* content : {"A,1\nB,2\n", "A,1\n", ""}) {
    for (const long isCached : BothReaders) {
      TestEnv env;
      const DataFile file(content);
      const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, isCached);
      for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.guardName);
        EXPECT_XEL_THROW(operation.run(*reader), UseException, isMultiTableFile(file, operation.guardName));
      }
      EXPECT_XEL_THROW(reader->getReaderForUniqueTableFile(), UseException,
                       std::string("XelCsvReader::XelIncorrectCsvReaderUseException : ") + file.getName() +
                           " is a multi-Table file. There is no reader for unique table.");
    }
  }
}

TEST(Guards, RefuseTheOperationsOfFilesOfSeveralTablesOnAOneTableFile) {
  const std::vector<Operation> operations = {
      {"getTableByName", [](XelCsvReaderI& reader) { reader.getTableByName("A"); }},
      {"getTableByName", [](XelCsvReaderI& reader) { reader.getTableByName(nullptr); }},
      {"getTableByNumber", [](XelCsvReaderI& reader) { reader.getTableByNumber(0); }},
      {"getTableByNumber", [](XelCsvReaderI& reader) { reader.getTableByNumber(-1); }},
      {"getTableByNumber", [](XelCsvReaderI& reader) { reader.getTableByNumber(1); }},
      {"getTableByName", [](XelCsvReaderI& reader) { reader.getTable(); }},  // what getTable() asks for in turn
      {"getCsvFormat", [](XelCsvReaderI& reader) { reader.getCsvFormat(); }},
      {"getFileVersion", [](XelCsvReaderI& reader) { reader.getFileVersion(); }},
      {"getRequiredBy", [](XelCsvReaderI& reader) { reader.getRequiredBy(); }},
  };
  for (const char* content : {"XELO_CSV_FORMAT,1\nXELO_DATA_SCHEMA,tool\n", "A,1\n", ""}) {
    for (const long isCached : BothReaders) {
      TestEnv env;
      const DataFile file(content);
      const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, OneTable, isCached);
      for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.guardName);
        EXPECT_XEL_THROW(operation.run(*reader), UseException, isUniqueTableFile(file, operation.guardName));
      }
    }
  }
}

TEST(Guards, LetGetNumberOfTablesAndIsTableExistsThrough) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\nB,2\n");
    const XelEnvOwner<XelCsvReaderI> one = makeReader(env, file, OneTable, isCached);
    EXPECT_EQ(one->getNumberOfTables(), 1);
    EXPECT_FALSE(one->isTableExists("A"));
    EXPECT_FALSE(one->isTableExists(nullptr));
    const XelEnvOwner<XelCsvReaderI> many = makeReader(env, file, ManyTables, isCached);
    EXPECT_EQ(many->getNumberOfTables(), 2);
    EXPECT_TRUE(many->isTableExists("A"));
    EXPECT_FALSE(many->isTableExists("C"));
  }
}

TEST(GetTable, NeverReturnsATable) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    for (const char* content : {"A,1\n", "A,1\nB,1\n", ""}) {
      const DataFile file(content);
      const XelEnvOwner<XelCsvReaderI> many = makeReader(env, file, ManyTables, isCached);
      EXPECT_XEL_THROW(many->getTable(), UseException, isMultiTableFile(file, "getTable"));
      const XelEnvOwner<XelCsvReaderI> one = makeReader(env, file, OneTable, isCached);
      EXPECT_XEL_THROW(one->getTable(), UseException, isUniqueTableFile(file, "getTableByName"));
    }
  }
}

TEST(GetTableByName, GivesANewReaderOfTheKindOfTheFileReader) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\nB,2\nB,3\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, isCached);
    const auto first = own(reader->getTableByName("B"));
    const auto second = own(reader->getTableByName("B"));
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(dynamic_cast<XelCachedCsvTableReaderI*>(first.get()) != nullptr, isCached != 0);
    EXPECT_EQ(dynamic_cast<XelNonCachedCsvTableReaderI*>(first.get()) != nullptr, isCached == 0);
    EXPECT_FALSE(first->isLent());
    EXPECT_EQ(first->getNumberOfItems(), 2);
    EXPECT_EQ(first->getFirstDataOffset(), 4);
    EXPECT_EQ(first->getFirstDataLineNumber(), 1);
    EXPECT_EQ(first->getEndOffset(), 8);
    EXPECT_EQ(second->getNumberOfItems(), 2);
  }
}

TEST(GetTableByName, KnowsNoOtherNames) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A|NAMES,x\nA,1\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, isCached);
    const long before = env.getAllocator().getBlocksOut();
    for (const char* name : {"B", "", "a", " A", "A|NAMES", "%s%n"}) {
      EXPECT_XEL_THROW(reader->getTableByName(name), TableException, noTable(name));
    }
    EXPECT_XEL_THROW(reader->getTableByName(nullptr), TableException, noTable(""));
    const std::string longName(700, 'n');
    EXPECT_XEL_THROW(reader->getTableByName(longName.c_str()), TableException, noTable(longName).substr(0, 499));
    EXPECT_EQ(env.getAllocator().getBlocksOut(), before);
  }
}

TEST(GetTableByName, NamesTheDuplicatedKeyOfACachedTable) {
  TestEnv env;
  const DataFile file("A,1\nB,k,1\nB,l,1\nB,k,1\nC,1\n");
  const XelEnvOwner<XelCsvReaderI> cached = makeReader(env, file, ManyTables, 1);
  const long before = env.getAllocator().getBlocksOut();
  EXPECT_XEL_THROW(cached->getTableByName("B"), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  k-1 already exists In Table B .");
  EXPECT_XEL_THROW(cached->getTableByNumber(1), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  k-1 already exists In Table B .");
  EXPECT_EQ(env.getAllocator().getBlocksOut(), before);
  EXPECT_EQ(own(cached->getTableByName("C"))->getNumberOfItems(), 1);
  const XelEnvOwner<XelCsvReaderI> scanning = makeReader(env, file, ManyTables, 0);
  EXPECT_EQ(own(scanning->getTableByName("B"))->getNumberOfItems(), 3);
}

TEST(GetTableByName, GoesOnWorkingAfterABrokenTable) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A|KEYS,99999999999\nA,1\nB|KEYS,1,1\nB,1\nC,1\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, isCached);
    const long before = env.getAllocator().getBlocksOut();
    EXPECT_XEL_THROW(
        reader->getTableByName("A"), XelCsvReader::XelOverflowException,
        "XelCsvReader::XelOverflowException : OVERFLOW while reading field 1  of line number 0 in table A as "
        "integer");
    EXPECT_EQ(env.getAllocator().getBlocksOut(), before);
    if (isCached != 0) {
      // Two fields, and the table's name is one of them: enough for two keys, but not for the second position.
      EXPECT_XEL_THROW(reader->getTableByName("B"), XelCsvReader::XelFieldNotFoundException,
                       "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 3, in "
                       "table B while trying getStringByPosition");
      EXPECT_EQ(env.getAllocator().getBlocksOut(), before);
    }
    EXPECT_EQ(own(reader->getTableByName("C"))->getNumberOfItems(), 1);
  }
}

TEST(GetTableByName, ReportsAFileThatCannotBeOpenedAnyMore) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, isCached);
    const long before = env.getAllocator().getBlocksOut();
    file.remove();
    const std::string message =
        std::string("While trying to open file ") + file.getName() +
        " : No such file or directory. The specified file or directory does not exist or cannot be found. This message "
        "can occur whenever a specified file does not exist or a component of a path does not specify an existing "
        "directory. ";
    EXPECT_XEL_THROW(reader->getTableByName("A"), XelCsvReader::XelFileNotFoundException, message);
    EXPECT_XEL_THROW(reader->getTableByNumber(0), XelCsvReader::XelFileNotFoundException, message);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), before);
    // The directory is in memory: an unknown table is found out without the file, and the file may come back.
    EXPECT_XEL_THROW(reader->getTableByName("B"), TableException, noTable("B"));
    file.write("A,1\n");
    EXPECT_EQ(own(reader->getTableByName("A"))->getNumberOfItems(), 1);
  }
}

TEST(GetTableByNumber, CountsEveryTableFromZero) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT,1\nXELO_DATA_SCHEMA,t,2\nA,1\nB,1\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, isCached);
    const char* names[] = {"XELO_CSV_FORMAT", "XELO_DATA_SCHEMA", "A", "B"};
    for (long number = 0; number < 4; ++number) {
      EXPECT_STREQ(own(reader->getTableByNumber(number))->getNameOfTable(), names[number]);
    }
    EXPECT_EQ(reader->getNumberOfTables(), 2);  // and the message tells all four
    for (const long number : {4L, 5L, 1L << 40, -1L, -5L}) {
      EXPECT_XEL_THROW(reader->getTableByNumber(number), TableException,
                       "XelCsvReader::XelTableNotFoundException : No Table number " + std::to_string(number) +
                           ".The number of tables is 4.");
    }
  }
}

TEST(GetTableName, KnowsNoNameOutsideTheDirectory) {
  TestEnv env;
  const DataFile file("A,1\nB,2\n");
  const auto reader = XelNew<XelCsvReaderI>(env, env.get(), file.getName(), 0L, 1L, 0L, ",", '.', '"', '#');
  EXPECT_EQ(reader->getTableName(-1), nullptr);
  EXPECT_STREQ(reader->getTableName(1), "B");
  EXPECT_EQ(reader->getTableName(2), nullptr);
  reader->clear();
  EXPECT_EQ(reader->getTableName(0), nullptr);
  EXPECT_EQ(reader->getNumberOfTables(), 0);
}

TEST(GetTableByNumber, HasNothingToGiveFromAnEmptyFile) {
  TestEnv env;
  const DataFile file("");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, 1);
  for (const long number : {0L, -1L}) {
    EXPECT_XEL_THROW(reader->getTableByNumber(number), TableException,
                     "XelCsvReader::XelTableNotFoundException : No Table number " + std::to_string(number) +
                         ".The number of tables is 0.");
  }
}

TEST(GetNumberOfTables, LeavesReservedTablesOutAtTheStartOnly) {
  const char* format = "XELO_CSV_FORMAT";
  const char* schema = "XELO_DATA_SCHEMA";
  const struct {
    std::vector<const char*> tables;
    long number;
  } rows[] = {
      {{}, 0},
      {{"A"}, 1},
      {{format}, 0},
      {{schema}, 0},
      {{format, schema}, 0},
      {{schema, format}, 1},
      {{format, schema, "A", "B"}, 2},
      {{format, "A", "B"}, 2},
      {{schema, "A", "B"}, 2},
      {{schema, format, "A"}, 2},
      {{format, "A", schema}, 2},
      {{"A", "B", format}, 3},
      {{"A", format, schema}, 3},
      {{"A", schema, format, "B"}, 4},
      {{"XELO_CSV_FORMA", schema}, 2},
      {{"XELO_CSV_FORMAT2", "A"}, 2},
      {{"xelo_csv_format", "A"}, 2},
  };
  for (const auto& row : rows) {
    std::string content;
    for (const char* table : row.tables) content += std::string(table) + ",1,2\n";
    SCOPED_TRACE(content);
    TestEnv env;
    const DataFile file(content);
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, 1);
    EXPECT_EQ(reader->getNumberOfTables(), row.number);
    EXPECT_EQ(reader->getNumberOfAllTables(), static_cast<long>(row.tables.size()));
  }
}

TEST(OneTableFile, KeepsItsTableAndForwardsToIt) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("|NAMES,city,year,value\n|KEYS,1,1,0\nParis,2004,7\n# c\nRome,2005,8\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, OneTable, isCached);
    XelCsvTableReaderI* table = reader->getReaderForUniqueTableFile();
    EXPECT_EQ(table, reader->getReaderForUniqueTableFile());
    EXPECT_TRUE(table->isLent());
    EXPECT_EQ(table->getNameOfTable(), nullptr);
    EXPECT_EQ(dynamic_cast<XelCachedCsvTableReaderI*>(table) != nullptr, isCached != 0);
    EXPECT_EQ(reader->getNumberOfItems(), 2);
    EXPECT_EQ(reader->getNumberOfColumns(), 3);
    EXPECT_EQ(reader->getFirstLine(), table->getFirstLine());
    EXPECT_TRUE(reader->isHeadingExists("year"));
    EXPECT_FALSE(reader->isHeadingExists("month"));
    EXPECT_EQ(reader->getNumberOfKeys(), 2);
    EXPECT_EQ(reader->getPosition("value"), 2);
    EXPECT_EQ(getOutput([&] { reader->printKeys(); }), "key 0 ----> |NAMES\nkey 1 ----> city\n");
    const XelEnvOwner<XelCsvLineI> line(reader->getLineByNumber(1));
    EXPECT_EQ(line->getLineNumber(), 4);
    EXPECT_STREQ(line->getFields()[0], "Rome");
    EXPECT_NO_THROW(reader->testNumberOfFields(line.get()));
    XelEnvBlock<char> key = XelCopyString(env, "Paris-2004");
    const XelEnvOwner<XelCsvLineI> found(reader->getLineByKey(key.get()));  // the key stays here: the line was found
    EXPECT_STREQ(found->getFields()[2], "7");
    // A key that is not found is freed by the lookup.
    const char* freed = XelCopyString(env, "Oslo-2004").release();
    EXPECT_XEL_THROW(reader->getLineByKey(freed), XelCsvReader::XelLineNotFoundException,
                     isCached != 0 ? "XelCsvReader::XelLineNotFoundException : No line having key Oslo-2004 ."
                                   : "XelCsvReader::XelLineNotFoundException : No line having key Oslo-2004.");
  }
}

TEST(OneTableFile, TestsTheNumberOfFieldsOfALineAgainstTheLastOne) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("|KEYS,1\na,b,c\nd,e\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, OneTable, isCached);
    const XelEnvOwner<XelCsvLineI> longer(reader->getLineByNumber(0));
    const XelEnvOwner<XelCsvLineI> shorter(reader->getLineByNumber(1));  // the last line formatted has two fields
    EXPECT_NO_THROW(reader->testNumberOfFields(shorter.get()));
    EXPECT_XEL_THROW(
        reader->testNumberOfFields(longer.get()), XelCsvReader::XelNumberOfFieldsException,
        "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of the table = 2 and number "
        "of fields of line number 1 = 3");
  }
}

TEST(OneTableFile, IsNotAskedForADuplicatedKey) {
  TestEnv env;
  const DataFile file("a,1\nb,2\na,1\nc,3\n");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, OneTable, 1);
  // The index ends at the duplicate, which counts as an item; its number leads to the first line of the key.
  EXPECT_EQ(reader->getNumberOfItems(), 3);
  EXPECT_EQ(XelEnvOwner<XelCsvLineI>(reader->getLineByNumber(2))->getLineNumber(), 0);
  EXPECT_XEL_THROW(reader->getLineByNumber(3), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 3 ");
  EXPECT_XEL_THROW(reader->getLineByKey(XelCopyString(env, "c-3").release()), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key c-3 .");
}

TEST(OneTableFile, HasNoNameToTestWithTableSplitting) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("a,1\nb,2\na,3\n");
    const XelEnvOwner<XelCsvReaderI> reader =
        XelNew<XelCsvReaderI>(env, env, file.getName(), isCached, 0L, 1L, ",", '.', '"', '#');
    EXPECT_EQ(reader->getNumberOfItems(), 3);
    for (long number = 0; number < 3; ++number) {
      EXPECT_EQ(XelEnvOwner<XelCsvLineI>(reader->getLineByNumber(number))->getLineNumber(), number);
    }
  }
}

// Runs an operation with the first, the second, ... allocation failing until it passes, and looks after each failure
// whether everything came back and whether the answer is right once there is memory again.
template <class Operation, class Check>
void sweep(TestEnv& env, Operation operation, Check check) {
  const long before = env.getAllocator().getBlocksOut();
  for (const bool always : {false, true}) {
    for (long countdown = 0;; ++countdown) {
      env.getAllocator().failAfter(countdown, always);
      bool isFailed = false;
      try {
        operation();
      } catch (const std::bad_alloc&) {
        isFailed = true;
      }
      const bool isInjected = env.getAllocator().getFailures() > 0;
      env.getAllocator().neverFail();
      ASSERT_EQ(isFailed, isInjected) << countdown;
      ASSERT_EQ(env.getAllocator().getBlocksOut(), before) << countdown;
      check();
      if (!isInjected) {
        EXPECT_GT(countdown, 0) << "nothing was allocated at all";
        break;
      }
    }
  }
}

TEST(TableAccess, AnswersRightAfterEveryFailingAllocation) {
  const DecimalPoint point;
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT,1.5\nA|NAMES,x,y\nA|KEYS,0,1,0\nA,k,1\nA,l,2\nB,1\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, isCached);
    const auto readTable = [&] { EXPECT_EQ(own(reader->getTableByName("A"))->getNumberOfItems(), 2); };
    sweep(env, readTable, readTable);
    const auto readNumber = [&] { EXPECT_EQ(own(reader->getTableByNumber(2))->getNumberOfItems(), 1); };
    sweep(env, readNumber, readNumber);
    const auto readFormat = [&] { EXPECT_EQ(reader->getCsvFormat(), 1.5); };
    sweep(env, readFormat, readFormat);
  }
}

TEST(TableAccess, GivesEverythingBackFromADuplicatedKeyWhenMemoryEnds) {
  TestEnv env;
  const DataFile file("A,k\nA,l\nA,k\n");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, ManyTables, 1);
  const auto readTable = [&] {
    EXPECT_XEL_THROW(own(reader->getTableByName("A")), XelCsvReader::XelDuplicatedLineException,
                     "XelCsvReader::XelDuplicatedLineException : Another line with key  k already exists In Table A .");
  };
  sweep(env, readTable, readTable);
}

TEST(OneTableFile, GivesEverythingBackWhenMemoryEnds) {
  const DataFile file("|NAMES,a,b\n|KEYS,1,0\nk,1\nl,2\n");
  for (const long isCached : BothReaders) {
    forEachFailingAllocation([&](XelEnv env) {
      const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, OneTable, isCached);
      EXPECT_EQ(reader->getNumberOfItems(), 2);
    });
    TestEnv env;
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, OneTable, isCached);
    const auto readNumber = [&] {
      EXPECT_EQ(XelEnvOwner<XelCsvLineI>(reader->getLineByNumber(1))->getLineNumber(), 3);
    };
    sweep(env, readNumber, readNumber);
    const auto readKey = [&] {
      const char* key = XelCopyString(env, "l").release();  // freed by the lookup when it throws
      const XelEnvOwner<XelCsvLineI> line(reader->getLineByKey(key));
      XelFreeString(env, key);
      EXPECT_EQ(line->getLineNumber(), 3);
    };
    sweep(env, readKey, readKey);
  }
}

}  // namespace
