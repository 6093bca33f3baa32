#include "env/XelArrayI.h"

#include <cstring>

namespace {

constexpr long PointerWidth = static_cast<long>(sizeof(char*));
constexpr long FirstPageRoom = 4;

}  // namespace

XelArrayI::XelArrayI(XelGenAlloc* genAlloc, long newSize, long width) : allocator(genAlloc), elementWidth(width) {
  if (newSize <= 0) return;
  try {
    grow(newSize);
  } catch (...) {
    clear();
    throw;
  }
  size = newSize;
}

XelArrayI::~XelArrayI() { clear(); }

void XelArrayI::grow(long index) {
  while (!hasPage(index)) {
    if (pageCount == pageRoom) {
      const long newRoom = pageRoom == 0 ? FirstPageRoom : 2 * pageRoom;
      auto** newPages = static_cast<char**>(allocator->allocate(newRoom * PointerWidth));
      if (pageCount > 0) std::memcpy(newPages, pages, static_cast<std::size_t>(pageCount * PointerWidth));
      if (pages != nullptr) allocator->free(pages, pageRoom * PointerWidth);
      pages = newPages;
      pageRoom = newRoom;
    }
    const long bytes = PageSize * elementWidth;
    auto* page = static_cast<char*>(allocator->allocate(bytes));
    std::memset(page, 0, static_cast<std::size_t>(bytes));
    pages[pageCount++] = page;
    capacity += PageSize;
  }
}

void XelArrayI::clear() noexcept {
  for (long page = 0; page < pageCount; ++page) allocator->free(pages[page], PageSize * elementWidth);
  if (pages != nullptr) allocator->free(pages, pageRoom * PointerWidth);
  pages = nullptr;
  pageCount = 0;
  pageRoom = 0;
  capacity = 0;
  size = 0;
}
