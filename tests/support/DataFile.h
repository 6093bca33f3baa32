// A data file that a test carries in itself.
#pragma once

#include <string>
#include <string_view>

// A temporary file with the given bytes, removed at the end of the scope.
class DataFile {
 public:
  explicit DataFile(std::string_view content);
  ~DataFile();
  DataFile(const DataFile&) = delete;
  DataFile& operator=(const DataFile&) = delete;

  const char* getName() const { return name.c_str(); }

  // Replaces the bytes of the file.
  void write(std::string_view content) const;

  // Removes the file before the end of the scope.
  void remove() const;

 private:
  std::string name;
};

// A temporary empty directory, removed with what is in it at the end of the scope.
class DataDirectory {
 public:
  DataDirectory();
  ~DataDirectory();
  DataDirectory(const DataDirectory&) = delete;
  DataDirectory& operator=(const DataDirectory&) = delete;

  const char* getName() const { return name.c_str(); }

 private:
  std::string name;
};

// Number of file descriptors that the process holds open.
long countOpenFiles();
