// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_BAYES_TWINS_H_
#define TESTS_SUPPORT_BAYES_TWINS_H_

#include <iosfwd>
#include <random>
#include <string>
#include <vector>

#include "tests/support/bayes_probe.h"
#include "tests/support/plain_bayes.h"
#include "vxclss/train_params_bayesian.h"

/// The Bayesian classifier and its plain twin, random operations on both, and runs that must agree
/// bit for bit.
class BayesTwins {
 public:
  /// What the measurements are like.
  enum Numbers {
    kContinuous,  // full mantissas
    kWhole,       // so that many are equal
    kOffset,      // around 1e4 with a spread of 1
    kScaled,      // in units of 1e-6 to 1e6, each measurement in its own
  };
  /// What the categories take together.
  enum Grouping {
    kSingles,
    kRandomSets,  // another one a category
    kPairs,
    kWholePattern,
    kInTurn,  // of those before
  };
  struct Scene {
    const char* name;
    long measurements;
    long labels;
    Numbers numbers;
    Grouping grouping;
    bool hasBinomials = false;
    bool hasInvalid = false;
    bool isComplete = false;  // every category has enough samples
  };

  BayesTwins(const Scene& scene, unsigned seed) : scene_(scene), random_(seed) {}

  void train();
  void retrain();
  /// A copy of a model shares its densities, so the classifier answers otherwise from now on.
  void adaptBehind();
  void trainIncrementally();
  void copy();
  void untrain();
  /// One of the above.
  void step();

  /// Runs of the classifier, of a copy, of a loaded one and of one with a host's densities, at
  /// every level of instructions.
  void expectSameRuns();

 private:
  bool isTrained_() const;
  std::string outcomeOfTwin_(const vxFeaturePattern& query) const;

  plain::Bayes::Params drawParams_();
  void drawSets_(long label, Grouping grouping, plain::DistributionTypes& types);
  vxClassifierFrequencies drawFrequencies_();
  vxClassifierTrainParamsBayesian libraryParams_() const;
  double drawMeasurement_(long index);
  vxFeaturePattern drawPattern_(long count);
  vxFeaturePattern drawQuery_();
  long pick_(long count);

  Scene scene_;
  std::mt19937_64 random_;
  plain::Bayes::Params params_;
  std::vector<vxFeaturePattern> patterns_;
  std::vector<long> labels_;
  BayesProbe classifier_;
  plain::Bayes twin_;
};

void PrintTo(const BayesTwins::Scene& scene, std::ostream* out);

#endif  // TESTS_SUPPORT_BAYES_TWINS_H_
