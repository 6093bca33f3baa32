#include "tools/text/Number.h"

#include <cstdlib>

namespace xeltools {

namespace {

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

// Takes the digits that text begins with and answers how many.
std::size_t takeDigits(std::string_view& text) {
  std::size_t count = 0;
  while (count < text.size() && isDigit(text[count])) ++count;
  text.remove_prefix(count);
  return count;
}

bool take(std::string_view& text, std::string_view characters) {
  if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

// An exponent, or nothing; false when it has no digits.
bool takeExponent(std::string_view& text) {
  if (!take(text, "eE")) return true;
  take(text, "+-");
  return takeDigits(text) > 0;
}

std::size_t countSignificantDigits(std::string_view text) {
  std::size_t count = 0;
  for (const char byte : text) {
    if (byte == 'e' || byte == 'E') break;
    if (isDigit(byte) && (byte != '0' || count > 0)) ++count;
  }
  return count;
}

long getExponent(std::string_view text) {
  const std::size_t begin = text.find_first_of("eE");
  if (begin == std::string_view::npos) return 0;
  return std::strtol(std::string(text.substr(begin + 1)).c_str(), nullptr, 10);
}

}  // namespace

bool isNumber(std::string_view text) {
  if (text == "+INF" || text == "-INF" || text == "+Inf" || text == "-Inf" || text == "+Infinity" ||
      text == "-Infinity" || text == "+1.#INF" || text == "-1.#INF") {
    return true;
  }
  take(text, "+-");
  const std::size_t whole = takeDigits(text);
  const std::size_t fraction = take(text, ".") ? takeDigits(text) : 0;
  return whole + fraction > 0 && takeExponent(text) && text.empty();
}

bool isJsonNumber(std::string_view text) {
  take(text, "-");
  const bool beginsWithZero = !text.empty() && text.front() == '0';
  const std::size_t whole = takeDigits(text);
  if (whole == 0 || (beginsWithZero && whole > 1)) return false;
  if (take(text, ".") && takeDigits(text) == 0) return false;
  return takeExponent(text) && text.empty();
}

bool isPlainInteger(std::string_view text) {
  const std::size_t digitsThatFit = 18;
  const bool isNegative = !text.empty() && text.front() == '-';
  const std::size_t digits = text.size() - (isNegative ? 1 : 0);
  return digits <= digitsThatFit && isJsonNumber(text) && text != "-0" &&
         text.find_first_of(".eE") == std::string_view::npos;
}

bool isPlainReal(std::string_view text) {
  const std::size_t digitsThatStay = 15;
  const long exponentThatStays = 250;
  const std::size_t digits = countSignificantDigits(text);
  const bool isNegativeZero = digits == 0 && text.substr(0, 1) == "-";
  return text.size() < 40 && isJsonNumber(text) && digits <= digitsThatStay && !isNegativeZero &&
         std::labs(getExponent(text)) <= exponentThatStays;
}

// In tenths of the unit, for the point of a real number would follow the locale.
std::string formatBytes(long bytes) {
  if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  const auto countTenths = [&](long unit) { return (bytes * 10 + unit / 2) / unit; };
  long unit = 1000;
  std::string name = "kB";
  for (const char* const larger : {"MB", "GB", "TB"}) {
    if (countTenths(unit) < 10000) break;
    unit *= 1000;
    name = larger;
  }
  const long tenths = countTenths(unit);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " " + name;
}

}  // namespace xeltools
