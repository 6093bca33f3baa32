// Reading one line of a file, for a lookup that knows where it begins.
#pragma once

#include "csv/errors/XelCsvOpen.h"

// Reads the line at the file's position into a block of XelLineSize bytes, as XelCsvLines would: mostly with one short
// read straight into the block, in which the line can be formatted. Answers the line's length, its line feed included;
// 0 at the end of the file, and when a read error cut the line.
long XelReadOneLine(XelCsvFile& file, char* block) noexcept;
