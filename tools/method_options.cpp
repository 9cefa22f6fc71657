// SPDX-License-Identifier: MIT
#include "tools/method_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tools/error.h"
#include "tools/number_options.h"
#include "tools/text.h"

namespace cli {
namespace {

class KnnMethod : public Method {
 public:
  std::string name() const override { return "knn"; }

  void addOptions(CLI::App& command) override {
    const char* group = "Options of --method knn (k nearest neighbours)";
    command.add_option("--k", k_, "Number of neighbours that vote (default 5)")
        ->check(wholeNumber(1))
        ->type_name("N")
        ->group(group);
    command
        .add_option("--order", order_,
                    "Order of the norm: 2 Euclidean, 1 city-block, any > 0 (default 2)")
        ->check(positiveNumber(false))
        ->type_name("P")
        ->group(group);
  }

  std::string summary() const override {
    return fmt::format("k {}, order {}", wholeOf(k_), numberOf(order_));
  }

  vxPtrHandle<vxClassifierTrainParams> params(const Names& /*names*/,
                                              const vxClassifierCosts& costs) const override {
    return vxPtrHandle<vxClassifierTrainParams>(new vxClassifierTrainParamsKNN(
        wholeOf(k_), vxPatternDistanceMetricNorm(numberOf(order_)), costs));
  }

  bool made(const vx_Classifier& classifier) const override {
    return dynamic_cast<const vx_ClassifierKNN*>(&classifier) != nullptr;
  }

  bool allowsInvalid() const override { return false; }

 private:
  std::string k_ = "5";
  std::string order_ = "2";
};

/// Position of the category name in `names`, -1 if it isn't there.
long labelOf(const Names& names, std::string_view category) {
  const auto& all = names.categories;
  const auto found = std::find(all.begin(), all.end(), trimmed(category));
  return found == all.end() ? -1 : static_cast<long>(found - all.begin());
}

/// The labels of "TRUE,ASSIGNED". Names may hold commas, so each comma is tried as the one between.
std::pair<long, long> labelPair(const Names& names, const std::string& text,
                                std::string_view pair) {
  std::vector<std::pair<long, long>> readings;
  for (std::size_t comma = pair.find(','); comma != std::string_view::npos;
       comma = pair.find(',', comma + 1)) {
    const long first = labelOf(names, pair.substr(0, comma));
    const long second = labelOf(names, pair.substr(comma + 1));
    if (first >= 0 && second >= 0) readings.emplace_back(first, second);
  }
  if (readings.size() != 1) {
    throw InputError(fmt::format("--cost: {} does not name two categories of the data: {}",
                                 shown(text), fmt::join(names.categories, ", ")));
  }
  if (readings[0].first == readings[0].second) {
    throw InputError(fmt::format("--cost: {} names one category twice; a correct decision is free",
                                 shown(text)));
  }
  return readings[0];
}

}  // namespace

std::vector<std::unique_ptr<Method>> allMethods() {
  std::vector<std::unique_ptr<Method>> methods;
  methods.push_back(std::make_unique<KnnMethod>());
  return methods;
}

bool allowsInvalid(const vxClassifierTool& tool) {
  for (const std::unique_ptr<Method>& method : allMethods()) {
    if (method->made(*tool.classifier())) return method->allowsInvalid();
  }
  return true;
}

MethodOptions::MethodOptions(CLI::App& command) : methods_(allMethods()) {
  std::vector<std::string> known;
  for (const auto& method : methods_) known.push_back(method->name());
  command
      .add_option("--method", method_,
                  fmt::format("Technique: {} (default {})", fmt::join(known, ", "), method_))
      ->type_name("METHOD");
  for (const auto& method : methods_) method->addOptions(command);

  const char* group = "Costs of wrong decisions";
  command
      .add_option("--default-cost", defaultCost_,
                  "Cost of any wrong decision that has none of its own (default 1)")
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

const Method& MethodOptions::chosen() const {
  std::vector<std::string> known;
  for (const auto& method : methods_) {
    if (method->name() == method_) return *method;
    known.push_back(method->name());
  }
  throw InputError(
      fmt::format("--method: no method {}; there are: {}", shown(method_), fmt::join(known, ", ")));
}

vxPtrHandle<vxClassifierTrainParams> MethodOptions::params(const Names& names) const {
  vxClassifierCosts costs(numberOf(defaultCost_));
  for (const std::string& text : costs_) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos) {
      throw InputError(fmt::format("--cost: {} is not TRUE,ASSIGNED=COST", shown(text)));
    }
    const std::string_view whole = text;
    const auto [actual, assigned] = labelPair(names, text, whole.substr(0, equals));
    const std::string cost(trimmed(whole.substr(equals + 1)));
    const std::string wrong = positiveNumber(true)(cost);
    if (!wrong.empty()) throw InputError("--cost: " + wrong);
    costs.misclassificationCostOverride(actual, assigned, numberOf(cost));
  }
  return chosen().params(names, costs);
}

}  // namespace cli
