#include "check/XelCsvLineAgain.h"

XelCsvCheckedLine XelCsvLineAgain::read(const XelCsvLineMark& mark) {
  static const char None[XelTextPadding]{};  // no bytes, with the padding that formatters want
  if (!isOpen) {
    const int error = lines.open(context.fileName.c_str(), "rb", XelCsvReach::OneLine);
    if (error != 0) XelThrowOpenError(error, context.fileName.c_str());
    isOpen = true;
  }
  XelCsvCheckedLine line;
  static_cast<XelCsvLineMark&>(line) = mark;
  line.text = lines.seek(mark.offset) && lines.read() ? lines.getLine() : XelCsvSpan{None, None};
  return line;
}
