#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "xelcsv/XelCsvIteratorI.h"

CsvTableIteratorI::CsvTableIteratorI(XelCsvReaderI* walked) : reader(walked) { CsvTableIteratorI::initIterator(); }

CsvTableIteratorI::CsvTableIteratorI(const CsvTableIteratorI& other) { copy(other); }

CsvTableIteratorI& CsvTableIteratorI::operator=(const CsvTableIteratorI& other) {
  copy(other);
  return *this;
}

CsvTableIteratorI::~CsvTableIteratorI() { clear(); }

void CsvTableIteratorI::initIterator() {
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

CsvTableIteratorI& CsvTableIteratorI::operator++() {
  const long next = currentIndex + 1;
  valid = next < endIndex ? 1 : 0;
  clear();
  if (valid != 0) {
    currentIndex = next;  // before the table is made: one that cannot be made is passed over by the next ++
    openTable(next);
  }
  return *this;
}

void CsvTableIteratorI::openTable(long index) {
  currentTable = reader->getTableByName(reader->getTableName(index));
  currentTable->setLent();
}

void CsvTableIteratorI::copy(const CsvTableIteratorI& other) {
  if (this == &other) return;
  clear();
  reader = other.reader;
  currentIndex = other.currentIndex;
  endIndex = other.endIndex;
  valid = other.valid;
  if (valid != 0) openTable(currentIndex);
}

void CsvTableIteratorI::clear() {
  delete currentTable;
  currentTable = nullptr;
}
