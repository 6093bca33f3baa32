// Help, man page and completion, all made of what the commands say about themselves.
#pragma once

#include <string>
#include <vector>

#include "tools/Command.h"

namespace xeltools {

// One paragraph: what the program is.
extern const char* const ProgramSummary;

// A heading with sentences under it, for what all commands share: settings, exit status, environment.
struct Topic {
  const char* title;
  std::vector<std::string> paragraphs;
};
const std::vector<Topic>& getTopics();

// All options of a command, its own and the common ones.
std::vector<OptionText> collectOptions(Command& command);

// "xelcsv show [OPTIONS] FILE [TABLE]".
std::string formatUsage(const std::string& name, const std::vector<OptionText>& options);

// What xelcsv help prints, and xelcsv help COMMAND, in lines of at most columns.
std::string formatOverview(const std::vector<std::unique_ptr<Command>>& commands, std::size_t columns,
                           const Painter& painter);
std::string formatHelp(Command& command, std::size_t columns, const Painter& painter);

// The manual page xelcsv(1), for man.
std::string formatManPage(const std::vector<std::unique_ptr<Command>>& commands);

// What bash, zsh or fish source to complete command lines.
std::string formatCompletion(const std::string& shell, const std::vector<std::unique_ptr<Command>>& commands);

}  // namespace xeltools
