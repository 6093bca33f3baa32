// A look back at a line that the pass has left behind.
#pragma once

#include "check/XelCsvCheckContext.h"
#include "csv/line/XelCsvLines.h"

// Reads single lines again, so that of a line that may matter later only its place is kept.
class XelCsvLineAgain {
 public:
  // The context must outlive it.
  explicit XelCsvLineAgain(const XelCsvCheckContext& checked) : context(checked), lines(checked.env) {}

  // The line at a mark; it lives until the next look. A line without bytes when the file has changed and it is gone.
  // Throws XelFileNotFoundException, std::bad_alloc.
  XelCsvCheckedLine read(const XelCsvLineMark& mark);

 private:
  const XelCsvCheckContext& context;
  XelCsvLines lines;
  bool isOpen = false;
};
