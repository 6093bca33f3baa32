// What all groups of checks share.
#pragma once

#include <string>

#include "check/XelCsvFindings.h"
#include "csv/line/XelCsvFormat.h"

struct XelCsvCheckContext {
  XelCsvCheckContext(XelEnv environment, const std::string& file, const XelCsvCheckParameters& reading,
                     XelCsvFindings& found)
      : env(environment),
        fileName(file),
        parameters(reading),
        format(reading.separators.c_str(), reading.decimal, reading.quote),
        findings(found) {}

  // Field of a data line, and of a heading or key line, with which the columns begin: a field of a data line is under the
  // field of the heading line that is getMarkerFields() further to the right.
  long getFirstColumn() const noexcept { return parameters.isMultiTable ? 1 : 0; }
  long getMarkerFields() const noexcept { return parameters.isMultiTable ? 0 : 1; }

  // Whether the lines of a table may be spread; a one-table file has none to spread.
  bool isSplit() const noexcept { return parameters.isMultiTable && parameters.allowTableSplitting; }

  XelEnv env;
  const std::string& fileName;
  const XelCsvCheckParameters& parameters;
  const XelCsvFormat format;
  XelCsvFindings& findings;
};
