// The manual page, made of the same texts as the help.
#include <algorithm>

#include "tools/help/HelpText.h"
#include "tools/text/Words.h"
#include "xelcsv/XelCsvVersion.h"

namespace xeltools {

namespace {

// Text that roff takes as it is.
std::string escapeRoff(const std::string& text) {
  std::string escaped;
  for (const char byte : text) {
    if (byte == '\\') {
      escaped += "\\e";
    } else if (byte == '-') {
      escaped += "\\-";
    } else if (escaped.empty() && (byte == '.' || byte == '\'')) {
      escaped += std::string("\\&") + byte;
    } else if (byte == '\'') {
      escaped += "\\(aq";
    } else {
      escaped += byte;
    }
  }
  return escaped;
}

std::string toUpper(std::string text) {
  for (char& byte : text) {
    if (byte >= 'a' && byte <= 'z') byte = static_cast<char>(byte - 'a' + 'A');
  }
  return text;
}

std::string formatTerm(const OptionText& option) {
  std::vector<std::string> names;
  for (const std::string& name : split(option.names, ',')) names.push_back("\\fB" + escapeRoff(name) + "\\fR");
  std::string term = join(names, ", ");
  if (!option.value.empty()) {
    term += " \\fI" + escapeRoff(option.choices.empty() ? option.value : join(option.choices, "|")) + "\\fR";
  }
  return term;
}

std::string formatOption(const OptionText& option) {
  return ".TP\n" + formatTerm(option) + "\n" + escapeRoff(option.text) + "\n";
}

std::string formatParagraphs(const std::vector<std::string>& paragraphs) {
  std::string text;
  for (const std::string& paragraph : paragraphs) text += (text.empty() ? "" : ".PP\n") + escapeRoff(paragraph) + "\n";
  return text;
}

}  // namespace

std::string formatManPage(const std::vector<std::unique_ptr<Command>>& commands) {
  std::string page = ".TH XELCSV 1 \"\" \"xelcsv " XELCSV_VERSION "\" \"User Commands\"\n";
  page += ".SH NAME\nxelcsv \\- look into files of comma\\-separated values of many tables\n";
  page += ".SH SYNOPSIS\n.B xelcsv\n.I COMMAND\n[\\fIOPTIONS\\fR] \\fIFILE\\fR ...\n";
  page += ".SH DESCRIPTION\n" + escapeRoff(ProgramSummary) + "\n.SH COMMANDS\n";
  std::vector<OptionText> common;
  for (const auto& command : commands) {
    const CommandText& text = command->getText();
    const std::vector<OptionText> options = collectOptions(*command);
    page += ".SS " + escapeRoff(formatUsage(text.name, options)) + "\n";
    page += formatParagraphs(text.paragraphs);
    for (const OptionText& option : options) {
      if (option.group == "Options") page += formatOption(option);
      if (text.name == "show" && option.group != "Options") common.push_back(option);
    }
    if (!text.examples.empty()) page += ".PP\nFor example:\n.PP\n.nf\n.RS\n";
    for (const std::string& example : text.examples) page += escapeRoff(example) + "\n";
    if (!text.examples.empty()) page += ".RE\n.fi\n";
  }
  std::string heading;
  for (const OptionText& option : common) {
    if (option.group != heading) page += ".SH " + toUpper(option.group) + "\n";
    heading = option.group;
    page += formatOption(option);
  }
  for (const Topic& topic : getTopics()) {
    page += ".SH " + toUpper(topic.title) + "\n";
    page += formatParagraphs(topic.paragraphs);
  }
  return page;
}

}  // namespace xeltools
