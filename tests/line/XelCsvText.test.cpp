#include "csv/line/XelCsvText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "csv/line/XelCsvFormat.h"

namespace {

// The same numbers in every run.
std::mt19937 seedWith(unsigned seed) { return std::mt19937(seed); }

using namespace std::string_literals;

struct Settings {
  const char* separators;
  char decimal;
  char quote;
};

struct Formatted {
  std::string bytes;
  long fields;
};

bool isLineEnd(char c) { return c == '\0' || c == '\n' || c == '\r'; }

bool isIn(const std::string& set, char c) { return set.find(c) != std::string::npos; }

// The rules of formatting, one after the other and a character at a time.
Formatted formatSlowly(const std::string& line, const Settings& settings) {
  const std::string set = settings.separators;
  signed char maxSeparator = set.empty() ? static_cast<signed char>(0) : static_cast<signed char>(set[0]);
  for (const char c : set) maxSeparator = std::max(maxSeparator, static_cast<signed char>(c));

  std::string written;
  long fields = 1;
  long quoteCount = 0;
  bool inQuotes = false;
  bool previousWasSeparator = false;
  for (std::size_t at = 0; at < line.size() && !isLineEnd(line[at]); ++at) {
    const char c = line[at];
    if (static_cast<signed char>(c) <= maxSeparator && isIn(set, c)) {
      if (inQuotes) {
        written += c;
      } else if (c != ' ' || !previousWasSeparator) {
        written += '\0';
        ++fields;
      }
      previousWasSeparator = true;
    } else if (c == settings.quote) {
      ++quoteCount;
      if (quoteCount == 1) inQuotes = true;
      if (quoteCount == 2) {
        inQuotes = false;
        quoteCount = 0;
      }
      previousWasSeparator = false;
    } else {
      written += c == settings.decimal ? '.' : c;
      previousWasSeparator = false;
    }
  }
  written += '\0';
  return {written, fields};
}

// What XelFormatLine makes of a line, with the starts of its fields as offsets.
struct Result {
  std::string bytes;
  long fields;
  std::vector<long> starts;
};

Result format(const std::string& line, const Settings& settings) {
  const XelCsvFormat classes(settings.separators, settings.decimal, settings.quote);
  std::vector<char> to(line.size() + 1, '~');
  std::vector<char*> starts(line.size() + 1);
  const XelFormattedLine formatted =
      XelFormatLine(line.data(), line.data() + line.size(), to.data(), classes, starts.data());
  Result result{std::string(to.data(), static_cast<std::size_t>(formatted.length)), formatted.fields, {}};
  for (long field = 0; field < formatted.fields; ++field) {
    result.starts.push_back(starts[static_cast<std::size_t>(field)] - to.data());
  }
  return result;
}

std::vector<std::string> getFields(const Result& result) {
  std::vector<std::string> fields;
  for (const long start : result.starts) fields.emplace_back(result.bytes.c_str() + start);
  return fields;
}

// Where the fields begin, found by walking from terminator to terminator.
std::vector<long> walk(const std::string& bytes, long fields) {
  std::vector<long> starts;
  long at = 0;
  for (long field = 0; field < fields; ++field) {
    starts.push_back(at);
    at += static_cast<long>(std::strlen(bytes.c_str() + at)) + 1;
  }
  return starts;
}

// Calls use with every text over the alphabet up to a length.
template <class Use>
void forEachText(const std::string& alphabet, std::size_t longest, Use use) {
  for (std::size_t length = 0; length <= longest; ++length) {
    std::vector<std::size_t> digits(length, 0);
    std::string text(length, alphabet[0]);
    for (;;) {
      use(text);
      std::size_t at = 0;
      for (; at < length; ++at) {
        digits[at] = (digits[at] + 1) % alphabet.size();
        text[at] = alphabet[digits[at]];
        if (digits[at] != 0) break;
      }
      if (at == length) break;
    }
  }
}

std::string show(const std::string& text) { return testing::PrintToString(text); }

}  // namespace

TEST(FormatLine, SplitsALineIntoFields) {
  const Settings comma{",", '.', '"'};
  const Settings semicolon{";", ',', '"'};
  const Settings blank{" ", '.', '"'};
  const Settings tab{"\t", '.', '\''};
  const Settings several{", ;", '.', '"'};
  const struct {
    const char* name;
    Settings settings;
    std::string line;
    std::vector<std::string> fields;
  } cases[] = {
      {"quoted separator, empty field, CRLF", comma, "a,\"b,c\",,d\r\n", {"a", "b,c", "", "d"}},
      {"decimal character", semicolon, "3,5", {"3.5"}},
      {"decimal character inside quotes and in text too", semicolon, "\"1,5\";a,b;x.y", {"1.5", "a.b", "x.y"}},
      {"nothing", comma, "", {""}},
      {"line feed first", comma, "\na,b", {""}},
      {"carriage return first", comma, "\ra,b", {""}},
      {"zero byte first", comma, "\0a,b"s, {""}},
      {"text after a carriage return is ignored", comma, "a,b\rc,d\n", {"a", "b"}},
      {"text after a line feed is ignored", comma, "a\n,b", {"a"}},
      {"text after a zero byte is ignored", comma, "a,b\0c,d"s, {"a", "b"}},
      {"separator at the start", comma, ",a", {"", "a"}},
      {"separator at the end", comma, "a,\n", {"a", ""}},
      {"only a separator", comma, ",", {"", ""}},
      {"adjacent separators", comma, "a,,,b", {"a", "", "", "b"}},
      {"doubled quotes vanish", comma, "\"a\"\"b\",c", {"ab", "c"}},
      {"only quotes", comma, "\"\",\"\"\"\"", {"", ""}},
      {"quotes in the middle of a field switch quoting", comma, "a\"b,c\"d,e", {"ab,cd", "e"}},
      {"an unclosed quote runs to the end of the line", comma, "a,\"b,c\nd", {"a", "b,c"}},
      {"a quote does not carry over a line end", comma, "\"a\n\",b", {"a"}},
      {"fields are not trimmed", comma, "  a , b  ", {"  a ", " b  "}},
      {"runs of blanks are one separator", blank, "a   b c", {"a", "b", "c"}},
      {"a leading blank makes an empty field", blank, "  a", {"", "a"}},
      {"a trailing blank makes an empty field", blank, "a  \n", {"a", ""}},
      {"only blanks", blank, "    ", {"", ""}},
      {"blanks inside quotes are text", blank, "a \"b  c\" d", {"a", "b  c", "d"}},
      {"a blank after a quote separates", blank, "\"\" a", {"", "a"}},
      {"a blank after a separator is swallowed", several, "a, b;  c,;d", {"a", "b", "c", "", "d"}},
      {"a separator after a blank is an empty field", several, "a ,b", {"a", "", "b"}},
      {"tabs each separate", tab, "a\t\tb \t'c\td'", {"a", "", "b ", "c\td"}},
      {"a separator above 127",
       {"\xA7", '.', '"'},
       "a\xA7"
       "b,\xFF",
       {"a", "b,\xFF"}},
      {"separators of both signs",
       {"\xA7,", '.', '"'},
       "a\xA7"
       "b,c\x80",
       {"a", "b", "c\x80"}},
      {"no separators", {"", '.', '"'}, "a,b c", {"a,b c"}},
      {"a separator goes before the quote", {"\"", '.', '"'}, "a\"b", {"a", "b"}},
      {"the quote goes before the decimal character", {",", '\'', '\''}, "1'5", {"15"}},
      {"a separator goes before the decimal character", {",", ',', '"'}, "1,5", {"1", "5"}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    const Result result = format(row.line, row.settings);
    EXPECT_EQ(getFields(result), row.fields);
    EXPECT_EQ(result.fields, static_cast<long>(row.fields.size()));
    std::string bytes;
    for (const std::string& field : row.fields) bytes += field + '\0';
    EXPECT_EQ(result.bytes, bytes);
  }
}

TEST(FormatLine, DoesWhatTheSlowRulesDoWithEveryShortLine) {
  const struct {
    Settings settings;
    std::string alphabet;
  } rows[] = {
      {{",", '.', '"'}, "a, \".\n\r;"},          {{" ", ',', '"'}, "a, \".\n\t"},    {{", ", '.', '"'}, "a, \".\n\0;"s},
      {{"\t", ',', '"'}, "a, \".\r\t"},          {{",\t ", '.', 'a'}, "a, \".\n\t"}, {{" ,", 'a', '\t'}, "a, \".\0\t"s},
      {{";\xA7", ',', '\''}, "a,\xA7'.\n;\x80"}, {{"", '.', '"'}, "a, \".\n"},
  };
  constexpr std::size_t longest = 6;
  constexpr char unwritten = '~';
  long compared = 0;
  for (const auto& row : rows) {
    const XelCsvFormat classes(row.settings.separators, row.settings.decimal, row.settings.quote);
    long wrong = 0;
    forEachText(row.alphabet, longest, [&](const std::string& line) {
      ++compared;
      const Formatted expected = formatSlowly(line, row.settings);
      char to[longest + 2];
      std::fill(std::begin(to), std::end(to), unwritten);
      char* starts[longest + 1] = {};
      const XelFormattedLine got = XelFormatLine(line.data(), line.data() + line.size(), to, classes, starts);
      char inPlace[longest + 2];
      std::fill(std::begin(inPlace), std::end(inPlace), unwritten);
      std::copy(line.begin(), line.end(), inPlace);
      const XelFormattedLine again = XelFormatLine(inPlace, inPlace + line.size(), inPlace, classes);
      bool same = got.fields == expected.fields && got.length == static_cast<long>(expected.bytes.size()) &&
                  again.fields == got.fields && again.length == got.length &&
                  std::equal(expected.bytes.begin(), expected.bytes.end(), to) &&
                  std::equal(expected.bytes.begin(), expected.bytes.end(), inPlace) &&
                  to[expected.bytes.size()] == unwritten;
      const char* at = to;
      for (long field = 0; same && field < got.fields; ++field) {
        same = starts[field] == at;
        at += std::strlen(at) + 1;
      }
      if (!same && ++wrong < 10) {
        ADD_FAILURE() << "separators " << show(row.settings.separators) << ", line " << show(line) << ", expected "
                      << show(expected.bytes);
      }
    });
    EXPECT_EQ(wrong, 0) << "separators " << show(row.settings.separators);
  }
  EXPECT_GT(compared, 1000000);
}

TEST(FormatLine, DoesWhatTheSlowRulesDoWithRandomLines) {
  std::mt19937 random = seedWith(20);
  const Settings all[] = {{",", '.', '"'}, {"; \t", ',', '\''}, {"\x01\xFE ", '.', 'q'}};
  for (int round = 0; round < 300; ++round) {
    const Settings& settings = all[random() % 3];
    std::string line(random() % 9999, 'x');
    for (char& c : line) {
      c = random() % 4 == 0 ? settings.separators[random() % std::strlen(settings.separators)]
                            : static_cast<char>(random() % 256);
      if (isLineEnd(c) && random() % 20 != 0) c = settings.quote;
    }
    const Formatted expected = formatSlowly(line, settings);
    const Result got = format(line, settings);
    ASSERT_EQ(got.bytes, expected.bytes);
    ASSERT_EQ(got.fields, expected.fields);
    ASSERT_EQ(got.starts, walk(expected.bytes, expected.fields));
  }
}

TEST(FormatLine, MakesTenThousandFieldsOfSeparatorsAlone) {
  const std::string line(9999, ',');
  const Result result = format(line, {",", '.', '"'});
  EXPECT_EQ(result.fields, 10000);
  EXPECT_EQ(result.bytes, std::string(10000, '\0'));
  EXPECT_EQ(result.starts, walk(result.bytes, 10000));
  EXPECT_EQ(result.starts.back(), 9999);
}

TEST(FormatLine, WritesNoByteBeyondTheLineAndItsTerminator) {
  const XelCsvFormat classes(",", '.', '"');
  for (const std::string& line : {""s, "a"s, ","s, "a,b\n"s, "\"a"s}) {
    const std::unique_ptr<char[]> from(new char[line.size()]);
    std::copy(line.begin(), line.end(), from.get());
    const std::unique_ptr<char[]> to(new char[line.size() + 1]);
    const XelFormattedLine formatted = XelFormatLine(from.get(), from.get() + line.size(), to.get(), classes);
    const Formatted expected = formatSlowly(line, {",", '.', '"'});
    EXPECT_EQ(std::string(to.get(), static_cast<std::size_t>(formatted.length)), expected.bytes);
  }
}

TEST(FormatClasses, OfAllBytes) {
  const XelCsvFormat format(",\xA7 \n", '.', '"');
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    XelByteClass expected = XelByteClass::Text;
    if (isLineEnd(c)) {
      expected = XelByteClass::LineEnd;
    } else if (c == ' ') {
      expected = XelByteClass::SpaceSeparator;
    } else if (c == ',' || c == '\xA7') {
      expected = XelByteClass::Separator;
    } else if (c == '"') {
      expected = XelByteClass::Quote;
    } else if (c == '.') {
      expected = XelByteClass::Decimal;
    }
    EXPECT_EQ(format.getClass(c), expected) << byte;
    EXPECT_EQ(format.isSeparator(c), c == ',' || c == '\xA7' || c == ' ') << byte;
  }
}

TEST(SettledText, IsWhatFormattingLeavesAsItIs) {
  const Settings all[] = {{",", '.', '"'}, {" ", ',', '"'}, {", ", 'a', '.'}, {"", '.', '"'}};
  for (const Settings& settings : all) {
    const XelCsvFormat classes(settings.separators, settings.decimal, settings.quote);
    long wrong = 0;
    forEachText("a, \".\n\r", 5, [&](const std::string& text) {
      const Formatted again = formatSlowly(text, settings);
      const bool isSettled = again.fields == 1 && again.bytes == text + '\0';
      if (XelIsSettledText(text.c_str(), classes) != isSettled) {
        if (++wrong < 10) ADD_FAILURE() << "separators " << show(settings.separators) << ", text " << show(text);
      }
    });
    EXPECT_EQ(wrong, 0);
  }
}

TEST(Trim, RemovesSpacesAtBothEndsAndNothingElse) {
  const struct {
    const char* text;
    const char* trimmed;
  } cases[] = {
      {"", ""},
      {" ", ""},
      {"    ", ""},
      {"a", "a"},
      {" a", "a"},
      {"a ", "a"},
      {"  a b  ", "a b"},
      {"\ta\t", "\ta\t"},
      {" \t ", "\t"},
      {" \xA0 ", "\xA0"},
      {"\r a ", "\r a"},
      {"   ab", "ab"},
      {" a  b   c ", "a  b   c"},
  };
  for (const auto& row : cases) {
    std::string text = row.text;
    XelTrim(text.data());
    EXPECT_STREQ(text.c_str(), row.trimmed) << show(row.text);
    const std::string whole = row.text;
    const XelCsvSpan span = XelTrimmed(whole.data(), whole.data() + whole.size());
    EXPECT_EQ(std::string(span.begin, span.end), row.trimmed) << show(row.text);
  }
}

TEST(FirstField, EndsAtASeparatorOrTheLineEndAndKnowsNoQuotes) {
  const Settings all[] = {{",", '.', '"'}, {" ", ',', '"'}, {";\xA7", '.', '\''}, {"", '.', '"'}};
  for (const Settings& settings : all) {
    const XelCsvFormat classes(settings.separators, settings.decimal, settings.quote);
    long wrong = 0;
    forEachText("a, \";\xA7\n\r\0"s, 4, [&](const std::string& line) {
      std::size_t length = 0;
      while (length < line.size() && !isLineEnd(line[length]) && !isIn(settings.separators, line[length])) ++length;
      const XelCsvSpan field = XelFirstField(line.data(), line.data() + line.size(), classes);
      if (field.begin != line.data() || field.getLength() != static_cast<long>(length)) {
        if (++wrong < 10) ADD_FAILURE() << "separators " << show(settings.separators) << ", line " << show(line);
      }
    });
    EXPECT_EQ(wrong, 0);
  }
}

TEST(EmptyLine, HoldsOnlySpacesAndTabsBeforeItsEnd) {
  long wrong = 0;
  forEachText(" \ta\n\r\0"s, 5, [&](const std::string& line) {
    std::size_t at = 0;
    while (at < line.size() && (line[at] == ' ' || line[at] == '\t')) ++at;
    const bool isEmpty = at == line.size() || isLineEnd(line[at]);
    if (XelIsEmptyLine(line.data(), line.data() + line.size()) != isEmpty) {
      if (++wrong < 10) ADD_FAILURE() << show(line);
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_TRUE(XelIsEmptyLine(nullptr, nullptr));
}
