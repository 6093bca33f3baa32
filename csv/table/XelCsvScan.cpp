#include "csv/table/XelCsvScan.h"

#include <cstring>

#include "csv/line/XelCsvLineI.h"

XelCsvScan::XelCsvScan(XelCsvTableReaderI* scanned, const char* mode)
    : table(scanned),
      padded(XelGetPaddedFormatter(table->getReader()->getFormat())),
      own(table->getEnv()),
      lines(own),
      offset(table->getFirstDataOffset()),
      lineNumber(table->getFirstDataLineNumber() - 1) {
  table->openAt(own, mode, XelCsvReach::ManyLines, offset);
}

XelCsvScan::XelCsvScan(XelCsvTableReaderI* scanned, XelCsvLines& opened) noexcept
    : table(scanned),
      padded(XelGetPaddedFormatter(table->getReader()->getFormat())),
      own(table->getEnv()),
      lines(opened),
      offset(table->getFirstDataOffset()),
      lineNumber(table->getFirstDataLineNumber() - 1) {}

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

bool XelCsvScan::formatAgain() noexcept { return table->formatAgain(text.get(), fields.get()); }

XelCsvSpan XelCsvScan::getTrimmed(long position) const noexcept {
  const bool isLast = position + 1 == table->getNumberOfFields();
  const char* end = isLast ? text.get() + table->getLineLength() : fields[position + 1];
  return XelTrimmed(fields[position], end - 1);
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

XelCsvSpan XelCsvScan::composeKey(XelCsvKey& key) const {
  const long keys = table->getNumberOfKeys();
  if (keys == 1) return getKeyValue(0);
  key.clear();
  for (long index = 0; index < keys; ++index) key.add(getKeyValue(index));
  return key.getText();
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
