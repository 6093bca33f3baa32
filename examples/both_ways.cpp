// The same questions with the plain interface and with the comfort header.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>
#include <string>

namespace {

constexpr const char* File = "examples/data/diet.csv";

// ---- Ends.

long countFoodsPlain() {
  XelEnv env;
  long count = 0;
  try {
    XelCsvReader reader(env, File, 1);
    XelCsvTableReader foods = reader.getTableByName("foods");
    count = foods.getNumberOfItems();
    foods.end();
    reader.end();
  } catch (...) {
    env.end();  // brings back what the lines above did not get to end
    throw;
  }
  env.end();
  return count;
}

long countFoods() {
  XelScoped<XelEnv> env;
  XelScoped<XelCsvReader> reader(env, File, 1);
  XelScoped foods(reader->getTableByName("foods"));
  return foods->getNumberOfItems();
}

// ---- Walks.

double sumCostsPlain(const XelCsvTableReader& foods) {
  double sum = 0;
  for (XelCsvTableReader::LineIterator it(foods); it.ok(); ++it) sum += (*it).getFloatByHeader("cost");
  return sum;
}

double sumCosts(const XelCsvTableReader& foods) {
  double sum = 0;
  for (const XelCsvLine& line : XelLines(foods)) sum += line.getFloatByHeader("cost");
  return sum;
}

long countTablesPlain(const XelCsvReader& reader) {
  long count = 0;
  for (XelCsvReader::TableIterator it(reader); it.ok(); ++it) ++count;
  return count;
}

long countTables(const XelCsvReader& reader) {
  long count = 0;
  for (XelCsvTableReader& table : XelTables(reader)) count += table.isEmpty() ? 0 : 1;
  return count;
}

// ---- Keys, and lines that are not there.

double getAmountPlain(XelCsvTableReader& contents, const std::string& food, const std::string& nutrient) {
  try {
    return contents.getLineByKey(2, food.c_str(), nutrient.c_str()).getFloatByHeader("amount");
  } catch (const XelCsvReader::XelLineNotFoundException&) {
    return 0;  // which hides a call with too few values, too
  }
}

double getAmount(XelCsvTableReader& contents, const std::string& food, const std::string& nutrient) {
  const auto line = XelFindLine(contents, food, nutrient);
  return line ? line->getFloatByHeader("amount") : 0;
}

// ---- Lines that are kept.

std::string comparePrices(XelCsvTableReader& foods) {
  XelScoped<XelCsvLine> bread;
  bread->copy(XelGetLine(foods, "bread"));
  const XelCsvLine milk = XelGetLine(foods, "milk");  // the line that bread was copied from is gone now
  return bread->getFloatByHeader("cost") > milk.getFloatByHeader("cost") ? "bread" : "milk";
}

}  // namespace

int main() {
  try {
    std::printf("foods:  %ld, %ld\n", countFoodsPlain(), countFoods());
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(env, File, 1);
    std::printf("tables: %ld, %ld\n", countTablesPlain(reader), countTables(reader));
    XelScoped foods(reader->getTableByName("foods"));
    std::printf("costs:  %.2f, %.2f\n", sumCostsPlain(foods), sumCosts(foods));
    XelScoped contents(reader->getTableByName("contents"));
    std::printf("iron:   %.1f, %.1f\n", getAmountPlain(contents, "spinach", "iron"),
                getAmount(contents, "spinach", "iron"));
    std::printf("none:   %.1f, %.1f\n", getAmountPlain(contents, "milk", "iron"), getAmount(contents, "milk", "iron"));
    std::printf("dearer: %s\n", comparePrices(foods).c_str());
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
