// Objects of an environment, and the guards of its memory.
#include "env/XelEnvOwned.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "tests/support/TestEnv.h"

namespace {

class Object : public XelEnvObjectI {
 public:
  Object(XelEnv environment, int* counter) : XelEnvObjectI(environment), alive(counter) { ++*alive; }
  ~Object() override { --*alive; }

 private:
  int* alive;
};

class LargeObject : public Object {
 public:
  using Object::Object;
  char content[4000] = {};
};

class ThrowingObject : public Object {
 public:
  ThrowingObject(XelEnv environment, int* counter) : Object(environment, counter) { throw std::runtime_error("no"); }
};

// One that has no members of the base and no virtual operation.
struct Plain : public XelEnvResident {
  explicit Plain(long number) : value(number) {}
  long value;
};

}  // namespace

static_assert(std::has_virtual_destructor_v<XelEnvObjectI>);
static_assert(!std::is_copy_constructible_v<XelEnvObjectI>);
static_assert(!std::is_copy_constructible_v<XelEnvBlock<char>> &&
              std::is_nothrow_move_constructible_v<XelEnvBlock<char>>);
static_assert(!std::is_copy_constructible_v<XelEnvOwner<Object>>);

TEST(XelEnvObjectI, IsDestroyedThroughItsBaseAndGivesItsOwnSizeBack) {
  TestEnv env;
  int alive = 0;
  XelEnvObjectI* small = new (env.get()) Object(env, &alive);
  XelEnvObjectI* large = new (env.get()) LargeObject(env, &alive);
  EXPECT_EQ(alive, 2);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 3) << "the environment and the two objects";
  EXPECT_GE(env.getAllocator().getBytesOut(), static_cast<long>(sizeof(Object) + sizeof(LargeObject)));
  delete large;  // TestAllocator compares the size
  delete small;
  EXPECT_EQ(alive, 0);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
}

TEST(XelEnvObjectI, KeepsItsEnvironment) {
  TestEnv env;
  int alive = 0;
  const XelEnvOwner<Object> object = XelNew<Object>(env, env, &alive);
  EXPECT_EQ(object->getEnv().getImpl(), env.get().getImpl());
}

TEST(XelEnvObjectI, LivesAsALocalVariableToo) {
  TestEnv env;
  int alive = 0;
  {
    const Object object(env, &alive);
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), 1) << "the object took nothing from the environment";
  }
  EXPECT_EQ(alive, 0);
}

TEST(XelEnvObjectI, AThrowingConstructorGivesTheMemoryBack) {
  TestEnv env;
  int alive = 0;
  EXPECT_THROW(XelNew<ThrowingObject>(env, env, &alive), std::runtime_error);
  EXPECT_EQ(alive, 0);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
}

TEST(XelEnvObjectI, IsAlignedForAnyObject) {
  TestEnv env;
  int alive = 0;
  const XelEnvOwner<Object> object = XelNew<Object>(env, env, &alive);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object.get()) % alignof(std::max_align_t), 0U);
}

TEST(XelEnvObjectI, ExhaustionThrowsBeforeAnythingIsBuilt) {
  TestEnv env;
  int alive = 0;
  env.getAllocator().failAfter(0);
  EXPECT_THROW(XelNew<Object>(env, env, &alive), std::bad_alloc);
  EXPECT_EQ(alive, 0);
}

TEST(XelEnvResident, NeedsNoMembers) {
  TestEnv env;
  auto* plain = new (env.get()) Plain(7);
  EXPECT_EQ(plain->value, 7);
  delete plain;
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
}

TEST(XelEnvOwner, PassesItsObjectOnAndDestroysItOnce) {
  TestEnv env;
  int alive = 0;
  {
    XelEnvOwner<Object> first = XelNew<LargeObject>(env, env, &alive);
    XelEnvOwner<Object> second(std::move(first));
    EXPECT_EQ(first.get(), nullptr);
    EXPECT_EQ(alive, 1);
    XelEnvOwner<Object> third = XelNew<Object>(env, env, &alive);
    third = std::move(second);
    EXPECT_EQ((*third).getEnv().getImpl(), env.get().getImpl());
    XelEnvObjectI* released = third.release();
    EXPECT_EQ(third.get(), nullptr);
    delete released;
  }
  EXPECT_EQ(alive, 0);
}

TEST(XelEnvBlock, GivesItsElementsBackWithTheirSize) {
  TestEnv env;
  {
    const XelEnvBlock<long> block(env, 1000);
    EXPECT_EQ(block.getCount(), 1000);
    for (long index = 0; index < 1000; ++index) block[index] = index;
    EXPECT_EQ(block.get()[999], 999);
  }
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
}

TEST(XelEnvBlock, OfNoElementsIsNoBlock) {
  TestEnv env;
  const XelEnvBlock<char> none;
  const XelEnvBlock<char> empty(env, 0);
  EXPECT_EQ(none.get(), nullptr);
  EXPECT_EQ(empty.get(), nullptr);
  EXPECT_EQ(none.getCount(), 0);
  EXPECT_EQ(empty.getCount(), 0);
}

TEST(XelEnvBlock, PassesItsElementsOn) {
  TestEnv env;
  XelEnvBlock<char> first(env, 10);
  char* data = first.get();
  XelEnvBlock<char> second(std::move(first));
  EXPECT_EQ(first.get(), nullptr);
  EXPECT_EQ(second.get(), data);
  XelEnvBlock<char> third(env, 20);
  third = std::move(second);
  EXPECT_EQ(third.get(), data);
  EXPECT_EQ(third.getCount(), 10);
  EXPECT_EQ(third.release(), data);
  EXPECT_EQ(third.get(), nullptr);
  const XelEnvBlock<char> adopted(env, data, 10);
  EXPECT_EQ(adopted.getCount(), 10);
}

TEST(XelCopyString, TakesTheLengthAndOneByteMore) {
  TestEnv env;
  const long before = env.getAllocator().getBytesOut();
  const XelEnvBlock<char> whole = XelCopyString(env, "Paris");
  EXPECT_STREQ(whole.get(), "Paris");
  EXPECT_EQ(env.getAllocator().getBytesOut(), before + 6);
  const XelEnvBlock<char> part = XelCopyString(env, "Paris", 2);
  EXPECT_STREQ(part.get(), "Pa");
  EXPECT_EQ(env.getAllocator().getBytesOut(), before + 9);
  const XelEnvBlock<char> empty = XelCopyString(env, "");
  EXPECT_STREQ(empty.get(), "");
  EXPECT_EQ(env.getAllocator().getBytesOut(), before + 10);
}

TEST(XelFreeString, GivesBackTheLengthAndOneByteMore) {
  TestEnv env;
  XelFreeString(env, XelCopyString(env, "Paris").release());
  XelFreeString(env, XelCopyString(env, "").release());
  XelFreeString(env, nullptr);
  EXPECT_EQ(env.getAllocator().getBlocksOut(), 1);
}

TEST(XelEnvResident, DeletingNullIsHarmless) {
  XelEnvResident::operator delete (nullptr, std::size_t{8});
  const XelEnvOwner<Plain> nothing;
  EXPECT_EQ(nothing.get(), nullptr);
}
