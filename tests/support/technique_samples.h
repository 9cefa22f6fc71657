// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_TECHNIQUE_SAMPLES_H_
#define TESTS_SUPPORT_TECHNIQUE_SAMPLES_H_

#include <functional>
#include <string>
#include <vector>

#include "vxclss/classifier_tool.h"
#include "vxclss/data_provider.h"
#include "vxclss/decision_tree.h"
#include "vxclss/train_params_bayesian.h"
#include "vxclss/train_params_knn.h"

/// One training set of four categories and five measurements, and each technique trained on it (the
/// decision tree, of course, on a tree).

vxClassifierDataProviderMemory techniqueData();

/// A tree some levels deep, parts of it shared.
vxPtrHandle_const<vxDecisionTree> techniqueTree();

vxClassifierTrainParamsKNN knnParams(long k, double order = 2.0);

/// With single measurements, pairs and a binomial one; `cost` is the default cost.
vxClassifierTrainParamsBayesian bayesianParams(double cost);

/// Every fourth of them has an invalid measurement.
vxFeaturePattern techniqueQuery(int number);

struct Technique {
  std::string name;
  std::function<void(vxClassifierTool&)> train;
  std::function<void(vxClassifierTool&)> retrain;     // none for a decision tree
  vxPtrHandle_const<vxClassifierTrainParams> params;  // none for a decision tree

  vxClassifierTool trained() const {
    vxClassifierTool tool;
    train(tool);
    return tool;
  }
};

/// Bayes, KNN, Tree.
std::vector<Technique> techniques();

#endif  // TESTS_SUPPORT_TECHNIQUE_SAMPLES_H_
