#include "fuzz/support/SlowLine.h"

namespace fuzz {

namespace {

// The line without its end and what follows it.
std::string withoutEnd(const std::string& line) {
  std::string text;
  for (const char c : line) {
    if (c == '\0' || c == '\n' || c == '\r') break;
    text += c;
  }
  return text;
}

bool isSeparator(char c, const Characters& characters) {
  for (const char separator : characters.separators) {
    if (separator == '\0') return false;
    if (separator == c) return true;
  }
  return false;
}

}  // namespace

std::vector<std::string> slowFields(const std::string& line, const Characters& characters) {
  std::vector<std::string> fields(1);
  long quotes = 0;
  bool afterSeparator = false;
  for (const char c : withoutEnd(line)) {
    const bool inQuotes = quotes % 2 == 1;
    if (isSeparator(c, characters)) {
      if (inQuotes) {
        fields.back() += c;  // text like any other
      } else if (c == ' ' && afterSeparator) {
        // Blanks after a separator are part of it.
      } else {
        fields.emplace_back();
      }
      afterSeparator = true;
      continue;
    }
    afterSeparator = false;
    if (c == characters.quote) {
      ++quotes;
    } else if (c == characters.decimal) {
      fields.back() += '.';
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

std::string slowText(const std::vector<std::string>& fields) {
  std::string text;
  for (const std::string& field : fields) text += field + '\0';
  return text;
}

std::string slowTrim(std::string text) {
  while (!text.empty() && text.front() == ' ') text.erase(0, 1);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

std::string slowFirstField(const std::string& line, const Characters& characters) {
  std::string field;
  for (const char c : withoutEnd(line)) {
    if (isSeparator(c, characters)) break;
    field += c;
  }
  return field;
}

bool slowIsEmpty(const std::string& line) {
  for (const char c : withoutEnd(line)) {
    if (c != ' ' && c != '\t') return false;
  }
  return true;
}

}  // namespace fuzz
