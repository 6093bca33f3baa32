// The data file of an input: one file in memory where there is such a thing, rewritten for every input.
#pragma once

#include <string>

namespace fuzz {

class DataFile {
 public:
  DataFile();
  ~DataFile();
  DataFile(const DataFile&) = delete;
  DataFile& operator=(const DataFile&) = delete;

  // Replaces the content.
  void write(const std::string& content) const;

  // What to open.
  const char* getName() const { return name.c_str(); }

 private:
  std::string name;
  int descriptor;
  bool isNamed = false;  // in a folder, from where it is removed at the end
};

// Number of files that the process has open.
long countOpenFiles();

}  // namespace fuzz
