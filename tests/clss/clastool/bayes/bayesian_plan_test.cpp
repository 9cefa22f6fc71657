// SPDX-License-Identifier: MIT
// Runs of the library's classifier against the plain technique and against the same classifier with
// densities of a host, bit for bit.

#include "clastool/bayes/bayesian_plan.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_host.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/bayes_twins.h"
#include "tests/support/outcome.h"
#include "tests/support/samples.h"
#include "vxclss/errors.h"
#include "vxclss/train_params_bayesian.h"

namespace {

using Types = vxClassifierDistributionTypes;

using Scene = BayesTwins::Scene;
using Twins = BayesTwins;

class BayesianPlanTest : public testing::TestWithParam<Scene> {};

TEST_P(BayesianPlanTest, GivesTheBitsOfThePlainTechnique) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Twins twins(GetParam(), seed);
    twins.train();
    twins.expectSameRuns();
    for (int i = 0; i < 8 && !testing::Test::HasFailure(); ++i) {
      twins.step();
      twins.expectSameRuns();
    }
    if (testing::Test::HasFailure()) return;
  }
}

// Name, measurements, labels, numbers, grouping; binomials, invalid measurements, complete.
constexpr Scene kScenes[] = {
    {"Singles", 5, 3, Twins::kContinuous, Twins::kSingles},
    {"WholeSingles", 4, 4, Twins::kWhole, Twins::kSingles},
    {"OffsetSingles", 9, 9, Twins::kOffset, Twins::kSingles, false, false, true},
    {"ScaledSingles", 13, 5, Twins::kScaled, Twins::kSingles, false, false, true},
    {"Sets", 7, 3, Twins::kContinuous, Twins::kRandomSets},
    {"WholeSets", 6, 2, Twins::kWhole, Twins::kRandomSets},
    {"Pairs", 6, 17, Twins::kContinuous, Twins::kPairs, false, false, true},
    {"OffsetPatterns", 5, 10, Twins::kOffset, Twins::kWholePattern, false, false, true},
    {"ScaledPatterns", 13, 4, Twins::kScaled, Twins::kWholePattern, false, false, true},
    {"WholePatterns", 4, 8, Twins::kWhole, Twins::kWholePattern, false, false, true},
    {"InTurn", 6, 23, Twins::kContinuous, Twins::kInTurn, false, false, true},
    {"Binomials", 5, 3, Twins::kWhole, Twins::kSingles, true},
    {"Invalid", 5, 3, Twins::kContinuous, Twins::kRandomSets, false, true},
    {"InvalidSingles", 6, 11, Twins::kContinuous, Twins::kSingles, false, true, true},
    {"Everything", 8, 4, Twins::kWhole, Twins::kRandomSets, true, true},
    {"OneCategory", 3, 1, Twins::kContinuous, Twins::kRandomSets},
};

INSTANTIATE_TEST_SUITE_P(Scenes, BayesianPlanTest, testing::ValuesIn(kScenes),
                         [](const auto& row) { return row.param.name; });

TEST(BayesianPlanSizesTest, GivesTheBitsOfThePlainTechniqueForAnyNumberOfCategories) {
  for (long categories = 1; categories <= 40; ++categories) {
    SCOPED_TRACE(std::to_string(categories) + " categories");
    for (const Twins::Grouping grouping : {Twins::kSingles, Twins::kWholePattern, Twins::kInTurn}) {
      Twins twins({"", 4, categories, Twins::kContinuous, grouping, false, false, true}, 1);
      twins.train();
      twins.expectSameRuns();
    }
  }
}

TEST(BayesianPlanSizesTest, GivesTheBitsOfThePlainTechniqueForAnyNumberOfMeasurements) {
  for (const long measurements : {1L, 2L, 3L, 15L, 16L, 33L, 70L}) {
    SCOPED_TRACE(std::to_string(measurements) + " measurements");
    for (const Twins::Grouping grouping : {Twins::kSingles, Twins::kPairs, Twins::kWholePattern}) {
      Twins twins({"", measurements, 3, Twins::kContinuous, grouping, false, false, true}, 1);
      twins.train();
      twins.expectSameRuns();
    }
  }
}

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

/// Models of their own with the densities of a classifier's.
std::vector<vxPtrHandle<vx_CategoryModel>> copiedModels(const BayesProbe& classifier) {
  std::vector<vxPtrHandle<vx_CategoryModel>> models;
  for (std::size_t i = 0; i < classifier.categoryModels().size(); ++i) {
    models.emplace_back(new vx_CategoryModelBayesian(classifier.model(i)));
  }
  return models;
}

TEST(BayesianPlanCoverTest, HoldsForTrainedNormalDensitiesAndWholePatterns) {
  const std::vector<LabelledSample> samples = {
      {{1.0, 5.0}, 5}, {{7.0, 1.0}, 2}, {{2.0, 6.0}, 5}, {{8.0, 3.0}, 2}, {{4.0, 4.0}, 9}};
  BayesProbe classifier;
  classifier.train(providerOf(samples),
                   vxClassifierTrainParamsBayesian(Types(), vxClassifierFrequencies(1.0),
                                                   vxClassifierCosts(1.0), {{}, {}}));
  std::vector<vxPtrHandle<vx_CategoryModel>> models = copiedModels(classifier);
  const vx_BayesianPlan plan(models);
  EXPECT_TRUE(plan.covers(0));
  EXPECT_TRUE(plan.covers(1));
  EXPECT_FALSE(plan.covers(2)) << "one sample has no variance";
  EXPECT_TRUE(plan.isUpToDate());
  vx_BayesianPlan::Room room;
  EXPECT_TRUE(plan.takes({{1.0, 2.0}, {}}, room));
  EXPECT_FALSE(plan.takes({{1.0}, {}}, room));

  models.push_back(models[0]);
  EXPECT_FALSE(vx_BayesianPlan(models).covers(3)) << "its densities are laid out for another";
  models[1]->adapt({{9.0, 3.5}, {}}, nullptr, 0);
  EXPECT_FALSE(plan.isUpToDate());
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
