// Size classes, their allocators, and the list of larger blocks.
#include "env/XelMemory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "env/XelEnvI.h"
#include "tests/support/TestEnv.h"

// A sanitizer ends the process that asks for a block larger than its own limit.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define XELCSV_SYSTEM_MEMORY_IS_WATCHED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define XELCSV_SYSTEM_MEMORY_IS_WATCHED
#endif
#endif

TEST(XelMemory, EverySizeHasTheSmallestClassThatHoldsIt) {
  long last = -1;
  for (long size = 1; size <= 200000; ++size) {
    const long index = XelMemory::getIndex(size);
    ASSERT_TRUE(index == last || index == last + 1) << size;
    last = index;
    ASSERT_GE(XelMemory::getBlockSize(index), size);
    if (index > 0) {
      ASSERT_LT(XelMemory::getBlockSize(index - 1), size);
    }
  }
}

TEST(XelMemory, ClassesAreMultiplesOfTheAlignmentAndGrow) {
  long last = 0;
  for (long index = 0; index < 1000; ++index) {
    const long size = XelMemory::getBlockSize(index);
    ASSERT_GT(size, last) << index;
    ASSERT_EQ(size % XelBlockAlignment, 0) << index;
    ASSERT_EQ(XelMemory::getIndex(size), index);
    ASSERT_EQ(XelMemory::getIndex(size + 1), index + 1);
    last = size;
    if (size > LONG_MAX / 4) break;
  }
  EXPECT_GT(last, LONG_MAX / 4) << "there is a class for every size that a machine can have";
}

TEST(XelMemory, SmallClassesAreFixedSizeAndLargeOnesAreNot) {
  EXPECT_TRUE(XelMemory::isFixedSize(XelMemory::getIndex(1)));
  EXPECT_TRUE(XelMemory::isFixedSize(XelMemory::getIndex(500)));
  EXPECT_TRUE(XelMemory::isFixedSize(XelMemory::getIndex(10000)));
  EXPECT_FALSE(XelMemory::isFixedSize(XelMemory::getIndex(80000)));
  EXPECT_FALSE(XelMemory::isFixedSize(XelMemory::getIndex(1L << 40)));
}

TEST(XelMemory, CountsTheBytesOfTheClass) {
  XelMemory memory;
  void* small = memory.allocate(500);
  const long smallSize = XelMemory::getBlockSize(XelMemory::getIndex(500));
  EXPECT_EQ(memory.getBytesInUse(), smallSize);
  const long allocated = memory.getBytesAllocated();
  EXPECT_GE(allocated, smallSize);
  void* large = memory.allocate(80000);
  const long largeSize = XelMemory::getBlockSize(XelMemory::getIndex(80000));
  EXPECT_EQ(memory.getBytesInUse(), smallSize + largeSize);
  EXPECT_EQ(memory.getBytesAllocated(), allocated + largeSize);
  memory.free(large, 80000);
  EXPECT_EQ(memory.getBytesInUse(), smallSize);
  EXPECT_EQ(memory.getBytesAllocated(), allocated);
  memory.free(small, 500);
  EXPECT_EQ(memory.getBytesInUse(), 0);
  EXPECT_EQ(memory.getBytesAllocated(), allocated) << "its block waits for the next one of its class";
}

TEST(XelMemory, ReturnedBlocksOfAClassComeFirst) {
  XelMemory memory;
  void* first = memory.allocate(100);
  void* second = memory.allocate(100);
  EXPECT_NE(first, second);
  memory.free(first, 100);
  memory.free(second, 100);
  EXPECT_EQ(memory.allocate(97), second) << "the one that came back last";
  EXPECT_EQ(memory.allocate(100), first);
  void* third = memory.allocate(100);
  EXPECT_NE(third, first);
  EXPECT_NE(third, second);
}

TEST(XelMemory, BlocksOfDifferentClassesNeverOverlap) {
  XelMemory memory;
  struct Block {
    char* begin;
    long size;
    char byte;
  };
  std::vector<Block> blocks;
  for (long number = 0; number < 4000; ++number) {
    const long size = 1 + (number * 7919) % 20000;
    auto* begin = static_cast<char*>(memory.allocate(size));
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(begin) % static_cast<std::uintptr_t>(XelBlockAlignment), 0U);
    blocks.push_back({begin, size, static_cast<char>(number % 127)});
    std::memset(begin, blocks.back().byte, static_cast<std::size_t>(size));
  }
  for (const Block& block : blocks) {
    ASSERT_EQ(block.begin[0], block.byte);
    ASSERT_EQ(block.begin[block.size - 1], block.byte);
    ASSERT_EQ(std::memcmp(block.begin, block.begin + 1, static_cast<std::size_t>(block.size - 1)), 0);
    memory.free(block.begin, block.size);
  }
  EXPECT_EQ(memory.getBytesInUse(), 0);
}

TEST(XelMemory, SizesThatCannotExistThrowAndCountNothing) {
  XelMemory memory;
  for (const long size : {LONG_MAX, LONG_MAX - 1, LONG_MAX / 2 + 1}) {
    EXPECT_THROW(memory.allocate(size), std::bad_alloc) << size;
  }
  EXPECT_EQ(memory.getBytesInUse(), 0);
  EXPECT_EQ(memory.getBytesAllocated(), 0);
}

#ifndef XELCSV_SYSTEM_MEMORY_IS_WATCHED
TEST(XelMemory, ABlockThatTheSystemRefusesThrowsAndCountsNothing) {
  XelMemory memory;
  EXPECT_THROW(memory.allocate(1L << 60), std::bad_alloc);
  EXPECT_EQ(memory.getBytesInUse(), 0);
  EXPECT_EQ(memory.getBytesAllocated(), 0);
  memory.free(memory.allocate(1L << 20), 1L << 20);
  EXPECT_EQ(memory.getBytesInUse(), 0);
}
#endif

TEST(XelFixedSizeAllocatorI, HandsOutReturnedBlocksBeforeNewOnes) {
  XelMemory memory;
  XelFixedSizeAllocatorI allocator(48);
  EXPECT_EQ(allocator.getBlockSize(), 48);
  void* first = allocator.allocate(&memory);
  void* second = allocator.allocate(&memory);
  EXPECT_NE(first, second);
  allocator.deallocate(first);
  EXPECT_NE(allocator.allocateBlock(&memory), first) << "always a new one";
  EXPECT_EQ(allocator.allocate(&memory), first);
  EXPECT_NE(allocator.allocate(&memory), first);
}

TEST(XelAllocationList, GivesBackInAnyOrderAndWhatIsStillOutAtItsEnd) {
  XelAllocationList list;
  std::vector<void*> blocks;
  for (long size = 1; size <= 9; ++size) {
    blocks.push_back(list.alloc(size * 30000));
    std::memset(blocks.back(), 1, static_cast<std::size_t>(size * 30000));
  }
  for (const std::size_t index : {4U, 0U, 8U, 3U}) {
    errno = ENOENT;
    list.release(blocks[index]);
    EXPECT_EQ(errno, ENOENT);
  }
  blocks.push_back(list.alloc(16));
  std::memset(blocks.back(), 1, 16);
  list.release(blocks.back());
  EXPECT_THROW(list.alloc(LONG_MAX), std::bad_alloc);
}

TEST(XelEnvI, GeneralAllocatorIgnoresNull) {
  TestEnv env;
  env.get().getImpl()->getGenAlloc()->free(nullptr, 8);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1) << "the environment itself";
}

TEST(XelEnvI, GeneralAllocatorUsesTheEnvironment) {
  TestEnv env;
  XelGenAlloc* allocator = env.get().getImpl()->getGenAlloc();
  const long blocks = env.getAllocator().getBlocksOut();
  const long bytes = env.getAllocator().getBytesOut();
  void* block = allocator->allocate(4321);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks + 1);
  EXPECT_EQ(env.getAllocator().getBytesOut(), bytes + 4321);
  allocator->free(block, 4321);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
}

// Blocks for which the system is asked for pages of 2 MiB, and those a little smaller.
TEST(XelMemory, BlocksOfMegabytesAreLikeOthers) {
  constexpr long Page = 2L << 20;
  XelMemory memory;
  std::vector<char*> blocks;
  const long sizes[] = {Page / 2, Page - 100, Page, Page + 1, 5 * Page, 8 * Page};
  long sum = 0;
  for (const long size : sizes) {
    auto* block = static_cast<char*>(memory.allocate(size));
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % static_cast<std::uintptr_t>(XelBlockAlignment), 0U);
    std::memset(block, static_cast<int>(blocks.size()), static_cast<std::size_t>(size));
    blocks.push_back(block);
    sum += XelMemory::getBlockSize(XelMemory::getIndex(size));
    EXPECT_EQ(memory.getBytesInUse(), sum);
    EXPECT_EQ(memory.getBytesAllocated(), sum);
  }
  for (std::size_t number = 0; number < blocks.size(); ++number) {
    const char* block = blocks[number];
    const auto size = static_cast<std::size_t>(sizes[number]);
    EXPECT_EQ(block[0], static_cast<char>(number));
    EXPECT_EQ(std::memcmp(block, block + 1, size - 1), 0) << size;
    memory.free(blocks[number], sizes[number]);
  }
  EXPECT_EQ(memory.getBytesInUse(), 0);
  EXPECT_EQ(memory.getBytesAllocated(), 0);
}

// A small environment costs little, a large one few calls of the system.
TEST(XelMemory, TakesChunksFromTheSystemThatDoubleUpTo64KiB) {
  XelMemory memory;
  std::vector<long> chunks;
  for (int block = 0; block < 1024; ++block) {
    const long before = memory.getBytesAllocated();
    memory.allocate(1024);
    const long taken = memory.getBytesAllocated() - before;
    if (taken != 0) chunks.push_back(taken);
  }
  const std::vector<long> first(chunks.begin(), chunks.begin() + 6);
  EXPECT_EQ(first, (std::vector<long>{4096, 8192, 16384, 32768, 65536, 65536}));
  EXPECT_EQ(chunks.back(), 65536);
  EXPECT_EQ(memory.getBytesAllocated(), 4096 + 8192 + 16384 + 32768 + 16 * 65536)
      << "no chunk is taken before the last one is used up";
}

TEST(XelMemory, ClassesUpTo16KiBAreFixedSize) {
  EXPECT_TRUE(XelMemory::isFixedSize(XelMemory::getIndex(16 * 1024)));
  EXPECT_FALSE(XelMemory::isFixedSize(XelMemory::getIndex(16 * 1024 + 1)));
}
