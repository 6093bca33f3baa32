// Every example of docs/format.md: the file that it shows is written, read, and what is read is compared with what the
// guide says.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/DecimalPoint.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvReader.h"

namespace {

using Strings = std::vector<std::string>;

struct Example {
  long lineNumber = 0;  // of its head in the guide, from 1
  std::string head;     // what stands behind ```csv
  Strings data;
  Strings answer;
};

// A file of the project, whole.
std::string readFile(const std::string& name) {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream file(root / name);
  EXPECT_TRUE(file.is_open()) << name << " is missing";
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

Strings readGuide() {
  std::istringstream text(readFile("docs/format.md"));
  Strings lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

bool beginsWith(const std::string& text, const std::string& start) { return text.compare(0, start.size(), start) == 0; }

// A block "```csv" and the block "```text" that follows it make an example.
std::vector<Example> readExamples() {
  std::vector<Example> examples;
  Strings* block = nullptr;
  bool isAnswered = true;
  long lineNumber = 0;
  for (const std::string& line : readGuide()) {
    ++lineNumber;
    if (!beginsWith(line, "```")) {
      if (block != nullptr) block->push_back(line);
    } else if (block != nullptr) {
      block = nullptr;
    } else if (beginsWith(line, "```csv")) {
      EXPECT_TRUE(isAnswered) << "no answer to the example before line " << lineNumber;
      examples.push_back({lineNumber, line.substr(6), {}, {}});
      block = &examples.back().data;
      isAnswered = false;
    } else {
      EXPECT_EQ(line, "```text") << "line " << lineNumber;
      EXPECT_FALSE(isAnswered) << "an answer to no example in line " << lineNumber;
      if (isAnswered) break;
      block = &examples.back().answer;
      isAnswered = true;
    }
  }
  EXPECT_EQ(block, nullptr) << "the last block has no end";
  EXPECT_TRUE(isAnswered) << "no answer to the last example";
  return examples;
}

// What the head of an example says.
struct Format {
  bool tables = false;
  bool split = false;
  bool uncached = false;
  bool escapes = false;
  bool unended = false;
  std::string separators = ",";
  char decimal = '.';
};

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

std::string unescape(std::string text) {
  replaceAll(text, "\\s", " ");
  replaceAll(text, "\\t", "\t");
  replaceAll(text, "\\r", "\r");
  return text;
}

Format readHead(const std::string& head) {
  Format format;
  std::istringstream words(head);
  for (std::string word; words >> word;) {
    if (word == "tables") {
      format.tables = true;
    } else if (word == "split") {
      format.split = true;
    } else if (word == "uncached") {
      format.uncached = true;
    } else if (word == "escapes") {
      format.escapes = true;
    } else if (word == "unended") {
      format.unended = true;
    } else if (beginsWith(word, "separators=")) {
      format.separators = unescape(word.substr(11));
    } else if (beginsWith(word, "decimal=") && word.size() == 9) {
      format.decimal = word.back();
    } else {
      ADD_FAILURE() << "unknown word: " << word;
    }
  }
  return format;
}

std::string makeData(const Example& example, const Format& format) {
  std::string data;
  for (const std::string& line : example.data) data += (format.escapes ? unescape(line) : line) + '\n';
  if (format.unended && !data.empty()) data.pop_back();
  return data;
}

std::string printNumber(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.10g", value);
  return text;
}

std::string printCount(long count, const std::string& noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string printFields(const XelCsvLine& line, long first) {
  std::string text;
  for (long k = first; k < line.getNumberOfFields(); ++k) {
    text += (text.empty() ? "[" : " [") + std::string(line.getStringByPosition(k)) + ']';
  }
  replaceAll(text, "\t", "\\t");
  return text;
}

std::string printLine(const XelCsvLine& line) {
  return std::to_string(line.getLineNumber()) + ": " + printFields(line, 0);
}

// The texts in brackets.
Strings readBrackets(const std::string& text) {
  Strings values;
  for (std::size_t start = text.find('['); start != std::string::npos; start = text.find('[', start + 1)) {
    values.push_back(text.substr(start + 1, text.find(']', start) - start - 1));
  }
  return values;
}

// One example as the library reads it.
class Reading {
 public:
  Reading(XelEnv env, const char* fileName, Format fileFormat) : name(fileName), format(std::move(fileFormat)) {
    const std::string message = messageOf([&] {
      reader = XelCsvReader(env, fileName, format.tables ? 1 : 0, format.split ? 1 : 0, format.separators.c_str(),
                            format.decimal, '"', '#', format.uncached ? 0 : 1);
      return std::string();
    });
    if (!message.empty()) lines.push_back("fails: " + message);
  }
  ~Reading() { reader.end(); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  // The whole file, then the answers to the questions that the guide's answer holds.
  Strings answer(const Strings& expected) {
    if (reader.isEmpty()) return lines;
    if (!expected.empty() && beginsWith(expected[0], "tables ->")) {
      lines.push_back("tables -> " + std::to_string(reader.getNumberOfTables()));
    }
    const std::string message = messageOf([&] {
      if (format.tables) {
        for (XelCsvReader::TableIterator it(reader); it.ok(); ++it) printTable(*it);
      } else {
        printTable(reader.getReaderForUniqueTableFile());
      }
      return std::string();
    });
    if (!message.empty()) lines.push_back("table fails: " + message);
    for (const std::string& line : expected) {
      const std::size_t arrow = line.find(" -> ");
      if (arrow == std::string::npos || beginsWith(line, "tables ->")) continue;
      const std::string question = line.substr(0, arrow);
      lines.push_back(question + " -> " + messageOf([&] { return ask(question); }));
    }
    return lines;
  }

 private:
  // What the action answers, or the message of what it throws.
  std::string messageOf(const std::function<std::string()>& action) const {
    try {
      return action();
    } catch (const XelQuietException& exception) {
      std::string message = exception.getMessage();
      replaceAll(message, name, "FILE");
      message.erase(message.find_last_not_of(' ') + 1);
      return message;
    }
  }

  void printTable(XelCsvTableReader table) {
    lines.push_back((format.tables ? std::string("table ") + table.getNameOfTable() : "table") + ": " +
                    printCount(table.getNumberOfColumns(), "column") + ", " +
                    printCount(table.getNumberOfKeys(), "key") + ", " + printCount(table.getNumberOfItems(), "line"));
    if (!table.getFirstLine().isEmpty()) lines.push_back("headings: " + printFields(table.getFirstLine(), 1));
    for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) lines.push_back(printLine(*it));
  }

  // Answers "csv format", "file version", "required by", "table number N", "find TABLE [..]", "position TABLE [..]",
  // "number TABLE N"; in a file of one table without TABLE.
  std::string ask(const std::string& question) {
    if (question == "csv format") return printNumber(reader.getCsvFormat());
    if (question == "file version") return printNumber(reader.getFileVersion());
    if (question == "required by") return reader.getRequiredBy();
    std::istringstream words(question);
    std::string operation;
    std::string tableName;
    words >> operation;
    if (operation == "table") {
      long number = -1;
      words >> tableName >> number;
      XelCsvTableReader table = reader.getTableByNumber(number);
      EndGuard<XelCsvTableReader> endTable(table);
      return table.getNameOfTable();
    }
    if (format.tables) words >> tableName;
    XelCsvTableReader table =
        format.tables ? reader.getTableByName(tableName.c_str()) : reader.getReaderForUniqueTableFile();
    EndGuard<XelCsvTableReader> endTable(table);
    if (operation == "number") {
      long number = -1;
      words >> number;
      return printLine(table.getLineByNumber(number));
    }
    Strings values = readBrackets(question);
    const long count = static_cast<long>(values.size());
    if (operation == "position" && count == 1) return std::to_string(table.getPosition(values[0].c_str()));
    EXPECT_EQ(operation, "find");
    EXPECT_TRUE(count >= 1 && count <= 3) << question;
    values.resize(3);
    return printLine(table.getLineByKey(count, values[0].c_str(), values[1].c_str(), values[2].c_str()));
  }

  std::string name;
  Format format;
  XelCsvReader reader;
  Strings lines;
};

// The rows of the table behind the mark "<!-- numbers -->", cell by cell.
std::vector<Strings> readNumbers() {
  std::vector<Strings> rows;
  bool isBehindMark = false;
  for (const std::string& line : readGuide()) {
    if (line == "<!-- numbers -->") isBehindMark = true;
    if (!isBehindMark || (line.empty() && rows.empty())) continue;
    if (beginsWith(line, "#")) break;
    if (!beginsWith(line, "| ") || beginsWith(line, "| field ")) continue;
    Strings cells;
    std::istringstream stream(line.substr(2));
    for (std::string cell; std::getline(stream, cell, '|');) {
      const std::size_t tick = cell.find('`');
      if (tick != std::string::npos) {
        cells.push_back(cell.substr(tick + 1, cell.rfind('`') - tick - 1));
      } else {
        const std::size_t start = cell.find_first_not_of(' ');
        cells.push_back(start == std::string::npos ? "" : cell.substr(start, cell.find_last_not_of(' ') + 1 - start));
      }
    }
    if (!cells.empty() && cells[0] == "(empty)") cells[0].clear();
    rows.push_back(cells);
  }
  return rows;
}

std::string numberOrOverflow(const std::function<double()>& read) {
  try {
    return printNumber(read());
  } catch (const XelCsvReader::XelOverflowException&) {
    return "overflow";
  }
}

}  // namespace

TEST(FormatGuide, EveryExampleReadsAsTheGuideSays) {
  const DecimalPoint point;
  const std::vector<Example> examples = readExamples();
  EXPECT_GE(examples.size(), 50U) << "examples got lost";
  for (const Example& example : examples) {
    SCOPED_TRACE("docs/format.md:" + std::to_string(example.lineNumber));
    const Format format = readHead(example.head);
    TestEnv env;
    const DataFile file(makeData(example, format));
    Reading reading(env, file.getName(), format);
    EXPECT_EQ(reading.answer(example.answer), example.answer);
  }
}

TEST(FormatGuide, EveryNumberReadsAsTheGuideSays) {
  const DecimalPoint point;
  const std::vector<Strings> rows = readNumbers();
  EXPECT_GE(rows.size(), 20U) << "rows got lost";
  for (const Strings& row : rows) {
    ASSERT_EQ(row.size(), 5U) << row[0];
    SCOPED_TRACE(row[0]);
    TestEnv env;
    const DataFile file("|KEYS,0,1\n" + row[0] + ",key\n");
    XelCsvReader reader(env, file.getName());
    EndGuard<XelCsvReader> endReader(reader);
    // Floats are read in place: each getter gets a line of its own.
    const auto line = [&] { return reader.getLineByNumber(0); };
    EXPECT_EQ(numberOrOverflow([&] { return line().getFloatByPosition(0); }), row[1]);
    EXPECT_EQ(numberOrOverflow([&] { return line().getFloatByPositionOrDefaultValue(0, 7); }), row[2]);
    EXPECT_EQ(numberOrOverflow([&] { return static_cast<double>(line().getIntByPosition(0)); }), row[3]);
    EXPECT_EQ(numberOrOverflow([&] { return static_cast<double>(line().getIntByPositionOrDefaultValue(0, 7)); }),
              row[4]);
  }
}

TEST(FormatGuide, ALineOfMoreThan9999BytesIsReadAsSeveral) {
  TestEnv env;
  const DataFile file("|KEYS,1\n" + std::string(9998, 'x') + '\n' + std::string(9999, 'y') + "end\nlast\n");
  XelCsvReader reader(env, file.getName());
  EndGuard<XelCsvReader> endReader(reader);
  EXPECT_EQ(reader.getNumberOfItems(), 4);
  EXPECT_EQ(std::string(reader.getLineByNumber(0).getStringByPosition(0)), std::string(9998, 'x'));
  EXPECT_EQ(std::string(reader.getLineByNumber(1).getStringByPosition(0)), std::string(9999, 'y'));
  EXPECT_EQ(std::string(reader.getLineByNumber(2).getStringByPosition(0)), "end");
  EXPECT_EQ(std::string(reader.getLineByNumber(3).getStringByPosition(0)), "last");
  EXPECT_EQ(reader.getLineByNumber(3).getLineNumber(), 4);
}

TEST(FormatGuide, AByteZeroEndsTheTextOfItsLine) {
  TestEnv env;
  const DataFile file(std::string_view("|KEYS,1,0\na,b\0c,d\ne,f\n", 22));
  XelCsvReader reader(env, file.getName());
  EndGuard<XelCsvReader> endReader(reader);
  EXPECT_EQ(reader.getNumberOfItems(), 2);
  EXPECT_EQ(reader.getLineByNumber(0).getNumberOfFields(), 2);
  EXPECT_EQ(std::string(reader.getLineByNumber(0).getStringByPosition(1)), "b");
  EXPECT_EQ(std::string(reader.getLineByNumber(1).getStringByPosition(0)), "e");
  EXPECT_EQ(reader.getLineByNumber(1).getLineNumber(), 2);
}

TEST(FormatGuide, AByteOrderMarkIsPartOfTheFirstField) {
  TestEnv env;
  const DataFile file(
      "\xEF\xBB\xBF"
      "A,1\nA,2\n");
  XelCsvReader reader(env, file.getName(), 1);
  EndGuard<XelCsvReader> endReader(reader);
  EXPECT_EQ(reader.getNumberOfTables(), 2);
  EXPECT_TRUE(
      reader.isTableExists("\xEF\xBB\xBF"
                           "A"));
  EXPECT_TRUE(reader.isTableExists("A"));
}

// The README shows two examples.
TEST(Readme, QuotesItsExamplesWordForWord) {
  const std::string readme = readFile("README.md");
  for (const char* name : {"examples/data/fruit.csv", "examples/first_look.cpp", "examples/expected/first_look.txt",
                           "examples/expected/transport.txt"}) {
    const std::string quoted = readFile(name);
    EXPECT_FALSE(quoted.empty()) << name;
    EXPECT_NE(readme.find("\n" + quoted + "```\n"), std::string::npos) << name << " is quoted otherwise";
  }
}
