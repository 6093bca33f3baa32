#include "tools/Session.h"

#include <unistd.h>

#include <cstdio>

#include "tools/text/Escape.h"

namespace xeltools {

void CommonOptions::declare(OptionSet& set, bool readsFile) {
  if (readsFile) settings.declare(set);
  set.beginGroup("Common options");
  set.addText("-o,--output", "FILE", outputFile,
              "write to FILE, which is there whole afterwards or, when something fails, not at all");
  set.addFlag("-q,--quiet", isQuiet, "no progress and no remarks on standard error");
  set.addChoice("--color", {"auto", "always", "never"}, color,
                "colors; auto is for a terminal, unless NO_COLOR is set");
  set.addFlag("--pager", isPaged, "on a terminal, show the output with XELCSV_PAGER, PAGER or less");
  if (!readsFile) return;
  set.addFlag("--show-settings", showsSettings, "print how the file would be read and who says so, and nothing else");
}

Session::Session(CommonOptions given, std::string name)
    : options(std::move(given)),
      command(std::move(name)),
      watched(!options.outputFile && isTerminal(STDOUT_FILENO)),
      painter(isColorWanted(options.color, watched)),
      progress(!options.isQuiet && isTerminal(STDERR_FILENO)) {}

const Settings& Session::openSettings(const std::string& name) {
  file = name;
  settings = std::make_unique<Settings>(options.settings, name);
  return *settings;
}

Output& Session::getOutput() {
  if (output) return *output;
  if (options.outputFile) {
    output = std::make_unique<Output>(*options.outputFile);
  } else {
    output = std::make_unique<Output>(options.isPaged && watched ? Output::Goal::Pager : Output::Goal::StandardOutput);
  }
  return *output;
}

void Session::finish() {
  if (output) output->finish();
}

void Session::complain(const std::string& text) const {
  std::fprintf(stderr, "xelcsv %s: %s\n", command.c_str(), text.c_str());
}

void Session::say(const std::string& text) const {
  if (!options.isQuiet) complain(text);
}

}  // namespace xeltools
