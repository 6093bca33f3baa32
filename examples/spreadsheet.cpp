// Reads a file that a spreadsheet wrote where decimals have a comma: semicolons between the fields, carriage returns at the
// ends of the lines, quotes around a text that holds a semicolon.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>

int main() {
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(env, "examples/data/sales.csv", 0, 0, ";", ',');

    double revenue = 0;
    for (const XelCsvLine& line : XelLines(reader)) {
      const double amount = line.getFloatByHeaderOrDefaultValue("Revenue", 0);
      std::printf("%-16s %s %9.2f %4.0f %%\n", line.getStringByHeader("Region"), line.getStringByHeader("Month"),
                  amount, 100 * line.getFloatByHeaderOrDefaultValue("Share", 0));
      revenue += amount;
    }
    std::printf("%-16s %7s %9.2f\n", "in all", "", revenue);

    const XelCsvLine line = XelGetLine(reader, "South; overseas", "2026-01");
    std::printf("\nThe comma is a point when a field is read: %s\n", line.getStringByHeader("Revenue"));
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
