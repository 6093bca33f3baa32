#include "csv/line/XelCsvFormatVectors.h"

#if XELCSV_HAS_VECTORS

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

#include "csv/line/XelCsvFormatWindows.h"

namespace {

// 64 bytes as four vectors of 16.
template <std::size_t Separators>
class Window16 {
 public:
  explicit Window16(const XelCsvMarks& marks) noexcept : quote(fill(marks.quote)), decimal(fill(marks.decimal)) {
    for (std::size_t each = 0; each < Separators; ++each) separator[each] = fill(marks.separator[each]);
  }

  void load(const char* from) noexcept {
    first = get(from);
    second = get(from + 16);
    third = get(from + 32);
    fourth = get(from + 48);
    firstSeparators = findSeparators(first);
    secondSeparators = findSeparators(second);
    thirdSeparators = findSeparators(third);
    fourthSeparators = findSeparators(fourth);
  }

  std::uint64_t getSeparators() const noexcept {
    return join(firstSeparators, secondSeparators, thirdSeparators, fourthSeparators);
  }

  std::uint64_t getQuotes() const noexcept { return getEqual(quote); }
  std::uint64_t getSpaces() const noexcept { return getEqual(fill(' ')); }

  // Zero byte, line feed and carriage return.
  std::uint64_t getEnds() const noexcept {
    return join(getEnds(first), getEnds(second), getEnds(third), getEnds(fourth));
  }

  // The window without its separators, 64 bytes.
  template <bool Replaces>
  void store(char* to) const noexcept {
    put(to, _mm_andnot_si128(firstSeparators, replace<Replaces>(first)));
    put(to + 16, _mm_andnot_si128(secondSeparators, replace<Replaces>(second)));
    put(to + 32, _mm_andnot_si128(thirdSeparators, replace<Replaces>(third)));
    put(to + 48, _mm_andnot_si128(fourthSeparators, replace<Replaces>(fourth)));
  }

  // Bytes as they are: length and some more.
  template <bool Replaces>
  void copy(const char* from, char* to, long length) const noexcept {
    long done = 0;
    do {
      put(to + done, replace<Replaces>(get(from + done)));
      done += 16;
    } while (done < length);
  }

  static long getLowest(std::uint64_t bits) noexcept { return __builtin_ctzll(bits); }
  static long getCount(std::uint64_t bits) noexcept { return __builtin_popcountll(bits); }

  // Notes base + i for each bit i, and answers the place behind.
  static char** addStarts(char** starts, char* base, std::uint64_t bits) noexcept {
    for (; bits != 0; bits &= bits - 1) *starts++ = base + getLowest(bits);
    return starts;
  }

 private:
  static __m128i fill(char byte) noexcept { return _mm_set1_epi8(byte); }
  static __m128i get(const char* from) noexcept { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
  static void put(char* to, __m128i bytes) noexcept { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes); }

  static std::uint64_t getMask(__m128i found, int place) noexcept {
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_movemask_epi8(found))) << (16 * place);
  }

  static std::uint64_t join(__m128i a, __m128i b, __m128i c, __m128i d) noexcept {
    return getMask(a, 0) | getMask(b, 1) | getMask(c, 2) | getMask(d, 3);
  }

  std::uint64_t getEqual(__m128i byte) const noexcept {
    return join(_mm_cmpeq_epi8(first, byte), _mm_cmpeq_epi8(second, byte), _mm_cmpeq_epi8(third, byte),
                _mm_cmpeq_epi8(fourth, byte));
  }

  __m128i findSeparators(__m128i part) const noexcept {
    __m128i found = _mm_cmpeq_epi8(part, separator[0]);
    for (std::size_t each = 1; each < Separators; ++each) {
      found = _mm_or_si128(found, _mm_cmpeq_epi8(part, separator[each]));
    }
    return found;
  }

  static __m128i getEnds(__m128i part) noexcept {
    const __m128i feeds = _mm_or_si128(_mm_cmpeq_epi8(part, fill('\n')), _mm_cmpeq_epi8(part, fill('\r')));
    return _mm_or_si128(feeds, _mm_cmpeq_epi8(part, fill('\0')));
  }

  template <bool Replaces>
  __m128i replace(__m128i part) const noexcept {
    if (!Replaces) return part;
    const __m128i found = _mm_cmpeq_epi8(part, decimal);
    return _mm_or_si128(_mm_andnot_si128(found, part), _mm_and_si128(found, fill('.')));
  }

  __m128i quote;
  __m128i decimal;
  __m128i separator[Separators];
  __m128i first;
  __m128i second;
  __m128i third;
  __m128i fourth;
  __m128i firstSeparators;
  __m128i secondSeparators;
  __m128i thirdSeparators;
  __m128i fourthSeparators;
};

}  // namespace

XelPaddedFormatter* XelGetFormatterBy16(const XelCsvMarks& marks) noexcept {
  return XelGetWindowFormatter<Window16>(marks);
}

#endif
