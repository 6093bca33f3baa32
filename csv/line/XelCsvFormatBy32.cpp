#include "csv/line/XelCsvFormatVectors.h"

#if XELCSV_HAS_VECTORS

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

XELCSV_BEGIN_VECTORS_32

#include "csv/line/XelCsvFormatWindows.h"

namespace {

// 64 bytes as two vectors of 32.
template <std::size_t Separators>
class Window32 {
 public:
  explicit Window32(const XelCsvMarks& marks) noexcept : quote(fill(marks.quote)), decimal(fill(marks.decimal)) {
    for (std::size_t each = 0; each < Separators; ++each) separator[each] = fill(marks.separator[each]);
  }

  void load(const char* from) noexcept {
    low = get(from);
    high = get(from + 32);
    lowSeparators = findSeparators(low);
    highSeparators = findSeparators(high);
  }

  std::uint64_t getSeparators() const noexcept { return join(lowSeparators, highSeparators); }

  std::uint64_t getQuotes() const noexcept { return getEqual(quote); }
  std::uint64_t getSpaces() const noexcept { return getEqual(fill(' ')); }

  // Zero byte, line feed and carriage return.
  std::uint64_t getEnds() const noexcept { return join(getEnds(low), getEnds(high)); }

  // The window without its separators, 64 bytes.
  template <bool Replaces>
  void store(char* to) const noexcept {
    put(to, _mm256_andnot_si256(lowSeparators, replace<Replaces>(low)));
    put(to + 32, _mm256_andnot_si256(highSeparators, replace<Replaces>(high)));
  }

  // Bytes as they are: length and some more.
  template <bool Replaces>
  void copy(const char* from, char* to, long length) const noexcept {
    put(to, replace<Replaces>(get(from)));
    if (length > 32) put(to + 32, replace<Replaces>(get(from + 32)));
  }

  static long getLowest(std::uint64_t bits) noexcept { return static_cast<long>(_tzcnt_u64(bits)); }
  static long getCount(std::uint64_t bits) noexcept { return static_cast<long>(_mm_popcnt_u64(bits)); }

  // Notes base + i for each bit i, and answers the place behind. Writes a few more, so that one jump does for four.
  static char** addStarts(char** starts, char* base, std::uint64_t bits) noexcept {
    char** const last = starts + getCount(bits);
    for (; starts < last; starts += 4) {
      starts[0] = base + takeLowest(bits);
      starts[1] = base + takeLowest(bits);
      starts[2] = base + takeLowest(bits);
      starts[3] = base + takeLowest(bits);
    }
    return last;
  }

 private:
  static __m256i fill(char byte) noexcept { return _mm256_set1_epi8(byte); }
  static __m256i get(const char* from) noexcept { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)); }
  static void put(char* to, __m256i bytes) noexcept { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes); }

  static long takeLowest(std::uint64_t& bits) noexcept {
    const long lowest = getLowest(bits);
    bits &= bits - 1;
    return lowest;
  }

  static std::uint64_t join(__m256i first, __m256i second) noexcept {
    const auto bits = static_cast<std::uint32_t>(_mm256_movemask_epi8(first));
    return bits | (static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm256_movemask_epi8(second))) << 32);
  }

  std::uint64_t getEqual(__m256i byte) const noexcept {
    return join(_mm256_cmpeq_epi8(low, byte), _mm256_cmpeq_epi8(high, byte));
  }

  __m256i findSeparators(__m256i bytes) const noexcept {
    __m256i found = _mm256_cmpeq_epi8(bytes, separator[0]);
    for (std::size_t each = 1; each < Separators; ++each) {
      found = _mm256_or_si256(found, _mm256_cmpeq_epi8(bytes, separator[each]));
    }
    return found;
  }

  static __m256i getEnds(__m256i bytes) noexcept {
    // The shuffle puts into each byte the line end with the same low half; of 0x80 and above it makes a zero byte.
    const __m256i ends = _mm256_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '\n', 0, 0, '\r', 0, 0,  //
                                          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '\n', 0, 0, '\r', 0, 0);
    return _mm256_cmpeq_epi8(_mm256_shuffle_epi8(ends, bytes), bytes);
  }

  template <bool Replaces>
  __m256i replace(__m256i bytes) const noexcept {
    if (!Replaces) return bytes;
    return _mm256_blendv_epi8(bytes, fill('.'), _mm256_cmpeq_epi8(bytes, decimal));
  }

  __m256i quote;
  __m256i decimal;
  __m256i separator[Separators];
  __m256i low;
  __m256i high;
  __m256i lowSeparators;
  __m256i highSeparators;
};

}  // namespace

XelPaddedFormatter* XelGetFormatterBy32(const XelCsvMarks& marks) noexcept {
  return XelGetWindowFormatter<Window32>(marks);
}

XELCSV_END_VECTORS_32

#endif
