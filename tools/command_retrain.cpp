// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/commands.h"
#include "tools/decision_options.h"
#include "tools/error.h"
#include "tools/json_text.h"
#include "tools/library_error.h"
#include "tools/model_file.h"
#include "tools/model_json.h"
#include "tools/output_file.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kRetrainExamples = R"(
Examples:
  vxclss retrain parts.model --frequency crack=0.001
  vxclss retrain parts.model --cost crack,good=50 --default-cost 2 -o strict.model

Changes how often categories occur and what mistakes cost, without the data. What isn't named stays
as the model holds it; a new --default-cost leaves the pairs that have a cost of their own. Without
-o the model file itself is replaced, whole or not at all.

Models of nearest neighbours have costs, but no frequencies. The leaves of a tree hold finished
decisions, so there is nothing to change.)";

class RetrainCommand {
 public:
  RetrainCommand(CLI::App& command, const Console& console) : console_(console) {
    command.add_option("MODEL", model_, "Model file, as train writes it")
        ->type_name("")
        ->required();
    command.add_option("-o,--output", output_, "Model file to write instead of MODEL")
        ->type_name("MODEL2");
    frequencies_.add(command, "How often categories occur");
    costs_.emplace(command);
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.footer(kRetrainExamples);
  }

  void run() {
    if (frequencies_.texts().empty() && !costs_->given()) {
      throw InputError("nothing to change; give --frequency, --cost or --default-cost");
    }
    Model model = readModel(model_);
    const auto params = changedParams_(model);
    explained(model_, model.names, [&] { model.tool.retrain(*params); });
    const std::string& path = output_ ? *output_ : model_;
    OutputFile file(path);
    saveModel(model, file);
    if (json_) {
      console_.out << jsonText(outcome_(model, path));
    } else {
      console_.out << fmt::format("{}: retrained\n", printable(path));
    }
  }

 private:
  Json outcome_(const Model& model, const std::string& path) const {
    Json json{{"model", path}, {"from", model_}};
    const Json all = modelJson(model);
    for (const auto& [key, value] : all.items()) {
      if (key == "method" || key == "costs" || key == "frequencies") json[key] = value;
    }
    return json;
  }

  vxPtrHandle<vxClassifierTrainParams> changedParams_(const Model& model) const {
    if (dynamic_cast<const vx_ClassifierDecisionTree*>(model.tool.classifier().get()) != nullptr) {
      throw InputError(model_ + ": a tree has neither frequencies nor costs");
    }
    const auto params =
        explained(model_, model.names, [&] { return model.tool.trainParams()->clone(); });
    if (auto* bayes = dynamic_cast<vxClassifierTrainParamsBayesian*>(params.get())) {
      vxClassifierFrequencies frequencies = bayes->categoryFrequencies();
      frequencies_.apply(frequencies, model.names, "model");
      bayes->categoryFrequencies(frequencies);
      bayes->misclassificationCosts(changedCosts_(model, bayes->misclassificationCosts()));
    } else if (auto* knn = dynamic_cast<vxClassifierTrainParamsKNN*>(params.get())) {
      if (!frequencies_.texts().empty()) {
        throw InputError(model_ + ": nearest neighbours know no --frequency; give costs alone");
      }
      knn->misclassificationCosts(changedCosts_(model, knn->misclassificationCosts()));
    } else {
      throw InputError(model_ + ": of a technique that can't be retrained");
    }
    return params;
  }

  vxClassifierCosts changedCosts_(const Model& model, vxClassifierCosts costs) const {
    costs_->apply(costs, model.names, "model");
    return costs;
  }

  Console console_;
  std::string model_;
  std::optional<std::string> output_;
  FrequencyOptions frequencies_;
  std::optional<CostOptions> costs_;
  bool json_ = false;
};

}  // namespace

void addRetrain(CLI::App& app, const Console& console) {
  CLI::App* command =
      app.add_subcommand("retrain", "Change frequencies and costs of a model, without the data");
  command->callback(
      [retrain = std::make_shared<RetrainCommand>(*command, console)] { retrain->run(); });
}

}  // namespace cli
