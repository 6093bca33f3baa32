#include "csv/table/XelCsvScan.h"

#include <algorithm>
#include <cstring>

#include "csv/line/XelCsvLineI.h"

namespace {

// Keys in one piece begin with the first column and end with the last one of them.
bool areSideBySide(const XelCsvTableReaderI& table) noexcept {
  const long keys = table.getNumberOfKeys();
  for (long key = 1; key < keys; ++key) {
    if (table.getKeyPosition(key) != table.getKeyPosition(0) + key) return false;
  }
  return keys > 0;
}

bool hasSpaceAtAnEnd(const XelCsvSpan& text) noexcept {
  return text.begin != text.end && (*text.begin == ' ' || text.end[-1] == ' ');
}

}  // namespace

XelCsvScan::XelCsvScan(XelCsvTableReaderI* scanned, const char* mode)
    : table(scanned),
      padded(XelGetPaddedFormatter(table->getReader()->getFormat())),
      own(table->getEnv()),
      lines(own),
      offset(table->getFirstDataOffset()),
      lineNumber(table->getFirstDataLineNumber() - 1),
      isKeyInOnePiece(areSideBySide(*table)) {
  table->openAt(own, mode, XelCsvReach::ManyLines, offset);
}

XelCsvScan::XelCsvScan(XelCsvTableReaderI* scanned, XelCsvLines& opened) noexcept
    : table(scanned),
      padded(XelGetPaddedFormatter(table->getReader()->getFormat())),
      own(table->getEnv()),
      lines(opened),
      offset(table->getFirstDataOffset()),
      lineNumber(table->getFirstDataLineNumber() - 1),
      isKeyInOnePiece(areSideBySide(*table)) {}

bool XelCsvScan::next() { return lines.skipCommentAndEmptyLines(table->getReader()->getComment(), lineNumber, offset); }

void XelCsvScan::format() {
  if (text.get() == nullptr) text = XelEnvBlock<char>(table->getEnv(), XelLineSize);
  if (fields.get() == nullptr) fields = XelEnvBlock<char*>(table->getEnv(), XelLineSize);
  const XelCsvSpan raw = lines.getLine();
  // The text goes into a record, whose block has no padding; most lines leave enough of it.
  const bool leavesPadding = raw.begin != nullptr && raw.getLength() < XelLineSize - XelTextPadding;
  XelPaddedFormatter* formatter = leavesPadding ? padded : XelFormatLine;
  table->setFormatted(formatter(raw.begin, raw.end, text.get(), table->getReader()->getFormat(), fields.get()));
}

bool XelCsvScan::goToPlainLine() noexcept {
  XelCsvSpan ahead = lines.getAhead();
  // As in format(): the text's block has no padding, but for lines that leave enough of it.
  ahead.end = std::min(ahead.end, ahead.begin + (XelLineSize - XelTextPadding));
  const bool mayBeSkipped = ahead.getLength() == 0 || *ahead.begin == table->getReader()->getComment() ||
                            static_cast<unsigned char>(*ahead.begin) <= ' ';
  const long begin = lines.getOffset();
  if (mayBeSkipped || begin > table->getEndOffset()) return false;
  const XelFormattedLine formatted =
      padded(ahead.begin, ahead.end, text.get(), table->getReader()->getFormat(), fields.get());
  if (!lines.takeLine(ahead, formatted.stop)) return false;
  table->setFormatted(formatted);
  offset = begin;
  ++lineNumber;
  return true;
}

bool XelCsvScan::formatAgain() noexcept { return table->formatAgain(text.get(), fields.get()); }

XelCsvSpan XelCsvScan::getTrimmed(long position) const noexcept {
  const XelCsvSpan field = getField(position);
  return XelTrimmed(field.begin, field.end);
}

bool XelCsvScan::isOwn() const noexcept { return table->isOwnName(getTrimmed(0)); }

void XelCsvScan::checkNumberOfKeys() const {
  const long keys = table->getNumberOfKeys();
  const long count = table->getNumberOfFields();
  if (count < keys) XelCsvErrors::tooFewFieldsForKeys(table->getSite(), keys, count, lineNumber);
}

XelCsvSpan XelCsvScan::getKeyValue(long key) const {
  const long position = table->getKeyPosition(key);
  table->checkKeyField(position, table->getNumberOfFields(), lineNumber);
  return getTrimmed(position);
}

XelCsvSpan XelCsvScan::composeKey(XelCsvKey& key) {
  XelCsvSpan joined;
  if (isKeyInOnePiece && joinKey(joined)) return joined;
  key.clear();
  for (long index = 0; index < table->getNumberOfKeys(); ++index) key.add(getKeyValue(index));
  return key.getText();
}

// Fields lie back to back: a "-" in the place of the terminator between them is all that it takes.
bool XelCsvScan::joinKey(XelCsvSpan& key) const noexcept {
  const long first = table->getKeyPosition(0);
  const long last = first + table->getNumberOfKeys() - 1;
  if (last >= table->getNumberOfFields()) return false;
  for (long position = first; position <= last; ++position) {
    if (hasSpaceAtAnEnd(getField(position))) return false;
  }
  key = {fields[first], getField(last).end};
  for (long position = first + 1; position <= last; ++position) fields[position][-1] = '-';
  return true;
}

bool XelCsvScan::hasKey(const char* key) const {
  const long keys = table->getNumberOfKeys();
  for (long index = 0; index < keys; ++index) {
    table->checkKeyField(table->getKeyPosition(index), table->getNumberOfFields(), lineNumber);
  }
  for (long index = 0; index < keys; ++index) {
    if (index > 0 && *key++ != '-') return false;
    const XelCsvSpan value = getTrimmed(table->getKeyPosition(index));
    const auto length = static_cast<std::size_t>(value.getLength());
    if (std::strncmp(key, value.begin, length) != 0) return false;
    key += length;
  }
  return *key == '\0';
}

XelCsvLineI* XelCsvScan::makeLine(bool named, bool keyed) {
  XelEnvOwner<XelCsvLineI> line =
      XelNew<XelCsvLineI>(table->getEnv(), std::move(text), fields.get(), table, lineNumber);
  if (named) line->trimField(0);
  if (keyed) {
    for (long index = 0; index < table->getNumberOfKeys(); ++index) line->trimField(table->getKeyPosition(index));
  }
  return line.release();
}
