#include "csv/line/XelCsvLineI.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "csv/table/XelCsvTableReaderI.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TableOfFile.h"
#include "tests/support/TestEnv.h"

namespace {

using namespace std::string_literals;
using FieldNotFound = XelCsvReader::XelFieldNotFoundException;

constexpr long PointerSize = static_cast<long>(sizeof(char*));

std::vector<std::string> getFieldTexts(const XelCsvLineI& line) {
  return {line.getFields(), line.getFields() + line.getNumberOfFields()};
}

// A line buffer with formatted or raw text in it, the rest not zero.
class Buffer {
 public:
  explicit Buffer(const std::string& text) : bytes(static_cast<std::size_t>(XelLineSize), '~') {
    std::copy(text.begin(), text.end(), bytes.begin());
  }

  char* get() { return bytes.data(); }

 private:
  std::vector<char> bytes;
};

// A table that has formatted a line of that many fields last.
class TableWithFields {
 public:
  TableWithFields(XelEnv env, long fields) : table(env, "a\n") { format(fields); }

  void format(long fields) {
    Buffer line(std::string(static_cast<std::size_t>(fields - 1), ',') + '\0');
    get()->formatLine(line.get());
  }

  XelCsvTableReaderI* get() { return table->getImpl(); }

 private:
  TableOfFile table;
};

}  // namespace

TEST(LineRecord, TakesTheFieldsOfTheLineThatItsTableFormattedLast) {
  TestEnv env;
  TableWithFields table(env, 3);
  Buffer text("a\0\0b c\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 17L);
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "", "b c"}));
  EXPECT_EQ(line->getNumberOfFields(), 3);
  EXPECT_EQ(line->getLineNumber(), 17);
  EXPECT_EQ(line->getTableReader(), table.get());
  EXPECT_EQ(line->getEnv().getImpl(), env.get().getImpl());
}

TEST(LineRecord, KeepsItsFieldsWhenTheTableFormatsAnotherLine) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
  std::memset(text.get(), 'z', 5);
  table.format(7);
  EXPECT_EQ(line->getNumberOfFields(), 2);
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "b"}));
}

TEST(LineRecord, CostsABlockOfALineAndAnArrayOfItsFields) {
  TestEnv env;
  TableWithFields table(env, 5);
  Buffer text("\0\0\0\0\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, env.get(), table.get());
  const XelEnvOwner<XelCsvLineI> other = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
  const long bytes = env.getAllocator().getBytesOut();
  const long allocations = env.getAllocator().getAllocations();
  line->copy(other.get());
  EXPECT_EQ(env.getAllocator().getAllocations() - allocations, 2);
  EXPECT_EQ(env.getAllocator().getBytesOut() - bytes, XelLineSize + 5 * PointerSize);
  line->init(text.get());
  EXPECT_EQ(env.getAllocator().getBytesOut() - bytes, XelLineSize + 5 * PointerSize) << "the former storage goes back";
  line->clear();
  EXPECT_EQ(env.getAllocator().getBytesOut(), bytes);
}

TEST(LineRecord, ReadsNoByteBehindItsFields) {
  TestEnv env;
  for (const std::string& fields : {"\0"s, "abc\0"s, "a\0b\0"s, "\0\0\0"s, "one\0two\0three\0"s}) {
    TableWithFields table(env, static_cast<long>(std::count(fields.begin(), fields.end(), '\0')));
    const std::unique_ptr<char[]> text(new char[fields.size()]);  // not a byte more: the sanitizer watches
    std::copy(fields.begin(), fields.end(), text.get());
    const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
    std::string bytes;
    for (const std::string& field : getFieldTexts(*line)) bytes += field + '\0';
    EXPECT_EQ(bytes, fields);
  }
}

TEST(LineRecord, StaysInsideTheSizeOfALineWhateverTheNumberOfFields) {
  TestEnv env;
  for (const long fields : {1L, 2L, 3L, 9999L, 10000L}) {
    SCOPED_TRACE(fields);
    TableWithFields table(env, fields);
    const std::unique_ptr<char[]> text(new char[XelLineSize]);
    std::fill_n(text.get(), XelLineSize, 'x');  // no terminator anywhere
    const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
    EXPECT_EQ(line->getNumberOfFields(), fields);
    EXPECT_EQ(std::string(line->getFields()[0]), std::string(XelLineSize - 1, 'x'));
    for (long field = 1; field < fields; ++field) ASSERT_STREQ(line->getFields()[field], "");
  }
}

TEST(LineRecord, FieldsThatAreNotThereAreEmpty) {
  TestEnv env;
  TableWithFields table(env, 4);
  std::string text = "a\0b\0"s;
  text += std::string(XelLineSize - 4, 'x');
  Buffer buffer(text);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, buffer.get(), table.get(), 0L);
  const std::vector<std::string> fields = getFieldTexts(*line);
  EXPECT_EQ(fields[1], "b");
  EXPECT_EQ(fields[2], std::string(XelLineSize - 5, 'x'));
  EXPECT_EQ(fields[3], "");
}

TEST(LineRecord, HoldsTheLongestLine) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0"s + std::string(9997, 'x') + '\0');
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", std::string(9997, 'x')}));
}

TEST(SetFieldsToLine, AnswersThePositionAfterTheLastField) {
  TestEnv env;
  TableWithFields table(env, 3);
  Buffer text("a\0\0bc\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
  char* starts[3] = {};
  EXPECT_EQ(line->setFieldsToLine(starts), line->getText() + 6);
  EXPECT_EQ(starts[0], line->getText());
  EXPECT_EQ(starts[1], line->getText() + 2);
  EXPECT_EQ(starts[2], line->getText() + 3);
}

TEST(ComputeLength, IsTheBytesOfTheFieldsAndTheirTerminators) {
  TestEnv env;
  TableWithFields table(env, 3);
  Buffer text("a\0\0bc\0rest\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
  EXPECT_EQ(line->computeLength(text.get()), 6);
  Buffer other("\0\0\0"s);
  EXPECT_EQ(line->computeLength(other.get()), 3);
  Buffer endless("");
  EXPECT_EQ(line->computeLength(endless.get()), XelLineSize) << "no terminator anywhere";
}

TEST(BuildCsvLine, UsesTheCallersStorageAndNeverFreesIt) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  char* starts[2] = {};
  {
    const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, env.get(), nullptr);
    const long bytes = env.getAllocator().getBytesOut();
    line->buildCsvLine(text.get(), starts, 5, table.get());
    EXPECT_EQ(env.getAllocator().getBytesOut(), bytes);
    EXPECT_EQ(line->getText(), text.get());
    EXPECT_EQ(line->getFields(), starts);
    EXPECT_EQ(starts[1], text.get() + 2);
    EXPECT_EQ(line->getLineNumber(), 5);
    EXPECT_EQ(line->getNumberOfFields(), 2);
    EXPECT_EQ(line->getTableReader(), table.get());
  }
  EXPECT_STREQ(text.get(), "a");
  EXPECT_EQ(starts[0], text.get());
}

TEST(BuildCsvLine, GivesTheRecordsOwnStorageBack) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  char* starts[2] = {};
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
  const long bytes = env.getAllocator().getBytesOut();
  line->buildCsvLine(text.get(), starts, 1, table.get());
  EXPECT_EQ(bytes - env.getAllocator().getBytesOut(), XelLineSize + 2 * PointerSize);
}

TEST(BuildCsvLine, StaysInsideTheSizeOfALineWithTenThousandFields) {
  TestEnv env;
  TableWithFields table(env, 10000);
  const std::unique_ptr<char[]> text(new char[XelLineSize]());
  const std::unique_ptr<char*[]> starts(new char*[10000]);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  line->buildCsvLine(text.get(), starts.get(), 0, table.get());
  EXPECT_EQ(starts[9999], text.get() + 9999);
}

TEST(BuildCsvLine, TakesTheEnvironmentOfTheTable) {
  TestEnv env;
  TestEnv otherEnv;
  TableWithFields table(env, 2);
  TableWithFields otherTable(otherEnv, 1);
  Buffer otherText("c\0"s);
  const XelEnvOwner<XelCsvLineI> other = XelNew<XelCsvLineI>(otherEnv, otherText.get(), otherTable.get(), 2L);
  Buffer text("a\0b\0"s);
  char* starts[2] = {};
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  line->copy(other.get());
  EXPECT_EQ(line->getEnv().getImpl(), otherEnv.get().getImpl());
  line->buildCsvLine(text.get(), starts, 5, table.get());
  EXPECT_EQ(line->getEnv().getImpl(), env.get().getImpl());
}

TEST(AdoptFields, TakesTheStartsAsTheyAre) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  char* starts[2] = {text.get(), text.get() + 2};
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  line->adoptFields(text.get(), starts, 3, table.get());
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(line->getLineNumber(), 3);
}

TEST(LineRecord, TakesABlockOver) {
  TestEnv env;
  TableWithFields table(env, 2);
  for (const bool isWalked : {true, false}) {
    XelEnvBlock<char> block(env, XelLineSize);
    std::memcpy(block.get(), "a\0b", 4);
    char* const text = block.get();
    char* const starts[] = {text, text + 2};
    const XelEnvOwner<XelCsvLineI> line = isWalked
                                              ? XelNew<XelCsvLineI>(env, std::move(block), table.get(), 8L)
                                              : XelNew<XelCsvLineI>(env, std::move(block), starts, table.get(), 8L);
    EXPECT_EQ(line->getText(), text);
    EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(line->getLineNumber(), 8);
  }
}

TEST(LineCopy, SharesNothingAndIsPacked) {
  TestEnv env;
  TableWithFields table(env, 3);
  Buffer text("  a  \0bcd\0\0rest"s);
  XelEnvOwner<XelCsvLineI> source = XelNew<XelCsvLineI>(env, text.get(), table.get(), 12L);
  source->trimField(0);
  const XelEnvOwner<XelCsvLineI> copy = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  copy->copy(source.get());
  source = XelEnvOwner<XelCsvLineI>();
  table.format(9);
  EXPECT_EQ(std::string(copy->getText(), 7), "a\0bcd\0\0"s);
  EXPECT_EQ(getFieldTexts(*copy), (std::vector<std::string>{"a", "bcd", ""}));
  EXPECT_EQ(copy->getNumberOfFields(), 3);
  EXPECT_EQ(copy->getLineNumber(), 12);
  EXPECT_EQ(copy->getTableReader(), table.get());
}

TEST(LineCopy, ReplacesWhatTheRecordHeld) {
  TestEnv env;
  TableWithFields table(env, 1);
  Buffer one("one\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, one.get(), table.get(), 1L);
  table.format(2);
  Buffer two("a\0b\0"s);
  const XelEnvOwner<XelCsvLineI> other = XelNew<XelCsvLineI>(env, two.get(), table.get(), 2L);
  line->copy(other.get());
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "b"}));
  EXPECT_NE(line->getText(), other->getText());
}

TEST(LineCopy, FromNullIsEmpty) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 3L);
  line->copy(nullptr);
  EXPECT_EQ(line->getText(), nullptr);
  EXPECT_EQ(line->getFields(), nullptr);
  EXPECT_EQ(line->getNumberOfFields(), 0);
  EXPECT_THROW(line->check("test", 0), FieldNotFound);
  line->copy(nullptr);
  EXPECT_EQ(line->getText(), nullptr);
}

TEST(LineRecord, WithoutFieldsTakesNothingOutOfAText) {
  TestEnv env;
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  line->init("abc");
  EXPECT_EQ(line->getNumberOfFields(), 0);
  EXPECT_STREQ(line->getText(), "");
}

TEST(LineCopy, FromAnEmptyRecordHasNoFields) {
  TestEnv env;
  TableWithFields table(env, 2);
  const XelEnvOwner<XelCsvLineI> empty = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  Buffer text("a\0b\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 3L);
  line->copy(empty.get());
  EXPECT_EQ(line->getNumberOfFields(), 0);
  EXPECT_EQ(line->getFields(), nullptr);
  EXPECT_EQ(line->getLineNumber(), 0);
}

TEST(LineCopy, OfItselfChangesNothing) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 3L);
  const char* const before = line->getText();
  line->copy(line.get());
  EXPECT_EQ(line->getText(), before);
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "b"}));
}

TEST(LineCopy, IntoARecordOfForeignStorageLeavesThatStorageAlone) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  char* starts[2] = {};
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  line->buildCsvLine(text.get(), starts, 1, table.get());
  Buffer otherText("c\0d\0"s);
  const XelEnvOwner<XelCsvLineI> other = XelNew<XelCsvLineI>(env, otherText.get(), table.get(), 2L);
  line->copy(other.get());
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"c", "d"}));
  EXPECT_STREQ(text.get(), "a");
  line->buildCsvLine(text.get(), starts, 3, table.get());
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "b"}));
}

TEST(LineCopy, BetweenEnvironmentsGivesEachBlockBackToItsOwn) {
  TestEnv env;
  TestEnv otherEnv;
  TableWithFields table(env, 2);
  TableWithFields otherTable(otherEnv, 3);
  Buffer text("a\0b\0"s);
  Buffer otherText("c\0d\0e\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 1L);
  const XelEnvOwner<XelCsvLineI> other = XelNew<XelCsvLineI>(otherEnv, otherText.get(), otherTable.get(), 2L);
  line->copy(other.get());
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"c", "d", "e"}));
  EXPECT_EQ(line->getEnv().getImpl(), otherEnv.get().getImpl());
}

TEST(LineCopy, OfTenThousandFields) {
  TestEnv env;
  TableWithFields table(env, 10000);
  const std::unique_ptr<char[]> text(new char[XelLineSize]());
  const XelEnvOwner<XelCsvLineI> source = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
  const XelEnvOwner<XelCsvLineI> copy = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  copy->copy(source.get());
  EXPECT_EQ(copy->getNumberOfFields(), 10000);
  EXPECT_EQ(copy->getFields()[9999], copy->getText() + 9999);
  for (const std::string& field : getFieldTexts(*copy)) ASSERT_EQ(field, "");
}

TEST(LineCopy, OfARecordWhoseFieldsAreNotAllThereStaysInsideTheSizeOfALine) {
  TestEnv env;
  TableWithFields table(env, 40);
  const std::unique_ptr<char[]> text(new char[XelLineSize]);
  std::fill_n(text.get(), XelLineSize, 'x');  // no terminator anywhere
  const XelEnvOwner<XelCsvLineI> source = XelNew<XelCsvLineI>(env, text.get(), table.get(), 0L);
  const XelEnvOwner<XelCsvLineI> copy = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  copy->copy(source.get());
  ASSERT_EQ(copy->getNumberOfFields(), 40);
  EXPECT_EQ(std::string(copy->getFields()[0]), std::string(XelLineSize - 1, 'x'));
  for (long field = 1; field < 40; ++field) {
    ASSERT_STREQ(copy->getFields()[field], "");
    ASSERT_LT(copy->getFields()[field], copy->getText() + XelLineSize) << field;
  }
}

TEST(LineCheck, NamesPositionLineAndOperation) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 42L);
  EXPECT_NO_THROW(line->check("anything", 0));
  EXPECT_NO_THROW(line->check("anything", 1));
  EXPECT_XEL_THROW(line->check("anything", 2), FieldNotFound,
                   "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 42 while "
                   "trying anything");
  EXPECT_XEL_THROW(line->check("somethingElse", -1), FieldNotFound,
                   "XelCsvReader::XelFieldNotFoundException : Field Not Found at position -1 in line number 42 while "
                   "trying somethingElse");
  EXPECT_XEL_THROW(line->check("x", 4294967296L), FieldNotFound,
                   "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 4294967296 in line number 42 "
                   "while trying x");
}

TEST(LineCheck, NamesTheTable) {
  TestEnv env;
  TableOfFile table(env, "Towns,Paris\n", "Towns");
  const XelCsvLineI* line = table->getLineByNumber(0).getImpl();
  EXPECT_XEL_THROW(line->check("anything", 2), FieldNotFound,
                   "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 0, in table "
                   "Towns while trying anything");
}

TEST(LineCheck, OfARecordWithoutTableNamesNone) {
  TestEnv env;
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, env.get(), nullptr);
  EXPECT_XEL_THROW(
      line->check("anything", 0), FieldNotFound,
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 0 in line number 0 while trying "
      "anything");
}

TEST(EmptyFieldByPosition, IsAboutTheFirstByte) {
  TestEnv env;
  TableWithFields table(env, 3);
  Buffer text("a\0\0 \0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 1L);
  EXPECT_FALSE(line->emptyFieldByPosition(0));
  EXPECT_TRUE(line->emptyFieldByPosition(1));
  EXPECT_FALSE(line->emptyFieldByPosition(2));
  EXPECT_XEL_THROW(
      line->emptyFieldByPosition(3), FieldNotFound,
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 3 in line number 1 while trying "
      "emptyFieldByPosition");
}

TEST(LineClear, LetsGoOfTextAndFieldsAndTwiceIsHarmless) {
  TestEnv env;
  TableWithFields table(env, 2);
  Buffer text("a\0b\0"s);
  const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 1L);
  line->clear();
  line->clear();
  EXPECT_EQ(line->getText(), nullptr);
  EXPECT_EQ(line->getFields(), nullptr);
  EXPECT_THROW(line->check("test", 0), FieldNotFound);
}

TEST(LineRecord, IsDestroyedWithoutALookAtItsTable) {
  TestEnv env;
  XelEnvOwner<XelCsvLineI> line;
  {
    TableWithFields table(env, 2);
    Buffer text("a\0b\0"s);
    line = XelNew<XelCsvLineI>(env, text.get(), table.get(), 1L);
  }
  EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "b"}));
}

TEST(LineRecord, LosesNothingWhenMemoryIsExhausted) {
  const long injected = forEachFailingAllocation([](XelEnv env) {
    TableWithFields table(env, 2);
    Buffer text("a\0b\0"s);
    const XelEnvOwner<XelCsvLineI> source = XelNew<XelCsvLineI>(env, text.get(), table.get(), 1L);
    Buffer otherText("c\0d\0"s);
    const XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, otherText.get(), table.get(), 2L);
    try {
      line->copy(source.get());
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"c", "d"})) << "as before";
      EXPECT_EQ(line->getLineNumber(), 2);
      throw;
    }
    try {
      line->init(otherText.get());
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"a", "b"})) << "as before";
      throw;
    }
    EXPECT_EQ(getFieldTexts(*line), (std::vector<std::string>{"c", "d"}));
    XelEnvBlock<char> block(env, XelLineSize);
    std::memcpy(block.get(), "e\0f", 4);
    const XelEnvOwner<XelCsvLineI> owner = XelNew<XelCsvLineI>(env, std::move(block), table.get(), 0L);
    EXPECT_EQ(getFieldTexts(*owner), (std::vector<std::string>{"e", "f"}));
  });
  EXPECT_GE(injected, 20);
}
