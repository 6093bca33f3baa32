// The directory of a file: which parameters a reader takes, which tables it finds and where, and what it says of tables that
// are not there. First line: the parameters, then words that are asked for as names of tables; the data file after it.
#include <algorithm>

#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/CheckedEnv.h"
#include "fuzz/support/DataFile.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/SlowTables.h"
#include "tests/support/Outcome.h"

namespace fuzz {

namespace {

constexpr std::size_t MostNames = 16;

constexpr const char* FormatTable = "XELO_CSV_FORMAT";
constexpr const char* SchemaTable = "XELO_DATA_SCHEMA";

template <class Operation>
std::string expectedOf(Operation operation) {
  try {
    return operation();
  } catch (const model::Failure& failure) {
    return failure.kind + " | " + failure.message;
  }
}

[[noreturn]] void raise(const std::string& kind, const std::string& text) {
  throw model::Failure(kind, "XelCsvReader::" + kind + " : " + text);
}

// Number of the reserved tables at the start of the file.
std::size_t countReserved(const SlowDirectory& directory) {
  std::size_t reserved = 0;
  for (const char* name : {FormatTable, SchemaTable}) {
    if (reserved < directory.tables.size() && directory.tables[reserved].name == name) ++reserved;
  }
  return reserved;
}

bool holdsTable(const SlowDirectory& directory, const std::string& name) {
  const auto hasName = [&](const model::TableEntry& table) { return table.name == name; };
  return std::any_of(directory.tables.begin(), directory.tables.end(), hasName);
}

// The tables of a file of several, through a reader of one kind.
class DirectoryCheck {
 public:
  DirectoryCheck(XelCsvReader& openReader, const SlowDirectory& slowTables, const SlowFile& slowFile)
      : reader(openReader), expected(slowTables), file(slowFile) {}

  void run(const std::vector<std::string>& names) {
    const auto count = static_cast<long>(expected.tables.size());
    checkEqual(reader.getImpl()->getNumberOfAllTables(), count, "number of tables");
    checkEqual(reader.getNumberOfTables(), count - static_cast<long>(countReserved(expected)),
               "number of tables that are not reserved");
    for (long number = 0; number < count; ++number) checkTable(number);
    for (const std::string& name : names) checkName(name);
    for (const long number : {-1L, count, count + 1}) checkMissingNumber(number);
    checkEmptyName();
    checkGuards();
    checkWalk();
  }

 private:
  void checkTable(long number) {
    const model::TableEntry& table = expected.tables[static_cast<std::size_t>(number)];
    const XelCsvReaderI& impl = *reader.getImpl();
    checkEqual<std::string>(impl.getTableName(number), table.name, "name of table " + std::to_string(number));
    check(reader.isTableExists(table.name.c_str()), "the table exists: " + quoted(table.name));
    const OffsetAndLineNumber* start = impl.getOffsetAndLineNumber(table.name.c_str());
    check(start != nullptr, "where the table begins is known: " + quoted(table.name));
    checkEqual(start->offset, table.offset, "offset of " + quoted(table.name));
    checkEqual(start->lineNumber, table.lineNumber, "line number of " + quoted(table.name));
    checkEqual(impl.getEndOffset(table.name.c_str()), table.endOffset, "end offset of " + quoted(table.name));
    checkStarts(table);
  }

  // Without the slow directory: offsets are starts of lines.
  void checkStarts(const model::TableEntry& table) const {
    const auto number = static_cast<std::size_t>(table.lineNumber);
    check(number < file.getLines().size(), "the table's first line is in the file");
    checkEqual(table.offset, file.getLines()[number].offset, "offset of the line with the table's line number");
    const auto startsThere = [&](const PhysicalLine& line) { return line.offset == table.endOffset; };
    check(std::any_of(file.getLines().begin(), file.getLines().end(), startsThere), "a line starts at the end offset");
  }

  void checkName(const std::string& name) {
    const bool isThere = holdsTable(expected, name);
    checkEqual(reader.isTableExists(name.c_str()), isThere, "the table exists: " + quoted(name));
    if (isThere) return;
    const std::string failure = expectedOf(
        [&]() -> std::string { raise("XelTableNotFoundException", "No Table having this name " + name + "."); });
    checkEqual(outcomeOf([&] { return reader.getTableByName(name.c_str()).getNumberOfColumns(); }), failure,
               "getTableByName of a name that is not there");
    checkEqual(outcomeOf([&] { return XelCsvTableReader(reader.getImpl(), name.c_str()).getNumberOfColumns(); }),
               failure, "a table of a name that is not there");
    const std::string noEnd = expectedOf([&]() -> std::string {
      throw model::Failure("XelCsvReaderException",
                           "XelCsvReader::XelCsvReaderException : No Table having this name " + name + ".");
    });
    checkEqual(outcomeOf([&] { return reader.getImpl()->getEndOffset(name.c_str()); }), noEnd,
               "end offset of a name that is not there");
  }

  void checkMissingNumber(long number) {
    const std::string text = "No Table number " + std::to_string(number) + ".The number of tables is " +
                             std::to_string(expected.tables.size()) + ".";
    checkEqual(outcomeOf([&] { return reader.getTableByNumber(number).getNumberOfColumns(); }),
               expectedOf([&]() -> std::string { raise("XelTableNotFoundException", text); }),
               "getTableByNumber of a number that is not there");
  }

  void checkEmptyName() const {
    const XelCsvReaderI& impl = *reader.getImpl();
    checkEqual(impl.isEmptyNameFound(), expected.emptyNameLine.has_value(), "a line without a table's name was found");
    checkEqual(impl.getEmptyNameLine(), expected.emptyNameLine.value_or(0), "the last line without a table's name");
  }

  // What is asked of one-table files only.
  void checkGuards() {
    const auto checkGuard = [&](const std::string& operation, const std::string& got) {
      const std::string text = std::string(reader.getImpl()->getFileName()) +
                               " is a multi-Table file. No table have been specified while trying to do a " +
                               operation + ".";
      checkEqual(got, expectedOf([&]() -> std::string { raise("XelIncorrectCsvReaderUseException", text); }),
                 operation);
    };
    checkGuard("getLineByNumber", outcomeOf([&] { return reader.getLineByNumber(0); }));
    checkGuard("getNumberOfItems", outcomeOf([&] { return reader.getNumberOfItems(); }));
    checkGuard("getNumberOfColumns", outcomeOf([&] { return reader.getNumberOfColumns(); }));
    checkGuard("getPosition", outcomeOf([&] { return reader.getPosition("a"); }));
    checkGuard("getTable", outcomeOf([&] { return reader.getTable().getNumberOfColumns(); }));
  }

  // A walk over the tables visits those that are not reserved, in the order of the file; one that cannot be made is passed
  // over by the next step.
  void checkWalk() const {
    XelCsvReader::TableIterator it;
    std::size_t number = countReserved(expected);
    try {
      it = XelCsvReader::TableIterator(reader);
    } catch (const XelCsvReader::XelCsvReaderException&) {
      return;  // the first table cannot be made, which says nothing of the directory
    }
    for (; it.ok(); ++number) {
      check(number < expected.tables.size(), "a walk ends with the last table");
      const XelCsvTableReader table = *it;
      if (!table.isEmpty()) {
        checkEqual<std::string>(table.getNameOfTable(), expected.tables[number].name, "a walk over the tables");
      }
      step(it);
    }
    checkEqual(number, expected.tables.size(), "tables when a walk is over");
  }

  static void step(XelCsvReader::TableIterator& it) {
    try {
      ++it;
    } catch (const XelCsvReader::XelCsvReaderException&) {
      check((*it).isEmpty(), "a table that cannot be made is an empty handle");
    }
  }

  XelCsvReader& reader;
  const SlowDirectory& expected;
  const SlowFile& file;
};

// What is asked of files of several tables only.
void checkOneTable(XelCsvReader& reader) {
  const auto checkGuard = [&](const std::string& operation, const std::string& got) {
    const std::string text = std::string(reader.getImpl()->getFileName()) +
                             " is a unique-Table file. cann't use this member function " + operation +
                             " with this reader.";
    checkEqual(got, expectedOf([&]() -> std::string { raise("XelIncorrectCsvReaderUseException", text); }), operation);
  };
  checkEqual(reader.getNumberOfTables(), 1L, "number of tables of a one-table file");
  check(!reader.isTableExists(""), "a one-table file has no table of any name");
  checkGuard("getTableByName", outcomeOf([&] { return reader.getTableByName("").getNumberOfColumns(); }));
  checkGuard("getTableByNumber", outcomeOf([&] { return reader.getTableByNumber(0).getNumberOfColumns(); }));
  checkGuard("getTableByName", outcomeOf([&] { return reader.getTable().getNumberOfColumns(); }));
  checkGuard("getCsvFormat", outcomeOf([&] { return static_cast<long>(reader.getCsvFormat()); }));
  checkGuard("getFileVersion", outcomeOf([&] { return static_cast<long>(reader.getFileVersion()); }));
  checkGuard("getRequiredBy", outcomeOf([&] { return std::string(reader.getRequiredBy()); }));
}

void checkReader(const DataFile& file, const Parameters& parameters, const SlowFile& bytes,
                 const std::vector<std::string>& names, bool isCached) {
  const CheckedEnv env;
  SlowDirectory directory;
  XelCsvReader reader;
  const std::string expected = expectedOf([&] {
    slowCheck(parameters);
    if (parameters.isMultiTable) directory = slowDirectory(bytes, parameters);
    return std::string("open");
  });
  const std::string got = outcomeOf([&] {
    reader = openReader(env, file.getName(), parameters, isCached);
    return std::string("open");
  });
  // The table of a one-table file is made with its reader, and may be refused for what is in it.
  if (parameters.isMultiTable || expected != "open") checkEqual(got, expected, "the constructor of a reader");
  if (reader.isEmpty()) return;
  if (parameters.isMultiTable) {
    DirectoryCheck(reader, directory, bytes).run(names);
  } else {
    checkOneTable(reader);
  }
  reader.end();
}

std::vector<std::string> namesOf(const Input& input) {
  std::vector<std::string> names = {"", "|", FormatTable, SchemaTable};
  for (std::size_t word = ParameterWords; word < input.words.size() && names.size() < MostNames; ++word) {
    names.push_back(upToZero(input.words[word]));
  }
  return names;
}

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name that the fuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const DataFile File;
  const Input input = parseInput(data, size);
  const Parameters parameters = parseParameters(input);
  const SlowFile bytes(input.rest);
  File.write(input.rest);
  for (const bool isCached : {false, true}) checkReader(File, parameters, bytes, namesOf(input), isCached);
  return 0;
}

}  // namespace fuzz
