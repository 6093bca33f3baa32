// A data file as the commands see it: its tables, their columns and a walk over their lines.
#pragma once

#include <xelcsv/XelCsvComfort.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/Progress.h"
#include "tools/Settings.h"

namespace xeltools {

// Throws UserError when a data file is not there, is no regular file or may not be read. The library says so too, but at
// length.
void checkReadable(const std::string& file);

// Bytes of a file.
long getFileSize(const std::string& file);

// How tables find their lines. Scanning takes the same little memory for a file of any size; as the parameters say is
// what a program that is made with them gets.
enum class Access { Scanning, AsParameters };

// An open data file.
class DataFile {
 public:
  // Throws what the constructor of XelCsvReader throws.
  DataFile(const std::string& file, ReaderParameters parameters, Access access = Access::Scanning);

  bool isMultiTable() const { return parameters.isMultiTable; }
  bool isSplit() const { return parameters.isMultiTable && parameters.allowTableSplitting; }
  const std::string& getName() const { return name; }
  const ReaderParameters& getParameters() const { return parameters; }

  // Names of the tables in the order of the file, the reserved ones included; one empty name for a one-table file.
  const std::vector<std::string>& getTableNames() const { return tableNames; }

  // How many of them, at the start, are the directive tables.
  long getNumberOfReservedTables() const;

  // The names that a command works on: the one that was asked for, else all but the reserved ones.
  // Throws UserError for a name that the file does not have, and for any name when it is of one table.
  std::vector<std::string> selectTables(const std::optional<std::string>& wanted) const;

  // The same where one table is needed: throws UserError when none was asked for and the file has several.
  std::string selectTable(const std::optional<std::string>& wanted) const;

  XelCsvReader& getReader() { return *reader; }

  // Is told of the bytes that walks go over.
  void setProgress(Progress* told) { progress = told; }
  Progress* getProgress() const { return progress; }

  long getSize() const { return getFileSize(name); }

 private:
  std::string name;
  ReaderParameters parameters;
  XelScoped<XelEnv> env;
  XelScoped<XelCsvReader> reader;
  std::vector<std::string> tableNames;
  Progress* progress = nullptr;
};

// A column of a table.
struct Column {
  long position;                       // of its field in a line
  std::optional<std::string> heading;  // none without a heading line, or when that is too short
  bool isKey = false;

  // The heading, or "Column 3" where there is none or an empty one.
  std::string getName() const;
};

// A line of a walk; it lives until the next one.
class Line {
 public:
  Line(const XelCsvLine& handle, long index) : line(handle), number(index) {}

  // Position among the data lines of the table, and in the file, both from 0.
  long getNumber() const { return number; }
  long getLineNumber() const { return line.getLineNumber(); }

  // Bytes that it takes in the file, about.
  long getBytes() const {
    const long fields = line.getNumberOfFields();
    if (fields == 0) return 1;
    const char* const last = line.getFields()[fields - 1];
    return last - line.getFields()[0] + static_cast<long>(std::char_traits<char>::length(last)) + 1;
  }

  // Fields as the library gives them: the blanks around them are gone.
  long getNumberOfFields() const { return line.getNumberOfFields(); }
  std::string_view getField(long position) const { return line.getStringByPosition(position); }
  bool hasField(long position) const { return position < line.getNumberOfFields(); }

  // The same, empty where the line has no such field.
  std::string_view getFieldOrNothing(long position) const {
    return hasField(position) ? getField(position) : std::string_view();
  }

 private:
  XelCsvLine line;
  long number;
};

// A table of a file. The file must outlive it.
class Table {
 public:
  // A name of the file's; anything for the table of a one-table file. Throws what opening a table throws.
  Table(DataFile& file, const std::string& name);

  // Empty for the table of a one-table file.
  const std::string& getName() const { return name; }

  // For messages: "table plants", or "the table".
  std::string describe() const;

  // From left to right, without the column of the tables' names.
  const std::vector<Column>& getColumns() const { return columns; }
  bool hasHeadings() const { return !handle->getFirstLine().isEmpty(); }

  // Positions of the key columns in the order in which lookups take their values.
  const std::vector<long>& getKeys() const { return keys; }

  // Whether the key columns are those of a key line; otherwise all columns are.
  bool hasKeyLine() const { return keyLine; }

  // The name of the column at a position, also of one beyond the columns.
  std::string getColumnName(long position) const;

  // The position of a field that belongs to the first column.
  long getFirstPosition() const { return first; }

  // The field values of the line's key columns, joined as the library joins them.
  std::string composeKey(const Line& line) const;

  // Visits the table's lines one after the other until visit answers false. What the table's reader itself would visit,
  // but for lines of other tables, which a scan of a split table can begin with.
  void forEach(const std::function<bool(const Line&)>& visit) const;

  // The number of lines of such a walk.
  long countLines();

  XelCsvTableReader& getHandle() { return *handle; }

 private:
  void readColumns();
  bool findKeyLine() const;

  DataFile& file;
  std::string name;
  XelScoped<XelCsvTableReader> handle;
  std::vector<Column> columns;
  std::vector<long> keys;
  long first;
  bool keyLine = false;
};

}  // namespace xeltools
