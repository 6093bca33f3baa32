#include "csv/errors/XelCsvOpen.h"

#include <cerrno>
#include <clocale>
#include <cstring>

#include "csv/errors/XelCsvErrors.h"
#include "env/XelEnvOwned.h"

namespace {

struct OpenError {
  int error;
  const char* format;
};

// Kept: the first match counts, so the second EMFILE and ENOMEM and the last ENAMETOOLONG are never reached,
// ENAMETOOLONG has the text of ENFILE, and one text begins in lower case. Programs compare these texts.
constexpr OpenError OpenErrors[] = {
    {EACCES,
     "While trying to open file %s : Search permission is denied on a component of the path prefix, or the file "
     "exists and the permissions specified by mode (rb) are denied, or the file does not exist and write permission "
     "is denied for the parent directory of the file to be created."},
    {EISDIR, "While trying to open file %s : The named file is a directory and mode requires write access."},
    {EMFILE,
     "while trying to open file %s : Too many open files. No more file descriptors are available, so no more files "
     "can be opened."},
    {EMFILE, "While trying to open file %s : Too many open files, no more files can be opened."},
    {ENFILE, "While trying to open file %s : The maximum allowable number of files is currently open in the system."},
    {ENAMETOOLONG,
     "While trying to open file %s : The maximum allowable number of files is currently open in the system."},
    {ENOSPC,
     "While trying to open file %s : No space left on device. No more space for writing is available on the device "
     "(for example, when the disk is full)."},
    {ENOENT,
     "While trying to open file %s : No such file or directory. The specified file or directory does not exist or "
     "cannot be found. This message can occur whenever a specified file does not exist or a component of a path "
     "does not specify an existing directory. "},
    {ENOTDIR,
     "While trying to open file %s : No such file or directory. A component of the path prefix is not a directory. "},
    {ENXIO,
     "While trying to open file %s : No such file or directory. The named file is a character special or block "
     "special file, and the device associated with this special file does not exist. "},
    {ENOMEM, "While trying to open file %s : Insufficient storage space is available."},
    {ENOMEM, "While trying to open file %s : Insufficient storage space is available."},
    {ENAMETOOLONG,
     "While trying to open file %s : The length of the filename exceeds maximum length allowed or a pathname "
     "component is longer than maximum name length allowed."},
};

const OpenError* findText(int error) noexcept {
  if (error == 0) return nullptr;  // as mostly
  for (const OpenError& candidate : OpenErrors) {
    if (candidate.error == error) return &candidate;
  }
  return nullptr;
}

// The system's text for an errno, in no other language than all messages: strerror() follows the process's locale.
const char* getSystemText(int error) noexcept {
#if defined(LC_MESSAGES_MASK) && !defined(__APPLE__)                    // POSIX 2008
  const locale_t plain = newlocale(LC_MESSAGES_MASK, "C", locale_t());  // built in: takes no memory, cannot fail
  const char* text = strerror_l(error, plain);
  freelocale(plain);
  return text;
#else
  return std::strerror(error);  // NOLINT(concurrency-mt-unsafe)
#endif
}

// Puts a file name in the place of the format's "%s", cut to the size of a message.
void putName(const char* format, const char* fileName, char* text) noexcept {
  const char* hole = std::strstr(format, "%s");
  std::snprintf(text, XelMessageSize, "%.*s%s%s", static_cast<int>(hole - format), format, fileName, hole + 2);
}

}  // namespace

char* errorTest(XelEnv env, int /*errorNumber*/, const char* fileName) {
  const int error = errno;
  const OpenError* found = findText(error);
  if (found == nullptr) return nullptr;
  XelEnvBlock<char> text(env, XelMessageSize);
  putName(found->format, fileName == nullptr ? "" : fileName, text.get());
  errno = error;
  return text.release();
}

bool XelHasOpenErrorText(int error) noexcept { return findText(error) != nullptr; }

void XelFormatOpenError(int error, const char* fileName, char* text) noexcept {
  const char* name = fileName == nullptr ? "" : fileName;
  const OpenError* found = findText(error);
  if (found != nullptr) {
    putName(found->format, name, text);
  } else {
    std::snprintf(text, XelMessageSize, "While trying to open file %s : %s.", name, getSystemText(error));
  }
}

void XelThrowOpenError(int error, const char* fileName) {
  char text[XelMessageSize];
  XelFormatOpenError(error, fileName, text);
  XelCsvErrors::cannotOpen(text);
}

int XelCsvFile::open(const char* fileName, const char* mode) noexcept {
  close();
  failed = isOver = false;
  readError = 0;
  errno = 0;
  stream = std::fopen(fileName, mode);
  const int error = errno;
  if (stream == nullptr) return error != 0 ? error : EIO;  // a failure has a number, whatever the system says
  if (XelHasOpenErrorText(error)) {
    close();
    return error;
  }
  std::setvbuf(stream, nullptr, _IONBF, 0);
  errno = error;
  return 0;
}

void XelCsvFile::close() noexcept {
  if (stream == nullptr) return;
  const int error = errno;
  std::fclose(stream);
  errno = error;
  stream = nullptr;
}

bool XelCsvFile::seek(long offset) noexcept {
  failed = false;
  return std::fseek(stream, offset, SEEK_SET) == 0;
}

long XelCsvFile::goToEnd() noexcept { return std::fseek(stream, 0, SEEK_END) == 0 ? std::ftell(stream) : -1; }

long XelCsvFile::read(char* to, long size) noexcept {
  if (isOver) std::clearerr(stream);  // an end that was met before is asked for again
  isOver = false;
  long done = 0;
  while (done < size) {
    const std::size_t count = std::fread(to + done, 1, static_cast<std::size_t>(size - done), stream);
    done += static_cast<long>(count);
    const bool isAtEnd = std::feof(stream) != 0;
    isOver = isAtEnd || count == 0 || std::ferror(stream) != 0;
    if (!isOver) continue;
    if (!isAtEnd) {
      failed = true;
      readError = errno;
    }
    break;
  }
  return done;
}
