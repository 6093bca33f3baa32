#include "tools/text/Words.h"

#include <algorithm>

#include "tools/Errors.h"

namespace xeltools {

namespace {

bool isBlank(char byte) { return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r'; }

// Reads one word; position is behind it afterwards.
std::string readWord(std::string_view text, std::size_t& position, const std::string& origin) {
  std::string word;
  char quote = 0;
  for (; position < text.size() && (quote != 0 || !isBlank(text[position])); ++position) {
    const char byte = text[position];
    if (byte == quote) {
      quote = 0;
    } else if (quote == 0 && (byte == '"' || byte == '\'')) {
      quote = byte;
    } else if (quote == 0 && byte == '\\' && position + 1 < text.size()) {
      word += text[++position];
    } else {
      word += byte;
    }
  }
  if (quote != 0) throw UserError(origin + ": a quote " + quote + " is not closed");
  return word;
}

}  // namespace

std::vector<std::string> splitOptions(std::string_view text, const std::string& origin) {
  std::vector<std::string> words;
  for (std::size_t position = 0;;) {
    while (position < text.size() && isBlank(text[position])) ++position;
    if (position == text.size()) return words;
    if (text[position] == '#') {
      position = std::min(text.find('\n', position), text.size());
    } else {
      words.push_back(readWord(text, position, origin));
    }
  }
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts(1);
  for (const char byte : text) {
    if (byte == separator) {
      parts.emplace_back();
    } else {
      parts.back() += byte;
    }
  }
  return parts;
}

std::string join(const std::vector<std::string>& texts, std::string_view joint) {
  std::string joined;
  for (const std::string& text : texts) {
    if (&text != &texts.front()) joined += joint;
    joined += text;
  }
  return joined;
}

bool beginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

bool endsWith(std::string_view text, std::string_view ending) {
  return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

std::string toLower(std::string_view text) {
  std::string lower(text);
  for (char& byte : lower) {
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
  }
  return lower;
}

std::string_view trimBlanks(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

// Row by row of the usual table; the two rows before the current one are all that is looked at.
std::size_t getDistance(std::string_view left, std::string_view right, std::size_t limit) {
  const std::size_t difference = left.size() > right.size() ? left.size() - right.size() : right.size() - left.size();
  if (difference > limit) return limit + 1;
  std::vector<std::size_t> before(right.size() + 1);
  std::vector<std::size_t> last(right.size() + 1);
  std::vector<std::size_t> row(right.size() + 1);
  for (std::size_t column = 0; column <= right.size(); ++column) last[column] = column;
  for (std::size_t line = 1; line <= left.size(); ++line) {
    row[0] = line;
    std::size_t least = line;
    for (std::size_t column = 1; column <= right.size(); ++column) {
      const bool isSame = left[line - 1] == right[column - 1];
      row[column] = std::min({last[column] + 1, row[column - 1] + 1, last[column - 1] + (isSame ? 0 : 1)});
      const bool isExchanged =
          line > 1 && column > 1 && left[line - 1] == right[column - 2] && left[line - 2] == right[column - 1];
      if (isExchanged) row[column] = std::min(row[column], before[column - 2] + 1);
      least = std::min(least, row[column]);
    }
    if (least > limit) return limit + 1;
    before.swap(last);
    last.swap(row);
  }
  return std::min(last[right.size()], limit + 1);
}

std::string findSimilar(std::string_view typed, const std::vector<std::string>& candidates) {
  std::string best;
  std::size_t least = std::max<std::size_t>(1, typed.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t distance = getDistance(toLower(typed), toLower(candidate), least);
    if (distance < least) {
      least = distance;
      best = candidate;
    }
  }
  return best;
}

std::string countOf(long number, const std::string& noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

}  // namespace xeltools
