#include <algorithm>

#include "tools/Command.h"
#include "tools/Errors.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

std::vector<std::unique_ptr<Command>> makeCommands() {
  std::vector<std::unique_ptr<Command>> commands;
  for (auto* const make : {makeTables, makeShow, makeHeaders, makeKeys, makeCount, makeGet, makeCheck, makeExplain,
                           makeSniff, makeConvert, makeCompletion, makeVersion, makeHelp}) {
    commands.push_back(make());
  }
  return commands;
}

Command& findCommand(const std::vector<std::unique_ptr<Command>>& commands, const std::string& name) {
  std::vector<std::string> names;
  for (const auto& command : commands) {
    if (command->getText().name == name) return *command;
    names.push_back(command->getText().name);
  }
  const std::string similar = findSimilar(name, names);
  throw UserError("there is no command '" + makePrintable(name) + "'; " +
                  (similar.empty() ? "xelcsv help lists them" : "is " + similar + " meant?"));
}

}  // namespace xeltools
