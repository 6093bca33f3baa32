// The heading zones of a file with table splitting, which go on over lines of whatever table.
#pragma once

#include <vector>

#include "check/XelCsvCheckedTable.h"

// A zone ends with the first line that has no bar in its first field, for all tables that began in it. Until then each of
// them takes the heading and key lines of the others for its own, as soon as more of its lines come.
class XelCsvZones {
 public:
  struct Line {
    XelCsvLineMark mark;
    long zone;
    bool isKeyLine;
  };

  // A table begins.
  void start(XelCsvCheckedTable& table) const noexcept {
    table.zone = zone;
    table.zoneLines = lines.size();
  }

  // Whether the zone that the table began in is over.
  bool isOver(const XelCsvCheckedTable& table) const noexcept { return table.zone != zone; }

  // A heading or key line of the table, which has taken the foreign ones before.
  void add(XelCsvCheckedTable& table, const XelCsvLineMark& mark, bool isKeyLine) {
    lines.push_back({mark, zone, isKeyLine});
    if (!isOver(table)) table.zoneLines = lines.size();
  }

  void end() noexcept { ++zone; }

  // The next line of another table in the zone of this one, null when there is none.
  const Line* findForeign(const XelCsvCheckedTable& table) const noexcept {
    if (table.zoneLines >= lines.size() || lines[table.zoneLines].zone != table.zone) return nullptr;
    return &lines[table.zoneLines];
  }

  // The same, which is taken then.
  const Line* takeForeign(XelCsvCheckedTable& table) const noexcept {
    const Line* const line = findForeign(table);
    if (line != nullptr) ++table.zoneLines;
    return line;
  }

 private:
  long zone = 0;
  std::vector<Line> lines;
};
