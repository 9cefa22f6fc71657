// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PLAIN_KNN_H_
#define TESTS_SUPPORT_PLAIN_KNN_H_

#include <functional>
#include <memory>
#include <vector>

#include "vxclss/costs.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/result.h"

/// The nearest-neighbour technique as its definition says it: no packed copies, nothing kept
/// between runs, every step in the order in which it is told. It has nothing in common with the
/// library's classifier but patterns, errors, costs and the weighting of a result.
namespace plain {

using Distance = std::function<double(const vxFeaturePattern& a, const vxFeaturePattern& b)>;

/// The Minkowski distance of this order, a call of the C library's pow a measurement.
Distance norm(double order);

/// The training set, which copies of a classifier share.
struct TrainingSet {
  std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
  std::vector<long> labels;
};

class Knn {
 public:
  /// What a classifier runs with; a new one, or one from an archive, has these values.
  struct Params {
    long k = 1;
    Distance distance = norm(2.0);
    vxClassifierCosts costs = vxClassifierCosts(1.0);
  };

  bool isTrained() const { return set != nullptr; }
  void train(const TrainingSet& data, const Params& newParams);
  void trainStart();
  void trainIncremental(const vxFeaturePattern& pattern, long label);
  void retrain(const Params& newParams);
  void untrain();
  void run(const vxFeaturePattern& query, vxClassifierResult& result) const;

  Params params;
  bool holdsTrainParams = false;  // of a training that ended well
  std::shared_ptr<TrainingSet> set;

 private:
  std::vector<long> nearestNeighbors_(const vxFeaturePattern& query) const;
};

}  // namespace plain

#endif  // TESTS_SUPPORT_PLAIN_KNN_H_
