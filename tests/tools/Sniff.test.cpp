// What is proposed for texts of many kinds.
#include "tools/sniff/Sniff.h"

#include <gtest/gtest.h>

namespace xeltools {
namespace {

struct Case {
  const char* text;
  const char* options;  // as formatOptions() writes them
};

TEST(Sniff, ProposesParameters) {
  const Case cases[] = {
      {"a,b\n1,2\n3,4\n", ""},
      {"a;b\n1;2\n", "--sep semicolon"},
      {"a\tb, c\n1\t2\n", "--sep tab"},
      {"a|b|c\n1|2|3\n", "--sep pipe"},
      {"a:x:1\nb:y:2\n", "--sep colon"},
      {"a b  c\n1 2  3\n", "--sep space"},
      {"name;price\nnail;1,5\nbolt;0,25\n", "--sep semicolon --decimal comma"},
      {"name;price\nnail;1.5\nbolt;0.25\n", "--sep semicolon"},
      {"1,5 2,5\n3,5 4,5\n", "--sep space --decimal comma"},
      {"'a,b',1\n'c,d',2\n", "--quote single"},
      {"\"a;b\",1\n\"c;d;e\",2\n", ""},
      {"% words\na,1\nb,2\n", "--comment %"},
      {"# words\na,1\nb,2\n", ""},
      {"|NAMES,a,b\n|KEYS,1,0\n1,2\n", ""},
      {"A|NAMES,a,b\nA,1,2\nB|NAMES,c\nB,1\n", "--multi"},
      {"A|NAMES,a\nA,1\nB,2\nA,3\n", "--multi --split"},
      {"XELO_CSV_FORMAT,1.0\nA,1,2\n", "--multi"},
      {"R 1 2 3\nR 2 3 4\nR 5 6 7\nL a b\nL c d\nL e f\nR 1 1 1\n", "--multi --split --sep space"},
      {"red,1\nred,2\nred,3\nblue,4\nblue,5\nblue,6\n", ""},  // a column of colors: one table
      {"nothing\nseparates\nthese\n", ""},
      {"", ""},
      {"\n \n\t\n", ""},
      {"#only\n", ""},
  };
  for (const Case& it : cases) EXPECT_EQ(formatOptions(sniff(it.text, true).parameters), it.options) << it.text;
}

TEST(Sniff, LooksNotAtALineThatTheSampleEndsIn) {
  const std::string text = "a;b\n1;2\n3;4\n5;6\nthis,line,was,cut";
  EXPECT_EQ(formatOptions(sniff(text, false).parameters), "--sep semicolon");
  const Proposals proposals = sniff(text, false);
  EXPECT_EQ(proposals.all[2].name, "sep");
  EXPECT_EQ(proposals.all[2].reason, "in 4 of 4 lines; 4 with their table's number of fields");
}

TEST(Sniff, RemarksOnWhatIsNoPlainText) {
  EXPECT_EQ(sniff("\xEF\xBB\xBF"
                  "a,b\n",
                  true)
                .remarks.size(),
            1U);
  EXPECT_EQ(sniff(std::string("\xFF\xFE"
                              "a\0",
                              4),
                  true)
                .remarks.size(),
            1U);
  EXPECT_EQ(sniff(std::string("a\0b\n", 4), true).remarks.size(), 1U);
  EXPECT_TRUE(sniff("a,b\n", true).remarks.empty());
}

}  // namespace
}  // namespace xeltools
