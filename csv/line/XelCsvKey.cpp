#include "csv/line/XelCsvKey.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr long FirstSize = 64;

}  // namespace

void XelCsvKey::grow(long count) {
  XelEnvBlock<char> larger(env, std::max({FirstSize, 2 * text.getCount(), length + count}));
  if (length > 0) std::memcpy(larger.get(), text.get(), static_cast<std::size_t>(length));
  text = std::move(larger);
}

// The values are measured first, so that the key is written straight into its block.
XelEnvBlock<char> XelComposeKey(XelEnv env, long numberOfKeys, const char* first, std::va_list others) {
  std::va_list measured;
  va_copy(measured, others);
  std::size_t size = 0;
  bool isWhole = true;
  for (long position = 0; position < numberOfKeys && isWhole; ++position) {
    const char* value = position == 0 ? first : va_arg(measured, const char*);
    isWhole = value != nullptr;
    if (isWhole) size += std::strlen(value) + 1;  // with the "-" behind it, or the terminator
  }
  va_end(measured);
  if (!isWhole) return {};

  XelEnvBlock<char> key(env, std::max(static_cast<long>(size), 1L));
  char* at = key.get();
  for (long position = 0; position < numberOfKeys; ++position) {
    const char* value = position == 0 ? first : va_arg(others, const char*);
    const std::size_t length = std::strlen(value);
    if (position > 0) *at++ = '-';
    std::memcpy(at, value, length);
    at += length;
  }
  *at = '\0';
  return key;
}
