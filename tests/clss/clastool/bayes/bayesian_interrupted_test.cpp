// SPDX-License-Identifier: MIT
// Runs during which something else happens: a stop, an error, a change of the models, another run.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_archive.h"
#include "tests/support/bayes_host.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/outcome.h"
#include "tests/support/samples.h"
#include "tests/support/simd_levels.h"
#include "vxclss/train_params_bayesian.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/random.h"

namespace {

using Types = vxClassifierDistributionTypes;

constexpr long kCategories = 19;
constexpr long kMeasurements = 3;

vxClassifierTrainParamsBayesian paramsOf(const Types& types) {
  return {types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), {{}, {}}};
}

/// Every third category takes its measurements together.
BayesProbe trained(long seed = 1) {
  Types types;
  for (long label = 0; label < kCategories; label += 3) types.setDependent(label, {2, 0, 1});
  vxRandomUniform random(seed);
  std::vector<LabelledSample> samples;
  for (long i = 0; i < 6 * kCategories; ++i) {
    LabelledSample sample{{}, i % kCategories};
    for (long m = 0; m < kMeasurements; ++m) {
      sample.measurements.push_back(random.next(0.0, 1.0));
    }
    samples.push_back(sample);
  }
  BayesProbe classifier;
  classifier.train(providerOf(samples), paramsOf(types));
  return classifier;
}

vxFeaturePattern query() { return {{0.25, 1.0 / 3.0, 0.7}, {}}; }

/// While it lives, calls `atPoll(number)` at each poll of the attention check, counted from 1.
class AtPolls {
 public:
  explicit AtPolls(std::function<void(long)> atPoll) : atPoll_(std::move(atPoll)) {
    vfSetAttentionHandler(&AtPolls::poll, this);
  }
  AtPolls(const AtPolls&) = delete;
  AtPolls& operator=(const AtPolls&) = delete;
  ~AtPolls() { vfSetAttentionHandler(nullptr, nullptr); }

 private:
  static bool poll(void* context) {
    auto* const self = static_cast<AtPolls*>(context);
    self->atPoll_(++self->polls_);
    return false;
  }

  std::function<void(long)> atPoll_;
  long polls_ = 0;
};

/// A density of a host that does something of its own when it is asked.
class ActingDensity : public vx_ProbabilityDensityFunction {
 public:
  double logValue(const vxFeaturePattern&) const override {
    action();
    return -1.5;
  }
  bool isEquivalent(const vx_ProbabilityDensityFunction&) const override { return false; }
  void updateWithData(const std::vector<vxFeaturePattern>&) override {}
  void clear() override {}

  static inline std::function<void()> action = [] {};

 protected:
  void dispatchSerialize(vxArchive&) override {}
};

/// The trained classifier with a category of a host's density at place `at`.
BayesProbe withActing(std::size_t at) {
  const vx_Instantiator registration(typeid(ActingDensity),
                                     [] { return static_cast<vxPersistent*>(new ActingDensity); });
  const BayesProbe source = trained();
  const auto params = source.trainParams();
  const ActingDensity density;
  const vx_CategoryModelBayesian acting = bayesModel({1000, 1, {{0}}, {&density}});
  std::vector<long> labels = source.categoryLabels();
  std::vector<const vxPersistent*> models;
  const auto handles = source.categoryModels();
  for (const auto& handle : handles) models.push_back(handle.get());
  labels.insert(labels.begin() + static_cast<long>(at), 1000);
  models.insert(models.begin() + static_cast<long>(at), &acting);
  return loaded<BayesProbe>(bayesClassifierBytes(params.get(), labels, models));
}

/// Every bit of the result of a run with what `during` does at each poll.
std::string bitsOfRun(const vx_ClassifierBayesian& classifier,
                      const std::function<void(long)>& during) {
  vxClassifierResult result;
  const AtPolls polls(during);
  classifier.run(query(), result);
  return bitsOf(result);
}

TEST(BayesianInterruptedTest, StopsAtEachPollAndLeavesTheResult) {
  const BayesProbe classifier = trained();
  const vx_ClassifierBayesian generic = host::wrapped(classifier);
  for (long stopAt = 0; stopAt <= 2 * kCategories + 2; ++stopAt) {
    SCOPED_TRACE(stopAt);
    const std::string expected = outcomeOfRun(generic, query(), stopAt);
    atEverySimdLevel([&] {
      outcomeOfRun(classifier, {{0.5, 0.5, 0.5}, {}});
      EXPECT_EQ(outcomeOfRun(classifier, query(), stopAt), expected);
    });
  }
}

TEST(BayesianInterruptedTest, LeavesTheResultWhenADensityThrows) {
  for (std::size_t at = 0; at <= kCategories; ++at) {
    SCOPED_TRACE(at);
    const BayesProbe classifier = withActing(at);
    ActingDensity::action = [] {};
    vxClassifierResult result;
    classifier.run(query(), result);
    const std::string before = bitsOf(result);
    ActingDensity::action = [] { throw HostError(); };
    EXPECT_THROW(classifier.run({{0.9, 0.8, 0.7}, {}}, result), HostError);
    EXPECT_EQ(bitsOf(result), before);
    ActingDensity::action = [] {};
    classifier.run(query(), result);
    EXPECT_EQ(bitsOf(result), before);
  }
}

TEST(BayesianInterruptedTest, ScoresEachModelAsItIsAtItsPoll) {
  const auto adaptsAtPoll = [](const BayesProbe& classifier, long poll, std::size_t changed) {
    return [&classifier, poll, changed](long number) {
      if (number != poll) return;
      vx_CategoryModelBayesian(classifier.model(changed)).adapt({{0.9, 0.1, 0.5}, {}}, nullptr, 0);
    };
  };
  atEverySimdLevel([&] {
    for (long poll = 1; poll <= kCategories; poll += 2) {
      for (const std::size_t changed : {0u, 1u, 7u, 12u, 18u}) {
        SCOPED_TRACE(std::to_string(poll) + ", " + std::to_string(changed));
        const BayesProbe classifier = trained();
        const BayesProbe generic(host::wrapped(classifier));
        vxClassifierResult before;
        classifier.run(query(), before);
        const std::string bits = bitsOfRun(classifier, adaptsAtPoll(classifier, poll, changed));
        EXPECT_EQ(bits, bitsOfRun(generic, adaptsAtPoll(generic, poll, changed)));
        EXPECT_EQ(bits == bitsOf(before), static_cast<std::size_t>(poll) > changed + 1);
      }
    }
  });
}

TEST(BayesianInterruptedTest, RunsWithinARun) {
  const BayesProbe outer = withActing(9);
  const BayesProbe inner = trained(2);
  vxClassifierResult result;
  ActingDensity::action = [] {};
  outer.run(query(), result);
  const std::string ofOuter = bitsOf(result);
  inner.run({{0.1, 0.2, 0.3}, {}}, result);
  const std::string ofInner = bitsOf(result);

  ActingDensity::action = [&] {
    vxClassifierResult nested;
    inner.run({{0.1, 0.2, 0.3}, {}}, nested);
    EXPECT_EQ(bitsOf(nested), ofInner);
  };
  for (int i = 0; i < 3; ++i) {
    outer.run(query(), result);
    EXPECT_EQ(bitsOf(result), ofOuter);
  }
  ActingDensity::action = [] {};
}

}  // namespace
