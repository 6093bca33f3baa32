#include "fuzz/support/Input.h"

namespace fuzz {

namespace {

constexpr int Hexadecimal = 16;

// The value of a hexadecimal digit, -1 for any other byte.
int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The byte that an escape stands for; at is behind its backslash and moves behind the escape.
char readEscape(const std::string& text, std::size_t& at) {
  const char c = text[at++];
  switch (c) {
    case 's':
      return ' ';
    case 't':
      return '\t';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case '0':
      return '\0';
    case 'x':
      if (at + 2 <= text.size() && digitOf(text[at]) >= 0 && digitOf(text[at + 1]) >= 0) {
        at += 2;
        return static_cast<char>(digitOf(text[at - 2]) * Hexadecimal + digitOf(text[at - 1]));
      }
      return c;
    default:
      return c;
  }
}

}  // namespace

Input parseInput(const std::uint8_t* data, std::size_t size) {
  const std::string all(data, data + size);
  const std::size_t feed = all.find('\n');
  const std::string first = all.substr(0, feed);
  Input input;
  bool inWord = false;
  for (std::size_t at = 0; at < first.size();) {
    char c = first[at++];
    if (c == ' ') {
      inWord = false;
      continue;
    }
    if (c == '\\' && at < first.size()) c = readEscape(first, at);
    if (!inWord) input.words.emplace_back();
    inWord = true;
    input.words.back() += c;
  }
  if (feed != std::string::npos) input.rest = all.substr(feed + 1);
  return input;
}

const std::string& wordAt(const Input& input, std::size_t position) {
  static const std::string None;
  return position < input.words.size() ? input.words[position] : None;
}

std::string upToZero(const std::string& text) { return text.substr(0, text.find('\0')); }

}  // namespace fuzz
