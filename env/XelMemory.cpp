#include "env/XelMemory.h"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

constexpr long SmallSteps = 4;  // classes of the first 4 alignments, and between two powers of two
constexpr long SmallestPower = SmallSteps * XelBlockAlignment;
constexpr long FirstChunkSize = 4096;
constexpr long LargestChunkSize = 64L * 1024;

// How often a number can be halved before it is 1; for 1 and more.
long getHalvings(long number) noexcept {
#if defined(__GNUC__)
  return std::numeric_limits<long>::digits - __builtin_clzl(static_cast<unsigned long>(number));
#else
  long halvings = 0;
  while (number >> (halvings + 1) != 0) ++halvings;
  return halvings;
#endif
}

// Memory for a block; null when there is none.
//
// Of a large block the system is asked to map as much as it can by pages of 2 MiB: they come in 512 times less often
// than small ones, and what goes over the block at random finds their addresses sooner. Whether it does makes no
// difference but in time.
void* takeFromSystem(std::size_t size) noexcept {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr std::size_t LargePage = std::size_t{2} << 20;
  if (size >= LargePage) {
    void* memory = nullptr;
    if (posix_memalign(&memory, LargePage, size) != 0) return nullptr;
    madvise(memory, size / LargePage * LargePage, MADV_HUGEPAGE);  // not the rest: a block takes no more than its size
    return memory;
  }
#endif
  return std::malloc(size);
}

}  // namespace

void* XelFixedSizeAllocatorI::allocate(XelMemory* memory) {
  if (freeBlocks == nullptr) return allocateBlock(memory);
  FreeBlock* block = freeBlocks;
  freeBlocks = block->next;
  return block;
}

void* XelFixedSizeAllocatorI::allocateBlock(XelMemory* memory) const { return memory->carve(blockSize); }

void XelFixedSizeAllocatorI::deallocate(void* block) noexcept { freeBlocks = new (block) FreeBlock{freeBlocks}; }

XelAllocationList::~XelAllocationList() {
  while (first != nullptr) {
    Header* next = first->next;
    std::free(first);
    first = next;
  }
}

void* XelAllocationList::alloc(long size) {
  if (size > std::numeric_limits<long>::max() - static_cast<long>(sizeof(Header))) throw std::bad_alloc();
  void* memory = takeFromSystem(sizeof(Header) + static_cast<std::size_t>(size));
  if (memory == nullptr) throw std::bad_alloc();
  auto* header = new (memory) Header{first, nullptr};
  if (first != nullptr) first->previous = header;
  first = header;
  return header + 1;
}

void XelAllocationList::release(void* block) noexcept {
  Header* header = static_cast<Header*>(block) - 1;
  if (header->next != nullptr) header->next->previous = header->previous;
  if (header->previous != nullptr) {
    header->previous->next = header->next;
  } else {
    first = header->next;
  }
  const int error = errno;
  std::free(header);
  errno = error;
}

XelMemory::XelMemory() noexcept : chunkSize(FirstChunkSize) {
  for (long index = 0; index < FixedSizeClasses; ++index) {
    allocators[index] = XelFixedSizeAllocatorI(getBlockSize(index));
  }
}

long XelMemory::getIndex(long size) noexcept {
  if (size <= SmallestPower) return (size - 1) / XelBlockAlignment;
  const long doublings = getHalvings((size - 1) / SmallestPower);
  const long power = SmallestPower << doublings;  // below size, which is at most twice that
  return (1 + doublings) * SmallSteps + ((size - power - 1) / XelBlockAlignment >> doublings);
}

long XelMemory::getBlockSize(long index) noexcept {
  if (index < SmallSteps) return (index + 1) * XelBlockAlignment;
  const long power = SmallestPower << ((index - SmallSteps) / SmallSteps);
  return power + ((index - SmallSteps) % SmallSteps + 1) * (power / SmallSteps);
}

void* XelMemory::allocate(long size) {
  // A block of half the address space cannot exist, and its class could not be computed.
  if (size > std::numeric_limits<long>::max() / 2) throw std::bad_alloc();
  const long index = getIndex(size);
  const long blockSize = getBlockSize(index);
  void* block = nullptr;
  if (isFixedSize(index)) {
    block = allocators[index].allocate(this);
  } else {
    block = list.alloc(blockSize);
    bytesAllocated += blockSize;
  }
  bytesInUse += blockSize;
  return block;
}

void XelMemory::free(void* block, long size) noexcept {
  const long index = getIndex(size);
  const long blockSize = getBlockSize(index);
  bytesInUse -= blockSize;
  if (isFixedSize(index)) {
    allocators[index].deallocate(block);
  } else {
    bytesAllocated -= blockSize;
    list.release(block);
  }
}

void* XelMemory::carve(long size) {
  if (chunkEnd - chunk < size) {
    const long newSize = chunkSize < size ? size : chunkSize;
    chunk = static_cast<char*>(list.alloc(newSize));
    chunkEnd = chunk + newSize;
    bytesAllocated += newSize;
    if (chunkSize < LargestChunkSize) chunkSize *= 2;
  }
  void* block = chunk;
  chunk += size;
  return block;
}
