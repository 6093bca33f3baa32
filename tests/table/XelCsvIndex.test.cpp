// The index of a cached table by itself: the hash, the list of keys, the slots.
#include "csv/table/XelCsvIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "csv/table/XelCsvKeyList.h"
#include "csv/table/XelKeyHash.h"
#include "tests/support/TestEnv.h"

namespace {

XelCsvSpan spanOf(const std::string& text) { return {text.data(), text.data() + text.size()}; }

std::uint64_t hashOf(const std::string& key) { return XelHashKey(key.data(), static_cast<long>(key.size())); }

using MakeKey = std::function<std::string(long)>;

struct Shape {
  const char* name;
  MakeKey makeKey;
};

// Keys as tables have them; none of a shape comes twice among the first four million.
const Shape Shapes[] = {
    {"counting", [](long number) { return std::to_string(number); }},
    {"counting, of one length",
     [](long number) {
       const std::string digits = std::to_string(number);
       return "K" + std::string(7 - digits.size(), '0') + digits;
     }},
    {"two that count", [](long number) { return std::to_string(number / 1414) + "-" + std::to_string(number % 1414); }},
    {"of one long beginning", [](long number) { return std::string(100, 'x') + std::to_string(number); }},
    {"of one long end", [](long number) { return std::to_string(number) + std::string(100, 'x'); }},
    {"of 8 bytes that differ in one bit or two",
     [](long number) {
       std::string key(8, ' ');
       for (std::size_t bit = 0; bit < 22; ++bit) {
         if ((number >> bit & 1) != 0) key[bit % 8] = static_cast<char>(key[bit % 8] + (1 << bit / 8));
       }
       return key;
     }},
};

// Lines with the keys of a shape; line i begins at 100 * i and has the number i.
void addLines(XelCsvIndex& index, const MakeKey& makeKey, long count) {
  for (long number = 0; number < count; ++number) {
    const std::string key = makeKey(number);
    ASSERT_TRUE(index.add(spanOf(key), {100 * number, number}));
  }
  ASSERT_TRUE(index.settle());
}

void expectLines(const XelCsvIndex& index, const MakeKey& makeKey, long count) {
  ASSERT_EQ(index.getSize(), count);
  for (long number = 0; number < count; ++number) {
    const std::string key = makeKey(number);
    ASSERT_STREQ(index.getLine(number).getKey(), key.c_str());
    ASSERT_EQ(index.getLine(number).start.offset, 100 * number);
    const OffsetAndLineNumber* start = index.find(key.c_str());
    ASSERT_EQ(start, &index.getLine(number).start);
    ASSERT_EQ(start->lineNumber, number);
  }
}

}  // namespace

TEST(HashKey, DependsOnEachByteAndOnTheLength) {
  for (const std::size_t length : {1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 15U, 16U, 17U, 31U, 32U, 33U, 48U, 100U}) {
    const std::string key(length, 'a');
    std::set<std::uint64_t> hashes{hashOf(key), hashOf(key + "a"), hashOf(key.substr(1))};
    for (std::size_t at = 0; at < length; ++at) {
      for (const char byte : {'b', '\x01', '\xff'}) {
        std::string changed = key;
        changed[at] = byte;
        hashes.insert(hashOf(changed));
      }
    }
    EXPECT_EQ(hashes.size(), 3 + 3 * length) << length;
  }
}

TEST(HashKey, ReadsNothingBesideTheKey) {
  for (std::size_t length = 0; length < 40; ++length) {
    const std::string key(length, 'k');
    const std::string among = "?" + key + "!";
    const std::vector<char> alone(key.begin(), key.end());  // ends where the key ends, for the sanitizers
    EXPECT_EQ(XelHashKey(among.data() + 1, static_cast<long>(length)), hashOf(key));
    EXPECT_EQ(XelHashKey(alone.data(), static_cast<long>(length)), hashOf(key));
  }
}

TEST(HashKey, SpreadsEveryShapeOfKeyLikeKeysDrawnByLot) {
  constexpr long Buckets = 1L << 16;
  constexpr long Count = 4 * Buckets;
  for (const Shape& shape : Shapes) {
    // The high bits choose the slot, the next ones tell keys apart: both must be spread.
    for (const int shift : {64 - 16, 34}) {
      SCOPED_TRACE(std::string(shape.name) + ", bits from " + std::to_string(shift));
      std::vector<long> counts(Buckets);
      for (long number = 0; number < Count; ++number) {
        ++counts[static_cast<std::size_t>(hashOf(shape.makeKey(number)) >> shift) % Buckets];
      }
      double squares = 0;
      for (const long count : counts) squares += static_cast<double>((count - 4) * (count - 4)) / 4;
      // Chi square with 65535 degrees of freedom: 6 standard deviations of 362 to either side.
      EXPECT_NEAR(squares, Buckets - 1, 6 * std::sqrt(2.0 * Buckets));
      EXPECT_LT(*std::max_element(counts.begin(), counts.end()), 25);
    }
  }
}

TEST(HashKey, HasNoCollisionAmongAMillionKeysOfAShape) {
  for (const Shape& shape : Shapes) {
    std::vector<std::uint64_t> hashes;
    for (long number = 0; number < 1'000'000; ++number) hashes.push_back(hashOf(shape.makeKey(number)));
    std::sort(hashes.begin(), hashes.end());
    EXPECT_EQ(std::adjacent_find(hashes.begin(), hashes.end()), hashes.end()) << shape.name;
  }
}

TEST(FoldedProduct, IsBothHalvesOfTheProduct) {
  struct Case {
    std::uint64_t left;
    std::uint64_t right;
    std::uint64_t folded;
  };
  constexpr std::uint64_t Most = ~std::uint64_t{0};
  for (const Case& test : {Case{0, Most, 0}, Case{3, 5, 15}, Case{Most, Most, Most}, Case{Most, 2, Most},
                           Case{1ULL << 63, 4, 2}, Case{0x100000001ULL, 0x100000001ULL, 0x200000000ULL}}) {
    EXPECT_EQ(XelFoldedProduct(test.left, test.right), test.folded) << test.left << " * " << test.right;
  }
}

TEST(KeyList, GivesLinesInTheOrderInWhichTheyCame) {
  TestEnv env;
  XelCsvKeyList list(env);
  EXPECT_EQ(list.getSize(), 0);
  std::vector<std::string> keys;
  for (std::size_t number = 0; number < 3000; ++number) {
    keys.emplace_back(number * 7 % 131, static_cast<char>('a' + number % 26));
    const XelCsvKeyList::Place place = list.add(spanOf(keys.back()), {static_cast<long>(number), -1});
    EXPECT_STREQ(list.at(place)->getKey(), keys.back().c_str());
  }
  ASSERT_EQ(list.getSize(), 3000);
  const auto expect = [&](long number) {
    ASSERT_STREQ(list.get(number)->getKey(), keys[static_cast<std::size_t>(number)].c_str());
    ASSERT_EQ(list.get(number)->start.offset, number);
  };
  for (long number = 0; number < 3000; ++number) expect(number);
  for (long number = 2999; number >= 0; --number) expect(number);
  for (long number = 0; number < 3000; ++number) expect(number * 977 % 3000);
}

TEST(KeyList, TakesKeysOfAnyLengthAndOfNone) {
  TestEnv env;
  XelCsvKeyList list(env);
  const std::size_t lengths[] = {0, 300'000, 0, 1, 600, 262'144, 9999, 7, 8};
  for (const std::size_t length : lengths) list.add(spanOf(std::string(length, 'k')), {1, 2});
  list.add({nullptr, nullptr}, {1, 2});
  for (std::size_t number = 0; number < std::size(lengths); ++number) {
    EXPECT_EQ(std::string(list.get(static_cast<long>(number))->getKey()).size(), lengths[number]);
  }
  EXPECT_STREQ(list.get(static_cast<long>(std::size(lengths)))->getKey(), "");
}

TEST(KeyList, TruncatedAnywhereGoesOnFromThere) {
  const auto makeKey = [](long number) { return std::string(static_cast<std::size_t>(number % 90), 'k'); };
  for (long kept = 0; kept < 120; ++kept) {
    TestEnv env;
    XelCsvKeyList list(env);
    for (long number = 0; number < 120; ++number) list.add(spanOf(makeKey(number)), {number, 0});
    EXPECT_EQ(list.get(119)->start.offset, 119);
    list.truncate(kept);
    ASSERT_EQ(list.getSize(), kept);
    // Longer keys, so that the room that is left is not always enough for the next.
    for (long number = kept; number < 200; ++number)
      list.add(spanOf(makeKey(number) + std::string(200, 'x')), {number, 1});
    for (long number = 0; number < 200; ++number) {
      const std::string key = number < kept ? makeKey(number) : makeKey(number) + std::string(200, 'x');
      ASSERT_STREQ(list.get(number)->getKey(), key.c_str()) << kept << " kept, number " << number;
      ASSERT_EQ(list.get(number)->start.offset, number);
    }
    list.clear();
    EXPECT_EQ(list.getSize(), 0);
  }
}

TEST(KeyList, ThatIsFullThrowsBadAllocAndKeepsWhatItHas) {
  TestEnv env;
  XelCsvKeyList list(env, 2);
  long count = 0;
  EXPECT_THROW(for (;; ++count) list.add(spanOf(std::to_string(count)), {count, 0}), std::bad_alloc);
  EXPECT_EQ(count, 2 * (512 / 24));
  ASSERT_EQ(list.getSize(), count);
  for (long number = 0; number < count; ++number) EXPECT_EQ(list.get(number)->start.offset, number);
}

TEST(KeyList, FailingAllocationsLoseNoLine) {
  long failures = 0;
  for (bool hasFailed = true; hasFailed; ++failures) {
    TestEnv env;
    XelCsvKeyList list(env);
    env.getAllocator().failAfter(failures);
    hasFailed = false;
    for (long number = 0; number < 1000; ++number) {
      const std::string key = std::to_string(number);
      try {
        list.add(spanOf(key), {number, 0});
      } catch (const std::bad_alloc&) {
        hasFailed = true;
        ASSERT_EQ(list.getSize(), number);
        list.add(spanOf(key), {number, 0});
      }
    }
    env.getAllocator().neverFail();
    for (long number = 0; number < 1000; ++number) {
      ASSERT_STREQ(list.get(number)->getKey(), std::to_string(number).c_str());
    }
  }
  EXPECT_GT(failures, 8);
}

TEST(Index, FindsEveryLineOfEveryShapeOfKey) {
  for (const Shape& shape : Shapes) {
    SCOPED_TRACE(shape.name);
    for (const long count : {0L, 1L, 15L, 16L, 17L, 24L, 25L, 1000L, 60'000L}) {
      TestEnv env;
      XelCsvIndex index(env);
      addLines(index, shape.makeKey, count);
      expectLines(index, shape.makeKey, count);
      EXPECT_TRUE(index.isComplete());
      for (const std::string& other : {std::string(), std::string("K"), shape.makeKey(count), shape.makeKey(0) + "-"}) {
        EXPECT_EQ(index.find(other.c_str()), nullptr) << other;
      }
    }
  }
}

TEST(Index, TellsKeysApartWhoseHashesAgreeInASlot) {
  // Pairs whose 30 highest bits of hash agree: by the birthday rule some among a hundred thousand keys.
  std::vector<std::pair<std::uint64_t, long>> hashes;
  for (long number = 0; number < 300'000; ++number) hashes.emplace_back(hashOf(std::to_string(number)) >> 34, number);
  std::sort(hashes.begin(), hashes.end());
  long pairs = 0;
  for (std::size_t at = 1; at < hashes.size(); ++at) {
    if (hashes[at].first != hashes[at - 1].first) continue;
    ++pairs;
    TestEnv env;
    XelCsvIndex index(env, XelCsvKeyList::MostChunks, XelCsvKeyList::PlaceBits);
    const std::string first = std::to_string(hashes[at - 1].second);
    const std::string second = std::to_string(hashes[at].second);
    EXPECT_TRUE(index.add(spanOf(first), {1, 10}));
    EXPECT_TRUE(index.settle());
    EXPECT_EQ(index.find(second.c_str()), nullptr);
    EXPECT_TRUE(index.add(spanOf(second), {2, 20}));
    EXPECT_TRUE(index.settle());
    EXPECT_EQ(index.find(first.c_str())->lineNumber, 10);
    EXPECT_EQ(index.find(second.c_str())->lineNumber, 20);
  }
  EXPECT_GT(pairs, 10);
}

TEST(Index, FindsLinesWhoseSlotsGoOnAtTheFirstOne) {
  // Keys whose home is the last slot, however many slots there are: more of them than fit between it and the end.
  std::vector<std::string> keys;
  for (long number = 0; keys.size() < 100; ++number) {
    std::string key = std::to_string(number);
    if (hashOf(key) >> 52 == 0xFFF) keys.push_back(std::move(key));
  }
  const auto makeKey = [&keys](long number) { return keys[static_cast<std::size_t>(number)]; };
  for (long count = 1; count <= 100; ++count) {
    TestEnv env;
    XelCsvIndex index(env);
    addLines(index, makeKey, count);
    expectLines(index, makeKey, count);
    index.trim();
    expectLines(index, makeKey, count);
    if (count < 100) {
      EXPECT_EQ(index.find(makeKey(count).c_str()), nullptr);
    }
  }
}

TEST(Index, TakesBitsOfTheHashesWhenPlacesNeedThem) {
  const auto makeKey = Shapes[2].makeKey;
  for (const int placeBits : {1, 15, 16, 17, 20}) {
    SCOPED_TRACE(placeBits);
    TestEnv env;
    XelCsvIndex index(env, XelCsvKeyList::MostChunks, placeBits);
    addLines(index, makeKey, 20'000);
    expectLines(index, makeKey, 20'000);
    EXPECT_EQ(index.find(makeKey(20'000).c_str()), nullptr);
    EXPECT_TRUE(index.add(spanOf(makeKey(7)), {1, 1}));
    EXPECT_FALSE(index.settle()) << "a duplicate of a line from when places had few bits";
    EXPECT_EQ(index.getSize(), 20'001);
    index.clear();
    addLines(index, makeKey, 100);
    expectLines(index, makeKey, 100);
  }
}

TEST(Index, EndsAtTheFirstDuplicateHoweverLateItIsNoticed) {
  const auto makeKey = [](long number) { return std::to_string(number); };
  for (const long duplicate : {1L, 2L, 15L, 16L, 17L, 23L, 24L, 25L, 500L}) {
    for (const long first : {0L, duplicate / 2, duplicate - 1}) {
      for (long behind = 0; behind <= XelCsvIndex::Delay + 1; ++behind) {
        SCOPED_TRACE(std::to_string(duplicate) + " of " + std::to_string(first) +
                     ", lines behind: " + std::to_string(behind));
        TestEnv env;
        XelCsvIndex index(env);
        bool isNew = true;
        for (long number = 0; number <= duplicate + behind && isNew; ++number) {
          // One line further on is a duplicate too, of another line.
          const long key = number == duplicate ? first : number == duplicate + 1 ? duplicate - 1 : number;
          isNew = index.add(spanOf(makeKey(key)), {number, number});
        }
        EXPECT_EQ(isNew, behind < XelCsvIndex::Delay);
        if (isNew) {
          EXPECT_FALSE(index.settle());
        }
        EXPECT_TRUE(index.settle());
        ASSERT_EQ(index.getSize(), duplicate + 1);
        EXPECT_FALSE(index.isComplete());
        EXPECT_EQ(index.getLine(duplicate).start.offset, duplicate);
        EXPECT_EQ(std::string(index.getLine(duplicate).getKey()), makeKey(first));
        EXPECT_EQ(index.find(makeKey(first).c_str())->offset, first);
        EXPECT_EQ(index.find(makeKey(duplicate).c_str()), nullptr);
        EXPECT_EQ(index.find(makeKey(duplicate + 2).c_str()), nullptr);
      }
    }
  }
}

TEST(Index, ListsLinesThatItDoesNotFind) {
  TestEnv env;
  XelCsvIndex index(env);
  const OffsetAndLineNumber starts[] = {{10, 1}, {20, 2}};
  index.list(spanOf("a"), &starts[0]);
  EXPECT_TRUE(index.isComplete());
  index.list(spanOf("b"), nullptr);
  EXPECT_FALSE(index.isComplete());
  index.list(spanOf("a"), &starts[1]);
  index.list(spanOf("b"), &starts[1]);
  EXPECT_EQ(index.getSize(), 4);
  EXPECT_EQ(index.find("a")->offset, 10);
  EXPECT_EQ(index.find("b"), &index.getLine(3).start);
  index.clear();
  EXPECT_EQ(index.getSize(), 0);
  EXPECT_TRUE(index.isComplete());
  EXPECT_EQ(index.find("a"), nullptr);
}

// A chunk may have been taken for a line that then was not added, for noting its place took memory too. A longer line after
// it takes another chunk, and the empty one between them is no line.
TEST(KeyList, GoesOnWithALongerLineWhereMemoryRanOut) {
  const std::string longKey(300'000, 'k');
  long failures = 0;
  for (std::size_t length = 8; length < 400; length += 8) {
    TestEnv env;
    XelCsvKeyList list(env);
    std::vector<std::string> keys;
    for (long number = 0; number < 2000; ++number) {
      keys.push_back(std::to_string(number) + std::string(length, 'k'));
      env.getAllocator().failAfter(1);  // the second allocation of a line
      try {
        list.add(spanOf(keys.back()), {number, number});
        env.getAllocator().neverFail();
      } catch (const std::bad_alloc&) {
        env.getAllocator().neverFail();
        ++failures;
        keys.back() = longKey;
        list.add(spanOf(longKey), {number, number});
      }
    }
    ASSERT_EQ(list.getSize(), 2000);
    for (long number = 0; number < 2000; ++number) {
      ASSERT_EQ(list.get(number)->getKey(), keys[static_cast<std::size_t>(number)]);
      ASSERT_EQ(list.get(number)->start.lineNumber, number);
    }
  }
  EXPECT_GT(failures, 5);
}

TEST(Index, MakesRoomForTheLinesThatAreExpected) {
  TestEnv env;
  XelCsvIndex index(env);
  index.expect(0, 100L * 20'000);
  const auto makeKey = Shapes[0].makeKey;
  long changes = 0;
  long slots = 0;
  for (long number = 0; number < 20'000; ++number) {
    ASSERT_TRUE(index.add(spanOf(makeKey(number)), {100 * number, number}));
    changes += index.getSlotCount() != slots ? 1 : 0;
    slots = index.getSlotCount();
  }
  EXPECT_TRUE(index.settle());
  // The first, then 16 times as many twice, then all.
  EXPECT_LE(changes, 5);
  EXPECT_LT(slots, 20'000 * 3 / 2);
  index.trim();
  EXPECT_EQ(index.getSlotCount(), slots);
  expectLines(index, makeKey, 20'000);
}

TEST(Index, GivesBackTheSlotsOfLinesThatDidNotCome) {
  TestEnv env;
  XelCsvIndex index(env);
  index.expect(0, 1L << 40);
  const auto makeKey = Shapes[0].makeKey;
  addLines(index, makeKey, 1000);
  EXPECT_GT(index.getSlotCount(), 4000);
  env.getAllocator().failAfter(0);
  EXPECT_THROW(index.trim(), std::bad_alloc);
  expectLines(index, makeKey, 1000);
  index.trim();
  EXPECT_LT(index.getSlotCount(), 1500);
  expectLines(index, makeKey, 1000);
}

TEST(Index, GrowsWithoutKnowingHowManyLinesThereAre) {
  const auto makeKey = Shapes[2].makeKey;
  // No region, one that ends before it begins, one whose first line begins it, one of which most has passed.
  for (const auto& [first, last] : {std::pair<long, long>{0, 0}, {500, 100}, {0, -1}, {-5, 10'000}}) {
    TestEnv env;
    XelCsvIndex index(env);
    index.expect(first, last);
    addLines(index, makeKey, 5000);
    expectLines(index, makeKey, 5000);
  }
}

TEST(Index, TakesFewBytesPerLine) {
  for (const Shape& shape : Shapes) {
    for (const long count : {20'000L, 200'000L}) {
      TestEnv env;
      const long before = env.getAllocator().getBytesOut();
      XelCsvIndex index(env);
      index.expect(0, 100 * count);
      addLines(index, shape.makeKey, count);
      index.trim();
      long keys = 0;
      for (long number = 0; number < count; ++number) keys += static_cast<long>(shape.makeKey(number).size());
      const long bytes = env.getAllocator().getBytesOut() - before;
      // The last chunk of the list may be empty: a fifth of it at most.
      EXPECT_LE(bytes, std::min(keys + 40 * count + 256L * 1024, (keys + 40 * count) * 5 / 4)) << shape.name;
      EXPECT_GT(bytes, keys + 24 * count) << shape.name;
    }
  }
}

TEST(Index, FailingAllocationsLeaveTheLinesThatHaveTheirSlot) {
  const auto makeKey = Shapes[1].makeKey;
  long failures = 0;
  for (long countdown = 0;; ++countdown) {
    TestEnv env;
    XelCsvIndex index(env);
    env.getAllocator().failAfter(countdown, true);
    long number = 0;
    bool hasThrown = false;
    try {
      for (; number < 2000; ++number) index.add(spanOf(makeKey(number)), {100 * number, number});
      index.settle();
    } catch (const std::bad_alloc&) {
      hasThrown = true;
      try {
        EXPECT_TRUE(index.settle());
      } catch (const std::bad_alloc&) {
        EXPECT_LE(index.getSize(), number);
      }
    }
    env.getAllocator().neverFail();
    if (!hasThrown) break;
    ++failures;
    expectLines(index, makeKey, index.getSize());
    EXPECT_GE(index.getSize(), number - XelCsvIndex::Delay);
    EXPECT_TRUE(index.isComplete());
    // It can be gone on with.
    for (number = index.getSize(); number < 2000; ++number) {
      ASSERT_TRUE(index.add(spanOf(makeKey(number)), {100 * number, number}));
    }
    EXPECT_TRUE(index.settle());
    expectLines(index, makeKey, 2000);
  }
  EXPECT_GT(failures, 10);
}

TEST(Index, SwapsEverythingAcrossEnvironments) {
  TestEnv env;
  TestEnv otherEnv;
  const long blocks = otherEnv.getAllocator().getBlocksOut();
  {
    XelCsvIndex index(env);
    XelCsvIndex other(otherEnv);
    addLines(index, Shapes[0].makeKey, 100);
    ASSERT_TRUE(other.add(spanOf("other"), {1, 2}));
    index.swap(other);
    expectLines(other, Shapes[0].makeKey, 100);
    EXPECT_TRUE(index.settle());
    EXPECT_EQ(index.getSize(), 1);
    EXPECT_EQ(index.find("other")->lineNumber, 2);
    other.clear();
    EXPECT_EQ(other.getSize(), 0);
    EXPECT_EQ(other.find("1"), nullptr);
  }
  EXPECT_EQ(otherEnv.getAllocator().getBlocksOut(), blocks);
}
