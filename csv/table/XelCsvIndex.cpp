#include "csv/table/XelCsvIndex.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "csv/table/XelKeyHash.h"

namespace {

constexpr long FirstSlots = 32;
constexpr long MostGrowth = 16;  // at once, for the first lines may not tell how long the others are

// Slots for a number of lines: 7 of 10 are taken then. With 8 of 10 taken there must be more; with less than 6 of 10
// taken at the end there may be fewer.
constexpr long getSlotsFor(long lines) noexcept { return lines + lines / 7 * 3 + FirstSlots; }
constexpr long getMostUsed(long slots) noexcept { return slots / 10 * 8; }
constexpr bool isWasteful(long lines, long slots) noexcept { return lines < (slots - FirstSlots) / 10 * 6; }

// Asks for memory that will be written soon.
inline void prefetch(const void* address) noexcept {
#if defined(__GNUC__)
  __builtin_prefetch(address, 1);
#else
  static_cast<void>(address);
#endif
}

}  // namespace

void XelCsvIndex::expect(long first, long last) noexcept {
  firstOffset = first;
  lastOffset = last;
}

bool XelCsvIndex::add(const XelCsvSpan& key, const OffsetAndLineNumber& start) {
  if (lines.getSize() - settled == Delay && !insertOldest()) return false;
  const std::uint64_t hash = XelHashKey(key.begin, key.getLength());
  const long number = lines.getSize();
  getPending(number) = {hash, lines.add(key, start)};
  latestOffset = start.offset;
  if (slots.get() != nullptr) prefetch(slots.get() + getHome(hash));
  return true;
}

bool XelCsvIndex::settle() {
  try {
    while (settled < lines.getSize()) {
      if (!insertOldest()) return false;
    }
  } catch (...) {
    truncate(settled);
    throw;
  }
  return true;
}

void XelCsvIndex::list(const XelCsvSpan& key, const OffsetAndLineNumber* start) {
  makeRoom();
  const Place place = lines.add(key, start == nullptr ? OffsetAndLineNumber{0, 0} : *start);
  ++settled;
  if (start == nullptr || !insert({XelHashKey(key.begin, key.getLength()), place})) complete = false;
}

// The line listed first of those without a slot. False when a line before it has its key.
bool XelCsvIndex::insertOldest() {
  makeRoom();
  const bool isNew = insert(getPending(settled));
  ++settled;
  if (isNew) return true;
  truncate(settled);
  complete = false;
  return false;
}

// Only where there is room.
bool XelCsvIndex::insert(const Pending& line) {
  if (line.place >= placeMask) widenPlaces(line.place);
  const long count = slots.getCount();
  long at = getHome(line.hash);
  for (; slots[at] != 0; at = at + 1 == count ? 0 : at + 1) {
    const Slot slot = slots[at];
    if (hasHash(slot, line.hash) && hasEqualKey(getPlace(slot), line.place)) return false;
  }
  slots[at] = (line.hash & ~placeMask) | (line.place + 1);
  ++used;
  return true;
}

OffsetAndLineNumber* XelCsvIndex::find(const char* key) const noexcept {
  const long count = slots.getCount();
  if (count == 0) return nullptr;
  const std::uint64_t hash = XelHashKey(key, static_cast<long>(std::strlen(key)));
  for (long at = getHome(hash); slots[at] != 0; at = at + 1 == count ? 0 : at + 1) {
    const Slot slot = slots[at];
    if (!hasHash(slot, hash)) continue;
    XelCsvKeyedLine* line = lines.at(getPlace(slot));
    if (std::strcmp(line->getKey(), key) == 0) return &line->start;
  }
  return nullptr;
}

void XelCsvIndex::makeRoom() {
  if (used < mostUsed) return;
  const long expected = getExpected();
  moveTo(getSlotsFor(expected > used + used / 8 ? expected : 2 * used));
}

// Takes bits away from the hashes in the slots, so that a place fits into them. No slot moves for that: its home does not
// depend on these bits.
void XelCsvIndex::widenPlaces(Place place) noexcept {
  const Slot former = placeMask;
  while (place >= placeMask) placeMask = 2 * placeMask + 1;
  for (long at = 0; at < slots.getCount(); ++at) slots[at] = (slots[at] & ~placeMask) | (slots[at] & former);
}

// How many lines there will be when the others are as long as those so far; 0 when that cannot be told.
long XelCsvIndex::getExpected() const noexcept {
  const double passed = static_cast<double>(latestOffset) - static_cast<double>(firstOffset);
  const double all = static_cast<double>(lastOffset) - static_cast<double>(firstOffset);
  const double most = static_cast<double>(MostGrowth) * static_cast<double>(used);
  if (passed <= 0 || all <= passed) return 0;
  return static_cast<long>(std::min(all / passed * static_cast<double>(lines.getSize()), most));
}

void XelCsvIndex::moveTo(long slotCount) {
  XelEnvBlock<Slot> former(env, slotCount);
  std::fill_n(former.get(), slotCount, Slot{0});
  std::swap(slots, former);
  mostUsed = getMostUsed(slotCount);
  for (long from = 0; from < former.getCount(); ++from) {
    if (former[from] == 0) continue;
    long at = getHome(former[from]);
    while (slots[at] != 0) at = at + 1 == slotCount ? 0 : at + 1;
    slots[at] = former[from];
  }
}

void XelCsvIndex::trim() {
  if (isWasteful(used, slots.getCount())) moveTo(getSlotsFor(used));
}

void XelCsvIndex::truncate(long size) noexcept {
  lines.truncate(size);
  settled = size;
}

void XelCsvIndex::clear() noexcept {
  truncate(0);
  slots = XelEnvBlock<Slot>();
  used = mostUsed = 0;
  firstOffset = lastOffset = latestOffset = 0;
  complete = true;
}

void XelCsvIndex::swap(XelCsvIndex& other) noexcept {
  std::swap(env, other.env);
  lines.swap(other.lines);
  std::swap(placeMask, other.placeMask);
  std::swap(slots, other.slots);
  std::swap(used, other.used);
  std::swap(mostUsed, other.mostUsed);
  std::swap(settled, other.settled);
  std::swap(pending, other.pending);
  std::swap(firstOffset, other.firstOffset);
  std::swap(lastOffset, other.lastOffset);
  std::swap(latestOffset, other.latestOffset);
  std::swap(complete, other.complete);
}
