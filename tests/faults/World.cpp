#include "tests/faults/World.h"

#include "tests/support/Outcome.h"

namespace {

// The names of the table to work on and of the one beside it; null in a one-table file.
struct Tables {
  const char* first;
  const char* second;
};

Tables getTables(Shape shape) {
  switch (shape) {
    case Shape::Many:
      return {"Cities", "Stock"};
    case Shape::Split:
      return {"A", "B"};
    case Shape::Defects:
      return {"Bare", "Headed"};
    case Shape::One:
      break;
  }
  return {nullptr, nullptr};
}

}  // namespace

const char* getContent(Shape shape) {
  switch (shape) {
    case Shape::Many:
      return "XELO_CSV_FORMAT,2.5\n"                 // line 0
             "XELO_DATA_SCHEMA,planner,3\n"          // 1
             "# cities\n"                            // 2
             "Cities|NAMES,name,year,size,note\n"    // 3
             "Cities|KEYS,1,1,0,0\n"                 // 4
             "Cities,Paris,2004,7,\"a,b\"\n"         // 5
             "\n"                                    // 6
             "Cities, Rome ,2005,9.5,\n"             // 7
             "# inside\n"                            // 8
             "Cities,Oslo,2006,99999999999, -INF\n"  // 9
             "Stock|KEYS,1,0\n"                      // 10
             "Stock,s1,3\n"                          // 11
             "Stock,s2,U\n"                          // 12
             "Plain,x,y\n";                          // 13
    case Shape::One:
      return "|NAMES,name,year,size,note\n"    // line 0
             "|KEYS,1,1,0,0\n"                 // 1
             "Paris,2004,7,\"a,b\"\n"          // 2
             "# inside\n"                      // 3
             " Rome ,2005,9.5,\n"              // 4
             "Oslo,2006,99999999999, -INF\n";  // 5
    case Shape::Split:
      return "A|NAMES,name,size\n"  // line 0
             "A|KEYS,1,0\n"         // 1
             "A,p,1\n"              // 2
             "B,x\n"                // 3
             "A,q,2\n"              // 4
             "B,y\n"                // 5
             "A,r,3\n";             // 6
    case Shape::Defects:
      break;
  }
  return "XELO_CSV_FORMAT\n"           // line 0, without the format
         "XELO_DATA_SCHEMA,planner\n"  // 1, without the version
         "Bare\n"                      // 2, no column to be a key
         "Twins|KEYS,1\n"              // 3
         "Twins,a\n"                   // 4
         "Twins,a\n"                   // 5, the same key again
         "Torn|KEYS,1,1\n"             // 6
         "Torn,a\n"                    // 7, a key field is missing
         "Stub|KEYS,1,1\n"             // 8
         "Stub\n"                      // 9, fewer fields than keys
         "Huge|KEYS,99999999999\n"     // 10, no number of 32 bits
         "Headed|KEYS,1\n"             // 11
         "Headed|NAMES\n"              // 12, no heading for the key
         "Headed,v\n";                 // 13
}

const char* getNameOf(Shape shape) {
  switch (shape) {
    case Shape::Many:
      return "many tables";
    case Shape::One:
      return "one table";
    case Shape::Split:
      return "split tables";
    case Shape::Defects:
      break;
  }
  return "tables with defects";
}

struct World::Bystanders {
  Bystanders(const XelCsvReader& of, const XelCsvTableReader& walked, XelCsvTableReader second, Shape shape)
      : reader(of), table(std::move(second)), lines(walked) {
    lookedUp = table.getLineByNumber(0);
    owned.copy(*lines);
    if (shape != Shape::One) tables = XelCsvReader::TableIterator(reader);
    if (shape == Shape::Defects) return;  // the next table cannot be made, and the table has one line
    ++lines;
    ++tables;
  }

  std::string ask() {
    const std::string text = textOf(lookedUp) + " " + textOf(owned) + " " + textOf(*lines) + " " +
                             std::to_string(reader.getNumberOfTables()) + " " + askCurrentTable() + " ";
    lookedUp = table.getLineByNumber(0);
    return text + textOf(lookedUp) + " " + std::to_string(table.getNumberOfItems());
  }

  std::string walkOn() {
    std::string text;
    for (; lines.ok(); ++lines) text += textOf(*lines) + " ";
    while (tables.ok()) {
      text += askCurrentTable() + " ";
      try {
        ++tables;
      } catch (const XelCsvReader::XelCsvReaderException& exception) {
        text += std::string(exception.getMessage()) + " ";
      }
    }
    return text;
  }

  std::string askCurrentTable() const {
    const XelCsvTableReader current = *tables;
    if (current.isEmpty()) return "no table";
    return std::string(current.getNameOfTable()) + ":" + std::to_string(current.getNumberOfColumns());
  }

  XelCsvReader reader;
  XelCsvTableReader table;
  XelCsvLine lookedUp;
  XelCsvLine owned;
  XelCsvTableReader::LineIterator lines;
  XelCsvReader::TableIterator tables;
};

World::World(XelEnv environment, XelAllocator* source, const char* fileName, Shape shapeOfFile, bool cached)
    : env(environment), allocator(source), file(fileName), shape(shapeOfFile), isCached(cached), reader(makeReader()) {
  table = makeTable();
  const char* second = getTables(shape).second;
  bystanders = std::make_unique<Bystanders>(
      reader, table, second == nullptr ? reader.getReaderForUniqueTableFile() : reader.getTableByName(second), shape);
}

World::~World() {
  bystanders->owned.end();
  bystanders->lines.end();
  bystanders->tables.end();
  bystanders->table.end();
  table.end();
  reader.end();
}

XelCsvReader World::makeReader() const {
  return makeReader(shape == Shape::One ? 0 : 1, shape == Shape::Split ? 1 : 0);
}

XelCsvReader World::makeReader(long isMultiTable, long isSplit, const char* separators, char decimal, char quote,
                               char comment) const {
  return XelCsvReader(env, file, isMultiTable, isSplit, separators, decimal, quote, comment, isCached ? 1 : 0);
}

XelCsvTableReader World::makeTable() const {
  return shape == Shape::One ? reader.getReaderForUniqueTableFile() : reader.getTableByName(getTables(shape).first);
}

std::string World::askBystanders() { return bystanders->ask(); }

std::string World::walkOn() { return bystanders->walkOn(); }
