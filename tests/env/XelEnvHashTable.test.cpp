// The chained hash table: every operation, its orders, and what failures leave behind.
#include "env/XelEnvHashTable.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <deque>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "env/XelReaderHash.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"

namespace {

using Table = XelEnvHashTable<const char*, long>;

constexpr const char* BadIndex = "Hash function returned bad index";

// Values in the order of a walk.
std::vector<long> walk(const Table& table) {
  std::vector<long> values;
  for (Table::Iterator it(&table); it.ok(); ++it) values.push_back(*it);
  return values;
}

// The same table, slow and obvious: a list of items per bucket.
class Model {
 public:
  explicit Model(long size) : buckets(static_cast<std::size_t>(size)) {}

  long add(const std::string& key, long value) {
    for (const Item& item : getBucket(key)) {
      if (item.first == key) return 2;
    }
    getBucket(key).push_front({key, value});
    ++count;
    if (count > 2 * getSize()) reMod(2 * getSize());
    return 0;
  }

  long find(const std::string& key, long& value) {
    for (const Item& item : getBucket(key)) {
      if (item.first != key) continue;
      value = item.second;
      return 0;
    }
    return 1;
  }

  long move(const std::string& key, long newValue) {
    for (Item& item : getBucket(key)) {
      if (item.first != key) continue;
      item.second = newValue;
      return 0;
    }
    return 1;
  }

  void reMod(long newSize) {
    const std::vector<std::deque<Item>> old = std::move(buckets);
    buckets = std::vector<std::deque<Item>>(static_cast<std::size_t>(newSize));
    for (const std::deque<Item>& bucket : old) {
      for (const Item& item : bucket) getBucket(item.first).push_front(item);
    }
  }

  void clear() {
    for (std::deque<Item>& bucket : buckets) bucket.clear();
    count = 0;
  }

  std::vector<long> walk() const {
    std::vector<long> values;
    for (const std::deque<Item>& bucket : buckets) {
      for (const Item& item : bucket) values.push_back(item.second);
    }
    return values;
  }

  long getCount() const { return count; }
  long getSize() const { return static_cast<long>(buckets.size()); }

 private:
  using Item = std::pair<std::string, long>;

  std::deque<Item>& getBucket(const std::string& key) {
    return buckets[static_cast<std::size_t>(XeldReaderHashFunction(key.c_str(), getSize()))];
  }

  std::vector<std::deque<Item>> buckets;
  long count = 0;
};

// A hash function that tests steer. The table takes plain functions, so what steers it is static.
struct SteeredHash {
  static long calls;
  static long badSize;  // with this number of buckets the answer for badKey is badAnswer
  static long badAnswer;
  static std::string badKey;

  static void reset() {
    calls = 0;
    badSize = -1;
    badAnswer = -1;
    badKey.clear();
  }

  static long hash(const char* key, long size) {
    ++calls;
    if (size == badSize && badKey == key) return badAnswer;
    return XeldReaderHashFunction(key, size);
  }
};

long SteeredHash::calls = 0;
long SteeredHash::badSize = -1;
long SteeredHash::badAnswer = -1;
std::string SteeredHash::badKey;

// Everything in one bucket.
long sameBucket(const char*, long) { return 0; }

}  // namespace

static_assert(std::is_base_of_v<XelEnvObjectI, Table>);
static_assert(std::has_virtual_destructor_v<Table>);

TEST(XelEnvHashTable, BeginsEmptyWithItsBuckets) {
  TestEnv env;
  const long bytesBefore = env.getAllocator().getBytesOut();
  const Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 128);
  EXPECT_EQ(table.getCount(), 0);
  EXPECT_EQ(table.getSize(), 128);
  EXPECT_TRUE(table.hasBuckets());
  EXPECT_EQ(env.getAllocator().getBytesOut() - bytesBefore, 128 * static_cast<long>(sizeof(void*)));
  EXPECT_TRUE(walk(table).empty());
  EXPECT_EQ(XelBucketCount, 128) << "the number of buckets of every new table";
}

TEST(XelEnvHashTable, FindsWhatWasAdded) {
  TestEnv env;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 128);
  EXPECT_EQ(table.add("Paris", 7), 0);
  EXPECT_EQ(table.add("", 8), 0);
  EXPECT_EQ(table.add("\xE9", 9), 0);
  long value = -1;
  EXPECT_EQ(table.find("Paris", value), 0);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(table.find("", value), 0);
  EXPECT_EQ(value, 8);
  EXPECT_EQ(table.find("\xE9", value), 0);
  EXPECT_EQ(value, 9);
  EXPECT_EQ(table.find("paris", value), 1);
  EXPECT_EQ(value, 9) << "a key that is not found writes nothing";
  EXPECT_EQ(table.getCount(), 3);
}

TEST(XelEnvHashTable, AddingAPresentKeyAnswersTwoAndKeepsTheFirstValue) {
  TestEnv env;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 128);
  const std::string first("Paris");
  const std::string second("Paris");
  EXPECT_EQ(table.add(first.c_str(), 7), 0);
  const long allocations = env.getAllocator().getAllocations();
  EXPECT_EQ(table.add(second.c_str(), 8), 2);
  EXPECT_EQ(env.getAllocator().getAllocations(), allocations);
  long value = -1;
  EXPECT_EQ(table.find("Paris", value), 0);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(table.getCount(), 1);
  EXPECT_EQ(table.findItem("Paris")->getKey(), first.c_str()) << "the pointer of the first one";
}

TEST(XelEnvHashTable, KeepsKeysByPointer) {
  TestEnv env;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 128);
  const std::string key("Paris");
  table.add(key.c_str(), 7);
  const Table::Item* item = table.findItem("Paris");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->getKey(), key.c_str());
  EXPECT_EQ(item->getValue(), 7);
  EXPECT_EQ(item->getNext(), nullptr);
  EXPECT_EQ(table.findItem("Rome"), nullptr);
}

TEST(XelEnvHashTable, ItemsHaveAccessors) {
  Table::Item first;
  Table::Item second;
  EXPECT_EQ(first.getNext(), nullptr);
  first.setKey("key");
  first.setValue(5);
  first.setNext(&second);
  EXPECT_STREQ(first.getKey(), "key");
  EXPECT_EQ(first.getValue(), 5);
  EXPECT_EQ(first.getNext(), &second);
}

TEST(XelEnvHashTable, MoveGivesAKeyANewValueWhateverTheOldOne) {
  TestEnv env;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 128);
  table.add("Paris", 7);
  EXPECT_EQ(table.move("Paris", 12345, 8), 0) << "the old value is not looked at";
  long value = -1;
  table.find("Paris", value);
  EXPECT_EQ(value, 8);
  EXPECT_EQ(table.move("Rome", 0, 9), 1);
  EXPECT_EQ(table.find("Rome", value), 1);
  EXPECT_EQ(table.getCount(), 1);
}

TEST(XelEnvHashTable, NewItemsGoToTheFrontOfTheirBucket) {
  TestEnv env;
  Table table(env, sameBucket, XeldReaderCmpFunction, 8);
  for (const auto& [key, value] : {std::pair("a", 1L), std::pair("b", 2L), std::pair("c", 3L)}) table.add(key, value);
  EXPECT_EQ(walk(table), (std::vector<long>{3, 2, 1}));
  EXPECT_STREQ(table.findItem("c")->getNext()->getKey(), "b");
}

TEST(XelEnvHashTable, ReModReversesItemsThatStayTogether) {
  TestEnv env;
  Table table(env, sameBucket, XeldReaderCmpFunction, 8);
  for (const auto& [key, value] : {std::pair("a", 1L), std::pair("b", 2L), std::pair("c", 3L)}) table.add(key, value);
  table.reMod(16);
  EXPECT_EQ(table.getSize(), 16);
  EXPECT_EQ(table.getCount(), 3);
  EXPECT_EQ(walk(table), (std::vector<long>{1, 2, 3}));
  table.reMod(4);
  EXPECT_EQ(table.getSize(), 4);
  EXPECT_EQ(walk(table), (std::vector<long>{3, 2, 1}));
}

TEST(XelEnvHashTable, DoublesWhenThereAreMoreThanTwoItemsPerBucket) {
  TestEnv env;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 128);
  std::deque<std::string> keys;
  for (long number = 0; number < 1200; ++number) {
    keys.push_back("key" + std::to_string(number));
    ASSERT_EQ(table.add(keys.back().c_str(), number), 0);
    const long count = number + 1;
    ASSERT_EQ(table.getCount(), count);
    ASSERT_EQ(table.getSize(), count <= 256 ? 128 : count <= 512 ? 256 : count <= 1024 ? 512 : 1024) << count;
  }
  for (long number = 0; number < 1200; ++number) {
    long value = -1;
    ASSERT_EQ(table.find(keys[static_cast<std::size_t>(number)].c_str(), value), 0);
    ASSERT_EQ(value, number);
  }
}

TEST(XelEnvHashTable, WalksLikeTheModelBeforeAndAfterEachRehash) {
  for (const long size : {1L, 2L, 3L, 7L, 128L}) {
    SCOPED_TRACE(size);
    TestEnv env;
    Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, size);
    Model model(size);
    std::deque<std::string> keys;
    std::mt19937 random(static_cast<unsigned>(size));
    for (long step = 0; step < 1500; ++step) {
      std::string key(random() % 4, ' ');
      for (char& character : key)
        character = static_cast<char>(step % 3 == 0 ? 1 + random() % 255 : 'a' + random() % 26);
      keys.push_back(key);
      const char* stored = keys.back().c_str();
      long value = -1;
      long expected = -1;
      switch (random() % 8) {
        case 0:
          ASSERT_EQ(table.move(stored, 0, -step), model.move(key, -step));
          break;
        case 1:
          ASSERT_EQ(table.find(stored, value), model.find(key, expected));
          ASSERT_EQ(value, expected);
          break;
        default:
          ASSERT_EQ(table.add(stored, step), model.add(key, step));
      }
      if (step == 700) {
        table.reMod(11);
        model.reMod(11);
      }
      if (step == 1100) {
        table.clear();
        model.clear();
      }
      ASSERT_EQ(table.getCount(), model.getCount());
      ASSERT_EQ(table.getSize(), model.getSize());
      ASSERT_EQ(walk(table), model.walk());
    }
    EXPECT_GT(table.getCount(), 100);
  }
}

TEST(XelEnvHashTable, ClearGivesBackItemsAndBucketsAndKeepsTheSize) {
  TestEnv env;
  Table table(env, SteeredHash::hash, XeldReaderCmpFunction, 2);
  SteeredHash::reset();
  for (const char* key : {"a", "b", "c", "d", "e"}) table.add(key, 1);
  EXPECT_EQ(table.getSize(), 4);
  table.clear();
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
  EXPECT_EQ(table.getCount(), 0);
  EXPECT_EQ(table.getSize(), 4);
  EXPECT_FALSE(table.hasBuckets());
  table.clear();
  EXPECT_FALSE(table.hasBuckets());

  SteeredHash::calls = 0;
  long value = -1;
  EXPECT_EQ(table.find("a", value), 1);
  EXPECT_EQ(table.findItem("a"), nullptr);
  EXPECT_EQ(SteeredHash::calls, 0) << "without buckets the hash function is not asked";
  EXPECT_FALSE(table.hasBuckets()) << "finding makes no buckets";
  EXPECT_TRUE(walk(table).empty());

  EXPECT_EQ(table.add("a", 2), 0);
  EXPECT_TRUE(table.hasBuckets());
  EXPECT_EQ(table.getSize(), 4) << "the buckets come back in the same number";
  EXPECT_EQ(table.find("a", value), 0);
  EXPECT_EQ(value, 2);
}

TEST(XelEnvHashTable, MoveAndCreateMakeTheBucketsAgain) {
  TestEnv env;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 2);
  table.clear();
  EXPECT_EQ(table.move("a", 0, 1), 1);
  EXPECT_TRUE(table.hasBuckets());
  table.clear();
  table.create();
  EXPECT_TRUE(table.hasBuckets());
  const long blocks = env.getAllocator().getBlocksOut();
  table.create();
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks) << "once there are buckets nothing is made";
}

TEST(XelEnvHashTable, ReModWithoutBucketsMakesEmptyOnes) {
  TestEnv env;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 2);
  table.clear();
  table.reMod(32);
  EXPECT_TRUE(table.hasBuckets());
  EXPECT_EQ(table.getSize(), 32);
  EXPECT_EQ(table.getCount(), 0);
  EXPECT_TRUE(walk(table).empty());
}

TEST(XelEnvHashTable, AWalkOverNothingEndsAtOnce) {
  TestEnv env;
  EXPECT_FALSE(Table::Iterator(nullptr).ok());
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 4);
  EXPECT_FALSE(Table::Iterator(&table).ok());
  table.add("a", 1);
  Table::Iterator it(&table);
  EXPECT_TRUE(it.ok());
  ++it;
  EXPECT_FALSE(it.ok());
  ++it;
  EXPECT_FALSE(it.ok()) << "a walk that has ended stays so";
}

TEST(XelEnvHashTable, FreesNoValues) {
  TestEnv env;
  long record = 5;
  {
    XelEnvHashTable<const char*, long*> table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 4);
    table.add("a", &record);
    long* found = nullptr;
    EXPECT_EQ(table.find("a", found), 0);
    EXPECT_EQ(found, &record);
  }
  EXPECT_EQ(record, 5);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
}

TEST(XelEnvHashTable, SwapExchangesEverything) {
  TestEnv env;
  TestEnv otherEnv;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 2);
  Table other(otherEnv, sameBucket, XeldReaderCmpFunction, 8);
  for (const auto& [key, value] : {std::pair("a", 1L), std::pair("b", 2L), std::pair("c", 3L)}) other.add(key, value);
  table.add("z", 9);
  table.swap(other);
  EXPECT_EQ(table.getCount(), 3);
  EXPECT_EQ(table.getSize(), 8);
  EXPECT_EQ(table.getEnv().getImpl(), otherEnv.get().getImpl());
  EXPECT_EQ(walk(table), (std::vector<long>{3, 2, 1}));
  EXPECT_EQ(table.add("d", 4), 0);
  EXPECT_EQ(walk(table), (std::vector<long>{4, 3, 2, 1})) << "with the other's hash function, all in one bucket";
  EXPECT_EQ(other.getCount(), 1);
  EXPECT_EQ(other.getSize(), 2);
  EXPECT_EQ(other.getEnv().getImpl(), env.get().getImpl());
  long value = -1;
  EXPECT_EQ(other.find("z", value), 0);
  EXPECT_EQ(value, 9);
  EXPECT_EQ(other.find("a", value), 1);
  for (const char* key : {"b", "c", "d", "e"}) EXPECT_EQ(other.add(key, 1), 0);
  EXPECT_EQ(other.getSize(), 4) << "it grows by its own size";
}

TEST(XelEnvHashTable, LivesInAnEnvironment) {
  TestEnv env;
  XelEnvObjectI* table = new (env.get()) Table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 4);
  static_cast<Table*>(table)->add("a", 1);
  delete table;
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
}

TEST(XelEnvHashTable, ABadIndexThrowsFromEveryOperationAndLosesNothing) {
  for (const long bad : {-1L, 4L, 5L, LONG_MIN, LONG_MAX}) {
    SCOPED_TRACE(bad);
    TestEnv env;
    Table table(env, SteeredHash::hash, XeldReaderCmpFunction, 4);
    SteeredHash::reset();
    for (const auto& [key, value] : {std::pair("a", 1L), std::pair("b", 2L), std::pair("c", 3L)}) table.add(key, value);
    const std::vector<long> before = walk(table);
    SteeredHash::badSize = 4;
    SteeredHash::badAnswer = bad;
    SteeredHash::badKey = "x";
    long value = -1;
    EXPECT_XEL_THROW(table.add("x", 4), XelWrongUsage, BadIndex);
    EXPECT_XEL_THROW(table.find("x", value), XelWrongUsage, BadIndex);
    EXPECT_XEL_THROW(table.findItem("x"), XelWrongUsage, BadIndex);
    EXPECT_XEL_THROW(table.move("x", 0, 4), XelWrongUsage, BadIndex);
    EXPECT_EQ(value, -1);
    EXPECT_EQ(table.getCount(), 3);
    EXPECT_EQ(walk(table), before);
    EXPECT_EQ(table.find("a", value), 0);
    EXPECT_EQ(value, 1);
  }
}

TEST(XelEnvHashTable, WrongUsageOfABadIndexHasCodeZero) {
  TestEnv env;
  Table table(env, SteeredHash::hash, XeldReaderCmpFunction, 4);
  SteeredHash::reset();
  SteeredHash::badSize = 4;
  SteeredHash::badKey = "x";
  try {
    table.add("x", 1);
    ADD_FAILURE();
  } catch (const XelWrongUsage& exception) {
    EXPECT_EQ(exception.getCode(), 0);
  }
}

TEST(XelEnvHashTable, ABadIndexWhileRehashingLosesNoItem) {
  for (const char* bad : {"a", "b", "c", "d"}) {
    for (const long answer : {-1L, 8L}) {
      SCOPED_TRACE(bad);
      TestEnv env;
      Table table(env, SteeredHash::hash, XeldReaderCmpFunction, 4);
      SteeredHash::reset();
      long number = 0;
      for (const char* key : {"a", "b", "c", "d"}) table.add(key, ++number);
      const std::vector<long> before = walk(table);
      SteeredHash::badSize = 8;
      SteeredHash::badAnswer = answer;
      SteeredHash::badKey = bad;
      EXPECT_XEL_THROW(table.reMod(8), XelWrongUsage, BadIndex);
      EXPECT_EQ(table.getSize(), 4);
      EXPECT_EQ(table.getCount(), 4);
      EXPECT_EQ(walk(table), before);
      SteeredHash::reset();
      table.reMod(8);
      EXPECT_EQ(table.getSize(), 8);
      EXPECT_EQ(walk(table).size(), 4U);
    }
  }
}

TEST(XelEnvHashTable, ABadIndexWhileAnAddRehashesLosesNoItem) {
  TestEnv env;
  Table table(env, SteeredHash::hash, XeldReaderCmpFunction, 2);
  SteeredHash::reset();
  for (const char* key : {"a", "b", "c", "d"}) table.add(key, 1);
  const long blocks = env.getAllocator().getBlocksOut();
  SteeredHash::badSize = 4;
  SteeredHash::badKey = "c";
  EXPECT_XEL_THROW(table.add("e", 1), XelWrongUsage, BadIndex);
  EXPECT_EQ(table.getCount(), 4);
  EXPECT_EQ(table.getSize(), 2);
  EXPECT_EQ(walk(table).size(), 4U);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks) << "the half-added item went back";
  SteeredHash::reset();
  EXPECT_EQ(table.add("e", 1), 0);
  EXPECT_EQ(table.getSize(), 4);
  EXPECT_EQ(walk(table).size(), 5U);
}

// A comparison that throws when it meets the key "bad".
long compareOrThrow(const char* left, const char* right) {
  if (std::strcmp(left, "bad") == 0) throw std::out_of_range("bad");
  return XeldReaderCmpFunction(left, right);
}

TEST(XelEnvHashTable, AComparisonThatThrowsLeavesTheItemsAsTheyWere) {
  TestEnv env;
  Table table(env, sameBucket, compareOrThrow, 4);
  for (const char* key : {"a", "bad"}) table.add(key, 1);
  const std::vector<long> before = walk(table);
  const long blocks = env.getAllocator().getBlocksOut();
  long value = 7;
  EXPECT_THROW(table.add("a", 2), std::out_of_range);
  EXPECT_THROW(table.find("a", value), std::out_of_range);
  EXPECT_THROW(table.move("a", 1, 2), std::out_of_range);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(table.getCount(), 2);
  EXPECT_EQ(walk(table), before);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
}

TEST(XelEnvHashTable, AddToAClearedTableThatFindsNoMemoryForBucketsLeavesItEmpty) {
  TestEnv env;
  Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 4);
  table.add("a", 1);
  table.clear();
  env.getAllocator().failAfter(0);
  EXPECT_THROW(table.add("a", 2), std::bad_alloc);
  EXPECT_FALSE(table.hasBuckets());
  EXPECT_EQ(table.getCount(), 0);
  EXPECT_EQ(table.add("a", 3), 0);
  EXPECT_EQ(walk(table), (std::vector<long>{3}));
}

TEST(XelEnvHashTable, EveryFailedAllocationLeavesTheItemsAsTheyWere) {
  const std::vector<const char*> keys{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"};
  const long injected = forEachFailingAllocation([&](XelEnv env) {
    Table table(env, XeldReaderHashFunction, XeldReaderCmpFunction, 1);
    long added = 0;
    const auto check = [&] {
      EXPECT_EQ(table.getCount(), added);
      EXPECT_EQ(static_cast<long>(walk(table).size()), added);
      for (long index = 0; index < static_cast<long>(keys.size()); ++index) {
        long value = -1;
        EXPECT_EQ(table.find(keys[static_cast<std::size_t>(index)], value), index < added ? 0 : 1);
        if (index < added) {
          EXPECT_EQ(value, index);
        }
      }
    };
    try {
      for (const char* key : keys) {
        EXPECT_EQ(table.add(key, added), 0);
        ++added;
      }
      table.reMod(50);
    } catch (const std::bad_alloc&) {
      check();
      throw;
    }
    check();
    table.clear();
    added = 0;
    try {
      table.move("a", 0, 1);
    } catch (const std::bad_alloc&) {
      check();
      throw;
    }
    check();
  });
  EXPECT_GE(injected, 2 * 15);
}
