#include "csv/line/XelCsvKey.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

#include "tests/support/TestEnv.h"

namespace {

void add(XelCsvKey& key, const std::string& value) { key.add({value.data(), value.data() + value.size()}); }

std::string getText(const XelCsvKey& key) {
  const XelCsvSpan text = key.getText();
  return {text.begin, text.end};
}

XelEnvBlock<char> compose(XelEnv env, long numberOfKeys, const char* first, ...) {
  std::va_list others;
  va_start(others, first);
  XelEnvBlock<char> key = XelComposeKey(env, numberOfKeys, first, others);
  va_end(others);
  return key;
}

}  // namespace

TEST(Key, JoinsItsValues) {
  TestEnv env;
  XelCsvKey key(env);
  EXPECT_EQ(key.getText().getLength(), 0);
  add(key, "a");
  EXPECT_EQ(getText(key), "a");
  add(key, "b-c");
  EXPECT_EQ(getText(key), "a-b-c");
  add(key, "");
  EXPECT_EQ(getText(key), "a-b-c-");
}

TEST(Key, OfEmptyValuesHoldsTheDashesBetweenThem) {
  TestEnv env;
  XelCsvKey key(env);
  add(key, "");
  EXPECT_EQ(getText(key), "");
  add(key, "");
  EXPECT_EQ(getText(key), "-");
  add(key, "x");
  EXPECT_EQ(getText(key), "--x");
}

TEST(Key, BeginsAnewWithoutANewBlock) {
  TestEnv env;
  XelCsvKey key(env);
  add(key, std::string(500, 'x'));
  const long allocations = env.getAllocator().getAllocations();
  key.clear();
  EXPECT_EQ(key.getText().getLength(), 0);
  add(key, "a");
  add(key, "b");
  EXPECT_EQ(getText(key), "a-b");
  EXPECT_EQ(env.getAllocator().getAllocations(), allocations);
}

TEST(Key, GrowsPastTheSizeOfALine) {
  TestEnv env;
  XelCsvKey key(env);
  std::string expected;
  for (int value = 0; value < 30; ++value) {
    const std::string text(static_cast<std::size_t>(value * 50), static_cast<char>('a' + value % 26));
    add(key, text);
    expected += value == 0 ? text : "-" + text;
  }
  EXPECT_GT(expected.size(), 20000U);
  EXPECT_EQ(getText(key), expected);
}

TEST(ComposeKey, JoinsTheCallersValuesInABlockOfTheirLengthAndTerminator) {
  TestEnv env;
  const XelEnvBlock<char> key = compose(env, 2, "Paris", "2004");
  EXPECT_STREQ(key.get(), "Paris-2004");
  EXPECT_EQ(key.getCount(), 11);
  EXPECT_EQ(compose(env, 0, nullptr).getCount(), 1);
  EXPECT_STREQ(compose(env, 1, "a").get(), "a");
  EXPECT_STREQ(compose(env, 3, "a", "", "c").get(), "a--c");
  EXPECT_STREQ(compose(env, 2, " a ", "b-c").get(), " a -b-c");
}

TEST(ComposeKey, LooksAtNoMoreValuesThanThereAreKeys) {
  TestEnv env;
  EXPECT_STREQ(compose(env, 0, nullptr).get(), "");
  EXPECT_STREQ(compose(env, 1, "a", nullptr).get(), "a");
}

TEST(ComposeKey, MakesNoKeyOfANullValue) {
  TestEnv env;
  EXPECT_EQ(compose(env, 1, nullptr).get(), nullptr);
  EXPECT_EQ(compose(env, 3, "a", nullptr, "c").get(), nullptr);
}

TEST(ComposeKey, LosesNothingWhenMemoryIsExhausted) {
  const std::string longValue(300, 'x');
  const long injected = forEachFailingAllocation([&](XelEnv env) {
    const XelEnvBlock<char> key = compose(env, 3, "a", longValue.c_str(), "c");
    EXPECT_EQ(key.get(), "a-" + longValue + "-c");
  });
  EXPECT_EQ(injected, 2);  // one allocation, failing once and for ever
}

TEST(Key, HoldsWhatItHeldWhenAValueFindsNoRoom) {
  TestEnv env;
  XelCsvKey key(env);
  add(key, "a");
  env.getAllocator().failAfter(0);
  EXPECT_THROW(add(key, std::string(100, 'x')), std::bad_alloc);
  EXPECT_EQ(getText(key), "a");
  add(key, "b");
  EXPECT_EQ(getText(key), "a-b");
}

// When the long value finds no room, the key holds nothing but has a value.
TEST(Key, GrowsWithoutLosingAnEmptyFirstValue) {
  TestEnv env;
  XelCsvKey key(env);
  const std::string longValue(1000, 'x');
  add(key, "");
  add(key, longValue);
  EXPECT_EQ(getText(key), "-" + longValue);
}
