// The keys of a table's lines, as far as needed to find two that are equal.
#pragma once

#include <algorithm>
#include <cstdint>

#include "env/XelEnvOwned.h"

// A hash of where lines are, 16 bytes a place and at most three quarters full: what has the same hash is told, and who
// asked compares the keys themselves.
class XelCsvKeySet {
 public:
  explicit XelCsvKeySet(XelEnv environment) noexcept : env(environment) {}

  // A line with a key, by the byte where it begins.
  struct Line {
    long offset;
    long line;  // as people count, up to 4294967295
  };

  // The first line with a key of this hash for which isEqual(Line) is true, null when there is none; then the line is
  // added. Throws std::bad_alloc.
  template <class Equal>
  const Line* addOrFind(std::uint64_t hash, const Line& line, Equal isEqual) {
    if (4 * (count + 1) > 3 * slots.getCount()) grow();
    const std::uint32_t kept = fold(hash);
    long index = placeOf(kept);
    for (; slots[index].offset >= 0; index = next(index)) {
      if (slots[index].hash != kept) continue;
      found = {slots[index].offset, static_cast<long>(slots[index].line)};
      if (isEqual(found)) return &found;
    }
    slots[index] = {line.offset, kept, static_cast<std::uint32_t>(std::min(line.line, MostLines))};
    ++count;
    return nullptr;
  }

 private:
  static constexpr long MostLines = 0xFFFFFFFF;

  struct Slot {
    long offset;  // -1: the place is free
    std::uint32_t hash;
    std::uint32_t line;
  };

  static std::uint32_t fold(std::uint64_t hash) noexcept { return static_cast<std::uint32_t>(hash ^ (hash >> 32U)); }
  long placeOf(std::uint32_t hash) const noexcept { return static_cast<long>(hash) & (slots.getCount() - 1); }
  long next(long index) const noexcept { return (index + 1) & (slots.getCount() - 1); }
  void grow();

  XelEnv env;
  XelEnvBlock<Slot> slots;  // a power of two of them
  long count = 0;
  Line found{};
};
