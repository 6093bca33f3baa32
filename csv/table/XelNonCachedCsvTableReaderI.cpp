#include "csv/table/XelNonCachedCsvTableReaderI.h"

#include <cstring>

#include "csv/table/XelCsvScan.h"

// Tests of what is kept here: GetLineByNumberScanning.OnePastTheEndYieldsTheNextTablesLine,
// GetLineByNumberScanning.PastTheEndOfTheFileYieldsTheLastLineFormattedAgain.
XelCsvLineI* XelNonCachedCsvTableReaderI::getLineByNumber(long number) {
  XelCsvScan scan(this, "r");
  // Kept: the kind of file is not looked at, only whether the table has a name (test:
  // GetLineByNumberScanning.AsksForANameEvenInAOneTableFileWhenItsTableHasOne).
  const bool isNamed = reader->isTableSplittingAllowed() && nameOfTable != nullptr;
  long count = -1;
  bool isFormatted = false;
  bool isSettled = false;  // no further try would change line, offset or text
  const auto format = [&] {
    if (!isFormatted) scan.format();
    isFormatted = true;
  };
  while (number >= 0 && scan.isInside() && !isSettled) {
    scan.next();  // whether a line was found does not matter
    if (scan.hasRead()) {
      isFormatted = false;
    } else {
      format();
      isSettled = !scan.formatAgain();
    }
    bool isMatch = true;
    if (isNamed) {
      format();
      isMatch = scan.isOwn();
    }
    if (isMatch) ++count;
    // A line that would be counted again for ever is the one wanted, whatever the number.
    const bool isWanted = count >= number || (isSettled && isMatch && scan.isInside());
    if (isWanted) {
      format();
      return scan.makeLine(isNamed, false);
    }
  }
  // The table's number of fields is that of the last line looked at, also then.
  if (count >= 0) format();
  XelCsvErrors::noLineScanned(getSite(), number);
}

XelCsvLineI* XelNonCachedCsvTableReaderI::getLineByKey(const char* key) {
  if (key == nullptr) XelCsvErrors::noKeyScanned(getSite(), key);
  XelEnvBlock<char> owned(env, const_cast<char*>(key), static_cast<long>(std::strlen(key)) + 1);
  XelCsvScan scan(this, "rb");
  while (scan.next() && scan.isInside()) {
    scan.format();
    // Kept: also a line of another table between the pieces of this one is asked for its number of fields.
    scan.checkNumberOfKeys();
    if (isSplit() && !scan.isOwn()) continue;
    if (scan.hasKey(key)) {
      XelCsvLineI* line = scan.makeLine(isSplit(), true);
      owned.release();
      return line;
    }
  }
  XelCsvErrors::noKeyScanned(getSite(), key);
}

long XelNonCachedCsvTableReaderI::getNumberOfItems() {
  XelCsvScan scan(this, "rb");
  long count = 0;
  while (scan.next() && scan.isInside()) {
    if (isSplit()) {
      scan.format();
      if (!scan.isOwn()) continue;
    }
    ++count;
  }
  return count;
}

OffsetAndLineNumber* XelNonCachedCsvTableReaderI::getOffsetAndLineNumber(const char* name) const {
  return reader == nullptr ? nullptr : reader->getOffsetAndLineNumber(name);
}

void XelNonCachedCsvTableReaderI::clearTable() { partialClear(); }

void XelNonCachedCsvTableReaderI::copy(XelCsvTableReaderI* other) {
  if (other == this) return;
  XelNonCachedCsvTableReaderI fresh(env);
  fresh.partialCopy(other);
  openError = fresh.openError;
  if (openError != 0) return;
  clearTable();
  swapTable(fresh);
}
