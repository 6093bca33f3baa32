#include "tools/text/Escape.h"

#include <algorithm>

#include "tools/text/Utf8.h"

namespace xeltools {

namespace {

// The code in hexadecimal digits, at least so many.
std::string formatHex(char32_t code, std::size_t digits) {
  std::string text;
  for (; code != 0 || text.size() < digits; code /= 16) text.insert(text.begin(), "0123456789abcdef"[code % 16]);
  return text;
}

std::string escapeByte(char32_t byte) { return "\\x" + formatHex(byte, 2); }

// Always three digits, for what stands behind may be a digit too.
std::string escapeOctal(unsigned char byte) {
  std::string text = "\\";
  for (const unsigned shift : {6U, 3U, 0U}) text += static_cast<char>('0' + ((byte >> shift) & 7U));
  return text;
}

std::string escapeControl(char32_t code) {
  switch (code) {
    case '\t':
      return "\\t";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    default:
      return escapeByte(code);
  }
}

bool isControl(char32_t code) { return code < 0x20 || code == 0x7F; }

// Controls above ASCII, ends of lines and paragraphs, marks of direction, and the mark at the start of a file.
bool isHidden(char32_t code) {
  return (code >= 0x80 && code <= 0x9F) || (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069) ||
         code == 0x200E || code == 0x200F || code == 0x061C || code == 0xFEFF;
}

bool isHarmlessInShell(char byte) {
  const bool isAlphanumeric =
      (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
  return isAlphanumeric || std::string_view("_-./:=,+@%").find(byte) != std::string_view::npos;
}

std::string escapeInLiteral(char byte, char quote) {
  if (byte == quote || byte == '\\') return std::string("\\") + byte;
  const auto code = static_cast<unsigned char>(byte);
  if (byte == '\t') return "\\t";
  if (byte == '\n') return "\\n";
  if (byte == '\r') return "\\r";
  if (code < 0x20 || code >= 0x7F) return escapeOctal(code);
  return std::string(1, byte);
}

}  // namespace

bool isUnfitForTerminal(char32_t code) { return isControl(code) || isHidden(code); }

std::string makePrintable(std::string_view text) {
  if (isPlainAscii(text)) return std::string(text);
  std::string printable;
  printable.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const Character character = readCharacter(text, position);
    if (!character.isValid) {
      printable += escapeByte(character.code);
    } else if (isControl(character.code)) {
      printable += escapeControl(character.code);
    } else if (isHidden(character.code)) {
      printable += "\\u{" + formatHex(character.code, 1) + "}";
    } else {
      printable += text.substr(position, character.bytes);
    }
    position += character.bytes;
  }
  return printable;
}

std::string makePrintableLines(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
    printable += makePrintable(text.substr(0, end));
    if (end < text.size()) printable += text[end];
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return printable;
}

std::string makeLiteral(std::string_view text) {
  std::string literal = "\"";
  for (const char byte : text) literal += escapeInLiteral(byte, '"');
  return literal + '"';
}

std::string makeLiteral(char character) { return "'" + escapeInLiteral(character, '\'') + "'"; }

std::string makeShellWord(std::string_view text) {
  bool isHarmless = !text.empty();
  for (const char byte : text) isHarmless = isHarmless && isHarmlessInShell(byte);
  if (isHarmless) return std::string(text);
  std::string word = "'";
  for (const char byte : text) {
    if (byte == '\'') {
      word += "'\\''";
    } else {
      word += byte;
    }
  }
  return word + "'";
}

}  // namespace xeltools
