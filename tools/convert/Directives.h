// What the directive tables of a file say.
#pragma once

#include <string>

#include "tools/DataFile.h"

namespace xeltools {

// Names of the two tables.
constexpr const char* FormatTable = "XELO_CSV_FORMAT";
constexpr const char* SchemaTable = "XELO_DATA_SCHEMA";

// Texts of their fields; empty where they say nothing.
struct Directives {
  std::string csvFormat;
  std::string requiredBy;
  std::string fileVersion;

  bool areThere() const { return !csvFormat.empty() || !requiredBy.empty() || !fileVersion.empty(); }
};

Directives readDirectives(DataFile& file);

}  // namespace xeltools
