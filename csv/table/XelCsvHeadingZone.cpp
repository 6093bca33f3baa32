#include <cerrno>
#include <cstring>

#include "csv/errors/XelCsvOpen.h"
#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCsvTableReaderI.h"

namespace {

constexpr long MarkedAsKey = 1;

// Whether the first field of a formatted line, which its terminator ends, holds a word.
bool hasWord(const char* line, const char* word) { return std::strstr(line, word) != nullptr; }

}  // namespace

void XelCsvTableReaderI::readHeadingZone(const OffsetAndLineNumber* start) {
  long offset = 0;
  long lineNumber = 0;
  if (reader->isMultiTable() && start != nullptr) {
    offset = start->offset;
    lineNumber = start->lineNumber;
    endOffset = reader->getEndOffset(nameOfTable);
  } else {
    endOffset = file.goToEnd();
    file.expectSize(endOffset);
  }
  if (!file.seek(offset)) XelCsvErrors::corruptedTable(getSite());

  const XelEnvBlock<char> line(env, XelLineSize);
  line[0] = '\0';  // what the line is when it cannot be read
  if (file.read()) {
    formatLine(file.getLine(), line.get(), nullptr);
  } else {
    formatLine(line.get());
  }
  // A file without a size has no region to read; what a directory says is left to the creator.
  if (endOffset < 0 && !XelHasOpenErrorText(errno)) XelCsvErrors::corruptedTable(getSite());
  numberOfColumns = numberOfFields;

  while (hasWord(line.get(), "|") && offset <= endOffset) {
    // Kept: the words count anywhere in the first field, in the table's name too, and one line may hold both (tests:
    // HeadingZone.WordsCountAnywhereInTheFirstField, HeadingZone.OneLineMayBeHeadingAndKeyLine).
    const bool isHeadingLine = hasWord(line.get(), "NAMES");
    const bool isKeyLine = hasWord(line.get(), "KEYS");
    if (isHeadingLine) addHeadingLine(line.get(), lineNumber);
    if (isKeyLine) addKeyLine(line.get(), lineNumber);
    // Kept: when the line ended the file without a line feed, offset and number stay its own, so that it is the table's
    // one data line too (test: HeadingZone.HeadingLineThatEndsTheFileWithoutLineFeedIsADataLineToo).
    if (skipCommentAndEmptyLines(file, line.get(), reader->getComment(), &lineNumber, &offset) == 0) break;
    formatLine(line.get());
  }
  firstDataOffset = offset;
  firstDataLineNumber = lineNumber;

  // Kept: a key line without a single 1 is as good as none (test: HeadingZone.KeyLineOfZerosMakesEveryColumnAKey).
  if (keyPositions.getSize() == 0) {
    for (long column = reader->isMultiTable() ? 1 : 0; column < numberOfColumns; ++column) keyPositions.add(column);
  }
}

void XelCsvTableReaderI::addHeadingLine(const char* line, long lineNumber) {
  XelEnvOwner<XelCsvLineI> record = XelNew<XelCsvLineI>(env, line, this, lineNumber);
  if (!reader->isMultiTable()) numberOfColumns = numberOfFields - 1;
  delete firstLine;
  firstLine = record.release();
}

// Field j of the line belongs to column j, and to column j - 1 in a one-table file, whose first field is the marker.
void XelCsvTableReaderI::addKeyLine(const char* line, long lineNumber) {
  const XelEnvOwner<XelCsvLineI> record = XelNew<XelCsvLineI>(env, line, this, lineNumber);
  const long marker = reader->isMultiTable() ? 0 : 1;
  if (marker == 1 && firstLine == nullptr) numberOfColumns = numberOfFields - 1;
  for (long field = marker; field < numberOfFields; ++field) {
    long overflow = 0;
    const long value = reader->parseInt(record->getFields()[field], overflow);
    if (overflow != 0) XelCsvErrors::overflow(getSite(), field, lineNumber);
    if (value == MarkedAsKey) keyPositions.add(field - marker);
  }
}
