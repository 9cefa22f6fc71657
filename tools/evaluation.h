// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVALUATION_H_
#define TOOLS_EVALUATION_H_

#include <vxclss/vxclss.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace cli {

using PatternHandle = vxPtrHandle_const<vxFeaturePattern>;

/// The fold in which each pattern is tested, [0, folds); -1 for a pattern labelled -1.
///
/// Stratified: a category's patterns are dealt to the folds in turn, the next category beginning
/// where the last one ended, so that no two folds differ by more than one pattern, neither of a
/// category nor in all. Which patterns of a category go where, the seed alone decides.
std::vector<long> stratifiedFolds(const std::vector<long>& labels, long folds, long seed);

/// The labelled patterns but those of fold `left`; `folds` as stratifiedFolds() gives them.
vxClassifierDataProviderMemory trainingSet(const std::vector<PatternHandle>& patterns,
                                           const std::vector<long>& labels,
                                           const std::vector<long>& folds, long left);

/// What decisions on patterns of known category were worth.
class Evaluation {
 public:
  /// For labels in [0, numCategories).
  explicit Evaluation(std::size_t numCategories);

  /// Counts one decision. Throws vxClassifierDefs::BadLabel for a label outside the range.
  void add(long trueLabel, const vxClassifierResult& result);
  void addSeconds(double seconds) { seconds_ += seconds; }

  long numCategories() const { return static_cast<long>(confusion_.size()); }

  /// Patterns of `trueLabel` that were assigned to `assignedLabel`.
  long count(long trueLabel, long assignedLabel) const;
  long numOf(long trueLabel) const;
  long numPatterns() const;
  long numCorrect() const;

  /// The share decided correctly, of a category or of all; NaN if there was no pattern.
  double recall(long trueLabel) const;
  double accuracy() const;

  /// What the decisions were expected to cost, on average.
  double meanExpectedCost() const;

  /// Time spent classifying.
  double seconds() const { return seconds_; }

 private:
  std::vector<std::vector<long>> confusion_;  // by true label, then by assigned label
  double expectedCost_ = 0.0;
  double seconds_ = 0.0;
};

/// Cross-validation: each labelled pattern is classified by a tool trained with `params` on the
/// other folds. Patterns and labels are parallel, labels in [-1, numCategories), -1 not counted.
/// Calls `onPattern` after each decision with the pattern's index; it may throw to stop.
///
/// Throws what training and running throw.
Evaluation crossValidate(const std::vector<PatternHandle>& patterns,
                         const std::vector<long>& labels, std::size_t numCategories,
                         const vxClassifierTrainParams& params, long folds, long seed,
                         const std::function<void(std::size_t)>& onPattern);

}  // namespace cli

#endif  // TOOLS_EVALUATION_H_
