// A slow and obvious model of how tables are read: fgets into a buffer of 10000 bytes, ftell, feof, step by step. It knows
// nothing of the library, and tests compare the library with it.
//
// Whatever can fail throws a Failure. Lines and answers are compared as text, written as in Outcome.h.
#pragma once

#include <array>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace model {

struct Settings {
  bool isMultiTable = false;
  bool isSplit = false;
  std::string separators = ",";
  char decimal = '.';
  char quote = '"';
  char comment = '#';
};

// An exception: its class and its message, which is cut to 499 bytes.
struct Failure {
  Failure(std::string className, const std::string& text) : kind(className), message(text.substr(0, 499)) {}
  std::string kind;
  std::string message;
};

struct Line {
  long number = 0;
  std::vector<std::string> fields;
};

using Buffer = std::array<char, 10000>;

// An open file, closed at the end of the scope. Opening a file that is missing throws.
class Stream {
 public:
  explicit Stream(const std::string& name);
  ~Stream();
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  std::FILE* get() const { return file; }

 private:
  std::FILE* file;
};

struct TableEntry {
  std::string name;
  long offset = 0;
  long lineNumber = 0;
  long endOffset = 0;
};

// The tables of a file of several tables.
std::vector<TableEntry> scanTables(const std::string& file, const Settings& settings);

// A table's columns, keys and region, and the lookups that scan the file.
class Table {
 public:
  // entry is null for the table of a one-table file.
  Table(const std::string& file, const Settings& settings, const TableEntry* entry);

  Line getLineByNumber(long number);
  Line getLineByKey(const std::string& key);
  long getNumberOfItems();

  const std::vector<long>& getKeyPositions() const { return keyPositions; }
  long getNumberOfColumns() const { return numberOfColumns; }

 private:
  friend class Index;
  friend class ScanningIterator;
  friend class IndexIterator;

  bool isNameTested() const { return settings.isSplit && name.has_value(); }
  std::string wording(const std::string& unnamed, const std::string& named) const;
  long skip(std::FILE* stream, char* buffer, long* lineNumber, long* offset) const;
  void formatLine(char* line);
  Line makeLine(const char* buffer, long number) const;
  void testFieldsForKeys(long lineNumber) const;
  std::string composeKey(Line& line) const;

  std::string file;
  Settings settings;
  std::optional<std::string> name;
  bool hasHeading = false;
  long numberOfColumns = 0;
  long numberOfFields = 0;
  std::vector<long> keyPositions;
  long firstDataOffset = 0;
  long firstDataLineNumber = 0;
  long endOffset = 0;
};

// The lookups of a cached table.
class Index {
 public:
  explicit Index(Table& table);

  Line getLineByNumber(long number);
  Line getLineByKey(const std::string& key);
  long getNumberOfItems() const { return static_cast<long>(keys.size()); }

  // The key at which the indexing stopped because an earlier line has it.
  const std::optional<std::string>& getDuplicatedKey() const { return duplicatedKey; }

 private:
  friend class IndexIterator;

  struct Record {
    long offset;
    long lineNumber;
  };

  Table& table;
  std::vector<std::string> keys;
  std::map<std::string, Record> records;
  std::optional<std::string> duplicatedKey;
};

class ScanningIterator {
 public:
  explicit ScanningIterator(Table& table);

  // Takes the position over; the source has ended then.
  explicit ScanningIterator(ScanningIterator* source);

  void next();
  bool isOk() const { return ok; }
  std::optional<Line> getLine() const { return ok ? line : std::nullopt; }

 private:
  void build();
  std::string getName();
  void clear();

  Table* table;
  std::optional<Stream> stream;
  Buffer buffer{};
  std::optional<Line> line;
  bool ok = false;
  long lineNumber = 0;
  long endOffset = 0;
  long offset = 0;
};

class IndexIterator {
 public:
  explicit IndexIterator(Index& index);
  explicit IndexIterator(IndexIterator* source);

  void next();
  bool isOk() const { return ok; }
  std::optional<Line> getLine() const { return ok ? line : std::nullopt; }

 private:
  void read();

  Index* index;
  long position = 0;
  bool ok = false;
  std::optional<Line> line;
};

std::string textOf(const Line& line);
std::string textOf(const std::optional<Line>& line);
inline std::string textOf(long number) { return std::to_string(number); }

// The text of what the operation answers, or "Class | message" when it fails.
template <class Operation>
std::string outcomeOf(Operation operation) {
  try {
    return textOf(operation());
  } catch (const Failure& failure) {
    return failure.kind + " | " + failure.message;
  }
}

}  // namespace model
