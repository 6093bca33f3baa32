// How the lines of a file are written: a class for each of the 256 bytes.
#pragma once

#include <cstddef>

// Bytes of a line at most, its terminator included: lines of 9999 bytes are read at once, longer ones in pieces.
constexpr long XelLineSize = 10000;

// What a byte means inside a line.
enum class XelByteClass : unsigned char { Text, Separator, SpaceSeparator, Quote, Decimal, LineEnd };

// The same for loops that compare many bytes at a time with each of a few.
struct XelCsvMarks {
  static constexpr std::size_t MostSeparators = 8;

  std::size_t separators;          // how many; 0 when there are too many, or none
  char separator[MostSeparators];  // the last one again where there are fewer
  char quote;                      // a line end where no byte is a quote
  char decimal;                    // a line end where no byte is to become '.'
  bool replacesDecimal;            // whether the decimal character is one that formatting replaces
  bool dropsSpaces;                // whether a space is among the separators
};

// The bytes of a line by class. A terminator, a line feed and a carriage return end a line whatever the settings say; a
// separator goes before the quote, the quote before the decimal character.
class XelCsvFormat {
 public:
  XelCsvFormat(const char* separators, char decimal, char quote) noexcept;

  XelByteClass getClass(char byte) const noexcept { return classes[static_cast<unsigned char>(byte)]; }

  // Whether the byte separates fields outside quotes. A line end does not.
  bool isSeparator(char byte) const noexcept {
    const XelByteClass found = getClass(byte);
    return found == XelByteClass::Separator || found == XelByteClass::SpaceSeparator;
  }

  const XelCsvMarks& getMarks() const noexcept { return marks; }

 private:
  void setMarks(const char* separators, char decimal, char quote) noexcept;

  XelCsvMarks marks{};
  XelByteClass classes[256];
};
