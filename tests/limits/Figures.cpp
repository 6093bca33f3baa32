#include "tests/limits/Figures.h"

#include <sys/resource.h>

#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

// The tests of this program read files of gigabytes and must not need their size in memory.
constexpr rlim_t AddressSpace = rlim_t{3} << 30;

class BoundedMemory : public testing::Environment {
 public:
  void SetUp() override {
    const rlimit bound{AddressSpace, AddressSpace};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &bound), 0);
  }
};

const testing::Environment* const Bounded = testing::AddGlobalTestEnvironment(new BoundedMemory);

}  // namespace

void* CountingAllocator::allocate(long size) {
  void* block = std::malloc(static_cast<std::size_t>(size));
  if (block == nullptr) return nullptr;
  bytes += size;
  ++blocks;
  if (bytes > peak) peak = bytes;
  return block;
}

void CountingAllocator::free(void* pointer, long size) {
  bytes -= size;
  --blocks;
  std::free(pointer);
}

CountedEnv::~CountedEnv() {
  env.end();
  EXPECT_EQ(allocator.getBytes(), 0);
  EXPECT_EQ(allocator.getBlocks(), 0);
}

void report(const std::string& what, double value, const char* unit) {
  const bool isWhole = value == std::floor(value);
  std::ostringstream text;
  text << std::fixed << std::setprecision(isWhole ? 0 : 2) << value << ' ' << unit;
  std::cout << "figure: " << what << ": " << text.str() << std::endl;
  testing::Test::RecordProperty(what, text.str());
}
