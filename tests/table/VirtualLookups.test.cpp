// The tables call their own operations through the virtual ones: a derived class that overrides one changes the others,
// and one that does not tell the truth does no harm.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

using Lines = std::vector<std::string>;

// A cached table whose operations can be replaced.
class Derived : public XelCachedCsvTableReaderI {
 public:
  using XelCachedCsvTableReaderI::XelCachedCsvTableReaderI;

  XelCsvLineI* getLineByKey(const char* key) override {
    keysAsked.emplace_back(key);
    return XelCachedCsvTableReaderI::getLineByKey(key);
  }

  long getNumberOfItems() override {
    return items ? items(XelCachedCsvTableReaderI::getNumberOfItems()) : XelCachedCsvTableReaderI::getNumberOfItems();
  }

  OffsetAndLineNumber* getOffsetAndLineNumber(const char* key) const override {
    return find ? find(key) : XelCachedCsvTableReaderI::getOffsetAndLineNumber(key);
  }

  void clearTable() override {
    ++timesCleared;
    XelCachedCsvTableReaderI::clearTable();
  }

  std::function<long(long)> items;
  std::function<OffsetAndLineNumber*(const char*)> find;
  std::vector<std::string> keysAsked;
  int timesCleared = 0;
};

// A file of one table T with three lines, read by a derived cached table.
class DerivedTable {
 public:
  explicit DerivedTable(const char* content = "T|KEYS,1,0\nT,a,1\nT,b,2\nT,c,3\n", const char* name = "T")
      : file(content), reader(openReader(env, file, Kind::Cached, name != nullptr)) {
    XelCsvReaderI* impl = reader.getImpl();
    table = XelNew<Derived>(env, impl, name, impl->getOffsetAndLineNumber(name));
  }

  ~DerivedTable() {
    table = XelEnvOwner<Derived>();
    reader.end();
  }

  std::string getByNumber(long number) {
    return outcomeOf([&]() -> std::string {
      const XelEnvOwner<XelCsvLineI> line(table->getLineByNumber(number));
      return textOf(XelCsvLine(line.get()));
    });
  }

  std::string getByKey(const char* key) {
    const XelEnv own = table->getEnv();  // a copied table lives in its source's environment
    const char* given = XelCopyString(own, key).release();
    return outcomeOf([&]() -> std::string {
      const XelEnvOwner<XelCsvLineI> line(table->getLineByKey(given));
      XelFreeString(own, given);
      return textOf(XelCsvLine(line.get()));
    });
  }

  Lines getAll() {
    XelCsvTableReader::LineIterator it{XelCsvTableReader(table.get())};
    return walk(it);
  }

  TestEnv env;
  DataFile file;
  XelCsvReader reader;
  XelEnvOwner<Derived> table;
};

}  // namespace

TEST(VirtualLookups, GetLineByNumberAsksGetLineByKey) {
  DerivedTable derived;
  EXPECT_EQ(derived.getByNumber(1), "2: [T][b][2]");
  EXPECT_EQ(derived.table->keysAsked, (Lines{"b"}));
}

TEST(VirtualLookups, GetLineByNumberIsBoundByGetNumberOfItems) {
  DerivedTable derived;
  derived.table->items = [](long) { return 1; };
  EXPECT_EQ(derived.getByNumber(0), "1: [T][a][1]");
  EXPECT_EQ(derived.getByNumber(1),
            "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line number 1 in "
            "table T");
  EXPECT_EQ(derived.getAll(), (Lines{"1: [T][a][1]"}));
}

TEST(VirtualLookups, MoreItemsThanThereAreDoNoHarm) {
  DerivedTable derived;
  derived.table->items = [](long count) { return count + 5; };
  EXPECT_EQ(derived.getByNumber(2), "3: [T][c][3]");
  for (const long number : {3L, 4L, 7L}) {
    EXPECT_EQ(derived.getByNumber(number),
              "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line "
              "number " +
                  std::to_string(number) + " in table T");
  }
  XelCsvTableReader::LineIterator it{XelCsvTableReader(derived.table.get())};
  ++it;
  ++it;
  EXPECT_EQ(textOf(*it), "3: [T][c][3]");
  EXPECT_THROW(++it, XelCsvReader::XelLineNotFoundException);
  EXPECT_TRUE((*it).isEmpty());
  ++it;
  EXPECT_FALSE(it.ok());
}

TEST(VirtualLookups, AWalkAndItsCopyKeepTheNumberOfItemsThatTheWalkBeganWith) {
  DerivedTable derived;
  XelCachedCsvLineIteratorI it(derived.table.get());
  XelCachedCsvLineIteratorI other(derived.table.get());
  derived.table->items = [](long) { return 1; };
  ++it;
  EXPECT_EQ(textOf(XelCsvLine(it.getLine())), "2: [T][b][2]");
  XelCachedCsvLineIteratorI copied(it);
  ++copied;
  EXPECT_EQ(textOf(XelCsvLine(copied.getLine())), "3: [T][c][3]");
  ++copied;
  EXPECT_FALSE(copied.isOk());
  // A walk that begins again asks again.
  ++other;
  other.initIterator();
  EXPECT_FALSE(other.isOk());
}

TEST(VirtualLookups, NegativeNumbersOfItemsDoNoHarm) {
  DerivedTable derived;
  derived.table->items = [](long) { return -4; };
  EXPECT_EQ(derived.getByNumber(0).substr(0, 24), "XelLineNotFoundException");
  EXPECT_TRUE(derived.getAll().empty());
  EXPECT_EQ(derived.table->getLineKey(-1), nullptr);
  derived.table->clearTable();
  EXPECT_EQ(derived.table->getLineKey(0), nullptr);
}

TEST(VirtualLookups, GetLineByKeyAndTheIteratorAskGetOffsetAndLineNumber) {
  DerivedTable derived;
  OffsetAndLineNumber record{11, 77};  // the first data line
  derived.table->find = [&](const char*) { return &record; };
  EXPECT_EQ(derived.getByKey("whatever"), "77: [T][a][1]");
  EXPECT_EQ(derived.getByNumber(2), "77: [T][a][1]");
  EXPECT_EQ(derived.getAll(), (Lines{"77: [T][a][1]", "77: [T][a][1]", "77: [T][a][1]"}));
}

TEST(VirtualLookups, AKeyOfTheListWithoutARecordIsNotFoundByTheIterator) {
  DerivedTable named;
  named.table->find = [](const char*) { return nullptr; };
  EXPECT_EQ(named.getByKey("a"),
            "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line having key a "
            "in table T.");
  EXPECT_XEL_THROW(XelCsvTableReader::LineIterator(XelCsvTableReader(named.table.get())),
                   XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key a found in table T.");
  DerivedTable one("x\ny\n", nullptr);
  one.table->find = [](const char*) { return nullptr; };
  EXPECT_XEL_THROW(XelCsvTableReader::LineIterator(XelCsvTableReader(one.table.get())),
                   XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key x found.");
}

TEST(VirtualLookups, ARecordThatIsLostDuringTheWalkEndsIt) {
  DerivedTable derived;
  XelCachedCsvLineIteratorI it(derived.table.get());
  derived.table->find = [](const char*) { return nullptr; };
  EXPECT_XEL_THROW(++it, XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key b found in table T.");
  EXPECT_EQ(it.getLine(), nullptr);
  ++it;
  EXPECT_FALSE(it.isOk());
}

TEST(VirtualLookups, ARecordThatIsLostIsNotFoundByTheIteratorsCopy) {
  DerivedTable derived;
  const XelCachedCsvLineIteratorI it(derived.table.get());
  derived.table->find = [](const char*) { return nullptr; };
  EXPECT_XEL_THROW(XelCachedCsvLineIteratorI(it), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key a found in table T.");
  EXPECT_EQ(it.getLine(), nullptr);
}

TEST(VirtualLookups, ARecordWhereTheFileCannotBePositionedIsNotFound) {
  DerivedTable named;
  OffsetAndLineNumber record{-1, 0};
  named.table->find = [&](const char*) { return &record; };
  const long before = named.env.getAllocator().getBlocksOut();
  EXPECT_EQ(named.getByKey("a"),
            "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line having key a "
            "in table T.");
  EXPECT_EQ(named.getByNumber(0),
            "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line having key a "
            "in table T.");
  EXPECT_EQ(named.env.getAllocator().getBlocksOut(), before);
  DerivedTable one("x\ny\n", nullptr);
  one.table->find = [&](const char*) { return &record; };
  EXPECT_EQ(one.getByKey("a"),
            "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line having key a .");
}

TEST(VirtualLookups, ARecordFarBeyondTheFileIsAnEmptyLine) {
  DerivedTable derived;
  OffsetAndLineNumber record{1L << 40, 5};
  derived.table->find = [&](const char*) { return &record; };
  EXPECT_EQ(derived.getByKey("a"), "5: []");
}

TEST(VirtualLookups, WhatALookupOfRecordsThrowsIsPassedOnAndLosesNothing) {
  DerivedTable derived;
  DerivedTable target("U,x\n", "U");
  const XelCachedCsvLineIteratorI walk(derived.table.get());
  XelCachedCsvLineIteratorI it(derived.table.get());
  const long before = derived.env.getAllocator().getBlocksOut();
  const long openFiles = countOpenFiles();
  derived.table->find = [](const char*) -> OffsetAndLineNumber* { throw std::out_of_range("find"); };
  EXPECT_THROW(derived.getByKey("a"), std::out_of_range);
  EXPECT_THROW(derived.getByNumber(0), std::out_of_range);
  EXPECT_THROW(XelCachedCsvLineIteratorI(derived.table.get()), std::out_of_range);
  EXPECT_EQ(derived.env.getAllocator().getBlocksOut(), before);
  EXPECT_EQ(countOpenFiles(), openFiles);
  EXPECT_THROW(++it, std::out_of_range);
  EXPECT_EQ(it.getLine(), nullptr);
  EXPECT_THROW(target.table->copy(derived.table.get()), std::out_of_range);
  EXPECT_EQ(target.getByNumber(0), "0: [U][x]");
  derived.table->find = nullptr;
  EXPECT_EQ(derived.getByKey("b"), "2: [T][b][2]");
  EXPECT_EQ(textOf(XelCsvLine(walk.getLine())), "1: [T][a][1]");
}

TEST(VirtualLookups, WhatClearTableThrowsIsPassedOnByCopyAndLosesNothing) {
  class Stuck : public XelCachedCsvTableReaderI {
   public:
    using XelCachedCsvTableReaderI::XelCachedCsvTableReaderI;
    void clearTable() override { throw std::out_of_range("clear"); }
  };
  class StuckScanning : public XelNonCachedCsvTableReaderI {
   public:
    using XelNonCachedCsvTableReaderI::XelNonCachedCsvTableReaderI;
    void clearTable() override { throw std::out_of_range("clear"); }
  };
  OpenTable open("A,1\nB,2\n", Kind::Cached, "A");
  const long openFiles = countOpenFiles();
  const XelEnvOwner<XelCsvTableReaderI> stuck = XelNew<Stuck>(open.env, open.env.get());
  EXPECT_THROW(stuck->copy(open.table.getImpl()), std::out_of_range);
  EXPECT_EQ(stuck->getNumberOfItems(), 0);
  EXPECT_EQ(stuck->getNameOfTable(), nullptr);
  const XelEnvOwner<XelCsvTableReaderI> scanning = XelNew<StuckScanning>(open.env, open.env.get());
  EXPECT_THROW(scanning->copy(open.table.getImpl()), std::out_of_range);
  EXPECT_EQ(scanning->getNameOfTable(), nullptr);
  EXPECT_EQ(countOpenFiles(), openFiles);
}

TEST(VirtualLookups, NumbersThatTheReaderRefusesToReadLoseNothing) {
  class Refusing : public XelCsvReaderI {
   public:
    using XelCsvReaderI::XelCsvReaderI;
    long parseInt(const char* text, long&) const override { throw std::out_of_range(text); }
    double parseFloat(const char* text) const override { throw std::out_of_range(text); }
  };
  for (const long isCached : {0L, 1L}) {
    TestEnv env;
    const DataFile file("A,1\nB|KEYS,1\nB,2\n");
    const auto reader = XelNew<Refusing>(env, env.get(), file.getName(), isCached, 1L, 0L, ",", '.', '"', '#');
    const long before = env.getAllocator().getBlocksOut();
    const long openFiles = countOpenFiles();
    EXPECT_THROW(reader->getTableByName("B"), std::out_of_range);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), before);
    EXPECT_EQ(countOpenFiles(), openFiles);
    XelCsvTableReader table(reader.get(), "A");
    const XelCsvLine line = table.getLineByNumber(0);
    EXPECT_THROW(line.getIntByPosition(1), std::out_of_range);
    EXPECT_THROW(line.getFloatByPosition(1), std::out_of_range);
    EXPECT_EQ(line.getIntByPositionOrDefaultValue(1, 5), 1);
    table.end();
  }
}

TEST(VirtualLookups, CopyClearsThroughClearTableAndTakesTheItemsThatItsSourceTells) {
  DerivedTable source;
  DerivedTable target("U,x\n", "U");
  source.table->items = [](long) { return 2; };
  OffsetAndLineNumber record{17, 99};
  source.table->find = [&](const char*) { return &record; };
  target.table->copy(source.table.get());
  EXPECT_EQ(target.table->timesCleared, 1);
  EXPECT_EQ(target.table->getNumberOfItems(), 2);
  EXPECT_STREQ(target.table->getLineKey(1), "b");
  EXPECT_EQ(target.table->getOffsetAndLineNumber("b")->lineNumber, 99);
  EXPECT_EQ(target.getByKey("b"), "99: [T][b][2]");
}

TEST(VirtualLookups, CopyOfAScanningTableClearsThroughClearTable) {
  class Cleared : public XelNonCachedCsvTableReaderI {
   public:
    using XelNonCachedCsvTableReaderI::XelNonCachedCsvTableReaderI;
    void clearTable() override {
      ++timesCleared;
      XelNonCachedCsvTableReaderI::clearTable();
    }
    int timesCleared = 0;
  };
  OpenTable open("A,1\nB,2\n", Kind::Scanning, "A");
  const XelEnvOwner<Cleared> target = XelNew<Cleared>(open.env, open.env.get());
  target->copy(open.table.getImpl());
  EXPECT_EQ(target->timesCleared, 1);
  EXPECT_EQ(target->getNumberOfItems(), 1);
}

TEST(VirtualLookups, CopyOfATableThatTellsMoreItemsThanThereAreDoesNoHarm) {
  DerivedTable source;
  DerivedTable target("U,x\n", "U");
  source.table->items = [](long count) { return count + 3; };
  target.table->copy(source.table.get());
  EXPECT_EQ(target.table->getNumberOfItems(), 3);
  EXPECT_EQ(target.getByKey("c"), "3: [T][c][3]");
}

TEST(VirtualLookups, CopyOfATableThatLosesItsRecordsFindsNothing) {
  DerivedTable source;
  DerivedTable target("U,x\n", "U");
  source.table->find = [](const char*) { return nullptr; };
  target.table->copy(source.table.get());
  EXPECT_EQ(target.table->getNumberOfItems(), 3);
  EXPECT_EQ(target.getByKey("a").substr(0, 24), "XelLineNotFoundException");
}

TEST(VirtualLookups, ANumberOfItemsThatIsNotTrueLosesNothingWhenTheTableIsClearedOrDestroyed) {
  for (const long lie : {0L, 1L, 1000L}) {
    DerivedTable derived;
    derived.table->items = [lie](long) { return lie; };
    derived.table->clearTable();
    EXPECT_EQ(derived.table->getLineKey(0), nullptr);
    DerivedTable destroyed;
    destroyed.table->items = [lie](long) { return lie; };
  }
}

TEST(VirtualLookups, OfAScanningTableGetOffsetAndLineNumberLooksUpTables) {
  OpenTable open("A,1\nA,2\nB,3\n", Kind::Scanning, "A");
  const XelCsvTableReaderI* table = open.table.getImpl();
  ASSERT_NE(table->getOffsetAndLineNumber("B"), nullptr);
  EXPECT_EQ(table->getOffsetAndLineNumber("B")->offset, 8);
  EXPECT_EQ(table->getOffsetAndLineNumber("B")->lineNumber, 2);
  EXPECT_EQ(table->getOffsetAndLineNumber("1"), nullptr);
  EXPECT_EQ(table->getOffsetAndLineNumber(nullptr), nullptr);
  TestEnv env;
  const XelEnvOwner<XelNonCachedCsvTableReaderI> empty = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
  EXPECT_EQ(empty->getOffsetAndLineNumber("A"), nullptr);
}
