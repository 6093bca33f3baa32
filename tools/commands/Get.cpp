// xelcsv get: one line by its key or number.
#include <algorithm>
#include <iostream>

#include "csv/line/XelCsvLineI.h"
#include "csv/line/XelCsvLines.h"
#include "csv/line/XelCsvText.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "tools/Command.h"
#include "tools/DataFile.h"
#include "tools/Errors.h"
#include "tools/text/Escape.h"
#include "tools/text/Json.h"
#include "tools/text/Number.h"
#include "tools/text/Width.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

// A line that was looked up; it gives its record back.
class FoundLine {
 public:
  explicit FoundLine(XelCsvLineI* record) : owner(record), line(XelCsvLine(record), 0) {}
  const Line& get() const { return line; }

 private:
  XelEnvOwner<XelCsvLineI> owner;
  Line line;
};

// The line of a table with a composed key. Throws XelLineNotFoundException.
FoundLine findLine(Table& table, const std::string& key) {
  XelCsvTableReaderI* const impl = table.getHandle().getImpl();
  XelEnvBlock<char> composed(impl->getEnv(), static_cast<long>(key.size()) + 1);
  std::copy_n(key.c_str(), key.size() + 1, composed.get());
  return FoundLine(impl->findLine(std::move(composed)));
}

// The byte offset of a physical line of the file.
long findOffset(DataFile& file, long lineNumber) {
  XelCsvLines lines(file.getReader().getEnv());
  if (lines.open(file.getName().c_str(), "rb", XelCsvReach::ManyLines) != 0) return -1;
  for (long number = 0; number < lineNumber && lines.read(); ++number) {
  }
  return lines.getOffset();
}

// The keys of the table that are most like one that is not there, best first.
std::vector<std::string> findNearestKeys(const Table& table, const std::string& key) {
  constexpr std::size_t Most = 3;
  constexpr std::size_t LongestCompared = 200;
  std::vector<std::pair<std::size_t, std::string>> nearest;
  std::size_t limit = std::max<std::size_t>(2, key.size() / 2);
  if (key.size() > LongestCompared) return {};
  table.forEach([&](const Line& line) {
    const std::string candidate = table.composeKey(line);
    const std::size_t distance = getDistance(toLower(key), toLower(candidate), limit);
    const bool isKnown =
        std::any_of(nearest.begin(), nearest.end(), [&](const auto& it) { return it.second == candidate; });
    if (distance > limit || isKnown) return true;
    const auto place = std::upper_bound(nearest.begin(), nearest.end(), distance,
                                        [](std::size_t less, const auto& it) { return less < it.first; });
    nearest.insert(place, {distance, candidate});
    if (nearest.size() > Most) nearest.pop_back();
    if (nearest.size() == Most) limit = nearest.back().first;
    return true;
  });
  std::vector<std::string> keys;
  keys.reserve(nearest.size());
  for (const auto& [distance, candidate] : nearest) keys.push_back(makePrintable(candidate));
  return keys;
}

std::string listKeys(const Table& table) {
  std::vector<std::string> names;
  for (const long position : table.getKeys()) names.push_back(makePrintable(table.getColumnName(position)));
  return join(names, ", ");
}

// The values of "city=Paris year=2004" in the order of the key columns; nothing when the words do not name columns.
std::optional<std::vector<std::string>> takeNamedValues(const Table& table, const std::vector<std::string>& words) {
  std::vector<std::optional<std::string>> values(table.getKeys().size());
  for (const std::string& word : words) {
    const std::size_t sign = word.find('=');
    if (sign == std::string::npos) return std::nullopt;
    const std::string name = word.substr(0, sign);
    bool isKey = false;
    for (std::size_t key = 0; key < values.size(); ++key) {
      if (table.getColumnName(table.getKeys()[key]) != name) continue;
      isKey = true;
      values[key] = word.substr(sign + 1);
    }
    if (isKey) continue;
    const auto& columns = table.getColumns();
    if (std::any_of(columns.begin(), columns.end(), [&](const Column& it) { return it.heading == name; })) {
      throw UsageError(makePrintable(name) + " is no key column of " + table.describe() + "; those are " +
                       listKeys(table));
    }
    return std::nullopt;
  }
  std::vector<std::string> found;
  for (std::size_t key = 0; key < values.size(); ++key) {
    if (!values[key]) {
      throw UsageError("the key of " + table.describe() + " also needs " +
                       makePrintable(table.getColumnName(table.getKeys()[key])) + "=VALUE");
    }
    found.push_back(*values[key]);
  }
  return found;
}

class Get : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "get",
        "get one line by its key or number",
        {"Looks a line up by the values of its key columns, in their order or each as NAME=VALUE, and prints its fields. The "
         "lookup is the library's: with an index, or with --no-cache by scanning. When there is no such line the status "
         "is 1, and the keys that are most like it are named.",
         "In a file of several tables the first word behind the file is the table. With --stdin every line of standard "
         "input is a key, its values written as on a line of the file, and the lines are printed one after the other."},
        {"xelcsv get --multi data.csv routes Seattle Chicago",
         "xelcsv get --multi data.csv routes plant=Seattle market=Chicago --column distance",
         "xelcsv get data.csv --number 0 --explain",
         "cut -d, -f1,2 wanted.csv | xelcsv get data.csv --stdin --format json"}};
    return text;
  }

  void declare(OptionSet& options) override {
    options.addOperand("FILE", fileName, "the data file");
    options.addOperands("WORDS", words, false, "the table, if the file has several, and the values of the key");
    options.addNumber("--number", "N", number, "the line with this number, as show prints it");
    options.addFlag("--stdin", readsKeys, "keys come from standard input, one on each line");
    options.addText("--column", "NAME", column, "print this field and nothing else");
    options.addFlag("--explain", explains, "print also the composed key and where the line is");
    options.addChoice("--format", {"text", "json"}, format, "how to write; json is one object on a line for each line");
  }

  std::string getFile() const override { return fileName; }

  int run(Session& session) override {
    if (number && readsKeys) throw UsageError("--number and --stdin exclude one another");
    DataFile file(fileName, session.openSettings(fileName).getParameters(), Access::AsParameters);
    std::vector<std::string> values = words;
    std::optional<std::string> tableName;
    if (file.isMultiTable() && !values.empty()) {
      tableName = values.front();
      values.erase(values.begin());
    }
    Table table(file, file.selectTable(tableName));
    checkColumn(table);
    if ((number || readsKeys) && !values.empty()) {
      throw UsageError("'" + makePrintable(values.front()) + "' is too much where --number or --stdin says which line");
    }
    if (number) return getByNumber(session, file, table);
    if (readsKeys) return getByStandardInput(session, file, table);
    return getByValues(session, file, table, values);
  }

 private:
  void checkColumn(const Table& table);
  int getByNumber(Session& session, DataFile& file, Table& table);
  int getByStandardInput(Session& session, DataFile& file, Table& table);
  int getByValues(Session& session, DataFile& file, Table& table, const std::vector<std::string>& values);
  bool getByKey(Session& session, DataFile& file, Table& table, const std::string& key, bool namesNearest);
  void write(Session& session, DataFile& file, const Table& table, const Line& line, const std::string& key);
  void writeText(Session& session, DataFile& file, const Table& table, const Line& line, const std::string& key) const;
  void writeJson(Output& output, DataFile& file, const Table& table, const Line& line, const std::string& key) const;

  std::string fileName;
  std::vector<std::string> words;
  std::optional<long> number;
  bool readsKeys = false;
  std::optional<std::string> column;
  long columnPosition = -1;
  bool explains = false;
  std::string format = "text";
  bool isFirst = true;
};

void Get::checkColumn(const Table& table) {
  if (!column) return;
  std::vector<std::string> names;
  for (const Column& it : table.getColumns()) {
    names.push_back(it.getName());
    if (columnPosition < 0 && names.back() == *column) columnPosition = it.position;
  }
  if (columnPosition >= 0) return;
  const std::string similar = findSimilar(*column, names);
  throw UserError(table.describe() + " has no column '" + makePrintable(*column) + "'" +
                  (similar.empty() ? "; xelcsv headers lists them" : "; is " + makePrintable(similar) + " meant?"));
}

// The number is compared first: a table that is scanned answers some numbers behind its last line with a line.
int Get::getByNumber(Session& session, DataFile& file, Table& table) {
  const long lines = table.countLines();
  if (*number >= lines) {
    session.complain(makePrintable(fileName) + ": there is no line number " + std::to_string(*number) + "; " +
                     table.describe() + " has " + countOf(lines, "line") +
                     (lines > 0 ? ", the first is number 0" : ""));
    return NotGood;
  }
  const Line line(table.getHandle().getLineByNumber(*number), *number);
  write(session, file, table, line, table.composeKey(line));
  return Good;
}

// The values are taken from the line as the library takes fields from a line of the file.
int Get::getByStandardInput(Session& session, DataFile& file, Table& table) {
  bool areAllFound = true;
  std::string text;
  while (std::getline(std::cin, text)) {
    if (text.find_first_not_of(" \t\r") == std::string::npos) continue;
    std::vector<char> formatted(text.size() + 1);
    const XelFormattedLine fields = XelFormatLine(text.data(), text.data() + text.size(), formatted.data(),
                                                  file.getReader().getImpl()->getFormat());
    std::vector<std::string> values;
    const char* field = formatted.data();
    for (int index = 0; index < fields.fields; ++index) {
      const std::string_view value = field;
      values.emplace_back(trimBlanks(value));
      field += value.size() + 1;
    }
    const std::size_t keys = table.getKeys().size();
    if (values.size() != keys) {
      throw UserError("standard input: '" + makePrintable(text) + "' holds " +
                      countOf(static_cast<long>(values.size()), "value") + ", the key of " + table.describe() +
                      " has " + std::to_string(keys) + ": " + listKeys(table));
    }
    areAllFound = getByKey(session, file, table, join(values, "-"), false) && areAllFound;
  }
  return areAllFound ? Good : NotGood;
}

int Get::getByValues(Session& session, DataFile& file, Table& table, const std::vector<std::string>& given) {
  if (given.empty()) throw UsageError("the values of the key are missing: " + listKeys(table));
  const std::vector<std::string> values = takeNamedValues(table, given).value_or(given);
  if (values.size() != table.getKeys().size()) {
    throw UsageError("the key of " + table.describe() + " has " +
                     countOf(static_cast<long>(table.getKeys().size()), "value") + " (" + listKeys(table) + "), not " +
                     std::to_string(values.size()));
  }
  return getByKey(session, file, table, join(values, "-"), true) ? Good : NotGood;
}

bool Get::getByKey(Session& session, DataFile& file, Table& table, const std::string& key, bool namesNearest) {
  try {
    const FoundLine found = findLine(table, key);
    write(session, file, table, found.get(), key);
    return true;
  } catch (const XelCsvReader::XelLineNotFoundException&) {
    const std::vector<std::string> nearest = namesNearest ? findNearestKeys(table, key) : std::vector<std::string>();
    session.complain(makePrintable(fileName) + ": " + table.describe() + " has no line with key " + makePrintable(key) +
                     (nearest.empty() ? "" : "; most like it: " + join(nearest, ", ")));
    return false;
  }
}

void Get::write(Session& session, DataFile& file, const Table& table, const Line& line, const std::string& key) {
  Output& output = session.getOutput();
  if (column) {
    output.writeLine(makePrintable(line.getFieldOrNothing(columnPosition)));
  } else if (format == "json") {
    writeJson(output, file, table, line, key);
  } else {
    if (!isFirst) output.writeLine("");
    writeText(session, file, table, line, key);
  }
  isFirst = false;
}

void Get::writeText(Session& session, DataFile& file, const Table& table, const Line& line,
                    const std::string& key) const {
  std::vector<std::pair<std::string, std::string>> entries;
  if (explains) {
    entries.emplace_back("composed key", makePrintable(key));
    entries.emplace_back("line", std::to_string(line.getLineNumber() + 1) + " of the file, " +
                                     std::to_string(line.getLineNumber()) + " as the library counts");
    entries.emplace_back("byte offset", std::to_string(findOffset(file, line.getLineNumber())));
    entries.emplace_back("found by", file.getParameters().isCached ? "index" : "scan");
  }
  const std::size_t explained = entries.size();
  for (const Column& it : table.getColumns()) {
    entries.emplace_back(makePrintable(it.getName()),
                         line.hasField(it.position) ? makePrintable(line.getField(it.position)) : "(no such field)");
  }
  const auto columns = static_cast<long>(table.getColumns().size());
  for (long beyond = table.getFirstPosition() + columns; beyond < line.getNumberOfFields(); ++beyond) {
    entries.emplace_back(table.getColumnName(beyond), makePrintable(line.getField(beyond)));
  }
  std::size_t width = 0;
  for (const auto& [name, value] : entries) width = std::max(width, getWidth(name));
  for (std::size_t index = 0; index < entries.size(); ++index) {
    const auto& [name, value] = entries[index];
    const std::string gap(width - getWidth(name) + 2, ' ');
    const Look look = index < explained ? Look::Faint : Look::Strong;
    session.getOutput().writeLine(session.getPainter().paint(name, look) + (value.empty() ? "" : gap + value));
  }
}

void Get::writeJson(Output& output, DataFile& file, const Table& table, const Line& line,
                    const std::string& key) const {
  std::vector<std::string> fields;
  for (long position = table.getFirstPosition(); position < line.getNumberOfFields(); ++position) {
    fields.push_back(toMember(table.getColumnName(position), toJson(line.getField(position))));
  }
  std::vector<std::string> members;
  if (explains) {
    members = {toMember("key", toJson(key)), toMember("lineNumber", std::to_string(line.getLineNumber())),
               toMember("offset", std::to_string(findOffset(file, line.getLineNumber())))};
  }
  members.push_back(toMember("table", table.getName().empty() ? "null" : toJson(table.getName())));
  members.push_back(toMember("fields", toObject(fields)));
  output.writeLine(toObject(members));
}

}  // namespace

std::unique_ptr<Command> makeGet() { return std::make_unique<Get>(); }

}  // namespace xeltools
