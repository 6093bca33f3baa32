// Index of a table's lines: in the order of the file, and by key.
#pragma once

#include <cstdint>

#include "csv/table/XelCsvKeyList.h"

// A list of keyed lines, and an open-addressing hash table over it. A slot holds bits of the key's hash, and the line's
// place in the list plus one; 0 is a free slot:
//
//   63          28 27           0
//   | hash bits   | place + 1   |
//
// The more bits the places have, the fewer are left to tell keys apart without reading them; so they get more only when
// the list has grown beyond what they can tell.
//
// A key is looked for from its home slot on, up to the first free one. The home is in proportion to the hash bits, so
// that slots are nearly in the order of their hash bits, and growing is one pass from the old slots to the new ones
// which looks at no key. Only where all hash bits agree the keys are compared.
//
// A table of millions of lines has most of its slots far away in memory. Therefore a line that is added is listed at
// once, but comes to its slot, which is fetched meanwhile, only when some more lines were added. One thread at a time.
class XelCsvIndex {
 public:
  // Bits of a place at first. They do for 2 GiB of keys.
  static constexpr int FirstPlaceBits = 28;

  // An empty index, whose list takes no more than so many chunks, and whose places have so many bits at first, 1 to
  // XelCsvKeyList::PlaceBits. Throws std::bad_alloc.
  explicit XelCsvIndex(XelEnv environment, long chunksAtMost = XelCsvKeyList::MostChunks,
                       int placeBits = FirstPlaceBits)
      : env(environment), lines(environment, chunksAtMost), placeMask((Slot{1} << placeBits) - 1) {}
  XelCsvIndex(const XelCsvIndex&) = delete;
  XelCsvIndex& operator=(const XelCsvIndex&) = delete;

  // Says between which offsets the lines that will be added begin, so that room is made for all of them at once.
  void expect(long firstOffset, long lastOffset) noexcept;

  // Adds a line to the end of the list. False when a line of an equal key was found before it or before one of the last
  // Delay lines: then that one is the last of the list, without a slot, and those added after it are gone.
  // Throws std::bad_alloc, the line is not added then; settle() must still be called.
  bool add(const XelCsvSpan& key, const OffsetAndLineNumber& start);

  // Gives their slots to the lines added last; only then find() finds them. False as for add().
  // Throws std::bad_alloc; then the lines without a slot are gone.
  bool settle();

  // Adds a line to the end of the list that find() finds only if no line before has an equal key; never when start is
  // null. Only when every line has its slot. Throws std::bad_alloc.
  void list(const XelCsvSpan& key, const OffsetAndLineNumber* start);

  // Where the line of this key begins; null when there is none. It stays until the index is cleared or goes.
  OffsetAndLineNumber* find(const char* key) const noexcept;

  // Number of lines of the list.
  long getSize() const noexcept { return lines.getSize(); }

  // The line number in file order, 0 <= number < getSize().
  const XelCsvKeyedLine& getLine(long number) const noexcept { return *lines.get(number); }

  // Whether find() finds each line of the list by its key.
  bool isComplete() const noexcept { return complete; }

  // Gives slots back that lines were expected to need but did not. Throws std::bad_alloc; the index is as before then.
  void trim();

  // Gives everything back.
  void clear() noexcept;

  // Exchanges everything with another index, the environments too.
  void swap(XelCsvIndex& other) noexcept;

  // Number of slots, for tests.
  long getSlotCount() const noexcept { return slots.getCount(); }

  // Lines that may be listed without a slot.
  static constexpr long Delay = 16;

 private:
  using Slot = std::uint64_t;
  using Place = XelCsvKeyList::Place;

  // A line that is listed but has no slot.
  struct Pending {
    std::uint64_t hash;
    Place place;
  };

  // Bits of a hash that every slot holds, however many its place has.
  static constexpr int HashBits = 64 - XelCsvKeyList::PlaceBits;

  // The home of a hash, or of what a slot holds of it.
  long getHome(std::uint64_t hash) const noexcept {
    const std::uint64_t held = hash >> XelCsvKeyList::PlaceBits;
    return static_cast<long>((held * static_cast<std::uint64_t>(slots.getCount())) >> HashBits);
  }

  Place getPlace(Slot slot) const noexcept { return (slot & placeMask) - 1; }
  bool hasHash(Slot slot, std::uint64_t hash) const noexcept { return ((slot ^ hash) & ~placeMask) == 0; }

  Pending& getPending(long number) noexcept { return pending[static_cast<unsigned long>(number) % Delay]; }
  bool hasEqualKey(Place first, Place second) const noexcept {
    return std::strcmp(lines.at(first)->getKey(), lines.at(second)->getKey()) == 0;
  }

  bool insertOldest();
  bool insert(const Pending& line);
  void makeRoom();
  void widenPlaces(Place place) noexcept;
  void moveTo(long slotCount);
  long getExpected() const noexcept;
  void truncate(long size) noexcept;

  XelEnv env;
  XelCsvKeyList lines;
  Slot placeMask;  // the bits of a slot that are its place
  XelEnvBlock<Slot> slots;
  long used = 0;                // slots that are not free
  long mostUsed = 0;            // with so many there must be more slots
  long settled = 0;             // lines of the list that are not pending
  Pending pending[Delay] = {};  // number i at i % Delay
  long firstOffset = 0;
  long lastOffset = 0;
  long latestOffset = 0;  // of the line added last
  bool complete = true;
};
