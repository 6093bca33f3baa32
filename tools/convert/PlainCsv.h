// Plain CSV as other programs write and read it (RFC 4180): quotes around fields, doubled inside, line ends within them.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace xeltools {

// Appends a field to a record, in quotes where it needs them.
void appendPlainField(std::string& record, std::string_view field, char separator);

// The fields as a record, without an end of line. One empty field is a pair of quotes, for an empty line is no record.
std::string makePlainRecord(const std::vector<std::string>& fields, char separator);

// Reads the records of a file.
class PlainCsvReader {
 public:
  // Throws UserError when the file cannot be opened.
  PlainCsvReader(const std::string& file, char separator);

  // The next record; false at the end of the file. An empty line is a record without fields. A mark of UTF-8 at the start
  // of the file is left out. Throws UserError for a quote that is not closed.
  bool read(std::vector<std::string>& fields);

  // Line of the file, from 1, on which the record read last began.
  long getLine() const { return recordLine; }

 private:
  struct Closer {
    void operator()(std::FILE* opened) const { std::fclose(opened); }
  };

  int next();
  void readQuoted(std::string& field);

  std::string name;
  char separator;
  std::unique_ptr<std::FILE, Closer> stream;
  long line = 1;
  long recordLine = 0;
  int waiting = EOF;  // the byte that was read ahead
};

}  // namespace xeltools
