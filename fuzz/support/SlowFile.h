// The bytes of a data file as lines, read the slow way: cut into physical lines first, then looked at one after the other.
#pragma once

#include <string>
#include <vector>

namespace fuzz {

// What one read gives: up to and including a line feed, 9999 bytes at most.
struct PhysicalLine {
  long offset;
  std::string bytes;
};

class SlowFile {
 public:
  explicit SlowFile(const std::string& content);

  const std::vector<PhysicalLine>& getLines() const { return lines; }
  long getSize() const { return size; }

 private:
  std::vector<PhysicalLine> lines;
  long size;
};

// Reads lines from one of them on. The end of the file is met by a read that wants more bytes than there are, which is a
// last line without line feed, or the read after the last line.
class SlowCursor {
 public:
  SlowCursor(const SlowFile& readFile, std::size_t start) : file(readFile), next(start) {}

  // The next line, null at the end of the file.
  const PhysicalLine* read();

  // The next line that is neither a comment nor empty. Until the end was met, each read counts and notes where it began.
  const PhysicalLine* skip(char comment, long& lineNumber, long& offset);

 private:
  const SlowFile& file;
  std::size_t next;
  bool isEnded = false;
};

}  // namespace fuzz
