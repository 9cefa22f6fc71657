// SPDX-License-Identifier: MIT
#include "vxclss/classifier_knn.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/centroid_technique.h"
#include "tests/support/hostile_archive.h"
#include "tests/support/knn_probe.h"
#include "tests/support/outcome.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotTrained;
using Matches = std::vector<std::pair<long, double>>;

constexpr wchar_t kUnsupported[] =
    L"K-nearest neighbor classification does not support invalid measurements";
constexpr wchar_t kNoData[] = L"No valid data was provided for training.";
constexpr wchar_t kHasInvalid[] =
    L"Access to full feature vector requires that all features are valid.";

KnnProbe trained(const std::vector<LabelledSample>& samples, long k = 1) {
  KnnProbe classifier;
  classifier.train(providerOf(samples), vxClassifierTrainParamsKNN(k));
  return classifier;
}

vxClassifierResult run(const vx_ClassifierKNN& classifier, const std::vector<double>& query) {
  vxClassifierResult result;
  classifier.run(vxFeaturePattern(query, {}), result);
  return result;
}

Matches matchesOf(const vxClassifierResult& result) {
  Matches matches;
  for (const auto& category : result.categoryResults()) {
    matches.emplace_back(category.categoryLabel(), category.matchScore());
  }
  return matches;
}

/// A run that throws `Error` leaves its result alone.
template <class Error>
void expectRunRefused(const vx_ClassifierKNN& classifier, const vxFeaturePattern& query,
                      const std::wstring& text, CallSite site = CallSite::here()) {
  vxClassifierResult result({vxClassifierCategoryResult(7, 0.5, 1.0, 3.0)}, 0.25);
  expectRefused<Error>(
      result, [&] { classifier.run(query, result); }, text, site);
}

TEST(ClassifierKNNTest, IsUntrainedWithDefaultParametersAtFirst) {
  const vx_ClassifierKNN classifier;
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_TRUE(classifier.data().isNull());
  EXPECT_EQ(classifier.params(), vxClassifierTrainParamsKNN(1));
}

TEST(ClassifierKNNTest, ScoresACategoryByItsShareOfTheNeighbours) {
  const KnnProbe classifier = trained({{{1}, 1}, {{2}, 2}, {{3}, 2}}, 3);
  EXPECT_EQ(matchesOf(run(classifier, {0})), (Matches{{2, 2 * (1.0 / 3)}, {1, 1.0 / 3}}));
}

TEST(ClassifierKNNTest, MultipliesTheShareOfOneNeighbour) {
  // 49 times the share of one in 49 is not 1.
  const KnnProbe classifier = trained(std::vector<LabelledSample>(49, {{1}, 5}), 49);
  EXPECT_EQ(matchesOf(run(classifier, {0})), (Matches{{5, 0x1.fffffffffffffp-1}}));
}

TEST(ClassifierKNNTest, TakesAllStoredPatternsWhereKIsGreater) {
  const KnnProbe classifier = trained({{{1}, 1}, {{2}, 2}, {{3}, 2}, {{4}, 2}}, 1000);
  EXPECT_EQ(matchesOf(run(classifier, {0})), (Matches{{2, 0.75}, {1, 0.25}}));
}

TEST(ClassifierKNNTest, GivesNoResultForACategoryWithoutANeighbour) {
  const KnnProbe classifier = trained({{{1}, 1}, {{2}, 2}, {{9}, 3}}, 2);
  EXPECT_EQ(matchesOf(run(classifier, {0})), (Matches{{1, 0.5}, {2, 0.5}}));
}

TEST(ClassifierKNNTest, WeighsWithUnitFrequenciesAndItsOwnCosts) {
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(3, 8, 10.0);
  vx_ClassifierKNN classifier;
  classifier.train(providerOf({{{1}, 8}, {{2}, 8}, {{3}, 3}}),
                   vxClassifierTrainParamsKNN(3, vxPatternDistanceMetricNorm(1.0), costs));
  const vxClassifierResult expected({vxClassifierCategoryResult(3, 1.0 / 3, 0.0, 0.0),
                                     vxClassifierCategoryResult(8, 2 * (1.0 / 3), 0.0, 0.0)},
                                    vxClassifierFrequencies(1.0), costs, 0.0);
  const vxClassifierResult result = run(classifier, {0});
  EXPECT_EQ(result, expected);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{3, 8}));
  EXPECT_EQ(result.matchScoreFactorLog(), 0.0);
}

TEST(ClassifierKNNTest, RefusesAQueryThatItCannotCompare) {
  const KnnProbe classifier = trained({{{1, 2}, 1}});
  expectRunRefused<BadFeatures>(classifier, {{1, 2}, {1}}, kUnsupported);
  expectRunRefused<BadFeatures>(classifier, {{1}, {}}, kUnsupported);
  expectRunRefused<BadFeatures>(classifier, {{1, 2, 3}, {}}, kUnsupported);
  expectRunRefused<BadFeatures>(classifier, {{}, {}}, kUnsupported);
  EXPECT_NE(outcomeOfRun(classifier, {{1}, {}}).find("after 0 polls"), std::string::npos);
}

TEST(ClassifierKNNTest, ClassifiesPatternsWithoutMeasurements) {
  const KnnProbe classifier = trained({{{}, 1}, {{}, 2}}, 2);
  EXPECT_EQ(matchesOf(run(classifier, {})), (Matches{{1, 0.5}, {2, 0.5}}));
}

TEST(ClassifierKNNTest, AsksForDataBeforeItLooksAtTheQuery) {
  const KnnProbe classifier = trained({{{1}, -1}});
  expectRunRefused<InsufficientTrainData>(classifier, {{1, 2}, {0}}, kNoData);
}

TEST(ClassifierKNNTest, TrainsOnUnlabelledPatternsAloneButCannotRun) {
  const vxClassifierDataProviderMemory data = providerOf({{{1}, -1}, {{2}, -1}});
  vx_ClassifierKNN classifier;
  classifier.train(data, vxClassifierTrainParamsKNN(1));
  EXPECT_TRUE(classifier.isTrained());
  EXPECT_EQ(classifier.data()->numPatterns(), 0);
  expectRunRefused<InsufficientTrainData>(classifier, {{1}, {}}, kNoData);

  vxClassifierTool tool;
  expectThrows<InsufficientTrainData>([&] { tool.train(data, vxClassifierTrainParamsKNN(1)); },
                                      kNoData);
  EXPECT_FALSE(tool.isTrained());
  vxClassifierTrainParamsKNN unchecked(1);
  unchecked.throwIfNotReady(false);
  tool.train(data, unchecked);
  EXPECT_TRUE(tool.isTrained());
  tool.retrain(unchecked);
  EXPECT_TRUE(tool.isTrained());
  expectThrows<InsufficientTrainData>([&] { tool.retrain(vxClassifierTrainParamsKNN(2)); },
                                      kNoData);
  EXPECT_FALSE(tool.isTrained());
}

TEST(ClassifierKNNTest, LearnsPatternByPattern) {
  KnnProbe classifier = trained({{{1}, 1}});
  vxFeaturePattern pattern({5}, {});
  classifier.trainIncremental(pattern, 2);
  pattern = vxFeaturePattern({500}, {});
  EXPECT_EQ(*classifier.data(), providerOf({{{1}, 1}, {{5}, 2}}));
  EXPECT_EQ(matchesOf(run(classifier, {4})), (Matches{{2, 1.0}}));
}

TEST(ClassifierKNNTest, RefusesAPatternThatDoesNotFitTheOthers) {
  KnnProbe classifier = trained({{{1}, 1}});
  const vxClassifierDataProviderMemory before(*classifier.data());
  expectThrows<BadFeatures>(
      [&] {
        classifier.trainIncremental({{1, 2}, {}}, -2);
      },
      L"Feature pattern must have the same number of measurements as the rest of the data.");
  expectThrows<BadLabel>(
      [&] {
        classifier.trainIncremental({{1}, {}}, -2);
      },
      L"Category labels must be >= 0 or unknown");
  EXPECT_EQ(*classifier.data(), before);
}

TEST(ClassifierKNNTest, TakesAnyFirstPatternAfterATrainingWithoutData) {
  KnnProbe classifier = trained({{{1, 2}, -1}});
  classifier.trainIncremental({{3}, {}}, 4);
  EXPECT_EQ(matchesOf(run(classifier, {0})), (Matches{{4, 1.0}}));
}

TEST(ClassifierKNNTest, TakesAnInvalidMeasurementIncrementallyAndFailsInEveryLaterRun) {
  KnnProbe classifier = trained({{{1}, 1}});
  classifier.trainIncremental({{5}, {0}}, 2);
  EXPECT_EQ(classifier.data()->numPatterns(), 2);
  expectRunRefused<BadFeatures>(classifier, {{1}, {}}, kHasInvalid);
  classifier.retrain(vxClassifierTrainParamsKNN(2));
  expectRunRefused<BadFeatures>(classifier, {{1}, {}}, kHasInvalid);
  expectRunRefused<BadFeatures>(classifier, {{1}, {0}}, kUnsupported);
}

TEST(ClassifierKNNTest, TakesTheUnknownLabelIncrementallyAndFailsWhereItIsANeighbour) {
  KnnProbe classifier = trained({{{1}, 1}});
  classifier.trainIncremental({{5}, {}}, -1);
  EXPECT_EQ(matchesOf(run(classifier, {0})), (Matches{{1, 1.0}}));
  expectRunRefused<BadLabel>(classifier, {{9}, {}}, L"Category labels must be >= 0");
}

TEST(ClassifierKNNTest, NeedsATrainingBeforeItLearnsPatternByPattern) {
  KnnProbe classifier;
  expectThrows<NotTrained>(
      [&] {
        classifier.trainIncremental({{1}, {}}, 1);
      },
      L"Classifier tool must be trained before incremental training.");
  expectThrows<vxBadPointer>([&] { classifier.trainIncremental_({{1}, {}}, 1); }, L"");
}

TEST(ClassifierKNNTest, DoesNothingWhenATrainingStarts) {
  KnnProbe classifier = trained({{{1}, 1}}, 3);
  classifier.trainStart_(vxClassifierTrainParamsKNN(9));
  EXPECT_EQ(classifier.params().k(), 3);
  EXPECT_EQ(classifier.data()->numPatterns(), 1);

  classifier.trainStart(vxClassifierTrainParamsKNN(9));
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_EQ(classifier.params().k(), 3);
  expectThrows<NotTrained>(
      [&] {
        classifier.trainIncremental({{1}, {}}, 1);
      },
      L"Classifier tool must be trained before incremental training.");
}

TEST(ClassifierKNNTest, RetrainsWithoutTouchingItsData) {
  KnnProbe classifier = trained({{{0, 0}, 1}, {{3, 3}, 1}, {{0, 4}, 2}});
  const auto data = classifier.data();
  EXPECT_EQ(labelsOf(run(classifier, {3, 2})), (std::vector<long>{1}));

  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(1, 2, 0.25);
  const vxClassifierTrainParamsKNN params(3, vxPatternDistanceMetricNorm(1.0), costs);
  classifier.retrain(params);
  EXPECT_EQ(classifier.data(), data);
  EXPECT_EQ(classifier.params(), params);
  EXPECT_EQ(labelsOf(run(classifier, {3, 2})), (std::vector<long>{2, 1}));
}

TEST(ClassifierKNNTest, NeedsHeldParametersToRetrain) {
  KnnProbe classifier;
  expectThrows<vxBadPointer>([&] { classifier.retrain_(vxClassifierTrainParamsKNN(3)); }, L"");
  EXPECT_EQ(classifier.params().k(), 1);
}

TEST(ClassifierKNNTest, RefusesTheParametersOfAnotherTechniqueInItsHooks) {
  KnnProbe classifier = trained({{{1}, 1}}, 3);
  const KnnProbe before(classifier);
  expectThrows<vxBadPointer>([&] { classifier.retrain_(host::CentroidParams()); }, L"");
  EXPECT_EQ(classifier.params().k(), 3);
  EXPECT_TRUE(classifier == before);

  KnnProbe fresh;
  expectThrows<vxBadPointer>(
      [&] {
        fresh.train(providerOf({{{1}, 1}}), host::CentroidParams());
      },
      L"");
  EXPECT_EQ(fresh.params(), vxClassifierTrainParamsKNN(1));
}

TEST(ClassifierKNNTest, ForgetsItsDataWhenUntrained) {
  KnnProbe classifier = trained({{{1}, 1}}, 3);
  const vxPtrHandle_const<vxClassifierDataProviderMemory> data = classifier.data();
  EXPECT_EQ(data->referenceCount(), 2);
  classifier.untrain();
  EXPECT_EQ(data->referenceCount(), 1);
  EXPECT_TRUE(classifier.data().isNull());
  EXPECT_EQ(classifier.params().k(), 3);
  expectRunRefused<NotTrained>(classifier, {{1}, {}},
                               L"Classifier tool must be trained before running.");
}

TEST(ClassifierKNNTest, MeetsAnEmptyHandleInItsHooksWhenUntrained) {
  const KnnProbe classifier;
  vxClassifierResult result;
  EXPECT_FALSE(classifier.isTrained_());
  expectThrows<vxBadPointer>([&] { classifier.checkRunnable_(); }, L"");
  expectThrows<vxBadPointer>([&] { classifier.run_({{1}, {}}, result); }, L"");
}

TEST(ClassifierKNNTest, SharesItsDataWithItsCopies) {
  KnnProbe classifier = trained({{{1}, 1}, {{2}, 2}}, 2);
  const vx_ClassifierKNN copy(classifier);
  vx_ClassifierKNN assigned;
  assigned = classifier;
  const vxPtrHandle<vx_Classifier> clone = classifier.clone();
  EXPECT_EQ(clone->referenceCount(), 1);
  for (const vx_ClassifierKNN* other : {&copy, static_cast<const vx_ClassifierKNN*>(&assigned),
                                        dynamic_cast<const vx_ClassifierKNN*>(clone.get())}) {
    EXPECT_EQ(other->data(), classifier.data());
    EXPECT_EQ(other->params(), classifier.params());
    EXPECT_EQ(other->trainParams(), classifier.trainParams());
    EXPECT_TRUE(*other == classifier);
  }
  classifier.retrain(vxClassifierTrainParamsKNN(1));
  EXPECT_EQ(copy.params().k(), 2);
  classifier.untrain();
  EXPECT_EQ(labelsOf(run(copy, {0})), (std::vector<long>{1, 2}));
}

TEST(ClassifierKNNTest, ComparesHeldParametersThenData) {
  const KnnProbe classifier = trained({{{1}, 1}, {{2}, 2}}, 2);
  EXPECT_TRUE(classifier == trained({{{1}, 1}, {{2}, 2}}, 2));
  EXPECT_FALSE(classifier != trained({{{1}, 1}, {{2}, 2}}, 2));
  EXPECT_FALSE(classifier == trained({{{1}, 1}, {{2}, 2}}, 1));
  EXPECT_FALSE(classifier == trained({{{1}, 1}, {{2}, 3}}, 2));
  EXPECT_FALSE(classifier == trained({{{1}, 1}}, 2));
  EXPECT_FALSE(classifier == KnnProbe());
  EXPECT_FALSE(KnnProbe() == classifier);
  EXPECT_TRUE(KnnProbe() == KnnProbe());
  EXPECT_FALSE(classifier.isEquivalent(host::CentroidClassifier()));
  EXPECT_FALSE(KnnProbe().isEquivalent(host::CentroidClassifier()));
}

TEST(ClassifierKNNTest, ComparesNamesOfItsDataToo) {
  vxClassifierDataProviderMemory data = providerOf({{{1}, 1}});
  KnnProbe classifier;
  classifier.train(data, vxClassifierTrainParamsKNN(1));
  data.setName(L"other");
  KnnProbe named;
  named.train(data, vxClassifierTrainParamsKNN(1));
  EXPECT_FALSE(classifier == named);
}

TEST(ClassifierKNNTest, ComesBackFromAnArchiveWithDefaultParameters) {
  vxPtrHandle<vx_Classifier> original = trained({{{1}, 1}, {{2}, 2}}, 2).clone();
  vxPtrHandle<vx_Classifier> read;
  load(stored(original), read);
  const auto& knn = dynamic_cast<const vx_ClassifierKNN&>(*read);
  EXPECT_TRUE(read->isEquivalent(*original));
  EXPECT_EQ(knn.params(), vxClassifierTrainParamsKNN(1));
  EXPECT_EQ(dynamic_cast<const vxClassifierTrainParamsKNN&>(*knn.trainParams()).k(), 2);
  EXPECT_EQ(labelsOf(run(knn, {0})), (std::vector<long>{1}));
}

TEST(ClassifierKNNTest, IsUntrainedWhereAnArchiveHoldsNoTrainingSet) {
  const vxClassifierTrainParamsKNN params(4);
  const vxFeaturePattern notASet({1.0}, {});
  for (const vxPersistent* object :
       {static_cast<const vxPersistent*>(nullptr), static_cast<const vxPersistent*>(&notASet)}) {
    vxClassifierTool tool;
    load(hostileToolBytes(&params, object), tool);
    EXPECT_FALSE(tool.classifier().isNull());
    EXPECT_FALSE(tool.isTrained());
  }
}

}  // namespace
