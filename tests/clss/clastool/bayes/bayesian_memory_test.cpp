// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/attention_counter.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/samples.h"
#include "vxclss/train_params_bayesian.h"
#include "vxfoundation/exception.h"
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

struct Taken {
  std::size_t calls;
  std::size_t bytes;
};

template <class Body>
Taken takenBy(Body&& body) {
  const AllocationMeter meter;
  body();
  return {meter.calls(), meter.bytes()};
}

/// Of the second run, which finds everything made but the room of its own result.
Taken takenByRun(const BayesProbe& classifier, const vxFeaturePattern& pattern) {
  vxClassifierResult first;
  classifier.run(pattern, first);
  vxClassifierResult second;
  return takenBy([&] { classifier.run(pattern, second); });
}

std::size_t callsOfRun(const Shape& shape) {
  return takenByRun(trained(shape), query(shape)).calls;
}

/// What making a result of so many categories takes by itself, after another one.
Taken takenByResult(long categories) {
  std::vector<vxClassifierCategoryResult> matches;
  for (long label = 0; label < categories; ++label) matches.emplace_back(label, 0.5, 0.0, 0.0);
  vxClassifierResult result;
  const auto make = [&] {
    result =
        vxClassifierResult(matches, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), -2.0);
  };
  make();
  return takenBy(make);
}

TEST(BayesianMemoryTest, TakesNothingInARunButWhatItsResultTakes) {
  for (const long categories : {1L, 3L, 8L, 30L, 300L}) {
    const Taken alone = takenByResult(categories);
    for (const Shape& shape : {Shape{categories, 8, 1}, Shape{categories, 8, 4}}) {
      const Taken whole = takenByRun(trained(shape), query(shape));
      EXPECT_EQ(whole.calls, alone.calls) << categories << ", " << shape.groupSize;
      EXPECT_EQ(whole.bytes, alone.bytes) << categories << ", " << shape.groupSize;
    }
    const Shape singles{categories, 8, 1};
    const vxFeaturePattern partly(query(singles).featureMeasurements(true), {0, 7});
    EXPECT_EQ(takenByRun(trained(singles), partly).bytes, alone.bytes) << categories;
  }
}

TEST(BayesianMemoryTest, FindsTheRoomOfARunAfterOneThatFailed) {
  const Shape shape{3, 8, 1};
  const BayesProbe classifier = trained(shape);
  const vxFeaturePattern pattern = query(shape);
  const Taken before = takenByRun(classifier, pattern);
  vxClassifierResult result;
  for (long stopAt = 1; stopAt <= 7; ++stopAt) {
    const AttentionCounter counter(stopAt);
    EXPECT_THROW(classifier.run(pattern, result), vxStopRequested);
  }
  EXPECT_EQ(takenBy([&] { classifier.run(pattern, result); }).bytes, before.bytes);
}

TEST(BayesianMemoryTest, TakesNothingWhereTheResultHasRoom) {
  for (const long categories : {1L, 30L, 300L}) {
    const Shape shape{categories, 8, 4};
    const BayesProbe classifier = trained(shape);
    vxClassifierResult result;
    const vxFeaturePattern pattern = query(shape);
    classifier.run(pattern, result);
    EXPECT_EQ(takenBy([&] { classifier.run(pattern, result); }).calls, 0u) << categories;
  }
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
