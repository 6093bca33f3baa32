// Checks of the heading zone of a table: its heading lines and key lines.
#pragma once

#include "check/XelCsvCheckContext.h"
#include "check/XelCsvCheckedTable.h"
#include "check/XelCsvFields.h"
#include "check/XelCsvLineAgain.h"
#include "check/XelCsvZones.h"

class XelCsvHeadingChecks {
 public:
  // All three must outlive it.
  XelCsvHeadingChecks(const XelCsvCheckContext& checked, XelCsvLineAgain& lookBack, XelCsvZones& zonesOfTables)
      : context(checked), again(lookBack), zones(zonesOfTables), foreignFields(checked.env, checked.format) {}

  // What a line is.
  enum class Kind {
    Heading,      // of the heading zone
    Data,         // a line of data
    LostHeading,  // meant for the heading zone, and for the library a line of data
    Skipped       // of no table when tables are read
  };

  // Looks at a line of a table that is neither a comment nor empty, and at its fields.
  Kind check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);

  // The first line of a one-table file is a comment or empty. The library takes it for the table's first line.
  void passFirstLine(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, XelCsvFields& fields);

  // A line that belongs to no table.
  void passOtherLine() noexcept { zones.end(); }

  // The table has no more lines.
  void finish(XelCsvCheckedTable& table) { closeZone(table); }

 private:
  void start(XelCsvCheckedTable& table, long columns);
  void takeForeign(XelCsvCheckedTable& table);
  void closeZone(XelCsvCheckedTable& table);
  Kind checkLostHeading(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);
  Kind checkSkipped(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, bool isMarked);
  void reportCommentAsHeading(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line);
  void checkFirstLine(const XelCsvCheckedTable& table, bool isHeading);
  void addHeadingLine(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);
  void setHeadings(XelCsvCheckedTable& table, const XelCsvFields& fields);
  void checkHeadings(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);
  void reportEmptyHeading(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvSpan& place,
                          long column);
  void reportDuplicateHeading(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvSpan& place,
                              long found);
  void addKeyLine(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields);
  void reportOverflow(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long field);
  void reportMarker(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long fieldCount, bool isCase);

  const XelCsvCheckContext& context;
  XelCsvLineAgain& again;
  XelCsvZones& zones;
  XelCsvFields foreignFields;
  XelCsvLineMark firstLine;  // of a one-table file, when it is a comment or empty
  bool isFirstLinePending = false;
};
