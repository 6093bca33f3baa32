// The fields of a line: as the library formats them, and where they stand in the file.
#pragma once

#include <vector>

#include "csv/line/XelCsvText.h"
#include "env/XelEnvOwned.h"

// Formats lines, one after the other, with the formatter of the library.
class XelCsvFields {
 public:
  // The format must outlive it.
  XelCsvFields(XelEnv env, const XelCsvFormat& settings);

  // Takes a raw line with padding behind it, as XelCsvLines gives it.
  void format(const XelCsvSpan& raw) noexcept;

  // Of the line formatted last.
  long getCount() const noexcept { return count; }

  // A field as it is formatted; a terminator follows.
  XelCsvSpan getField(long position) const noexcept {
    const char* end = position + 1 == count ? text.get() + length : starts[position + 1];
    return {starts[position], end - 1};
  }

  // The same without the spaces around it.
  XelCsvSpan getTrimmed(long position) const noexcept {
    const XelCsvSpan field = getField(position);
    return XelTrimmed(field.begin, field.end);
  }

 private:
  const XelCsvFormat& settings;
  XelPaddedFormatter* formatter;
  XelEnvBlock<char> text;
  XelEnvBlock<char*> starts;
  long count = 0;
  long length = 0;
};

// The bytes of the raw line that each of its fields is made of, quotes included, separators and line end not.
std::vector<XelCsvSpan> XelSplitRaw(const XelCsvSpan& raw, const XelCsvFormat& format);

// The bytes that a field of the raw line is made of; no bytes at the line's end when there is no such field.
XelCsvSpan XelRawField(const XelCsvSpan& raw, const XelCsvFormat& format, long position);
