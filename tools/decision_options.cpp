// SPDX-License-Identifier: MIT
#include "tools/decision_options.h"

#include "tools/name_options.h"
#include "tools/number_options.h"

namespace cli {

CostOptions::CostOptions(CLI::App& command) {
  const char* group = "Costs of wrong decisions";
  command
      .add_option("--default-cost", defaultCost_,
                  "Cost of any wrong decision that has none of its own (at first 1)")
      ->check(positiveNumber(true))
      ->type_name("COST")
      ->group(group);
  command
      .add_option("--cost", costs_,
                  "Cost of taking a pattern of category TRUE for one of ASSIGNED; may be repeated")
      ->type_name("TRUE,ASSIGNED=COST")
      ->allow_extra_args(false)
      ->group(group);
}

std::vector<std::string> CostOptions::arguments() const {
  std::vector<std::string> arguments;
  if (!defaultCost_.empty()) arguments.push_back("--default-cost=" + defaultCost_);
  for (const std::string& cost : costs_) arguments.push_back("--cost=" + cost);
  return arguments;
}

void CostOptions::apply(vxClassifierCosts& costs, const Names& names,
                        const std::string& owner) const {
  if (!defaultCost_.empty()) costs.defaultMisclassificationCost(numberOf(defaultCost_));
  for (const std::string& text : costs_) {
    const Assignment cost = assignment("--cost", text, "TRUE,ASSIGNED=COST", positiveNumber(true));
    const auto [actual, assigned] = labelPair("--cost", text, names, cost.names, owner);
    costs.misclassificationCostOverride(actual, assigned, numberOf(cost.value));
  }
}

void FrequencyOptions::add(CLI::App& command, const std::string& group) {
  command
      .add_option("--frequency", frequencies_,
                  "How often CATEGORY occurs, relative to the others (at first 1); may be repeated")
      ->type_name("CATEGORY=VALUE")
      ->allow_extra_args(false)
      ->group(group);
}

void FrequencyOptions::apply(vxClassifierFrequencies& frequencies, const Names& names,
                             const std::string& owner) const {
  for (const std::string& text : frequencies_) {
    const Assignment frequency =
        assignment("--frequency", text, "CATEGORY=VALUE", positiveNumber(false));
    const long label = labelNamed("--frequency", text, names, frequency.names, owner);
    frequencies.categoryFrequencyOverride(label, numberOf(frequency.value));
  }
}

}  // namespace cli
