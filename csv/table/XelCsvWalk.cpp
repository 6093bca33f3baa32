#include "csv/table/XelCsvWalk.h"

XelCsvWalk::XelCsvWalk(XelCsvTableReaderI* walked, const char* mode)
    : table(walked),
      reader(table->getReader()),
      formatter(XelGetPaddedFormatter(reader->getFormat())),
      file(table->getEnv()),
      line(table->getEnv(), table) {
  table->open(file, mode, XelCsvReach::ManyLines);
  buffer = XelEnvBlock<char>(table->getEnv(), XelLineSize + XelTextPadding);
  fields = XelEnvBlock<char*>(table->getEnv(), XelLineSize + XelFieldsPadding);
}

void XelCsvWalk::readLine(long lineNumber) {
  const XelCsvSpan ahead = file.getAhead();
  if (ahead.getLength() > 0 && takePlainLine(ahead, lineNumber)) return;
  file.read();
  formatLine(lineNumber);
}

bool XelCsvWalk::skipCommentAndEmptyLines(long& lineNumber, long& offset) {
  return file.skipCommentAndEmptyLines(reader->getComment(), lineNumber, offset);
}

void XelCsvWalk::formatLine(long lineNumber) noexcept {
  const XelCsvSpan raw = file.getLine();
  // A line that could not be read has no padding behind it.
  const bool isThere = raw.begin != nullptr;
  use(isThere ? formatLine(raw) : XelFormatLine(raw.begin, raw.end, buffer.get(), reader->getFormat(), fields.get()),
      lineNumber);
}

bool XelCsvWalk::formatAgain(long lineNumber) noexcept {
  if (!table->formatAgain(buffer.get(), fields.get())) return false;
  line.adoptFields(buffer.get(), fields.get(), lineNumber, table);
  return true;
}
