// How a data file is to be read, and where that was said.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/OptionSet.h"

namespace xeltools {

// What the constructor of XelCsvReader is told, with the same defaults.
struct ReaderParameters {
  bool isMultiTable = false;
  bool allowTableSplitting = false;
  bool isCached = true;
  std::string separators = ",";
  char decimal = '.';
  char quote = '"';
  char comment = '#';
};

// Settings as one source gives them: the command line, an environment variable or a file. What it does not say is not
// there.
struct GivenSettings {
  std::optional<bool> multi;
  std::optional<bool> split;
  std::optional<bool> cache;
  std::optional<std::string> separators;
  std::optional<std::string> decimal;
  std::optional<std::string> quote;
  std::optional<std::string> comment;

  // The options that say them.
  void declare(OptionSet& options);
};

// A setting with its origin, for people.
struct Setting {
  std::string name;    // as the option is called, without dashes
  std::string value;   // as the option takes it
  std::string origin;  // "default", "command line", "XELCSV_OPTIONS" or the name of a file
};

// The settings in force.
class Settings {
 public:
  // For a data file: the first of these that says something rules, setting by setting: the command line, the variable
  // XELCSV_OPTIONS, .xelcsvrc in the folder of the file, .xelcsvrc in the home folder, the defaults.
  // Throws UserError, which says where, for a source that cannot be understood.
  Settings(const GivenSettings& commandLine, const std::string& dataFile);

  const ReaderParameters& getParameters() const { return parameters; }
  const std::vector<Setting>& getAll() const { return all; }

 private:
  void apply(const GivenSettings& given, const std::string& origin);
  void applyWords(const std::string& text, const std::string& origin);
  void applyFile(const std::string& name);
  void note(const std::string& name, const std::string& value, const std::string& origin);

  ReaderParameters parameters;
  std::vector<Setting> all;
};

// The set of separators that a text means: names (tab, comma, semicolon, pipe, space, colon, none), several with + between
// them; else its own characters, where \t, \s (a space), \\ and \xHH stand for one. Throws UserError.
std::string parseSeparators(const std::string& text);

// The one character that a text means, written in the same way; point, double and single are names too. none is a
// character that no text has, another for each option, for the library wants one. Throws UserError.
char parseCharacter(const std::string& option, const std::string& text, char none);

// The same backwards: how an option would be given on a command line.
std::string formatSeparators(const std::string& separators);
std::string formatCharacter(char character);

// The options that give these parameters, without those that are the default: "--multi --sep tab".
std::string formatOptions(const ReaderParameters& parameters);

// The call of the constructor that gives these parameters, in C++.
std::string formatConstructor(const ReaderParameters& parameters, const std::string& file);

}  // namespace xeltools
