// One file of several tables out of plain CSV files.
#pragma once

#include <string>
#include <vector>

#include "tools/Output.h"
#include "tools/Settings.h"
#include "tools/convert/Directives.h"

namespace xeltools {

// A plain CSV file that becomes a table; its first record has the headings.
struct PlainTable {
  std::string name;
  std::string file;
  std::vector<std::string> keys;  // headings of the key columns; without any there is no key line
};

// What becomes of several.
struct PlainTables {
  Directives directives;
  std::vector<PlainTable> tables;
};

// The tables of a folder: those that its tables.json names, or else all files that end in .csv, by name.
// Throws UserError.
PlainTables readFolder(const std::string& folder);

// A table for each file, called as the file is without folder and ending.
PlainTables nameFiles(const std::vector<std::string>& files);

// How much was written.
struct PlainCounts {
  long lines = 0;
  long trimmed = 0;  // fields that begin or end with a blank, which no reader of the library will see
};

// Writes the file as a reader with these parameters reads it. Throws UserError, which names file and line, for what such a
// file cannot hold: a field with a quote or an end of line, a line that is too long, a name with a bar.
PlainCounts writeTables(Output& output, const PlainTables& tables, const ReaderParameters& parameters,
                        char plainSeparator);

// Reads a written file with these parameters and compares every field with the plain files. Answers what differs first,
// or nothing.
std::string compareTables(const std::string& written, const PlainTables& tables, const ReaderParameters& parameters,
                          char plainSeparator);

}  // namespace xeltools
