// The bytes that a run of lines begins with.
#pragma once

#include <cstdint>
#include <cstring>

// Compares with the same few bytes again and again, 8 at a time.
class XelCsvBeginning {
 public:
  // Takes a text; false, and then it is empty, when there is nothing to compare or the text is too long.
  bool set(const char* begin, const char* end) noexcept {
    clear();
    const auto length = static_cast<std::size_t>(end - begin);
    if (length == 0 || length > sizeof words) return false;
    count = (length + WordSize - 1) / WordSize;
    words[count - 1] = mask = 0;
    std::memcpy(words, begin, length);
    std::memset(&mask, Ones, length - (count - 1) * WordSize);
    return true;
  }

  void clear() noexcept { count = 0; }
  bool isEmpty() const noexcept { return count == 0; }

  // How many bytes isAt() looks at.
  long getReach() const noexcept { return static_cast<long>(count * WordSize); }

  // Whether text, of at least getReach() bytes, begins so. Only when it is not empty.
  bool isAt(const char* text) const noexcept {
    for (std::size_t word = 0; word + 1 < count; ++word) {
      if (load(text + word * WordSize) != words[word]) return false;
    }
    return ((load(text + (count - 1) * WordSize) ^ words[count - 1]) & mask) == 0;
  }

 private:
  static constexpr std::size_t WordSize = sizeof(std::uint64_t);
  static constexpr std::size_t MostWords = 16;
  static constexpr int Ones = 0xff;

  static std::uint64_t load(const char* text) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, text, WordSize);
    return word;
  }

  std::uint64_t words[MostWords];
  std::uint64_t mask = 0;  // the bytes of the last word that count
  std::size_t count = 0;
};
