#include "fuzz/support/CheckedEnv.h"

#include <cstdlib>
#include <cstring>

#include "fuzz/support/Check.h"
#include "fuzz/support/DataFile.h"

namespace fuzz {

namespace {

constexpr int UnwrittenByte = 0xA5;

}  // namespace

CheckedAllocator::~CheckedAllocator() {
  for (const auto& block : sizes) std::free(block.first);
}

void* CheckedAllocator::allocate(long size) {
  check(size > 0, "an allocation of " + std::to_string(size) + " bytes reached the user's allocator");
  if (countdown == 0) {
    ++failures;
    if (!failAlways) countdown = -1;
    return nullptr;
  }
  if (countdown > 0) --countdown;
  void* block = std::malloc(static_cast<std::size_t>(size));
  if (block == nullptr) return nullptr;
  std::memset(block, UnwrittenByte, static_cast<std::size_t>(size));
  sizes[block] = size;
  return block;
}

void CheckedAllocator::free(void* pointer, long size) {
  const auto block = sizes.find(pointer);
  check(block != sizes.end(), "a block came back that is not out, with size " + std::to_string(size));
  checkEqual(size, block->second, "size of a block that came back");
  sizes.erase(block);
  std::free(pointer);
}

void CheckedAllocator::failAfter(long newCountdown, bool always) {
  countdown = newCountdown;
  failAlways = always;
  failures = 0;
}

CheckedEnv::CheckedEnv() : openFiles(countOpenFiles()), env(&allocator) {}

CheckedEnv::~CheckedEnv() {
  env.end();
  checkEqual(allocator.getBlocksOut(), 0L, "blocks that were never given back");
  checkEqual(countOpenFiles(), openFiles, "open files at the end");
}

}  // namespace fuzz
