#include "tests/faults/Operations.h"

#include "tests/support/TestEnv.h"

const char* const ManyTables =
    "XELO_CSV_FORMAT,2.5\n"
    "XELO_DATA_SCHEMA,planner,3\n"
    "# cities and their size\n"
    "Cities|NAMES,name,year,size\n"
    "Cities|KEYS,1,1,0\n"
    "Cities,Paris,2004,7\n"
    "Cities,Rome,2005,9\n"
    "Stock|KEYS,1,0\n"
    "Stock,s1,3\n";

const char* const OneTable =
    "|NAMES,name,year,size\n"
    "|KEYS,1,1,0\n"
    "Paris,2004,7\n"
    "Rome,2005,9\n";

XelCsvReader Place::makeReader() const {
  return XelCsvReader(env, file, isMultiTable ? 1 : 0, 0, ",", '.', '"', '#', isCached ? 1 : 0);
}

std::string describe(const XelCsvLine& line) {
  if (line.isEmpty()) return "(none)";
  std::string text;
  for (long field = 0; field < line.getNumberOfFields(); ++field) {
    text += line.getFields()[field];
    text += ';';
  }
  return text + "@" + std::to_string(line.getLineNumber());
}

namespace {

using Act = std::function<void(const Action&)>;

std::string describe(const XelCsvTableReader& table) {
  if (table.isEmpty()) return "(none)";
  const char* name = table.getNameOfTable();
  return std::string(name == nullptr ? "(unnamed)" : name) + ":" + std::to_string(table.getNumberOfColumns());
}

// Runs with a reader.
template <class Body>
void withReader(const Place& at, Body body) {
  XelCsvReader reader = at.makeReader();
  const EndGuard<XelCsvReader> guard(reader);
  body(reader);
}

// Runs with a reader and its table Cities, or the one table.
template <class Body>
void withTable(const Place& at, Body body) {
  withReader(at, [&](XelCsvReader& reader) {
    XelCsvTableReader table = at.isMultiTable ? reader.getTableByName("Cities") : reader.getReaderForUniqueTableFile();
    const EndGuard<XelCsvTableReader> guard(table);
    body(table);
  });
}

// What a table is, which is then ended.
std::string describeAndEnd(XelCsvTableReader table) {
  const EndGuard<XelCsvTableReader> guard(table);
  return describe(table);
}

void makeReader(const Place& at, const Act& act) {
  act([&] {
    XelCsvReader reader = at.makeReader();
    const EndGuard<XelCsvReader> guard(reader);
    return std::to_string(reader.getNumberOfTables());
  });
}

void getTableByName(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return describeAndEnd(reader.getTableByName("Cities")); }); });
}

void getTableByNumber(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return describeAndEnd(reader.getTableByNumber(2)); }); });
}

void makeTable(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) {
    act([&] { return describeAndEnd(XelCsvTableReader(reader.getImpl(), "Cities")); });
  });
}

void getLineByNumber(const Place& at, const Act& act) {
  withTable(at, [&](XelCsvTableReader& table) { act([&] { return describe(table.getLineByNumber(1)); }); });
}

void getLineByKey(const Place& at, const Act& act) {
  withTable(at,
            [&](XelCsvTableReader& table) { act([&] { return describe(table.getLineByKey(2, "Rome", "2005")); }); });
}

void getNumberOfItems(const Place& at, const Act& act) {
  withTable(at, [&](XelCsvTableReader& table) { act([&] { return std::to_string(table.getNumberOfItems()); }); });
}

void readerGetLineByNumber(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return describe(reader.getLineByNumber(1)); }); });
}

void readerGetLineByKey(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return describe(reader.getLineByKey(2, "Rome", "2005")); }); });
}

void readerGetNumberOfItems(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return std::to_string(reader.getNumberOfItems()); }); });
}

void copyTable(const Place& at, const Act& act) {
  withTable(at, [&](XelCsvTableReader& table) {
    act([&] {
      XelCsvTableReader copy;
      const EndGuard<XelCsvTableReader> guard(copy);
      try {
        copy.copy(table);
      } catch (const XelQuietException&) {
        EXPECT_TRUE(copy.isEmpty()) << "after a failed copy";
        throw;
      }
      return describe(copy);
    });
  });
}

// The source is a table of the other kind, so the index has to be made from the file.
void copyTableOfTheOtherKind(const Place& at, const Act& act) {
  withTable({at.env, at.file, !at.isCached, at.isMultiTable}, [&](XelCsvTableReader& source) {
    withReader(at, [&](XelCsvReader& reader) {
      XelCsvTableReader copy;
      const EndGuard<XelCsvTableReader> guard(copy);
      copy = reader.getTableByName("Stock");
      act([&] {
        copy.copy(source);
        return describe(copy) + " " + describe(copy.getFirstLine());
      });
    });
  });
}

void getCsvFormat(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return std::to_string(reader.getCsvFormat()); }); });
}

void getFileVersion(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return std::to_string(reader.getFileVersion()); }); });
}

void getRequiredBy(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return std::string(reader.getRequiredBy()); }); });
}

void makeTableIterator(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return describe(*XelCsvReader::TableIterator(reader)); }); });
}

void moveTableIterator(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) {
    XelCsvReader::TableIterator it(reader);
    act([&] { return describe(*++it); });
  });
}

void copyTableIterator(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) {
    const XelCsvReader::TableIterator it(reader);
    act([&] { return describe(*XelCsvReader::TableIterator(it)); });
  });
}

void makeLineIterator(const Place& at, const Act& act) {
  withTable(at,
            [&](XelCsvTableReader& table) { act([&] { return describe(*XelCsvTableReader::LineIterator(table)); }); });
}

void copyLineIterator(const Place& at, const Act& act) {
  withTable(at, [&](XelCsvTableReader& table) {
    const XelCsvTableReader::LineIterator it(table);
    act([&] { return describe(*XelCsvTableReader::LineIterator(it)); });
  });
}

void assignLineIterator(const Place& at, const Act& act) {
  withTable(at, [&](XelCsvTableReader& table) {
    const XelCsvTableReader::LineIterator it(table);
    XelCsvTableReader::LineIterator target;
    act([&] {
      target = it;
      return describe(*target);
    });
  });
}

// The walk itself opens nothing.
void walk(const Place& at, const Act& act) {
  withTable(at, [&](XelCsvTableReader& table) {
    XelCsvTableReader::LineIterator it(table);
    act([&] {
      std::string text;
      for (; it.ok(); ++it) text += describe(*it) + " ";
      return text;
    });
  });
}

void readerMakeLineIterator(const Place& at, const Act& act) {
  withReader(at, [&](XelCsvReader& reader) { act([&] { return describe(*XelCsvReader::LineIterator(reader)); }); });
}

constexpr const char* City = "Cities;Paris;2004;7;@5";
constexpr const char* SecondCity = "Cities;Rome;2005;9;@6";
constexpr const char* Line = "Paris;2004;7;@2";
constexpr const char* SecondLine = "Rome;2005;9;@3";
constexpr const char* Key = "Rome-2005";

}  // namespace

const std::vector<Operation>& getOperations() {
  static const std::vector<Operation> operations{
      // The first open is the test of the file's name, which nobody seeks in.
      {"reader of many tables", true, true, "2", nullptr, "", {{"rb", "rb"}, "-z"}, {{"rb", "rb"}, "-z"}, makeReader},
      {"reader of one table",
       false,
       true,
       "1",
       nullptr,
       "",
       {{"rb", "rb"}, "-z"},
       {{"rb", "rb", "rb"}, "-zi"},
       makeReader},

      {"getTableByName", true, true, "Cities:4", "Cities", "", {{"rb"}, "z"}, {{"rb", "rb"}, "zi"}, getTableByName},
      {"getTableByNumber", true, true, "Cities:4", "Cities", "", {{"rb"}, "z"}, {{"rb", "rb"}, "zi"}, getTableByNumber},
      {"table of a reader", true, true, "Cities:4", "Cities", "", {{"rb"}, "z"}, {{"rb", "rb"}, "zi"}, makeTable},

      // One open for one lookup.
      {"getLineByNumber", true, true, SecondCity, "Cities", Key, {{"r"}, "z"}, {{"r"}, "k"}, getLineByNumber},
      {"getLineByKey", true, true, SecondCity, "Cities", Key, {{"rb"}, "z"}, {{"r"}, "k"}, getLineByKey},
      {"getNumberOfItems", true, true, "2", "Cities", "", {{"rb"}, "z"}, {{}, ""}, getNumberOfItems},
      {"getLineByNumber of one table",
       false,
       true,
       SecondLine,
       nullptr,
       Key,
       {{"r"}, "z"},
       {{"r"}, "k"},
       getLineByNumber},
      {"getLineByKey of one table", false, true, SecondLine, nullptr, Key, {{"rb"}, "z"}, {{"r"}, "k"}, getLineByKey},
      {"getNumberOfItems of one table", false, true, "2", nullptr, "", {{"rb"}, "z"}, {{}, ""}, getNumberOfItems},
      {"reader's getLineByNumber",
       false,
       true,
       SecondLine,
       nullptr,
       Key,
       {{"r"}, "z"},
       {{"r"}, "k"},
       readerGetLineByNumber},
      {"reader's getLineByKey", false, true, SecondLine, nullptr, Key, {{"rb"}, "z"}, {{"r"}, "k"}, readerGetLineByKey},
      {"reader's getNumberOfItems", false, true, "2", nullptr, "", {{"rb"}, "z"}, {{}, ""}, readerGetNumberOfItems},

      {"copy of a table", true, true, "Cities:4", "Cities", "", {{"rb"}, "z"}, {{"rb"}, "z"}, copyTable},
      {"copy of the one table", false, true, "(unnamed):3", nullptr, "", {{"rb"}, "z"}, {{"rb"}, "z"}, copyTable},

      {"getCsvFormat",
       true,
       true,
       "2.500000",
       "XELO_CSV_FORMAT",
       "2.5",
       {{"rb", "r"}, "zz"},
       {{"rb", "rb", "r"}, "zik"},
       getCsvFormat},
      {"getFileVersion",
       true,
       true,
       "3.000000",
       "XELO_DATA_SCHEMA",
       "planner-3",
       {{"rb", "r"}, "zz"},
       {{"rb", "rb", "r"}, "zik"},
       getFileVersion},
      {"getRequiredBy",
       true,
       true,
       "planner",
       "XELO_DATA_SCHEMA",
       "planner-3",
       {{"rb", "r"}, "zz"},
       {{"rb", "rb", "r"}, "zik"},
       getRequiredBy},

      {"table iterator", true, true, "Cities:4", "Cities", "", {{"rb"}, "z"}, {{"rb", "rb"}, "zi"}, makeTableIterator},
      {"table iterator's ++",
       true,
       false,
       "Stock:3",
       "Stock",
       "",
       {{"rb"}, "z"},
       {{"rb", "rb"}, "zi"},
       moveTableIterator},
      {"table iterator's copy",
       true,
       true,
       "Cities:4",
       "Cities",
       "",
       {{"rb"}, "z"},
       {{"rb", "rb"}, "zi"},
       copyTableIterator},

      // A line iterator is made apart and then assigned, which opens once more.
      {"line iterator", true, true, City, "Cities", "", {{"rb", "rb"}, "zz"}, {{"rb", "r"}, "ii"}, makeLineIterator},
      {"line iterator's copy", true, false, City, "Cities", "", {{"rb"}, "z"}, {{"r"}, "i"}, copyLineIterator},
      {"line iterator's assignment",
       true,
       true,
       City,
       "Cities",
       "",
       {{"rb", "rb"}, "zz"},
       {{"rb", "r"}, "ii"},
       assignLineIterator},
      {"walk", true, false, "Cities;Paris;2004;7;@5 Cities;Rome;2005;9;@6 ", "Cities", "", {{}, ""}, {{}, ""}, walk},
      {"line iterator of one table",
       false,
       true,
       Line,
       nullptr,
       "",
       {{"rb", "rb"}, "zz"},
       {{"rb", "r"}, "ii"},
       makeLineIterator},
      {"line iterator's copy in one table",
       false,
       false,
       Line,
       nullptr,
       "",
       {{"rb"}, "z"},
       {{"r"}, "i"},
       copyLineIterator},
      {"reader's line iterator",
       false,
       true,
       Line,
       nullptr,
       "",
       {{"rb", "rb"}, "zz"},
       {{"rb", "r"}, "ii"},
       readerMakeLineIterator},

      // Last, for a failed copy empties the handle.
      {"copy of a table of the other kind",
       true,
       false,
       "Cities:4 Cities|NAMES;name;year;size;@3",
       "Cities",
       "",
       {{"rb"}, "z"},
       {{"rb", "rb"}, "zi"},
       copyTableOfTheOtherKind},
  };
  return operations;
}
