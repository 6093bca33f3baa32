// Paged array of elements of one size, the storage behind XelArray.
#pragma once

#include "env/XelEnvObjectI.h"
#include "env/XelMemory.h"

// Element i lives in page (i >> PageShift) at slot (i & PageMask); pages are allocated one by one and never move.
class XelArrayI : public XelEnvResident {
 public:
  static constexpr long PageShift = 8;
  static constexpr long PageSize = 1L << PageShift;
  static constexpr long PageMask = PageSize - 1;

  // An array of size elements, all zero bytes. The allocator must outlive it. Throws std::bad_alloc.
  XelArrayI(XelGenAlloc* allocator, long size, long elementWidth);
  virtual ~XelArrayI();
  XelArrayI(const XelArrayI&) = delete;
  XelArrayI& operator=(const XelArrayI&) = delete;

  long getSize() const noexcept { return size; }
  long getCapacity() const noexcept { return capacity; }

  // Whether the page that holds element index exists.
  bool hasPage(long index) const noexcept { return (index >> PageShift) < pageCount; }

  void* getElement(long index) const noexcept { return pages[index >> PageShift] + (index & PageMask) * elementWidth; }

  // Makes room for element index. A throw leaves the array as it was. Throws std::bad_alloc.
  void grow(long index);

  // index + 1 elements at least must have room.
  void setSize(long newSize) noexcept { size = newSize; }

  // No element and no page is left; the array stays usable.
  void clear() noexcept;

 private:
  XelGenAlloc* allocator;
  long size = 0;
  long capacity = 0;
  long elementWidth;
  char** pages = nullptr;
  long pageCount = 0;
  long pageRoom = 0;  // pointers that the page table holds
};
