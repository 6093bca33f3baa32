// XelCsvTableReader: its constructors, lookups, columns, keys and copies.
#include "tests/faults/Scenarios.h"
#include "tests/support/CoutCapture.h"
#include "tests/support/TestEnv.h"

namespace {

using Run = std::function<std::string(const World&)>;

// Lookups of the world's table.
Run byNumber(long number) {
  return [number](const World& at) { return textOf(sharedTable(at)->getLineByNumber(number)); };
}

Run byKey(long count, const char* first, const char* second = nullptr, const char* third = nullptr) {
  return [=](const World& at) { return textOf(sharedTable(at)->getLineByKey(count, first, second, third)); };
}

// A lookup of another table.
Run byKeyIn(const char* name, long count, const char* first, const char* second = nullptr) {
  return [=](const World& at) { return textOf(namedTable(at, name)->getLineByKey(count, first, second)); };
}

std::string print(XelCsvTableReader& table) {
  const CoutCapture captured;
  table.printKeys();
  return captured.getText();
}

// What a table answers to everything that takes no parameter.
std::string ask(XelCsvTableReader& table) {
  return text(table) + "," + std::to_string(table.getNumberOfItems()) + " items," +
         std::to_string(table.getNumberOfKeys()) + " keys," + textOf(table.getFirstLine()) + "," +
         text(table.isCached());
}

std::vector<Scenario> getConstructors() {
  const auto make = [](const char* name) {
    return [name](const World& at) {
      Ending<XelCsvTableReader> table(XelCsvTableReader(at.reader.getImpl(), name));
      return text(*table);
    };
  };
  return {
      {"XelCsvTableReader(XelCsvReaderI*, name)", Shape::Many, make("Cities"), "Cities:5"},
      {"XelCsvTableReader(XelCsvReaderI*, name), split", Shape::Split, make("A"), "A:3"},
      {"XelCsvTableReader(XelCsvReaderI*, name), unknown", Shape::Many, make("Rivers"),
       thrown("XelTableNotFoundException", "No Table having this name Rivers.")},
      {"XelCsvTableReader(XelCsvReaderI*, name), a key twice", Shape::Defects, make("Twins"), "Twins:2",
       thrown("XelDuplicatedLineException", "Another line with key  a already exists in table Twins")},
      {"XelCsvTableReader(XelCsvReaderI*, name), a key field missing", Shape::Defects, make("Torn"), "Torn:3",
       fieldNotFound("Field Not Found at position 2 in line number 7, in table Torn while trying getStringByPosition")},
      {"XelCsvTableReader(XelCsvReaderI*, name), too few fields for the keys", Shape::Defects, make("Stub"), "Stub:3",
       thrown("XelCsvReaderException",
              "corrupted file the number of keys (2) exceeds the number of fields of the current line (1), line number "
              "9 in table Stub")},
      {"XelCsvTableReader(XelCsvReaderI*, name), a number above 32 bits", Shape::Defects, make("Huge"),
       thrown("XelOverflowException", "OVERFLOW while reading field 1  of line number 10 in table Huge as integer")},

      {"XelCsvTableReader(), XelCsvTableReader(XelCsvTableReaderI*)", Shape::Many,
       [](const World& at) {
         XelCsvTableReader empty;
         empty.end();
         const XelCsvTableReader same(at.table.getImpl());
         return text(empty) + "," + text(same) + "," + text(same.isEmpty());
       },
       "no table,Cities:5,no"},
      {"XelCsvTableReader's copy and assignment", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> first(at.table);
         Sharing<XelCsvTableReader> second(*first);
         const std::string line = textOf(first->getLineByNumber(0));
         *first = *second;  // the last line goes
         return line + " " + textOf(first->getLineByNumber(0)) + " " + textOf(second->getLineByNumber(0));
       },
       "5: [Cities][Paris][2004][7][a,b] 5: [Cities][Paris][2004][7][a,b] 5: [Cities][Paris][2004][7][a,b]"},
      {"XelCsvTableReader's move and move assignment", Shape::Many,
       [](const World& at) {
         Ending<XelCsvTableReader> first = ownTable(at);
         const XelCsvLine line = first->getLineByNumber(0);
         Ending<XelCsvTableReader> second(std::move(*first));
         *first = std::move(*second);
         return textOf(line) + " " + text(*first) + "," + text(*second);
       },
       "5: [Cities][Paris][2004][7][a,b] Cities:5,no table"},
      {"XelCsvTableReader::end, twice, after a lookup", Shape::Many,
       [](const World& at) {
         Ending<XelCsvTableReader> table = ownTable(at);
         table->getLineByNumber(0);
         table->end();
         table->end();
         return text(*table);
       },
       "no table"},
  };
}

std::vector<Scenario> getLookups() {
  const std::string twoKeys = "Not enought keys, the number of keys is : 2 for table Cities";
  return {
      {"getLineByNumber", Shape::Many, byNumber(0), "5: [Cities][Paris][2004][7][a,b]"},
      {"getLineByNumber after an empty line", Shape::Many, byNumber(1), "7: [Cities][ Rome ][2005][9.5][]"},
      {"getLineByNumber, the last", Shape::Many, byNumber(2), "9: [Cities][Oslo][2006][99999999999][ -INF]"},
      {"getLineByNumber, the line after the table", Shape::Many, byNumber(3), "10: [Stock|KEYS][1][0]",
       lineNotFound("No line number 3 in table Cities")},
      {"getLineByNumber past the end", Shape::Many, byNumber(4), lineNotFound("No line number 4 in table Cities."),
       lineNotFound("No line number 4 in table Cities")},
      {"getLineByNumber below 0", Shape::Many, byNumber(-1), lineNotFound("No line number -1 in table Cities."),
       lineNotFound("No line number -1 in table Cities")},
      {"getLineByNumber in one table", Shape::One, byNumber(2), "5: [Oslo][2006][99999999999][ -INF]"},
      {"getLineByNumber past the end of one table", Shape::One, byNumber(1000000), "6: [Oslo]",
       lineNotFound("No line number 1000000 ")},
      {"getLineByNumber in a split table", Shape::Split, byNumber(2), "6: [A][r][3]"},
      {"getLineByNumber in a table without keys", Shape::Defects, byNumber(0), "2: [Bare]"},
      {"getLineByNumber twice", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         const std::string first = textOf(table->getLineByNumber(2));
         return first + " " + textOf(table->getLineByNumber(0));
       },
       "9: [Cities][Oslo][2006][99999999999][ -INF] 5: [Cities][Paris][2004][7][a,b]"},

      {"getLineByKey", Shape::Many, byKey(2, "Paris", "2004"), "5: [Cities][Paris][2004][7][a,b]"},
      {"getLineByKey, the value of a field with blanks", Shape::Many, byKey(2, "Rome", "2005"),
       "7: [Cities][Rome][2005][9.5][]", "7: [Cities][ Rome ][2005][9.5][]"},
      {"getLineByKey, more values than keys", Shape::Many, byKey(3, "Oslo", "2006", "beyond"),
       "9: [Cities][Oslo][2006][99999999999][ -INF]"},
      {"getLineByKey, too few values", Shape::Many, byKey(1, "Oslo"), lineNotFound(twoKeys)},
      {"getLineByKey, no value", Shape::Many, byKey(0, nullptr), lineNotFound(twoKeys)},
      {"getLineByKey, a null value", Shape::Many, byKey(2, "Oslo", nullptr),
       lineNotFound("No line having key  in table Cities.")},
      {"getLineByKey, a key that is missing", Shape::Many, byKey(2, "Rome", "1"),
       lineNotFound("No line having key Rome-1 in table Cities.")},
      {"getLineByKey, one value", Shape::Many, byKeyIn("Stock", 1, "s2"), "12: [Stock][s2][U]"},
      {"getLineByKey, every column a key", Shape::Many, byKeyIn("Plain", 2, "x", "y"), "13: [Plain][x][y]"},
      {"getLineByKey, no column a key", Shape::Defects, byKeyIn("Bare", 0, ""), "2: [Bare]"},
      {"getLineByKey in one table", Shape::One, byKey(2, "Oslo", "2006"), "5: [Oslo][2006][99999999999][ -INF]"},
      {"getLineByKey in one table, a key that is missing", Shape::One, byKey(2, "Rome", "1"),
       lineNotFound("No line having key Rome-1."), lineNotFound("No line having key Rome-1 .")},
      {"getLineByKey in one table, too few values", Shape::One, byKey(1, "Rome"),
       lineNotFound("Not enought keys, the number of keys is : 2")},
      {"getLineByKey in a split table", Shape::Split, byKey(1, "r"), "6: [A][r][3]"},
      {"getLineByKey in a split table, the key of another table", Shape::Split, byKey(1, "x"),
       lineNotFound("No line having key x in table A.")},
      {"getLineByKey where a key field is missing", Shape::Defects, byKeyIn("Torn", 2, "a", "b"),
       fieldNotFound("Field Not Found at position 2 in line number 7, in table Torn while trying getStringByPosition")},
      {"getLineByKey where a line has too few fields", Shape::Defects, byKeyIn("Stub", 2, "a", "b"),
       thrown("XelCsvReaderException",
              "corrupted file the number of keys (2) exceeds the number of fields of the current line (1), line number "
              "9 in table Stub")},
      {"getLineByKey, a long key", Shape::Many,
       [](const World& at) {
         const std::string value(20000, 'v');
         try {
           return textOf(sharedTable(at)->getLineByKey(2, value.c_str(), "2004"));
         } catch (const XelCsvReader::XelLineNotFoundException& exception) {
           return std::to_string(std::string(exception.getMessage()).size());
         }
       },
       "499", "", false, true},
      {"getLineByKey, values of the former last line", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         const XelCsvLine line = table->getLineByNumber(0);
         return textOf(table->getLineByKey(2, line.getStringByPosition(1), line.getStringByPosition(2)));
       },
       "5: [Cities][Paris][2004][7][a,b]"},
  };
}

std::vector<Scenario> getColumns() {
  const auto position = [](const char* heading) {
    return [heading](const World& at) { return std::to_string(at.table.getPosition(heading)); };
  };
  const auto positionIn = [](const char* name, const char* heading) {
    return [=](const World& at) { return std::to_string(namedTable(at, name)->getPosition(heading)); };
  };
  const auto printWorlds = [](const World& at) { return print(at.table); };
  const auto printNamed = [](const char* name) {
    return [name](const World& at) { return print(*namedTable(at, name)); };
  };
  const auto askWorlds = [](const World& at) { return ask(at.table); };
  return {
      {"getNumberOfItems, getNumberOfKeys, getFirstLine, isCached", Shape::Many, askWorlds,
       "Cities:5,3 items,2 keys,3: [Cities|NAMES][name][year][size][note],no",
       "Cities:5,3 items,2 keys,3: [Cities|NAMES][name][year][size][note],yes"},
      {"the same of one table", Shape::One, askWorlds, "(null):4,3 items,2 keys,0: [|NAMES][name][year][size][note],no",
       "(null):4,3 items,2 keys,0: [|NAMES][name][year][size][note],yes"},
      {"the same of a split table", Shape::Split, askWorlds, "A:3,3 items,1 keys,0: [A|NAMES][name][size],no",
       "A:3,3 items,1 keys,0: [A|NAMES][name][size],yes"},
      {"the same without heading and key lines", Shape::Defects, askWorlds, "Bare:1,1 items,0 keys,no line,no",
       "Bare:1,1 items,0 keys,no line,yes"},
      {"XelCsvTableReader::getEnv, getNameOfTable", Shape::Many,
       [](const World& at) {
         return text(at.table.getEnv().getImpl() == at.env.getImpl()) + "," + at.table.getNameOfTable();
       },
       "yes,Cities"},
      {"getPosition", Shape::Many, position("size"), "3"},
      {"getPosition in one table", Shape::One, position("size"), "2"},
      {"getPosition of the mark", Shape::One, position("|NAMES"), "-1"},
      {"getPosition of an unknown heading", Shape::Many, position("weight"),
       thrown("XelColumnHeaderNotFoundException", "Heading weight not found in table Cities")},
      {"getPosition of an unknown heading in one table", Shape::One, position("weight"),
       thrown("XelColumnHeaderNotFoundException", "Heading weight not found")},
      {"getPosition without a heading line", Shape::Many, positionIn("Plain", "size"),
       thrown("XelColumnHeaderNotFoundException", "No header line for columns in table Plain ")},
      {"getPosition without a heading line in one table", Shape::Many,
       [](const World& at) {
         Ending<XelCsvReader> reader(at.makeReader(0));
         return std::to_string(reader->getPosition("x"));
       },
       thrown("XelColumnHeaderNotFoundException", "No header line for columns in file {file} ")},
      {"isHeadingExists", Shape::Many,
       [](const World& at) {
         return text(at.table.isHeadingExists("size")) + "," + text(at.table.isHeadingExists("weight")) + "," +
                text(at.table.isHeadingExists(nullptr));
       },
       "yes,no,no"},
      {"isHeadingExists without a heading line", Shape::Many,
       [](const World& at) { return text(namedTable(at, "Plain")->isHeadingExists("size")); }, "no"},
      {"printKeys", Shape::Many, printWorlds, "key 0 ----> name\nkey 1 ----> year\n"},
      {"printKeys in one table", Shape::One, printWorlds, "key 0 ----> |NAMES\nkey 1 ----> name\n"},
      {"printKeys without a heading line", Shape::Many, printNamed("Plain"),
       "key 0 ----> Column 1\nkey 1 ----> Column 2\n"},
      {"printKeys without keys", Shape::Defects, printWorlds, ""},
      {"printKeys with too few headings", Shape::Defects, printNamed("Headed"),
       fieldNotFound(
           "Field Not Found at position 1 in line number 12, in table Headed while trying getStringByPosition")},
  };
}

std::vector<Scenario> getCopies() {
  const auto copyIntoEmpty = [](const World& at) {
    Ending<XelCsvTableReader> copy{XelCsvTableReader()};
    copy->copy(at.table);
    return text(*copy) + " " + textOf(copy->getLineByNumber(0));
  };
  return {
      {"XelCsvTableReader::copy into an empty handle", Shape::Many, copyIntoEmpty,
       "Cities:5 5: [Cities][Paris][2004][7][a,b]"},
      {"XelCsvTableReader::copy of the one table", Shape::One, copyIntoEmpty, "(null):4 2: [Paris][2004][7][a,b]"},
      {"XelCsvTableReader::copy of a split table", Shape::Split, copyIntoEmpty, "A:3 2: [A][p][1]"},
      {"XelCsvTableReader::copy of a table without heading line", Shape::Defects, copyIntoEmpty, "Bare:1 2: [Bare]"},
      {"XelCsvTableReader::copy with a last line", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> source = sharedTable(at);
         const XelCsvLine line = source->getLineByNumber(1);
         Ending<XelCsvTableReader> copy{XelCsvTableReader()};
         copy->copy(*source);
         return textOf(line) + " " + text(*copy);
       },
       "7: [Cities][ Rome ][2005][9.5][] Cities:5"},
      {"XelCsvTableReader::copy over a table with a last line", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> source = sharedTable(at);
         source->getLineByNumber(1);
         Ending<XelCsvTableReader> copy = namedTable(at, "Stock");
         const XelCsvLine line = copy->getLineByNumber(0);
         copy->copy(*source);  // the handles of the last line show the copy
         const std::string shown = textOf(line);
         return shown + " " + text(*copy) + " " + textOf(copy->getLineByKey(2, "Oslo", "2006"));
       },
       "7: [Cities][ Rome ][2005][9.5][] Cities:5 9: [Cities][Oslo][2006][99999999999][ -INF]"},
      {"XelCsvTableReader::copy without a last line over one with it", Shape::Many,
       [](const World& at) {
         Ending<XelCsvTableReader> copy = namedTable(at, "Stock");
         copy->getLineByNumber(0);
         copy->copy(at.table);
         return text(*copy) + " " + textOf(copy->getFirstLine());
       },
       "Cities:5 3: [Cities|NAMES][name][year][size][note]"},
      {"XelCsvTableReader::copy of a table of the other kind", Shape::Many,
       [](const World& at) {
         Ending<XelCsvReader> reader(XelCsvReader(at.env, at.file, 1, 0, ",", '.', '"', '#', at.isCached ? 0 : 1));
         Ending<XelCsvTableReader> source(reader->getTableByName("Cities"));
         Ending<XelCsvTableReader> copy = namedTable(at, "Stock");
         copy->copy(*source);
         return text(*copy) + " " + textOf(copy->getLineByKey(2, "Paris", "2004"));
       },
       "Cities:5 5: [Cities][Paris][2004][7][a,b]"},
      {"XelCsvTableReader::copy of a scanning table with a key twice", Shape::Defects,
       [](const World& at) {
         Ending<XelCsvReader> reader(XelCsvReader(at.env, at.file, 1, 0, ",", '.', '"', '#', 0));
         Ending<XelCsvTableReader> source(reader->getTableByName("Twins"));
         Ending<XelCsvTableReader> copy = namedTable(at, "Headed");
         copy->copy(*source);
         return text(*copy) + " " + textOf(copy->getLineByNumber(1));
       },
       "Twins:2 5: [Twins][a]",
       thrown("XelDuplicatedLineException", "Another line with key  a already exists in table Twins")},
      {"XelCsvTableReader::copy onto itself", Shape::Many,
       [](const World& at) {
         Ending<XelCsvTableReader> table = ownTable(at);
         table->copy(*table);
         return text(*table);
       },
       "Cities:5"},
      {"XelCsvTableReader::copy into another environment", Shape::Many,
       [](const World& at) {
         // The copy's own memory is the source's environment's too, but for the handle's table itself.
         Ending<XelEnv> otherEnv{XelEnv(at.allocator)};
         Ending<XelCsvReader> reader(XelCsvReader(*otherEnv, at.file, 1, 0, ",", '.', '"', '#', at.isCached ? 1 : 0));
         Ending<XelCsvTableReader> copy(reader->getTableByName("Stock"));
         copy->copy(at.table);
         return text(*copy) + " " + textOf(copy->getLineByNumber(0));
       },
       "Cities:5 5: [Cities][Paris][2004][7][a,b]"},
  };
}

}  // namespace

std::vector<Scenario> getTableScenarios() {
  return joined({getConstructors(), getLookups(), getColumns(), getCopies()});
}
