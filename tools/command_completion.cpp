// SPDX-License-Identifier: MIT
#include <vxclss/version.h>

#include <memory>
#include <optional>
#include <string>

#include "tools/commands.h"
#include "tools/completion.h"
#include "tools/error.h"
#include "tools/manual.h"
#include "tools/output_file.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kCompletionExamples = R"(
Examples:
  vxclss completion bash -o ~/.local/share/bash-completion/completions/vxclss
  source <(vxclss completion bash)
  vxclss completion zsh -o ~/.zfunc/_vxclss

Commands, options, files and fixed values are completed. An installed vxclss brings both scripts
along, where the shells look for them.)";

const char* const kManualExamples = R"(
Examples:
  vxclss manual | man -l -
  vxclss manual -o vxclss.1

An installed vxclss brings the page along: man vxclss.)";

/// Writes a text of the program's own to -o or to standard output.
class TextCommand {
 public:
  TextCommand(CLI::App& command, const CLI::App& app, const Console& console)
      : app_(app), console_(console) {
    command.add_option("-o,--output", output_, "File to write instead of standard output")
        ->type_name("FILE");
  }
  virtual ~TextCommand() = default;

  void run() const {
    if (!output_) {
      console_.out << text_();
      return;
    }
    OutputFile file(*output_);
    file.stream() << text_();
    file.commit();
  }

 protected:
  const CLI::App& app_;

 private:
  virtual std::string text_() const = 0;

  Console console_;
  std::optional<std::string> output_;
};

class CompletionCommand : public TextCommand {
 public:
  CompletionCommand(CLI::App& command, const CLI::App& app, const Console& console)
      : TextCommand(command, app, console) {
    command.add_option("bash|zsh", shell_, "Shell that is to complete")->type_name("")->required();
    command.footer(kCompletionExamples);
  }

 private:
  std::string text_() const override {
    if (shell_ == "bash") return bashCompletion(app_);
    if (shell_ == "zsh") return zshCompletion(app_);
    throw InputError(shown(shell_) + " is no shell of ours; there are: bash, zsh");
  }

  std::string shell_;
};

class ManualCommand : public TextCommand {
 public:
  ManualCommand(CLI::App& command, const CLI::App& app, const Console& console)
      : TextCommand(command, app, console) {
    command.footer(kManualExamples);
  }

 private:
  std::string text_() const override { return manualPage(app_, "vxclss " VXCLSS_VERSION); }
};

}  // namespace

void addCompletion(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("completion", "Print a script for the shell's completion");
  command->callback([completion = std::make_shared<CompletionCommand>(*command, app, console)] {
    completion->run();
  });
}

void addManual(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("manual", "Print the manual page");
  command->callback(
      [manual = std::make_shared<ManualCommand>(*command, app, console)] { manual->run(); });
}

}  // namespace cli
