#include "csv/line/XelCsvLineStarts.h"

#include <cstring>

#include "csv/line/XelCsvVectors.h"

#if XELCSV_HAS_VECTORS
#include <immintrin.h>
#endif

namespace {

// The plain form, and the end of every other: from an index on, behind count lines that were found before.
long findPlainly(const char* bytes, long index, long length, std::uint16_t* starts, long count) noexcept {
  while (index < length) {
    const void* feed = std::memchr(bytes + index, '\n', static_cast<std::size_t>(length - index));
    if (feed == nullptr) break;
    index = static_cast<const char*>(feed) - bytes + 1;
    starts[++count] = static_cast<std::uint16_t>(index);
  }
  return count;
}

#if XELCSV_HAS_VECTORS

// The vector forms take 64 bytes at once, a window. Each line feed becomes a bit, and each bit an entry:
//
//   bytes     T o w n \n T o w n s \n T ...     64 of them
//   mask      0 0 0 0 1  0 0 0 0 0 1  0 ...     one comparison for 16 or 32 of them
//   starts    5, 11                             the index of the lowest bit and 1 more; take it away; again
//
// Four entries are written whatever their number, for a window of most files has fewer and a loop that ends after one, two
// or three rounds would be guessed wrong; the next window writes over those that were too many.
constexpr long Window = 64;
constexpr long AtOnce = 4;

__attribute__((always_inline)) inline long addStarts(std::uint64_t mask, long index, std::uint16_t* starts,
                                                     long count) noexcept {
  long found = 0;
  const auto add = [&](long entry) {
    // With no bit left an index is written that does not count.
    starts[count + 1 + entry] =
        static_cast<std::uint16_t>(index + 1 + __builtin_ctzll(mask | std::uint64_t{1} << (Window - 1)));
    found += mask != 0 ? 1 : 0;
    mask &= mask - 1;
  };
  long entry = 0;
  while (entry < AtOnce) add(entry++);
  while (mask != 0) add(entry++);
  return count + found;
}

long findBy16(const char* bytes, long length, std::uint16_t* starts) noexcept {
  const __m128i feed = _mm_set1_epi8('\n');
  const auto maskOf = [&](const char* at) {
    const __m128i loaded = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    return static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(loaded, feed))));
  };
  long index = 0;
  long count = 0;
  for (; index + Window <= length; index += Window) {
    const char* const at = bytes + index;
    const std::uint64_t mask = maskOf(at) | maskOf(at + 16) << 16 | maskOf(at + 32) << 32 | maskOf(at + 48) << 48;
    count = addStarts(mask, index, starts, count);
  }
  return findPlainly(bytes, index, length, starts, count);
}

__attribute__((target("avx2"))) long findBy32(const char* bytes, long length, std::uint16_t* starts) noexcept {
  const __m256i feed = _mm256_set1_epi8('\n');
  long index = 0;
  long count = 0;
  for (; index + Window <= length; index += Window) {
    const auto* const at = reinterpret_cast<const __m256i*>(bytes + index);
    const __m256i low = _mm256_cmpeq_epi8(_mm256_loadu_si256(at), feed);
    const __m256i high = _mm256_cmpeq_epi8(_mm256_loadu_si256(at + 1), feed);
    const std::uint64_t mask = static_cast<std::uint64_t>(static_cast<unsigned>(_mm256_movemask_epi8(low))) |
                               static_cast<std::uint64_t>(static_cast<unsigned>(_mm256_movemask_epi8(high))) << 32;
    count = addStarts(mask, index, starts, count);
  }
  return findPlainly(bytes, index, length, starts, count);
}

#endif

}  // namespace

long XelFindLineStarts(const char* bytes, long length, std::uint16_t* starts) noexcept {
  starts[0] = 0;
#if XELCSV_HAS_VECTORS
  switch (XelGetVectorLevel()) {
    case XelVectorLevel::Bytes32:
      return findBy32(bytes, length, starts);
    case XelVectorLevel::Bytes16:
      return findBy16(bytes, length, starts);
    default:
      break;
  }
#endif
  return findPlainly(bytes, 0, length, starts, 0);
}
