#include "csv/line/XelCsvFormat.h"

#include <algorithm>
#include <initializer_list>

XelCsvFormat::XelCsvFormat(const char* separators, char decimal, char quote) noexcept {
  for (XelByteClass& value : classes) value = XelByteClass::Text;
  const auto set = [this](char byte, XelByteClass value) { classes[static_cast<unsigned char>(byte)] = value; };
  set(decimal, XelByteClass::Decimal);
  set(quote, XelByteClass::Quote);
  for (const char* byte = separators; *byte != '\0'; ++byte) {
    set(*byte, *byte == ' ' ? XelByteClass::SpaceSeparator : XelByteClass::Separator);
  }
  for (const char byte : {'\0', '\n', '\r'}) set(byte, XelByteClass::LineEnd);
  setMarks(separators, decimal, quote);
}

void XelCsvFormat::setMarks(const char* separators, char decimal, char quote) noexcept {
  char* const set = marks.separator;
  char* const behind = set + XelCsvMarks::MostSeparators;
  char* free = set;
  for (const char* byte = separators; *byte != '\0'; ++byte) {
    if (!isSeparator(*byte) || std::find(set, free, *byte) != free) continue;
    if (free == behind) {
      free = set;
      break;
    }
    *free++ = *byte;
  }
  std::sort(set, free,
            [](char left, char right) { return static_cast<unsigned char>(left) < static_cast<unsigned char>(right); });
  if (free != set) std::fill(free, behind, free[-1]);
  marks.separators = static_cast<std::size_t>(free - set);
  marks.dropsSpaces = getClass(' ') == XelByteClass::SpaceSeparator;
  marks.quote = getClass(quote) == XelByteClass::Quote ? quote : '\n';
  marks.replacesDecimal = decimal != '.' && getClass(decimal) == XelByteClass::Decimal;
  marks.decimal = marks.replacesDecimal ? decimal : '\n';
}
