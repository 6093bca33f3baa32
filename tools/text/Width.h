// How wide a text is on a terminal; from tables of its own, so that it is the same in any locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace xeltools {

// Cells that a character takes: 0 for marks that stand on the one before and for what is not seen, 2 for wide ones, such
// as those of Chinese, Japanese and Korean, else 1.
int getWidth(char32_t code);

// Cells that a text takes. It should be printable, see Escape.h; a byte that is no UTF-8 counts as 1.
std::size_t getWidth(std::string_view text);

// The text cut to at most width cells, the last of which is an ellipsis where something was cut off. Nothing of width 0.
std::string cutToWidth(std::string_view text, std::size_t width);

}  // namespace xeltools
