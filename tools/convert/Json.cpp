// JSON, whole and line by line.
#include "tools/text/Json.h"

#include <nlohmann/json.hpp>

#include "tools/convert/Format.h"
#include "tools/convert/LineReader.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

// An empty field of a column of numbers is null. A field that the line lacks is left out.
std::string makeObject(const TableShape& shape, const Line& line) {
  std::vector<std::string> members;
  members.reserve(shape.columns.size());
  for (const ShapedColumn& column : shape.columns) {
    if (!line.hasField(column.position)) continue;
    const std::string_view field = line.getField(column.position);
    const bool isText = column.type == ColumnType::Text;
    members.push_back(toMember(column.name, isText ? toJson(field) : field.empty() ? "null" : std::string(field)));
  }
  return toObject(members);
}

// The text that a value stands for. The shortest digits of a number are not those of the file, but they are as good.
std::string toText(const nlohmann::json& value) {
  if (value.is_string()) return value.get<std::string>();
  return value.is_null() ? std::string() : value.dump();
}

// The fields of an object; false when it is none, or has a member that is no column.
bool takeFields(const TableShape& shape, const nlohmann::json& object, std::vector<std::string>& fields) {
  fields.assign(shape.columns.size(), "");
  if (!object.is_object()) return false;
  std::size_t found = 0;
  for (std::size_t column = 0; column < shape.columns.size(); ++column) {
    const auto member = object.find(shape.columns[column].name);
    if (member == object.end()) continue;
    fields[column] = toText(*member);
    ++found;
  }
  return found == object.size();
}

class JsonWriter : public FormatWriter {
 public:
  explicit JsonWriter(Output& target) : output(target) {}

  void beginTable(const TableShape& shape) override {
    std::vector<std::string> columns;
    for (const ShapedColumn& column : shape.columns) {
      columns.push_back(
          toObject({toMember("name", toJson(column.name)), toMember("type", toJson(getTypeName(column.type)))}));
    }
    output.write(tables++ > 0 ? std::string(",\n") : "{\n  " + toMember("tables", "[\n"));
    output.write("    {\n      " + toMember("name", toJson(shape.name)) + ",\n      " +
                 toMember("columns", "[" + join(columns, ", ") + "]") + ",\n      " +
                 toMember("keys", toJson(shape.keys)) + ",\n      " + toMember("lines", "["));
    lines = 0;
  }

  void writeLine(const TableShape& shape, const Line& line) override {
    output.write(lines++ > 0 ? ",\n        " : "\n        ");
    output.write(makeObject(shape, line));
  }

  void endTable() override { output.write(lines > 0 ? "\n      ]\n    }" : "]\n    }"); }
  void finish() override {
    output.writeLine(tables > 0 ? std::string("\n  ]\n}") : toObject({toMember("tables", "[]")}));
  }

 private:
  Output& output;
  long tables = 0;
  long lines = 0;
};

// Accepts any JSON and keeps nothing of it.
class Acceptor : public nlohmann::json_sax<nlohmann::json> {
 public:
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return true; }
  bool key(string_t&) override { return true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }
};

// Whether a file is JSON; in memory that does not grow with it.
bool isJson(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  Acceptor acceptor;
  return nlohmann::json::sax_parse(stream, &acceptor);
}

// The file as a whole must be JSON; then its lines are read one after the other, each of which stands on a line of text.
class JsonReader : public FormatReader {
 public:
  explicit JsonReader(const std::string& file) : lines(file), isValid(isJson(file)) {}

  void beginTable(const TableShape&) override {
    std::string line;
    while (lines.read(line) && !beginsWith(line, "      " + toMember("lines", "["))) {
    }
    isEmpty = endsWith(line, "]");
  }

  bool readLine(const TableShape& shape, std::vector<std::string>& fields) override {
    std::string line;
    if (!isValid || isEmpty || !lines.read(line) || !beginsWith(line, "        {")) return false;
    if (line.back() == ',') line.pop_back();
    return takeFields(shape, nlohmann::json::parse(line, nullptr, false), fields);
  }

  bool isAtEnd() override {
    std::string rest;
    for (std::string line; lines.read(line);) rest += line;
    return isValid && (rest == "  ]}" || rest == "    }  ]}");
  }

 private:
  LineReader lines;
  bool isValid;
  bool isEmpty = false;
};

class JsonLinesWriter : public FormatWriter {
 public:
  JsonLinesWriter(Output& target, const FormatOptions& options) : output(target), isWhole(options.isWhole) {}

  void beginTable(const TableShape&) override {}
  void writeLine(const TableShape& shape, const Line& line) override {
    const std::string object = makeObject(shape, line);
    output.writeLine(isWhole ? toObject({toMember("table", toJson(shape.name)), toMember("fields", object)}) : object);
  }

 private:
  Output& output;
  bool isWhole;
};

class JsonLinesReader : public FormatReader {
 public:
  JsonLinesReader(const std::string& file, const FormatOptions& options) : lines(file), isWhole(options.isWhole) {}

  void beginTable(const TableShape& shape) override { left = shape.lines; }

  bool readLine(const TableShape& shape, std::vector<std::string>& fields) override {
    std::string line;
    if (left-- <= 0 || !lines.read(line)) return false;
    const nlohmann::json object = nlohmann::json::parse(line, nullptr, false);
    if (!isWhole) return takeFields(shape, object, fields);
    if (!object.is_object() || object.value("table", nlohmann::json()) != shape.name) return false;
    return takeFields(shape, object.value("fields", nlohmann::json()), fields);
  }

  bool isAtEnd() override { return lines.isAtEnd(); }

 private:
  LineReader lines;
  bool isWhole;
  long left = 0;
};

}  // namespace

std::unique_ptr<FormatWriter> makeJsonWriter(Output& output, const FormatOptions&) {
  return std::make_unique<JsonWriter>(output);
}
std::unique_ptr<FormatReader> makeJsonReader(const std::string& file, const FormatOptions&) {
  return std::make_unique<JsonReader>(file);
}
std::unique_ptr<FormatWriter> makeJsonLinesWriter(Output& output, const FormatOptions& options) {
  return std::make_unique<JsonLinesWriter>(output, options);
}
std::unique_ptr<FormatReader> makeJsonLinesReader(const std::string& file, const FormatOptions& options) {
  return std::make_unique<JsonLinesReader>(file, options);
}

}  // namespace xeltools
