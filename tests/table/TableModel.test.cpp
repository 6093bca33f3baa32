// Both kinds of tables against a slow and obvious model, on many small files.
#include "tests/support/TableModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "csv/line/XelCsvLineI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "tests/support/OpenTable.h"

namespace {

// Every choice is made from the raw numbers of the generator, so that a seed means the same file everywhere.
class Random {
 public:
  explicit Random(unsigned seed) : engine(seed) {}

  long below(long limit) { return static_cast<long>(engine() % static_cast<unsigned long>(limit)); }
  bool inPercent(long percent) { return below(100) < percent; }

  const char* oneOf(const std::vector<const char*>& choices) {
    return choices[static_cast<std::size_t>(below(static_cast<long>(choices.size())))];
  }

 private:
  std::mt19937 engine;
};

// A data file of a few lines with everything in it that the format has a rule for.
class FileMaker {
 public:
  explicit FileMaker(unsigned seed) : random(seed) {
    settings.isMultiTable = random.inPercent(65);
    settings.isSplit = random.inPercent(50);
    static const std::vector<const char*> separators = {",", ",", ",", ";", ",;", ", ", ".", "x,"};
    settings.separators = random.oneOf(separators);
    if (settings.separators == "." || random.inPercent(20)) settings.decimal = ';';
    if (settings.separators.find(settings.decimal) != std::string::npos) settings.decimal = '!';
    columns = 1 + random.below(4);
  }

  const model::Settings& getSettings() const { return settings; }
  Random& getRandom() { return random; }

  std::string make() {
    std::string text;
    if (settings.isMultiTable) {
      const long stretches = 1 + random.below(5);
      for (long stretch = 0; stretch < stretches; ++stretch) addStretch(text, stretch);
    } else {
      if (random.inPercent(40)) text += makeDataLine("|NAMES", -1);
      if (random.inPercent(40)) text += makeDataLine("|KEYS", 100);
      addLines(text, "", 1 + random.below(7));
    }
    if (random.inPercent(45)) cutLineEnd(text);
    return text;
  }

 private:
  void addStretch(std::string& text, long stretch) {
    static const std::vector<const char*> names = {"A", "B", "C", "\"Q\"", " D ", "E!", "F;", ""};
    const bool isFresh = !settings.isSplit && !random.inPercent(10);
    const std::string name = isFresh ? "T" + std::to_string(stretch) : random.oneOf(names);
    if (random.inPercent(35)) text += makeDataLine(name + (random.inPercent(20) ? " |NAMES" : "|NAMES"), -1);
    if (random.inPercent(35)) text += makeDataLine(name + "|KEYS", 100);
    addLines(text, name, random.below(6));
  }

  void addLines(std::string& text, const std::string& name, long count) {
    static const std::vector<const char*> skipped = {"#\n",   "#A,1\n", "\n",      "  \n",
                                                     "\t \n", "\r\n",   " #A,2\n", "#,\"\r\n"};
    for (long line = 0; line < count; ++line) {
      if (random.inPercent(18)) text += random.oneOf(skipped);
      if (random.inPercent(2)) text.append("\0,k1\n", 5);
      text += makeDataLine(name, 0);
    }
    if (random.inPercent(15)) text += random.oneOf(skipped);
  }

  // Percent of the fields that are marks of a key line; below 0: all are headings.
  std::string makeDataLine(const std::string& first, long marks) {
    static const std::vector<const char*> odd = {"",       " ",    "a", " a ", "\"q,q\"", "a\"b;c\"d",   "\"\"",
                                                 "3;5",    "3.5",  "-", "a-b", "x y",     "\"open",      "\xe9t\xe9",
                                                 "a\rb,c", "a\tb", "!", "b|c", "k1",      "\"a \"\" b\""};
    static const std::vector<const char*> marked = {"1",  "0",  "1",           " 1", "2", "",
                                                    "01", "1x", "99999999999", "0",  "1", "0"};
    std::string text = first;
    long fields = columns;
    if (random.inPercent(12)) fields = random.below(6);
    const bool isNamed = settings.isMultiTable || marks != 0;
    for (long field = 0; field < fields; ++field) {
      if (field > 0 || isNamed)
        text += settings.separators[static_cast<std::size_t>(random.below(2)) % settings.separators.size()];
      if (marks < 0) {
        text += "h" + std::to_string(field);
      } else if (marks > 0) {
        text += random.oneOf(marked);
      } else if (random.inPercent(70)) {
        text += "k" + std::to_string(++lastKey);
      } else {
        text += random.oneOf(odd);
        if (random.inPercent(3)) text.append("\0n", 2);
      }
    }
    if (random.inPercent(2)) lengthen(text);
    return text + (random.inPercent(85) ? "\n" : "\r\n");
  }

  // To lengths around one and two buffers.
  void lengthen(std::string& text) {
    const std::size_t length = static_cast<std::size_t>((random.inPercent(70) ? 9999 : 19998) - 3 + random.below(7));
    const char filler = random.inPercent(20) ? ',' : 'z';
    if (text.size() < length) text.append(length - text.size(), filler);
  }

  static void cutLineEnd(std::string& text) {
    if (!text.empty() && text.back() == '\n') text.pop_back();
  }

  Random random;
  model::Settings settings;
  long columns = 1;
  long lastKey = 0;
};

std::string escaped(const std::string& text) {
  std::string shown;
  for (const char c : text) {
    if (c == '\n') {
      shown += "\\n\n";
    } else if (c == '\r') {
      shown += "\\r";
    } else if (c == '\0') {
      shown += "\\0";
    } else {
      shown += c;
    }
    if (shown.size() > 3000) return shown + "...";
  }
  return shown;
}

// Looks every line up in every way.
template <class ModelTable, class ModelIterator>
class Comparison {
 public:
  Comparison(ModelTable& expectedTable, XelCsvTableReader& realTable, model::Table& modelBase)
      : expected(expectedTable), real(realTable), base(modelBase) {}

  void compare(Random& random, const std::vector<std::string>& keys) {
    const long count = expected.getNumberOfItems();
    EXPECT_EQ(real.getNumberOfItems(), count);
    EXPECT_EQ(real.getNumberOfColumns(), base.getNumberOfColumns());
    EXPECT_EQ(real.getNumberOfKeys(), static_cast<long>(base.getKeyPositions().size()));
    for (long number = -1; number <= count + 3; ++number) {
      EXPECT_EQ(outcomeOf([&] { return real.getLineByNumber(number); }),
                model::outcomeOf([&] { return expected.getLineByNumber(number); }))
          << "line number " << number;
    }
    for (const std::string& key : keys) {
      EXPECT_EQ(getByKey(key), model::outcomeOf([&] { return expected.getLineByKey(key); })) << "key " << key;
    }
    compareWalk(-1);
    compareWalk(random.below(count + 2));
  }

 private:
  std::string getByKey(const std::string& key) {
    XelCsvTableReaderI* table = real.getImpl();
    XelEnvBlock<char> given = XelCopyString(table->getEnv(), key.c_str());
    return outcomeOf([&]() -> std::string {
      const char* owned = given.release();
      const XelEnvOwner<XelCsvLineI> record(table->getLineByKey(owned));
      XelFreeString(table->getEnv(), owned);
      return textOf(XelCsvLine(record.get()));
    });
  }

  // Steps through the table; before step number copyAt a copy goes on.
  void compareWalk(long copyAt) {
    ModelIterator stepped(expected);
    XelCsvTableReader::LineIterator it(real);
    std::optional<ModelIterator> modelCopy;
    std::optional<XelCsvTableReader::LineIterator> copied;
    ModelIterator* modelAt = &stepped;
    XelCsvTableReader::LineIterator* at = &it;
    for (long step = 0; step < 200; ++step) {
      EXPECT_EQ(at->ok(), modelAt->isOk()) << "step " << step << ", copied at " << copyAt;
      EXPECT_EQ(textOf(**at), textOf(modelAt->getLine())) << "step " << step << ", copied at " << copyAt;
      if (!modelAt->isOk() || !at->ok()) break;
      if (step == copyAt) {
        modelCopy.emplace(modelAt);
        copied.emplace(*at);
        EXPECT_TRUE((*it).isEmpty());
        EXPECT_TRUE(it.ok());
        modelAt = &*modelCopy;
        at = &*copied;
        EXPECT_EQ(textOf(**at), textOf(modelAt->getLine())) << "just copied at " << copyAt;
      }
      modelAt->next();
      ++*at;
    }
    EXPECT_FALSE(at->ok());
  }

  ModelTable& expected;
  XelCsvTableReader& real;
  model::Table& base;
};

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// Every key that a line of the table, or the line after it, may have, with and without its spaces; and some that none has.
std::vector<std::string> collectKeys(model::Table& table) {
  std::set<std::string> keys = {"", "-", "zz", "a-"};
  const long items = table.getNumberOfItems();
  for (long number = 0; number <= items; ++number) {
    try {
      const model::Line line = table.getLineByNumber(number);
      std::string key;
      std::string raw;
      for (const long position : table.getKeyPositions()) {
        if (position >= static_cast<long>(line.fields.size())) break;
        const std::string& field = line.fields[static_cast<std::size_t>(position)];
        key += (key.empty() && raw.empty() ? "" : "-") + trimmed(field);
        raw += (raw.empty() ? "" : "-") + field;
      }
      keys.insert(key);
      keys.insert(raw);
    } catch (const model::Failure&) {
      break;
    }
  }
  return {keys.begin(), keys.end()};
}

// What the file holds when it is read again.
std::string change(Random& random, const std::string& content, FileMaker& maker) {
  if (random.inPercent(75)) return content;
  switch (random.below(3)) {
    case 0:
      return content.substr(0, static_cast<std::size_t>(random.below(static_cast<long>(content.size()) + 1)));
    case 1:
      return content + maker.make();
    default:
      return maker.make();
  }
}

class ModelCheck {
 public:
  explicit ModelCheck(unsigned seed) : maker(seed), content(maker.make()), file(content), written(content) {
    changed = change(maker.getRandom(), content, maker);
  }

  void run() {
    SCOPED_TRACE(escaped(content) + "\n" + (changed == content ? "" : "changed to\n" + escaped(changed)));
    forBothKinds([&](Kind kind) { runKind(kind); });
  }

 private:
  void runKind(Kind kind) {
    const model::Settings& settings = maker.getSettings();
    write(content);
    TestEnv env;
    XelCsvReader reader;
    const auto open = [&] {
      reader = XelCsvReader(env, file.getName(), settings.isMultiTable ? 1 : 0, settings.isSplit ? 1 : 0,
                            settings.separators.c_str(), settings.decimal, settings.quote, settings.comment,
                            kind == Kind::Cached ? 1 : 0);
      return reader.getNumberOfTables();
    };
    if (settings.isMultiTable) {
      std::vector<model::TableEntry> entries;
      const std::string expected = model::outcomeOf([&] {
        entries = model::scanTables(file.getName(), settings);
        return static_cast<long>(entries.size());
      });
      EXPECT_EQ(outcomeOf(open), expected);
      if (!reader.isEmpty()) {
        for (const model::TableEntry& entry : entries) {
          SCOPED_TRACE("table " + entry.name);
          write(content);
          XelCsvTableReader table;
          runTable(kind, &entry, table, [&] {
            table = reader.getTableByName(entry.name.c_str());
            return 0L;
          });
          table.end();
        }
      }
    } else {
      XelCsvTableReader table;
      runTable(kind, nullptr, table, [&] {
        open();
        table = reader.getReaderForUniqueTableFile();
        return 0L;
      });
      table.end();
    }
    reader.end();
  }

  void write(const std::string& bytes) {
    if (bytes == written) return;
    file.write(bytes);
    written = bytes;
  }

  template <class Make>
  void runTable(Kind kind, const model::TableEntry* entry, XelCsvTableReader& table, Make make) {
    std::optional<model::Table> expected;
    std::optional<model::Index> index;
    const std::string made = model::outcomeOf([&] {
      expected.emplace(file.getName(), maker.getSettings(), entry);
      if (kind == Kind::Cached) index.emplace(*expected);
      if (entry != nullptr && index.has_value() && index->getDuplicatedKey().has_value()) {
        throw model::Failure("XelDuplicatedLineException",
                             "XelCsvReader::XelDuplicatedLineException : Another line with key  " +
                                 *index->getDuplicatedKey() + " already exists In Table " + entry->name + " .");
      }
      return 0L;
    });
    EXPECT_EQ(outcomeOf(make), made);
    if (made != "0" || table.isEmpty()) return;
    ++tablesCompared;
    const std::vector<std::string> keys = collectKeys(*expected);
    write(changed);
    if (kind == Kind::Cached) {
      Comparison<model::Index, model::IndexIterator>(*index, table, *expected).compare(maker.getRandom(), keys);
    } else {
      Comparison<model::Table, model::ScanningIterator>(*expected, table, *expected).compare(maker.getRandom(), keys);
    }
  }

 public:
  static long tablesCompared;

 private:
  FileMaker maker;
  std::string content;
  DataFile file;
  std::string written;
  std::string changed;
};

long ModelCheck::tablesCompared = 0;

}  // namespace

TEST(TableModel, AgreesWithBothKindsOfTablesOnRandomFiles) {
  ModelCheck::tablesCompared = 0;
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    ModelCheck(seed).run();
    if (HasFailure()) break;  // one file is enough to look at
  }
  EXPECT_GT(ModelCheck::tablesCompared, 1000) << "most of the files should have tables that can be read";
}
