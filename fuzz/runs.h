// SPDX-License-Identifier: MIT
#ifndef FUZZ_RUNS_H_
#define FUZZ_RUNS_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/draw.h"
#include "vxclss/vxclss.h"

namespace fuzz {

/// The numbers of the patterns that an object of an input runs with.
class Numbers {
 public:
  Numbers(const std::uint8_t* data, std::size_t size) : draw_(data, size) {}

  /// That many measurements; an input that says nothing gets small whole numbers.
  vxFeaturePattern pattern(long numMeasurements, bool withInvalid);

 private:
  Draw draw_;
};

// What an object gives for two patterns of as many measurements as it expects, one of them with
// invalid ones: every bit, or the errors. Where there is a faster way, it is taken at each level of
// instructions and compared with the plain one.
std::string runs(const vx_ClassifierKNN& classifier, Numbers numbers);
std::string runs(const vx_ClassifierBayesian& classifier, Numbers numbers);
std::string runs(const vx_ClassifierDecisionTree& classifier, Numbers numbers);
std::string runs(const vxClassifierTool& tool, Numbers numbers);
std::string runs(const vx_CategoryModelBayesian& model, Numbers numbers);
std::string runs(const vx_ProbabilityDensityFunction& density, Numbers numbers);
std::string runs(const vxPatternDistanceMetric& metric, Numbers numbers);
std::string runs(const vxPredicateFunction& predicate, Numbers numbers);
std::string runs(const vxDecisionTree& tree, Numbers numbers);
std::string runs(const vxClassifierRule& rule, Numbers numbers);
std::string runs(const vxClassifierRuleTable& table, Numbers numbers);
std::string runs(const vxClsFtSc& score, Numbers numbers);

/// Of what doesn't run.
template <class T>
std::string runs(const T&, const Numbers&, ...) {
  return {};
}

}  // namespace fuzz

#endif  // FUZZ_RUNS_H_
