// XelCsvLine: its getters, printing and copies.
#include "tests/faults/Scenarios.h"
#include "tests/support/CoutCapture.h"

namespace {

using Ask = std::function<std::string(const XelCsvLine&)>;

// Asks a data line of the world's table, looked up for it.
std::function<std::string(const World&)> ask(long number, const Ask& question) {
  return [=](const World& at) {
    Sharing<XelCsvTableReader> table = sharedTable(at);
    return question(table->getLineByNumber(number));
  };
}

Scenario inMany(const char* name, long number, const Ask& question, const std::string& answer) {
  return {name, Shape::Many, ask(number, question), answer};
}

Scenario inOne(const char* name, long number, const Ask& question, const std::string& answer) {
  return {name, Shape::One, ask(number, question), answer};
}

std::string missing(long position, long line, const std::string& operation) {
  return fieldNotFound("Field Not Found at position " + std::to_string(position) + " in line number " +
                       std::to_string(line) + ", in table Cities while trying " + operation);
}

std::string missingInOne(long position, long line, const std::string& operation) {
  return fieldNotFound("Field Not Found at position " + std::to_string(position) + " in line number " +
                       std::to_string(line) + " while trying " + operation);
}

const std::string& unknownHeading() {
  static const std::string message =
      thrown("XelColumnHeaderNotFoundException", "Heading weight not found in table Cities");
  return message;
}

const std::string& tooLarge() {
  static const std::string message =
      thrown("XelOverflowException", "OVERFLOW while reading field 3  of line number 9 in table Cities as integer");
  return message;
}

std::string print(const XelCsvLine& line) {
  const CoutCapture captured;
  line.printValueOfKeys();
  return captured.getText();
}

using L = XelCsvLine;

std::vector<Scenario> getGetters() {
  return {
      inMany(
          "getFloatByPosition", 0, [](const L& line) { return text(line.getFloatByPosition(3)); }, "7"),
      inMany(
          "getFloatByPosition of a fraction", 1, [](const L& line) { return text(line.getFloatByPosition(3)); }, "9.5"),
      inMany(
          "getFloatByPosition of infinity", 2, [](const L& line) { return text(line.getFloatByPosition(4)); }, "-inf"),
      inMany(
          "getFloatByPosition of an empty field", 1, [](const L& line) { return text(line.getFloatByPosition(4)); },
          "0"),
      inMany(
          "getFloatByPosition of no number", 0, [](const L& line) { return text(line.getFloatByPosition(1)); }, "0"),
      inMany(
          "getFloatByPosition of a missing field", 0, [](const L& line) { return text(line.getFloatByPosition(5)); },
          missing(5, 5, "getFloatByPosition")),
      inMany(
          "getFloatByPosition below 0", 0, [](const L& line) { return text(line.getFloatByPosition(-1)); },
          missing(-1, 5, "getFloatByPosition")),
      inMany(
          "getIntByPosition", 0, [](const L& line) { return std::to_string(line.getIntByPosition(2)); }, "2004"),
      inMany(
          "getIntByPosition with text after the digits", 1,
          [](const L& line) { return std::to_string(line.getIntByPosition(3)); }, "9"),
      inMany(
          "getIntByPosition of no number", 0, [](const L& line) { return std::to_string(line.getIntByPosition(1)); },
          "0"),
      inMany(
          "getIntByPosition above 32 bits", 2, [](const L& line) { return std::to_string(line.getIntByPosition(3)); },
          tooLarge()),
      inMany(
          "getIntByPosition of a missing field", 0,
          [](const L& line) { return std::to_string(line.getIntByPosition(5)); }, missing(5, 5, "getIntByPosition")),
      inMany(
          "getStringByPosition", 1, [](const L& line) { return text(line.getStringByPosition(1)); }, "Rome"),
      inMany(
          "getStringByPosition of a missing field", 0, [](const L& line) { return text(line.getStringByPosition(5)); },
          missing(5, 5, "getStringByPosition")),

      inMany(
          "getFloatByHeader", 1, [](const L& line) { return text(line.getFloatByHeader("size")); }, "9.5"),
      inMany(
          "getFloatByHeader of an unknown heading", 1,
          [](const L& line) { return text(line.getFloatByHeader("weight")); }, unknownHeading()),
      inMany(
          "getIntByHeader", 1, [](const L& line) { return std::to_string(line.getIntByHeader("year")); }, "2005"),
      inMany(
          "getIntByHeader above 32 bits", 2, [](const L& line) { return std::to_string(line.getIntByHeader("size")); },
          tooLarge()),
      inMany(
          "getIntByHeader of an unknown heading", 1,
          [](const L& line) { return std::to_string(line.getIntByHeader("weight")); }, unknownHeading()),
      inMany(
          "getStringByHeader", 0, [](const L& line) { return text(line.getStringByHeader("note")); }, "a,b"),
      inMany(
          "getStringByHeader of an unknown heading", 0,
          [](const L& line) { return text(line.getStringByHeader("weight")); }, unknownHeading()),

      inMany(
          "getFloatByPositionOrDefaultValue", 1,
          [](const L& line) { return text(line.getFloatByPositionOrDefaultValue(3, 1.5)); }, "9.5"),
      inMany(
          "getFloatByPositionOrDefaultValue of an empty field", 1,
          [](const L& line) { return text(line.getFloatByPositionOrDefaultValue(4, 1.5)); }, "1.5"),
      {"getFloatByPositionOrDefaultValue of U", Shape::Many,
       [](const World& at) {
         return text(namedTable(at, "Stock")->getLineByNumber(1).getFloatByPositionOrDefaultValue(2, 1.5));
       },
       "inf"},
      inMany(
          "getFloatByPositionOrDefaultValue of a missing field", 1,
          [](const L& line) { return text(line.getFloatByPositionOrDefaultValue(5, 1.5)); },
          missing(5, 7, "getFloatByPositionOrDefaultValue")),
      inMany(
          "getFloatByHeaderOrDefaultValue", 1,
          [](const L& line) { return text(line.getFloatByHeaderOrDefaultValue("note", 1.5)); }, "1.5"),
      inMany(
          "getFloatByHeaderOrDefaultValue of an unknown heading", 1,
          [](const L& line) { return text(line.getFloatByHeaderOrDefaultValue("weight", 1.5)); }, unknownHeading()),
      inMany(
          "getIntByPositionOrDefaultValue", 0,
          [](const L& line) { return std::to_string(line.getIntByPositionOrDefaultValue(2, 8)); }, "2004"),
      inMany(
          "getIntByPositionOrDefaultValue of an empty field", 1,
          [](const L& line) { return std::to_string(line.getIntByPositionOrDefaultValue(4, 8)); }, "8"),
      inMany(
          "getIntByPositionOrDefaultValue above 32 bits", 2,
          [](const L& line) { return std::to_string(line.getIntByPositionOrDefaultValue(3, 8)); },
          "XelOverflowException | XelOverflowException : OVERFLOW while reading field 3  of line number 9 in table "
          "Cities as integer"),
      inMany(
          "getIntByPositionOrDefaultValue of a missing field", 1,
          [](const L& line) { return std::to_string(line.getIntByPositionOrDefaultValue(5, 8)); },
          missing(5, 7, "getIntByPositionOrDefaultValue")),
      inMany(
          "getIntByHeaderOrDefaultValue", 1,
          [](const L& line) { return std::to_string(line.getIntByHeaderOrDefaultValue("note", 8)); }, "8"),
      inMany(
          "getIntByHeaderOrDefaultValue of an unknown heading", 1,
          [](const L& line) { return std::to_string(line.getIntByHeaderOrDefaultValue("weight", 8)); },
          unknownHeading()),
      inMany(
          "getStringByPositionOrDefaultValue", 0,
          [](const L& line) { return text(line.getStringByPositionOrDefaultValue(4, "none")); }, "a,b"),
      inMany(
          "getStringByPositionOrDefaultValue of an empty field", 1,
          [](const L& line) { return text(line.getStringByPositionOrDefaultValue(4, "none")); }, "none"),
      inMany(
          "getStringByPositionOrDefaultValue of a missing field", 1,
          [](const L& line) { return text(line.getStringByPositionOrDefaultValue(5, "none")); },
          missing(5, 7, "getStringByPositionOrDefaultValue")),
      inMany(
          "getStringByHeaderOrDefaultValue", 1,
          [](const L& line) { return text(line.getStringByHeaderOrDefaultValue("note", "none")); }, "none"),
      inMany(
          "getStringByHeaderOrDefaultValue of an unknown heading", 1,
          [](const L& line) { return text(line.getStringByHeaderOrDefaultValue("weight", "none")); }, unknownHeading()),
      inMany(
          "emptyFieldByPosition", 1, [](const L& line) { return text(line.emptyFieldByPosition(4)); }, "yes"),
      inMany(
          "emptyFieldByPosition of a missing field", 1,
          [](const L& line) { return text(line.emptyFieldByPosition(5)); }, missing(5, 7, "emptyFieldByPosition")),
      inMany(
          "emptyFieldByHeader", 1, [](const L& line) { return text(line.emptyFieldByHeader("size")); }, "no"),
      inMany(
          "emptyFieldByHeader of an unknown heading", 1,
          [](const L& line) { return text(line.emptyFieldByHeader("weight")); }, unknownHeading()),
      inMany(
          "getLineNumber, getNumberOfFields, getFields, XelCsvLine::getEnv", 1,
          [](const L& line) {
            return std::to_string(line.getLineNumber()) + "," + std::to_string(line.getNumberOfFields()) + "," +
                   line.getFields()[0] + "," + text(line.getEnv().isEmpty());
          },
          "7,5,Cities,no"),

      inOne(
          "getters in one table", 1,
          [](const L& line) {
            return text(line.getFloatByHeader("size")) + "," + std::to_string(line.getIntByPosition(1)) + "," +
                   line.getStringByHeader("name");
          },
          "9.5,2005,Rome"),
      inOne(
          "getStringByPosition of a missing field in one table", 1,
          [](const L& line) { return text(line.getStringByPosition(4)); }, missingInOne(4, 4, "getStringByPosition")),
      inOne(
          "getStringByHeader of the mark in one table", 1,
          [](const L& line) { return text(line.getStringByHeader("|NAMES")); },
          missingInOne(-1, 4, "getStringByPosition")),
      inOne(
          "getIntByPosition above 32 bits in one table", 2,
          [](const L& line) { return std::to_string(line.getIntByPosition(2)); },
          thrown("XelOverflowException", "OVERFLOW while reading field 2  of line number 5 as integer")),
      inOne(
          "getIntByHeaderOrDefaultValue above 32 bits in one table", 2,
          [](const L& line) { return std::to_string(line.getIntByHeaderOrDefaultValue("size", 8)); },
          thrown("XelOverflowException", "OVERFLOW while reading field 2  of line number 5 as integer")),
      {"getStringByHeader without a heading line", Shape::Many,
       [](const World& at) { return text(namedTable(at, "Plain")->getLineByNumber(0).getStringByHeader("x")); },
       thrown("XelColumnHeaderNotFoundException", "No header line for columns in table Plain ")},

      inMany("printValueOfKeys", 0, print, "Key 0 (name) = Paris\nKey 1 (year) = 2004\n"),
      inOne("printValueOfKeys in one table", 0, print, "Key 0 (|NAMES) = Paris\nKey 1 (name) = 2004\n"),
      {"printValueOfKeys without a heading line", Shape::Many,
       [](const World& at) { return print(namedTable(at, "Plain")->getLineByNumber(0)); },
       "Key 0 (Column 1) = x\nKey 1 (Column 2) = y\n"},
      {"printValueOfKeys without keys", Shape::Defects, ask(0, print), "There is no key for line number 2\n"},
      {"printValueOfKeys with too few headings", Shape::Defects,
       [](const World& at) { return print(namedTable(at, "Headed")->getLineByNumber(0)); },
       fieldNotFound(
           "Field Not Found at position 1 in line number 12, in table Headed while trying getStringByPosition")},
  };
}

// A line built from text: as many fields as the line that its table has read last.
XelCsvLine build(XelCsvTableReader& table) {
  table.getLineByNumber(0);
  static const char fields[10000] =
      "Cities\0Bern\0"
      "2007\0"
      "5\0"
      "c";
  return XelCsvLine(fields, table, 77);
}

std::vector<Scenario> getCopies() {
  return {
      {"XelCsvLine(text, table, number)", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         Ending<XelCsvLine> line(build(*table));
         return textOf(*line) + " " + text(line->getFloatByHeader("size"));
       },
       "77: [Cities][Bern][2007][5][c] 5"},
      {"XelCsvLine(), XelCsvLine(XelCsvLineI*), copies, end of a lent line", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         XelCsvLine line = table->getLineByNumber(0);
         XelCsvLine same(line.getImpl());
         XelCsvLine copy(same);
         copy = line;
         const std::string shown = textOf(copy);
         line.end();
         line.end();
         return shown + " " + textOf(line) + " " + text(same.isEmpty()) + " " + textOf(XelCsvLine());
       },
       "5: [Cities][Paris][2004][7][a,b] no line no no line"},
      {"XelCsvLine::copy into an empty handle", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         Ending<XelCsvLine> copy{XelCsvLine()};
         copy->copy(table->getLineByNumber(0));
         table->getLineByNumber(1);  // the copy lives on
         return textOf(*copy) + " " + copy->getStringByHeader("name");
       },
       "5: [Cities][Paris][2004][7][a,b] Paris"},
      {"XelCsvLine::copy over a line of the user's", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         Ending<XelCsvLine> line(build(*table));
         line->copy(table->getLineByNumber(1));
         return textOf(*line);
       },
       "7: [Cities][ Rome ][2005][9.5][]"},
      {"XelCsvLine::copy over a last line", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         Sharing<XelCsvTableReader> other(at.table);
         XelCsvLine line = table->getLineByNumber(0);
         line.copy(other->getLineByNumber(2));
         return textOf(line);
       },
       "9: [Cities][Oslo][2006][99999999999][ -INF]"},
      {"XelCsvLine::copy of an empty handle", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         XelCsvLine line = table->getLineByNumber(0);
         line.copy(XelCsvLine());
         XelCsvLine empty;
         empty.copy(XelCsvLine());
         return std::to_string(line.getNumberOfFields()) + " fields," + print(line) + textOf(empty);
       },
       "0 fields,Empty Line!\nno line"},
      {"XelCsvLine::copy into another environment", Shape::Many,
       [](const World& at) {
         Ending<XelEnv> otherEnv{XelEnv(at.allocator)};
         Ending<XelCsvReader> reader(XelCsvReader(*otherEnv, at.file, 1));
         Ending<XelCsvTableReader> otherTable(reader->getTableByName("Stock"));
         XelCsvLine line = otherTable->getLineByNumber(0);
         Sharing<XelCsvTableReader> table = sharedTable(at);
         line.copy(table->getLineByNumber(0));  // its fields live in the other one's environment
         return textOf(line) + " " + text(line.getEnv().getImpl() == at.env.getImpl());
       },
       "5: [Cities][Paris][2004][7][a,b] yes"},
      {"XelCsvLine::end of a line of the user's", Shape::Many,
       [](const World& at) {
         Sharing<XelCsvTableReader> table = sharedTable(at);
         Ending<XelCsvLine> line(build(*table));
         line->end();
         line->end();
         return textOf(*line);
       },
       "no line"},
  };
}

}  // namespace

std::vector<Scenario> getLineScenarios() { return joined({getGetters(), getCopies()}); }
