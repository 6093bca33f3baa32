// Every operation of the library that opens the data file, as a table.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "xelcsv/XelCsvReader.h"

// The two files that the operations run on.
extern const char* const ManyTables;
extern const char* const OneTable;

// Where an operation runs.
struct Place {
  XelEnv env;
  const char* file;
  bool isCached;
  bool isMultiTable;

  // A reader of the file, which the caller ends.
  XelCsvReader makeReader() const;
};

// The operation itself; it answers what it found.
using Action = std::function<std::string()>;

// What an operation does with the file.
struct Use {
  std::vector<std::string> modes;  // the modes of its opens, in their order

  // What comes of it when each fseek on the stream of an open fails, a letter per open:
  // '-' nothing, nobody seeks there; 'z' the data cannot be reached; 'i' the lines of the index cannot be reached;
  // 'k' the key is not found.
  std::string seeks;
};

struct Operation {
  const char* name;
  bool isMultiTable;
  bool isRepeatable;   // answers the same when it is done again
  const char* answer;  // what it answers the first time
  const char* table;   // the name in its messages; null: the file's
  const char* key;     // the key in its messages
  Use scanning;
  Use cached;

  // Makes what the operation needs, hands the operation itself to act, and ends what was made.
  void (*run)(const Place& at, const std::function<void(const Action&)>& act);

  const Use& getUse(bool isCached) const { return isCached ? cached : scanning; }
};

const std::vector<Operation>& getOperations();

// The fields of a line and its number, "(none)" for an empty handle.
std::string describe(const XelCsvLine& line);
