// SPDX-License-Identifier: MIT
#include "tools/comparison.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <utility>

#include "tools/error.h"
#include "tools/library_error.h"
#include "tools/method_options.h"
#include "tools/paired_test.h"
#include "tools/split_options.h"
#include "tools/text.h"

namespace cli {
namespace {

/// A contestant, and which patterns it decided correctly, in the order of the data.
struct Tried {
  Contestant contestant;
  std::vector<bool> correct;
};

/// Reads arguments as train does, so that a variant is what train makes of them.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> arguments) : options_(app_) {
    std::reverse(arguments.begin(), arguments.end());
    app_.parse(arguments);
  }

  const Method& method() const { return options_.chosen(); }
  vxPtrHandle<vxClassifierTrainParams> params(const Names& names) const {
    return options_.params(names);
  }

 private:
  CLI::App app_;
  MethodOptions options_;
};

/// What keeps a technique that needs every measurement from learning the data; empty for nothing.
std::string missingValues(const Dataset& data) {
  long count = 0;
  long firstRow = 0;
  for (std::size_t i = 0; i < data.patterns.size(); ++i) {
    if (data.labels[i] < 0 || data.patterns[i]->numInvalid() == 0) continue;
    if (count++ == 0) firstRow = data.rows[i];
  }
  if (count == 0) return {};
  return fmt::format("needs every measurement; {} of {} patterns lack one, the first in row {}",
                     count, data.numLabelled(), firstRow);
}

Tried tried(const Variant& variant, const eval::Evaluation& evaluation) {
  Tried result;
  Contestant& contestant = result.contestant;
  contestant.variant = variant;
  contestant.numCorrect = evaluation.confusion().numCorrect();
  contestant.numTested = evaluation.confusion().numPatterns();
  contestant.interval = eval::wilsonInterval(contestant.numCorrect, contestant.numTested);
  contestant.logLoss = evaluation.logLoss();
  contestant.meanExpectedCost = evaluation.meanExpectedCost();
  contestant.meanActualCost = evaluation.meanActualCost();
  contestant.timings = evaluation.timings();
  for (const eval::Record& record : evaluation.records()) {
    result.correct.push_back(record.isCorrect());
  }
  return result;
}

Tried refused(const Variant& variant, const std::string& obstacle) {
  Tried result;
  result.contestant.variant = variant;
  result.contestant.obstacle = printable(obstacle);
  return result;
}

bool isBetter(const Tried& a, const Tried& b) {
  const bool aWorks = a.contestant.obstacle.empty();
  const bool bWorks = b.contestant.obstacle.empty();
  if (!aWorks || !bWorks) return aWorks && !bWorks;
  if (a.contestant.meanActualCost != b.contestant.meanActualCost) {
    return a.contestant.meanActualCost < b.contestant.meanActualCost;
  }
  return a.contestant.logLoss < b.contestant.logLoss;
}

void compareWithBest(const Tried& best, Tried& other) {
  Contestant& contestant = other.contestant;
  for (std::size_t i = 0; i < best.correct.size(); ++i) {
    if (best.correct[i] && !other.correct[i]) ++contestant.onlyBest;
    if (!best.correct[i] && other.correct[i]) ++contestant.onlyThis;
  }
  contestant.p = mcNemarTest(contestant.onlyBest, contestant.onlyThis);
}

}  // namespace

std::vector<Contestant> compare(const Dataset& data, const std::vector<Variant>& variants,
                                const std::vector<std::string>& costs, const eval::Split& split,
                                const std::function<void()>& onPattern) {
  Arguments(costs).params(data.names);
  const eval::Dataset evaluated = evalDataset(data);
  const std::string missing = missingValues(data);
  std::vector<Tried> all;
  for (const Variant& variant : variants) {
    std::vector<std::string> arguments = variant.arguments;
    arguments.insert(arguments.end(), costs.begin(), costs.end());
    try {
      const Arguments read(arguments);
      if (!missing.empty() && !read.method().allowsInvalid()) throw InputError(missing);
      all.push_back(tried(variant, eval::evaluate(evaluated, *read.params(data.names), split, {},
                                                  [&](std::size_t) { onPattern(); })));
    } catch (const InputError& error) {
      all.push_back(refused(variant, error.what()));
    } catch (const vxClassifierDefs::Errors& error) {
      all.push_back(refused(variant, libraryText(error, data.names)));
    }
  }
  std::stable_sort(all.begin(), all.end(), isBetter);
  std::vector<Contestant> contestants;
  for (Tried& each : all) {
    if (each.contestant.obstacle.empty()) compareWithBest(all[0], each);
    contestants.push_back(std::move(each.contestant));
  }
  return contestants;
}

}  // namespace cli
