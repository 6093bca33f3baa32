#include "csv/table/XelCsvKeyList.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr long Step = 8;  // the place of every eighth line is noted
constexpr long FirstChunkRoom = 4;
constexpr long FirstChunk = 512;
constexpr long ChunksOfASize = 4;   // until they are doubled, so that the last one is a small part of all
constexpr long SizesOfChunks = 10;  // up to 256 KiB

}  // namespace

XelCsvKeyList::~XelCsvKeyList() {
  clear();
  eighths.end();
}

XelCsvKeyList::Place XelCsvKeyList::add(const XelCsvSpan& key, const OffsetAndLineNumber& start) {
  const long length = key.getLength();
  const long bytes = getLineSize(length);
  if (chunkCount == 0 || chunks[chunkCount - 1].size - chunks[chunkCount - 1].used < bytes) addChunk(bytes);
  Chunk& chunk = chunks[chunkCount - 1];
  const Place place = makePlace({chunkCount - 1, chunk.used});
  if (size % Step == 0 && size > 0) eighths.add(static_cast<long>(place));
  auto* line = new (chunk.begin + chunk.used) XelCsvKeyedLine{start};
  char* text = reinterpret_cast<char*>(line + 1);
  std::memset(chunk.begin + chunk.used + bytes - Unit, 0, Unit);  // the terminator, and what is unused behind it
  if (length > 0) std::memcpy(text, key.begin, static_cast<std::size_t>(length));
  chunk.used += bytes;
  ++size;
  return place;
}

// A chunk that has been taken stays even when the line for which it was taken is not added: it is the next one's.
void XelCsvKeyList::addChunk(long least) {
  if (chunkCount == mostChunks) throw std::bad_alloc();
  if (chunkCount == chunks.getCount()) {
    XelEnvBlock<Chunk> larger(env, std::max(FirstChunkRoom, 2 * chunkCount));
    std::copy_n(chunks.get(), chunkCount, larger.get());
    chunks = std::move(larger);
  }
  const long bytes = std::max(FirstChunk << std::min(chunkCount / ChunksOfASize, SizesOfChunks - 1), least);
  chunks[chunkCount] = {static_cast<char*>(env.allocate(bytes)), bytes, 0};
  ++chunkCount;
}

XelCsvKeyList::Position XelCsvKeyList::find(long number) const noexcept {
  Position position = getPosition(number < Step ? 0 : static_cast<Place>(eighths[number / Step - 1]));
  for (long others = number % Step; others > 0; --others) position = getNext(position);
  return position;
}

XelCsvKeyList::Position XelCsvKeyList::getFirstBehind(long chunk) const noexcept {
  do {
    ++chunk;
  } while (chunks[chunk].used == 0);  // taken for a line that was not added, and too small for the one that was
  return {chunk, 0};
}

void XelCsvKeyList::truncate(long newSize) noexcept {
  lastNumber = -1;
  if (newSize == size) return;
  const Position end = find(newSize);
  const long kept = newSize == 0 ? 0 : end.chunk + 1;
  for (; chunkCount > kept; --chunkCount) XelFree(env, chunks[chunkCount - 1].begin, chunks[chunkCount - 1].size);
  if (kept > 0) chunks[kept - 1].used = end.byte;
  if (newSize == 0) {
    chunks = XelEnvBlock<Chunk>();
    eighths.clear();
  } else {
    eighths.getImpl()->setSize((newSize - 1) / Step);
  }
  size = newSize;
}

void XelCsvKeyList::swap(XelCsvKeyList& other) noexcept {
  std::swap(env, other.env);
  std::swap(chunks, other.chunks);
  std::swap(chunkCount, other.chunkCount);
  std::swap(eighths, other.eighths);
  std::swap(size, other.size);
  std::swap(mostChunks, other.mostChunks);
  std::swap(lastNumber, other.lastNumber);
  std::swap(last, other.last);
}
