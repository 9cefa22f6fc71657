// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <memory>
#include <string>

#include "tools/commands.h"
#include "tools/confusion_table.h"
#include "tools/dataset_options.h"
#include "tools/error.h"
#include "tools/evaluation.h"
#include "tools/library_error.h"
#include "tools/method_options.h"
#include "tools/number_options.h"
#include "tools/progress.h"
#include "tools/stop.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kExamples = R"(
Examples:
  vxclss evaluate iris.csv --label species
  vxclss evaluate iris.csv --label species --method knn --k 9 --folds 5 --seed 7
  vxclss evaluate iris.csv --label species --method bayes
  vxclss evaluate iris.csv --label species --method bayes --dependent petal_length,petal_width

The patterns of each category are dealt to the folds in turn. Each fold is then classified by a
classifier that was trained on all the others, so that no pattern is judged by one that knew it.
Equal seeds give equal folds. Rows without a category are not counted.

Recall is the share of a category's patterns that was decided correctly, accuracy that of all.)";

class EvaluateCommand {
 public:
  EvaluateCommand(CLI::App& command, const Console& console)
      : console_(console), data_(command), method_(command) {
    const char* group = "Cross-validation";
    command
        .add_option("--folds", folds_,
                    "Number of parts that the patterns are split into "
                    "(default 10)")
        ->check(wholeNumber(2))
        ->type_name("N")
        ->group(group);
    command.add_option("--seed", seed_, "Seed of the split (default 1)")
        ->check(wholeNumber(0))
        ->type_name("N")
        ->group(group);
    command.footer(kExamples);
  }

  void run() const {
    const Method& method = method_.chosen();
    const Dataset data = data_.read(method.allowsInvalid(), console_.bar());
    if (wholeOf(folds_) > data.numLabelled()) {
      throw InputError(fmt::format("{}: {} patterns of known category are too few for {} folds",
                                   data_.path(), data.numLabelled(), wholeOf(folds_)));
    }
    report_(data, method, evaluate_(data));
  }

 private:
  Evaluation evaluate_(const Dataset& data) const {
    Progress progress("evaluating", static_cast<double>(data.numLabelled()), console_.bar());
    long done = 0;
    const auto params = method_.params(data.names);
    return explained(data.path, data.names, [&] {
      return crossValidate(data.patterns, data.labels, data.names.categories.size(), *params,
                           wholeOf(folds_), wholeOf(seed_), [&](std::size_t) {
                             throwIfStopped();
                             progress.update(static_cast<double>(++done));
                           });
    });
  }

  void report_(const Dataset& data, const Method& method, const Evaluation& evaluation) const {
    std::ostream& out = console_.out;
    out << fmt::format("{}: {} patterns, {} measurements, {} categories\n", printable(data_.path()),
                       data.numLabelled(), data.names.measurements.size(),
                       data.names.categories.size());
    const long unknown = static_cast<long>(data.labels.size()) - data.numLabelled();
    if (unknown > 0) out << fmt::format("not counted, without a category: {}\n", unknown);
    out << fmt::format("method {} ({}), {} folds, seed {}\n\n", method.name(), method.summary(),
                       wholeOf(folds_), wholeOf(seed_))
        << confusionTable(evaluation, data.names.categories) << '\n'
        << fmt::format("accuracy            {} ({} of {})\n", percentage(evaluation.accuracy()),
                       evaluation.numCorrect(), evaluation.numPatterns())
        << fmt::format("mean expected cost  {:.4g}\n", evaluation.meanExpectedCost())
        << fmt::format("speed               {:.0f} patterns per second\n",
                       static_cast<double>(evaluation.numPatterns()) / evaluation.seconds());
  }

  Console console_;
  DatasetOptions data_;
  MethodOptions method_;
  std::string folds_ = "10";
  std::string seed_ = "1";
};

}  // namespace

void addEvaluate(CLI::App& app, const Console& console) {
  CLI::App* command =
      app.add_subcommand("evaluate", "Tell how well a method decides, by cross-validation");
  command->callback(
      [evaluate = std::make_shared<EvaluateCommand>(*command, console)] { evaluate->run(); });
}

}  // namespace cli
