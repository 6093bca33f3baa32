// Checks of the quotes of a line.
#pragma once

#include "check/XelCsvCheckContext.h"

class XelCsvQuoteChecks {
 public:
  // The context must outlive it.
  explicit XelCsvQuoteChecks(const XelCsvCheckContext& checked) : context(checked) {}

  // Looks at a line that is no comment.
  void check(const XelCsvCheckedLine& line) const;

 private:
  void report(XelCsvCode code, const XelCsvCheckedLine& line, const XelCsvSpan& quotes, const char* message) const;

  const XelCsvCheckContext& context;
};
