// SPDX-License-Identifier: MIT
// Runs of the library's classifier against the plain technique and against the same classifier with
// densities of a host, bit for bit.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_host.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_bayes.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"
#include "vxclss/train_params_bayesian.h"

namespace {

using Types = vxClassifierDistributionTypes;

struct Scene {
  const char* name;
  long measurements;
  long labels;
  bool hasSets;
  bool hasBinomials;
  bool hasInvalid;
  bool isWhole;  // whole numbers, so that many are equal
};

void PrintTo(const Scene& scene, std::ostream* out) { *out << scene.name; }

/// The classifier and its plain twin, and random operations on both.
class Twins {
 public:
  Twins(const Scene& scene, unsigned seed) : scene_(scene), random_(seed) {}

  void train() {
    params_ = drawParams_();
    patterns_.clear();
    labels_.clear();
    const long count = 3 + pick_(12) * scene_.labels;
    for (long i = 0; i < count; ++i) {
      patterns_.push_back(drawPattern_(scene_.measurements));
      labels_.push_back(pick_(15) == 0 ? -1 : 3 * pick_(scene_.labels));
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

  void retrain() {
    if (!isTrained_()) return;
    params_.frequencies = drawFrequencies_();
    params_.costs = vxClassifierCosts(0.25 * static_cast<double>(pick_(8)));
    twin_.params = params_;
    classifier_.retrain(libraryParams_());
  }

  /// A copy of a model shares its densities, so the classifier answers otherwise from now on.
  void adaptBehind() {
    if (!isTrained_()) return;
    const auto i = static_cast<std::size_t>(pick_(static_cast<long>(twin_.models.size())));
    vx_CategoryModelBayesian copy(classifier_.model(i));
    const vxFeaturePattern pattern = drawPattern_(scene_.measurements);
    EXPECT_EQ(outcomeOf([&] { copy.adapt(pattern, nullptr, 0); }),
              outcomeOf([&] { plain::Bayes::adapt(twin_.models[i], pattern); }));
  }

  void copy() {
    BayesProbe copy;
    copy = BayesProbe(classifier_);
    if (pick_(2) == 0) classifier_.untrain();
    classifier_ = copy;
  }

  void expectSameRuns() {
    if (!isTrained_()) return;
    BayesProbe loadedCopy;
    load(stored(classifier_), loadedCopy);
    const vx_ClassifierBayesian generic = host::wrapped(classifier_);
    for (int i = 0; i < 6; ++i) {
      const vxFeaturePattern query = drawQuery_();
      SCOPED_TRACE(testing::PrintToString(query.featureMeasurements(false)));
      const std::string expected = outcomeOfTwin_(query);
      EXPECT_EQ(outcomeOfRun(classifier_, query), expected);
      EXPECT_EQ(outcomeOfRun(loadedCopy, query), expected);
      EXPECT_EQ(outcomeOfRun(generic, query), expected);
      EXPECT_EQ(outcomeOfRun(*classifier_.clone(), query), expected);
    }
  }

  void step() {
    switch (pick_(6)) {
      case 0:
        train();
        break;
      case 1:
        retrain();
        break;
      case 2:
      case 3:
        adaptBehind();
        break;
      case 4:
        copy();
        break;
      default:
        break;
    }
    expectSameRuns();
  }

 private:
  /// A training that failed holds no parameters.
  bool isTrained_() const {
    return classifier_.isTrained() &&
           outcomeOf([&] { static_cast<void>(classifier_.trainParams()); }) == "done";
  }

  std::string outcomeOfTwin_(const vxFeaturePattern& query) const {
    struct Runner {
      const plain::Bayes& twin;
      void run(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
        twin.run(pattern, result);
      }
    };
    return outcomeOfRun(Runner{twin_}, query);
  }

  plain::Bayes::Params drawParams_() {
    plain::Bayes::Params params;
    params.frequencies = drawFrequencies_();
    for (long label = 0; label < 3 * scene_.labels; label += 3) {
      for (long m = 0; scene_.hasBinomials && m < scene_.measurements; ++m) {
        if (pick_(3) == 0) params.types.distributionTypeOverride(label, m, Types::eBinomial);
      }
      for (int set = 0; scene_.hasSets && set < 2; ++set) {
        std::vector<long> members;
        for (long m = 0; m < scene_.measurements + 1; ++m) {
          const bool isNormal = params.types.distributionType(label, m) == Types::eNormal;
          // Beyond the end now and then, where nothing is ever valid.
          if (isNormal && pick_(m < scene_.measurements ? 3 : 20) == 0) members.push_back(m);
        }
        std::shuffle(members.begin(), members.end(), random_);
        params.types.setDependent(label, members);
      }
    }
    std::vector<double> maxima;
    for (long m = 0; m < scene_.measurements; ++m) maxima.push_back(6.0 + static_cast<double>(m));
    params.maxima = vxFeaturePattern(maxima, {});
    return params;
  }

  vxClassifierFrequencies drawFrequencies_() {
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(3, 1.0 / static_cast<double>(1 + pick_(5)));
    return frequencies;
  }

  vxClassifierTrainParamsBayesian libraryParams_() const {
    return {params_.types.record(), params_.frequencies, params_.costs, params_.maxima};
  }

  vxFeaturePattern drawPattern_(long count) {
    std::vector<double> values;
    std::vector<long> invalid;
    for (long m = 0; m < count; ++m) {
      const double fraction = std::ldexp(static_cast<double>(random_() >> 11), -53);
      values.push_back(scene_.isWhole ? static_cast<double>(pick_(5)) : 5.0 * fraction);
      if (scene_.hasInvalid && pick_(8) == 0) invalid.push_back(m);
    }
    return {values, invalid};
  }

  vxFeaturePattern drawQuery_() {
    constexpr double kOdd[] = {std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity(),
                               -1e300,
                               1e9,
                               -0.0,
                               5e-324};
    const long count = pick_(10) == 0 ? pick_(scene_.measurements + 3) : scene_.measurements;
    vxFeaturePattern query = drawPattern_(count);
    if (count == 0 || pick_(8) != 0) return query;
    std::vector<double> values = query.featureMeasurements(false);
    values[static_cast<std::size_t>(pick_(count))] = kOdd[pick_(6)];
    return {values, query.invalidFeatureIndices()};
  }

  long pick_(long count) {
    return static_cast<long>(random_() % static_cast<std::uint64_t>(count));
  }

  Scene scene_;
  std::mt19937_64 random_;
  plain::Bayes::Params params_;
  std::vector<vxFeaturePattern> patterns_;
  std::vector<long> labels_;
  BayesProbe classifier_;
  plain::Bayes twin_;
};

class BayesianPlanTest : public testing::TestWithParam<Scene> {};

TEST_P(BayesianPlanTest, GivesTheBitsOfThePlainTechnique) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Twins twins(GetParam(), seed);
    twins.train();
    twins.expectSameRuns();
    for (int i = 0; i < 8 && !testing::Test::HasFailure(); ++i) twins.step();
    if (testing::Test::HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Scenes, BayesianPlanTest,
                         testing::Values(Scene{"Singles", 5, 3, false, false, false, false},
                                         Scene{"WholeSingles", 4, 4, false, false, false, true},
                                         Scene{"Groups", 7, 3, true, false, false, false},
                                         Scene{"WholeGroups", 6, 2, true, false, false, true},
                                         Scene{"Binomials", 5, 3, false, true, false, true},
                                         Scene{"Invalid", 5, 3, true, false, true, false},
                                         Scene{"Everything", 8, 4, true, true, true, true},
                                         Scene{"OneCategory", 3, 1, true, false, false, false}),
                         [](const auto& row) { return row.param.name; });

/// Two categories over one single measurement and one pair, trained by five samples each.
BayesProbe mixed() {
  Types types;
  types.setDependent(0, {2, 0});
  types.setDependent(1, {1, 2});
  std::vector<LabelledSample> samples;
  for (long i = 0; i < 10; ++i) {
    const auto x = static_cast<double>(i);
    samples.push_back({{x, 0.5 * x * x, 7.0 - x + 0.1 * x * x}, i % 2});
  }
  BayesProbe classifier;
  classifier.train(providerOf(samples),
                   vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0),
                                                   vxClassifierCosts(1.0), {{}, {}}));
  return classifier;
}

TEST(BayesianPlanSharingTest, FollowsSharedDensitiesInEveryCopy) {
  const vxFeaturePattern query({4.0, 9.0, 3.0}, {});
  const BayesProbe classifier = mixed();
  const BayesProbe copy(classifier);
  const vxClassifierTool unrelated;
  const std::string before = outcomeOfRun(classifier, query);
  EXPECT_EQ(outcomeOfRun(copy, query), before);
  vx_CategoryModelBayesian model(classifier.model(1));
  for (int i = 0; i < 5; ++i) {
    model.adapt({{9.0 - i, 2.0 * i, 1.0}, {}}, nullptr, 0);
    const std::string after = outcomeOfRun(classifier, query);
    EXPECT_NE(after, before);
    EXPECT_EQ(after, outcomeOfRun(copy, query));
    EXPECT_EQ(after, outcomeOfRun(host::wrapped(classifier), query));
  }
}

TEST(BayesianPlanSharingTest, IsNotDisturbedByOtherClassifiers) {
  const vxFeaturePattern query({4.0, 9.0, 3.0}, {});
  const BayesProbe classifier = mixed();
  const std::string before = outcomeOfRun(classifier, query);
  for (int i = 0; i < 3; ++i) {
    const BayesProbe other = mixed();
    outcomeOfRun(other, query);
    vx_CategoryModelBayesian(other.model(0)).adapt(query, nullptr, 0);
    EXPECT_EQ(outcomeOfRun(classifier, query), before);
  }
}

TEST(BayesianPlanSharingTest, NoticesThatACategoryBecameEvaluable) {
  BayesProbe classifier;
  classifier.train(providerOf({{{1.0}, 0}, {{2.0}, 0}, {{5.0}, 1}}),
                   vxClassifierTrainParamsBayesian(Types(), vxClassifierFrequencies(1.0),
                                                   vxClassifierCosts(1.0), {{}, {}}));
  vxClassifierResult result;
  EXPECT_THROW(classifier.run({{1.5}, {}}, result), vxClassifierDefs::InsufficientTrainData);
  vx_CategoryModelBayesian(classifier.model(1)).adapt({{6.0}, {}}, nullptr, 0);
  EXPECT_EQ(outcomeOfRun(classifier, {{1.5}, {}}),
            outcomeOfRun(host::wrapped(classifier), {{1.5}, {}}));
  EXPECT_NO_THROW(classifier.run({{1.5}, {}}, result));
}

/// A classifier that was loaded together with a handle to its first model, which a host may have.
struct LoadedWithModel {
  LoadedWithModel() {
    BayesProbe source = mixed();
    vxPtrHandle_const<vx_CategoryModel> model = source.categoryModels()[0];
    load(stored(model, source), first, classifier);
  }
  vxPtrHandle<vx_CategoryModelBayesian> first;
  BayesProbe classifier;
};

TEST(BayesianPlanSharingTest, FollowsAModelThatAHostChanges) {
  const vxFeaturePattern query({4.0, 9.0, 3.0}, {});
  const auto assignOther = [](vx_CategoryModelBayesian& model) {
    model = vx_CategoryModelBayesian(mixed().model(1));
    model.categoryLabel(0);
  };
  const auto loadOther = [](vx_CategoryModelBayesian& model) {
    vx_CategoryModelBayesian other(mixed().model(1));
    load(stored(other), model);
    model.categoryLabel(0);
  };
  const auto adapt = [&](vx_CategoryModelBayesian& model) { model.adapt(query, nullptr, 0); };
  const auto relabel = [](vx_CategoryModelBayesian& model) { model.categoryLabel(77); };
  const std::function<void(vx_CategoryModelBayesian&)> changes[] = {adapt, relabel, assignOther,
                                                                    loadOther};
  for (const auto& change : changes) {
    LoadedWithModel loadedPair;
    ASSERT_EQ(loadedPair.classifier.categoryModels()[0].get(), loadedPair.first.get());
    const std::string before = outcomeOfRun(loadedPair.classifier, query);
    change(*loadedPair.first);
    EXPECT_EQ(outcomeOfRun(loadedPair.classifier, query),
              outcomeOfRun(host::wrapped(loadedPair.classifier), query));
    EXPECT_NE(outcomeOfRun(loadedPair.classifier, query), before);
  }
}

}  // namespace
