#include "tests/faults/FileFaults.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace {

// More reads in vain than any reader has a reason for.
constexpr long MostVainReads = 1000;

// The C library's function of a name.
template <class Function>
Function* getReal(const char* name) {
  void* found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) std::abort();
  return reinterpret_cast<Function*>(found);
}

std::FILE* realOpen(const char* name, const char* mode) {
  static auto* const function = getReal<std::FILE*(const char*, const char*)>("fopen");
  return function(name, mode);
}

std::size_t realRead(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
  static auto* const function = getReal<std::size_t(void*, std::size_t, std::size_t, std::FILE*)>("fread");
  return function(to, size, count, stream);
}

int realSeek(std::FILE* stream, long offset, int origin) {
  static auto* const function = getReal<int(std::FILE*, long, int)>("fseek");
  return function(stream, offset, origin);
}

long realTell(std::FILE* stream) {
  static auto* const function = getReal<long(std::FILE*)>("ftell");
  return function(stream);
}

int realClose(std::FILE* stream) {
  static auto* const function = getReal<int(std::FILE*)>("fclose");
  return function(stream);
}

}  // namespace

FileFaults* FileFaults::current = nullptr;

FileFaults::FileFaults(std::string name) : fileName(std::move(name)) {
  EXPECT_EQ(current, nullptr) << "one at a time";
  current = this;
}

FileFaults::~FileFaults() {
  EXPECT_EQ(getOpenStreams(), 0) << "a stream stayed open";
  current = nullptr;
}

void FileFaults::reset() {
  modes.clear();
  seeks = reads = closes = faults = 0;
  failingOpen = spoiledOpen = failingSeeks = failingRead = failingReadsOfOpen = None;
  failingTells = false;
  readLimit = 0;
  closeError = 0;
  for (auto& entry : streams) entry.second = Stream();
}

void FileFaults::failOpen(long number, int error) {
  failingOpen = number;
  openError = error;
}

void FileFaults::spoilErrnoOfOpen(long number, int error) {
  spoiledOpen = number;
  spoiledErrno = error;
}

void FileFaults::failSeeksOfOpen(long number) { failingSeeks = number; }

void FileFaults::failRead(long number, int error, std::size_t bytes) {
  failingRead = number;
  readError = error;
  failingReadBytes = bytes;
}

void FileFaults::failReadsOfOpen(long number, int error) {
  failingReadsOfOpen = number;
  readError = error;
  failingReadBytes = 0;
}

std::FILE* FileFaults::open(const char* name, const char* mode) {
  const long number = getOpens();
  modes.emplace_back(mode);
  if (matches(failingOpen, number)) {
    ++faults;
    errno = openError;
    return nullptr;
  }
  std::FILE* stream = realOpen(name, mode);
  if (stream == nullptr) return nullptr;
  const int error = errno;
  Stream opened;
  opened.open = number;
  streams[stream] = opened;
  errno = error;
  if (matches(spoiledOpen, number)) {
    ++faults;
    errno = spoiledErrno;
  }
  return stream;
}

std::size_t FileFaults::read(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
  Stream& state = streams[stream];
  const long number = reads++;
  const bool fails = state.hasFailed || matches(failingRead, number) || matches(failingReadsOfOpen, state.open);
  std::size_t wanted = size * count;
  if (readLimit > 0) wanted = std::min(wanted, readLimit);
  if (fails) wanted = state.hasFailed ? 0 : std::min(wanted, failingReadBytes);
  const std::size_t came = wanted == 0 ? 0 : realRead(to, 1, wanted, stream);
  if (fails) {
    ++faults;
    state.hasFailed = true;
    std::fputc(' ', stream);  // what cannot be written to a stream for reading leaves it in error
    errno = readError;
  }
  state.vainReads = came > 0 ? 0 : state.vainReads + 1;
  if (state.vainReads > MostVainReads) {
    ADD_FAILURE() << "a pass goes on reading where nothing comes any more";
    std::abort();
  }
  return came / size;
}

int FileFaults::seek(std::FILE* stream, long offset, int origin) {
  ++seeks;
  if (matches(failingSeeks, streams[stream].open)) {
    ++faults;
    errno = EINVAL;
    return -1;
  }
  return realSeek(stream, offset, origin);
}

long FileFaults::tell(std::FILE* stream) {
  if (failingTells) {
    ++faults;
    errno = EOVERFLOW;
    return -1;
  }
  return realTell(stream);
}

int FileFaults::close(std::FILE* stream) {
  ++closes;
  streams.erase(stream);
  const int result = realClose(stream);
  if (closeError == 0) return result;
  ++faults;
  errno = closeError;
  return EOF;
}

// The program's own functions stand before the C library's, for the library under test as for everybody.
extern "C" {

std::FILE* fopen(const char* name, const char* mode) {
  FileFaults* faults = FileFaults::getCurrent();
  return faults != nullptr && faults->isWatched(name) ? faults->open(name, mode) : realOpen(name, mode);
}

std::size_t fread(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
  FileFaults* faults = FileFaults::getCurrent();
  return faults != nullptr && faults->isWatched(stream) ? faults->read(to, size, count, stream)
                                                        : realRead(to, size, count, stream);
}

int fseek(std::FILE* stream, long offset, int origin) {
  FileFaults* faults = FileFaults::getCurrent();
  return faults != nullptr && faults->isWatched(stream) ? faults->seek(stream, offset, origin)
                                                        : realSeek(stream, offset, origin);
}

long ftell(std::FILE* stream) {
  FileFaults* faults = FileFaults::getCurrent();
  return faults != nullptr && faults->isWatched(stream) ? faults->tell(stream) : realTell(stream);
}

int fclose(std::FILE* stream) {
  FileFaults* faults = FileFaults::getCurrent();
  return faults != nullptr && faults->isWatched(stream) ? faults->close(stream) : realClose(stream);
}

}  // extern "C"
