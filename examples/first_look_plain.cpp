// The first look once more, without the comfort header: what was made is ended, and values are counted.
#include <xelcsv/XelCsvReader.h>

#include <cstdio>

int main() {
  XelEnv env;
  int status = 0;
  try {
    XelCsvReader reader(env, "examples/data/fruit.csv");
    std::printf("best pears: %.2f\n", reader.getLineByKey(2, "pear", "A").getFloatByHeader("price"));

    for (XelCsvReader::LineIterator it(reader); it.ok(); ++it) {
      const XelCsvLine line = *it;
      std::printf("%-5s  %s  %.2f  %4ld\n", line.getStringByHeader("fruit"), line.getStringByHeader("grade"),
                  line.getFloatByHeader("price"), line.getIntByHeaderOrDefaultValue("stock", -1));
    }
    reader.end();
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    status = 1;
  }
  env.end();  // gives all memory back, also what an exception left behind
  return status;
}
