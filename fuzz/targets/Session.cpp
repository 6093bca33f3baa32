// A whole session with the library, driven by the input: words of parameters, words of operations, and a data file after
// the first line. Every operation is done with the library and with a slow model, and both must answer the same; whatever
// was made must end in any order without a byte, a block or a descriptor left; and at last the properties of the file's
// tables are looked at without any model.
//
// An operation is a letter, the numbers of the slots that it works on, and after a colon its text, as in "t01:Stock", which
// puts the table "Stock" of reader 1 into slot 0. fuzz/README.md lists them.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <new>

#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/CheckedEnv.h"
#include "fuzz/support/DataFile.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Properties.h"
#include "fuzz/support/SessionModel.h"
#include "fuzz/support/SlowNumbers.h"
#include "tests/support/CoutCapture.h"
#include "tests/support/Outcome.h"

namespace fuzz {

namespace {

constexpr std::size_t SlotCount = 3;
constexpr std::size_t MostOperations = 60;
constexpr std::size_t MostValues = 8;

constexpr const char* OutOfMemory = "out of memory";

using Values = std::vector<std::optional<std::string>>;

// How an operation ended.
enum class Result { Done, Failed, NoMemory };

struct Operation {
  char letter = 0;
  std::size_t slot = 0;
  std::size_t other = 0;
  std::string text;  // behind the colon
};

Operation parseOperation(const std::string& word) {
  Operation operation;
  operation.letter = word[0];
  const std::size_t colon = word.find(':');
  const std::string numbers = word.substr(1, colon == std::string::npos ? colon : colon - 1);
  const auto slotAt = [&](std::size_t position) {
    return position < numbers.size() ? static_cast<unsigned char>(numbers[position]) % SlotCount : 0;
  };
  operation.slot = slotAt(0);  // '0' is a multiple of the number of slots
  operation.other = slotAt(1);
  if (colon != std::string::npos) operation.text = word.substr(colon + 1);
  return operation;
}

long numberOf(const std::string& text) { return std::strtol(text.c_str(), nullptr, 10); }

// The values of a key, "a:b"; a value that is just "\0" is a null pointer.
Values parseValues(const std::string& text) {
  Values values;
  std::size_t at = 0;
  while (values.size() < MostValues) {
    const std::size_t colon = std::min(text.find(':', at), text.size());
    const std::string value = text.substr(at, colon - at);
    values.push_back(value == std::string(1, '\0') ? std::nullopt : std::optional(upToZero(value)));
    if (colon == text.size()) break;
    at = colon + 1;
  }
  return values;
}

// Calls getLineByKey of a table's or a reader's handle with as many values as there are.
template <class Handle>
XelCsvLine callLineByKey(Handle& handle, const Values& values) {
  std::array<const char*, MostValues> texts{};
  for (std::size_t at = 0; at < values.size(); ++at) texts[at] = values[at].has_value() ? values[at]->c_str() : nullptr;
  return handle.getLineByKey(static_cast<long>(values.size()), texts[0], texts[1], texts[2], texts[3], texts[4],
                             texts[5], texts[6], texts[7]);
}

struct ReaderSlot {
  XelCsvReader handle;
  ReaderState* state = nullptr;
  LineState* last = nullptr;
};

struct TableSlot {
  XelCsvTableReader handle;
  TableState* state = nullptr;
  LineState* last = nullptr;
  bool isLent = false;
};

struct LineSlot {
  XelCsvLine handle;
  LineState* state = nullptr;
};

// The model of an iterator over the lines of a table: one of the two, or none once it has ended.
struct IteratorState {
  TableState* table = nullptr;
  long version = 0;
  std::shared_ptr<model::Table> walked;
  std::shared_ptr<model::Index> index;
  std::unique_ptr<model::ScanningIterator> scanning;
  std::unique_ptr<model::IndexIterator> indexed;
  bool isOk = false;
  LineState* line = nullptr;
};

struct IteratorSlot {
  std::unique_ptr<XelCsvTableReader::LineIterator> iterator = std::make_unique<XelCsvTableReader::LineIterator>();
  IteratorState state;
};

struct TableIteratorSlot {
  std::unique_ptr<XelCsvReader::TableIterator> iterator = std::make_unique<XelCsvReader::TableIterator>();
  ReaderState* reader = nullptr;
  long index = 0;
  long end = 0;
  bool isOk = false;
  TableState* current = nullptr;
};

bool isUsable(const ReaderState* reader) { return reader != nullptr && reader->isAlive; }

bool isUsable(const TableState* table) { return table != nullptr && table->isAlive && isUsable(table->reader); }

// A line asks its table, which must be there.
bool isUsable(const LineState* line) {
  return line != nullptr && line->isAlive && (line->table == nullptr || isUsable(line->table));
}

bool isUsable(const IteratorState& iterator) {
  return isUsable(iterator.table) && iterator.version == iterator.table->version;
}

void drop(LineState*& line) {
  if (line != nullptr) line->isAlive = false;
  line = nullptr;
}

void drop(TableState*& table) {
  if (table != nullptr) table->isAlive = false;
  table = nullptr;
}

class Session {
 public:
  Session(CheckedEnv& checkedEnv, const DataFile& file, const Parameters& parameters, const SlowFile& bytes)
      : env(checkedEnv),
        allocator(checkedEnv.getAllocator()),
        fileName(file.getName()),
        settings(parameters),
        model(parameters, fileName, bytes) {}

  void run(const std::vector<std::string>& words) {
    openReaderInto(0, false);
    openReaderInto(1, true);
    std::size_t done = 0;
    for (const std::string& word : words) {
      if (done++ == MostOperations) break;
      where = word;
      runOperation(parseOperation(word));
    }
  }

  // Ends whatever is left: the four kinds of things in one of their orders.
  void end(std::size_t order) {
    where = "the end";
    std::array<int, 4> kinds = {0, 1, 2, 3};
    for (; order > 0; --order) std::next_permutation(kinds.begin(), kinds.end());
    for (const int kind : kinds) endKind(kind);
  }

 private:
  // ---- Comparing.

  // Does an operation with the library and with the model; both answer with a text. One of the library's allocations may
  // have been told to fail: then, and only then, it runs out of memory.
  template <class Real, class Expected>
  Result compare(Real real, Expected expected) {
    std::string got;
    try {
      got = outcomeOf(real);
    } catch (const std::bad_alloc&) {
      got = OutOfMemory;
    }
    const bool hasFailed = allocator.getFailures() > 0;
    allocator.neverFail();
    allocator.failAfter(-1, false);
    checkEqual(got == OutOfMemory, hasFailed, where + ": runs out of memory when an allocation fails");
    if (hasFailed) return Result::NoMemory;
    Result result = Result::Done;
    std::string wanted;
    try {
      wanted = expected();
    } catch (const model::Failure& failure) {
      wanted = failure.kind + " | " + failure.message;
      result = Result::Failed;
    }
    checkEqual(got, wanted, where);
    return result;
  }

  // An operation that makes something: shown is what to compare of it.
  template <class Real, class Expected>
  void compareAnswer(Real real, Expected expected) {
    compare([&] { return textOf(real()); }, [&] { return textOf(expected()); });
  }

  static std::string textOf(long value) { return std::to_string(value); }
  static std::string textOf(const std::string& value) { return value; }
  static std::string textOf(const XelCsvLine& line) { return ::textOf(line); }
  static std::string textOf(const model::Line& line) { return model::textOf(line); }

  void checkLine(const XelCsvLine& real, const LineState* state) const {
    checkEqual(::textOf(real), state == nullptr ? "no line" : model::textOf(state->line), where);
  }

  // ---- Readers.

  void openReaderInto(std::size_t slot, bool isCached) {
    ReaderSlot& target = readers[slot];
    XelCsvReader handle;
    ReaderState* state = nullptr;
    const Result result = compare(
        [&] {
          handle = openReader(env, fileName, settings, isCached);
          return textOf(handle.getNumberOfTables());
        },
        [&] {
          state = model.makeReader(isCached);
          return textOf(getNumberOfTables(*state));
        });
    if (result != Result::Done) return;
    ownedReaders.emplace_back(handle, state);
    assign(target, {handle, state, nullptr});
  }

  void assign(ReaderSlot& target, const ReaderSlot& source) {
    if (&target == &source) return;
    target.handle = source.handle;
    drop(target.last);
    target.state = source.state;
  }

  void endReader(ReaderSlot& slot) {
    slot.handle.end();
    check(slot.handle.isEmpty(), where + ": a handle that was ended is empty");
    slot.handle.end();
    drop(slot.last);
    slot.state->isAlive = false;
    if (slot.state->unique != nullptr) slot.state->unique->isAlive = false;
    slot.state = nullptr;
  }

  void runReaderOperation(const Operation& operation) {
    ReaderSlot& slot = readers[operation.slot];
    ReaderSlot& other = readers[operation.other];
    switch (operation.letter) {
      case 'o':
        return openReaderInto(operation.slot, operation.text == "c");
      case 'r':
        return assign(slot, other);
      case 'R':
        if (&slot == &other) return;
        slot.handle = std::move(other.handle);
        drop(slot.last);
        slot.state = std::exchange(other.state, nullptr);
        slot.last = std::exchange(other.last, nullptr);
        check(other.handle.isEmpty(), where + ": a handle that was moved from is empty");
        return;
      case 'z':
        return assign(slot, ReaderSlot());
      default:
        break;
    }
    if (!isUsable(slot.state)) return;
    if (operation.letter == 'q') return endReader(slot);
    ReaderState& reader = *slot.state;
    // The one table may have become a copy of another reader's, which has ended.
    if (reader.unique != nullptr && !isUsable(reader.unique)) return;
    switch (operation.letter) {
      case 'N':
        return keepLine(
            operation.slot, slot, reader.unique, [&] { return slot.handle.getLineByNumber(numberOf(operation.text)); },
            [&] {
              checkUniqueTable(reader, "getLineByNumber");
              return getLineByNumber(*reader.unique, numberOf(operation.text));
            });
      case 'K': {
        const Values values = parseValues(operation.text);
        return keepLine(
            operation.slot, slot, reader.unique, [&] { return callLineByKey(slot.handle, values); },
            [&] {
              checkUniqueTable(reader, "getNumberOfKeys");
              return getLineByKey(*reader.unique, values, false);
            });
      }
      case 'w':
        return walkReader(slot, numberOf(operation.text));
      case 'Q':
        return askReader(slot);
      case 'D':
        return askDirective(slot, operation.text);
      case 'H':
        return askReaderForNames(slot, upToZero(operation.text));
      default:
        return;
    }
  }

  void askReader(ReaderSlot& slot) {
    XelCsvReader& handle = slot.handle;
    const ReaderState& reader = *slot.state;
    // A question that the one table answers, or a reader of several tables refuses.
    const auto ofUnique = [&](const std::string& name, auto real, auto expected) {
      compareAnswer(real, [&] {
        checkUniqueTable(reader, name);
        return expected(*reader.unique);
      });
    };
    check(handle.getEnv().getImpl() == env.getImpl(), where + ": the environment of a reader");
    compareAnswer([&] { return handle.getNumberOfTables(); }, [&] { return getNumberOfTables(reader); });
    ofUnique(
        "getNumberOfItems", [&] { return handle.getNumberOfItems(); },
        [](TableState& table) { return getNumberOfItems(table); });
    ofUnique(
        "getNumberOfColumns", [&] { return handle.getNumberOfColumns(); },
        [](TableState& table) { return table.zone.numberOfColumns; });
    ofUnique(
        "getNumberOfKeys", [&] { return handle.getNumberOfKeys(); },
        [](TableState& table) { return static_cast<long>(table.zone.keyPositions.size()); });
    ofUnique(
        "getFirstLine", [&] { return textOf(handle.getFirstLine()); },
        [](TableState& table) { return table.heading == nullptr ? "no line" : model::textOf(table.heading->line); });
    ofUnique(
        "printKeys",
        [&] {
          const CoutCapture printed;
          handle.printKeys();
          return printed.getText();
        },
        [](TableState& table) { return printKeys(table); });
    compareAnswer(
        [&] {
          handle.getTable();
          return std::string("a table");
        },
        [&] {
          checkUniqueTable(reader, "getTable");
          checkMultiTable(reader, "getTableByName");
          return std::string("a table");
        });
  }

  // The first lines of a one-table file.
  void walkReader(ReaderSlot& slot, long steps) {
    compare(
        [&] {
          XelCsvReader::LineIterator it(slot.handle);
          std::string walked = ::textOf(*it);
          for (long step = 0; step < steps && it.ok(); ++step) walked += "\n" + ::textOf(*++it);
          it.end();
          return walked + ((*it).isEmpty() ? "" : "\na line after the end");
        },
        [&] {
          IteratorState state = startOf(getUniqueTable(*slot.state));
          std::string walked = model::textOf(lineOf(state));
          for (long step = 0; step < steps && state.isOk; ++step) {
            this->step(state);
            walked += "\n" + model::textOf(lineOf(state));
          }
          drop(state.line);
          return walked;
        });
  }

  // The operations that a text names something for.
  void askReaderForNames(ReaderSlot& slot, const std::string& text) {
    XelCsvReader& handle = slot.handle;
    const ReaderState& reader = *slot.state;
    compareAnswer([&] { return static_cast<long>(handle.isTableExists(text.c_str())); },
                  [&] { return static_cast<long>(isTableThere(reader, text)); });
    compareAnswer([&] { return static_cast<long>(handle.isHeadingExists(text.c_str())); },
                  [&] {
                    checkUniqueTable(reader, "isHeadingExists");
                    return static_cast<long>(isHeadingThere(*reader.unique, text));
                  });
    compareAnswer([&] { return handle.getPosition(text.c_str()); },
                  [&] {
                    checkUniqueTable(reader, "getPosition");
                    return getPosition(*reader.unique, text);
                  });
  }

  // f is the file's format, v its version, r what it is required by.
  void askDirective(ReaderSlot& slot, const std::string& text) {
    ReaderState& reader = *slot.state;
    const char directive = text.empty() ? 'f' : text[0];
    if (directive == 'v') {
      compareAnswer([&] { return shownFloat(slot.handle.getFileVersion()); },
                    [&] {
                      checkMultiTable(reader, "getFileVersion");
                      if (reader.fileVersion == 0.0 && !reader.requiredBy.has_value()) readSchema(reader);
                      return shownFloat(reader.fileVersion);
                    });
    } else if (directive == 'r') {
      compareAnswer([&] { return std::string(slot.handle.getRequiredBy()); },
                    [&] {
                      checkMultiTable(reader, "getRequiredBy");
                      if (!reader.requiredBy.has_value()) readSchema(reader);
                      return *reader.requiredBy;
                    });
    } else {
      compareAnswer([&] { return shownFloat(slot.handle.getCsvFormat()); },
                    [&] {
                      checkMultiTable(reader, "getCsvFormat");
                      return getField(*firstLineOf(reader, "XELO_CSV_FORMAT"), 'f', 1);
                    });
    }
  }

  LineState* firstLineOf(ReaderState& reader, const std::string& tableName) {
    TableState* table = model.getTableByName(&reader, tableName, Asked::OfReader);
    return model.makeLine(getLineByNumber(*table, 0), table);
  }

  void readSchema(ReaderState& reader) {
    LineState* line = firstLineOf(reader, "XELO_DATA_SCHEMA");
    reader.requiredBy = getField(*line, 's', 1);
    getField(*line, 'f', 2);
    reader.fileVersion = slowFloat(line->line.fields[2]);
  }

  // ---- Tables.

  // Puts the line that a lookup of a handle gives into a line slot; the handle's former line has ended in any case.
  template <class Slot, class Real, class Expected>
  void keepLine(std::size_t lineSlot, Slot& slot, TableState* table, Real real, Expected expected) {
    XelCsvLine found;
    model::Line wanted;
    const Result result = compare(
        [&] {
          found = real();
          return ::textOf(found);
        },
        [&] {
          wanted = expected();
          return model::textOf(wanted);
        });
    drop(slot.last);
    if (result != Result::Done) return;
    slot.last = model.makeLine(wanted, table);
    lines[lineSlot] = {found, slot.last};
  }

  template <class Real, class Expected>
  void makeTable(TableSlot& slot, bool isLent, Real real, Expected expected) {
    XelCsvTableReader handle;
    TableState* state = nullptr;
    const Result result = compare(
        [&] {
          handle = real();
          return textOf(handle.getNumberOfColumns());
        },
        [&] {
          state = expected();
          return textOf(state->zone.numberOfColumns);
        });
    if (result != Result::Done) return;
    if (!isLent) ownedTables.emplace_back(handle, state);
    assign(slot, {handle, state, nullptr, isLent});
  }

  void assign(TableSlot& target, const TableSlot& source) {
    if (&target == &source) return;
    target.handle = source.handle;
    drop(target.last);
    target.state = source.state;
    target.isLent = source.isLent;
  }

  void runTableMaking(const Operation& operation) {
    TableSlot& slot = tables[operation.slot];
    ReaderSlot& from = readers[operation.other];
    if (!isUsable(from.state)) return;
    const std::string name = upToZero(operation.text);
    const long number = numberOf(operation.text);
    switch (operation.letter) {
      case 't':
        return makeTable(
            slot, false, [&] { return from.handle.getTableByName(name.c_str()); },
            [&] { return model.getTableByName(from.state, name, Asked::OfReader); });
      case 'T':
        return makeTable(
            slot, false, [&] { return from.handle.getTableByNumber(number); },
            [&] { return model.getTableByNumber(from.state, number); });
      case 'c':
        return makeTable(
            slot, false, [&] { return XelCsvTableReader(from.handle.getImpl(), name.c_str()); },
            [&] { return model.getTableByName(from.state, name, Asked::OfTable); });
      default:
        return makeTable(
            slot, true, [&] { return from.handle.getReaderForUniqueTableFile(); },
            [&] { return getUniqueTable(*from.state); });
    }
  }

  void runTableOperation(const Operation& operation) {
    TableSlot& slot = tables[operation.slot];
    TableSlot& other = tables[operation.other];
    switch (operation.letter) {
      case 'a':
        return assign(slot, other);
      case 'x':
        return assign(slot, TableSlot());
      case 'm':
        if (&slot == &other) return;
        slot.handle = std::move(other.handle);
        drop(slot.last);
        slot.state = std::exchange(other.state, nullptr);
        slot.last = std::exchange(other.last, nullptr);
        slot.isLent = other.isLent;
        check(other.handle.isEmpty(), where + ": a handle that was moved from is empty");
        return;
      case 'C':
        return copyTable(slot, other);
      default:
        break;
    }
    if (!isUsable(slot.state)) return;
    TableState* table = slot.state;
    switch (operation.letter) {
      case 'e':
        slot.handle.end();
        drop(slot.last);
        if (!slot.isLent) table->isAlive = false;
        slot.state = nullptr;
        check(slot.handle.isEmpty(), where + ": a handle that was ended is empty");
        slot.handle.end();
        return;
      case 'n': {
        const long number = numberOf(operation.text);
        return keepLine(
            operation.slot, slot, table, [&] { return slot.handle.getLineByNumber(number); },
            [&] { return getLineByNumber(*table, number); });
      }
      case 'k':
        return lookUpByKey(operation.slot, slot, parseValues(operation.text));
      case 'y':
        return lookUpByKeyOfLine(operation.slot, slot, numberOf(operation.text));
      case 'i':
        return askTable(slot);
      case 'h':
        return askTableForHeading(slot, upToZero(operation.text));
      default:
        return;
    }
  }

  void lookUpByKey(std::size_t lineSlot, TableSlot& slot, const Values& values) {
    TableState* table = slot.state;
    keepLine(
        lineSlot, slot, table, [&] { return callLineByKey(slot.handle, values); },
        [&] { return getLineByKey(*table, values); });
  }

  // With the values of the key of a line that is there.
  void lookUpByKeyOfLine(std::size_t lineSlot, TableSlot& slot, long number) {
    Values values;
    try {
      const model::Line line = getLineByNumber(*slot.state, number);
      for (const long position : slot.state->zone.keyPositions) {
        if (position >= static_cast<long>(line.fields.size()) || values.size() == MostValues) return;
        values.emplace_back(slowTrim(line.fields[static_cast<std::size_t>(position)]));
      }
    } catch (const model::Failure&) {
      return;
    }
    if (!values.empty()) lookUpByKey(lineSlot, slot, values);
  }

  void askTable(TableSlot& slot) {
    XelCsvTableReader& handle = slot.handle;
    TableState& table = *slot.state;
    check(handle.getEnv().getImpl() == env.getImpl(), where + ": the environment of a table");
    compareAnswer([&] { return handle.getNumberOfItems(); }, [&] { return getNumberOfItems(table); });
    compareAnswer([&] { return handle.getNumberOfColumns(); }, [&] { return table.zone.numberOfColumns; });
    compareAnswer([&] { return handle.getNumberOfKeys(); },
                  [&] { return static_cast<long>(table.zone.keyPositions.size()); });
    compareAnswer([&] { return static_cast<long>(handle.isCached()); },
                  [&] { return static_cast<long>(table.reader->isCached); });
    compareAnswer(
        [&] {
          const char* name = handle.getNameOfTable();
          return std::string(name == nullptr ? "no name" : name);
        },
        [&] { return table.entry.has_value() ? table.entry->name : "no name"; });
    compareAnswer(
        [&] {
          const CoutCapture printed;
          check(handle.printKeys(), where + ": printKeys answers true");
          return printed.getText();
        },
        [&] { return printKeys(table); });
    checkLine(handle.getFirstLine(), table.heading);
    check(handle.getImpl()->getFirstDataOffset() == table.zone.firstDataOffset,
          where + ": offset of the first data line");
    check(handle.getImpl()->getEndOffset() == table.zone.endOffset, where + ": end offset");
  }

  void askTableForHeading(TableSlot& slot, const std::string& heading) {
    TableState& table = *slot.state;
    compareAnswer([&] { return static_cast<long>(slot.handle.isHeadingExists(heading.c_str())); },
                  [&] { return static_cast<long>(isHeadingThere(table, heading)); });
    compareAnswer([&] { return slot.handle.getPosition(heading.c_str()); },
                  [&] { return getPosition(table, heading); });
  }

  void copyTable(TableSlot& slot, TableSlot& other) {
    if (&slot == &other || !isUsable(other.state)) return;
    if (slot.state == nullptr ? !slot.handle.isEmpty() : !isUsable(slot.state)) return;
    const bool isNew = slot.state == nullptr;
    const bool isSame = slot.state == other.state;
    TableState* copied = nullptr;
    const Result result = compare(
        [&] {
          slot.handle.copy(other.handle);
          return std::string("copied");
        },
        [&] {
          const bool isCached = isNew ? other.state->reader->isCached : slot.state->isCached;
          if (!isSame) copied = model.copyTable(other.state, isCached);
          return std::string("copied");
        });
    if (result != Result::Done) {
      check(slot.handle.isEmpty(), where + ": a handle whose copy failed is empty");
      // The last line stays with the handle, but its table may be gone.
      if (slot.last != nullptr) slot.last->isAlive = false;
      if (!slot.isLent && !isSame && slot.state != nullptr) slot.state->isAlive = false;
      slot.state = nullptr;
      return;
    }
    if (isNew) {
      slot.state = copied;
      slot.isLent = false;
      ownedTables.emplace_back(slot.handle, slot.state);
    } else if (!isSame) {
      SessionModel::replaceTable(slot.state, copied);
    }
    copyLastLine(slot, other);
  }

  // Handles of the last line show the copy.
  void copyLastLine(TableSlot& slot, const TableSlot& other) {
    if (other.last == nullptr) return drop(slot.last);
    if (slot.last == nullptr) slot.last = model.makeLine({}, slot.state);
    slot.last->line = other.last->line;
    slot.last->table = slot.state;
    slot.last->isAlive = true;
  }

  // ---- Lines.

  void runLineOperation(const Operation& operation) {
    LineSlot& slot = lines[operation.slot];
    LineSlot& other = lines[operation.other];
    switch (operation.letter) {
      case 'l':
        slot = other;
        return;
      case 'L':
        return copyLine(slot, other);
      case 'f': {
        const TableSlot& table = tables[operation.other];
        if (!isUsable(table.state)) return;
        slot = {table.handle.getFirstLine(), table.state->heading};
        return checkLine(slot.handle, slot.state);
      }
      case 'X':
        return endLine(slot);
      default:
        break;
    }
    if (!isUsable(slot.state)) return;
    LineState& line = *slot.state;
    check(slot.handle.getEnv().getImpl() == env.getImpl(), where + ": the environment of a line");
    switch (operation.letter) {
      case 'g': {
        const char getter = operation.text.empty() ? 's' : operation.text[0];
        const long position = operation.text.empty() ? 0 : numberOf(operation.text.substr(1));
        compareAnswer([&] { return callGetter(slot.handle, getter, position); },
                      [&] { return getField(line, getter, position); });
        break;
      }
      case 'G': {
        if (line.table == nullptr) return;
        const char getter = operation.text.empty() ? 's' : operation.text[0];
        const std::string heading = operation.text.empty() ? "" : upToZero(operation.text.substr(1));
        compareAnswer([&] { return callGetter(slot.handle, getter, heading.c_str()); },
                      [&] { return getField(line, getter, getPosition(*line.table, heading)); });
        break;
      }
      case 'p':
        if (line.table == nullptr) return;
        compareAnswer(
            [&] {
              const CoutCapture printed;
              check(slot.handle.printValueOfKeys(), where + ": printValueOfKeys answers true");
              return printed.getText();
            },
            [&] { return printValueOfKeys(line); });
        break;
      default:
        return;
    }
    checkLine(slot.handle, slot.state);
  }

  // A default comes back as the very pointer that was given.
  static std::string textOfString(const char* got) {
    return got == StringDefault ? "the default" : "the field " + std::string(got);
  }

  static std::string callGetter(const XelCsvLine& line, char getter, long position) {
    switch (getter) {
      case 'f':
        return shownFloat(line.getFloatByPosition(position));
      case 'F':
        return shownFloat(line.getFloatByPositionOrDefaultValue(position, FloatDefault));
      case 'i':
        return textOf(line.getIntByPosition(position));
      case 'I':
        return textOf(line.getIntByPositionOrDefaultValue(position, IntDefault));
      case 's':
        return line.getStringByPosition(position);
      case 'S':
        return textOfString(line.getStringByPositionOrDefaultValue(position, StringDefault));
      default:
        return line.emptyFieldByPosition(position) ? "empty" : "not empty";
    }
  }

  static std::string callGetter(const XelCsvLine& line, char getter, const char* heading) {
    switch (getter) {
      case 'f':
        return shownFloat(line.getFloatByHeader(heading));
      case 'F':
        return shownFloat(line.getFloatByHeaderOrDefaultValue(heading, FloatDefault));
      case 'i':
        return textOf(line.getIntByHeader(heading));
      case 'I':
        return textOf(line.getIntByHeaderOrDefaultValue(heading, IntDefault));
      case 's':
        return line.getStringByHeader(heading);
      case 'S':
        return textOfString(line.getStringByHeaderOrDefaultValue(heading, StringDefault));
      default:
        return line.emptyFieldByHeader(heading) ? "empty" : "not empty";
    }
  }

  // A line that the user owns is destroyed once; any other is let go.
  void endLine(LineSlot& slot) {
    const auto owned = std::find_if(ownedLines.begin(), ownedLines.end(),
                                    [&](const LineSlot& line) { return line.state == slot.state; });
    const bool isOwned = slot.state != nullptr && owned != ownedLines.end();
    if (isOwned && !slot.state->isAlive) {
      slot = {};  // another handle has ended it
      return;
    }
    slot.handle.end();
    check(slot.handle.isEmpty(), where + ": a handle that was ended is empty");
    if (isOwned) slot.state->isAlive = false;
    slot.state = nullptr;
  }

  void copyLine(LineSlot& slot, const LineSlot& other) {
    if (&slot == &other) return;
    if (other.state != nullptr && !isUsable(other.state)) return;
    if (slot.state != nullptr && !isUsable(slot.state)) return;
    const Result result = compare(
        [&] {
          slot.handle.copy(other.handle);
          return ::textOf(slot.handle);
        },
        [&] {
          if (other.state == nullptr) {
            if (slot.state != nullptr) slot.state->line.fields.clear();
          } else if (slot.state == nullptr) {
            slot.state = model.makeLine(other.state->line, other.state->table);
            ownedLines.push_back({slot.handle, slot.state});
          } else {
            slot.state->line = other.state->line;
            slot.state->table = other.state->table;
          }
          return slot.state == nullptr ? "no line" : model::textOf(slot.state->line);
        });
    if (result == Result::NoMemory) checkLine(slot.handle, slot.state);
  }

  // ---- Iterators over lines.

  void step(IteratorState& state) {
    if (state.scanning != nullptr) state.scanning->next();
    if (state.indexed != nullptr) state.indexed->next();
    if (state.scanning == nullptr && state.indexed == nullptr) state.isOk = false;
    settle(state);
  }

  static std::optional<model::Line> lineOf(const IteratorState& state) {
    if (state.line == nullptr) return std::nullopt;
    return state.line->line;
  }

  // The current line of the model's iterator after a step.
  void settle(IteratorState& state) {
    drop(state.line);
    const std::optional<model::Line> line = state.scanning != nullptr  ? state.scanning->getLine()
                                            : state.indexed != nullptr ? state.indexed->getLine()
                                                                       : std::nullopt;
    if (line.has_value()) state.line = model.makeLine(*line, state.table);
    if (state.scanning != nullptr) state.isOk = state.scanning->isOk();
    if (state.indexed != nullptr) state.isOk = state.indexed->isOk();
  }

  IteratorState startOf(TableState* table) {
    IteratorState state;
    state.table = table;
    if (table == nullptr) return state;
    state.version = table->version;
    state.walked = table->table;
    state.index = table->index;
    if (table->index != nullptr) {
      state.indexed = std::make_unique<model::IndexIterator>(*table->index);
    } else {
      state.scanning = std::make_unique<model::ScanningIterator>(*table->table);
    }
    settle(state);
    return state;
  }

  static std::string textOf(const XelCsvTableReader::LineIterator& iterator) {
    return (iterator.ok() ? "ok " : "over ") + ::textOf(*iterator);
  }

  static std::string textOf(const IteratorState& state) {
    return (state.isOk ? "ok " : "over ") + (state.line == nullptr ? "no line" : model::textOf(state.line->line));
  }

  // After a failure the iterator stands on nothing.
  void reset(IteratorSlot& slot) {
    check((**slot.iterator).isEmpty(), where + ": an iterator that failed stands on no line");
    ++*slot.iterator;
    check(!slot.iterator->ok(), where + ": an iterator that failed is over after the next step");
    drop(slot.state.line);
    slot = IteratorSlot();
  }

  void runIteratorOperation(const Operation& operation) {
    IteratorSlot& slot = iterators[operation.slot];
    switch (operation.letter) {
      case 'b': {
        const TableSlot& table = tables[operation.other];
        if (!isUsable(table.state)) return;
        return startIterator(
            slot, [&] { return std::make_unique<XelCsvTableReader::LineIterator>(table.handle); },
            [&] { return startOf(table.state); });
      }
      case 'B':
        return copyIterator(slot, iterators[operation.other]);
      case '=': {
        IteratorSlot& other = iterators[operation.other];
        if (other.state.table != nullptr && !isUsable(other.state)) return;
        TableState* table = other.state.table;
        const Result result = compare(
            [&] {
              *slot.iterator = *other.iterator;
              return textOf(*slot.iterator);
            },
            [&] {
              IteratorState started = startOf(table);
              drop(slot.state.line);
              slot.state = std::move(started);
              return textOf(slot.state);
            });
        if (result != Result::Done) reset(slot);
        return;
      }
      case 'E':
        slot.iterator->end();
        drop(slot.state.line);
        slot.state.scanning = nullptr;
        slot.state.indexed = nullptr;
        checkEqual(textOf(*slot.iterator), textOf(slot.state), where);
        return;
      default:
        break;
    }
    if (slot.state.table != nullptr && !isUsable(slot.state)) return;
    if (operation.letter == '+') {
      const Result result = compare(
          [&] {
            ++*slot.iterator;
            return textOf(*slot.iterator);
          },
          [&] {
            step(slot.state);
            return textOf(slot.state);
          });
      if (result != Result::Done) reset(slot);
    } else if (operation.letter == '*') {
      LineSlot& line = lines[operation.other];
      line = {**slot.iterator, slot.state.line};
      checkLine(line.handle, line.state);
    }
  }

  template <class Real, class Expected>
  void startIterator(IteratorSlot& slot, Real real, Expected expected) {
    IteratorSlot started;
    const Result result = compare(
        [&] {
          started.iterator = real();
          return textOf(*started.iterator);
        },
        [&] {
          started.state = expected();
          return textOf(started.state);
        });
    if (result != Result::Done) return;
    drop(slot.state.line);
    slot = std::move(started);
  }

  // The copy takes the position over; the source stands on nothing then, and its ok() stays.
  void copyIterator(IteratorSlot& slot, IteratorSlot& other) {
    if (&slot == &other || (other.state.table != nullptr && !isUsable(other.state))) return;
    const bool wasOk = other.iterator->ok();
    IteratorSlot copied;
    const Result result = compare(
        [&] {
          copied.iterator = std::make_unique<XelCsvTableReader::LineIterator>(*other.iterator);
          return textOf(*copied.iterator);
        },
        [&] {
          IteratorState& state = copied.state;
          state.table = other.state.table;
          state.version = other.state.version;
          state.walked = other.state.walked;
          state.index = other.state.index;
          if (other.state.scanning != nullptr) {
            state.scanning = std::make_unique<model::ScanningIterator>(other.state.scanning.get());
          }
          if (other.state.indexed != nullptr) {
            state.indexed = std::make_unique<model::IndexIterator>(other.state.indexed.get());
          }
          settle(state);
          return textOf(state);
        });
    check((**other.iterator).isEmpty(), where + ": the source of a copy stands on no line");
    if (result != Result::Done) return reset(other);
    checkEqual(other.iterator->ok(), wasOk, where + ": ok() of the source of a copy");
    drop(other.state.line);
    other.state.scanning = nullptr;
    other.state.indexed = nullptr;
    drop(slot.state.line);
    slot = std::move(copied);
  }

  // ---- Iterators over tables.

  static std::string textOf(const XelCsvReader::TableIterator& iterator) {
    const XelCsvTableReader table = *iterator;
    return std::string(iterator.ok() ? "ok " : "over ") + (table.isEmpty() ? "no table" : table.getNameOfTable());
  }

  static std::string textOf(const TableIteratorSlot& slot) {
    return std::string(slot.isOk ? "ok " : "over ") +
           (slot.isOk && slot.current != nullptr ? slot.current->entry->name : "no table");
  }

  TableState* openCurrent(const TableIteratorSlot& slot) {
    return model.getTableByName(slot.reader, slot.reader->directory.tables[static_cast<std::size_t>(slot.index)].name,
                                Asked::OfReader);
  }

  void runTableIteratorOperation(const Operation& operation) {
    TableIteratorSlot& slot = tableIterators[operation.slot];
    TableIteratorSlot& other = tableIterators[operation.other];
    switch (operation.letter) {
      case 'v':
        return startTableIterator(slot, readers[operation.other]);
      case 'V':
        return copyTableIterator(slot, other);
      case 'A':
        return assignTableIterator(slot, other);
      case 'd':
        slot.iterator->end();
        drop(slot.current);
        checkEqual(slot.iterator->ok(), slot.isOk, where + ": ok() after the end");
        check((**slot.iterator).isEmpty(), where + ": no table after the end");
        return;
      default:
        break;
    }
    if (slot.reader == nullptr || !isUsable(slot.reader)) return;
    if (operation.letter == '>') {
      stepTableIterator(slot);
    } else if (operation.letter == '^') {
      TableSlot& table = tables[operation.other];
      TableState* current = slot.isOk ? slot.current : nullptr;
      assign(table, {**slot.iterator, current, nullptr, current != nullptr});
      checkEqual(table.handle.isEmpty(), current == nullptr, where + ": a table iterator's table");
    }
  }

  void startTableIterator(TableIteratorSlot& slot, ReaderSlot& from) {
    if (!isUsable(from.state)) return;
    TableIteratorSlot started;
    const Result result = compare(
        [&] {
          started.iterator = std::make_unique<XelCsvReader::TableIterator>(from.handle);
          return textOf(*started.iterator);
        },
        [&] {
          started.reader = from.state;
          started.index = getNumberOfReservedTables(*from.state);
          started.end = getNumberOfTables(*from.state) + started.index;
          started.isOk = started.index < started.end;
          checkMultiTable(*from.state, "getTableByName");
          if (started.isOk) started.current = openCurrent(started);
          return textOf(started);
        });
    if (result != Result::Done) return;
    drop(slot.current);
    slot = std::move(started);
  }

  void stepTableIterator(TableIteratorSlot& slot) {
    const long next = slot.index + 1;
    drop(slot.current);
    slot.isOk = next < slot.end;
    if (slot.isOk) slot.index = next;
    compare(
        [&] {
          ++*slot.iterator;
          return textOf(*slot.iterator);
        },
        [&] {
          if (slot.isOk) slot.current = openCurrent(slot);
          return textOf(slot);
        });
    checkEqual(textOf(*slot.iterator), textOf(slot), where);
  }

  void copyTableIterator(TableIteratorSlot& slot, const TableIteratorSlot& other) {
    if (&slot == &other || (other.reader != nullptr && !isUsable(other.reader))) return;
    TableIteratorSlot copied;
    const Result result = compare(
        [&] {
          copied.iterator = std::make_unique<XelCsvReader::TableIterator>(*other.iterator);
          return textOf(*copied.iterator);
        },
        [&] {
          copyPosition(copied, other);
          if (copied.isOk) copied.current = openCurrent(copied);
          return textOf(copied);
        });
    if (result != Result::Done) return;
    drop(slot.current);
    slot = std::move(copied);
  }

  void assignTableIterator(TableIteratorSlot& slot, const TableIteratorSlot& other) {
    if (&slot == &other || (other.reader != nullptr && !isUsable(other.reader))) return;
    drop(slot.current);
    copyPosition(slot, other);
    compare(
        [&] {
          *slot.iterator = *other.iterator;
          return textOf(*slot.iterator);
        },
        [&] {
          if (slot.isOk) slot.current = openCurrent(slot);
          return textOf(slot);
        });
    checkEqual(textOf(*slot.iterator), textOf(slot), where);
  }

  static void copyPosition(TableIteratorSlot& slot, const TableIteratorSlot& other) {
    slot.reader = other.reader;
    slot.index = other.index;
    slot.end = other.end;
    slot.isOk = other.isOk;
  }

  // ---- All.

  void runOperation(const Operation& operation) {
    static const std::string ReaderOperations = "orRzqNKwQDH";
    static const std::string TableMaking = "tTcU";
    static const std::string TableOperations = "axmCenkyih";
    static const std::string LineOperations = "lLfXgGp";
    static const std::string IteratorOperations = "bB=E+*";
    static const std::string TableIteratorOperations = "vVAd>^";
    const auto isOne = [&](const std::string& letters) { return letters.find(operation.letter) != std::string::npos; };
    // The next operation's allocation with this number fails; with '?' all that follow fail too.
    if (operation.letter == '!' || operation.letter == '?') {
      return allocator.failAfter(std::max(0L, numberOf(operation.text)), operation.letter == '?');
    }
    if (isOne(ReaderOperations)) runReaderOperation(operation);
    if (isOne(TableMaking)) runTableMaking(operation);
    if (isOne(TableOperations)) runTableOperation(operation);
    if (isOne(LineOperations)) runLineOperation(operation);
    if (isOne(IteratorOperations)) runIteratorOperation(operation);
    if (isOne(TableIteratorOperations)) runTableIteratorOperation(operation);
    allocator.failAfter(-1, false);
  }

  void endKind(int kind) {
    switch (kind) {
      case 0:
        for (LineSlot& line : ownedLines) {
          if (line.state->isAlive) line.handle.end();
        }
        for (LineSlot& line : lines) line = {};
        break;
      case 1:
        for (IteratorSlot& slot : iterators) slot.iterator = nullptr;
        for (TableIteratorSlot& slot : tableIterators) slot.iterator = nullptr;
        break;
      case 2:
        for (TableSlot& slot : tables) slot.handle = XelCsvTableReader();
        for (auto& [handle, table] : ownedTables) {
          if (table->isAlive) handle.end();
        }
        break;
      default:
        for (ReaderSlot& slot : readers) slot.handle = XelCsvReader();
        for (auto& [handle, reader] : ownedReaders) {
          if (reader->isAlive) handle.end();
        }
        break;
    }
  }

  XelEnv env;
  CheckedAllocator& allocator;
  std::string fileName;
  Parameters settings;
  SessionModel model;
  std::string where = "the beginning";  // the operation that is on

  std::array<ReaderSlot, SlotCount> readers;
  std::array<TableSlot, SlotCount> tables;
  std::array<LineSlot, SlotCount> lines;
  std::array<IteratorSlot, SlotCount> iterators;
  std::array<TableIteratorSlot, SlotCount> tableIterators;

  // A handle of everything that the user has to end, to end it when it still lives.
  std::vector<std::pair<XelCsvReader, ReaderState*>> ownedReaders;
  std::vector<std::pair<XelCsvTableReader, TableState*>> ownedTables;
  std::vector<LineSlot> ownedLines;
};

// The order in which things end is a digit among the flags.
std::size_t orderOf(const std::string& flags) {
  constexpr std::size_t Orders = 24;
  std::size_t order = 0;
  for (const char flag : flags) {
    if (flag >= '0' && flag <= '9') order = order * 10 + static_cast<std::size_t>(flag - '0');
    order %= Orders;
  }
  return order;
}

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name that the fuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const DataFile File;
  const Input input = parseInput(data, size);
  const Parameters parameters = parseParameters(input);
  try {
    slowCheck(parameters);
  } catch (const model::Failure&) {
    return 0;  // what a reader says to such parameters is looked at by the target of the directory
  }
  File.write(input.rest);
  const SlowFile bytes(input.rest);
  {
    CheckedEnv env;
    Session session(env, File, parameters, bytes);
    const std::size_t first = std::min(ParameterWords, input.words.size());
    session.run({input.words.begin() + static_cast<std::ptrdiff_t>(first), input.words.end()});
    session.end(orderOf(wordAt(input, 0)));
  }
  checkProperties(File.getName(), parameters, bytes);
  return 0;
}

}  // namespace fuzz
