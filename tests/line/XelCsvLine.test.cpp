#include "xelcsv/XelCsvLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/CoutCapture.h"
#include "tests/support/DecimalPoint.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TableOfFile.h"
#include "tests/support/TestEnv.h"
#include "tests/support/VirtualSlot.h"

namespace {

using Texts = std::vector<std::string>;

// A file reader that reads numbers in its own way and remembers which: the float is the length of the text, the integer
// is 7 for "key", 1 for "yes", an overflow for "much", else 0.
class OwnNumbersReader : public XelCsvReaderI {
 public:
  using XelCsvReaderI::XelCsvReaderI;

  double parseFloat(const char* text) const override {
    seen.push_back(std::string("float ") + text);
    return static_cast<double>(std::string(text).size());
  }

  long parseInt(const char* text, long& overflow) const override {
    seen.push_back(std::string("int ") + text);
    if (std::string(text) == "much") overflow = 1;
    if (std::string(text) == "yes") return 1;
    return std::string(text) == "key" ? 7 : 0;
  }

  Texts takeSeen() const {
    Texts taken;
    taken.swap(seen);
    return taken;
  }

 private:
  mutable Texts seen;
};

XelEnvOwner<OwnNumbersReader> makeReader(XelEnv env, const DataFile& file, long isMultiTable) {
  constexpr long isCached = 1;
  constexpr long allowTableSplitting = 0;
  return XelNew<OwnNumbersReader>(env, env, file.getName(), isCached, isMultiTable, allowTableSplitting, ",", '.', '"',
                                  '#');
}

}  // namespace

TEST(OwnNumbers, AreReadByTheGettersWithoutDefault) {
  TestEnv env;
  const DataFile file("T|NAMES,a,b,c\nT, key ,key,\n");
  const XelEnvOwner<OwnNumbersReader> reader = makeReader(env, file, 1);
  XelCsvTableReader table(reader->getTableByName("T"));
  const XelCsvLine line = table.getLineByNumber(0);
  reader->takeSeen();
  EXPECT_EQ(line.getIntByPosition(1), 0);
  EXPECT_EQ(reader->takeSeen(), Texts{"int  key "}) << "an integer is not trimmed";
  EXPECT_EQ(line.getIntByHeader("b"), 7);
  EXPECT_EQ(reader->takeSeen(), Texts{"int key"});
  EXPECT_EQ(line.getFloatByPosition(1), 3.0);
  EXPECT_EQ(reader->takeSeen(), Texts{"float key"}) << "a float is trimmed first";
  EXPECT_EQ(line.getFloatByHeader("b"), 3.0);
  EXPECT_EQ(reader->takeSeen(), Texts{"float key"});
  EXPECT_EQ(line.getFloatByPosition(3), 0.0);
  EXPECT_EQ(line.getIntByPosition(3), 0);
  EXPECT_EQ(reader->takeSeen(), (Texts{"float ", "int "}));
  table.end();
}

TEST(OwnNumbers, AreNotAskedForByTheGettersWithDefault) {
  TestEnv env;
  const DataFile file("T|NAMES,a,b\nT,key,42\n");
  const XelEnvOwner<OwnNumbersReader> reader = makeReader(env, file, 1);
  XelCsvTableReader table(reader->getTableByName("T"));
  const XelCsvLine line = table.getLineByNumber(0);
  reader->takeSeen();
  EXPECT_EQ(line.getIntByPositionOrDefaultValue(1, 5), 0);
  EXPECT_EQ(line.getIntByHeaderOrDefaultValue("b", 5), 42);
  EXPECT_EQ(line.getFloatByPositionOrDefaultValue(1, 5.0), 0.0);
  EXPECT_EQ(line.getFloatByHeaderOrDefaultValue("b", 5.0), 42.0);
  EXPECT_EQ(reader->takeSeen(), Texts{});
  table.end();
}

TEST(OwnNumbers, MayOverflowByTheirOwnRule) {
  TestEnv env;
  const DataFile file("T,much\n");
  const XelEnvOwner<OwnNumbersReader> reader = makeReader(env, file, 1);
  XelCsvTableReader table(reader->getTableByName("T"));
  const XelCsvLine line = table.getLineByNumber(0);
  EXPECT_XEL_THROW(
      line.getIntByPosition(1), XelCsvReader::XelOverflowException,
      "XelCsvReader::XelOverflowException : OVERFLOW while reading field 1  of line number 0 in table T as integer");
  EXPECT_EQ(line.getIntByPositionOrDefaultValue(1, 5), 0);
  table.end();
}

TEST(OwnNumbers, AreReadInKeyLines) {
  TestEnv env;
  const DataFile file("T|KEYS,yes,1,yes\nT,v,w,x\nU|KEYS,much\nU,v\n");
  const XelEnvOwner<OwnNumbersReader> reader = makeReader(env, file, 1);
  XelCsvTableReader table(reader->getTableByName("T"));
  EXPECT_EQ(reader->takeSeen(), (Texts{"int T|KEYS", "int yes", "int 1", "int yes"}));
  ASSERT_EQ(table.getNumberOfKeys(), 2);
  EXPECT_EQ(table.getImpl()->getKeyPosition(0), 1);
  EXPECT_EQ(table.getImpl()->getKeyPosition(1), 3);
  table.end();
  EXPECT_XEL_THROW(
      reader->getTableByName("U"), XelCsvReader::XelOverflowException,
      "XelCsvReader::XelOverflowException : OVERFLOW while reading field 1  of line number 2 in table U as integer");
}

TEST(OwnNumbers, AreNotYetReadInTheKeyLineOfTheFilesOneTable) {
  // The one table is made inside the constructor of the base class.
  TestEnv env;
  const DataFile file("|KEYS,yes,1\nv,w\n");
  const XelEnvOwner<OwnNumbersReader> reader = makeReader(env, file, 0);
  EXPECT_EQ(reader->takeSeen(), Texts{});
  const XelCsvTableReaderI* table = reader->getReaderForUniqueTableFile();
  ASSERT_EQ(table->getNumberOfKeys(), 1);
  EXPECT_EQ(table->getKeyPosition(0), 1);
  const auto another = XelNew<XelNonCachedCsvTableReaderI>(env, reader.get(), nullptr, nullptr);
  EXPECT_EQ(reader->takeSeen(), (Texts{"int yes", "int 1"}));
  ASSERT_EQ(another->getNumberOfKeys(), 1);
  EXPECT_EQ(another->getKeyPosition(0), 0);
}

#if defined(__x86_64__)

// A derived reader that is built apart counts on the order of the slots.
TEST(OwnNumbers, StandInTheSlotsBehindTheDestructors) {
  EXPECT_EQ(getSlot(&XelCsvReaderI::parseFloat), 2);
  EXPECT_EQ(getSlot(&XelCsvReaderI::parseInt), 3);
}

#endif

TEST(ReadersNumbers, AreThoseOfTheRules) {
  const DecimalPoint point;
  TestEnv env;
  TableOfFile known(env, "a\n");
  const XelCsvReaderI* reader = known->getImpl()->getReader();
  EXPECT_EQ(reader->parseFloat("3.5e2"), 350.0);
  EXPECT_EQ(reader->parseFloat("+1.#INF"), XelGetInfinity());
  EXPECT_EQ(reader->parseFloat("-Infinity"), -XelGetInfinity());
  EXPECT_EQ(reader->parseFloat("U"), 0.0);
  long overflow = 0;
  EXPECT_EQ(reader->parseInt("2147483647", overflow), 2147483647);
  EXPECT_EQ(reader->parseInt("12abc", overflow), 12);
  EXPECT_EQ(reader->parseInt("", overflow), 0);
  EXPECT_EQ(overflow, 0);
  EXPECT_EQ(reader->parseInt("2147483648", overflow), 0);
  EXPECT_EQ(overflow, 1);
  EXPECT_EQ(reader->parseInt("5", overflow), 5);
  EXPECT_EQ(overflow, 1) << "the caller clears it";
  overflow = 0;
  EXPECT_EQ(reader->parseInt("99999999999999999999", overflow), 0);
  EXPECT_EQ(overflow, 1);
}

TEST(LineHandle, OverAnExistingRecordIsLent) {
  TestEnv env;
  TableOfFile table(env, "a,b\n");
  const XelEnvOwner<XelCsvLineI> record(table->getImpl()->getLineByNumber(0));
  XelCsvLine line(record.get());
  EXPECT_EQ(line.getImpl(), record.get());
  EXPECT_STREQ(line.getStringByPosition(1), "b");
  line.end();
  EXPECT_TRUE(line.isEmpty());
  EXPECT_EQ(record->getNumberOfFields(), 2);
  EXPECT_TRUE(XelCsvLine(nullptr).isEmpty());
}

TEST(LineHandle, CopiesIntoARecordOfForeignStorage) {
  TestEnv env;
  TableOfFile table(env, "a,b\nc,d\n");
  XelCsvLine source;
  source.copy(table->getLineByNumber(1));
  {
    XelCsvTableReader::LineIterator it(*table);
    XelCsvLine line = *it;
    line.copy(source);
    EXPECT_EQ(getFieldTexts(line), (Texts{"c", "d"}));
    ++it;
    ASSERT_TRUE(it.ok());
    EXPECT_EQ(getFieldTexts(*it), (Texts{"c", "d"}));
    ++it;
    EXPECT_FALSE(it.ok());
  }
  source.end();
}

TEST(PrintValueOfKeys, OfACopiedTableWithoutHeadingLinePrintsColumns) {
  TestEnv env;
  TableOfFile source(env, "a,b\n");
  XelCsvTableReader copy;
  copy.copy(*source);
  ASSERT_NE(copy.getImpl()->getFirstLine(), nullptr);
  const XelCsvLine line = copy.getLineByNumber(0);
  {
    const CoutCapture capture;
    line.printValueOfKeys();
    EXPECT_EQ(capture.getText(), "Key 0 (Column 0) = a\nKey 1 (Column 1) = b\n");
  }
  copy.end();
}
