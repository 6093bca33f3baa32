// A data file, its reader and one of its tables, for tests of what both kinds of tables promise.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/Outcome.h"
#include "tests/support/TableOfFile.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvReader.h"

enum class Kind { Scanning, Cached };

inline const char* nameOf(Kind kind) { return kind == Kind::Cached ? "cached" : "scanning"; }

// Runs a test for a scanning and for a cached table.
template <class Body>
void forBothKinds(Body body) {
  for (const Kind kind : {Kind::Scanning, Kind::Cached}) {
    SCOPED_TRACE(nameOf(kind));
    body(kind);
  }
}

// What is said of a file that is not there.
inline std::string textOfMissing(const DataFile& file) {
  return "While trying to open file " + std::string(file.getName()) +
         " : No such file or directory. The specified file or directory does not exist or cannot be found. This message "
         "can occur whenever a specified file does not exist or a component of a path does not specify an existing "
         "directory. ";
}

inline XelCsvReader openReader(XelEnv env, const DataFile& file, Kind kind, bool isMultiTable, bool isSplit = false) {
  return XelCsvReader(env, file.getName(), isMultiTable ? 1 : 0, isSplit ? 1 : 0, ",", '.', '"', '#',
                      kind == Kind::Cached ? 1 : 0);
}

// A table with its file, reader and environment. Everything is ended at the end of the scope, and the environment looks for
// what was lost.
class OpenTable {
 public:
  // The table of a one-table file.
  OpenTable(std::string_view content, Kind kind) : OpenTable(content, kind, nullptr) {}

  // A table of a file of several tables.
  OpenTable(std::string_view content, Kind kind, const char* name, bool isSplit = false)
      : opened(env, content, name, makeSettings(kind, isSplit)) {}

  OpenTable(const OpenTable&) = delete;
  OpenTable& operator=(const OpenTable&) = delete;

  std::string getByNumber(long number) {
    return outcomeOf([&] { return table.getLineByNumber(number); });
  }

  template <class... Values>
  std::string getByKey(const char* first, Values... others) {
    return outcomeOf([&] { return table.getLineByKey(static_cast<long>(1 + sizeof...(others)), first, others...); });
  }

  // All lines, by an iterator.
  std::vector<std::string> getAll() const {
    XelCsvTableReader::LineIterator it(table);
    return walk(it);
  }

  static FileSettings makeSettings(Kind kind, bool isSplit) {
    FileSettings settings;
    settings.isCached = kind == Kind::Cached ? 1 : 0;
    settings.allowTableSplitting = isSplit ? 1 : 0;
    return settings;
  }

  TestEnv env;
  TableOfFile opened;
  const DataFile& file = opened.getFile();
  XelCsvReader& reader = opened.getReader();
  XelCsvTableReader& table = *opened;
};
