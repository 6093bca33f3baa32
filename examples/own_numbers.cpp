// Reads numbers that the getters do not know: fractions, per cent, marks between thousands; and none that is wrong. A field
// is read as text, and a class of one's own around a line makes numbers of it. (What is behind a line is hidden by the
// library, so there is no deriving from it.)
#include <xelcsv/XelCsvComfort.h>

#include <charconv>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace {

// A text that is read from its front.
class Scan {
 public:
  explicit Scan(std::string_view text) : rest(text) {}

  // The number in front, without regard to the process's locale.
  std::optional<double> takeNumber() {
    takeBlanks();
    double value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (error != std::errc()) return std::nullopt;
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    return value;
  }

  // Whether this character stood in front; it is taken then.
  bool take(char character) {
    takeBlanks();
    if (rest.empty() || rest.front() != character) return false;
    rest.remove_prefix(1);
    return true;
  }

  bool isAtEnd() const { return rest.empty(); }

 private:
  void takeBlanks() {
    while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
  }

  std::string_view rest;
};

// "3/8", "1 1/2", "0.05"
std::optional<double> readFraction(std::string_view text) {
  Scan scan(text);
  const std::optional<double> first = scan.takeNumber();
  if (!first) return std::nullopt;
  if (scan.isAtEnd()) return first;
  const std::optional<double> above = scan.take('/') ? std::nullopt : scan.takeNumber();
  if (above && !scan.take('/')) return std::nullopt;
  const std::optional<double> below = scan.takeNumber();
  if (!below || !scan.isAtEnd()) return std::nullopt;
  return above ? *first + *above / *below : *first / *below;
}

// "2.5 %", as a share of 1
std::optional<double> readShare(std::string_view text) {
  Scan scan(text);
  const std::optional<double> share = scan.takeNumber();
  if (!share || !scan.take('%') || !scan.isAtEnd()) return std::nullopt;
  return *share / 100;
}

// "1'250"
std::optional<double> readThousands(std::string_view text) {
  std::string digits;
  for (const char c : text) {
    if (c != '\'') digits += c;
  }
  Scan scan(digits);
  const std::optional<double> value = scan.takeNumber();
  return scan.isAtEnd() ? value : std::nullopt;
}

// A line whose getters know these numbers, and throw for a text that is none: the library's would answer 0. It lives as
// long as the line.
class StockLine {
 public:
  explicit StockLine(const XelCsvLine& newLine) : line(newLine) {}

  const char* getText(const char* heading) const { return line.getStringByHeader(heading); }
  double getFraction(const char* heading) const { return get(heading, readFraction); }
  double getThousands(const char* heading) const { return get(heading, readThousands); }
  double getShareOr(double value, const char* heading) const {
    return line.emptyFieldByHeader(heading) ? value : get(heading, readShare);
  }

 private:
  double get(const char* heading, std::optional<double> (*read)(std::string_view)) const {
    const std::optional<double> value = read(getText(heading));
    if (value) return *value;
    throw std::runtime_error("line " + std::to_string(line.getLineNumber()) + ", " + heading + ": '" +
                             getText(heading) + "' is no number");
  }

  const XelCsvLine& line;
};

void printStock(const StockLine& stock) {
  const double diameter = stock.getFraction("diameter");
  std::printf("%-6s %6.0f pieces of %.3f inch, waste %5.2f %%\n", stock.getText("article"),
              stock.getThousands("pieces"), diameter, 100 * stock.getShareOr(0, "waste"));
}

}  // namespace

int main() {
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(env, "examples/data/stock.csv");
    for (const XelCsvLine& line : XelLines(reader)) {
      try {
        printStock(StockLine(line));
      } catch (const std::runtime_error& problem) {
        std::printf("%s\n", problem.what());
      }
    }
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
