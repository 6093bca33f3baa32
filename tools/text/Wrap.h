// Sentences broken into lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace xeltools {

// The text in lines of at most width cells, broken at blanks, each but the first with indent blanks in front; a word that
// is wider stands alone. The first line is used cells long already. No end of line behind the last.
std::string wrap(std::string_view text, std::size_t width, std::size_t indent, std::size_t used);

}  // namespace xeltools
