// Where the tables of a file are and what they are like, found in one pass.
#pragma once

#include <string>
#include <vector>

#include "tools/DataFile.h"

namespace xeltools {

struct TableFacts {
  long number = 0;  // as XelCsvReader::getTableByNumber() counts
  std::string name;
  bool isReserved = false;  // one of the directive tables
  long lines = 0;           // data lines
  long columns = 0;         // without the one of the tables' names
  std::vector<std::string> keys;
  long begin = 0;      // offset of the table's first byte
  long end = 0;        // offset behind its last line
  long stretches = 1;  // pieces that it lies in, between which other tables stand
};

// Facts about all tables of a file, in its order. Throws what opening and reading a table throws.
std::vector<TableFacts> surveyTables(DataFile& file);

}  // namespace xeltools
