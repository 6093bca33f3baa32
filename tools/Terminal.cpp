#include "tools/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

#include "tools/Environment.h"

namespace xeltools {

namespace {

constexpr std::size_t UsualColumns = 80;

const char* getCode(Look look) {
  switch (look) {
    case Look::Strong:
      return "1";
    case Look::Faint:
      return "2";
    case Look::Underlined:
      return "1;4";
    case Look::Error:
      return "1;31";
    case Look::Warning:
      return "1;35";
    case Look::Note:
      return "1;36";
    case Look::Plain:
      break;
  }
  return "0";
}

}  // namespace

std::string Painter::paint(std::string_view text, Look look) const {
  if (!isColored || look == Look::Plain || text.empty()) return std::string(text);
  return std::string("\x1b[") + getCode(look) + "m" + std::string(text) + "\x1b[0m";
}

bool isTerminal(int descriptor) { return isatty(descriptor) == 1; }

std::size_t getTerminalColumns() {
  const long columns = std::strtol(getVariable("COLUMNS").c_str(), nullptr, 10);
  if (columns > 0) return static_cast<std::size_t>(columns);
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return UsualColumns;
}

bool isColorWanted(const std::string& mode, bool goesToTerminal) {
  if (mode != "auto") return mode == "always";
  if (!getVariable("NO_COLOR").empty()) return false;
  const std::string forced = getVariable("CLICOLOR_FORCE");
  if (!forced.empty() && forced != "0") return true;
  return goesToTerminal;
}

}  // namespace xeltools
