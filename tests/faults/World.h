// A data file that is in use in every way at once, for scenarios in which something fails.
#pragma once

#include <memory>
#include <string>

#include "xelcsv/XelCsvReader.h"

// The files that scenarios run on.
enum class Shape {
  Many,     // several tables: directives, headings, keys, comments, quotes, blanks, default keys
  One,      // one table
  Split,    // several tables in several pieces
  Defects,  // several tables, most of them with a defect
};

const char* getContent(Shape shape);
const char* getNameOf(Shape shape);

// A reader of a file with one table to work on. Beside them stand the reader's other table, lines and iterators in the
// middle of their way: what nothing that happens to the first two may harm.
//
// The allocator is where env has its memory from, null when it has a manager of its own.
class World {
 public:
  World(XelEnv env, XelAllocator* allocator, const char* file, Shape shape, bool isCached);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  // A new reader of the same file and kind, and with other parameters. The caller ends it.
  XelCsvReader makeReader() const;
  XelCsvReader makeReader(long isMultiTable, long isSplit = 0, const char* separators = ",", char decimal = '.',
                          char quote = '"', char comment = '#') const;

  // The table to work on, made anew unless it is the one table of its file, which the reader lends.
  XelCsvTableReader makeTable() const;

  // What stands beside answers; the same text as long as nothing was harmed.
  std::string askBystanders();

  // Walks the iterators that stand beside to their ends and says what they show.
  std::string walkOn();

  XelEnv env;
  XelAllocator* allocator;
  const char* file;
  Shape shape;
  bool isCached;
  mutable XelCsvReader reader;
  mutable XelCsvTableReader table;

 private:
  struct Bystanders;
  std::unique_ptr<Bystanders> bystanders;
};
