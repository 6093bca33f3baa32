// The iterators over lines and over tables, and those that they are built on.
#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"
#include "tests/faults/Scenarios.h"

namespace {

const char* const Cities =
    "5: [Cities][Paris][2004][7][a,b] 7: [Cities][ Rome ][2005][9.5][] 9: [Cities][Oslo][2006][99999999999][ -INF] ";
const char* const OneTableCities =
    "2: [Paris][2004][7][a,b] 4: [ Rome ][2005][9.5][] 5: [Oslo][2006][99999999999][ -INF] ";

template <class Iterator>
std::string walkOn(Iterator& it) {
  std::string all;
  for (; it.ok(); ++it) all += textOf(*it) + " ";
  return all;
}

std::string walkTables(XelCsvReader::TableIterator& it) {
  std::string all;
  for (; it.ok(); ++it) all += text(*it) + " ";
  return all;
}

std::vector<Scenario> getLineIterators() {
  using Iterator = XelCsvTableReader::LineIterator;
  const auto walkWorlds = [](const World& at) { return walkThrough(at.table); };
  return {
      {"LineIterator()", Shape::One,
       [](const World&) {
         Iterator it;
         ++it;
         it.end();
         return text(it.ok()) + "," + textOf(*it);
       },
       "no,no line"},
      {"LineIterator, a walk", Shape::Many, walkWorlds, Cities},
      {"LineIterator, a walk through one table", Shape::One, walkWorlds, OneTableCities},
      {"LineIterator, a walk through a split table", Shape::Split, walkWorlds,
       "2: [A][p][1] 4: [A][q][2] 6: [A][r][3] "},
      {"LineIterator, a walk through a table without keys", Shape::Defects, walkWorlds, "2: [Bare] "},
      {"LineIterator, a walk through the last table", Shape::Many,
       [](const World& at) { return walkThrough(*namedTable(at, "Plain")); }, "13: [Plain][x][y] "},
      {"LineIterator's copy, in the middle", Shape::Many,
       [](const World& at) {
         Iterator it(at.table);
         ++it;
         Iterator copy(it);
         return textOf(*it) + "," + walkOn(copy);
       },
       "no line,7: [Cities][ Rome ][2005][9.5][] 9: [Cities][Oslo][2006][99999999999][ -INF] "},
      {"LineIterator's copy in one table, at the start", Shape::One,
       [](const World& at) {
         const Iterator it(at.table);
         Iterator copy(it);
         return walkOn(copy);
       },
       OneTableCities},
      {"LineIterator's copy in a split table, in the middle", Shape::Split,
       [](const World& at) {
         Iterator it(at.table);
         ++it;
         Iterator copy(it);
         return walkOn(copy);
       },
       "4: [A][q][2] 6: [A][r][3] "},
      {"LineIterator's assignment starts again", Shape::Many,
       [](const World& at) {
         Iterator it(at.table);
         ++it;
         Ending<XelCsvTableReader> stock = namedTable(at, "Stock");
         Iterator target(*stock);
         target = it;
         return textOf(*it) + "," + walkOn(target);
       },
       std::string("7: [Cities][ Rome ][2005][9.5][],") + Cities},
      {"LineIterator's assignment to itself", Shape::Many,
       [](const World& at) {
         Iterator it(at.table);
         ++it;
         Iterator& same = it;
         it = same;
         return walkOn(it);
       },
       Cities},
      {"LineIterator::end in the middle", Shape::Many,
       [](const World& at) {
         Iterator it(at.table);
         ++it;
         it.end();
         const std::string line = textOf(*it);
         ++it;
         return line + "," + text(it.ok());
       },
       "no line,no"},
      {"LineIterator with lookups on the way", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         std::string all;
         for (Iterator it(at.table); it.ok(); ++it) all += textOf(*it) + textOf(table->getLineByNumber(0)) + " ";
         return all;
       },
       "5: [Cities][Paris][2004][7][a,b]5: [Cities][Paris][2004][7][a,b] "
       "7: [Cities][ Rome ][2005][9.5][]5: [Cities][Paris][2004][7][a,b] "
       "9: [Cities][Oslo][2006][99999999999][ -INF]5: [Cities][Paris][2004][7][a,b] "},
      {"XelCsvLine::copy of an iterator's line", Shape::Many,
       [](const World& at) {
         Ending<XelCsvLine> copy{XelCsvLine()};
         for (Iterator it(at.table); it.ok(); ++it) copy->copy(*it);
         return textOf(*copy);
       },
       "9: [Cities][Oslo][2006][99999999999][ -INF]"},
      {"XelCsvLine::copy over an iterator's line", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         Iterator it(at.table);
         Ending<XelCsvLine> line(*it);  // the user's where the walk has no line
         line->copy(table->getLineByNumber(2));
         const std::string copied = textOf(*line);
         ++it;
         return copied + " " + textOf(*it);
       },
       "9: [Cities][Oslo][2006][99999999999][ -INF] 7: [Cities][ Rome ][2005][9.5][]"},

      {"reader's LineIterator", Shape::One,
       [](const World& at) {
         XelCsvReader::LineIterator it(at.reader);
         return walkOn(it);
       },
       OneTableCities},
      {"reader's LineIterator(), end, copy, assignment", Shape::One,
       [](const World& at) {
         const XelCsvReader::LineIterator it(at.reader);
         XelCsvReader::LineIterator copy(it);
         XelCsvReader::LineIterator target;
         target = copy;
         copy.end();
         return textOf(*copy) + "," + walkOn(target);
       },
       std::string("no line,") + OneTableCities},
      {"reader's LineIterator in a file of many", Shape::Many,
       [](const World& at) {
         const XelCsvReader::LineIterator it(at.reader);
         return text(it.ok());
       },
       wrongUse("{file} is a multi-Table file. There is no reader for unique table.")},
  };
}

std::vector<Scenario> getTableIterators() {
  using Iterator = XelCsvReader::TableIterator;
  return {
      {"TableIterator()", Shape::Many,
       [](const World&) {
         Iterator it;
         it.end();
         return text(it.ok()) + "," + text(*it);
       },
       "no,no table"},
      {"TableIterator, a walk", Shape::Many,
       [](const World& at) {
         Iterator it(at.reader);
         return walkTables(it);
       },
       "Cities:5 Stock:3 Plain:3 "},
      {"TableIterator, a walk through split tables", Shape::Split,
       [](const World& at) {
         Iterator it(at.reader);
         return walkTables(it);
       },
       "A:3 B:2 "},
      {"TableIterator, a walk through every line of every table", Shape::Many,
       [](const World& at) {
         std::string all;
         for (Iterator it(at.reader); it.ok(); ++it) all += walkThrough(*it);
         return all;
       },
       std::string(Cities) + "11: [Stock][s1][3] 12: [Stock][s2][U] 13: [Plain][x][y] "},
      {"TableIterator, a walk past tables that cannot be made", Shape::Defects,
       [](const World& at) {
         std::string all;
         for (Iterator it(at.reader); it.ok();) {
           all += text(*it) + " ";
           all += outcomeOf([&] {
                    ++it;
                    return std::string("next");
                  }).substr(0, 28) +
                  " ";
         }
         return all;
       },
       "Bare:1 next Twins:2 next Torn:3 next Stub:3 XelOverflowException | XelCs no table next Headed:2 next ",
       "Bare:1 XelDuplicatedLineException | no table XelFieldNotFoundException |  no table XelCsvReaderException | "
       "XelC no table XelOverflowException | XelCs no table next Headed:2 next ",
       false, true},
      {"TableIterator's copy and assignment", Shape::Many,
       [](const World& at) {
         Iterator it(at.reader);
         ++it;
         Iterator copy(it);
         Iterator target(at.reader);
         target = it;
         return text(*it) + "," + text(*copy) + "," + walkTables(target);
       },
       "Stock:3,Stock:3,Stock:3 Plain:3 "},
      {"TableIterator::end in the middle", Shape::Many,
       [](const World& at) {
         Iterator it(at.reader);
         it.end();
         const std::string ended = text(*it);
         ++it;
         return ended + "," + text(*it);
       },
       "no table,Stock:3"},
      {"TableIterator and lookups in its tables", Shape::Many,
       [](const World& at) {
         Iterator it(at.reader);
         Ending<XelCsvTableReader> table(*it);
         return textOf(table->getLineByKey(2, "Oslo", "2006"));
       },
       "9: [Cities][Oslo][2006][99999999999][ -INF]"},
      {"TableIterator of a one-table file", Shape::One,
       [](const World& at) {
         const Iterator it(at.reader);
         return text(it.ok());
       },
       wrongUse("{file} is a unique-Table file. cann't use this member function getTableByName with this reader.")},
  };
}

// What a line of an implementation iterator holds.
std::string show(XelCsvLineI* line) { return textOf(XelCsvLine(line)); }

// The iterators of each kind over a table of that kind, whatever the world's is.
template <class Iterator, class Table>
Scenario ofImplementation(const char* name, long isCached) {
  return {name, Shape::Many,
          [isCached](const World& at) {
            Ending<XelCsvReader> reader(XelCsvReader(at.env, at.file, 1, 0, ",", '.', '"', '#', isCached));
            Ending<XelCsvTableReader> handle(reader->getTableByName("Cities"));
            auto* table = dynamic_cast<Table*>(handle->getImpl());
            Iterator empty;
            Iterator it(table);
            ++it;
            Iterator copied(it);
            Iterator assigned;
            assigned = copied;
            empty.copy(assigned);
            std::string all = show(it.getLine()) + "," + show(empty.getLine()) + "," + text(empty.isOk());
            empty.clear();
            Iterator again(table);
            again.initIterator();
            return all + "," + show(empty.getLine()) + "," + show(again.getLine());
          },
          "no line,7: [Cities][ Rome ][2005][9.5][],yes,no line,5: [Cities][Paris][2004][7][a,b]"};
}

std::vector<Scenario> getImplementations() {
  return {
      ofImplementation<XelNonCachedCsvLineIteratorI, XelNonCachedCsvTableReaderI>("XelNonCachedCsvLineIteratorI", 0),
      ofImplementation<XelCachedCsvLineIteratorI, XelCachedCsvTableReaderI>("XelCachedCsvLineIteratorI", 1),
      {"XelCsvTableIteratorI", Shape::Many,
       [](const World& at) {
         const XelCsvTableIteratorI empty;
         XelCsvTableIteratorI it(at.reader.getImpl());
         ++it;
         XelCsvTableIteratorI copied(it);
         XelCsvTableIteratorI assigned;
         assigned = copied;
         it.copy(assigned);
         it.initIterator();
         it.clear();
         it.copy(empty);
         return std::string("done");
       },
       "done"},
  };
}

}  // namespace

std::vector<Scenario> getIteratorScenarios() {
  return joined({getLineIterators(), getTableIterators(), getImplementations()});
}
