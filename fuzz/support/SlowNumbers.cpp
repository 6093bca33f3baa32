#include "fuzz/support/SlowNumbers.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <limits>

namespace fuzz {

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

bool isOneOf(const std::string& text, std::initializer_list<const char*> spellings) {
  for (const char* spelling : spellings) {
    if (text == spelling) return true;
  }
  return false;
}

}  // namespace

double slowFloat(const std::string& text) {
  if (isOneOf(text, {"+INF", "+1.#INF", "+Inf", "+Infinity"})) return Infinity;
  if (isOneOf(text, {"-INF", "-1.#INF", "-Inf", "-Infinity"})) return -Infinity;
  return std::strtod(text.c_str(), nullptr);
}

double slowFloatOrUnbounded(const std::string& text) { return text == "U" ? Infinity : slowFloat(text); }

// Stops as soon as the value is beyond 32 bits, so that no sum overflows.
SlowInt slowInt(const std::string& text) {
  constexpr long Base = 10;
  std::size_t at = 0;
  while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at])) != 0) ++at;
  const bool isNegative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  long value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    const long digit = text[at] - '0';
    value = value * Base + (isNegative ? -digit : digit);
    if (value > INT32_MAX || value < INT32_MIN) return {0, false};
  }
  return {value, true};
}

std::string shownFloat(double value) {
  if (std::isnan(value)) return "nan";
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%a", value);
  return text.data();
}

}  // namespace fuzz
