#include "check/XelCsvCheckedLine.h"

#include <algorithm>

namespace {

constexpr long ExcerptLength = 160;
constexpr long ExcerptBefore = 60;  // bytes before the place, where the line is too long for an excerpt

// Whether a byte goes on with a character of UTF-8.
bool isContinuation(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

}  // namespace

XelCsvSpan XelCsvCheckedLine::getContent() const noexcept {
  if (!hasLineFeed()) return text;
  const char* end = text.end - 1;
  while (end != text.begin && end[-1] == '\r') --end;
  return {text.begin, end};
}

XelCsvPlace XelPlaceOf(const XelCsvCheckedLine& line, const XelCsvSpan& bytes) {
  const XelCsvSpan content = line.getContent();
  const char* begin = content.begin;
  if (content.getLength() > ExcerptLength) {
    const long wanted = std::max(bytes.begin - content.begin - ExcerptBefore, 0L);
    begin += std::min(wanted, content.getLength() - ExcerptLength);
    for (int byte = 0; byte < 3 && isContinuation(*begin); ++byte) ++begin;
  }
  const char* const end = begin + std::min(content.end - begin, ExcerptLength);
  XelCsvPlace place;
  place.lineNumber = line.number;
  place.line = line.line;
  place.column = line.before + (bytes.begin - line.text.begin) + 1;
  place.offset = line.offset + (bytes.begin - line.text.begin);
  place.length = bytes.getLength();
  place.excerpt.assign(begin, end);
  place.excerptOffset = line.offset + (begin - line.text.begin);
  return place;
}
