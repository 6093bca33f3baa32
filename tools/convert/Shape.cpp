#include "tools/convert/Shape.h"

#include <algorithm>
#include <set>

#include "tools/text/Number.h"
#include "tools/text/Utf8.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

// What is known of a column so far.
struct Tally {
  bool mayBeInteger = true;
  bool mayBeReal = true;
  bool hasEmpty = false;
  bool hasValue = false;

  void add(std::string_view field) {
    if (field.empty()) {
      hasEmpty = true;
      return;
    }
    hasValue = true;
    mayBeInteger = mayBeInteger && isPlainInteger(field);
    mayBeReal = mayBeReal && isPlainReal(field);
  }

  ColumnType getType(bool isKey) const {
    if (!hasValue || (isKey && hasEmpty)) return ColumnType::Text;
    if (mayBeInteger) return ColumnType::Integer;
    return mayBeReal ? ColumnType::Real : ColumnType::Text;
  }
};

// The name, with a number behind it when another column has it already.
std::string makeUnique(const std::string& name, std::set<std::string>& taken) {
  std::string unique = name;
  for (int number = 2; !taken.insert(toLower(unique)).second; ++number)
    unique = name + " (" + std::to_string(number) + ")";
  return unique;
}

}  // namespace

TableShape readShape(DataFile& file, Table& table, bool asText) {
  TableShape shape;
  shape.name = table.getName().empty() ? getStem(file.getName()) : table.getName();
  std::vector<Tally> tallies(table.getColumns().size());
  const long first = table.getFirstPosition();
  table.forEach([&](const Line& line) {
    ++shape.lines;
    const long columns = std::max(static_cast<long>(tallies.size()), line.getNumberOfFields() - first);
    tallies.resize(static_cast<std::size_t>(columns));
    for (long column = 0; column < columns; ++column) {
      const std::string_view field = line.getFieldOrNothing(first + column);
      tallies[static_cast<std::size_t>(column)].add(field);
      shape.isUtf8 = shape.isUtf8 && isUtf8(field);
    }
    return true;
  });
  std::set<std::string> taken;
  for (std::size_t column = 0; column < tallies.size(); ++column) {
    const long position = first + static_cast<long>(column);
    const std::string name = makeUnique(table.getColumnName(position), taken);
    const auto& keys = table.getKeys();
    const bool isKey = table.hasKeyLine() && std::find(keys.begin(), keys.end(), position) != keys.end();
    shape.columns.push_back({position, name, asText ? ColumnType::Text : tallies[column].getType(isKey)});
    shape.isUtf8 = shape.isUtf8 && isUtf8(name);
  }
  if (!table.hasKeyLine()) return shape;
  for (const long key : table.getKeys()) {
    if (key < first) continue;  // the table's name, which is the same in every line
    if (key - first >= static_cast<long>(shape.columns.size())) {
      shape.keys.clear();  // no line has the field, so the other columns alone are no key
      return shape;
    }
    const std::string& name = shape.columns[static_cast<std::size_t>(key - first)].name;
    if (std::find(shape.keys.begin(), shape.keys.end(), name) == shape.keys.end()) shape.keys.push_back(name);
  }
  return shape;
}

const char* getTypeName(ColumnType type) {
  if (type == ColumnType::Integer) return "integer";
  return type == ColumnType::Real ? "real" : "text";
}

std::string getStem(const std::string& file) {
  const std::string name = file.substr(file.rfind('/') + 1);
  const std::size_t point = name.rfind('.');
  return point == std::string::npos || point == 0 ? name : name.substr(0, point);
}

}  // namespace xeltools
