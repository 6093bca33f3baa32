// Lists the tables of Unicode's file of property value aliases and reads some of them, by number, by name and by key.
//
//   unicode_tables FILE [--check]
//
// On Debian the package unicode-data has the file: /usr/share/unicode/PropertyValueAliases.txt. It holds a table per
// property; a line is "property ; short name ; long name", and a comment behind the fields is part of the last one.
// With --check the list, which grows from one version of Unicode to the next, is checked and not printed.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>
#include <cstring>

namespace {

// Lines that a walk over the table meets.
long countByWalk(const XelCsvTableReader& table) {
  long count = 0;
  for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) ++count;
  return count;
}

// Answers whether a walk over each table meets as many lines as its index holds, and every table has its number.
bool listTables(XelCsvReader& reader, bool print) {
  long number = 0;
  bool good = true;
  for (XelCsvReader::TableIterator it(reader); it.ok(); ++it, ++number) {
    XelCsvTableReader table = *it;
    XelScoped<XelCsvTableReader> same(reader.getTableByNumber(number));
    good = good && countByWalk(table) == table.getNumberOfItems() &&
           std::strcmp(table.getNameOfTable(), same->getNameOfTable()) == 0;
    if (print) {
      std::printf("%3ld %-8s %4ld x %ld%s", number, table.getNameOfTable(), table.getNumberOfItems(),
                  table.getNumberOfColumns(), number % 4 == 3 ? "\n" : "   ");
    }
  }
  if (print && number % 4 != 0) std::printf("\n");
  return good && number == reader.getNumberOfTables();
}

}  // namespace

int main(int count, char** arguments) {
  const bool check = count == 3 && std::strcmp(arguments[2], "--check") == 0;
  if (count != 2 && !check) {
    std::fprintf(stderr, "usage: unicode_tables FILE [--check]\n");
    return 2;
  }
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(*env, arguments[1], 1, 0, ";", '.', '"', '#');

    if (!check) std::printf("%ld tables: number, name, lines x columns\n", reader->getNumberOfTables());
    const bool good = listTables(*reader, !check);
    std::printf("every table is walked in as many lines as it has: %s\n", good ? "yes" : "no");

    std::printf("\nea, East_Asian_Width, line by line:\n");
    XelScoped<XelCsvTableReader> widths(reader->getTableByName("ea"));
    for (XelCsvTableReader::LineIterator it(*widths); it.ok(); ++it) {
      std::printf("  %-2s  %s\n", (*it).getStringByPosition(1), (*it).getStringByPosition(2));
    }

    std::printf("\nage, in which version a character came, lines 0 to 2:\n");
    XelScoped<XelCsvTableReader> ages(reader->getTableByName("age"));
    for (long number = 0; number < 3; ++number) {
      const XelCsvLine age = ages->getLineByNumber(number);
      std::printf("  %.1f  %s\n", age.getFloatByPosition(1), age.getStringByPosition(2));
    }

    // A table without a key line is found by all its columns together.
    XelScoped<XelCsvTableReader> classes(reader->getTableByName("ccc"));
    const XelCsvLine above = classes->getLineByKey(3, "230", "A", "Above");
    std::printf("\nccc, by the key 230, A, Above: class %ld is called %s\n", above.getIntByPosition(1),
                above.getStringByPosition(3));
    return good ? 0 : 1;
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
