// A file that changes under its reader: each answer is what stands in the file now, at the place that the reader
// remembers, or an exception with its text; and when the file is put back, every answer is the former one.
//
// What is right is worked out by the slow model of TableModel.h. It learns of the tables when the reader does, and looks
// into the changed file with fopen, fseek and fgets when the reader does.
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "tests/support/OpenTable.h"
#include "tests/support/TableModel.h"
#include "tests/table/ChangingFile.h"

namespace {

using Lines = std::vector<std::string>;
using testing::AnyOf;

constexpr long FarNumber = 1L << 40;
constexpr long MostSteps = 100;  // more lines than any of the files has

// A data file, how it is read, and keys to look up: some are there, some are in other tables, some are nowhere.
struct Layout {
  const char* name;
  bool isMultiTable;
  bool isSplit;
  std::string content;
  Lines keys;
};

const Layout Layouts[] = {
    {"one table with headings",
     false,
     false,
     "|NAMES,id,v\n|KEYS,1,0\n#c\na,1.5\n\n b ,\"x,y\"\nc,3\n",
     {"a", "b", "c", " b ", "", "x"}},
    {"one table without headings, without an end of its last line",
     false,
     false,
     "a,1\nb,22\n#\nc,3",
     {"a-1", "b-22", "c-3", "a", "b-2", "-"}},
    {"several tables",
     true,
     false,
     "XELO_CSV_FORMAT,1.5\nXELO_DATA_SCHEMA,plan,2\nA|NAMES,k,v\nA|KEYS,1,0\nA,a,1\n#c\nA,b,2\nB,c,3\nB,d,4",
     {"a", "b", "c-3", "d-4", "1.5", "plan-2", ""}},
    {"split tables",
     true,
     true,
     "A,a,1\nB,b,2\n\nA,c,3\nB|KEYS,0,1\nB,d,4\nA,e,5\n",
     {"a-1", "b-2", "c-3", "d-4", "e-5", "b", ""}},
};

struct Change {
  std::string name;
  std::function<void(ChangingFile&)> apply;
};

using Changes = std::vector<Change>;

Changes truncations(const std::string& content) {
  Changes changes;
  for (std::size_t length = 0; length <= content.size(); ++length) {
    changes.push_back({"truncated to " + std::to_string(length), [=](ChangingFile& file) { file.truncate(length); }});
  }
  return changes;
}

Changes growths() {
  Changes changes;
  const std::string longLine = "A,z," + std::string(12000, 'z') + "\n";
  for (const std::string& more : {std::string("A,z,9\n"), std::string("z,9\nA,y,8\n"), std::string("\nB,z,9"),
                                  std::string("5"), std::string(",x\n"), std::string("\n\n#\n"), longLine}) {
    changes.push_back({"grown by " + more.substr(0, 20), [=](ChangingFile& file) { file.append(more); }});
  }
  return changes;
}

Changes replacements() {
  Changes changes;
  for (const std::string& other :
       {std::string(), std::string("\n"), std::string("A"), std::string("B,b,2\nA,a,1\n"),
        std::string("no such table\n"), std::string("A,a\nA,a\nA,a\nA,a\nA,a\nA,a\nA,a\nA,a\nA,a\nA,a\nA,a\nA,a\n"),
        std::string(
            "A,a,1\nA,b,2\nB,c,3\nB,d,4\nC,e,5\nXELO_CSV_FORMAT,2.5\nA|NAMES,x,y\nA|KEYS,1,1\nA,f,6\n|KEYS,9\n"),
        "A|KEYS,99999999999\n" + std::string(120, '|'), std::string(25000, 'x'), std::string(300, '\0'),
        std::string(300, '"'), "A" + std::string(300, ',')}) {
    const std::string shown = other.substr(0, 20) + ", " + std::to_string(other.size()) + " bytes";
    changes.push_back({"replaced by " + shown, [=](ChangingFile& file) { file.replace(other); }});
  }
  return changes;
}

// Other bytes of the same length: all of them, and each one by itself.
Changes overwritings(const std::string& content) {
  Changes changes;
  for (const char c : {'x', '\n', ',', '"', '#', '|', ' ', '\0', '\xe9'}) {
    const std::string bytes(content.size(), c);
    changes.push_back(
        {"overwritten by bytes " + std::to_string(c), [=](ChangingFile& file) { file.overwrite(bytes); }});
  }
  std::string reversed(content.rbegin(), content.rend());
  changes.push_back({"reversed", [=](ChangingFile& file) { file.overwrite(reversed); }});
  for (std::size_t at = 0; at < content.size(); ++at) {
    std::string changed = content;
    changed[at] = changed[at] == '\n' ? ',' : '\n';
    changes.push_back({"overwritten at " + std::to_string(at), [=](ChangingFile& file) { file.overwrite(changed); }});
  }
  return changes;
}

// The file cannot be opened any more; the text says why.
struct Loss {
  Change change;
  const char* text;
};

using Losses = std::vector<Loss>;

const char* const Missing =
    "No such file or directory. The specified file or directory does not exist or cannot be found. This message can occur "
    "whenever a specified file does not exist or a component of a path does not specify an existing directory. ";

const char* const Refused =
    "Search permission is denied on a component of the path prefix, or the file exists and the permissions specified by "
    "mode (rb) are denied, or the file does not exist and write permission is denied for the parent directory of the file "
    "to be created.";

Losses removals() {
  return {
      {{"removed", [](ChangingFile& file) { file.remove(); }}, Missing},
      {{"a link to nothing", [](ChangingFile& file) { file.linkToNothing(); }}, Missing},
      {{"its folder removed", [](ChangingFile& file) { file.removeFolder(); }}, Missing},
      {{"its folder a file", [](ChangingFile& file) { file.makeFolderAFile(); }},
       "No such file or directory. A component of the path prefix is not a directory. "},
  };
}

Losses refusals() {
  return {
      {{"not to be read", [](ChangingFile& file) { file.takePermissions(); }}, Refused},
      {{"in a folder not to be looked into", [](ChangingFile& file) { file.takeFolderPermissions(); }}, Refused},
  };
}

[[noreturn]] void fail(const std::string& kind, const std::string& text) {
  throw model::Failure(kind, "XelCsvReader::" + kind + " : " + text);
}

// The lines that a walk adds, and how it ends: at its end, or with an exception.
template <class Body>
Lines walkReal(Body body) {
  Lines lines;
  const std::string end = outcomeOf([&]() -> std::string {
    body(lines);
    return "end";
  });
  lines.push_back(end);
  return lines;
}

template <class Body>
Lines walkModel(Body body) {
  Lines lines;
  std::string end = "end";
  try {
    body(lines);
  } catch (const model::Failure& failure) {
    end = failure.kind + " | " + failure.message;
  }
  lines.push_back(end);
  return lines;
}

// From the current line on. A walk that does not end is cut, which no expectation is.
template <class Iterator>
void addLines(Iterator& it, Lines& lines) {
  for (; it.ok() && lines.size() < MostSteps; ++it) lines.push_back(textOf(*it));
}

template <class Iterator>
void addModelLines(Iterator& it, Lines& lines) {
  for (; it.isOk() && lines.size() < MostSteps; it.next()) lines.push_back(model::textOf(it.getLine()));
}

template <class Iterator, class Source>
Lines walkFrom(const Source& source) {
  return walkReal([&](Lines& lines) {
    Iterator it(source);
    addLines(it, lines);
  });
}

template <class Iterator, class Source>
Lines walkModelFrom(Source&& source) {
  return walkModel([&](Lines& lines) {
    Iterator it(source);
    addModelLines(it, lines);
  });
}

// What the model says of a table: the lookups of both kinds under one name.
class Expected {
 public:
  // Looks into the file like a new table reader does, and fails like one.
  Expected(const std::string& file, const Layout& layout, Kind kind, const model::TableEntry* entry)
      : table(file, makeSettings(layout), entry) {
    if (kind == Kind::Scanning) return;
    index.emplace(table);
    const std::optional<std::string>& key = index->getDuplicatedKey();
    if (entry != nullptr && key.has_value()) {
      fail("XelDuplicatedLineException",
           "Another line with key  " + *key + " already exists In Table " + entry->name + " .");
    }
  }
  Expected(const Expected&) = delete;
  Expected& operator=(const Expected&) = delete;

  static model::Settings makeSettings(const Layout& layout) {
    model::Settings settings;
    settings.isMultiTable = layout.isMultiTable;
    settings.isSplit = layout.isSplit;
    return settings;
  }

  model::Line getLineByNumber(long number) {
    return index.has_value() ? index->getLineByNumber(number) : table.getLineByNumber(number);
  }
  model::Line getLineByKey(const std::string& key) {
    return index.has_value() ? index->getLineByKey(key) : table.getLineByKey(key);
  }
  long getNumberOfItems() { return index.has_value() ? index->getNumberOfItems() : table.getNumberOfItems(); }

  Lines walk() {
    if (index.has_value()) return walkModelFrom<model::IndexIterator>(*index);
    return walkModelFrom<model::ScanningIterator>(table);
  }

  model::Table table;
  std::optional<model::Index> index;
};

// A reader of a layout's file with all its tables, and what the model knows of each.
class Watched {
 public:
  Watched(const Layout& watchedLayout, Kind tableKind) : layout(watchedLayout), kind(tableKind), file(layout.content) {
    reader = XelCsvReader(env, file.getName(), layout.isMultiTable ? 1 : 0, layout.isSplit ? 1 : 0, ",", '.', '"', '#',
                          kind == Kind::Cached ? 1 : 0);
    if (layout.isMultiTable) {
      entries = model::scanTables(file.getName(), Expected::makeSettings(layout));
      for (const model::TableEntry& entry : entries) add(reader.getTableByName(entry.name.c_str()), &entry);
    } else {
      add(reader.getReaderForUniqueTableFile(), nullptr);
    }
  }

  ~Watched() {
    for (Pair& pair : pairs) pair.table.end();
    reader.end();
  }

  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

  struct Pair {
    XelCsvTableReader table;
    std::unique_ptr<Expected> expected;
  };

  const Layout& layout;
  Kind kind;
  TestEnv env;
  ChangingFile file;
  XelCsvReader reader;
  std::vector<model::TableEntry> entries;
  std::vector<Pair> pairs;
  std::string openFailure;  // the outcome of every open, while the file cannot be opened

  void putBack() {
    file.putBack();
    openFailure.clear();
  }

  // Compares every operation with the model.
  void compare() {
    for (Pair& pair : pairs) {
      SCOPED_TRACE(pair.table.getNameOfTable() == nullptr ? "the table" : pair.table.getNameOfTable());
      compareTable(pair.table, *pair.expected);
      compareCopy(pair.table, *pair.expected);
    }
    if (layout.isMultiTable) {
      compareNewTables();
      compareDirectives();
    } else {
      compareReader();
    }
  }

  // Everything that was read before, and is not read again.
  std::string remember() {
    std::string text = std::to_string(reader.getNumberOfTables());
    for (const Pair& pair : pairs) {
      const XelCsvTableReader& table = pair.table;
      text += "/" + textOf(table.getFirstLine()) + std::to_string(table.getNumberOfColumns()) +
              std::to_string(table.getNumberOfKeys());
      for (const char* heading : {"id", "v", "k", "none"}) {
        text += std::to_string(table.isHeadingExists(heading)) + outcomeOf([&] { return table.getPosition(heading); });
      }
      const char* name = table.getNameOfTable();
      text += std::to_string(reader.isTableExists(name == nullptr ? "A" : name));
    }
    return text;
  }

  // The text of an answer of the model; what it says of a file that does not open is put into this file's words.
  template <class Operation>
  std::string expect(Operation operation) const {
    return reword(model::outcomeOf(operation));
  }

  std::string reword(const std::string& outcome) const {
    const bool isOpenFailure = outcome.compare(0, 26, "XelFileNotFoundException |") == 0;
    return isOpenFailure ? openFailure : outcome;
  }

  Lines reword(Lines outcomes) const {
    for (std::string& outcome : outcomes) outcome = reword(outcome);
    return outcomes;
  }

 private:
  void add(XelCsvTableReader table, const model::TableEntry* entry) {
    pairs.push_back({std::move(table), std::make_unique<Expected>(file.getName(), layout, kind, entry)});
  }

  void compareTable(XelCsvTableReader& table, Expected& expected) {
    EXPECT_EQ(outcomeOf([&] { return table.getNumberOfItems(); }), expect([&] { return expected.getNumberOfItems(); }));
    for (const long number : {-1L, 0L, 1L, 2L, 3L, 4L, FarNumber}) {
      EXPECT_EQ(outcomeOf([&] { return table.getLineByNumber(number); }),
                expect([&] { return expected.getLineByNumber(number); }))
          << "line number " << number;
    }
    for (const std::string& key : layout.keys) {
      EXPECT_EQ(getByKey(table, key), expect([&] { return expected.getLineByKey(key); })) << "key " << key;
    }
    EXPECT_EQ(walkFrom<XelCsvTableReader::LineIterator>(table), reword(expected.walk()));
  }

  // By a key that is composed already, however many key columns the table has.
  static std::string getByKey(const XelCsvTableReader& handle, const std::string& key) {
    XelCsvTableReaderI* table = handle.getImpl();
    XelEnvBlock<char> given = XelCopyString(table->getEnv(), key.c_str());
    return outcomeOf([&]() -> std::string {
      const char* owned = given.release();
      const XelEnvOwner<XelCsvLineI> record(table->getLineByKey(owned));
      XelFreeString(table->getEnv(), owned);
      return textOf(XelCsvLine(record.get()));
    });
  }

  // A copy only opens the file, and answers like its source.
  void compareCopy(const XelCsvTableReader& table, Expected& expected) {
    XelCsvTableReader copied;
    const std::string made = outcomeOf([&] {
      copied.copy(table);
      return 0L;
    });
    EXPECT_EQ(made, openFailure.empty() ? "0" : openFailure);
    if (copied.isEmpty()) return;
    EXPECT_EQ(walkFrom<XelCsvTableReader::LineIterator>(copied), expected.walk());
    EXPECT_EQ(outcomeOf([&] { return copied.getLineByNumber(1); }),
              expect([&] { return expected.getLineByNumber(1); }));
    copied.end();
  }

  // A table that is made now reads its headings from the file as it is now, at the place where the table stood.
  void compareNewTables() {
    Lines expectedTables;
    bool firstFails = false;
    for (std::size_t number = 0; number < entries.size(); ++number) {
      const model::TableEntry& entry = entries[number];
      SCOPED_TRACE("a new reader of " + entry.name);
      std::unique_ptr<Expected> expected;
      const std::string expectedMade = expect([&] {
        expected = std::make_unique<Expected>(file.getName(), layout, kind, &entry);
        return 0L;
      });
      compareNewTable(expectedMade, expected.get(), [&] { return reader.getTableByName(entry.name.c_str()); });
      compareNewTable(expectedMade, expected.get(), [&] { return reader.getTableByNumber(static_cast<long>(number)); });
      const bool isReserved = entry.name == "XELO_CSV_FORMAT" || entry.name == "XELO_DATA_SCHEMA";
      if (!isReserved) expectedTables.push_back(expectedMade == "0" ? entry.name : expectedMade);
      const bool isFirst = !isReserved && expectedTables.size() == 1;
      if (isFirst && expectedMade != "0") firstFails = true;
    }
    if (firstFails) {
      expectedTables.resize(1);
    } else {
      expectedTables.emplace_back("end");
    }
    EXPECT_EQ(walkTables(), expectedTables);
  }

  template <class Make>
  void compareNewTable(const std::string& expectedMade, Expected* expected, Make make) {
    XelCsvTableReader table;
    EXPECT_EQ(outcomeOf([&] {
                table = make();
                return 0L;
              }),
              expectedMade);
    EXPECT_EQ(table.isEmpty(), expected == nullptr);
    if (table.isEmpty() || expected == nullptr) return;
    EXPECT_EQ(table.getNumberOfColumns(), expected->table.getNumberOfColumns());
    EXPECT_EQ(table.getNumberOfKeys(), static_cast<long>(expected->table.getKeyPositions().size()));
    EXPECT_EQ(walkFrom<XelCsvTableReader::LineIterator>(table), expected->walk());
    table.end();
  }

  // The name of each table, or the exception in its place; one in the place of the first leaves no iterator.
  Lines walkTables() {
    return walkReal([&](Lines& tables) {
      XelCsvReader::TableIterator it(reader);
      while (it.ok()) {
        const XelCsvTableReader table = *it;
        if (!table.isEmpty()) tables.emplace_back(table.getNameOfTable());
        const std::string next = outcomeOf([&] {
          ++it;
          return 0L;
        });
        if (next != "0") tables.push_back(next);
      }
    });
  }

  // The format is read from the file each time.
  void compareDirectives() {
    EXPECT_EQ(outcomeOf([&] { return inThousandths(reader.getCsvFormat()); }), expect([&] { return getCsvFormat(); }));
  }

  static long inThousandths(double value) { return std::lround(value * 1000.0); }

  long getCsvFormat() {
    const std::string name = "XELO_CSV_FORMAT";
    for (const model::TableEntry& entry : entries) {
      if (entry.name != name) continue;
      const model::Line line = Expected(file.getName(), layout, kind, &entry).getLineByNumber(0);
      if (line.fields.size() > 1) return inThousandths(std::strtod(line.fields[1].c_str(), nullptr));
      fail("XelFieldNotFoundException", "Field Not Found at position 1 in line number " + std::to_string(line.number) +
                                            ", in table " + name + " while trying getFloatByPosition");
    }
    fail("XelTableNotFoundException", "No Table having this name " + name + ".");
  }

  // The operations of the reader of a one-table file are those of its table.
  void compareReader() {
    Expected& expected = *pairs.front().expected;
    EXPECT_EQ(outcomeOf([&] { return reader.getNumberOfItems(); }),
              expect([&] { return expected.getNumberOfItems(); }));
    EXPECT_EQ(outcomeOf([&] { return reader.getLineByNumber(1); }),
              expect([&] { return expected.getLineByNumber(1); }));
    EXPECT_EQ(walkFrom<XelCsvReader::LineIterator>(reader), reword(expected.walk()));
  }
};

template <class Body>
void forEachLayout(Body body) {
  for (const Layout& layout : Layouts) {
    SCOPED_TRACE(layout.name);
    forBothKinds([&](Kind kind) { body(layout, kind); });
  }
}

// Every operation after every change, and after the file was put back.
void compareAfter(const Changes& changes, Watched& watched) {
  watched.compare();
  const std::string known = watched.remember();
  for (const Change& change : changes) {
    SCOPED_TRACE(change.name);
    const XelCsvLine line = watched.pairs.back().table.getLineByNumber(0);
    const std::string former = textOf(line);
    change.apply(watched.file);
    EXPECT_EQ(textOf(line), former) << "a line that was looked up before";
    watched.compare();
    EXPECT_EQ(watched.remember(), known);
    watched.putBack();
    if (testing::Test::HasFailure()) return;  // one change is enough to look at
  }
  watched.compare();
}

// ---- In the middle of a walk.

enum class GoOn { Further, ByCopy, ByAssignment };

const char* nameOf(GoOn way) {
  switch (way) {
    case GoOn::Further:
      return "further";
    case GoOn::ByCopy:
      return "by a copy";
    default:
      return "by an assigned iterator, from the start";
  }
}

using Walk = XelCsvTableReader::LineIterator;

Lines goOn(Walk& it, GoOn way) {
  return walkReal([&](Lines& lines) {
    if (way == GoOn::Further) {
      ++it;
      addLines(it, lines);
    } else if (way == GoOn::ByCopy) {
      Walk copied(it);
      addLines(copied, lines);
    } else {
      Walk assigned;
      assigned = it;
      addLines(assigned, lines);
    }
  });
}

template <class ModelIterator, class Source>
Lines goOnModel(ModelIterator& it, Source& source, GoOn way) {
  if (way == GoOn::ByAssignment) return walkModelFrom<ModelIterator>(source);
  if (way == GoOn::ByCopy) return walkModelFrom<ModelIterator>(&it);
  return walkModel([&](Lines& lines) {
    it.next();
    addModelLines(it, lines);
  });
}

// A walk through the whole table with the change after some steps.
class ChangedWalk {
 public:
  ChangedWalk(Watched& whole, Watched::Pair& walked) : watched(whole), pair(walked), former(pair.expected->walk()) {}

  // Number of places where a change can come: each line of the table.
  long getNumberOfPlaces() const { return static_cast<long>(former.size()) - 1; }

  void compare(const Change& change, long place, GoOn way) {
    SCOPED_TRACE(change.name + " at line " + std::to_string(place) + " of a walk, going on " + nameOf(way));
    if (pair.expected->index.has_value()) {
      model::IndexIterator expected(*pair.expected->index);
      compareFrom(change, place, way, expected, *pair.expected->index);
    } else {
      model::ScanningIterator expected(pair.expected->table);
      compareFrom(change, place, way, expected, pair.expected->table);
    }
    watched.putBack();
  }

 private:
  template <class ModelIterator, class Source>
  void compareFrom(const Change& change, long place, GoOn way, ModelIterator& expected, Source& source) {
    Walk it(pair.table);
    for (long step = 0; step < place; ++step) {
      ++it;
      expected.next();
    }
    const std::string current = textOf(*it);
    EXPECT_EQ(current, former[static_cast<std::size_t>(place)]);
    change.apply(watched.file);
    EXPECT_EQ(textOf(*it), current) << "the line that the walk stands on";
    const bool isIndexed = pair.expected->index.has_value();
    if (isIndexed && way == GoOn::Further) {
      compareIndexed(goOn(it, way), place);
    } else {
      EXPECT_EQ(goOn(it, way), watched.reword(goOnModel(expected, source, way)));
    }
    if (way != GoOn::ByAssignment) {
      EXPECT_TRUE((*it).isEmpty()) << "the walk is over";
    }
  }

  // The walk's file is open, and the library of C may have read ahead: each line is what stood there or what stands there.
  void compareIndexed(const Lines& real, long place) {
    ASSERT_EQ(real.size(), former.size() - static_cast<std::size_t>(place) - 1);
    for (std::size_t at = 0; at + 1 < real.size(); ++at) {
      const auto number = place + 1 + static_cast<long>(at);
      const std::string now = model::outcomeOf([&] { return pair.expected->getLineByNumber(number); });
      EXPECT_THAT(real[at], AnyOf(former[static_cast<std::size_t>(number)], now));
    }
    EXPECT_EQ(real.back(), "end");
  }

  Watched& watched;
  Watched::Pair& pair;
  Lines former;
};

void compareDuring(const Changes& changes, Watched& watched) {
  for (Watched::Pair& pair : watched.pairs) {
    SCOPED_TRACE(pair.table.getNameOfTable() == nullptr ? "the table" : pair.table.getNameOfTable());
    ChangedWalk walk(watched, pair);
    ASSERT_GT(walk.getNumberOfPlaces(), 0);
    for (const Change& change : changes) {
      for (long place = 0; place < walk.getNumberOfPlaces(); ++place) {
        for (const GoOn way : {GoOn::Further, GoOn::ByCopy, GoOn::ByAssignment}) walk.compare(change, place, way);
      }
      if (testing::Test::HasFailure()) return;
    }
  }
  watched.compare();
}

// The change of a loss, and what every open of the file says from then on.
Changes changesOf(const Losses& losses, Watched& watched) {
  Changes changes;
  for (const Loss& loss : losses) {
    const std::string failure = std::string("XelFileNotFoundException | While trying to open file ") +
                                watched.file.getName() + " : " + loss.text;
    changes.push_back({loss.change.name, [&watched, loss, failure](ChangingFile& file) {
                         loss.change.apply(file);
                         watched.openFailure = failure;
                       }});
  }
  return changes;
}

// ---- Without the privileges of root.

constexpr int NoPlace = 77;  // exit status: there is no way to run without privileges here
constexpr unsigned Nobody = 65534;

int runAsNobody(const std::function<void()>& body) {
  const bool isNobody = setgroups(0, nullptr) == 0 && setgid(Nobody) == 0 && setuid(Nobody) == 0;
  if (!isNobody || access(std::filesystem::temp_directory_path().c_str(), W_OK | X_OK) != 0) return NoPlace;
  try {
    body();
  } catch (const std::exception& exception) {
    ADD_FAILURE() << exception.what();
  }
  std::fflush(nullptr);
  return testing::Test::HasFailure() ? 1 : 0;
}

// Runs the body as a user to whom permissions matter: for root in a child process, which says on its own what fails.
void withoutPrivileges(const std::function<void()>& body) {
  if (geteuid() != 0) {
    body();
    return;
  }
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(runAsNobody(body));
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
  if (WEXITSTATUS(status) == NoPlace) {
    GTEST_SKIP() << "root is refused nothing, and here it cannot become another user with a folder for temporary files";
  }
  EXPECT_EQ(WEXITSTATUS(status), 0) << "what failed stands above";
}

// ---- Directives that were not read yet.

// The answers about the schema in turn: the first is read from the file, the others from what the first has stored.
Lines askForSchema(XelCsvReader& reader) {
  const auto requiredBy = [&]() -> std::string { return reader.getRequiredBy(); };
  return {outcomeOf(requiredBy), outcomeOf([&] { return std::lround(reader.getFileVersion() * 1000.0); }),
          outcomeOf(requiredBy)};
}

Lines expectSchema(const Watched& watched) {
  const std::string name = "XELO_DATA_SCHEMA";
  const auto missing = [&](long position, long lineNumber, const std::string& operation) {
    return "XelFieldNotFoundException | XelCsvReader::XelFieldNotFoundException : Field Not Found at position " +
           std::to_string(position) + " in line number " + std::to_string(lineNumber) + ", in table " + name +
           " while trying " + operation;
  };
  for (const model::TableEntry& entry : watched.entries) {
    if (entry.name != name) continue;
    model::Line line;
    const std::string read = watched.expect([&] {
      line = Expected(watched.file.getName(), watched.layout, watched.kind, &entry).getLineByNumber(0);
      return 0L;
    });
    if (read != "0") return {read, read, read};
    if (line.fields.size() < 2) {
      const std::string failure = missing(1, line.number, "getStringByPosition");
      return {failure, failure, failure};
    }
    // The text is stored before the version is looked for, which is not looked for again.
    const std::string& text = line.fields[1];
    if (line.fields.size() < 3) return {missing(2, line.number, "getFloatByPosition"), "0", text};
    return {text, std::to_string(std::lround(std::strtod(line.fields[2].c_str(), nullptr) * 1000.0)), text};
  }
  return {};
}

// ---- Files larger than what is read at once.

constexpr long ManyLines = 3000;

std::string makeLine(long number) { return "k" + std::to_string(number) + ",some text in every line"; }

std::string makeLargeFile() {
  std::string content;
  for (long number = 0; number < ManyLines; ++number) content += makeLine(number) + "\n";
  return content;
}

// The line as it stood in the file.
std::string joined(const XelCsvLine& line) {
  std::string text;
  for (long field = 0; field < line.getNumberOfFields(); ++field) {
    text += (field == 0 ? "" : ",") + std::string(line.getFields()[field]);
  }
  return text;
}

bool isBeginOf(const std::string& part, const std::string& whole) { return whole.compare(0, part.size(), part) == 0; }

}  // namespace

TEST(FileChanges, TruncatedToEveryLengthGivesWhatIsLeft) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareAfter(truncations(layout.content), watched);
  });
}

TEST(FileChanges, GrownGivesWhatTheOldPlacesHold) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareAfter(growths(), watched);
  });
}

TEST(FileChanges, ReplacedByAnotherFileGivesWhatThatOneHolds) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareAfter(replacements(), watched);
  });
}

TEST(FileChanges, OverwrittenInPlaceGivesTheNewBytes) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareAfter(overwritings(layout.content), watched);
  });
}

TEST(FileChanges, LostIsSaidByWhateverOpensTheFile) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareAfter(changesOf(removals(), watched), watched);
  });
}

TEST(FileChanges, TruncatedToEveryLengthDuringAWalk) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareDuring(truncations(layout.content), watched);
  });
}

TEST(FileChanges, GrownDuringAWalk) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareDuring(growths(), watched);
  });
}

TEST(FileChanges, ReplacedDuringAWalk) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareDuring(replacements(), watched);
  });
}

TEST(FileChanges, OverwrittenDuringAWalk) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareDuring(overwritings(layout.content), watched);
  });
}

TEST(FileChanges, LostDuringAWalk) {
  forEachLayout([](const Layout& layout, Kind kind) {
    Watched watched(layout, kind);
    compareDuring(changesOf(removals(), watched), watched);
  });
}

TEST(FileChanges, PermissionsTakenAreSaidByWhateverOpensTheFile) {
  withoutPrivileges([] {
    forEachLayout([](const Layout& layout, Kind kind) {
      Watched watched(layout, kind);
      compareAfter(changesOf(refusals(), watched), watched);
    });
  });
}

TEST(FileChanges, PermissionsTakenDuringAWalk) {
  withoutPrivileges([] {
    forEachLayout([](const Layout& layout, Kind kind) {
      Watched watched(layout, kind);
      compareDuring(changesOf(refusals(), watched), watched);
    });
  });
}

TEST(FileChanges, DirectivesAreThoseOfTheFileWhenTheyAreFirstAskedFor) {
  const Layout& layout = Layouts[2];
  Changes changes = truncations(layout.content);
  const Changes others = overwritings(layout.content);
  changes.insert(changes.end(), others.begin(), others.end());
  forBothKinds([&](Kind kind) {
    for (const Change& change : changes) {
      SCOPED_TRACE(change.name);
      Watched watched(layout, kind);
      change.apply(watched.file);
      const Lines expected = expectSchema(watched);
      EXPECT_EQ(askForSchema(watched.reader), expected);
      watched.putBack();
      // What was stored is not read again, what failed is.
      const bool isStored = expected[1] != expected[0];
      EXPECT_EQ(askForSchema(watched.reader),
                isStored ? (Lines{expected[2], expected[1], expected[2]}) : (Lines{"plan", "2000", "plan"}));
    }
  });
}

// The walk has read ahead some of the file, how much is not said: until the cut it gives the lines as they were, then one
// may be cut, and then there is none, or an empty one where the index points.
TEST(FileChanges, LargeFileTruncatedDuringAWalkGivesNoLineThatNeverWas) {
  const std::string content = makeLargeFile();
  const std::size_t size = content.size();
  forBothKinds([&](Kind kind) {
    for (const std::size_t left : {std::size_t(0), std::size_t(1), std::size_t(4095), std::size_t(4096),
                                   std::size_t(4097), size / 2, size - 1, size}) {
      SCOPED_TRACE(left);
      TestEnv env;
      const ChangingFile file(content);
      XelCsvReader reader(env, file.getName(), 0, 0, ",", '.', '"', '#', kind == Kind::Cached ? 1 : 0);
      XelCsvReader::LineIterator it(reader);
      for (long step = 0; step < 10; ++step) ++it;
      file.truncate(left);
      long number = 10;
      bool isCut = false;
      for (; it.ok() && number < 2 * ManyLines; ++it, ++number) {
        const std::string line = joined(*it);
        const std::string former = makeLine(number);
        EXPECT_EQ((*it).getLineNumber(), number);
        EXPECT_TRUE(isCut ? line.empty() : isBeginOf(line, former)) << line;
        isCut = isCut || line != former;
      }
      const auto whole =
          static_cast<long>(std::count(content.begin(), content.begin() + static_cast<long>(left), '\n'));
      EXPECT_GE(number, kind == Kind::Cached ? ManyLines : whole);
      EXPECT_LE(number, ManyLines);
      EXPECT_EQ(isCut, left + 1 < size) << "the end is beyond what is read ahead";
      it.end();
      reader.end();
    }
  });
}

TEST(FileChanges, LargeFileReplacedDuringAWalkIsTheOldOneForIt) {
  const std::string content = makeLargeFile();
  forBothKinds([&](Kind kind) {
    TestEnv env;
    const ChangingFile file(content);
    XelCsvReader reader(env, file.getName(), 0, 0, ",", '.', '"', '#', kind == Kind::Cached ? 1 : 0);
    XelCsvReader::LineIterator it(reader);
    file.replace("other\n");
    long number = 0;
    for (; it.ok() && number < 2 * ManyLines; ++it, ++number) EXPECT_EQ(joined(*it), makeLine(number));
    EXPECT_EQ(number, ManyLines);
    reader.end();
  });
}
