// SPDX-License-Identifier: MIT
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/commands.h"
#include "tools/json_text.h"
#include "tools/library_error.h"
#include "tools/model_file.h"
#include "tools/model_json.h"
#include "tools/model_text.h"

namespace cli {
namespace {

const char* const kInspectExamples = R"(
Examples:
  vxclss inspect iris.model
  vxclss inspect iris.model --json > iris.json

Prints what a model has learnt:
  knn    number of neighbours, distance, costs, stored patterns of each category
  bayes  costs, and for each category its frequency and densities: mean and standard deviation of
         each measurement, the correlations of dependent ones; trials, theta and maximum of a
         binomial one
  tree   the tree, with its questions and decisions; what several places share is drawn once, with
         a number that the other places refer to

With --json, programs get the same in full precision, with covariances in place of standard
deviations and correlations; equal models give equal bytes. A tree comes in the form that vxclss
tree takes. What JSON has no number for stands as "nan", "inf" or "-inf".

Its former name, vxclss show, still works.)";

class InspectCommand {
 public:
  InspectCommand(CLI::App& command, const Console& console) : console_(console) {
    command.add_option("MODEL", model_, "Model file, as train and tree write it")
        ->type_name("")
        ->required();
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.footer(kInspectExamples);
  }

  void run() const {
    const Model model = readModel(model_);
    console_.out << explained(
        model_, model.names, [&] { return json_ ? jsonText(modelJson(model)) : modelText(model); });
  }

 private:
  Console console_;
  std::string model_;
  bool json_ = false;
};

}  // namespace

void addInspect(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("inspect", "Tell what a model has learnt")->alias("show");
  command->callback(
      [inspect = std::make_shared<InspectCommand>(*command, console)] { inspect->run(); });
}

}  // namespace cli
