#include <cstring>

#include "csv/reader/XelCsvReaderI.h"

long XelCsvReaderI::skipCommentAndEmptyLines(XelCsvLines& lines, char* buffer, char commentCharacter, long* lineNumber,
                                             long* offset) {
  long unused = 0;
  const bool found =
      lines.skipCommentAndEmptyLines(commentCharacter, *lineNumber, offset == nullptr ? unused : *offset);
  if (lines.hasRead()) {
    const XelCsvSpan line = lines.getLine();
    std::memcpy(buffer, line.begin, static_cast<std::size_t>(line.getLength()));
    buffer[line.getLength()] = '\0';
  }
  return found ? 1 : 0;
}

// Puts a table's name into the line buffer.
void XelCsvReaderI::copyNameToBuffer(const XelCsvSpan& name) noexcept {
  const auto length = static_cast<std::size_t>(name.getLength());
  std::memcpy(lineBuffer, name.begin, length);
  lineBuffer[length] = '\0';
}

// The end offset of the table whose lines go by is kept here and stored when another table begins, so that a line that
// continues its table costs one comparison.
long XelCsvReaderI::stockTableNamesAndOffsets() {
  long lineNumber = -1;
  long offset = 0;
  const char* previousName = "";
  const char* current = nullptr;  // the table that the lines belong to, none at first
  long currentLength = 0;
  long currentEnd = 0;
  const auto goTo = [&](const char* name) {
    if (current != nullptr) endOffsets.move(current, 0, currentEnd);
    current = name;
    currentLength = name == nullptr ? 0 : static_cast<long>(std::strlen(name));
    currentEnd = offset;
  };
  while (file.skipCommentAndEmptyLines(comment, lineNumber, offset)) {
    const XelCsvSpan line = file.getLine();
    const XelCsvSpan field = XelFirstField(line.begin, line.end, format);
    const XelCsvSpan name = XelTrimmed(field.begin, field.end);
    if (name.getLength() == 0) {
      emptyNameFound = 1;
      emptyNameLine = lineNumber;
      continue;
    }
    if (current != nullptr && name.getLength() == currentLength &&
        std::memcmp(name.begin, current, static_cast<std::size_t>(currentLength)) == 0) {
      currentEnd = offset;
      continue;
    }
    copyNameToBuffer(name);
    char* bar = nullptr;
    if (isNewTable(lineBuffer, previousName) && (bar = std::strchr(lineBuffer, '|')) != nullptr) {
      *bar = '\0';
      trim(lineBuffer);
    }
    if (!isNewTable(lineBuffer, previousName)) {
      // Before the first table a name that is empty once cut equals the previous one, and no table gets the line.
      goTo(getStoredName(lineBuffer));
      continue;
    }
    XelEnvBlock<OffsetAndLineNumber> record(env, 1);
    record[0] = {offset, lineNumber};
    previousName = addOffset(lineBuffer, record.get());
    if (isDuplicatedTable(previousName, record.release())) {
      goTo(nullptr);
      return 1;
    }
    goTo(previousName);
    ++numberOfTables;
  }
  goTo(nullptr);
  return 0;
}

bool XelCsvReaderI::isNewTable(const char* name, const char* previousName) const {
  if (isTableSplittingAllowed()) return getOffsetAndLineNumber(name) == nullptr;
  return std::strcmp(name, previousName) != 0;
}

// The end offset goes in first: the record has an owner, the caller or the directory, on every way out.
const char* XelCsvReaderI::addOffset(const char* name, OffsetAndLineNumber* record) {
  XelEnvBlock<char> copy = XelCopyString(env, name);
  tableNames.add(copy.get());
  const char* stored = copy.release();
  if (endOffsets.add(stored, record->offset) != 0) return nullptr;
  tables.add(stored, record);  // the two hold the same names
  return stored;
}

bool XelCsvReaderI::isDuplicatedTable(const char* storedName, OffsetAndLineNumber* record) const noexcept {
  if (storedName != nullptr) return false;
  XelFree(env, record);
  return true;
}
