#include "csv/line/XelCsvLines.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr long OneLineBlock = 512;
constexpr long FirstBlock = 4096;
constexpr long LargestBlock = 256L * 1024;
constexpr long BlockGrowth = 4;

}  // namespace

int XelCsvLines::open(const char* fileName, const char* mode, XelCsvReach reach) noexcept {
  close();
  capacity = reach == XelCsvReach::OneLine ? OneLineBlock : FirstBlock;
  return file.open(fileName, mode);
}

void XelCsvLines::close() noexcept {
  file.close();
  block = XelEnvBlock<char>();
  size = blockOffset = next = filled = expectedSize = 0;
  line = {nullptr, nullptr};
  fileEnded = ended = false;
}

bool XelCsvLines::seek(long offset) noexcept {
  ended = false;
  line = {nullptr, nullptr};
  if (offset >= blockOffset && offset < blockOffset + filled) {  // iterating an index mostly goes a line ahead
    next = offset - blockOffset;
    return true;
  }
  fileEnded = false;
  next = filled = 0;
  blockOffset = offset;
  return file.seek(offset);
}

bool XelCsvLines::read() {
  for (;;) {
    const char* begin = block.get() + next;
    const long there = filled - next;
    const long searched = std::min(there, LongestLine);
    const void* feed = searched > 0 ? std::memchr(begin, '\n', static_cast<std::size_t>(searched)) : nullptr;
    long length = 0;
    if (feed != nullptr) {
      length = static_cast<const char*>(feed) - begin + 1;
    } else if (there >= LongestLine) {
      length = LongestLine;
    } else if (!fileEnded) {
      fill();
      continue;
    } else {
      // What a failed read left of a line is not taken for the line.
      ended = true;
      if (there == 0 || file.hasFailed()) return false;
      length = there;
    }
    line = {begin, begin + length};
    next += length;
    return true;
  }
}

// Reads on behind the bytes of the block; when it is full, the bytes from the current line on move to a larger block,
// or to the front once it is as large as blocks get. The current line stays because a caller may still look at it when
// no other follows. Blocks grow by more than the two lines that may have to be kept.
void XelCsvLines::fill() {
  if (filled == size) {
    const long kept = line.begin == nullptr ? next : line.begin - block.get();
    const long rest = filled - kept;
    if (size != capacity) {
      XelEnvBlock<char> larger(env, capacity + XelTextPadding);
      if (rest > 0) std::memcpy(larger.get(), block.get() + kept, static_cast<std::size_t>(rest));
      block = std::move(larger);
      size = capacity;
    } else {
      std::memmove(block.get(), block.get() + kept, static_cast<std::size_t>(rest));
    }
    capacity = std::min(capacity * BlockGrowth, LargestBlock);
    if (line.begin != nullptr) line = {block.get(), block.get() + line.getLength()};
    blockOffset += kept;
    next -= kept;
    filled = rest;
  }
  // Asked for what is there and no more, the stream does not ask the system a second time to see the end.
  const long expected = expectedSize - blockOffset - filled;
  const long wanted = expected > 0 ? std::min(expected, size - filled) : size - filled;
  const long came = file.read(block.get() + filled, wanted);
  filled += came;
  // Padding has a value, though none that counts: what a formatter finds there is the same in every run.
  std::memset(block.get() + filled, 0, XelTextPadding);
  // A short block is not yet the end: a file may grow while it is read.
  fileEnded = came == 0 || file.hasFailed();
}

bool XelCsvLines::skipCommentAndEmptyLines(char comment, long& lineNumber, long& offset) {
  anyRead = false;
  while (!ended) {
    const long tried = getOffset();
    const bool isThere = read();  // a throw leaves number and offset as they were
    ++lineNumber;
    offset = tried;
    if (!isThere) break;
    anyRead = true;
    const bool isComment = line.begin[0] == comment;
    if (!isComment && !XelIsEmptyLine(line.begin, line.end)) return true;
  }
  return false;
}
