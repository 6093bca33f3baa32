#include "tests/faults/FileFaults.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include "tests/support/TestEnv.h"

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

int realSetBuffer(std::FILE* stream, char* buffer, int mode, std::size_t size) {
  static auto* const function = getReal<int(std::FILE*, char*, int, std::size_t)>("setvbuf");
  return function(stream, buffer, mode, size);
}

int realGetStatus(const char* name, struct stat* status) {
  static auto* const function = getReal<int(const char*, struct stat*)>("stat");
  return function(name, status);
}

// What cannot be written to a stream for reading leaves it in error.
void putInError(std::FILE* stream) { std::fputc(' ', stream); }

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
  calls.fill(0);
  faults = 0;
  failingNumber = None;
  isForEver = false;
  standIn = StandIn();
  failedRead = FailedRead();
  failingOpen = spoiledOpen = failingSeeks = failingRead = failingReadsOfOpen = None;
  failingTells = false;
  readLimit = 0;
  closeError = 0;
  for (auto& entry : streams) entry.second = Stream();
}

void FileFaults::fail(FileCall call, long number, bool forEver, int error) {
  failingCall = call;
  failingNumber = number;
  isForEver = forEver;
  callError = error;
}

bool FileFaults::meets(FileCall call) {
  const long number = calls[static_cast<std::size_t>(call)]++;
  const bool isTold = failingNumber != None && call == failingCall &&
                      (number == failingNumber || (isForEver && number > failingNumber));
  if (!isTold) return false;
  countFault();
  errno = callError;
  return true;
}

void FileFaults::countFault() {
  ++faults;
  ++getInjectedFailures().fileCalls;
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
  if (meets(FileCall::Open)) return nullptr;
  if (matches(failingOpen, number)) {
    countFault();
    errno = openError;
    return nullptr;
  }
  Stream opened;
  opened.open = number;
  if (standIn.open != None && number >= standIn.open) {
    const std::string& other = number == standIn.open ? standIn.first : standIn.later;
    opened.isStandIn = !other.empty();
    if (opened.isStandIn) name = other.c_str();
  }
  std::FILE* stream = realOpen(name, mode);
  if (stream == nullptr) return nullptr;
  const int error = errno;
  streams[stream] = opened;
  errno = error;
  if (matches(spoiledOpen, number)) {
    countFault();
    errno = spoiledErrno;
  }
  return stream;
}

std::size_t FileFaults::read(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
  Stream& state = streams[stream];
  const long number = getReads();
  if (meets(FileCall::Read)) {
    if (failedRead.open == None) failedRead = {state.open, realTell(stream)};
    putInError(stream);
    errno = callError;
    return 0;
  }
  const bool fails = state.hasFailed || matches(failingRead, number) || matches(failingReadsOfOpen, state.open);
  std::size_t wanted = size * count;
  if (readLimit > 0) wanted = std::min(wanted, readLimit);
  if (fails) wanted = state.hasFailed ? 0 : std::min(wanted, failingReadBytes);
  const std::size_t came = wanted == 0 ? 0 : realRead(to, 1, wanted, stream);
  if (fails) {
    countFault();
    state.hasFailed = true;
    putInError(stream);
    errno = readError;
  }
  if (std::feof(stream) != 0) state.hasEnded = true;
  state.vainReads = came > 0 ? 0 : state.vainReads + 1;
  if (state.vainReads > MostVainReads) {
    ADD_FAILURE() << "a pass goes on reading where nothing comes any more";
    std::abort();
  }
  return came / size;
}

int FileFaults::seek(std::FILE* stream, long offset, int origin) {
  if (meets(FileCall::Seek)) return -1;
  Stream& state = streams[stream];
  if (matches(failingSeeks, state.open)) {
    countFault();
    errno = EINVAL;
    return -1;
  }
  if (state.isStandIn && standIn.later.empty() && state.hasEnded && offset >= standIn.back) {
    const int error = errno;
    if (std::freopen(fileName.c_str(), "rb", stream) == nullptr) std::abort();
    realSetBuffer(stream, nullptr, _IONBF, 0);
    errno = error;
    state.isStandIn = false;
  }
  return realSeek(stream, offset, origin);
}

long FileFaults::tell(std::FILE* stream) {
  if (meets(FileCall::Tell)) return -1;
  if (failingTells) {
    countFault();
    errno = EOVERFLOW;
    return -1;
  }
  // The library asks for nothing but the size of the file.
  return streams[stream].isStandIn ? standIn.size : realTell(stream);
}

int FileFaults::close(std::FILE* stream) {
  streams.erase(stream);
  const int result = realClose(stream);
  if (meets(FileCall::Close)) return EOF;
  if (closeError == 0) return result;
  countFault();
  errno = closeError;
  return EOF;
}

int FileFaults::setBuffer(std::FILE* stream, char* buffer, int mode, std::size_t size) {
  return meets(FileCall::SetBuffer) ? -1 : realSetBuffer(stream, buffer, mode, size);
}

int FileFaults::getStatus(const char* name, struct stat* status) {
  return meets(FileCall::Status) ? -1 : realGetStatus(name, status);
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

int setvbuf(std::FILE* stream, char* buffer, int mode, std::size_t size) {
  FileFaults* faults = FileFaults::getCurrent();
  return faults != nullptr && faults->isWatched(stream) ? faults->setBuffer(stream, buffer, mode, size)
                                                        : realSetBuffer(stream, buffer, mode, size);
}

int stat(const char* name, struct stat* status) noexcept {
  FileFaults* faults = FileFaults::getCurrent();
  return faults != nullptr && faults->isWatched(name) ? faults->getStatus(name, status) : realGetStatus(name, status);
}

}  // extern "C"
