#include "tools/sniff/Sample.h"

#include <algorithm>

#include "tools/text/Words.h"

namespace xeltools {

namespace {

constexpr std::size_t MostLines = 5000;

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t") == std::string_view::npos; }

}  // namespace

Sample::Sample(std::string_view text, bool isWhole) {
  hasByteOrderMark = beginsWith(text, "\xEF\xBB\xBF");
  isUtf16 = beginsWith(text, "\xFF\xFE") || beginsWith(text, "\xFE\xFF");
  hasNul = text.find('\0') != std::string_view::npos;
  if (hasByteOrderMark) text.remove_prefix(3);
  std::size_t returns = 0;
  while (!text.empty() && lines.size() < MostLines) {
    const std::size_t end = text.find('\n');
    // A line that the sample ends in is not known whole.
    if (end == std::string_view::npos && !isWhole && !lines.empty()) break;
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.empty() && line.back() == '\r') {
      line.remove_suffix(1);
      ++returns;
    }
    if (!isBlank(line)) lines.push_back(line);
  }
  endsWithReturns = returns > lines.size() / 2;
}

std::vector<std::string_view> splitLine(std::string_view line, char separator, char quote) {
  std::vector<std::string_view> fields;
  std::size_t begin = 0;
  bool isQuoted = false;
  for (std::size_t position = 0; position < line.size(); ++position) {
    if (line[position] == quote) isQuoted = !isQuoted;
    if (isQuoted || line[position] != separator) continue;
    fields.push_back(line.substr(begin, position - begin));
    while (separator == ' ' && position + 1 < line.size() && line[position + 1] == ' ') ++position;
    begin = position + 1;
  }
  fields.push_back(line.substr(begin));
  return fields;
}

std::string_view cutAtBar(std::string_view field) { return trimBlanks(field.substr(0, field.find('|'))); }

}  // namespace xeltools
