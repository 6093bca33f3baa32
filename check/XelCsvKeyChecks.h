// Checks of the keys of a table's lines.
#pragma once

#include "check/XelCsvCheckContext.h"
#include "check/XelCsvCheckedTable.h"
#include "check/XelCsvFields.h"
#include "check/XelCsvLineAgain.h"
#include "csv/line/XelCsvKey.h"

class XelCsvKeyChecks {
 public:
  // Both must outlive it.
  XelCsvKeyChecks(const XelCsvCheckContext& checked, XelCsvLineAgain& lookBack);

  // Looks at the next line of data.
  void check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);

 private:
  void checkDuplicate(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);
  bool isKeyOf(const XelCsvCheckedTable& table, const XelCsvKeySet::Line& former, const XelCsvSpan& key);
  void reportDuplicate(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvKeySet::Line& former,
                       const XelCsvSpan& key);
  void checkDash(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);

  const XelCsvCheckContext& context;
  XelCsvLineAgain& again;
  XelCsvKey composed;
  XelCsvKey formerComposed;
  XelCsvFields formerFields;
};
