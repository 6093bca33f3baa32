// Scripts that make shells complete command lines, made of the same texts as the help.
#include "tools/Errors.h"
#include "tools/help/HelpText.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

using Commands = std::vector<std::unique_ptr<Command>>;

std::vector<std::string> listNames(const Commands& commands) {
  std::vector<std::string> names;
  for (const auto& command : commands) names.push_back(command->getText().name);
  return names;
}

// Scripts are put together of literals and names.
std::string concatenate(std::initializer_list<std::string_view> parts) {
  std::string whole;
  for (const std::string_view part : parts) whole += part;
  return whole;
}

std::string listOptions(const std::vector<OptionText>& options) {
  std::vector<std::string> names;
  for (const OptionText& option : options) {
    if (option.kind == OptionText::Kind::Operand) continue;
    for (const std::string& name : split(option.names, ',')) names.push_back(name);
  }
  names.emplace_back("--help");
  return join(names, " ");
}

// Words that an operand of a command can be, other than files.
std::string listOperands(const Commands& commands, const OptionText& option) {
  if (!option.choices.empty()) return join(option.choices, " ");
  return option.names == "[COMMAND]" ? join(listNames(commands), " ") : "";
}

std::string formatBash(const Commands& commands) {
  std::string script =
      "# bash completion of xelcsv: source this file, or put it into the folder of your system's completions.\n"
      "_xelcsv() {\n"
      "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
      "  COMPREPLY=()\n"
      "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
      "    mapfile -t COMPREPLY < <(compgen -W \"" +
      join(listNames(commands), " ") +
      "\" -- \"$word\")\n"
      "    return\n"
      "  fi\n"
      "  case ${COMP_WORDS[1]}:$before in\n";
  std::string options;
  for (const auto& command : commands) {
    const std::string name = command->getText().name;
    const std::vector<OptionText> texts = collectOptions(*command);
    for (const OptionText& option : texts) {
      const std::string words = listOperands(commands, option);
      if (words.empty()) continue;
      const std::string before = option.kind == OptionText::Kind::Operand ? name : "--" + option.getLongName();
      script += concatenate({"    ", name, ":", before, ") mapfile -t COMPREPLY < <(compgen -W \"", words,
                             "\" -- \"$word\"); return ;;\n"});
    }
    options += concatenate(
        {"      ", name, ") mapfile -t COMPREPLY < <(compgen -W \"", listOptions(texts), "\" -- \"$word\") ;;\n"});
  }
  return script +
         "  esac\n"
         "  case $word in\n"
         "    -*) case ${COMP_WORDS[1]} in\n" +
         options +
         "    esac ;;\n"
         "    *) mapfile -t COMPREPLY < <(compgen -f -- \"$word\") ;;\n"
         "  esac\n"
         "}\n"
         "complete -o filenames -F _xelcsv xelcsv\n";
}

// Text in single quotes of zsh's _arguments, where brackets and colons mean something.
std::string escapeZsh(const std::string& text) {
  std::string escaped;
  for (const char byte : text) {
    if (byte == '[' || byte == ']' || byte == ':' || byte == '\\') escaped += '\\';
    escaped += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
  }
  return escaped;
}

std::string formatZsh(const Commands& commands) {
  std::string script =
      "#compdef xelcsv\n# zsh completion of xelcsv: put this file into a folder of your fpath as _xelcsv.\n";
  script += "_xelcsv() {\n  local -a commands=(\n";
  for (const auto& command : commands) {
    script += "    '" + command->getText().name + ":" + escapeZsh(command->getText().summary) + "'\n";
  }
  script +=
      "  )\n  if (( CURRENT == 2 )); then\n    _describe command commands\n    return\n  fi\n  case $words[2] in\n";
  for (const auto& command : commands) {
    script += "    " + command->getText().name + ")\n      _arguments \\\n";
    for (const OptionText& option : collectOptions(*command)) {
      const std::string words = listOperands(commands, option);
      const std::string values = words.empty() ? "_files" : "(" + words + ")";
      if (option.kind == OptionText::Kind::Operand) {
        const bool isLast = endsWith(option.names, "...") || endsWith(option.names, "...]");
        script += "        '" + std::string(isLast ? "*" : "") + ":" + escapeZsh(option.getLongName()) + ":" + values +
                  "' \\\n";
        continue;
      }
      for (const std::string& name : split(option.names, ',')) {
        const std::string value = option.value.empty() ? "" : ":" + escapeZsh(option.value) + ":" + values;
        script += concatenate({"        '", name, "[", escapeZsh(option.text), "]", value, "' \\\n"});
      }
    }
    script += "        && return\n      ;;\n";
  }
  return script + "  esac\n}\n_xelcsv \"$@\"\n";
}

std::string formatFish(const Commands& commands) {
  std::string script = "# fish completion of xelcsv: put this file into ~/.config/fish/completions as xelcsv.fish.\n";
  for (const auto& command : commands) {
    const CommandText& text = command->getText();
    script +=
        "complete -c xelcsv -n __fish_use_subcommand -f -a " + text.name + " -d " + makeShellWord(text.summary) + "\n";
  }
  for (const auto& command : commands) {
    const std::string name = command->getText().name;
    const std::string condition = "complete -c xelcsv -n '__fish_seen_subcommand_from " + name + "'";
    for (const OptionText& option : collectOptions(*command)) {
      const std::string words = listOperands(commands, option);
      if (option.kind == OptionText::Kind::Operand) {
        if (!words.empty()) script += concatenate({condition, " -f -a '", words, "'\n"});
        continue;
      }
      script += condition;
      for (const std::string& one : split(option.names, ',')) {
        script += beginsWith(one, "--") ? " -l " + one.substr(2) : " -s " + one.substr(1);
      }
      if (!option.value.empty()) script += words.empty() ? " -r" : " -x -a '" + words + "'";
      script += " -d " + makeShellWord(option.text) + "\n";
    }
  }
  return script;
}

}  // namespace

std::string formatCompletion(const std::string& shell, const Commands& commands) {
  if (shell == "bash") return formatBash(commands);
  if (shell == "zsh") return formatZsh(commands);
  if (shell == "fish") return formatFish(commands);
  throw UsageError("SHELL is bash, zsh or fish, not '" + makePrintable(shell) + "'");
}

}  // namespace xeltools
