#include "xelcsv/XelCsvTableReader.h"

#include <cassert>
#include <cstdarg>
#include <utility>

#include "csv/errors/XelCsvErrors.h"
#include "csv/line/XelCsvKey.h"
#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelCsvTableFactory.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"

namespace {

// A table is walked through its index when it has one, whatever its file reader says: copying keeps a table's kind.
XelCachedCsvTableReaderI* asCached(XelCsvTableReaderI* table) { return dynamic_cast<XelCachedCsvTableReaderI*>(table); }

}  // namespace

XelCsvTableReader::XelCsvTableReader(XelCsvReaderI* reader, const char* tableName) {
  assert(reader != nullptr);
  const OffsetAndLineNumber* start = reader->getOffsetAndLineNumber(tableName);
  if (start == nullptr) XelCsvErrors::tableNotFound(tableName);
  XelEnvOwner<XelCsvTableReaderI> table = XelMakeTableReader(reader, tableName, start);
  const char* key = XelGetDuplicatedKey(*table);
  if (key != nullptr) XelCsvErrors::duplicatedLine(table->getSite(), key);
  XelCheckOpened(table->getOpenError(), reader->getFileName());
  impl = table.release();
}

XelCsvTableReader::XelCsvTableReader(XelCsvTableReaderI* tableReader)
    : impl(tableReader), lent(tableReader != nullptr && tableReader->isLent()) {}

XelCsvTableReader::XelCsvTableReader(const XelCsvTableReader& other) : impl(other.impl), lent(other.lent) {}

XelCsvTableReader& XelCsvTableReader::operator=(const XelCsvTableReader& other) {
  if (this != &other) *this = XelCsvTableReader(other);
  return *this;
}

XelCsvTableReader::XelCsvTableReader(XelCsvTableReader&& other) noexcept
    : impl(std::exchange(other.impl, nullptr)), lastLine(std::exchange(other.lastLine, nullptr)), lent(other.lent) {}

XelCsvTableReader& XelCsvTableReader::operator=(XelCsvTableReader&& other) noexcept {
  if (this == &other) return *this;
  delete lastLine;
  impl = std::exchange(other.impl, nullptr);
  lastLine = std::exchange(other.lastLine, nullptr);
  lent = other.lent;
  return *this;
}

XelCsvLine XelCsvTableReader::getLineByKey(long numberOfKeys, const char* key, ...) {
  assert(impl != nullptr);
  // The values may point into the former last line, which therefore goes last, also when something is thrown.
  const XelEnvOwner<XelCsvLineI> former(std::exchange(lastLine, nullptr));
  const long keys = impl->getNumberOfKeys();
  if (numberOfKeys < keys) XelCsvErrors::notEnoughKeys(impl->getSite(), keys);
  XelEnvBlock<char> composed;
  std::va_list others;
  va_start(others, key);
  try {
    composed = XelComposeKey(impl->getEnv(), keys, key, others);
  } catch (...) {
    va_end(others);
    throw;
  }
  va_end(others);
  lastLine = impl->findLine(std::move(composed));
  return XelCsvLine(lastLine);
}

XelCsvLine XelCsvTableReader::getLineByNumber(long lineNumber) {
  assert(impl != nullptr);
  delete std::exchange(lastLine, nullptr);
  lastLine = impl->getLineByNumber(lineNumber);
  return XelCsvLine(lastLine);
}

bool XelCsvTableReader::isCached() const {
  assert(impl != nullptr);
  return impl->getReader()->isCached();
}

const char* XelCsvTableReader::getNameOfTable() const {
  assert(impl != nullptr);
  return impl->getNameOfTable();
}

long XelCsvTableReader::getNumberOfKeys() const {
  assert(impl != nullptr);
  return impl->getNumberOfKeys();
}

bool XelCsvTableReader::printKeys() const {
  assert(impl != nullptr);
  return impl->printKeys();
}

long XelCsvTableReader::getPosition(const char* heading) const {
  assert(impl != nullptr);
  return impl->getPosition(heading);
}

XelCsvLine XelCsvTableReader::getFirstLine() const {
  assert(impl != nullptr);
  return XelCsvLine(impl->getFirstLine());
}

void XelCsvTableReader::copy(const XelCsvTableReader& other) {
  assert(other.impl != nullptr);
  if (this == &other) return;
  const XelEnv env = other.impl->getEnv();
  XelEnvOwner<XelCsvLineI> line;
  try {
    if (impl == nullptr) {
      impl = XelMakeEmptyTableReader(env, other.impl->getReader()->isCached()).release();
      lent = false;
    }
    if (other.lastLine != nullptr) {
      line = XelNew<XelCsvLineI>(env, env, impl);
      line->copy(other.lastLine);
      line->setTableReader(impl);
    }
    if (impl != other.impl) {
      impl->copy(other.impl);
      XelCheckOpened(impl->getOpenError(), other.impl->getReader()->getFileName());
    }
  } catch (...) {
    XelCsvTableReaderI* table = std::exchange(impl, nullptr);
    if (!lent && table != other.impl) delete table;
    throw;
  }
  if (lastLine != nullptr && line.get() != nullptr) {
    lastLine->swap(*line);  // handles of the last line show the copy
  } else {
    delete std::exchange(lastLine, line.release());
  }
}

long XelCsvTableReader::getNumberOfColumns() const {
  assert(impl != nullptr);
  return impl->getNumberOfColumns();
}

long XelCsvTableReader::getNumberOfItems() {
  assert(impl != nullptr);
  return impl->getNumberOfItems();
}

XelEnv XelCsvTableReader::getEnv() const {
  assert(impl != nullptr);
  return impl->getEnv();
}

bool XelCsvTableReader::isHeadingExists(const char* heading) const {
  assert(impl != nullptr);
  return impl->isHeadingExists(heading);
}

void XelCsvTableReader::end() {
  delete std::exchange(lastLine, nullptr);
  XelCsvTableReaderI* table = std::exchange(impl, nullptr);
  if (!lent) delete table;
}

XelCsvTableReader::LineIterator::LineIterator(XelCsvTableReader walked) {
  assert(walked.getImpl() != nullptr);
  start(walked.getImpl());
}

XelCsvTableReader::LineIterator::LineIterator(const LineIterator& other) = default;

// Kept: the position of the source is not copied (test: LineIterator.AssigningStartsAgainAtTheFirstLine).
XelCsvTableReader::LineIterator& XelCsvTableReader::LineIterator::operator=(const LineIterator& other) {
  start(other.table);
  return *this;
}

// Stands on the first line of a table, of none when it is null.
void XelCsvTableReader::LineIterator::start(XelCsvTableReaderI* walked) {
  cachedIterator = XelCachedCsvLineIteratorI();
  nonCachedIterator = XelNonCachedCsvLineIteratorI();
  table = nullptr;  // when the walk cannot begin, this is an iterator over nothing
  if (walked == nullptr) return;
  XelCachedCsvTableReaderI* indexed = asCached(walked);
  cached = indexed != nullptr ? 1 : 0;
  if (indexed != nullptr) {
    cachedIterator = XelCachedCsvLineIteratorI(indexed);
  } else {
    nonCachedIterator = XelNonCachedCsvLineIteratorI(static_cast<XelNonCachedCsvTableReaderI*>(walked));
  }
  table = walked;
}

XelCsvLine XelCsvTableReader::LineIterator::operator*() const {
  return ok() ? XelCsvLine(cached != 0 ? cachedIterator.getLine() : nonCachedIterator.getLine()) : XelCsvLine();
}

XelCsvTableReader::LineIterator& XelCsvTableReader::LineIterator::operator++() {
  if (cached != 0) {
    ++cachedIterator;
  } else {
    ++nonCachedIterator;
  }
  return *this;
}

bool XelCsvTableReader::LineIterator::ok() const {
  return cached != 0 ? cachedIterator.isOk() : nonCachedIterator.isOk();
}

void XelCsvTableReader::LineIterator::end() {
  if (cached != 0) {
    cachedIterator.clear();
  } else {
    nonCachedIterator.clear();
  }
}
