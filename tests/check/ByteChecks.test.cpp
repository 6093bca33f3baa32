// Findings about bytes, and that the library does what they say.
#include "tests/check/Checking.h"

TEST(Bom, HidesTheFirstTable) {
  CheckedFile file("\xEF\xBB\xBFStock,7\n", manyTables());
  EXPECT_EQ(file.show(),
            "1:1 error bom: the file begins with a byte-order mark, which the library takes for a part of the first "
            "field: getTableByName(\"Stock\") throws XelTableNotFoundException\n");
  EXPECT_XEL_THROW(file.read().getTableByName("Stock"), XelCsvReader::XelTableNotFoundException,
                   "XelCsvReader::XelTableNotFoundException : No Table having this name Stock.");
}

TEST(Bom, MakesTheFirstNumberZero) {
  CheckedFile file(
      "\xEF\xBB\xBF"
      "7\n",
      oneTable());
  EXPECT_EQ(file.show(),
            "1:1 error bom: the file begins with a byte-order mark, which the library takes for a part of the first "
            "field: as text it reads with it, as a number as 0\n");
  EXPECT_STREQ(file.read().getLineByNumber(0).getStringByPosition(0),
               "\xEF\xBB\xBF"
               "7");
  EXPECT_EQ(file.read().getLineByNumber(0).getIntByPosition(0), 0);
}

TEST(Bom, DoesNoHarmInFrontOfTheHeadingsOfAOneTableFile) {
  CheckedFile file("\xEF\xBB\xBF|NAMES,a\n7\n", oneTable());
  EXPECT_EQ(file.show(),
            "1:1 note bom: the file begins with a byte-order mark, which the library takes for a part of the first "
            "field: in front of the headings it does no harm\n");
  EXPECT_EQ(file.read().getLineByNumber(0).getIntByHeader("a"), 7);
}

TEST(Bom, MakesACommentALineOfData) {
  CheckedFile file("\xEF\xBB\xBF# items\n7\n", oneTable(), only({"bom"}));
  EXPECT_EQ(file.show(),
            "1:1 error bom: the file begins with a byte-order mark, which the library takes for a part of the first "
            "field: the comment behind it is no comment but a line of data\n");
  EXPECT_EQ(file.read().getNumberOfItems(), 2);
}

TEST(Bom, IsNoneWhereAByteOfItSeparates) {
  for (const char* separators : {"\xEF", "\xBB", "\xBF"}) {
    XelCsvCheckParameters parameters = oneTable();
    parameters.separators = separators;
    CheckedFile one("\xEF\xBB\xBFStock\n", parameters, only({"bom"}));
    EXPECT_EQ(one.show(), "");
    parameters.isMultiTable = true;
    CheckedFile many("\xEF\xBB\xBFStock\n", parameters, only({"bom"}));
    EXPECT_EQ(many.show(), "");
  }
}

TEST(Utf16, ReadsOneLetterOfALine) {
  const std::string text(
      "\xFF\xFE"
      "a\0,\0b\0\n\0c\0\n\0",
      14);
  CheckedFile file(text, oneTable());
  EXPECT_EQ(
      file.show(),
      "1:1 error utf16: the text is UTF-16, of which every second byte may be 0: the library ends each line there "
      "and reads one letter of it; nothing else of the file was looked at\n");
  EXPECT_STREQ(file.read().getLineByNumber(0).getStringByPosition(0),
               "\xFF\xFE"
               "a");
  EXPECT_EQ(file.read().getLineByNumber(0).getNumberOfFields(), 1);
}

TEST(Utf16, IsToldWithoutByteOrderMarkAndInBothOrders) {
  for (const std::string& text : {std::string("a\0,\0b\0\n\0", 8), std::string("\0a\0,\0b\0\n", 8)}) {
    CheckedFile file(text, oneTable());
    ASSERT_EQ(file.getFindings().size(), 1U);
    EXPECT_STREQ(file.getFindings()[0].code, "utf16");
  }
}

TEST(InvalidUtf8, IsToldOnceInALineWhereTheCharacterBegins) {
  CheckedFile file("caf\xE9\xE9\n\xC3\xA9\n\xE2\x82,\n\xC3", oneTable(), only({"invalid-utf8"}));
  EXPECT_EQ(file.show(),
            "1:4 warning invalid-utf8: the byte 0xE9 begins no character of UTF-8 here; the field reads silently with "
            "the bytes that there are\n"
            "3:1 warning invalid-utf8: the byte 0xE2 begins no character of UTF-8 here; the field reads silently with "
            "the bytes that there are\n"
            "4:2 warning invalid-utf8: the file ends inside a character of UTF-8; the field reads silently with the "
            "bytes that there are\n");
  EXPECT_STREQ(file.read(false).getLineByNumber(0).getStringByPosition(0), "caf\xE9\xE9");
}

TEST(InvalidUtf8, KnowsWhichBytesMakeCharacters) {
  for (const char* text : {"\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xF0\x90\x80\x80",
                           "\xF4\x8F\xBF\xBF"}) {
    EXPECT_EQ(CheckedFile(std::string(text) + '\n', oneTable()).show(), "") << text;
  }
  for (const char* text : {"\x80", "\xC0\xAF", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                           "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xC3,"}) {
    CheckedFile file(std::string(text) + '\n', oneTable());
    ASSERT_EQ(file.getFindings().size(), 1U) << text;
    EXPECT_STREQ(file.getFindings()[0].code, "invalid-utf8");
  }
}

TEST(InvalidUtf8, SeesACharacterThatALongLineIsCutIn) {
  const std::string text = std::string(9998, 'x') + "\xC3\xA9\n";
  EXPECT_EQ(CheckedFile(text, oneTable(), only({"invalid-utf8"})).show(), "");
}

TEST(Nul, EndsTheLine) {
  CheckedFile file(std::string("a,b\0c,d\n", 8), oneTable());
  EXPECT_EQ(file.show(),
            "1:4 error nul: a zero byte ends the line for the library, which does not read the 3 bytes behind it\n");
  EXPECT_EQ(file.read().getLineByNumber(0).getNumberOfFields(), 2);
  EXPECT_STREQ(file.read().getLineByNumber(0).getStringByPosition(1), "b");
}

TEST(ControlCharacter, ReadsAsAPartOfItsField) {
  CheckedFile file(
      "a\x1B"
      "b,c\x7F\n",
      oneTable());
  EXPECT_EQ(file.show(),
            "1:2 warning control-character: the control character 0x1B reads silently as a part of its field\n");
  EXPECT_STREQ(file.read().getLineByNumber(0).getStringByPosition(0),
               "a\x1B"
               "b");
}

TEST(ControlCharacter, IsNoneWhereTheFileIsWrittenWithIt) {
  EXPECT_EQ(CheckedFile("a\x01"
                        "b\tc\n",
                        oneTable("\x01"))
                .show(),
            "");
}

TEST(LoneCr, EndsTheLine) {
  CheckedFile file("a\rb\nc\r\r\nd\r", oneTable(), only({"lone-cr"}));
  EXPECT_EQ(file.show(),
            "1:2 error lone-cr: a carriage return inside the line ends it for the library, which does not read "
            "the 1 byte behind it\n");
  XelCsvReader& reader = file.read();
  EXPECT_STREQ(reader.getLineByNumber(0).getStringByPosition(0), "a");
  EXPECT_STREQ(reader.getLineByNumber(1).getStringByPosition(0), "c");
  EXPECT_EQ(reader.getNumberOfItems(), 3);
}

TEST(MixedEol, IsToldOnceAndReadsTheSame) {
  CheckedFile file("a\nb\r\nc\r\n", oneTable());
  EXPECT_EQ(file.show(),
            "2:2 note mixed-eol: this is the first line that ends with a carriage return and a line feed, the lines "
            "before end with a line feed alone; both read the same\n");
  EXPECT_STREQ(file.read().getLineByNumber(1).getStringByPosition(0), "b");
  EXPECT_EQ(CheckedFile("a\r\nb\nc\n", oneTable()).show(),
            "2:2 note mixed-eol: this is the first line that ends with a line feed alone, the lines before end with a "
            "carriage return and a line feed; both read the same\n");
}

TEST(NoFinalEol, ReadsLikeAnyOtherLine) {
  CheckedFile file("a\nb", oneTable());
  EXPECT_EQ(file.show(), "2:2 note no-final-eol: no line feed ends the last line: it reads like any other\n");
  EXPECT_EQ(file.read().getNumberOfItems(), 2);
}

TEST(NoFinalEol, MakesAHeadingLineALineOfDataToo) {
  CheckedFile file("|NAMES,a", oneTable());
  EXPECT_EQ(
      file.show(),
      "1:9 note no-final-eol: no line feed ends the last line: it reads as a heading or key line, and silently as "
      "a line of data too\n");
  EXPECT_EQ(file.read().getNumberOfItems(), 1);
}

TEST(LongLine, IsReadAsSeveral) {
  CheckedFile file(std::string(9998, 'x') + "yz,8\n7\n", oneTable(), only({"long-line"}));
  EXPECT_EQ(
      file.show(),
      "1:10000 error long-line: this line goes on behind 9999 bytes: the library reads silently what follows as a "
      "line of its own, line number 1\n");
  XelCsvReader& reader = file.read(false);
  EXPECT_STREQ(reader.getLineByNumber(1).getStringByPosition(0), "z");
  EXPECT_EQ(reader.getLineByNumber(1).getLineNumber(), 1);
  EXPECT_EQ(reader.getLineByNumber(2).getLineNumber(), 2);
}

TEST(LongLine, IsToldOnceHoweverLong) {
  CheckedFile file(std::string(50000, 'x') + "\na\n", oneTable(), only({"long-line", "no-final-eol"}));
  EXPECT_EQ(file.getFindings().size(), 1U);
}

TEST(LongLine, OfWhichOnlyTheLineFeedIsLeftCountsOneMore) {
  CheckedFile file(std::string(9999, 'x') + "\n7\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "1:10000 note long-line: this line has 9999 bytes before its line feed, which the library reads as an empty "
      "line of its own: line numbers count one more from here on\n");
  EXPECT_EQ(file.read().getLineByNumber(1).getLineNumber(), 2);
}
