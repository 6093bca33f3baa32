// Numbers are read as the C library reads them in the process's locale; nothing else follows the locale.
//
// Where there is none of them, as with a test program started by hand, tests are skipped; tests/locale/make makes them.
#include <gtest/gtest.h>
#include <locale.h>

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <limits>
#include <locale>

#include "tests/support/CoutCapture.h"
#include "tests/support/OpenTable.h"

namespace {

using Texts = std::vector<std::string>;

constexpr double Infinity = std::numeric_limits<double>::infinity();

// The locale of the process until the end of the scope, if there is one of that name.
class ProcessLocale {
 public:
  explicit ProcessLocale(const char* name)
      : former(std::setlocale(LC_ALL, nullptr)), there(std::setlocale(LC_ALL, name) != nullptr) {}
  ~ProcessLocale() { std::setlocale(LC_ALL, former.c_str()); }
  ProcessLocale(const ProcessLocale&) = delete;
  ProcessLocale& operator=(const ProcessLocale&) = delete;

  bool isThere() const { return there; }

 private:
  std::string former;
  bool there;
};

class PointLocale : public testing::TestWithParam<const char*> {};
class CommaLocale : public testing::TestWithParam<const char*> {};
class AnyLocale : public testing::TestWithParam<const char*> {};

std::string nameOfLocale(const testing::TestParamInfo<const char*>& info) {
  std::string name;
  for (const char* at = info.param; *at != '\0'; ++at) {
    if (std::isalnum(static_cast<unsigned char>(*at)) != 0) name += *at;
  }
  return name;
}

// The first statement of a test in a locale.
#define IN_LOCALE(name)             \
  const ProcessLocale locale(name); \
  if (!locale.isThere()) GTEST_SKIP() << "the system has no locale " << (name)

struct Number {
  const char* field;
  char decimal;
  double withPoint;  // in a locale with a decimal point
  double withComma;  // in a locale with a decimal comma
};

const Number Numbers[] = {
    {"3.5", '.', 3.5, 3.0},
    {"-0.5", '.', -0.5, -0.0},
    {".5", '.', 0.5, 0.0},
    {"3.5e2", '.', 350.0, 3.0},
    {"0x1.8", '.', 1.5, 1.0},
    {"1.234,5", '.', 1.234, 1.0},
    // A comma that is not the file's decimal character stays a comma.
    {"3,5", '.', 3.0, 3.5},
    {"-0,5", '.', -0.0, -0.5},
    {",5", '.', 0.0, 0.5},
    {"3,5e2", '.', 3.0, 350.0},
    {"0x1,8", '.', 1.0, 1.5},
    {"1,234.5", '.', 1.0, 1.234},
    // The file's decimal character becomes a point before the number is read, whatever the locale.
    {"3,5", ',', 3.5, 3.0},
    {"3.5", ',', 3.5, 3.0},
    {"3!5", '!', 3.5, 3.0},
    {"1.234,5", ',', 1.234, 1.0},
    // No locale's thousands separators are read.
    {"1'000", '.', 1.0, 1.0},
    {"1 000", '.', 1.0, 1.0},
    {"1.000", '.', 1.0, 1.0},
    {"1,000", '.', 1.0, 1.0},
    // Whole numbers and infinity are spelt alike everywhere.
    {" -12abc", '.', -12.0, -12.0},
    {"1e3", '.', 1000.0, 1000.0},
    {"+1.#INF", '.', Infinity, Infinity},
    {"-1.#INF", '.', -Infinity, -Infinity},
    {"+1,#INF", ',', Infinity, Infinity},
    {"+1,#INF", '.', 1.0, 1.0},
    {"+Infinity", '.', Infinity, Infinity},
    {"INF", '.', Infinity, Infinity},
    {"inf", '.', Infinity, Infinity},
    {"-iNfInItY", '.', -Infinity, -Infinity},
    {"\xc4\xb0NF", '.', 0.0, 0.0},  // I with a dot, the capital of i in Turkish
    {"\xc4\xb1nf", '.', 0.0, 0.0},  // i without a dot
    {"one", '.', 0.0, 0.0},
};

bool isSame(double left, double right) { return left == right && std::signbit(left) == std::signbit(right); }

// All getters of floats, from a cached and from a scanning table.
void expectNumbers(double Number::*value) {
  for (const Number& row : Numbers) {
    SCOPED_TRACE(std::string(row.field) + " with the decimal character " + row.decimal);
    const double expected = row.*value;
    for (const long isCached : {1L, 0L}) {
      TestEnv env;
      FileSettings settings;
      settings.isCached = isCached;
      settings.separators = ";";
      settings.decimal = row.decimal;
      TableOfFile table(env, "|NAMES;v;w\n" + std::string(row.field) + ";\n", nullptr, settings);
      const XelCsvLine line = table->getLineByNumber(0);
      EXPECT_PRED2(isSame, line.getFloatByPosition(0), expected);
      EXPECT_PRED2(isSame, line.getFloatByHeader("v"), expected);
      EXPECT_PRED2(isSame, line.getFloatByPositionOrDefaultValue(0, 7.5), expected);
      EXPECT_PRED2(isSame, line.getFloatByHeaderOrDefaultValue("v", 7.5), expected);
      EXPECT_EQ(line.getFloatByPositionOrDefaultValue(1, 7.5), 7.5) << "a default value is not read";
    }
  }
}

// Everything that a locale could have a say in, numbers with fractions apart.
Texts useLibrary() {
  Texts answers;
  const auto note = [&](auto operation) { answers.push_back(outcomeOf(operation)); };
  const std::string bytes = "\xa0\x85\xe4\xc4\xb0 \xff";
  const std::string longName(600, '\xe4');
  forBothKinds([&](Kind kind) {
    TestEnv env;
    FileSettings settings;
    settings.isCached = kind == Kind::Cached ? 1 : 0;
    TableOfFile table(env,
                      "|NAMES,id,Title,I\n|names,x\n|KEYS,1,0,0\n\xa0\n\x85,\t\n#\xe4\ni," + bytes +
                          ",1\nI, \xa0 ,2\n\xc4\xb0,\xc4\xb1,3\n1.5,\"1,5\",2147483648\n",
                      nullptr, settings);
    for (long number = 0; number < 7; ++number) note([&] { return table->getLineByNumber(number); });
    for (const char* key : {"i", "I", "\xc4\xb0", "\xc4\xb1", "\xa0", "1.5", "1,5", "\xff\xfe"}) {
      note([&] { return table->getLineByKey(1, key); });
    }
    for (const char* heading : {"id", "ID",
                                "\xc4\xb0"
                                "D",
                                "title", "I", "i"}) {
      note([&] { return static_cast<long>(table->isHeadingExists(heading)); });
      note([&] { return table->getPosition(heading); });
    }
    note([&] { return table->getLineByNumber(1234567); });
    note([&] { return table->getLineByKey(1, longName.c_str()); });
    note([&] { return table->getLineByKey(1, "I").getIntByPosition(2); });
    note([&] { return table->getLineByKey(1, "I").getIntByPositionOrDefaultValue(0, 1234567); });
    note([&]() -> std::string { return table->getLineByKey(1, "I").getStringByPosition(1); });
    const CoutCapture out;
    table->printKeys();
    table->getLineByNumber(2).printValueOfKeys();
    answers.push_back(out.getText());
  });
  const std::string name = "no such \xc4\xb0 \xff file 1234567";
  TestEnv env;
  note([&] { return XelCsvReader(env, name.c_str()).getNumberOfTables(); });
  note([&] { return XelCsvReader(env, (longName + "/" + longName).c_str()).getNumberOfTables(); });
  return answers;
}

// The field that stands alone in its file, as a number.
double readFloat(const char* field, char decimal) {
  TestEnv env;
  FileSettings settings;
  settings.separators = ";";
  settings.decimal = decimal;
  TableOfFile table(env, field, nullptr, settings);
  return table->getLineByNumber(0).getFloatByPosition(0);
}

}  // namespace

TEST_P(PointLocale, ReadsFractionsAfterTheDecimalPoint) {
  IN_LOCALE(GetParam());
  expectNumbers(&Number::withPoint);
}

TEST_P(CommaLocale, ReadsFractionsAfterACommaAndNoneAfterAPoint) {
  IN_LOCALE(GetParam());
  expectNumbers(&Number::withComma);
}

TEST_P(CommaLocale, ReadsDirectivesWithoutTheirFractions) {
  IN_LOCALE(GetParam());
  forBothKinds([](Kind kind) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT;1.5\nXELO_DATA_SCHEMA;planner 1.5;2,5\n");
    for (const char decimal : {'.', ','}) {
      XelCsvReader reader(env, file.getName(), 1, 0, ";", decimal, '"', '#', kind == Kind::Cached ? 1 : 0);
      EXPECT_EQ(reader.getCsvFormat(), 1.0);
      EXPECT_EQ(reader.getFileVersion(), decimal == '.' ? 2.5 : 2.0) << "a comma that stays is the locale's";
      EXPECT_STREQ(reader.getRequiredBy(), "planner 1.5");
      reader.end();
    }
  });
}

TEST_P(AnyLocale, ReadsIntegersAlike) {
  IN_LOCALE(GetParam());
  const struct {
    const char* field;
    long value;
  } cases[] = {{"1234567", 1234567}, {"1.234.567", 1}, {"1,234,567", 1},
               {"1'234", 1},         {"-5", -5},       {" 42 ", 42},
               {"12abc", 12},        {"", 0},          {"2147483647", 2147483647}};
  for (const auto& row : cases) {
    SCOPED_TRACE(row.field);
    TestEnv env;
    FileSettings settings;
    settings.separators = ";";
    TableOfFile table(env, std::string(row.field) + ";x\n", nullptr, settings);
    const XelCsvLine line = table->getLineByNumber(0);
    EXPECT_EQ(line.getIntByPosition(0), row.value);
    EXPECT_EQ(line.getIntByPositionOrDefaultValue(0, 0), row.value);
  }
}

// Whether one of these bytes is a space in front of a number is the locale's affair, as it is that of strtol and strtod.
TEST_P(AnyLocale, ReadsNumbersAfterAByteBeyondAsciiAsStrtolAndStrtodDo) {
  IN_LOCALE(GetParam());
  std::string content;
  for (int byte = 0x80; byte <= 0xff; ++byte) content += std::string(1, static_cast<char>(byte)) + "42\n";
  OpenTable open(content, Kind::Cached);
  EXPECT_EQ(open.table.getNumberOfItems(), 128) << "no such line is empty, and none is a comment";
  for (long number = 0; number < 128; ++number) {
    const std::string field = std::string(1, static_cast<char>(0x80 + number)) + "42";
    const XelCsvLine line = open.table.getLineByNumber(number);
    EXPECT_STREQ(line.getStringByPosition(0), field.c_str()) << "only the space is trimmed";
    EXPECT_EQ(line.getIntByPosition(0), std::strtol(field.c_str(), nullptr, 10));
    EXPECT_EQ(line.getIntByPositionOrDefaultValue(0, 7), std::strtol(field.c_str(), nullptr, 10));
    EXPECT_EQ(line.getFloatByPosition(0), std::strtod(field.c_str(), nullptr));
    EXPECT_EQ(line.getFloatByPositionOrDefaultValue(0, 7.0), std::strtod(field.c_str(), nullptr));
  }
}

TEST_P(AnyLocale, ChangesNothingButNumbers) {
  Texts expected;
  {
    const ProcessLocale plain("C");
    expected = useLibrary();
  }
  EXPECT_EQ(expected[4], "8: [\xc4\xb0][\xc4\xb1][3]") << "one of the answers, that there are any";
  IN_LOCALE(GetParam());
  EXPECT_EQ(useLibrary(), expected);
}

TEST_P(AnyLocale, DoesNotTranslateMessages) {
  IN_LOCALE(GetParam());
  const DataDirectory directory;
  const std::string loop = std::string(directory.getName()) + "/loop";
  std::filesystem::create_symlink(loop, loop);
  TestEnv env;
  // The text of this errno is the C library's, which has it in many languages.
  EXPECT_EQ(outcomeOf([&] { return XelCsvReader(env, loop.c_str()).getNumberOfTables(); }),
            "XelFileNotFoundException | While trying to open file " + loop + " : Too many levels of symbolic links.");
}

// ---- What a program does about it, as docs/numbers-and-locales.md says.

TEST_P(CommaLocale, LeavesNumbersAloneWhereTheProgramKeepsTheNumericLocaleOfC) {
  IN_LOCALE(GetParam());
  EXPECT_EQ(readFloat("3.5", '.'), 3.0);
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ(readFloat("3.5", '.'), 3.5);
  EXPECT_EQ(readFloat("3,5", ','), 3.5);
}

namespace {

// As in docs/numbers-and-locales.md.
class DecimalPointInThisThread {
 public:
  DecimalPointInThisThread()
      : numbers(newlocale(LC_NUMERIC_MASK, "C", duplocale(LC_GLOBAL_LOCALE))), former(uselocale(numbers)) {}
  ~DecimalPointInThisThread() {
    uselocale(former);
    freelocale(numbers);
  }
  DecimalPointInThisThread(const DecimalPointInThisThread&) = delete;
  DecimalPointInThisThread& operator=(const DecimalPointInThisThread&) = delete;

 private:
  locale_t numbers;
  locale_t former;
};

}  // namespace

TEST_P(CommaLocale, LeavesNumbersAloneWhereTheThreadHasTheNumericLocaleOfC) {
  IN_LOCALE(GetParam());
  {
    const DecimalPointInThisThread point;
    EXPECT_EQ(readFloat("3.5", '.'), 3.5);
    EXPECT_EQ(readFloat("3,5", ','), 3.5);
  }
  EXPECT_EQ(readFloat("3.5", '.'), 3.0);
  EXPECT_EQ(std::strtod("3,5", nullptr), 3.5) << "the process has its locale as before";
}

TEST_P(CommaLocale, ReadsAFileWithDecimalCommasWhenTheCommaIsNotTheDecimalCharacter) {
  IN_LOCALE(GetParam());
  EXPECT_EQ(readFloat("3,5", '.'), 3.5);
  EXPECT_EQ(readFloat("3,5", ','), 3.0);
}

TEST_P(CommaLocale, GivesTextThatOtherFunctionsReadWithAPoint) {
  IN_LOCALE(GetParam());
  TestEnv env;
  FileSettings settings;
  settings.separators = ";";
  settings.decimal = ',';
  TableOfFile table(env, " 3,5 \n", nullptr, settings);
  const std::string text = table->getLineByNumber(0).getStringByPosition(0);
  double value = 0.0;
  EXPECT_EQ(std::from_chars(text.data(), text.data() + text.size(), value).ec, std::errc());
  EXPECT_EQ(value, 3.5);
}

// std::cout has a locale of its own, which is the classic one unless the program gives it another.
TEST_P(CommaLocale, IsThatOfStandardOutputOnlyWhenTheStreamIsGivenIt) {
  IN_LOCALE(GetParam());
  TestEnv env;
  TableOfFile table(env, std::string(1000, ',') + "\n");
  const auto print = [&] {
    const CoutCapture out;
    table->printKeys();
    return out.getText();
  };
  const std::locale former = std::locale::global(std::locale(GetParam()));
  const std::string plain = print();
  const std::locale formerOfCout = std::cout.imbue(std::locale());
  const std::string grouped = print();
  std::cout.imbue(formerOfCout);
  std::locale::global(former);
  const auto lastLine = [](const std::string& text) { return text.substr(text.rfind('\n', text.size() - 2) + 1); };
  EXPECT_EQ(lastLine(plain), "key 1000 ----> Column 1000\n");
  EXPECT_EQ(lastLine(grouped), "key 1.000 ----> Column 1.000\n");
}

INSTANTIATE_TEST_SUITE_P(Locale, PointLocale, testing::Values("C", "C.UTF-8"), nameOfLocale);
INSTANTIATE_TEST_SUITE_P(Locale, CommaLocale, testing::Values("de_DE.UTF-8", "tr_TR.UTF-8", "de_DE.ISO-8859-1"),
                         nameOfLocale);
INSTANTIATE_TEST_SUITE_P(Locale, AnyLocale,
                         testing::Values("C", "C.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8", "de_DE.ISO-8859-1"),
                         nameOfLocale);
