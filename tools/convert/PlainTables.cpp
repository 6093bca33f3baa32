#include "tools/convert/PlainTables.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "tools/Errors.h"
#include "tools/convert/PlainCsv.h"
#include "tools/convert/Shape.h"
#include "tools/text/Escape.h"
#include "tools/text/Number.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

constexpr std::size_t LongestLine = 9998;  // that the library reads as one, without its end

const char* const Manifest = "tables.json";

PlainTables readManifest(const std::string& folder, const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  const nlohmann::json manifest = nlohmann::json::parse(stream, nullptr, false);
  const auto fail = [&](const std::string& what) {
    throw UserError(makePrintable(file) + ": " + what + "; xelcsv convert --to dir writes one as an example");
  };
  const auto getText = [](const nlohmann::json& object, const char* name) {
    const auto member = object.find(name);
    return member != object.end() && member->is_string() ? member->get<std::string>() : std::string();
  };
  if (!manifest.is_object()) fail("is no object of JSON");
  PlainTables tables;
  tables.directives = {getText(manifest, "csvFormat"), getText(manifest, "requiredBy"),
                       getText(manifest, "fileVersion")};
  const auto list = manifest.find("tables");
  if (list == manifest.end() || !list->is_array()) fail(R"(has no array "tables")");
  for (const nlohmann::json& entry : *list) {
    if (!entry.is_object()) fail("holds a table that is no object");
    PlainTable table;
    table.name = getText(entry, "name");
    table.file = folder + "/" + getText(entry, "file");
    const auto keys = entry.find("keys");
    if (table.name.empty() || getText(entry, "file").empty()) fail(R"(holds a table without "name" or "file")");
    if (keys != entry.end() && keys->is_array()) {
      for (const nlohmann::json& key : *keys) table.keys.push_back(key.is_string() ? key.get<std::string>() : "");
    }
    tables.tables.push_back(table);
  }
  return tables;
}

// Writes the tables one after the other.
class Writer {
 public:
  Writer(Output& target, const ReaderParameters& readerParameters) : output(target), parameters(readerParameters) {}

  void writeDirectives(const Directives& directives) {
    if (!directives.csvFormat.empty()) writeLine({FormatTable, directives.csvFormat});
    if (!directives.requiredBy.empty() || !directives.fileVersion.empty()) {
      writeLine({SchemaTable, directives.requiredBy, directives.fileVersion});
    }
    if (directives.areThere()) output.writeLine("");
  }

  void writeTable(const PlainTable& table, char plainSeparator) {
    checkName(table);
    PlainCsvReader reader(table.file, plainSeparator);
    std::vector<std::string> fields;
    if (!reader.read(fields) || fields.empty()) {
      throw UserError(makePrintable(table.file) + ": has no headings; its first line must hold them");
    }
    place = makePrintable(table.file) + ", line 1";
    const std::vector<std::string> headings = fields;
    fields.insert(fields.begin(), table.name + "|NAMES");
    writeLine(fields);
    writeKeys(table, headings);
    while (reader.read(fields)) {
      if (fields.empty()) continue;
      place = makePrintable(table.file) + ", line " + std::to_string(reader.getLine());
      fields.insert(fields.begin(), table.name);
      writeLine(fields);
      ++counts.lines;
    }
  }

  const PlainCounts& getCounts() const { return counts; }

 private:
  void checkName(const PlainTable& table) const;
  void writeKeys(const PlainTable& table, const std::vector<std::string>& headings);
  void writeLine(const std::vector<std::string>& fields);
  void appendField(std::string& line, const std::string& field);
  [[noreturn]] void fail(const std::string& what) const { throw UserError(place + ": " + what); }

  bool isSeparator(char byte) const { return parameters.separators.find(byte) != std::string::npos; }

  Output& output;
  const ReaderParameters& parameters;
  std::string place;
  PlainCounts counts;
};

// The name stands in front of every line, is read there before quotes are looked at, and marks are looked for in it.
void Writer::checkName(const PlainTable& table) const {
  const std::string& name = table.name;
  const std::string shown = "the table's name '" + makePrintable(name) + "'";
  const bool isTrimmed = trimBlanks(name).size() == name.size();
  if (name.empty() || !isTrimmed)
    throw UserError(shown + " is empty or begins or ends with a blank; name it otherwise");
  for (const char byte : name) {
    const bool isDecimal = byte == parameters.decimal && byte != '.';
    const bool isLineEnd = byte == '\n' || byte == '\r' || byte == '\0';
    if (byte == '|' || byte == parameters.quote || isDecimal || isLineEnd || isSeparator(byte)) {
      throw UserError(shown + " holds '" + makePrintable(std::string(1, byte)) + "', which no name can hold; rename " +
                      makePrintable(table.file));
    }
  }
  if (name.front() == parameters.comment)
    throw UserError(shown + " begins like a comment; rename " + makePrintable(table.file));
  for (const char* const mark : {"NAMES", "KEYS"}) {
    if (name.find(mark) == std::string::npos) continue;
    throw UserError(shown + " holds " + mark + ", which marks heading lines; rename " + makePrintable(table.file));
  }
}

void Writer::writeKeys(const PlainTable& table, const std::vector<std::string>& headings) {
  if (table.keys.empty()) return;
  std::vector<std::string> marks(headings.size(), "0");
  for (const std::string& key : table.keys) {
    const auto found = std::find(headings.begin(), headings.end(), key);
    if (found == headings.end()) {
      throw UserError(makePrintable(table.file) + ": has no column '" + makePrintable(key) +
                      "', which is to be a key; its columns are " + makePrintable(join(headings, ", ")));
    }
    marks[static_cast<std::size_t>(found - headings.begin())] = "1";
  }
  marks.insert(marks.begin(), table.name + "|KEYS");
  writeLine(marks);
}

void Writer::writeLine(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) {
    if (&field != &fields.front()) line += parameters.separators.front();
    appendField(line, field);
  }
  if (line.size() > LongestLine) {
    fail("makes a line of " + std::to_string(line.size()) + " bytes, and the library reads at most " +
         std::to_string(LongestLine) + " as one; shorten its fields");
  }
  output.writeLine(line);
}

void Writer::appendField(std::string& line, const std::string& field) {
  const bool isDecimalOther = parameters.decimal != '.';
  std::string text = field;
  if (isDecimalOther && isNumber(text)) std::replace(text.begin(), text.end(), '.', parameters.decimal);
  bool needsQuotes = text.empty() && isSeparator(' ');
  for (const char byte : field) {
    if (byte == '\n' || byte == '\r' || byte == '\0') {
      fail("a field holds an end of line or a byte 0, which no field can hold; take it out");
    }
    if (byte == parameters.quote) {
      fail("the field '" + makePrintable(field) +
           "' holds a quote, which no field can hold; choose another with --quote");
    }
    if (isDecimalOther && byte == parameters.decimal) {
      fail("the field '" + makePrintable(field) +
           "' holds the decimal character, which reads as a point; choose another "
           "with --decimal");
    }
    needsQuotes = needsQuotes || isSeparator(byte);
  }
  if (trimBlanks(field).size() != field.size()) ++counts.trimmed;
  line += needsQuotes ? parameters.quote + text + parameters.quote : text;
}

// A plain file beside the table that was made of it.
class Comparison {
 public:
  Comparison(const PlainTable& table, char plainSeparator) : plain(table), reader(plain.file, plainSeparator) {}

  // What differs first, or nothing.
  std::string compare(const Table& table) {
    read();
    compareHeadings(table);
    table.forEach([&](const Line& line) {
      if (difference.empty()) compareLine(table, line);
      return difference.empty();
    });
    if (difference.empty() && read()) note("the table ends before the file");
    return difference;
  }

 private:
  // Goes to the next record that has fields.
  bool read() {
    while (reader.read(fields)) {
      if (!fields.empty()) return true;
    }
    return false;
  }

  void note(const std::string& what) {
    difference = makePrintable(plain.file) + ", line " + std::to_string(reader.getLine()) + ": " + what;
  }

  void compareText(const std::string& expected, std::string_view found) {
    if (expected == found || !difference.empty()) return;
    note("'" + makePrintable(expected) + "' became '" + makePrintable(found) + "'");
  }

  void compareHeadings(const Table& table) {
    for (std::size_t index = 0; index < fields.size(); ++index) {
      const bool isThere = index < table.getColumns().size();
      compareText(fields[index], isThere ? table.getColumns()[index].heading.value_or("") : "");
    }
  }

  void compareLine(const Table& table, const Line& line) {
    if (!read()) {
      note("the file has fewer lines than the table");
      return;
    }
    const auto count = static_cast<std::size_t>(line.getNumberOfFields() - table.getFirstPosition());
    if (count != fields.size()) {
      note(countOf(static_cast<long>(fields.size()), "field") + " became " + std::to_string(count));
      return;
    }
    for (std::size_t index = 0; index < count; ++index) {
      compareText(fields[index], line.getField(table.getFirstPosition() + static_cast<long>(index)));
    }
  }

  const PlainTable& plain;
  PlainCsvReader reader;
  std::vector<std::string> fields;
  std::string difference;
};

}  // namespace

PlainTables readFolder(const std::string& folder) {
  std::error_code error;
  if (!std::filesystem::is_directory(folder, error)) throw UserError(makePrintable(folder) + ": is no folder");
  const std::string manifest = folder + "/" + Manifest;
  if (std::filesystem::exists(manifest, error)) return readManifest(folder, manifest);
  std::set<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".csv") files.insert(entry.path().string());
  }
  if (files.empty()) throw UserError(makePrintable(folder) + ": holds no file that ends in .csv");
  return nameFiles({files.begin(), files.end()});
}

PlainTables nameFiles(const std::vector<std::string>& files) {
  PlainTables tables;
  for (const std::string& file : files) tables.tables.push_back({getStem(file), file, {}});
  return tables;
}

PlainCounts writeTables(Output& output, const PlainTables& tables, const ReaderParameters& parameters,
                        char plainSeparator) {
  if (parameters.separators.empty()) throw UserError("--sep none: a file of several tables needs a separator");
  std::set<std::string> names;
  Writer writer(output, parameters);
  writer.writeDirectives(tables.directives);
  for (const PlainTable& table : tables.tables) {
    if (!names.insert(table.name).second) {
      throw UserError("two files make a table '" + makePrintable(table.name) + "'; rename one of them");
    }
    if (&table != &tables.tables.front()) output.writeLine("");
    writer.writeTable(table, plainSeparator);
  }
  return writer.getCounts();
}

std::string compareTables(const std::string& written, const PlainTables& tables, const ReaderParameters& parameters,
                          char plainSeparator) {
  DataFile file(written, parameters);
  for (const PlainTable& plain : tables.tables) {
    std::string difference = Comparison(plain, plainSeparator).compare(Table(file, plain.name));
    if (!difference.empty()) return difference;
  }
  return {};
}

}  // namespace xeltools
