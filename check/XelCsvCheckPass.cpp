#include "check/XelCsvCheckPass.h"

namespace {

constexpr long ProgressStep = 1L << 20;

}  // namespace

XelCsvCheckPass::XelCsvCheckPass(XelEnv environment, const XelCsvCheckParameters& reading, XelCsvFindings& found)
    : lines(environment), findings(found), bytes(reading, found) {}

void XelCsvCheckPass::run(const char* fileName, const XelCsvProgress& progress) {
  const int error = lines.open(fileName, "rb", XelCsvReach::ManyLines);
  if (error != 0) XelThrowOpenError(error, fileName);
  long told = 0;
  while (!findings.isStopped() && readLine()) {
    checkLine();
    if (progress && lines.getOffset() - told >= ProgressStep) {
      told = lines.getOffset();
      if (!progress(told)) findings.stop();
    }
  }
  XelCsvCheckResult& result = findings.getResult();
  result.bytes = lines.getOffset();
  result.lines = line.number + 1;
  if (findings.isStopped()) return;
  bytes.end(line);
}

// The line before tells where this one stands in the line that people see.
bool XelCsvCheckPass::readLine() {
  const bool isNew = line.number < 0 || line.hasLineFeed();
  const long before = isNew ? 0 : line.before + line.text.getLength();
  const bool isFirst = line.number < 0;
  const long offset = lines.getOffset();
  if (!lines.read()) return false;
  line.text = lines.getLine();
  line.offset = offset;
  ++line.number;
  if (isNew && !isFirst) ++line.line;
  line.before = before;
  return true;
}

void XelCsvCheckPass::checkLine() { bytes.check(line); }
