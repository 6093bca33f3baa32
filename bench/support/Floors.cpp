#include "bench/support/Floors.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace bench {

namespace {

class Descriptor {
 public:
  explicit Descriptor(const std::string& fileName) : number(open(fileName.c_str(), O_RDONLY)) {
    if (number < 0) {
      std::perror(fileName.c_str());
      std::exit(1);
    }
  }
  ~Descriptor() { close(number); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return number; }

 private:
  int number;
};

long countPlain(const char* begin, const char* end) { return std::count(begin, end, '\n'); }

#if defined(__x86_64__)
// 32 bytes are compared with the line feed at once; each equal byte is a bit of the mask.
__attribute__((target("avx2,popcnt"))) long count32(const char* begin, const char* end) {
  const __m256i lineFeed = _mm256_set1_epi8('\n');
  long count = 0;
  for (; end - begin >= 32; begin += 32) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(begin));
    const int mask = _mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, lineFeed));
    count += __builtin_popcount(static_cast<unsigned>(mask));
  }
  return count + countPlain(begin, end);
}

long countIn(const char* begin, const char* end) {
  static const bool CanDo32 = __builtin_cpu_supports("avx2") != 0;
  return CanDo32 ? count32(begin, end) : countPlain(begin, end);
}
#else
long countIn(const char* begin, const char* end) { return countPlain(begin, end); }
#endif

}  // namespace

long countLineFeeds(const std::string& fileName) {
  static std::vector<char> block(std::size_t{256} * 1024);
  const Descriptor file(fileName);
  long count = 0;
  for (;;) {
    const ssize_t length = read(file.get(), block.data(), block.size());
    if (length <= 0) return count;
    count += countIn(block.data(), block.data() + length);
  }
}

long readAt(const std::string& fileName, long offset) {
  std::array<char, 512> bytes;
  const Descriptor file(fileName);
  return pread(file.get(), bytes.data(), bytes.size(), offset);
}

long readSmall(const std::string& fileName) {
  std::array<char, 4096> bytes;
  const Descriptor file(fileName);
  return read(file.get(), bytes.data(), bytes.size());
}

}  // namespace bench
