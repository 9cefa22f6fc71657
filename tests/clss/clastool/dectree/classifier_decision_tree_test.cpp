// SPDX-License-Identifier: MIT
#include "vxclss/classifier_decision_tree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/attention_counter.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_tree.h"
#include "tests/support/samples.h"
#include "tests/support/tree_samples.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::NotTrained;

constexpr wchar_t kNotTrained[] = L"Classifier tool must be trained before running.";

const vxComparisonPredicate kFirstIsGreater(0, 1);
const vxFeaturePattern kGreater({2.0, 1.0}, {});

vx_ClassifierDecisionTree trainedOn(const vxDecisionTree& tree) {
  vx_ClassifierDecisionTree classifier;
  classifier.trainManual(tree);
  return classifier;
}

std::vector<long> labelsFor(const vx_Classifier& classifier, const vxFeaturePattern& pattern) {
  vxClassifierResult result;
  classifier.run(pattern, result);
  return labelsOf(result);
}

/// The hook as a technique derived from this one reaches it.
class OpenClassifier : public vx_ClassifierDecisionTree {
 public:
  using vx_ClassifierDecisionTree::checkRunnable_;
  using vx_ClassifierDecisionTree::run_;
  using vx_ClassifierDecisionTree::untrain_;
};

TEST(ClassifierDecisionTreeTest, IsUntrainedUntilItIsGivenATree) {
  vx_ClassifierDecisionTree classifier;
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_TRUE(classifier.decisionTree().isNull());
  vxClassifierResult result;
  expectThrows<NotTrained>([&] { classifier.run(kGreater, result); }, kNotTrained);

  classifier.trainManual(sampleTree());
  EXPECT_TRUE(classifier.isTrained());
  classifier.untrain();
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_TRUE(classifier.decisionTree().isNull());
}

TEST(ClassifierDecisionTreeTest, ThrowsBadPointerWhereItIsRunWithoutATree) {
  OpenClassifier classifier;
  classifier.checkRunnable_();
  vxClassifierResult result = resultWith({9});
  expectThrows<vxBadPointer>([&] { classifier.run_(kGreater, result); }, L"");
  EXPECT_EQ(result, resultWith({9}));
  classifier.trainManual(sampleTree());
  classifier.untrain_();
  expectThrows<vxBadPointer>([&] { classifier.run_(kGreater, result); }, L"");
}

TEST(ClassifierDecisionTreeTest, GivesASingleLeafsResultToEveryPattern) {
  const vx_ClassifierDecisionTree classifier = trainedOn(leafWith({5, 3}, -2.5));
  for (const vxFeaturePattern& pattern :
       {kGreater, vxFeaturePattern({1.0, 2.0}, {0, 1}), vxFeaturePattern({}, {})}) {
    vxClassifierResult result = resultWith({9});
    classifier.run(pattern, result);
    EXPECT_EQ(result, resultWith({5, 3}, -2.5));
  }
}

TEST(ClassifierDecisionTreeTest, SendsAPatternWhereItsPredicateSays) {
  const vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  EXPECT_EQ(labelsFor(classifier, {{2, 1}, {}}), (std::vector<long>{1}));
  for (const vxFeaturePattern& pattern :
       {vxFeaturePattern({1, 2}, {}), vxFeaturePattern({1, 1}, {}), vxFeaturePattern({2, 1}, {0}),
        vxFeaturePattern({2, 1}, {1}), vxFeaturePattern({2, 1}, {0, 1}), vxFeaturePattern({2}, {}),
        vxFeaturePattern({}, {})}) {
    EXPECT_EQ(labelsFor(classifier, pattern), (std::vector<long>{2}));
  }
}

TEST(ClassifierDecisionTreeTest, CopiesTheLeafsResultBitForBit) {
  // Class scores that do not sum to 1, costs out of order and a repeated label stay as they are.
  const vxClassifierResult stored = resultWith({4, 4, 1, 8}, -0.0);
  vxClassifierResult result;
  trainedOn(vxDecisionTreeLeaf(stored)).run(kGreater, result);
  EXPECT_EQ(bitsOf(result), bitsOf(stored));
}

TEST(ClassifierDecisionTreeTest, WalksAsAPlainRecursionDoes) {
  RandomTrees random(61);
  for (int round = 0; round < 1000; ++round) {
    const TreeHandle tree = random.tree(random.below(15));
    const vx_ClassifierDecisionTree classifier = trainedOn(*tree);
    for (int i = 0; i < 5; ++i) {
      const vxFeaturePattern pattern = random.pattern();
      long levels = 0;
      const vxClassifierResult& expected = plain::walk(*tree, pattern, levels);
      ASSERT_EQ(outcomeOfRun(classifier, pattern),
                "done after " + std::to_string(levels) + " polls; " + bitsOf(expected))
          << "round " << round;
    }
  }
}

TEST(ClassifierDecisionTreeTest, StopsAtAnyLevelAndLeavesTheResult) {
  TreeHandle tree(new vxDecisionTreeLeaf(leafWith({1})));
  for (int level = 0; level < 5; ++level) {
    tree.reset(new vxDecisionTreeNode(kFirstIsGreater, *tree, leafWith({2})));
  }
  const vx_ClassifierDecisionTree classifier = trainedOn(*tree);
  for (long stopAt = 1; stopAt <= 6; ++stopAt) {
    vxClassifierResult result = resultWith({9});
    const AttentionCounter counter(stopAt);
    EXPECT_THROW(classifier.run(kGreater, result), vxStopRequested);
    EXPECT_EQ(counter.polls(), stopAt);
    EXPECT_EQ(result, resultWith({9}));
  }
  const AttentionCounter counter(7);
  EXPECT_EQ(labelsFor(classifier, kGreater), (std::vector<long>{1}));
}

struct Incomplete {
  const char* name;
  vxDecisionTreeNode node;
  const char* outcome;  // for kGreater, which goes to the true side
};

class IncompleteWalkTest : public testing::TestWithParam<Incomplete> {};

TEST_P(IncompleteWalkTest, LooksOnlyAtWhatLiesOnTheWay) {
  const Incomplete& row = GetParam();
  const std::string untouched =
      bitsOf(vxClassifierResult({vxClassifierCategoryResult(77, 0.5, 1.0, 3.0)}, 0.25));
  std::string outcome = outcomeOfRun(trainedOn(row.node), kGreater);
  const std::size_t rest = outcome.find("; " + untouched);
  EXPECT_EQ(rest == std::string::npos, std::string(row.outcome) == "done after 2 polls");
  EXPECT_EQ(outcome.substr(0, outcome.find("; ")), row.outcome);
}

const TreeHandle kLeaf(new vxDecisionTreeLeaf(leafWith({1})));
const TreeHandle kNoTree;
const PredicateHandle kPredicate(new vxComparisonPredicate(0, 1));
const PredicateHandle kNoPredicate;

INSTANTIATE_TEST_SUITE_P(
    Node, IncompleteWalkTest,
    testing::Values(Incomplete{"Complete", nodeWith(kLeaf, kLeaf, kPredicate),
                               "done after 2 polls"},
                    Incomplete{"NothingOnTheOtherSide", nodeWith(kLeaf, kNoTree, kPredicate),
                               "done after 2 polls"},
                    Incomplete{"NothingOnThisSide", nodeWith(kNoTree, kLeaf, kPredicate),
                               "vxBadPointer:  after 1 polls"},
                    Incomplete{"NoPredicate", nodeWith(kLeaf, kLeaf, kNoPredicate),
                               "vxBadPointer:  after 1 polls"},
                    Incomplete{"Nothing", nodeWith(kNoTree, kNoTree, kNoPredicate),
                               "vxBadPointer:  after 1 polls"},
                    Incomplete{"AHostsTreeOnTheWay",
                               vxDecisionTreeNode(kFirstIsGreater, HostTree({1}), leafWith({1})),
                               "vxBadPointer:  after 2 polls"},
                    Incomplete{"AHostsTreeOnTheOtherSide",
                               vxDecisionTreeNode(kFirstIsGreater, leafWith({1}), HostTree({1})),
                               "done after 2 polls"}),
    [](const auto& test) { return test.param.name; });

TEST(ClassifierDecisionTreeTest, PollsBeforeItLooksAtANode) {
  const vx_ClassifierDecisionTree classifier = trainedOn(nodeWith(kNoTree, kNoTree, kNoPredicate));
  vxClassifierResult result;
  const AttentionCounter counter(1);
  EXPECT_THROW(classifier.run(kGreater, result), vxStopRequested);
}

TEST(ClassifierDecisionTreeTest, RefusesAHostsTreeAtTheRoot) {
  const vx_ClassifierDecisionTree classifier = trainedOn(HostTree({1}));
  EXPECT_TRUE(classifier.isTrained());
  vxClassifierResult result = resultWith({9});
  expectThrows<vxBadPointer>([&] { classifier.run(kGreater, result); }, L"");
  EXPECT_EQ(result, resultWith({9}));
}

TEST(ClassifierDecisionTreeTest, AsksAHostsPredicateAndLetsItsErrorsPass) {
  const vxFeaturePattern* asked = nullptr;
  const HostPredicate predicate([&asked](const vxFeaturePattern& pattern) {
    asked = &pattern;
    if (pattern.numMeasurements() == 0) throw HostError();
    return pattern.featureMeasurement(0, false) > 1.5;
  });
  const vx_ClassifierDecisionTree classifier =
      trainedOn(vxDecisionTreeNode(predicate, leafWith({1}), leafWith({2})));
  EXPECT_EQ(labelsFor(classifier, kGreater), (std::vector<long>{1}));
  EXPECT_EQ(asked, &kGreater);
  vxClassifierResult result = resultWith({9});
  EXPECT_THROW(classifier.run({{}, {}}, result), HostError);
  EXPECT_EQ(result, resultWith({9}));
}

TEST(ClassifierDecisionTreeTest, AllocatesNothingButTheCopiedResult) {
  TreeHandle tree(new vxDecisionTreeLeaf(leafWith({1, 2, 3, 4, 5}, 0.5)));
  for (int level = 0; level < 20; ++level) {
    const TreeHandle leaf(new vxDecisionTreeLeaf(leafWith({7})));
    if (level % 3 == 0) {
      tree.reset(new vxDecisionTreeNode(kFirstIsGreater, *tree, *leaf));
    } else if (level % 3 == 1) {
      tree.reset(new vxDecisionTreeNode(vxRangePredicate({0.0, 0.5}, {0, 1}), *leaf, *tree));
    } else {
      tree.reset(new vxDecisionTreeNode(vxValidityPredicate({0, 1}), *tree, *leaf));
    }
  }
  const vx_ClassifierDecisionTree classifier = trainedOn(*tree);
  const vxClassifierResult expected = resultWith({1, 2, 3, 4, 5}, 0.5);
  const long references = classifier.decisionTree()->referenceCount();

  vxClassifierResult copy;
  const AllocationMeter copying;
  copy = expected;
  const std::size_t bytes = copying.bytes();
  const std::size_t calls = copying.calls();

  vxClassifierResult result;
  const AllocationMeter walking;
  classifier.run(kGreater, result);
  EXPECT_EQ(walking.bytes(), bytes);
  EXPECT_EQ(walking.calls(), calls);
  EXPECT_EQ(result, expected);
  EXPECT_EQ(classifier.decisionTree()->referenceCount(), references);
}

}  // namespace
