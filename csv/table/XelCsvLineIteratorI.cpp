#include <cstring>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "xelcsv/XelCsvIteratorI.h"

namespace {

// What both iterators hold while they walk: their own file, a line's buffer and field array, and the one record over
// them.
struct WalkStorage {
  XelEnvOwner<XelCsvLines> file;
  XelEnvBlock<char> buffer;
  XelEnvBlock<char*> fields;
  XelEnvOwner<XelCsvLineI> line;
};

// Opens the table's file. Throws XelFileNotFoundException, std::bad_alloc.
WalkStorage openWalk(XelCsvTableReaderI* table, const char* mode) {
  const XelEnv env = table->getEnv();
  WalkStorage walk{XelNew<XelCsvLines>(env, env), {}, {}, {}};
  table->open(*walk.file, mode, XelCsvReach::ManyLines);
  walk.buffer = XelEnvBlock<char>(env, XelLineSize);
  walk.fields = XelEnvBlock<char*>(env, XelLineSize);
  walk.line = XelNew<XelCsvLineI>(env, env, table);
  return walk;
}

// Gives the storage back; the record never frees what it was lent.
void closeWalk(XelEnv env, XelCsvLines* file, char* buffer, char** fields, XelCsvLineI* line) {
  delete line;
  env.free(buffer, XelLineSize);
  env.free(fields, XelLineSize * static_cast<long>(sizeof(char*)));
  delete file;
}

}  // namespace

// ---- Scanning.

XelNonCachedCsvLineIteratorI::XelNonCachedCsvLineIteratorI(XelNonCachedCsvTableReaderI* walked)
    : table(walked), env(walked->getEnv()) {
  XelNonCachedCsvLineIteratorI::initIterator();
}

XelNonCachedCsvLineIteratorI::XelNonCachedCsvLineIteratorI(const XelNonCachedCsvLineIteratorI& other) { copy(other); }

XelNonCachedCsvLineIteratorI& XelNonCachedCsvLineIteratorI::operator=(const XelNonCachedCsvLineIteratorI& other) {
  copy(other);
  return *this;
}

XelNonCachedCsvLineIteratorI::~XelNonCachedCsvLineIteratorI() { clear(); }

void XelNonCachedCsvLineIteratorI::clear() const {
  closeWalk(env, file, buffer, fields, line);
  file = nullptr;
  buffer = nullptr;
  fields = nullptr;
  line = nullptr;
  table = nullptr;
  offset = 0;
}

void XelNonCachedCsvLineIteratorI::openAt(long position) {
  WalkStorage walk = openWalk(table, "rb");
  if (!walk.file->seek(position)) XelCsvErrors::corruptedTable(table->getSite());
  file = walk.file.release();
  buffer = walk.buffer.release();
  fields = walk.fields.release();
  line = walk.line.release();
}

// The file's current line becomes the iterator's.
void XelNonCachedCsvLineIteratorI::formatLine() {
  table->formatLine(file->getLine(), buffer, fields);
  line->adoptFields(buffer, fields, lineNumber, table);
}

void XelNonCachedCsvLineIteratorI::initIterator() {
  XelNonCachedCsvTableReaderI* walked = table;
  clear();
  table = walked;
  ok = 0;
  try {
    offset = table->getFirstDataOffset();
    lineNumber = table->getFirstDataLineNumber() - 1;
    endOffset = table->getEndOffset();
    openAt(offset);
    if (!file->skipCommentAndEmptyLines(table->getReader()->getComment(), lineNumber, offset)) return;
    // Kept: the first line is not asked for its table's name (test: ScanningIterator.FirstLineIsNotNameTested).
    formatLine();
    ok = offset <= endOffset ? 1 : 0;
  } catch (...) {
    clear();
    throw;
  }
}

XelNonCachedCsvLineIteratorI& XelNonCachedCsvLineIteratorI::operator++() {
  if (ok == 0 || line == nullptr) {
    ok = 0;
    return *this;
  }
  const XelCsvReaderI* reader = table->getReader();
  if (!reader->isMultiTable()) {
    // Kept: the walk goes on to the end of the file, and the offset stays that of the first line (tests:
    // ScanningIterator.OfAOneTableFileRunsToTheEndOfTheFile, ScanningIterator.CopyInAOneTableFileStandsOnTheFirstLine).
    long unused = 0;
    ok = file->skipCommentAndEmptyLines(reader->getComment(), lineNumber, unused) ? 1 : 0;
    if (ok != 0) formatLine();
  } else if (file->skipCommentAndEmptyLines(reader->getComment(), lineNumber, offset) && offset <= endOffset) {
    formatLine();
    ok = skipOtherTables() ? 1 : 0;
  } else {
    ok = 0;
  }
  if (ok == 0) clear();
  return *this;
}

// Where tables are split, goes on to a line of this one. False when the table's region ends before.
bool XelNonCachedCsvLineIteratorI::skipOtherTables() {
  if (!table->isSplit()) return true;
  const XelCsvReaderI* reader = table->getReader();
  for (;;) {
    const char* name = line->trimField(0);
    const char* end = name + std::strlen(name);
    if (table->isOwnName({name, end})) return true;
    file->skipCommentAndEmptyLines(reader->getComment(), lineNumber, offset);
    if (offset > endOffset) return false;
    if (file->hasRead()) {
      formatLine();
    } else {
      // A last line without line feed is all that is left; once formatting changes it no more it stays another table's.
      if (!table->formatAgain(buffer, fields)) return false;
      line->adoptFields(buffer, fields, lineNumber, table);
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
  env = table->getEnv();
  try {
    openAt(offset);
    file->read();
    formatLine();
  } catch (...) {
    clear();
    throw;
  }
}

// ---- Through the index.

XelCachedCsvLineIteratorI::XelCachedCsvLineIteratorI(XelCachedCsvTableReaderI* walked)
    : table(walked), env(walked->getEnv()) {
  XelCachedCsvLineIteratorI::initIterator();
}

XelCachedCsvLineIteratorI::XelCachedCsvLineIteratorI(const XelCachedCsvLineIteratorI& other) { copy(other); }

XelCachedCsvLineIteratorI& XelCachedCsvLineIteratorI::operator=(const XelCachedCsvLineIteratorI& other) {
  copy(other);
  return *this;
}

XelCachedCsvLineIteratorI::~XelCachedCsvLineIteratorI() { clear(); }

void XelCachedCsvLineIteratorI::clear() const {
  closeWalk(env, file, buffer, fields, line);
  file = nullptr;
  buffer = nullptr;
  fields = nullptr;
  line = nullptr;
  table = nullptr;
  count = 0;
}

void XelCachedCsvLineIteratorI::open(const char* mode) {
  WalkStorage walk = openWalk(table, mode);
  file = walk.file.release();
  buffer = walk.buffer.release();
  fields = walk.fields.release();
  line = walk.line.release();
}

// Reads the line that the current key's record points to.
void XelCachedCsvLineIteratorI::readLine() {
  const char* key = table->getLineKey(index);
  const OffsetAndLineNumber* record = table->getOffsetAndLineNumber(key);
  if (record == nullptr) XelCsvErrors::noKeyIterated(table->getSite(), key);
  offset = record->offset;
  if (!file->seek(offset)) XelCsvErrors::corruptedIndexedTable(table->getSite());
  file->read();  // what cannot be read any more is an empty line
  table->formatLine(file->getLine(), buffer, fields);
  line->adoptFields(buffer, fields, record->lineNumber, table);
}

// Kept: the index is not reset (the file's mode is "rb" here and "r" in a copy).
void XelCachedCsvLineIteratorI::initIterator() {
  XelCachedCsvTableReaderI* walked = table;
  clear();
  table = walked;
  count = table->getNumberOfItems();
  ok = index < count ? 1 : 0;
  if (ok == 0) return;
  try {
    open("rb");
    readLine();
  } catch (...) {
    clear();
    throw;
  }
}

XelCachedCsvLineIteratorI& XelCachedCsvLineIteratorI::operator++() {
  if (line == nullptr) {
    ok = 0;
    return *this;
  }
  ++index;
  ok = index < count ? 1 : 0;
  if (ok == 0) {
    clear();
    return *this;
  }
  try {
    readLine();
  } catch (...) {
    clear();
    throw;
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
  if (table == nullptr) return;
  env = table->getEnv();
  if (ok == 0) return;
  try {
    open("r");
    readLine();
  } catch (...) {
    clear();
    throw;
  }
}
