// Checks of the names of tables: which line belongs to which table.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "check/XelCsvCheckContext.h"
#include "check/XelCsvCheckedTable.h"
#include "check/XelCsvZones.h"

// Finds the table of each line as the directory of the library does. Tells when a table is complete, so that in a file
// without table splitting no more than one is kept.
class XelCsvTableChecks {
 public:
  // Both must outlive it.
  XelCsvTableChecks(const XelCsvCheckContext& checked, const XelCsvZones& zonesOfTables);

  // The table of a line that is neither a comment nor empty, null when it has none. It lives until the next call, with
  // table splitting as long as this.
  XelCsvCheckedTable* find(const XelCsvCheckedLine& line);

  // The table of a one-table file, which there is before any line.
  XelCsvCheckedTable* getUniqueTable() noexcept { return current; }

  // The table before the one that find() answered when that was another one and this one is complete; else null. Each
  // complete table is handed out once.
  std::unique_ptr<XelCsvCheckedTable> takeComplete() { return std::move(complete); }

  // At the end of the file: the tables that were not complete before, in the order of the file.
  std::vector<std::unique_ptr<XelCsvCheckedTable>> takeRest();

  // Tables with different names.
  long getNumberOfTables() const noexcept { return static_cast<long>(names.size()); }

 private:
  struct Name {
    XelCsvLineMark first;  // the table's first line
    bool isTold;           // that the name comes back
    long index;            // of its table in tables, with table splitting
  };

  XelCsvCheckedTable* begin(std::string name, const XelCsvCheckedLine& line, const XelCsvSpan& place);
  XelCsvCheckedTable* comeBack(const std::string& name, Name& known, const XelCsvCheckedLine& line,
                               const XelCsvSpan& place);
  XelCsvCheckedTable* add(std::string name, const XelCsvCheckedLine& line, const XelCsvSpan& place);
  void checkName(const XelCsvCheckedLine& line, const XelCsvSpan& field, const XelCsvSpan& name);
  void checkReservedOrder(const std::string& name, const XelCsvCheckedLine& line, const XelCsvSpan& place);
  void reportBlankName(const XelCsvCheckedLine& line, const XelCsvSpan& field, bool isTable);
  void reportQuotedName(const XelCsvCheckedLine& line, const XelCsvSpan& name);

  const XelCsvCheckContext& context;
  const XelCsvZones& zones;
  std::unordered_map<std::string, Name> names;
  std::vector<std::unique_ptr<XelCsvCheckedTable>> tables;  // with table splitting all, else the current one
  XelCsvCheckedTable* current = nullptr;
  std::unique_ptr<XelCsvCheckedTable> complete;
  bool isFirstFormat = false;  // the file's first table is XELO_CSV_FORMAT
};
