// Reader of a table that keeps nothing of its data lines in memory.
#pragma once

#include "csv/table/XelCsvTableReaderI.h"
#include "xelcsv/XelCsvIteratorI.h"

class XelCsvScan;

// Each lookup opens the file, reads the table's lines from the first one on until it has what it looks for, and closes
// the file. Its cost grows with the bytes before the line.
class XelNonCachedCsvTableReaderI : public XelCsvTableReaderI {
 public:
  using NonCachedCsvLineIteratorI = XelNonCachedCsvLineIteratorI;

  explicit XelNonCachedCsvTableReaderI(XelEnv environment) : XelCsvTableReaderI(environment) {}
  XelNonCachedCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName, const OffsetAndLineNumber* start)
      : XelCsvTableReaderI(fileReader, tableName, start) {}

  // Throws XelLineNotFoundException for a negative number, or one past the end as far as the end is looked at.
  //
  // Kept: the end is looked at after a line was counted. The number of items itself yields the line that follows the
  // table; where the file ends, any number past the last line yields that line again, formatted again.
  XelCsvLineI* getLineByNumber(long number) override;

  // The first line with this key. Throws XelLineNotFoundException, XelCsvReaderException when a line before it, of
  // whatever table, has fewer fields than there are key columns, XelFieldNotFoundException when one lacks a key field.
  XelCsvLineI* getLineByKey(const char* key) override;

  long getNumberOfItems() override;

  // Where a table of the file begins, not a line.
  OffsetAndLineNumber* getOffsetAndLineNumber(const char* name) const override;

  void clearTable() override;
  void copy(XelCsvTableReaderI* other) override;

 private:
  long countDataLines(XelCsvLines& lines, XelCsvScan& scan) const;
};
