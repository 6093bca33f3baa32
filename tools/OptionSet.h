// What a command takes on the command line; help, man page and completion are made of the same texts.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace xeltools {

// An option or an operand, as texts about it need it.
struct OptionText {
  enum class Kind { Flag, Value, Operand };

  Kind kind;
  std::string names;                 // "-o,--output"; of an operand "FILE", in brackets when it may be missing
  std::string value;                 // what stands behind an option: "FILE"
  std::string text;                  // what it does: a sentence without the full stop, or several
  std::vector<std::string> choices;  // the only values that it takes
  std::string group;                 // heading under which help shows it

  // The long name without dashes, of an operand its name.
  std::string getLongName() const;
};

// Options of one command, each bound to a variable, which parse() fills.
//
// The variables must live as long as the set. Names are "--long" or "-s,--long". An option that is given twice has the
// last value.
class OptionSet {
 public:
  // The name, "show", stands in messages.
  explicit OptionSet(const std::string& command);
  ~OptionSet();
  OptionSet(const OptionSet&) = delete;
  OptionSet& operator=(const OptionSet&) = delete;

  // Options that follow stand under this heading.
  void beginGroup(const std::string& heading) { group = heading; }

  // Is true when the option is given.
  void addFlag(const std::string& names, bool& target, const std::string& text);

  // Two options, one for true and one for false.
  void addSwitch(const std::string& yes, const std::string& no, std::optional<bool>& target, const std::string& text);

  void addText(const std::string& names, const std::string& value, std::optional<std::string>& target,
               const std::string& text);
  void addNumber(const std::string& names, const std::string& value, std::optional<long>& target,
                 const std::string& text);
  void addChoice(const std::string& names, const std::vector<std::string>& choices, std::string& target,
                 const std::string& text);

  // An option that may be given several times, and whose values may be several between commas.
  void addList(const std::string& names, const std::string& value, std::vector<std::string>& target,
               const std::string& text);

  void addOperand(const std::string& name, std::string& target, const std::string& text);
  void addOptionalOperand(const std::string& name, std::optional<std::string>& target, const std::string& text);
  void addOperands(const std::string& name, std::vector<std::string>& target, bool isRequired, const std::string& text);

  // Fills the variables out of words. Throws UsageError.
  void parse(const std::vector<std::string>& words);

  const std::vector<OptionText>& getTexts() const { return texts; }

 private:
  struct Parser;

  void note(OptionText::Kind kind, const std::string& names, const std::string& value, const std::string& text,
            const std::vector<std::string>& choices = {});
  std::string explain(const std::string& unexpected) const;

  std::unique_ptr<Parser> parser;
  std::vector<OptionText> texts;
  std::string group;
};

}  // namespace xeltools
