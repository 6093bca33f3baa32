#include "check/XelCsvUtf8.h"

namespace {

constexpr unsigned char FirstOfTwo = 0xC2;  // what would begin below that is written in one byte
constexpr unsigned char FirstOfThree = 0xE0;
constexpr unsigned char FirstOfFour = 0xF0;
constexpr unsigned char LastOfFour = 0xF4;  // characters end at U+10FFFF
constexpr unsigned char LeastNext = 0x80;
constexpr unsigned char MostNext = 0xBF;

}  // namespace

const char* XelCsvUtf8::findWrong(const XelCsvSpan& piece) noexcept {
  const char* character = piece.begin;
  for (const char* at = piece.begin; at != piece.end; ++at) {
    const auto byte = static_cast<unsigned char>(*at);
    if (needed == 0) {
      character = at;
      if (byte >= LeastNext && !begin(byte)) return at;
    } else if (byte < least || byte > most) {
      needed = 0;
      return character;
    } else {
      --needed;
      least = LeastNext;
      most = MostNext;
    }
  }
  return nullptr;
}

// Some first bytes bound the second: no longer form than needed, no halves of surrogate pairs, nothing beyond U+10FFFF.
bool XelCsvUtf8::begin(unsigned char byte) noexcept {
  if (byte < FirstOfTwo || byte > LastOfFour) return false;
  least = LeastNext;
  most = MostNext;
  if (byte < FirstOfThree) {
    needed = 1;
  } else if (byte < FirstOfFour) {
    needed = 2;
    if (byte == FirstOfThree) least = 0xA0;
    if (byte == 0xED) most = 0x9F;
  } else {
    needed = 3;
    if (byte == FirstOfFour) least = 0x90;
    if (byte == LastOfFour) most = 0x8F;
  }
  return true;
}
