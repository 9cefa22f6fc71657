// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PLAIN_TREE_H_
#define TESTS_SUPPORT_PLAIN_TREE_H_

#include <random>
#include <vector>

#include "tests/support/tree_samples.h"
#include "vxclss/feature_pattern.h"

/// Trees as their definition says it: by recursion, each path on its own.
namespace plain {

bool outcome(const vxPredicateFunction& predicate, const vxFeaturePattern& pattern);

std::vector<long> categoryLabels(const vxDecisionTree& tree);
bool isEqual(const vxDecisionTree& a, const vxDecisionTree& b);

/// The result of the leaf that the pattern reaches; counts the objects on the way.
const vxClassifierResult& walk(const vxDecisionTree& tree, const vxFeaturePattern& pattern,
                               long& levels);

}  // namespace plain

/// Random trees whose nodes share subtrees, from few leaves and predicates, so that equal parts are
/// many.
class RandomTrees {
 public:
  explicit RandomTrees(unsigned seed) : random_(seed) {}

  /// A tree of up to `numNodes` levels; of `holes`, one place in ten is empty and one leaf in four
  /// differs from itself.
  TreeHandle tree(int numNodes, bool holes = false);

  /// Up to five measurements, some of them invalid; often equal ones.
  vxFeaturePattern pattern();

  /// An equal tree without any sharing, or one in which one leaf or predicate is another one.
  TreeHandle unshared(const vxDecisionTree& tree, bool alter);

  int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }

 private:
  vxDecisionTreeLeaf leaf_(bool mayDiffer);
  PredicateHandle predicate_();
  TreeHandle copy_(const vxDecisionTree& tree, int& untilAltered);

  std::mt19937 random_;
};

#endif  // TESTS_SUPPORT_PLAIN_TREE_H_
