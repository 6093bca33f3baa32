#include "csv/table/XelCsvGlance.h"

#include <cstring>

XelCsvGlance::XelCsvGlance(const XelCsvFormat& lineFormat, const char* wanted) noexcept {
  for (int value = 0; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    const XelByteClass found = lineFormat.getClass(byte);
    // A point that is the decimal character itself stays what it is.
    const bool isPlain = found == XelByteClass::Text || (found == XelByteClass::Decimal && byte == '.');
    isOtherBehind[value] = isPlain && byte != ' ';
    isOtherBefore[value] = isOtherBehind[value] || found == XelByteClass::Separator || found == XelByteClass::LineEnd;
  }
  const long found = static_cast<long>(std::strlen(wanted));
  if (found == 0 || found > Longest || wanted[0] == ' ' || wanted[found - 1] == ' ') return;
  for (long index = 0; index < found; ++index) {
    const auto byte = static_cast<unsigned char>(wanted[index]);
    if (!isOtherBehind[byte] && lineFormat.getClass(wanted[index]) != XelByteClass::Text) return;
  }
  std::memcpy(text, wanted, static_cast<std::size_t>(found));
  length = found;
}
