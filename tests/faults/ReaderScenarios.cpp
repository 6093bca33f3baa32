// XelCsvReader: its constructors, tables, directives and the operations of a one-table file.
#include "tests/faults/Scenarios.h"
#include "tests/support/CoutCapture.h"

namespace {

// What a reader is, which is then ended.
std::string askAndEnd(XelCsvReader made) {
  Ending<XelCsvReader> reader(std::move(made));
  return std::to_string(reader->getNumberOfTables()) + " tables";
}

std::string wrongParameter(const std::string& message) { return "XelCsvReaderParameterException | " + message; }

const char* const NoValue =
    "XelCsvReader::XelCsvReaderParameterException : You must specify a value different of 0 for separator, decimal, "
    "quote and comment characters";

// A row for an operation of a file of several tables that is called on a one-table file.
Scenario onOneTable(const char* name, std::function<std::string(const World&)> run, const std::string& operation) {
  return {
      name, Shape::One, std::move(run),
      wrongUse("{file} is a unique-Table file. cann't use this member function " + operation + " with this reader.")};
}

// The other way round.
Scenario onManyTables(const char* name, std::function<std::string(const World&)> run, const std::string& operation) {
  return {
      name, Shape::Many, std::move(run),
      wrongUse("{file} is a multi-Table file. No table have been specified while trying to do a " + operation + ".")};
}

std::vector<Scenario> getConstructors() {
  return {
      {"XelCsvReader(...), one table", Shape::One, [](const World& at) { return askAndEnd(at.makeReader()); },
       "1 tables"},
      {"XelCsvReader(...), one table, all parameters by default", Shape::One,
       [](const World& at) { return askAndEnd(XelCsvReader(at.env, at.file)); }, "1 tables"},
      {"XelCsvReader(...), one table, splitting allowed", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 1)); }, "1 tables"},
      {"XelCsvReader(...), one table, other characters", Shape::One,
       [](const World& at) {
         Ending<XelCsvReader> reader(at.makeReader(0, 0, ";|", ',', '\'', '!'));
         return textOf(reader->getFirstLine()) + " " + std::to_string(reader->getNumberOfColumns());
       },
       "no line 2",
       thrown("XelCsvReaderException",
              "corrupted file the number of keys (2) exceeds the number of fields of the current line (1), line number "
              "2")},
      {"XelCsvReader(...), one table, no separator", Shape::One,
       [](const World& at) {
         Ending<XelCsvReader> reader(at.makeReader(0, 0, ""));
         return textOf(reader->getLineByNumber(0)) + " " + std::to_string(reader->getNumberOfColumns());
       },
       "2: [Paris,2004,7,a,b] 0"},
      {"XelCsvReader(...), one table, of a file of many", Shape::Many,
       [](const World& at) {
         Ending<XelCsvReader> reader(at.makeReader(0));
         return textOf(reader->getLineByNumber(1));
       },
       "1: [XELO_DATA_SCHEMA][planner][3]"},
      {"XelCsvReader(...), many tables", Shape::Many, [](const World& at) { return askAndEnd(at.makeReader()); },
       "3 tables"},
      {"XelCsvReader(...), many tables, splitting allowed", Shape::Many,
       [](const World& at) { return askAndEnd(at.makeReader(1, 1)); }, "3 tables"},
      {"XelCsvReader(...), split tables", Shape::Split, [](const World& at) { return askAndEnd(at.makeReader()); },
       "2 tables"},
      {"XelCsvReader(...), tables with defects", Shape::Defects,
       [](const World& at) { return askAndEnd(at.makeReader()); }, "6 tables"},
      {"XelCsvReader(...) without a file name", Shape::One,
       [](const World& at) { return askAndEnd(XelCsvReader(at.env, nullptr)); },
       "XelFileNotFoundException | XelCsvReader::testFile : Empty file name"},
      {"XelCsvReader(...) of a file that is missing", Shape::One,
       [](const World& at) { return askAndEnd(XelCsvReader(at.env, (std::string(at.file) + ".gone").c_str())); },
       "XelFileNotFoundException | While trying to open file {file}.gone : No such file or directory. The specified "
       "file or directory does not exist or cannot be found. This message can occur whenever a specified file does not "
       "exist or a component of a path does not specify an existing directory. "},
      {"XelCsvReader(...) without separators", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, nullptr)); }, wrongParameter(NoValue)},
      {"XelCsvReader(...) without a decimal character", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",", '\0')); }, wrongParameter(NoValue)},
      {"XelCsvReader(...) without a quote", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",", '.', '\0')); }, wrongParameter(NoValue)},
      {"XelCsvReader(...) without a comment character", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",", '.', '"', '\0')); }, wrongParameter(NoValue)},
      {"XelCsvReader(...), a quote that separates", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",\"")); },
       wrongParameter("XelCsvReader::XelCsvReader::inclusionTest : you are using a separator = ,\" and a Quote = \"  "
                      "Quote  must not be a separator. ")},
      {"XelCsvReader(...), a decimal character that separates", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",.")); },
       wrongParameter("XelCsvReader::XelCsvReader::inclusionTest : you are using a separator = ,. and a Decimal = .  "
                      "Decimal  must not be a separator. ")},
      {"XelCsvReader(...), a comment character that separates", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",#")); },
       wrongParameter("XelCsvReader::XelCsvReader::inclusionTest : you are using a separator = ,# and a Comment = #  "
                      "Comment  must not be a separator. ")},
      {"XelCsvReader(...), comment and quote alike", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",", '.', '#')); },
       wrongParameter("XelCsvReader::XelCsvReader::testCharacter: you are using a Comment  =  # and  Quote =  #  You "
                      "are not allowed to use a same character for Comment and Quote ")},
      {"XelCsvReader(...), comment and decimal alike", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",", '#')); },
       wrongParameter("XelCsvReader::XelCsvReader::testCharacter: you are using a Comment  =  # and  Decimal =  #  You "
                      "are not allowed to use a same character for Comment and Decimal ")},
      {"XelCsvReader(...), decimal and quote alike", Shape::One,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ",", '"')); },
       wrongParameter("XelCsvReader::XelCsvReader::testCharacter: you are using a Decimal  =  \" and  Quote =  \"  You "
                      "are not allowed to use a same character for Decimal and Quote ")},
      {"XelCsvReader(...), a table in two pieces", Shape::Split,
       [](const World& at) { return askAndEnd(at.makeReader(1, 0)); },
       thrown("XelDuplicatedTableException",
              "Another table with name A already exists. Table splitting is not specified. ")},
      {"XelCsvReader(...), one table, of a file with defects", Shape::Defects,
       [](const World& at) { return askAndEnd(at.makeReader(0, 0, ";")); }, "1 tables"},

      {"XelCsvReader(), XelCsvReader(XelCsvReaderI*)", Shape::One,
       [](const World& at) {
         XelCsvReader empty;
         empty.end();
         const XelCsvReader same(at.reader.getImpl());
         return text(empty.isEmpty()) + "," + text(same.isEmpty()) + "," + text(same.getImpl() == at.reader.getImpl());
       },
       "yes,no,yes"},
      {"XelCsvReader's copy and assignment", Shape::One,
       [](const World& at) {
         Sharing<XelCsvReader> first(at.reader);
         Sharing<XelCsvReader> second(*first);
         const std::string line = textOf(first->getLineByNumber(0));
         *first = *second;  // the last line goes
         return line + " " + textOf(first->getLineByNumber(2)) + " " + textOf(second->getLineByNumber(0));
       },
       "2: [Paris][2004][7][a,b] 5: [Oslo][2006][99999999999][ -INF] 2: [Paris][2004][7][a,b]"},
      {"XelCsvReader's move and move assignment", Shape::One,
       [](const World& at) {
         Ending<XelCsvReader> first(at.makeReader());
         const XelCsvLine line = first->getLineByNumber(0);
         Ending<XelCsvReader> second(std::move(*first));
         *first = std::move(*second);
         return textOf(line) + " " + text(first->isEmpty()) + "," + text(second->isEmpty());
       },
       "2: [Paris][2004][7][a,b] no,yes"},
      {"XelCsvReader's assignment of another reader", Shape::One,
       [](const World& at) {
         Sharing<XelCsvReader> handle(at.reader);
         handle->getLineByNumber(0);
         Ending<XelCsvReader> other(at.makeReader());
         *handle = *other;
         return textOf(handle->getLineByNumber(2));
       },
       "5: [Oslo][2006][99999999999][ -INF]"},
      {"XelCsvReader::end, twice, after a lookup", Shape::One,
       [](const World& at) {
         Ending<XelCsvReader> reader(at.makeReader());
         reader->getLineByNumber(0);
         reader->end();
         reader->end();
         return text(reader->isEmpty());
       },
       "yes"},
      {"XelCsvReader::getEnv", Shape::One,
       [](const World& at) { return text(at.reader.getEnv().getImpl() == at.env.getImpl()); }, "yes"},
  };
}

std::vector<Scenario> getTables() {
  const auto describeNamed = [](const char* name) {
    return [name](const World& at) { return text(*namedTable(at, name)); };
  };
  const auto describeNumbered = [](long number) {
    return [number](const World& at) {
      Ending<XelCsvTableReader> table(at.reader.getTableByNumber(number));
      return text(*table);
    };
  };
  return {
      {"getTableByName", Shape::Many, describeNamed("Cities"), "Cities:5"},
      {"getTableByName of the last table", Shape::Many, describeNamed("Plain"), "Plain:3"},
      {"getTableByName of a reserved table", Shape::Many, describeNamed("XELO_DATA_SCHEMA"), "XELO_DATA_SCHEMA:3"},
      {"getTableByName of a split table", Shape::Split, describeNamed("B"), "B:2"},
      {"getTableByName of a table without keys", Shape::Defects, describeNamed("Bare"), "Bare:1"},
      {"getTableByName of an unknown table", Shape::Many, describeNamed("Rivers"),
       thrown("XelTableNotFoundException", "No Table having this name Rivers.")},
      {"getTableByName of no name", Shape::Many, describeNamed(nullptr),
       thrown("XelTableNotFoundException", "No Table having this name .")},
      {"getTableByName of a table with a key twice", Shape::Defects, describeNamed("Twins"), "Twins:2",
       thrown("XelDuplicatedLineException", "Another line with key  a already exists In Table Twins .")},
      {"getTableByName of a table with a key field missing", Shape::Defects, describeNamed("Torn"), "Torn:3",
       fieldNotFound("Field Not Found at position 2 in line number 7, in table Torn while trying getStringByPosition")},
      {"getTableByName of a table with too few fields for the keys", Shape::Defects, describeNamed("Stub"), "Stub:3",
       thrown("XelCsvReaderException",
              "corrupted file the number of keys (2) exceeds the number of fields of the current line (1), line number "
              "9 in table Stub")},
      {"getTableByName of a table with a number above 32 bits", Shape::Defects, describeNamed("Huge"),
       thrown("XelOverflowException", "OVERFLOW while reading field 1  of line number 10 in table Huge as integer")},
      onOneTable("getTableByName in a one-table file", describeNamed("Cities"), "getTableByName"),

      {"getTableByNumber", Shape::Many, describeNumbered(2), "Cities:5"},
      {"getTableByNumber, a reserved table", Shape::Many, describeNumbered(0), "XELO_CSV_FORMAT:2"},
      {"getTableByNumber past the end", Shape::Many, describeNumbered(5),
       thrown("XelTableNotFoundException", "No Table number 5.The number of tables is 5.")},
      {"getTableByNumber below 0", Shape::Many, describeNumbered(-1),
       thrown("XelTableNotFoundException", "No Table number -1.The number of tables is 5.")},
      {"getTableByNumber of a table with a key twice", Shape::Defects, describeNumbered(3), "Twins:2",
       thrown("XelDuplicatedLineException", "Another line with key  a already exists In Table Twins .")},
      onOneTable("getTableByNumber in a one-table file", describeNumbered(0), "getTableByNumber"),

      {"getReaderForUniqueTableFile", Shape::One,
       [](const World& at) {
         Ending<XelCsvTableReader> lent(at.reader.getReaderForUniqueTableFile());
         return text(*lent) + " " + textOf(lent->getLineByNumber(0));
       },
       "(null):4 2: [Paris][2004][7][a,b]"},
      {"getReaderForUniqueTableFile of many tables", Shape::Many,
       [](const World& at) { return text(at.reader.getReaderForUniqueTableFile()); },
       wrongUse("{file} is a multi-Table file. There is no reader for unique table.")},
      onManyTables(
          "getTable of many tables", [](const World& at) { return text(at.reader.getTable()); }, "getTable"),
      onOneTable(
          "getTable of a one-table file", [](const World& at) { return text(at.reader.getTable()); }, "getTableByName"),

      {"getNumberOfTables", Shape::Many, [](const World& at) { return std::to_string(at.reader.getNumberOfTables()); },
       "3"},
      {"isTableExists", Shape::Many,
       [](const World& at) {
         return text(at.reader.isTableExists("Stock")) + "," + text(at.reader.isTableExists("Rivers")) + "," +
                text(at.reader.isTableExists(nullptr));
       },
       "yes,no,no"},
      {"isTableExists in a one-table file", Shape::One,
       [](const World& at) { return text(at.reader.isTableExists("Paris")); }, "no"},
  };
}

std::vector<Scenario> getDirectives() {
  const auto getFormat = [](const World& at) { return text(at.reader.getCsvFormat()); };
  const auto getVersion = [](const World& at) { return text(at.reader.getFileVersion()); };
  const auto getRequiredBy = [](const World& at) { return text(at.reader.getRequiredBy()); };
  return {
      {"getCsvFormat", Shape::Many, getFormat, "2.5"},
      {"getFileVersion", Shape::Many, getVersion, "3", "", true},
      {"getRequiredBy", Shape::Many, getRequiredBy, "planner", "", true},
      {"getFileVersion, getRequiredBy of a reader of its own", Shape::Many,
       [](const World& at) {
         Ending<XelCsvReader> reader = ownReader(at);
         return text(reader->getFileVersion()) + "," + text(reader->getRequiredBy()) + "," +
                text(reader->getFileVersion());
       },
       "3,planner,3"},
      {"getCsvFormat without the table", Shape::Split, getFormat,
       thrown("XelTableNotFoundException", "No Table having this name XELO_CSV_FORMAT.")},
      {"getFileVersion without the table", Shape::Split, getVersion,
       thrown("XelTableNotFoundException", "No Table having this name XELO_DATA_SCHEMA.")},
      {"getRequiredBy without the table", Shape::Split, getRequiredBy,
       thrown("XelTableNotFoundException", "No Table having this name XELO_DATA_SCHEMA.")},
      {"getCsvFormat without the field", Shape::Defects, getFormat,
       fieldNotFound(
           "Field Not Found at position 1 in line number 0, in table XELO_CSV_FORMAT while trying getFloatByPosition")},
      {"getFileVersion without the field", Shape::Defects,
       [](const World& at) {
         Ending<XelCsvReader> reader = ownReader(at);
         return text(reader->getFileVersion());
       },
       fieldNotFound("Field Not Found at position 2 in line number 1, in table XELO_DATA_SCHEMA while trying "
                     "getFloatByPosition")},
      {"getRequiredBy without the version", Shape::Defects,
       [](const World& at) {
         Ending<XelCsvReader> reader = ownReader(at);
         const std::string first = outcomeOf([&] { return text(reader->getRequiredBy()); });
         return first + ", then " + reader->getRequiredBy() + "," + text(reader->getFileVersion());
       },
       fieldNotFound("Field Not Found at position 2 in line number 1, in table XELO_DATA_SCHEMA while trying "
                     "getFloatByPosition") +
           ", then planner,0",
       "", false, true},
      onOneTable("getCsvFormat in a one-table file", getFormat, "getCsvFormat"),
      onOneTable("getFileVersion in a one-table file", getVersion, "getFileVersion"),
      onOneTable("getRequiredBy in a one-table file", getRequiredBy, "getRequiredBy"),
  };
}

// The operations of a one-table file, which the reader hands on to its table.
std::vector<Scenario> getOneTable() {
  const auto byNumber = [](long number) {
    return [number](const World& at) { return textOf(sharedReader(at)->getLineByNumber(number)); };
  };
  const auto byKey = [](long count, const char* first, const char* second) {
    return [=](const World& at) { return textOf(sharedReader(at)->getLineByKey(count, first, second)); };
  };
  const auto count = [](const World& at) { return std::to_string(sharedReader(at)->getNumberOfItems()); };
  const auto countColumns = [](const World& at) { return std::to_string(at.reader.getNumberOfColumns()); };
  const auto first = [](const World& at) { return textOf(at.reader.getFirstLine()); };
  const auto hasHeading = [](const World& at) {
    return text(at.reader.isHeadingExists("size")) + "," + text(at.reader.isHeadingExists("weight"));
  };
  const auto countKeys = [](const World& at) { return std::to_string(at.reader.getNumberOfKeys()); };
  const auto print = [](const World& at) {
    const CoutCapture captured;
    at.reader.printKeys();
    return captured.getText();
  };
  const auto position = [](const char* heading) {
    return [heading](const World& at) { return std::to_string(at.reader.getPosition(heading)); };
  };
  return {
      {"reader's getLineByNumber", Shape::One, byNumber(1), "4: [ Rome ][2005][9.5][]"},
      {"reader's getLineByNumber below 0", Shape::One, byNumber(-1), lineNotFound("No line number -1 ."),
       lineNotFound("No line number -1 ")},
      {"reader's getLineByNumber past the end", Shape::One, byNumber(3), "6: [Oslo]",
       lineNotFound("No line number 3 ")},
      onManyTables("reader's getLineByNumber in a file of many", byNumber(0), "getLineByNumber"),
      {"reader's getLineByKey", Shape::One, byKey(2, "Rome", "2005"), "4: [Rome][2005][9.5][]",
       "4: [ Rome ][2005][9.5][]"},
      {"reader's getLineByKey, a key that is missing", Shape::One, byKey(2, "Rome", "1"),
       lineNotFound("No line having key Rome-1."), lineNotFound("No line having key Rome-1 .")},
      {"reader's getLineByKey, a null value", Shape::One, byKey(2, "Rome", nullptr),
       lineNotFound("No line having key ."), lineNotFound("No line having key  .")},
      {"reader's getLineByKey, too few values", Shape::One, byKey(1, "Rome", nullptr),
       lineNotFound("Not enought keys, the number of keys is : 2")},
      onManyTables("reader's getLineByKey in a file of many", byKey(2, "Rome", "2005"), "getNumberOfKeys"),
      {"reader's getNumberOfItems", Shape::One, count, "3"},
      onManyTables("reader's getNumberOfItems in a file of many", count, "getNumberOfItems"),
      {"reader's getNumberOfColumns", Shape::One, countColumns, "4"},
      onManyTables("reader's getNumberOfColumns in a file of many", countColumns, "getNumberOfColumns"),
      {"reader's getFirstLine", Shape::One, first, "0: [|NAMES][name][year][size][note]"},
      onManyTables("reader's getFirstLine in a file of many", first, "getFirstLine"),
      {"reader's isHeadingExists", Shape::One, hasHeading, "yes,no"},
      onManyTables("reader's isHeadingExists in a file of many", hasHeading, "isHeadingExists"),
      {"reader's getNumberOfKeys", Shape::One, countKeys, "2"},
      onManyTables("reader's getNumberOfKeys in a file of many", countKeys, "getNumberOfKeys"),
      {"reader's printKeys", Shape::One, print, "key 0 ----> |NAMES\nkey 1 ----> name\n"},
      onManyTables("reader's printKeys in a file of many", print, "printKeys"),
      {"reader's getPosition", Shape::One, position("size"), "2"},
      {"reader's getPosition of an unknown heading", Shape::One, position("weight"),
       thrown("XelColumnHeaderNotFoundException", "Heading weight not found")},
      onManyTables("reader's getPosition in a file of many", position("size"), "getPosition"),
  };
}

}  // namespace

std::vector<Scenario> getReaderScenarios() {
  return joined({getConstructors(), getTables(), getDirectives(), getOneTable()});
}
