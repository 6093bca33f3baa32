// Findings about the values of columns, and that the library does what they say.
#include "tests/check/Checking.h"
#include "tests/support/DecimalPoint.h"

namespace {

XelCsvCheckParameters germanNumbers() {
  XelCsvCheckParameters parameters = oneTable(";");
  parameters.decimal = ',';
  return parameters;
}

// A column of numbers from 1 to count.
std::string numbers(int count) {
  std::string text;
  for (int number = 1; number <= count; ++number) text += std::to_string(number) + '\n';
  return text;
}

}  // namespace

TEST(IntOverflow, ThrowsWhenItIsReadAsInteger) {
  CheckedFile file("|NAMES,id\n1\n2\n3\n4\n2147483648\n", oneTable());
  EXPECT_EQ(file.show(),
            "6:1 warning int-overflow: \"2147483648\" in column \"id\" does not fit in 32 bits: getIntByPosition(0) "
            "throws XelOverflowException, getFloatByPosition reads it\n");
  const XelCsvLine line = file.read().getLineByNumber(4);
  EXPECT_XEL_THROW(line.getIntByPosition(0), XelCsvReader::XelOverflowException,
                   "XelCsvReader::XelOverflowException : OVERFLOW while reading field 0  of line number 5 as integer");
  EXPECT_EQ(line.getFloatByPosition(0), 2147483648.0);
}

TEST(IntOverflow, OfAColumnOfLargeIntegersIsToldOnce) {
  CheckedFile file("20040101000000\n20040102000000\n20040103000000\n1\n", oneTable());
  ASSERT_EQ(file.getFindings().size(), 1U);
  EXPECT_EQ(file.getFindings()[0].line, 1);
}

TEST(IntOverflow, OfExceptionsIsToldOfEach) {
  CheckedFile file(numbers(20) + "-2147483649\n99999999999999999999\n-2147483648\n", oneTable());
  ASSERT_EQ(file.getFindings().size(), 2U);
  EXPECT_EQ(file.getFindings()[0].line, 21);
  EXPECT_EQ(file.getFindings()[1].line, 22);
}

TEST(IntOverflow, OfExceptionsIsToldOfEachHoweverMany) {
  std::string text;
  for (int line = 0; line < 100; ++line) text += numbers(10) + "3000000000\n";
  EXPECT_EQ(CheckedFile(text, oneTable(), only({"int-overflow"})).getFindings().size(), 100U);
}

TEST(IntOverflow, OfManyLargeIntegersInFrontOfOthersIsToldOnce) {
  std::string text;
  for (int line = 0; line < 100; ++line) text += "30000000" + std::to_string(100 + line) + '\n';
  EXPECT_EQ(CheckedFile(text, oneTable()).getFindings().size(), 1U);
  EXPECT_EQ(CheckedFile(text + numbers(2000), oneTable()).getFindings().size(), 1U);
}

TEST(IntOverflow, IsNoneInAColumnOfFloats) {
  EXPECT_EQ(CheckedFile("3000000000\n1.5\n", oneTable()).show(), "");
  EXPECT_EQ(CheckedFile("1.5\n3000000000\n", oneTable()).show(), "");
}

TEST(NotANumber, ReadsAsZero) {
  CheckedFile file("|NAMES,price\n|KEYS,0\n" + numbers(4) + "n/a\n", oneTable(), only({"not-a-number"}));
  EXPECT_EQ(file.show(),
            "7:1 warning not-a-number: \"n/a\" in column \"price\", a column of numbers, reads silently as 0\n");
  const XelCsvLine line = file.read().getLineByNumber(4);
  EXPECT_EQ(line.getFloatByPosition(0), 0.0);
  EXPECT_EQ(line.getIntByPositionOrDefaultValue(0, 17), 0);
}

TEST(NotANumber, IsToldWhenThereAreEnoughNumbers) {
  EXPECT_EQ(CheckedFile(numbers(3) + "n/a\n", oneTable()).show(), "");
  EXPECT_EQ(CheckedFile(numbers(4) + "n/a\n", oneTable()).getFindings().size(), 1U);
  EXPECT_EQ(CheckedFile("x\ny\n" + numbers(13), oneTable()).show(), "");
  CheckedFile file("x\ny\n" + numbers(14), oneTable());
  ASSERT_EQ(file.getFindings().size(), 2U);
  EXPECT_EQ(file.getFindings()[0].line, 1);
  EXPECT_EQ(file.getFindings()[1].line, 2);
}

TEST(NotANumber, IsToldOfEachHoweverMany) {
  std::string text;
  for (int line = 0; line < 100; ++line) text += numbers(10) + "n/a\n";
  EXPECT_EQ(CheckedFile(text, oneTable(), only({"not-a-number"})).getFindings().size(), 100U);
}

TEST(NotANumber, IsNoneInAColumnOfTexts) {
  std::string text;
  for (int line = 0; line < 33; ++line) text += "text " + std::to_string(line) + '\n';
  EXPECT_EQ(CheckedFile(text + numbers(1000), oneTable()).show(), "");
}

TEST(NotANumber, IsNoEmptyFieldAndNoSpellingOfInfinity) {
  EXPECT_EQ(
      CheckedFile("|NAMES,a,b\n|KEYS,0,1\n1,1\n2,2\n3,3\n4,4\n,5\n  ,6\n+INF,7\n-Infinity,8\nnan,9\nU,10\n+1.#INF,11\n",
                  oneTable())
          .show(),
      "");
}

TEST(TrailingText, IsIgnored) {
  const DecimalPoint point;
  CheckedFile file("|NAMES,weight\n" + numbers(4) + "5.5 kg\n", oneTable());
  EXPECT_EQ(file.show(),
            "6:1 warning trailing-text: \"5.5 kg\" in column \"weight\", a column of numbers, reads silently as 5.5\n");
  EXPECT_EQ(file.read().getLineByNumber(4).getFloatByPosition(0), 5.5);
  EXPECT_EQ(file.read().getLineByNumber(4).getIntByPosition(0), 5);
}

TEST(DecimalMismatch, OfACommaEndsTheNumber) {
  const DecimalPoint point;
  CheckedFile file("|NAMES;price\n3,5\n1.234,5\n4,25\n", oneTable(";"));
  EXPECT_EQ(
      file.show(),
      "2:1 warning decimal-mismatch: \"3,5\" in column \"price\" is written with ',' where the decimal character is "
      "'.', and reads silently as 3; 3 fields of the column in all\n");
  EXPECT_EQ(file.read().getLineByNumber(0).getFloatByPosition(0), 3.0);
}

TEST(DecimalMismatch, OfAPointIsReadAsDecimalPoint) {
  const DecimalPoint point;
  CheckedFile file("|NAMES;price\n1.234\n2,5\n1.234.567,8\n3,5\n", germanNumbers());
  EXPECT_EQ(
      file.show(),
      "2:1 warning decimal-mismatch: \"1.234\" in column \"price\" is written with '.' where the decimal character "
      "is ',', and reads silently as 1.234; 2 fields of the column in all\n");
  EXPECT_EQ(file.read().getLineByNumber(0).getFloatByPosition(0), 1.234);
}

TEST(DecimalMismatch, ShowsADecimalCharacterThatIsNone) {
  XelCsvCheckParameters parameters = oneTable();
  parameters.decimal = '\t';
  const CheckedFile file("3.5\n4.5\n", parameters);
  ASSERT_EQ(file.getFindings().size(), 1U);
  EXPECT_EQ(file.getFindings()[0].message,
            "\"3.5\" in the column at position 0 is written with '.' where the decimal character is '\\x09', and reads "
            "silently as 3.5; 2 fields of the column in all");
}

TEST(DecimalMismatch, IsOfTheFieldThatHasIt) {
  CheckedFile file("2,5;1.5\n3,5;2,5\n", germanNumbers());
  ASSERT_EQ(file.getFindings().size(), 1U);
  EXPECT_EQ(file.getFindings()[0].column, 5);
}

TEST(DecimalMismatch, IsNoneInDatesAndLists) {
  EXPECT_EQ(CheckedFile("01.02.2004\n03.02.2004\n", germanNumbers()).show(), "");
  EXPECT_EQ(CheckedFile("1,2,3\n4,5\n", oneTable(";"), only({"decimal-mismatch"})).show(), "");
}

TEST(ColumnChecks, LeaveOutLinesOfOtherLengths) {
  CheckedFile file("|NAMES,a\n" + numbers(4) + "n/a,x\n", oneTable(), only({"not-a-number"}));
  EXPECT_EQ(file.show(), "");
}

TEST(ColumnChecks, LeaveOutTheNameOfTheTable) {
  EXPECT_EQ(CheckedFile("3000000000,1\n3000000000,2\n", manyTables()).show(), "");
}
