// What the text of a field is as a number.
#pragma once

#include <string>

#include "csv/line/XelCsvText.h"

enum class XelNumberKind {
  Empty,         // nothing but spaces
  Integer,       // that fits in 32 bits
  LargeInteger,  // that does not
  Float,         // any other number, infinity included
  TrailingText,  // a number and more
  Text           // no number
};

// The kind of a formatted field, without the spaces around it; a terminator, perhaps behind spaces, must follow. The
// same in every locale.
XelNumberKind XelKindOfNumber(const XelCsvSpan& text) noexcept;

// Whether the bytes, quotes removed, are a number that is written with another decimal character than the given one:
// with a comma where that is a point, else with a point. Thousands may be parted by it, or by it and the given one.
bool XelIsOtherDecimal(const XelCsvSpan& bytes, char decimal, char quote);

// The number that a text begins with, 0 when it begins with none, as short as it can be written; the same in every locale.
std::string XelShowNumber(const XelCsvSpan& text);
