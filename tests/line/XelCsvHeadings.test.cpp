#include "csv/line/XelCsvHeadings.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "tests/support/OpenTable.h"

namespace {

using Texts = std::vector<std::string>;

// A file of one table whose heading line has these headings behind its marker.
std::string fileOf(const Texts& headings) {
  std::string content = "|NAMES";
  for (const std::string& heading : headings) content += "," + heading;
  return content + "\n|KEYS,1\nfirst\nsecond\n";
}

std::string trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(' ');
  return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// Position of the first heading that reads so; -2 when there is none.
long findSlowly(const Texts& headings, const std::string& wanted) {
  if (wanted == "|NAMES") return -1;
  for (std::size_t index = 0; index < headings.size(); ++index) {
    if (trimmed(headings[index]) == wanted) return static_cast<long>(index);
  }
  return -2;
}

long find(const XelCsvTableReader& table, const std::string& wanted) {
  const bool isThere = table.isHeadingExists(wanted.c_str());
  try {
    const long position = table.getPosition(wanted.c_str());
    EXPECT_TRUE(isThere) << wanted;
    return position;
  } catch (const XelCsvReader::XelColumnHeaderNotFoundException&) {
    EXPECT_FALSE(isThere) << wanted;
    return -2;
  }
}

}  // namespace

TEST(Headings, AreFoundAmongAnyNumberOfColumns) {
  for (const int count : {1, 2, 3, 4, 5, 31, 32, 33, 500}) {
    SCOPED_TRACE(count);
    Texts headings;
    for (int index = 0; index < count; ++index) headings.push_back("column_" + std::to_string(index));
    const OpenTable open(fileOf(headings), Kind::Scanning);
    for (int index = 0; index < count; ++index) {
      EXPECT_EQ(open.table.getPosition(headings[static_cast<std::size_t>(index)].c_str()), index);
    }
    EXPECT_FALSE(open.table.isHeadingExists("column_"));
    EXPECT_FALSE(open.table.isHeadingExists(("column_" + std::to_string(count)).c_str()));
  }
}

// Of all lengths, so that they differ in every byte of the words that they are hashed in, some equal, some empty.
TEST(Headings, AreTheFirstOfEqualOnesAsASlowSearchFindsThem) {
  std::mt19937 random(8);
  for (int round = 0; round < 200; ++round) {
    Texts headings(1 + random() % 60);
    for (std::string& heading : headings) {
      heading = std::string(random() % 28, 'a');
      if (!heading.empty()) heading[random() % heading.size()] = "ab \xff"[random() % 4];
    }
    const OpenTable open(fileOf(headings), round % 2 == 0 ? Kind::Scanning : Kind::Cached);
    Texts wanted = headings;
    for (std::string& heading : wanted) heading = trimmed(heading);
    for (const char* other :
         {"", " ", "|NAMES", "b", "aaaaaaaa", "aaaaaaab", "baaaaaaaaaaaaaaa", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"}) {
      wanted.push_back(other);
    }
    for (const std::string& text : wanted)
      EXPECT_EQ(find(open.table, text), findSlowly(headings, text)) << '"' << text << '"';
  }
}

// These two have the same hash, of 32 bits; the one after them has another length.
TEST(Headings, OfOneHashAreToldApart) {
  const OpenTable open(fileOf({"c1057001", "c1111044", "c105700"}), Kind::Scanning);
  EXPECT_EQ(find(open.table, "c1057001"), 0);
  EXPECT_EQ(find(open.table, "c1111044"), 1);
  EXPECT_EQ(find(open.table, "c105700"), 2);
  const OpenTable alone(fileOf({"a", "c1111044"}), Kind::Scanning);
  EXPECT_EQ(find(alone.table, "c1057001"), -2);
}

TEST(Headings, FollowTheHeadingLineWhenItIsOverwritten) {
  OpenTable open(fileOf({"a", " b ", "c"}), Kind::Scanning);
  XelCsvTableReader copied;
  copied.copy(open.table);
  EXPECT_EQ(open.table.getPosition("b"), 1);
  TableOfFile other(open.env, "|NAMES,c,b,a,d\n|KEYS,1\nx\n");
  XelCsvLine heading = open.table.getFirstLine();
  heading.copy(other->getFirstLine());
  EXPECT_EQ(find(open.table, "a"), 2);
  EXPECT_EQ(find(open.table, "c"), 0);
  EXPECT_EQ(find(open.table, "d"), 3);
  heading.copy(XelCsvLine());
  EXPECT_EQ(find(open.table, "a"), -2);
  EXPECT_EQ(find(copied, "a"), 0) << "a copy has headings of its own";
  EXPECT_EQ(find(copied, "c"), 2);
  copied.end();
}

TEST(Headings, AreWhatACallerWroteIntoTheFields) {
  const OpenTable open(fileOf({"a", "b"}), Kind::Cached);
  EXPECT_EQ(open.table.getPosition("b"), 1);
  open.table.getFirstLine().getFields()[2][0] = 'z';
  EXPECT_EQ(find(open.table, "z"), 1);
  EXPECT_EQ(find(open.table, "b"), -2);
}

TEST(Headings, GoWithTheTableThatIsCopiedOver) {
  OpenTable open(fileOf({"a", "b"}), Kind::Scanning);
  OpenTable other(fileOf({"b", "a", "c"}), Kind::Scanning);
  XelCsvTableReader target;
  target.copy(open.table);
  EXPECT_EQ(find(target, "b"), 1);
  target.getImpl()->copy(other.table.getImpl());
  EXPECT_EQ(find(target, "b"), 0);
  EXPECT_EQ(find(target, "c"), 2);
  EXPECT_EQ(find(open.table, "c"), -2);
  target.getImpl()->clearTable();
  EXPECT_FALSE(target.isHeadingExists("b"));
  target.end();
}
