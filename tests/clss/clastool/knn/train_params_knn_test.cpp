// SPDX-License-Identifier: MIT
#include "vxclss/train_params_knn.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/archive_helpers.h"
#include "tests/support/centroid_technique.h"
#include "tests/support/host_metric.h"
#include "tests/support/hostile_archive.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::BadParams;

constexpr wchar_t kBadK[] = L"K must be >= 1";

/// Reaches the hooks that the tool and the framework use.
class ParamsProbe : public vxClassifierTrainParamsKNN {
 public:
  using vxClassifierTrainParamsKNN::isEqual_;
  using vxClassifierTrainParamsKNN::isSameTechnique_;
  using vxClassifierTrainParamsKNN::newClassifier_;
  using vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN;
};

double orderOf(const vxClassifierTrainParamsKNN& params) {
  return dynamic_cast<const vxPatternDistanceMetricNorm&>(*params.distanceMetric()).order();
}

vxClassifierTrainParamsKNN loadParams(long k, const vxPersistent* metric) {
  vxPtrHandle<vxClassifierTrainParamsKNN> read;
  load(hostileParamsBytes(k, metric), read);
  return *read;
}

TEST(TrainParamsKNNTest, IsEuclideanWithUnitCostsUnlessToldOtherwise) {
  const vxClassifierTrainParamsKNN params(1);
  EXPECT_EQ(params.k(), 1);
  EXPECT_EQ(orderOf(params), 2.0);
  EXPECT_EQ(params.misclassificationCosts(), vxClassifierCosts(1.0));
}

TEST(TrainParamsKNNTest, HoldsWhatItIsMadeFrom) {
  vxClassifierCosts costs(3.0);
  costs.misclassificationCostOverride(1, 2, 7.0);
  const vxClassifierTrainParamsKNN params(5, vxPatternDistanceMetricNorm(0.5), costs);
  EXPECT_EQ(params.k(), 5);
  EXPECT_EQ(orderOf(params), 0.5);
  EXPECT_EQ(params.misclassificationCosts(), costs);
}

TEST(TrainParamsKNNTest, RefusesKBelowOne) {
  vxClassifierTrainParamsKNN params(4);
  for (const long k : {0L, -1L, -2147483647L - 1L}) {
    expectThrows<BadParams>([&] { vxClassifierTrainParamsKNN{k}; }, kBadK);
    expectThrows<BadParams>(
        [&] {
          vxClassifierTrainParamsKNN(k, vxPatternDistanceMetricNorm(1.0), vxClassifierCosts(1.0));
        },
        kBadK);
    expectRefused<BadParams>(
        params, [&] { params.k(k); }, kBadK);
    EXPECT_EQ(params.k(), 4);
  }
  params.k(2147483647);
  EXPECT_EQ(params.k(), 2147483647);
}

TEST(TrainParamsKNNTest, RefusesKBeforeItClonesTheMetric) {
  class NoClone : public HostMetric {
   public:
    using HostMetric::HostMetric;
    vxPtrHandle<vxPatternDistanceMetric> clone() const override { throw 1; }
  };
  const NoClone metric([](const auto&, const auto&) { return 0.0; });
  expectThrows<BadParams>([&] { vxClassifierTrainParamsKNN(0, metric, vxClassifierCosts(1.0)); },
                          kBadK);
  EXPECT_THROW(vxClassifierTrainParamsKNN(1, metric, vxClassifierCosts(1.0)), int);
  vxClassifierTrainParamsKNN params(1);
  const auto before = params.distanceMetric();
  EXPECT_THROW(params.distanceMetric(metric), int);
  EXPECT_EQ(params.distanceMetric(), before);
}

TEST(TrainParamsKNNTest, ClonesTheMetricThatItIsGiven) {
  vxPatternDistanceMetricNorm metric(1.0);
  vxClassifierTrainParamsKNN params(2, metric, vxClassifierCosts(1.0));
  metric.order(3.0);
  EXPECT_EQ(orderOf(params), 1.0);
  params.distanceMetric(metric);
  metric.order(4.0);
  EXPECT_EQ(orderOf(params), 3.0);
  params.distanceMetric(*params.distanceMetric());
  EXPECT_EQ(orderOf(params), 3.0);
}

TEST(TrainParamsKNNTest, CopiesTheCostsThatItIsGiven) {
  vxClassifierCosts costs(2.0);
  vxClassifierTrainParamsKNN params(2);
  params.misclassificationCosts(costs);
  costs.defaultMisclassificationCost(9.0);
  EXPECT_EQ(params.misclassificationCosts(), vxClassifierCosts(2.0));
  params.misclassificationCosts(params.misclassificationCosts());
  EXPECT_EQ(params.misclassificationCosts(), vxClassifierCosts(2.0));
}

TEST(TrainParamsKNNTest, SharesItsMetricWithItsCopies) {
  vxClassifierTrainParamsKNN params(5, vxPatternDistanceMetricNorm(1.0), vxClassifierCosts(2.0));
  const vxClassifierTrainParamsKNN copy(params);
  EXPECT_EQ(copy.distanceMetric(), params.distanceMetric());
  EXPECT_TRUE(copy == params);
  vxClassifierTrainParamsKNN assigned(1);
  assigned = params;
  EXPECT_EQ(assigned.distanceMetric(), params.distanceMetric());
  EXPECT_TRUE(assigned == params);

  const auto clone = params.clone();
  const auto& cloned = dynamic_cast<const vxClassifierTrainParamsKNN&>(*clone);
  EXPECT_EQ(clone->referenceCount(), 1);
  EXPECT_EQ(cloned.distanceMetric(), params.distanceMetric());
  EXPECT_TRUE(cloned == params);

  params.distanceMetric(vxPatternDistanceMetricNorm(7.0));
  params.k(6);
  EXPECT_EQ(orderOf(copy), 1.0);
  EXPECT_EQ(copy.k(), 5);
}

TEST(TrainParamsKNNTest, IsLeftAloneByAssignmentToItself) {
  vxClassifierTrainParamsKNN params(5, vxPatternDistanceMetricNorm(1.0), vxClassifierCosts(2.0));
  const vxClassifierTrainParamsKNN before(params);
  const vxClassifierTrainParamsKNN& same = params;
  params = same;
  EXPECT_TRUE(params == before);
}

TEST(TrainParamsKNNTest, ComparesEveryField) {
  const vxPatternDistanceMetricNorm norm(2.0);
  const vxClassifierTrainParamsKNN params(5);
  EXPECT_TRUE(params == vxClassifierTrainParamsKNN(5, norm, vxClassifierCosts(1.0)));
  const vxClassifierTrainParamsKNN others[] = {
      vxClassifierTrainParamsKNN(6),
      {5, vxPatternDistanceMetricNorm(2.5), vxClassifierCosts(1.0)},
      {5, HostMetric([](const auto&, const auto&) { return 0.0; }), vxClassifierCosts(1.0)},
      {5, norm, vxClassifierCosts(1.5)}};
  for (const vxClassifierTrainParamsKNN& other : others) {
    EXPECT_FALSE(params == other);
    EXPECT_TRUE(params != other);
  }
}

TEST(TrainParamsKNNTest, AsksItsOwnMetricWhetherTheOthersIsEquivalent) {
  const vxClassifierTrainParamsKNN norm(5);
  const vxClassifierTrainParamsKNN host(5, HostMetric([](const auto&, const auto&) { return 0.0; }),
                                        vxClassifierCosts(1.0));
  EXPECT_FALSE(norm == host);
  EXPECT_TRUE(host == norm);  // a metric that compares nothing
}

TEST(TrainParamsKNNTest, SelectsItsTechniqueByItsClassAlone) {
  const ParamsProbe params(5);
  EXPECT_TRUE(params.isSameTechnique_(
      vxClassifierTrainParamsKNN(1, vxPatternDistanceMetricNorm(9.0), vxClassifierCosts(0.0))));
  EXPECT_FALSE(params.isSameTechnique_(host::CentroidParams()));
  EXPECT_FALSE(params.isEqual_(host::CentroidParams()));
}

TEST(TrainParamsKNNTest, MakesAnUntrainedClassifierWithDefaultParameters) {
  const vxPtrHandle<vx_Classifier> classifier(ParamsProbe(5).newClassifier_());
  EXPECT_FALSE(classifier->isTrained());
  EXPECT_EQ(dynamic_cast<const vx_ClassifierKNN&>(*classifier).params(),
            vxClassifierTrainParamsKNN(1));
}

TEST(TrainParamsKNNTest, ComesBackFromAnArchive) {
  vxClassifierCosts costs(3.0);
  costs.misclassificationCostOverride(1, 2, 7.0);
  vxPtrHandle<vxClassifierTrainParams> params(
      new vxClassifierTrainParamsKNN(5, vxPatternDistanceMetricNorm(0.5), costs));
  vxPtrHandle<vxClassifierTrainParams> read;
  load(stored(params), read);
  const auto& knn = dynamic_cast<const vxClassifierTrainParamsKNN&>(*read);
  EXPECT_TRUE(knn == dynamic_cast<const vxClassifierTrainParamsKNN&>(*params));
  EXPECT_EQ(orderOf(knn), 0.5);
}

TEST(TrainParamsKNNTest, SharesAMetricThatTwoHaveInOneArchive) {
  vxClassifierTrainParamsKNN first(2, vxPatternDistanceMetricNorm(0.5), vxClassifierCosts(1.0));
  vxClassifierTrainParamsKNN second(first);
  second.k(3);
  vxClassifierTrainParamsKNN readFirst(1);
  vxClassifierTrainParamsKNN readSecond(1);
  load(stored(static_cast<vxPersistent&>(first), static_cast<vxPersistent&>(second)),
       static_cast<vxPersistent&>(readFirst), static_cast<vxPersistent&>(readSecond));
  EXPECT_TRUE(readFirst == first);
  EXPECT_TRUE(readSecond == second);
  EXPECT_EQ(readFirst.distanceMetric(), readSecond.distanceMetric());
}

TEST(TrainParamsKNNTest, RefusesAnArchiveWithKBelowOne) {
  const vxPatternDistanceMetricNorm norm(2.0);
  EXPECT_EQ(loadParams(1, &norm).k(), 1);
  for (const long k : {0L, -1L, -2147483647L - 1L}) {
    EXPECT_THROW(loadParams(k, &norm), vxArchive::Malformed);
  }
}

TEST(TrainParamsKNNTest, HasNoMetricWhereAnArchiveHoldsNone) {
  const vxFeaturePattern notAMetric({1.0}, {});
  const vxClassifierTrainParamsKNN whole(3);
  for (const vxPersistent* object :
       {static_cast<const vxPersistent*>(nullptr), static_cast<const vxPersistent*>(&notAMetric)}) {
    const vxClassifierTrainParamsKNN broken = loadParams(3, object);
    EXPECT_TRUE(broken.distanceMetric().isNull());
    expectThrows<vxBadPointer>([&] { static_cast<void>(broken == whole); }, L"");
    expectThrows<vxBadPointer>([&] { static_cast<void>(whole == broken); }, L"");
    EXPECT_FALSE(broken == vxClassifierTrainParamsKNN(4));
    EXPECT_TRUE(vxClassifierTrainParamsKNN(broken).distanceMetric().isNull());
  }
}

}  // namespace
