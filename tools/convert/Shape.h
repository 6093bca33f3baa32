// What a table is like as a whole: what a conversion has to know before its first line.
#pragma once

#include <string>
#include <vector>

#include "tools/DataFile.h"

namespace xeltools {

enum class ColumnType { Text, Integer, Real };

struct ShapedColumn {
  long position;     // of its field in a line
  std::string name;  // no other column has it, not even in capitals
  ColumnType type = ColumnType::Text;
};

struct TableShape {
  std::string name;  // of the table; that of the file without folder and ending for a file of one table
  std::vector<ShapedColumn> columns;
  std::vector<std::string> keys;  // names of the key columns, in order; none without a key line
  long lines = 0;
  bool isUtf8 = true;  // every field
};

// Reads the table once. A column is of numbers when every field of it that is not empty is one that keeps its text: an
// integer of 64 bits or a number of up to 15 digits, written plainly. With asText every column is of text.
TableShape readShape(DataFile& file, Table& table, bool asText);

// "integer", "real" or "text".
const char* getTypeName(ColumnType type);

// The name of a file without its folder and what stands behind the last point.
std::string getStem(const std::string& file);

}  // namespace xeltools
