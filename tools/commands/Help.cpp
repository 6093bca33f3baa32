// xelcsv help, version and completion: what the program says about itself.
#include <xelcsv/XelCsvVersion.h>

#include <algorithm>

#include "tools/Command.h"
#include "tools/Errors.h"
#include "tools/help/HelpText.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

constexpr std::size_t WidestHelp = 100;
constexpr std::size_t UsualHelp = 80;

class Help : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "help",
        "tell about the program or a command",
        {"Tells what the commands are, or what a command does and takes: the same as xelcsv COMMAND --help."},
        {"xelcsv help show", "xelcsv help --man > xelcsv.1"},
        false};
    return text;
  }

  void declare(OptionSet& options) override {
    options.addOptionalOperand("COMMAND", name, "the command to tell about");
    options.addFlag("--man", isManPage, "write the manual page of the whole program, in roff");
  }

  int run(Session& session) override {
    const auto commands = makeCommands();
    Output& output = session.getOutput();
    if (isManPage) {
      output.write(formatManPage(commands));
      return Good;
    }
    const std::size_t columns = session.isWatched() ? std::min(session.getColumns(), WidestHelp) : UsualHelp;
    if (!name) {
      output.write(formatOverview(commands, columns, session.getPainter()));
      return Good;
    }
    output.write(formatHelp(findCommand(commands, *name), columns, session.getPainter()));
    return Good;
  }

 private:
  std::optional<std::string> name;
  bool isManPage = false;
};

class Version : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "version", "print the version", {"Prints the version of program and library."}, {}, false};
    return text;
  }
  void declare(OptionSet&) override {}
  int run(Session& session) override {
    session.getOutput().writeLine("xelcsv " XELCSV_VERSION);
    return Good;
  }
};

class Completion : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "completion",
        "write a script that completes command lines",
        {"Writes a script for a shell, which then completes commands, options and file names at a press of the tab key."},
        {"source <(xelcsv completion bash)", "xelcsv completion fish > ~/.config/fish/completions/xelcsv.fish"},
        false};
    return text;
  }
  void declare(OptionSet& options) override { options.addOperand("SHELL", shell, "bash, zsh or fish"); }
  int run(Session& session) override {
    session.getOutput().write(formatCompletion(shell, makeCommands()));
    return Good;
  }

 private:
  std::string shell;
};

}  // namespace

std::unique_ptr<Command> makeHelp() { return std::make_unique<Help>(); }
std::unique_ptr<Command> makeVersion() { return std::make_unique<Version>(); }
std::unique_ptr<Command> makeCompletion() { return std::make_unique<Completion>(); }

}  // namespace xeltools
