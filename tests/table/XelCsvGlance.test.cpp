#include "csv/table/XelCsvGlance.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "csv/line/XelCsvLineI.h"
#include "csv/line/XelCsvText.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "tests/support/OpenTable.h"
#include "tests/support/TableModel.h"
#include "tests/support/VectorLevels.h"

namespace {

using Texts = std::vector<std::string>;

// The first field of a raw line, formatted and trimmed.
std::string getFirstField(const std::string& line, const XelCsvFormat& format) {
  std::vector<char> to(line.size() + 1);
  XelFormatLine(line.data(), line.data() + line.size(), to.data(), format);
  const std::string field = to.data();
  const XelCsvSpan kept = XelTrimmed(field.data(), field.data() + field.size());
  return {kept.begin, kept.end};
}

// A file of long runs of lines; every tenth or so is odd.
std::string makeContent(std::mt19937& random, const Texts& names, char separator, bool isRegular) {
  const Texts odd = {"\n",      " \n", "# no line\n", "\"K1\"",     " K1 ",
                     "K\"1\"x", "\t",  "\t \n",       "",           "K1 ",
                     "K1\r\n",  "K!1", "K1;\"x",      "\"K;1\";K1", std::string("K1\0;K1", 6),
                     ";"};
  std::string content;
  const std::size_t wanted = random() % 40000;
  // The rest of a line that is read in pieces would be a table of its own.
  const std::size_t longest = names == Texts{"T"} ? 5000 : 11000;
  while (content.size() < wanted) {
    const std::string& name = names[random() % names.size()];
    for (auto lines = random() % 200; lines > 0; --lines) {
      if (!name.empty()) content += name + separator;
      if (!isRegular && random() % 12 == 0) {
        content += odd[random() % odd.size()];
      } else {
        content += "K" + std::to_string(random() % 3000);
      }
      if (content.back() == '\n') continue;
      if (isRegular || random() % 50 != 0) content += separator;
      content +=
          std::string(random() % (random() % 500 == 0 ? longest : 30), "x;\" "[isRegular ? 0 : random() % 4]) + "\n";
    }
    if (random() % 2 == 0) content += odd[random() % 3];
  }
  if (random() % 3 == 0 && !content.empty()) content.pop_back();
  return content;
}

// The number of fields of the line that the last step of a walk over the table stands on; 0 when it has none.
long countFieldsOfLastLine(const XelCsvTableReader& table) {
  long fields = 0;
  for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) fields = (*it).getNumberOfFields();
  return fields;
}

// By the composed key, which the table frees whenever it throws.
std::string findKey(XelCsvTableReader& table, const std::string& key) {
  const XelEnv env = table.getEnv();
  const char* given = XelCopyString(env, key.c_str()).release();
  return outcomeOf([&]() -> std::string {
    const XelEnvOwner<XelCsvLineI> line(table.getImpl()->getLineByKey(given));
    XelFreeString(env, given);
    return textOf(XelCsvLine(line.get()));
  });
}

const Texts KeysOfOneColumn = {
    "K1",    "K17", "K170", "K1700", "K", "",        "K;1",
    "K1;K1", "x",   "K.1",  " K1",   "A", "nowhere", "a key so long that no glance at the beginning of a line will do"};

void expectWhatTheModelFinds(const std::string& content, const model::Settings& settings, const char* name,
                             const Texts& keys = KeysOfOneColumn) {
  TestEnv env;
  FileSettings real;
  real.isCached = 0;
  real.separators = ";";
  real.decimal = settings.decimal;
  real.allowTableSplitting = settings.isSplit ? 1 : 0;
  TableOfFile table(env, content, name, real);
  const std::string file = table.getFile().getName();
  const model::TableEntry* entry = nullptr;
  std::vector<model::TableEntry> entries;
  if (name != nullptr) entries = model::scanTables(file, settings);
  for (const model::TableEntry& each : entries) {
    if (each.name == name) entry = &each;
  }
  model::Table expected(file, settings, entry);
  ASSERT_EQ(table->getNumberOfItems(), expected.getNumberOfItems());
  const bool isNotSplit = name == nullptr || !settings.isSplit;
  const long fieldsOfLastLine = isNotSplit ? countFieldsOfLastLine(*table) : 0;
  for (const std::string& key : keys) {
    const std::string found = findKey(*table, key);
    ASSERT_EQ(found, model::outcomeOf([&] { return expected.getLineByKey(key); })) << '"' << key << '"';
    if (isNotSplit && found.find("No line having key") != std::string::npos) {
      ASSERT_EQ(table->getImpl()->getNumberOfFields(), fieldsOfLastLine) << '"' << key << '"';
    }
  }
}

}  // namespace

// Every byte on each side of the wanted text and in the midst of it.
TEST(Glance, NeverTakesALineWithTheWantedFieldForAnother) {
  for (const char decimal : {'.', '!'}) {
    for (const char* separators : {";", "; ", ";\t"}) {
      const XelCsvFormat format(separators, decimal, '"');
      for (const std::string& wanted : Texts{"a", "ab", "a b", "12345678", "123456789", "1.5", std::string(56, 'n')}) {
        const XelCsvGlance glance(format, wanted.c_str());
        long told = 0;
        for (int byte = 0; byte < 256; ++byte) {
          for (std::size_t at = 0; at <= wanted.size(); ++at) {
            for (const bool isInserted : {false, true}) {
              std::string line = wanted + ";x";
              if (!isInserted) line.erase(at, 1);
              line.insert(at, 1, static_cast<char>(byte));
              const std::string padded = line + std::string(static_cast<std::size_t>(glance.getReach()), ';');
              if (!glance.isUsable() || !glance.isOther(padded.c_str())) continue;
              ++told;
              EXPECT_NE(getFirstField(line, format), wanted) << testing::PrintToString(line);
            }
          }
        }
        if (glance.isUsable()) {
          EXPECT_GT(told, 400) << wanted;
        }
      }
    }
  }
}

TEST(Glance, IsOfNoUseForTextsWithBytesThatMeanSomething) {
  const XelCsvFormat format("; ", '!', '"');
  for (const std::string& wanted : Texts{"", " a", "a ", "a;b", "a b", "a\"b", "a!b", "a\nb", std::string(57, 'n')}) {
    EXPECT_FALSE(XelCsvGlance(format, wanted.c_str()).isUsable()) << wanted;
  }
  for (const std::string& wanted : Texts{"a", "a.b", "a\tb", "\xff", std::string(56, 'n')}) {
    EXPECT_TRUE(XelCsvGlance(format, wanted.c_str()).isUsable()) << wanted;
  }
}

// What is told of the first of several values, for each byte on each side of it and in its midst.
TEST(Glance, AtAValueThatOthersFollowTellsWhereTheNextOneIsWanted) {
  constexpr long NextIsUnsure = XelCsvGlance::Unsure;
  constexpr long NextIsOther = XelCsvGlance::Other;
  const XelCsvFormat format(";", ',', '"');
  const XelCsvGlance glance(format, "ab-c--d");
  const std::string padding(static_cast<std::size_t>(glance.getReach()), ';');
  const struct {
    const char* field;
    long from;
    long next;
  } Cases[] = {{"ab;", 0, 3},
               {"ab\n", 0, 3},
               {"ab\r\n", 0, 3},
               {"c;", 3, 5},
               {";", 5, 6},
               {"ab-c;", 0, 5},
               {"ab-c-;", 0, 6},
               {"a;", 0, NextIsOther},
               {";", 0, NextIsOther},
               {"abx;", 0, NextIsOther},
               {"b;", 3, NextIsOther},
               {"ab-c--d;", 0, NextIsOther},
               {"ab-c--dx;", 0, NextIsOther},
               {"d;", 6, NextIsOther},
               {" ab;", 0, NextIsUnsure},
               {"ab ;", 0, NextIsUnsure},
               {"\"ab\";", 0, NextIsUnsure},
               {"ab,;", 0, NextIsUnsure}};
  for (const auto& each : Cases) {
    EXPECT_EQ(glance.findNext((each.field + padding).c_str(), each.from), each.next) << each.field << each.from;
  }
  EXPECT_TRUE(glance.isOther(("x" + padding).c_str(), 6));
  EXPECT_FALSE(glance.isOther(("d" + padding).c_str(), 6));
  EXPECT_TRUE(glance.isOther(("dx" + padding).c_str(), 6));
}

TEST(ScanningSearch, FindsWhatTheModelDoesByAnyColumnsInLongRunsOfLines) {
  struct Keys {
    const char* marks;  // of the fields behind the table's name
    Texts wanted;
  };
  const Keys AllKeys[] = {
      {"0;1", {"K1", "K17", "K1700", "", "x", "K.1", "nowhere"}},
      {"0;0;1", {"K1", "K17", "x", ""}},
      {"1;1", {"K1-x", "K17-", "K17-xx", "K1-K1", "K170-x;", "K-", "-", "-x", "K1", "nowhere-x", "K1-nowhere"}},
      {"1;0;1", {"K1-x", "K17-", "K1-K1", "-"}},
      {"0;0;0;0;1", {"K1"}}};
  std::mt19937 random(92);
  for (int run = 0; run < 150; ++run) {
    const Keys& keys = AllKeys[run % 5];
    SCOPED_TRACE(std::to_string(run) + ": " + keys.marks);
    const bool isMultiTable = run % 2 == 0;
    model::Settings settings;
    settings.separators = ";";
    settings.isMultiTable = isMultiTable;
    settings.isSplit = run % 4 == 0;
    settings.decimal = run % 7 == 0 ? '!' : '.';
    const std::string marker = isMultiTable ? "T|KEYS;" : "|KEYS;";
    std::string content = marker + keys.marks + "\n";
    const Texts names = isMultiTable ? (settings.isSplit ? Texts{"T", "T", "U", "T"} : Texts{"T"}) : Texts{""};
    content += makeContent(random, names, ';', run % 3 != 1);
    // Lines that end where a key field should begin stand behind all others, so that keys before them are found.
    const bool hasThird = run % 3 == 2;
    std::string whole;
    for (const char byte : content) {
      if (byte == '\n' && hasThird && random() % 2000 != 0) whole += ";K" + std::to_string(random() % 30);
      whole += byte;
    }
    const XelVectorLevel levels[] = {XelVectorLevel::Plain, XelVectorLevel::Bytes16, XelVectorLevel::Bytes32};
    const AtVectorLevel taken(levels[random() % 3]);
    expectWhatTheModelFinds(whole, settings, isMultiTable ? "T" : nullptr, keys.wanted);
    if (HasFatalFailure()) return;
  }
}

// A line of the region that lacks a key field is told wherever it stands, also when its first key field is another.
TEST(ScanningSearch, ByALaterColumnTellsOfALineWithoutIt) {
  std::string content = "|KEYS,1,0,1\n";
  for (int line = 0; line < 5000; ++line) content += "K" + std::to_string(line) + ",x,y\n";
  OpenTable open(content + "Z,x\nlast,x,y\n", Kind::Scanning);
  EXPECT_EQ(open.getByKey("K4999", "y"), "5000: [K4999][x][y]");
  EXPECT_EQ(
      open.getByKey("last", "y"),
      "XelFieldNotFoundException | XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line "
      "number 5001 while trying getStringByPosition");
}

TEST(ScanningSearch, FindsAndCountsWhatTheModelDoesInLongRunsOfLines) {
  std::mt19937 random(91);
  for (int run = 0; run < 120; ++run) {
    SCOPED_TRACE(run);
    const bool isMultiTable = run % 2 == 0;
    model::Settings settings;
    settings.separators = ";";
    settings.isMultiTable = isMultiTable;
    settings.isSplit = run % 4 == 0;
    settings.decimal = run % 3 == 0 ? '!' : '.';
    const char* name = isMultiTable ? "T" : nullptr;
    std::string content = isMultiTable ? "T|NAMES;key\nT|KEYS;1\nT;K0;\n" : "|NAMES;key\n|KEYS;1\nK0;\n";
    content +=
        makeContent(random, isMultiTable ? (settings.isSplit ? Texts{"T", " T", "U", "T"} : Texts{"T"}) : Texts{""},
                    ';', run % 3 != 1);
    if (isMultiTable && !settings.isSplit) content += "Z;after\n";
    const XelVectorLevel levels[] = {XelVectorLevel::Plain, XelVectorLevel::Bytes16, XelVectorLevel::Bytes32};
    const AtVectorLevel taken(levels[run % 3]);
    expectWhatTheModelFinds(content, settings, name);
    if (HasFatalFailure()) return;
  }
}

// Comments and empty lines, also of blanks, at both ends of a region that is larger than a block.
TEST(ScanningSearch, CountsNoCommentAndNoEmptyLine) {
  std::string content = "|NAMES,key\n|KEYS,1\n";
  long items = 0;
  for (int line = 0; line < 40000; ++line) {
    const char* const lines[] = {"# comment\n", "\n", " \t \n", "\t\r\n", " k\n", "k\n", "\tk\n", " #\n", "\r\n"};
    const int kind = line % 9;
    content += lines[kind];
    if (kind >= 4 && kind <= 7) ++items;
  }
  OpenTable open(content + " ", Kind::Scanning);
  EXPECT_EQ(open.table.getNumberOfItems(), items);
  OpenTable longer(content + " x", Kind::Scanning);
  EXPECT_EQ(longer.table.getNumberOfItems(), items + 1);
  // Lines that begin with a blank are comments then, and those with # are not.
  FileSettings settings;
  settings.isCached = 0;
  settings.comment = ' ';
  TableOfFile blankIsComment(open.env, content, nullptr, settings);
  long otherItems = 0;
  for (int line = 0; line < 40000; ++line) otherItems += line % 9 == 0 || line % 9 == 5 || line % 9 == 6 ? 1 : 0;
  EXPECT_EQ(blankIsComment->getNumberOfItems(), otherItems);
}

// A line of the region with too few fields is still told, wherever it stands, when fewer fields than keys are possible.
TEST(ScanningSearch, TellsOfALineWithoutItsKeyField) {
  std::string content = "T|NAMES,key\nT|KEYS,1\n";
  for (int line = 0; line < 5000; ++line) content += "T,K" + std::to_string(line) + "\n";
  OpenTable open(content + "T\nT,last\n", Kind::Scanning, "T");
  EXPECT_EQ(open.getByKey("K4999"), "5001: [T][K4999]");
  EXPECT_EQ(
      open.getByKey("last"),
      "XelFieldNotFoundException | XelCsvReader::XelFieldNotFoundException : Field Not Found at position 1 in line "
      "number 5002, in table T while trying getStringByPosition");
}
