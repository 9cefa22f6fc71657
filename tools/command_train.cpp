// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/commands.h"
#include "tools/dataset_options.h"
#include "tools/json_text.h"
#include "tools/library_error.h"
#include "tools/method_options.h"
#include "tools/model_file.h"
#include "tools/model_parts.h"
#include "tools/output_file.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kTrainExamples = R"(
Examples:
  vxclss train iris.csv --label species -o iris.model
  vxclss train iris.csv --label species --method knn --k 9 --order 1 -o iris.model
  vxclss train parts.csv --label kind --ignore id --cost crack,good=20 -o parts.model
  vxclss train parts.csv --label kind --method bayes --dependent width,height \
    --distribution scratches=binomial --maximum scratches=12 --frequency crack=0.01 -o parts.model

The model file keeps the names of measurements and categories beside the classifier. Categories are
numbered in the order of their names, whatever the order of the rows. Rows without a category are
left out. The file appears whole or not at all.

Nearest neighbours need every measurement; Bayes leaves out the ones that could not be taken. With
Bayes, costs and frequencies can be changed afterwards: vxclss retrain --help.)";

class TrainCommand {
 public:
  TrainCommand(CLI::App& command, const Console& console)
      : console_(console), data_(command), method_(command) {
    command.add_option("-o,--output", output_, "Model file to write")
        ->type_name("MODEL")
        ->required();
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.footer(kTrainExamples);
  }

  void run() {
    const Method& method = method_.chosen();
    OutputFile file(output_);
    const Dataset data = data_.read(method.allowsInvalid(), console_.bar());
    Model model;
    model.names = data.names;
    const auto params = method_.params(data.names);
    explained(data_.path(), data.names, [&] { model.tool.train(data.labelled(), *params); });
    saveModel(model, file);
    if (json_) {
      console_.out << jsonText(outcome_(data, method));
    } else {
      report_(data, method);
    }
  }

 private:
  Json outcome_(const Dataset& data, const Method& method) const {
    std::map<long, long> counts = patternCounts(data.labelled());
    Json categories = Json::array();
    for (std::size_t i = 0; i < data.names.categories.size(); ++i) {
      categories.push_back(
          {{"category", data.names.categories[i]}, {"patterns", counts[static_cast<long>(i)]}});
    }
    return {{"model", output_},
            {"method", method.name()},
            {"options", method.summary()},
            {"patterns", data.numLabelled()},
            {"without_category", static_cast<long>(data.labels.size()) - data.numLabelled()},
            {"measurements", data.names.measurements},
            {"categories", categories}};
  }

  void report_(const Dataset& data, const Method& method) const {
    std::vector<std::string> categories;
    for (const std::string& name : data.names.categories) categories.push_back(printable(name));
    console_.out << fmt::format("{}: {} ({}) trained on {} patterns of {} measurements\n",
                                printable(output_), method.name(), method.summary(),
                                data.numLabelled(), data.names.measurements.size())
                 << fmt::format("categories: {}\n", fmt::join(categories, ", "));
    const long unknown = static_cast<long>(data.labels.size()) - data.numLabelled();
    if (unknown > 0) console_.out << fmt::format("left out, without a category: {}\n", unknown);
  }

  Console console_;
  DatasetOptions data_;
  MethodOptions method_;
  std::string output_;
  bool json_ = false;
};

}  // namespace

void addTrain(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("train", "Learn categories from labelled patterns");
  command->callback([train = std::make_shared<TrainCommand>(*command, console)] { train->run(); });
}

}  // namespace cli
