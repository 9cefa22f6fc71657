// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PLAIN_BAYES_H_
#define TESTS_SUPPORT_PLAIN_BAYES_H_

#include <memory>
#include <vector>

#include "tests/support/plain_distribution_types.h"
#include "tests/support/plain_normal.h"
#include "vxclss/costs.h"
#include "vxclss/density.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/frequencies.h"
#include "vxclss/result.h"

namespace plain {

/// Logarithm of the probability of k successes in n trials, from the gamma function.
Real logBinomial(Real n, Real k, Real theta);

/// The technique as its definition says it: no accelerators, nothing kept but the groups'
/// densities, which see every pattern reduced to their group. With the library's classifier it has
/// the public densities and the weighting of a result in common, nothing else, so their bits must
/// agree.
class Bayes {
 public:
  struct Params {
    DistributionTypes types;
    vxClassifierFrequencies frequencies = vxClassifierFrequencies(1.0);
    vxClassifierCosts costs = vxClassifierCosts(1.0);
    vxFeaturePattern maxima = vxFeaturePattern({}, {});
  };
  struct Group {
    std::vector<long> members;
    std::shared_ptr<vx_ProbabilityDensityFunction> density;
  };
  struct Model {
    long label;
    std::vector<Group> groups;
  };

  /// On top of the models there are: what a training that failed leaves stays.
  void train(const std::vector<vxFeaturePattern>& patterns, const std::vector<long>& labels,
             const Params& newParams);
  void run(const vxFeaturePattern& pattern, vxClassifierResult& result) const;

  static vxFeaturePattern reduced(const vxFeaturePattern& pattern, const std::vector<long>& group);
  static double matchScore(const Model& model, const vxFeaturePattern& pattern);
  static void adapt(Model& model, const vxFeaturePattern& pattern);

  Params params;
  std::vector<Model> models;
};

}  // namespace plain

#endif  // TESTS_SUPPORT_PLAIN_BAYES_H_
