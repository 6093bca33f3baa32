#include "tools/Settings.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "tools/Environment.h"
#include "tools/Errors.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

const char* const FileName = ".xelcsvrc";
const char* const Variable = "XELCSV_OPTIONS";

// What stands for "no such character": the library wants one, so it gets one that no text has.
constexpr char NoQuote = '\x01';
constexpr char NoComment = '\x02';

struct NamedCharacter {
  const char* name;
  char character;
};

// The first name of a character is the one that is shown.
constexpr NamedCharacter Names[] = {
    {"comma", ','}, {"semicolon", ';'}, {"tab", '\t'},   {"pipe", '|'},    {"space", ' '},
    {"colon", ':'}, {"point", '.'},     {"double", '"'}, {"single", '\''},
};

const NamedCharacter* findName(const std::string& name) {
  const auto* const found = std::find_if(std::begin(Names), std::end(Names),
                                         [&](const NamedCharacter& it) { return toLower(name) == it.name; });
  return found == std::end(Names) ? nullptr : found;
}

int getHexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

// The characters of a text in which backslashes begin escapes.
std::string unescape(const std::string& option, const std::string& text) {
  std::string characters;
  for (std::size_t position = 0; position < text.size(); ++position) {
    if (text[position] != '\\') {
      characters += text[position];
      continue;
    }
    const char kind = position + 1 < text.size() ? text[++position] : '\0';
    const int high = position + 2 < text.size() ? getHexValue(text[position + 1]) : -1;
    const int low = position + 2 < text.size() ? getHexValue(text[position + 2]) : -1;
    if (kind == 't') {
      characters += '\t';
    } else if (kind == 's') {
      characters += ' ';
    } else if (kind == '\\') {
      characters += '\\';
    } else if (kind == 'x' && high >= 0 && low >= 0) {
      characters += static_cast<char>(static_cast<unsigned char>(high * 16 + low));
      position += 2;
    } else {
      throw UserError(option + " '" + makePrintable(text) + "': after a backslash comes t, s, \\ or xHH");
    }
  }
  return characters;
}

std::string escape(char character) {
  const NamedCharacter* const found = std::find_if(std::begin(Names), std::end(Names),
                                                   [&](const NamedCharacter& it) { return character == it.character; });
  if (found != std::end(Names)) return found->name;
  if (character == NoQuote || character == NoComment) return "none";
  if (character == '\\') return "\\\\";
  return makePrintable(std::string(1, character));
}

const char* formatBool(bool value) { return value ? "yes" : "no"; }

std::string readAll(const std::string& name, bool& isThere) {
  std::ifstream stream(name, std::ios::binary);
  isThere = stream.is_open();
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

std::string getFolder(const std::string& file) {
  const std::size_t slash = file.rfind('/');
  return slash == std::string::npos ? std::string() : file.substr(0, slash + 1);
}

}  // namespace

void GivenSettings::declare(OptionSet& options) {
  options.beginGroup("How the file is written");
  options.addSwitch("-m,--multi", "--no-multi", multi,
                    "the file holds several tables; each line begins with its table's name");
  options.addSwitch("--split", "--no-split", split, "the lines of a table may be spread over the file");
  options.addText(
      "-s,--sep", "CHARS", separators,
      "the characters that separate fields: comma, semicolon, tab, pipe, space, colon or none; several with "
      "+ between them; or the characters themselves, with \\t, \\s, \\\\ and \\xHH");
  options.addText("--decimal", "CHAR", decimal, "the decimal point of numbers: point, comma or a character");
  options.addText("--quote", "CHAR", quote, "the quote: double, single, none or a character");
  options.addText("--comment", "CHAR", comment, "what begins a line of comment: a character, or none");
  options.addSwitch("--cache", "--no-cache", cache, "tables are read through an index of their lines");
}

Settings::Settings(const GivenSettings& commandLine, const std::string& dataFile) {
  const ReaderParameters defaults;
  note("multi", formatBool(defaults.isMultiTable), "default");
  note("split", formatBool(defaults.allowTableSplitting), "default");
  note("sep", formatSeparators(defaults.separators), "default");
  note("decimal", formatCharacter(defaults.decimal), "default");
  note("quote", formatCharacter(defaults.quote), "default");
  note("comment", formatCharacter(defaults.comment), "default");
  note("cache", formatBool(defaults.isCached), "default");

  // From the weakest to the strongest.
  const std::string home = getVariable("HOME");
  const std::string homeFile = home.empty() ? home : home + "/" + FileName;
  const std::string besideFile = getFolder(dataFile) + FileName;
  if (!homeFile.empty()) applyFile(homeFile);
  if (besideFile != homeFile) applyFile(besideFile);
  applyWords(getVariable(Variable), Variable);
  apply(commandLine, "command line");
}

void Settings::note(const std::string& name, const std::string& value, const std::string& origin) {
  const auto found = std::find_if(all.begin(), all.end(), [&](const Setting& it) { return it.name == name; });
  if (found == all.end()) {
    all.push_back({name, value, origin});
  } else {
    *found = {name, value, origin};
  }
}

void Settings::apply(const GivenSettings& given, const std::string& origin) {
  const auto take = [&](const char* name, const std::optional<bool>& value, bool& target) {
    if (!value) return;
    target = *value;
    note(name, formatBool(target), origin);
  };
  const auto takeCharacter = [&](const char* name, const std::optional<std::string>& text, char none, char& target) {
    if (!text) return;
    target = parseCharacter(std::string("--") + name, *text, none);
    note(name, formatCharacter(target), origin);
  };
  take("multi", given.multi, parameters.isMultiTable);
  take("split", given.split, parameters.allowTableSplitting);
  take("cache", given.cache, parameters.isCached);
  if (given.separators) {
    parameters.separators = parseSeparators(*given.separators);
    note("sep", formatSeparators(parameters.separators), origin);
  }
  takeCharacter("decimal", given.decimal, '\0', parameters.decimal);
  takeCharacter("quote", given.quote, NoQuote, parameters.quote);
  takeCharacter("comment", given.comment, NoComment, parameters.comment);
}

void Settings::applyWords(const std::string& text, const std::string& origin) {
  GivenSettings given;
  OptionSet options(origin);
  given.declare(options);
  try {
    options.parse(splitOptions(text, origin));
    apply(given, origin);
  } catch (const UserError& problem) {
    const std::string what = problem.what();
    throw UserError(beginsWith(what, origin) ? what : origin + ": " + what);
  }
}

void Settings::applyFile(const std::string& name) {
  bool isThere = false;
  const std::string text = readAll(name, isThere);
  if (isThere) applyWords(text, name);
}

std::string parseSeparators(const std::string& text) {
  if (text == "none") return "";
  if (const NamedCharacter* const found = findName(text)) return std::string(1, found->character);
  std::string separators;
  const std::vector<std::string> names = split(text, '+');
  for (const std::string& name : names) {
    const NamedCharacter* const found = findName(name);
    if (found != nullptr) separators += found->character;
  }
  if (separators.size() == names.size()) return separators;
  separators = unescape("--sep", text);
  if (separators.empty()) {
    throw UserError("--sep is empty; give a character or a name such as tab, or none for lines of one field");
  }
  if (separators.find('\0') != std::string::npos)
    throw UserError("--sep: the byte 0 separates nothing, it ends a line");
  return separators;
}

char parseCharacter(const std::string& option, const std::string& text, char none) {
  if (text == "none" && none != '\0') return none;
  if (const NamedCharacter* const found = findName(text)) return found->character;
  const std::string characters = unescape(option, text);
  if (characters.size() != 1 || characters[0] == '\0') {
    throw UserError(option + " takes one character or its name, not '" + makePrintable(text) + "'");
  }
  return characters[0];
}

std::string formatSeparators(const std::string& separators) {
  if (separators.empty()) return "none";
  std::vector<std::string> names;
  std::string characters;
  bool areNamed = true;
  for (const char separator : separators) {
    names.push_back(escape(separator));
    areNamed = areNamed && findName(names.back()) != nullptr;
    characters += separator == ' ' ? "\\s" : separator == '\\' ? "\\\\" : makePrintable(std::string(1, separator));
  }
  return areNamed ? join(names, "+") : characters;
}

std::string formatCharacter(char character) { return escape(character); }

std::string formatOptions(const ReaderParameters& parameters) {
  const ReaderParameters defaults;
  std::vector<std::string> options;
  const auto addCharacter = [&](const std::string& option, char character, char usual) {
    if (character != usual) options.push_back(option + " " + makeShellWord(formatCharacter(character)));
  };
  if (parameters.isMultiTable) options.emplace_back("--multi");
  if (parameters.allowTableSplitting) options.emplace_back("--split");
  if (parameters.separators != defaults.separators) {
    options.push_back("--sep " + makeShellWord(formatSeparators(parameters.separators)));
  }
  addCharacter("--decimal", parameters.decimal, defaults.decimal);
  addCharacter("--quote", parameters.quote, defaults.quote);
  addCharacter("--comment", parameters.comment, defaults.comment);
  if (!parameters.isCached) options.emplace_back("--no-cache");
  return join(options, " ");
}

// Arguments that are the default are left out as far as nothing follows them.
std::string formatConstructor(const ReaderParameters& parameters, const std::string& file) {
  const ReaderParameters defaults;
  const std::vector<std::pair<std::string, bool>> arguments = {
      {parameters.isMultiTable ? "1" : "0", parameters.isMultiTable},
      {parameters.allowTableSplitting ? "1" : "0", parameters.allowTableSplitting},
      {makeLiteral(parameters.separators), parameters.separators != defaults.separators},
      {makeLiteral(parameters.decimal), parameters.decimal != defaults.decimal},
      {makeLiteral(parameters.quote), parameters.quote != defaults.quote},
      {makeLiteral(parameters.comment), parameters.comment != defaults.comment},
      {parameters.isCached ? "1" : "0", !parameters.isCached},
  };
  std::string call = "XelCsvReader reader(env, " + makeLiteral(file);
  std::string waiting;
  for (const auto& [text, isSaid] : arguments) {
    waiting += ", " + text;
    if (!isSaid) continue;
    call += waiting;
    waiting.clear();
  }
  return call + ");";
}

}  // namespace xeltools
