// Plain CSV, and a folder of such files.
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tools/Errors.h"
#include "tools/convert/Format.h"
#include "tools/convert/PlainCsv.h"
#include "tools/text/Escape.h"
#include "tools/text/Json.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

// The heading of the column that tells the table, where lines of several follow one another.
const char* const TableHeading = "table";

std::vector<std::string> getNames(const TableShape& shape) {
  std::vector<std::string> names;
  names.reserve(shape.columns.size());
  for (const ShapedColumn& column : shape.columns) names.push_back(column.name);
  return names;
}

class CsvWriter : public FormatWriter {
 public:
  CsvWriter(Output& target, const FormatOptions& formatOptions) : output(target), options(formatOptions) {}

  void beginTable(const TableShape& shape) override {
    if (tables++ > 0) output.writeLine("");
    fields = getNames(shape);
    if (options.isWhole) fields.insert(fields.begin(), TableHeading);
    writeFields();
  }

  void writeLine(const TableShape& shape, const Line& line) override {
    fields.clear();
    if (options.isWhole) fields.push_back(shape.name);
    for (const ShapedColumn& column : shape.columns) fields.emplace_back(line.getFieldOrNothing(column.position));
    writeFields();
  }

 private:
  void writeFields() { output.writeLine(makePlainRecord(fields, options.plainSeparator)); }

  Output& output;
  FormatOptions options;
  std::vector<std::string> fields;
  long tables = 0;
};

class CsvReader : public FormatReader {
 public:
  CsvReader(const std::string& file, const FormatOptions& formatOptions)
      : reader(file, formatOptions.plainSeparator), options(formatOptions) {}

  void beginTable(const TableShape& shape) override {
    std::vector<std::string> fields;
    isDone = !reader.read(fields);
    std::vector<std::string> expected = getNames(shape);
    if (options.isWhole) expected.insert(expected.begin(), TableHeading);
    if (fields != expected) isDone = true;
  }

  bool readLine(const TableShape& shape, std::vector<std::string>& fields) override {
    if (isDone || !reader.read(fields)) return false;
    if (fields.empty()) return false;  // the empty line between two tables
    if (!options.isWhole) return true;
    isDone = fields.front() != shape.name;
    fields.erase(fields.begin());
    return !isDone;
  }

  bool isAtEnd() override {
    std::vector<std::string> fields;
    return !isDone && !reader.read(fields);
  }

 private:
  PlainCsvReader reader;
  FormatOptions options;
  bool isDone = false;
};

// ---- A folder.

// The name of a table as the name of a file: what file systems or shells might not like is written as %2F.
std::string makeFileName(const std::string& name) {
  std::string file;
  for (const char byte : name) {
    const auto code = static_cast<unsigned char>(byte);
    const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
                         byte == '_' || byte == '-' || (byte == '.' && !file.empty()) || code >= 0x80;
    if (isPlain) {
      file += byte;
    } else {
      file += std::string("%") + "0123456789ABCDEF"[code / 16] + "0123456789ABCDEF"[code % 16];
    }
  }
  return file + ".csv";
}

class FolderWriter : public FormatWriter {
 public:
  FolderWriter(std::string folder, const FormatOptions& formatOptions, Directives said)
      : place(std::move(folder)),
        temporary(makeTemporaryName(place)),
        options(formatOptions),
        directives(std::move(said)) {
    options.isWhole = false;  // each file has one table
    std::error_code error;
    if (std::filesystem::exists(place, error) && !std::filesystem::is_empty(place, error)) {
      throw UserError(makePrintable(place) + ": is there already and not empty; name a new folder");
    }
    if (!std::filesystem::create_directory(temporary, error)) {
      const std::string reason = error ? ": " + error.message() : "";
      throw UserError("cannot make the folder " + makePrintable(place) + reason);
    }
  }

  ~FolderWriter() override {
    std::error_code error;
    if (!isKept) std::filesystem::remove_all(temporary, error);
  }
  FolderWriter(const FolderWriter&) = delete;
  FolderWriter& operator=(const FolderWriter&) = delete;

  void beginTable(const TableShape& shape) override {
    const std::string name = makeFileName(shape.name);
    output = std::make_unique<Output>(temporary + "/" + name);
    writer = makeCsvWriter(*output, options);
    writer->beginTable(shape);
    entries.push_back("\n    " + toObject({toMember("name", toJson(shape.name)), toMember("file", toJson(name)),
                                           toMember("keys", toJson(shape.keys))}));
  }

  void writeLine(const TableShape& shape, const Line& line) override { writer->writeLine(shape, line); }

  void endTable() override {
    output->finish();
    writer.reset();
    output.reset();
  }

  void finish() override {
    Output manifest(temporary + "/tables.json");
    manifest.writeLine("{");
    if (directives.areThere()) {
      manifest.writeLine("  " + toMember("csvFormat", toJson(directives.csvFormat)) + ",");
      manifest.writeLine("  " + toMember("requiredBy", toJson(directives.requiredBy)) + ",");
      manifest.writeLine("  " + toMember("fileVersion", toJson(directives.fileVersion)) + ",");
    }
    manifest.writeLine("  " + toMember("tables", "[" + join(entries, ",") + "\n  ]") + "\n}");
    manifest.finish();
  }

  void keep() override {
    std::error_code error;
    std::filesystem::rename(temporary, place, error);
    if (error) throw UserError("cannot make the folder " + makePrintable(place) + ": " + error.message());
    isKept = true;
  }

  std::string getWritten() const override { return temporary; }

 private:
  std::string place;
  std::string temporary;
  FormatOptions options;
  Directives directives;
  std::unique_ptr<Output> output;
  std::unique_ptr<FormatWriter> writer;
  std::vector<std::string> entries;
  bool isKept = false;
};

class FolderReader : public FormatReader {
 public:
  FolderReader(std::string from, const FormatOptions& formatOptions) : folder(std::move(from)), options(formatOptions) {
    options.isWhole = false;
  }

  void beginTable(const TableShape& shape) override {
    areAllAtEnd = isAtEnd();
    reader = makeCsvReader(folder + "/" + makeFileName(shape.name), options);
    reader->beginTable(shape);
  }
  bool readLine(const TableShape& shape, std::vector<std::string>& fields) override {
    return reader->readLine(shape, fields);
  }
  bool isAtEnd() override { return areAllAtEnd && (!reader || reader->isAtEnd()); }

 private:
  std::string folder;
  FormatOptions options;
  std::unique_ptr<FormatReader> reader;
  bool areAllAtEnd = true;
};

}  // namespace

std::unique_ptr<FormatWriter> makeCsvWriter(Output& output, const FormatOptions& options) {
  return std::make_unique<CsvWriter>(output, options);
}

std::unique_ptr<FormatReader> makeCsvReader(const std::string& file, const FormatOptions& options) {
  return std::make_unique<CsvReader>(file, options);
}

std::unique_ptr<FormatWriter> makeFolderWriter(const std::string& place, const FormatOptions& options,
                                               const Directives& directives) {
  return std::make_unique<FolderWriter>(place, options, directives);
}

std::unique_ptr<FormatReader> makeFolderReader(const std::string& folder, const FormatOptions& options) {
  return std::make_unique<FolderReader>(folder, options);
}

}  // namespace xeltools
