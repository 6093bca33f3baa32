#include "check/XelCsvCodes.h"

void XelDescribeColumnCodes(XelCsvCatalogue& catalogue) {
  const XelCsvCheckParameters one = XelReadAsOneTable();
  XelCsvCheckParameters semicolons = one;
  semicolons.separators = ";";

  catalogue.set(XelCsvCode::IntOverflow,
                {"int-overflow",
                 XelCsvSeverity::Warning,
                 "integer of more than 32 bits",
                 "A column of integers holds one that does not fit in 32 bits. Where most of its integers do not, only "
                 "the first is told.",
                 "The integer getters throw XelOverflowException; the float getters read the value.",
                 "Read the column as float or text, or write smaller numbers.",
                 {"3000000000\n", one},
                 {"2000000000\n", one}});

  catalogue.set(
      XelCsvCode::NotANumber,
      {"not-a-number",
       XelCsvSeverity::Warning,
       "text in a column of numbers",
       "A field of a column whose other values are numbers holds a text, such as n/a. A text is told when there "
       "are at least 4 numbers in the column, and 10 more for each further text; lines with another number of fields than the table are not looked at.",
       "It reads without a word as 0. Only an empty field reads as the default value of a getter that has one.",
       "Leave the field empty.",
       {"1\n2\n3\n4\nn/a\n", one},
       {"1\n2\n3\n4\n5\n", one}});

  catalogue.set(XelCsvCode::TrailingText,
                {"trailing-text",
                 XelCsvSeverity::Warning,
                 "text behind a number",
                 "A field of a column whose other values are numbers holds a number and more, such as 5kg.",
                 "The number reads without a word, and what is behind it is ignored.",
                 "Write the number alone.",
                 {"1\n2\n3\n4\n5kg\n", one},
                 {"1\n2\n3\n4\n5\n", one}});

  catalogue.set(
      XelCsvCode::DecimalMismatch,
      {"decimal-mismatch",
       XelCsvSeverity::Warning,
       "number with another decimal character",
       "A field of a column of numbers is written with a comma where the decimal character is a point, or with "
       "a point where it is another. The first of the column is told.",
       "A comma ends the number: 3,5 reads without a word as 3. A point is read as the decimal point whatever "
       "the decimal character is: 1.234 reads as 1.234 even if a thousand and more is meant.",
       "Read the file with its decimal character, and write numbers without thousands separators.",
       {"3,5\n", semicolons},
       {"3.5\n", semicolons}});
}
