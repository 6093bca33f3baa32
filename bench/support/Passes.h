// Ways to go over the data lines of a file: the library's, the literal reader's, and those of other programs. All find the
// same.
#pragma once

#include <cstdint>
#include <string>

#include "bench/support/Files.h"
#include "xelcsv/XelCsvReader.h"

namespace bench {

// What a pass found.
struct Found {
  long lines = 0;
  long fields = 0;
  long sum = 0;

  bool isAllOf(const Facts& facts) const { return lines == facts.lines && fields == facts.fields && sum == facts.sum; }
};

// A reader of the library on the file.
XelCsvReader openReader(XelEnv env, const File& file, bool isCached);

// Calls use(table) for each table of a reader.
template <typename Use>
void forEachTable(XelCsvReader& reader, const File& file, Use use) {
  if (!file.input->isMultiTable) {
    XelCsvTableReader table = reader.getReaderForUniqueTableFile();
    use(table);
    table.end();
    return;
  }
  for (XelCsvReader::TableIterator it(reader); it.ok(); ++it) {
    XelCsvTableReader table = *it;
    use(table);
  }
}

// Calls use(line) for each data line.
template <typename Use>
void forEachLine(XelCsvReader& reader, const File& file, Use use) {
  forEachTable(reader, file, [&use](XelCsvTableReader& table) {
    for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) use(*it);
  });
}

// Every data line with the starts of its fields.
Found iterate(XelCsvReader& reader, const File& file);
Found iterateLiterally(const File& file);

// The same, with a getter call for each field.
Found callGetters(XelCsvReader& reader, const File& file);

// A number as bits, to be added up: sums of bits are equal whatever the order.
std::uint64_t bitsOf(double value);
std::uint64_t bitsOf(long value);

// The numeric columns of every data line as numbers, their bits added up.
std::uint64_t addUpNumbers(XelCsvReader& reader, const File& file);

// Tables in the directory of a file of several.
long makeDirectory(XelEnv env, const File& file);
long makeDirectoryLiterally(const File& file);

// Fields that libcsv finds, heading lines included. Not for files with comments or odd separators.
long countFieldsByLibcsv(const File& file);

}  // namespace bench
