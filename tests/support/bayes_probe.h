// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_BAYES_PROBE_H_
#define TESTS_SUPPORT_BAYES_PROBE_H_

#include "vxclss/category_model_bayesian.h"
#include "vxclss/classifier_bayesian.h"
#include "vxfoundation/exception.h"

/// A Bayesian classifier whose hooks can be called one by one.
class BayesProbe : public vx_ClassifierBayesian {
 public:
  BayesProbe() = default;
  explicit BayesProbe(const vx_ClassifierBayesian& other) : vx_ClassifierBayesian(other) {}

  /// Model i, which every copy of the classifier shares.
  const vx_CategoryModelBayesian& model(std::size_t i) const {
    return dynamic_cast<const vx_CategoryModelBayesian&>(*categoryModels().at(i));
  }

  using vx_ClassifierBayesian::checkRunnable_;
  using vx_ClassifierBayesian::isTrained_;
  using vx_ClassifierBayesian::retrain_;
  using vx_ClassifierBayesian::run_;
  using vx_ClassifierBayesian::train_;
  using vx_ClassifierBayesian::trainIncremental_;
  using vx_ClassifierBayesian::trainStart_;
  using vx_ClassifierBayesian::untrain_;
};

#endif  // TESTS_SUPPORT_BAYES_PROBE_H_
