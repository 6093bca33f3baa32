#include "csv/line/XelCsvKey.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr long FirstSize = 64;

}  // namespace

void XelCsvKey::append(const char* from, long count) {
  if (count == 0) return;
  if (length + count > text.getCount()) {
    XelEnvBlock<char> larger(env, std::max({FirstSize, 2 * text.getCount(), length + count}));
    if (length > 0) std::memcpy(larger.get(), text.get(), static_cast<std::size_t>(length));
    text = std::move(larger);
  }
  std::memcpy(text.get() + length, from, static_cast<std::size_t>(count));
  length += count;
}

void XelCsvKey::add(const XelCsvSpan& value) {
  if (values > 0) append("-", 1);
  append(value.begin, value.getLength());
  ++values;
}

XelEnvBlock<char> XelComposeKey(XelEnv env, long numberOfKeys, const char* first, std::va_list others) {
  XelCsvKey key(env);
  for (long position = 0; position < numberOfKeys; ++position) {
    const char* value = position == 0 ? first : va_arg(others, const char*);
    if (value == nullptr) return {};
    key.add({value, value + std::strlen(value)});
  }
  return key.copy();
}
