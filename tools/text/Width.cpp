#include "tools/text/Width.h"

#include <algorithm>
#include <iterator>

#include "tools/text/Utf8.h"
#include "tools/text/WidthTable.h"

namespace xeltools {

namespace {

template <std::size_t Size>
bool isIn(const CodeRange (&ranges)[Size], char32_t code) {
  const auto* const found = std::lower_bound(std::begin(ranges), std::end(ranges), code,
                                             [](const CodeRange& range, char32_t it) { return range.last < it; });
  return found != std::end(ranges) && found->first <= code;
}

int getCells(const Character& character) { return character.isValid ? getWidth(character.code) : 1; }

}  // namespace

int getWidth(char32_t code) {
  const char32_t firstEmpty = EmptyCharacters[0].first;
  if (code < firstEmpty) return 1;
  if (isIn(EmptyCharacters, code)) return 0;
  return isIn(WideCharacters, code) ? 2 : 1;
}

std::size_t getWidth(std::string_view text) {
  if (isPlainAscii(text)) return text.size();
  std::size_t width = 0;
  for (std::size_t position = 0; position < text.size();) {
    const Character character = readCharacter(text, position);
    width += static_cast<std::size_t>(getCells(character));
    position += character.bytes;
  }
  return width;
}

std::string cutToWidth(std::string_view text, std::size_t width) {
  if (getWidth(text) <= width) return std::string(text);
  if (width == 0) return {};
  std::size_t position = 0;
  std::size_t used = 1;  // the ellipsis
  while (position < text.size()) {
    const Character character = readCharacter(text, position);
    const auto cells = static_cast<std::size_t>(getCells(character));
    if (used + cells > width) break;
    used += cells;
    position += character.bytes;
  }
  return std::string(text.substr(0, position)) + "\xE2\x80\xA6";
}

}  // namespace xeltools
