// The loop of XelCsvFormatVectors.h, written once for every width of vector. Each width includes it where the compiler
// is told to use that width's instructions, after the headers that it needs; nobody else includes it.
//
// A line is taken in windows of 64 bytes, and of each window there is a mask for every kind of byte that matters, bit
// i for byte i. With the separator ',' and the quote '"':
//
//   bytes       K 1 , " a , b " , 7 \n      what is behind the line end counts for nothing
//   separators  . . 1 . . 1 . . 1 . .
//   quotes      . . . 1 . . . 1 . . .
//   ends        . . . . . . . . . . 1
//   quoted      . . . 1 1 1 1 . . . .       each bit the parity of the quotes up to it
//
// Separators that are not quoted begin a field at the byte behind them. In a window without quotes nothing moves: its
// bytes are stored at once, a zero byte blended in where a separator is and a '.' where a decimal character is. In a
// window with quotes the runs between them are stored one close behind the other, each run whole vectors of which only
// the beginning stays, for the next run is stored over the rest.
#pragma once

#include <cstddef>
#include <cstdint>

#include "csv/line/XelCsvFormatVectors.h"

// The part that every width does in the same way: Window has the vectors, Replaces is whether there is a decimal
// character to become '.'.
template <class Window, bool Replaces>
class XelWindowFormatter {
 public:
  XelWindowFormatter(const Window& loaded, char* to, char** starts) noexcept
      : window(loaded), begin(to), out(to), fields(starts) {
    *fields++ = to;
  }

  XelFormattedLine format(const char* from, const char* end) noexcept {
    char** const first = fields - 1;
    for (const char* in = from;; in += Width) {
      window.load(in);
      std::uint64_t ends = window.getEnds();
      if (end - in < Width) ends |= std::uint64_t{1} << (end - in);
      const std::uint64_t inside = ~ends & (ends - 1);
      const std::uint64_t quotes = window.getQuotes() & inside;
      const std::uint64_t separators = window.getSeparators() & inside;
      const long taken = ends == 0 ? Width : Window::getLowest(ends);
      if ((quotes | inQuotes) == 0) {
        window.template store<Replaces>(out);
        fields = Window::addStarts(fields, out + 1, separators);
        out += taken;
      } else {
        addQuoted(in, taken, quotes, separators);
      }
      if (ends != 0) {
        *out++ = '\0';
        return {static_cast<int>(out - begin), static_cast<int>(fields - first), in + taken};
      }
    }
  }

 private:
  static constexpr long Width = 64;

  // A window with quotes, or in them.
  void addQuoted(const char* in, long taken, std::uint64_t quotes, std::uint64_t separators) noexcept {
    const std::uint64_t quoted = getParities(quotes) ^ inQuotes;
    inQuotes = std::uint64_t{0} - (quoted >> (Width - 1));
    char* const from = out;
    long run = 0;
    for (std::uint64_t left = quotes; left != 0; left &= left - 1) {
      const long quote = Window::getLowest(left);
      window.template copy<Replaces>(in + run, out, quote - run);
      out += quote - run;
      run = quote + 1;
    }
    window.template copy<Replaces>(in + run, out, taken - run);
    out += taken - run;
    for (std::uint64_t left = separators & ~quoted; left != 0; left &= left - 1) {
      const std::uint64_t before = (left & (std::uint64_t{0} - left)) - 1;
      char* const at = from + Window::getLowest(left) - Window::getCount(quotes & before);
      *at = '\0';
      *fields++ = at + 1;
    }
  }

  // Bit i is the parity of the bits 0 to i.
  static std::uint64_t getParities(std::uint64_t bits) noexcept {
    bits ^= bits << 1;
    bits ^= bits << 2;
    bits ^= bits << 4;
    bits ^= bits << 8;
    bits ^= bits << 16;
    return bits ^ (bits << 32);
  }

  Window window;
  char* const begin;
  char* out;
  char** fields;
  std::uint64_t inQuotes = 0;  // all bits when the window before ended in quotes
};

// NOLINTBEGIN(readability-non-const-parameter): the parameters are those of every formatter
template <class Window, bool Replaces>
static XelFormattedLine XelFormatByWindows(const char* from, const char* end, char* to, const XelCsvFormat& format,
                                           char** fields) noexcept {
  return XelWindowFormatter<Window, Replaces>(Window(format.getMarks()), to, fields).format(from, end);
}
// NOLINTEND(readability-non-const-parameter)

// Of four forms the one that does no more than a format needs.
template <template <std::size_t> class Window>
static XelPaddedFormatter* XelGetWindowFormatter(const XelCsvMarks& marks) noexcept {
  constexpr std::size_t Most = XelCsvMarks::MostSeparators;
  if (marks.separators == 1) {
    return marks.replacesDecimal ? XelFormatByWindows<Window<1>, true> : XelFormatByWindows<Window<1>, false>;
  }
  return marks.replacesDecimal ? XelFormatByWindows<Window<Most>, true> : XelFormatByWindows<Window<Most>, false>;
}
