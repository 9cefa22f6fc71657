// SPDX-License-Identifier: MIT
#include <memory>
#include <string>

#include "tools/commands.h"
#include "tools/library_error.h"
#include "tools/model_file.h"
#include "tools/model_text.h"

namespace cli {
namespace {

const char* const kExamples = R"(
Examples:
  vxclss show iris.model

Prints what a model has learnt:
  knn    number of neighbours, distance, costs, stored patterns of each category
  bayes  costs, and for each category its frequency and densities: mean and standard deviation of
         each measurement, the correlations of dependent ones; trials, theta and maximum of a
         binomial one
  tree   the tree, with its questions and decisions; what several places share is drawn once, with
         a number that the other places refer to)";

class ShowCommand {
 public:
  ShowCommand(CLI::App& command, const Console& console) : console_(console) {
    command.add_option("MODEL", model_, "Model file, as train and tree write it")
        ->type_name("")
        ->required();
    command.footer(kExamples);
  }

  void run() const {
    const Model model = readModel(model_);
    console_.out << explained(model_, model.names, [&] { return modelText(model); });
  }

 private:
  Console console_;
  std::string model_;
};

}  // namespace

void addShow(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("show", "Print a model in words");
  command->callback([show = std::make_shared<ShowCommand>(*command, console)] { show->run(); });
}

}  // namespace cli
