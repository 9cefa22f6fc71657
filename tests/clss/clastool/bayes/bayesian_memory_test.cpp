// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/samples.h"
#include "vxclss/train_params_bayesian.h"
#include "vxfoundation/random.h"

namespace {

using Types = vxClassifierDistributionTypes;

struct Shape {
  long categories;
  long measurements;
  long groupSize;  // 1 for independent measurements
};

BayesProbe trained(const Shape& shape) {
  Types types;
  for (long label = 0; label < shape.categories && shape.groupSize > 1; ++label) {
    for (long first = 0; first < shape.measurements; first += shape.groupSize) {
      std::vector<long> members;
      for (long m = first; m < first + shape.groupSize; ++m) members.push_back(m);
      types.setDependent(label, members);
    }
  }
  vxRandomGaussian random(1);
  std::vector<LabelledSample> samples;
  for (long i = 0; i < shape.categories * (shape.groupSize + 3); ++i) {
    LabelledSample sample{{}, i % shape.categories};
    for (long m = 0; m < shape.measurements; ++m) {
      sample.measurements.push_back(random.next(0.0, 1.0));
    }
    samples.push_back(sample);
  }
  BayesProbe classifier;
  classifier.train(providerOf(samples),
                   vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0),
                                                   vxClassifierCosts(1.0), {{}, {}}));
  return classifier;
}

vxFeaturePattern query(const Shape& shape) {
  return {std::vector<double>(static_cast<std::size_t>(shape.measurements), 0.5), {}};
}

/// Of the second run, which finds everything made.
std::size_t callsOfRun(const Shape& shape) {
  const BayesProbe classifier = trained(shape);
  const vxFeaturePattern pattern = query(shape);
  vxClassifierResult result;
  classifier.run(pattern, result);
  const AllocationMeter meter;
  classifier.run(pattern, result);
  return meter.calls();
}

TEST(BayesianMemoryTest, TakesNothingPerMeasurementOrGroupInARun) {
  const std::size_t few = callsOfRun({3, 1, 1});
  for (const Shape& shape :
       {Shape{3, 8, 1}, Shape{3, 32, 1}, Shape{3, 8, 8}, Shape{3, 32, 32}, Shape{3, 32, 4}}) {
    EXPECT_EQ(callsOfRun(shape), few) << shape.measurements << ", " << shape.groupSize;
  }
}

TEST(BayesianMemoryTest, TakesNothingPerCategoryInARun) {
  const std::size_t few = callsOfRun({3, 8, 1});
  for (const long categories : {30L, 300L}) {
    // What sorting takes beyond a few categories is its own.
    EXPECT_LE(callsOfRun({categories, 8, 1}), few + 2) << categories;
  }
}

TEST(BayesianMemoryTest, TakesNothingInARunOfAModelBeyondTheFirst) {
  const BayesProbe classifier = trained({1, 12, 3});
  const vxFeaturePattern pattern = query({1, 12, 3});
  const vx_CategoryModelBayesian& model = classifier.model(0);
  model.matchScore(pattern, nullptr, 0);
  const AllocationMeter meter;
  model.matchScore(pattern, nullptr, 0);
  EXPECT_EQ(meter.calls(), 0u);
}

TEST(BayesianMemoryTest, TakesNothingToLearnOnceWarm) {
  for (const Shape& shape : {Shape{1, 32, 1}, Shape{1, 32, 32}, Shape{1, 32, 4}}) {
    const BayesProbe classifier = trained(shape);
    vx_CategoryModelBayesian model(classifier.model(0));
    const vxFeaturePattern whole = query(shape);
    const vxFeaturePattern partly(whole.featureMeasurements(true), {0, 7});
    model.adapt(whole, nullptr, 0);
    {
      const AllocationMeter meter;
      model.adapt(whole, nullptr, 0);
      EXPECT_EQ(meter.calls(), 0u);
    }
    model.adapt(partly, nullptr, 0);
    const AllocationMeter meter;
    model.adapt(partly, nullptr, 0);
    model.adapt(whole, nullptr, 0);
    EXPECT_EQ(meter.calls(), 0u);
  }
}

TEST(BayesianMemoryTest, TakesNothingToLearnABinomialOnceWarm) {
  vx_CategoryModelBayesian model(0, {{0}, {1}}, {Types::eBinomial, Types::eBinomial}, {{}, {}});
  const vxFeaturePattern pattern({0.5, 0.25}, {});
  model.adapt(pattern, nullptr, 0);
  const AllocationMeter meter;
  model.adapt(pattern, nullptr, 0);
  EXPECT_EQ(meter.calls(), 0u);
}

}  // namespace
