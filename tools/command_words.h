// SPDX-License-Identifier: MIT
#ifndef TOOLS_COMMAND_WORDS_H_
#define TOOLS_COMMAND_WORDS_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace cli {

/// What a shell can offer where a value is due.
struct ValueWords {
  enum Kind { kNone, kAnything, kFile, kChoice };

  Kind kind = kNone;                 // kNone: no value is due
  std::string extension;             // kFile: of the files to offer first, ".csv"; may be empty
  std::vector<std::string> choices;  // kChoice
};

/// What kind of value an option or a positional argument takes, by how the help names it: "a|b" is
/// a choice; FILE, MODEL and what has an extension, as DATA.csv, are files.
ValueWords valueWords(const CLI::Option& option);

/// Whether it may be given more than once.
bool isRepeatable(const CLI::Option& option);

/// "-o" and "--output", as typed.
std::vector<std::string> typedNames(const CLI::Option& option);

/// Commands, and the options and the positional arguments of one, in the order of the help.
std::vector<const CLI::App*> commandsOf(const CLI::App& app);
std::vector<const CLI::Option*> optionsOf(const CLI::App& command);
std::vector<const CLI::Option*> positionalsOf(const CLI::App& command);

/// How the command is called: "train [OPTIONS] DATA.csv".
std::string synopsisOf(const CLI::App& command);

}  // namespace cli

#endif  // TOOLS_COMMAND_WORDS_H_
