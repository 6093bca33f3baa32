#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelCsvTableFactory.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/support/CoutCapture.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TableOfFile.h"
#include "tests/support/TestEnv.h"
#include "tests/support/VirtualSlot.h"

namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;
using ColumnHeaderNotFound = XelCsvReader::XelColumnHeaderNotFoundException;
using FieldNotFound = XelCsvReader::XelFieldNotFoundException;
using NumberOfFields = XelCsvReader::XelNumberOfFieldsException;
using Base = XelCsvReader::XelCsvReaderException;

constexpr const char* OneTable = "|NAMES, city ,year,value\n|KEYS,1,0,1\nParis,2004,7\nRome,2005,8\n";
constexpr const char* SeveralTables = "T|NAMES, city ,year,value\nT|KEYS,1,0,1\nT,Paris,2004,7\nU,1\n";

Texts getFieldTexts(const XelCsvLineI* line) {
  return {line->getFields(), line->getFields() + line->getNumberOfFields()};
}

std::string printKeysOf(XelCsvTableReaderI* table) {
  const CoutCapture capture;
  EXPECT_TRUE(table->printKeys());
  EXPECT_EQ(capture.getFlushes(), table->getNumberOfKeys());
  return capture.getText();
}

// A file whose place a pipe takes, which can be opened but not positioned.
class PipeInPlaceOf {
 public:
  explicit PipeInPlaceOf(const DataFile& file) {
    file.remove();
    EXPECT_EQ(mkfifo(file.getName(), S_IRUSR | S_IWUSR), 0);
    writer = open(file.getName(), O_RDWR | O_CLOEXEC);  // so that no open waits for a writer
  }
  ~PipeInPlaceOf() { close(writer); }
  PipeInPlaceOf(const PipeInPlaceOf&) = delete;
  PipeInPlaceOf& operator=(const PipeInPlaceOf&) = delete;

 private:
  int writer = -1;
};

}  // namespace

TEST(GetPosition, FindsTheColumnOfAHeading) {
  TestEnv env;
  TableOfFile oneTable(env, OneTable);
  EXPECT_EQ(oneTable->getImpl()->getPosition("city"), 0);
  EXPECT_EQ(oneTable->getImpl()->getPosition("year"), 1);
  EXPECT_EQ(oneTable->getImpl()->getPosition("value"), 2);
  TableOfFile several(env, SeveralTables, "T");
  EXPECT_EQ(several->getImpl()->getPosition("city"), 1);
  EXPECT_EQ(several->getImpl()->getPosition("value"), 3);
}

TEST(GetPosition, TrimsTheHeadingLineInPlace) {
  TestEnv env;
  TableOfFile table(env, "|NAMES , a ,  b,c  ,\td\nv,w,x,y\n");
  EXPECT_EQ(getFieldTexts(table->getImpl()->getFirstLine()), (Texts{"|NAMES ", " a ", "  b", "c  ", "\td"}));
  EXPECT_EQ(table->getImpl()->getPosition("b"), 1);
  EXPECT_THROW(table->getImpl()->getPosition("d"), ColumnHeaderNotFound) << "only spaces are trimmed";
  EXPECT_EQ(getFieldTexts(table->getImpl()->getFirstLine()), (Texts{"|NAMES", "a", "b", "c", "\td"}));
  EXPECT_THROW(table->getImpl()->getPosition(" a "), ColumnHeaderNotFound);
}

TEST(GetPosition, OfADoubledHeadingIsTheLeftmost) {
  TestEnv env;
  TableOfFile table(env, "|NAMES,a,b,a,b\nv,w,x,y\n");
  EXPECT_EQ(table->getImpl()->getPosition("b"), 1);
  EXPECT_EQ(table->getImpl()->getPosition("a"), 0);
}

TEST(GetPosition, OfTheMarkerFieldOfAOneTableFileIsMinusOne) {
  TestEnv env;
  TableOfFile oneTable(env, OneTable);
  EXPECT_EQ(oneTable->getImpl()->getPosition("|NAMES"), -1);
  TableOfFile several(env, SeveralTables, "T");
  EXPECT_EQ(several->getImpl()->getPosition("T|NAMES"), 0);
}

TEST(GetPosition, OfAnUnknownHeadingNamesHeadingAndTable) {
  TestEnv env;
  TableOfFile oneTable(env, OneTable);
  EXPECT_XEL_THROW(oneTable->getImpl()->getPosition("City"), ColumnHeaderNotFound,
                   "XelCsvReader::XelColumnHeaderNotFoundException : Heading City not found");
  EXPECT_XEL_THROW(oneTable->getImpl()->getPosition(nullptr), ColumnHeaderNotFound,
                   "XelCsvReader::XelColumnHeaderNotFoundException : Heading  not found");
  TableOfFile several(env, SeveralTables, "T");
  EXPECT_XEL_THROW(several->getImpl()->getPosition("cit"), ColumnHeaderNotFound,
                   "XelCsvReader::XelColumnHeaderNotFoundException : Heading cit not found in table T");
}

TEST(GetPosition, OfAnEmptyHeadingIsThatOfAnEmptyField) {
  TestEnv env;
  TableOfFile table(env, "|NAMES,a,  ,c\nv,w,x\n");
  EXPECT_EQ(table->getImpl()->getPosition(""), 1);
}

TEST(GetPosition, WithoutHeadingLineNamesFileOrTable) {
  TestEnv env;
  TableOfFile oneTable(env, "a,b\n");
  EXPECT_XEL_THROW(oneTable->getImpl()->getPosition("a"), ColumnHeaderNotFound,
                   std::string("XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in file ") +
                       oneTable.getFile().getName() + " ");
  TableOfFile several(env, "T,a\n", "T");
  EXPECT_XEL_THROW(several->getImpl()->getPosition("a"), ColumnHeaderNotFound,
                   "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in table T ");
  EXPECT_XEL_THROW(several->getImpl()->getPosition(nullptr), ColumnHeaderNotFound,
                   "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in table T ");
}

TEST(IsHeadingExists, LooksAtEveryFieldOfTheHeadingLine) {
  TestEnv env;
  TableOfFile table(env, OneTable);
  const XelCsvTableReaderI* reader = table->getImpl();
  EXPECT_TRUE(reader->isHeadingExists("city"));
  EXPECT_EQ(getFieldTexts(reader->getFirstLine()), (Texts{"|NAMES", "city", "year", "value"})) << "trimmed in place";
  EXPECT_TRUE(reader->isHeadingExists("value"));
  EXPECT_TRUE(reader->isHeadingExists("|NAMES")) << "the marker field takes part";
  EXPECT_FALSE(reader->isHeadingExists("VALUE"));
  EXPECT_FALSE(reader->isHeadingExists(" city "));
  EXPECT_FALSE(reader->isHeadingExists(""));
  EXPECT_FALSE(reader->isHeadingExists(nullptr));
  TableOfFile several(env, SeveralTables, "T");
  EXPECT_TRUE(several->getImpl()->isHeadingExists("T|NAMES"));
  EXPECT_TRUE(several->getImpl()->isHeadingExists("city"));
}

TEST(IsHeadingExists, TrimsEveryFieldWhicheverItFinds) {
  for (const char* heading : {"a", "b", "z"}) {
    SCOPED_TRACE(heading);
    TestEnv env;
    TableOfFile table(env, "|NAMES ,a, b , \nv,w,x\n");
    EXPECT_EQ(table->getImpl()->isHeadingExists(heading), *heading != 'z');
    EXPECT_EQ(getFieldTexts(table->getImpl()->getFirstLine()), (Texts{"|NAMES", "a", "b", ""}));
  }
}

TEST(IsHeadingExists, IsFalseWithoutHeadingLine) {
  TestEnv env;
  TableOfFile table(env, "a,b\n");
  EXPECT_FALSE(table->getImpl()->isHeadingExists("a"));
}

TEST(PrintKeys, PrintsTheHeadingOfEachKey) {
  TestEnv env;
  TableOfFile table(env, SeveralTables, "T");
  EXPECT_EQ(printKeysOf(table->getImpl()), "key 0 ----> city\nkey 1 ----> value\n");
  EXPECT_EQ(getFieldTexts(table->getImpl()->getFirstLine())[1], "city") << "trimmed in place";
}

TEST(PrintKeys, NamesTheColumnToTheLeftInAOneTableFile) {
  TestEnv env;
  TableOfFile table(env, OneTable);
  EXPECT_EQ(printKeysOf(table->getImpl()), "key 0 ----> |NAMES\nkey 1 ----> year\n");
}

TEST(PrintKeys, PrintsColumnsWithoutHeadingLine) {
  TestEnv env;
  TableOfFile oneTable(env, "a,b\n");
  EXPECT_EQ(printKeysOf(oneTable->getImpl()), "key 0 ----> Column 0\nkey 1 ----> Column 1\n");
  TableOfFile several(env, "T,a,b\n", "T");
  EXPECT_EQ(printKeysOf(several->getImpl()), "key 0 ----> Column 1\nkey 1 ----> Column 2\n");
}

TEST(PrintKeys, PrintsNothingWithoutKeys) {
  TestEnv env;
  TableOfFile table(env, "T\n", "T");
  EXPECT_EQ(printKeysOf(table->getImpl()), "");
}

TEST(PrintKeys, PrintsAnEmptyHeading) {
  TestEnv env;
  TableOfFile table(env, "T|NAMES,,\nT,v,w\n", "T");
  EXPECT_EQ(printKeysOf(table->getImpl()), "key 0 ----> \nkey 1 ----> \n");
}

TEST(PrintKeys, ChecksTheFieldOfTheHeadingLine) {
  TestEnv env;
  TableOfFile table(env, "T|KEYS,1,1\nT|NAMES,a\nT,v,w\n", "T");
  const CoutCapture capture;
  EXPECT_XEL_THROW(
      table->getImpl()->printKeys(), FieldNotFound,
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 1, in table T "
      "while trying getStringByPosition");
  EXPECT_EQ(capture.getText().rfind("key 0 ----> a\n", 0), 0U);
}

TEST(TableFormatLine, StoresLengthAndNumberOfFields) {
  TestEnv env;
  FileSettings settings;
  settings.separators = ";";
  settings.decimal = ',';
  TableOfFile table(env, "a\n", nullptr, settings);
  XelCsvTableReaderI* reader = table->getImpl();
  const struct {
    std::string line;
    std::string formatted;
    long fields;
  } cases[] = {
      {"a;\"b;c\";;3,5\r\n", "a\0b;c\0\0003.5\0"s, 4},
      {"", "\0"s, 1},
      {"\n", "\0"s, 1},
      {";", "\0\0"s, 2},
  };
  for (const auto& row : cases) {
    std::string line = row.line;
    reader->formatLine(line.data());
    EXPECT_EQ(reader->getLineLength(), static_cast<long>(row.formatted.size()));
    EXPECT_EQ(reader->getNumberOfFields(), row.fields);
    EXPECT_EQ(std::string(line.c_str(), row.formatted.size()), row.formatted);
  }
}

TEST(TableFormatLine, KeepsTheNumberOfColumns) {
  TestEnv env;
  TableOfFile table(env, OneTable);
  std::string line = "a,b,c,d,e,f";
  table->getImpl()->formatLine(line.data());
  EXPECT_EQ(table->getImpl()->getNumberOfFields(), 6);
  EXPECT_EQ(table->getImpl()->getNumberOfColumns(), 3);
}

TEST(TableSkipCommentAndEmptyLines, ReadsOnToTheNextLine) {
  TestEnv env;
  TableOfFile table(env, "#c\n\na,b\nc");
  XelCsvLines lines(env);
  ASSERT_EQ(lines.open(table.getFile().getName(), "rb", XelCsvReach::ManyLines), 0);
  std::vector<char> buffer(XelLineSize);
  long lineNumber = -1;
  long offset = 0;
  const XelCsvTableReaderI* reader = table->getImpl();
  EXPECT_EQ(reader->skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, &offset), 1);
  EXPECT_STREQ(buffer.data(), "a,b\n");
  EXPECT_EQ(lineNumber, 2);
  EXPECT_EQ(offset, 4);
  EXPECT_EQ(reader->skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, nullptr), 1);
  EXPECT_STREQ(buffer.data(), "c");
  EXPECT_EQ(offset, 4);
  EXPECT_EQ(reader->skipCommentAndEmptyLines(lines, buffer.data(), '#', &lineNumber, &offset), 0);
  EXPECT_STREQ(buffer.data(), "c");
  EXPECT_EQ(lineNumber, 3);
}

TEST(TestNumberOfFields, ComparesWithTheLineFormattedLast) {
  TestEnv env;
  TableOfFile oneTable(env, "a,b\nc,d\n");
  XelCsvTableReaderI* reader = oneTable->getImpl();
  XelCsvLineI* line = oneTable->getLineByNumber(1).getImpl();
  EXPECT_NO_THROW(reader->testNumberOfFields(line));
  std::string other = "x,y,z";
  reader->formatLine(other.data());
  EXPECT_XEL_THROW(
      reader->testNumberOfFields(line), NumberOfFields,
      "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of the table = 3 and number of "
      "fields of line number 1 = 2");
  TableOfFile several(env, "U,1\nT,b\n", "T");
  line = several->getLineByNumber(0).getImpl();
  EXPECT_NO_THROW(several->getImpl()->testNumberOfFields(line));
  other = "x,y,z";
  several->getImpl()->formatLine(other.data());
  EXPECT_XEL_THROW(
      several->getImpl()->testNumberOfFields(line), Base,
      "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of table T = 3 and number of "
      "fields of line number 1 = 2");
}

TEST(TestNumberOfFields, LetsALineOfTheHeadingZonePassInAOneTableFile) {
  TestEnv env;
  TableOfFile oneTable(env, " x|y ,b\nc,d\n|z,d\n");
  XelCsvLineI* line = oneTable->getLineByNumber(1).getImpl();
  std::string other = "x,y,z";
  oneTable->getImpl()->formatLine(other.data());
  EXPECT_NO_THROW(oneTable->getImpl()->testNumberOfFields(line));
  TableOfFile several(env, "T,b\nT|x,c\n", "T");
  line = several->getLineByNumber(1).getImpl();
  other = "x,y,z";
  several->getImpl()->formatLine(other.data());
  EXPECT_XEL_THROW(
      several->getImpl()->testNumberOfFields(line), Base,
      "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of table T = 3 and number of "
      "fields of line number 1 = 2");
}

TEST(TestNumberOfFields, TrimsTheFirstField) {
  TestEnv env;
  TableOfFile table(env, "  a  ,b\n");
  XelCsvLineI* line = table->getLineByNumber(0).getImpl();
  EXPECT_STREQ(line->getFields()[0], "  a  ");
  table->getImpl()->testNumberOfFields(line);
  EXPECT_STREQ(line->getFields()[0], "a");
}

TEST(TestNumberOfFields, ChecksTheFirstField) {
  TestEnv env;
  TableOfFile table(env, "a,b\n");
  const XelEnvOwner<XelCsvLineI> empty = XelNew<XelCsvLineI>(env, env.get(), table->getImpl());
  EXPECT_XEL_THROW(
      table->getImpl()->testNumberOfFields(empty.get()), FieldNotFound,
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 0 in line number 0 while trying "
      "getStringByPosition");
}

TEST(TestNumberOfFields, ComparesBeforeItLooksAtTheFirstFieldInAFileOfSeveralTables) {
  TestEnv env;
  TableOfFile several(env, "T, b\n", "T");
  const XelEnvOwner<XelCsvLineI> empty = XelNew<XelCsvLineI>(env, env.get(), several->getImpl());
  EXPECT_XEL_THROW(several->getImpl()->testNumberOfFields(empty.get()), Base,
                   "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of table T = 2 and number "
                   "of fields of line number 0 = 0");
}

TEST(TestNumberOfFields, TrimsTheFirstFieldOfALineThatItReportsInAOneTableFileOnly) {
  TestEnv env;
  TableOfFile oneTable(env, "  a  ,b\n");
  XelCsvLineI* line = oneTable->getLineByNumber(0).getImpl();
  std::string other = "x,y,z";
  oneTable->getImpl()->formatLine(other.data());
  EXPECT_THROW(oneTable->getImpl()->testNumberOfFields(line), NumberOfFields);
  EXPECT_EQ(getFieldTexts(line), (Texts{"a", "b"}));
  TableOfFile several(env, "  T  ,b\n", "T");
  line = several->getLineByNumber(0).getImpl();
  other = "x,y,z";
  several->getImpl()->formatLine(other.data());
  EXPECT_THROW(several->getImpl()->testNumberOfFields(line), Base);
  EXPECT_EQ(getFieldTexts(line), (Texts{"  T  ", "b"}));
}

TEST(TestNumberOfFields, PicksItsMessageByTheKindOfFile) {
  TestEnv env;
  TableOfFile several(env, "T,b\n", "T");
  XelCsvReaderI* reader = several->getImpl()->getReader();
  const auto unnamed = XelNew<XelNonCachedCsvTableReaderI>(env, reader, nullptr, nullptr);
  const XelEnvOwner<XelCsvLineI> line(unnamed->getLineByNumber(0));
  std::string other = "x,y,z";
  unnamed->formatLine(other.data());
  EXPECT_XEL_THROW(unnamed->testNumberOfFields(line.get()), Base,
                   "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of table "s +
                       several.getFile().getName() + " = 3 and number of fields of line number 0 = 2");
}

#if defined(__x86_64__)

// A derived table that is built apart counts on the order of the slots.
TEST(TableReader, VirtualOperationsStandInTheirOrder) {
  EXPECT_EQ(getSlot(&XelCsvTableReaderI::getLineByNumber), 2);
  EXPECT_EQ(getSlot(&XelCsvTableReaderI::getLineByKey), 3);
  EXPECT_EQ(getSlot(&XelCsvTableReaderI::getNumberOfItems), 4);
  EXPECT_EQ(getSlot(&XelCsvTableReaderI::getOffsetAndLineNumber), 5);
  EXPECT_EQ(getSlot(&XelCsvTableReaderI::clearTable), 6);
  EXPECT_EQ(getSlot(&XelCsvTableReaderI::copy), 7);
}

#endif

TEST(EmptyTable, HasNothing) {
  TestEnv env;
  const auto table = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
  EXPECT_EQ(table->getFirstLine(), nullptr);
  EXPECT_EQ(table->getHeadingLine(), nullptr);
  EXPECT_EQ(table->getNumberOfColumns(), 0);
  EXPECT_EQ(table->getNumberOfFields(), 0);
  EXPECT_EQ(table->getLineLength(), 0);
  EXPECT_EQ(table->getNumberOfKeys(), 0);
  EXPECT_EQ(table->getReader(), nullptr);
  EXPECT_EQ(table->getNameOfTable(), nullptr);
  EXPECT_EQ(table->getFirstDataOffset(), 0);
  EXPECT_EQ(table->getEndOffset(), 0);
  EXPECT_EQ(table->getFirstDataLineNumber(), 0);
  EXPECT_FALSE(table->isHeadingExists("a"));
  EXPECT_EQ(printKeysOf(table.get()), "");
}

TEST(TableWithoutName, OfAFileOfSplitTablesTakesEveryLineForItsOwn) {
  for (const long isCached : {0L, 1L}) {
    SCOPED_TRACE(isCached);
    TestEnv env;
    FileSettings settings;
    settings.isCached = isCached;
    settings.allowTableSplitting = 1;
    TableOfFile split(env, "A,1\nB,2\nA,3\n", "A", settings);
    const XelEnvOwner<XelCsvTableReaderI> table = XelMakeTableReader(split.getReader().getImpl(), nullptr, nullptr);
    EXPECT_FALSE(table->isSplit());
    EXPECT_EQ(table->getNumberOfItems(), 3);
    EXPECT_EQ(split->getNumberOfItems(), 2);
  }
}

TEST(PartialClear, ForgetsHeadingLineAndKeys) {
  TestEnv env;
  TableOfFile oneTable(env, OneTable);
  XelCsvReaderI* reader = oneTable->getImpl()->getReader();
  const auto table = XelNew<XelNonCachedCsvTableReaderI>(env, reader, nullptr, nullptr);
  table->partialClear();
  table->partialClear();
  EXPECT_EQ(table->getFirstLine(), nullptr);
  EXPECT_EQ(table->getNumberOfKeys(), 0);
  table->partialCopy(oneTable->getImpl());
  EXPECT_EQ(table->getNumberOfKeys(), 2) << "the array stays usable";
}

TEST(TableCopy, TakesOverTheSharedState) {
  for (const char* name : {"T", static_cast<const char*>(nullptr)}) {
    TestEnv env;
    TableOfFile source(env, name == nullptr ? OneTable : SeveralTables, name);
    XelCsvTableReaderI* other = source->getImpl();
    std::string line = "a,b,c,d,e";
    other->formatLine(line.data());
    const auto copy = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
    copy->partialCopy(other);
    EXPECT_EQ(copy->getReader(), other->getReader());
    EXPECT_EQ(copy->getNumberOfColumns(), other->getNumberOfColumns());
    EXPECT_EQ(copy->getNumberOfFields(), 5);
    EXPECT_EQ(copy->getLineLength(), 10);
    EXPECT_EQ(copy->getNameOfTable(), other->getNameOfTable());
    EXPECT_EQ(copy->getEndOffset(), other->getEndOffset());
    EXPECT_EQ(copy->getFirstDataOffset(), other->getFirstDataOffset());
    EXPECT_GT(copy->getFirstDataOffset(), 0);
    EXPECT_EQ(copy->getFirstDataLineNumber(), 2);
    ASSERT_EQ(copy->getNumberOfKeys(), 2);
    EXPECT_EQ(copy->getKeyPosition(0), other->getKeyPosition(0));
    EXPECT_EQ(copy->getKeyPosition(1), other->getKeyPosition(1));
    EXPECT_NE(copy->getFirstLine(), other->getFirstLine());
    EXPECT_EQ(getFieldTexts(copy->getFirstLine()), getFieldTexts(other->getFirstLine()));
    EXPECT_EQ(copy->getFirstLine()->getLineNumber(), 0);
    EXPECT_EQ(copy->getPosition("year"), other->getPosition("year"));
  }
}

TEST(TableCopy, TakesOverTheLineFormattedLast) {
  for (const long isCached : {1L, 0L}) {
    SCOPED_TRACE(isCached);
    FileSettings settings;
    settings.isCached = isCached;
    TestEnv env;
    TableOfFile source(env, OneTable, nullptr, settings);
    std::string line = "a,b,c,d,e";
    source->getImpl()->formatLine(line.data());
    XelCsvTableReader copy;
    copy.copy(*source);
    EXPECT_EQ(copy.getImpl()->getNumberOfFields(), 5);
    EXPECT_EQ(copy.getImpl()->getLineLength(), 10);
    copy.end();
  }
}

TEST(TableCopy, OutlivesItsSource) {
  TestEnv env;
  TableOfFile table(env, SeveralTables, "T");
  const auto copy = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
  {
    XelCsvTableReader source = table.getReader().getTableByName("T");
    copy->partialCopy(source.getImpl());
    source.end();
  }
  EXPECT_EQ(copy->getFirstLine()->getTableReader(), copy.get());
  EXPECT_XEL_THROW(
      copy->getFirstLine()->check("test", 9), FieldNotFound,
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 9 in line number 0, in table T "
      "while trying test");
  EXPECT_EQ(printKeysOf(copy.get()), "key 0 ----> city\nkey 1 ----> value\n");
}

TEST(TableCopy, OfATableWithoutHeadingLineHasAnEmptyHeadingRecord) {
  TestEnv env;
  TableOfFile oneTable(env, "a,b\n");
  TableOfFile several(env, "T,a\n", "T");
  const auto copy = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
  copy->partialCopy(oneTable->getImpl());
  ASSERT_NE(copy->getFirstLine(), nullptr);
  EXPECT_EQ(copy->getFirstLine()->getNumberOfFields(), 0);
  EXPECT_EQ(copy->getHeadingLine(), nullptr);
  EXPECT_FALSE(copy->isHeadingExists("a"));
  EXPECT_XEL_THROW(copy->getPosition("a"), ColumnHeaderNotFound,
                   "XelCsvReader::XelColumnHeaderNotFoundException : Heading a not found");
  EXPECT_EQ(printKeysOf(copy.get()), "key 0 ----> Column 0\nkey 1 ----> Column 1\n");
  const auto named = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
  named->partialCopy(several->getImpl());
  EXPECT_XEL_THROW(named->getPosition("a"), ColumnHeaderNotFound,
                   "XelCsvReader::XelColumnHeaderNotFoundException : Heading a not found in table T");
}

TEST(TableCopy, ASecondTimeFreesTheHeadingLineOfTheFirst) {
  TestEnv env;
  TableOfFile several(env, "T|NAMES,a\nT,1\n", "T");
  const auto copy = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
  copy->partialCopy(several->getImpl());
  const long blocks = env.getAllocator().getBlocksOut();
  copy->partialCopy(several->getImpl());
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
  EXPECT_EQ(copy->getPosition("a"), 1);
}

TEST(TableCopy, OfAFileThatCannotBeOpenedCopiesNothing) {
  TestEnv env;
  TableOfFile source(env, OneTable);
  source.getFile().remove();
  const auto copy = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
  copy->partialCopy(source->getImpl());
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(copy->getOpenError(), ENOENT);
  EXPECT_EQ(copy->getReader(), source->getImpl()->getReader());
  EXPECT_EQ(copy->getFirstLine(), nullptr);
  EXPECT_EQ(copy->getNumberOfKeys(), 0);
  EXPECT_EQ(copy->getNumberOfColumns(), 0);
}

TEST(TableCopy, OfAPipeIsACorruptedFile) {
  TestEnv env;
  {
    TableOfFile oneTable(env, OneTable);
    const PipeInPlaceOf pipe(oneTable.getFile());
    const auto copy = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
    EXPECT_XEL_THROW(copy->partialCopy(oneTable->getImpl()), Base,
                     "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table "s +
                         oneTable.getFile().getName());
  }
  TableOfFile several(env, SeveralTables, "T");
  const PipeInPlaceOf pipe(several.getFile());
  const auto copy = XelNew<XelNonCachedCsvTableReaderI>(env, env.get());
  EXPECT_XEL_THROW(copy->partialCopy(several->getImpl()), Base,
                   "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table T");
}

TEST(HeadingZone, OfAPipeIsACorruptedFile) {
  TestEnv env;
  for (const long isCached : {1L, 0L}) {
    const DataFile file("");
    const PipeInPlaceOf pipe(file);
    EXPECT_XEL_THROW(
        XelCsvReader(env, file.getName(), 0, 0, ",", '.', '"', '#', isCached), Base,
        "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table "s + file.getName());
  }
}

TEST(TableCopy, LosesNothingWhenMemoryIsExhausted) {
  for (const char* content : {OneTable, "a,b\n"}) {
    const long injected = forEachFailingAllocation([&](XelEnv env) {
      TableOfFile source(env, content);
      const auto copy = XelNew<XelNonCachedCsvTableReaderI>(env, env);
      try {
        copy->partialCopy(source->getImpl());
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(source->getNumberOfItems(), content == OneTable ? 2 : 1);
        throw;
      }
      EXPECT_EQ(copy->getNumberOfKeys(), 2);
    });
    EXPECT_GE(injected, 20);
  }
}
