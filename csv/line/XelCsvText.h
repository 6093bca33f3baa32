// Functions on the text of a line alone: formatting, trimming, first field, emptiness.
#pragma once

#include "csv/line/XelCsvFormat.h"

// A stretch of text that is not its own.
struct XelCsvSpan {
  const char* begin;
  const char* end;

  long getLength() const noexcept { return end - begin; }
};

// What formatting a line gives; of a size that functions answer in registers, for each line waits for the one before.
struct XelFormattedLine {
  int length;        // bytes written, the last terminator included
  int fields;        // number of fields, at least 1
  const char* stop;  // the byte of the raw line that ended it, or the raw line's end
};

// Formats the raw line [from, end) into to: fields, each zero-terminated, back to back. Separators outside quotes end a
// field, quotes switch the quoted state and vanish, the decimal character becomes '.', the line ends at its first line
// feed, carriage return or zero byte, or at end. A space that is a separator and follows a separator outside quotes
// vanishes.
//
// to may be from itself, and must have room for the bytes up to the line's end and a terminator. When fields is not
// null it gets the start of each field, as many as there are bytes and one more at most.
XelFormattedLine XelFormatLine(const char* from, const char* end, char* to, const XelCsvFormat& format,
                               char** fields = nullptr) noexcept;

// Bytes that a padded formatter may read behind the raw line and write behind the formatted one.
constexpr long XelTextPadding = 128;

// Starts of fields that it may write behind those of the line.
constexpr long XelFieldsPadding = 4;

// A function that does the same for memory with padding: behind the raw line, behind its bytes and a terminator in to,
// and behind as many starts of fields as there are bytes and one more. What is read there does not matter, what is there
// afterwards is not said. to must not be from itself; fields must not be null.
using XelPaddedFormatter = XelFormattedLine(const char* from, const char* end, char* to, const XelCsvFormat& format,
                                            char** fields) noexcept;

// The fastest such function for lines of a format under the level of vectors in use.
XelPaddedFormatter* XelGetPaddedFormatter(const XelCsvFormat& format) noexcept;

// Whether formatting a text would give the same text as one field again.
bool XelIsSettledText(const char* text, const XelCsvFormat& format) noexcept;

// The text without the spaces (code 32 only) at either end.
XelCsvSpan XelTrimmed(const char* begin, const char* end) noexcept;

// Bytes before the text's terminator, limit at most.
long XelTextLength(const char* text, long limit) noexcept;

// Removes the spaces at either end of a zero-terminated text in place.
void XelTrim(char* text) noexcept;

// The raw line's first field: up to the first separator, line feed, carriage return or zero byte. Quotes do not count.
XelCsvSpan XelFirstField(const char* begin, const char* end, const XelCsvFormat& format) noexcept;

// Whether the line [begin, end) holds only spaces and tabs before its line feed, carriage return, zero byte or end.
bool XelIsEmptyLine(const char* begin, const char* end) noexcept;
