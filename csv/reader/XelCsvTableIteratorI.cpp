#include <cassert>

#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "xelcsv/XelCsvIteratorI.h"

XelCsvTableIteratorI::XelCsvTableIteratorI(XelCsvReaderI* walked) : reader(walked) {
  XelCsvTableIteratorI::initIterator();
}

XelCsvTableIteratorI::XelCsvTableIteratorI(const XelCsvTableIteratorI& other) { copy(other); }

XelCsvTableIteratorI& XelCsvTableIteratorI::operator=(const XelCsvTableIteratorI& other) {
  copy(other);
  return *this;
}

XelCsvTableIteratorI::~XelCsvTableIteratorI() { clear(); }

void XelCsvTableIteratorI::initIterator() {
  assert(reader != nullptr);
  clear();
  const long skip = reader->getNumberOfReservedTables();
  currentIndex = skip;
  endIndex = reader->getNumberOfTables() + skip;
  valid = 0;
  // A file without tables to visit has no name to ask for.
  if (currentIndex >= endIndex) return;
  openTable(currentIndex);
  valid = 1;
}

XelCsvTableIteratorI& XelCsvTableIteratorI::operator++() {
  const long next = currentIndex + 1;
  valid = next < endIndex ? 1 : 0;
  clear();
  if (valid != 0) {
    currentIndex = next;  // before the table is made: one that cannot be made is passed over by the next ++
    openTable(next);
  }
  return *this;
}

void XelCsvTableIteratorI::openTable(long index) {
  currentTable = reader->getTableByName(reader->getTableName(index));
  currentTable->setLent();
}

void XelCsvTableIteratorI::copy(const XelCsvTableIteratorI& other) {
  if (this == &other) return;
  clear();
  reader = other.reader;
  currentIndex = other.currentIndex;
  endIndex = other.endIndex;
  valid = other.valid;
  if (valid != 0) openTable(currentIndex);
}

void XelCsvTableIteratorI::clear() {
  delete currentTable;
  currentTable = nullptr;
}
