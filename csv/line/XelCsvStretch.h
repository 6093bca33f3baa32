// The lines of a file that lie whole in memory, a stretch of them at a time.
#pragma once

#include <cstring>

#include "csv/line/XelCsvLineStarts.h"
#include "csv/line/XelCsvLines.h"

// Looks ahead over lines that need nothing but a glance: find() tells how many whole lines follow in memory, goOn() goes on
// behind some of them, and whatever is not that simple is read through the file itself, line by line, in between. Lines
// are found a stretch at a time and kept until the file has gone beyond them.
class XelCsvStretch {
 public:
  explicit XelCsvStretch(XelCsvLines& read) noexcept : file(read) {}
  XelCsvStretch(const XelCsvStretch&) = delete;
  XelCsvStretch& operator=(const XelCsvStretch&) = delete;

  // The number of whole lines that follow in memory, 0 when there is none: the next line has to be read.
  long find() noexcept;

  // A byte of the line number index of those that follow, and of what stands behind the line.
  const char* getLine(long index) const noexcept { return bytes + starts[first + index]; }

  // Where it begins in the file.
  long getOffset(long index) const noexcept { return offset + starts[first + index]; }

  // How many of the lines that follow begin at an offset of at most last.
  long countUpTo(long last) const noexcept;

  // How many of the first lines of those that follow have so many bytes to look at, those behind the line included.
  long countReadable(long lines, long reach) const noexcept {
    while (lines > 0 && end - getLine(lines - 1) < reach) --lines;
    return lines;
  }

  // The file goes on behind this number of lines.
  void goOn(long lines) noexcept;

 private:
  XelCsvLines& file;
  const char* bytes = nullptr;  // of the stretch
  const char* end = nullptr;    // of the bytes in memory
  long offset = 0;              // of the stretch in the file
  long first = 0;               // the line that the file stands at
  long count = 0;               // lines in the stretch
  std::uint16_t starts[XelMostLineStarts];
};
