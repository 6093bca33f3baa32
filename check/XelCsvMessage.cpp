#include "check/XelCsvMessage.h"

#include "check/XelCsvUtf8.h"

namespace {

constexpr std::size_t MostBytesShown = 60;
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr unsigned char FirstPrintable = 0x20;
constexpr unsigned char Delete = 0x7F;

void appendHex(std::string& to, char byte) {
  constexpr char Digits[] = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  to += Digits[value >> 4U];
  to += Digits[value & 0xFU];
}

// Bytes of the character that a text begins with, 0 when it begins with none: a control character is none here, be it of
// one byte or, U+0080 to U+009F, of two.
std::size_t countOfCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < Delete) return first < FirstPrintable ? 0 : 1;
  if (first == Delete) return 0;
  XelCsvUtf8 utf8;
  std::size_t count = 0;
  do {
    if (count == text.size()) return 0;
    const char* const byte = text.data() + count;
    if (utf8.findWrong({byte, byte + 1}) != nullptr) return 0;
    ++count;
  } while (utf8.isInCharacter());
  const bool isControl = first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
  return isControl ? 0 : count;
}

}  // namespace

std::string XelQuoted(std::string_view text) {
  std::string shown = "\"";
  std::string_view rest = text;
  while (!rest.empty() && text.size() - rest.size() < MostBytesShown) {
    std::size_t count = countOfCharacter(rest);
    if (rest.substr(0, ByteOrderMark.size()) == ByteOrderMark) {
      shown += "\\uFEFF";
    } else if (count > 0) {
      shown += rest.substr(0, count);
    } else {
      count = 1;
      shown += "\\x";
      appendHex(shown, rest[0]);
    }
    rest.remove_prefix(count);
  }
  shown += rest.empty() ? "\"" : "...\"";
  return shown;
}

std::string XelShown(char character) {
  std::string shown = "'";
  const auto value = static_cast<unsigned char>(character);
  if (value >= FirstPrintable && value < Delete) {
    shown += character;
  } else {
    shown += "\\x";
    appendHex(shown, character);
  }
  return shown + "'";
}

std::string XelHex(char byte) {
  std::string shown = "0x";
  appendHex(shown, byte);
  return shown;
}

std::string XelCounted(long count, const char* noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}
