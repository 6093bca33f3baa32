#include "env/XelReaderHash.h"

#include <cstdint>
#include <cstring>

long XeldReaderHashFunction(const char* key, long size) noexcept {
  std::uint64_t hash = 0;
  for (; *key != '\0'; ++key) {
    const std::int64_t byte = static_cast<signed char>(*key);
    hash = (hash << 4) + static_cast<std::uint64_t>(byte);
    const std::uint64_t high = hash & 0xF0000000U;
    if (high != 0) {
      hash ^= high >> 24;
      hash ^= high;
    }
  }
  return static_cast<long>(hash % static_cast<std::uint64_t>(size));
}

long XeldReaderCmpFunction(const char* left, const char* right) noexcept {
  return std::strcmp(left, right) == 0 ? 1 : 0;
}
