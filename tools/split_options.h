// SPDX-License-Identifier: MIT
#ifndef TOOLS_SPLIT_OPTIONS_H_
#define TOOLS_SPLIT_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <string>

#include "tools/eval/dataset.h"
#include "tools/eval/split.h"
#include "tools/json_text.h"
#include "tools/table.h"

namespace cli {

/// --folds, --holdout and --seed: which patterns are tested, by a classifier that has not seen
/// them.
class SplitOptions {
 public:
  explicit SplitOptions(CLI::App& command);

  /// Throws InputError if there are too few patterns of known category.
  eval::Split of(const Dataset& data) const;

  /// In words ("10 folds, seed 1") and for programs.
  std::string summary() const;
  Json json() const;

 private:
  std::string folds_ = "10";
  std::string holdout_;  // empty: folds
  std::string seed_ = "1";
};

/// The same patterns, labels, rows and names.
eval::Dataset evalDataset(const Dataset& data);

}  // namespace cli

#endif  // TOOLS_SPLIT_OPTIONS_H_
