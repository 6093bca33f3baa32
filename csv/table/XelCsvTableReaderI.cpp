#include "csv/table/XelCsvTableReaderI.h"

#include <cstring>
#include <initializer_list>
#include <iostream>
#include <utility>

#include "csv/errors/XelCsvOpen.h"
#include "csv/line/XelCsvLineI.h"

XelCsvTableReaderI::XelCsvTableReaderI(XelEnv environment)
    : keyPositions(environment, 0), file(environment), env(environment) {}

// Continues from the empty reader, so that the destructor runs when something throws.
XelCsvTableReaderI::XelCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName,
                                       const OffsetAndLineNumber* start)
    : XelCsvTableReaderI(fileReader->getEnv()) {
  reader = fileReader;
  const char* stored = reader->getStoredName(tableName);
  nameOfTable = stored != nullptr ? stored : tableName;  // the caller's text may not live as long as the table
  if (tryOpen(file)) {
    readHeadingZone(start);
    headings.make(firstLine);
    file.close();
  }
}

XelCsvTableReaderI::~XelCsvTableReaderI() {
  XelCsvTableReaderI::partialClear();
  keyPositions.end();
}

void XelCsvTableReaderI::partialClear() noexcept {
  delete firstLine;
  firstLine = nullptr;
  headings.reset();
  keyPositions.clear();
}

void XelCsvTableReaderI::partialCopy(XelCsvTableReaderI* other) {
  env = other->env;
  reader = other->reader;
  if (!tryOpen(file)) return;
  numberOfColumns = other->numberOfColumns;
  numberOfFields = other->numberOfFields;
  // Kept: without a heading line the copy gets an empty heading record (test:
  // TableCopy.OfATableWithoutHeadingLineHasAnEmptyHeadingRecord).
  XelEnvOwner<XelCsvLineI> heading = XelNew<XelCsvLineI>(env, env, this);
  heading->copy(other->firstLine);
  heading->setTableReader(this);
  delete firstLine;
  firstLine = heading.release();
  headings.make(firstLine);
  endOffset = other->endOffset;
  firstDataOffset = other->firstDataOffset;
  firstDataLineNumber = other->firstDataLineNumber;
  if (!file.seek(firstDataOffset)) XelCsvErrors::corruptedTable(other->getSite());
  for (long key = 0; key < other->keyPositions.getSize(); ++key) keyPositions.add(other->keyPositions[key]);
  nameOfTable = other->nameOfTable;
  lineLength = other->lineLength;
  file.close();
}

XelCsvLineI* XelCsvTableReaderI::findLine(XelEnvBlock<char> key) {
  const char* given = key.release();  // the table's from here on, unless the line comes back
  XelCsvLineI* line = getLineByKey(given);
  XelFreeString(env, given);
  return line;
}

void XelCsvTableReaderI::swapTable(XelCsvTableReaderI& other) noexcept {
  std::swap(firstLine, other.firstLine);
  headings.swap(other.headings);
  std::swap(lineLength, other.lineLength);
  std::swap(numberOfColumns, other.numberOfColumns);
  std::swap(numberOfFields, other.numberOfFields);
  std::swap(reader, other.reader);
  std::swap(nameOfTable, other.nameOfTable);
  std::swap(keyPositions, other.keyPositions);
  std::swap(firstDataOffset, other.firstDataOffset);
  std::swap(endOffset, other.endOffset);
  std::swap(firstDataLineNumber, other.firstDataLineNumber);
  std::swap(env, other.env);
  for (XelCsvTableReaderI* table : {this, &other}) {
    if (table->firstLine != nullptr) table->firstLine->setTableReader(table);
  }
}

bool XelCsvTableReaderI::tryOpen(XelCsvLines& lines) noexcept {
  openError = lines.open(reader->getFileName(), "rb", XelCsvReach::ManyLines);
  return openError == 0;
}

void XelCsvTableReaderI::open(XelCsvLines& lines, const char* mode, XelCsvReach reach) const {
  const int error = lines.open(reader->getFileName(), mode, reach);
  if (error != 0) XelThrowOpenError(error, reader->getFileName());
  if (!reader->isMultiTable()) lines.expectSize(endOffset);
}

void XelCsvTableReaderI::openAt(XelCsvLines& lines, const char* mode, XelCsvReach reach, long offset) const {
  open(lines, mode, reach);
  if (!lines.seek(offset)) XelCsvErrors::corruptedTable(getSite());
}

bool XelCsvTableReaderI::isHeadingExists(const char* heading) const noexcept {
  return headings.find(firstLine, heading) >= 0;
}

long XelCsvTableReaderI::getPosition(const char* heading) const {
  if (firstLine == nullptr) XelCsvErrors::noHeadingLine(getSite());
  const long field = headings.find(firstLine, heading);
  if (field < 0) XelCsvErrors::headingNotFound(getSite(), heading);
  // Kept: the heading of a one-table file's marker field is found too, at -1 (test:
  // GetPosition.OfTheMarkerFieldOfAOneTableFileIsMinusOne).
  return reader->isMultiTable() ? field : field - 1;
}

// Kept: in a one-table file the heading printed is that of the field to the left, for the marker field is not counted
// (test: PrintKeys.NamesTheColumnToTheLeftInAOneTableFile).
bool XelCsvTableReaderI::printKeys() const {
  const XelCsvLineI* line = getHeadingLine();
  for (long key = 0; key < getNumberOfKeys(); ++key) {
    const long position = getKeyPosition(key);
    if (line != nullptr) line->check("getStringByPosition", position);
    std::cout << "key " << key << " ----> ";
    if (line != nullptr) {
      std::cout << line->trimField(position);
    } else {
      std::cout << "Column " << position;
    }
    std::cout << std::endl;
  }
  return true;
}

void XelCsvTableReaderI::testNumberOfFields(XelCsvLineI* line) const {
  const bool differs = line->getNumberOfFields() != numberOfFields;
  // Kept: in a file of several tables a wrong number is told before the first field is looked at (test:
  // TestNumberOfFields.ComparesBeforeItLooksAtTheFirstFieldInAFileOfSeveralTables).
  if (!differs || !reader->isMultiTable()) {
    line->check("getStringByPosition", 0);
    const bool isHeading = std::strchr(line->trimField(0), '|') != nullptr;
    if (!differs || isHeading) return;
  }
  XelCsvErrors::otherNumberOfFields(getSite(), reader->isMultiTable(), numberOfFields, line->getLineNumber(),
                                    line->getNumberOfFields());
}

void XelCsvTableReaderI::formatLine(char* line) noexcept {
  formatLine({line, line + std::strlen(line)}, line, nullptr);
}

void XelCsvTableReaderI::formatLine(const XelCsvSpan& raw, char* to, char** starts) noexcept {
  setFormatted(XelFormatLine(raw.begin, raw.end, to, reader->getFormat(), starts));
}

bool XelCsvTableReaderI::formatAgain(char* text, char** starts) noexcept {
  if (numberOfFields == 1 && XelIsSettledText(text, reader->getFormat())) return false;
  formatLine({text, text + std::strlen(text)}, text, starts);
  return true;
}

long XelCsvTableReaderI::skipCommentAndEmptyLines(XelCsvLines& lines, char* buffer, char comment, long* lineNumber,
                                                  long* offset) const {
  return XelCsvReaderI::skipCommentAndEmptyLines(lines, buffer, comment, lineNumber, offset);
}

void XelCsvTableReaderI::checkKeyField(long position, long fieldsOfLine, long lineNumber) const {
  if (position < fieldsOfLine) return;
  XelCsvErrors::fieldNotFound(getSite(), position, lineNumber, "getStringByPosition");
}

XelCsvSite XelCsvTableReaderI::getSite() const noexcept {
  return {reader == nullptr ? nullptr : reader->getFileName(), nameOfTable};
}

XelCsvLineI* XelCsvTableReaderI::getHeadingLine() const noexcept {
  return firstLine != nullptr && firstLine->getNumberOfFields() > 0 ? firstLine : nullptr;
}

bool XelCsvTableReaderI::isSplit() const noexcept {
  return reader->isMultiTable() && reader->isTableSplittingAllowed() && nameOfTable != nullptr;
}

bool XelCsvTableReaderI::isOwnName(const XelCsvSpan& name) const noexcept {
  const auto length = static_cast<std::size_t>(name.getLength());
  return std::strncmp(nameOfTable, name.begin, length) == 0 && nameOfTable[length] == '\0';
}
