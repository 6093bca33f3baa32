#include "csv/table/XelCachedCsvTableReaderI.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "csv/errors/XelCsvOpen.h"
#include "csv/line/XelCsvLineI.h"
#include "csv/line/XelCsvOneLine.h"
#include "csv/table/XelCsvScan.h"

XelCachedCsvTableReaderI::XelCachedCsvTableReaderI(XelEnv environment)
    : XelCsvTableReaderI(environment), index(environment) {}

XelCachedCsvTableReaderI::XelCachedCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName,
                                                   const OffsetAndLineNumber* start, Unindexed)
    : XelCsvTableReaderI(fileReader, tableName, start), index(env) {}

XelCachedCsvTableReaderI::XelCachedCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName,
                                                   const OffsetAndLineNumber* start)
    : XelCachedCsvTableReaderI(fileReader, tableName, start, Unindexed()) {
  // A file that opened but could not be read, a directory, is as good as one that did not open.
  if (getOpenError() == 0 && !XelHasOpenErrorText(errno)) makeIndex();
}

XelCachedCsvTableReaderI::~XelCachedCsvTableReaderI() { clearCachedTable(); }

void XelCachedCsvTableReaderI::makeIndex() {
  if (!tryOpen(file)) return;
  if (!file.seek(firstDataOffset)) XelCsvErrors::corruptedIndexedTable(getSite());
  duplicatedLine = stockLineOffsets(file);
  file.close();
}

long XelCachedCsvTableReaderI::stockLineOffsets(XelCsvLines& lines) {
  XelCsvScan scan(this, lines);
  XelCsvKey key(env);
  index.expect(firstDataOffset, endOffset);
  bool isNew = true;
  try {
    while (isNew && scan.nextFormatted()) {
      if (isSplit() && !scan.isOwn()) continue;
      scan.checkNumberOfKeys();
      isNew = addLine(scan.composeKey(key), {scan.getOffset(), scan.getLineNumber()});
    }
    isNew = isNew && index.settle();
  } catch (const std::bad_alloc&) {
    index.settle();
    throw;
  } catch (...) {
    // A line before the one that cannot be indexed may still turn out to be a duplicate, where the index ends then.
    if (index.settle()) throw;
    isNew = false;
  }
  index.trim();
  if (isNew) return 0;
  // The index noticed some lines late. Reading the duplicated line again leaves file and table as it left them.
  if (lines.seek(index.getLine(index.getSize() - 1).start.offset) && lines.read()) scan.format();
  return 1;
}

// False when there is a line with this key, or one of the lines before had a duplicated key.
//
// Kept: the duplicated key is in the list, and counts as an item, but it has no record (test:
// CachedTable.DuplicatedKeyIsTheLastKeyAndHasNoRecord).
bool XelCachedCsvTableReaderI::addLine(const XelCsvSpan& key, const OffsetAndLineNumber& start) {
  if (!index.add(key, start)) return false;
  if (added.get() == nullptr) return true;
  return index.settle() && added->findItem(getLineKey(index.getSize() - 1)) == nullptr;
}

long XelCachedCsvTableReaderI::addLineOffset(const char* key, OffsetAndLineNumber* record) {
  if (index.find(key) != nullptr) return 0;
  if (added.get() == nullptr) {
    added = XelNew<AddedLines>(env, env, XeldReaderHashFunction, XeldReaderCmpFunction, XelBucketCount);
  }
  return added->add(key, record) == 0 ? 1 : 0;
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
  XelCsvFile opened;
  const int error = opened.open(reader->getFileName(), "r");
  if (error != 0) XelThrowOpenError(error, reader->getFileName());
  if (!opened.seek(record->offset)) XelCsvErrors::noKeyIndexed(getSite(), key);
  XelCsvLineI* line = readLine(opened, record->lineNumber);
  owned.release();
  return line;
}

// The line at the file's position; what cannot be read any more is an empty line.
XelCsvLineI* XelCachedCsvTableReaderI::readLine(XelCsvFile& opened, long lineNumber) {
  XelEnvBlock<char> text(env, XelLineSize);
  const XelCsvSpan raw = XelReadOneLine(opened, text.get());
  if (raw.begin == text.get()) {
    formatLine(raw, text.get(), nullptr);
    return XelNew<XelCsvLineI>(env, std::move(text), this, lineNumber).release();
  }
  char* starts[XelShortLine + 1 + XelFieldsPadding];
  const XelCsvFormat& format = reader->getFormat();
  setFormatted(XelGetPaddedFormatter(format)(raw.begin, raw.end, text.get(), format, starts));
  return XelNew<XelCsvLineI>(env, std::move(text), starts, this, lineNumber).release();
}

long XelCachedCsvTableReaderI::getNumberOfItems() { return reader == nullptr ? 0 : index.getSize(); }

OffsetAndLineNumber* XelCachedCsvTableReaderI::getOffsetAndLineNumber(const char* key) const {
  if (key == nullptr) return nullptr;
  OffsetAndLineNumber* record = nullptr;
  if (added.get() != nullptr) added->find(key, record);
  return record != nullptr ? record : index.find(key);
}

const char* XelCachedCsvTableReaderI::getLineKey(long number) const noexcept {
  return number >= 0 && number < index.getSize() ? index.getLine(number).getKey() : nullptr;
}

const char* XelCachedCsvTableReaderI::getDuplicatedKey() const noexcept {
  return duplicatedLine == 0 ? nullptr : getLineKey(index.getSize() - 1);
}

void XelCachedCsvTableReaderI::clearCachedTable() noexcept {
  index.clear();
  if (added.get() != nullptr) {
    for (AddedLines::Iterator it(added.get()); it.ok(); ++it) XelFree(env, *it);
  }
  added = XelEnvOwner<AddedLines>();
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
  index.swap(fresh.index);
  std::swap(added, fresh.added);
}

// Whether the source had met a duplicated key is not copied.
void XelCachedCsvTableReaderI::copyIndex(XelCachedCsvTableReaderI* other) {
  const long items = other->getNumberOfItems();
  index.expect(firstDataOffset, endOffset);
  for (long number = 0; number < items; ++number) {
    const char* key = other->getLineKey(number);
    if (key == nullptr) break;  // a derived class counts more items than there are
    index.list({key, key + std::strlen(key)}, other->getLineStart(number));
  }
  index.trim();
}
