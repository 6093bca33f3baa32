// The one scan of a file of several tables into the directory of its tables.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "csv/reader/XelCsvReaderI.h"
#include "tests/support/DataFile.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"
#include "tests/support/VectorLevels.h"

namespace {

struct Settings {
  bool isSplit = false;
  const char* separators = ";";
  char comment = '#';
};

// Where a table begins and where its last line does.
struct Place {
  long offset = 0;
  long lineNumber = 0;
  long endOffset = 0;

  bool operator==(const Place& other) const {
    return offset == other.offset && lineNumber == other.lineNumber && endOffset == other.endOffset;
  }
};

std::ostream& operator<<(std::ostream& stream, const Place& place) {
  return stream << "{offset " << place.offset << ", line " << place.lineNumber << ", end " << place.endOffset << "}";
}

// What a scan leaves. The name that came back, when one did, is the last of the names.
struct Directory {
  std::vector<std::string> names;
  std::map<std::string, Place> places;
  long numberOfTables = 0;
  bool isDuplicated = false;
  bool isEmptyNameFound = false;
  long emptyNameLine = 0;

  bool operator==(const Directory& other) const {
    return names == other.names && places == other.places && numberOfTables == other.numberOfTables &&
           isDuplicated == other.isDuplicated && isEmptyNameFound == other.isEmptyNameFound &&
           emptyNameLine == other.emptyNameLine;
  }
};

std::ostream& operator<<(std::ostream& stream, const Directory& directory) {
  stream << directory.numberOfTables << " tables, duplicated " << directory.isDuplicated << ", empty name "
         << directory.isEmptyNameFound << " at " << directory.emptyNameLine << "\n";
  for (const auto& name : directory.names) stream << "  " << testing::PrintToString(name.substr(0, 40)) << "\n";
  for (const auto& place : directory.places) {
    stream << "  " << testing::PrintToString(place.first.substr(0, 40)) << " " << place.second << "\n";
  }
  return stream;
}

XelEnvOwner<XelCsvReaderI> makeReader(XelEnv env, const char* file, const Settings& settings) {
  return XelNew<XelCsvReaderI>(env, env, file, 1L, 1L, settings.isSplit ? 1L : 0L, settings.separators, '.', '"',
                               settings.comment);
}

Directory getDirectory(const XelCsvReaderI& reader) {
  Directory directory;
  for (long index = 0; reader.getTableName(index) != nullptr; ++index) {
    const std::string name = reader.getTableName(index);
    directory.names.push_back(name);
    const OffsetAndLineNumber* start = reader.getOffsetAndLineNumber(name.c_str());
    if (start == nullptr) {
      ADD_FAILURE() << "no record of " << name;
      continue;
    }
    EXPECT_TRUE(reader.isTableExists(name.c_str()));
    directory.places[name] = {start->offset, start->lineNumber, reader.getEndOffset(name.c_str())};
  }
  directory.numberOfTables = reader.getNumberOfAllTables();
  directory.isDuplicated = reader.isDuplicatedTableFound();
  directory.isEmptyNameFound = reader.isEmptyNameFound();
  directory.emptyNameLine = reader.getEmptyNameLine();
  return directory;
}

Directory scan(const std::string& content, const Settings& settings = {}) {
  TestEnv env;
  const DataFile file(content);
  const long openFiles = countOpenFiles();
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file.getName(), settings);
  EXPECT_EQ(countOpenFiles(), openFiles);
  return getDirectory(*reader);
}

// ---- The scan as it is told, step by step, on a stream of the standard library.

bool isSkipped(const char* line, char comment) {
  if (line[0] == comment) return true;
  while (*line == ' ' || *line == '\t') ++line;
  return *line == '\n' || *line == '\r' || *line == '\0';
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string getFirstField(const std::string& line, const char* separators) {
  return line.substr(0, line.find_first_of(std::string(separators) + "\n\r"));
}

Directory scanSlowly(const char* fileName, const Settings& settings, std::string* duplicatedName) {
  Directory directory;
  std::FILE* stream = std::fopen(fileName, "rb");
  EXPECT_NE(stream, nullptr);
  std::vector<char> buffer(10000, '\0');
  long lineNumber = -1;
  std::string previousName;
  const auto isNewTable = [&](const std::string& name) {
    return settings.isSplit ? directory.places.count(name) == 0 : name != previousName;
  };
  const auto continueTable = [&](const std::string& name, long offset) {
    if (directory.places.count(name) != 0) directory.places[name].endOffset = offset;
  };
  while (std::feof(stream) == 0) {
    const long offset = std::ftell(stream);
    const bool isRead = std::fgets(buffer.data(), static_cast<int>(buffer.size()), stream) != nullptr;
    ++lineNumber;
    if (!isRead || isSkipped(buffer.data(), settings.comment)) continue;
    std::string name = trimmed(getFirstField(buffer.data(), settings.separators));
    if (name.empty()) {
      directory.isEmptyNameFound = true;
      directory.emptyNameLine = lineNumber;
      continue;
    }
    if (!isNewTable(name)) {
      continueTable(name, offset);
      continue;
    }
    const std::size_t bar = name.find('|');
    if (bar != std::string::npos) {
      name = trimmed(name.substr(0, bar));
      if (!isNewTable(name)) {
        continueTable(name, offset);
        continue;
      }
    }
    directory.names.push_back(name);
    if (directory.places.count(name) != 0) {
      directory.isDuplicated = true;
      *duplicatedName = name;
      break;
    }
    directory.places[name] = {offset, lineNumber, offset};
    ++directory.numberOfTables;
    previousName = name;
  }
  std::fclose(stream);
  return directory;
}

void expectTheSameDirectory(const std::string& content, const Settings& settings) {
  TestEnv env;
  const DataFile file(content);
  std::string duplicatedName;
  const Directory expected = scanSlowly(file.getName(), settings, &duplicatedName);
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file.getName(), settings);
  ASSERT_EQ(getDirectory(*reader), expected) << (settings.isSplit ? "split, " : "not split, ") << "separators "
                                             << testing::PrintToString(settings.separators) << "\n"
                                             << testing::PrintToString(content.substr(0, 600));
  if (expected.isDuplicated) {
    ASSERT_EQ(std::string(reader->getLineBuffer()), duplicatedName);
  }
}

std::string makeContent(std::mt19937& random) {
  static const std::vector<std::string> pieces = {
      "A",   "A",  "B",         "C",         "AB",   "A;1",  "B;2",
      "C;3", "A|", "A|NAMES;x", "B |KEYS;1", ";",    "; ",   ",",
      " ",   "\t", "|",         "#",         "\"",   "\n",   "\n",
      "\n",  "\n", "\n",        "\n",        "\r\n", "\r",   " A",
      "A ",  "\n", "A\n",       "B\n",       "\nA;", "\nB;", std::string(1, '\0')};
  std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
  std::uniform_int_distribution<int> length(0, 40);
  std::uniform_int_distribution<int> rare(0, 150);
  std::uniform_int_distribution<std::size_t> nearTheLimit(9990, 10010);
  std::string content;
  for (int left = length(random); left > 0; --left) {
    content += rare(random) == 0 ? std::string(nearTheLimit(random), "A ;#"[rare(random) % 4]) : pieces[pick(random)];
  }
  return content;
}

TEST(Scan, FindsWhatTheSlowScanFinds) {
  const char* separatorSets[] = {";", ",;", "", " ;", "|;", "\t", "A;", ";\xE9"};
  std::mt19937 random(20240502);
  for (int run = 0; run < 3000; ++run) {
    const std::string content = makeContent(random);
    Settings settings;
    if (run % 3 == 0) settings.separators = separatorSets[(run / 3) % 8];
    if (run % 50 == 0) settings.comment = ' ';
    for (const bool isSplit : {false, true}) {
      settings.isSplit = isSplit;
      expectTheSameDirectory(content, settings);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(Scan, FindsWhatTheSlowScanFindsInFilesLargerThanABlock) {
  std::mt19937 random(20240503);
  std::uniform_int_distribution<int> table(0, 9);
  std::uniform_int_distribution<std::size_t> width(0, 400);
  for (int run = 0; run < 6; ++run) {
    std::string content;
    while (content.size() < 1500000) {
      content += "T" + std::to_string(table(random)) + ";" + std::string(width(random), 'x');
      content += run % 2 == 0 ? "\n" : "\r\n";
      if (width(random) == 0) content += "# " + std::string(11000, 'c') + "\n";
    }
    expectTheSameDirectory(content, {true, ";", '#'});
    if (HasFatalFailure()) return;
  }
}

// Files of long runs of lines that begin alike, with something else between them now and then, so that runs end and go on
// at every place of a block.
TEST(Scan, FindsWhatTheSlowScanFindsInRunsOfLinesByEachLevelOfVectors) {
  const std::vector<std::string> beginnings = {"A;",
                                               "A\n",
                                               "A\r\n",
                                               " A ;",
                                               "\t;",
                                               "\t ",
                                               " \t;x",
                                               "|;",
                                               "A|x;",
                                               "\"A\";",
                                               "#A;",
                                               std::string("A\0x", 3),
                                               "TABLE_00;",
                                               "TABLE_01;",
                                               "A_LONG_NAME_OF_17;",
                                               std::string(127, 'n') + ";",
                                               std::string(128, 'n') + ";",
                                               std::string(300, 'n') + ";"};
  const std::vector<std::string> others = {"\n",    " \n",        "# comment\n",  ";\n",  "B;1\n",
                                           "A ;\n", "A\n",        "A|KEYS;1\n",   "\r\n", std::string(1, '\0') + "\n",
                                           "\t \n", "TABLE_0;\n", "TABLE_001;\n", "A",    ";"};
  std::mt19937 random(20240504);
  for (int run = 0; run < 150; ++run) {
    std::string content;
    const std::size_t widest = 1 + random() % (run % 10 == 0 ? 12000 : 90);
    const std::size_t wanted = random() % 60000;
    while (content.size() < wanted) {
      const std::string& beginning = beginnings[random() % beginnings.size()];
      for (auto lines = random() % 300; lines > 0; --lines) {
        content +=
            beginning + std::string(random() % widest, "xA;"[random() % 3]) + (random() % 64 == 0 ? "\r\n" : "\n");
      }
      content += others[random() % others.size()];
    }
    for (const XelVectorLevel level : {XelVectorLevel::Plain, XelVectorLevel::Bytes16, XelVectorLevel::Bytes32}) {
      const AtVectorLevel taken(level);
      expectTheSameDirectory(content, {true, run % 4 == 0 ? "; " : ";", run % 16 == 1 ? 'A' : '#'});
      if (HasFatalFailure()) return;
    }
  }
}

// ---- Single promises.

TEST(Scan, NotesOffsetLineNumberAndEndOffsetOfEachTable) {
  for (const bool isSplit : {false, true}) {
    const Directory directory = scan(
        "# data set\n"
        "XELO_CSV_FORMAT;1.0\n"
        "XELO_DATA_SCHEMA;tool;2.5\n"
        "\n"
        "Products;p1;10.5\n"
        "Products;p2;7\n"
        "Stock|NAMES;id;qty\n"
        "Stock;s1;3\n",
        {isSplit, ";", '#'});
    Directory expected;
    expected.names = {"XELO_CSV_FORMAT", "XELO_DATA_SCHEMA", "Products", "Stock"};
    expected.places = {{"XELO_CSV_FORMAT", {11, 1, 11}},
                       {"XELO_DATA_SCHEMA", {31, 2, 31}},
                       {"Products", {58, 4, 75}},
                       {"Stock", {89, 6, 108}}};
    expected.numberOfTables = 4;
    EXPECT_EQ(directory, expected);
  }
}

TEST(Scan, FindsNoTableInAFileOfCommentsAndEmptyLines) {
  for (const char* content : {"", "\n", "# a\n\n \t \n#b", "\r\n\r\n", "#"}) {
    EXPECT_EQ(scan(content), Directory()) << testing::PrintToString(content);
  }
}

TEST(Scan, StopsAtANameThatComesBackWithoutSplitting) {
  TestEnv env;
  const DataFile file("A;1\nA;2\nB;1\nB;2\nB;3\n A |NAMES;x\nC;1\n");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file.getName(), {});
  EXPECT_TRUE(reader->isDuplicatedTableFound());
  EXPECT_STREQ(reader->getLineBuffer(), "A");  // cut at the bar and trimmed
  // The tables before it stay in the directory, with their ends; the name that came back is listed and not counted.
  EXPECT_EQ(reader->getNumberOfAllTables(), 2);
  EXPECT_STREQ(reader->getTableName(2), "A");
  EXPECT_EQ(reader->getTableName(3), nullptr);
  EXPECT_EQ(reader->getOffsetAndLineNumber("A")->offset, 0);
  EXPECT_EQ(reader->getEndOffset("A"), 4);
  EXPECT_EQ(reader->getOffsetAndLineNumber("B")->offset, 8);
  EXPECT_EQ(reader->getOffsetAndLineNumber("B")->lineNumber, 2);
  EXPECT_EQ(reader->getEndOffset("B"), 16);
  EXPECT_FALSE(reader->isTableExists("C"));
}

TEST(Scan, ContinuesATableThatComesBackWithSplitting) {
  Directory expected;
  expected.names = {"A", "B"};
  expected.places = {{"A", {0, 0, 8}}, {"B", {4, 1, 4}}};
  expected.numberOfTables = 2;
  EXPECT_EQ(scan("A;1\nB;1\nA;2\n", {true, ";", '#'}), expected);
}

TEST(Scan, TakesThePartBeforeTheFirstBarForTheName) {
  Directory expected;
  expected.names = {"A"};
  expected.places = {{"A", {0, 0, 24}}};
  expected.numberOfTables = 1;
  EXPECT_EQ(scan("A|NAMES;x\nA;1\n A |b|c;2\nA\n"), expected);
  EXPECT_EQ(scan("A|NAMES;x\nA;1\n A |b|c;2\nA\n", {true, ";", '#'}), expected);
}

TEST(Scan, PassesOverALineThatIsOnlyABarInFrontOfTheFirstTable) {
  // The name is empty once cut and equals the empty name that the scan begins with.
  Directory expected;
  expected.names = {"A"};
  expected.places = {{"A", {8, 1, 8}}};
  expected.numberOfTables = 1;
  EXPECT_EQ(scan("|NAMES;\nA;1\n"), expected);
  // With splitting the empty name is one that the directory does not know.
  expected.names = {"", "A"};
  expected.places[""] = {0, 0, 0};
  expected.numberOfTables = 2;
  EXPECT_EQ(scan("|NAMES;\nA;1\n", {true, ";", '#'}), expected);
}

TEST(Scan, RecordsTheLastLineWithoutAName) {
  Directory expected;
  expected.names = {"A"};
  expected.places = {{"A", {4, 1, 10}}};
  expected.numberOfTables = 1;
  expected.isEmptyNameFound = true;
  expected.emptyNameLine = 4;
  // A line without a name does not end a table.
  EXPECT_EQ(scan(" ;0\nA;1\n;\nA;2\n  ;3\n\n"), expected);
}

TEST(Scan, TakesALineWithABlankBeforeTheCommentCharacterForData) {
  Directory expected;
  expected.names = {"#A", "B"};
  expected.places = {{"#A", {3, 1, 3}}, {"B", {9, 2, 9}}};
  expected.numberOfTables = 2;
  EXPECT_EQ(scan("#x\n #A;1\nB;1\n"), expected);
}

TEST(Scan, CountsALineOfTwelveThousandCharactersAsTwo) {
  const std::string name(2001, 'x');
  Directory expected;
  expected.names = {"A", name, "B"};
  expected.places = {{"A", {0, 0, 0}}, {name, {9999, 1, 9999}}, {"B", {12001, 2, 12001}}};
  expected.numberOfTables = 3;
  EXPECT_EQ(scan("A;" + std::string(11998, 'x') + "\nB;1\n"), expected);
}

TEST(Scan, LooksAtNoQuotesInNames) {
  Directory expected;
  expected.names = {"\"A", "\"B\""};
  expected.places = {{"\"A", {0, 0, 0}}, {"\"B\"", {8, 1, 8}}};
  expected.numberOfTables = 2;
  EXPECT_EQ(scan("\"A;B\";1\n\"B\";1\n"), expected);
}

TEST(Scan, FindsEveryOneOfManyTables) {
  std::string content;
  Directory expected;
  for (long table = 0; table < 500; ++table) {
    const std::string name = "Table_" + std::to_string(table);
    Place place{static_cast<long>(content.size()), 2 * table, 0};
    content += name + ";1\n";
    place.endOffset = static_cast<long>(content.size());
    content += name + ";2\n";
    expected.names.push_back(name);
    expected.places[name] = place;
  }
  expected.numberOfTables = 500;
  EXPECT_EQ(scan(content), expected);
  EXPECT_EQ(scan(content, {true, ";", '#'}), expected);
}

TEST(Scan, CopiesTheSettings) {
  TestEnv env;
  const DataFile file("A,1\n");
  const XelEnvOwner<XelCsvReaderI> reader =
      XelNew<XelCsvReaderI>(env, env, file.getName(), 1L, 1L, 0L, ";,", '.', '\'', '%');
  EXPECT_STREQ(reader->getFileName(), file.getName());
  EXPECT_NE(reader->getFileName(), file.getName());
  EXPECT_STREQ(reader->getSeparators(), ";,");
  EXPECT_EQ(reader->getDecimal(), '.');
  EXPECT_EQ(reader->getQuote(), '\'');
  EXPECT_EQ(reader->getComment(), '%');
  EXPECT_EQ(reader->getMaxSeparator(), ';');
  EXPECT_TRUE(reader->isCached());
  EXPECT_TRUE(reader->isMultiTable());
  EXPECT_FALSE(reader->isTableSplittingAllowed());
  EXPECT_EQ(reader->getEnv().getImpl(), env.get().getImpl());
}

TEST(Scan, IsNotMadeOfAOneTableFile) {
  for (const long isCached : {0L, 1L}) {
    TestEnv env;
    const DataFile file("A;1\nB;1\nA;2\n");
    const XelEnvOwner<XelCsvReaderI> reader =
        XelNew<XelCsvReaderI>(env, env, file.getName(), isCached, 0L, 0L, ";", '.', '"', '#');
    EXPECT_FALSE(reader->isDuplicatedTableFound());
    EXPECT_EQ(reader->getNumberOfAllTables(), 1);
    EXPECT_EQ(reader->getTableName(0), nullptr);
    EXPECT_FALSE(reader->isTableExists("A"));
  }
}

TEST(Scan, LeavesAFailedOpenToItsCreator) {
  const struct {
    long isCached;
    long isMultiTable;
    long numberOfTables;
  } rows[] = {{0, 0, 1}, {0, 1, 0}, {1, 0, 1}, {1, 1, 0}};
  for (const auto& row : rows) {
    TestEnv env;
    const DataFile file("A;1\n");
    file.remove();
    const XelEnvOwner<XelCsvReaderI> reader =
        XelNew<XelCsvReaderI>(env, env, file.getName(), row.isCached, row.isMultiTable, 0L, ";", '.', '"', '#');
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(reader->getOpenError(), ENOENT);
    EXPECT_EQ(reader->getNumberOfAllTables(), row.numberOfTables);
    EXPECT_FALSE(reader->isDuplicatedTableFound());
  }
}

TEST(Scan, IsNotMisledByAStaleErrorNumber) {
  TestEnv env;
  const DataFile file("A;1\n");
  errno = ENOENT;
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file.getName(), {});
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(reader->getOpenError(), 0);
  EXPECT_EQ(reader->getNumberOfAllTables(), 1);
}

// ---- The directory, asked.

TEST(Directory, KnowsNoOtherNames) {
  TestEnv env;
  const DataFile file("A;1\n");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file.getName(), {});
  for (const char* name : {"B", "", "a", "A ", "A;1"}) {
    EXPECT_EQ(reader->getOffsetAndLineNumber(name), nullptr) << name;
    EXPECT_FALSE(reader->isTableExists(name)) << name;
    // Kept: the base of the family, not the exception of a missing table.
    EXPECT_XEL_THROW(reader->getEndOffset(name), XelCsvReader::XelCsvReaderException,
                     std::string("XelCsvReader::XelCsvReaderException : No Table having this name ") + name + ".");
  }
  EXPECT_EQ(reader->getOffsetAndLineNumber(nullptr), nullptr);
  EXPECT_FALSE(reader->isTableExists(nullptr));
  EXPECT_XEL_THROW(reader->getEndOffset(nullptr), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : No Table having this name .");
  EXPECT_EQ(reader->getTableName(-1), nullptr);
  EXPECT_EQ(reader->getTableName(1), nullptr);
  EXPECT_EQ(reader->getStoredName("B"), nullptr);
  EXPECT_EQ(reader->getStoredName(nullptr), nullptr);
}

TEST(Directory, KeepsItsOwnCopyOfANameForItsTables) {
  for (const long isCached : {0L, 1L}) {
    TestEnv env;
    const DataFile file("A;1\nB;2\n");
    const XelEnvOwner<XelCsvReaderI> reader =
        XelNew<XelCsvReaderI>(env, env, file.getName(), isCached, 1L, 0L, ";", '.', '"', '#');
    std::string name = "B";
    XelCsvTableReader table(reader->getTableByName(name.c_str()));
    name = "X";
    EXPECT_STREQ(table.getNameOfTable(), "B");
    EXPECT_EQ(table.getNameOfTable(), reader->getTableName(1));
    EXPECT_EQ(table.getNameOfTable(), reader->getStoredName("B"));
    table.end();
  }
}

TEST(Directory, IsThatOfTheScanHoweverTheFileChanges) {
  TestEnv env;
  const DataFile file("A;1\nB;1\nB;2\n");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file.getName(), {});
  const Directory before = getDirectory(*reader);
  file.write("C;1\n");
  EXPECT_EQ(getDirectory(*reader), before);
  EXPECT_FALSE(reader->isTableExists("C"));
  file.remove();
  EXPECT_EQ(getDirectory(*reader), before);
  EXPECT_EQ(reader->getNumberOfTables(), 2);
}

TEST(Clear, MayBeCalledBeforeTheDestructorAndTwice) {
  for (const long isMultiTable : {0L, 1L}) {
    for (const long isCached : {0L, 1L}) {
      TestEnv env;
      const DataFile file("XELO_DATA_SCHEMA,tool,2\nB,1,1\n");
      const XelEnvOwner<XelCsvReaderI> reader =
          XelNew<XelCsvReaderI>(env, env, file.getName(), isCached, isMultiTable, 0L, ",", '.', '"', '#');
      if (isMultiTable != 0) {
        EXPECT_STREQ(reader->getRequiredBy(), "tool");
      }
      const long full = env.getAllocator().getBytesOut();
      reader->clear();
      EXPECT_LT(env.getAllocator().getBytesOut(), full - 10000);  // the line buffer at least
      const long cleared = env.getAllocator().getBytesOut();
      reader->clear();
      EXPECT_EQ(env.getAllocator().getBytesOut(), cleared);
    }
  }
}

TEST(Scan, GivesEverythingBackWhenMemoryEnds) {
  for (const char* content : {"A;1\nA;2\nB|NAMES;x\nB;1\nC;1\n", "A;1\nB;1\nA;2\n"}) {
    const DataFile file(content);
    for (const bool isSplit : {false, true}) {
      const long injected = forEachFailingAllocation([&](XelEnv env) {
        const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file.getName(), {isSplit, ";", '#'});
        EXPECT_GE(reader->getNumberOfAllTables(), 2);
      });
      EXPECT_GT(injected, 20);
    }
  }
}

}  // namespace
