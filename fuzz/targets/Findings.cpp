// Findings about a file: where each is, how they are counted, and that the library does as they say. First line: the
// parameters; the data file after it.
#include <algorithm>
#include <exception>

#include "csv/reader/XelCsvReaderI.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/CheckedEnv.h"
#include "fuzz/support/DataFile.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Parameters.h"
#include "xelcsv/XelCsvCheck.h"

namespace fuzz {

namespace {

constexpr long LongestExcerpt = 160;

// How making a table ends.
constexpr const char* Made = "made";
constexpr const char* Overflow = "a number of the key line is too large";
constexpr const char* LacksKey = "a line lacks a field of the key";
constexpr const char* Duplicated = "two lines have one key";

template <class Make>
std::string outcomeOfMaking(Make make) {
  try {
    make();
    return Made;
  } catch (const XelCsvReader::XelOverflowException&) {
    return Overflow;
  } catch (const XelCsvReader::XelDuplicatedLineException&) {
    return Duplicated;
  } catch (const XelCsvReader::XelCsvReaderException&) {
    return LacksKey;
  }
}

// The findings of a file, and what they say.
class Findings {
 public:
  Findings(XelEnv env, const DataFile& file, const XelCsvCheckParameters& parameters, const std::string& content)
      : bytes(content) {
    const XelCsvCheck check(env, file.getName(), parameters);
    result = check.run([this](const XelCsvFinding& finding) {
      all.push_back(finding);
      return true;
    });
  }

  const XelCsvCheckResult& getResult() const { return result; }

  bool has(const std::string& code) const {
    return std::any_of(all.begin(), all.end(), [&](const XelCsvFinding& finding) { return finding.code == code; });
  }

  bool has(const std::string& code, const std::string& table) const {
    return std::any_of(all.begin(), all.end(),
                       [&](const XelCsvFinding& finding) { return finding.code == code && finding.table == table; });
  }

  // Where a finding is must be in the file, and its excerpt must be what stands there.
  void checkPlaces() const {
    const auto size = static_cast<long>(bytes.size());
    for (const XelCsvFinding& finding : all) {
      const auto length = static_cast<long>(finding.excerpt.size());
      check(XelFindCheckCode(finding.code) != nullptr, "the catalogue has the code");
      check(finding.severity <= XelFindCheckCode(finding.code)->severity, "a finding is no worse than its kind");
      check(finding.offset >= 0 && finding.length >= 0 && finding.offset + finding.length <= size,
            "the place is there");
      check(length <= LongestExcerpt, "an excerpt is short");
      if (finding.line == 0) continue;
      const auto end = bytes.begin() + finding.offset;
      checkEqual(finding.line, std::count(bytes.begin(), end, '\n') + 1, "line as people count");
      const std::size_t feed =
          finding.offset == 0 ? std::string::npos : bytes.rfind('\n', static_cast<std::size_t>(finding.offset) - 1);
      const long start = feed == std::string::npos ? 0 : static_cast<long>(feed) + 1;
      checkEqual(finding.column, finding.offset - start + 1, "column");
      check(finding.excerptOffset >= start, "an excerpt is of one line");
      checkEqual(bytes.substr(static_cast<std::size_t>(finding.excerptOffset), finding.excerpt.size()), finding.excerpt,
                 "excerpt");
      check(finding.excerpt.find('\n') == std::string::npos, "an excerpt holds no line end");
      checkMessage(finding.message);
    }
  }

  // What is in a message may be shown anywhere.
  static void checkMessage(const std::string& message) {
    const auto isControl = [](char byte) { return (byte >= 0 && byte < ' ') || byte == 0x7F; };
    check(std::none_of(message.begin(), message.end(), isControl), "a message holds no control characters");
  }

  void checkCounts() const {
    const auto count = [this](XelCsvSeverity severity) {
      return static_cast<long>(std::count_if(
          all.begin(), all.end(), [severity](const XelCsvFinding& finding) { return finding.severity == severity; }));
    };
    checkEqual(result.errors, count(XelCsvSeverity::Error), "errors");
    checkEqual(result.warnings, count(XelCsvSeverity::Warning), "warnings");
    checkEqual(result.notes, count(XelCsvSeverity::Note), "notes");
    checkEqual(result.reported, static_cast<long>(all.size()), "reported findings");
    check(result.omitted.empty(), "no finding is omitted unasked");
    if (result.isWhole) checkEqual(result.bytes, static_cast<long>(bytes.size()), "bytes");
  }

  // How making a table ends: the first finding that ends it. Two lines with one key end the index of a one-table file, so
  // that no line behind them is looked at.
  std::string foretell(const std::string& table, bool doDuplicatesThrow) const {
    std::string outcome = Made;
    long first = 0;
    for (const XelCsvFinding& finding : all) {
      if (finding.table != table) continue;
      const std::string code = finding.code;
      if (code == "key-line-overflow") return Overflow;
      const bool lacksKey = code == "ragged" && finding.message.find("key lacks") != std::string::npos;
      if ((!lacksKey && code != "duplicate-key") || (first != 0 && first < finding.offset + 1)) continue;
      first = finding.offset + 1;
      outcome = lacksKey ? LacksKey : doDuplicatesThrow ? Duplicated : Made;
    }
    return outcome;
  }

 private:
  const std::string& bytes;
  std::vector<XelCsvFinding> all;
  XelCsvCheckResult result;
};

void checkTable(XelCsvReader& reader, const std::string& name, const Findings& findings) {
  XelCsvTableReader table;
  const std::string outcome = outcomeOfMaking([&] { table = reader.getTableByName(name.c_str()); });
  checkEqual(outcome, findings.foretell(name, true), "making the table " + quoted(name));
  if (!table.isEmpty()) {
    checkEqual(table.getNumberOfItems() == 0, findings.has("empty-table", name), "the table is empty: " + quoted(name));
  }
  table.end();
}

// Whether formatting changes a name: with table splitting lines are then read with another table than the directory says.
bool isFormattedOtherwise(const std::string& name, const Parameters& parameters) {
  const Characters& characters = parameters.characters;
  const bool hasDecimal = characters.decimal != '.' && name.find(characters.decimal) != std::string::npos;
  return hasDecimal || name.find(characters.quote) != std::string::npos;
}

// What is left to the tests: lines without a table's name, which may or may not be read with a table, and names that
// formatting changes.
bool isToldExactly(const XelCsvReaderI& directory, const Parameters& parameters, const Findings& findings) {
  bool isExact = !findings.has("blank-name");
  for (long number = 0; number < directory.getNumberOfAllTables() && parameters.isSplit; ++number) {
    isExact = isExact && !isFormattedOtherwise(directory.getTableName(number), parameters);
  }
  return isExact;
}

void checkManyTables(XelEnv env, const DataFile& file, const Parameters& parameters, const Findings& findings) {
  XelCsvReader reader;
  bool isDuplicated = false;
  try {
    reader = openReader(env, file.getName(), parameters, true);
  } catch (const XelCsvReader::XelDuplicatedTableException&) {
    isDuplicated = true;
  }
  checkEqual(isDuplicated, findings.has("duplicate-table"), "a table comes back");
  if (isDuplicated) return;
  const long tables = reader.getImpl()->getNumberOfAllTables();
  checkEqual(findings.getResult().tables, tables, "number of tables");
  if (isToldExactly(*reader.getImpl(), parameters, findings)) {
    for (long number = 0; number < tables; ++number) {
      checkTable(reader, reader.getImpl()->getTableName(number), findings);
    }
  }
  reader.end();
}

void checkOneTable(XelEnv env, const DataFile& file, const Parameters& parameters, const Findings& findings) {
  XelCsvReader reader;
  const std::string outcome = outcomeOfMaking([&] { reader = openReader(env, file.getName(), parameters, true); });
  checkEqual(outcome, findings.foretell("", false), "making the one table");
  if (!reader.isEmpty()) {
    checkEqual(reader.getNumberOfItems() == 0, findings.has("empty-table", ""), "the one table is empty");
  }
  reader.end();
}

XelCsvCheckParameters toCheck(const Parameters& parameters) {
  XelCsvCheckParameters reading;
  reading.isMultiTable = parameters.isMultiTable;
  reading.allowTableSplitting = parameters.isSplit;
  reading.separators = parameters.characters.separators;
  reading.decimal = parameters.characters.decimal;
  reading.quote = parameters.characters.quote;
  reading.comment = parameters.comment;
  return reading;
}

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name that the fuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const DataFile File;
  const Input input = parseInput(data, size);
  const Parameters parameters = parseParameters(input);
  try {
    slowCheck(parameters);
  } catch (const model::Failure&) {
    return 0;  // refused by the check as by a reader
  }
  File.write(input.rest);
  const CheckedEnv env;
  const Findings findings(env, File, toCheck(parameters), input.rest);
  findings.checkPlaces();
  findings.checkCounts();
  if (findings.has("utf16")) return 0;
  if (parameters.isMultiTable) {
    checkManyTables(env, File, parameters, findings);
  } else {
    checkOneTable(env, File, parameters, findings);
  }
  return 0;
}

}  // namespace fuzz
