#include "fuzz/support/Properties.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/CheckedEnv.h"

namespace fuzz {

namespace {

constexpr std::size_t MostLines = 24;
constexpr long MostTables = 4;
constexpr std::size_t MostKeys = 6;

using Exception = XelCsvReader::XelCsvReaderException;

struct FoundLine {
  long number;
  std::vector<std::string> fields;  // trimmed
  std::string key;
};

bool operator==(const FoundLine& one, const FoundLine& other) {
  return one.number == other.number && one.fields == other.fields;
}

std::string shown(const FoundLine& line) {
  std::string text = std::to_string(line.number) + ":";
  for (const std::string& field : line.fields) text += " " + quoted(field);
  return text;
}

std::vector<std::string> trimmed(std::vector<std::string> fields) {
  for (std::string& field : fields) field = slowTrim(field);
  return fields;
}

// The values of a line's key; none when the line lacks one.
std::vector<std::string> valuesOf(const FoundLine& line, const XelCsvTableReader& table) {
  std::vector<std::string> values;
  for (long key = 0; key < table.getNumberOfKeys(); ++key) {
    const auto position = static_cast<std::size_t>(table.getImpl()->getKeyPosition(key));
    if (position >= line.fields.size()) return {};
    values.push_back(line.fields[position]);
  }
  return values;
}

std::string joined(const std::vector<std::string>& values) {
  std::string key;
  for (std::size_t at = 0; at < values.size(); ++at) key += (at > 0 ? "-" : "") + values[at];
  return key;
}

FoundLine readLine(const XelCsvLine& line) {
  FoundLine found{line.getLineNumber(), {}, ""};
  for (long field = 0; field < line.getNumberOfFields(); ++field) found.fields.emplace_back(line.getFields()[field]);
  found.fields = trimmed(found.fields);
  return found;
}

// One table through one kind of reader.
class TableProperties {
 public:
  TableProperties(XelCsvTableReader& openTable, const Parameters& fileParameters, const SlowFile& slowFile, bool cached)
      : table(openTable), parameters(fileParameters), file(slowFile), isCached(cached) {}

  // The table's lines, in the order of the file.
  std::vector<FoundLine> check() {
    std::vector<FoundLine> lines = walk();
    for (std::size_t at = 0; at < lines.size(); ++at) {
      const XelCsvLine found = table.getLineByNumber(static_cast<long>(at));
      checkSame(readLine(found), lines[at], "line number " + std::to_string(at));
    }
    try {
      checkKeys(lines);
    } catch (const Exception& exception) {
      // A scan for a key looks at all lines before the one it finds, also those of other tables where tables are split.
      fuzz::check(!isCached && isKeyFieldMissing(), std::string("a key that is there: ") + exception.what());
    }
    if (lines.size() < MostLines) {
      checkEqual(table.getNumberOfItems(), static_cast<long>(lines.size()), "number of items and of lines walked over");
    }
    return lines;
  }

 private:
  static void checkSame(const FoundLine& got, const FoundLine& expected, const std::string& what) {
    fuzz::check(got == expected, what + "\n  got      " + shown(got) + "\n  expected " + shown(expected));
  }

  // A walk does not ask its first line for its table's name.
  bool isOwn(const FoundLine& line) const {
    return !parameters.isMultiTable || !parameters.isSplit || line.fields[0] == table.getNameOfTable();
  }

  std::vector<FoundLine> walk() {
    std::vector<FoundLine> lines;
    for (XelCsvTableReader::LineIterator it(table); it.ok() && lines.size() < MostLines; ++it) {
      FoundLine line = readLine(*it);
      checkInFile(line);
      line.key = joined(valuesOf(line, table));
      if (isOwn(line)) lines.push_back(line);
    }
    return lines;
  }

  void checkInFile(const FoundLine& line) const {
    const auto number = static_cast<std::size_t>(line.number);
    fuzz::check(line.number >= 0 && number < file.getLines().size(), "a line of this number is in the file");
    const FoundLine expected{line.number, trimmed(slowFields(file.getLines()[number].bytes, parameters.characters)),
                             ""};
    checkSame(line, expected, "a line and the file");
  }

  // Whether any line of the file has too few fields for the table's keys.
  bool isKeyFieldMissing() const {
    long wanted = table.getNumberOfKeys();
    for (long key = 0; key < table.getNumberOfKeys(); ++key) {
      wanted = std::max(wanted, table.getImpl()->getKeyPosition(key) + 1);
    }
    const auto isShort = [&](const PhysicalLine& line) {
      return static_cast<long>(slowFields(line.bytes, parameters.characters).size()) < wanted;
    };
    return std::any_of(file.getLines().begin(), file.getLines().end(), isShort);
  }

  // Of lines with one key the first is found.
  void checkKeys(const std::vector<FoundLine>& lines) {
    std::set<std::string> met;
    for (const FoundLine& line : lines) {
      const std::vector<std::string> values = valuesOf(line, table);
      if (values.empty() || values.size() > MostKeys || !met.insert(line.key).second) continue;
      std::array<const char*, MostKeys> texts{};
      for (std::size_t at = 0; at < values.size(); ++at) texts[at] = values[at].c_str();
      const XelCsvLine found = table.getLineByKey(static_cast<long>(values.size()), texts[0], texts[1], texts[2],
                                                  texts[3], texts[4], texts[5]);
      checkSame(readLine(found), line, "the line with key " + quoted(line.key));
      if (isCached) checkRecord(line);
    }
  }

  void checkRecord(const FoundLine& line) const {
    const OffsetAndLineNumber* record = table.getImpl()->getOffsetAndLineNumber(line.key.c_str());
    fuzz::check(record != nullptr, "the index has the key " + quoted(line.key));
    checkEqual(record->lineNumber, line.number, "line number in the index");
    checkEqual(record->offset, file.getLines()[static_cast<std::size_t>(line.number)].offset, "offset in the index");
  }

  XelCsvTableReader& table;
  const Parameters& parameters;
  const SlowFile& file;
  bool isCached;
};

using Lines = std::optional<std::vector<FoundLine>>;

// A table of one of the readers; an empty handle when the reader refuses to make it.
XelCsvTableReader openTable(XelCsvReader& reader, long number, const Parameters& parameters) {
  try {
    return parameters.isMultiTable ? reader.getTableByNumber(number) : reader.getReaderForUniqueTableFile();
  } catch (const Exception&) {
    return XelCsvTableReader();
  }
}

// None when a line lacks a key field.
Lines readScanned(XelCsvTableReader& table, const Parameters& parameters, const SlowFile& file) {
  try {
    return TableProperties(table, parameters, file, false).check();
  } catch (const Exception&) {
    return std::nullopt;
  }
}

// The index of a one-table file ends at a key that came before.
bool areKeysUnique(const std::vector<FoundLine>& lines) {
  std::set<std::string> keys;
  for (const FoundLine& line : lines) keys.insert(line.key);
  return keys.size() == lines.size();
}

void compareKinds(XelCsvTableReader& scanning, XelCsvTableReader& cached, const Parameters& parameters,
                  const SlowFile& file) {
  if (scanning.isEmpty()) {
    check(cached.isEmpty(), "a table that cannot be scanned cannot be indexed");
    return;
  }
  const Lines scanned = readScanned(scanning, parameters, file);
  if (cached.isEmpty()) return;
  const std::vector<FoundLine> indexed = TableProperties(cached, parameters, file, true).check();
  if (!areKeysUnique(indexed)) return;
  check(scanned.has_value(), "a table that can be indexed can be scanned");
  checkEqual(scanned->size(), indexed.size(), "number of lines of both kinds of tables");
  for (std::size_t at = 0; at < indexed.size(); ++at) {
    check((*scanned)[at] == indexed[at],
          "both kinds of tables\n  scanned " + shown((*scanned)[at]) + "\n  indexed " + shown(indexed[at]));
  }
}

}  // namespace

void checkProperties(const std::string& fileName, const Parameters& parameters, const SlowFile& file) {
  // Where a file ends without a line feed, a scan meets its last line again and again.
  const bool isEnded = file.getLines().empty() || file.getLines().back().bytes.back() == '\n';
  if (!isEnded) return;
  const CheckedEnv env;
  std::array<XelCsvReader, 2> readers;
  try {
    readers[0] = openReader(env, fileName, parameters, false);
    readers[1] = openReader(env, fileName, parameters, true);
  } catch (const Exception&) {
    for (XelCsvReader& reader : readers) reader.end();
    return;
  }
  const long tables = parameters.isMultiTable ? std::min(MostTables, readers[0].getNumberOfTables()) : 1;
  for (long number = 0; number < tables; ++number) {
    XelCsvTableReader scanning = openTable(readers[0], number, parameters);
    XelCsvTableReader cached = openTable(readers[1], number, parameters);
    compareKinds(scanning, cached, parameters, file);
    scanning.end();
    cached.end();
  }
  for (XelCsvReader& reader : readers) reader.end();
}

}  // namespace fuzz
