// Formatting a line by vectors: the same as XelFormatLine(), 64 bytes at a time.
#pragma once

#include "csv/line/XelCsvText.h"
#include "csv/line/XelCsvVectors.h"

#if XELCSV_HAS_VECTORS

// The functions that do it for lines of a format whose marks have separators, by vectors of 16 and of 32 bytes. The
// latter may be called only on a machine that has such vectors.
XelPaddedFormatter* XelGetFormatterBy16(const XelCsvMarks& marks) noexcept;
XelPaddedFormatter* XelGetFormatterBy32(const XelCsvMarks& marks) noexcept;

#endif
