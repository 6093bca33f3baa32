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

// What every width does in the same way: Window has the vectors, Replaces is whether there is a decimal character to
// become '.'.
template <class Window, bool Replaces>
class XelWindowFormatter {
 public:
  // Lines without quotes. One with a quote begins again in a function of its own, so that the others do not carry what
  // it needs.
  static XelFormattedLine format(const char* from, const char* end, char* to, const XelCsvFormat& format,
                                 char** fields) noexcept {
    Window window(format.getMarks());
    Written written{to, fields + 1};
    *fields = to;
    for (const char* in = from;; in += Width) {
      window.load(in);
      const std::uint64_t ends = findEnds(window, in, end);
      const std::uint64_t inside = getBelowLowest(ends);
      if ((window.getQuotes() & inside) != 0) return formatQuoted(from, end, to, format, fields);
      addPlain(window, window.getSeparators() & inside, written);
      if (ends != 0)
        return finish(in + Window::getLowest(ends), to, fields,
                      {written.out + Window::getLowest(ends), written.starts});
      written.out += Width;
    }
  }

 private:
  static constexpr long Width = 64;

  // How far the line is written.
  struct Written {
    char* out;
    char** starts;
  };

  // Lines of all kinds.
  [[gnu::noinline]] static XelFormattedLine formatQuoted(const char* from, const char* end, char* to,
                                                         const XelCsvFormat& format, char** fields) noexcept {
    Window window(format.getMarks());
    Written written{to, fields + 1};
    *fields = to;
    std::uint64_t inQuotes = 0;  // all bits when the window before ended in quotes
    for (const char* in = from;; in += Width) {
      window.load(in);
      const std::uint64_t ends = findEnds(window, in, end);
      const std::uint64_t inside = getBelowLowest(ends);
      const std::uint64_t quotes = window.getQuotes() & inside;
      const std::uint64_t separators = window.getSeparators() & inside;
      const long taken = ends == 0 ? Width : Window::getLowest(ends);
      if ((quotes | inQuotes) == 0) {
        addPlain(window, separators, written);
        written.out += taken;
      } else {
        const std::uint64_t quoted = getParities(quotes) ^ inQuotes;
        inQuotes = std::uint64_t{0} - (quoted >> (Width - 1));
        char* const next = addRuns(window, in, taken, quotes, written.out);
        written.starts = addStarts(separators & ~quoted, quotes, written);
        written.out = next;
      }
      if (ends != 0) return finish(in + taken, to, fields, written);
    }
  }

  // Zero bytes, line feeds, carriage returns, and the end of the bytes.
  static std::uint64_t findEnds(const Window& window, const char* in, const char* end) noexcept {
    const std::uint64_t ends = window.getEnds();
    if (end - in >= Width) return ends;
    return ends | (std::uint64_t{1} << (end - in));
  }

  // All bits below the lowest of these.
  static std::uint64_t getBelowLowest(std::uint64_t bits) noexcept { return ~bits & (bits - 1); }

  static void addPlain(const Window& window, std::uint64_t separators, Written& written) noexcept {
    window.template store<Replaces>(written.out);
    written.starts = Window::addStarts(written.starts, written.out + 1, separators);
  }

  // Writes the runs between the quotes of a window, and answers the place behind.
  static char* addRuns(const Window& window, const char* in, long taken, std::uint64_t quotes, char* out) noexcept {
    long run = 0;
    for (; quotes != 0; quotes &= quotes - 1) {
      const long quote = Window::getLowest(quotes);
      window.template copy<Replaces>(in + run, out, quote - run);
      out += quote - run;
      run = quote + 1;
    }
    window.template copy<Replaces>(in + run, out, taken - run);
    return out + (taken - run);
  }

  // Ends the fields at separators among the runs, and answers the place behind the starts.
  static char** addStarts(std::uint64_t separators, std::uint64_t quotes, Written written) noexcept {
    for (; separators != 0; separators &= separators - 1) {
      const long quotesBefore = Window::getCount(quotes & getBelowLowest(separators));
      char* const at = written.out + Window::getLowest(separators) - quotesBefore;
      *at = '\0';
      *written.starts++ = at + 1;
    }
    return written.starts;
  }

  static XelFormattedLine finish(const char* stop, char* to, char** fields, const Written& written) noexcept {
    *written.out = '\0';
    return {static_cast<int>(written.out + 1 - to), static_cast<int>(written.starts - fields), stop};
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
};

// Of four forms the one that does no more than a format needs.
template <template <std::size_t> class Window>
static XelPaddedFormatter* XelGetWindowFormatter(const XelCsvMarks& marks) noexcept {
  constexpr std::size_t Most = XelCsvMarks::MostSeparators;
  if (marks.separators == 1) {
    return marks.replacesDecimal ? XelWindowFormatter<Window<1>, true>::format
                                 : XelWindowFormatter<Window<1>, false>::format;
  }
  return marks.replacesDecimal ? XelWindowFormatter<Window<Most>, true>::format
                               : XelWindowFormatter<Window<Most>, false>::format;
}
