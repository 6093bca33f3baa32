#include "fuzz/support/SlowFile.h"

#include "fuzz/support/SlowLine.h"

namespace fuzz {

namespace {

constexpr std::size_t LongestRead = 9999;

}  // namespace

SlowFile::SlowFile(const std::string& content) : size(static_cast<long>(content.size())) {
  std::string bytes;
  for (std::size_t at = 0; at < content.size(); ++at) {
    bytes += content[at];
    const bool isLast = at + 1 == content.size();
    if (content[at] != '\n' && bytes.size() < LongestRead && !isLast) continue;
    lines.push_back({static_cast<long>(at + 1 - bytes.size()), bytes});
    bytes.clear();
  }
}

const PhysicalLine* SlowCursor::read() {
  if (next >= file.getLines().size()) {
    isEnded = true;
    return nullptr;
  }
  const PhysicalLine& line = file.getLines()[next++];
  if (line.bytes.back() != '\n' && line.bytes.size() < LongestRead) isEnded = true;
  return &line;
}

const PhysicalLine* SlowCursor::skip(char comment, long& lineNumber, long& offset) {
  while (!isEnded) {
    const bool isLineLeft = next < file.getLines().size();
    offset = isLineLeft ? file.getLines()[next].offset : file.getSize();
    ++lineNumber;
    const PhysicalLine* line = read();
    if (line != nullptr && line->bytes[0] != comment && !slowIsEmpty(line->bytes)) return line;
  }
  return nullptr;
}

}  // namespace fuzz
