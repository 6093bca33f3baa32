#include "xelcsv/XelCsvReader.h"

#include <cassert>
#include <cstdarg>
#include <utility>

#include "csv/errors/XelCsvErrors.h"
#include "csv/line/XelCsvKey.h"
#include "csv/line/XelCsvLineI.h"
#include "csv/reader/XelCsvParameters.h"
#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableFactory.h"
#include "csv/table/XelCsvTableReaderI.h"

XelCsvReader::XelCsvReader(XelEnv env, const char* fileName, long isMultiTable, long allowTableSplitting,
                           const char* separators, char decimal, char quote, char comment, long isCached)
    : notCached(isCached == 0 ? 1 : 0) {
  XelCsvParameters::makeTests(env, fileName, separators, decimal, quote, comment);
  createImpl(env, fileName, isCached, isMultiTable, allowTableSplitting, separators, decimal, quote, comment);
}

XelCsvReader::XelCsvReader(const XelCsvReader& other) : impl(other.impl), notCached(other.notCached) {}

XelCsvReader& XelCsvReader::operator=(const XelCsvReader& other) {
  if (this != &other) *this = XelCsvReader(other);
  return *this;
}

XelCsvReader::XelCsvReader(XelCsvReader&& other) noexcept
    : impl(std::exchange(other.impl, nullptr)),
      notCached(other.notCached),
      lastLine(std::exchange(other.lastLine, nullptr)) {}

XelCsvReader& XelCsvReader::operator=(XelCsvReader&& other) noexcept {
  if (this == &other) return *this;
  delete lastLine;
  impl = std::exchange(other.impl, nullptr);
  notCached = other.notCached;
  lastLine = std::exchange(other.lastLine, nullptr);
  return *this;
}

void XelCsvReader::createImpl(XelEnv env, const char* fileName, long isCached, long isMultiTable,
                              long allowTableSplitting, const char* separators, char decimal, char quote,
                              char comment) {
  XelEnvOwner<XelCsvReaderI> reader = XelNew<XelCsvReaderI>(env, env, fileName, isCached, isMultiTable,
                                                            allowTableSplitting, separators, decimal, quote, comment);
  if (reader->isDuplicatedTableFound()) XelCsvErrors::duplicatedTable(reader->getLineBuffer());
  XelCheckOpened(reader->getOpenError(), fileName);
  impl = reader.release();
}

XelCsvTableReader XelCsvReader::getTableByName(const char* name) {
  assert(impl != nullptr);
  return XelCsvTableReader(impl->getTableByName(name));
}

XelCsvTableReader XelCsvReader::getTableByNumber(long number) {
  assert(impl != nullptr);
  return XelCsvTableReader(impl->getTableByNumber(number));
}

XelCsvTableReader XelCsvReader::getTable() {
  assert(impl != nullptr);
  return XelCsvTableReader(impl->getTable());
}

XelCsvTableReader XelCsvReader::getReaderForUniqueTableFile() const {
  assert(impl != nullptr);
  return XelCsvTableReader(impl->getReaderForUniqueTableFile());
}

double XelCsvReader::getCsvFormat() {
  assert(impl != nullptr);
  return impl->getCsvFormat();
}

double XelCsvReader::getFileVersion() {
  assert(impl != nullptr);
  return impl->getFileVersion();
}

const char* XelCsvReader::getRequiredBy() {
  assert(impl != nullptr);
  return impl->getRequiredBy();
}

long XelCsvReader::getNumberOfTables() const {
  assert(impl != nullptr);
  return impl->getNumberOfTables();
}

bool XelCsvReader::isTableExists(const char* name) const {
  assert(impl != nullptr);
  return impl->isTableExists(name);
}

XelCsvLine XelCsvReader::getLineByNumber(long number) {
  assert(impl != nullptr);
  delete std::exchange(lastLine, nullptr);
  lastLine = impl->getLineByNumber(number);
  return XelCsvLine(lastLine);
}

XelCsvLine XelCsvReader::getLineByKey(long numberOfKeys, const char* key, ...) {
  assert(impl != nullptr);
  // The values may point into the former last line, which therefore goes last, also when something is thrown.
  const XelEnvOwner<XelCsvLineI> former(std::exchange(lastLine, nullptr));
  const long keys = impl->getNumberOfKeys();
  // Kept: the table has no name here, so the message is the one without.
  if (numberOfKeys < keys) XelCsvErrors::notEnoughKeys({}, keys);
  XelCsvTableReaderI* table = impl->getReaderForUniqueTableFile();
  XelEnvBlock<char> composed;
  std::va_list others;
  va_start(others, key);
  try {
    composed = XelComposeKey(table->getEnv(), keys, key, others);
  } catch (...) {
    va_end(others);
    throw;
  }
  va_end(others);
  lastLine = table->findLine(std::move(composed));
  return XelCsvLine(lastLine);
}

long XelCsvReader::getNumberOfItems() {
  assert(impl != nullptr);
  return impl->getNumberOfItems();
}

long XelCsvReader::getNumberOfColumns() const {
  assert(impl != nullptr);
  return impl->getNumberOfColumns();
}

XelCsvLine XelCsvReader::getFirstLine() const {
  assert(impl != nullptr);
  return XelCsvLine(impl->getFirstLine());
}

bool XelCsvReader::isHeadingExists(const char* heading) const {
  assert(impl != nullptr);
  return impl->isHeadingExists(heading);
}

long XelCsvReader::getNumberOfKeys() const {
  assert(impl != nullptr);
  return impl->getNumberOfKeys();
}

void XelCsvReader::printKeys() const {
  assert(impl != nullptr);
  impl->printKeys();
}

long XelCsvReader::getPosition(const char* heading) const {
  assert(impl != nullptr);
  return impl->getPosition(heading);
}

XelEnv XelCsvReader::getEnv() const {
  assert(impl != nullptr);
  return impl->getEnv();
}

void XelCsvReader::end() {
  delete std::exchange(lastLine, nullptr);
  delete std::exchange(impl, nullptr);
}

XelCsvReader::TableIterator::TableIterator(XelCsvReader walked) : XelCsvTableIteratorI(walked.getImpl()) {}

XelCsvTableReader XelCsvReader::TableIterator::operator*() const {
  return XelCsvTableReader(valid != 0 ? currentTable : nullptr);
}

XelCsvReader::TableIterator& XelCsvReader::TableIterator::operator++() {
  XelCsvTableIteratorI::operator++();
  return *this;
}

XelCsvReader::LineIterator::LineIterator(XelCsvReader walked) : lines(walked.getReaderForUniqueTableFile()) {}

XelCsvReader::LineIterator& XelCsvReader::LineIterator::operator++() {
  ++lines;
  return *this;
}
