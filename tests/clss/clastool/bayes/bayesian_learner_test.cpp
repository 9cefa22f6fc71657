// SPDX-License-Identifier: MIT
// What training leaves in the densities of a classifier, against the plain technique, which updates
// one density after another with patterns reduced to its group. Bit for bit, but of a NaN only that
// it is one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/host_provider.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_bayes.h"
#include "tests/support/samples.h"
#include "tests/support/simd_levels.h"
#include "vxclss/train_params_bayesian.h"

namespace {

using Types = vxClassifierDistributionTypes;

std::string numberOf(double value) { return std::isnan(value) ? "NaN" : bitsOf(value); }

std::string stateOf(const vx_ProbabilityDensityFunction& density) {
  std::string state;
  if (const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(&density)) {
    state = "normal " + std::to_string(normal->sampleCount());
    for (const vxNMMatrix& matrix : {normal->mean(), normal->covariance()}) {
      for (long row = 0; row < matrix.rows(); ++row) {
        for (long column = 0; column < matrix.columns(); ++column) {
          state += " " + numberOf(matrix.element(row, column));
        }
      }
    }
    return state;
  }
  const auto& binomial = dynamic_cast<const vx_PDFBinomial&>(density);
  return "binomial " + std::to_string(binomial.numTrials()) + " " + numberOf(binomial.theta());
}

std::string stateOf(const BayesProbe& classifier) {
  std::string state;
  for (std::size_t i = 0; i < classifier.categoryLabels().size(); ++i) {
    state += "category " + std::to_string(classifier.categoryLabels()[i]) + "\n";
    for (const auto& density : classifier.model(i).densities()) state += stateOf(*density) + "\n";
  }
  return state;
}

std::string stateOf(const plain::Bayes& twin) {
  std::string state;
  for (const plain::Bayes::Model& model : twin.models) {
    state += "category " + std::to_string(model.label) + "\n";
    for (const auto& group : model.groups) state += stateOf(*group.density) + "\n";
  }
  return state;
}

struct Training {
  std::vector<vxFeaturePattern> patterns;
  std::vector<long> labels;

  vxClassifierDataProviderMemory data() const {
    vxClassifierDataProviderMemory memory;
    memory.data(handles(), labels);
    return memory;
  }
  std::vector<vxPtrHandle_const<vxFeaturePattern>> handles() const {
    std::vector<vxPtrHandle_const<vxFeaturePattern>> list;
    for (const vxFeaturePattern& pattern : patterns)
      list.emplace_back(new vxFeaturePattern(pattern));
    return list;
  }
};

/// The patterns of a training, from a host that is asked for each.
class HostData : public HostProvider {
 public:
  HostData(const Training& training) : HostProvider(training.handles(), training.labels) {}
  long numMeasurements() const override { return featurePattern(0)->numMeasurements(); }
};

struct Scene {
  const char* name;
  long measurements;
  bool hasSets = false;
  bool hasBinomials = false;
  bool hasInvalid = false;
  bool hasOdd = false;
};

void PrintTo(const Scene& scene, std::ostream* out) { *out << scene.name; }

class Draw {
 public:
  Draw(const Scene& scene, unsigned seed) : scene_(scene), random_(seed) {}

  plain::Bayes::Params params() {
    plain::Bayes::Params params;
    for (long label = 0; label < 3; ++label) {
      for (long m = 0; scene_.hasBinomials && m < scene_.measurements; ++m) {
        if (pick_(6) == 0) params.types.distributionTypeOverride(label, m, Types::eBinomial);
      }
      for (int set = 0; scene_.hasSets && set < 3; ++set) drawSet_(label, params.types);
    }
    // Some measurements are above it, which ends a training.
    const auto size = static_cast<std::size_t>(scene_.measurements);
    params.maxima = vxFeaturePattern(std::vector<double>(size, 0.999), {});
    return params;
  }

  Training training() {
    Training training;
    for (long i = 0; i < 20 + pick_(60); ++i) {
      training.patterns.push_back(pattern());
      training.labels.push_back(pick_(9) == 0 ? -1 : pick_(3));
    }
    return training;
  }

  vxFeaturePattern pattern() {
    std::vector<double> values;
    std::vector<long> invalid;
    for (long m = 0; m < scene_.measurements; ++m) {
      values.push_back(std::ldexp(static_cast<double>(random_() >> 11), -53));
      if (scene_.hasOdd && pick_(12) == 0) values.back() = kOdd[pick_(5)];
      if (scene_.hasInvalid && pick_(30) == 0) invalid.push_back(m);
    }
    return {values, invalid};
  }

 private:
  static constexpr double kOdd[] = {std::numeric_limits<double>::quiet_NaN(),
                                    -std::numeric_limits<double>::infinity(), -0.0, 0.0, 5e-324};

  void drawSet_(long label, plain::DistributionTypes& types) {
    const long first = pick_(scene_.measurements);
    const long last = std::min(first + pick_(9), scene_.measurements);
    std::vector<long> members;
    for (long m = first; m < last; ++m) {
      if (types.distributionType(label, m) == Types::eNormal && pick_(6) != 0) members.push_back(m);
    }
    // Now and then one that no pattern has, or another order than the pattern's.
    if (pick_(8) == 0) members.push_back(scene_.measurements + 2);
    if (pick_(2) == 0) std::shuffle(members.begin(), members.end(), random_);
    types.setDependent(label, members);
  }

  long pick_(long count) {
    return static_cast<long>(random_() % static_cast<std::uint64_t>(count));
  }

  Scene scene_;
  std::mt19937_64 random_;
};

vxClassifierTrainParamsBayesian libraryParams(const plain::Bayes::Params& params) {
  return {params.types.record(), params.frequencies, params.costs, params.maxima};
}

class BayesianLearnerTest : public testing::TestWithParam<Scene> {
 protected:
  /// Calls `body` with parameters and a training, many times.
  void forEachDraw(const std::function<void(Draw&)>& body) {
    for (unsigned seed = 1; seed <= 25 && !testing::Test::HasFailure(); ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      Draw draw(GetParam(), seed);
      body(draw);
    }
  }
};

TEST_P(BayesianLearnerTest, LearnsWhatThePlainTechniqueLearns) {
  forEachDraw([](Draw& draw) {
    const plain::Bayes::Params params = draw.params();
    const Training training = draw.training();
    const vxFeaturePattern next = draw.pattern();
    plain::Bayes twin;
    const std::string outcome =
        outcomeOf([&] { twin.train(training.patterns, training.labels, params); });
    const std::string trained = stateOf(twin);
    std::vector<std::string> outcomes;
    for (plain::Bayes::Model& model : twin.models) {
      outcomes.push_back(outcomeOf([&] { plain::Bayes::adapt(model, next); }));
    }
    atEverySimdLevel([&] {
      BayesProbe classifier;
      EXPECT_EQ(outcomeOf([&] { classifier.train(training.data(), libraryParams(params)); }),
                outcome);
      EXPECT_EQ(stateOf(classifier), trained);
      // The densities go on from there by themselves.
      ASSERT_EQ(classifier.categoryLabels().size(), outcomes.size());
      for (std::size_t i = 0; i < outcomes.size(); ++i) {
        vx_CategoryModelBayesian model(classifier.model(i));
        EXPECT_EQ(outcomeOf([&] { model.adapt(next, nullptr, 0); }), outcomes[i]);
      }
      EXPECT_EQ(stateOf(classifier), stateOf(twin));
    });
  });
}

TEST_P(BayesianLearnerTest, LearnsTheSameFromAHost) {
  forEachDraw([](Draw& draw) {
    const plain::Bayes::Params params = draw.params();
    const Training training = draw.training();
    BayesProbe classifier;
    const std::string outcome =
        outcomeOf([&] { classifier.train(training.data(), libraryParams(params)); });
    BayesProbe hosted;
    EXPECT_EQ(outcomeOf([&] { hosted.train(HostData(training), libraryParams(params)); }), outcome);
    EXPECT_EQ(stateOf(hosted), stateOf(classifier));
  });
}

TEST_P(BayesianLearnerTest, GoesOnFromTheModelsThereAre) {
  forEachDraw([](Draw& draw) {
    const plain::Bayes::Params params = draw.params();
    BayesProbe classifier;
    plain::Bayes twin;
    for (int i = 0; i < 3; ++i) {
      const Training training = draw.training();
      const BayesProbe copy(classifier);  // shares the models
      EXPECT_EQ(outcomeOf([&] { classifier.train_(training.data(), libraryParams(params)); }),
                outcomeOf([&] { twin.train(training.patterns, training.labels, params); }));
      EXPECT_EQ(stateOf(classifier), stateOf(twin));
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Scenes, BayesianLearnerTest,
                         testing::Values(Scene{"OneSingle", 1}, Scene{"Singles", 11},
                                         Scene{"ManySingles", 70},
                                         Scene{"Sets", 13, /*hasSets=*/true},
                                         Scene{"Binomials", 5, true, /*hasBinomials=*/true},
                                         Scene{"Invalid", 12, true, false, /*hasInvalid=*/true},
                                         Scene{"Odd", 12, true, false, true, /*hasOdd=*/true},
                                         Scene{"Everything", 9, true, true, true, true}),
                         [](const auto& row) { return row.param.name; });

TEST(BayesianLearnerSeenTest, ShowsAProviderOfAHostEachSampleAtOnce) {
  class Watching : public vxClassifierDataProviderMemory {
   public:
    Watching(const vxClassifierDataProviderMemory& data, const BayesProbe& classifier)
        : vxClassifierDataProviderMemory(data), classifier_(classifier) {}
    vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const override {
      counts.push_back(0);
      if (!classifier_.categoryLabels().empty()) {
        const auto density = classifier_.model(0).densities().at(1);
        counts.back() = dynamic_cast<const vx_PDFMultivariateNormal&>(*density).sampleCount();
      }
      return vxClassifierDataProviderMemory::featurePattern(index);
    }
    mutable std::vector<long> counts;

   private:
    const BayesProbe& classifier_;
  };
  BayesProbe classifier;
  const Watching data(providerOf({{{1.0, 2.0}, 4}, {{2.0, 3.0}, 4}, {{0.0, 1.0}, 4}}), classifier);
  classifier.train(data, libraryParams(plain::Bayes::Params()));
  EXPECT_EQ(data.counts, (std::vector<long>{0, 1, 2}));
}

/// Calls of `operator new` while a classifier is trained on so many samples.
std::size_t callsOfTraining(long samples, const Types& types) {
  std::vector<LabelledSample> list;
  for (long i = 0; i < samples; ++i) {
    LabelledSample sample{{}, i % 2};
    for (int m = 0; m < 40; ++m)
      sample.measurements.push_back(std::sin(static_cast<double>(i + m)));
    list.push_back(sample);
  }
  const vxClassifierDataProviderMemory data = providerOf(list);
  const vxClassifierTrainParamsBayesian params(types, vxClassifierFrequencies(1.0),
                                               vxClassifierCosts(1.0), {{}, {}});
  BayesProbe classifier;
  const AllocationMeter meter;
  classifier.train_(data, params);
  return meter.calls();
}

TEST(BayesianLearnerMemoryTest, TakesNothingPerSample) {
  Types grouped;
  std::vector<long> all;
  for (long m = 0; m < 40; ++m) all.push_back(39 - m);
  grouped.setDependent(0, all);
  grouped.setDependent(1, {2, 30, 7});
  for (const Types& types : {Types(), grouped}) {
    EXPECT_EQ(callsOfTraining(200, types), callsOfTraining(20, types));
  }
}

}  // namespace
