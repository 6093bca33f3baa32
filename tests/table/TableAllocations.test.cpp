// Every operation of the tables while memory runs out: nothing is lost, and the table answers afterwards.
#include <gtest/gtest.h>

#include <string>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCsvTableFactory.h"
#include "tests/support/OpenTable.h"

namespace {

struct Shape {
  const char* content;
  const char* table;  // null: a one-table file
  bool isSplit;
};

// A heading zone that takes more than one block of the file.
const std::string LongHeadingZone = "A|NAMES,a,b\n#" + std::string(6000, 'c') + "\nA|KEYS,1,0\nA,1,x\nA,2,y\nB,3,z\n";

const Shape Shapes[] = {
    {LongHeadingZone.c_str(), "A", false},
    {"|NAMES,a,b\n|KEYS,1,0\n1,x\n#\n2,y\n", nullptr, false},
    {"A|NAMES,a,b\nA|KEYS,1,0\nA,1,x\nA,2,y\nB,3,z\n", "A", false},
    {"A,1\nB,2\nA,2\nB,3\nA,4\n", "A", true},
};

// Runs a test for each kind of table and each shape of file.
template <class Body>
void forAllShapes(Body body) {
  forBothKinds([&](Kind kind) {
    for (const Shape& shape : Shapes) {
      SCOPED_TRACE(shape.content);
      body(kind, shape);
    }
  });
}

XelCsvTableReader openTable(XelCsvReader& reader, const Shape& shape) {
  return shape.table == nullptr ? reader.getReaderForUniqueTableFile() : reader.getTableByName(shape.table);
}

std::string secondLine(XelCsvTableReader& table) {
  return outcomeOf([&] { return table.getLineByNumber(1); });
}

// Lets the first, the second, ... allocation of an operation on an open table fail until it passes; after each failure
// nothing may be lost and the table must answer as before.
template <class Operation>
void sweep(Kind kind, const Shape& shape, Operation operation) {
  TestEnv env;
  DataFile file(shape.content);
  XelCsvReader reader = openReader(env, file, kind, shape.table != nullptr, shape.isSplit);
  XelCsvTableReader table = openTable(reader, shape);
  const std::string expected = secondLine(table);
  const long openFiles = countOpenFiles();
  long failures = 0;
  for (bool isDone = false; !isDone;) {
    static_cast<void>(outcomeOf([&] { return table.getLineByNumber(-1); }));  // no last line is left
    const long before = env.getAllocator().getBlocksOut();
    env.getAllocator().failAfter(failures);
    try {
      operation(table);
      isDone = true;
    } catch (const std::bad_alloc&) {
      ++failures;
    }
    env.getAllocator().neverFail();
    static_cast<void>(outcomeOf([&] { return table.getLineByNumber(-1); }));
    EXPECT_EQ(env.getAllocator().getBlocksOut(), before) << "after failure " << failures;
    EXPECT_EQ(countOpenFiles(), openFiles) << "after failure " << failures;
    EXPECT_EQ(secondLine(table), expected) << "after failure " << failures;
    if (failures > 500) {
      ADD_FAILURE() << "never done";
      break;
    }
  }
  EXPECT_GT(failures, 0);
  table.end();
  reader.end();
}

}  // namespace

TEST(TableAllocations, OfMakingTables) {
  forAllShapes([](Kind kind, const Shape& shape) {
    const DataFile file(shape.content);
    EXPECT_GT(forEachFailingAllocation([&](XelEnv env) {
                XelCsvReader reader = openReader(env, file, kind, shape.table != nullptr, shape.isSplit);
                const EndGuard<XelCsvReader> readerGuard(reader);
                XelCsvTableReader table = openTable(reader, shape);
                const EndGuard<XelCsvTableReader> tableGuard(table);
              }),
              5);
  });
}

// The index makes room for as many lines as the first ones promise, and gives back what was not needed.
TEST(TableAllocations, OfMakingATableWhoseLaterLinesAreLong) {
  std::string content = "A|KEYS,1,0\n";
  for (long number = 0; number < 100; ++number) {
    content += "A," + std::to_string(number) + (number < 40 ? "" : "," + std::string(3000, 'x')) + "\n";
  }
  const DataFile file(content);
  EXPECT_GT(forEachFailingAllocation([&](XelEnv env) {
              XelCsvReader reader = openReader(env, file, Kind::Cached, true);
              const EndGuard<XelCsvReader> readerGuard(reader);
              XelCsvTableReader table = reader.getTableByName("A");
              const EndGuard<XelCsvTableReader> tableGuard(table);
              EXPECT_EQ(table.getNumberOfItems(), 100);
              EXPECT_EQ(std::string(table.getLineByKey(1, "99").getStringByPosition(1)), "99");
            }),
            5);
}

// The index notices a duplicated key some lines late and goes back to its line, which here lies a block before.
TEST(TableAllocations, OfMakingATableThatGoesBackToADuplicatedLine) {
  std::string content = "A|KEYS,1,0\nA,same\nA,same\n";
  for (long number = 0; number < 60; ++number) content += "A," + std::string(9000, 'x') + std::to_string(number) + "\n";
  const DataFile file(content);
  EXPECT_GT(forEachFailingAllocation([&](XelEnv env) {
              XelCsvReader reader = openReader(env, file, Kind::Cached, true);
              const EndGuard<XelCsvReader> readerGuard(reader);
              EXPECT_EQ(
                  outcomeOf([&] { return textOf(reader.getTableByName("A").getNumberOfItems()); }),
                  "XelDuplicatedLineException | XelCsvReader::XelDuplicatedLineException : Another line with key  "
                  "same already exists In Table A .");
            }),
            5);
}

TEST(TableAllocations, OfTheHandlesConstructor) {
  forAllShapes([](Kind kind, const Shape& shape) {
    if (shape.table == nullptr) return;
    sweep(kind, shape, [&](XelCsvTableReader& table) {
      XelCsvTableReader made(table.getImpl()->getReader(), shape.table);
      made.end();
    });
  });
}

TEST(TableAllocations, OfLookupsByNumber) {
  forAllShapes([](Kind kind, const Shape& shape) {
    sweep(kind, shape, [](XelCsvTableReader& table) { EXPECT_FALSE(table.getLineByNumber(1).isEmpty()); });
  });
}

TEST(TableAllocations, OfLookupsByKey) {
  forAllShapes([](Kind kind, const Shape& shape) {
    sweep(kind, shape, [](XelCsvTableReader& table) { EXPECT_FALSE(table.getLineByKey(1, "2").isEmpty()); });
  });
}

TEST(TableAllocations, OfLookupsThatFindNothing) {
  forAllShapes([](Kind kind, const Shape& shape) {
    sweep(kind, shape, [](XelCsvTableReader& table) {
      EXPECT_EQ(outcomeOf([&] { return table.getLineByKey(1, "nothing"); }).substr(0, 24), "XelLineNotFoundException");
    });
  });
}

TEST(TableAllocations, OfCounting) {
  for (const Shape& shape : Shapes) {
    sweep(Kind::Scanning, shape, [](XelCsvTableReader& table) { EXPECT_GT(table.getNumberOfItems(), 1); });
  }
}

TEST(TableAllocations, OfWalks) {
  forAllShapes([](Kind kind, const Shape& shape) {
    sweep(kind, shape, [](XelCsvTableReader& table) {
      long lines = 0;
      for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) ++lines;
      EXPECT_GT(lines, 1);
    });
  });
}

TEST(TableAllocations, OfCopiedAndAssignedIterators) {
  forAllShapes([](Kind kind, const Shape& shape) {
    sweep(kind, shape, [](XelCsvTableReader& table) {
      XelCsvTableReader::LineIterator it(table);
      ++it;
      XelCsvTableReader::LineIterator copied(it);
      EXPECT_TRUE(copied.ok());
      it = copied;
      EXPECT_TRUE(it.ok());
    });
  });
}

TEST(TableAllocations, OfCopiedRecords) {
  forAllShapes([](Kind kind, const Shape& shape) {
    sweep(kind, shape, [](XelCsvTableReader& table) {
      XelCsvTableReader::LineIterator it(table);
      XelCsvLine line;
      const EndGuard<XelCsvLine> guard(line);
      line.copy(*it);
      XelCsvLine current = *it;
      current.copy(table.getLineByNumber(1));
      ++it;
      EXPECT_TRUE(it.ok());
    });
  });
}

TEST(TableAllocations, OfCopiesIntoAnEmptyHandle) {
  forAllShapes([](Kind kind, const Shape& shape) {
    sweep(kind, shape, [](XelCsvTableReader& table) {
      EXPECT_FALSE(table.getLineByNumber(0).isEmpty());
      XelCsvTableReader copied;
      const EndGuard<XelCsvTableReader> guard(copied);
      copied.copy(table);
      EXPECT_FALSE(copied.getLineByNumber(1).isEmpty());
    });
  });
}

TEST(TableAllocations, OfCopiesIntoATableOfEachKind) {
  forAllShapes([](Kind kind, const Shape& shape) {
    forBothKinds([&](Kind target) {
      sweep(kind, shape, [&](XelCsvTableReader& table) {
        const XelEnv env = table.getEnv();
        XelCsvTableReader copied(XelMakeEmptyTableReader(env, target == Kind::Cached).release());
        const EndGuard<XelCsvTableReader> guard(copied);
        copied.copy(table);
        EXPECT_GT(copied.getNumberOfItems(), 1);
      });
    });
  });
}

TEST(TableAllocations, OfManyLines) {
  std::string content = "|KEYS,1,0\n";
  for (long number = 0; number < 3000; ++number) content += "k" + std::to_string(number) + ",v\n";
  const DataFile file(content);
  // The list of keys takes memory in chunks, the slots grow twice.
  TestEnv counted;
  XelCsvReader all = openReader(counted, file, Kind::Cached, false);
  const long allocations = counted.getAllocator().getAllocations();
  all.end();
  for (long countdown = 0; countdown < allocations - 1; ++countdown) {
    TestEnv env;
    env.getAllocator().failAfter(countdown);
    EXPECT_THROW(openReader(env, file, Kind::Cached, false), std::bad_alloc);
    env.getAllocator().neverFail();
  }
  EXPECT_GT(allocations, 30);
}
