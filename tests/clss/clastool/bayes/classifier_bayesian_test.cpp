// SPDX-License-Identifier: MIT
// Training, retraining and comparing; runs have a test of their own.
#include "vxclss/classifier_bayesian.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/host_provider.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"
#include "vxclss/train_params_bayesian.h"
#include "vxclss/train_params_knn.h"

namespace {

using Types = vxClassifierDistributionTypes;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadMethod;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotImplemented;
using vxClassifierDefs::NotTrained;
using Groups = std::vector<std::vector<long>>;

vxClassifierTrainParamsBayesian paramsOf(const Types& types,
                                         const vxFeaturePattern& maxima = {{}, {}}) {
  return {types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), maxima};
}

BayesProbe trainedOn(const std::vector<LabelledSample>& samples, const Types& types = Types()) {
  BayesProbe classifier;
  classifier.train(providerOf(samples), paramsOf(types));
  return classifier;
}

const std::vector<LabelledSample>& twoCategories() {
  static const std::vector<LabelledSample> samples = {
      {{1.0, 5.0}, 5}, {{7.0, 1.0}, 2}, {{2.0, 6.0}, 5}, {{8.0, 3.0}, 2}, {{3.0, 5.5}, 5}};
  return samples;
}

Groups groupsOf(const BayesProbe& classifier, std::size_t i) {
  return classifier.model(i).measurementGroups();
}

long countOf(const BayesProbe& classifier, std::size_t i, std::size_t k) {
  return dynamic_cast<const vx_PDFMultivariateNormal&>(*classifier.model(i).densities().at(k))
      .sampleCount();
}

TEST(ClassifierBayesianTest, StartsUntrained) {
  const BayesProbe classifier;
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_TRUE(classifier.categoryLabels().empty());
  EXPECT_TRUE(classifier.categoryModels().empty());
  EXPECT_TRUE(classifier == BayesProbe());
}

TEST(ClassifierBayesianTest, MakesModelsInTheOrderOfFirstAppearance) {
  const BayesProbe classifier = trainedOn(twoCategories());
  EXPECT_EQ(classifier.categoryLabels(), (std::vector<long>{5, 2}));
  EXPECT_EQ(classifier.model(0).categoryLabel(), 5);
  EXPECT_EQ(classifier.model(1).categoryLabel(), 2);
  EXPECT_EQ(countOf(classifier, 0, 0), 3);
  EXPECT_EQ(countOf(classifier, 1, 1), 2);
  EXPECT_EQ(classifier.model(0).numMeasurements(), 2);
}

TEST(ClassifierBayesianTest, SkipsPatternsWithoutACategory) {
  std::vector<LabelledSample> samples = twoCategories();
  samples.insert(samples.begin(), {{100.0, 100.0}, -1});
  samples.push_back({{-100.0, 0.0}, -1});
  EXPECT_TRUE(trainedOn(samples) == trainedOn(twoCategories()));
}

TEST(ClassifierBayesianTest, StaysUntrainedWithoutALabelledPattern) {
  for (const std::vector<LabelledSample>& samples :
       {std::vector<LabelledSample>{}, {{{1.0}, -1}, {{2.0}, -1}}}) {
    const BayesProbe classifier = trainedOn(samples);
    EXPECT_FALSE(classifier.isTrained());
    expectThrows<InsufficientTrainData>([&] { classifier.checkRunnable_(); },
                                        L"No valid data was provided for training.");
    vxClassifierTool tool;
    expectThrows<InsufficientTrainData>([&] { tool.train(providerOf(samples), paramsOf(Types())); },
                                        L"No valid data was provided for training.");
    EXPECT_FALSE(tool.isTrained());
  }
}

TEST(ClassifierBayesianTest, MakesEachDependencySetAGroup) {
  Types types;
  types.setDependent(0, {3, 1});
  types.setDependent(4, {1, 7});
  types.setDependent(5, {9, 8});
  const std::vector<double> x = {1, 2, 3, 4};
  const BayesProbe classifier = trainedOn({{x, 0}, {x, 1}, {x, 4}, {x, 5}}, types);
  EXPECT_EQ(groupsOf(classifier, 0), (Groups{{0}, {3, 1}, {2}}));
  EXPECT_EQ(groupsOf(classifier, 1), (Groups{{0}, {1}, {2}, {3}}));
  EXPECT_EQ(groupsOf(classifier, 2), (Groups{{0}, {1, 7}, {2}, {3}}));
  EXPECT_EQ(classifier.model(2).numMeasurements(), 5);
  EXPECT_EQ(groupsOf(classifier, 3), (Groups{{0}, {1}, {2}, {3}}));
}

TEST(ClassifierBayesianTest, TakesTheTypeOfASetFromItsLowestMember) {
  // Sets that were merged may differ in type.
  Types types;
  types.distributionTypeOverride(0, 2, Types::eBinomial);
  types.setDependent(0, {2});
  types.setDependent(0, {0});
  types.defaultDistributionType(Types::eBinomial);
  types.setDependent(0, {2, 0});
  types.defaultDistributionType(Types::eNormal);
  ASSERT_TRUE(types.isDependent(0, {0, 2}));
  const BayesProbe classifier = trainedOn({{{1, 2, 3}, 0}}, types);
  EXPECT_EQ(groupsOf(classifier, 0), (Groups{{2, 0}, {1}}));
  EXPECT_EQ(countOf(classifier, 0, 0), 1);
}

TEST(ClassifierBayesianTest, AcceptsAMeasurementThatIsNeverThere) {
  Types types;
  types.setDependent(0, {1, 7});
  const BayesProbe classifier =
      trainedOn({{{1, 2, 3, 4}, 0}, {{3, 3, 1, 7}, 0}, {{4, 2, 2, 2}, 0}}, types);
  vxClassifierResult result;
  classifier.run({{1, 2, 3, 4}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{0}));
  // Measurement 7 is not there in training, so it cannot be evaluated.
  expectThrows<InsufficientTrainData>(
      [&] {
        classifier.run({{1, 2, 3, 4, 5, 6, 7, 8}, {}}, result);
      },
      L"No valid data has been used to train the distribution for category 0");
}

TEST(ClassifierBayesianTest, UsesAMaximumOfOneUnlessToldOtherwise) {
  Types types;
  types.distributionTypeOverride(0, 2, Types::eBinomial);
  constexpr wchar_t kAbove[] =
      L"Train data measurement cannot exceed its maximum value when using binomial distribution";
  expectThrows<BadParams>([&] { trainedOn({{{9, 9, 1.5}, 0}}, types); }, kAbove);
  EXPECT_NO_THROW(trainedOn({{{9, 9, 1.0}, 0}}, types));
  BayesProbe classifier;
  EXPECT_NO_THROW(
      classifier.train(providerOf({{{9, 9, 1.5}, 0}}), paramsOf(types, {{1.0, 1.0, 2.0}, {0}})));
}

struct FailureRow {
  const char* name;
  Types::DistributionType type;
  bool isPair;
  void (*expect)(const std::function<void()>& body);
};

TEST(ClassifierBayesianTest, KeepsTheModelsMadeBeforeATrainingFailed) {
  const FailureRow rows[] = {
      {"Poisson", Types::ePoisson, false,
       [](const auto& body) {
         expectThrows<NotImplemented>(body, L"Poisson distribution is not implemented");
       }},
      {"uniform", Types::eUniform, false,
       [](const auto& body) {
         expectThrows<NotImplemented>(body, L"Uniform distribution is not implemented");
       }},
      {"unknown", static_cast<Types::DistributionType>(9), false,
       [](const auto& body) { expectThrows<BadParams>(body, L"Unknown distribution type"); }},
      {"two binomials", Types::eBinomial, true,
       [](const auto& body) {
         expectThrows<NotImplemented>(body,
                                      L"Multivariate Binomial Distributions are not implemented");
       }},
  };
  for (const FailureRow& row : rows) {
    SCOPED_TRACE(row.name);
    Types types;
    types.distributionTypeOverride(2, 0, row.type);
    types.distributionTypeOverride(2, 1, row.type);
    if (row.isPair) types.setDependent(2, {0, 1});
    BayesProbe classifier;
    row.expect([&] { classifier.train(providerOf(twoCategories()), paramsOf(types)); });
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_EQ(classifier.categoryLabels(), (std::vector<long>{5}));
    EXPECT_EQ(countOf(classifier, 0, 0), 1);
    expectThrows<BadMethod>([&] { static_cast<void>(classifier.trainParams()); },
                            L"Classifier tool was not automatically trained.");
    // A further training starts from nothing.
    classifier.train(providerOf(twoCategories()), paramsOf(Types()));
    EXPECT_TRUE(classifier == trainedOn(twoCategories()));
  }
}

TEST(ClassifierBayesianTest, KeepsModelsWhoseLaterSampleFailed) {
  Types types(Types::eBinomial);
  BayesProbe classifier;
  EXPECT_THROW(classifier.train(providerOf({{{0.5}, 1}, {{0.25}, 1}, {{0.75}, 3}, {{1.5}, 1}}),
                                paramsOf(types)),
               BadParams);
  EXPECT_EQ(classifier.categoryLabels(), (std::vector<long>{1, 3}));
}

TEST(ClassifierBayesianTest, AsksAProviderForPatternThenLabel) {
  const HostProvider provider(
      {sharedPattern({1.0}), vxPtrHandle_const<vxFeaturePattern>(), sharedPattern({2.0})},
      {0, -1, 0});
  BayesProbe classifier;
  classifier.train(provider, paramsOf(Types()));
  EXPECT_EQ(provider.calls(), (std::vector<std::string>{"pattern 0", "label 0", "pattern 1",
                                                        "label 1", "pattern 2", "label 2"}));
  EXPECT_EQ(classifier.categoryLabels(), (std::vector<long>{0}));
}

TEST(ClassifierBayesianTest, MeetsAnEmptyPatternWithBadPointer) {
  const HostProvider provider({sharedPattern({1.0}), vxPtrHandle_const<vxFeaturePattern>()},
                              {0, 0});
  BayesProbe classifier;
  expectThrows<vxBadPointer>([&] { classifier.train(provider, paramsOf(Types())); }, L"");
  EXPECT_EQ(classifier.categoryLabels(), (std::vector<long>{0}));
}

TEST(ClassifierBayesianTest, LetsTheDistributionTypesJudgeALabel) {
  class Provider : public HostProvider {
   public:
    using HostProvider::HostProvider;
    long numMeasurements() const override { return 1; }
  };
  BayesProbe classifier;
  expectThrows<BadLabel>(
      [&] { classifier.train(Provider({sharedPattern({1.0})}, {-2}), paramsOf(Types())); },
      L"Cateogory labels must be >= 0");
  EXPECT_FALSE(classifier.isTrained());
}

TEST(ClassifierBayesianTest, RefusesParametersOfAnotherTechnique) {
  BayesProbe classifier;
  const vxClassifierTrainParamsKNN other(1);
  expectThrows<vxBadPointer>([&] { classifier.train_(providerOf(twoCategories()), other); }, L"");
  EXPECT_FALSE(classifier.isTrained());
  classifier = trainedOn(twoCategories());
  expectThrows<vxBadPointer>([&] { classifier.retrain_(other); }, L"");
  expectThrows<BadMethod>([&] { classifier.retrain(other); },
                          L"Cannot retrain with a different classification technique.");
}

TEST(ClassifierBayesianTest, TrainsAgainCleanlyAfterItWasUntrained) {
  BayesProbe classifier = trainedOn(twoCategories());
  classifier.untrain();
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_TRUE(classifier.categoryLabels().empty());
  EXPECT_TRUE(classifier == BayesProbe());
  classifier.train(providerOf({{{1.0}, 2}, {{2.0}, 2}, {{4.0}, 5}}), paramsOf(Types()));
  EXPECT_EQ(classifier.categoryLabels(), (std::vector<long>{2, 5}));
  EXPECT_EQ(countOf(classifier, 0, 0), 2);
  classifier.train(providerOf(twoCategories()), paramsOf(Types()));
  EXPECT_TRUE(classifier == trainedOn(twoCategories()));
}

TEST(ClassifierBayesianTest, LearnsNothingIncrementally) {
  BayesProbe classifier = trainedOn(twoCategories());
  const BayesProbe before(classifier);
  const std::string bytes = stored(classifier);
  classifier.trainIncremental({{9.0, 9.0}, {}}, 5);
  classifier.trainIncremental({{9.0}, {0}}, -7);
  EXPECT_TRUE(classifier == before);
  EXPECT_EQ(stored(classifier), bytes);
}

TEST(ClassifierBayesianTest, IsUntrainedAfterTrainStart) {
  BayesProbe classifier = trainedOn(twoCategories());
  classifier.trainStart(paramsOf(Types()));
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_TRUE(classifier.categoryLabels().empty());
  expectThrows<NotTrained>(
      [&] {
        classifier.trainIncremental({{9.0, 9.0}, {}}, 5);
      },
      L"Classifier tool must be trained before incremental training.");
}

TEST(ClassifierBayesianTest, TakesOtherFrequenciesAndCostsWithoutTheData) {
  BayesProbe classifier = trainedOn(twoCategories());
  const auto models = classifier.categoryModels();
  vxClassifierTrainParamsBayesian changed = paramsOf(Types());
  vxClassifierFrequencies frequencies(1.0);
  frequencies.categoryFrequencyOverride(2, 50.0);
  changed.categoryFrequencies(frequencies);
  changed.misclassificationCosts(vxClassifierCosts(7.0));
  vxClassifierResult before;
  vxClassifierResult after;
  classifier.run({{4.0, 4.0}, {}}, before);
  classifier.retrain(changed);
  classifier.run({{4.0, 4.0}, {}}, after);
  EXPECT_EQ(classifier.categoryModels(), models);
  EXPECT_FALSE(before == after);
  EXPECT_EQ(before.matchScoreFactorLog(), after.matchScoreFactorLog());
}

TEST(ClassifierBayesianTest, RefusesOtherTypesThenOtherMaxima) {
  constexpr wchar_t kTypes[] =
      L"Cannot retrain a Bayesian classifier with different distribution types.";
  constexpr wchar_t kMaxima[] =
      L"Cannot retrain a Bayesian classifier with different maximum measurements values.";
  BayesProbe classifier = trainedOn(twoCategories());
  Types other;
  other.distributionTypeOverride(9, 9, Types::eBinomial);
  const vxFeaturePattern maxima({3.0}, {});
  expectRefused<BadParams>(
      classifier, [&] { classifier.retrain(paramsOf(other, maxima)); }, kTypes);
  expectRefused<BadParams>(
      classifier, [&] { classifier.retrain(paramsOf(other)); }, kTypes);
  expectRefused<BadParams>(
      classifier, [&] { classifier.retrain(paramsOf(Types(), maxima)); }, kMaxima);
  classifier.retrain(paramsOf(Types()));
}

TEST(ClassifierBayesianTest, NeedsParametersToRetrain) {
  BayesProbe untrained;
  expectThrows<vxBadPointer>([&] { untrained.retrain_(paramsOf(Types())); }, L"");
}

TEST(ClassifierBayesianTest, ComparesParametersAndModelsInOrder) {
  const BayesProbe classifier = trainedOn(twoCategories());
  EXPECT_TRUE(classifier == trainedOn(twoCategories()));
  EXPECT_TRUE(classifier.isEquivalent(trainedOn(twoCategories())));
  std::vector<LabelledSample> swapped = twoCategories();
  std::swap(swapped[0], swapped[1]);
  EXPECT_FALSE(classifier == trainedOn(swapped));
  EXPECT_TRUE(classifier != trainedOn({{{1.0, 5.0}, 5}}));
  EXPECT_FALSE(classifier == BayesProbe());
  BayesProbe costly(classifier);
  vxClassifierTrainParamsBayesian params = paramsOf(Types());
  params.misclassificationCosts(vxClassifierCosts(2.0));
  costly.retrain(params);
  EXPECT_FALSE(classifier == costly);
  EXPECT_FALSE(classifier.isEquivalent(vx_ClassifierKNN()));
}

TEST(ClassifierBayesianTest, SharesItsModelsWithItsCopies) {
  const BayesProbe classifier = trainedOn(twoCategories());
  const BayesProbe copy(classifier);
  EXPECT_EQ(copy.categoryModels(), classifier.categoryModels());
  EXPECT_EQ(copy.trainParams(), classifier.trainParams());
  const vxPtrHandle<vx_Classifier> clone = classifier.clone();
  EXPECT_EQ(clone->referenceCount(), 1);
  EXPECT_TRUE(clone->isEquivalent(classifier));
  BayesProbe assigned;
  assigned = classifier;
  EXPECT_TRUE(assigned == classifier);
  assigned.untrain();
  EXPECT_TRUE(classifier.isTrained());
  EXPECT_TRUE(copy == classifier);
  BayesProbe again = trainedOn({{{1.0}, 3}});
  again = classifier;
  const BayesProbe& same = again;
  again = same;
  EXPECT_TRUE(again == classifier);
}

}  // namespace
