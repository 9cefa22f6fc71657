// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_SPLIT_H_
#define TOOLS_EVAL_SPLIT_H_

#include <vector>

#include "tools/eval/dataset.h"

namespace eval {

/// Which patterns are tested in which round. All other labelled ones are learnt from then.
struct Split {
  long rounds = 0;
  std::vector<long> roundOf;  // of each pattern, [0, rounds); -1 if it is never tested

  long numTested() const;
};

/// Cross-validation: each labelled pattern is tested in one of `folds` rounds.
///
/// Stratified: a category's patterns are dealt to the folds in turn, the next category beginning
/// where the last one ended, so that no two folds differ by more than one pattern, neither of a
/// category nor in all. Which patterns of a category go where, the seed alone decides.
///
/// Throws std::invalid_argument unless folds >= 2.
Split stratifiedFolds(const std::vector<long>& labels, long folds, long seed);

/// One round: a fraction of the labelled patterns, (0, 1), is tested.
///
/// Stratified: of n labelled patterns the nearest whole number to fraction * n is tested, of a
/// category the fraction of its patterns rounded up or down, and never all of them; so there may be
/// fewer in all. Which ones, the seed alone decides.
///
/// Throws std::invalid_argument unless 0 < fraction < 1.
Split stratifiedHoldOut(const std::vector<long>& labels, double fraction, long seed);

/// What is learnt from in a round.
vxClassifierDataProviderMemory trainingSet(const Dataset& data, const Split& split, long round);

}  // namespace eval

#endif  // TOOLS_EVAL_SPLIT_H_
