// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/columns.h"
#include "tools/commands.h"
#include "tools/comparison.h"
#include "tools/confusion_table.h"
#include "tools/dataset_options.h"
#include "tools/decision_options.h"
#include "tools/eval/evaluation_json.h"
#include "tools/json_text.h"
#include "tools/progress.h"
#include "tools/split_options.h"
#include "tools/stop.h"
#include "tools/text.h"
#include "tools/variants.h"

namespace cli {
namespace {

const char* const kCompareExamples = R"(
Examples:
  vxclss compare iris.csv --label species
  vxclss compare parts.csv --label kind --ignore id --cost crack,good=20 --folds 5
  vxclss compare iris.csv --label species --json > comparison.json

Tries techniques on the same parts of the data as evaluate would, and lists the cheapest first:
  knn    k 1, 3, 5, 9 and 15 with Euclidean distance; k 1 and 5 with order 1
  bayes  normal distributions, with all measurements independent, all dependent, and those
         dependent whose correlation within the categories is above 0.5; with frequencies as counted
         where categories differ in size; with binomial distributions for measurements that are
         whole numbers from 0 to 100
A technique that can't work on the data is listed with the reason. A decision tree is not learnt
from data, so there is none among them: write one down (vxclss tree --help), and run it.

The interval tells where the accuracy lies with a confidence of 95 %. The mean cost is what the
decisions cost in truth. Against the best, p is the probability that two equally good techniques
differ that much in which patterns they decide correctly (McNemar's exact test on the same
patterns); from 0.05 on a difference is called noise. It knows nothing of costs, and is not corrected
for the number of techniques: the best of many looks a little better than it is. So does what was
chosen by all the data: correlations and counts.)";

/// An argument that a shell reads as it stands.
std::string shellWord(const std::string& text) {
  const std::string plain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./:=,+@%-";
  if (!text.empty() && text.find_first_not_of(plain) == std::string::npos) return text;
  std::string out = "'";
  for (const char c : printable(text)) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

Cells lineOf(const Contestant& contestant, bool isBest) {
  const double seconds = contestant.timings.runSeconds;
  const std::string against =
      isBest ? "best"
             : fmt::format("{}, p {:.2g}", contestant.isWithinNoise() ? "noise" : "differs",
                           contestant.p);
  return {contestant.variant.name,
          percentage(contestant.accuracy()),
          fmt::format("{} to {}", percentage(contestant.interval.low),
                      percentage(contestant.interval.high)),
          fmt::format("{:.4g}", contestant.logLoss),
          fmt::format("{:.4g}", contestant.meanActualCost),
          fmt::format("{:.2g} s", contestant.timings.trainSeconds),
          fmt::format("{:.2g} us",
                      1e6 * seconds / static_cast<double>(contestant.timings.testedPatterns)),
          against};
}

Json contestantJson(const Contestant& contestant) {
  Json json{{"name", contestant.variant.name},
            {"method", contestant.variant.method},
            {"arguments", contestant.variant.arguments}};
  if (!contestant.obstacle.empty()) {
    json["obstacle"] = contestant.obstacle;
    return json;
  }
  json["tested"] = contestant.numTested;
  json["correct"] = contestant.numCorrect;
  json["accuracy"] = jsonNumber(contestant.accuracy());
  json["accuracy_interval"] = {jsonNumber(contestant.interval.low),
                               jsonNumber(contestant.interval.high)};
  json["log_loss"] = jsonNumber(contestant.logLoss);
  json["mean_expected_cost"] = jsonNumber(contestant.meanExpectedCost);
  json["mean_actual_cost"] = jsonNumber(contestant.meanActualCost);
  json["against_best"] = {{"only_best_correct", contestant.onlyBest},
                          {"only_this_correct", contestant.onlyThis},
                          {"p", jsonNumber(contestant.p)},
                          {"within_noise", contestant.isWithinNoise()}};
  json["timings"] = eval::timingsJson(contestant.timings);
  return json;
}

class CompareCommand {
 public:
  CompareCommand(CLI::App& command, const Console& console)
      : console_(console), data_(command), split_(command), costs_(command) {
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.footer(kCompareExamples);
  }

  void run() const {
    const Dataset data = data_.read(true, console_.bar());
    const eval::Split split = split_.of(data);
    const std::vector<Variant> variants = variantsFor(data);
    const std::vector<Contestant> contestants = compare_(data, variants, split);
    if (json_) {
      console_.out << jsonText(outcome_(data, contestants));
    } else {
      printText_(data, contestants);
    }
  }

 private:
  std::vector<Contestant> compare_(const Dataset& data, const std::vector<Variant>& variants,
                                   const eval::Split& split) const {
    const auto total =
        static_cast<double>(split.numTested()) * static_cast<double>(variants.size());
    Progress progress("comparing", total, console_.bar());
    double done = 0.0;
    return compare(data, variants, costs_.arguments(), split, [&] {
      throwIfStopped();
      progress.update(++done);
    });
  }

  void printText_(const Dataset& data, const std::vector<Contestant>& contestants) const {
    std::ostream& out = console_.out;
    out << fmt::format("{}: {} patterns, {} measurements, {} categories\n", printable(data_.path()),
                       data.numLabelled(), data.names.measurements.size(),
                       data.names.categories.size());
    const long unknown = static_cast<long>(data.labels.size()) - data.numLabelled();
    if (unknown > 0) out << fmt::format("not counted, without a category: {}\n", unknown);
    out << split_.summary() << ", the same for all\n";

    std::vector<Cells> lines{{"", "accuracy", "interval", "log loss", "mean cost", "training",
                              "a pattern", "against the best"}};
    std::map<std::string, Cells> losers;  // by the obstacle
    for (const Contestant& contestant : contestants) {
      if (contestant.obstacle.empty()) {
        lines.push_back(lineOf(contestant, lines.size() == 1));
      } else {
        losers[contestant.obstacle].push_back(contestant.variant.name);
      }
    }
    if (lines.size() > 1) {
      out << '\n'
          << aligned(lines) << "\nTo train the best: " << trainLine_(contestants[0]) << '\n';
    }
    if (!losers.empty()) out << "\nWhat can't work on these data, and why:\n";
    for (const auto& [obstacle, names] : losers) {
      out << fmt::format("{}\n  {}\n", obstacle, fmt::join(names, "; "));
    }
  }

  std::string trainLine_(const Contestant& contestant) const {
    std::string line = "vxclss train";
    for (const auto& arguments :
         {data_.arguments(), contestant.variant.arguments, costs_.arguments()}) {
      for (const std::string& argument : arguments) line += ' ' + shellWord(argument);
    }
    return line + " -o MODEL";
  }

  Json outcome_(const Dataset& data, const std::vector<Contestant>& contestants) const {
    Json list = Json::array();
    for (const Contestant& contestant : contestants) list.push_back(contestantJson(contestant));
    return {{"data", data_.path()},
            {"patterns", data.numLabelled()},
            {"without_category", static_cast<long>(data.labels.size()) - data.numLabelled()},
            {"measurements", data.names.measurements},
            {"categories", data.names.categories},
            {"split", split_.json()},
            {"techniques", list}};
  }

  Console console_;
  DatasetOptions data_;
  SplitOptions split_;
  CostOptions costs_;
  bool json_ = false;
};

}  // namespace

void addCompare(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("compare", "Try several techniques side by side");
  command->callback(
      [compare = std::make_shared<CompareCommand>(*command, console)] { compare->run(); });
}

}  // namespace cli
