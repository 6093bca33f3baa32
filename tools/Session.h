// One run of the program: what the options common to all commands say, and where data and messages go.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tools/Output.h"
#include "tools/Progress.h"
#include "tools/Settings.h"
#include "tools/Terminal.h"

namespace xeltools {

// The options that every command has.
struct CommonOptions {
  GivenSettings settings;
  std::optional<std::string> outputFile;
  std::string color = "auto";
  bool isPaged = false;
  bool isQuiet = false;
  bool showsSettings = false;

  // Those about how a file is written only for a command that reads one.
  void declare(OptionSet& options, bool readsFile);
};

class Session {
 public:
  // The name, "show", stands in messages.
  Session(CommonOptions given, std::string command);

  // The settings for a data file, whose name stands in messages from here on.
  const Settings& openSettings(const std::string& file);

  // Where the data goes, opened when it is asked for first.
  Output& getOutput();

  // Gives the data on; a file gets its name.
  void finish();

  // Whether people look at the output: then it is cut to their terminal's columns.
  bool isWatched() const { return watched; }
  std::size_t getColumns() const { return getTerminalColumns(); }
  const Painter& getPainter() const { return painter; }

  const CommonOptions& getOptions() const { return options; }
  const std::string& getFile() const { return file; }

  // For work that may take long; visible on a terminal and without -q.
  Progress& getProgress() { return progress; }

  // A line on standard error, "xelcsv show: TEXT".
  void complain(const std::string& text) const;

  // The same for what is good to know; not with -q.
  void say(const std::string& text) const;

 private:
  CommonOptions options;
  std::string command;
  std::string file;
  bool watched;
  Painter painter;
  Progress progress;
  std::unique_ptr<Settings> settings;
  std::unique_ptr<Output> output;
};

}  // namespace xeltools
