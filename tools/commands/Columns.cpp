// xelcsv headers, keys and count: small questions about one table or all.
#include <utility>

#include "tools/Command.h"
#include "tools/DataFile.h"
#include "tools/Errors.h"
#include "tools/Remark.h"
#include "tools/Survey.h"
#include "tools/layout/AlignedTable.h"
#include "tools/text/Escape.h"

namespace xeltools {

namespace {

using Rows = std::vector<std::vector<std::string>>;

void writeRows(Session& session, const std::vector<AlignedTable::Heading>& headings, const Rows& rows) {
  AlignedTable layout(headings);
  for (const auto& row : rows) layout.observe(row);
  if (session.isWatched()) layout.limitWidth(session.getColumns());
  layout.writeHeadings(session.getOutput(), session.getPainter());
  for (const auto& row : rows) layout.write(session.getOutput(), session.getPainter(), row);
}

// A command whose operands are a file and perhaps a table, and which says something about each table.
class TableQuestion : public Command {
 public:
  void declare(OptionSet& options) override {
    options.addOperand("FILE", fileName, "the data file");
    options.addOptionalOperand("TABLE", tableName, "the table's name; without it, all tables");
  }
  std::string getFile() const override { return fileName; }

 protected:
  std::string fileName;
  std::optional<std::string> tableName;
};

// One that lists columns of each table, in a list for all; the name of a table is said where there may be several.
class ColumnQuestion : public TableQuestion {
 public:
  int run(Session& session) override {
    DataFile file(fileName, session.openSettings(fileName).getParameters());
    remarkOnTables(session, file);
    const bool isNamed = file.isMultiTable() && !tableName;
    std::vector<AlignedTable::Heading> headings = getHeadings();
    if (isNamed) headings.insert(headings.begin(), {"table"});
    Rows rows;
    for (const std::string& name : file.selectTables(tableName)) {
      for (std::vector<std::string>& row : describe(Table(file, name))) {
        if (isNamed) row.insert(row.begin(), makePrintable(name));
        rows.push_back(std::move(row));
      }
    }
    writeRows(session, headings, rows);
    return Good;
  }

 private:
  virtual std::vector<AlignedTable::Heading> getHeadings() const = 0;
  virtual Rows describe(const Table& table) const = 0;
};

class Headers : public ColumnQuestion {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "headers",
        "list the columns of a table",
        {"Lists the columns with their positions, which the getters by position take, and their headings. Key columns "
         "are numbered in the order in which a lookup takes their values."},
        {"xelcsv headers --multi data.csv plants"}};
    return text;
  }

 private:
  std::vector<AlignedTable::Heading> getHeadings() const override {
    return {{"position", Look::Strong, true, true}, {"heading"}, {"key", Look::Strong, true}};
  }

  Rows describe(const Table& table) const override {
    Rows rows;
    for (const Column& column : table.getColumns()) {
      std::string order;
      for (std::size_t key = 0; key < table.getKeys().size(); ++key) {
        if (table.getKeys()[key] == column.position) order += (order.empty() ? "" : ",") + std::to_string(key);
      }
      rows.push_back(
          {std::to_string(column.position), column.heading ? makePrintable(*column.heading) : "(none)", order});
    }
    return rows;
  }
};

class Keys : public ColumnQuestion {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "keys",
        "list the key columns of a table",
        {"Lists the key columns in the order in which a lookup takes their values. A table without a key line has all its "
         "columns as key."},
        {"xelcsv keys --multi data.csv routes"}};
    return text;
  }

 private:
  std::vector<AlignedTable::Heading> getHeadings() const override {
    return {{"position", Look::Strong, true, true}, {"key"}};
  }

  Rows describe(const Table& table) const override {
    Rows rows;
    for (const long position : table.getKeys()) {
      rows.push_back({std::to_string(position), makePrintable(table.getColumnName(position))});
    }
    return rows;
  }
};

class Count : public TableQuestion {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "count",
        "count the data lines of a table",
        {"Prints the number of data lines: alone for one table, in a list for all. Lines with the same key count one by "
         "one."},
        {"xelcsv count data.csv", "xelcsv count --multi data.csv routes"}};
    return text;
  }

  int run(Session& session) override {
    DataFile file(fileName, session.openSettings(fileName).getParameters());
    remarkOnTables(session, file);
    if (tableName || !file.isMultiTable()) {
      Table table(file, file.selectTable(tableName));
      session.getOutput().writeLine(std::to_string(table.countLines()));
      return Good;
    }
    Rows rows;
    for (const TableFacts& table : surveyTables(file)) {
      if (!table.isReserved) rows.push_back({makePrintable(table.name), std::to_string(table.lines)});
    }
    writeRows(session, {{"table"}, {"lines"}}, rows);
    return Good;
  }
};

}  // namespace

std::unique_ptr<Command> makeHeaders() { return std::make_unique<Headers>(); }
std::unique_ptr<Command> makeKeys() { return std::make_unique<Keys>(); }
std::unique_ptr<Command> makeCount() { return std::make_unique<Count>(); }

}  // namespace xeltools
