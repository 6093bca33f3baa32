// What a glance at a raw line tells of its key.
#pragma once

#include <cstdint>
#include <cstring>

#include "csv/line/XelCsvFormat.h"
#include "csv/line/XelCsvVectors.h"

// Tells lines whose first or second field is not a given text from lines that have to be looked at: at the first byte
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
class XelCsvGlance {
 public:
  XelCsvGlance(const XelCsvFormat& lineFormat, const char* wanted) noexcept;

  // Whether a glance can tell anything: the wanted text is neither empty nor long, and has no byte that means something.
  bool isUsable() const noexcept { return length > 0; }

  // How many bytes isOther() looks at.
  long getReach() const noexcept { return Longest + WordSize; }

  // Whether the field that begins here, and has getReach() bytes in front of it, is certainly another.
  bool isOther(const char* field) const noexcept {
    const long index = findDifference(field);
    const auto byte = static_cast<unsigned char>(field[index]);
    return index < length ? isOtherBefore[byte] : isOtherBehind[byte];
  }

 private:
  static constexpr long Longest = 56;
  static constexpr long WordSize = 8;

  // Index of the first byte that differs from the wanted text, its length when none does.
  long findDifference(const char* field) const noexcept {
#if XELCSV_HAS_VECTORS  // which also means that the first byte is the lowest of a word
    for (long index = 0; index < length; index += WordSize) {
      std::uint64_t left = 0;
      std::uint64_t right = 0;
      std::memcpy(&left, field + index, WordSize);
      std::memcpy(&right, text + index, WordSize);
      if (left == right) continue;
      const long at = index + __builtin_ctzll(left ^ right) / WordSize;
      return at < length ? at : length;
    }
    return length;
#else
    long index = 0;
    while (index < length && field[index] == text[index]) ++index;
    return index;
#endif
  }

  long length = 0;
  char text[Longest + WordSize] = {};
  bool isOtherBefore[256];  // when the byte differs from one of the wanted text
  bool isOtherBehind[256];  // when it stands behind all of the wanted text
};
