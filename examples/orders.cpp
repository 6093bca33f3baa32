// Reads a file whose tables are spread over it (table splitting): orders, each followed by its items.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>
#include <map>

namespace {

// What the items of each order come to, by the number of the order.
std::map<long, double> sumItems(XelCsvReader& reader) {
  std::map<long, double> sums;
  XelScoped items(reader.getTableByName("item"));
  for (const XelCsvLine& item : XelLines(items)) {
    sums[item.getIntByHeader("order")] += item.getFloatByHeader("price") * item.getFloatByHeader("pieces");
  }
  return sums;
}

void printOrders(XelCsvReader& reader) {
  const std::map<long, double> sums = sumItems(reader);
  XelScoped orders(reader.getTableByName("order"));
  for (const auto& [number, sum] : sums) {
    const XelCsvLine order = XelGetLine(orders, number);
    std::printf("%ld  %s  %-8s %7.2f\n", number, order.getStringByHeader("day"), order.getStringByHeader("customer"),
                sum);
  }
}

}  // namespace

int main() {
  const char* file = "examples/data/orders.csv";
  XelScoped<XelEnv> env;
  try {
    XelScoped<XelCsvReader> reader(env, file, 1, 1);  // several tables, and their lines may be spread over the file
    printOrders(reader);
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
  try {
    XelScoped<XelCsvReader> reader(env, file, 1, 0);
    return 1;
  } catch (const XelCsvReader::XelDuplicatedTableException& problem) {
    std::printf("\nWithout table splitting the file is refused:\n%s\n", problem.getMessage());
  }
}
