// The comfort header: guards, walks by range-for, lookups without a count, lookups that answer 'none'.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"
#include "xelcsv/XelCsvComfort.h"

namespace {

using Lines = std::vector<std::string>;
using Base = XelCsvReader::XelCsvReaderException;
using LineNotFound = XelCsvReader::XelLineNotFoundException;
using TableNotFound = XelCsvReader::XelTableNotFoundException;
using IncorrectUse = XelCsvReader::XelIncorrectCsvReaderUseException;

constexpr const char* Cities =
    "Cities|NAMES,city,year,value\nCities|KEYS,1,1,0\nCities,Paris,2004,7\nCities,Rome,2004,8\nOther,x\n";
constexpr const char* OneTable = "|NAMES,city,year,value\n|KEYS,1,1,0\nParis,2004,7\nRome,2004,8\n";

// The lines of an optional: "none" without one.
std::string textOfFound(const std::optional<XelCsvLine>& line) { return line.has_value() ? textOf(*line) : "none"; }

template <class Range>
Lines readLines(Range&& range) {
  Lines lines;
  for (const XelCsvLine& line : range) lines.push_back(textOf(line));
  return lines;
}

std::vector<std::string> readNames(const XelCsvReader& reader) {
  std::vector<std::string> names;
  for (XelCsvTableReader& table : XelTables(reader)) names.emplace_back(table.getNameOfTable());
  return names;
}

// Something with an end() that is no handle of the library.
struct Counted {
  explicit Counted(int* newEnds = nullptr) : ends(newEnds) {}
  void end() {
    if (ends != nullptr) ++*ends;
    ends = nullptr;
  }
  int* ends;
};

template <class Source, class = void>
constexpr bool CanBeWalked = false;
template <class Source>
constexpr bool CanBeWalked<Source, std::void_t<decltype(XelLines(std::declval<Source>()))>> = true;

template <class Source, class = void>
constexpr bool HasTablesToWalk = false;
template <class Source>
constexpr bool HasTablesToWalk<Source, std::void_t<decltype(XelTables(std::declval<Source>()))>> = true;

template <class Handle, class = void>
constexpr bool CanBeAsked = false;
template <class Handle>
constexpr bool CanBeAsked<Handle, std::void_t<decltype(XelFindLine(std::declval<Handle>(), "a"))>> = true;

}  // namespace

// ---- The guard.

static_assert(!std::is_copy_constructible_v<XelScoped<XelCsvReader>>);
static_assert(!std::is_copy_assignable_v<XelScoped<XelCsvReader>>);
static_assert(!std::is_constructible_v<XelScoped<XelCsvReader>, XelScoped<XelCsvReader>&>, "would end it twice");
static_assert(!std::is_constructible_v<XelScoped<XelCsvReader>, const XelScoped<XelCsvReader>&>);
static_assert(std::is_nothrow_move_constructible_v<XelScoped<XelEnv>>);
static_assert(std::is_nothrow_move_assignable_v<XelScoped<XelEnv>>);
static_assert(std::is_convertible_v<XelScoped<XelEnv>&, XelEnv>);
static_assert(!std::is_convertible_v<XelScoped<XelEnv>, XelEnv>, "the copy would be void at once");
static_assert(!std::is_constructible_v<XelScoped<XelCsvReader>, const char*>, "no environment");
static_assert(sizeof(XelScoped<XelCsvReader>) == sizeof(XelCsvReader), "a guard is its handle and nothing else");

TEST(Scoped, EndsItsHandleAtTheEndOfTheScope) {
  int ends = 0;
  {
    const XelScoped<Counted> guard(&ends);
    EXPECT_EQ(ends, 0);
  }
  EXPECT_EQ(ends, 1);
  try {
    const XelScoped<Counted> guard(&ends);
    throw 1;
  } catch (int) {
    EXPECT_EQ(ends, 2);
  }
}

TEST(Scoped, TakesTheArgumentsOfItsHandle) {
  forBothKinds([](Kind kind) {
    const TestEnv env;
    const DataFile file(OneTable);
    XelScoped<XelCsvReader> reader(env, file.getName(), 0, 0, ",", '.', '"', '#', kind == Kind::Cached ? 1 : 0);
    EXPECT_EQ(textOf(reader->getLineByKey(2, "Rome", "2004")), "3: [Rome][2004][8]");
    EXPECT_EQ((*reader).getNumberOfItems(), 2);
  });
}

TEST(Scoped, LetsTheExceptionOfAConstructorThrough) {
  const TestEnv env;
  const DataFile file("");
  file.remove();
  EXPECT_XEL_THROW(XelScoped<XelCsvReader>(env, file.getName()), XelCsvReader::XelFileNotFoundException,
                   textOfMissing(file));
}

TEST(Scoped, TakesOverAHandleThatIsGiven) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelScoped table(open.reader.getTableByName("Other"));
    static_assert(std::is_same_v<decltype(table), XelScoped<XelCsvTableReader>>);
    EXPECT_EQ(textOf(table->getLineByKey(1, "x")), "4: [Other][x]");
  });
}

TEST(Scoped, EndsTheLastLineOfATableThatIsLent) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    {
      XelScoped<XelCsvTableReader> table(open.reader.getReaderForUniqueTableFile());
      EXPECT_EQ(textOf(table->getLineByKey(2, "Rome", "2004")), "3: [Rome][2004][8]");
    }
    EXPECT_EQ(open.getByKey("Rome", "2004"), "3: [Rome][2004][8]");
  });
}

TEST(Scoped, EndsALineOfTheUser) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    XelScoped<XelCsvLine> kept;
    EXPECT_TRUE(kept->isEmpty());
    kept->copy(open.table.getLineByNumber(0));
    EXPECT_EQ(open.getByNumber(1), "3: [Rome][2004][8]");
    EXPECT_EQ(textOf(*kept), "2: [Paris][2004][7]");
  });
}

TEST(Scoped, WithoutArgumentsIsANewEnvironmentOrAnEmptyHandle) {
  const XelScoped<XelEnv> env;
  EXPECT_FALSE(env->isEmpty());
  EXPECT_TRUE(XelScoped<XelCsvReader>()->isEmpty());
  EXPECT_TRUE(XelScoped<XelCsvTableReader>()->isEmpty());
  EXPECT_TRUE(XelScoped<XelCsvLine>()->isEmpty());
}

TEST(Scoped, StandsForItsHandle) {
  const DataFile file(Cities);
  TestAllocator allocator;
  {
    XelScoped<XelEnv> env(&allocator);
    XelScoped<XelCsvReader> reader(env, file.getName(), 1);
    XelScoped table(reader->getTableByName("Cities"));
    XelCsvTableReader::LineIterator lines(table);
    EXPECT_EQ(walk(lines), (Lines{"2: [Cities][Paris][2004][7]", "3: [Cities][Rome][2004][8]"}));
    XelCsvTableReader& same = table;
    EXPECT_EQ(&same, &*table);
    const XelScoped<XelCsvTableReader>& constant = table;
    const XelCsvTableReader& sameAgain = constant;
    EXPECT_EQ(&sameAgain, &*table);
    EXPECT_EQ(constant->getNumberOfKeys(), 2);
    lines.end();
  }
  EXPECT_EQ(allocator.getBlocksOut(), 0);
}

TEST(Scoped, HandsItsHandleOnWhenItIsMoved) {
  int first = 0;
  int second = 0;
  {
    XelScoped<Counted> from(&first);
    XelScoped<Counted> to(std::move(from));
    EXPECT_EQ(from->ends, nullptr);
    EXPECT_EQ(first, 0);
    XelScoped<Counted> target(&second);
    target = std::move(to);
    EXPECT_EQ(second, 1) << "the former handle goes at once";
    EXPECT_EQ(first, 0);
    XelScoped<Counted>& self = target;
    target = std::move(self);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(target->ends, &first);
  }
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);
}

TEST(Scoped, OfAnEnvironmentIsEmptyWhenItWasMovedFrom) {
  XelScoped<XelEnv> from;
  const XelEnvI* environment = from->getImpl();
  const XelScoped<XelEnv> to(std::move(from));
  EXPECT_TRUE(from->isEmpty());
  EXPECT_EQ(to->getImpl(), environment);
}

TEST(Scoped, ReleasesItsHandleToTheCaller) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelScoped guard(open.reader.getTableByName("Other"));
    XelCsvTableReader table = guard.release();
    EXPECT_TRUE(guard->isEmpty());
    EXPECT_EQ(textOf(table.getLineByKey(1, "x")), "4: [Other][x]");
    table.end();
  });
}

TEST(Scoped, OfAHandleThatWasEndedComesToNoHarm) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    XelScoped table(open.reader.getTableByName("Other"));
    table->end();
    EXPECT_TRUE(table->isEmpty());
  });
}

// ---- Walks over lines.

static_assert(std::is_same_v<std::iterator_traits<XelLines::iterator>::iterator_category, std::input_iterator_tag>);
static_assert(std::is_same_v<std::iterator_traits<XelLines::iterator>::value_type, XelCsvLine>);
static_assert(std::is_same_v<std::iterator_traits<XelTables::iterator>::reference, XelCsvTableReader&>);
static_assert(std::is_trivially_copyable_v<XelLines::iterator>);
static_assert(CanBeWalked<XelCsvTableReader&> && CanBeWalked<const XelCsvTableReader&>);
static_assert(CanBeWalked<XelCsvReader&> && CanBeWalked<const XelCsvReader&>);
static_assert(CanBeWalked<XelScoped<XelCsvTableReader>&> && CanBeWalked<const XelScoped<XelCsvReader>&>);
static_assert(!CanBeWalked<XelCsvTableReader> && !CanBeWalked<XelCsvReader>, "nobody would end them");
static_assert(!CanBeWalked<XelScoped<XelCsvTableReader>> && !CanBeWalked<const XelCsvTableReader>);
static_assert(HasTablesToWalk<XelCsvReader&> && HasTablesToWalk<const XelCsvReader&>);
static_assert(HasTablesToWalk<XelScoped<XelCsvReader>&>);
static_assert(!HasTablesToWalk<XelCsvReader> && !HasTablesToWalk<XelScoped<XelCsvReader>>);

TEST(WalkOverLines, YieldsTheLinesOfATable) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_EQ(readLines(XelLines(open.table)), open.getAll());
    EXPECT_EQ(readLines(XelLines(open.table)), (Lines{"2: [Cities][Paris][2004][7]", "3: [Cities][Rome][2004][8]"}));
    XelScoped other(open.reader.getTableByName("Other"));
    EXPECT_EQ(readLines(XelLines(other)), Lines{"4: [Other][x]"});
  });
}

TEST(WalkOverLines, YieldsTheLinesOfAOneTableFile) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    EXPECT_EQ(readLines(XelLines(open.reader)), (Lines{"2: [Paris][2004][7]", "3: [Rome][2004][8]"}));
  });
}

TEST(WalkOverLines, OfAnEmptyTableHasNone) {
  forBothKinds([](Kind kind) {
    OpenTable open("A|NAMES,h\nB,1\n", kind, "A");
    XelLines lines(open.table);
    EXPECT_TRUE(lines.begin() == lines.end());
  });
}

TEST(WalkOverLines, OfAFileOfSeveralTablesSaysThatThereIsNoSuchTable) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_XEL_THROW(XelLines(open.reader), IncorrectUse,
                     "XelCsvReader::XelIncorrectCsvReaderUseException : " + std::string(open.file.getName()) +
                         " is a multi-Table file. There is no reader for unique table.");
  });
}

TEST(WalkOverLines, StartsAgainWithBegin) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    XelLines lines(open.table);
    auto it = lines.begin();
    EXPECT_EQ(textOf(*it), "2: [Paris][2004][7]");
    ++it;
    EXPECT_EQ(it->getLineNumber(), 3);
    it = lines.begin();
    EXPECT_EQ(it->getLineNumber(), 2);
    EXPECT_EQ(readLines(lines), open.getAll());
    EXPECT_EQ(readLines(lines), open.getAll());
  });
}

TEST(WalkOverLines, IteratorsCompareByWhereTheyStand) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    XelLines lines(open.table);
    XelLines others(open.table);
    auto it = lines.begin();
    const auto copy = it;
    EXPECT_TRUE(it == copy);
    EXPECT_TRUE(it != others.begin());
    EXPECT_TRUE(it != lines.end());
    EXPECT_TRUE(lines.end() == XelLines::iterator());
    ++it;
    EXPECT_TRUE(it == copy) << "copies share one walk";
    ++it;
    EXPECT_TRUE(it == lines.end());
    EXPECT_TRUE(copy == lines.end());
    EXPECT_TRUE(it == others.end());
  });
}

TEST(WalkOverLines, AnswersTheFormerLineWhenItGoesOnBehind) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    XelLines lines(open.table);
    auto it = lines.begin();
    EXPECT_EQ(textOf(*it++), "2: [Paris][2004][7]");
    EXPECT_EQ(textOf(*it), "3: [Rome][2004][8]");
    const auto former = it++;
    EXPECT_TRUE(it == lines.end());
    EXPECT_EQ(textOf(*former), "3: [Rome][2004][8]");
  });
}

TEST(WalkOverLines, ServesAlgorithms) {
  forBothKinds([](Kind kind) {
    OpenTable open("|NAMES,item,price\n|KEYS,1,0\nnail,5\nbolt,20\nscrew,10\n", kind);
    XelLines lines(open.table);
    EXPECT_EQ(std::distance(lines.begin(), lines.end()), 3);
    const auto isDear = [](const XelCsvLine& line) { return line.getIntByHeader("price") >= 10; };
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isDear), 2);
    const auto found = std::find_if(lines.begin(), lines.end(), isDear);
    EXPECT_STREQ(found->getStringByHeader("item"), "bolt");
    std::vector<long> prices;
    std::transform(lines.begin(), lines.end(), std::back_inserter(prices),
                   [](const XelCsvLine& line) { return line.getIntByHeader("price"); });
    EXPECT_EQ(prices, (std::vector<long>{5, 20, 10}));
  });
}

TEST(WalkOverLines, MayBeLeftInTheMiddle) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    for (const XelCsvLine& line : XelLines(open.table)) {
      EXPECT_EQ(textOf(line), "2: [Paris][2004][7]");
      break;
    }
    try {
      for (const XelCsvLine& line : XelLines(open.table)) throw line.getLineNumber();
      FAIL();
    } catch (long number) {
      EXPECT_EQ(number, 2);
    }
    // TestEnv looks whether memory and file came back.
  });
}

TEST(WalkOverLines, MeetsLookupsOfTheSameTable) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    Lines found;
    for (const XelCsvLine& line : XelLines(open.table)) {
      found.push_back(textOf(XelGetLine(open.table, line.getStringByPosition(0), line.getIntByPosition(1))));
    }
    EXPECT_EQ(found, (Lines{"2: [Paris][2004][7]", "3: [Rome][2004][8]"}));
  });
}

TEST(WalkOverLines, SaysThatTheFileIsGone) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    XelLines lines(open.table);
    EXPECT_EQ(readLines(lines).size(), 2U);
    const auto former = lines.begin();
    open.file.remove();
    EXPECT_XEL_THROW(lines.begin(), XelCsvReader::XelFileNotFoundException, textOfMissing(open.file));
    EXPECT_TRUE(former == lines.end());
  });
}

// ---- Walks over tables.

TEST(WalkOverTables, YieldsTheTablesWithoutTheReservedOnes) {
  forBothKinds([](Kind kind) {
    OpenTable open("XELO_CSV_FORMAT,1.0\nXELO_DATA_SCHEMA,planner,2.5\nA,1\nB,2\nC,3\n", kind, "A");
    EXPECT_EQ(readNames(open.reader), (std::vector<std::string>{"A", "B", "C"}));
  });
}

TEST(WalkOverTables, WithoutTablesHasNone) {
  forBothKinds([](Kind kind) {
    const TestEnv env;
    const DataFile file("XELO_CSV_FORMAT,1.0\n");
    XelScoped reader(openReader(env, file, kind, true));
    EXPECT_EQ(readNames(reader), std::vector<std::string>());
  });
}

TEST(WalkOverTables, OfAOneTableFileSaysThatItIsOne) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    XelTables tables(open.reader);
    EXPECT_XEL_THROW(tables.begin(), IncorrectUse,
                     "XelCsvReader::XelIncorrectCsvReaderUseException : " + std::string(open.file.getName()) +
                         " is a unique-Table file. cann't use this member function getTableByName with this reader.");
  });
}

// What is looked up belongs to the walk's own handle, and TestEnv sees that it goes with it.
TEST(WalkOverTables, EndsWhatWasLookedUpThroughATable) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nA,2\nB,2\n", kind, "A");
    Lines lines;
    for (XelCsvTableReader& table : XelTables(open.reader)) {
      lines.push_back(textOf(table.getLineByNumber(0)));
      lines.push_back(textOf(XelGetLine(table, 2)));
    }
    EXPECT_EQ(lines, (Lines{"0: [A][1]", "1: [A][2]", "2: [B][2]", "2: [B][2]"}));
    for (XelCsvTableReader& table : XelTables(open.reader)) {
      EXPECT_EQ(textOf(table.getLineByNumber(1)), "1: [A][2]");
      break;
    }
  });
}

TEST(WalkOverTables, HoldsWalksOverLines) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nA,2\nB,2\n", kind, "A");
    Lines lines;
    for (const XelCsvTableReader& table : XelTables(open.reader)) {
      for (const XelCsvLine& line : XelLines(table)) lines.push_back(textOf(line));
    }
    EXPECT_EQ(lines, (Lines{"0: [A][1]", "1: [A][2]", "2: [B][2]"}));
  });
}

TEST(WalkOverTables, StartsAgainWithBegin) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nB,2\n", kind, "A");
    XelTables tables(open.reader);
    auto it = tables.begin();
    ++it;
    EXPECT_STREQ(it->getNameOfTable(), "B");
    EXPECT_FALSE(it->getLineByNumber(0).isEmpty());
    it = tables.begin();
    EXPECT_STREQ(it->getNameOfTable(), "A");
  });
}

TEST(WalkOverTables, SaysThatTheFileIsGone) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nB,2\n", kind, "A");
    XelTables tables(open.reader);
    const auto former = tables.begin();
    open.file.remove();
    EXPECT_XEL_THROW(tables.begin(), XelCsvReader::XelFileNotFoundException, textOfMissing(open.file));
    EXPECT_TRUE(former == tables.end());
  });
}

TEST(WalkOverTables, AnswersTheFormerTableWhenItGoesOnBehind) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nB,2\n", kind, "A");
    XelTables tables(open.reader);
    auto it = tables.begin();
    const auto former = it++;
    EXPECT_STREQ((*former).getNameOfTable(), "A");
    EXPECT_STREQ(it->getNameOfTable(), "B");
  });
}

TEST(WalkOverTables, GoesOnBehindATableThatCannotBeMade) {
  OpenTable open("A,1\nB,2\nB,2\nC,3\n", Kind::Cached, "A");
  XelTables tables(open.reader);
  auto it = tables.begin();
  EXPECT_FALSE(it->getLineByNumber(0).isEmpty());
  EXPECT_XEL_THROW(++it, XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  2 already exists In Table B .");
  EXPECT_TRUE(it != tables.end());
  EXPECT_TRUE(it->isEmpty());
  ++it;
  EXPECT_STREQ(it->getNameOfTable(), "C");
  ++it;
  EXPECT_TRUE(it == tables.end());
}

// ---- Values of a key.

static_assert(XelIsKeyText<const char*> && XelIsKeyText<char*> && XelIsKeyText<char[4]>);
static_assert(XelIsKeyText<std::string> && XelIsKeyText<std::string_view>);
static_assert(!XelIsKeyText<std::nullptr_t> && !XelIsKeyText<int> && !XelIsKeyText<const void*>);
static_assert(XelIsKeyInteger<int> && XelIsKeyInteger<unsigned long long> && XelIsKeyInteger<signed char>);
static_assert(!XelIsKeyInteger<bool> && !XelIsKeyInteger<char> && !XelIsKeyInteger<wchar_t>);
static_assert(!XelIsKeyInteger<char16_t> && !XelIsKeyInteger<char32_t> && !XelIsKeyInteger<double>);
static_assert(!XelIsKeyText<double> && !XelIsKeyText<char>);

TEST(KeyValue, WritesIntegersExactly) {
  const TestEnv env;
  EXPECT_STREQ(XelKeyValue(env, 0).get(), "0");
  EXPECT_STREQ(XelKeyValue(env, -7).get(), "-7");
  EXPECT_STREQ(XelKeyValue(env, std::numeric_limits<std::int8_t>::lowest()).get(), "-128");
  EXPECT_STREQ(XelKeyValue(env, static_cast<unsigned char>(200)).get(), "200");
  EXPECT_STREQ(XelKeyValue(env, static_cast<short>(-32768)).get(), "-32768");
  EXPECT_STREQ(XelKeyValue(env, 4294967295U).get(), "4294967295");
  EXPECT_STREQ(XelKeyValue(env, std::numeric_limits<long>::lowest()).get(), "-9223372036854775808");
  EXPECT_STREQ(XelKeyValue(env, (std::numeric_limits<long long>::max)()).get(), "9223372036854775807");
  EXPECT_STREQ(XelKeyValue(env, (std::numeric_limits<unsigned long>::max)()).get(), "18446744073709551615");
}

TEST(KeyValue, TakesTextsAsTheyAre) {
  TestEnv env;
  const char* text = "Paris";
  const std::string string = "Rome";
  char array[] = "Oslo";
  EXPECT_EQ(XelKeyValue(env, text).get(), text);
  EXPECT_EQ(XelKeyValue(env, string).get(), string.c_str());
  EXPECT_EQ(XelKeyValue(env, array).get(), array);
  EXPECT_EQ(XelKeyValue(env, static_cast<const char*>(nullptr)).get(), nullptr);
  const long before = env.getAllocator().getAllocations();
  EXPECT_STREQ(XelKeyValue(env, 4711).get(), "4711");
  EXPECT_EQ(env.getAllocator().getAllocations(), before) << "only a string_view is copied";
}

TEST(KeyValue, EndsAStringViewInMemoryOfTheEnvironment) {
  TestEnv env;
  const std::string text = "Paris,Rome";
  const long before = env.getAllocator().getAllocations();
  const long bytes = env.getAllocator().getBytesOut();
  {
    const XelKeyValue value(env, std::string_view(text).substr(0, 5));
    EXPECT_STREQ(value.get(), "Paris");
    EXPECT_EQ(env.getAllocator().getBytesOut(), bytes + 6);
  }
  EXPECT_EQ(env.getAllocator().getBytesOut(), bytes);
  EXPECT_EQ(env.getAllocator().getAllocations(), before + 1);
  EXPECT_STREQ(XelKeyValue(env, std::string_view()).get(), "");
  const std::string longText(20000, 'x');
  EXPECT_EQ(XelKeyValue(env, std::string_view(longText)).get(), longText);
}

TEST(KeyValue, EndsAtItsFirstByteZero) {
  OpenTable open(OneTable, Kind::Cached);
  const std::string text("Rome\0no", 7);
  EXPECT_EQ(textOf(XelGetLine(open.table, text, 2004)), "3: [Rome][2004][8]");
  EXPECT_EQ(textOf(XelGetLine(open.table, std::string_view(text), 2004)), "3: [Rome][2004][8]");
}

// ---- Lookups by key.

static_assert(CanBeAsked<XelCsvTableReader&> && CanBeAsked<XelCsvReader&>);
static_assert(CanBeAsked<XelScoped<XelCsvTableReader>&> && CanBeAsked<XelScoped<XelCsvReader>&>);
static_assert(!CanBeAsked<XelCsvTableReader> && !CanBeAsked<XelCsvReader>, "the line would never be given back");
static_assert(!CanBeAsked<XelScoped<XelCsvTableReader>> && !CanBeAsked<XelScoped<XelCsvReader>>);

TEST(LookupByValues, TakesValuesOfEveryType) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const std::string expected = "3: [Cities][Rome][2004][8]";
    const std::string rome = "Rome";
    EXPECT_EQ(textOf(XelGetLine(open.table, "Rome", "2004")), expected);
    EXPECT_EQ(textOf(XelGetLine(open.table, rome, 2004)), expected);
    EXPECT_EQ(textOf(XelGetLine(open.table, std::string_view("Rome!").substr(0, 4), 2004UL)), expected);
    EXPECT_EQ(textOf(XelGetLine(open.table, rome.c_str(), std::to_string(2004))), expected);
    EXPECT_EQ(textOfFound(XelFindLine(open.table, "Rome", "2004")), expected);
    EXPECT_EQ(textOfFound(XelFindLine(open.table, rome, static_cast<short>(2004))), expected);
    EXPECT_EQ(textOfFound(XelFindLine(open.table, rome + "", std::string_view("2004"))), expected);

    OpenTable one(OneTable, kind);
    EXPECT_EQ(textOf(XelGetLine(one.reader, rome, 2004LL)), "3: [Rome][2004][8]");
    EXPECT_EQ(textOfFound(XelFindLine(one.reader, "Rome", std::string_view("2004"))), "3: [Rome][2004][8]");
  });
}

TEST(LookupByValues, TakesOneValueAndMany) {
  forBothKinds([](Kind kind) {
    OpenTable one("|KEYS,1,0\n-5,x\n", kind);
    EXPECT_EQ(textOf(XelGetLine(one.table, -5)), "1: [-5][x]");
    EXPECT_EQ(textOfFound(XelFindLine(one.table, -5)), "1: [-5][x]");
    OpenTable nine("|KEYS,1,1,1,1,1,1,1,1,1\na,1,b,2,c,3,d,4,e\n", kind);
    EXPECT_EQ(textOf(XelGetLine(nine.table, "a", 1, std::string("b"), 2L, "c", 3U, std::string_view("d"), 4, "e")),
              "1: [a][1][b][2][c][3][d][4][e]");
  });
}

TEST(LookupByValues, LooksAtNoMoreValuesThanThereAreKeyColumns) {
  forBothKinds([](Kind kind) {
    OpenTable open(OneTable, kind);
    const char* nothing = nullptr;
    EXPECT_EQ(textOf(XelGetLine(open.table, "Rome", 2004, 8, nothing)), "3: [Rome][2004][8]");
    EXPECT_EQ(textOfFound(XelFindLine(open.table, "Rome", 2004, nothing)), "3: [Rome][2004][8]");
    EXPECT_EQ(textOfFound(XelFindLine(open.table, "Oslo", 2004, nothing)), "none");
  });
}

TEST(LookupByValues, AnswersNoneWhereTheKeyIsNotThere) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_EQ(textOfFound(XelFindLine(open.table, "Rome", 2005)), "none");
    EXPECT_EQ(textOfFound(XelFindLine(open.table, std::string(), std::string_view())), "none");
    EXPECT_EQ(textOfFound(XelFindLine(open.table, std::string(30000, 'x'), 1)), "none");
    EXPECT_XEL_THROW(XelGetLine(open.table, "Rome", 2005), LineNotFound,
                     "XelCsvReader::XelLineNotFoundException : No line having key Rome-2005 in table Cities.");
    OpenTable one(OneTable, kind);
    EXPECT_EQ(textOfFound(XelFindLine(one.reader, "Rome", 2005)), "none");
  });
}

TEST(LookupByValues, LeavesTheLineToTheHandleOfTheCaller) {
  forBothKinds([](Kind kind) {
    TestEnv env;
    const DataFile file(OneTable);
    XelCsvReader reader = openReader(env, file, kind, false);
    const long before = env.getAllocator().getBytesOut();
    EXPECT_TRUE(XelFindLine(reader, "Rome", 2004).has_value());
    EXPECT_GT(env.getAllocator().getBytesOut(), before);
    EXPECT_FALSE(XelFindLine(reader, "Rome", 2005).has_value());
    EXPECT_EQ(env.getAllocator().getBytesOut(), before) << "the former last line ends";
    reader.end();
  });
}

TEST(LookupByValues, TakesValuesOutOfTheFormerLine) {
  forBothKinds([](Kind kind) {
    OpenTable open("|NAMES,name,next\n|KEYS,1,0\na,b\nb,c\nc,d\n", kind);
    XelCsvLine line = XelGetLine(open.table, "a");
    line = XelGetLine(open.table, line.getStringByHeader("next"));
    EXPECT_EQ(textOf(line), "3: [b][c]");
    line = XelFindLine(open.table, std::string_view(line.getStringByHeader("next"))).value();
    EXPECT_EQ(textOf(line), "4: [c][d]");
    EXPECT_FALSE(XelFindLine(open.table, line.getStringByHeader("next")).has_value());
  });
}

// ---- What is no 'none'.

TEST(LookupByValues, ThrowsForTooFewValues) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const char* message =
        "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 2 for table Cities";
    EXPECT_XEL_THROW(XelFindLine(open.table, "Rome"), LineNotFound, message);
    EXPECT_XEL_THROW(XelGetLine(open.table, "Rome"), LineNotFound, message);
    OpenTable one(OneTable, kind);
    EXPECT_XEL_THROW(XelFindLine(one.reader, "Rome"), LineNotFound,
                     "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 2");
  });
}

TEST(LookupByValues, ThrowsForAValueThatIsNull) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const char* nothing = nullptr;
    EXPECT_THROW(static_cast<void>(XelFindLine(open.table, nothing, 2004)), LineNotFound);
    EXPECT_THROW(static_cast<void>(XelFindLine(open.table, "Rome", nothing)), LineNotFound);
    EXPECT_THROW(XelGetLine(open.table, "Rome", nothing), LineNotFound);
  });
}

TEST(LookupByValues, ThrowsForAFileOfSeveralTables) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const std::string message =
        "XelCsvReader::XelIncorrectCsvReaderUseException : " + std::string(open.file.getName()) +
        " is a multi-Table file. No table have been specified while trying to do a getNumberOfKeys.";
    EXPECT_XEL_THROW(XelFindLine(open.reader, "Rome", 2004), IncorrectUse, message);
    EXPECT_XEL_THROW(XelGetLine(open.reader, "Rome", 2004), IncorrectUse, message);
  });
}

TEST(LookupByValues, ThrowsForAFileThatIsGone) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    open.file.remove();
    EXPECT_XEL_THROW(XelFindLine(open.table, "Rome", 2004), XelCsvReader::XelFileNotFoundException,
                     textOfMissing(open.file));
  });
}

TEST(LookupByValues, ThrowsForACorruptedFile) {
  OpenTable open("A|KEYS,1,1\nA,a,b\nA\nA,c,d\n", Kind::Scanning, "A");
  EXPECT_EQ(textOfFound(XelFindLine(open.table, "a", "b")), "1: [A][a][b]");
  EXPECT_XEL_THROW(XelFindLine(open.table, "c", "d"), Base,
                   "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (2) exceeds the number of "
                   "fields of the current line (1), line number 2 in table A");
}

// ---- Lookups by number.

TEST(LookupByNumber, AnswersTheLineOrNone) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_EQ(textOfFound(XelFindLineByNumber(open.table, 1)), "3: [Cities][Rome][2004][8]");
    EXPECT_EQ(textOfFound(XelFindLineByNumber(open.table, -1)), "none");
    EXPECT_EQ(textOfFound(XelFindLineByNumber(open.table, 100)), "none");
    OpenTable one(OneTable, kind);
    EXPECT_EQ(textOfFound(XelFindLineByNumber(one.reader, 0)), "2: [Paris][2004][7]");
    EXPECT_EQ(textOfFound(XelFindLineByNumber(one.reader, -1)), "none");
  });
}

TEST(LookupByNumber, AnswersPastTheEndWhatTheClassicCallAnswers) {
  OpenTable cached(Cities, Kind::Cached, "Cities");
  EXPECT_EQ(textOfFound(XelFindLineByNumber(cached.table, 2)), "none");
  OpenTable scanning(Cities, Kind::Scanning, "Cities");
  EXPECT_EQ(textOfFound(XelFindLineByNumber(scanning.table, 2)), "4: [Other][x]");
  EXPECT_EQ(scanning.getByNumber(2), "4: [Other][x]");
}

TEST(LookupByNumber, ThrowsAllElse) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    EXPECT_THROW(static_cast<void>(XelFindLineByNumber(open.reader, 0)), IncorrectUse);
    open.file.remove();
    EXPECT_THROW(static_cast<void>(XelFindLineByNumber(open.table, 0)), XelCsvReader::XelFileNotFoundException);
  });
}

// ---- Lookups of tables.

TEST(LookupOfATable, AnswersTheTableOrNone) {
  forBothKinds([](Kind kind) {
    OpenTable open(Cities, kind, "Cities");
    const std::string name = "Other";
    std::optional<XelScoped<XelCsvTableReader>> found = XelFindTable(open.reader, "Other");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(textOf(XelGetLine(*found, "x")), "4: [Other][x]");
    EXPECT_TRUE(XelFindTable(open.reader, name).has_value());
    EXPECT_TRUE(XelFindTable(open.reader, std::string_view(name)).has_value());
    EXPECT_FALSE(XelFindTable(open.reader, "Nowhere").has_value());
    EXPECT_FALSE(XelFindTable(open.reader, std::string()).has_value());
    if (auto table = XelFindTableByNumber(open.reader, 1)) {
      EXPECT_STREQ((*table)->getNameOfTable(), "Other");
    } else {
      ADD_FAILURE();
    }
    EXPECT_FALSE(XelFindTableByNumber(open.reader, 2).has_value());
    EXPECT_FALSE(XelFindTableByNumber(open.reader, -1).has_value());
  });
}

TEST(LookupOfATable, ThrowsAllElse) {
  forBothKinds([](Kind kind) {
    OpenTable one(OneTable, kind);
    EXPECT_THROW(static_cast<void>(XelFindTable(one.reader, "Cities")), IncorrectUse);
    EXPECT_THROW(static_cast<void>(XelFindTableByNumber(one.reader, 0)), IncorrectUse);
    OpenTable open(Cities, kind, "Cities");
    const char* nothing = nullptr;
    EXPECT_XEL_THROW(XelFindTable(open.reader, nothing), TableNotFound,
                     "XelCsvReader::XelTableNotFoundException : No Table having this name .");
    open.file.remove();
    EXPECT_THROW(static_cast<void>(XelFindTable(open.reader, "Other")), XelCsvReader::XelFileNotFoundException);
    EXPECT_THROW(static_cast<void>(XelFindTableByNumber(open.reader, 1)), XelCsvReader::XelFileNotFoundException);
    EXPECT_FALSE(XelFindTable(open.reader, "Nowhere").has_value());
  });
}

TEST(LookupOfATable, ThrowsForADuplicatedKey) {
  OpenTable open("A,1\nB,2\nB,2\n", Kind::Cached, "A");
  EXPECT_THROW(static_cast<void>(XelFindTable(open.reader, "B")), XelCsvReader::XelDuplicatedLineException);
}

// ---- Exhausted memory.

TEST(Comfort, GivesEverythingBackWhenAnAllocationFails) {
  forBothKinds([](Kind kind) {
    const DataFile file(Cities);
    const auto scenario = [&](XelEnv env) {
      XelScoped reader(openReader(env, file, kind, true));
      std::optional<XelScoped<XelCsvTableReader>> table = XelFindTable(reader, std::string_view("Cities"));
      EXPECT_EQ(textOfFound(XelFindLine(*table, std::string_view("Rome"), 2004)), "3: [Cities][Rome][2004][8]");
      EXPECT_EQ(textOfFound(XelFindLine(*table, std::string_view("Oslo"), 2004)), "none");
      EXPECT_EQ(textOf(XelGetLine(*table, "Paris", std::string_view("2004"))), "2: [Cities][Paris][2004][7]");
      EXPECT_EQ(textOfFound(XelFindLineByNumber(*table, 0)), "2: [Cities][Paris][2004][7]");
      EXPECT_TRUE(XelFindTableByNumber(reader, 1).has_value());
      EXPECT_FALSE(XelFindTable(reader, "Nowhere").has_value());
      long lines = 0;
      for (XelCsvTableReader& walked : XelTables(reader)) {
        EXPECT_FALSE(walked.getLineByNumber(0).isEmpty());
        XelLines range(walked);
        for (auto it = range.begin(); it != range.end(); ++lines) EXPECT_FALSE((*it++).isEmpty());
      }
      EXPECT_EQ(lines, 3);
      XelTables tables(reader);
      auto it = tables.begin();
      EXPECT_STREQ((*it++).getNameOfTable(), "Cities");
    };
    EXPECT_GT(forEachFailingAllocation(scenario), 20);
  });
}
