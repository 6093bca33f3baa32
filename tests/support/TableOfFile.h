// One table of a data file, ready for use.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/DataFile.h"
#include "xelcsv/XelCsvReader.h"

// How the file of a TableOfFile is written and read.
struct FileSettings {
  long isCached = 1;
  const char* separators = ",";
  char decimal = '.';
  char quote = '"';
  char comment = '#';
  long allowTableSplitting = 0;
};

// A data file with the given bytes, its reader, and its table of that name; without a name the file is one table. All of it
// ends with the scope.
class TableOfFile {
 public:
  TableOfFile(XelEnv env, std::string_view content, const char* tableName = nullptr, const FileSettings& settings = {})
      : file(content),
        reader(env, file.getName(), tableName == nullptr ? 0 : 1, settings.allowTableSplitting, settings.separators,
               settings.decimal, settings.quote, settings.comment, settings.isCached) {
    try {
      table = tableName == nullptr ? reader.getReaderForUniqueTableFile() : reader.getTableByName(tableName);
    } catch (...) {
      reader.end();
      throw;
    }
  }

  ~TableOfFile() {
    table.end();
    reader.end();
  }

  TableOfFile(const TableOfFile&) = delete;
  TableOfFile& operator=(const TableOfFile&) = delete;

  XelCsvTableReader& operator*() { return table; }
  XelCsvTableReader* operator->() { return &table; }
  XelCsvReader& getReader() { return reader; }
  const DataFile& getFile() const { return file; }

 private:
  DataFile file;
  XelCsvReader reader;
  XelCsvTableReader table;
};

// The fields of a line as they are stored now.
inline std::vector<std::string> getFieldTexts(const XelCsvLine& line) {
  return {line.getFields(), line.getFields() + line.getNumberOfFields()};
}
