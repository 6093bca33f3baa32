// The environment's own memory manager: size classes for small blocks, a list of larger ones.
#pragma once

#include <cstddef>

// Every block is aligned to this and every size class a multiple of it.
constexpr long XelBlockAlignment = static_cast<long>(alignof(std::max_align_t));

class XelMemory;

// The blocks of one size class: those given back are handed out again first.
class XelFixedSizeAllocatorI {
 public:
  explicit XelFixedSizeAllocatorI(long size = 0) noexcept : blockSize(size) {}

  long getBlockSize() const noexcept { return blockSize; }

  // A block off the list of returned ones, or a new one when there is none. Throws std::bad_alloc.
  void* allocate(XelMemory* memory);

  // Carves a new block out of the manager's memory. Throws std::bad_alloc.
  void* allocateBlock(XelMemory* memory) const;

  // Puts a block on the list of returned ones.
  void deallocate(void* block) noexcept;

 private:
  struct FreeBlock {
    FreeBlock* next;
  };

  long blockSize;
  FreeBlock* freeBlocks = nullptr;
};

// Blocks taken one by one from the system and given back to it, all those still out at the end.
class XelAllocationList {
 public:
  XelAllocationList() = default;
  ~XelAllocationList();
  XelAllocationList(const XelAllocationList&) = delete;
  XelAllocationList& operator=(const XelAllocationList&) = delete;

  // A block of size bytes, aligned for any object. Throws std::bad_alloc.
  void* alloc(long size);

  // Gives a block of alloc() back to the system. Leaves errno alone.
  void release(void* block) noexcept;

 private:
  struct alignas(std::max_align_t) Header {
    Header* next;
    Header* previous;
  };

  Header* first = nullptr;
};

// The manager: maps sizes to classes and keeps the two counters.
class XelMemory {
 public:
  XelMemory() noexcept;
  XelMemory(const XelMemory&) = delete;
  XelMemory& operator=(const XelMemory&) = delete;

  // Size class of size bytes, size > 0: four classes between two powers of two, the first of them one alignment apart.
  static long getIndex(long size) noexcept;

  // Bytes of a block of this class.
  static long getBlockSize(long index) noexcept;

  // Whether blocks of this class come from a fixed-size allocator; the others come from the allocation list.
  static bool isFixedSize(long index) noexcept { return index < FixedSizeClasses; }

  // A block for size bytes, size > 0. Throws std::bad_alloc.
  void* allocate(long size);

  // Takes back a block with the size it was asked with. Leaves errno alone.
  void free(void* block, long size) noexcept;

  // size bytes for a block of a fixed-size class. Throws std::bad_alloc.
  void* carve(long size);

  long getBytesInUse() const noexcept { return bytesInUse; }
  long getBytesAllocated() const noexcept { return bytesAllocated; }

 private:
  // Classes of up to 16 KiB are fixed-size: 4 for the first 64 bytes, then 4 for each of 8 doublings.
  static constexpr long FixedSizeClasses = 4 + 4 * 8;

  XelFixedSizeAllocatorI allocators[FixedSizeClasses];
  XelAllocationList list;
  char* chunk = nullptr;     // where the next block is carved
  char* chunkEnd = nullptr;  // one past the memory to carve from
  long chunkSize;            // bytes of the next chunk taken from the system
  long bytesInUse = 0;
  long bytesAllocated = 0;
};

// The general allocator: creates the storage of environment arrays.
class XelGenAlloc {
 public:
  XelGenAlloc() = default;
  virtual ~XelGenAlloc() = default;
  XelGenAlloc(const XelGenAlloc&) = delete;
  XelGenAlloc& operator=(const XelGenAlloc&) = delete;

  // As XelEnv::allocate and XelEnv::free.
  virtual void* allocate(long size) = 0;
  virtual void free(void* block, long size) noexcept = 0;
};
