// Lines to be looked up by their keys.
#pragma once

#include <string>
#include <vector>

#include "bench/support/Files.h"
#include "xelcsv/XelCsvReader.h"

namespace bench {

// A line that is looked up: its key values, and where it is.
struct Wanted {
  std::vector<std::string> values;
  long offset = 0;
  long lineNumber = 0;
};

// Some lines of a file, spread over all of it, in no order.
std::vector<Wanted> chooseLines(const File& file, long number);

// The line with these key values, one or two.
XelCsvLine lookUp(XelCsvReader& reader, const Wanted& wanted);

// The key of the last data line of a narrow file, whatever column it stands in: a search for it passes over all of the
// file.
std::string lastKeyOf(const File& file);

}  // namespace bench
