// Where the data of a command goes.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace xeltools {

// Standard output, a pager, or a file that is there whole or not at all: it is written beside its place under another
// name, which it loses in finish(); without finish() it vanishes, also when a signal ends the program.
class Output {
 public:
  enum class Goal { StandardOutput, Pager };

  // Standard output, or a pager that it is given to: XELCSV_PAGER, PAGER or less. Throws UserError.
  explicit Output(Goal goal);

  // A file. What is no regular file, such as /dev/null, is written straight. Throws UserError.
  explicit Output(const std::string& file);

  // Ends the pager. A file that is not finished vanishes.
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // What is written from here on goes to a terminal as it stands in a file: control characters are written out.
  void guardTerminal() { isGuarded = true; }

  // Throws BrokenPipe when nobody reads any more, UserError when it cannot be written.
  void write(std::string_view text);
  void writeLine(std::string_view text);

  // Gives everything on; call it once, when all went well. Throws as write() does.
  void finish();

  // Gives everything on but leaves a file under its temporary name, which is the answer.
  std::string hold();

  // Gives on what was written so far, so that it stands in front of a message on standard error.
  void flush();

 private:
  void startPager();
  void fail(int error) const;

  int descriptor;
  pid_t pager = -1;
  std::string buffer;
  bool isGuarded = false;
  std::string place;      // of a file: its name
  std::string temporary;  // the name it has until it is finished; empty for what is written straight
};

// A name beside a file or folder under which it can be made before it gets its own.
std::string makeTemporaryName(const std::string& place);

// A signal that ends the program removes this file first. One at a time; empty for none.
void setVanishing(const std::string& file);

}  // namespace xeltools
