// A table while it is checked: what is known of it so far.
#pragma once

#include <string>
#include <vector>

#include "check/XelCsvCheckedLine.h"
#include "check/XelCsvCodes.h"
#include "check/XelCsvKeySet.h"

// What the values of a column were.
struct XelCsvColumn {
  // A field that may turn out to be an exception in its column.
  struct Suspect {
    XelCsvLineMark line;
    XelCsvCode code;
  };

  long integers = 0;                   // that fit in 32 bits
  long overflows = 0;                  // that do not
  long floats = 0;                     // other numbers
  long mismatches = 0;                 // that would be numbers with the other decimal character
  long texts = 0;                      // all else, empty fields apart
  bool isText = false;                 // texts are no exception here, nothing more is looked at
  bool areMostLarge = false;           // overflows are no exception here
  std::vector<Suspect> suspects;       // texts that are not told yet
  std::vector<Suspect> largeSuspects;  // overflows that are not told yet
  XelCsvLineMark firstMismatch;

  bool hasFloats() const noexcept { return floats > 0 || mismatches > 0; }
  long getNumbers() const noexcept { return integers + overflows + floats + mismatches; }
};

struct XelCsvCheckedTable {
  XelCsvCheckedTable(XelEnv env, std::string tableName) : name(std::move(tableName)), keys(env) {}

  const std::string name;  // empty for the table of a one-table file
  XelCsvPlace start;       // of its first line, the whole file where it has none

  bool isRepeated = false;  // it comes back without table splitting: nobody reads its lines

  // The heading zone: as long as it lasts, lines are headings or keys.
  bool isStarted = false;  // the first line was looked at
  bool isInZone = true;
  long zone = 0;              // in which it began
  std::size_t zoneLines = 0;  // heading and key lines of whatever table that came before or that it has taken
  bool hasLostZone = false;   // a comment in front of it ended it
  bool hasHeadingLine = false;
  bool hasKeyLine = false;
  std::vector<std::string> headings;  // by the position of their column
  XelCsvLineMark keyLine;             // the last one
  long columns = 0;                   // as getNumberOfColumns() tells
  std::vector<long> keyPositions;     // of the key columns; without a key line all columns
  long fieldsForKey = 0;              // fewest fields that a line with all of the key has
  bool hasChosenKeys = false;         // a key line chose them

  // The lines of data.
  long dataLines = 0;
  long expectedFields = -1;  // of a line of data; -1: not known yet
  XelCsvKeySet keys;
  std::vector<XelCsvColumn> values;  // by position

  // What is told once.
  bool hasBlankName = false;
  bool hasQuotedName = false;
  bool hasKeyWithDash = false;

  // "column "price"", or "the column at position 2" where it has no heading.
  std::string describeColumn(long position) const;
};
