// The one pass over a file that is checked.
#pragma once

#include "check/XelCsvByteChecks.h"
#include "check/XelCsvCheckedLine.h"
#include "check/XelCsvFindings.h"
#include "csv/line/XelCsvLines.h"

// Reads the lines as the library does and shows each to the groups of checks.
class XelCsvCheckPass {
 public:
  // Parameters and findings must outlive it.
  XelCsvCheckPass(XelEnv environment, const XelCsvCheckParameters& reading, XelCsvFindings& found);

  // Reads the file to its end, or until the findings are stopped. Throws XelFileNotFoundException, std::bad_alloc.
  void run(const char* fileName, const XelCsvProgress& progress);

 private:
  bool readLine();
  void checkLine();

  XelCsvLines lines;
  XelCsvFindings& findings;
  XelCsvCheckedLine line;
  XelCsvByteChecks bytes;
};
