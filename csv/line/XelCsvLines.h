// The lines of a data file: the one place that reads lines, for every pass over a file.
#pragma once

#include <algorithm>

#include "csv/errors/XelCsvOpen.h"
#include "csv/line/XelCsvFormat.h"
#include "csv/line/XelCsvText.h"
#include "env/XelEnvOwned.h"

// How much of the file a reader of lines is likely to want.
enum class XelCsvReach { OneLine, ManyLines };

// Hands out the physical lines of a file one after the other, with their byte offsets. A line is what fgets with a
// buffer of XelLineSize bytes reads: up to and including its line feed, at most 9999 bytes; the rest of a longer one is
// the next line. The file is read in blocks, small ones first, so that a single lookup reads little and a long pass
// reads much at a time; offsets are counted, not asked for.
class XelCsvLines : public XelEnvResident {
 public:
  explicit XelCsvLines(XelEnv environment) noexcept : env(environment) {}
  XelCsvLines(const XelCsvLines&) = delete;
  XelCsvLines& operator=(const XelCsvLines&) = delete;

  // Opens the file and stands at its start. Answers 0 or the errno of the failure, and leaves errno as the open left
  // it.
  int open(const char* fileName, const char* mode, XelCsvReach reach) noexcept;

  // Closes the file and gives the block back. Leaves errno alone.
  void close() noexcept;

  // The file is likely to have so many bytes: reading asks for those at first, and looks for more behind them only when a
  // line does. After open(), which forgets it.
  void expectSize(long bytes) noexcept { expectedSize = bytes; }

  // Goes to a byte offset; reading goes on from there, also after the end was met, and getLine() is empty until then.
  // False when the file cannot be positioned.
  bool seek(long offset) noexcept;

  // Size of the file in bytes, -1 when it has none. Only before the first line is read; a seek() must follow.
  long goToEnd() noexcept { return file.goToEnd(); }

  // Reads the next physical line. False at the end of the file; the line read before stays where getLine() says.
  // A read error ends the file too. Throws std::bad_alloc.
  bool read();

  // Whether a read error ended the file, and what errno was then.
  bool hasFailed() const noexcept { return file.hasFailed(); }
  int getReadError() const noexcept { return file.getReadError(); }

  // Reads on to the next line that is neither a comment nor empty: false when the file ends before. As long as the end
  // was not met, each try adds 1 to lineNumber and stores the offset of the line tried in offset. When the end has been
  // met, by a last line without line feed for example, nothing changes. Throws
  // std::bad_alloc; nothing has changed then.
  bool skipCommentAndEmptyLines(char comment, long& lineNumber, long& offset);

  // What is known of the lines that come, without another look at the file: the bytes from the next line on, as many as
  // there may be in a line. No bytes when none is known yet. Padding follows.
  XelCsvSpan getAhead() const noexcept {
    const char* begin = block.get() + next;
    return {begin, begin + std::min(filled - next, LongestLine)};
  }

  // Bytes of a line at most.
  static constexpr long LongestLine = XelLineSize - 1;

  // Takes the next line as read: the bytes of getAhead() up to end, which is behind its line feed, or behind
  // LongestLine bytes without one.
  void take(const char* end) noexcept {
    line = {block.get() + next, end};
    next = end - block.get();
    anyRead = true;
  }

  // The same for a line whose text was seen to end at stop, of all its bytes that ahead shows. False, and nothing has
  // changed, when that does not tell where the line ends.
  bool takeLine(const XelCsvSpan& ahead, const char* stop) noexcept {
    const char* end = stop;
    if (end == ahead.end) {
      if (ahead.getLength() < LongestLine) return false;
    } else {
      if (*end == '\r' && end + 1 != ahead.end) ++end;
      if (*end != '\n') return false;
      ++end;
    }
    take(end);
    return true;
  }

  // The line read last, its line feed included; it stays until the next one is read, and padding is behind it. Before
  // the first it is a text of no bytes at no address.
  XelCsvSpan getLine() const noexcept { return line; }

  // Whether the last skipCommentAndEmptyLines() read any line at all.
  bool hasRead() const noexcept { return anyRead; }

  // Whether the end of the file was met, as feof would tell: only by trying to read beyond the last byte.
  bool isEnded() const noexcept { return ended; }

  // Offset of the next line.
  long getOffset() const noexcept { return blockOffset + next; }

  // The bytes that are in memory from the next line on; they stay until a line is read. None before the first one is.
  XelCsvSpan getRest() const noexcept { return {block.get() + next, block.get() + filled}; }

  // Goes on behind a line [begin, end) that the caller found in the rest, as if it and those before it had been read.
  void goOn(const char* begin, const char* end) noexcept {
    line = {begin, end};
    next = end - block.get();
  }

 private:
  void fill();

  XelEnv env;
  XelCsvFile file;
  XelEnvBlock<char> block;  // with padding behind its bytes
  long size = 0;            // bytes of the block
  long capacity = 0;        // bytes of the next block
  long blockOffset = 0;     // offset in the file of the block's first byte
  long next = 0;            // index in the block of the next line
  long filled = 0;          // bytes read into the block
  long expectedSize = 0;    // of the file; 0 when nothing is known
  XelCsvSpan line{nullptr, nullptr};
  bool fileEnded = false;  // no byte comes after those in the block
  bool ended = false;
  bool anyRead = false;
};
