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
}
