#include "csv/line/XelCsvFormat.h"

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
  setMarks(decimal, quote);
}

void XelCsvFormat::setMarks(char decimal, char quote) noexcept {
  std::size_t count = 0;
  for (int value = 0; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    if (!isSeparator(byte)) continue;
    if (count == XelCsvMarks::MostSeparators) {
      count = 0;
      break;
    }
    for (std::size_t place = count; place < XelCsvMarks::MostSeparators; ++place) marks.separator[place] = byte;
    ++count;
  }
  marks.separators = count;
  marks.dropsSpaces = getClass(' ') == XelByteClass::SpaceSeparator;
  marks.quote = getClass(quote) == XelByteClass::Quote ? quote : '\n';
  marks.replacesDecimal = decimal != '.' && getClass(decimal) == XelByteClass::Decimal;
  marks.decimal = marks.replacesDecimal ? decimal : '\n';
}
