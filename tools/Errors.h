// How a command ends early.
#pragma once

#include <stdexcept>
#include <string>

namespace xeltools {

// What the program answers to its caller.
constexpr int Good = 0;      // clean, or found
constexpr int NotGood = 1;   // findings, or not found
constexpr int CannotDo = 2;  // wrong usage, or a file that cannot be read or written

// Something that the user has to mend: one line that says what, where and what to do. Ends the program with CannotDo.
class UserError : public std::runtime_error {
 public:
  explicit UserError(const std::string& text) : std::runtime_error(text) {}
};

// The command line is wrong; the program points to the command's help.
class UsageError : public UserError {
 public:
  explicit UsageError(const std::string& text) : UserError(text) {}
};

// Nobody reads the output any more: the program ends without a word.
class BrokenPipe : public std::exception {};

}  // namespace xeltools
