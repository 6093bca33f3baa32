// xelcsv: the program for the command line.
#include <xelcsv/XelCsvReader.h>

#include <csignal>
#include <cstdio>
#include <new>

#include "tools/Command.h"
#include "tools/Errors.h"
#include "tools/layout/AlignedTable.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

// What the library says, without the names of classes in front.
std::string getText(const XelQuietException& problem) {
  const std::string_view text = problem.getMessage();
  const std::size_t colon = text.find(" : ");
  const bool namesClass = colon != std::string::npos && beginsWith(text, "XelCsvReader::");
  return std::string(trimBlanks(namesClass ? text.substr(colon + 3) : text));
}

// What can be done about a failure of the library; empty when the message says it all.
std::string getAdvice(const XelQuietException& problem) {
  if (dynamic_cast<const XelCsvReader::XelDuplicatedTableException*>(&problem) != nullptr) {
    return " (--split reads tables whose lines are spread over the file)";
  }
  if (dynamic_cast<const XelCsvReader::XelDuplicatedLineException*>(&problem) != nullptr) {
    return " (xelcsv check shows both lines; --no-cache finds the first of them)";
  }
  if (dynamic_cast<const XelCsvReader::XelCsvReaderParameterException*>(&problem) != nullptr) {
    return " (--show-settings says where each setting comes from)";
  }
  return {};
}

void showSettings(Session& session, const std::string& file) {
  AlignedTable layout({{"setting"}, {"value"}, {"origin"}});
  const auto& all = session.openSettings(file).getAll();
  const auto makeCells = [](const Setting& setting) {
    return std::vector<std::string>{setting.name, setting.value, makePrintable(setting.origin)};
  };
  for (const Setting& setting : all) layout.observe(makeCells(setting));
  layout.writeHeadings(session.getOutput(), session.getPainter());
  for (const Setting& setting : all) layout.write(session.getOutput(), session.getPainter(), makeCells(setting));
}

int runCommand(Command& command, const std::vector<std::string>& words) {
  const std::string name = command.getText().name;
  CommonOptions common;
  OptionSet options(name);
  command.declare(options);
  common.declare(options, command.getText().readsFile);
  try {
    options.parse(words);
  } catch (const UserError& problem) {
    std::fprintf(stderr, "xelcsv %s: %s (xelcsv help %s tells more)\n", name.c_str(), problem.what(), name.c_str());
    return CannotDo;
  }
  Session session(common, name);
  try {
    int status = Good;
    if (common.showsSettings) {
      showSettings(session, command.getFile());
    } else {
      status = command.run(session);
    }
    session.finish();
    return status;
  } catch (const BrokenPipe&) {
    return Good;
  } catch (const UsageError& problem) {
    session.complain(std::string(problem.what()) + " (xelcsv help " + name + " tells more)");
  } catch (const UserError& problem) {
    session.complain(problem.what());
  } catch (const XelQuietException& problem) {
    const std::string& file = session.getFile();
    const std::string text = getText(problem);
    const bool namesFile = file.empty() || text.find(file) != std::string::npos;
    session.complain(makePrintable((namesFile ? "" : file + ": ") + text) + getAdvice(problem));
  } catch (const std::bad_alloc&) {
    session.complain("memory is exhausted");
  }
  return CannotDo;
}

// Whether help is asked for; not when the word is an operand behind --.
bool asksForHelp(const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (word == "--") return false;
    if (word == "-h" || word == "--help") return true;
  }
  return false;
}

int run(std::vector<std::string> words) {
  if (words.empty()) {
    std::fprintf(stderr, "usage: xelcsv COMMAND [OPTIONS] FILE ...\nxelcsv help tells what the commands are\n");
    return CannotDo;
  }
  std::string name = words.front();
  words.erase(words.begin());
  if (name == "-h" || name == "--help") name = "help";
  if (name == "-V" || name == "--version") name = "version";
  const auto commands = makeCommands();
  try {
    if (beginsWith(name, "-")) throw UserError("the command comes first, then its options; xelcsv help lists them");
    Command& command = findCommand(commands, name);
    if (!asksForHelp(words)) return runCommand(command, words);
    return runCommand(findCommand(commands, "help"), {name});
  } catch (const UserError& problem) {
    std::fprintf(stderr, "xelcsv: %s\n", problem.what());
    return CannotDo;
  }
}

}  // namespace

}  // namespace xeltools

int main(int count, char** arguments) {
  std::signal(SIGPIPE, SIG_IGN);
  return xeltools::run(std::vector<std::string>(arguments + 1, arguments + count));
}
