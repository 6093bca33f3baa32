// Whether bytes are UTF-8.
#pragma once

#include "csv/line/XelCsvText.h"

// Reads text piece by piece; a character may go on in the next piece.
class XelCsvUtf8 {
 public:
  // Where the first character of a piece begins that is none of UTF-8, the piece's begin when it began before; null when
  // all are. What comes after it is not looked at, and the next piece begins a character.
  const char* findWrong(const XelCsvSpan& piece) noexcept;

  // Whether the pieces so far end inside a character.
  bool isInCharacter() const noexcept { return needed > 0; }

 private:
  bool begin(unsigned char byte) noexcept;

  int needed = 0;           // bytes that the character still needs
  unsigned char least = 0;  // what the next one may be
  unsigned char most = 0;
};
