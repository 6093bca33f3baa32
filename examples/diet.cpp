// Turns a diet problem, read from a file of several tables, into a linear program in LP format:
//
//   diet FILE | glpsol --lp /dev/stdin
#include <xelcsv/XelCsvComfort.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr double UsualMost = 4;  // portions a day, where the file says nothing

struct Food {
  std::string name;
  double cost;  // euro per portion
  double most;  // portions, may be infinite
};

std::vector<Food> readFoods(XelCsvReader& reader) {
  XelScoped table(reader.getTableByName("foods"));
  std::vector<Food> foods;
  for (const XelCsvLine& line : XelLines(table)) {
    foods.push_back({line.getStringByHeader("food"), line.getFloatByHeader("cost"),
                     line.getFloatByHeaderOrDefaultValue("most", UsualMost)});
  }
  return foods;
}

// Writes what all foods together bring of a nutrient, as the left side of a row. A food that has none of it has no line.
void writeSum(const std::vector<Food>& foods, XelCsvTableReader& contents, const char* nutrient) {
  const char* sign = "";
  for (const Food& food : foods) {
    if (const auto line = XelFindLine(contents, food.name, nutrient)) {
      std::printf("%s %g %s", sign, line->getFloatByHeader("amount"), food.name.c_str());
      sign = " +";
    }
  }
}

void writeRows(XelCsvReader& reader, const std::vector<Food>& foods) {
  XelScoped nutrients(reader.getTableByName("nutrients"));
  XelScoped contents(reader.getTableByName("contents"));
  for (const XelCsvLine& line : XelLines(nutrients)) {
    const char* name = line.getStringByHeader("nutrient");
    std::printf(" %s_least:", name);
    writeSum(foods, contents, name);
    std::printf(" >= %g\n", line.getFloatByHeader("least"));
    if (line.emptyFieldByHeader("most")) continue;
    std::printf(" %s_most:", name);
    writeSum(foods, contents, name);
    std::printf(" <= %g\n", line.getFloatByHeader("most"));
  }
}

void writeModel(XelCsvReader& reader) {
  const std::vector<Food> foods = readFoods(reader);
  std::printf("Minimize\n cost:");
  const char* sign = "";
  for (const Food& food : foods) {
    std::printf("%s %g %s", sign, food.cost, food.name.c_str());
    sign = " +";
  }
  std::printf("\nSubject To\n");
  writeRows(reader, foods);
  std::printf("Bounds\n");
  for (const Food& food : foods) {
    if (!std::isinf(food.most)) std::printf(" %s <= %g\n", food.name.c_str(), food.most);
  }
  std::printf("End\n");
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: diet FILE\n");
    return 2;
  }
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(env, arguments[1], 1);
    writeModel(reader);
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
