// The order of the virtual operations of public classes. Programs that are linked with another build of the library count
// on it: who derives from such a class, and who calls through it. Exceptions have the same test of their own.
#include <gtest/gtest.h>

#include "tests/support/VirtualSlot.h"
#include "xelcsv/XelCsvIteratorI.h"
#include "xelcsv/XelEnv.h"

#if defined(__x86_64__)

namespace {

// Slots 0 and 1 are the destructor's: one that destroys, and one that gives the memory back as well.

TEST(Allocator, HasTheVirtualOperationsDestructorAllocateFree) {
  EXPECT_EQ(getSlot(&XelAllocator::allocate), 2);
  EXPECT_EQ(getSlot(&XelAllocator::free), 3);
}

template <class Iterator>
class WalkImplementation : public testing::Test {};

using WalkImplementations =
    testing::Types<XelNonCachedCsvLineIteratorI, XelCachedCsvLineIteratorI, XelCsvTableIteratorI>;
TYPED_TEST_SUITE(WalkImplementation, WalkImplementations);

TYPED_TEST(WalkImplementation, HasTheVirtualOperationsDestructorInitIteratorIncrement) {
  EXPECT_EQ(getSlot(&TypeParam::initIterator), 2);
  EXPECT_EQ(getSlot(&TypeParam::operator++), 3);
}

}  // namespace

#endif
