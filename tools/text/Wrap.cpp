#include "tools/text/Wrap.h"

#include <algorithm>

#include "tools/text/Width.h"

namespace xeltools {

std::string wrap(std::string_view text, std::size_t width, std::size_t indent, std::size_t used) {
  std::string wrapped;
  std::size_t column = used;
  bool isLineEmpty = true;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t end = std::min(text.find(' ', position), text.size());
    const std::string_view word = text.substr(position, end - position);
    position = end + 1;
    if (word.empty()) continue;
    const std::size_t wide = getWidth(word);
    if (!isLineEmpty && column + 1 + wide > width) {
      wrapped += "\n" + std::string(indent, ' ');
      column = indent;
      isLineEmpty = true;
    }
    if (!isLineEmpty) {
      wrapped += ' ';
      ++column;
    }
    wrapped += word;
    column += wide;
    isLineEmpty = false;
  }
  return wrapped;
}

}  // namespace xeltools
