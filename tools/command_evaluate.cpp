// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/confusion_table.h"
#include "tools/dataset_options.h"
#include "tools/error.h"
#include "tools/eval/evaluation.h"
#include "tools/eval/evaluation_json.h"
#include "tools/eval/report/report.h"
#include "tools/eval/scores.h"
#include "tools/json_text.h"
#include "tools/library_error.h"
#include "tools/method_options.h"
#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/split_options.h"
#include "tools/stop.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kEvaluateExamples = R"(
Examples:
  vxclss evaluate iris.csv --label species
  vxclss evaluate iris.csv --label species --method knn --k 9 --folds 5 --seed 7
  vxclss evaluate iris.csv --label species --method bayes --holdout 0.3
  vxclss evaluate iris.csv --label species --method bayes --dependent petal_length,petal_width
  vxclss evaluate iris.csv --label species --json -o iris.json
  vxclss evaluate iris.csv --label species --report iris.html

The patterns of each category are dealt to the folds in turn. Each fold is then classified by a
classifier that was trained on all the others, so that no pattern is judged by one that knew it.
With --holdout, that fraction of each category is classified once, by one trained on the rest. Equal
seeds give equal parts. Rows without a category are not counted.

Recall is the share of a category's patterns that was decided correctly, precision the share of the
decisions for it that was correct, accuracy the share of all; the interval tells where it lies with a
confidence of 95 %. The log loss is the mean of -ln(class score of the true category).

With --report, a page for the browser shows what is confused and why, the measurements with the
regions of the decisions, and what rejecting and other costs would change.

With --json, programs get all of this in full precision, and further every pattern's scores, what
rejecting doubtful decisions would gain, whether class scores are what they claim, and what decisions
would cost if one misclassification cost more or less.)";

class EvaluateCommand {
 public:
  EvaluateCommand(CLI::App& command, const Console& console)
      : console_(console), data_(command), method_(command), split_(command) {
    const char* group = "Output";
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.get_option("--json")->group(group);
    command
        .add_option("-o,--output", output_, "With --json: file for it; the text is printed then")
        ->type_name("FILE")
        ->needs("--json")
        ->group(group);
    command.add_option("--report", report_, "Page for the browser that shows it all")
        ->type_name("FILE.html")
        ->group(group);
    command
        .add_option("--plot", plotted_,
                    "With --report: measurement to plot; may be repeated (default: the six that "
                    "part the categories best)")
        ->needs("--report")
        ->type_name("COLUMN")
        ->allow_extra_args(false)
        ->group(group);
    command.footer(kEvaluateExamples);
  }

  void run() const {
    const Method& method = method_.chosen();
    const Dataset data = data_.read(method.allowsInvalid(), console_.bar());
    const eval::Split split = split_.of(data);
    const eval::Dataset evaluated = evalDataset(data);
    const std::vector<long> plotted = plottedOf_(evaluated);
    std::optional<OutputFile> file;
    if (!output_.empty()) file.emplace(output_);
    std::optional<OutputFile> report;
    if (!report_.empty()) report.emplace(report_);
    const eval::Evaluation evaluation = evaluate_(evaluated, data, split);
    if (report) writeReport_(report->stream(), data, method, evaluated, evaluation, plotted);
    if (json_) {
      (file ? file->stream() : console_.out)
          << jsonText(allAsJson_(data, method, evaluated, evaluation));
    }
    if (!json_ || file) print_(data, method, evaluation);
    if (file) file->commit();
    if (report) report->commit();
  }

 private:
  eval::Evaluation evaluate_(const eval::Dataset& evaluated, const Dataset& data,
                             const eval::Split& split) const {
    Progress progress("evaluating", static_cast<double>(split.numTested()), console_.bar());
    long done = 0;
    const auto params = method_.params(data.names);
    const bool isAsked = json_ || !report_.empty();
    return explained(data.path, data.names, [&] {
      return eval::evaluate(evaluated, *params, split, {isAsked, isAsked}, [&](std::size_t) {
        throwIfStopped();
        progress.update(static_cast<double>(++done));
      });
    });
  }

  void print_(const Dataset& data, const Method& method, const eval::Evaluation& evaluation) const {
    const eval::Confusion& confusion = evaluation.confusion();
    const auto tested = static_cast<double>(confusion.numPatterns());
    const eval::Interval interval =
        eval::wilsonInterval(confusion.numCorrect(), confusion.numPatterns());
    std::ostream& out = console_.out;
    out << fmt::format("{}: {} patterns, {} measurements, {} categories\n", printable(data_.path()),
                       data.numLabelled(), data.names.measurements.size(),
                       data.names.categories.size());
    const long unknown = static_cast<long>(data.labels.size()) - data.numLabelled();
    if (unknown > 0) out << fmt::format("not counted, without a category: {}\n", unknown);
    out << fmt::format("method {} ({}), {}\n\n", method.name(), method.summary(), split_.summary())
        << confusionTable(confusion, data.names.categories) << '\n'
        << fmt::format("accuracy            {} ({} of {})\n", percentage(confusion.accuracy()),
                       confusion.numCorrect(), confusion.numPatterns())
        << fmt::format("its 95 % interval   {} to {}\n", percentage(interval.low),
                       percentage(interval.high))
        << fmt::format("mean expected cost  {:.4g}\n", evaluation.meanExpectedCost())
        << fmt::format("mean actual cost    {:.4g}\n", evaluation.meanActualCost())
        << fmt::format("log loss            {:.4g}\n", evaluation.logLoss())
        << fmt::format("training            {:.3g} s\n", evaluation.timings().trainSeconds)
        << fmt::format("speed               {:.0f} patterns per second\n",
                       tested / evaluation.timings().runSeconds);
  }

  Json allAsJson_(const Dataset& data, const Method& method, const eval::Dataset& evaluated,
                  const eval::Evaluation& evaluation) const {
    Json json = {{"data", data_.path()},
                 {"measurements", data.names.measurements},
                 {"labelled_patterns", data.numLabelled()},
                 {"method", {{"name", method.name()}, {"options", method.summary()}}},
                 {"split", split_.json()}};
    json.update(eval::evaluationJson(evaluated, evaluation));
    json["timings"] = eval::timingsJson(evaluation.timings());
    return json;
  }

  std::vector<long> plottedOf_(const eval::Dataset& data) const {
    if (plotted_.empty()) return eval::tellingMeasurements(data, 6);
    std::set<long> chosen;
    for (const std::string& name : plotted_) {
      const auto found = std::find(data.measurements.begin(), data.measurements.end(), name);
      if (found == data.measurements.end()) {
        throw InputError(fmt::format("--plot: {}: no measurement {}", data_.path(), shown(name)));
      }
      chosen.insert(static_cast<long>(found - data.measurements.begin()));
    }
    return {chosen.begin(), chosen.end()};
  }

  void writeReport_(std::ostream& out, const Dataset& data, const Method& method,
                    const eval::Dataset& evaluated, const eval::Evaluation& evaluation,
                    const std::vector<long>& plotted) const {
    const auto params = method_.params(data.names);
    explained(data.path, data.names, [&] {
      eval::writeReport(out, {evaluated, evaluation, *params,
                              std::filesystem::path(data.path).filename().string(),
                              fmt::format("{} ({})", method.name(), method.summary()),
                              split_.summary(), plotted, throwIfStopped});
      return true;
    });
  }

  Console console_;
  DatasetOptions data_;
  MethodOptions method_;
  SplitOptions split_;
  bool json_ = false;
  std::string output_;
  std::string report_;
  std::vector<std::string> plotted_;
};

}  // namespace

void addEvaluate(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("evaluate", "Tell how well a method decides");
  command->callback(
      [evaluate = std::make_shared<EvaluateCommand>(*command, console)] { evaluate->run(); });
}

}  // namespace cli
