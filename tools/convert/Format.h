// The formats that a file can be converted to: writing one, and reading back what was written.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/DataFile.h"
#include "tools/Output.h"
#include "tools/convert/Directives.h"
#include "tools/convert/Shape.h"

namespace xeltools {

// Takes the tables of a file one after the other.
class FormatWriter {
 public:
  FormatWriter() = default;
  virtual ~FormatWriter() = default;
  FormatWriter(const FormatWriter&) = delete;
  FormatWriter& operator=(const FormatWriter&) = delete;

  virtual void beginTable(const TableShape& shape) = 0;

  // A line of the table that began last.
  virtual void writeLine(const TableShape& shape, const Line& line) = 0;
  virtual void endTable() {}

  // All is written, but not yet in its place.
  virtual void finish() {}

  // What was written gets its name.
  virtual void keep() {}

  // The file or folder where it can be read back between the two.
  virtual std::string getWritten() const { return {}; }
};

// Reads what a writer wrote, in the same order.
class FormatReader {
 public:
  FormatReader() = default;
  virtual ~FormatReader() = default;
  FormatReader(const FormatReader&) = delete;
  FormatReader& operator=(const FormatReader&) = delete;

  virtual void beginTable(const TableShape& shape) = 0;

  // The next line's fields, one for each column, empty where there is none; false at the table's end.
  virtual bool readLine(const TableShape& shape, std::vector<std::string>& fields) = 0;

  // Whether all tables are read and nothing else follows.
  virtual bool isAtEnd() = 0;
};

// How something is written.
struct FormatOptions {
  bool isWhole = false;       // all tables of a file of several, not one
  char plainSeparator = ',';  // of plain CSV files
};

// Lines as RFC 4180 has them; of all tables, each line begins with its table's name and an empty line stands between.
std::unique_ptr<FormatWriter> makeCsvWriter(Output& output, const FormatOptions& options);
std::unique_ptr<FormatReader> makeCsvReader(const std::string& file, const FormatOptions& options);

// The same with tabs between fields and \t, \n, \r and \\ in them.
std::unique_ptr<FormatWriter> makeTsvWriter(Output& output, const FormatOptions& options);
std::unique_ptr<FormatReader> makeTsvReader(const std::string& file, const FormatOptions& options);

std::unique_ptr<FormatWriter> makeMarkdownWriter(Output& output, const FormatOptions& options);
std::unique_ptr<FormatReader> makeMarkdownReader(const std::string& file, const FormatOptions& options);

// One object that holds all tables.
std::unique_ptr<FormatWriter> makeJsonWriter(Output& output, const FormatOptions& options);
std::unique_ptr<FormatReader> makeJsonReader(const std::string& file, const FormatOptions& options);

// One object on a line for each line.
std::unique_ptr<FormatWriter> makeJsonLinesWriter(Output& output, const FormatOptions& options);
std::unique_ptr<FormatReader> makeJsonLinesReader(const std::string& file, const FormatOptions& options);

// A database with a table for each table.
std::unique_ptr<FormatWriter> makeSqliteWriter(const std::string& place);
std::unique_ptr<FormatReader> makeSqliteReader(const std::string& file);

// A folder with a plain CSV file for each table, and tables.json that has their names, keys and order.
std::unique_ptr<FormatWriter> makeFolderWriter(const std::string& place, const FormatOptions& options,
                                               const Directives& directives);
std::unique_ptr<FormatReader> makeFolderReader(const std::string& folder, const FormatOptions& options);

}  // namespace xeltools
