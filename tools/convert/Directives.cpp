#include "tools/convert/Directives.h"

#include <vector>

namespace xeltools {

namespace {

// The first data line of a table, or nothing when there is no such table or line.
std::vector<std::string> readFirstLine(DataFile& file, const std::string& name) {
  std::vector<std::string> fields;
  if (!file.isMultiTable() || !file.getReader().isTableExists(name.c_str())) return fields;
  Table(file, name).forEach([&](const Line& line) {
    for (long position = 0; position < line.getNumberOfFields(); ++position) {
      fields.emplace_back(line.getField(position));
    }
    return false;
  });
  return fields;
}

}  // namespace

Directives readDirectives(DataFile& file) {
  std::vector<std::string> format = readFirstLine(file, FormatTable);
  std::vector<std::string> schema = readFirstLine(file, SchemaTable);
  format.resize(2);
  schema.resize(3);
  return {format[1], schema[1], schema[2]};
}

}  // namespace xeltools
