// Checks of the lines of data of a table as a whole: how many fields they have, and whether there are any.
#pragma once

#include "check/XelCsvCheckContext.h"
#include "check/XelCsvCheckedTable.h"
#include "check/XelCsvFields.h"

class XelCsvContentChecks {
 public:
  // The context must outlive it.
  explicit XelCsvContentChecks(const XelCsvCheckContext& checked) : context(checked) {}

  // Looks at the next line of data. Answers whether it has as many fields as the table has columns.
  bool check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);

  // Looks at a line that is one of data for the library alone. Its key must be there all the same.
  void checkUnintended(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);

  // The table has no more lines.
  void finish(const XelCsvCheckedTable& table);

  // The file has no table at all.
  void reportNoTable();

 private:
  void reportRagged(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long count);
  static bool hasKey(const XelCsvCheckedTable& table, long count);
  std::string describeMissingKey(const XelCsvCheckedTable& table, long count) const;
  void checkDirectives(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long count);

  const XelCsvCheckContext& context;
};
