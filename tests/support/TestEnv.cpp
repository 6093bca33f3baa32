#include "tests/support/TestEnv.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr int UnwrittenByte = 0xA5;
constexpr int ReturnedByte = 0x5A;

// Says at the end of the program how many failures were injected.
class InjectionReport : public ::testing::Environment {
 public:
  void TearDown() override {
    const InjectedFailures& injected = getInjectedFailures();
    ::testing::Test::RecordProperty("injectedAllocationFailures", std::to_string(injected.allocations));
    ::testing::Test::RecordProperty("injectedFileFailures", std::to_string(injected.fileCalls));
    std::printf("Injected failures: %ld of allocations, %ld of file calls\n", injected.allocations, injected.fileCalls);
  }
};

const ::testing::Environment* const Report = ::testing::AddGlobalTestEnvironment(new InjectionReport());

}  // namespace

InjectedFailures& getInjectedFailures() {
  static InjectedFailures injected;
  return injected;
}

TestAllocator::~TestAllocator() {
  for (const auto& block : sizes) std::free(block.first);
}

void* TestAllocator::allocate(long size) {
  EXPECT_GT(size, 0) << "an allocation of no bytes reached the user's allocator";
  ++allocations;
  if (countdown == 0) {
    ++failures;
    ++getInjectedFailures().allocations;
    if (!failAlways) countdown = -1;
    return nullptr;
  }
  if (countdown > 0) --countdown;
  void* block = std::malloc(static_cast<std::size_t>(size));
  if (block == nullptr) return nullptr;
  std::memset(block, UnwrittenByte, static_cast<std::size_t>(size));
  sizes[block] = size;
  bytes += size;
  return block;
}

void TestAllocator::free(void* pointer, long size) {
  const auto block = sizes.find(pointer);
  if (block == sizes.end()) {
    ADD_FAILURE() << "a block came back that is not out, with size " << size;
    return;
  }
  EXPECT_EQ(block->second, size) << "a block came back with another size";
  bytes -= block->second;
  sizes.erase(block);
  std::memset(pointer, ReturnedByte, static_cast<std::size_t>(size));
  std::free(pointer);
}

void TestAllocator::failAfter(long newCountdown, bool always) {
  countdown = newCountdown;
  failAlways = always;
  failures = 0;
}

TestEnv::TestEnv() : openFiles(countOpenFiles()), env(&allocator) {}

TestEnv::~TestEnv() {
  env.end();
  EXPECT_EQ(allocator.getBlocksOut(), 0) << allocator.getBytesOut() << " bytes were never given back";
  EXPECT_EQ(countOpenFiles(), openFiles) << "a file stayed open";
}
