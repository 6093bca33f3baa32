#include "tools/text/Utf8.h"

namespace xeltools {

namespace {

// Bytes of a character by its first byte; 0 for a byte that begins none.
std::size_t getLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return 2;
  if (first >= 0xE0 && first <= 0xEF) return 3;
  if (first >= 0xF0 && first <= 0xF4) return 4;
  return 0;
}

// The smallest code that needs so many bytes.
char32_t getSmallest(std::size_t bytes) {
  static const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  return smallest[bytes];
}

}  // namespace

Character readCharacter(std::string_view text, std::size_t position) {
  const auto first = static_cast<unsigned char>(text[position]);
  const Character byte{first, 1, false};
  const std::size_t bytes = getLength(first);
  if (bytes == 1) return {first, 1, true};
  if (bytes == 0 || position + bytes > text.size()) return byte;
  char32_t code = first & (0xFFU >> (bytes + 1));
  for (std::size_t index = 1; index < bytes; ++index) {
    const auto next = static_cast<unsigned char>(text[position + index]);
    if ((next & 0xC0U) != 0x80U) return byte;
    code = code << 6U | (next & 0x3FU);
  }
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < getSmallest(bytes) || isSurrogate || code > 0x10FFFF) return byte;
  return {code, bytes, true};
}

void appendCharacter(std::string& text, char32_t code) {
  const auto add = [&](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
  if (code < 0x80) {
    add(code);
  } else if (code < 0x800) {
    add(0xC0U | code >> 6U);
    add(0x80U | (code & 0x3FU));
  } else if (code < 0x10000) {
    add(0xE0U | code >> 12U);
    add(0x80U | (code >> 6U & 0x3FU));
    add(0x80U | (code & 0x3FU));
  } else {
    add(0xF0U | code >> 18U);
    add(0x80U | (code >> 12U & 0x3FU));
    add(0x80U | (code >> 6U & 0x3FU));
    add(0x80U | (code & 0x3FU));
  }
}

bool isPlainAscii(std::string_view text) {
  bool isPlain = true;
  for (const char byte : text) isPlain = isPlain && byte >= ' ' && byte <= '~';
  return isPlain;
}

bool isUtf8(std::string_view text) {
  if (isPlainAscii(text)) return true;
  for (std::size_t position = 0; position < text.size();) {
    const Character character = readCharacter(text, position);
    if (!character.isValid) return false;
    position += character.bytes;
  }
  return true;
}

}  // namespace xeltools
