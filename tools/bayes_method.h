// SPDX-License-Identifier: MIT
#ifndef TOOLS_BAYES_METHOD_H_
#define TOOLS_BAYES_METHOD_H_

#include <string>
#include <vector>

#include "tools/decision_options.h"
#include "tools/method_options.h"

namespace cli {

/// --method bayes.
class BayesMethod : public Method {
 public:
  std::string name() const override { return "bayes"; }
  void addOptions(CLI::App& command) override;
  std::string summary() const override;
  vxPtrHandle<vxClassifierTrainParams> params(const Names& names,
                                              const vxClassifierCosts& costs) const override;
  bool made(const vx_Classifier& classifier) const override;
  bool allowsInvalid() const override { return true; }

 private:
  vxClassifierDistributionTypes distributionTypes_(const Names& names) const;
  vxFeaturePattern maximums_(const Names& names, const vxClassifierDistributionTypes& types) const;

  std::vector<std::string> distributions_;
  std::vector<std::string> maximumTexts_;
  std::vector<std::string> dependents_;
  FrequencyOptions frequencies_;
};

}  // namespace cli

#endif  // TOOLS_BAYES_METHOD_H_
