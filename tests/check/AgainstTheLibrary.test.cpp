// Random files: where there is no finding that says so nothing throws, and where there is one the library does as it says.
#include <map>
#include <random>
#include <set>

#include "tests/check/Checking.h"

namespace {

// The same files in every run, others with --gtest_shuffle --gtest_random_seed=N.
unsigned seed(int first) {
  const bool isShuffled = testing::GTEST_FLAG(shuffle);
  return static_cast<unsigned>(first + (isShuffled ? testing::UnitTest::GetInstance()->random_seed() : 0));
}

// Lines as people write them, and as they should not.
std::string makeFile(std::mt19937& random, bool isMultiTable) {
  const auto pick = [&random](std::initializer_list<const char*> texts) {
    return std::string(texts.begin()[random() % texts.size()]);
  };
  std::string text;
  const auto lines = 1 + random() % 8;
  for (std::size_t line = 0; line < lines; ++line) {
    if (random() % 12 == 0) {
      text += pick({"# a comment\n", "\n", "  \n", " # no comment\n", "#,,\n"});
      continue;
    }
    const std::string name = isMultiTable ? pick({"A", "B", "A", "A", " A "}) : "";
    const auto marker = random() % 10;
    std::string fields;
    if (marker == 0) {
      fields = name + pick({"|NAMES", "|names", "|NAMES", "|x"});
    } else if (marker == 1) {
      fields = name + pick({"|KEYS", "|keys", "|NAMES KEYS", "|KEYS"});
    } else {
      fields = isMultiTable ? name : pick({"1", "2", "3", "4", "x|y"});
    }
    for (auto more = random() % 4; more > 0; --more) {
      fields += ',' + (marker == 1 ? pick({"1", "0", "1", "99999999999"})
                                   : pick({"1", "2", "3", "a", "b", "\"a,b\"", "", "-", "a-b", " c", "\"d"}));
    }
    text += fields + '\n';
  }
  if (random() % 4 == 0) text.pop_back();
  return text;
}

// How making a table ends.
enum class Outcome { Made, Overflow, LacksKey, DuplicatedLine };

template <class Make>
Outcome outcomeOfMaking(Make make) {
  try {
    make();
    return Outcome::Made;
  } catch (const XelCsvReader::XelOverflowException&) {
    return Outcome::Overflow;
  } catch (const XelCsvReader::XelDuplicatedLineException&) {
    return Outcome::DuplicatedLine;
  } catch (const XelCsvReader::XelCsvReaderException&) {
    return Outcome::LacksKey;
  }
}

// What the findings of a table say of making it: the first that ends it. Two lines with one key end the index of a one-table
// file, so that no line behind them is looked at.
Outcome foretell(const CheckedFile& file, const std::string& table, bool duplicatesThrow) {
  Outcome outcome = Outcome::Made;
  long first = 0;
  for (const XelCsvFinding& finding : file.getFindings()) {
    if (finding.table != table) continue;
    const std::string code = finding.code;
    if (code == "key-line-overflow") return Outcome::Overflow;
    const bool lacksKey = code == "ragged" && finding.message.find("key lacks") != std::string::npos;
    const bool isDuplicate = code == "duplicate-key";
    if ((!lacksKey && !isDuplicate) || (first != 0 && first < finding.line)) continue;
    first = finding.line;
    outcome = lacksKey ? Outcome::LacksKey : duplicatesThrow ? Outcome::DuplicatedLine : Outcome::Made;
  }
  return outcome;
}

bool holds(const CheckedFile& file, const std::string& code, const std::string& table) {
  for (const XelCsvFinding& finding : file.getFindings()) {
    if (finding.code == code && finding.table == table) return true;
  }
  return false;
}

// The lines that a cached reader of one table gives by their numbers.
long countDifferentLines(XelCsvReader& reader) {
  std::set<long> numbers;
  for (long number = 0; number < reader.getNumberOfItems(); ++number) {
    numbers.insert(reader.getLineByNumber(number).getLineNumber());
  }
  return static_cast<long>(numbers.size());
}

}  // namespace

TEST(CheckAgainstTheLibrary, OneTable) {
  std::mt19937 random(seed(11));
  std::map<Outcome, long> seen;
  for (int round = 0; round < 1500; ++round) {
    const std::string text = makeFile(random, false);
    SCOPED_TRACE(text);
    CheckedFile file(text, oneTable());
    const Outcome outcome = outcomeOfMaking([&file] { file.read(); });
    ASSERT_EQ(outcome, foretell(file, "", false)) << file.show();
    ++seen[outcome];
    if (outcome == Outcome::Overflow) continue;
    const long items = file.read(false).getNumberOfItems();
    ASSERT_EQ(items == 0, holds(file, "empty-table", "")) << file.show();
    if (outcome != Outcome::Made) continue;
    ASSERT_EQ(countDifferentLines(file.read()) < items, holds(file, "duplicate-key", "")) << file.show();
  }
  for (const Outcome outcome : {Outcome::Made, Outcome::Overflow, Outcome::LacksKey}) EXPECT_GT(seen[outcome], 10);
}

TEST(CheckAgainstTheLibrary, ManyTables) {
  std::mt19937 random(seed(12));
  std::map<Outcome, long> seen;
  long duplicated = 0;
  for (int round = 0; round < 2500; ++round) {
    const bool isSplit = round % 2 == 1;
    const std::string text = makeFile(random, true);
    SCOPED_TRACE((isSplit ? "split\n" : "not split\n") + text);
    CheckedFile file(text, isSplit ? splitTables() : manyTables());
    std::set<std::string> codes;
    for (const XelCsvFinding& finding : file.getFindings()) codes.insert(finding.code);
    try {
      file.read();
    } catch (const XelCsvReader::XelDuplicatedTableException&) {
      ++duplicated;
      ASSERT_EQ(codes.count("duplicate-table"), 1U) << file.show();
      continue;
    }
    ASSERT_EQ(codes.count("duplicate-table"), 0U) << file.show();
    for (const char* name : {"A", "B"}) {
      if (!file.read().isTableExists(name)) continue;
      XelCsvTableReader table;
      const Outcome outcome = outcomeOfMaking([&] { table = file.read().getTableByName(name); });
      EndGuard ended(table);
      ASSERT_EQ(outcome, foretell(file, name, true)) << name << '\n' << file.show();
      ++seen[outcome];
      if (outcome == Outcome::Made) {
        ASSERT_EQ(table.getNumberOfItems() == 0, holds(file, "empty-table", name)) << name << '\n' << file.show();
      }
    }
  }
  EXPECT_GT(duplicated, 30);
  for (const Outcome outcome : {Outcome::Made, Outcome::Overflow, Outcome::LacksKey, Outcome::DuplicatedLine}) {
    EXPECT_GT(seen[outcome], 10);
  }
}
