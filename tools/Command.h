// A command of the program.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/OptionSet.h"
#include "tools/Session.h"

namespace xeltools {

// What help and man page say of a command beside its options.
struct CommandText {
  std::string name;
  std::string summary;                  // one line without a full stop
  std::vector<std::string> paragraphs;  // plain sentences; the formatter breaks the lines
  std::vector<std::string> examples;    // command lines
  bool readsFile = true;                // whether options say how a file is written
};

class Command {
 public:
  virtual ~Command() = default;
  Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  virtual const CommandText& getText() const = 0;

  // Binds the command's own options to its members.
  virtual void declare(OptionSet& options) = 0;

  // The data file that the command line named, for --show-settings; empty when there is none.
  virtual std::string getFile() const { return {}; }

  // Does the work; answers Good or NotGood, or throws UserError or what the library throws.
  virtual int run(Session& session) = 0;
};

// All commands, in the order in which they are listed.
std::vector<std::unique_ptr<Command>> makeCommands();

// The one with a name. Throws UserError.
Command& findCommand(const std::vector<std::unique_ptr<Command>>& commands, const std::string& name);

std::unique_ptr<Command> makeTables();
std::unique_ptr<Command> makeShow();
std::unique_ptr<Command> makeHeaders();
std::unique_ptr<Command> makeKeys();
std::unique_ptr<Command> makeCount();
std::unique_ptr<Command> makeGet();
std::unique_ptr<Command> makeCheck();
std::unique_ptr<Command> makeExplain();
std::unique_ptr<Command> makeSniff();
std::unique_ptr<Command> makeConvert();
std::unique_ptr<Command> makeCompletion();
std::unique_ptr<Command> makeVersion();
std::unique_ptr<Command> makeHelp();

}  // namespace xeltools
