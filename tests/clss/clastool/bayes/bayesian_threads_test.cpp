// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/on_threads.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/train_params_bayesian.h"
#include "vxfoundation/random.h"

namespace {

using Types = vxClassifierDistributionTypes;

constexpr int kThreads = 8;
constexpr int kRounds = 20;

class BayesianThreadsTest : public testing::Test {
 protected:
  BayesianThreadsTest() {
    // A pair, a binomial and single measurements; some measurements are invalid.
    Types types;
    types.setDependent(0, {3, 1});
    types.setDependent(2, {0, 3});
    types.distributionTypeOverride(1, 2, Types::eBinomial);
    vxRandomUniform random(6);
    std::vector<LabelledSample> samples;
    for (long i = 0; i < 60; ++i) {
      LabelledSample sample{{}, i % 4};
      for (int m = 0; m < 5; ++m) sample.measurements.push_back(random.next(0.0, 1.0));
      if (i % 7 == 0) sample.invalid = {i % 5};
      samples.push_back(sample);
    }
    tool_.train(providerOf(samples),
                vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0),
                                                vxClassifierCosts(1.0), {{}, {}}));
  }

  static vxFeaturePattern query(int number) {
    std::vector<double> values;
    for (int m = 0; m < 5; ++m) values.push_back(0.1 * ((number * (m + 3)) % 10));
    return {values, number % 4 == 0 ? std::vector<long>{number % 5} : std::vector<long>()};
  }
  static vxClassifierResult run(const vxClassifierTool& tool, int number) {
    vxClassifierResult result;
    tool.run(query(number), result);
    return result;
  }
  static std::vector<vxClassifierResult> runAll(const vxClassifierTool& tool) {
    std::vector<vxClassifierResult> results;
    for (int i = 0; i < kRounds; ++i) results.push_back(run(tool, i));
    return results;
  }

  vxClassifierTool tool_;
};

TEST_F(BayesianThreadsTest, RunOneFreshlyLoadedTool) {
  const std::vector<vxClassifierResult> expected = runAll(tool_);
  for (int round = 0; round < 10; ++round) {
    vxClassifierTool tool;
    load(stored(tool_), tool);
    onThreads(kThreads, [&](int thread) {
      for (int i = 0; i < kRounds; ++i) {
        const int number = (i + thread) % kRounds;
        EXPECT_EQ(run(tool, number), expected[static_cast<std::size_t>(number)]);
      }
    });
  }
}

TEST_F(BayesianThreadsTest, EvaluateOneFreshDensity) {
  vx_PDFMultivariateNormal source;
  for (int i = 0; i < 12; ++i) {
    source.updateWithData({{{0.1 * i, 0.01 * i * i, 1.0 / (1 + i)}, {}}});
  }
  const vxFeaturePattern pattern({0.3, 0.2, 0.1}, {});
  const double expected = source.logValue(pattern);
  for (int round = 0; round < 20; ++round) {
    const vx_PDFMultivariateNormal density(source);
    onThreads(kThreads, [&](int) { EXPECT_EQ(density.logValue(pattern), expected); });
  }
}

TEST_F(BayesianThreadsTest, RunCopiesThatShareTheirModels) {
  const std::vector<vxClassifierResult> expected = runAll(tool_);
  vxClassifierTool fresh;
  load(stored(tool_), fresh);
  onThreads(kThreads, [&](int) {
    for (int i = 0; i < kRounds; ++i) {
      vxClassifierTool own(fresh);
      EXPECT_EQ(run(own, i), expected[static_cast<std::size_t>(i)]);
      own.retrain(*own.trainParams());
      EXPECT_TRUE(own == fresh);
      own.untrain();
    }
  });
  EXPECT_EQ(runAll(fresh), expected);
}

TEST_F(BayesianThreadsTest, ArchiveOneToolAndRunIt) {
  const std::string bytes = stored(tool_);
  const std::vector<vxClassifierResult> expected = runAll(tool_);
  vxClassifierTool fresh;
  load(bytes, fresh);
  onThreads(kThreads, [&](int thread) {
    for (int i = 0; i < kRounds; ++i) {
      if (thread < 2) {
        EXPECT_EQ(stored(fresh), bytes);
      } else {
        EXPECT_EQ(run(fresh, i), expected[static_cast<std::size_t>(i)]);
        EXPECT_TRUE(fresh == tool_);
      }
    }
  });
}

TEST_F(BayesianThreadsTest, LearnAndRunClassifiersThatShareNothing) {
  // The densities of each change, which makes every other classifier look at its own again.
  const std::string bytes = stored(tool_);
  const auto learnAndRun = [&bytes] {
    vxClassifierTool own;
    load(bytes, own);
    const BayesProbe probe(dynamic_cast<const vx_ClassifierBayesian&>(*own.classifier()));
    std::vector<vxClassifierResult> results;
    for (int i = 0; i < kRounds; ++i) {
      vx_CategoryModelBayesian(probe.model(0)).adapt(query(i), nullptr, 0);
      results.push_back(run(own, i));
      results.push_back(run(own, i + 1));
    }
    return results;
  };
  const std::vector<vxClassifierResult> expected = runAll(tool_);
  const std::vector<vxClassifierResult> expectedLearning = learnAndRun();
  onThreads(kThreads, [&](int thread) {
    if (thread % 2 == 0) {
      EXPECT_EQ(runAll(tool_), expected);
    } else {
      EXPECT_EQ(learnAndRun(), expectedLearning);
    }
  });
}

}  // namespace
