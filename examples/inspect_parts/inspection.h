// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_INSPECTION_H_
#define EXAMPLES_INSPECT_PARTS_INSPECTION_H_

#include <vxclss/vxclss.h>

#include <map>
#include <utility>

namespace parts {

/// What is decided about one part.
struct Decision {
  enum Verdict {
    kAccepted,
    kUnsure,   ///< a mistake is too likely
    kUnknown,  ///< it fits no category, not even the best one
  };
  Verdict verdict;
  long label;         ///< the best category, whatever the verdict
  double classScore;  ///< its share, [0, 1]
  double fit;         ///< logarithm of its likelihood: how well the part fits in absolute terms
  double leastFit;    ///< what this category asks for
};

/// Decides by a Bayesian tool, and rejects what it can't decide.
///
/// The best match score is 1 however far off a pattern is, so the scores alone never tell that a
/// part belongs to no category. The factor that scaled them does: minus its logarithm is that of
/// the best category's likelihood.
class Inspection {
 public:
  /// Patterns as measureBlobs() makes them. Each category needs some twenty whole ones.
  ///
  /// Throws what training throws: vxClassifierDefs::InsufficientTrainData for a category that has
  /// fewer than two whole parts, and others below vxClassifierDefs::Errors.
  explicit Inspection(const vxClassifierDataProvider& data);

  /// `pattern` as measureBlobs() makes it.
  Decision decide(const vxFeaturePattern& pattern) const;

  const vxClassifierTool& tool() const { return tool_; }

 private:
  /// Fewer measurements give likelihoods of another size, so cut-off parts have limits of their
  /// own.
  using Case = std::pair<long, bool>;  // label; whether cut off

  static double fitOf_(const vxClassifierResult& result);
  Case caseOf_(long label, const vxFeaturePattern& pattern) const;
  void learnLeastFits_(const vxClassifierDataProvider& data);

  vxClassifierTool tool_;
  std::map<Case, double> leastFits_;
};

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_INSPECTION_H_
