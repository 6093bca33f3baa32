// Checks of the values of a column: what is an exception among numbers.
#pragma once

#include "check/XelCsvCheckContext.h"
#include "check/XelCsvCheckedTable.h"
#include "check/XelCsvFields.h"
#include "check/XelCsvLineAgain.h"
#include "check/XelCsvNumberKind.h"

// A text is an exception in a column of numbers when at least 4 numbers are there for the first and 10 more for each
// other. Until there are enough it waits as a suspect; a column with too many suspects is one of texts.
class XelCsvColumnChecks {
 public:
  // Both must outlive it.
  XelCsvColumnChecks(const XelCsvCheckContext& checked, XelCsvLineAgain& lookBack);

  // Looks at the next line of data.
  void check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);

  // The table has no more lines.
  void finish(XelCsvCheckedTable& table);

 private:
  void checkValue(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields, long position);
  bool isOtherDecimal(const XelCsvCheckedLine& line, const XelCsvSpan& value, XelNumberKind kind, long position) const;
  void addText(XelCsvCheckedTable& table, XelCsvColumn& column, long position, const XelCsvLineMark& line,
               XelCsvCode code);
  void addLarge(XelCsvCheckedTable& table, XelCsvColumn& column, long position, const XelCsvLineMark& line);
  void tellSuspects(const XelCsvCheckedTable& table, std::vector<XelCsvColumn::Suspect>& suspects, long position);
  XelCsvSpan formatAgain(const XelCsvCheckedLine& line, long position);
  void tell(const XelCsvCheckedTable& table, const XelCsvColumn::Suspect& suspect, long position);
  void finishColumn(const XelCsvCheckedTable& table, XelCsvColumn& column, long position);
  void reportMismatch(const XelCsvCheckedTable& table, const XelCsvColumn& column, long position);

  const XelCsvCheckContext& context;
  XelCsvLineAgain& again;
  XelCsvFields formerFields;
  bool mayHoldPoint = false;  // where the decimal character is another: the line has a point
  bool isWanted = false;
};
