// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_BAYES_BAYESIAN_LEARNER_H_
#define CLSS_CLASTOOL_BAYES_BAYESIAN_LEARNER_H_

#include <cstddef>
#include <memory>
#include <vector>

#include "kernel/normal_batch.h"
#include "kernel/normal_lanes.h"
#include "vxclss/category_model_bayesian.h"
#include "vxclss/feature_pattern.h"

/// Folds patterns into a new category model, as the model's own adapt() does.
///
/// The model's densities lag behind while the learner lives: nobody may look at them before it is
/// gone.
class vx_BayesianLearner {
 public:
  /// The model has no sample yet, shares no density, and lives longer.
  explicit vx_BayesianLearner(vx_CategoryModelBayesian& model);
  vx_BayesianLearner(const vx_BayesianLearner&) = delete;
  vx_BayesianLearner& operator=(const vx_BayesianLearner&) = delete;
  ~vx_BayesianLearner();

  /// Throws what adapt() of the model does.
  void adapt(const vxFeaturePattern& pattern);

 private:
  /// Indices of the measurements that a group consists of, or all groups of one.
  struct Members {
    void add(long index);

    std::vector<long> indices;
    bool isRun = true;  // ascending without a gap
  };
  struct Group {
    Members members;
    vx_NormalBatch batch;
  };
  /// The members' measurements in a pattern, with flags if some may be invalid.
  struct Sample {
    const double* x;
    const bool* valid;
  };

  Sample sample_(const Members& members, const vxFeaturePattern& pattern);

  vx_CategoryModelBayesian& model_;
  bool isNormal_ = false;  // else the model does it all
  long numLookedAt_ = 0;
  Members singles_;
  std::unique_ptr<vx_NormalLanes> lanes_;  // of the groups of one
  std::vector<Group> groups_;              // of several
  std::vector<double> x_;
  std::unique_ptr<bool[]> valid_;
};

#endif  // CLSS_CLASTOOL_BAYES_BAYESIAN_LEARNER_H_
