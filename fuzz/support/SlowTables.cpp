#include "fuzz/support/SlowTables.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

namespace fuzz {

namespace {

model::TableEntry* find(SlowDirectory& directory, const std::string& name) {
  for (model::TableEntry& table : directory.tables) {
    if (table.name == name) return &table;
  }
  return nullptr;
}

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// Adds the key positions of a key line. One-table files have a mark in front of the first column.
void addKeys(SlowZone& zone, const std::vector<std::string>& fields, long mark, long lineNumber,
             const model::TableEntry* entry) {
  for (long field = mark; field < static_cast<long>(fields.size()); ++field) {
    long value = 0;
    if (!slowKeyMark(fields[static_cast<std::size_t>(field)], value)) {
      throw model::Failure("XelOverflowException",
                           "XelCsvReader::XelOverflowException : OVERFLOW while reading field " +
                               std::to_string(field) + "  of line number " + std::to_string(lineNumber) +
                               (entry == nullptr ? "" : " in table " + entry->name) + " as integer");
    }
    if (value == 1) zone.keyPositions.push_back(field - mark);
  }
}

std::size_t indexOf(const SlowFile& file, long offset) {
  std::size_t index = 0;
  while (index < file.getLines().size() && file.getLines()[index].offset < offset) ++index;
  return index;
}

}  // namespace

bool slowKeyMark(const std::string& text, long& value) {
  errno = 0;
  value = std::strtol(text.c_str(), nullptr, 10);
  return errno != ERANGE && value >= INT32_MIN && value <= INT32_MAX;
}

SlowDirectory slowDirectory(const SlowFile& file, const Parameters& parameters) {
  SlowDirectory directory;
  SlowCursor cursor(file, 0);
  long lineNumber = -1;
  long offset = 0;
  std::string previous;
  while (const PhysicalLine* line = cursor.skip(parameters.comment, lineNumber, offset)) {
    std::string name = slowTrim(slowFirstField(line->bytes, parameters.characters));
    if (name.empty()) {
      directory.emptyNameLine = lineNumber;
      continue;
    }
    // The name as it stands may be a table's; what stands before a bar is asked for after it.
    const auto goesOn = [&] {
      if (parameters.isSplit ? find(directory, name) == nullptr : name != previous) return false;
      if (model::TableEntry* table = find(directory, name)) table->endOffset = offset;
      return true;
    };
    if (goesOn()) continue;
    if (holds(name, "|")) {
      name = slowTrim(name.substr(0, name.find('|')));
      if (goesOn()) continue;
    }
    if (find(directory, name) != nullptr) {
      throw model::Failure("XelDuplicatedTableException",
                           "XelCsvReader::XelDuplicatedTableException : Another table with name " + name +
                               " already exists. Table splitting is not specified. ");
    }
    directory.tables.push_back({name, offset, lineNumber, offset});
    previous = name;
  }
  return directory;
}

SlowZone slowZone(const SlowFile& file, const Parameters& parameters, const model::TableEntry* entry) {
  SlowZone zone;
  long offset = entry == nullptr ? 0 : entry->offset;
  long lineNumber = entry == nullptr ? 0 : entry->lineNumber;
  zone.endOffset = entry == nullptr ? file.getSize() : entry->endOffset;
  const long mark = parameters.isMultiTable ? 0 : 1;
  SlowCursor cursor(file, indexOf(file, offset));
  const PhysicalLine* line = cursor.read();
  std::vector<std::string> fields = slowFields(line == nullptr ? "" : line->bytes, parameters.characters);
  zone.numberOfColumns = static_cast<long>(fields.size());
  while (holds(fields[0], "|") && offset <= zone.endOffset) {
    const auto columns = static_cast<long>(fields.size()) - 1;
    if (holds(fields[0], "NAMES")) {
      if (!parameters.isMultiTable) zone.numberOfColumns = columns;
      zone.headings = fields;
      zone.headingLineNumber = lineNumber;
    }
    if (holds(fields[0], "KEYS")) {
      if (!parameters.isMultiTable && !zone.headings.has_value()) zone.numberOfColumns = columns;
      addKeys(zone, fields, mark, lineNumber, entry);
    }
    line = cursor.skip(parameters.comment, lineNumber, offset);
    if (line == nullptr) break;
    fields = slowFields(line->bytes, parameters.characters);
  }
  zone.firstDataOffset = offset;
  zone.firstDataLineNumber = lineNumber;
  if (zone.keyPositions.empty()) {
    for (long column = 1 - mark; column < zone.numberOfColumns; ++column) zone.keyPositions.push_back(column);
  }
  return zone;
}

}  // namespace fuzz
