// SPDX-License-Identifier: MIT
#ifndef TOOLS_DECISION_OPTIONS_H_
#define TOOLS_DECISION_OPTIONS_H_

#include <vxclss/vxclss.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/table.h"

namespace cli {

/// --default-cost and --cost.
class CostOptions {
 public:
  explicit CostOptions(CLI::App& command);

  bool given() const { return !defaultCost_.empty() || !costs_.empty(); }

  /// What was given, as arguments that say it again.
  std::vector<std::string> arguments() const;

  /// Changes what the command line names and leaves all else. Throws InputError for a pair of
  /// categories that `names` don't hold; `owner` is whose they are: "data" or "model".
  void apply(vxClassifierCosts& costs, const Names& names, const std::string& owner) const;

 private:
  std::string defaultCost_;
  std::vector<std::string> costs_;
};

/// --frequency.
class FrequencyOptions {
 public:
  void add(CLI::App& command, const std::string& group);

  const std::vector<std::string>& texts() const { return frequencies_; }

  /// As CostOptions::apply().
  void apply(vxClassifierFrequencies& frequencies, const Names& names,
             const std::string& owner) const;

 private:
  std::vector<std::string> frequencies_;
};

}  // namespace cli

#endif  // TOOLS_DECISION_OPTIONS_H_
