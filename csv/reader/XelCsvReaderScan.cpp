#include <cstring>

#include "csv/line/XelCsvBeginning.h"
#include "csv/line/XelCsvStretch.h"
#include "csv/reader/XelCsvReaderI.h"

namespace {

// The first of the lines that follow which does not begin so; their number when all do.
long countRun(const XelCsvStretch& stretch, long lines, const XelCsvBeginning& beginning) noexcept {
  const long readable = stretch.countReadable(lines, beginning.getReach());
  long index = 0;
  while (index < readable && beginning.isAt(stretch.getLine(index))) ++index;
  return index;
}

// Takes the first field of a line with what ends it, so that lines which begin with the same bytes have the same first
// field and are neither comments nor empty, as this one is neither.
void setToField(XelCsvBeginning& beginning, const XelCsvSpan& line, const XelCsvSpan& field) noexcept {
  const bool isWhole = field.end != line.end && !XelIsEmptyLine(field.begin, field.end + 1);
  if (isWhole) {
    beginning.set(field.begin, field.end + 1);
  } else {
    beginning.clear();
  }
}

}  // namespace

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

// The end offset of the table whose lines go by is kept here and stored when another table begins. Lines whose first
// field has the very bytes of the line before, which are most, continue its table and are counted without being read.
long XelCsvReaderI::stockTableNamesAndOffsets() {
  long lineNumber = -1;
  long offset = 0;
  const char* previousName = "";
  const char* current = nullptr;  // the table that the lines belong to, none at first
  long currentLength = 0;
  long currentEnd = 0;
  XelCsvBeginning beginning;  // of lines that continue the table, as far as is known
  XelCsvStretch stretch(file);
  const auto goTo = [&](const char* name) {
    if (current != nullptr) endOffsets.move(current, 0, currentEnd);
    current = name;
    currentLength = name == nullptr ? 0 : static_cast<long>(std::strlen(name));
    currentEnd = offset;
    beginning.clear();
  };
  const auto countLinesOfTable = [&] {
    if (beginning.isEmpty()) return;
    for (long lines = stretch.find(); lines > 0; lines = stretch.find()) {
      const long run = countRun(stretch, lines, beginning);
      if (run == 0) return;
      lineNumber += run;
      currentEnd = stretch.getOffset(run - 1);
      stretch.goOn(run);
    }
  };
  while (countLinesOfTable(), file.skipCommentAndEmptyLines(comment, lineNumber, offset)) {
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
      setToField(beginning, line, field);
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
