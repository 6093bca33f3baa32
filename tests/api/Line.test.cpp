#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/CoutCapture.h"
#include "tests/support/DecimalPoint.h"
#include "tests/support/ExpectAssertion.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TableOfFile.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvReader.h"

namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;
using FieldNotFound = XelCsvReader::XelFieldNotFoundException;
using ColumnHeaderNotFound = XelCsvReader::XelColumnHeaderNotFoundException;
using Overflow = XelCsvReader::XelOverflowException;

constexpr double Infinity = std::numeric_limits<double>::infinity();

// The twelve getters, by position and by heading, with the name that their messages carry.
struct Getter {
  const char* operation;
  std::function<void(const XelCsvLine&, long)> byPosition;
  std::function<void(const XelCsvLine&, const char*)> byHeader;
};

const std::vector<Getter>& getGetters() {
  static const std::vector<Getter> getters = {
      {"getFloatByPosition", [](const XelCsvLine& line, long position) { line.getFloatByPosition(position); },
       [](const XelCsvLine& line, const char* heading) { line.getFloatByHeader(heading); }},
      {"getIntByPosition", [](const XelCsvLine& line, long position) { line.getIntByPosition(position); },
       [](const XelCsvLine& line, const char* heading) { line.getIntByHeader(heading); }},
      {"getStringByPosition", [](const XelCsvLine& line, long position) { line.getStringByPosition(position); },
       [](const XelCsvLine& line, const char* heading) { line.getStringByHeader(heading); }},
      {"getFloatByPositionOrDefaultValue",
       [](const XelCsvLine& line, long position) { line.getFloatByPositionOrDefaultValue(position, 1.0); },
       [](const XelCsvLine& line, const char* heading) { line.getFloatByHeaderOrDefaultValue(heading, 1.0); }},
      {"getIntByPositionOrDefaultValue",
       [](const XelCsvLine& line, long position) { line.getIntByPositionOrDefaultValue(position, 1); },
       [](const XelCsvLine& line, const char* heading) { line.getIntByHeaderOrDefaultValue(heading, 1); }},
      {"getStringByPositionOrDefaultValue",
       [](const XelCsvLine& line, long position) { line.getStringByPositionOrDefaultValue(position, "x"); },
       [](const XelCsvLine& line, const char* heading) { line.getStringByHeaderOrDefaultValue(heading, "x"); }},
      {"emptyFieldByPosition", [](const XelCsvLine& line, long position) { line.emptyFieldByPosition(position); },
       [](const XelCsvLine& line, const char* heading) { line.emptyFieldByHeader(heading); }},
  };
  return getters;
}

std::string fieldNotFound(long position, long lineNumber, const std::string& table, const std::string& operation) {
  return "XelCsvReader::XelFieldNotFoundException : Field Not Found at position " + std::to_string(position) +
         " in line number " + std::to_string(lineNumber) + (table.empty() ? "" : ", in table " + table) +
         " while trying " + operation;
}

std::string printKeysOf(const XelCsvLine& line, long flushes) {
  const CoutCapture capture;
  EXPECT_TRUE(line.printValueOfKeys());
  EXPECT_EQ(capture.getFlushes(), flushes);
  return capture.getText();
}

// A line of one field after the table's name, and the file it is in.
class OneField {
 public:
  OneField(XelEnv env, const std::string& field) : table(env, "T|NAMES,value,end\nT," + field + ",!\n", "T") {
    line = table->getLineByNumber(0);
  }

  const XelCsvLine* operator->() const { return &line; }

 private:
  TableOfFile table;
  XelCsvLine line;
};

}  // namespace

TEST(LineGetters, ReadFieldsByPositionAndHeading) {
  const DecimalPoint point;
  for (const long isCached : {1L, 0L}) {
    FileSettings settings;
    settings.isCached = isCached;
    TestEnv env;
    TableOfFile several(env, "T|NAMES,name,count,price\nT,pear,12,0.75\n", "T", settings);
    const XelCsvLine line = several->getLineByNumber(0);
    EXPECT_STREQ(line.getStringByPosition(0), "T");
    EXPECT_STREQ(line.getStringByPosition(1), "pear");
    EXPECT_STREQ(line.getStringByHeader("name"), "pear");
    EXPECT_EQ(line.getIntByPosition(2), 12);
    EXPECT_EQ(line.getIntByHeader("count"), 12);
    EXPECT_EQ(line.getFloatByPosition(3), 0.75);
    EXPECT_EQ(line.getFloatByHeader("price"), 0.75);
    EXPECT_EQ(line.getFloatByPositionOrDefaultValue(3, 9.0), 0.75);
    EXPECT_EQ(line.getFloatByHeaderOrDefaultValue("price", 9.0), 0.75);
    EXPECT_EQ(line.getIntByPositionOrDefaultValue(2, 9), 12);
    EXPECT_EQ(line.getIntByHeaderOrDefaultValue("count", 9), 12);
    EXPECT_STREQ(line.getStringByPositionOrDefaultValue(1, "x"), "pear");
    EXPECT_STREQ(line.getStringByHeaderOrDefaultValue("name", "x"), "pear");
    EXPECT_EQ(line.getNumberOfFields(), 4);
    EXPECT_EQ(line.getLineNumber(), 1);
    EXPECT_EQ(line.getEnv().getImpl(), env.get().getImpl());

    TableOfFile oneTable(env, "#c\n\n|NAMES,name,count\npear,12\n", nullptr, settings);
    EXPECT_EQ(oneTable->getLineByNumber(1).getLineNumber(), 3) << "comments and empty lines are counted";
  }
}

TEST(LineGetters, CountHeadingsOfAOneTableFileWithoutTheMarker) {
  TestEnv env;
  TableOfFile table(env, "|NAMES,name,count\npear,12\n");
  const XelCsvLine line = table->getLineByNumber(0);
  EXPECT_STREQ(line.getStringByHeader("name"), "pear");
  EXPECT_EQ(line.getIntByHeader("count"), 12);
  for (const Getter& getter : getGetters()) {
    EXPECT_XEL_THROW(getter.byHeader(line, "|NAMES"), FieldNotFound, fieldNotFound(-1, 1, "", getter.operation));
  }
}

TEST(LineGetters, NameTheGetterByPositionInTheirMessages) {
  TestEnv env;
  TableOfFile oneTable(env, "|NAMES,a,b,c\n|KEYS,1,0,0\n1,2\n");
  const XelCsvLine shortLine = oneTable->getLineByNumber(0);
  TableOfFile several(env, "T|NAMES,a,b,c\nT|KEYS,1,0,0\nT,1,2\n", "T");
  const XelCsvLine named = several->getLineByNumber(0);
  for (const Getter& getter : getGetters()) {
    SCOPED_TRACE(getter.operation);
    EXPECT_XEL_THROW(getter.byPosition(shortLine, 2), FieldNotFound, fieldNotFound(2, 2, "", getter.operation));
    EXPECT_XEL_THROW(getter.byPosition(shortLine, -1), FieldNotFound, fieldNotFound(-1, 2, "", getter.operation));
    EXPECT_XEL_THROW(getter.byHeader(shortLine, "c"), FieldNotFound, fieldNotFound(2, 2, "", getter.operation));
    EXPECT_XEL_THROW(getter.byPosition(named, 3), FieldNotFound, fieldNotFound(3, 2, "T", getter.operation));
    EXPECT_XEL_THROW(getter.byPosition(named, 1L << 40), FieldNotFound,
                     fieldNotFound(1L << 40, 2, "T", getter.operation));
    EXPECT_XEL_THROW(getter.byHeader(named, "c"), FieldNotFound, fieldNotFound(3, 2, "T", getter.operation));
  }
}

TEST(LineGetters, ByAnUnknownHeadingNameIt) {
  TestEnv env;
  TableOfFile oneTable(env, "|NAMES,a\n1\n");
  TableOfFile several(env, "T|NAMES,a\nT,1\n", "T");
  TableOfFile headless(env, "a\n1\n");
  TableOfFile headlessNamed(env, "T,a\n", "T");
  for (const Getter& getter : getGetters()) {
    SCOPED_TRACE(getter.operation);
    EXPECT_XEL_THROW(getter.byHeader(oneTable->getLineByNumber(0), "z"), ColumnHeaderNotFound,
                     "XelCsvReader::XelColumnHeaderNotFoundException : Heading z not found");
    EXPECT_XEL_THROW(getter.byHeader(several->getLineByNumber(0), "z"), ColumnHeaderNotFound,
                     "XelCsvReader::XelColumnHeaderNotFoundException : Heading z not found in table T");
    EXPECT_XEL_THROW(getter.byHeader(several->getLineByNumber(0), nullptr), ColumnHeaderNotFound,
                     "XelCsvReader::XelColumnHeaderNotFoundException : Heading  not found in table T");
    EXPECT_XEL_THROW(
        getter.byHeader(headless->getLineByNumber(0), "a"), ColumnHeaderNotFound,
        std::string("XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in file ") +
            headless.getFile().getName() + " ");
    EXPECT_XEL_THROW(getter.byHeader(headlessNamed->getLineByNumber(0), "a"), ColumnHeaderNotFound,
                     "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in table T ");
  }
}

TEST(LineGetters, GoOnWorkingAfterAnException) {
  TestEnv env;
  TableOfFile table(env, "T|NAMES,a,b\nT,3000000000,x\n", "T");
  const XelCsvLine line = table->getLineByNumber(0);
  EXPECT_THROW(line.getIntByHeader("a"), Overflow);
  EXPECT_THROW(line.getStringByPosition(9), FieldNotFound);
  EXPECT_THROW(line.getStringByHeader("z"), ColumnHeaderNotFound);
  EXPECT_STREQ(line.getStringByHeader("b"), "x");
  EXPECT_EQ(line.getFloatByHeader("a"), 3e9);
}

TEST(LineGetters, TrimForGood) {
  const DecimalPoint point;
  TestEnv env;
  TableOfFile table(env, " a b , 4.5 ,  ,\tc ,5 \n");
  const XelCsvLine line = table->getLineByNumber(0);
  EXPECT_EQ(getFieldTexts(line), (Texts{" a b ", " 4.5 ", "  ", "\tc ", "5 "}));
  EXPECT_STREQ(line.getStringByPosition(0), "a b");
  EXPECT_EQ(line.getFloatByPosition(1), 4.5);
  EXPECT_STREQ(line.getStringByPositionOrDefaultValue(3, "x"), "\tc") << "only spaces are trimmed";
  EXPECT_EQ(line.getFloatByPositionOrDefaultValue(4, 1.0), 5.0);
  EXPECT_EQ(getFieldTexts(line), (Texts{"a b", "4.5", "  ", "\tc", "5"}));
  EXPECT_EQ(line.getStringByPosition(0), line.getFields()[0]) << "the text is inside the line";
}

TEST(LineGetters, ForIntegersDoNotTrim) {
  TestEnv env;
  TableOfFile table(env, " 42 , 43 \n");
  const XelCsvLine line = table->getLineByNumber(0);
  EXPECT_EQ(line.getIntByPosition(0), 42);
  EXPECT_EQ(line.getIntByPositionOrDefaultValue(1, 5), 43);
  EXPECT_EQ(getFieldTexts(line), (Texts{" 42 ", " 43 "}));
  EXPECT_STREQ(line.getStringByPosition(0), "42");
  EXPECT_EQ(line.getIntByPosition(0), 42);
}

TEST(LineGetters, ReadAnEmptyFieldAsNothing) {
  TestEnv env;
  const OneField line(env, "");
  EXPECT_TRUE(line->emptyFieldByPosition(1));
  EXPECT_TRUE(line->emptyFieldByHeader("value"));
  EXPECT_FALSE(line->emptyFieldByHeader("end"));
  EXPECT_EQ(line->getFloatByPosition(1), 0.0);
  EXPECT_EQ(line->getFloatByHeader("value"), 0.0);
  EXPECT_EQ(line->getIntByPosition(1), 0);
  EXPECT_EQ(line->getIntByHeader("value"), 0);
  EXPECT_STREQ(line->getStringByPosition(1), "");
  EXPECT_STREQ(line->getStringByHeader("value"), "");
}

TEST(LineGetters, OrDefaultValueGiveItForAnEmptyField) {
  TestEnv env;
  const OneField line(env, "");
  EXPECT_EQ(line->getFloatByPositionOrDefaultValue(1, 2.5), 2.5);
  EXPECT_EQ(line->getFloatByHeaderOrDefaultValue("value", -Infinity), -Infinity);
  EXPECT_EQ(line->getIntByPositionOrDefaultValue(1, 1L << 40), 1L << 40) << "the default may have 64 bits";
  EXPECT_EQ(line->getIntByHeaderOrDefaultValue("value", -5), -5);
  const char* const text = " untouched ";
  EXPECT_EQ(line->getStringByPositionOrDefaultValue(1, text), text) << "the very pointer";
  EXPECT_EQ(line->getStringByHeaderOrDefaultValue("value", text), text);
  EXPECT_EQ(line->getStringByPositionOrDefaultValue(1, nullptr), nullptr);
}

TEST(LineGetters, OrDefaultValueDoNotTakeBlanksForEmptyBeforeTheyAreTrimmed) {
  TestEnv env;
  {
    const OneField line(env, "   ");
    EXPECT_FALSE(line->emptyFieldByPosition(1));
    EXPECT_STREQ(line->getStringByPositionOrDefaultValue(1, "x"), "");
    EXPECT_TRUE(line->emptyFieldByPosition(1)) << "trimmed for good";
    EXPECT_STREQ(line->getStringByPositionOrDefaultValue(1, "x"), "x");
  }
  {
    const OneField line(env, "   ");
    EXPECT_EQ(line->getFloatByPositionOrDefaultValue(1, 2.5), 0.0);
    EXPECT_EQ(line->getFloatByPositionOrDefaultValue(1, 2.5), 2.5);
  }
  {
    const OneField line(env, "   ");
    EXPECT_EQ(line->getIntByPositionOrDefaultValue(1, 5), 0);
    EXPECT_EQ(line->getIntByPositionOrDefaultValue(1, 5), 0) << "an integer is not trimmed";
    EXPECT_FALSE(line->emptyFieldByPosition(1));
  }
  {
    const OneField line(env, "   ");
    EXPECT_STREQ(line->getStringByPosition(1), "");
    EXPECT_TRUE(line->emptyFieldByPosition(1));
  }
}

TEST(LineGetters, OrDefaultValueDoNotHelpWhenTheFieldIsMissing) {
  TestEnv env;
  TableOfFile table(env, "|NAMES,a,b\n|KEYS,1,0\n1\n");
  const XelCsvLine line = table->getLineByNumber(0);
  EXPECT_THROW(line.getFloatByHeaderOrDefaultValue("b", 1.0), FieldNotFound);
  EXPECT_THROW(line.getIntByPositionOrDefaultValue(1, 1), FieldNotFound);
  EXPECT_THROW(line.getStringByHeaderOrDefaultValue("z", "x"), ColumnHeaderNotFound);
}

TEST(LineGetters, ReadFloats) {
  const DecimalPoint point;
  const struct {
    const char* field;
    double value;
    double orDefault;
  } cases[] = {
      {"3.5e2", 350.0, 350.0},
      {" 7.25 ", 7.25, 7.25},
      {"12abc", 12.0, 12.0},
      {"abc", 0.0, 0.0},
      {"-0.5", -0.5, -0.5},
      {"+INF", Infinity, Infinity},
      {"+1.#INF", Infinity, Infinity},
      {"+Inf", Infinity, Infinity},
      {"+Infinity", Infinity, Infinity},
      {"-INF", -Infinity, -Infinity},
      {"-1.#INF", -Infinity, -Infinity},
      {"-Inf", -Infinity, -Infinity},
      {"-Infinity", -Infinity, -Infinity},
      {"  +1.#INF ", Infinity, Infinity},
      {"\"+1.#INF\"", Infinity, Infinity},
      {"\t+1.#INF", 1.0, 1.0},
      {"1.#INF", 1.0, 1.0},
      {"+1.#inf", 1.0, 1.0},
      {"-1.#INFx", -1.0, -1.0},
      {"U", 0.0, Infinity},
      {" U ", 0.0, Infinity},
      {"u", 0.0, 0.0},
      {"UU", 0.0, 0.0},
      {"-U", 0.0, 0.0},
      {"inf", Infinity, Infinity},
      {"1e999", Infinity, Infinity},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.field);
    TestEnv env;
    {
      const OneField line(env, row.field);
      EXPECT_EQ(line->getFloatByPosition(1), row.value);
      EXPECT_EQ(line->getFloatByHeader("value"), row.value);
    }
    const OneField line(env, row.field);
    EXPECT_EQ(line->getFloatByPositionOrDefaultValue(1, 99.0), row.orDefault);
    EXPECT_EQ(line->getFloatByHeaderOrDefaultValue("value", 99.0), row.orDefault);
  }
  TestEnv env;
  const OneField line(env, "nan");
  EXPECT_TRUE(std::isnan(line->getFloatByPosition(1)));
  EXPECT_TRUE(std::isnan(line->getFloatByPositionOrDefaultValue(1, 1.0)));
}

TEST(LineGetters, ReadFloatsWithTheFilesDecimalCharacter) {
  const DecimalPoint point;
  TestEnv env;
  FileSettings settings;
  settings.separators = ";";
  settings.decimal = ',';
  TableOfFile table(env, "3,5;+1,#INF;1,2,3;a,b\n", nullptr, settings);
  const XelCsvLine line = table->getLineByNumber(0);
  EXPECT_EQ(line.getFloatByPosition(0), 3.5);
  EXPECT_EQ(line.getFloatByPosition(1), Infinity);
  EXPECT_EQ(line.getFloatByPosition(2), 1.2);
  EXPECT_STREQ(line.getStringByPosition(3), "a.b");
}

TEST(LineGetters, ReadIntegers) {
  const struct {
    const char* field;
    long value;
  } cases[] = {
      {"42", 42},
      {" 42 ", 42},
      {"\t42", 42},
      {"12abc", 12},
      {"abc", 0},
      {"-7", -7},
      {"3.9", 3},
      {"2147483647", 2147483647},
      {"-2147483648", -2147483648L},
      {"00000000000000000000001", 1},
      {"U", 0},
      {"+INF", 0},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.field);
    TestEnv env;
    const OneField line(env, row.field);
    EXPECT_EQ(line->getIntByPosition(1), row.value);
    EXPECT_EQ(line->getIntByHeader("value"), row.value);
    EXPECT_EQ(line->getIntByPositionOrDefaultValue(1, 99), row.value);
    EXPECT_EQ(line->getIntByHeaderOrDefaultValue("value", 99), row.value);
  }
}

TEST(LineGetters, ReportIntegersOfMoreThan32Bits) {
  for (const char* field : {"2147483648", "-2147483649", "3000000000", "4294967296", "4294967297",
                            "9223372036854775807", "99999999999999999999", "-99999999999999999999"}) {
    SCOPED_TRACE(field);
    TestEnv env;
    const OneField named(env, field);
    const char* const message =
        "XelCsvReader::XelOverflowException : OVERFLOW while reading field 1  of line number 1 in table T as integer";
    EXPECT_XEL_THROW(named->getIntByPosition(1), Overflow, message);
    EXPECT_XEL_THROW(named->getIntByHeader("value"), Overflow, message);
    TableOfFile oneTable(env, "|NAMES,a,b\nx,"s + field + "\n");
    const XelCsvLine line = oneTable->getLineByNumber(0);
    const char* const unnamed =
        "XelCsvReader::XelOverflowException : OVERFLOW while reading field 1  of line number 1 as integer";
    EXPECT_XEL_THROW(line.getIntByPosition(1), Overflow, unnamed);
    EXPECT_XEL_THROW(line.getIntByHeader("b"), Overflow, unnamed);
  }
}

TEST(LineGetters, OrDefaultValueWordAnOverflowInATableTheirOwnWay) {
  for (const char* field : {"2147483648", "3000000000", "99999999999999999999"}) {
    SCOPED_TRACE(field);
    TestEnv env;
    const OneField named(env, field);
    const char* const message =
        "XelOverflowException : OVERFLOW while reading field 1  of line number 1 in table T as integer";
    EXPECT_XEL_THROW(named->getIntByPositionOrDefaultValue(1, 5), Overflow, message);
    EXPECT_XEL_THROW(named->getIntByHeaderOrDefaultValue("value", 5), Overflow, message);
    TableOfFile oneTable(env, "|NAMES,a,b\nx,"s + field + "\n");
    const XelCsvLine line = oneTable->getLineByNumber(0);
    const char* const unnamed =
        "XelCsvReader::XelOverflowException : OVERFLOW while reading field 1  of line number 1 as integer";
    EXPECT_XEL_THROW(line.getIntByPositionOrDefaultValue(1, 5), Overflow, unnamed);
    EXPECT_XEL_THROW(line.getIntByHeaderOrDefaultValue("b", 5), Overflow, unnamed);
  }
}

TEST(LineGetters, OrDefaultValueDoNotConsultErrno) {
  TestEnv env;
  const OneField line(env, "5");
  errno = ERANGE;
  EXPECT_EQ(line->getIntByPositionOrDefaultValue(1, 9), 5);
  errno = ERANGE;
  EXPECT_EQ(line->getIntByPosition(1), 5) << "cleared before";
}

TEST(LineGetters, ReadEveryOneOfTenThousandFields) {
  TestEnv env;
  TableOfFile table(env, "|KEYS,1,0\n" + std::string(9999, ',') + "\n");
  const XelCsvLine line = table->getLineByNumber(0);
  EXPECT_EQ(line.getNumberOfFields(), 10000);
  for (long field = 0; field < 10000; ++field) ASSERT_TRUE(line.emptyFieldByPosition(field));
  EXPECT_XEL_THROW(line.emptyFieldByPosition(10000), FieldNotFound,
                   fieldNotFound(10000, 1, "", "emptyFieldByPosition"));
}

TEST(PrintValueOfKeys, PrintsHeadingAndValueOfEachKey) {
  TestEnv env;
  TableOfFile table(env, "T|NAMES,Id,Name, Year \nT|KEYS,1,0,1\nT,17,x, 2004 \n", "T");
  EXPECT_EQ(printKeysOf(table->getLineByNumber(0), 2), "Key 0 (Id) = 17\nKey 1 (Year) =  2004 \n");
  EXPECT_STREQ(table->getFirstLine().getFields()[3], "Year") << "the heading is trimmed in place, the value is not";
}

TEST(PrintValueOfKeys, PrintsTheMarkerFieldWhereItStands) {
  TestEnv env;
  TableOfFile table(env, "|NAMES,Id,Name\n|KEYS,1,1\n17,x\n");
  EXPECT_EQ(printKeysOf(table->getLineByNumber(0), 2), "Key 0 (|NAMES) = 17\nKey 1 (Id) = x\n");
}

TEST(PrintValueOfKeys, PrintsColumnsWithoutHeadingLine) {
  TestEnv env;
  TableOfFile oneTable(env, "17,x\n");
  EXPECT_EQ(printKeysOf(oneTable->getLineByNumber(0), 2), "Key 0 (Column 0) = 17\nKey 1 (Column 1) = x\n");
  TableOfFile several(env, "T,17\n", "T");
  EXPECT_EQ(printKeysOf(several->getLineByNumber(0), 1), "Key 0 (Column 1) = 17\n");
}

TEST(PrintValueOfKeys, SaysThatThereIsNoKey) {
  TestEnv env;
  TableOfFile table(env, "U,1\nT\n", "T");
  EXPECT_EQ(printKeysOf(table->getLineByNumber(0), 1), "There is no key for line number 1\n");
}

TEST(PrintValueOfKeys, SaysThatALineIsEmpty) {
  TestEnv env;
  TableOfFile table(env, "a,b\n");
  XelCsvLine line;
  line.copy(table->getLineByNumber(0));
  line.copy(XelCsvLine());
  EXPECT_EQ(line.getNumberOfFields(), 0);
  EXPECT_EQ(printKeysOf(line, 1), "Empty Line!\n");
  line.end();
}

TEST(PrintValueOfKeys, PrintsNothingForAKeyPositionPastTheLine) {
  TestEnv env;
  FileSettings settings;
  settings.isCached = 0;
  TableOfFile table(env, "a,b\nc\n", nullptr, settings);
  EXPECT_EQ(printKeysOf(table->getLineByNumber(1), 2), "Key 0 (Column 0) = c\nKey 1 (Column 1) = \n");
}

TEST(PrintValueOfKeys, ChecksTheFieldOfTheHeadingLine) {
  TestEnv env;
  TableOfFile table(env, "|NAMES,a\n|KEYS,0,0,1\nx,y,z\n");
  const XelCsvLine line = table->getLineByNumber(0);
  const CoutCapture capture;
  EXPECT_XEL_THROW(line.printValueOfKeys(), FieldNotFound, fieldNotFound(2, 0, "", "getStringByPosition"));
  EXPECT_EQ(capture.getText(), "Key 0 (") << "the heading is looked for when its turn comes";
}

TEST(LineHandle, IsEmptyAtFirst) {
  XelCsvLine line;
  EXPECT_TRUE(line.isEmpty());
  EXPECT_EQ(line.getImpl(), nullptr);
  line.end();
  EXPECT_TRUE(line.isEmpty());
}

TEST(LineHandle, SharesItsLineWithItsCopies) {
  TestEnv env;
  TableOfFile table(env, " a ,b\n");
  const XelCsvLine line = table->getLineByNumber(0);
  XelCsvLine shared(line);
  EXPECT_STREQ(shared.getStringByPosition(0), "a");
  EXPECT_STREQ(line.getFields()[0], "a");
  EXPECT_EQ(shared.getImpl(), line.getImpl());
  shared.end();
  EXPECT_TRUE(shared.isEmpty());
  EXPECT_FALSE(line.isEmpty());
  EXPECT_STREQ(line.getStringByPosition(1), "b") << "a lent line is only let go";
}

TEST(LineHandle, BuiltFromTextHasTheFieldsOfTheLineFormattedLast) {
  TestEnv env;
  TableOfFile table(env, "T|NAMES,a,b\nT,v,w\n", "T");
  table->getLineByNumber(0);
  const std::string text = "T\0007\0x y\0"s;
  const std::unique_ptr<char[]> exact(new char[text.size()]);  // not a byte more: the sanitizer watches
  std::memcpy(exact.get(), text.data(), text.size());
  XelCsvLine line(exact.get(), *table, 77);
  exact[0] = 'Z';
  EXPECT_EQ(getFieldTexts(line), (Texts{"T", "7", "x y"}));
  EXPECT_EQ(line.getLineNumber(), 77);
  EXPECT_EQ(line.getEnv().getImpl(), env.get().getImpl());
  EXPECT_EQ(line.getIntByHeader("a"), 7);
  EXPECT_STREQ(line.getStringByHeader("b"), "x y");
  EXPECT_EQ(printKeysOf(line, 2), "Key 0 (a) = 7\nKey 1 (b) = x y\n");
  EXPECT_XEL_THROW(line.getStringByPosition(3), FieldNotFound, fieldNotFound(3, 77, "T", "getStringByPosition"));
  table->getLineByNumber(0);
  EXPECT_EQ(line.getIntByPosition(1), 7) << "the user owns it";
  line.end();
  EXPECT_TRUE(line.isEmpty());
  line.end();
}

TEST(LineHandle, BuiltFromTextReadsNoMoreThanALine) {
  TestEnv env;
  TableOfFile table(env, "a,b,c\n");
  const std::unique_ptr<char[]> text(new char[10000]);
  std::fill_n(text.get(), 10000, 'x');
  XelCsvLine line(text.get(), *table, 0);
  EXPECT_EQ(line.getNumberOfFields(), 3);
  EXPECT_EQ(line.getStringByPosition(0), std::string(9999, 'x'));
  EXPECT_STREQ(line.getStringByPosition(1), "");
  EXPECT_STREQ(line.getStringByPosition(2), "");
  line.end();
}

TEST(LineHandle, CopyIntoAnEmptyHandleIsTheUsers) {
  TestEnv env;
  TableOfFile table(env, "|NAMES,a,b\n v ,w\nx,y\n");
  XelCsvLine line;
  line.copy(table->getLineByNumber(0));
  EXPECT_STREQ(table->getLineByNumber(1).getStringByHeader("a"), "x");
  EXPECT_EQ(getFieldTexts(line), (Texts{" v ", "w"}));
  EXPECT_EQ(line.getLineNumber(), 1);
  EXPECT_STREQ(line.getStringByHeader("a"), "v");
  EXPECT_EQ(line.getFields()[1], line.getFields()[0] + 4);
  line.end();
  EXPECT_TRUE(line.isEmpty());
  line.end();
}

TEST(LineHandle, CopySharesNothing) {
  TestEnv env;
  TableOfFile table(env, " v ,w\n");
  const XelCsvLine source = table->getLineByNumber(0);
  XelCsvLine line;
  line.copy(source);
  EXPECT_STREQ(source.getStringByPosition(0), "v");
  EXPECT_STREQ(line.getFields()[0], " v ");
  XelCsvLine trimmed;
  trimmed.copy(source);
  EXPECT_EQ(trimmed.getFields()[1], trimmed.getFields()[0] + 2) << "the copy is packed";
  trimmed.end();
  line.end();
}

TEST(LineHandle, CopyOverwritesALine) {
  TestEnv env;
  TableOfFile table(env, "T,v,w\nU,1\n", "T");
  TableOfFile other(env, "x\n");
  XelCsvLine line;
  line.copy(table->getLineByNumber(0));
  const XelCsvLine alias = line;
  line.copy(other->getLineByNumber(0));
  EXPECT_EQ(getFieldTexts(alias), Texts{"x"}) << "copies of the handle see it";
  EXPECT_XEL_THROW(line.getStringByPosition(1), FieldNotFound, fieldNotFound(1, 0, "", "getStringByPosition"));
  line.copy(line);
  EXPECT_EQ(getFieldTexts(line), Texts{"x"});
  XelCsvLine lent = table->getLineByNumber(0);
  lent.copy(line);
  EXPECT_EQ(getFieldTexts(lent), Texts{"x"});
  EXPECT_EQ(getFieldTexts(table->getLineByNumber(0)), (Texts{"T", "v", "w"}));
  line.end();
}

TEST(LineHandle, CopyOfAnEmptyHandleIsEmpty) {
  TestEnv env;
  TableOfFile table(env, "a,b\n");
  XelCsvLine line;
  line.copy(XelCsvLine());
  EXPECT_TRUE(line.isEmpty());
  line.copy(table->getLineByNumber(0));
  line.copy(XelCsvLine());
  EXPECT_FALSE(line.isEmpty());
  EXPECT_EQ(line.getNumberOfFields(), 0);
  EXPECT_EQ(line.getFields(), nullptr);
  EXPECT_XEL_THROW(line.getStringByPosition(0), FieldNotFound, fieldNotFound(0, 0, "", "getStringByPosition"));
  XelCsvLine copy;
  copy.copy(line);
  EXPECT_EQ(copy.getNumberOfFields(), 0);
  EXPECT_EQ(printKeysOf(copy, 1), "Empty Line!\n");
  copy.end();
  line.end();
}

TEST(LineHandle, CopyWorksAcrossEnvironments) {
  TestEnv env;
  TestEnv otherEnv;
  TableOfFile table(env, "a,b\n");
  TableOfFile other(otherEnv, "c,d,e\n");
  XelCsvLine line;
  line.copy(table->getLineByNumber(0));
  line.copy(other->getLineByNumber(0));
  EXPECT_EQ(getFieldTexts(line), (Texts{"c", "d", "e"}));
  line.copy(table->getLineByNumber(0));
  EXPECT_EQ(getFieldTexts(line), (Texts{"a", "b"}));
  line.end();
}

TEST(LineHandle, OfAFieldThatIsTheWholeLongestLine) {
  TestEnv env;
  TableOfFile table(env, std::string(9999, 'x'));
  const XelCsvLine line = table->getLineByNumber(0);
  EXPECT_EQ(line.getStringByPosition(0), std::string(9999, 'x'));
  XelCsvLine copy;
  copy.copy(line);
  EXPECT_EQ(copy.getStringByPosition(0), std::string(9999, 'x'));
  copy.end();
}

TEST(LineHandle, LosesNothingWhenMemoryIsExhausted) {
  const long injected = forEachFailingAllocation([](XelEnv env) {
    TableOfFile table(env, "T|NAMES,a,b\nT,v,w\nT,x,y\n", "T");
    XelCsvLine line;
    const EndGuard<XelCsvLine> endLine(line);
    line.copy(table->getLineByNumber(0));
    const std::string text = "T\0p\0q\0"s;
    XelCsvLine built(text.c_str(), *table, 5);
    const EndGuard<XelCsvLine> endBuilt(built);
    try {
      line.copy(built);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(getFieldTexts(line), (Texts{"T", "v", "w"})) << "as before";
      throw;
    }
    EXPECT_STREQ(line.getStringByHeader("b"), "q");
    EXPECT_EQ(line.getFloatByHeaderOrDefaultValue("a", 1.0), 0.0);
    EXPECT_THROW(line.getIntByHeader("z"), ColumnHeaderNotFound);
    EXPECT_THROW(line.getIntByPosition(8), FieldNotFound);
    printKeysOf(line, 2);
  });
  EXPECT_GE(injected, 40);
}

TEST(LineGetters, NeedNoMemory) {
  TestEnv env;
  TableOfFile table(env, "T|NAMES,a,b\nT, 1 ,\n", "T");
  const XelCsvLine line = table->getLineByNumber(0);
  const long allocations = env.getAllocator().getAllocations();
  EXPECT_EQ(line.getFloatByHeader("a"), 1.0);
  EXPECT_EQ(line.getIntByHeader("a"), 1);
  EXPECT_STREQ(line.getStringByHeader("a"), "1");
  EXPECT_EQ(line.getIntByHeaderOrDefaultValue("b", 4), 4);
  EXPECT_EQ(env.getAllocator().getAllocations(), allocations);
}

// ---- Mistakes of the caller.

#ifndef NDEBUG
TEST(LineHandleDeathTest, UsingAnEmptyHandleIsAnAssertion) {
  const XelCsvLine empty;
  EXPECT_XEL_ASSERTION(empty.getFloatByPosition(0), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getIntByPosition(0), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getStringByPosition(0), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getFloatByHeader("a"), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getIntByHeader("a"), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getStringByHeader("a"), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getFloatByPositionOrDefaultValue(0, 1.0), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getIntByPositionOrDefaultValue(0, 1), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getStringByPositionOrDefaultValue(0, ""), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getFloatByHeaderOrDefaultValue("a", 1.0), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getIntByHeaderOrDefaultValue("a", 1), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.getStringByHeaderOrDefaultValue("a", ""), "line != nullptr");
  EXPECT_XEL_ASSERTION(empty.emptyFieldByPosition(0), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.emptyFieldByHeader("a"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getLineNumber(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNumberOfFields(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getFields(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getEnv(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.printValueOfKeys(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(XelCsvLine("a", XelCsvTableReader(), 0), "table != nullptr");
}
#endif
