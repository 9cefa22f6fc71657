// SPDX-License-Identifier: MIT
#include "tools/split_options.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "tools/error.h"
#include "tools/number_options.h"
#include "tools/text.h"

namespace cli {
namespace {

std::string isFraction(const std::string& text) {
  const auto number = parsedNumber(trimmed(text));
  if (number && *number > 0.0 && *number < 1.0) return {};
  return shown(text) + " is not a number between 0 and 1";
}

}  // namespace

SplitOptions::SplitOptions(CLI::App& command) {
  const char* group = "Test patterns";
  CLI::Option* folds = command
                           .add_option("--folds", folds_,
                                       "Cross-validation: number of parts that the patterns are "
                                       "split into (default 10)")
                           ->check(wholeNumber(2))
                           ->type_name("N")
                           ->group(group);
  command
      .add_option(
          "--holdout", holdout_,
          "Instead of cross-validation: fraction that is tested, the rest being learnt from")
      ->check(isFraction)
      ->type_name("FRACTION")
      ->excludes(folds)
      ->group(group);
  command.add_option("--seed", seed_, "Seed of the split (default 1)")
      ->check(wholeNumber(0))
      ->type_name("N")
      ->group(group);
}

eval::Split SplitOptions::of(const Dataset& data) const {
  const long seed = wholeOf(seed_);
  if (!holdout_.empty()) {
    eval::Split split = eval::stratifiedHoldOut(data.labels, numberOf(holdout_), seed);
    if (split.numTested() > 0) return split;
    throw InputError(fmt::format("{}: {} patterns of known category are too few to hold out {}",
                                 data.path, data.numLabelled(), numberOf(holdout_)));
  }
  if (wholeOf(folds_) > data.numLabelled()) {
    throw InputError(fmt::format("{}: {} patterns of known category are too few for {} folds",
                                 data.path, data.numLabelled(), wholeOf(folds_)));
  }
  return eval::stratifiedFolds(data.labels, wholeOf(folds_), seed);
}

std::string SplitOptions::summary() const {
  return holdout_.empty()
             ? fmt::format("{} folds, seed {}", wholeOf(folds_), wholeOf(seed_))
             : fmt::format("fraction {} held out, seed {}", numberOf(holdout_), wholeOf(seed_));
}

Json SplitOptions::json() const {
  if (holdout_.empty()) {
    return {{"kind", "folds"}, {"folds", wholeOf(folds_)}, {"seed", wholeOf(seed_)}};
  }
  return {{"kind", "holdout"}, {"fraction", numberOf(holdout_)}, {"seed", wholeOf(seed_)}};
}

eval::Dataset evalDataset(const Dataset& data) {
  return {data.names.measurements, data.names.categories, data.patterns, data.labels, data.rows};
}

}  // namespace cli
