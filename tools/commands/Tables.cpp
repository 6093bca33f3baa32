// xelcsv tables: what tables a file has.
#include "tools/Command.h"
#include "tools/Errors.h"
#include "tools/Remark.h"
#include "tools/Survey.h"
#include "tools/convert/Directives.h"
#include "tools/layout/AlignedTable.h"
#include "tools/text/Escape.h"
#include "tools/text/Json.h"
#include "tools/text/Number.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

class Tables : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "tables",
        "list the tables of a file",
        {"Lists every table with its number and name, how many data lines and columns it has, its key columns, where its "
         "bytes are (from the first to behind the last), and in how many stretches it lies when other tables stand "
         "between its lines. What the directive tables of the file say stands on top."},
        {"xelcsv tables --multi data.csv", "xelcsv tables --multi --split --sep space /usr/share/zoneinfo/tzdata.zi"}};
    return text;
  }

  void declare(OptionSet& options) override {
    options.addOperand("FILE", fileName, "the data file");
    options.addChoice("--format", {"text", "json"}, format, "how to write");
  }

  std::string getFile() const override { return fileName; }

  int run(Session& session) override {
    DataFile file(fileName, session.openSettings(fileName).getParameters());
    remarkOnTables(session, file);
    const std::vector<TableFacts> tables = surveyTables(file);
    const Directives directives = readDirectives(file);
    if (format == "json") {
      writeJson(session.getOutput(), directives, tables, file.isMultiTable());
    } else {
      writeText(session, directives, tables, file);
    }
    return Good;
  }

 private:
  void writeText(Session& session, const Directives& directives, const std::vector<TableFacts>& tables,
                 const DataFile& file) const;
  void writeJson(Output& output, const Directives& directives, const std::vector<TableFacts>& tables,
                 bool isMultiTable) const;

  std::string fileName;
  std::string format = "text";
};

void Tables::writeText(Session& session, const Directives& directives, const std::vector<TableFacts>& tables,
                       const DataFile& file) const {
  Output& output = session.getOutput();
  const Painter& painter = session.getPainter();
  const auto writeDirective = [&](const char* name, const std::string& value) {
    if (!value.empty()) output.writeLine(std::string(name) + painter.paint(makePrintable(value), Look::Strong));
  };
  writeDirective("CSV format    ", directives.csvFormat);
  writeDirective("required by   ", directives.requiredBy);
  writeDirective("file version  ", directives.fileVersion);
  if (!directives.csvFormat.empty() || !directives.requiredBy.empty()) output.writeLine("");

  std::vector<AlignedTable::Heading> headings = {
      {"#", Look::Strong, true, true}, {"table"}, {"lines"}, {"columns"}, {"keys"}, {"bytes", Look::Strong, true}};
  if (file.isSplit()) headings.push_back({"stretches", Look::Strong, true});
  AlignedTable layout(headings);
  const auto makeCells = [&](const TableFacts& table) {
    std::vector<std::string> keys;
    for (const std::string& key : table.keys) keys.push_back(makePrintable(key));
    std::vector<std::string> cells = {std::to_string(table.number),
                                      file.isMultiTable() ? makePrintable(table.name) : "(one table)",
                                      std::to_string(table.lines),
                                      std::to_string(table.columns),
                                      join(keys, ", "),
                                      std::to_string(table.begin) + "-" + std::to_string(table.end)};
    if (file.isSplit()) cells.push_back(std::to_string(table.stretches));
    return cells;
  };
  for (const TableFacts& table : tables) layout.observe(makeCells(table));
  if (session.isWatched()) layout.limitWidth(session.getColumns());
  layout.writeHeadings(output, painter);
  for (const TableFacts& table : tables) layout.write(output, painter, makeCells(table));
}

void Tables::writeJson(Output& output, const Directives& directives, const std::vector<TableFacts>& tables,
                       bool isMultiTable) const {
  const auto makeNullable = [](const std::string& value) { return value.empty() ? "null" : toJson(value); };
  std::vector<std::string> lines;
  lines.reserve(tables.size());
  for (const TableFacts& table : tables) {
    lines.push_back(
        "\n    " +
        toObject({toMember("number", std::to_string(table.number)),
                  toMember("name", isMultiTable ? toJson(table.name) : "null"),
                  toMember("reserved", table.isReserved ? "true" : "false"),
                  toMember("lines", std::to_string(table.lines)), toMember("columns", std::to_string(table.columns)),
                  toMember("keys", toJson(table.keys)), toMember("begin", std::to_string(table.begin)),
                  toMember("end", std::to_string(table.end)), toMember("stretches", std::to_string(table.stretches))}));
  }
  output.writeLine("{");
  output.writeLine("  " + toMember("csvFormat", makeNullable(directives.csvFormat)) + ",");
  output.writeLine("  " + toMember("requiredBy", makeNullable(directives.requiredBy)) + ",");
  output.writeLine("  " + toMember("fileVersion", makeNullable(directives.fileVersion)) + ",");
  output.writeLine("  " + toMember("tables", "[" + join(lines, ",") + (lines.empty() ? "]" : "\n  ]")));
  output.writeLine("}");
}

}  // namespace

std::unique_ptr<Command> makeTables() { return std::make_unique<Tables>(); }

}  // namespace xeltools
