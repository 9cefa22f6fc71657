// SPDX-License-Identifier: MIT
#ifndef TOOLS_COMMANDS_H_
#define TOOLS_COMMANDS_H_

#include <CLI/CLI.hpp>
#include <ostream>

namespace cli {

/// Where a command talks to.
struct Console {
  std::ostream& out;
  std::ostream& err;
  bool outIsTerminal;
  bool errIsTerminal;

  /// The stream for a progress bar, null if nobody would see one.
  std::ostream* bar() const { return errIsTerminal ? &err : nullptr; }
};

/// Each adds one command, which runs when the command line that names it is parsed.
void addTrain(CLI::App& app, const Console& console);
void addRun(CLI::App& app, const Console& console);
void addEvaluate(CLI::App& app, const Console& console);
void addCompare(CLI::App& app, const Console& console);
void addRetrain(CLI::App& app, const Console& console);
void addInspect(CLI::App& app, const Console& console);
void addTree(CLI::App& app, const Console& console);
void addRules(CLI::App& app, const Console& console);
void addGenerate(CLI::App& app, const Console& console);

/// What these print, they take from the other commands of `app`.
void addCompletion(CLI::App& app, const Console& console);
void addManual(CLI::App& app, const Console& console);

/// These two set the exit code to their answer.
void addCheck(CLI::App& app, const Console& console, int& exitCode);
void addDiff(CLI::App& app, const Console& console, int& exitCode);

/// Does what the command line asks for; gives the exit code. A failure is one line on console.err.
int runCommandLine(int argc, const char* const* argv, const Console& console);

}  // namespace cli

#endif  // TOOLS_COMMANDS_H_
