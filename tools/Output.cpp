#include "tools/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "tools/Environment.h"
#include "tools/Errors.h"
#include "tools/text/Escape.h"

namespace xeltools {

namespace {

constexpr std::size_t BlockSize = 65536;
constexpr mode_t UsualMode = 0666;

// The file that a signal removes. Plain characters, for a handler may use nothing else.
char vanishing[PATH_MAX] = {};

extern "C" void removeAndEnd(int signal) {
  if (vanishing[0] != '\0') unlink(static_cast<const char*>(vanishing));
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

std::string describe(int error) {
  // The texts of the C library would follow the locale if the program set one, which it does not.
  return std::strerror(error);  // NOLINT(concurrency-mt-unsafe): there is one thread
}

mode_t getModeOfNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return UsualMode & ~mask;
}

std::string getPagerCommand() {
  for (const char* const name : {"XELCSV_PAGER", "PAGER"}) {
    std::string command = getVariable(name);
    if (!command.empty()) return command;
  }
  return "less -FRSX";
}

}  // namespace

std::string makeTemporaryName(const std::string& place) { return place + ".part" + std::to_string(getpid()); }

void setVanishing(const std::string& file) {
  if (file.size() + 1 > sizeof vanishing) return;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, file.empty() ? SIG_DFL : removeAndEnd);
  std::memcpy(static_cast<char*>(vanishing), file.c_str(), file.size() + 1);
}

Output::Output(Goal goal) : descriptor(STDOUT_FILENO) {
  if (goal == Goal::Pager) startPager();
}

Output::Output(const std::string& file) : descriptor(-1), place(file) {
  struct stat status {};
  const bool isThere = stat(file.c_str(), &status) == 0;
  if (isThere && S_ISDIR(status.st_mode)) throw UserError(makePrintable(file) + " is a folder; name a file");
  const bool isStraight = isThere && !S_ISREG(status.st_mode);
  if (!isStraight) temporary = makeTemporaryName(file);
  const std::string& name = isStraight ? file : temporary;
  const mode_t mode = isThere && !isStraight ? status.st_mode & 07777 : getModeOfNewFiles();
  if (!isStraight) setVanishing(temporary);
  descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
  if (descriptor < 0) {
    const int error = errno;
    temporary.clear();
    setVanishing("");
    fail(error);
  }
}

Output::~Output() {
  if (!place.empty() && descriptor >= 0) close(descriptor);
  if (!temporary.empty()) {
    unlink(temporary.c_str());
    setVanishing("");
  }
  if (pager > 0) {
    close(descriptor);
    int status = 0;
    while (waitpid(pager, &status, 0) < 0 && errno == EINTR) {
    }
  }
}

// The pager reads what is written here and writes to standard output itself.
void Output::startPager() {
  int ends[2];
  if (pipe2(static_cast<int*>(ends), O_CLOEXEC) != 0) fail(errno);
  const std::string command = getPagerCommand();
  pager = fork();
  if (pager < 0) fail(errno);
  if (pager == 0) {
    dup2(ends[0], STDIN_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  close(ends[0]);
  descriptor = ends[1];
}

void Output::write(std::string_view text) {
  if (isGuarded) {
    buffer += makePrintableLines(text);
  } else {
    buffer += text;
  }
  if (buffer.size() >= BlockSize) flush();
}

void Output::writeLine(std::string_view text) {
  write(text);
  write("\n");
}

void Output::flush() {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t written = ::write(descriptor, buffer.data() + done, buffer.size() - done);
    if (written >= 0) {
      done += static_cast<std::size_t>(written);
    } else if (errno == EPIPE) {
      buffer.clear();
      throw BrokenPipe();
    } else if (errno != EINTR) {
      const int error = errno;
      buffer.clear();
      fail(error);
    }
  }
  buffer.clear();
}

std::string Output::hold() {
  flush();
  return temporary.empty() ? place : temporary;
}

void Output::finish() {
  flush();
  if (place.empty()) return;
  const int toClose = descriptor;
  descriptor = -1;
  if (close(toClose) != 0) fail(errno);
  if (temporary.empty()) return;
  if (std::rename(temporary.c_str(), place.c_str()) != 0) fail(errno);
  temporary.clear();
  setVanishing("");
}

void Output::fail(int error) const {
  const std::string where = place.empty() ? "standard output" : makePrintable(place);
  throw UserError("cannot write " + where + ": " + describe(error));
}

}  // namespace xeltools
