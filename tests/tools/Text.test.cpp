// Texts of the program: widths, escapes, words, numbers.
#include <gtest/gtest.h>

#include "tools/Errors.h"
#include "tools/text/Escape.h"
#include "tools/text/Json.h"
#include "tools/text/Number.h"
#include "tools/text/Utf8.h"
#include "tools/text/Width.h"
#include "tools/text/Words.h"
#include "tools/text/Wrap.h"

namespace xeltools {
namespace {

TEST(Width, CountsTheCellsOfATerminal) {
  struct Case {
    const char* text;
    std::size_t width;
  };
  const Case cases[] = {
      {"", 0},
      {"plain", 5},
      {"M\xC3\xBCnchen", 7},                        // u with two dots, one character
      {"e\xCC\x81", 1},                             // e and an accent that stands on it
      {"\xE6\x9D\xB1\xE4\xBA\xAC", 4},              // Tokyo in Japanese
      {"\xEC\x84\x9C\xEC\x9A\xB8", 4},              // Seoul in Korean
      {"\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB", 2},  // a syllable of Korean out of three parts
      {"\xF0\x9F\x98\x80", 2},                      // a smiling face
      {"\xEF\xBC\xA1", 2},                          // a wide A
      {"\xEF\xBD\xB1", 1},                          // a narrow character of Japanese
      {"a\xC2\xAD"
       "b",
       3},                  // a soft hyphen is seen
      {"\xE2\x80\x8B", 0},  // a blank of no width
      {"\xFF\xE9", 2},      // no characters at all
  };
  for (const Case& it : cases) EXPECT_EQ(getWidth(std::string_view(it.text)), it.width) << it.text;
}

TEST(Width, CutsWithAnEllipsisInTheLastCell) {
  EXPECT_EQ(cutToWidth("Deutschland", 11), "Deutschland");
  EXPECT_EQ(cutToWidth("Deutschland", 8), "Deutsch\xE2\x80\xA6");
  EXPECT_EQ(cutToWidth("\xE6\x9D\xB1\xE4\xBA\xAC", 3), "\xE6\x9D\xB1\xE2\x80\xA6");
  EXPECT_EQ(cutToWidth("\xE6\x9D\xB1\xE4\xBA\xAC", 2), "\xE2\x80\xA6") << "half a character does not fit";
  EXPECT_EQ(cutToWidth("x", 0), "");
}

TEST(Utf8, TellsCharactersFromBytesThatAreNone) {
  struct Case {
    const char* text;
    bool isValid;
  };
  const Case cases[] = {
      {"a", true},
      {"\xC3\xA9", true},
      {"\xE2\x82\xAC", true},
      {"\xF4\x8F\xBF\xBF", true},   // U+10FFFF
      {"\xF4\x90\x80\x80", false},  // beyond
      {"\xC3", false},
      {"\xE9"
       "a",
       false},
      {"\xC0\x80", false},  // a byte 0 that takes two
      {"\xE0\x80\xAF", false},
      {"\xED\xA0\x80", false},  // half of a pair of UTF-16
      {"\x80", false},
      {"\xF5\x80\x80\x80", false},
  };
  for (const Case& it : cases) EXPECT_EQ(isUtf8(it.text), it.isValid) << makePrintable(it.text);
}

TEST(Utf8, WritesWhatItReads) {
  for (const char32_t code : {0x41U, 0xE9U, 0x20ACU, 0x1F600U, 0x10FFFFU}) {
    std::string text;
    appendCharacter(text, code);
    const Character read = readCharacter(text, 0);
    EXPECT_TRUE(read.isValid);
    EXPECT_EQ(read.code, code);
    EXPECT_EQ(read.bytes, text.size());
  }
}

TEST(Escape, WritesOutWhatATerminalWouldObeyOrHide) {
  struct Case {
    std::string text;
    const char* printable;
  };
  const Case cases[] = {
      {"plain \\ text", "plain \\ text"},
      {"\x1b[31m", "\\x1b[31m"},
      {"a\tb\r\n", "a\\tb\\r\\n"},
      {std::string("a\0b", 3), "a\\x00b"},
      {"\x7F", "\\x7f"},
      {"\xC2\x9B", "\\u{9b}"},        // a control sequence in one character
      {"\xE2\x80\xAE", "\\u{202e}"},  // turns the direction of writing
      {"\xE2\x81\xA6", "\\u{2066}"},
      {"\xEF\xBB\xBF", "\\u{feff}"},
      {"caf\xE9", "caf\\xe9"},
      {"caf\xC3\xA9", "caf\xC3\xA9"},
  };
  for (const Case& it : cases) EXPECT_EQ(makePrintable(it.text), it.printable);
}

TEST(Json, WritesOutWhatATerminalWouldObey) {
  EXPECT_EQ(toJson("plain"), R"("plain")");
  EXPECT_EQ(toJson("a\"b\\c\n"), R"("a\"b\\c\n")");
  EXPECT_EQ(toJson("\x1b\x7f"), R"("\u001b\u007f")");
  EXPECT_EQ(toJson("\xC2\x9B\xE2\x80\xAE"), R"("\u009b\u202e")");
  EXPECT_EQ(toJson("caf\xC3\xA9 \xE9"), "\"caf\xC3\xA9 \xEF\xBF\xBD\"");
  EXPECT_EQ(toJson(std::vector<std::string>{"a", "b"}), R"(["a", "b"])");
}

TEST(Escape, MakesLiteralsOfCpp) {
  EXPECT_EQ(makeLiteral(std::string_view(",\t\"\\")), R"(",\t\"\\")");
  EXPECT_EQ(makeLiteral(std::string_view("\x01"
                                         "7")),
            R"("\0017")");
  EXPECT_EQ(makeLiteral('\''), R"('\'')");
  EXPECT_EQ(makeLiteral('\xE9'), R"('\351')");
}

TEST(Escape, MakesWordsOfAShell) {
  EXPECT_EQ(makeShellWord("data/file-1.csv"), "data/file-1.csv");
  EXPECT_EQ(makeShellWord("two words"), "'two words'");
  EXPECT_EQ(makeShellWord("it's"), R"('it'\''s')");
  EXPECT_EQ(makeShellWord(""), "''");
}

TEST(Words, SplitsOptionsAsAShellDoes) {
  using Words = std::vector<std::string>;
  EXPECT_EQ(splitOptions(" --multi\t--sep ';' \n# all\n--quote \"'\"", "x"),
            (Words{"--multi", "--sep", ";", "--quote", "'"}));
  EXPECT_EQ(splitOptions("--comment '#' --sep=a#b", "x"), (Words{"--comment", "#", "--sep=a#b"}));
  EXPECT_EQ(splitOptions(R"(a\ b '\t' \\)", "x"), (Words{"a b", "\\t", "\\"}));
  EXPECT_EQ(splitOptions("''", "x"), (Words{""}));
  EXPECT_TRUE(splitOptions("", "x").empty());
  EXPECT_THROW(splitOptions("--sep '", "x"), UserError);
}

TEST(Words, MeasuresHowFarTextsAreApart) {
  struct Case {
    const char* left;
    const char* right;
    std::size_t distance;
  };
  const Case cases[] = {
      {"", "", 0},    {"abc", "abc", 0},        {"abc", "abd", 1},      {"abc", "bc", 1}, {"shwo", "show", 1},
      {"", "abc", 3}, {"kitten", "sitting", 3}, {"a", "abcdefghij", 5},  // 5: more than the limit of 4
  };
  for (const Case& it : cases) EXPECT_EQ(getDistance(it.left, it.right, 4), it.distance) << it.left << ' ' << it.right;
}

TEST(Words, FindsWhatWasMeant) {
  EXPECT_EQ(findSimilar("distanse", {"market", "distance"}), "distance");
  EXPECT_EQ(findSimilar("MARKET", {"market", "distance"}), "market");
  EXPECT_EQ(findSimilar("price", {"market", "distance"}), "");
}

TEST(Number, TellsNumbersFromOtherTexts) {
  struct Case {
    const char* text;
    bool isNumber;
    bool isJson;
    bool isInteger;
    bool isReal;
  };
  const Case cases[] = {
      {"12", true, true, true, true},
      {"-7", true, true, true, true},
      {"0", true, true, true, true},
      {"-0", true, true, false, false},
      {"-0.5", true, true, false, true},
      {"+5", true, false, false, false},
      {"007", true, false, false, false},
      {"1.50", true, true, false, true},
      {".5", true, false, false, false},
      {"5.", true, false, false, false},
      {"1e5", true, true, false, true},
      {"1e999", true, true, false, false},
      {"123456789012345678", true, true, true, false},
      {"1234567890123456789", true, true, false, false},
      {"+INF", true, false, false, false},
      {"", false, false, false, false},
      {"-", false, false, false, false},
      {"1e", false, false, false, false},
      {"12a", false, false, false, false},
      {" 1", false, false, false, false},
      {"0x10", false, false, false, false},
      {"nan", false, false, false, false},
  };
  for (const Case& it : cases) {
    EXPECT_EQ(isNumber(it.text), it.isNumber) << it.text;
    EXPECT_EQ(isJsonNumber(it.text), it.isJson) << it.text;
    EXPECT_EQ(isPlainInteger(it.text), it.isInteger) << it.text;
    EXPECT_EQ(isPlainReal(it.text), it.isReal) << it.text;
  }
}

TEST(Number, SaysBytesForPeople) {
  EXPECT_EQ(formatBytes(0), "0 bytes");
  EXPECT_EQ(formatBytes(1), "1 byte");
  EXPECT_EQ(formatBytes(999), "999 bytes");
  EXPECT_EQ(formatBytes(1000), "1.0 kB");
  EXPECT_EQ(formatBytes(999999), "1.0 MB");
  EXPECT_EQ(formatBytes(2147483648), "2.1 GB");
}

TEST(Wrap, BreaksLinesAtBlanks) {
  EXPECT_EQ(wrap("one two three", 9, 2, 0), "one two\n  three");
  EXPECT_EQ(wrap("one two three", 9, 2, 6), "one\n  two\n  three");
  EXPECT_EQ(wrap("averylongword x", 5, 0, 0), "averylongword\nx");
  EXPECT_EQ(wrap("", 5, 0, 0), "");
}

}  // namespace
}  // namespace xeltools
