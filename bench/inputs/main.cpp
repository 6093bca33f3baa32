// Generates the files that benchmarks read: xelcsv-bench-data FOLDER [DIVISOR]
#include <cstdlib>
#include <iostream>

#include "bench/support/Files.h"

int main(int count, char** arguments) {
  const long divisor = count > 2 ? std::strtol(arguments[2], nullptr, 10) : 1;
  if (count < 2 || divisor < 1) {
    std::cerr << "usage: xelcsv-bench-data FOLDER [DIVISOR]\n";
    return 2;
  }
  bench::generateFiles(arguments[1], divisor);
  return 0;
}
