// How a data file is read, step by step, with nothing but fgets, ftell and strchr: short, plain and slow. Benchmarks say
// how much faster the library is, tests compare the two. Table splitting is left out.
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace literal {

constexpr long LineSize = 10000;
using Buffer = std::array<char, LineSize>;

struct Settings {
  std::string fileName;
  bool isMultiTable = false;
  std::string separators = ",";
  char decimal = '.';
  char quote = '"';
  char comment = '#';
};

// An open file, closed at the end of the scope.
class Stream {
 public:
  explicit Stream(const std::string& fileName);
  ~Stream() { std::fclose(file); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  std::FILE* get() const { return file; }

 private:
  std::FILE* file;
};

// A table of a file of several: where its first line is, and where its last one starts.
struct Table {
  std::string name;
  long offset = 0;
  long lineNumber = 0;
  long endOffset = 0;
};

// Where the data of a table is, and which columns are its key.
struct Zone {
  long firstDataOffset = 0;
  long firstDataLineNumber = 0;
  long endOffset = 0;
  std::vector<long> keyPositions;
};

// A line of fields, back to back in text.
struct Line {
  Buffer text;
  std::array<char*, LineSize> fields;
  long numberOfFields = 0;
  long lineNumber = 0;
};

// Reads the next line that is neither a comment nor empty; false at the end of the file.
bool skipCommentAndEmptyLines(std::FILE* file, Buffer& buffer, char comment, long& lineNumber, long& offset);

// Formats a line in place and answers its number of fields.
long formatLine(char* line, const Settings& settings, char maxSeparator);

// The greatest separator, 0 when there is none.
char maxSeparatorOf(const Settings& settings);

// The tables of a file of several, in its order, up to a name that comes back.
std::vector<Table> scanTables(const Settings& settings);

// Reads the heading zone of a table; null for the table of a file of one.
Zone readHeadingZone(const Settings& settings, const Table* table);

// The lines of a table, one after the other.
class Walk {
 public:
  Walk(const Settings& fileSettings, const Zone& tableZone);

  // Goes to the next line; false behind the last one.
  bool next();
  const Line& getLine() const { return line; }

  // Offset of the line.
  long getOffset() const { return offset; }

 private:
  const Settings& settings;
  const Zone& zone;
  Stream stream;
  char maxSeparator;
  long offset;
  Line line;
};

// The fields at the key positions without the spaces around them, joined with "-".
std::string composeKey(const Line& line, const Zone& zone);

// Number of lines of a table.
long countLines(const Settings& settings, const Zone& zone);

// Number in the file of the first line with the key; -1 without one. A record of the line is made for each one read.
long findLine(const Settings& settings, const Zone& zone, const std::string& key);

// Offsets of lines by key: a table of chains that doubles its buckets when they hold two items each.
class Index {
 public:
  // Reads a table; stops at a key that comes again.
  Index(const Settings& fileSettings, const Zone& tableZone);
  ~Index();
  Index(const Index&) = delete;
  Index& operator=(const Index&) = delete;

  long getNumberOfItems() const { return count; }

  // Reads the line with the key from the file; false without one.
  bool read(const std::string& key, Line& line) const;

 private:
  struct Item {
    Item* next;
    std::string key;
    long offset;
    long lineNumber;
  };

  static unsigned long hash(const std::string& key);
  const Item* find(const std::string& key) const;
  void add(const std::string& key, long offset, long lineNumber);
  void grow();

  const Settings& settings;
  std::vector<Item*> buckets = std::vector<Item*>(128, nullptr);
  long count = 0;
};

}  // namespace literal
