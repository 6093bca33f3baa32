#include "tests/support/DataFile.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

std::string makeName() {
  static std::atomic<int> counter{0};
  return (std::filesystem::temp_directory_path() /
          ("xelcsv-test-" + std::to_string(getpid()) + "-" + std::to_string(counter++)))
      .string();
}

}  // namespace

DataFile::DataFile(std::string_view content) : name(makeName() + ".csv") { write(content); }

DataFile::~DataFile() { remove(); }

void DataFile::write(std::string_view content) const {
  std::ofstream stream(name, std::ios::binary | std::ios::trunc);
  stream.write(content.data(), static_cast<std::streamsize>(content.size()));
  stream.close();
  if (!stream) throw std::runtime_error("cannot write " + name);
}

void DataFile::remove() const { std::remove(name.c_str()); }

DataDirectory::DataDirectory() : name(makeName()) { std::filesystem::create_directory(name); }

DataDirectory::~DataDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(name, ignored);
}

long countOpenFiles() {
  long count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    static_cast<void>(entry);
    ++count;
  }
  return count - 1;  // the one that lists the directory
}
