// Characters of a UTF-8 text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace xeltools {

// One character of a text, or one byte that belongs to none.
struct Character {
  char32_t code;      // the byte's value when it is not valid
  std::size_t bytes;  // 1 to 4
  bool isValid;
};

// The character that begins at a position of the text, which must be inside it. Overlong forms, surrogates and codes
// above U+10FFFF are not valid.
Character readCharacter(std::string_view text, std::size_t position);

// Appends the character as UTF-8.
void appendCharacter(std::string& text, char32_t code);

// Whether all of the text is of ASCII's characters that are seen, blanks included. Most texts are, and are looked at no
// further then.
bool isPlainAscii(std::string_view text);

// Whether all of the text is valid UTF-8.
bool isUtf8(std::string_view text);

}  // namespace xeltools
