// SPDX-License-Identifier: MIT
// A classifier's archived form, and classifiers that no training would have made.

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_archive.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/outcome.h"
#include "tests/support/samples.h"
#include "tests/support/unknown_version.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"
#include "vxclss/train_params_bayesian.h"
#include "vxclss/train_params_knn.h"

namespace {

using Types = vxClassifierDistributionTypes;

vxClassifierTrainParamsBayesian params() {
  return {Types(), vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), {{}, {}}};
}

BayesProbe trained() {
  BayesProbe classifier;
  classifier.train(providerOf({{{1.0, 4.0}, 5}, {{7.0, 0.5}, 2}, {{2.0, 3.0}, 5}, {{8.0, 0.1}, 2}}),
                   params());
  return classifier;
}

/// A density of one measurement that can be evaluated.
vx_PDFMultivariateNormal density() {
  vx_PDFMultivariateNormal made;
  made.updateWithData({{{1.0}, {}}, {{2.0}, {}}});
  return made;
}

BayesProbe loadedFrom(const vxPersistent* held, const std::vector<long>& labels,
                      const std::vector<const vxPersistent*>& models) {
  BayesProbe classifier;
  load(bayesClassifierBytes(held, labels, models), classifier);
  return classifier;
}

TEST(ClassifierBayesianArchiveTest, IsArchivedFieldByField) {
  vxClassifierTrainParamsBayesian held = params();
  EXPECT_EQ(toHex(bayesClassifierBytes(nullptr, {5, 2}, {nullptr, nullptr})),
            packedHex("00 00 00 00 02000000 05000000 02000000 00 02000000 00 00"));
  BayesProbe untrained;
  EXPECT_EQ(storedHex(static_cast<vx_ClassifierBayesian&>(untrained)),
            packedHex("00 00 00 00 00000000 00 00000000"));

  BayesProbe classifier = trained();
  const auto models = classifier.categoryModels();
  EXPECT_EQ(toHex(stored(classifier)),
            toHex(bayesClassifierBytes(&held, {5, 2}, {models[0].get(), models[1].get()})));
}

TEST(ClassifierBayesianArchiveTest, AnswersBitForBitAsBeforeItWasStored) {
  BayesProbe classifier = trained();
  BayesProbe copy;
  load(stored(classifier), copy);
  EXPECT_TRUE(copy == classifier);
  EXPECT_EQ(copy.categoryLabels(), classifier.categoryLabels());
  EXPECT_EQ(stored(copy), stored(classifier));
  for (const vxFeaturePattern& query :
       {vxFeaturePattern({1.0 / 3, 0.1}, {}), vxFeaturePattern({1e9, 0}, {}),
        vxFeaturePattern({5, 5}, {1}), vxFeaturePattern({}, {})}) {
    EXPECT_EQ(outcomeOfRun(copy, query), outcomeOfRun(classifier, query));
  }
}

TEST(ClassifierBayesianArchiveTest, LoadsOverATrainedClassifierThatRan) {
  BayesProbe source = trained();
  BayesProbe target;
  target.train(providerOf({{{1.0}, 9}, {{2.0}, 9}}), params());
  outcomeOfRun(target, {{1.0}, {}});
  load(stored(source), target);
  EXPECT_EQ(outcomeOfRun(target, {{1.0, 2.0}, {}}), outcomeOfRun(source, {{1.0, 2.0}, {}}));
}

TEST(ClassifierBayesianArchiveTest, TrainsAgainAfterItWasLoaded) {
  BayesProbe source = trained();
  BayesProbe copy;
  load(stored(source), copy);
  copy.train(providerOf({{{1.0}, 2}, {{4.0}, 5}}), params());
  EXPECT_EQ(copy.categoryLabels(), (std::vector<long>{2, 5}));
}

TEST(ClassifierBayesianArchiveTest, RefusesAnUnknownVersionWithoutAName) {
  for (const std::size_t level : {0u, 1u}) {
    BayesProbe source = trained();
    std::string bytes = stored(source);
    bytes[level] = '\x01';
    BayesProbe target = trained();
    expectUnknownVersion([&] { load(bytes, target); }, "");
    EXPECT_TRUE(target == source);
  }
}

TEST(ClassifierBayesianArchiveTest, RefusesListsOfDifferentLength) {
  const vxClassifierTrainParamsBayesian held = params();
  const vx_CategoryModelBayesian model;
  for (const std::vector<long>& labels :
       {std::vector<long>{}, std::vector<long>{1}, std::vector<long>{1, 2, 3}}) {
    BayesProbe target = trained();
    EXPECT_THROW(load(bayesClassifierBytes(&held, labels, {&model, &model}), target),
                 vxArchive::Malformed);
    EXPECT_TRUE(target == trained());
    outcomeOfRun(target, {{1.0, 2.0}, {}});
  }
}

TEST(ClassifierBayesianArchiveTest, MeetsAnEmptyModelWithBadPointer) {
  const vxClassifierTrainParamsBayesian held = params();
  const vxFeaturePattern notAModel({1.0}, {});
  for (const vxPersistent* object :
       {static_cast<const vxPersistent*>(nullptr), static_cast<const vxPersistent*>(&notAModel)}) {
    BayesProbe classifier = loadedFrom(&held, {5}, {object});
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_TRUE(classifier.categoryModels()[0].isNull());
    vxClassifierResult result;
    expectThrows<vxBadPointer>([&] { classifier.run({{1.0}, {}}, result); }, L"");
    expectThrows<vxBadPointer>([&] { classifier.run({{1.0}, {0}}, result); }, L"");
    expectThrows<vxBadPointer>([&] { classifier.checkRunnable_(); }, L"");
    expectThrows<vxBadPointer>([&] { static_cast<void>(classifier == classifier); }, L"");
    EXPECT_FALSE(classifier == trained());
    expectThrows<vxBadPointer>([&] { classifier.train_(providerOf({{{1.0}, 5}}), held); }, L"");
    classifier.retrain(held);
    classifier.untrain();
    EXPECT_TRUE(classifier == BayesProbe());
  }
}

TEST(ClassifierBayesianArchiveTest, MeetsMissingParametersWithBadPointerAfterTheModels) {
  const vxClassifierTrainParamsKNN other(1);
  const vxFeaturePattern notParams({1.0}, {});
  const vx_PDFMultivariateNormal normal = density();
  const vx_CategoryModelBayesian model = bayesModel({5, 1, {{0}}, {&normal}});
  const vx_CategoryModelBayesian poor = bayesModel({5, 1, {{0}, {1}}, {&normal, nullptr}});
  for (const vxPersistent* held :
       {static_cast<const vxPersistent*>(nullptr), static_cast<const vxPersistent*>(&notParams),
        static_cast<const vxPersistent*>(&other)}) {
    const BayesProbe classifier = loadedFrom(held, {5}, {&model});
    vxClassifierResult result;
    const AttentionCounter counter;
    expectThrows<vxBadPointer>([&] { classifier.run({{1.0}, {}}, result); }, L"");
    EXPECT_EQ(counter.polls(), 2);
    const vx_PDFMultivariateNormal empty;
    const vx_CategoryModelBayesian untaught = bayesModel({5, 1, {{0}}, {&empty}});
    EXPECT_THROW(loadedFrom(held, {5}, {&untaught}).run({{1.0}, {}}, result),
                 vxClassifierDefs::InsufficientTrainData);
    expectThrows<vxBadPointer>([&] { BayesProbe(classifier).retrain_(params()); }, L"");
  }
}

TEST(ClassifierBayesianArchiveTest, TakesTheLabelFromTheModel) {
  const vxClassifierTrainParamsBayesian held = params();
  const vx_PDFMultivariateNormal normal = density();
  const vx_CategoryModelBayesian model = bayesModel({5, 1, {{0}}, {&normal}});
  vxClassifierResult result;
  loadedFrom(&held, {-3}, {&model}).run({{1.0}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{5}));
  const vx_CategoryModelBayesian negative = bayesModel({-1, 1, {{0}}, {&normal}});
  expectThrows<vxClassifierDefs::BadLabel>(
      [&] {
        loadedFrom(&held, {5}, {&negative}).run({{1.0}, {}}, result);
      },
      L"Category labels must be >= 0");
}

TEST(ClassifierBayesianArchiveTest, RefusesNegativeMeasurementsWhenItRuns) {
  const vxClassifierTrainParamsBayesian held = params();
  const vx_PDFMultivariateNormal normal = density();
  vx_PDFMultivariateNormal pair;
  pair.updateWithData({{{1.0, 2.0}, {}}, {{2.0, 5.0}, {}}});
  const vx_CategoryModelBayesian models[] = {
      bayesModel({5, 1, {{-1}}, {&normal}}),
      bayesModel({5, 2, {{0, -2147483647 - 1}}, {&pair}}),
  };
  for (const vx_CategoryModelBayesian& model : models) {
    const BayesProbe classifier = loadedFrom(&held, {5}, {&model});
    for (int run = 0; run < 2; ++run) {
      vxClassifierResult result;
      expectThrows<vxClassifierDefs::BadIndex>(
          [&] {
            classifier.run({{1.0, 2.0}, {}}, result);
          },
          L"Feature measurement indices must be >= 0");
    }
    EXPECT_THROW(classifier.checkRunnable_(), vxClassifierDefs::BadIndex);
  }
}

TEST(ClassifierBayesianArchiveTest, TakesNoMemoryForAMereNumberOfMeasurements) {
  const vxClassifierTrainParamsBayesian held = params();
  const vx_PDFMultivariateNormal normal = density();
  for (const long number : {2147483647L, 1000000000L, -1L, -2147483647L - 1}) {
    const vx_CategoryModelBayesian model = bayesModel({5, number, {{0}}, {&normal}});
    const BayesProbe classifier = loadedFrom(&held, {5}, {&model});
    const AllocationMeter meter;
    EXPECT_NO_THROW(classifier.checkRunnable_());
    EXPECT_LT(meter.bytes(), 20000u);
  }
  const vx_CategoryModelBayesian far = bayesModel({5, 2147483647, {{2147483647}}, {&normal}});
  const BayesProbe classifier = loadedFrom(&held, {5}, {&far});
  const AllocationMeter meter;
  vxClassifierResult result;
  classifier.run({{1.0}, {}}, result);
  EXPECT_LT(meter.bytes(), 20000u);
}

TEST(ClassifierBayesianArchiveTest, ChecksItselfWithValidZerosUpToItsNumberOfMeasurements) {
  // Two samples at measurement 0, one at measurement 2: what the check looks at decides.
  const vxClassifierTrainParamsBayesian held = params();
  const vx_PDFMultivariateNormal normal = density();
  vx_PDFMultivariateNormal once;
  once.updateWithData({{{1.0}, {}}});
  for (const long number : {0L, 1L, 2L}) {
    const vx_CategoryModelBayesian model = bayesModel({5, number, {{0}, {2}}, {&normal, &once}});
    EXPECT_NO_THROW(loadedFrom(&held, {5}, {&model}).checkRunnable_());
  }
  for (const long number : {3L, 4L, 1000L}) {
    const vx_CategoryModelBayesian model = bayesModel({5, number, {{0}, {2}}, {&normal, &once}});
    EXPECT_THROW(loadedFrom(&held, {5}, {&model}).checkRunnable_(),
                 vxClassifierDefs::InsufficientTrainData);
  }
}

TEST(ClassifierBayesianArchiveTest, RunsWithNegativeTrials) {
  const vxClassifierTrainParamsBayesian held = params();
  for (const long trials : {-1L, -2147483647L - 1}) {
    vx_PDFBinomial binomial({{1.0}, {}});
    load(binomialBytes(trials, 0.25, 1.0), binomial);
    const vx_CategoryModelBayesian model = bayesModel({5, 1, {{0}}, {&binomial}});
    BayesProbe classifier = loadedFrom(&held, {5}, {&model});
    for (const double x : {0.0, 1.0, -1e300, 0.5}) {
      vxClassifierResult result;
      EXPECT_NO_THROW(classifier.run({{x}, {}}, result));
    }
  }
}

TEST(ClassifierBayesianArchiveTest, RefusesACountBeyondItsBytes) {
  std::string bytes = bayesClassifierBytes(nullptr, {}, {});
  for (const std::size_t count : {4u, 9u}) {
    std::string many = bytes;
    for (std::size_t i = 0; i < 4; ++i) many.at(count + i) = '\x7f';
    BayesProbe target = trained();
    const AllocationMeter meter;
    EXPECT_THROW(load(many, target), vxArchive::Errors);
    EXPECT_LT(meter.bytes(), 20000u);
  }
}

}  // namespace
