// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/attention_counter.h"
#include "tests/support/samples.h"
#include "tests/support/tree_samples.h"
#include "vxclss/classifier_decision_tree.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"
#include "vxclss/train_params_knn.h"

namespace {

using vxClassifierDefs::BadMethod;
using vxClassifierDefs::NotImplemented;
using vxClassifierDefs::NotTrained;

constexpr wchar_t kNotTrained[] =
    L"Classifier tool must be trained before requesting the decision tree.";
constexpr wchar_t kOtherTechnique[] = L"Classifier tool was not trained using a decision tree.";
constexpr wchar_t kNoParams[] = L"Classifier tool was not automatically trained.";

const vxFeaturePattern kGreater({2.0, 1.0}, {});

std::vector<long> labelsFor(const vxClassifierTool& tool, const vxFeaturePattern& pattern) {
  vxClassifierResult result;
  tool.run(pattern, result);
  return labelsOf(result);
}

/// Parameters of a host that select the decision-tree technique.
class TreeParams : public vxClassifierTrainParams {
 public:
  vxPtrHandle<vxClassifierTrainParams> clone() const override {
    return vxPtrHandle<vxClassifierTrainParams>(new TreeParams(*this));
  }

 protected:
  bool isSameTechnique_(const vxClassifierTrainParams& other) const override {
    return dynamic_cast<const TreeParams*>(&other) != nullptr;
  }
  vx_Classifier* newClassifier_() const override { return new vx_ClassifierDecisionTree; }
};

class ClassifierToolTreeTest : public testing::Test {
 protected:
  ClassifierToolTreeTest() { tool_.train(sampleTree()); }

  static vxClassifierTool trainedKnn() {
    vxClassifierTool tool;
    tool.train(providerOf({{{0.0, 0.0}, 5}}), vxClassifierTrainParamsKNN(1));
    return tool;
  }

  vxClassifierTool tool_;
};

TEST_F(ClassifierToolTreeTest, RunsTheTreeThatItWasGiven) {
  EXPECT_TRUE(tool_.isTrained());
  EXPECT_EQ(labelsFor(tool_, kGreater), (std::vector<long>{1}));
  EXPECT_EQ(labelsFor(tool_, {{1, 2}, {}}), (std::vector<long>{2}));
  const AttentionCounter counter;
  labelsFor(tool_, kGreater);
  EXPECT_EQ(counter.polls(), 2);
}

TEST_F(ClassifierToolTreeTest, HandsOutItsTreeShared) {
  const TreeHandle tree = tool_.decisionTree();
  EXPECT_TRUE(sampleTree().isEqual(*tree));
  EXPECT_EQ(tree, tool_.decisionTree());
  const auto& held = dynamic_cast<const vx_ClassifierDecisionTree&>(*tool_.classifier());
  EXPECT_EQ(held.decisionTree(), tree);
  EXPECT_EQ(tree->referenceCount(), 2);
  tool_.untrain();
  EXPECT_EQ(tree->referenceCount(), 1);
}

TEST_F(ClassifierToolTreeTest, HoldsACloneOfTheCallersTree) {
  vxDecisionTreeNode node = sampleTree();
  tool_.train(node);
  node = vxDecisionTreeNode();
  EXPECT_EQ(labelsFor(tool_, kGreater), (std::vector<long>{1}));
}

TEST_F(ClassifierToolTreeTest, HasNoTreeUnlessItIsTrainedOnOne) {
  const vxClassifierTool empty;
  expectThrows<NotTrained>([&] { empty.decisionTree(); }, kNotTrained);
  tool_.untrain();
  EXPECT_FALSE(tool_.isTrained());
  EXPECT_FALSE(tool_.classifier().isNull());
  expectThrows<NotTrained>([&] { tool_.decisionTree(); }, kNotTrained);
  const vxClassifierTool knn = trainedKnn();
  expectThrows<BadMethod>([&] { knn.decisionTree(); }, kOtherTechnique);
  vxClassifierTool untrainedKnn = trainedKnn();
  untrainedKnn.untrain();
  expectThrows<NotTrained>([&] { untrainedKnn.decisionTree(); }, kNotTrained);
}

TEST_F(ClassifierToolTreeTest, HasNoParameters) {
  expectThrows<BadMethod>([&] { tool_.trainParams(); }, kNoParams);
  expectRefused<BadMethod>(
      tool_, [&] { tool_.retrain(vxClassifierTrainParamsKNN(1)); },
      L"Cannot retrain with a different classification technique.");
  tool_.untrain();
  expectThrows<NotTrained>(
      [&] { tool_.trainParams(); },
      L"Classifier tool must be trained before requesting the training parameters.");
  expectThrows<NotTrained>([&] { tool_.retrain(vxClassifierTrainParamsKNN(1)); },
                           L"Classifier tool must be trained before retraining.");
}

TEST_F(ClassifierToolTreeTest, ReplacesTheClassifierThatItHeld) {
  const vxPtrHandle_const<vx_Classifier> former = tool_.classifier();
  tool_.train(leafWith({8}));
  EXPECT_NE(tool_.classifier(), former);
  EXPECT_FALSE(former->isTrained()) << "untrained first";
  EXPECT_EQ(labelsFor(tool_, kGreater), (std::vector<long>{8}));

  vxClassifierTool knn = trainedKnn();
  knn.train(sampleTree());
  EXPECT_TRUE(knn != tool_);
  EXPECT_EQ(labelsFor(knn, kGreater), (std::vector<long>{1}));
  expectThrows<BadMethod>([&] { knn.trainParams(); }, kNoParams);

  knn.train(providerOf({{{0.0, 0.0}, 5}}), vxClassifierTrainParamsKNN(1));
  expectThrows<BadMethod>([&] { knn.decisionTree(); }, kOtherTechnique);
}

TEST_F(ClassifierToolTreeTest, CanBeTrainedOnceMoreAfterItWasUntrained) {
  tool_.untrain();
  tool_.train(sampleTree(), nullptr, 7);
  EXPECT_EQ(labelsFor(tool_, kGreater), (std::vector<long>{1}));
}

TEST_F(ClassifierToolTreeTest, CanBeTrainedOnItsOwnTreeOrAPartOfIt) {
  const vxDecisionTree& own = *tool_.decisionTree();
  tool_.train(own);
  EXPECT_EQ(labelsFor(tool_, kGreater), (std::vector<long>{1}));
  const vxDecisionTree& part = *asNode(*tool_.decisionTree()).falseTree();
  tool_.train(part);
  EXPECT_EQ(labelsFor(tool_, kGreater), (std::vector<long>{2}));
}

TEST_F(ClassifierToolTreeTest, SharesTheTreeButNotTheClassifierWithItsCopies) {
  vxClassifierTool copy(tool_);
  EXPECT_TRUE(copy == tool_);
  EXPECT_NE(copy.classifier(), tool_.classifier());
  EXPECT_EQ(copy.decisionTree(), tool_.decisionTree());
  tool_.untrain();
  EXPECT_EQ(labelsFor(copy, kGreater), (std::vector<long>{1}));
}

TEST_F(ClassifierToolTreeTest, ComparesTrees) {
  vxClassifierTool same;
  same.train(sampleTree());
  EXPECT_TRUE(same == tool_);
  vxClassifierTool other;
  other.train(leafWith({1}));
  EXPECT_TRUE(other != tool_);
  EXPECT_TRUE(trainedKnn() != tool_);
  EXPECT_TRUE(tool_ != trainedKnn());
  // Two untrained ones are equal before anyone misses their trees.
  same.untrain();
  other.untrain();
  EXPECT_TRUE(same == other);
  EXPECT_TRUE(same == vxClassifierTool());
}

TEST_F(ClassifierToolTreeTest, IsNotTrainedAutomaticallyByParametersOfTheTechnique) {
  const vxClassifierDataProviderMemory data = providerOf({{{0.0, 0.0}, 5}});
  for (const bool throwIfNotReady : {true, false}) {
    TreeParams params;
    params.throwIfNotReady(throwIfNotReady);
    expectThrows<NotImplemented>([&] { tool_.train(data, params); },
                                 L"Automatic decision tree training is not implemented.");
    EXPECT_FALSE(tool_.isTrained());
    EXPECT_NE(dynamic_cast<const vx_ClassifierDecisionTree*>(tool_.classifier().get()), nullptr)
        << "the new classifier stays";
    expectThrows<NotTrained>([&] { tool_.decisionTree(); }, kNotTrained);
    tool_.train(sampleTree());
    EXPECT_EQ(labelsFor(tool_, kGreater), (std::vector<long>{1}));
    expectRefused<BadMethod>(
        tool_, [&] { tool_.retrain(params); },
        L"Cannot retrain with a different classification technique.");
  }
}

TEST_F(ClassifierToolTreeTest, RoundTripsThroughAnArchive) {
  vxClassifierTool arrived = trainedKnn();
  load(stored(tool_), arrived);
  EXPECT_TRUE(arrived == tool_);
  EXPECT_TRUE(sampleTree().isEqual(*arrived.decisionTree()));
  expectThrows<BadMethod>([&] { arrived.trainParams(); }, kNoParams);
  EXPECT_EQ(storedHex(tool_),
            packedHex("00 " + newClassHex("vx_ClassifierDecisionTree") + "00 00 00 ") +
                storedHex(tool_).substr(2 * (1 + 5 + 25 + 3)));

  tool_.untrain();
  EXPECT_EQ(storedHex(tool_),
            packedHex("00 " + newClassHex("vx_ClassifierDecisionTree") + "00 00 00 00"));
  load(stored(tool_), arrived);
  EXPECT_FALSE(arrived.isTrained());
}

TEST_F(ClassifierToolTreeTest, SharesTheTreeOfTwoToolsInOneArchive) {
  vxClassifierTool copy(tool_);
  vxClassifierTool a;
  vxClassifierTool b;
  load(stored(tool_, copy), a, b);
  EXPECT_EQ(a.decisionTree(), b.decisionTree());
  EXPECT_NE(a.classifier(), b.classifier());
}

}  // namespace
