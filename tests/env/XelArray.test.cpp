// The growable array: its order, its pages, and its end.
#include "env/XelArray.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/TestEnv.h"

static_assert(sizeof(XelArray<const char*>) == sizeof(void*), "a handle of one pointer");
static_assert(std::has_virtual_destructor_v<XelArrayI>);

TEST(XelArray, KeepsTheOrderOfInsertion) {
  TestEnv env;
  XelArray<const char*> array(env, 0);
  EXPECT_EQ(array.getSize(), 0);
  const char* names[] = {"Products", "Stock", "Cities"};
  for (const char* name : names) array.add(name);
  EXPECT_EQ(array.getSize(), 3);
  for (long index = 0; index < 3; ++index) EXPECT_EQ(array[index], names[index]) << "the pointer itself is kept";
  array.end();
}

TEST(XelArray, BeginsWithTheGivenNumberOfZeroElements) {
  TestEnv env;
  for (const long size : {0L, 1L, 255L, 256L, 257L, 3000L}) {
    XelArray<const char*> array(env, size);
    ASSERT_EQ(array.getSize(), size);
    for (long index = 0; index < size; ++index) ASSERT_EQ(array[index], nullptr);
    array.add("next");
    ASSERT_EQ(array.getSize(), size + 1);
    ASSERT_STREQ(array[size], "next");
    array.end();
  }
}

TEST(XelArray, ElementsCanBeAssigned) {
  TestEnv env;
  XelArray<const char*> array(env, 0);
  array.add("old");
  array[0] = nullptr;
  EXPECT_EQ(array[0], nullptr);
  array.end();
}

TEST(XelArray, PagesOverThousandsOfElements) {
  TestEnv env;
  std::vector<std::string> names;
  for (int number = 0; number < 20000; ++number) names.push_back("name" + std::to_string(number));
  XelArray<const char*> array(env, 0);
  const char* const* first = nullptr;
  for (const std::string& name : names) {
    array.add(name.c_str());
    if (first == nullptr) first = &array[0];
  }
  ASSERT_EQ(array.getSize(), 20000);
  for (long index = 0; index < 20000; ++index) {
    ASSERT_EQ(array[index], names[static_cast<std::size_t>(index)].c_str());
  }
  EXPECT_EQ(&array[0], first) << "pages never move";
  array.end();
}

TEST(XelArray, ElementStandsInThePageOfItsIndex) {
  TestEnv env;
  XelArray<long> array(env, 1000);
  static_assert(XelArrayI::PageSize == 1L << XelArrayI::PageShift);
  static_assert(XelArrayI::PageMask == XelArrayI::PageSize - 1);
  for (long index = 0; index < 999; ++index) {
    const bool isLastOfPage = (index & XelArrayI::PageMask) == XelArrayI::PageMask;
    if (!isLastOfPage) {
      ASSERT_EQ(&array[index + 1], &array[index] + 1) << index;
    }
  }
  array.end();
}

TEST(XelArray, GrowsOneElementEarly) {
  TestEnv env;
  XelArray<const char*> array(env, 0);
  const XelArrayI* impl = array.getImpl();
  for (long count = 1; count <= 5 * XelArrayI::PageSize; ++count) {
    array.add("name");
    // Room for the element after the one that was written.
    ASSERT_GT(impl->getCapacity(), count);
    ASSERT_TRUE(impl->hasPage(count));
    ASSERT_EQ(impl->getCapacity(), (count / XelArrayI::PageSize + 1) * XelArrayI::PageSize) << count;
  }
  array.end();
}

TEST(XelArray, CopiesShareTheArray) {
  TestEnv env;
  XelArray<const char*> array(env, 0);
  XelArray<const char*> copy(array);
  copy.add("name");
  EXPECT_EQ(array.getSize(), 1);
  EXPECT_EQ(array.getImpl(), copy.getImpl());
  array.end();
}

TEST(XelArray, EndIsHarmlessTwiceAndOnAnEmptyHandle) {
  TestEnv env;
  XelArray<const char*> array(env, 600);
  EXPECT_GT(env.getAllocator().getBlocksOut(), 1);
  array.end();
  EXPECT_EQ(array.getImpl(), nullptr);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
  array.end();
  EXPECT_EQ(array.getImpl(), nullptr);
  XelArray<const char*> empty;
  EXPECT_EQ(empty.getImpl(), nullptr);
  empty.end();
  EXPECT_EQ(empty.getImpl(), nullptr);
}

TEST(XelArray, CanBeFilledAgainAfterClear) {
  TestEnv env;
  XelArray<long> array(env, 0);
  for (const long count : {0L, 1L, 1000L, 300L}) {
    for (long index = 0; index < count; ++index) array.add(index * 3);
    ASSERT_EQ(array.getSize(), count);
    for (long index = 0; index < count; ++index) ASSERT_EQ(array[index], index * 3);
    array.clear();
    ASSERT_EQ(array.getSize(), 0);
  }
  array.end();
}

TEST(XelArray, OfIntegersIsTheSameTemplate) {
  TestEnv env;
  XelArray<long> array(env, 0);
  array.add(-7);
  array.add(1L << 40);
  EXPECT_EQ(array[0], -7);
  EXPECT_EQ(array[1], 1L << 40);
  array.end();
}

TEST(XelArray, AFailedAddLeavesTheArrayAsItWas) {
  const long injected = forEachFailingAllocation([](XelEnv env) {
    XelArray<long> array(env, 0);
    const EndGuard<XelArray<long>> guard(array);
    for (long number = 0; number < 3000; ++number) {
      try {
        array.add(number);
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(array.getSize(), number);
        for (long index = 0; index < number; ++index) EXPECT_EQ(array[index], index);
        throw;
      }
    }
    EXPECT_EQ(array.getSize(), 3000);
  });
  EXPECT_GE(injected, 2 * 12) << "each page was made to fail, once and for ever";
}

TEST(XelArray, GoesOnAfterAFailedAdd) {
  TestEnv env;
  XelArray<long> array(env, 0);
  long failures = 0;
  for (long number = 0; number < 3000; ++number) {
    env.getAllocator().failAfter(0);
    try {
      array.add(number);
    } catch (const std::bad_alloc&) {
      ++failures;
      env.getAllocator().neverFail();
      array.add(number);
    }
    env.getAllocator().neverFail();
  }
  EXPECT_GT(failures, 0);
  ASSERT_EQ(array.getSize(), 3000);
  for (long index = 0; index < 3000; ++index) ASSERT_EQ(array[index], index);
  array.end();
}

TEST(XelArray, AFailedConstructionGivesEverythingBack) {
  EXPECT_GE(forEachFailingAllocation([](XelEnv env) {
              XelArray<const char*> array(env, 2000);
              array.end();
            }),
            2 * 8);
}

TEST(XelArray, HasNoRoomAfterClear) {
  TestEnv env;
  XelArray<long> array(env, 0);
  array.add(1);
  EXPECT_EQ(array.getImpl()->getCapacity(), XelArrayI::PageSize);
  array.clear();
  EXPECT_EQ(array.getImpl()->getCapacity(), 0);
  array.add(2);
  EXPECT_EQ(array.getImpl()->getCapacity(), XelArrayI::PageSize);
  array.end();
}
