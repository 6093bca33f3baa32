// Turns a table into a dense matrix by its keys, which are two integers. A pair without a line is 0.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>
#include <vector>

namespace {

class Matrix {
 public:
  explicit Matrix(long newSize) : size(newSize), cells(static_cast<std::size_t>(newSize * newSize)) {}
  long getSize() const { return size; }
  double& at(long row, long column) { return cells[static_cast<std::size_t>(row * size + column)]; }

 private:
  long size;
  std::vector<double> cells;
};

// The zones are numbered from 1 to size.
Matrix readMatrix(XelCsvReader& reader, long size) {
  Matrix matrix(size);
  const long trips = reader.getPosition("trips");
  for (long from = 1; from <= size; ++from) {
    for (long to = 1; to <= size; ++to) {
      const auto line = XelFindLine(reader, from, to);
      if (line) matrix.at(from - 1, to - 1) = line->getFloatByPosition(trips);
    }
  }
  return matrix;
}

// The same in one walk, which is faster where most pairs have a line, and needs no index.
Matrix readMatrixInOneWalk(XelCsvReader& reader, long size) {
  Matrix matrix(size);
  for (const XelCsvLine& line : XelLines(reader)) {
    matrix.at(line.getIntByHeader("from") - 1, line.getIntByHeader("to") - 1) = line.getFloatByHeader("trips");
  }
  return matrix;
}

}  // namespace

int main() {
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(env, "examples/data/trips.csv");
    const long zones = 4;
    Matrix trips = readMatrix(reader, zones);
    Matrix same = readMatrixInOneWalk(reader, zones);
    bool isSame = true;
    for (long from = 0; from < zones; ++from) {
      for (long to = 0; to < zones; ++to) {
        std::printf("%5.0f", trips.at(from, to));
        isSame = isSame && trips.at(from, to) == same.at(from, to);
      }
      std::printf("\n");
    }
    std::printf("both ways bring the same: %s\n", isSame ? "yes" : "no");
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
