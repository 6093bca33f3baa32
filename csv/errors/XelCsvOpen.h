// Opening a data file, and what to say when it fails.
#pragma once

#include <cstdio>

#include "xelcsv/XelEnv.h"

// Says why fopen failed, or answers null when errno holds none of the values that have a text: the open is then taken
// to have succeeded. It reads errno itself, before anything else; errorNumber is not looked at. The text is in a block
// of XelMessageSize bytes of env, which the caller gives back. Leaves errno alone. Throws std::bad_alloc.
char* errorTest(XelEnv env, int errorNumber, const char* fileName);

// Whether errorTest has a text for this errno.
bool XelHasOpenErrorText(int error) noexcept;

// Writes what to say of an open that failed with this errno to text, XelMessageSize bytes: the text of errorTest, or
// the system's own for an errno that errorTest does not know.
void XelFormatOpenError(int error, const char* fileName, char* text) noexcept;

// Throws XelFileNotFoundException with the text for this errno.
[[noreturn]] void XelThrowOpenError(int error, const char* fileName);

// A data file, opened for reading and closed on every way out. The one place that opens, reads, positions and closes.
class XelCsvFile {
 public:
  XelCsvFile() = default;
  ~XelCsvFile() { close(); }
  XelCsvFile(const XelCsvFile&) = delete;
  XelCsvFile& operator=(const XelCsvFile&) = delete;

  // Sets errno to 0 and opens the file with mode "r" or "rb". Answers 0, or the errno of the failure; errno is left as
  // the open left it. The stream has no buffer: blocks are read as they are asked for.
  int open(const char* fileName, const char* mode) noexcept;

  // Closes the file if it is open. Leaves errno alone.
  void close() noexcept;

  bool isOpen() const noexcept { return stream != nullptr; }

  // Goes to a byte offset. False when the file cannot be positioned.
  bool seek(long offset) noexcept;

  // Size of the file in bytes, -1 when it has none. The position is then at the end.
  long goToEnd() noexcept;

  // Reads up to size bytes. Fewer come only at the end of the file or at a read error, which hasFailed() tells.
  long read(char* to, long size) noexcept;

  // Whether a read failed, and not for the end of the file.
  bool hasFailed() const noexcept { return failed; }

  // What errno was when the last read failed that failed; 0 when none did.
  int getReadError() const noexcept { return readError; }

 private:
  std::FILE* stream = nullptr;
  bool failed = false;
  int readError = 0;
  bool isOver = false;  // the last read met the end or failed
};
