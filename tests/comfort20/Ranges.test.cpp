// The comfort header in a program of C++20: its walks are ranges.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <vector>

#include "tests/support/OpenTable.h"
#include "xelcsv/XelCsvComfort.h"

static_assert(std::input_iterator<XelLines::iterator>);
static_assert(std::input_iterator<XelTables::iterator>);
static_assert(!std::forward_iterator<XelLines::iterator>, "copies share one walk");
static_assert(std::sentinel_for<XelLines::iterator, XelLines::iterator>);
static_assert(std::ranges::input_range<XelLines> && std::ranges::common_range<XelLines>);
static_assert(std::ranges::input_range<XelTables> && std::ranges::common_range<XelTables>);
static_assert(!XelIsKeyInteger<char8_t> && !XelIsKeyText<char8_t>);

namespace {

constexpr const char* Prices = "|NAMES,item,price\n|KEYS,1,0\nnail,5\nbolt,20\nscrew,10\n";

}  // namespace

TEST(Ranges, OfLinesServeAlgorithmsOfRanges) {
  forBothKinds([](Kind kind) {
    OpenTable open(Prices, kind);
    XelLines lines(open.reader);
    const auto getPrice = [](const XelCsvLine& line) { return line.getIntByHeader("price"); };
    EXPECT_EQ(std::ranges::count_if(
                  lines, [](long price) { return price >= 10; }, getPrice),
              2);
    EXPECT_STREQ(std::ranges::find(lines, 20L, getPrice)->getStringByHeader("item"), "bolt");
    std::vector<long> prices;
    std::ranges::transform(lines, std::back_inserter(prices), getPrice);
    EXPECT_EQ(prices, (std::vector<long>{5, 20, 10}));
  });
}

TEST(Ranges, OfTablesServeAlgorithmsOfRanges) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nA,2\nB,1\n", kind, "A");
    XelTables tables(open.reader);
    std::vector<long> counts;
    std::ranges::transform(tables, std::back_inserter(counts),
                           [](XelCsvTableReader& table) { return table.getNumberOfItems(); });
    EXPECT_EQ(counts, (std::vector<long>{2, 1}));
  });
}

TEST(Ranges, LookupsTakeValuesOfEveryType) {
  forBothKinds([](Kind kind) {
    OpenTable open("|KEYS,1,1,0\nRome,2004,8\n", kind);
    EXPECT_EQ(textOf(XelGetLine(open.table, std::string_view("Rome"), 2004)), "1: [Rome][2004][8]");
    EXPECT_FALSE(XelFindLine(open.reader, std::string("Rome"), 2005).has_value());
  });
}
