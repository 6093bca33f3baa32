// A line of a data file while it is checked, and places in it.
#pragma once

#include <string>

#include "csv/line/XelCsvText.h"

// Where a line is. People see one line where the library cuts a long one into several.
struct XelCsvLineMark {
  long offset = 0;   // of its first byte in the file
  long number = -1;  // counted by the library, from 0
  long line = 1;     // counted by people, from 1
  long before = 0;   // bytes of the line of people that stand before it
};

// A line as the library reads it.
struct XelCsvCheckedLine : XelCsvLineMark {
  XelCsvSpan text{nullptr, nullptr};  // its bytes, line end included

  const XelCsvLineMark& getMark() const noexcept { return *this; }
  bool isRestOfLine() const noexcept { return before > 0; }
  bool hasLineFeed() const noexcept { return text.begin != text.end && text.end[-1] == '\n'; }

  // Its bytes without a line feed, and without the carriage returns before one.
  XelCsvSpan getContent() const noexcept;
};

// Where a finding is; kept when the line is gone. By default the whole file.
struct XelCsvPlace {
  long lineNumber = -1;
  long line = 0;
  long column = 0;
  long offset = 0;
  long length = 0;
  std::string excerpt;
  long excerptOffset = 0;
};

// The place of bytes of a line.
XelCsvPlace XelPlaceOf(const XelCsvCheckedLine& line, const XelCsvSpan& bytes);
