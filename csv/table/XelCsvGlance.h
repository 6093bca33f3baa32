// What a glance at a raw line tells of its key.
#pragma once

#include <cstdint>
#include <cstring>

#include "csv/line/XelCsvFormat.h"
#include "csv/line/XelCsvVectors.h"

// Tells lines of which a field is not a given text from lines that have to be looked at: at the first byte
// that differs it knows most of them.
//
//   wanted  Town4         Town4         Town4         Town4         Town4
//   raw     Town17,...    Town4b,...    Town,...      Town4,...     To"w"n4,...
//           ....^         .....^        ....^         .....^        ..^
//           other         other         other         unsure        unsure
//
// A byte of text there, in no quotes so far, makes another field, and so does a field that ends before the wanted text.
// Quotes, spaces, which may vanish, and the decimal character leave it unsure; so does a field that ends with the wanted
// text.
//
// The wanted text may also be several values joined by '-', each looked for in a field of its own, one after the other.
class XelCsvGlance {
 public:
  XelCsvGlance(const XelCsvFormat& lineFormat, const char* wanted) noexcept;

  // Whether a glance can tell anything: the wanted text is neither empty nor long, and has no byte that means something.
  bool isUsable() const noexcept { return length > 0; }

  // How many bytes isOther() looks at.
  long getReach() const noexcept { return Longest + WordSize; }

  // Whether the field that begins here, and has getReach() bytes in front of it, is certainly other than the wanted text
  // from an index on.
  bool isOther(const char* field, long from = 0) const noexcept {
    const long index = findDifference(field, from);
    const auto byte = static_cast<unsigned char>(field[index - from]);
    return index < length ? isOtherBefore[byte] : isOtherBehind[byte];
  }

  // The same for the field of a value that others follow: Other, Unsure, or the index in the wanted text from which the
  // next value is wanted.
  long findNext(const char* field, long from) const noexcept {
    const long index = findDifference(field, from);
    const auto byte = static_cast<unsigned char>(field[index - from]);
    if (!isOtherBefore[byte]) return Unsure;
    const bool isEnded = !isOtherBehind[byte];
    return isEnded && text[index] == '-' ? index + 1 : Other;
  }

  static constexpr long Other = -1;
  static constexpr long Unsure = -2;

 private:
  static constexpr long Longest = 56;
  static constexpr long WordSize = 8;

  // Index in the wanted text of the first byte that differs from it, its length when none does.
  long findDifference(const char* field, long from) const noexcept {
#if XELCSV_HAS_VECTORS  // which also means that the first byte is the lowest of a word
    for (long index = from; index < length; index += WordSize) {
      std::uint64_t left = 0;
      std::uint64_t right = 0;
      std::memcpy(&left, field + (index - from), WordSize);
      std::memcpy(&right, text + index, WordSize);
      if (left == right) continue;
      const long at = index + __builtin_ctzll(left ^ right) / WordSize;
      return at < length ? at : length;
    }
    return length;
#else
    long index = from;
    while (index < length && field[index - from] == text[index]) ++index;
    return index;
#endif
  }

  long length = 0;
  char text[Longest + WordSize] = {};
  bool isOtherBefore[256];  // when the byte differs from one of the wanted text
  bool isOtherBehind[256];  // when it stands behind all of the wanted text
};
