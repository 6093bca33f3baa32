#include "csv/line/XelCsvHeadings.h"

#include <cstring>
#include <utility>

#include "csv/line/XelCsvLineI.h"
#include "csv/line/XelCsvText.h"

namespace {

constexpr std::size_t WordSize = sizeof(std::uint64_t);
constexpr std::uint64_t Multiplier = 0x9e3779b97f4a7c15;  // odd, its bits spread evenly
constexpr int Half = 32;

// Stirs a word of a heading into its hash. A product carries differences upwards only, so they are brought down again.
std::uint64_t mix(std::uint64_t hash, std::uint64_t word) noexcept {
  const std::uint64_t product = (hash ^ word) * Multiplier;
  return product ^ (product >> Half);
}

// Takes the heading in words of 8 bytes, the last of which may overlap the one before it.
std::uint32_t hashOf(const char* heading, std::size_t length) noexcept {
  std::uint64_t hash = length;
  std::uint64_t word = 0;
  if (length < WordSize) {
    for (std::size_t index = 0; index < length; ++index) {
      word = word << 8U | static_cast<unsigned char>(heading[index]);
    }
  } else {
    for (std::size_t index = 0; index + WordSize < length; index += WordSize) {
      std::memcpy(&word, heading + index, WordSize);
      hash = mix(hash, word);
    }
    std::memcpy(&word, heading + length - WordSize, WordSize);
  }
  return static_cast<std::uint32_t>(mix(hash, word) * Multiplier >> Half);
}

XelCsvSpan getHeading(const XelCsvLineI* line, long field) noexcept {
  const char* const text = line->getFields()[field];
  return XelTrimmed(text, text + std::strlen(text));
}

bool isEqual(const XelCsvSpan& left, const XelCsvSpan& right) noexcept {
  const long length = left.getLength();
  return length == right.getLength() && std::memcmp(left.begin, right.begin, static_cast<std::size_t>(length)) == 0;
}

// All fields are trimmed before the first is compared, so the heading line never stays half trimmed.
void trimAll(const XelCsvLineI* line) noexcept {
  for (long field = 0; field < line->getNumberOfFields(); ++field) line->trimField(field);
}

long findOneByOne(const XelCsvLineI* line, const char* heading) noexcept {
  trimAll(line);
  for (long field = 0; field < line->getNumberOfFields(); ++field) {
    if (std::strcmp(line->getFields()[field], heading) == 0) return field;
  }
  return -1;
}

}  // namespace

void XelCsvHeadings::make(const XelCsvLineI* line) {
  reset();
  if (line == nullptr || line->getNumberOfFields() == 0) return;
  const long count = line->getNumberOfFields();
  long size = 2;
  while (size < 2 * count) size *= 2;  // at most half full, so that a walk over full slots is short and ends
  slots = XelEnvBlock<Slot>(line->getEnv(), size);
  for (long index = 0; index < size; ++index) slots[index] = {0, -1};
  for (long field = 0; field < count; ++field) {
    const XelCsvSpan heading = getHeading(line, field);
    const std::uint32_t hash = hashOf(heading.begin, static_cast<std::size_t>(heading.getLength()));
    const auto isItsPlace = [&](const Slot& slot) {
      // Of equal headings the first counts.
      return slot.position < 0 || (slot.hash == hash && isEqual(getHeading(line, slot.position), heading));
    };
    long index = static_cast<long>(hash) & (size - 1);
    while (!isItsPlace(slots[index])) index = (index + 1) & (size - 1);
    if (slots[index].position < 0) slots[index] = {hash, static_cast<std::int32_t>(field)};
  }
  indexed = line;
  changes = line->getNumberOfChanges();
}

long XelCsvHeadings::find(const XelCsvLineI* line, const char* heading) noexcept {
  if (line == nullptr || heading == nullptr) return -1;
  if (!isOf(line)) return findOneByOne(line, heading);
  if (!isTrimmed) trimAll(line);
  isTrimmed = true;
  const std::uint32_t hash = hashOf(heading, std::strlen(heading));
  const long last = slots.getCount() - 1;
  for (long index = static_cast<long>(hash) & last;; index = (index + 1) & last) {
    const Slot& slot = slots[index];
    if (slot.position < 0) break;
    if (slot.hash == hash && std::strcmp(line->getFields()[slot.position], heading) == 0) return slot.position;
  }
  // What is not in the hash is not there, unless a caller wrote into the fields that the line handed out.
  return findOneByOne(line, heading);
}

void XelCsvHeadings::reset() noexcept {
  indexed = nullptr;
  isTrimmed = false;
  slots = XelEnvBlock<Slot>();
}

void XelCsvHeadings::swap(XelCsvHeadings& other) noexcept {
  std::swap(indexed, other.indexed);
  std::swap(changes, other.changes);
  std::swap(isTrimmed, other.isTrimmed);
  std::swap(slots, other.slots);
}

bool XelCsvHeadings::isOf(const XelCsvLineI* line) const noexcept {
  return indexed == line && changes == line->getNumberOfChanges();
}
