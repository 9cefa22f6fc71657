// SPDX-License-Identifier: MIT
#include "tools/method_options.h"

#include <fmt/format.h>

#include <cstddef>

#include "tools/bayes_method.h"
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

}  // namespace

std::vector<std::unique_ptr<Method>> allMethods() {
  std::vector<std::unique_ptr<Method>> methods;
  methods.push_back(std::make_unique<KnnMethod>());
  methods.push_back(std::make_unique<BayesMethod>());
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
      ->type_name(fmt::format("{}", fmt::join(known, "|")));
  for (const auto& method : methods_) {
    const std::size_t before = command.get_options().size();
    method->addOptions(command);
    const std::vector<CLI::Option*> all = command.get_options();
    options_.emplace_back(all.begin() + static_cast<std::ptrdiff_t>(before), all.end());
  }
  costs_.emplace(command);
}

const Method& MethodOptions::chosen() const {
  if (method_ == "tree") {
    throw InputError("--method: a tree is not learnt from data; make one with vxclss tree");
  }
  const Method* found = nullptr;
  std::vector<std::string> known;
  for (const auto& method : methods_) {
    if (method->name() == method_) found = method.get();
    known.push_back(method->name());
  }
  if (found == nullptr) {
    throw InputError(fmt::format("--method: no method {}; there are: {}", shown(method_),
                                 fmt::join(known, ", ")));
  }
  for (std::size_t i = 0; i < methods_.size(); ++i) {
    if (methods_[i].get() == found) continue;
    for (const CLI::Option* option : options_[i]) {
      if (option->count() == 0) continue;
      throw InputError(fmt::format("{}: an option of --method {}, not of {}", option->get_name(),
                                   methods_[i]->name(), method_));
    }
  }
  return *found;
}

vxPtrHandle<vxClassifierTrainParams> MethodOptions::params(const Names& names) const {
  vxClassifierCosts costs(1.0);
  costs_->apply(costs, names, "data");
  return chosen().params(names, costs);
}

}  // namespace cli
