// The heading zone of tables and their keys: which columns and keys there are, where headings are found, where the data
// lines begin, and that a line is found by its key. First line: the parameters, then words that are asked for as headings
// and as keys; the data file after it.
#include <algorithm>
#include <array>
#include <optional>

#include "csv/line/XelCsvLineI.h"
#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/CheckedEnv.h"
#include "fuzz/support/DataFile.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/SlowTables.h"
#include "tests/support/CoutCapture.h"
#include "tests/support/Outcome.h"

namespace fuzz {

namespace {

constexpr std::size_t MostWords = 16;
constexpr std::size_t MostHeadings = 12;
constexpr std::size_t MostTables = 6;
constexpr std::size_t MostLines = 40;
constexpr std::size_t MostValues = 8;

template <class Operation>
std::string expectedOf(Operation operation) {
  try {
    return operation();
  } catch (const model::Failure& failure) {
    return failure.kind + " | " + failure.message;
  }
}

// A data line of the table's region with its fields as formatted.
struct DataLine {
  long number;
  long offset;
  bool isOwn;
  std::vector<std::string> fields;
};

// One table, and what its text in the file says of it.
struct SlowTable {
  const Parameters* parameters = nullptr;
  std::optional<model::TableEntry> entry;
  std::string fileName;
  SlowZone zone;
  std::vector<DataLine> lines;  // of the region, those of other tables too where tables are split

  std::string named(const std::string& text, const std::string& joint = " in table ") const {
    return entry.has_value() ? text + joint + entry->name : text;
  }
};

std::vector<DataLine> readLines(const SlowFile& file, const SlowTable& table) {
  const SlowZone& zone = table.zone;
  std::size_t index = 0;
  while (index < file.getLines().size() && file.getLines()[index].offset < zone.firstDataOffset) ++index;
  SlowCursor cursor(file, index);
  std::vector<DataLine> lines;
  long number = zone.firstDataLineNumber - 1;
  long offset = zone.firstDataOffset;
  while (const PhysicalLine* line = cursor.skip(table.parameters->comment, number, offset)) {
    if (offset > zone.endOffset) break;
    const std::vector<std::string> fields = slowFields(line->bytes, table.parameters->characters);
    const bool isOwn =
        !table.entry.has_value() || !table.parameters->isSplit || slowTrim(fields[0]) == table.entry->name;
    lines.push_back({number, offset, isOwn, fields});
  }
  return lines;
}

// The key of a line. A line with too few fields for it is refused.
std::string keyOf(const SlowTable& table, const DataLine& line) {
  const auto keys = table.zone.keyPositions.size();
  if (line.fields.size() < keys) {
    throw model::Failure(
        "XelCsvReaderException",
        table.named("XelCsvReader::XelCsvReaderException : corrupted file the number of keys (" + std::to_string(keys) +
                    ") exceeds the number of fields of the current line (" + std::to_string(line.fields.size()) +
                    "), line number " + std::to_string(line.number)));
  }
  if (!line.isOwn) return "";
  std::string key;
  for (std::size_t at = 0; at < keys; ++at) {
    const long position = table.zone.keyPositions[at];
    if (position >= static_cast<long>(line.fields.size())) {
      throw model::Failure("XelFieldNotFoundException",
                           table.named("XelCsvReader::XelFieldNotFoundException : Field Not Found at position " +
                                           std::to_string(position) + " in line number " + std::to_string(line.number),
                                       ", in table ") +
                               " while trying getStringByPosition");
    }
    key += (at > 0 ? "-" : "") + slowTrim(line.fields[static_cast<std::size_t>(position)]);
  }
  return key;
}

// The line that a scan for a key finds: the first that has it, unless a line before it is refused.
const DataLine* scanForKey(const SlowTable& table, const std::string& key) {
  for (const DataLine& line : table.lines) {
    const std::string has = keyOf(table, line);
    if (line.isOwn && has == key) return &line;
  }
  return nullptr;
}

// The lines in an index with their keys: those of the table, up to the first key that comes again, which is the last.
struct SlowIndex {
  std::vector<std::pair<std::string, const DataLine*>> lines;
  std::optional<std::string> duplicatedKey;
};

SlowIndex makeIndex(const SlowTable& table) {
  SlowIndex index;
  for (const DataLine& line : table.lines) {
    if (!line.isOwn) continue;
    const std::string key = keyOf(table, line);
    const auto hasKey = [&](const auto& entry) { return entry.first == key; };
    if (std::any_of(index.lines.begin(), index.lines.end(), hasKey)) {
      index.duplicatedKey = key;
      break;
    }
    index.lines.emplace_back(key, &line);
  }
  return index;
}

// Whether a line has these fields, apart from the spaces at their ends.
std::string fieldsOf(long number, const std::vector<std::string>& fields) {
  std::string text = std::to_string(number) + ": ";
  for (const std::string& field : fields) text += "[" + slowTrim(field) + "]";
  return text;
}

std::string fieldsOf(const XelCsvLine& line) {
  const std::vector<std::string> fields(line.getFields(), line.getFields() + line.getNumberOfFields());
  return fieldsOf(line.getLineNumber(), fields);
}

class HeadingCheck {
 public:
  HeadingCheck(XelCsvTableReader& openTable, const SlowTable& slowTable) : table(openTable), expected(slowTable) {}

  void run(const std::vector<std::string>& words) {
    checkZone();
    checkHeadings(words);
    checkPrintedKeys();
  }

 private:
  void checkZone() const {
    const SlowZone& zone = expected.zone;
    checkEqual(table.getNumberOfColumns(), zone.numberOfColumns, "number of columns");
    checkEqual(table.getNumberOfKeys(), static_cast<long>(zone.keyPositions.size()), "number of keys");
    for (std::size_t key = 0; key < zone.keyPositions.size(); ++key) {
      checkEqual(table.getImpl()->getKeyPosition(static_cast<long>(key)), zone.keyPositions[key], "position of a key");
    }
    checkEqual(table.getImpl()->getFirstDataOffset(), zone.firstDataOffset, "offset of the first data line");
    checkEqual(table.getImpl()->getFirstDataLineNumber(), zone.firstDataLineNumber, "number of the first data line");
    checkEqual(table.getImpl()->getEndOffset(), zone.endOffset, "end offset");
    checkEqual(
        textOf(table.getFirstLine()),
        zone.headings.has_value() ? model::textOf(model::Line{zone.headingLineNumber, *zone.headings}) : "no line",
        "the heading line");
  }

  void checkHeadings(const std::vector<std::string>& words) {
    for (const std::string& word : words) checkHeading(word);
    if (!expected.zone.headings.has_value()) return;
    const std::vector<std::string>& headings = *expected.zone.headings;
    for (std::size_t field = 0; field < std::min(headings.size(), MostHeadings); ++field) {
      checkHeading(headings[field]);
      checkHeading(slowTrim(headings[field]));
    }
    checkHeading(headings.back());
  }

  // All fields of the heading line are trimmed before the first is compared; the leftmost wins.
  void checkHeading(const std::string& heading) const {
    const std::vector<std::string> headings = expected.zone.headings.value_or(std::vector<std::string>());
    std::optional<long> found;
    for (std::size_t field = headings.size(); field > 0; --field) {
      if (slowTrim(headings[field - 1]) == heading) found = static_cast<long>(field - 1);
    }
    checkEqual(table.isHeadingExists(heading.c_str()), found.has_value(), "isHeadingExists of " + quoted(heading));
    const std::string position = expectedOf([&] {
      const std::string prefix = "XelCsvReader::XelColumnHeaderNotFoundException : ";
      if (!expected.zone.headings.has_value()) {
        const std::string place =
            expected.entry.has_value() ? "table " + expected.entry->name : "file " + expected.fileName;
        throw model::Failure("XelColumnHeaderNotFoundException",
                             prefix + "No header line for columns in " + place + " ");
      }
      if (!found.has_value()) {
        throw model::Failure("XelColumnHeaderNotFoundException",
                             expected.named(prefix + "Heading " + heading + " not found"));
      }
      return std::to_string(expected.parameters->isMultiTable ? *found : *found - 1);
    });
    checkEqual(outcomeOf([&] { return table.getPosition(heading.c_str()); }), position,
               "getPosition of " + quoted(heading));
  }

  // The heading printed is the field at the key's position, in a one-table file too, where its mark is not left out.
  std::string nameKey(long position) const {
    if (!expected.zone.headings.has_value()) return "Column " + std::to_string(position);
    const std::vector<std::string>& headings = *expected.zone.headings;
    if (position < static_cast<long>(headings.size())) return slowTrim(headings[static_cast<std::size_t>(position)]);
    const std::string place = "Field Not Found at position " + std::to_string(position) + " in line number " +
                              std::to_string(expected.zone.headingLineNumber);
    throw model::Failure("XelFieldNotFoundException",
                         "XelCsvReader::XelFieldNotFoundException : " + expected.named(place, ", in table ") +
                             " while trying getStringByPosition");
  }

  void checkPrintedKeys() const {
    const std::string wanted = expectedOf([&] {
      std::string text;
      const std::vector<long>& positions = expected.zone.keyPositions;
      for (std::size_t key = 0; key < positions.size(); ++key) {
        text += "key " + std::to_string(key) + " ----> " + nameKey(positions[key]) + "\n";
      }
      return text;
    });
    const std::string got = outcomeOf([&] {
      const CoutCapture printed;
      table.printKeys();
      return printed.getText();
    });
    checkEqual(got, wanted, "printKeys");
  }

  XelCsvTableReader& table;
  const SlowTable& expected;
};

class KeyCheck {
 public:
  KeyCheck(XelCsvTableReader& openTable, const SlowTable& slowTable, const std::optional<SlowIndex>& slowIndex)
      : table(openTable), expected(slowTable), index(slowIndex) {}

  void run(const std::vector<std::string>& words) {
    const std::size_t keys = expected.zone.keyPositions.size();
    checkTooFewValues();
    if (keys == 0 || keys > MostValues) return;
    for (std::size_t line = 0; line < std::min(expected.lines.size(), MostLines); ++line) {
      checkValues(valuesOf(expected.lines[line], true));
      checkValues(valuesOf(expected.lines[line], false));
    }
    std::vector<std::string> values = words;
    values.resize(keys);
    checkValues(values);
    checkIndex();
  }

 private:
  // The values of a line's key; a field that is not there is an empty value.
  std::vector<std::string> valuesOf(const DataLine& line, bool isTrimmed) const {
    std::vector<std::string> values;
    for (const long position : expected.zone.keyPositions) {
      const bool isThere = position < static_cast<long>(line.fields.size());
      const std::string field = isThere ? line.fields[static_cast<std::size_t>(position)] : "";
      values.push_back(isTrimmed ? slowTrim(field) : field);
    }
    return values;
  }

  XelCsvLine call(const std::vector<std::string>& values, long count) {
    std::array<const char*, MostValues> texts{};
    for (std::size_t at = 0; at < values.size(); ++at) texts[at] = values[at].c_str();
    return table.getLineByKey(count, texts[0], texts[1], texts[2], texts[3], texts[4], texts[5], texts[6], texts[7]);
  }

  void checkTooFewValues() {
    const auto keys = static_cast<long>(expected.zone.keyPositions.size());
    if (keys == 0) return;
    const std::string text = "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : ";
    checkEqual(
        outcomeOf([&] { return call({}, keys - 1); }),
        "XelLineNotFoundException | " + expected.named(text + std::to_string(keys), " for table ").substr(0, 499),
        "getLineByKey with too few values");
  }

  const DataLine* find(const std::string& key) const {
    if (!index.has_value()) return scanForKey(expected, key);
    for (const auto& entry : index->lines) {
      if (entry.first == key) return entry.second;
    }
    return nullptr;
  }

  void checkValues(const std::vector<std::string>& values) {
    std::string key;
    for (std::size_t at = 0; at < values.size(); ++at) key += (at > 0 ? "-" : "") + values[at];
    const std::string wanted = expectedOf([&] {
      const DataLine* line = find(key);
      if (line != nullptr) return fieldsOf(line->number, line->fields);
      const std::string text = expected.named("XelCsvReader::XelLineNotFoundException : No line having key " + key);
      throw model::Failure("XelLineNotFoundException",
                           text + (index.has_value() && !expected.entry.has_value() ? " ." : "."));
    });
    const std::string got = outcomeOf([&] { return fieldsOf(call(values, static_cast<long>(values.size()))); });
    checkEqual(got, wanted, "getLineByKey of " + quoted(key));
    if (got == wanted && wanted[0] != 'X') checkPrintedValues(values);
  }

  // Line by line: the name of the key column, then the field as it stands.
  void checkPrintedValues(const std::vector<std::string>& values) {
    const XelCsvLine line = call(values, static_cast<long>(values.size()));
    const std::string printed = outcomeOf([&] {
      const CoutCapture capture;
      line.printValueOfKeys();
      return capture.getText();
    });
    const std::string keys = outcomeOf([&] {
      const CoutCapture capture;
      table.printKeys();
      return capture.getText();
    });
    if (keys.compare(0, 4, "key ") != 0) return checkEqual(printed, keys, "a heading that is not there, printed");
    std::string wanted;
    std::size_t at = 0;
    for (std::size_t key = 0; key < values.size(); ++key) {
      const std::string mark = "key " + std::to_string(key) + " ----> ";
      const std::size_t end = keys.find('\n', at);
      const auto position = static_cast<std::size_t>(expected.zone.keyPositions[key]);
      wanted += "Key " + std::to_string(key) + " (" + keys.substr(at + mark.size(), end - at - mark.size()) +
                ") = " + line.getFields()[position] + "\n";
      at = end + 1;
    }
    checkEqual(printed, wanted, "printValueOfKeys");
  }

  void checkIndex() {
    if (!index.has_value()) return;
    const auto items = static_cast<long>(index->lines.size()) + (index->duplicatedKey.has_value() ? 1 : 0);
    checkEqual(table.getNumberOfItems(), items, "number of items");
    for (const auto& [key, line] : index->lines) {
      const OffsetAndLineNumber* record = table.getImpl()->getOffsetAndLineNumber(key.c_str());
      check(record != nullptr, "the index has the key " + quoted(key));
      checkEqual(record->offset, line->offset, "offset of the key " + quoted(key));
      checkEqual(record->lineNumber, line->number, "line number of the key " + quoted(key));
    }
  }

  XelCsvTableReader& table;
  const SlowTable& expected;
  const std::optional<SlowIndex>& index;
};

// Makes the slow table and, for a cached one, its index; a duplicated key refuses the table of a file of several.
std::string expectTable(const SlowFile& bytes, SlowTable& table, bool isCached, std::optional<SlowIndex>& index) {
  return expectedOf([&] {
    const model::TableEntry* entry = table.entry.has_value() ? &*table.entry : nullptr;
    table.zone = slowZone(bytes, *table.parameters, entry);
    table.lines = readLines(bytes, table);
    if (isCached) index = makeIndex(table);
    if (isCached && entry != nullptr && index->duplicatedKey.has_value()) {
      throw model::Failure("XelDuplicatedLineException",
                           "XelCsvReader::XelDuplicatedLineException : Another line with key  " +
                               *index->duplicatedKey + " already exists In Table " + entry->name + " .");
    }
    return std::to_string(table.zone.numberOfColumns);
  });
}

void checkTable(const std::string& got, XelCsvTableReader& real, const std::string& wanted, const SlowTable& table,
                const std::optional<SlowIndex>& index, const std::vector<std::string>& words) {
  checkEqual(got, wanted, "a table");
  if (real.isEmpty()) return;
  HeadingCheck(real, table).run(words);
  KeyCheck(real, table, index).run(words);
  real.end();
}

void checkTables(const DataFile& file, const Parameters& parameters, const SlowFile& bytes, bool isCached,
                 const std::vector<std::string>& words) {
  const CheckedEnv env;
  SlowTable table;
  table.parameters = &parameters;
  table.fileName = file.getName();
  std::optional<SlowIndex> index;
  XelCsvReader reader;
  XelCsvTableReader real;
  if (!parameters.isMultiTable) {
    const std::string got = outcomeOf([&] {
      reader = openReader(env, file.getName(), parameters, isCached);
      real = reader.getReaderForUniqueTableFile();
      return real.getNumberOfColumns();
    });
    checkTable(got, real, expectTable(bytes, table, isCached, index), table, index, words);
  } else {
    reader = openReader(env, file.getName(), parameters, isCached);
    const SlowDirectory directory = slowDirectory(bytes, parameters);
    for (std::size_t number = 0; number < std::min(directory.tables.size(), MostTables); ++number) {
      table.entry = directory.tables[number];
      index.reset();
      const std::string wanted = expectTable(bytes, table, isCached, index);
      const std::string got = outcomeOf([&] {
        real = reader.getTableByNumber(static_cast<long>(number));
        return real.getNumberOfColumns();
      });
      checkTable(got, real, wanted, table, index, words);
    }
  }
  reader.end();
}

std::vector<std::string> wordsOf(const Input& input) {
  std::vector<std::string> words;
  for (std::size_t word = ParameterWords; word < input.words.size() && words.size() < MostWords; ++word) {
    words.push_back(upToZero(input.words[word]));
  }
  return words;
}

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name that the fuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const DataFile File;
  const Input input = parseInput(data, size);
  const Parameters parameters = parseParameters(input);
  const SlowFile bytes(input.rest);
  try {
    slowCheck(parameters);
    if (parameters.isMultiTable) slowDirectory(bytes, parameters);
  } catch (const model::Failure&) {
    return 0;  // files that are refused are looked at by the target of the directory
  }
  File.write(input.rest);
  for (const bool isCached : {false, true}) checkTables(File, parameters, bytes, isCached, wordsOf(input));
  return 0;
}

}  // namespace fuzz
