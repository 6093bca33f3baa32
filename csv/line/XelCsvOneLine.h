// Reading one line of a file, for a lookup that knows where it begins.
#pragma once

#include "csv/errors/XelCsvOpen.h"
#include "csv/line/XelCsvText.h"

// Bytes of a short line at most. Most lines are short.
constexpr long XelShortLine = 512;

// Reads the line at the file's position into a block of XelLineSize bytes, as XelCsvLines would, mostly with one short
// read. Answers the line, its line feed included; an empty one at the end of the file, and when a read error cut the line.
//
// A short line lies near the end of the block, so that a padded formatter can write it to the block's beginning: padding
// is behind it. Another one begins where the block does, to be formatted there.
XelCsvSpan XelReadOneLine(XelCsvFile& file, char* block) noexcept;
