// What a session with the library should be like: readers, tables and lines as slow models, each with what is known of it
// while it lives. The states stay until the session ends; a state that is not alive stands for an object that is gone.
//
// What the library would throw comes as a model::Failure, everything else as text.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/support/SlowTables.h"

namespace fuzz {

struct ReaderState;
struct TableState;

struct LineState {
  model::Line line;
  TableState* table = nullptr;
  bool isAlive = true;
};

struct TableState {
  ReaderState* reader = nullptr;
  std::optional<model::TableEntry> entry;  // none for the table of a one-table file
  bool isCached = false;
  bool isAlive = true;
  long version = 0;  // changes when another table is copied into this one
  std::shared_ptr<model::Table> table;
  std::shared_ptr<model::Index> index;  // of a cached table
  SlowZone zone;
  LineState* heading = nullptr;  // null when there is no heading line
};

struct ReaderState {
  Parameters parameters;
  std::string fileName;
  bool isCached = false;
  bool isAlive = true;
  const SlowFile* file = nullptr;
  SlowDirectory directory;       // of a file of several tables
  TableState* unique = nullptr;  // of a one-table file
  std::optional<std::string> requiredBy;
  double fileVersion = 0.0;
};

// Which message a duplicated key gives.
enum class Asked { OfReader, OfTable };

class SessionModel {
 public:
  SessionModel(const Parameters& fileParameters, const std::string& fileName, const SlowFile& file)
      : parameters(fileParameters), name(fileName), bytes(file) {}

  ReaderState* makeReader(bool isCached);
  TableState* makeTable(ReaderState* reader, const model::TableEntry* entry, bool isCached, Asked asked);
  TableState* getTableByName(ReaderState* reader, const std::string& tableName, Asked asked);
  TableState* getTableByNumber(ReaderState* reader, long number);
  LineState* makeLine(const model::Line& line, TableState* table);

  // A new table of a kind that is a copy of another.
  TableState* copyTable(TableState* other, bool isCached);

  // Makes target what copied is. Handles of the target show the change.
  static void replaceTable(TableState* target, TableState* copied);

 private:
  Parameters parameters;
  std::string name;
  const SlowFile& bytes;
  std::vector<std::unique_ptr<ReaderState>> readers;
  std::vector<std::unique_ptr<TableState>> tables;
  std::vector<std::unique_ptr<LineState>> lines;
};

// ---- Readers.

void checkUniqueTable(const ReaderState& reader, const std::string& operation);
void checkMultiTable(const ReaderState& reader, const std::string& operation);
TableState* getUniqueTable(const ReaderState& reader);
long getNumberOfReservedTables(const ReaderState& reader);
long getNumberOfTables(const ReaderState& reader);
bool isTableThere(const ReaderState& reader, const std::string& tableName);

// ---- Tables.

model::Line getLineByNumber(TableState& table, long number);

// The line with the key that the first values of those given compose; a value may be missing.
model::Line getLineByKey(TableState& table, const std::vector<std::optional<std::string>>& values, bool isNamed = true);
long getNumberOfItems(TableState& table);
long getPosition(const TableState& table, const std::string& heading);
bool isHeadingThere(const TableState& table, const std::string& heading);
std::string printKeys(const TableState& table);

// ---- Lines.

// What a getter answers: f, i and s are those of floats, integers and strings, F, I and S the same with a default value, e
// asks whether the field is empty.
std::string getField(LineState& line, char getter, long position);

// The default values that getField() takes the capital letters to have.
constexpr double FloatDefault = -0.125;
constexpr long IntDefault = -99;
constexpr const char* StringDefault = "default";

std::string printValueOfKeys(LineState& line);

}  // namespace fuzz
