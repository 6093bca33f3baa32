// The one pass over a file that is checked.
#pragma once

#include "check/XelCsvByteChecks.h"
#include "check/XelCsvCheckContext.h"
#include "check/XelCsvColumnChecks.h"
#include "check/XelCsvContentChecks.h"
#include "check/XelCsvFields.h"
#include "check/XelCsvHeadingChecks.h"
#include "check/XelCsvKeyChecks.h"
#include "check/XelCsvLineAgain.h"
#include "check/XelCsvQuoteChecks.h"
#include "check/XelCsvTableChecks.h"
#include "check/XelCsvZones.h"
#include "csv/line/XelCsvLines.h"

// Reads the lines as the library does, finds the table of each, and shows it to the groups of checks.
class XelCsvCheckPass {
 public:
  // The context must outlive it.
  explicit XelCsvCheckPass(const XelCsvCheckContext& checked);

  // Reads the file to its end, or until the findings are stopped. Throws XelFileNotFoundException, std::bad_alloc.
  void run(const XelCsvProgress& progress);

 private:
  bool readLine();
  void checkLine();
  void checkTableLine();
  bool isOwn(const XelCsvCheckedTable& table) const;
  bool hasBlankBeforeComment() const;
  void reportCommentWithBlank();
  void finish();
  void finishTable(XelCsvCheckedTable& table);

  const XelCsvCheckContext& context;
  XelCsvLines lines;
  XelCsvCheckedLine line;
  XelCsvFields fields;
  XelCsvLineAgain again;
  XelCsvByteChecks bytes;
  XelCsvQuoteChecks quotes;
  XelCsvZones zones;
  XelCsvTableChecks tables;
  XelCsvHeadingChecks headings;
  XelCsvContentChecks contents;
  XelCsvKeyChecks keys;
  XelCsvColumnChecks columns;
  XelCsvCheckedTable* tableOfHeading = nullptr;  // the table of the line read last when that is a heading or key line
};
