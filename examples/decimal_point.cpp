// Reads numbers right in a program that sets a locale: three ways, any one of which is enough.
#include <xelcsv/XelCsvComfort.h>

#include <charconv>
#include <clocale>
#include <cstdio>
#include <string>

class DecimalPointInThisThread {
 public:
  DecimalPointInThisThread()
      : numbers(newlocale(LC_NUMERIC_MASK, "C", duplocale(LC_GLOBAL_LOCALE))), former(uselocale(numbers)) {}
  ~DecimalPointInThisThread() {
    uselocale(former);
    freelocale(numbers);
  }
  DecimalPointInThisThread(const DecimalPointInThisThread&) = delete;
  DecimalPointInThisThread& operator=(const DecimalPointInThisThread&) = delete;

 private:
  locale_t numbers;
  locale_t former;
};

double getPrice(const XelCsvLine& line) {
  const DecimalPointInThisThread point;
  return line.getFloatByHeader("price");
}

int main() {
  std::setlocale(LC_ALL, "");  // that of the user, who may write decimals with a comma
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(env, "examples/data/fruit.csv");
    const XelCsvLine line = XelGetLine(reader, "pear", "A");
    std::printf("in cents: %.0f", 100 * getPrice(line));

    const std::string text = line.getStringByHeader("price");
    double price = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), price);
    std::printf(" %.0f", 100 * price);

    std::setlocale(LC_ALL, "");
    std::setlocale(LC_NUMERIC, "C");
    std::printf(" %.0f\n", 100 * line.getFloatByHeader("price"));
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
