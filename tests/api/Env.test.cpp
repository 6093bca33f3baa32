// The environment: its own memory manager, a user's allocator, and its life.
#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/ExpectAssertion.h"
#include "xelcsv/XelCsvReader.h"
#include "xelcsv/XelEnv.h"

namespace {

// Notes what it is asked for, and changes errno as a system call does.
class NotingAllocator : public XelAllocator {
 public:
  void* allocate(long size) override {
    allocated.push_back(size);
    errno = EAGAIN;
    return isExhausted ? nullptr : std::malloc(static_cast<std::size_t>(size));
  }

  void free(void* pointer, long size) override {
    freed.push_back(size);
    std::free(pointer);
    errno = EAGAIN;
  }

  bool isExhausted = false;
  std::vector<long> allocated;
  std::vector<long> freed;
};

struct Block {
  void* pointer;
  long size;
};

// Whether every byte of the block still is the one it was filled with.
bool isFilled(const Block& block, unsigned char byte) {
  const auto* bytes = static_cast<const unsigned char*>(block.pointer);
  const auto rest = static_cast<std::size_t>(block.size - 1);
  return bytes[0] == byte && std::memcmp(bytes, bytes + 1, rest) == 0;
}

long getHeapBytes() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long>(info.uordblks + info.hblkhd);
}

}  // namespace

static_assert(sizeof(XelEnv) == sizeof(void*), "a handle of one pointer");
static_assert(std::is_trivially_copyable_v<XelEnv>, "copied freely");

TEST(Env, EveryBlockIsAlignedForAnyObjectAndItsOwn) {
  XelEnv env;
  std::deque<Block> blocks;
  const auto giveBack = [&] {
    const Block block = blocks.front();
    blocks.pop_front();
    EXPECT_TRUE(isFilled(block, static_cast<unsigned char>(block.size))) << "block of " << block.size << " bytes";
    env.free(block.pointer, block.size);
  };
  for (long size = 1; size <= 70000; ++size) {
    void* pointer = env.allocate(size);
    ASSERT_NE(pointer, nullptr) << size;
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(pointer) % alignof(std::max_align_t), 0U) << size;
    std::memset(pointer, static_cast<unsigned char>(size), static_cast<std::size_t>(size));
    blocks.push_back({pointer, size});
    if (blocks.size() > 5) giveBack();
  }
  while (!blocks.empty()) giveBack();
  EXPECT_EQ(env.getBytesInUse(), 0);
  env.end();
}

TEST(Env, SizeZeroGivesNullWithItsOwnManager) {
  XelEnv env;
  EXPECT_EQ(env.allocate(0), nullptr);
  EXPECT_EQ(env.getBytesInUse(), 0);
  EXPECT_EQ(env.getBytesAllocated(), 0);
  env.end();
}

TEST(Env, SizeZeroAndNullNeverReachAUsersAllocator) {
  NotingAllocator allocator;
  XelEnv env(&allocator);
  allocator.allocated.clear();
  int local = 0;
  EXPECT_EQ(env.allocate(0), nullptr);
  env.free(nullptr, 500);
  env.free(nullptr, 0);
  env.free(&local, 0);
  EXPECT_TRUE(allocator.allocated.empty());
  EXPECT_TRUE(allocator.freed.empty());
  env.end();
}

TEST(Env, FreeingABlockOfNoBytesChangesNothingWithItsOwnManager) {
  XelEnv env;
  alignas(std::max_align_t) std::array<char, 64> local{};
  env.free(local.data(), 0);
  EXPECT_EQ(env.getBytesInUse(), 0);
  void* block = env.allocate(1);
  EXPECT_NE(block, static_cast<void*>(local.data())) << "it was never a block of the environment";
  env.free(block, 1);
  env.end();
}

TEST(Env, FreeingNullChangesNothing) {
  XelEnv env;
  void* block = env.allocate(40);
  const long inUse = env.getBytesInUse();
  env.free(nullptr, 40);
  EXPECT_EQ(env.getBytesInUse(), inUse);
  env.free(block, 40);
  env.end();
  XelEnv empty(nullptr);
  empty.free(nullptr, 40);
  EXPECT_TRUE(empty.isEmpty());
}

TEST(Env, SizesThatCannotExistThrow) {
  NotingAllocator allocator;
  XelEnv own;
  XelEnv user(&allocator);
  for (const long size : {-1L, -500L, LONG_MIN, LONG_MIN + 1}) {
    EXPECT_THROW(own.allocate(size), std::bad_alloc) << size;
    EXPECT_THROW(user.allocate(size), std::bad_alloc) << size;
  }
  EXPECT_EQ(allocator.allocated.size(), 1U) << "a negative size reached the user's allocator";
  for (const long size : {LONG_MAX, LONG_MAX - 1, LONG_MAX - 16, LONG_MAX - 32, LONG_MAX - 4096, LONG_MAX / 2 + 1}) {
    EXPECT_THROW(own.allocate(size), std::bad_alloc) << size;
  }
  EXPECT_EQ(own.getBytesInUse(), 0);
  EXPECT_EQ(own.getBytesAllocated(), 0);
  void* block = own.allocate(500);
  EXPECT_NE(block, nullptr) << "the environment goes on working";
  own.free(block, 500);
  own.end();
  user.end();
}

TEST(Env, CountersAreTrueAndGoDownAgain) {
  XelEnv env;
  EXPECT_EQ(env.getBytesInUse(), 0);
  EXPECT_EQ(env.getBytesAllocated(), 0);
  for (const long size : {1L, 16L, 17L, 500L, 10000L, 16384L, 16385L, 70000L, 1000000L}) {
    SCOPED_TRACE(size);
    const long inUse = env.getBytesInUse();
    void* first = env.allocate(size);
    const long step = env.getBytesInUse() - inUse;
    EXPECT_GE(step, size);
    EXPECT_LE(step, 16 + size + size / 4) << "a class is not much larger than what it is for";
    EXPECT_GE(env.getBytesAllocated(), env.getBytesInUse());
    void* second = env.allocate(size);
    EXPECT_EQ(env.getBytesInUse(), inUse + 2 * step);
    env.free(first, size);
    EXPECT_EQ(env.getBytesInUse(), inUse + step);
    env.free(second, size);
    EXPECT_EQ(env.getBytesInUse(), inUse);
  }
  env.end();
}

TEST(Env, LargeBlocksLeaveBothCountersWhenTheyComeBack) {
  XelEnv env;
  void* small = env.allocate(100);
  const long inUse = env.getBytesInUse();
  const long allocated = env.getBytesAllocated();
  void* large = env.allocate(5000000);
  const long step = env.getBytesInUse() - inUse;
  EXPECT_GE(step, 5000000);
  EXPECT_EQ(env.getBytesAllocated(), allocated + step);
  env.free(large, 5000000);
  EXPECT_EQ(env.getBytesInUse(), inUse);
  EXPECT_EQ(env.getBytesAllocated(), allocated);
  env.free(small, 100);
  env.end();
}

TEST(Env, ReturnedBlocksAreHandedOutAgain) {
  XelEnv env;
  std::vector<void*> blocks;
  for (int count = 0; count < 1000; ++count) blocks.push_back(env.allocate(500));
  const long allocated = env.getBytesAllocated();
  for (int round = 0; round < 50; ++round) {
    for (void*& block : blocks) {
      env.free(block, 500);
      block = nullptr;
    }
    for (void*& block : blocks) block = env.allocate(490);
  }
  EXPECT_EQ(env.getBytesAllocated(), allocated) << "sizes of one class share their blocks";
  for (void* block : blocks) env.free(block, 490);
  EXPECT_EQ(env.getBytesInUse(), 0);
  env.end();
}

TEST(Env, EndGivesBackBlocksThatAreStillOut) {
  const long before = getHeapBytes();
  void* probe = std::malloc(1 << 20);
  const bool isCounted = getHeapBytes() >= before + (1 << 20);
  std::free(probe);
  constexpr long Total = 64L << 20;
  XelEnv env;
  for (const long size : {24L, 500L, 10000L, 40000L, 300000L}) {
    for (long bytes = 0; bytes < Total / 5; bytes += size) {
      void* block = env.allocate(size);
      std::memset(block, 1, static_cast<std::size_t>(size));
    }
  }
  EXPECT_GE(env.getBytesInUse(), Total);
  if (isCounted) {
    EXPECT_GE(getHeapBytes(), before + Total);
  }
  env.end();
  // Under a leak checker, which has a malloc of its own, it is the checker that looks.
  if (isCounted) {
    EXPECT_LE(getHeapBytes(), before + (1 << 20));
  }
}

TEST(Env, AUsersAllocatorGetsEveryBlockWithItsSizeAndTheEnvironmentItself) {
  NotingAllocator allocator;
  XelEnv env(&allocator);
  ASSERT_EQ(allocator.allocated.size(), 1U) << "the environment itself";
  const long own = allocator.allocated[0];
  EXPECT_GT(own, 0);
  for (const long size : {1L, 500L, 10000L, 80000L}) {
    void* block = env.allocate(size);
    EXPECT_EQ(allocator.allocated.back(), size);
    env.free(block, size);
    EXPECT_EQ(allocator.freed.back(), size);
  }
  EXPECT_EQ(allocator.allocated.size(), 5U);
  EXPECT_EQ(allocator.freed.size(), 4U);
  EXPECT_EQ(env.getBytesInUse(), 0) << "the counters are the own manager's";
  EXPECT_EQ(env.getBytesAllocated(), 0);
  env.end();
  ASSERT_EQ(allocator.freed.size(), 5U);
  EXPECT_EQ(allocator.freed.back(), own);
}

TEST(Env, EndLeavesBlocksOfAUsersAllocatorToTheUser) {
  NotingAllocator allocator;
  XelEnv env(&allocator);
  void* block = env.allocate(100);
  env.end();
  EXPECT_EQ(allocator.freed.size(), 1U) << "only the environment itself came back";
  std::memset(block, 1, 100);
  std::free(block);
}

TEST(Env, AnExhaustedUsersAllocatorThrows) {
  NotingAllocator allocator;
  allocator.isExhausted = true;
  EXPECT_THROW(XelEnv env(&allocator), std::bad_alloc);
  allocator.isExhausted = false;
  XelEnv env(&allocator);
  allocator.isExhausted = true;
  EXPECT_THROW(env.allocate(8), std::bad_alloc);
  allocator.isExhausted = false;
  void* block = env.allocate(8);
  EXPECT_NE(block, nullptr);
  env.free(block, 8);
  env.end();
}

TEST(Env, ANullAllocatorGivesAnEnvironmentWithItsOwnManager) {
  XelEnv env(static_cast<XelAllocator*>(nullptr));
  EXPECT_FALSE(env.isEmpty());
  void* block = env.allocate(100);
  EXPECT_GE(env.getBytesInUse(), 100);
  env.free(block, 100);
  env.end();
}

TEST(Env, LeavesErrnoAlone) {
  NotingAllocator allocator;
  std::array<XelEnv, 2> environments{XelEnv(), XelEnv(&allocator)};
  for (XelEnv& env : environments) {
    for (const long size : {0L, 1L, 500L, 10000L, 80000L, 20000000L}) {
      SCOPED_TRACE(size);
      errno = ENOENT;
      void* block = env.allocate(size);
      EXPECT_EQ(errno, ENOENT);
      errno = 0;
      env.free(block, size);
      EXPECT_EQ(errno, 0);
    }
    env.end();
  }
}

TEST(Env, EndIsHarmlessTwiceAndLeavesTheHandleEmpty) {
  NotingAllocator allocator;
  std::array<XelEnv, 2> environments{XelEnv(), XelEnv(&allocator)};
  for (XelEnv& env : environments) {
    EXPECT_FALSE(env.isEmpty());
    env.end();
    EXPECT_TRUE(env.isEmpty());
    env.end();
    EXPECT_TRUE(env.isEmpty());
  }
  EXPECT_EQ(allocator.freed.size(), 1U);
  XelEnv empty(nullptr);
  EXPECT_TRUE(empty.isEmpty());
  empty.end();
  EXPECT_TRUE(empty.isEmpty());
}

TEST(Env, CopiesShareTheEnvironment) {
  XelEnv env;
  const XelEnv copy(env);
  XelEnv assigned(nullptr);
  assigned = copy;
  void* block = copy.allocate(100);
  EXPECT_EQ(env.getBytesInUse(), copy.getBytesInUse());
  EXPECT_EQ(env.getBytesInUse(), assigned.getBytesInUse());
  assigned.free(block, 100);
  EXPECT_EQ(env.getBytesInUse(), 0);
  env.end();
}

TEST(Env, EnvironmentsShareNothing) {
  XelEnv one;
  XelEnv other;
  void* block = one.allocate(100);
  EXPECT_EQ(other.getBytesInUse(), 0);
  one.free(block, 100);
  one.end();
  block = other.allocate(100);
  EXPECT_NE(block, nullptr);
  other.free(block, 100);
  other.end();
}

TEST(Env, NothingIsInUseAnyMoreWhenEverythingHasBeenEnded) {
  XelEnv env;
  void* unrelated = env.allocate(77);
  const long before = env.getBytesInUse();
  const DataFile file("Cities|NAMES,name,year\nCities,Paris,2004\nCities,Rome,2005\nStock,s1,3\n");
  for (const long isCached : {0L, 1L}) {
    XelCsvReader reader(env, file.getName(), 1, 0, ",", '.', '"', '#', isCached);
    XelCsvTableReader table = reader.getTableByName("Cities");
    EXPECT_STREQ(table.getLineByKey(2, "Rome", "2005").getStringByHeader("year"), "2005");
    EXPECT_THROW(table.getLineByKey(2, "Oslo", "2005"), XelCsvReader::XelLineNotFoundException);
    {
      const XelCsvTableReader::LineIterator it(table);
      EXPECT_TRUE(it.ok());
    }
    EXPECT_GT(env.getBytesInUse(), before);
    table.end();
    reader.end();
    EXPECT_EQ(env.getBytesInUse(), before) << isCached;
  }
  env.free(unrelated, 77);
  EXPECT_EQ(env.getBytesInUse(), 0);
  env.end();
}

TEST(Infinity, IsThePositiveInfinityOfIeee) {
  EXPECT_TRUE(std::isinf(XelGetInfinity()));
  EXPECT_GT(XelGetInfinity(), std::numeric_limits<double>::max());
  EXPECT_TRUE(std::isinf(-XelGetInfinity()));
}

#ifndef NDEBUG
TEST(EnvDeathTest, UsingAnEmptyHandleIsAnAssertion) {
  const XelEnv empty(nullptr);
  char byte = 0;
  EXPECT_XEL_ASSERTION(empty.allocate(1), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.free(&byte, 1), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getBytesInUse(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getBytesAllocated(), "impl != nullptr");
  empty.free(nullptr, 1);  // nothing to give back
}
#endif
