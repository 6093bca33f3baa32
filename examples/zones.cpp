// Reads the time zones of the system: a file whose tables are spread over it (table splitting), without an index.
//
//   zones FILE [--check]
//
// On Debian the package tzdata has the file: /usr/share/zoneinfo/tzdata.zi. Blanks separate its fields and the first
// one tells the kind of the line, so that the kinds are tables: R (rules), Z (zones) and L (links, that is other
// names). A zone goes on in lines that begin with an offset from UTC. They stand between the lines of Z, which is split
// thereby, and make a table per offset. With --check the numbers, which change from one version to the next, are not
// printed.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>

namespace {

// Prints how many lines the table has and the first ones with their places in the file; answers whether a walk meets as
// many lines as are counted.
bool showTable(XelCsvReader& reader, const char* name, bool print) {
  XelScoped<XelCsvTableReader> table(reader.getTableByName(name));
  const long lines = table->getNumberOfItems();
  if (print) std::printf("%s  %ld lines, such as\n", name, lines);
  long count = 0;
  for (XelCsvTableReader::LineIterator it(*table); it.ok(); ++it, ++count) {
    if (!print || count >= 3) continue;
    const XelCsvLine line = *it;
    std::printf("%6ld ", line.getLineNumber());
    for (long k = 1; k < line.getNumberOfFields(); ++k) std::printf(" %s", line.getStringByPosition(k));
    std::printf("\n");
  }
  return count == lines;
}

// The names that the lines of a table bring: a zone has its name at position 1, a link at position 2.
void addNames(XelCsvReader& reader, const char* tableName, long position, std::set<std::string>& names) {
  XelScoped<XelCsvTableReader> table(reader.getTableByName(tableName));
  for (XelCsvTableReader::LineIterator it(*table); it.ok(); ++it) names.insert((*it).getStringByPosition(position));
}

// Answers whether every link leads to a name that there is.
bool showLinks(XelCsvReader& reader, const char* target, bool print) {
  std::set<std::string> names;
  addNames(reader, "Z", 1, names);
  addNames(reader, "L", 2, names);

  long broken = 0;
  if (print) std::printf("other names of %s:", target);
  XelScoped<XelCsvTableReader> links(reader.getTableByName("L"));
  for (XelCsvTableReader::LineIterator it(*links); it.ok(); ++it) {
    const XelCsvLine link = *it;
    if (names.count(link.getStringByPosition(1)) == 0) ++broken;
    if (print && std::strcmp(link.getStringByPosition(1), target) == 0) {
      std::printf(" %s", link.getStringByPosition(2));
    }
  }
  std::printf("%severy link leads to a name: %s\n", print ? "\n" : "", broken == 0 ? "yes" : "no");
  return broken == 0;
}

}  // namespace

int main(int count, char** arguments) {
  const bool check = count == 3 && std::strcmp(arguments[2], "--check") == 0;
  if (count != 2 && !check) {
    std::fprintf(stderr, "usage: zones FILE [--check]\n");
    return 2;
  }
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(*env, arguments[1], 1, 1, " ", '.', '"', '#', 0);
    bool good = true;
    for (const char* name : {"R", "Z", "L"}) good = showTable(*reader, name, !check) && good;
    if (!check) std::printf("and %ld tables of lines that begin with an offset\n\n", reader->getNumberOfTables() - 3);
    std::printf("R, Z, L are walked in as many lines as are counted: %s\n", good ? "yes" : "no");
    good = showLinks(*reader, "Europe/London", !check) && good;
    return good ? 0 : 1;
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
