// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_archive.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/numbers.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_bayes.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"
#include "vxclss/train_params_bayesian.h"
#include "vxfoundation/random.h"

namespace {

using Types = vxClassifierDistributionTypes;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotTrained;

vxClassifierTrainParamsBayesian paramsOf(const Types& types = Types()) {
  return {types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), {{}, {}}};
}

/// A density of a host that gives one value whatever it is asked.
class FixedDensity : public vx_ProbabilityDensityFunction {
 public:
  explicit FixedDensity(double value = 0.0) : value_(value) {}
  double logValue(const vxFeaturePattern&) const override { return value_; }
  bool isEquivalent(const vx_ProbabilityDensityFunction&) const override { return false; }
  void updateWithData(const std::vector<vxFeaturePattern>&) override {}
  void clear() override {}

 protected:
  void dispatchSerialize(vxArchive& archive) override { archive || value_; }

 private:
  double value_;
};

/// A classifier whose category i has the log-likelihood `scores[i]` and the label 10 + i.
BayesProbe withScores(const std::vector<double>& scores) {
  const vx_Instantiator registration(typeid(FixedDensity),
                                     [] { return static_cast<vxPersistent*>(new FixedDensity); });
  std::vector<vx_CategoryModelBayesian> models;
  std::vector<const vxPersistent*> pointers;
  std::vector<long> labels;
  models.reserve(scores.size());
  for (const double score : scores) {
    const FixedDensity density(score);
    labels.push_back(10 + static_cast<long>(labels.size()));
    models.push_back(bayesModel({labels.back(), 1, {{0}}, {&density}}));
    pointers.push_back(&models.back());
  }
  const vxClassifierTrainParamsBayesian params = paramsOf();
  BayesProbe classifier;
  load(bayesClassifierBytes(&params, labels, pointers), classifier);
  return classifier;
}

vxClassifierResult runOf(const vx_ClassifierBayesian& classifier, const vxFeaturePattern& pattern) {
  vxClassifierResult result;
  classifier.run(pattern, result);
  return result;
}

const vxClassifierCategoryResult& of(const vxClassifierResult& result, long label) {
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    if (category.categoryLabel() == label) return category;
  }
  throw HostError();
}

std::vector<LabelledSample> generated(long seed, long categories, long d, long count) {
  vxRandomGaussian random(seed);
  std::vector<LabelledSample> samples;
  for (long i = 0; i < count; ++i) {
    LabelledSample sample{{}, i % categories};
    for (long m = 0; m < d; ++m) {
      const double common = m % 2 == 0 ? 0.0 : sample.measurements.back();
      sample.measurements.push_back(0.6 * common +
                                    random.next(static_cast<double>(sample.label * (m % 3)), 1.5));
    }
    samples.push_back(sample);
  }
  return samples;
}

TEST(ClassifierBayesianRunTest, ScoresCategoriesRelativeToTheBest) {
  const vxClassifierResult result = runOf(withScores({-10.0, -12.0}), {{0.0}, {}});
  EXPECT_EQ(result.matchScoreFactorLog(), 10.0);
  EXPECT_EQ(of(result, 10).matchScore(), 1.0);
  EXPECT_EQ(of(result, 11).matchScore(), std::exp(-2.0));
  EXPECT_EQ(of(result, 10).classScore(), 1.0 / 2.0 / (1.0 / 2.0 + std::exp(-2.0) / 2.0));
  EXPECT_EQ(labelsOf(result), (std::vector<long>{10, 11}));
}

TEST(ClassifierBayesianRunTest, TakesScoresOfAnySizeAndSign) {
  const vxClassifierResult result = runOf(withScores({-1e300, 1e5, 1e5 - 3.0}), {{0.0}, {}});
  EXPECT_EQ(result.matchScoreFactorLog(), -1e5);
  EXPECT_EQ(of(result, 10).matchScore(), 0.0);
  EXPECT_EQ(of(result, 11).matchScore(), 1.0);
  EXPECT_EQ(of(result, 12).matchScore(), std::exp(-3.0));
}

TEST(ClassifierBayesianRunTest, LetsNoNaNWin) {
  const double nan = std::nan("");
  const vxClassifierResult result = runOf(withScores({nan, -4.0}), {{0.0}, {}});
  EXPECT_EQ(result.matchScoreFactorLog(), 4.0);
  EXPECT_TRUE(std::isnan(of(result, 10).matchScore()));
  EXPECT_EQ(of(result, 11).matchScore(), 1.0);
  EXPECT_EQ(runOf(withScores({nan, nan}), {{0.0}, {}}).matchScoreFactorLog(), kInfinity);
  EXPECT_EQ(runOf(withScores({-kInfinity, 3.0}), {{0.0}, {}}).matchScoreFactorLog(), -3.0);
}

TEST(ClassifierBayesianRunTest, HasNoNegativeZeroFactor) {
  EXPECT_FALSE(std::signbit(runOf(withScores({0.0}), {{0.0}, {}}).matchScoreFactorLog()));
  EXPECT_FALSE(std::signbit(runOf(withScores({-0.0}), {{0.0}, {}}).matchScoreFactorLog()));
}

TEST(ClassifierBayesianRunTest, RefusesToRunUntrained) {
  vxClassifierResult result;
  expectThrows<NotTrained>(
      [&] {
        BayesProbe().run({{0.0}, {}}, result);
      },
      L"Classifier tool must be trained before running.");
}

TEST(ClassifierBayesianRunTest, RefusesLabelsThatAreNotUnique) {
  const vxClassifierTrainParamsBayesian params = paramsOf();
  const vx_CategoryModelBayesian model = bayesModel({4, 0, {}, {}});
  BayesProbe classifier;
  load(bayesClassifierBytes(&params, {4, 5}, {&model, &model}), classifier);
  expectThrows<BadParams>(
      [&] {
        runOf(classifier, {{}, {}});
      },
      L"The category labels of the match results must be unique.");
}

TEST(ClassifierBayesianRunTest, PollsBeforeEachModelAndOnceAfter) {
  const BayesProbe classifier = withScores({-1.0, -2.0, -3.0, -4.0});
  vxClassifierResult result;
  {
    // The weighting of a result polls for each category too.
    const AttentionCounter counter;
    classifier.run_({{0.0}, {}}, result);
    EXPECT_EQ(counter.polls(), 5 + 4);
  }
  const vxClassifierResult before(result);
  for (long stopAt = 1; stopAt <= 9; ++stopAt) {
    const AttentionCounter counter(stopAt);
    EXPECT_THROW(classifier.run_({{1.0}, {}}, result), vxStopRequested);
    EXPECT_EQ(counter.polls(), stopAt);
    EXPECT_EQ(result, before);
  }
}

TEST(ClassifierBayesianRunTest, PollsBeforeItFails) {
  BayesProbe classifier;
  classifier.train(providerOf({{{1.0}, 0}, {{2.0}, 0}, {{4.0}, 1}}), paramsOf());
  const std::string outcome = outcomeOfRun(classifier, {{1.0}, {}});
  EXPECT_EQ(outcome.substr(0, outcome.find("; ")),
            "vxClassifierDefs::InsufficientTrainData: No valid data has been used to train the "
            "distribution for category 1 after 2 polls");
}

TEST(ClassifierBayesianRunTest, ReportsADensityWithTooFewSamples) {
  struct Row {
    const char* name;
    Types::DistributionType type;
    std::vector<LabelledSample> samples;
    const wchar_t* text;
  };
  const Row rows[] = {
      {"normal",
       Types::eNormal,
       {{{0.5}, 3}},
       L"No valid data has been used to train the distribution for category 3"},
      {"second category",
       Types::eNormal,
       {{{0.5}, 3}, {{0.1}, 3}, {{0.2}, 8}},
       L"No valid data has been used to train the distribution for category 8"},
      {"never valid",
       Types::eNormal,
       {{{0.5}, 3, {0}}, {{0.25}, 3, {0}}},
       L"No valid data has been used to train the distribution for category 3"},
      {"binomial",
       Types::eBinomial,
       {{{0.5}, 12}},
       L"Insufficient data has been used to train the distribution for category 12"},
      {"binomial without variance",
       Types::eBinomial,
       {{{0.5}, 0}, {{0.5}, 0}},
       L"Insufficient data has been used to train the distribution for category 0"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    BayesProbe classifier;
    classifier.train(providerOf(row.samples), paramsOf(Types(row.type)));
    expectThrows<InsufficientTrainData>([&] { classifier.checkRunnable_(); }, row.text);
    vxClassifierTool tool;
    expectThrows<InsufficientTrainData>(
        [&] { tool.train(providerOf(row.samples), paramsOf(Types(row.type))); }, row.text);
    EXPECT_FALSE(tool.isTrained());
    vxClassifierTrainParamsBayesian lenient = paramsOf(Types(row.type));
    lenient.throwIfNotReady(false);
    tool.train(providerOf(row.samples), lenient);
    EXPECT_TRUE(tool.isTrained());
  }
}

TEST(ClassifierBayesianRunTest, ChecksItselfWithZerosOfTheFirstModelsNumber) {
  // Zero is above a maximum of -1.
  Types types(Types::eBinomial);
  vxClassifierTrainParamsBayesian params = paramsOf(types);
  params.maxMeasurementValues({{-1.0}, {}});
  vxClassifierTool tool;
  const auto data = providerOf({{{-2.0}, 0}, {{-3.0}, 0}});
  expectThrows<BadParams>([&] { tool.train(data, params); },
                          L"Feature measurement must be <= specified maximum value");
}

TEST(ClassifierBayesianRunTest, AgreesWithLongDoubleOnGeneratedData) {
  for (const long d : {1L, 2L, 5L, 8L}) {
    SCOPED_TRACE("dimension " + std::to_string(d));
    const std::vector<LabelledSample> samples = generated(d, 3, d, 150);
    Types types;
    std::vector<long> all;
    for (long m = 0; m < d; ++m) all.push_back(m);
    for (long label = 0; label < 3; ++label) types.setDependent(label, all);
    BayesProbe classifier;
    classifier.train(providerOf(samples), paramsOf(types));

    std::vector<plain::Moments> moments;
    for (long label = 0; label < 3; ++label) {
      std::vector<vx_KernelPattern> own;
      for (const LabelledSample& sample : samples) {
        if (sample.label == label) own.push_back({sample.measurements, {}});
      }
      moments.push_back(plain::momentsOf(own));
    }
    for (std::size_t i = 0; i < samples.size(); i += 7) {
      const vxClassifierResult result = runOf(classifier, {samples[i].measurements, {}});
      std::vector<plain::Real> likelihoods;
      plain::Real sum = 0;
      for (const plain::Moments& own : moments) {
        likelihoods.push_back(std::exp(plain::logNormal(own, {samples[i].measurements, {}})));
        sum += likelihoods.back();
      }
      for (long label = 0; label < 3; ++label) {
        const plain::Real share = likelihoods[static_cast<std::size_t>(label)] / sum;
        EXPECT_NEAR(of(result, label).classScore(), static_cast<double>(share), 1e-12);
        EXPECT_NEAR(of(result, label).expectedCost(), static_cast<double>(1 - share), 1e-12);
      }
    }
  }
}

std::vector<LabelledSample> iris() {
  std::ifstream file(std::string(VXCLSS_SOURCE_TREE) + "/examples/data/iris.csv");
  std::vector<LabelledSample> samples;
  std::vector<std::string> names;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    LabelledSample sample{{}, 0};
    std::string field;
    for (int m = 0; m < 4 && std::getline(fields, field, ','); ++m) {
      sample.measurements.push_back(std::stod(field));
    }
    std::getline(fields, field);
    if (names.empty() || names.back() != field) names.push_back(field);
    sample.label = static_cast<long>(names.size()) - 1;
    samples.push_back(sample);
  }
  return samples;
}

TEST(ClassifierBayesianRunTest, SeparatesIrisAsATextbookClassifierDoes) {
  // Resubstitution: 6 of 150 wrong with independent measurements, 3 with full covariances.
  const std::vector<LabelledSample> samples = iris();
  ASSERT_EQ(samples.size(), 150u);
  for (const bool isFull : {false, true}) {
    Types types;
    if (isFull) {
      for (long label = 0; label < 3; ++label) types.setDependent(label, {0, 1, 2, 3});
    }
    vxClassifierTool tool;
    tool.train(providerOf(samples), paramsOf(types));
    long wrong = 0;
    for (const LabelledSample& sample : samples) {
      vxClassifierResult result;
      tool.run({sample.measurements, {}}, result);
      if (result.categoryResults().front().categoryLabel() != sample.label) ++wrong;
    }
    EXPECT_EQ(wrong, isFull ? 3 : 6);
  }
}

}  // namespace
