#include "check/XelCsvCodes.h"

namespace {

std::vector<XelCsvCheckCode> describeAll() {
  XelCsvCatalogue catalogue;
  XelDescribeByteCodes(catalogue);
  XelDescribeQuoteCodes(catalogue);
  XelDescribeTableCodes(catalogue);
  XelDescribeHeadingCodes(catalogue);
  XelDescribeKeyCodes(catalogue);
  XelDescribeColumnCodes(catalogue);
  return catalogue.take();
}

}  // namespace

XelCsvCheckParameters XelReadAsOneTable() { return {}; }

XelCsvCheckParameters XelReadAsManyTables() {
  XelCsvCheckParameters parameters;
  parameters.isMultiTable = true;
  return parameters;
}

XelCsvCheckParameters XelReadAsSplitTables() {
  XelCsvCheckParameters parameters = XelReadAsManyTables();
  parameters.allowTableSplitting = true;
  return parameters;
}

const std::vector<XelCsvCheckCode>& XelGetCheckCodes() {
  static const std::vector<XelCsvCheckCode> codes = describeAll();
  return codes;
}

const XelCsvCheckCode* XelFindCheckCode(std::string_view code) {
  for (const XelCsvCheckCode& entry : XelGetCheckCodes()) {
    if (code == entry.code) return &entry;
  }
  return nullptr;
}
