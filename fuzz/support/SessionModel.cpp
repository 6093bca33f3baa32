#include "fuzz/support/SessionModel.h"

#include <algorithm>

#include "fuzz/support/SlowNumbers.h"

namespace fuzz {

namespace {

constexpr const char* FormatTable = "XELO_CSV_FORMAT";
constexpr const char* SchemaTable = "XELO_DATA_SCHEMA";

[[noreturn]] void raise(const std::string& kind, const std::string& text) {
  throw model::Failure(kind, "XelCsvReader::" + kind + " : " + text);
}

// The text, and " in table A" where the table has a name.
std::string inTable(const TableState* table, const std::string& text, const std::string& joint = " in table ") {
  const bool isNamed = table != nullptr && table->entry.has_value();
  return isNamed ? text + joint + table->entry->name : text;
}

void checkField(const LineState& line, const std::string& operation, long position) {
  if (position >= 0 && position < static_cast<long>(line.line.fields.size())) return;
  const std::string place =
      "Field Not Found at position " + std::to_string(position) + " in line number " + std::to_string(line.line.number);
  raise("XelFieldNotFoundException", inTable(line.table, place, ", in table ") + " while trying " + operation);
}

std::string operationOf(char getter) {
  switch (getter) {
    case 'f':
      return "getFloatByPosition";
    case 'i':
      return "getIntByPosition";
    case 's':
      return "getStringByPosition";
    case 'F':
      return "getFloatByPositionOrDefaultValue";
    case 'I':
      return "getIntByPositionOrDefaultValue";
    case 'S':
      return "getStringByPositionOrDefaultValue";
    default:
      return "emptyFieldByPosition";
  }
}

// The integer getters; the message of the one with a default value has no prefix where the table has a name.
long getInt(const LineState& line, bool hasDefault, long position, const std::string& field) {
  const SlowInt value = slowInt(field);
  if (value.fits) return value.value;
  const bool isNamed = line.table != nullptr && line.table->entry.has_value();
  const std::string prefix = hasDefault && isNamed ? "" : "XelCsvReader::";
  const std::string place = "OVERFLOW while reading field " + std::to_string(position) + "  of line number " +
                            std::to_string(line.line.number);
  throw model::Failure("XelOverflowException",
                       prefix + "XelOverflowException : " + inTable(line.table, place) + " as integer");
}

// Index of a heading, all fields of the heading line being trimmed before; none when there is no such heading.
std::optional<long> findHeading(const TableState& table, const std::string& heading) {
  if (table.heading == nullptr) return std::nullopt;
  std::vector<std::string>& fields = table.heading->line.fields;
  for (std::string& field : fields) field = slowTrim(field);
  const auto found = std::find(fields.begin(), fields.end(), heading);
  if (found == fields.end()) return std::nullopt;
  return found - fields.begin();
}

// The text in front of a key's value: the heading that stands at its position, or "Column 1".
std::string nameKey(const TableState& table, long position) {
  if (table.heading == nullptr || table.heading->line.fields.empty()) return "Column " + std::to_string(position);
  checkField(*table.heading, "getStringByPosition", position);
  std::string& field = table.heading->line.fields[static_cast<std::size_t>(position)];
  field = slowTrim(field);
  return field;
}

}  // namespace

// ---- Readers.

void checkUniqueTable(const ReaderState& reader, const std::string& operation) {
  if (reader.unique != nullptr) return;
  raise(
      "XelIncorrectCsvReaderUseException",
      reader.fileName + " is a multi-Table file. No table have been specified while trying to do a " + operation + ".");
}

void checkMultiTable(const ReaderState& reader, const std::string& operation) {
  if (reader.unique == nullptr) return;
  raise(
      "XelIncorrectCsvReaderUseException",
      reader.fileName + " is a unique-Table file. cann't use this member function " + operation + " with this reader.");
}

TableState* getUniqueTable(const ReaderState& reader) {
  if (reader.unique != nullptr) return reader.unique;
  raise("XelIncorrectCsvReaderUseException",
        reader.fileName + " is a multi-Table file. There is no reader for unique table.");
}

long getNumberOfReservedTables(const ReaderState& reader) {
  const std::vector<model::TableEntry>& tables = reader.directory.tables;
  std::size_t reserved = 0;
  for (const char* name : {FormatTable, SchemaTable}) {
    if (reserved < tables.size() && tables[reserved].name == name) ++reserved;
  }
  return static_cast<long>(reserved);
}

long getNumberOfTables(const ReaderState& reader) {
  if (reader.unique != nullptr) return 1;
  return static_cast<long>(reader.directory.tables.size()) - getNumberOfReservedTables(reader);
}

bool isTableThere(const ReaderState& reader, const std::string& tableName) {
  for (const model::TableEntry& table : reader.directory.tables) {
    if (table.name == tableName) return true;
  }
  return false;
}

// ---- Tables.

model::Line getLineByNumber(TableState& table, long number) {
  return table.index != nullptr ? table.index->getLineByNumber(number) : table.table->getLineByNumber(number);
}

model::Line getLineByKey(TableState& table, const std::vector<std::optional<std::string>>& values, bool isNamed) {
  const std::size_t keys = table.zone.keyPositions.size();
  if (values.size() < keys) {
    const std::string text = "Not enought keys, the number of keys is : " + std::to_string(keys);
    raise("XelLineNotFoundException", isNamed ? inTable(&table, text, " for table ") : text);
  }
  std::string key;
  for (std::size_t position = 0; position < keys; ++position) {
    if (!values[position].has_value()) {
      const std::string text = inTable(&table, "No line having key ");
      raise("XelLineNotFoundException", text + (table.index != nullptr && !table.entry.has_value() ? " ." : "."));
    }
    key += (position > 0 ? "-" : "") + *values[position];
  }
  return table.index != nullptr ? table.index->getLineByKey(key) : table.table->getLineByKey(key);
}

long getNumberOfItems(TableState& table) {
  return table.index != nullptr ? table.index->getNumberOfItems() : table.table->getNumberOfItems();
}

long getPosition(const TableState& table, const std::string& heading) {
  if (table.heading == nullptr) {
    const std::string text = "No header line for columns in ";
    raise("XelColumnHeaderNotFoundException",
          text + (table.entry.has_value() ? "table " + table.entry->name : "file " + table.reader->fileName) + " ");
  }
  const std::optional<long> found = findHeading(table, heading);
  if (!found.has_value()) {
    raise("XelColumnHeaderNotFoundException", inTable(&table, "Heading " + heading + " not found"));
  }
  return table.reader->parameters.isMultiTable ? *found : *found - 1;
}

bool isHeadingThere(const TableState& table, const std::string& heading) {
  return findHeading(table, heading).has_value();
}

std::string printKeys(const TableState& table) {
  std::string printed;
  const std::vector<long>& positions = table.zone.keyPositions;
  for (std::size_t key = 0; key < positions.size(); ++key) {
    printed += "key " + std::to_string(key) + " ----> " + nameKey(table, positions[key]) + "\n";
  }
  return printed;
}

// ---- Lines.

std::string getField(LineState& line, char getter, long position) {
  checkField(line, operationOf(getter), position);
  std::string& field = line.line.fields[static_cast<std::size_t>(position)];
  const bool wasEmpty = field.empty();
  if (getter == 'f' || getter == 'F' || getter == 's' || getter == 'S') field = slowTrim(field);
  switch (getter) {
    case 'f':
      return shownFloat(slowFloat(field));
    case 'F':
      return shownFloat(wasEmpty ? FloatDefault : slowFloatOrUnbounded(field));
    case 'i':
      return std::to_string(getInt(line, false, position, field));
    case 'I':
      return std::to_string(wasEmpty ? IntDefault : getInt(line, true, position, field));
    case 's':
      return field;
    case 'S':
      return wasEmpty ? "the default" : "the field " + field;
    default:
      return wasEmpty ? "empty" : "not empty";
  }
}

std::string printValueOfKeys(LineState& line) {
  if (line.line.fields.empty()) return "Empty Line!\n";
  const std::vector<long>& positions = line.table->zone.keyPositions;
  if (positions.empty()) return "There is no key for line number " + std::to_string(line.line.number) + "\n";
  std::string printed;
  for (std::size_t key = 0; key < positions.size(); ++key) {
    printed += "Key " + std::to_string(key) + " (" + nameKey(*line.table, positions[key]) + ") = ";
    const auto position = static_cast<std::size_t>(positions[key]);
    if (position < line.line.fields.size()) printed += line.line.fields[position];
    printed += "\n";
  }
  return printed;
}

// ---- The session.

ReaderState* SessionModel::makeReader(bool isCached) {
  auto reader = std::make_unique<ReaderState>();
  reader->parameters = parameters;
  reader->fileName = name;
  reader->isCached = isCached;
  reader->file = &bytes;
  if (parameters.isMultiTable) {
    reader->directory = slowDirectory(bytes, parameters);
  } else {
    reader->unique = makeTable(reader.get(), nullptr, isCached, Asked::OfReader);
  }
  readers.push_back(std::move(reader));
  return readers.back().get();
}

TableState* SessionModel::makeTable(ReaderState* reader, const model::TableEntry* entry, bool isCached, Asked asked) {
  auto table = std::make_unique<TableState>();
  table->reader = reader;
  if (entry != nullptr) table->entry = *entry;
  table->isCached = isCached;
  table->zone = slowZone(bytes, parameters, entry);
  table->table = std::make_shared<model::Table>(name, settingsOf(parameters), entry);
  if (isCached) table->index = std::make_shared<model::Index>(*table->table);
  if (isCached && entry != nullptr && table->index->getDuplicatedKey().has_value()) {
    const std::string text = "Another line with key  " + *table->index->getDuplicatedKey() + " already exists ";
    raise("XelDuplicatedLineException",
          text + (asked == Asked::OfReader ? "In Table " + entry->name + " ." : "in table " + entry->name));
  }
  if (table->zone.headings.has_value()) {
    table->heading = makeLine({table->zone.headingLineNumber, *table->zone.headings}, table.get());
  }
  tables.push_back(std::move(table));
  return tables.back().get();
}

TableState* SessionModel::getTableByName(ReaderState* reader, const std::string& tableName, Asked asked) {
  if (asked == Asked::OfReader) checkMultiTable(*reader, "getTableByName");
  for (const model::TableEntry& entry : reader->directory.tables) {
    if (entry.name == tableName) return makeTable(reader, &entry, reader->isCached, asked);
  }
  raise("XelTableNotFoundException", "No Table having this name " + tableName + ".");
}

TableState* SessionModel::getTableByNumber(ReaderState* reader, long number) {
  checkMultiTable(*reader, "getTableByNumber");
  const auto count = static_cast<long>(reader->directory.tables.size());
  if (number < 0 || number >= count) {
    raise("XelTableNotFoundException",
          "No Table number " + std::to_string(number) + ".The number of tables is " + std::to_string(count) + ".");
  }
  return getTableByName(reader, reader->directory.tables[static_cast<std::size_t>(number)].name, Asked::OfReader);
}

LineState* SessionModel::makeLine(const model::Line& line, TableState* table) {
  lines.push_back(std::make_unique<LineState>());
  lines.back()->line = line;
  lines.back()->table = table;
  return lines.back().get();
}

TableState* SessionModel::copyTable(TableState* other, bool isCached) {
  const model::TableEntry* entry = other->entry.has_value() ? &*other->entry : nullptr;
  TableState* copied = makeTable(other->reader, entry, isCached, Asked::OfTable);
  // The copy has a heading line in any case, one without fields when the source has none.
  model::Line heading;
  if (other->heading != nullptr) heading = other->heading->line;
  copied->heading = makeLine(heading, copied);
  return copied;
}

void SessionModel::replaceTable(TableState* target, TableState* copied) {
  if (target->heading != nullptr) target->heading->isAlive = false;
  target->reader = copied->reader;
  target->entry = copied->entry;
  target->table = copied->table;
  target->index = copied->index;
  target->zone = copied->zone;
  target->heading = copied->heading;
  target->heading->table = target;
  ++target->version;
}

}  // namespace fuzz
