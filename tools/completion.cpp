// SPDX-License-Identifier: MIT
#include "tools/completion.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "tools/command_words.h"

namespace cli {
namespace {

/// Tells the script what is due behind an option, or at a place: "", "any", "file .csv" or
/// "choice a b".
std::string bashKind(const CLI::Option& option) {
  const ValueWords words = valueWords(option);
  switch (words.kind) {
    case ValueWords::kNone:
      return "";
    case ValueWords::kAnything:
      return "any";
    case ValueWords::kFile:
      return words.extension.empty() ? "file" : "file " + words.extension;
    case ValueWords::kChoice:
      return fmt::format("choice {}", fmt::join(words.choices, " "));
  }
  return "";
}

/// Cases "train --label" and, for places from 0, "train 0".
std::string bashCases(const CLI::App& command) {
  std::string text;
  const auto add = [&](const std::vector<std::string>& words, const CLI::Option& option) {
    const std::string kind = bashKind(option);
    if (kind.empty()) return;
    std::string patterns;
    for (const std::string& word : words) {
      patterns += fmt::format("{}'{} {}'", patterns.empty() ? "" : " | ", command.get_name(), word);
    }
    text += fmt::format("    {}) kind='{}' ;;\n", patterns, kind);
  };
  for (const CLI::Option* option : optionsOf(command)) add(typedNames(*option), *option);
  std::size_t place = 0;
  for (const CLI::Option* positional : positionalsOf(command)) {
    add({std::to_string(place++)}, *positional);
  }
  return text;
}

std::string words(const CLI::App& command) {
  std::vector<std::string> all;
  for (const CLI::Option* option : optionsOf(command)) {
    for (const std::string& name : typedNames(*option)) {
      if (name.size() > 2) all.push_back(name);
    }
  }
  return fmt::format("{}", fmt::join(all, " "));
}

const char* const kBashEnd = R"(
_vxclss_files() {
  compopt -o filenames 2>/dev/null
  if [[ -n $1 ]]; then
    mapfile -t COMPREPLY < <(compgen -f -X "!*$1" -- "$cur"; compgen -d -- "$cur")
    [[ ${#COMPREPLY[@]} -gt 0 ]] && return
  fi
  mapfile -t COMPREPLY < <(compgen -f -- "$cur")
}

_vxclss() {
  local cur=${COMP_WORDS[COMP_CWORD]} command='' kind='' place=0 options='' word i
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ $word == '=' ]]; then
      :  # --option=value comes in three words
    elif [[ -n $kind ]]; then
      kind=''
    elif [[ -z $command ]]; then
      if [[ $word != -* ]]; then
        command=$word
        _vxclss_alias
      fi
    elif [[ $word == -* ]]; then
      _vxclss_kind "$command" "$word"
    else
      place=$((place + 1))
    fi
  done
  if [[ $cur == '=' ]]; then cur=''; fi
  _vxclss_options "$command"
  if [[ -z $kind && $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
    return
  fi
  if [[ -z $command ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$_vxclss_commands" -- "$cur")
    return
  fi
  if [[ -z $kind ]]; then _vxclss_kind "$command" "$place"; fi
  case $kind in
    choice*) mapfile -t COMPREPLY < <(compgen -W "${kind#choice}" -- "$cur") ;;
    file*) kind=${kind#file}; _vxclss_files "${kind# }" ;;
    any) ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur") ;;
  esac
}

complete -F _vxclss vxclss
)";

/// In single quotes, for the shell.
std::string quoted(const std::string& text) {
  std::string out = "'";
  for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

/// With a backslash before each of `special`.
std::string escaped(const std::string& text, const std::string& special) {
  std::string out;
  for (const char c : text) {
    if (special.find(c) != std::string::npos) out += '\\';
    out += c;
  }
  return out;
}

/// ":message:action" of _arguments; empty where no value is due.
std::string zshValue(const CLI::Option& option) {
  const ValueWords words = valueWords(option);
  const std::string name =
      option.get_positional() ? option.get_single_name() : option.get_type_name();
  const std::string message = ":" + escaped(name, ":\\");
  switch (words.kind) {
    case ValueWords::kNone:
      return "";
    case ValueWords::kAnything:
      return message + ": ";
    case ValueWords::kFile:
      return message + (words.extension.empty()
                            ? ":_files"
                            : fmt::format(":_files -g \"*{}(-.)\"", words.extension));
    case ValueWords::kChoice:
      return message + fmt::format(":({})", fmt::join(words.choices, " "));
  }
  return "";
}

/// An argument of _arguments, on a line of its own.
std::string zshOption(const CLI::Option& option) {
  const std::vector<std::string> names = typedNames(option);
  const std::string description = "[" + escaped(option.get_description(), "[]:\\") + "]";
  std::string text;
  for (const std::string& name : names) {
    const std::string prefix =
        isRepeatable(option) ? "*" : fmt::format("({})", fmt::join(names, " "));
    const std::string argument =
        fmt::format("{}{}{}{}", prefix, name, description, zshValue(option));
    text += fmt::format(" \\\n        {}", quoted(argument));
  }
  return text;
}

std::string zshCase(const CLI::App& command) {
  std::string names = command.get_name();
  for (const std::string& alias : command.get_aliases()) names += " | " + alias;
  std::string text = fmt::format("    {})\n      _arguments -S", names);
  for (const CLI::Option* option : optionsOf(command)) text += zshOption(*option);
  for (const CLI::Option* positional : positionalsOf(command)) {
    const std::string prefix = isRepeatable(*positional) ? "*" : "";
    text += fmt::format(" \\\n        {}", quoted(prefix + zshValue(*positional)));
  }
  return text + " ;;\n";
}

const char* const kZshEnd = R"(  esac
}

if [ "$funcstack[1]" = _vxclss ]; then _vxclss "$@"; else compdef _vxclss vxclss; fi
)";

}  // namespace

std::string bashCompletion(const CLI::App& app) {
  std::vector<std::string> commands;
  std::string options = fmt::format("    '') options='{}' ;;\n", words(app));
  std::string kinds;
  std::string aliases;
  for (const CLI::App* command : commandsOf(app)) {
    commands.push_back(command->get_name());
    options += fmt::format("    {}) options='{}' ;;\n", command->get_name(), words(*command));
    kinds += bashCases(*command);
    for (const std::string& alias : command->get_aliases()) {
      aliases += fmt::format("    {}) command={} ;;\n", alias, command->get_name());
    }
  }
  return fmt::format(
      "# bash completion for vxclss, as \"vxclss completion bash\" prints it\n\n"
      "_vxclss_commands='{}'\n\n"
      "_vxclss_options() {{\n  case $1 in\n{}  esac\n}}\n\n"
      "_vxclss_kind() {{\n  case \"$1 $2\" in\n{}    *) kind='' ;;\n  esac\n}}\n\n"
      "_vxclss_alias() {{\n  case $command in\n{}  esac\n}}\n{}",
      fmt::join(commands, " "), options, kinds, aliases, kBashEnd);
}

std::string zshCompletion(const CLI::App& app) {
  std::string text =
      "#compdef vxclss\n# zsh completion for vxclss, as \"vxclss completion zsh\" prints it\n\n"
      "_vxclss() {\n  local state line curcontext=\"$curcontext\"\n  typeset -A opt_args\n"
      "  _arguments -C -S";
  for (const CLI::Option* option : optionsOf(app)) text += zshOption(*option);
  text +=
      " \\\n        '1: :->command' '*:: :->arguments' && return\n  case $state in\n"
      "    command)\n      local -a commands=(";
  for (const CLI::App* command : commandsOf(app)) {
    text += fmt::format("\n        {}", quoted(command->get_name() + ":" +
                                               escaped(command->get_description(), ":\\")));
  }
  text += ")\n      _describe command commands\n      return ;;\n  esac\n  case $line[1] in\n";
  for (const CLI::App* command : commandsOf(app)) text += zshCase(*command);
  return text + kZshEnd;
}

}  // namespace cli
