// How a file is read, and who says so.
#include "tools/Settings.h"

#include <gtest/gtest.h>

#include "tools/Errors.h"

namespace xeltools {
namespace {

TEST(Separators, AreNamesOrCharactersWithEscapes) {
  struct Case {
    const char* text;
    const char* separators;
  };
  const Case cases[] = {
      {"comma", ","}, {"Tab", "\t"}, {"tab+semicolon", "\t;"}, {"none", ""},   {",", ","}, {";,", ";,"},
      {"\\t", "\t"},  {"\\s", " "},  {"\\x1f|", "\x1f|"},      {"\\\\", "\\"}, {"+", "+"}, {"tab+x", "tab+x"},
      {"space", " "}, {"pipe", "|"}, {"colon", ":"},
  };
  for (const Case& it : cases) EXPECT_EQ(parseSeparators(it.text), it.separators) << it.text;
}

TEST(Separators, ThatCannotBeAreToldToTheUser) {
  for (const char* const text : {"", "\\", "\\q", "\\x1", "\\x00"})
    EXPECT_THROW(parseSeparators(text), UserError) << text;
}

TEST(Separators, AreWrittenAsTheyWouldBeGiven) {
  for (const char* const separators : {"", ",", "\t;", "x", "; ", "\\", "\x1f", "a|"}) {
    EXPECT_EQ(parseSeparators(formatSeparators(separators)), separators) << formatSeparators(separators);
  }
}

TEST(Character, IsANameOrOneCharacter) {
  EXPECT_EQ(parseCharacter("--decimal", "comma", '\0'), ',');
  EXPECT_EQ(parseCharacter("--decimal", ".", '\0'), '.');
  EXPECT_EQ(parseCharacter("--quote", "single", '\x01'), '\'');
  EXPECT_EQ(parseCharacter("--quote", "none", '\x01'), '\x01');
  EXPECT_EQ(parseCharacter("--comment", "\\x25", '\x02'), '%');
  for (const char* const text : {"", "ab", "none", "\\x00"}) {
    EXPECT_THROW(parseCharacter("--decimal", text, '\0'), UserError) << text;
  }
}

TEST(Options, SayWhatIsNotTheDefault) {
  ReaderParameters parameters;
  EXPECT_EQ(formatOptions(parameters), "");
  EXPECT_EQ(formatConstructor(parameters, "a.csv"), R"(XelCsvReader reader(env, "a.csv");)");
  parameters.isMultiTable = true;
  parameters.separators = "\t;";
  EXPECT_EQ(formatOptions(parameters), "--multi --sep tab+semicolon");
  EXPECT_EQ(formatConstructor(parameters, "a.csv"), R"(XelCsvReader reader(env, "a.csv", 1, 0, "\t;");)");
  parameters.comment = '%';
  parameters.isCached = false;
  EXPECT_EQ(formatOptions(parameters), "--multi --sep tab+semicolon --comment % --no-cache");
  EXPECT_EQ(formatConstructor(parameters, "a.csv"),
            R"(XelCsvReader reader(env, "a.csv", 1, 0, "\t;", '.', '"', '%', 0);)");
}

TEST(Options, ReadBackGiveTheSameParameters) {
  GivenSettings given;
  OptionSet options("test");
  given.declare(options);
  options.parse({"-m", "--split", "-s", ";", "--decimal=comma", "--no-cache", "--no-split"});
  const Settings settings(given, "/nowhere/data.csv");
  EXPECT_EQ(formatOptions(settings.getParameters()), "--multi --sep semicolon --decimal comma --no-cache");
  EXPECT_EQ(settings.getAll().front().origin, "command line");
}

}  // namespace
}  // namespace xeltools
