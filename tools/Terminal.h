// The terminal, if there is one, and how texts look on it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace xeltools {

// How a text stands out. Nothing here sets a background or a light or dark foreground of its own, so that it can be read
// on both.
enum class Look { Plain, Strong, Faint, Underlined, Error, Warning, Note };

// Makes texts stand out, or leaves them as they are.
class Painter {
 public:
  Painter() = default;
  explicit Painter(bool colored) : isColored(colored) {}

  std::string paint(std::string_view text, Look look) const;
  bool isOn() const { return isColored; }

 private:
  bool isColored = false;
};

// Whether a stream of the process (1 or 2) is a terminal.
bool isTerminal(int descriptor);

// Columns of the terminal: the variable COLUMNS, or what the terminal says, or 80.
std::size_t getTerminalColumns();

// Whether output is to be colored: mode is auto, always or never. With auto the variables NO_COLOR and CLICOLOR_FORCE
// rule when they are set and not empty (CLICOLOR_FORCE=0 is as good as unset), then whether it goes to a terminal.
bool isColorWanted(const std::string& mode, bool goesToTerminal);

}  // namespace xeltools
