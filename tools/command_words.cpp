// SPDX-License-Identifier: MIT
#include "tools/command_words.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace cli {
namespace {

/// The parts of "a|b|c", all in small letters; none for another text.
std::vector<std::string> choicesOf(const std::string& text) {
  std::vector<std::string> choices{""};
  for (const char c : text) {
    if (c == '|') {
      choices.emplace_back();
    } else if (c >= 'a' && c <= 'z') {
      choices.back() += c;
    } else {
      return {};
    }
  }
  return choices.size() > 1 ? choices : std::vector<std::string>();
}

}  // namespace

ValueWords valueWords(const CLI::Option& option) {
  if (option.get_items_expected_max() == 0) return {};
  const std::string type =
      option.get_positional() ? option.get_single_name() : option.get_type_name();
  const std::vector<std::string> choices = choicesOf(type);
  if (!choices.empty()) return {ValueWords::kChoice, "", choices};
  const std::size_t dot = type.rfind('.');
  if (dot != std::string::npos && dot + 1 < type.size() && type.find(' ') == std::string::npos) {
    if (type.find_first_of(",=;") == std::string::npos) {
      return {ValueWords::kFile, type.substr(dot), {}};
    }
  }
  if (type.compare(0, 5, "MODEL") == 0 || type == "FILE") return {ValueWords::kFile, "", {}};
  return {ValueWords::kAnything, "", {}};
}

bool isRepeatable(const CLI::Option& option) {
  return option.get_items_expected_max() >= CLI::detail::expected_max_vector_size;
}

std::vector<std::string> typedNames(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

std::vector<const CLI::Option*> positionalsOf(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::string synopsisOf(const CLI::App& command) {
  std::string text = command.get_name() + " [OPTIONS]";
  for (const CLI::Option* positional : positionalsOf(command)) {
    text += ' ' + positional->get_single_name();
    if (isRepeatable(*positional)) text += "...";
  }
  return text;
}

}  // namespace cli
