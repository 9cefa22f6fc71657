// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/samples.h"
#include "tests/support/simd_levels.h"
#include "vxclss/classifier_knn.h"

namespace {

struct Taken {
  std::size_t calls;
  std::size_t bytes;
};

/// Each pattern is nearer to the query than all before it, so that every one enters the list.
vxClassifierDataProviderMemory dataOf(long count) {
  std::vector<LabelledSample> samples;
  for (long i = 0; i < count; ++i) {
    const auto x = static_cast<double>(count - i);
    samples.push_back({{x, -x, 0.5 * x, 1.0}, i % 3});
  }
  return providerOf(samples);
}

Taken takenByRun(const vx_ClassifierKNN& classifier) {
  const vxFeaturePattern query({0.25, 0.0, 0.0, 0.0}, {});
  vxClassifierResult result;
  const AllocationMeter meter;
  classifier.run(query, result);
  return {meter.calls(), meter.bytes()};
}

/// What neighbours, their labels and a result of them take, `matches` being the categories.
Taken takenByResult(long k, const std::vector<vxClassifierCategoryResult>& matches) {
  const vxClassifierCosts costs(1.0);
  vxClassifierResult result;
  const AllocationMeter meter;
  const std::vector<long> indices(static_cast<std::size_t>(k));
  const std::vector<long> labels(indices);
  std::vector<vxClassifierCategoryResult> categories;
  for (const vxClassifierCategoryResult& match : matches) categories.push_back(match);
  result = vxClassifierResult(categories, vxClassifierFrequencies(1.0), costs, 0.0);
  return {meter.calls(), meter.bytes()};
}

class NeighbourSearchMemoryTest : public testing::TestWithParam<long> {
 protected:
  static vx_ClassifierKNN trained(long count) {
    vx_ClassifierKNN classifier;
    classifier.train(dataOf(count), vxClassifierTrainParamsKNN(GetParam()));
    return classifier;
  }
};

TEST_P(NeighbourSearchMemoryTest, TakesTheSameForAnyNumberOfStoredPatterns) {
  const vx_ClassifierKNN few = trained(50);
  const vx_ClassifierKNN many = trained(5000);
  takenByRun(few);
  takenByRun(many);
  const Taken byFew = takenByRun(few);
  const Taken byMany = takenByRun(many);
  EXPECT_EQ(byFew.calls, byMany.calls);
  EXPECT_EQ(byFew.bytes, byMany.bytes);
}

TEST_P(NeighbourSearchMemoryTest, TakesNothingPerStoredPatternInTheFirstRunEither) {
  EXPECT_LT(takenByRun(trained(5000)).calls, 200u);
}

TEST_P(NeighbourSearchMemoryTest, TakesOnlyWhatTheResultHoldsOnceTheThreadHasSearched) {
  for (const double order : {1.0, 2.0, 3.0}) {
    vx_ClassifierKNN classifier;
    classifier.train(dataOf(5000),
                     vxClassifierTrainParamsKNN(GetParam(), vxPatternDistanceMetricNorm(order),
                                                vxClassifierCosts(1.0)));
    atEverySimdLevel([&] {
      takenByRun(classifier);
      vxClassifierResult result;
      classifier.run({{0.25, 0.0, 0.0, 0.0}, {}}, result);
      const Taken byRun = takenByRun(classifier);
      const Taken byResult = takenByResult(GetParam(), result.categoryResults());
      EXPECT_LE(byRun.calls, byResult.calls) << order;
      EXPECT_LE(byRun.bytes, byResult.bytes) << order;
    });
  }
}

INSTANTIATE_TEST_SUITE_P(K, NeighbourSearchMemoryTest, testing::Values(1, 5, 25));

TEST(NeighbourSearchMemoryLimitTest, TakesNoMemoryForTheMereValueOfK) {
  for (const long k : {1000000L, 2000000000L, 2147483647L}) {
    vx_ClassifierKNN classifier;
    classifier.train(dataOf(50), vxClassifierTrainParamsKNN(k));
    EXPECT_LT(takenByRun(classifier).bytes, 20000u);
  }
}

}  // namespace
