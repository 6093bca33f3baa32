#include "csv/line/XelCsvVectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "csv/line/XelCsvText.h"
#include "tests/support/DataFile.h"
#include "tests/support/TestEnv.h"
#include "tests/support/VectorLevels.h"
#include "xelcsv/XelCsvReader.h"

namespace {

using namespace std::string_literals;

// The same numbers in every run.
std::mt19937 seedWith(unsigned seed) { return std::mt19937(seed); }

struct Settings {
  const char* separators;
  char decimal;
  char quote;
};

// One separator, a few and many, with and without a decimal character to replace and spaces to drop; a quote that is none,
// separators above 127, and sets that no vector is compared with.
const Settings AllSettings[] = {{",", '.', '"'},         {";", ',', '"'},          {",;\t", '.', '"'},
                                {";:", ',', '\''},       {",;\t|", '.', '"'},      {";:\t|/", ',', '\''},
                                {",;:|/+*\t", '.', '"'}, {",\xA7", '.', '"'},      {"\xFF\x80", 'e', '\xFE'},
                                {",", '\n', '\r'},       {",;:|/+*\t-", '.', '"'}, {", ", '.', '"'},
                                {" ", '.', '"'},         {" ;", ',', '"'},         {" ,;:|/+*", '.', '"'},
                                {" ,;:|/+*", '!', '"'},  {" ", ',', '"'},          {"", '.', '"'}};

// What formatting made of a line, in memory that is used again for the next one.
class Formatted {
 public:
  explicit Formatted(long longest)
      : text(static_cast<std::size_t>(longest + 1 + XelTextPadding)),
        starts(static_cast<std::size_t>(longest + 1 + XelFieldsPadding)) {}

  void format(const char* from, const char* end, const XelCsvFormat& format) {
    result = XelGetPaddedFormatter(format)(from, end, text.data(), format, starts.data());
  }

  bool operator==(const Formatted& other) const {
    return result.length == other.result.length && result.fields == other.result.fields &&
           result.stop == other.result.stop &&
           std::equal(text.begin(), text.begin() + result.length, other.text.begin()) && hasSameStarts(other);
  }

  std::string getText() const { return {text.data(), static_cast<std::size_t>(result.length)}; }

 private:
  bool hasSameStarts(const Formatted& other) const {
    for (std::size_t field = 0; field < static_cast<std::size_t>(result.fields); ++field) {
      if (starts[field] - text.data() != other.starts[field] - other.text.data()) return false;
    }
    return true;
  }

  std::vector<char> text;
  std::vector<char*> starts;
  XelFormattedLine result{};
};

// Compares the vectors' formatting with the plain one.
class Comparison {
 public:
  Comparison(const Settings& settings, long longest)
      : format(settings.separators, settings.decimal, settings.quote), expected(longest), got(longest) {}

  // Formats length bytes of a text that has padding behind them; false when a level differs.
  bool isSame(const std::string& padded, long length) {
    const char* from = padded.data();
    {
      const AtVectorLevel plain(XelVectorLevel::Plain);
      expected.format(from, from + length, format);
    }
    return std::all_of(levels.begin(), levels.end(), [&](XelVectorLevel level) {
      const AtVectorLevel taken(level);
      got.format(from, from + length, format);
      return got == expected;
    });
  }

  std::string show() const {
    return testing::PrintToString(got.getText()) + " instead of " + testing::PrintToString(expected.getText());
  }

 private:
  XelCsvFormat format;
  Formatted expected;
  Formatted got;
  std::vector<XelVectorLevel> levels = getVectorLevels();
};

// What stands behind a line where it must not matter: every byte that would, again and again.
std::string getPadding(const Settings& settings) {
  std::string bytes = settings.separators + "\"\n\r,"s + settings.quote + settings.decimal + '\0';
  while (bytes.size() < static_cast<std::size_t>(XelTextPadding)) bytes += bytes;
  return bytes;
}

// Every text over an alphabet of a length.
std::vector<std::string> makeTexts(const std::string& alphabet, int length) {
  std::vector<std::string> texts{""};
  for (int each = 0; each < length; ++each) {
    std::vector<std::string> longer;
    for (const std::string& text : texts) {
      for (const char byte : alphabet) longer.push_back(text + byte);
    }
    texts = longer;
  }
  return texts;
}

std::string getAlphabet(const Settings& settings) {
  const std::string separators = settings.separators;
  const bool hasSpace = separators.find(' ', 1) != std::string::npos;
  return "a\n\r"s + '\0' + settings.decimal + settings.quote + (separators.empty() ? ',' : separators[0]) +
         (hasSpace ? " " : "");
}

// All lines of a file with their numbers, as an iterator gives them.
std::string readAll(const char* fileName, long multi, const char* separators, char decimal) {
  TestEnv env;
  XelCsvReader reader(env, fileName, multi, multi, separators, decimal, '"', '#', 0);
  std::string lines;
  const auto add = [&lines](const XelCsvLine& line) {
    lines += std::to_string(line.getLineNumber()) + ":";
    for (long field = 0; field < line.getNumberOfFields(); ++field) lines += line.getStringByPosition(field) + "|"s;
    lines += '\n';
  };
  if (multi != 0) {
    for (long table = 0; table < reader.getNumberOfTables(); ++table) {
      XelCsvTableReader handle = reader.getTableByNumber(table);
      for (XelCsvTableReader::LineIterator it(handle); it.ok(); ++it) add(*it);
      handle.end();
    }
  } else {
    for (XelCsvReader::LineIterator it(reader); it.ok(); ++it) add(*it);
  }
  reader.end();
  return lines;
}

// Every level reads the same lines in the file.
void expectSameLines(const std::string& content, long multi, const char* separators = ",", char decimal = '.') {
  const DataFile file(content);
  std::string expected;
  {
    const AtVectorLevel plain(XelVectorLevel::Plain);
    expected = readAll(file.getName(), multi, separators, decimal);
  }
  for (const XelVectorLevel level : getVectorLevels()) {
    const AtVectorLevel taken(level);
    EXPECT_EQ(readAll(file.getName(), multi, separators, decimal), expected) << "level " << static_cast<int>(level);
  }
}

}  // namespace

TEST(VectorLevel, IsTheBestUntilALowerOneIsChosen) {
  const XelVectorLevel best = XelGetBestVectorLevel();
  EXPECT_EQ(XelGetVectorLevel(), best);
  {
    const AtVectorLevel plain(XelVectorLevel::Plain);
    EXPECT_EQ(XelGetVectorLevel(), XelVectorLevel::Plain);
  }
  const AtVectorLevel highest(XelVectorLevel::Bytes32);
  EXPECT_EQ(XelGetVectorLevel(), best);
}

TEST(Marks, AreAtMostEightSeparators) {
  const struct {
    const char* separators;
    std::size_t count;
    std::string eight;
  } cases[] = {
      {",", 1, ",,,,,,,,"},
      {";,", 2, ",;;;;;;;"},
      {"\t,,;;", 3, "\t,;;;;;;"},
      {"|;,\t", 4, "\t,;|||||"},
      {"76543210", 8, "01234567"},
      {"876543210", 0, ""},
      {", ", 2, " ,,,,,,,"},
      {" ", 1, "        "},
      {"", 0, ""},
      {"\xA7\x7F", 2, "\x7F\xA7\xA7\xA7\xA7\xA7\xA7\xA7"},
      {",\n\r", 1, ",,,,,,,,"},
  };
  for (const auto& row : cases) {
    const XelCsvFormat format(row.separators, '.', '"');
    const XelCsvMarks& marks = format.getMarks();
    EXPECT_EQ(marks.separators, row.count) << testing::PrintToString(row.separators);
    EXPECT_EQ(marks.dropsSpaces, std::string(row.separators).find(' ') != std::string::npos);
    if (row.count > 0) {
      EXPECT_EQ(std::string(marks.separator, 8), row.eight) << testing::PrintToString(row.separators);
    }
  }
}

TEST(Marks, AreLineEndsWhereNoByteIsAQuoteOrADecimalCharacter) {
  const struct {
    Settings settings;
    char quote;
    char decimal;
    bool replaces;
  } cases[] = {
      {{",", '.', '"'}, '"', '\n', false},  {{",", 'd', '"'}, '"', 'd', true},   {{",", ',', '"'}, '"', '\n', false},
      {{",", 'd', ','}, '\n', 'd', true},   {{",", 'd', '\r'}, '\n', 'd', true}, {{",", 'd', 'd'}, 'd', '\n', false},
      {{",", '\0', '"'}, '"', '\n', false},
  };
  for (const auto& row : cases) {
    const XelCsvFormat format(row.settings.separators, row.settings.decimal, row.settings.quote);
    const std::string name = "decimal "s + row.settings.decimal + ", quote " + row.settings.quote;
    EXPECT_EQ(format.getMarks().quote, row.quote) << name;
    EXPECT_EQ(format.getMarks().decimal, row.decimal) << name;
    EXPECT_EQ(format.getMarks().replacesDecimal, row.replaces) << name;
  }
}

TEST(PaddedFormatter, IsTheSameUnderEveryLevelForAllShortTextsAtEveryPlaceOfAWindow) {
  constexpr int LongestText = 3;
  constexpr std::size_t Places = 130;  // two windows, and the first bytes of the third
  for (const Settings& settings : AllSettings) {
    Comparison comparison(settings, Places + LongestText + 2);
    const std::string padding = getPadding(settings);
    for (const std::string& text : makeTexts(getAlphabet(settings), LongestText)) {
      if (text[0] == 'a') continue;  // the same as a shorter text a place further
      for (std::size_t place = 0; place < Places; ++place) {
        const std::string line = std::string(place, 'x') + text + "y,";
        ASSERT_TRUE(comparison.isSame(line + padding, static_cast<long>(line.size())))
            << testing::PrintToString(line) << " with " << settings.separators << ": " << comparison.show();
      }
    }
  }
}

TEST(PaddedFormatter, IsTheSameUnderEveryLevelWhereverTheBytesEnd) {
  for (const Settings& settings : AllSettings) {
    Comparison comparison(settings, 200);
    const std::string padding = getPadding(settings);
    for (const char last : getAlphabet(settings)) {
      for (std::size_t length = 0; length < 200; ++length) {
        std::string line(length, 'x');
        if (length > 0) line.back() = last;
        if (length > 40) line[length - 40] = settings.quote;
        ASSERT_TRUE(comparison.isSame(line + padding, static_cast<long>(length)))
            << testing::PrintToString(line) << ": " << comparison.show();
      }
    }
  }
}

TEST(PaddedFormatter, IsTheSameUnderEveryLevelForRandomBytes) {
  std::mt19937 random = seedWith(4711);
  for (const Settings& settings : AllSettings) {
    Comparison comparison(settings, 700);
    const std::string special = settings.separators + ""s + settings.quote + settings.decimal + "0";
    for (int round = 0; round < 3000; ++round) {
      const std::size_t length = random() % 700;
      const unsigned plainness = 1U << (random() % 8);
      std::string line;
      for (std::size_t at = 0; at < length; ++at) {
        if (random() % plainness == 0) {
          line += special[random() % special.size()];
        } else {
          line += static_cast<char>(random());
        }
      }
      // Most of the lines are to go on beyond the first few bytes.
      for (char& byte : line) {
        const bool ends = byte == '\n' || byte == '\r' || byte == '\0';
        if (ends && random() % 64 != 0) byte = 'e';
      }
      ASSERT_TRUE(comparison.isSame(line + getPadding(settings), static_cast<long>(length)))
          << testing::PrintToString(line) << ": " << comparison.show();
    }
  }
}

TEST(PaddedFormatter, IsTheSameUnderEveryLevelForTheLongestLines) {
  for (const Settings& settings : AllSettings) {
    Comparison comparison(settings, 10001);
    for (const long length : {9998L, 9999L, 10000L, 10001L}) {
      for (const char byte : {'a', settings.separators[0], settings.quote, settings.decimal}) {
        const std::string line(static_cast<std::size_t>(length), byte);
        EXPECT_TRUE(comparison.isSame(line + getPadding(settings), length)) << length << " times " << byte;
      }
    }
  }
}

TEST(LineIterator, ReadsTheSameUnderEveryLevelWhateverStandsAtTheEndOfABlock) {
  // Lines of every kind again and again; a first line of each length moves another byte of them to the ends of blocks.
  const std::string lines = "k,\"a,b\",1.5\r\nx\0y\n#c\n \t\n\"q,\r\n,,\n\r\r\nend\rmore,\n\n"s;
  for (std::size_t length = 0; length < lines.size(); ++length) {
    std::string content = std::string(length, 'f') + "\n";
    while (content.size() < 22000) content += lines;  // more than the first two blocks
    expectSameLines(content + "last,line", 0);
  }
}

TEST(LineIterator, ReadsTheSameUnderEveryLevelInLinesAroundTheLongest) {
  for (const std::size_t length : {9998U, 9999U, 10000U, 10001U, 19997U, 19998U, 19999U, 20000U, 29997U, 30001U}) {
    for (const char* end : {"\n", "\r\n", "\r", ""}) {
      std::string content = "first,line\n";
      while (content.size() < length + 11) content += "abc,\"d,e\",1.5;";
      content.resize(length + 11);
      content += end;
      content += "last,line\n";
      expectSameLines(content, 0);
      expectSameLines(content + end, 0, ";", ',');
    }
  }
}

TEST(LineIterator, ReadsTheSameUnderEveryLevelInManyTablesWithOddLines) {
  std::mt19937 random = seedWith(8);
  const std::string lines[] = {
      "T;1;2,5;x\n", "T;\"a;b\";c\r\n", "\n",   "# T;1\n",  "  T;7\n", "T\n",
      ";;;\n",       "U;1;2\n",         "\t\n", "T;a\rb\n", "U\n",     "T;1"s + '\0' + "2;3\n"};
  for (int round = 0; round < 60; ++round) {
    std::string content = "T|NAMES;A;B\nT|KEYS;1;0\n";
    for (int line = 0; line < 40; ++line) content += lines[random() % std::size(lines)];
    if (round % 2 == 0) content.pop_back();
    expectSameLines(content, 1, ";", ',');
    expectSameLines(content, 0, ";", ',');
  }
}
