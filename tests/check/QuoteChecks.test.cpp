// Findings about quotes, and that the library does what they say.
#include "tests/check/Checking.h"

namespace {

// The codes and columns of the findings in a line.
std::string placesIn(const std::string& line) {
  CheckedFile file(line + '\n', oneTable());
  std::string shown;
  for (const XelCsvFinding& finding : file.getFindings()) {
    shown +=
        std::string(finding.code) + '@' + std::to_string(finding.column) + '+' + std::to_string(finding.length) + ' ';
  }
  return shown;
}

}  // namespace

TEST(UnclosedQuote, ReadsTheRestOfTheLineAsOneField) {
  CheckedFile file("1,5\" pipe,7\n2,\"a,b\",8\n", oneTable(), only({"unclosed-quote"}));
  EXPECT_EQ(file.show(),
            "1:4 error unclosed-quote: nothing closes this quote in its line, which it does not leave: the rest of the "
            "line, separators included, reads silently as one field\n");
  EXPECT_EQ(file.read(false).getLineByNumber(0).getNumberOfFields(), 2);
  EXPECT_STREQ(file.read(false).getLineByNumber(0).getStringByPosition(1), "5 pipe,7");
}

TEST(StrayQuote, VanishesAndSwitchesQuoting) {
  CheckedFile file("a\"b,c\"d\n", oneTable());
  EXPECT_EQ(file.show(),
            "1:2 warning stray-quote: this quote is not at an end of its field: the field reads silently without its "
            "quotes, and a separator between them as text\n");
  EXPECT_STREQ(file.read().getLineByNumber(0).getStringByPosition(0), "ab,cd");
}

TEST(DoubledQuote, YieldsNoQuote) {
  CheckedFile file("\"say \"\"hello\"\"\"\n", oneTable());
  EXPECT_EQ(file.show(),
            "1:6 warning doubled-quote: a doubled quote yields no quote: the field reads silently without it\n");
  EXPECT_STREQ(file.read().getLineByNumber(0).getStringByPosition(0), "say hello");
}

TEST(QuoteChecks, TellTheFirstOfEachKindInALine) {
  EXPECT_EQ(placesIn("\"a\",\"b, c\", \"d\" ,\"\""), "");
  EXPECT_EQ(placesIn("\"\"\"a\"\"\""), "doubled-quote@2+2 ");
  EXPECT_EQ(placesIn("\"a\"b"), "stray-quote@3+1 ");
  EXPECT_EQ(placesIn("\"a\" b"), "stray-quote@3+1 ");
  EXPECT_EQ(placesIn("a \"b\""), "stray-quote@3+1 ");
  EXPECT_EQ(placesIn("a\"\"b"), "stray-quote@2+1 ");
  EXPECT_EQ(placesIn("\"a\"\"b\",c\"d\""), "stray-quote@9+1 doubled-quote@3+2 ");
  EXPECT_EQ(placesIn("\"a\"\"b"), "unclosed-quote@1+1 ");
  EXPECT_EQ(placesIn("a\"b,\"c\""), "unclosed-quote@7+1 ");
  EXPECT_EQ(placesIn("\"\"\""), "unclosed-quote@1+1 ");
  EXPECT_EQ(placesIn("# a \" comment"), "empty-table@0+0 ");
}

TEST(QuoteChecks, LookNoFurtherThanTheLibraryReads) {
  CheckedFile file(std::string("a\0\"b\n", 5), oneTable(), only({"unclosed-quote"}));
  EXPECT_EQ(file.show(), "");
}

TEST(QuoteChecks, TakeTheQuoteOfTheFile) {
  XelCsvCheckParameters parameters = oneTable();
  parameters.quote = '\'';
  EXPECT_EQ(CheckedFile("a \" b\n'c'\n", parameters).show(), "");
  EXPECT_EQ(CheckedFile("it's\n", parameters).getFindings().size(), 1U);
}
