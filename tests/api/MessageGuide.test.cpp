// docs/messages.md: the texts that it lists are those of the sources, and every example brings about what stands below it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/Outcome.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvReader.h"

namespace {

using Strings = std::vector<std::string>;

std::string readFile(const std::string& name) {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream file(root / name);
  EXPECT_TRUE(file.is_open()) << name << " is missing";
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

bool beginsWith(const std::string& text, const std::string& start) { return text.compare(0, start.size(), start) == 0; }

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

// ---- What the sources hold.

// The string literals of a C++ source, neighbours joined, that are sentences: those with a blank.
std::set<std::string> readTexts(const std::string& name) {
  // What lies between two literals that belong together is blanks and ends of lines.
  static const std::regex literals(R"re("((?:[^"\\\n]|\\.)*)"(?:\s*"((?:[^"\\\n]|\\.)*)")*)re");
  static const std::regex one(R"re("((?:[^"\\\n]|\\.)*)")re");
  std::set<std::string> texts;
  const std::string source = std::regex_replace(readFile(name), std::regex("//[^\n]*"), "");
  for (std::sregex_iterator it(source.begin(), source.end(), literals); it != std::sregex_iterator(); ++it) {
    std::string text;
    const std::string run = it->str();
    for (std::sregex_iterator part(run.begin(), run.end(), one); part != std::sregex_iterator(); ++part)
      text += (*part)[1];
    if (text.find(' ') != std::string::npos) texts.insert(text);
  }
  return texts;
}

// ---- What the page holds.

struct Example {
  long lineNumber = 0;  // of its code on the page, from 1
  std::string data;
  Strings code;
  std::string message;
};

// What stands under a heading of the second level: a class, its texts, its examples.
struct Section {
  std::string name;
  std::set<std::string> texts;
  std::set<std::string> rareTexts;  // those without an example
  std::vector<Example> examples;
};

std::string unescape(std::string text) {
  replaceAll(text, " \\s", " ");  // a blank at the end
  replaceAll(text, "\\s", " ");
  return text;
}

std::vector<Section> readPage() {
  std::vector<Section> sections;
  std::istringstream page(readFile("docs/messages.md"));
  std::string block;  // the kind of the block that the line stands in
  std::string data;
  Strings code;
  long lineNumber = 0;
  for (std::string line; std::getline(page, line);) {
    ++lineNumber;
    if (block.empty() && beginsWith(line, "## ")) {
      sections.push_back({line.substr(3), {}, {}, {}});
    } else if (beginsWith(line, "```")) {
      block = block.empty() ? line.substr(3) : std::string();
      EXPECT_FALSE(sections.empty()) << "line " << lineNumber;
      if (block == "csv") data.clear();
      if (block == "cpp") code.clear();
    } else if (block == "message") {
      sections.back().texts.insert(unescape(line));
    } else if (block == "message rare") {
      sections.back().rareTexts.insert(unescape(line));
    } else if (block == "csv") {
      data += line + '\n';
    } else if (block == "cpp") {
      code.push_back(line);
    } else if (block == "text") {
      sections.back().examples.push_back({lineNumber, data, code, unescape(line)});
    } else {
      EXPECT_EQ(block, "") << "line " << lineNumber;
    }
  }
  EXPECT_EQ(block, "") << "the last block has no end";
  return sections;
}

// ---- Running an example.

// A value in a call: a text, a character or an integer as it stands in the code.
struct Argument {
  std::string text;
  bool isNull = false;

  const char* asText() const { return isNull ? nullptr : text.c_str(); }
  long asNumber() const { return std::stol(text); }
  char asCharacter() const { return text.at(0); }
};

std::vector<Argument> readArguments(const std::string& code) {
  static const std::regex form(R"re(\s*(?:"([^"]*)"|'(.)'|([\w.()-]+))\s*(?:,|$))re");
  std::vector<Argument> arguments;
  std::size_t length = 0;
  for (std::sregex_iterator it(code.begin(), code.end(), form); it != std::sregex_iterator(); ++it) {
    arguments.push_back({(*it)[1].str() + (*it)[2].str() + (*it)[3].str(), (*it)[3].str() == "nullptr"});
    length += static_cast<std::size_t>(it->length());
  }
  EXPECT_EQ(length, code.size()) << "cannot be understood: " << code;
  return arguments;
}

// The few sentences of C++ that the page uses.
class Program {
 public:
  Program(XelEnv environment, const DataFile& dataFile) : env(environment), file(dataFile) {}
  ~Program() {
    table.end();
    reader.end();
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void run(const std::string& statement) {
    static const std::regex construction(R"re((XelCsv[\w:]+) (?:reader|table|it)\((.*)\);)re");
    static const std::regex call(R"re((?:(XelCsv\w+) (table|line) = )?(reader|table|line)\.(\w+)\((.*)\);)re");
    std::smatch parts;
    if (std::regex_match(statement, parts, construction)) {
      construct(parts[1], readArguments(parts[2]));
    } else if (std::regex_match(statement, parts, call)) {
      const auto operation = operations.find(parts[3].str() + '.' + parts[4].str());
      ASSERT_NE(operation, operations.end()) << statement;
      operation->second(readArguments(parts[5]));
    } else {
      ADD_FAILURE() << "cannot be understood: " << statement;
    }
  }

 private:
  using Arguments = std::vector<Argument>;

  void construct(const std::string& what, const Arguments& given) {
    if (what == "XelCsvReader") {
      const std::string all[] = {"", "", "0", "0", ",", ".", "\"", "#", "1"};
      Arguments values = given;
      for (std::size_t k = given.size(); k < std::size(all); ++k) values.push_back({all[k]});
      std::string name = values[1].text;
      replaceAll(name, "data.csv", file.getName());
      reader = XelCsvReader(env, values[1].isNull ? nullptr : name.c_str(), values[2].asNumber(), values[3].asNumber(),
                            values[4].asText(), values[5].asCharacter(), values[6].asCharacter(),
                            values[7].asCharacter(), values[8].asNumber());
    } else if (what == "XelCsvTableReader") {
      table = XelCsvTableReader(reader.getImpl(), given.at(1).asText());
    } else if (what == "XelCsvReader::LineIterator") {
      const XelCsvReader::LineIterator it(reader);
    } else if (what == "XelCsvReader::TableIterator") {
      const XelCsvReader::TableIterator it(reader);
    } else {
      ADD_FAILURE() << "cannot be understood: " << what;
    }
  }

  template <class Handle>
  void getLineByKey(Handle& handle, const Arguments& given) {
    ASSERT_EQ(given.at(0).asNumber() + 1, static_cast<long>(given.size()));
    line = handle.getLineByKey(given[0].asNumber(), given.at(1).asText(), given.back().asText());
  }

  XelEnv env;
  const DataFile& file;
  XelCsvReader reader;
  XelCsvTableReader table;
  XelCsvLine line;

  const std::map<std::string, std::function<void(const Arguments&)>> operations = {
      {"reader.getTableByName",
       [this](const Arguments& given) { table = reader.getTableByName(given.at(0).asText()); }},
      {"reader.getTableByNumber",
       [this](const Arguments& given) { table = reader.getTableByNumber(given.at(0).asNumber()); }},
      {"reader.getFileVersion", [this](const Arguments&) { reader.getFileVersion(); }},
      {"reader.getLineByNumber",
       [this](const Arguments& given) { line = reader.getLineByNumber(given.at(0).asNumber()); }},
      {"reader.getLineByKey", [this](const Arguments& given) { getLineByKey(reader, given); }},
      {"reader.getPosition", [this](const Arguments& given) { reader.getPosition(given.at(0).asText()); }},
      {"table.getLineByNumber",
       [this](const Arguments& given) { line = table.getLineByNumber(given.at(0).asNumber()); }},
      {"table.getLineByKey", [this](const Arguments& given) { getLineByKey(table, given); }},
      {"table.getPosition", [this](const Arguments& given) { table.getPosition(given.at(0).asText()); }},
      {"line.getIntByHeader", [this](const Arguments& given) { line.getIntByHeader(given.at(0).asText()); }},
      {"line.getFloatByHeader", [this](const Arguments& given) { line.getFloatByHeader(given.at(0).asText()); }},
      {"line.getFloatByHeaderOrDefaultValue",
       [this](const Arguments& given) {
         line.getFloatByHeaderOrDefaultValue(given.at(0).asText(), static_cast<double>(given.at(1).asNumber()));
       }},
      {"line.getIntByPosition", [this](const Arguments& given) { line.getIntByPosition(given.at(0).asNumber()); }},
      {"line.getIntByPositionOrDefaultValue",
       [this](const Arguments& given) {
         line.getIntByPositionOrDefaultValue(given.at(0).asNumber(), given.at(1).asNumber());
       }},
      {"line.getStringByPosition",
       [this](const Arguments& given) { line.getStringByPosition(given.at(0).asNumber()); }},
  };
};

// "Class | message" of the last statement, "nothing" when it throws none; those before it throw none.
std::string runExample(const Example& example) {
  TestEnv env;
  const DataFile file(example.data);
  Program program(env, file);
  for (std::size_t k = 0; k + 1 < example.code.size(); ++k) program.run(example.code[k]);
  std::string outcome = outcomeOf([&] {
    program.run(example.code.back());
    return std::string("nothing");
  });
  replaceAll(outcome, file.getName(), "data.csv");
  return outcome;
}

// A text of the sources as an expression that fits the messages made of it.
std::regex makePattern(const std::string& text) {
  std::string pattern = std::regex_replace(text, std::regex(R"([.()|+*?^$\[\]])"), R"(\$&)");
  replaceAll(pattern, "%ld", "-?[0-9]+");
  replaceAll(pattern, "%s", ".*");
  replaceAll(pattern, "%c", ".");
  return std::regex(pattern);
}

std::set<std::string> getAll(const std::vector<Section>& sections) {
  std::set<std::string> texts;
  for (const Section& section : sections) {
    for (const auto* some : {&section.texts, &section.rareTexts}) {
      for (const std::string& text : *some) EXPECT_TRUE(texts.insert(text).second) << "stands there twice: " << text;
    }
  }
  return texts;
}

}  // namespace

TEST(MessageGuide, ListsEveryTextOfTheSourcesAndNoOther) {
  std::set<std::string> inSources;
  for (const char* name : {"csv/errors/XelCsvErrors.cpp", "csv/errors/XelCsvOpen.cpp", "env/XelEnvHashTable.h"}) {
    const std::set<std::string> texts = readTexts(name);
    EXPECT_FALSE(texts.empty()) << name;
    inSources.insert(texts.begin(), texts.end());
  }
  EXPECT_GE(inSources.size(), 45U) << "texts got lost";
  EXPECT_EQ(getAll(readPage()), inSources);
}

TEST(MessageGuide, EveryExampleBringsAboutWhatStandsBelowIt) {
  long count = 0;
  for (const Section& section : readPage()) {
    for (const Example& example : section.examples) {
      SCOPED_TRACE("docs/messages.md:" + std::to_string(example.lineNumber));
      ASSERT_FALSE(example.code.empty());
      EXPECT_EQ(runExample(example), section.name + " | " + example.message);
      ++count;
    }
  }
  EXPECT_GE(count, 30) << "examples got lost";
}

TEST(MessageGuide, EveryTextHasAnExampleWhereOneIsPromised) {
  for (const Section& section : readPage()) {
    for (const std::string& text : section.texts) {
      const std::regex pattern = makePattern(text);
      long count = 0;
      for (const Example& example : section.examples) count += std::regex_match(example.message, pattern) ? 1 : 0;
      EXPECT_GT(count, 0) << section.name << ": " << text;
    }
  }
}
