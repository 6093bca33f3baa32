// A data file of gigabytes that nothing leaves behind.
#pragma once

#include <string>
#include <string_view>

// Where the bytes of a large file are. A file of holes is best kept in memory: its holes take none there, while those of
// a file on disk are read through the system's cache, which takes its time to make gigabytes of zeros.
enum class Storage { Disk, Memory };

// A temporary file that is written once from front to back. It has no name in its directory, so that it is gone with the
// process, however that ends; readers open it through the process's own list of descriptors. Every operation throws
// std::runtime_error when the system refuses, for want of room for example.
class LargeFile {
 public:
  explicit LargeFile(Storage storage = Storage::Disk);
  ~LargeFile();
  LargeFile(const LargeFile&) = delete;
  LargeFile& operator=(const LargeFile&) = delete;

  void append(std::string_view bytes);

  // Goes on so many bytes further: a hole, which reads as bytes 0 and takes no room.
  void skip(long bytes);

  // Writes what append() has kept back. Readers see the file from then on.
  void finish();

  // Replaces bytes of a finished file.
  void replace(long offset, std::string_view bytes) const;

  // The name to open the file by.
  const char* getName() const { return name.c_str(); }

  // Bytes so far, holes included.
  long getSize() const { return written + static_cast<long>(buffer.size()); }

  // Bytes of disk or memory that a finished file takes.
  long getRoom() const;

 private:
  int descriptor;
  std::string name;
  std::string buffer;
  long written = 0;  // where the buffer goes
};
