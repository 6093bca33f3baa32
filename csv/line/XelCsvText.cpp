#include "csv/line/XelCsvText.h"

#include <cstring>

#include "csv/line/XelCsvFormatVectors.h"

XelFormattedLine XelFormatLine(const char* from, const char* end, char* to, const XelCsvFormat& format,
                               char** fields) noexcept {
  char* out = to;
  int count = 1;
  bool inQuotes = false;
  bool afterSeparator = false;
  if (fields != nullptr) fields[0] = to;
  const char* in = from;
  for (; in != end; ++in) {
    const XelByteClass byteClass = format.getClass(*in);
    if (byteClass == XelByteClass::Text) {
      *out++ = *in;
      afterSeparator = false;
      continue;
    }
    if (byteClass == XelByteClass::LineEnd) break;
    switch (byteClass) {
      case XelByteClass::Separator:
      case XelByteClass::SpaceSeparator:
        if (inQuotes) {
          *out++ = *in;
        } else if (byteClass == XelByteClass::Separator || !afterSeparator) {
          *out++ = '\0';
          if (fields != nullptr) fields[count] = out;
          ++count;
        }
        afterSeparator = true;
        break;
      case XelByteClass::Quote:
        inQuotes = !inQuotes;
        afterSeparator = false;
        break;
      default:  // the decimal character
        *out++ = '.';
        afterSeparator = false;
        break;
    }
  }
  *out++ = '\0';
  return {static_cast<int>(out - to), count, in};
}

XelPaddedFormatter* XelGetPaddedFormatter(const XelCsvFormat& format) noexcept {
#if XELCSV_HAS_VECTORS
  const XelCsvMarks& marks = format.getMarks();
  if (marks.separators > 0) {
    const XelVectorLevel level = XelGetVectorLevel();
    if (level == XelVectorLevel::Bytes32) return XelGetFormatterBy32(marks);
    if (level == XelVectorLevel::Bytes16) return XelGetFormatterBy16(marks);
  }
#else
  static_cast<void>(format);
#endif
  return XelFormatLine;
}

bool XelIsSettledText(const char* text, const XelCsvFormat& format) noexcept {
  for (; *text != '\0'; ++text) {
    const XelByteClass byteClass = format.getClass(*text);
    const bool stays = byteClass == XelByteClass::Text || (byteClass == XelByteClass::Decimal && *text == '.');
    if (!stays) return false;
  }
  return true;
}

XelCsvSpan XelTrimmed(const char* begin, const char* end) noexcept {
  while (begin != end && *begin == ' ') ++begin;
  while (end != begin && end[-1] == ' ') --end;
  return {begin, end};
}

long XelTextLength(const char* text, long limit) noexcept {
  const void* end = std::memchr(text, '\0', static_cast<std::size_t>(limit));
  return end == nullptr ? limit : static_cast<const char*>(end) - text;
}

void XelTrim(char* text) noexcept {
  const XelCsvSpan kept = XelTrimmed(text, text + std::strlen(text));
  const long length = kept.getLength();
  if (kept.begin != text) std::memmove(text, kept.begin, static_cast<std::size_t>(length));
  text[length] = '\0';
}

XelCsvSpan XelFirstField(const char* begin, const char* end, const XelCsvFormat& format) noexcept {
  const char* at = begin;
  while (at != end && format.getClass(*at) != XelByteClass::LineEnd && !format.isSeparator(*at)) ++at;
  return {begin, at};
}

bool XelIsEmptyLine(const char* begin, const char* end) noexcept {
  const char* at = begin;
  while (at != end && (*at == ' ' || *at == '\t')) ++at;
  return at == end || *at == '\n' || *at == '\r' || *at == '\0';
}
