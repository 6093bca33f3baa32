#include "csv/table/XelCsvWalk.h"

XelCsvWalk::XelCsvWalk(XelCsvTableReaderI* walked, const char* mode)
    : table(walked), file(table->getEnv()), line(table->getEnv(), table) {
  table->open(file, mode, XelCsvReach::ManyLines);
  buffer = XelEnvBlock<char>(table->getEnv(), XelLineSize);
  fields = XelEnvBlock<char*>(table->getEnv(), XelLineSize);
}

void XelCsvWalk::readLine(long lineNumber) {
  file.read();
  formatLine(lineNumber);
}

bool XelCsvWalk::skipCommentAndEmptyLines(long& lineNumber, long& offset) {
  return file.skipCommentAndEmptyLines(table->getReader()->getComment(), lineNumber, offset);
}

void XelCsvWalk::formatLine(long lineNumber) noexcept {
  table->formatLine(file.getLine(), buffer.get(), fields.get());
  line.adoptFields(buffer.get(), fields.get(), lineNumber, table);
}

bool XelCsvWalk::formatAgain(long lineNumber) noexcept {
  if (!table->formatAgain(buffer.get(), fields.get())) return false;
  line.adoptFields(buffer.get(), fields.get(), lineNumber, table);
  return true;
}
