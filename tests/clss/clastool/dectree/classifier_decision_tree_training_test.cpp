// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/plain_tree.h"
#include "tests/support/samples.h"
#include "tests/support/tree_samples.h"
#include "tests/support/unknown_version.h"
#include "vxclss/classifier_decision_tree.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::BadMethod;
using vxClassifierDefs::NotImplemented;
using vxClassifierDefs::NotTrained;

constexpr wchar_t kAutomatic[] = L"Automatic decision tree training is not implemented.";
constexpr wchar_t kIncremental[] = L"Incremental decision tree training is not implemented.";

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

/// The hooks as a technique derived from this one reaches them.
class OpenClassifier : public vx_ClassifierDecisionTree {
 public:
  using vx_ClassifierDecisionTree::checkRunnable_;
  using vx_ClassifierDecisionTree::isTrained_;
  using vx_ClassifierDecisionTree::retrain_;
  using vx_ClassifierDecisionTree::train_;
  using vx_ClassifierDecisionTree::trainIncremental_;
  using vx_ClassifierDecisionTree::trainStart_;
};

/// A classifier that holds parameters and, if any, a tree, as only bytes bring them together.
vx_ClassifierDecisionTree withParams(const vxClassifierTrainParams& params, TreeHandle tree) {
  unsigned char version = 0;
  vxPtrHandle_const<vxClassifierTrainParams> handle = params.clone();
  vx_ClassifierDecisionTree classifier;
  load(stored(version, version, handle, tree), classifier);
  return classifier;
}

TEST(ClassifierDecisionTreeTrainingTest, TakesACloneOfTheTree) {
  vxDecisionTreeLeaf leaf = leafWith({1});
  vx_ClassifierDecisionTree classifier = trainedOn(leaf);
  leaf.classifierResult(resultWith({9}));
  EXPECT_EQ(labelsFor(classifier, kGreater), (std::vector<long>{1}));

  vxDecisionTreeNode node = sampleTree();
  classifier.trainManual(node);
  EXPECT_EQ(asNode(*classifier.decisionTree()).trueTree(), node.trueTree()) << "shared subtrees";
  node.trueTree(leafWith({9}));
  node.predicateFunction(vxComparisonPredicate(1, 0));
  node = vxDecisionTreeNode();
  EXPECT_EQ(labelsFor(classifier, kGreater), (std::vector<long>{1}));
}

TEST(ClassifierDecisionTreeTrainingTest, ReplacesTheTreeOfATrainedOne) {
  vx_ClassifierDecisionTree classifier = trainedOn(leafWith({8}));
  classifier.trainManual(sampleTree());
  EXPECT_EQ(labelsFor(classifier, kGreater), (std::vector<long>{1}));
  EXPECT_TRUE(sampleTree().isEqual(*classifier.decisionTree()));
}

TEST(ClassifierDecisionTreeTrainingTest, DropsParametersWhenItIsGivenATree) {
  vx_ClassifierDecisionTree classifier =
      withParams(vxClassifierTrainParamsKNN(3), TreeHandle(sampleTree().clone()));
  EXPECT_FALSE(classifier.trainParams().isNull());
  classifier.trainManual(leafWith({8}));
  expectThrows<BadMethod>([&] { classifier.trainParams(); },
                          L"Classifier tool was not automatically trained.");
}

TEST(ClassifierDecisionTreeTrainingTest, CanBeGivenItsOwnTreeOrAPartOfIt) {
  vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  classifier.trainManual(*classifier.decisionTree());
  EXPECT_TRUE(sampleTree().isEqual(*classifier.decisionTree()));
  const vxDecisionTree* part = asNode(*classifier.decisionTree()).falseTree().get();
  classifier.trainManual(*part);
  EXPECT_EQ(labelsFor(classifier, kGreater), (std::vector<long>{2}));
}

TEST(ClassifierDecisionTreeTrainingTest, SharesItsTreeWithItsCopies) {
  const vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  const vx_ClassifierDecisionTree copy(classifier);
  vx_ClassifierDecisionTree assigned = trainedOn(leafWith({8}));
  assigned = classifier;
  const vxPtrHandle<vx_Classifier> clone = classifier.clone();
  const auto& cloned = dynamic_cast<const vx_ClassifierDecisionTree&>(*clone);
  const std::vector<const vx_ClassifierDecisionTree*> copies = {&copy, &assigned, &cloned};
  for (const vx_ClassifierDecisionTree* other : copies) {
    EXPECT_EQ(other->decisionTree(), classifier.decisionTree());
    EXPECT_TRUE(*other == classifier);
  }
  assigned.untrain();
  EXPECT_TRUE(classifier.isTrained());
}

TEST(ClassifierDecisionTreeTrainingTest, IsNeverTrainedAutomatically) {
  const vxClassifierDataProviderMemory data = providerOf({{{0.0, 1.0}, 1}});
  const vxClassifierTrainParamsKNN params(1);
  vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  expectThrows<BadMethod>([&] { classifier.retrain(params); },
                          L"Cannot retrain with a different classification technique.");
  EXPECT_TRUE(classifier.isTrained());
  expectThrows<NotImplemented>([&] { classifier.train(data, params); }, kAutomatic);
  EXPECT_FALSE(classifier.isTrained()) << "untrained before training begins";
  expectThrows<NotImplemented>([&] { classifier.train(data, params); }, kAutomatic);
  expectThrows<NotTrained>([&] { classifier.retrain(params); },
                           L"Classifier tool must be trained before retraining.");

  vx_ClassifierDecisionTree held = withParams(params, TreeHandle(sampleTree().clone()));
  expectRefused<NotImplemented>(
      held, [&] { held.retrain(params); }, kAutomatic);
}

TEST(ClassifierDecisionTreeTrainingTest, IsNeverTrainedIncrementally) {
  const vxClassifierTrainParamsKNN params(1);
  vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  expectRefused<NotImplemented>(
      classifier, [&] { classifier.trainIncremental(kGreater, 1); }, kIncremental);
  expectThrows<NotImplemented>([&] { classifier.trainStart(params); }, kIncremental);
  EXPECT_FALSE(classifier.isTrained());
  expectThrows<NotTrained>([&] { classifier.trainIncremental(kGreater, 1); },
                           L"Classifier tool must be trained before incremental training.");
}

TEST(ClassifierDecisionTreeTrainingTest, RefusesInItsHooksWhateverItsState) {
  const vxClassifierDataProviderMemory data = providerOf({{{0.0, 1.0}, 1}});
  const vxClassifierTrainParamsKNN params(1);
  OpenClassifier classifier;
  for (const bool trained : {false, true}) {
    if (trained) classifier.trainManual(sampleTree());
    expectThrows<NotImplemented>([&] { classifier.train_(data, params); }, kAutomatic);
    expectThrows<NotImplemented>([&] { classifier.retrain_(params); }, kAutomatic);
    expectThrows<NotImplemented>([&] { classifier.trainStart_(params); }, kIncremental);
    expectThrows<NotImplemented>([&] { classifier.trainIncremental_(kGreater, -1); }, kIncremental);
    EXPECT_EQ(classifier.isTrained_(), trained);
    classifier.checkRunnable_();
  }
}

TEST(ClassifierDecisionTreeTrainingTest, IsEqualToOneWithAnEqualTree) {
  const vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  EXPECT_TRUE(classifier == trainedOn(sampleTree()));
  EXPECT_TRUE(classifier.isEquivalent(trainedOn(sampleTree())));
  EXPECT_TRUE(classifier != trainedOn(leafWith({1})));
  EXPECT_FALSE(classifier.isEquivalent(trainedOn(leafWith({1}))));
  EXPECT_FALSE(classifier.isEquivalent(vx_ClassifierKNN()));
  EXPECT_FALSE(vx_ClassifierDecisionTree().isEquivalent(vx_ClassifierKNN()));
}

TEST(ClassifierDecisionTreeTrainingTest, ComparesTheBaseBeforeItMissesATree) {
  const vx_ClassifierDecisionTree untrained;
  const vx_ClassifierDecisionTree trained = trainedOn(sampleTree());
  EXPECT_FALSE(untrained == trained);
  EXPECT_FALSE(trained.isEquivalent(untrained));
  expectThrows<vxBadPointer>([&] { static_cast<void>(untrained == untrained); }, L"");
  expectThrows<vxBadPointer>([&] { static_cast<void>(untrained != untrained); }, L"");
  expectThrows<vxBadPointer>([&] { untrained.isEquivalent(untrained); }, L"");

  const TreeHandle tree(sampleTree().clone());
  const vxClassifierTrainParamsKNN params(1);
  EXPECT_TRUE(withParams(params, tree) == withParams(params, tree));
  EXPECT_FALSE(withParams(params, tree) == withParams(vxClassifierTrainParamsKNN(2), tree));
  EXPECT_FALSE(withParams(params, tree) == trained);
  EXPECT_FALSE(withParams(params, TreeHandle()) ==
               withParams(vxClassifierTrainParamsKNN(2), TreeHandle()));
}

TEST(ClassifierDecisionTreeArchiveTest, HasTheTreeAfterTheParameters) {
  vx_ClassifierDecisionTree classifier;
  EXPECT_EQ(storedHex(classifier), "00000000");
  classifier.trainManual(leafWith({}));
  EXPECT_EQ(storedHex(classifier), packedHex("00 00 00 " + newClassHex("vxDecisionTreeLeaf") +
                                             "00 00 00 00 00000000 0000000000000000"));
}

TEST(ClassifierDecisionTreeArchiveTest, RoundTrips) {
  RandomTrees random(62);
  for (int round = 0; round < 50; ++round) {
    vx_ClassifierDecisionTree classifier = trainedOn(*random.tree(random.below(10)));
    vx_ClassifierDecisionTree arrived = trainedOn(sampleTree());
    load(stored(classifier), arrived);
    ASSERT_EQ(arrived, classifier);
    ASSERT_EQ(storedHex(arrived), storedHex(classifier));
  }
}

TEST(ClassifierDecisionTreeArchiveTest, IsUntrainedWhereTheTreeIsOfAnotherClass) {
  unsigned char version = 0;
  vxPtrHandle_const<vxClassifierTrainParams> params;
  PredicateHandle predicate(new vxRangePredicate);
  vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  load(stored(version, version, params, predicate), classifier);
  EXPECT_FALSE(classifier.isTrained());
}

TEST(ClassifierDecisionTreeArchiveTest, RefusesAnotherVersionAndKeepsItsTree) {
  vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  const vx_ClassifierDecisionTree before(classifier);
  for (const char* bytes : {"01 00 00 00", "00 01 00 00"}) {
    expectUnknownVersion([&] { load(fromHex(bytes), classifier); }, "");
    EXPECT_EQ(classifier, before);
  }
}

TEST(ClassifierDecisionTreeArchiveTest, IsStoredAnewAfterEachChange) {
  vx_ClassifierDecisionTree classifier = trainedOn(sampleTree());
  EXPECT_EQ(*arrivedAfterChange(classifier, [&] { classifier.trainManual(leafWith({8})); }),
            classifier);
  const vx_ClassifierDecisionTree other = trainedOn(leafWith({9}));
  EXPECT_EQ(*arrivedAfterChange(classifier, [&] { classifier = other; }), other);
  EXPECT_FALSE(arrivedAfterChange(classifier, [&] { classifier.untrain(); })->isTrained());
}

}  // namespace
