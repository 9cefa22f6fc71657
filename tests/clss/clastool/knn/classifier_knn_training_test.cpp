// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/error_matcher.h"
#include "tests/support/host_provider.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadMethod;
using vxClassifierDefs::InsufficientTrainData;

constexpr wchar_t kUnsupported[] =
    L"K-nearest neighbor classification does not support invalid measurements";
constexpr wchar_t kMixed[] = L"Feature patterns must all have the same number of measurements";
constexpr wchar_t kBadLabel[] = L"Category labels must be >= 0 or unknown";
constexpr wchar_t kNoData[] = L"No valid data was provided for training.";

using Calls = std::vector<std::string>;

HostProvider hostProviderOf(const std::vector<LabelledSample>& samples) {
  std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
  std::vector<long> labels;
  for (const LabelledSample& sample : samples) {
    patterns.push_back(sharedPattern(sample.measurements, sample.invalid));
    labels.push_back(sample.label);
  }
  return {patterns, labels};
}

/// A classifier on which a training failed holds a training set, but nothing in it.
void expectTrainedOnNothing(const vx_ClassifierKNN& classifier, long k) {
  EXPECT_TRUE(classifier.isTrained());
  ASSERT_FALSE(classifier.data().isNull());
  EXPECT_EQ(classifier.data()->numPatterns(), 0);
  EXPECT_EQ(classifier.data()->name(), L"host");
  EXPECT_EQ(classifier.data()->description(), L"not checked");
  EXPECT_EQ(classifier.params().k(), k);
  vxClassifierResult result;
  expectThrows<InsufficientTrainData>([&] { classifier.run({{1}, {}}, result); }, kNoData);
  expectThrows<BadMethod>([&] { classifier.trainParams(); },
                          L"Classifier tool was not automatically trained.");
}

TEST(ClassifierKNNTrainingTest, KeepsThePatternsOfTheProviderInTheirOrder) {
  const HostProvider data = hostProviderOf({{{1}, 4}, {{2}, -1}, {{3}, 0}, {{1}, 4}});
  vx_ClassifierKNN classifier;
  const vxClassifierTrainParamsKNN params(3);
  classifier.train(data, params);
  EXPECT_EQ(data.calls(), (Calls{"pattern 0", "label 0", "pattern 1", "label 1", "pattern 2",
                                 "label 2", "pattern 3", "label 3"}));
  ASSERT_EQ(classifier.data()->numPatterns(), 3);
  EXPECT_EQ(classifier.data()->featurePattern(0), data.featurePattern(0));
  EXPECT_EQ(classifier.data()->featurePattern(1), data.featurePattern(2));
  EXPECT_EQ(classifier.data()->featurePattern(2), data.featurePattern(3));
  EXPECT_EQ(classifier.data()->categoryLabel(1), 0);
  EXPECT_EQ(classifier.data()->name(), L"host");
  EXPECT_EQ(classifier.data()->description(), L"not checked");
  EXPECT_EQ(classifier.params().distanceMetric(), params.distanceMetric());
}

TEST(ClassifierKNNTrainingTest, StopsAtAnInvalidMeasurementBeforeItReadsTheLabel) {
  vx_ClassifierKNN classifier;
  for (const long label : {5L, -1L, -2L}) {
    const HostProvider data = hostProviderOf({{{1}, -2}, {{2}, label, {0}}, {{3, 3}, 1}});
    expectThrows<BadFeatures>([&] { classifier.train(data, vxClassifierTrainParamsKNN(6)); },
                              kUnsupported);
    EXPECT_EQ(data.calls(), (Calls{"pattern 0", "label 0", "pattern 1"}));
    expectTrainedOnNothing(classifier, 6);
  }
}

TEST(ClassifierKNNTrainingTest, StopsAtAnEmptyHandle) {
  vx_ClassifierKNN classifier;
  const HostProvider data({sharedPattern({1}), {}, sharedPattern({1}, {0})}, {1, 2, 3});
  expectThrows<vxBadPointer>([&] { classifier.train(data, vxClassifierTrainParamsKNN(6)); }, L"");
  EXPECT_EQ(data.calls(), (Calls{"pattern 0", "label 0", "pattern 1"}));
  expectTrainedOnNothing(classifier, 6);
}

TEST(ClassifierKNNTrainingTest, ReadsAllPatternsBeforeItRefusesTheirLengthOrLabel) {
  vx_ClassifierKNN classifier;
  const HostProvider mixed = hostProviderOf({{{1}, -2}, {{2, 2}, 1}, {{3}, 1}});
  expectThrows<BadFeatures>([&] { classifier.train(mixed, vxClassifierTrainParamsKNN(6)); },
                            kMixed);
  EXPECT_EQ(mixed.calls().size(), 6u);
  expectTrainedOnNothing(classifier, 6);

  const HostProvider badLabel = hostProviderOf({{{1}, 1}, {{2}, -2}});
  expectThrows<BadLabel>([&] { classifier.train(badLabel, vxClassifierTrainParamsKNN(7)); },
                         kBadLabel);
  expectTrainedOnNothing(classifier, 7);
}

TEST(ClassifierKNNTrainingTest, DoesNotMindTheLengthOfAnUnlabelledPattern) {
  vx_ClassifierKNN classifier;
  classifier.train(hostProviderOf({{{9, 9}, -1}, {{1}, 1}, {{}, -1}, {{2}, 2}}),
                   vxClassifierTrainParamsKNN(1));
  EXPECT_EQ(classifier.data()->numPatterns(), 2);
  EXPECT_EQ(classifier.data()->numMeasurements(), 1);
}

TEST(ClassifierKNNTrainingTest, PassesOnWhatTheProviderThrows) {
  class Failing : public HostProvider {
   public:
    using HostProvider::HostProvider;
    long categoryLabel(long index) const override {
      if (index == 1) throw 5;
      return HostProvider::categoryLabel(index);
    }
  };
  vx_ClassifierKNN classifier;
  const Failing data({sharedPattern({1}), sharedPattern({2})}, {1, 2});
  EXPECT_THROW(classifier.train(data, vxClassifierTrainParamsKNN(6)), int);
  expectTrainedOnNothing(classifier, 6);
}

TEST(ClassifierKNNTrainingTest, ReplacesItsDataAndLeavesThatOfItsCopiesAlone) {
  vx_ClassifierKNN classifier;
  classifier.train(providerOf({{{1}, 1}}), vxClassifierTrainParamsKNN(1));
  const vx_ClassifierKNN copy(classifier);
  classifier.train(providerOf({{{1, 1}, 2}}), vxClassifierTrainParamsKNN(2));
  EXPECT_EQ(*copy.data(), providerOf({{{1}, 1}}));
  EXPECT_EQ(*classifier.data(), providerOf({{{1, 1}, 2}}));
}

TEST(ClassifierKNNTrainingTest, CanTrainOnItsOwnDataWithItsOwnParameters) {
  vx_ClassifierKNN classifier;
  classifier.train(providerOf({{{1}, 1}, {{2}, 2}}), vxClassifierTrainParamsKNN(2));
  const vx_ClassifierKNN before(classifier);
  classifier.train(*classifier.data(), *classifier.trainParams());
  EXPECT_TRUE(classifier == before);
  EXPECT_NE(classifier.data(), before.data());
  classifier.train(*classifier.data(), classifier.params());
  EXPECT_TRUE(classifier == before);
}

TEST(ClassifierKNNTrainingTest, DoesNotFollowTheProviderAfterwards) {
  vxClassifierDataProviderMemory data = providerOf({{{1}, 1}});
  vx_ClassifierKNN classifier;
  classifier.train(data, vxClassifierTrainParamsKNN(1));
  data.addData(sharedPattern({0}), 2);
  data.setName(L"other");
  EXPECT_EQ(*classifier.data(), providerOf({{{1}, 1}}));
}

TEST(ClassifierKNNTrainingTest, LeavesAToolWithAHalfTrainedClassifier) {
  vxClassifierTool tool;
  tool.train(providerOf({{{1}, 1}}), vxClassifierTrainParamsKNN(1));
  expectThrows<BadFeatures>(
      [&] {
        tool.train(providerOf({{{1}, 1}, {{2}, 2, {0}}}), vxClassifierTrainParamsKNN(2));
      },
      kUnsupported);
  EXPECT_TRUE(tool.isTrained());
  vxClassifierResult result;
  expectThrows<InsufficientTrainData>([&] { tool.run({{1}, {}}, result); }, kNoData);
  expectThrows<BadMethod>([&] { tool.retrain(vxClassifierTrainParamsKNN(1)); },
                          L"Cannot retrain with a different classification technique.");
  tool.untrain();
  EXPECT_FALSE(tool.isTrained());
}

}  // namespace
