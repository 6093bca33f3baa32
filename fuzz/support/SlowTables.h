// The tables of a data file and their heading zones, read the slow way from its bytes. What fails throws a model::Failure.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "fuzz/support/Parameters.h"
#include "fuzz/support/SlowFile.h"

namespace fuzz {

// The tables of a file of several, in the order of the file.
struct SlowDirectory {
  std::vector<model::TableEntry> tables;
  std::optional<long> emptyNameLine;  // the last line without a table's name
};

SlowDirectory slowDirectory(const SlowFile& file, const Parameters& parameters);

// What stands in front of a table's data lines.
struct SlowZone {
  long numberOfColumns = 0;
  std::optional<std::vector<std::string>> headings;  // fields of the heading line, its mark included
  long headingLineNumber = 0;
  std::vector<long> keyPositions;
  long firstDataOffset = 0;
  long firstDataLineNumber = 0;
  long endOffset = 0;
};

// entry is null for the table of a one-table file.
SlowZone slowZone(const SlowFile& file, const Parameters& parameters, const model::TableEntry* entry);

// A field as a key line's integer: false when it does not fit in 32 bits.
bool slowKeyMark(const std::string& text, long& value);

}  // namespace fuzz
