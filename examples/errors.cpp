// What goes wrong, what is said, and that the reader goes on working.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>

namespace {

// The price of a fruit, however the question was put.
void printPrice(XelCsvReader& reader, const char* fruit, const char* grade, const char* heading) {
  try {
    std::printf("%s %s: %.2f\n", fruit, grade, XelGetLine(reader, fruit, grade).getFloatByHeader(heading));
  } catch (const XelCsvReader::XelLineNotFoundException& problem) {
    std::printf("no such line:   %s\n", problem.getMessage());
  } catch (const XelCsvReader::XelColumnHeaderNotFoundException& problem) {
    std::printf("no such column: %s\n", problem.getMessage());
  }
}

}  // namespace

int main() {
  XelScoped<XelEnv> env;
  try {
    XelScoped<XelCsvReader> reader(env, "examples/data/fruit.csv");
    printPrice(reader, "pear", "B", "price");
    printPrice(reader, "pear", "A", "Price");
    printPrice(reader, "pear", "A", "price");

    // Where a missing line is nothing unusual it need not be an exception.
    std::printf("quinces: %s\n", XelFindLine(reader, "quince", "A") ? "yes" : "none");

    XelScoped<XelCsvReader> other(env, "examples/data/vegetables.csv");
  } catch (const XelQuietException& problem) {  // the base of all of them, and itself a std::exception
    std::printf("no such file:   %s\n", problem.getMessage());
  }
}
