// Hash of a key for the index of a table's lines.
#pragma once

#include <cstdint>
#include <cstring>

// The product of two numbers folded to 64 bits: its upper half xor its lower half.
inline std::uint64_t XelFoldedProduct(std::uint64_t left, std::uint64_t right) noexcept {
#ifdef __SIZEOF_INT128__
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(left) * right;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
  const std::uint64_t leftHigh = left >> 32;
  const std::uint64_t leftLow = left & 0xFFFFFFFFU;
  const std::uint64_t rightHigh = right >> 32;
  const std::uint64_t rightLow = right & 0xFFFFFFFFU;
  const std::uint64_t low = leftLow * rightLow;
  const std::uint64_t middle = leftHigh * rightLow + (low >> 32);
  const std::uint64_t otherMiddle = leftLow * rightHigh + (middle & 0xFFFFFFFFU);
  const std::uint64_t high = leftHigh * rightHigh + (middle >> 32) + (otherMiddle >> 32);
  return (left * right) ^ high;
#endif
}

// 64 bits, of which each depends on every byte of the key, so that keys that count, or join two that count, spread
// like keys drawn by lot. Multiplies and folds 16 bytes at a time, after the formula of wyhash by Wang Yi, which is in
// the public domain; the constants are digits of pi. It differs between machines of different byte order.
inline std::uint64_t XelHashKey(const char* key, long length) noexcept {
  constexpr std::uint64_t First = 0x243F6A8885A308D3U;
  constexpr std::uint64_t Second = 0x13198A2E03707345U;
  const auto read8 = [](const char* from) {
    std::uint64_t word = 0;
    std::memcpy(&word, from, sizeof word);
    return word;
  };
  const auto read4 = [](const char* from) {
    std::uint32_t word = 0;
    std::memcpy(&word, from, sizeof word);
    return static_cast<std::uint64_t>(word);
  };
  const auto read1 = [](const char* from) { return static_cast<std::uint64_t>(static_cast<unsigned char>(*from)); };

  std::uint64_t hash = First;
  long left = length;
  for (; left > 16; left -= 16, key += 16) hash = XelFoldedProduct(read8(key) ^ Second, read8(key + 8) ^ hash);
  // What is left is read as two words that overlap, unless it has 8 or 16 bytes.
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  if (left >= 8) {
    begin = read8(key);
    end = read8(key + left - 8);
  } else if (left >= 4) {
    begin = read4(key);
    end = read4(key + left - 4);
  } else if (left > 0) {
    begin = read1(key) << 16 | read1(key + left / 2) << 8 | read1(key + left - 1);
  }
  hash = XelFoldedProduct(begin ^ Second, end ^ hash);
  return XelFoldedProduct(hash ^ First, static_cast<std::uint64_t>(length) ^ Second);
}
