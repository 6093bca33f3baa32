// Reads a file of one table: one line by its two keys, then every line.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>

int main() {
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(env, "examples/data/fruit.csv");
    std::printf("best pears: %.2f\n", XelGetLine(reader, "pear", "A").getFloatByHeader("price"));

    for (const XelCsvLine& line : XelLines(reader)) {
      std::printf("%-5s  %s  %.2f  %4ld\n", line.getStringByHeader("fruit"), line.getStringByHeader("grade"),
                  line.getFloatByHeader("price"), line.getIntByHeaderOrDefaultValue("stock", -1));
    }
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
