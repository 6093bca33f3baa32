#include "tests/limits/LargeFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace {

constexpr std::size_t BufferSize = std::size_t{4} << 20;
constexpr long StatBlock = 512;

[[noreturn]] void fail(const char* what) {
  throw std::runtime_error(std::string("large file: ") + what + ": " + std::strerror(errno));
}

int makeFileInMemory() {
  const int descriptor = memfd_create("xelcsv-limits", MFD_CLOEXEC);
  if (descriptor < 0) fail("memfd_create");
  return descriptor;
}

// The descriptor of a new file whose name is already gone.
int makeFileOnDisk() {
  std::string path = (std::filesystem::temp_directory_path() / "xelcsv-limits-XXXXXX").string();
  const int descriptor = mkostemp(path.data(), O_CLOEXEC);
  if (descriptor < 0) fail("mkostemp");
  unlink(path.c_str());
  return descriptor;
}

void writeAt(int descriptor, long offset, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t done = pwrite(descriptor, bytes.data(), bytes.size(), offset);
    if (done < 0) fail("pwrite");
    offset += done;
    bytes.remove_prefix(static_cast<std::size_t>(done));
  }
}

}  // namespace

LargeFile::LargeFile(Storage storage)
    : descriptor(storage == Storage::Memory ? makeFileInMemory() : makeFileOnDisk()),
      name("/proc/self/fd/" + std::to_string(descriptor)) {
  buffer.reserve(BufferSize);
}

LargeFile::~LargeFile() { close(descriptor); }

void LargeFile::append(std::string_view bytes) {
  buffer.append(bytes);
  if (buffer.size() >= BufferSize) finish();
}

void LargeFile::skip(long bytes) {
  finish();
  written += bytes;
}

void LargeFile::finish() {
  writeAt(descriptor, written, buffer);
  written += static_cast<long>(buffer.size());
  buffer.clear();
}

void LargeFile::replace(long offset, std::string_view bytes) const { writeAt(descriptor, offset, bytes); }

long LargeFile::getRoom() const {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) fail("fstat");
  return status.st_blocks * StatBlock;
}
