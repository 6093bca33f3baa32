#include "fuzz/support/DataFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "fuzz/support/Check.h"

namespace fuzz {

namespace {

// An anonymous file in memory and the name to open it by; -1 where there is none.
int makeFileInMemory(std::string& name) {
#ifdef MFD_CLOEXEC
  const int descriptor = memfd_create("xelcsv-fuzz", MFD_CLOEXEC);
  if (descriptor < 0) return -1;
  name = "/proc/self/fd/" + std::to_string(descriptor);
  if (access(name.c_str(), R_OK) == 0) return descriptor;
  close(descriptor);
#endif
  return -1;
}

int makeFileInFolder(std::string& name) {
  const char* folder = std::getenv("TMPDIR");
  const std::string pattern = std::string(folder == nullptr ? "/tmp" : folder) + "/xelcsv-fuzz-XXXXXX";
  std::vector<char> path(pattern.c_str(), pattern.c_str() + pattern.size() + 1);
  const int descriptor = mkstemp(path.data());
  name = path.data();
  return descriptor;
}

}  // namespace

DataFile::DataFile() : descriptor(makeFileInMemory(name)) {
  if (descriptor < 0) {
    descriptor = makeFileInFolder(name);
    isNamed = true;
  }
  check(descriptor >= 0, "no file for the data can be made");
}

DataFile::~DataFile() {
  close(descriptor);
  if (isNamed) unlink(name.c_str());
}

void DataFile::write(const std::string& content) const {
  check(ftruncate(descriptor, 0) == 0, "the data file cannot be emptied");
  std::size_t done = 0;
  while (done < content.size()) {
    const ssize_t count = pwrite(descriptor, content.data() + done, content.size() - done, static_cast<off_t>(done));
    check(count > 0, "the data file cannot be written");
    done += static_cast<std::size_t>(count);
  }
}

// Looks at the numbers that a program of this kind uses; a leak would take one of the lowest.
long countOpenFiles() {
  constexpr int Looked = 64;
  long count = 0;
  for (int descriptor = 0; descriptor < Looked; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) != -1) ++count;
  }
  return count;
}

}  // namespace fuzz
