#include <cstring>

#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelCsvWalk.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "xelcsv/XelCsvIteratorI.h"

// ---- Scanning.

XelNonCachedCsvLineIteratorI::XelNonCachedCsvLineIteratorI(XelNonCachedCsvTableReaderI* walked) : table(walked) {
  XelNonCachedCsvLineIteratorI::initIterator();
}

XelNonCachedCsvLineIteratorI::XelNonCachedCsvLineIteratorI(const XelNonCachedCsvLineIteratorI& other) { copy(other); }

XelNonCachedCsvLineIteratorI& XelNonCachedCsvLineIteratorI::operator=(const XelNonCachedCsvLineIteratorI& other) {
  copy(other);
  return *this;
}

XelNonCachedCsvLineIteratorI::~XelNonCachedCsvLineIteratorI() { clear(); }

void XelNonCachedCsvLineIteratorI::clear() const noexcept {
  delete walk;
  walk = nullptr;
  table = nullptr;
  offset = 0;
}

XelCsvLineI* XelNonCachedCsvLineIteratorI::getLine() const { return walk == nullptr ? nullptr : walk->getLine(); }

// Opens the table's file at an offset; the iterator ends when that fails.
void XelNonCachedCsvLineIteratorI::openAt(long position) {
  try {
    XelEnvOwner<XelCsvWalk> opened = XelNew<XelCsvWalk>(table->getEnv(), table, "rb");
    if (!opened->seek(position)) XelCsvErrors::corruptedTable(table->getSite());
    walk = opened.release();
  } catch (...) {
    clear();
    throw;
  }
}

void XelNonCachedCsvLineIteratorI::initIterator() {
  XelNonCachedCsvTableReaderI* walked = table;
  clear();
  table = walked;
  ok = 0;
  offset = table->getFirstDataOffset();
  lineNumber = table->getFirstDataLineNumber() - 1;
  endOffset = table->getEndOffset();
  openAt(offset);
  try {
    if (!walk->skipCommentAndEmptyLines(lineNumber, offset)) return;
  } catch (...) {
    clear();
    throw;
  }
  // Kept: the first line is not asked for its table's name (test: ScanningIterator.FirstLineIsNotNameTested).
  walk->formatLine(lineNumber);
  ok = offset <= endOffset ? 1 : 0;
}

// One piece of code with the ++ below: this is what each line of a file goes through.
[[gnu::always_inline]] inline bool XelNonCachedCsvLineIteratorI::goToNextLine() {
  // Kept: in a one-table file the walk goes on to the end of the file, and the offset stays that of the first line
  // (tests: ScanningIterator.OfAOneTableFileRunsToTheEndOfTheFile,
  // ScanningIterator.CopyInAOneTableFileStandsOnTheFirstLine).
  const bool isBounded = table->getReader()->isMultiTable();
  long next = walk->getOffset();
  if ((isBounded && next > endOffset) || !walk->goToPlainLine(lineNumber)) {
    if (!walk->skipCommentAndEmptyLines(lineNumber, next) || (isBounded && next > endOffset)) return false;
    walk->formatLine(lineNumber);
  }
  if (!isBounded) return true;
  offset = next;
  return skipOtherTables();
}

XelNonCachedCsvLineIteratorI& XelNonCachedCsvLineIteratorI::operator++() {
  if (ok == 0 || walk == nullptr) {
    ok = 0;
    return *this;
  }
  try {
    ok = goToNextLine() ? 1 : 0;
  } catch (...) {
    clear();
    throw;
  }
  if (ok == 0) clear();
  return *this;
}

// Where tables are split, goes on to a line of this one. False when the table's region ends before.
bool XelNonCachedCsvLineIteratorI::skipOtherTables() {
  if (!table->isSplit()) return true;
  for (;;) {
    const char* name = walk->getLine()->trimField(0);
    if (table->isOwnName({name, name + std::strlen(name)})) return true;
    walk->skipCommentAndEmptyLines(lineNumber, offset);
    if (offset > endOffset) return false;
    if (walk->hasRead()) {
      walk->formatLine(lineNumber);
    } else if (!walk->formatAgain(lineNumber)) {
      // A last line without line feed is all that is left; once formatting changes it no more it stays another table's.
      return false;
    }
  }
}

void XelNonCachedCsvLineIteratorI::copy(const XelNonCachedCsvLineIteratorI& other) {
  if (this == &other) return;
  clear();
  table = other.table;
  lineNumber = other.lineNumber;
  endOffset = other.endOffset;
  offset = other.offset;
  ok = table == nullptr ? 0 : other.ok;
  other.clear();
  if (table == nullptr) return;
  openAt(offset);
  try {
    walk->readLine(lineNumber);
  } catch (...) {
    clear();
    throw;
  }
}

// ---- Through the index.

XelCachedCsvLineIteratorI::XelCachedCsvLineIteratorI(XelCachedCsvTableReaderI* walked) : table(walked) {
  XelCachedCsvLineIteratorI::initIterator();
}

XelCachedCsvLineIteratorI::XelCachedCsvLineIteratorI(const XelCachedCsvLineIteratorI& other) { copy(other); }

XelCachedCsvLineIteratorI& XelCachedCsvLineIteratorI::operator=(const XelCachedCsvLineIteratorI& other) {
  copy(other);
  return *this;
}

XelCachedCsvLineIteratorI::~XelCachedCsvLineIteratorI() { clear(); }

void XelCachedCsvLineIteratorI::clear() const noexcept {
  delete walk;
  walk = nullptr;
  table = nullptr;
  count = 0;
}

XelCsvLineI* XelCachedCsvLineIteratorI::getLine() const { return walk == nullptr ? nullptr : walk->getLine(); }

// Reads the line that the current key's record points to, from a file opened with mode unless one is open; the iterator
// ends when that fails.
void XelCachedCsvLineIteratorI::readLine(const char* mode) {
  try {
    if (walk == nullptr) walk = XelNew<XelCsvWalk>(table->getEnv(), table, mode).release();
    const OffsetAndLineNumber* record = table->getLineStart(index);
    if (record == nullptr) XelCsvErrors::noKeyIterated(table->getSite(), table->getLineKey(index));
    offset = record->offset;
    if (walk->goToLineAt(offset, record->lineNumber)) return;
    if (!walk->seek(offset)) XelCsvErrors::corruptedIndexedTable(table->getSite());
    walk->readLine(record->lineNumber);
  } catch (...) {
    clear();
    throw;
  }
}

// Kept: the index is not reset, and the file's mode is "rb" here and "r" in a copy (test: OpenModes.AreThoseOfEachOperation).
void XelCachedCsvLineIteratorI::initIterator() {
  XelCachedCsvTableReaderI* walked = table;
  clear();
  table = walked;
  count = table->getNumberOfItems();
  ok = index < count ? 1 : 0;
  if (ok != 0) readLine("rb");
}

XelCachedCsvLineIteratorI& XelCachedCsvLineIteratorI::operator++() {
  if (walk == nullptr) {
    ok = 0;
    return *this;
  }
  ++index;
  ok = index < count ? 1 : 0;
  if (ok != 0) {
    readLine("rb");
  } else {
    clear();
  }
  return *this;
}

void XelCachedCsvLineIteratorI::copy(const XelCachedCsvLineIteratorI& other) {
  if (this == &other) return;
  clear();
  table = other.table;
  index = other.index;
  count = other.count;
  ok = table == nullptr ? 0 : other.ok;
  other.clear();
  if (ok != 0) readLine("r");
}
