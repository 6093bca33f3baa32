#include "csv/line/XelCsvFieldStart.h"

#include "csv/line/XelCsvVectors.h"

#if XELCSV_HAS_VECTORS
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#endif

namespace {

const char* findPlainly(const char* line, const XelCsvFormat& format, long position) noexcept {
  for (const char* at = line;; ++at) {
    switch (format.getClass(*at)) {
      case XelByteClass::Separator:
        if (--position == 0) return at + 1;
        break;
      case XelByteClass::Text:
      case XelByteClass::Decimal:
        break;
      default:
        return nullptr;
    }
  }
}

#if XELCSV_HAS_VECTORS

// The vector forms take 64 bytes at once, a window. Of position 2, with the separator ',' and the quote '"':
//
//   bytes       4 7 , 1 2 . 5 , K 1 7 , " a " \n
//   separators  . . 1 . . . . 1 . . . 1 . . . .     the second bit says where the field begins: one behind
//   stops       . . . . . . . . . . . . 1 . 1 1     quotes and line ends: what is behind the lowest counts for nothing
//
// A line has a line feed, so that no window begins behind its end.
constexpr long Window = 64;
static_assert(XelFieldStartReach >= Window, "a window may begin with a line's last byte");

struct Masks {
  std::uint64_t separators;
  std::uint64_t stops;
};

// The byte behind the separator of the window that is wanted; null when there are fewer, and then position counts less.
__attribute__((always_inline)) inline const char* findIn(const char* window, const Masks& masks,
                                                         long& position) noexcept {
  const std::uint64_t beforeStop = ~masks.stops & (masks.stops - 1);
  std::uint64_t separators = masks.separators & beforeStop;
  for (; separators != 0; separators &= separators - 1) {
    if (--position == 0) return window + __builtin_ctzll(separators) + 1;
  }
  return nullptr;
}

class By16 {
 public:
  explicit By16(const XelCsvMarks& marks) noexcept : quote(_mm_set1_epi8(marks.quote)) {
    for (std::size_t each = 0; each < XelCsvMarks::MostSeparators; ++each) {
      separator[each] = _mm_set1_epi8(marks.separator[each]);
    }
  }

  template <std::size_t Separators>
  Masks getMasks(const char* window) const noexcept {
    Masks masks{0, 0};
    for (int part = 0; part < 4; ++part) {
      const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(window) + part);
      __m128i found = _mm_cmpeq_epi8(bytes, separator[0]);
      for (std::size_t each = 1; each < Separators; ++each) {
        found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, separator[each]));
      }
      const __m128i feeds =
          _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')));
      const __m128i others = _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
      masks.separators |= getMask(found) << (16 * part);
      masks.stops |= getMask(_mm_or_si128(feeds, others)) << (16 * part);
    }
    return masks;
  }

 private:
  static std::uint64_t getMask(__m128i found) noexcept { return static_cast<std::uint32_t>(_mm_movemask_epi8(found)); }

  __m128i quote;
  __m128i separator[XelCsvMarks::MostSeparators];
};

template <std::size_t Separators>
const char* findBy16(const char* line, const XelCsvFormat& format, long position) noexcept {
  const By16 vectors(format.getMarks());
  for (const char* window = line;; window += Window) {
    const Masks masks = vectors.getMasks<Separators>(window);
    const char* const found = findIn(window, masks, position);
    if (found != nullptr || masks.stops != 0) return found;
  }
}

XELCSV_BEGIN_VECTORS_32

class By32 {
 public:
  explicit By32(const XelCsvMarks& marks) noexcept : quote(_mm256_set1_epi8(marks.quote)) {
    for (std::size_t each = 0; each < XelCsvMarks::MostSeparators; ++each) {
      separator[each] = _mm256_set1_epi8(marks.separator[each]);
    }
  }

  template <std::size_t Separators>
  Masks getMasks(const char* window) const noexcept {
    Masks masks{0, 0};
    // The shuffle puts into each byte the line end with the same low half; of 0x80 and above it makes a zero byte.
    const __m256i ends = _mm256_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '\n', 0, 0, '\r', 0, 0,  //
                                          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '\n', 0, 0, '\r', 0, 0);
    for (int part = 0; part < 2; ++part) {
      const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(window) + part);
      __m256i found = _mm256_cmpeq_epi8(bytes, separator[0]);
      for (std::size_t each = 1; each < Separators; ++each) {
        found = _mm256_or_si256(found, _mm256_cmpeq_epi8(bytes, separator[each]));
      }
      const __m256i stops =
          _mm256_or_si256(_mm256_cmpeq_epi8(_mm256_shuffle_epi8(ends, bytes), bytes), _mm256_cmpeq_epi8(bytes, quote));
      masks.separators |= getMask(found) << (32 * part);
      masks.stops |= getMask(stops) << (32 * part);
    }
    return masks;
  }

 private:
  static std::uint64_t getMask(__m256i found) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(found));
  }

  __m256i quote;
  __m256i separator[XelCsvMarks::MostSeparators];
};

template <std::size_t Separators>
const char* findBy32(const char* line, const XelCsvFormat& format, long position) noexcept {
  const By32 vectors(format.getMarks());
  for (const char* window = line;; window += Window) {
    const Masks masks = vectors.getMasks<Separators>(window);
    const char* const found = findIn(window, masks, position);
    if (found != nullptr || masks.stops != 0) return found;
  }
}

XELCSV_END_VECTORS_32

#endif

}  // namespace

XelFieldFinder* XelGetFieldFinder(const XelCsvFormat& format) noexcept {
#if XELCSV_HAS_VECTORS
  const XelCsvMarks& marks = format.getMarks();
  if (marks.separators > 0 && !marks.dropsSpaces) {
    const bool isOne = marks.separators == 1;
    const XelVectorLevel level = XelGetVectorLevel();
    if (level == XelVectorLevel::Bytes32) return isOne ? findBy32<1> : findBy32<XelCsvMarks::MostSeparators>;
    if (level == XelVectorLevel::Bytes16) return isOne ? findBy16<1> : findBy16<XelCsvMarks::MostSeparators>;
  }
#else
  static_cast<void>(format);
#endif
  return findPlainly;
}
