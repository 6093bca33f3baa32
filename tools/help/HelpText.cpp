#include "tools/help/HelpText.h"

#include <algorithm>

#include "tools/text/Width.h"
#include "tools/text/Words.h"
#include "tools/text/Wrap.h"

namespace xeltools {

const char* const ProgramSummary =
    "xelcsv looks into files of comma-separated values: of one table, or of many named tables, with headings and key "
    "columns. It reads them as the library of the same name does.";

const std::vector<Topic>& getTopics() {
  static const std::vector<Topic> topics = {
      {"Settings",
       {"How a file is written is not said in the file but by options. Each of them may also stand in the variable "
        "XELCSV_OPTIONS, in a file .xelcsvrc in the folder of the data file, or in a file .xelcsvrc in the home folder, "
        "written as on the command line; # begins a comment there. The command line goes before the variable, the "
        "variable before the file beside the data, and that before the file at home. --show-settings says which value "
        "came from where, and xelcsv sniff FILE proposes values."}},
      {"Exit status",
       {"0: all went well; clean, or found.", "1: there are findings, or what was looked for is not there.",
        "2: the command line is wrong, or a file cannot be read or written."}},
      {"Environment",
       {"XELCSV_OPTIONS: options about how files are written.", "XELCSV_PAGER, PAGER: what --pager runs.",
        "NO_COLOR, CLICOLOR_FORCE: no colors, or colors everywhere.",
        "COLUMNS: the width of the terminal, when it is not the one that the terminal says."}}};
  return topics;
}

namespace {

constexpr std::size_t Indent = 2;
constexpr std::size_t TextColumn = 26;

// "-s, --sep CHARS".
std::string formatNames(const OptionText& option) {
  std::string names = join(split(option.names, ','), ", ");
  if (option.kind != OptionText::Kind::Operand && beginsWith(names, "--")) {
    names = "    " + names;
  }
  const bool hasChoices = !option.choices.empty();
  const std::string value = hasChoices ? "WHICH" : option.value;
  return value.empty() ? names : names + " " + value;
}

std::string formatText(const OptionText& option) {
  return option.choices.empty() ? option.text : option.text + ": " + join(option.choices, ", ");
}

// A term and what it means, in two columns.
std::string formatEntry(const std::string& term, const std::string& text, std::size_t columns, const Painter& painter) {
  std::string entry = std::string(Indent, ' ') + painter.paint(term, Look::Strong);
  const std::size_t used = Indent + getWidth(term);
  if (used + 2 > TextColumn) {
    entry += "\n" + std::string(TextColumn, ' ');
  } else {
    entry.append(TextColumn - used, ' ');
  }
  return entry + wrap(text, columns, TextColumn, TextColumn) + "\n";
}

std::string formatHeading(const std::string& heading, const Painter& painter) {
  return "\n" + painter.paint(heading, Look::Strong) + "\n";
}

std::string formatParagraph(const std::string& text, std::size_t columns) {
  return std::string(Indent, ' ') + wrap(text, columns, Indent, Indent) + "\n";
}

}  // namespace

std::vector<OptionText> collectOptions(Command& command) {
  OptionSet options(command.getText().name);
  options.beginGroup("Options");
  command.declare(options);
  CommonOptions common;
  common.declare(options, command.getText().readsFile);
  return options.getTexts();
}

std::string formatUsage(const std::string& name, const std::vector<OptionText>& options) {
  std::string usage = "xelcsv " + name + " [OPTIONS]";
  for (const OptionText& option : options) {
    if (option.kind == OptionText::Kind::Operand) usage += " " + option.names;
  }
  return usage;
}

std::string formatOverview(const std::vector<std::unique_ptr<Command>>& commands, std::size_t columns,
                           const Painter& painter) {
  std::string help = "usage: xelcsv COMMAND [OPTIONS] FILE ...\n\n" + wrap(ProgramSummary, columns, 0, 0) + "\n";
  help += formatHeading("Commands", painter);
  for (const auto& command : commands) {
    help += formatEntry(command->getText().name, command->getText().summary, columns, painter);
  }
  for (const Topic& topic : getTopics()) {
    help += formatHeading(topic.title, painter);
    for (const std::string& paragraph : topic.paragraphs) help += formatParagraph(paragraph, columns);
  }
  return help + "\n" + wrap("xelcsv help COMMAND tells more about a command.", columns, 0, 0) + "\n";
}

std::string formatHelp(Command& command, std::size_t columns, const Painter& painter) {
  const CommandText& text = command.getText();
  const std::vector<OptionText> options = collectOptions(command);
  std::string help = "usage: " + formatUsage(text.name, options) + "\n";
  for (const std::string& paragraph : text.paragraphs) help += "\n" + wrap(paragraph, columns, 0, 0) + "\n";
  std::string heading;
  for (const OptionText& option : options) {
    const std::string group = option.kind == OptionText::Kind::Operand ? "Operands" : option.group;
    if (group != heading) help += formatHeading(group, painter);
    heading = group;
    help += formatEntry(formatNames(option), formatText(option), columns, painter);
  }
  if (!text.examples.empty()) help += formatHeading("Examples", painter);
  for (const std::string& example : text.examples) help += std::string(Indent, ' ') + example + "\n";
  return help;
}

}  // namespace xeltools
