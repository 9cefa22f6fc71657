// SPDX-License-Identifier: MIT
// The search of vx_ClassifierKNN against its definition. Every stored pattern bears a label of its
// own, so that the categories of a result are exactly the neighbours.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/host_metric.h"
#include "tests/support/host_provider.h"
#include "tests/support/numbers.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_knn.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"

namespace {

/// Distances of the stored patterns from the query, and which patterns are its k neighbours.
struct SearchCase {
  const char* name;
  std::vector<double> distances;
  long k;
  std::vector<long> neighbours;
};

void PrintTo(const SearchCase& row, std::ostream* out) { *out << row.name; }

class NeighbourSearchTest : public testing::TestWithParam<SearchCase> {};

TEST_P(NeighbourSearchTest, FindsTheNeighbours) {
  std::vector<LabelledSample> samples;
  for (const double distance : GetParam().distances) {
    samples.push_back({{distance}, static_cast<long>(samples.size())});
  }
  vx_ClassifierKNN classifier;
  classifier.train(providerOf(samples), vxClassifierTrainParamsKNN(GetParam().k));
  vxClassifierResult result;
  classifier.run(vxFeaturePattern({0.0}, {}), result);
  EXPECT_EQ(labelsOf(result), GetParam().neighbours);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, NeighbourSearchTest,
    testing::Values(SearchCase{"OneNeighbour", {3, 1, 2}, 1, {1}},
                    SearchCase{"TwoNeighbours", {3, 1, 2}, 2, {1, 2}},
                    SearchCase{"AllWhereKIsTheirNumber", {3, 1, 2}, 3, {0, 1, 2}},
                    SearchCase{"AllWhereKIsGreater", {3, 1, 2}, 4, {0, 1, 2}},
                    SearchCase{"AllWhereKIsHuge", {3, 1, 2}, 2000000000, {0, 1, 2}},
                    SearchCase{"OnlyOneStored", {5}, 2147483647, {0}},
                    SearchCase{"TheFirstKeepsTheOnlyPlace", {1, 1}, 1, {0}},
                    SearchCase{"ATieStaysOutOfAFullList", {1, 1, 1}, 2, {0, 1}},
                    SearchCase{"ATieGoesInFrontInAListThatFills", {1, 1, 0}, 2, {1, 2}},
                    SearchCase{"OfThreeTiedTheFirstFallsOut", {2, 2, 2, 1}, 3, {1, 2, 3}},
                    SearchCase{"TiesInTheMiddleOfAFullListAreAdmitted", {1, 2, 1}, 2, {0, 2}},
                    SearchCase{"ATieWithAnInnerPlaceGoesInFrontOfIt", {1, 3, 1, 0}, 2, {2, 3}},
                    SearchCase{"InfinitiesFillAList", {kInfinity, kInfinity, kInfinity}, 2, {0, 1}},
                    SearchCase{"AnInfinityMakesWay", {kInfinity, kInfinity, 1}, 2, {1, 2}},
                    SearchCase{"AnInfinityIsAFarNeighbour", {kInfinity, 1}, 3, {0, 1}},
                    SearchCase{"ANaNEntersAFullList", {1, kNaN}, 1, {1}},
                    SearchCase{"ANaNMakesWayToAnything", {kNaN, kInfinity}, 1, {1}},
                    SearchCase{"ANaNInFrontHidesNoNearerOne", {1, kNaN, 0.5}, 2, {1, 2}},
                    SearchCase{"ANaNInFrontLeavesTheLastPlaceInForce", {1, kNaN, 2}, 2, {0, 1}},
                    SearchCase{"ANaNInTheLastPlaceAdmitsAll", {kNaN, 1, 7}, 2, {1, 2}},
                    SearchCase{"OnlyNaNs", {kNaN, kNaN, kNaN}, 2, {1, 2}}),
    [](const auto& row) { return row.param.name; });

/// The measurements of one kind of data.
struct DataKind {
  const char* name;
  double (*draw)(std::mt19937_64&);
};

void PrintTo(const DataKind& row, std::ostream* out) { *out << row.name; }

double drawWhole(std::mt19937_64& random) { return static_cast<double>(random() % 5) - 2.0; }
double drawMantissa(std::mt19937_64& random) {
  const double magnitudes[] = {1e-3, 1.0, 1.0, 1.0, 1e5};
  return std::ldexp(static_cast<double>(random()), -63) * magnitudes[random() % 5];
}
double drawSpecial(std::mt19937_64& random) {
  const double values[] = {0.0,
                           -0.0,
                           1.0,
                           -1.0,
                           0.1,
                           2.5,
                           1e308,
                           -1e308,
                           1e154,
                           kNaN,
                           -kInfinity,
                           kInfinity,
                           std::numeric_limits<double>::denorm_min()};
  return values[random() % std::size(values)];
}

/// Three classifiers beside their plain twins, and random operations on both.
class Sequence {
 public:
  Sequence(const DataKind& kind, std::uint64_t seed, bool ownLabels)
      : kind_(kind), random_(seed), ownLabels_(ownLabels), dimension_(pick_(4)) {}

  void step() {
    Slot& slot = slots_[static_cast<std::size_t>(pick_(3))];
    switch (pick_(16)) {
      case 0:
      case 1:
        train_(slot);
        break;
      case 2:
      case 3:
      case 4:
        trainIncremental_(slot);
        break;
      case 5:
      case 6:
        retrain_(slot);
        break;
      case 7:
        copy_(slot);
        break;
      case 8:
        storeAndLoad_(slot);
        break;
      case 9:
        if (pick_(3) != 0) break;
        slot.knn.untrain();
        slot.twin.untrain();
        break;
      case 10:
        if (pick_(4) != 0) break;
        slot.knn.trainStart(vxClassifierTrainParamsKNN(7));
        slot.twin.trainStart();
        break;
      default:
        run_(slot);
    }
    EXPECT_EQ(slot.knn.isTrained(), slot.twin.isTrained());
  }

  long runsThatAnswered() const { return runsThatAnswered_; }

 private:
  struct Slot {
    vx_ClassifierKNN knn;
    plain::Knn twin;
  };
  struct Params {
    vxClassifierTrainParamsKNN knn;
    plain::Knn::Params twin;
  };

  long pick_(long count) {
    return static_cast<long>(random_() % static_cast<std::uint64_t>(count));
  }
  bool rarely_() { return pick_(30) == 0; }

  vxFeaturePattern pattern_() {
    std::vector<double> measurements(static_cast<std::size_t>(dimension_ + (rarely_() ? 1 : 0)));
    for (double& measurement : measurements) measurement = kind_.draw(random_);
    std::vector<long> invalid;
    if (rarely_() && !measurements.empty()) invalid.push_back(0);
    return {measurements, invalid};
  }
  vxPtrHandle_const<vxFeaturePattern> shared_(const vxFeaturePattern& pattern) {
    return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(pattern));
  }

  long label_() {
    if (rarely_()) return -1;
    if (pick_(300) == 0) return -2;
    return ownLabels_ ? nextLabel_++ : pick_(4);
  }

  Params params_() {
    const long ks[] = {1, 1, 2, 3, 5, 8, 20, 1000, 2000000000};
    const double orders[] = {2.0, 2.0, 1.0, 3.0, 0.5, 1e6};
    const long k = ks[pick_(std::size(ks))];
    const double order = orders[pick_(std::size(orders))];
    vxClassifierCosts costs(static_cast<double>(pick_(3)));
    for (long i = pick_(4); i > 0; --i) {
      costs.misclassificationCostOverride(i, pick_(i), drawMantissaCost_());
    }
    if (pick_(6) != 0) {
      return {vxClassifierTrainParamsKNN(k, vxPatternDistanceMetricNorm(order), costs),
              {k, plain::norm(order), costs}};
    }
    const plain::Distance norm = plain::norm(order);
    const FarthestFirst metric(order);
    return {vxClassifierTrainParamsKNN(k, metric, costs),
            {k, [norm](const auto& a, const auto& b) { return -norm(a, b); }, costs}};
  }
  double drawMantissaCost_() { return std::fabs(drawMantissa(random_)); }

  void train_(Slot& slot) {
    dimension_ = pick_(4);
    plain::TrainingSet set;
    for (long n = pick_(10) == 0 ? 0 : pick_(40); n > 0; --n) {
      // Rare accidents would spoil most of the larger sets; a duplicate is a tie.
      vxFeaturePattern pattern = pattern_();
      const bool accident = pattern.numInvalid() != 0 || pattern.numMeasurements() != dimension_;
      if (accident && pick_(20) != 0) continue;
      const bool again = !set.patterns.empty() && pick_(5) == 0;
      set.patterns.push_back(again ? set.patterns.back() : shared_(pattern));
      set.labels.push_back(label_());
    }
    const Params params = params_();
    const HostProvider provider(set.patterns, set.labels);
    EXPECT_EQ(outcomeOf([&] { slot.knn.train(provider, params.knn); }),
              outcomeOf([&] { slot.twin.train(set, params.twin); }));
  }

  void trainIncremental_(Slot& slot) {
    const vxFeaturePattern pattern = pattern_();
    const long label = label_();
    EXPECT_EQ(outcomeOf([&] { slot.knn.trainIncremental(pattern, label); }),
              outcomeOf([&] { slot.twin.trainIncremental(pattern, label); }));
  }

  void retrain_(Slot& slot) {
    const Params params = params_();
    EXPECT_EQ(outcomeOf([&] { slot.knn.retrain(params.knn); }),
              outcomeOf([&] { slot.twin.retrain(params.twin); }));
  }

  void copy_(Slot& slot) {
    const Slot& from = slots_[static_cast<std::size_t>(pick_(3))];
    if (pick_(2) == 0) {
      slot.knn = from.knn;
    } else {
      slot.knn = dynamic_cast<const vx_ClassifierKNN&>(*from.knn.clone());
    }
    slot.twin = from.twin;
  }

  void storeAndLoad_(Slot& slot) {
    // Neither metric of a host nor its parameters can be archived.
    if (slot.knn.isTrained() && slot.twin.holdsTrainParams) {
      const auto held = slot.knn.trainParams();
      const auto metric = dynamic_cast<const vxClassifierTrainParamsKNN&>(*held).distanceMetric();
      if (dynamic_cast<const FarthestFirst*>(metric.get()) != nullptr) return;
    }
    vxPtrHandle<vx_Classifier> pointer = slot.knn.clone();
    vxPtrHandle<vx_Classifier> read;
    load(stored(pointer), read);
    slot.knn = dynamic_cast<const vx_ClassifierKNN&>(*read);
    slot.twin.params = {};
    if (slot.twin.isTrained()) {
      slot.twin.set = std::make_shared<plain::TrainingSet>(*slot.twin.set);
    }
  }

  void run_(Slot& slot) {
    for (int i = 0; i < 3; ++i) {
      const bool stored = i == 0 && slot.twin.isTrained() && !slot.twin.set->patterns.empty();
      const vxFeaturePattern query = stored ? *slot.twin.set->patterns[0] : pattern_();
      const long stopAt = pick_(8) == 0 ? 1 + pick_(40) : 0;
      const std::string outcome = outcomeOfRun(slot.knn, query, stopAt);
      ASSERT_EQ(outcome, outcomeOfRun(slot.twin, query, stopAt));
      if (outcome.rfind("done", 0) == 0) ++runsThatAnswered_;
    }
  }

  const DataKind& kind_;
  std::mt19937_64 random_;
  bool ownLabels_;
  long dimension_;
  long nextLabel_ = 0;
  Slot slots_[3];
  long runsThatAnswered_ = 0;
};

class NeighbourSearchSequenceTest : public testing::TestWithParam<DataKind> {};

TEST_P(NeighbourSearchSequenceTest, AnswersBitForBitLikeItsPlainTwin) {
  long runsThatAnswered = 0;
  for (std::uint64_t seed = 1; seed <= 200 && !HasFailure(); ++seed) {
    Sequence sequence(GetParam(), seed, seed % 4 != 0);
    for (int step = 0; step < 60 && !HasFailure(); ++step) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
      sequence.step();
    }
    runsThatAnswered += sequence.runsThatAnswered();
  }
  EXPECT_GT(runsThatAnswered, 1000);
}

INSTANTIATE_TEST_SUITE_P(Data, NeighbourSearchSequenceTest,
                         testing::Values(DataKind{"WholeNumbers", &drawWhole},
                                         DataKind{"FullMantissas", &drawMantissa},
                                         DataKind{"SpecialValues", &drawSpecial}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
