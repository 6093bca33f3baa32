// xelcsv show: the lines of a table, aligned.
#include <algorithm>
#include <limits>

#include "tools/Command.h"
#include "tools/DataFile.h"
#include "tools/Errors.h"
#include "tools/Remark.h"
#include "tools/layout/AlignedTable.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

constexpr long Unbounded = std::numeric_limits<long>::max();

// Numbers of data lines, from 0, both included.
struct Range {
  long first = 0;
  long last = Unbounded;
};

long parseLineNumber(const std::string& text, const std::string& whole, long missing) {
  if (text.empty()) return missing;
  const bool isNumber = text.find_first_not_of("0123456789") == std::string::npos && text.size() < 18;
  if (!isNumber) throw UsageError("--lines takes two numbers such as 10:19, not '" + makePrintable(whole) + "'");
  return std::stol(text);
}

// "10:19", "10:", ":19" or "10".
Range parseRange(const std::string& text) {
  const std::size_t colon = text.find(':');
  const long first = parseLineNumber(text.substr(0, colon), text, 0);
  if (colon == std::string::npos) return {first, parseLineNumber(text, text, 0)};
  const Range range{first, parseLineNumber(text.substr(colon + 1), text, Unbounded)};
  if (range.first > range.last) throw UsageError("--lines " + text + ": the first line is behind the last");
  return range;
}

class Show : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "show",
        "show the lines of a table, aligned",
        {"Shows the data lines of one table or all. The column # has the number that get --number and the library's "
         "getLineByNumber take. Key columns are underlined where there are colors. Fields are as the library reads them: "
         "without quotes and the blanks around them, with a point as decimal point. Control characters are written "
         "out.",
         "On a terminal long fields are cut to its width; anywhere else nothing is cut. The file is read twice, so that "
         "it may be of any size."},
        {"xelcsv show data.csv --head 20", "xelcsv show --multi data.csv routes --columns plant,distance",
         "xelcsv show data.csv --lines 100:119 --pager"}};
    return text;
  }

  void declare(OptionSet& options) override {
    options.addOperand("FILE", fileName, "the data file");
    options.addOptionalOperand("TABLE", tableName, "the table's name; without it, all tables");
    options.addNumber("-n,--head", "N", head, "only the first N lines");
    options.addNumber("--tail", "N", tail, "only the last N lines");
    options.addText("--lines", "A:B", lines, "only the lines from number A to number B; one of them may be missing");
    options.addList("--columns", "NAMES", columnNames, "only these columns: headings or positions with commas between");
    options.addNumber("--repeat", "N", repeat, "the headings again after every N lines (50), 0 for never");
  }

  std::string getFile() const override { return fileName; }

  int run(Session& session) override {
    const int limits = (head ? 1 : 0) + (tail ? 1 : 0) + (lines ? 1 : 0);
    if (limits > 1) throw UsageError("--head, --tail and --lines exclude one another");
    DataFile file(fileName, session.openSettings(fileName).getParameters());
    remarkOnTables(session, file);
    const std::vector<std::string> names = file.selectTables(tableName);
    for (const std::string& name : names) {
      if (name != names.front()) session.getOutput().writeLine("");
      Table table(file, name);
      if (names.size() > 1 || (file.isMultiTable() && !tableName)) {
        session.getOutput().writeLine(session.getPainter().paint(makePrintable(name), Look::Strong));
      }
      showTable(session, table);
    }
    return Good;
  }

 private:
  Range computeRange(Table& table) const;
  std::vector<long> selectPositions(const Table& table) const;
  void showTable(Session& session, Table& table) const;

  std::string fileName;
  std::optional<std::string> tableName;
  std::optional<long> head;
  std::optional<long> tail;
  std::optional<std::string> lines;
  std::vector<std::string> columnNames;
  std::optional<long> repeat;
};

Range Show::computeRange(Table& table) const {
  if (lines) return parseRange(*lines);
  if (head) return {0, *head - 1};
  if (!tail) return {};
  const long count = table.countLines();
  return {std::max(0L, count - *tail), count - 1};
}

// A name is a heading before it is a position.
std::vector<long> Show::selectPositions(const Table& table) const {
  std::vector<long> positions;
  std::vector<std::string> known;
  for (const Column& column : table.getColumns()) known.push_back(column.getName());
  for (const std::string& name : columnNames) {
    const auto found = std::find(known.begin(), known.end(), name);
    const bool isPosition =
        !name.empty() && name.size() < 6 && name.find_first_not_of("0123456789") == std::string::npos;
    if (found != known.end()) {
      positions.push_back(table.getFirstPosition() + (found - known.begin()));
    } else if (isPosition) {
      positions.push_back(std::stol(name));
    } else {
      const std::string similar = findSimilar(name, known);
      throw UserError(table.describe() + " has no column '" + makePrintable(name) + "'" +
                      (similar.empty() ? "; xelcsv headers lists them" : "; is " + makePrintable(similar) + " meant?"));
    }
  }
  return positions;
}

void Show::showTable(Session& session, Table& table) const {
  Output& output = session.getOutput();
  const Painter& painter = session.getPainter();
  const Range range = computeRange(table);
  std::vector<long> positions = selectPositions(table);
  const bool areSelected = !positions.empty();
  if (!areSelected) {
    for (const Column& column : table.getColumns()) positions.push_back(column.position);
  }

  std::vector<AlignedTable::Heading> headings = {{"#", Look::Strong, true, true}};
  for (const long position : positions) {
    const std::vector<long>& keys = table.getKeys();
    const bool isKey =
        table.getColumns().size() > keys.size() && std::find(keys.begin(), keys.end(), position) != keys.end();
    headings.push_back({makePrintable(table.getColumnName(position)), isKey ? Look::Underlined : Look::Strong});
  }
  AlignedTable layout(headings);
  const std::size_t named = headings.size();
  const long others = positions.empty() ? table.getFirstPosition() : positions.back() + 1;
  layout.nameOthers([&](std::size_t index) { return table.getColumnName(others + static_cast<long>(index - named)); });

  std::vector<std::string> cells;
  const auto fillCells = [&](const Line& line) {
    cells.clear();
    cells.push_back(std::to_string(line.getNumber()));
    for (const long position : positions) cells.push_back(makePrintable(line.getFieldOrNothing(position)));
    if (areSelected) return;
    for (long beyond = others; beyond < line.getNumberOfFields(); ++beyond) {
      cells.push_back(makePrintable(line.getField(beyond)));
    }
  };
  const auto forEachInRange = [&](const std::function<void()>& use) {
    table.forEach([&](const Line& line) {
      if (line.getNumber() > range.last) return false;
      if (line.getNumber() >= range.first) {
        fillCells(line);
        use();
      }
      return line.getNumber() < range.last;
    });
  };

  forEachInRange([&] { layout.observe(cells); });
  if (session.isWatched()) layout.limitWidth(session.getColumns());
  const long usualRepeat = 50;
  const long repeated = repeat.value_or(usualRepeat);
  long shown = 0;
  layout.writeHeadings(output, painter);
  forEachInRange([&] {
    if (repeated > 0 && shown > 0 && shown % repeated == 0) layout.writeHeadings(output, painter);
    layout.write(output, painter, cells);
    ++shown;
  });
}

}  // namespace

std::unique_ptr<Command> makeShow() { return std::make_unique<Show>(); }

}  // namespace xeltools
