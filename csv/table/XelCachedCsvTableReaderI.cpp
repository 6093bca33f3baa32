#include "csv/table/XelCachedCsvTableReaderI.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "csv/errors/XelCsvOpen.h"
#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCsvScan.h"

XelCachedCsvTableReaderI::XelCachedCsvTableReaderI(XelEnv environment)
    : XelCsvTableReaderI(environment),
      lineOffsets(environment, XeldReaderHashFunction, XeldReaderCmpFunction, XelBucketCount) {
  // Last, for an array does not end by itself when something after it throws.
  lineKeys = XelArray<const char*>(environment, 0);
}

XelCachedCsvTableReaderI::XelCachedCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName,
                                                   const OffsetAndLineNumber* start, Unindexed)
    : XelCsvTableReaderI(fileReader, tableName, start),
      lineOffsets(env, XeldReaderHashFunction, XeldReaderCmpFunction, XelBucketCount) {
  lineKeys = XelArray<const char*>(env, 0);
}

XelCachedCsvTableReaderI::XelCachedCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName,
                                                   const OffsetAndLineNumber* start)
    : XelCachedCsvTableReaderI(fileReader, tableName, start, Unindexed()) {
  // A file that opened but could not be read, a directory, is as good as one that did not open.
  if (getOpenError() == 0 && !XelHasOpenErrorText(errno)) makeIndex();
}

XelCachedCsvTableReaderI::~XelCachedCsvTableReaderI() {
  clearCachedTable();
  lineKeys.end();
}

void XelCachedCsvTableReaderI::makeIndex() {
  if (!tryOpen(file)) return;
  if (!file.seek(firstDataOffset)) XelCsvErrors::corruptedIndexedTable(getSite());
  duplicatedLine = stockLineOffsets(file);
  file.close();
}

long XelCachedCsvTableReaderI::stockLineOffsets(XelCsvLines& lines) {
  XelCsvScan scan(this, lines);
  XelCsvKey key(env);
  while (scan.next() && scan.isInside()) {
    scan.format();
    if (isSplit() && !scan.isOwn()) continue;
    scan.checkNumberOfKeys();
    scan.composeKey(key);
    XelEnvBlock<char> copy = key.copy();
    lineKeys.add(copy.get());
    const char* listed = copy.release();
    XelEnvBlock<OffsetAndLineNumber> record(env, 1);
    record[0] = {scan.getOffset(), scan.getLineNumber()};
    // Kept: the duplicated key is in the list, and counts as an item, but it has no record (test:
    // CachedTable.DuplicatedKeyIsTheLastKeyAndHasNoRecord).
    if (addLineOffset(listed, record.get()) == 0) return 1;
    record.release();
  }
  return 0;
}

long XelCachedCsvTableReaderI::addLineOffset(const char* key, OffsetAndLineNumber* record) {
  return lineOffsets.add(key, record) == 0 ? 1 : 0;
}

XelCsvLineI* XelCachedCsvTableReaderI::getLineByNumber(long number) {
  const bool isThere = number >= 0 && number < getNumberOfItems();
  const char* key = isThere ? getLineKey(number) : nullptr;
  if (key == nullptr) XelCsvErrors::noLineIndexed(getSite(), number);
  return findLine(XelCopyString(env, key));
}

XelCsvLineI* XelCachedCsvTableReaderI::getLineByKey(const char* key) {
  if (key == nullptr) XelCsvErrors::noKeyIndexed(getSite(), key);
  XelEnvBlock<char> owned(env, const_cast<char*>(key), static_cast<long>(std::strlen(key)) + 1);
  const OffsetAndLineNumber* record = getOffsetAndLineNumber(key);
  if (record == nullptr) XelCsvErrors::noKeyIndexed(getSite(), key);
  XelCsvLines lines(env);
  open(lines, "r", XelCsvReach::OneLine);
  if (!lines.seek(record->offset)) XelCsvErrors::noKeyIndexed(getSite(), key);
  XelEnvBlock<char> text(env, XelLineSize);
  lines.read();  // what cannot be read any more is an empty line
  formatLine(lines.getLine(), text.get(), nullptr);
  XelEnvOwner<XelCsvLineI> line = XelNew<XelCsvLineI>(env, std::move(text), this, record->lineNumber);
  owned.release();
  return line.release();
}

long XelCachedCsvTableReaderI::getNumberOfItems() { return reader == nullptr ? 0 : lineKeys.getSize(); }

OffsetAndLineNumber* XelCachedCsvTableReaderI::getOffsetAndLineNumber(const char* key) const {
  OffsetAndLineNumber* record = nullptr;
  if (key != nullptr) lineOffsets.find(key, record);
  return record;
}

const char* XelCachedCsvTableReaderI::getLineKey(long index) const noexcept {
  return index >= 0 && index < lineKeys.getSize() ? lineKeys[index] : nullptr;
}

const char* XelCachedCsvTableReaderI::getDuplicatedKey() const noexcept {
  return duplicatedLine == 0 ? nullptr : getLineKey(lineKeys.getSize() - 1);
}

void XelCachedCsvTableReaderI::clearCachedTable() noexcept {
  for (long index = 0; index < lineKeys.getSize(); ++index) XelFreeString(env, lineKeys[index]);
  lineKeys.clear();
  for (XelEnvHashTable<const char*, OffsetAndLineNumber*>::Iterator it(&lineOffsets); it.ok(); ++it) {
    XelFree(env, *it);
  }
  lineOffsets.clear();
  duplicatedLine = 0;
}

void XelCachedCsvTableReaderI::clearTable() {
  partialClear();
  clearCachedTable();
}

void XelCachedCsvTableReaderI::copy(XelCsvTableReaderI* other) {
  if (other == this) return;
  XelCachedCsvTableReaderI fresh(env);
  fresh.partialCopy(other);
  auto* cached = dynamic_cast<XelCachedCsvTableReaderI*>(other);
  if (fresh.openError == 0 && cached == nullptr) {
    fresh.makeIndex();
    // A scanning table may hold a key twice; in a one-table file an index says nothing of it either.
    const char* key = fresh.nameOfTable == nullptr ? nullptr : fresh.getDuplicatedKey();
    if (key != nullptr) XelCsvErrors::duplicatedLine(fresh.getSite(), key);
  }
  // A file that opened but could not be read, a directory, is as good as one that did not open.
  openError = fresh.openError == 0 && XelHasOpenErrorText(errno) ? errno : fresh.openError;
  if (openError != 0) return;
  if (cached != nullptr) fresh.copyIndex(cached);
  clearTable();
  swapTable(fresh);
  std::swap(lineKeys, fresh.lineKeys);
  lineOffsets.swap(fresh.lineOffsets);
}

// Whether the source had met a duplicated key is not copied.
void XelCachedCsvTableReaderI::copyIndex(XelCachedCsvTableReaderI* other) {
  const long items = other->getNumberOfItems();
  for (long index = 0; index < items; ++index) {
    const char* key = other->getLineKey(index);
    if (key == nullptr) return;  // a derived class counts more items than there are
    XelEnvBlock<char> copy = XelCopyString(env, key);
    lineKeys.add(copy.get());
    const char* listed = copy.release();
    const OffsetAndLineNumber* record = other->getOffsetAndLineNumber(key);
    if (record == nullptr) continue;
    XelEnvBlock<OffsetAndLineNumber> newRecord(env, 1);
    newRecord[0] = *record;
    if (addLineOffset(listed, newRecord.get()) != 0) newRecord.release();
  }
}
