// SPDX-License-Identifier: MIT
#include "tests/support/bayes_twins.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <numeric>
#include <ostream>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_host.h"
#include "tests/support/outcome.h"
#include "tests/support/simd_levels.h"
#include "vxclss/data_provider.h"

namespace {

using Types = vxClassifierDistributionTypes;

}  // namespace

void PrintTo(const BayesTwins::Scene& scene, std::ostream* out) { *out << scene.name; }

void BayesTwins::train() {
  params_ = drawParams_();
  patterns_.clear();
  labels_.clear();
  const long count =
      scene_.isComplete ? (3 + pick_(4)) * scene_.labels : 3 + pick_(12) * scene_.labels;
  for (long i = 0; i < count; ++i) {
    patterns_.push_back(drawPattern_(scene_.measurements));
    const long label = scene_.isComplete ? i % scene_.labels : pick_(scene_.labels);
    labels_.push_back(pick_(15) == 0 && !scene_.isComplete ? -1 : 3 * label);
  }
  vxClassifierDataProviderMemory data;
  for (std::size_t i = 0; i < patterns_.size(); ++i) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(patterns_[i])),
                 labels_[i]);
  }
  twin_.models.clear();
  EXPECT_EQ(outcomeOf([&] { classifier_.train(data, libraryParams_()); }),
            outcomeOf([&] { twin_.train(patterns_, labels_, params_); }));
}

void BayesTwins::retrain() {
  if (!isTrained_()) return;
  params_.frequencies = drawFrequencies_();
  params_.costs = vxClassifierCosts(0.25 * static_cast<double>(pick_(8)));
  twin_.params = params_;
  classifier_.retrain(libraryParams_());
}

void BayesTwins::adaptBehind() {
  if (!isTrained_()) return;
  const auto i = static_cast<std::size_t>(pick_(static_cast<long>(twin_.models.size())));
  vx_CategoryModelBayesian copy(classifier_.model(i));
  const vxFeaturePattern pattern = drawPattern_(scene_.measurements);
  EXPECT_EQ(outcomeOf([&] { copy.adapt(pattern, nullptr, 0); }),
            outcomeOf([&] { plain::Bayes::adapt(twin_.models[i], pattern); }));
}

void BayesTwins::trainIncrementally() {
  if (isTrained_()) classifier_.trainIncremental(drawPattern_(scene_.measurements), 0);
}

void BayesTwins::copy() {
  BayesProbe copy;
  copy = BayesProbe(classifier_);
  if (pick_(2) == 0) classifier_.untrain();
  classifier_ = copy;
}

void BayesTwins::untrain() {
  classifier_.untrain();
  twin_.models.clear();
}

void BayesTwins::step() {
  switch (pick_(8)) {
    case 0:
      return train();
    case 1:
      return retrain();
    case 2:
    case 3:
      return adaptBehind();
    case 4:
      return copy();
    case 5:
      return trainIncrementally();
    case 6:
      untrain();
      return train();
    default:
      return;
  }
}

void BayesTwins::expectSameRuns() {
  if (!isTrained_()) return;
  BayesProbe loadedCopy;
  load(stored(classifier_), loadedCopy);
  const vx_ClassifierBayesian generic = host::wrapped(classifier_);
  const vxPtrHandle<vx_Classifier> clone = classifier_.clone();
  std::vector<vxFeaturePattern> queries;
  std::vector<std::string> expected;
  for (int i = 0; i < 6; ++i) {
    queries.push_back(drawQuery_());
    expected.push_back(outcomeOfTwin_(queries.back()));
    EXPECT_EQ(outcomeOfRun(generic, queries.back()), expected.back());
  }
  // What a run leaves for the next one is always of another query.
  atEverySimdLevel([&] {
    for (const vx_Classifier* tested :
         std::initializer_list<const vx_Classifier*>{&classifier_, &loadedCopy, clone.get()}) {
      for (std::size_t i = 0; i < queries.size(); ++i) {
        SCOPED_TRACE(testing::PrintToString(queries[i].featureMeasurements(false)));
        EXPECT_EQ(outcomeOfRun(*tested, queries[i]), expected[i]);
      }
    }
  });
}

// A training that failed holds no parameters.
bool BayesTwins::isTrained_() const {
  return classifier_.isTrained() &&
         outcomeOf([&] { static_cast<void>(classifier_.trainParams()); }) == "done";
}

std::string BayesTwins::outcomeOfTwin_(const vxFeaturePattern& query) const {
  struct Runner {
    const plain::Bayes& twin;
    void run(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
      twin.run(pattern, result);
    }
  };
  return outcomeOfRun(Runner{twin_}, query);
}

plain::Bayes::Params BayesTwins::drawParams_() {
  plain::Bayes::Params params;
  params.frequencies = drawFrequencies_();
  for (long k = 0; k < scene_.labels; ++k) {
    for (long m = 0; scene_.hasBinomials && m < scene_.measurements; ++m) {
      if (pick_(3) == 0) params.types.distributionTypeOverride(3 * k, m, Types::eBinomial);
    }
    const bool isInTurn = scene_.grouping == kInTurn;
    drawSets_(3 * k, isInTurn ? static_cast<Grouping>(k % kInTurn) : scene_.grouping, params.types);
  }
  std::vector<double> maxima;
  for (long m = 0; m < scene_.measurements; ++m) maxima.push_back(6.0 + static_cast<double>(m));
  params.maxima = vxFeaturePattern(maxima, {});
  return params;
}

void BayesTwins::drawSets_(long label, Grouping grouping, plain::DistributionTypes& types) {
  if (grouping == kPairs) {
    for (long m = 0; m + 1 < scene_.measurements; m += 2) types.setDependent(label, {m + 1, m});
  } else if (grouping == kWholePattern) {
    std::vector<long> all(static_cast<std::size_t>(scene_.measurements));
    std::iota(all.begin(), all.end(), 0L);
    types.setDependent(label, all);
  }
  for (int set = 0; grouping == kRandomSets && set < 2; ++set) {
    std::vector<long> members;
    for (long m = 0; m < scene_.measurements + 1; ++m) {
      const bool isNormal = types.distributionType(label, m) == Types::eNormal;
      // Beyond the end now and then, where nothing is ever valid.
      if (isNormal && pick_(m < scene_.measurements ? 3 : 20) == 0) members.push_back(m);
    }
    std::shuffle(members.begin(), members.end(), random_);
    types.setDependent(label, members);
  }
}

vxClassifierFrequencies BayesTwins::drawFrequencies_() {
  vxClassifierFrequencies frequencies(1.0);
  frequencies.categoryFrequencyOverride(3, 1.0 / static_cast<double>(1 + pick_(5)));
  return frequencies;
}

vxClassifierTrainParamsBayesian BayesTwins::libraryParams_() const {
  return {params_.types.record(), params_.frequencies, params_.costs, params_.maxima};
}

double BayesTwins::drawMeasurement_(long index) {
  const double fraction = std::ldexp(static_cast<double>(random_() >> 11), -53);
  switch (scene_.numbers) {
    case kWhole:
      return static_cast<double>(pick_(5));
    case kOffset:
      return 1e4 + 2.0 * fraction;
    case kScaled:
      return fraction * std::pow(10.0, static_cast<double>(index % 13 - 6));
    case kContinuous:
      break;
  }
  return 5.0 * fraction;
}

vxFeaturePattern BayesTwins::drawPattern_(long count) {
  std::vector<double> values;
  std::vector<long> invalid;
  for (long m = 0; m < count; ++m) {
    values.push_back(drawMeasurement_(m));
    if (scene_.hasInvalid && pick_(8) == 0) invalid.push_back(m);
  }
  return {values, invalid};
}

vxFeaturePattern BayesTwins::drawQuery_() {
  // One of them a query: which NaN comes of two different ones is up to the compiler.
  constexpr double kOdd[] = {std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity(),
                             -1e300,
                             1e9,
                             -0.0,
                             5e-324};
  const long count = pick_(10) == 0 ? pick_(scene_.measurements + 3) : scene_.measurements;
  const vxFeaturePattern pattern = drawPattern_(count);
  std::vector<double> values = pattern.featureMeasurements(false);
  std::vector<long> invalid = vxFeaturePattern(pattern).invalidFeatureIndices();
  if (count > 0 && pick_(4) == 0) invalid.push_back(pick_(count));
  const double odd = kOdd[pick_(6)];
  for (long i = pick_(12) - 8; count > 0 && i > 0; --i) {
    values[static_cast<std::size_t>(pick_(count))] = odd;
  }
  return {values, invalid};
}

long BayesTwins::pick_(long count) {
  return static_cast<long>(random_() % static_cast<std::uint64_t>(count));
}
