// The parts that checks are made of: fields in the file, quoted text, kinds of numbers.
#include <algorithm>
#include <cstdlib>
#include <random>

#include "check/XelCsvFields.h"
#include "check/XelCsvKeySet.h"
#include "check/XelCsvMessage.h"
#include "check/XelCsvNumberKind.h"
#include "tests/check/Checking.h"
#include "tests/support/DecimalPoint.h"

namespace {

XelCsvSpan spanOf(const std::string& text) { return {text.data(), text.data() + text.size()}; }

std::vector<std::string> format(const std::string& text, const XelCsvFormat& settings) {
  TestEnv env;
  XelCsvFields fields(env, settings);
  const std::string padded = text + std::string(XelTextPadding, '\0');
  fields.format({padded.data(), padded.data() + text.size()});
  std::vector<std::string> formatted;
  for (long position = 0; position < fields.getCount(); ++position) {
    const XelCsvSpan field = fields.getField(position);
    formatted.emplace_back(field.begin, field.end);
  }
  return formatted;
}

}  // namespace

TEST(SplitRaw, EachFieldFormatsToTheFieldOfTheLine) {
  std::mt19937 random(7);
  for (const char* separators : {",", ",;", ", ", " ", ""}) {
    const XelCsvFormat settings(separators, '.', '"');
    for (int round = 0; round < 3000; ++round) {
      std::string line;
      for (auto length = random() % 12; length > 0; --length) line += "a,; \".\r"[random() % 7];
      const std::vector<std::string> expected = format(line, settings);
      const std::vector<XelCsvSpan> raw = XelSplitRaw(spanOf(line), settings);
      ASSERT_EQ(raw.size(), expected.size()) << line;
      for (std::size_t index = 0; index < raw.size(); ++index) {
        // A field by itself may be in quotes that never close, so that all its separators are text.
        std::string bare(raw[index].begin, raw[index].end);
        bare.erase(std::remove(bare.begin(), bare.end(), '"'), bare.end());
        EXPECT_EQ(bare, expected[index]) << line;
      }
    }
  }
}

TEST(RawField, IsNothingAtTheEndWhereThereIsNone) {
  const XelCsvFormat settings(",", '.', '"');
  const std::string line = "a,bc\n";
  const XelCsvSpan field = XelRawField(spanOf(line), settings, 2);
  EXPECT_EQ(field.begin - line.data(), 4);
  EXPECT_EQ(field.getLength(), 0);
}

TEST(Shown, IsACharacterThatNoTerminalActsOn) {
  EXPECT_EQ(XelShown('.'), "'.'");
  EXPECT_EQ(XelShown(' '), "' '");
  EXPECT_EQ(XelShown('~'), "'~'");
  EXPECT_EQ(XelShown('\t'), "'\\x09'");
  EXPECT_EQ(XelShown('\x7F'), "'\\x7F'");
  EXPECT_EQ(XelShown('\xE9'), "'\\xE9'");
}

TEST(Quoted, ShowsWhatNoTerminalActsOn) {
  EXPECT_EQ(XelQuoted("caf\xC3\xA9"), "\"caf\xC3\xA9\"");
  EXPECT_EQ(XelQuoted(std::string_view("a\0b\x1B[1m\x7F", 8)), "\"a\\x00b\\x1B[1m\\x7F\"");
  EXPECT_EQ(XelQuoted("\xE9"
                      "a\xC3"),
            "\"\\xE9a\\xC3\"");
  EXPECT_EQ(XelQuoted("\xC2\x9B"
                      "1m\xC2\xA0"),
            "\"\\xC2\\x9B1m\xC2\xA0\"");
  EXPECT_EQ(XelQuoted("\xEF\xBB\xBFStock"), "\"\\uFEFFStock\"");
  EXPECT_EQ(XelQuoted(""), "\"\"");
  EXPECT_EQ(XelQuoted(std::string(60, 'a')), '"' + std::string(60, 'a') + '"');
  EXPECT_EQ(XelQuoted(std::string(61, 'a')), '"' + std::string(60, 'a') + "...\"");
}

TEST(KindOfNumber, KnowsNumbersOfTheLibrary) {
  const struct {
    const char* text;
    XelNumberKind kind;
  } rows[] = {
      {"", XelNumberKind::Empty},
      {"0", XelNumberKind::Integer},
      {"+7", XelNumberKind::Integer},
      {"-2147483648", XelNumberKind::Integer},
      {"2147483647", XelNumberKind::Integer},
      {"2147483648", XelNumberKind::LargeInteger},
      {"-99999999999999999999", XelNumberKind::LargeInteger},
      {"1.5", XelNumberKind::Float},
      {"5.", XelNumberKind::Float},
      {".5", XelNumberKind::Float},
      {"-1e9", XelNumberKind::Float},
      {"1.5E-3", XelNumberKind::Float},
      {"+INF", XelNumberKind::Float},
      {"-1.#INF", XelNumberKind::Float},
      {"Infinity", XelNumberKind::Float},
      {"NaN", XelNumberKind::Float},
      {"U", XelNumberKind::Float},
      {"12abc", XelNumberKind::TrailingText},
      {"1e", XelNumberKind::TrailingText},
      {"1.2.3", XelNumberKind::TrailingText},
      {"2004-01-01", XelNumberKind::TrailingText},
      {"abc", XelNumberKind::Text},
      {"-", XelNumberKind::Text},
      {".", XelNumberKind::Text},
      {"e5", XelNumberKind::Text},
      {"infinite", XelNumberKind::Text},
  };
  for (const auto& row : rows) {
    const std::string text = row.text;
    EXPECT_EQ(XelKindOfNumber(spanOf(text)), row.kind) << text;
  }
}

TEST(ShowNumber, IsWhatTheLibraryReads) {
  const DecimalPoint point;
  for (const char* text : {"12abc", "1.5 kg", "-3,5", "1e5x", "1ex", ".5x", "x", "", "+7"}) {
    EXPECT_EQ(std::stod(XelShowNumber(spanOf(text))), std::strtod(text, nullptr)) << text;
  }
}

TEST(IsOtherDecimal, KnowsNumbersWrittenOtherwise) {
  const struct {
    const char* text;
    char decimal;
    bool is;
  } rows[] = {
      {"3,5", '.', true},         {"-3,5", '.', true},    {"\"3,5\"", '.', true}, {"1,234", '.', true},
      {"1,234,567", '.', true},   {"1,234.5", '.', true}, {"1.234,5", '.', true}, {"3,5e6", '.', true},
      {"1.234.567,8", '.', true}, {"3.5", '.', false},    {"1,2,3", '.', false},  {"3,5kg", '.', false},
      {",5", '.', false},         {"3,", '.', false},     {"a,5", '.', false},    {"3.5", ',', true},
      {"1.234", ',', true},       {"1.234,5", ',', true}, {"1,234.5", ',', true}, {"3,5", ',', false},
      {"01.02.2004", ',', false}, {"1.2.3", ',', false},  {"3.5", '@', true},     {"3,5", '@', false},
  };
  for (const auto& row : rows) {
    const std::string text = row.text;
    EXPECT_EQ(XelIsOtherDecimal(spanOf(text), row.decimal, '"'), row.is) << text << " where it is " << row.decimal;
  }
}

TEST(KeySet, FindsTheFirstOfEqualHashesThatIsEqual) {
  TestEnv env;
  XelCsvKeySet keys(env);
  const auto never = [](const XelCsvKeySet::Line&) { return false; };
  const auto always = [](const XelCsvKeySet::Line&) { return true; };
  EXPECT_EQ(keys.addOrFind(7, {0, 1}, always), nullptr);
  EXPECT_EQ(keys.addOrFind(7, {10, 2}, never), nullptr);
  for (std::uint64_t hash = 100; hash < 1000; ++hash) {
    EXPECT_EQ(keys.addOrFind(hash, {static_cast<long>(hash), 3}, always), nullptr);
  }
  std::vector<long> asked;
  const XelCsvKeySet::Line* const found = keys.addOrFind(7, {20, 4}, [&asked](const XelCsvKeySet::Line& line) {
    asked.push_back(line.offset);
    return line.line == 2;
  });
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->offset, 10);
  EXPECT_EQ(asked.back(), 10);
  EXPECT_EQ(keys.addOrFind(5000, {30, 1L << 40}, always), nullptr);
  EXPECT_EQ(keys.addOrFind(5000, {40, 5}, always)->line, 4294967295L);
}
