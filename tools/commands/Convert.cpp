// xelcsv convert: a file in another format, and back.
#include <cstdlib>

#include "tools/Command.h"
#include "tools/DataFile.h"
#include "tools/Errors.h"
#include "tools/convert/Format.h"
#include "tools/convert/PlainTables.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

struct FormatEntry {
  const char* name;
  std::unique_ptr<FormatWriter> (*makeWriter)(Output&, const FormatOptions&);  // null for what is no stream of text
  std::unique_ptr<FormatReader> (*makeReader)(const std::string&, const FormatOptions&);
};

constexpr FormatEntry Formats[] = {
    {"csv", makeCsvWriter, makeCsvReader},
    {"tsv", makeTsvWriter, makeTsvReader},
    {"json", makeJsonWriter, makeJsonReader},
    {"jsonl", makeJsonLinesWriter, makeJsonLinesReader},
    {"markdown", makeMarkdownWriter, makeMarkdownReader},
    {"sqlite", nullptr, [](const std::string& file, const FormatOptions&) { return makeSqliteReader(file); }},
    {"dir", nullptr, makeFolderReader},
};

std::vector<std::string> listFormats() {
  std::vector<std::string> names;
  for (const FormatEntry& entry : Formats) names.emplace_back(entry.name);
  return names;
}

const FormatEntry& findFormat(const std::string& name) {
  for (const FormatEntry& entry : Formats) {
    if (name == entry.name) return entry;
  }
  throw UsageError("--to is missing: " + join(listFormats(), ", "));
}

// Whether what was read back is what was written: numbers by value, for other formats write their digits otherwise.
bool isSame(ColumnType type, std::string_view field, const std::string& readBack) {
  if (field == readBack) return true;
  if (type != ColumnType::Real || field.empty() || readBack.empty()) return false;
  return std::strtod(std::string(field).c_str(), nullptr) == std::strtod(readBack.c_str(), nullptr);
}

struct Verified {
  long fields = 0;
  std::string difference;  // the first; empty when there is none
};

void verifyTable(FormatReader& reader, const Table& table, const TableShape& shape, Verified& verified) {
  reader.beginTable(shape);
  std::vector<std::string> fields;
  const auto note = [&](const Line& line, const std::string& what) {
    verified.difference =
        table.describe() + ", line " + std::to_string(line.getLineNumber() + 1) + " of the file: " + what;
    return false;
  };
  table.forEach([&](const Line& line) {
    if (!reader.readLine(shape, fields)) return note(line, "is not there");
    if (fields.size() != shape.columns.size()) return note(line, "has another number of fields");
    for (std::size_t column = 0; column < fields.size(); ++column) {
      const std::string_view field = line.getFieldOrNothing(shape.columns[column].position);
      ++verified.fields;
      if (isSame(shape.columns[column].type, field, fields[column])) continue;
      return note(line, makePrintable(shape.columns[column].name) + " '" + makePrintable(field) + "' became '" +
                            makePrintable(fields[column]) + "'");
    }
    return true;
  });
  if (verified.difference.empty() && reader.readLine(shape, fields))
    verified.difference = table.describe() + " has lines too many";
}

class Convert : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "convert",
        "write other formats, or make a file of plain CSV",
        {"With --to, writes one table or all: csv and tsv with a line of headings (of several tables, each line begins with "
         "its table's name), json as one object, jsonl as an object for each line, markdown as tables, sqlite as a database "
         "with a table for each table, whose primary key is that of the key line, dir as a folder with a CSV file for "
         "each table. In json and sqlite a column is of integers or numbers when each of its fields is one and stays what "
         "it is; --text makes every column one of text.",
         "With --from, writes a file of several tables out of plain CSV files, or of all in a folder; the options about how "
         "a file is written say how this one is to be. What such a file cannot hold is told, with its place.",
         "--verify reads back what was written before it gets its name, and compares every field."},
        {"xelcsv convert data.csv --to json -o data.json",
         "xelcsv convert --multi data.csv --to sqlite -o data.db --verify",
         "xelcsv convert --multi data.csv routes --to markdown", "xelcsv convert --multi data.csv --to dir -o tables",
         "xelcsv convert --from dir tables -o data.csv --verify",
         "xelcsv convert --from csv plants.csv routes.csv --key plants:plant --sep semicolon -o data.csv"}};
    return text;
  }

  void declare(OptionSet& options) override {
    options.addOperand("FILE", fileName, "the data file; with --from the folder, or the first plain CSV file");
    options.addOperands("MORE", more, false, "the table's name; without it, all tables; with --from csv further files");
    options.addChoice("--to", listFormats(), to, "the format to write");
    options.addChoice("--from", {"csv", "dir"}, from, "what to make a file of several tables of");
    options.addFlag("--verify", verifies, "read back what was written and compare");
    options.addFlag("--text", isText, "all columns are of text, none of numbers");
    options.addList("--key", "TABLE:COLUMN", keys, "with --from, a key column of a table; may be given several times");
    options.addText("--csv-sep", "CHAR", plainSeparator,
                    "the separator of plain CSV files, comma unless it is said here");
  }

  std::string getFile() const override { return fileName; }

  int run(Session& session) override {
    if (to.empty() == from.empty()) throw UsageError("either --to or --from says what to do");
    if (verifies && !session.getOptions().outputFile)
      throw UsageError("--verify needs -o FILE: what is gone cannot be read back");
    if (plainSeparator) formatOptions.plainSeparator = parseCharacter("--csv-sep", *plainSeparator, '\0');
    return from.empty() ? convertTo(session) : convertFrom(session);
  }

 private:
  int convertTo(Session& session);
  int convertFrom(Session& session);
  void setKeys(PlainTables& tables) const;
  std::unique_ptr<FormatWriter> makeWriter(Session& session, DataFile& file) const;

  std::string fileName;
  std::vector<std::string> more;
  std::string to;
  std::string from;
  bool verifies = false;
  bool isText = false;
  std::vector<std::string> keys;
  std::optional<std::string> plainSeparator;
  FormatOptions formatOptions;
};

std::unique_ptr<FormatWriter> Convert::makeWriter(Session& session, DataFile& file) const {
  const FormatEntry& format = findFormat(to);
  if (format.makeWriter != nullptr) {
    if (session.isWatched()) session.getOutput().guardTerminal();
    return format.makeWriter(session.getOutput(), formatOptions);
  }
  const std::optional<std::string>& place = session.getOptions().outputFile;
  if (!place) throw UsageError("--to " + to + " needs -o, the " + (to == "dir" ? "folder" : "file") + " to write");
  if (to == "dir") return makeFolderWriter(*place, formatOptions, readDirectives(file));
  return makeSqliteWriter(*place);
}

int Convert::convertTo(Session& session) {
  if (more.size() > 1) throw UsageError("'" + makePrintable(more[1]) + "' is one operand too many");
  if (!keys.empty()) throw UsageError("--key goes with --from; key columns of a file are those of its key lines");
  DataFile file(fileName, session.openSettings(fileName).getParameters());
  const std::optional<std::string> tableName = more.empty() ? std::nullopt : std::optional<std::string>(more.front());
  const std::vector<std::string> names = file.selectTables(tableName);
  formatOptions.isWhole = file.isMultiTable() && !tableName;
  const long passes = verifies ? 3 : 2;
  session.getProgress().begin(passes * file.getSize());
  file.setProgress(&session.getProgress());

  const std::unique_ptr<FormatWriter> writer = makeWriter(session, file);
  std::vector<TableShape> shapes;
  bool isUtf8 = true;
  for (const std::string& name : names) {
    Table table(file, name);
    shapes.push_back(readShape(file, table, isText));
    const TableShape& shape = shapes.back();
    isUtf8 = isUtf8 && shape.isUtf8;
    writer->beginTable(shape);
    table.forEach([&](const Line& line) {
      writer->writeLine(shape, line);
      return true;
    });
    writer->endTable();
  }
  writer->finish();
  if (!isUtf8 && beginsWith(to, "json")) {
    session.say(makePrintable(fileName) + ": bytes that are no UTF-8 became U+FFFD, for JSON holds nothing else");
  }
  if (!verifies) {
    writer->keep();
    return Good;
  }

  const std::string written = writer->getWritten().empty() ? session.getOutput().hold() : writer->getWritten();
  const std::unique_ptr<FormatReader> reader = findFormat(to).makeReader(written, formatOptions);
  Verified verified;
  for (std::size_t index = 0; index < names.size() && verified.difference.empty(); ++index) {
    verifyTable(*reader, Table(file, names[index]), shapes[index], verified);
  }
  if (verified.difference.empty() && !reader->isAtEnd()) verified.difference = "something follows the last table";
  if (!verified.difference.empty()) {
    throw UserError("not written, for it reads back otherwise: " + verified.difference);
  }
  session.getProgress().end();
  writer->keep();
  session.say("verified: " + countOf(verified.fields, "field") + " in " +
              countOf(static_cast<long>(names.size()), "table") + " read back the same");
  return Good;
}

void Convert::setKeys(PlainTables& tables) const {
  for (const std::string& key : keys) {
    const std::size_t colon = key.find(':');
    bool isKnown = false;
    for (PlainTable& table : tables.tables) {
      if (colon == std::string::npos || table.name != key.substr(0, colon)) continue;
      table.keys.push_back(key.substr(colon + 1));
      isKnown = true;
    }
    if (!isKnown)
      throw UsageError("--key " + makePrintable(key) + ": takes a table and one of its columns, TABLE:COLUMN");
  }
}

int Convert::convertFrom(Session& session) {
  if (from == "dir" && !more.empty()) throw UsageError("'" + makePrintable(more[0]) + "' is one operand too many");
  const std::optional<std::string>& place = session.getOptions().outputFile;
  ReaderParameters parameters = session.openSettings(place.value_or("")).getParameters();
  parameters.isMultiTable = true;
  std::vector<std::string> files = more;
  files.insert(files.begin(), fileName);
  PlainTables tables = from == "dir" ? readFolder(fileName) : nameFiles(files);
  setKeys(tables);
  if (session.isWatched()) session.getOutput().guardTerminal();
  const PlainCounts counts = writeTables(session.getOutput(), tables, parameters, formatOptions.plainSeparator);
  if (counts.trimmed > 0) {
    session.say(countOf(counts.trimmed, "field") + " lost blanks at an end, which the library does not read");
  }
  if (!verifies) return Good;
  const std::string difference =
      compareTables(session.getOutput().hold(), tables, parameters, formatOptions.plainSeparator);
  if (!difference.empty()) throw UserError("not written, for it reads back otherwise: " + difference);
  session.say("verified: " + countOf(counts.lines, "line") + " in " +
              countOf(static_cast<long>(tables.tables.size()), "table") + " read back the same");
  return Good;
}

}  // namespace

std::unique_ptr<Command> makeConvert() { return std::make_unique<Convert>(); }

}  // namespace xeltools
