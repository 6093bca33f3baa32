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
//
// Where a space is a separator, one that follows a separator vanishes as quotes do:
//
//   bytes       K 1 _ _ 7 , _ 4 \n          with the separators ',' and '_', which stands for the space
//   separators  . . 1 1 . 1 1 . .
//   dropped     . . . 1 . . 1 . .           spaces with a bit of the separators one place before
#pragma once

#include <cstddef>
#include <cstdint>

#include "csv/line/XelCsvFormatVectors.h"

// What every width does in the same way: Window has the vectors, Replaces is whether there is a decimal character to
// become '.', DropsSpaces whether a space is a separator.
template <class Window, bool Replaces, bool DropsSpaces>
class XelWindowFormatter {
 public:
  // Lines without quotes that end in their first window. The others go on in functions of their own, so that these do
  // not carry what they need.
  static XelFormattedLine format(const char* from, const char* end, char* to, const XelCsvFormat& format,
                                 char** fields) noexcept {
    if (DropsSpaces) return formatPacked(from, end, to, format, fields);  // hardly a line has no space to drop
    *fields = to;
    Window window(format.getMarks());
    window.load(from);
    const std::uint64_t ends = findEnds(window, from, end);
    const std::uint64_t inside = getBelowLowest(ends);
    if ((window.getQuotes() & inside) != 0) return formatPacked(from, end, to, format, fields);
    char** const starts = addPlain(window, window.getSeparators() & inside, to, fields + 1);
    if (ends == 0) return formatFurther(from, end, to, format, fields, starts);
    const long taken = Window::getLowest(ends);
    return finish(from + taken, to + taken, to, starts - fields);
  }

 private:
  static constexpr long Width = 64;

  // Lines without quotes from the second window on. One with a quote begins again.
  [[gnu::noinline]] static XelFormattedLine formatFurther(const char* from, const char* end, char* to,
                                                          const XelCsvFormat& format, char** fields,
                                                          char** starts) noexcept {
    Window window(format.getMarks());
    char* out = to;
    for (const char* in = from + Width;; in += Width) {
      out += Width;
      window.load(in);
      const std::uint64_t ends = findEnds(window, in, end);
      const std::uint64_t inside = getBelowLowest(ends);
      if ((window.getQuotes() & inside) != 0) return formatPacked(from, end, to, format, fields);
      starts = addPlain(window, window.getSeparators() & inside, out, starts);
      if (ends != 0) return finish(in + Window::getLowest(ends), out + Window::getLowest(ends), to, starts - fields);
    }
  }

  // Lines of all kinds.
  [[gnu::noinline]] static XelFormattedLine formatPacked(const char* from, const char* end, char* to,
                                                         const XelCsvFormat& format, char** fields) noexcept {
    Window window(format.getMarks());
    *fields = to;
    char* out = to;
    char** starts = fields + 1;
    std::uint64_t inQuotes = 0;        // all bits when the window before ended in quotes
    std::uint64_t afterSeparator = 0;  // the lowest bit when it ended with a separator
    for (const char* in = from;; in += Width) {
      window.load(in);
      const std::uint64_t ends = findEnds(window, in, end);
      const std::uint64_t inside = getBelowLowest(ends);
      const std::uint64_t quotes = window.getQuotes() & inside;
      const long taken = ends == 0 ? Width : Window::getLowest(ends);
      std::uint64_t quoted = 0;
      if ((quotes | inQuotes) != 0) {
        quoted = getParities(quotes) ^ inQuotes;
        inQuotes = std::uint64_t{0} - (quoted >> (Width - 1));
      }
      std::uint64_t separators = window.getSeparators() & inside & ~quoted;
      std::uint64_t removed = quotes;
      if (DropsSpaces) {
        const std::uint64_t dropped = separators & window.getSpaces() & (separators << 1 | afterSeparator);
        afterSeparator = separators >> (Width - 1);
        separators &= ~dropped;
        removed |= dropped;
      }
      if ((removed | quoted) == 0) {
        starts = addPlain(window, separators, out, starts);
        out += taken;
      } else {
        char* const next = addRuns(window, in, taken, removed, out);
        starts = addStarts(separators, removed, out, starts);
        out = next;
      }
      if (ends != 0) return finish(in + taken, out, to, starts - fields);
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

  // Writes a window without quotes, and answers the place behind the starts of its fields.
  static char** addPlain(const Window& window, std::uint64_t separators, char* out, char** starts) noexcept {
    window.template store<Replaces>(out);
    return Window::addStarts(starts, out + 1, separators);
  }

  // Writes the runs between the bytes of a window that are removed, and answers the place behind.
  static char* addRuns(const Window& window, const char* in, long taken, std::uint64_t removed, char* out) noexcept {
    long run = 0;
    for (; removed != 0; removed &= removed - 1) {
      const long end = Window::getLowest(removed);
      window.template copy<Replaces>(in + run, out, end - run);
      out += end - run;
      run = end + 1;
    }
    window.template copy<Replaces>(in + run, out, taken - run);
    return out + (taken - run);
  }

  // Ends the fields at separators among the runs that are written from out on, and answers the place behind the starts.
  static char** addStarts(std::uint64_t separators, std::uint64_t removed, char* out, char** starts) noexcept {
    for (; separators != 0; separators &= separators - 1) {
      const long removedBefore = Window::getCount(removed & getBelowLowest(separators));
      char* const at = out + Window::getLowest(separators) - removedBefore;
      *at = '\0';
      *starts++ = at + 1;
    }
    return starts;
  }

  // The line's last terminator, at out, and what there is to say of it.
  static XelFormattedLine finish(const char* stop, char* out, const char* to, long count) noexcept {
    *out = '\0';
    return {static_cast<int>(out + 1 - to), static_cast<int>(count), stop};
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

// Of the forms with and without a decimal character to replace and spaces to drop, the one that does no more than a format
// needs.
template <class Window>
static XelPaddedFormatter* XelGetWindowFormatterOf(const XelCsvMarks& marks) noexcept {
  if (marks.dropsSpaces) {
    return marks.replacesDecimal ? XelWindowFormatter<Window, true, true>::format
                                 : XelWindowFormatter<Window, false, true>::format;
  }
  return marks.replacesDecimal ? XelWindowFormatter<Window, true, false>::format
                               : XelWindowFormatter<Window, false, false>::format;
}

// The same of the forms for one separator and for more.
template <template <std::size_t> class Window>
static XelPaddedFormatter* XelGetWindowFormatter(const XelCsvMarks& marks) noexcept {
  constexpr std::size_t Few = 3;
  if (marks.separators == 1) return XelGetWindowFormatterOf<Window<1>>(marks);
  if (marks.separators <= Few) return XelGetWindowFormatterOf<Window<Few>>(marks);
  return XelGetWindowFormatterOf<Window<XelCsvMarks::MostSeparators>>(marks);
}
