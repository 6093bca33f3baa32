#include "tools/OptionSet.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "tools/Errors.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

struct OptionSet::Parser {
  CLI::App app;
};

std::string OptionText::getLongName() const {
  const std::string last = names.substr(names.rfind(',') + 1);
  const std::size_t begin = last.find_first_not_of("-[");
  return begin == std::string::npos ? last : last.substr(begin, last.find_first_of("]."));
}

OptionSet::OptionSet(const std::string& command) : parser(std::make_unique<Parser>()) {
  parser->app.name(command);
  parser->app.set_help_flag();  // help is the program's own
  parser->app.allow_extras();   // parse() says in its own words what is too much
}

OptionSet::~OptionSet() = default;

void OptionSet::note(OptionText::Kind kind, const std::string& names, const std::string& value, const std::string& text,
                     const std::vector<std::string>& choices) {
  texts.push_back({kind, names, value, text, choices, group});
}

void OptionSet::addFlag(const std::string& names, bool& target, const std::string& text) {
  parser->app.add_flag_function(names, [&target](std::int64_t) { target = true; });
  note(OptionText::Kind::Flag, names, "", text);
}

void OptionSet::addSwitch(const std::string& yes, const std::string& no, std::optional<bool>& target,
                          const std::string& text) {
  parser->app.add_flag_function(yes, [&target](std::int64_t) { target = true; });
  parser->app.add_flag_function(no, [&target](std::int64_t) { target = false; });
  note(OptionText::Kind::Flag, yes, "", text);
  note(OptionText::Kind::Flag, no, "", "the opposite of --" + texts.back().getLongName());
}

void OptionSet::addText(const std::string& names, const std::string& value, std::optional<std::string>& target,
                        const std::string& text) {
  parser->app.add_option_function<std::string>(names, [&target](const std::string& given) { target = given; })
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  note(OptionText::Kind::Value, names, value, text);
}

void OptionSet::addNumber(const std::string& names, const std::string& value, std::optional<long>& target,
                          const std::string& text) {
  const auto take = [&target, names](const std::string& given) {
    const bool isNumber = !given.empty() && given.size() < 18 &&
                          std::all_of(given.begin(), given.end(), [](char byte) { return byte >= '0' && byte <= '9'; });
    if (!isNumber) {
      throw UsageError(names.substr(names.rfind(',') + 1) + " takes a number such as 10, not '" + makePrintable(given) +
                       "'");
    }
    target = std::stol(given);
  };
  parser->app.add_option_function<std::string>(names, take)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  note(OptionText::Kind::Value, names, value, text);
}

void OptionSet::addChoice(const std::string& names, const std::vector<std::string>& choices, std::string& target,
                          const std::string& text) {
  const auto take = [&target, names, choices](const std::string& given) {
    if (std::find(choices.begin(), choices.end(), given) == choices.end()) {
      throw UsageError(names.substr(names.rfind(',') + 1) + " takes one of " + join(choices, ", ") + ", not '" +
                       makePrintable(given) + "'");
    }
    target = given;
  };
  parser->app.add_option_function<std::string>(names, take)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  note(OptionText::Kind::Value, names, join(choices, "|"), text, choices);
}

void OptionSet::addList(const std::string& names, const std::string& value, std::vector<std::string>& target,
                        const std::string& text) {
  const auto take = [&target](const std::vector<std::string>& given) {
    for (const std::string& values : given) {
      for (const std::string& one : split(values, ',')) target.push_back(one);
    }
  };
  parser->app.add_option_function<std::vector<std::string>>(names, take)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  note(OptionText::Kind::Value, names, value, text);
}

void OptionSet::addOperand(const std::string& name, std::string& target, const std::string& text) {
  parser->app.add_option(name, target)->required();
  note(OptionText::Kind::Operand, name, "", text);
}

void OptionSet::addOptionalOperand(const std::string& name, std::optional<std::string>& target,
                                   const std::string& text) {
  parser->app.add_option_function<std::string>(name, [&target](const std::string& given) { target = given; });
  note(OptionText::Kind::Operand, "[" + name + "]", "", text);
}

void OptionSet::addOperands(const std::string& name, std::vector<std::string>& target, bool isRequired,
                            const std::string& text) {
  parser->app.add_option(name, target)->required(isRequired);
  note(OptionText::Kind::Operand, isRequired ? name + "..." : "[" + name + "...]", "", text);
}

// What to say of a word that nothing takes.
std::string OptionSet::explain(const std::string& unexpected) const {
  const std::string shown = "'" + makePrintable(unexpected) + "'";
  if (!beginsWith(unexpected, "-")) return shown + " is one operand too many";
  std::vector<std::string> names;
  for (const OptionText& option : texts) {
    if (option.kind != OptionText::Kind::Operand) names.push_back("--" + option.getLongName());
  }
  const std::string similar = findSimilar(unexpected.substr(0, unexpected.find('=')), names);
  if (!similar.empty()) return "there is no option " + shown + "; is " + similar + " meant?";
  return "there is no option " + shown + "; a value that begins with - goes behind --";
}

void OptionSet::parse(const std::vector<std::string>& words) {
  std::optional<UsageError> problem;
  try {
    parser->app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::RequiredError& error) {
    const std::string text = error.what();
    problem = UsageError(text.substr(0, text.find(' ')) + " is missing");
  } catch (const CLI::ArgumentMismatch& error) {
    const std::string text = error.what();
    problem = UsageError(text.substr(0, text.find(':')) + " needs a value");
  } catch (const CLI::ParseError& error) {
    problem = UsageError(makePrintable(error.what()));
  }
  std::vector<std::string> unexpected = parser->app.remaining();
  // The mark in front of operands counts as too much, but is not.
  if (!unexpected.empty() && unexpected.front() == "--") unexpected.erase(unexpected.begin());
  if (!unexpected.empty()) throw UsageError(explain(unexpected.front()));
  if (problem) throw UsageError(*problem);
}

}  // namespace xeltools
