// Text of a file made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace xeltools {

// Whether a terminal would obey the character, or it would hide what stands there.
bool isUnfitForTerminal(char32_t code);

// The text with everything that a terminal would obey, or that would hide what stands there, written out: control
// characters as \t, \r, \n or \x1b, those above U+007F and the marks that turn the direction of writing as \u{202e},
// bytes that are no UTF-8 as \xe9. Anything else, a backslash too, stays as it is.
std::string makePrintable(std::string_view text);

// The same for several lines: ends of lines and tabs stay.
std::string makePrintableLines(std::string_view text);

// The text as a literal of C++, quotes included.
std::string makeLiteral(std::string_view text);

// The character as a literal of C++, quotes included.
std::string makeLiteral(char character);

// The text as a word of a shell: in quotes unless every character is harmless.
std::string makeShellWord(std::string_view text);

}  // namespace xeltools
