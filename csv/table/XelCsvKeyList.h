// The keys of a table's lines in the order of the file, with where each line begins.
#pragma once

#include <cstdint>
#include <cstring>

#include "csv/line/XelCsvText.h"
#include "csv/reader/XelCsvReaderI.h"
#include "env/XelArray.h"
#include "env/XelEnvOwned.h"

// What is kept of a line: where it begins, and right behind it the key, zero-terminated.
struct XelCsvKeyedLine {
  OffsetAndLineNumber start;

  const char* getKey() const noexcept { return reinterpret_cast<const char*>(this + 1); }
};

// The lines lie back to back in chunks of memory that never move, so that a key, its offset and its line number come
// from memory together:
//
//   | offset | number | K 0 0 0 0 1 \0 . | offset | number | K 0 0 0 0 2 \0 . | ...
//
// A line takes its key and 17 to 24 bytes, which are its start, the key's terminator and what is unused behind it, and
// 1 byte for the noted place of every eighth line, from which the seven after it are found. One thread at a time, asking
// included.
class XelCsvKeyList {
 public:
  // Where a line lies: the number of its chunk and its place there in units of 8 bytes, PlaceBits wide.
  using Place = std::uint64_t;
  static constexpr int PlaceBits = 34;
  static constexpr long MostChunks = (1L << 19) - 1;  // of 256 KiB, 128 GiB together

  // An empty list. It takes no more than so many chunks, 1 to MostChunks. Throws std::bad_alloc.
  explicit XelCsvKeyList(XelEnv environment, long chunksAtMost = MostChunks)
      : env(environment), eighths(environment, 0), mostChunks(chunksAtMost) {}
  ~XelCsvKeyList();
  XelCsvKeyList(const XelCsvKeyList&) = delete;
  XelCsvKeyList& operator=(const XelCsvKeyList&) = delete;

  // Appends a line. Throws std::bad_alloc, also when the chunks are full; the list is as before then.
  Place add(const XelCsvSpan& key, const OffsetAndLineNumber& start);

  // Number of lines.
  long getSize() const noexcept { return size; }

  // The line at a place that add() answered.
  XelCsvKeyedLine* at(Place place) const noexcept { return lineAt(getPosition(place)); }

  // The line number in file order, 0 <= number < getSize(). Fast when the line before it was asked for last.
  XelCsvKeyedLine* get(long number) const noexcept {
    if (number != lastNumber) {
      last = number == lastNumber + 1 && number > 0 ? getNext(last) : find(number);
      lastNumber = number;
    }
    return lineAt(last);
  }

  // Forgets the lines from number size on, 0 <= newSize <= getSize().
  void truncate(long newSize) noexcept;

  // Gives everything back.
  void clear() noexcept { truncate(0); }

  // Exchanges everything with another list, the environments too.
  void swap(XelCsvKeyList& other) noexcept;

 private:
  struct Chunk {
    char* begin;
    long size;  // bytes
    long used;
  };

  // Where a line lies, as two numbers.
  struct Position {
    long chunk;
    long byte;
  };

  static constexpr int ByteBits = 15;  // of a place within its chunk: only a chunk of one line is larger than 256 KiB
  static constexpr long Unit = 8;

  static Position getPosition(Place place) noexcept {
    return {static_cast<long>(place >> ByteBits), static_cast<long>(place & ((Place{1} << ByteBits) - 1)) * Unit};
  }
  static Place makePlace(const Position& position) noexcept {
    return static_cast<Place>(position.chunk) << ByteBits | static_cast<Place>(position.byte / Unit);
  }
  static long getLineSize(long keyLength) noexcept {
    return (static_cast<long>(sizeof(XelCsvKeyedLine)) + keyLength + 1 + Unit - 1) / Unit * Unit;
  }

  XelCsvKeyedLine* lineAt(const Position& position) const noexcept {
    return reinterpret_cast<XelCsvKeyedLine*>(chunks[position.chunk].begin + position.byte);
  }

  // Bytes of a line that is there: behind its start follow words of 8 bytes, of which the last has the key's terminator.
  static long getLineSize(const XelCsvKeyedLine* line) noexcept {
    constexpr std::uint64_t Ones = 0x0101010101010101U;
    long bytes = static_cast<long>(sizeof(XelCsvKeyedLine));
    for (std::uint64_t word = 0;; bytes += Unit) {
      std::memcpy(&word, reinterpret_cast<const char*>(line) + bytes, sizeof word);
      if (((word - Ones) & ~word & (Ones << 7)) != 0) return bytes + Unit;  // a byte is zero
    }
  }

  void addChunk(long least);
  Position find(long number) const noexcept;
  Position getFirstBehind(long chunk) const noexcept;

  // Only for a line that another follows.
  Position getNext(const Position& position) const noexcept {
    const long end = position.byte + getLineSize(lineAt(position));
    return end < chunks[position.chunk].used ? Position{position.chunk, end} : getFirstBehind(position.chunk);
  }

  XelEnv env;
  XelEnvBlock<Chunk> chunks;
  long chunkCount = 0;
  XelArray<long> eighths;  // places of the lines 8, 16, ...
  long size = 0;
  long mostChunks;
  mutable long lastNumber = -1;  // the line that was asked for last, none at first
  mutable Position last{0, 0};
};
