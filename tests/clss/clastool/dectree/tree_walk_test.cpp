// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <typeinfo>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/numbers.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_tree.h"
#include "tests/support/tree_samples.h"
#include "vxclss/classifier_tool.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"

namespace {

class DerivedNode : public vxDecisionTreeNode {
 public:
  explicit DerivedNode(const vxDecisionTreeNode& node) : vxDecisionTreeNode(node) {}
  vxPtrHandle<vxDecisionTree> clone() const override {
    return vxPtrHandle<vxDecisionTree>(new DerivedNode(*this));
  }
};

class DerivedLeaf : public vxDecisionTreeLeaf {
 public:
  using vxDecisionTreeLeaf::vxDecisionTreeLeaf;
  vxPtrHandle<vxDecisionTree> clone() const override {
    return vxPtrHandle<vxDecisionTree>(new DerivedLeaf(*this));
  }
};

/// Answers the opposite of its base.
class Contrary : public vxComparisonPredicate {
 public:
  using vxComparisonPredicate::vxComparisonPredicate;
  bool outcome(const vxFeaturePattern& pattern) const override {
    return !vxComparisonPredicate::outcome(pattern);
  }
  vxPtrHandle<vxPredicateFunction> clone() const override {
    return vxPtrHandle<vxPredicateFunction>(new Contrary(*this));
  }
};

/// A walk by recursion, in which a predicate of a host answers for itself.
const vxClassifierResult& plainWalk(const vxDecisionTree& tree, const vxFeaturePattern& pattern) {
  vfThrowExceptionOnFailure(vfCheckAttention());
  if (const auto* node = dynamic_cast<const vxDecisionTreeNode*>(&tree)) {
    const vxPredicateFunction& predicate = *node->predicateFunction();
    const bool isOurs = typeid(predicate) == typeid(vxComparisonPredicate) ||
                        typeid(predicate) == typeid(vxRangePredicate) ||
                        typeid(predicate) == typeid(vxValidityPredicate);
    const bool answer = isOurs ? plain::outcome(predicate, pattern) : predicate.outcome(pattern);
    return plainWalk(answer ? *node->trueTree() : *node->falseTree(), pattern);
  }
  return vfCheckedCast<vxDecisionTreeLeaf>(tree).classifierResult();
}

struct PlainWalk {
  const vxDecisionTree& tree;
  void run(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
    result = plainWalk(tree, pattern);
  }
};

/// Graphs of every kind of tree and predicate, and patterns of every kind of number.
class Forest {
 public:
  explicit Forest(unsigned seed) : random_(seed) {}

  int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }

  TreeHandle tree(int numNodes) {
    std::vector<TreeHandle> pool;
    for (int i = 0; i < 4; ++i) {
      const vxDecisionTreeLeaf leaf = leafWith({i, below(3)}, value_());
      pool.emplace_back(i == 3 ? new DerivedLeaf(leaf.classifierResult())
                               : new vxDecisionTreeLeaf(leaf));
    }
    pool.emplace_back(new HostTree({1}));
    for (int i = 0; i < numNodes; ++i) {
      const auto pick = [&] {
        if (below(40) == 0) return TreeHandle();
        const int size = static_cast<int>(pool.size());
        return pool[static_cast<std::size_t>(size / 2 + below(size - size / 2))];
      };
      const TreeHandle first = pick();
      const TreeHandle second = pick();
      const PredicateHandle ours = below(40) == 0 ? PredicateHandle() : predicate_();
      // Only bytes bring empty handles and exactly shared subtrees; only clones bring classes of a
      // host.
      if (first && second && ours) {
        const PredicateHandle predicate = below(4) == 0 ? hosts_() : ours;
        const vxDecisionTreeNode node(*predicate, *first, *second);
        pool.emplace_back(below(6) == 0 ? new DerivedNode(node) : new vxDecisionTreeNode(node));
      } else {
        pool.emplace_back(
            new vxDecisionTreeNode(nodeWith(isArchived_(first) ? first : TreeHandle(),
                                            isArchived_(second) ? second : TreeHandle(), ours)));
      }
    }
    return pool.back();
  }

  vxFeaturePattern pattern() {
    std::vector<double> measurements;
    std::vector<long> invalid;
    const int count = below(7);
    const bool mayBeInvalid = below(2) == 0;
    for (int i = 0; i < count; ++i) {
      measurements.push_back(value_());
      if (mayBeInvalid && below(4) == 0) invalid.push_back(i);
    }
    return {measurements, invalid};
  }

 private:
  double value_() {
    const double values[] = {0.0,    -0.0,   1.0,  1.0,       2.0,       0x1.123456789abcdp0,
                             5e-324, -1e300, kNaN, kInfinity, -kInfinity};
    return values[below(11)];
  }

  PredicateHandle predicate_() {
    const std::vector<long> lists[] = {{}, {0}, {3, 1}, {5}, {2, 2, 0}};
    const std::vector<long>& list = lists[below(5)];
    switch (below(4)) {
      case 0:
        return PredicateHandle(new vxComparisonPredicate(below(3), 3 + below(3)));
      case 1:
        return PredicateHandle(new vxRangePredicate({value_(), value_()}, list));
      case 2:
        return PredicateHandle(new vxRangePredicate({-kInfinity, kInfinity}, list));
      default:
        return PredicateHandle(new vxValidityPredicate(list));
    }
  }

  PredicateHandle hosts_() {
    switch (below(8)) {
      case 0:
      case 2:
        return PredicateHandle(new Contrary(below(3), 3));
      case 1:
        return PredicateHandle(
            new HostPredicate([](const vxFeaturePattern&) -> bool { throw HostError(); }));
      default:
        return PredicateHandle(new HostPredicate(
            [](const vxFeaturePattern& pattern) { return pattern.numMeasurements() > 3; }));
    }
  }

  static bool isArchived_(const TreeHandle& tree) {
    return succeedsOrRefuses([&tree] {
      TreeHandle copy = tree;
      stored(copy);
    });
  }

  std::mt19937 random_;
};

vxClassifierTool toolOf(const vxDecisionTree& tree) {
  vxClassifierTool tool;
  tool.train(tree);
  return tool;
}

TEST(TreeWalkTest, DoesWhatAPlainRecursionDoesOnEveryKindOfTree) {
  Forest forest(71);
  int numDone = 0;
  for (int round = 0; round < 1500; ++round) {
    const TreeHandle tree = forest.tree(1 + forest.below(14));
    const vxClassifierTool tool = toolOf(*tree);
    for (int i = 0; i < 6; ++i) {
      const vxFeaturePattern pattern = forest.pattern();
      const std::string expected = outcomeOfRun(PlainWalk{*tree}, pattern);
      ASSERT_EQ(outcomeOfRun(tool, pattern), expected) << "round " << round;
      numDone += expected.rfind("done", 0) == 0 ? 1 : 0;

      // The same without a handler, which polls nothing.
      vxClassifierResult plainResult;
      vxClassifierResult result;
      const std::string plainOutcome =
          outcomeOf([&] { PlainWalk{*tree}.run(pattern, plainResult); });
      ASSERT_EQ(outcomeOf([&] { tool.run(pattern, result); }), plainOutcome) << "round " << round;
      ASSERT_EQ(bitsOf(result), bitsOf(plainResult)) << "round " << round;
    }
  }
  EXPECT_GT(numDone, 3000);
}

TEST(TreeWalkTest, StopsAtEachPollWhereAPlainRecursionDoes) {
  Forest forest(72);
  for (int round = 0; round < 100; ++round) {
    const TreeHandle tree = forest.tree(12);
    const vxClassifierTool tool = toolOf(*tree);
    const vxFeaturePattern pattern = forest.pattern();
    for (long stopAt = 1; stopAt <= 14; ++stopAt) {
      ASSERT_EQ(outcomeOfRun(tool, pattern, stopAt),
                outcomeOfRun(PlainWalk{*tree}, pattern, stopAt))
          << "round " << round << ", poll " << stopAt;
    }
  }
}

TEST(TreeWalkTest, WalksTheSameAfterLoadCopyAndRetraining) {
  RandomTrees random(73);
  vxClassifierTool retrained;
  for (int round = 0; round < 200; ++round) {
    const TreeHandle tree = random.tree(random.below(15));
    vxClassifierTool tool = toolOf(*tree);
    const vxClassifierTool copy(tool);
    const auto arrived = loaded<vxClassifierTool>(stored(tool));
    retrained.train(*tree);
    for (int i = 0; i < 5; ++i) {
      const vxFeaturePattern pattern = random.pattern();
      const std::string expected = outcomeOfRun(PlainWalk{*tree}, pattern);
      const vxClassifierTool* const tools[] = {&tool, &copy, &arrived, &retrained};
      for (const vxClassifierTool* each : tools) {
        ASSERT_EQ(outcomeOfRun(*each, pattern), expected) << "round " << round;
      }
    }
    tool.untrain();
    EXPECT_EQ(outcomeOfRun(copy, {{}, {}}), outcomeOfRun(retrained, {{}, {}}));
  }
}

TEST(TreeWalkTest, SeesWhatSomeoneChangesInAPartThatAnArchiveShares) {
  // A tool, then a leaf of its tree by reference: whoever loads the leaf may change it.
  vxClassifierTool source =
      toolOf(vxDecisionTreeNode(vxComparisonPredicate(0, 1), leafWith({4}), leafWith({5})));
  TreeHandle part = asNode(*source.decisionTree()).trueTree();
  const std::string bytes = stored(source, part);
  vxClassifierTool tool;
  vxPtrHandle<vxDecisionTreeLeaf> shared;
  load(bytes, tool, shared);
  ASSERT_TRUE(shared);

  const vxFeaturePattern pattern({2.0, 1.0}, {});
  vxClassifierResult result;
  tool.run(pattern, result);
  EXPECT_EQ(result, resultWith({4}));
  shared->classifierResult(resultWith({8, 9}));
  tool.run(pattern, result);
  EXPECT_EQ(result, resultWith({8, 9}));
}

TEST(TreeWalkTest, LooksAtThePatternAnewAfterAHostsPredicate) {
  vxFeaturePattern pattern({2.0, 1.0}, {});
  const HostPredicate changes([&pattern](const vxFeaturePattern&) {
    pattern = vxFeaturePattern({1.0, 2.0, 3.0}, {0});
    return true;
  });
  const vxDecisionTreeNode below(vxComparisonPredicate(0, 1), leafWith({1}), leafWith({2}));
  const vxClassifierTool tool = toolOf(vxDecisionTreeNode(changes, below, leafWith({3})));
  vxClassifierResult result;
  tool.run(pattern, result);
  EXPECT_EQ(result, resultWith({2}));
  const vxDecisionTreeNode third(vxRangePredicate({3.0, 3.0}, {2}), leafWith({1}), leafWith({2}));
  toolOf(vxDecisionTreeNode(changes, third, leafWith({3}))).run(pattern, result);
  EXPECT_EQ(result, resultWith({1}));
}

TEST(TreeWalkTest, AllocatesNothingIntoAResultThatHasRoom) {
  RandomTrees random(74);
  for (int round = 0; round < 100; ++round) {
    const vxClassifierTool tool = toolOf(*random.tree(15));
    const vxFeaturePattern pattern = random.pattern();
    vxClassifierResult result = resultWith({1, 2, 3, 4, 5, 6});
    const AllocationMeter meter;
    tool.run(pattern, result);
    ASSERT_EQ(meter.calls(), 0u);
  }
}

}  // namespace
