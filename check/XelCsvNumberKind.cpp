#include "check/XelCsvNumberKind.h"

#include <cstring>
#include <initializer_list>
#include <string_view>

#include "csv/line/XelCsvNumbers.h"

namespace {

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

const char* skipDigits(const char* at, const char* end) {
  while (at != end && isDigit(*at)) ++at;
  return at;
}

const char* skipSign(const char* at, const char* end) { return at != end && (*at == '+' || *at == '-') ? at + 1 : at; }

// Behind an exponent, or where it was when there is none.
const char* skipExponent(const char* at, const char* end) {
  if (at == end || (*at != 'e' && *at != 'E')) return at;
  const char* const digits = skipSign(at + 1, end);
  const char* const behind = skipDigits(digits, end);
  return behind == digits ? at : behind;
}

// The spellings that the library reads as infinity, and what strtod reads as infinity or not a number.
bool isSpelled(std::string_view text) {
  for (const std::string_view spelling : {"U", "+1.#INF", "-1.#INF"}) {
    if (text == spelling) return true;
  }
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) text.remove_prefix(1);
  for (const std::string_view spelling : {"inf", "infinity", "nan"}) {
    if (text.size() != spelling.size()) continue;
    std::size_t same = 0;
    while (same < text.size() && (text[same] | 0x20) == spelling[same]) ++same;
    if (same == text.size()) return true;
  }
  return false;
}

// A number as far as it goes: its parts, each empty when it begins where the next one does.
struct Parts {
  const char* whole;
  const char* point;  // where the digits end
  const char* exponent;
  const char* end;

  bool isNumber() const { return point != whole || exponent > point + 1; }
};

Parts split(const XelCsvSpan& text) {
  Parts parts{};
  parts.whole = skipSign(text.begin, text.end);
  parts.point = skipDigits(parts.whole, text.end);
  const bool hasPoint = parts.point != text.end && *parts.point == '.';
  parts.exponent = hasPoint ? skipDigits(parts.point + 1, text.end) : parts.point;
  parts.end = parts.isNumber() ? skipExponent(parts.exponent, text.end) : parts.exponent;
  return parts;
}

// Behind groups of three digits, each with the character in front; where it was when there are none.
const char* skipGroups(const char* at, const char* end, char thousands) {
  constexpr long GroupDigits = 3;
  while (at != end && *at == thousands) {
    const char* const behind = skipDigits(at + 1, end);
    if (behind - at - 1 != GroupDigits) break;
    at = behind;
  }
  return at;
}

// Whether a text is a number with these characters, as far as it has any of them. "1,2,3" is a list.
bool isWrittenWith(const XelCsvSpan& text, char thousands, char point) {
  const char* const whole = skipSign(text.begin, text.end);
  const char* at = skipDigits(whole, text.end);
  if (at == whole) return false;
  at = skipGroups(at, text.end, thousands);
  if (at != text.end && *at == point) {
    const char* const fraction = at + 1;
    at = skipDigits(fraction, text.end);
    if (at == fraction) return false;
  }
  return skipExponent(at, text.end) == text.end;
}

}  // namespace

XelNumberKind XelKindOfNumber(const XelCsvSpan& text) noexcept {
  if (text.begin == text.end) return XelNumberKind::Empty;
  const Parts parts = split(text);
  if (parts.isNumber() && parts.end == text.end) {
    if (parts.exponent != parts.point || parts.end != parts.exponent) return XelNumberKind::Float;
    long value = 0;
    return XelParseIntIgnoringErrno(text.begin, value) ? XelNumberKind::Integer : XelNumberKind::LargeInteger;
  }
  if (isSpelled({text.begin, static_cast<std::size_t>(text.getLength())})) return XelNumberKind::Float;
  return parts.isNumber() ? XelNumberKind::TrailingText : XelNumberKind::Text;
}

bool XelIsOtherDecimal(const XelCsvSpan& bytes, char decimal, char quote) {
  const char other = decimal == '.' ? ',' : '.';
  std::string text;
  for (const char* at = bytes.begin; at != bytes.end; ++at) {
    if (*at != quote) text += *at;
  }
  if (text.find(other) == std::string::npos) return false;
  const XelCsvSpan bare = XelTrimmed(text.data(), text.data() + text.size());
  return isWrittenWith(bare, decimal, other) || isWrittenWith(bare, other, decimal);
}

std::string XelShowNumber(const XelCsvSpan& text) {
  const Parts parts = split(text);
  return parts.isNumber() ? std::string(text.begin, parts.end) : "0";
}
