#include "csv/line/XelCsvBeginning.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The text with so many bytes behind it as a comparison may look at.
bool isAt(const XelCsvBeginning& beginning, std::string text) {
  text.resize(text.size() + static_cast<std::size_t>(beginning.getReach()), '~');
  return beginning.isAt(text.c_str());
}

bool set(XelCsvBeginning& beginning, const std::string& text) {
  return beginning.set(text.data(), text.data() + text.size());
}

}  // namespace

TEST(Beginning, IsFoundWhereEveryByteOfItStands) {
  for (std::size_t length = 1; length <= 128; ++length) {
    SCOPED_TRACE(length);
    const std::string text(length, 'x');
    XelCsvBeginning beginning;
    ASSERT_TRUE(set(beginning, text));
    EXPECT_FALSE(beginning.isEmpty());
    EXPECT_GE(beginning.getReach(), static_cast<long>(length));
    EXPECT_TRUE(isAt(beginning, text));
    EXPECT_TRUE(isAt(beginning, text + "y"));
    for (std::size_t at = 0; at < length; ++at) {
      std::string other = text;
      other[at] = 'X';
      EXPECT_FALSE(isAt(beginning, other)) << at;
    }
  }
}

TEST(Beginning, IsEmptyWhenThereIsNothingToCompareOrTooMuch) {
  XelCsvBeginning beginning;
  EXPECT_TRUE(beginning.isEmpty());
  for (const std::size_t length : {std::size_t{0}, std::size_t{129}, std::size_t{5000}}) {
    ASSERT_TRUE(set(beginning, "a table,"));
    EXPECT_FALSE(set(beginning, std::string(length, 'x'))) << length;
    EXPECT_TRUE(beginning.isEmpty()) << length;
  }
}

TEST(Beginning, TakesALaterTextInPlaceOfAnEarlierOne) {
  XelCsvBeginning beginning;
  ASSERT_TRUE(set(beginning, "a long name of a table,"));
  ASSERT_TRUE(set(beginning, "T,"));
  EXPECT_TRUE(isAt(beginning, "T,1,2"));
  EXPECT_FALSE(isAt(beginning, "a long name of a table,"));
  beginning.clear();
  EXPECT_TRUE(beginning.isEmpty());
}
