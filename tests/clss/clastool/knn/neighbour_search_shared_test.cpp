// SPDX-License-Identifier: MIT
// Random operations on classifiers, on the patterns, training sets and metrics that they share with
// their host, and on their plain twins.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/clss/clastool/knn/knn_data.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_knn.h"
#include "tests/support/samples.h"
#include "tests/support/simd_levels.h"
#include "vxclss/classifier_knn.h"

namespace {

using knn_data::Random;
using Pattern = vxPtrHandle<vxFeaturePattern>;
using Provider = vxPtrHandle<vxClassifierDataProviderMemory>;
using Norm = vxPtrHandle<vxPatternDistanceMetricNorm>;

/// All clones are one norm, on which its maker keeps a hand.
class OneNorm : public vxPatternDistanceMetricNorm {
 public:
  explicit OneNorm(const Norm& norm) : vxPatternDistanceMetricNorm(2.0), norm_(norm) {}
  vxPtrHandle<vxPatternDistanceMetric> clone() const override { return norm_; }

 private:
  Norm norm_;
};

class Host {
 public:
  Host(const knn_data::Kind& kind, std::uint64_t seed) : kind_(kind), random_(seed) {
    dimension_ = static_cast<std::size_t>(1 + pick_(9));
    for (int i = 0; i < 60; ++i) pool_.emplace_back(new vxFeaturePattern(drawn_()));
    for (int i = 0; i < 3; ++i) norms_.emplace_back(new vxPatternDistanceMetricNorm(order_()));
  }

  void step() {
    Slot& slot = slots_[pick_(3)];
    switch (pick_(14)) {
      case 0:
        train_(slot);
        break;
      case 1:
        for (long n = pick_(40); n > 0 && slot.knn.isTrained(); --n) trainIncremental_(slot);
        break;
      case 2:
        retrain_(slot);
        break;
      case 3:
        slot = slots_[pick_(3)];
        break;
      case 4:
        storeAndLoad_(slot);
        break;
      case 5:
        changePattern_();
        break;
      case 6:
      case 7:
        changeSet_(slot);
        break;
      case 8:
        norms_[pick_(3)]->order(order_());
        break;
      case 9:
        // Copies that live and die beside the originals.
        if (slot.knn.isTrained()) copies_.push_back(*slot.knn.data());
        if (pick_(3) == 0) copies_.clear();
        break;
      case 10:
        if (pick_(3) != 0) break;
        slot.knn.untrain();
        slot.twin.untrain();
        slot.hand = Provider();
        break;
      default:
        run_(slot);
    }
  }

  long runsThatAnswered() const { return runsThatAnswered_; }

 private:
  struct Slot {
    vx_ClassifierKNN knn;
    plain::Knn twin;
    Provider hand;  // the stored set, where the host has a hand on it
  };

  std::size_t pick_(std::size_t count) { return random_() % count; }

  vxFeaturePattern drawn_() {
    std::vector<double> x;
    for (std::size_t j = 0; j < dimension_; ++j) x.push_back(kind_.draw(random_, j));
    return {x, {}};
  }
  const Pattern& pooled_() { return pool_[pick_(pool_.size())]; }
  double order_() {
    const double orders[] = {2.0, 2.0, 2.0, 1.0, 1.0, 3.0, 0.5, 1e3};
    return orders[pick_(std::size(orders))];
  }

  plain::TrainingSet set_() {
    plain::TrainingSet set;
    for (std::size_t n = pick_(4) == 0 ? pick_(4) : pick_(110); n > 0; --n) {
      set.patterns.push_back(pick_(2) == 0 ? vxPtrHandle_const<vxFeaturePattern>(pooled_())
                                           : sharedPattern(drawn_().featureMeasurements(true)));
      set.labels.push_back(nextLabel_++);
    }
    return set;
  }

  struct Params {
    vxClassifierTrainParamsKNN knn;
    plain::Knn::Params twin;
  };
  Params params_() {
    const long ks[] = {1, 1, 2, 3, 5, 9, 33, 64};
    const long k = ks[pick_(std::size(ks))];
    const Norm norm = norms_[pick_(3)];
    const auto distance = [norm](const auto& a, const auto& b) {
      return plain::norm(norm->order())(a, b);
    };
    const vxClassifierCosts costs(1.0);
    return {vxClassifierTrainParamsKNN(k, OneNorm(norm), costs), {k, distance, costs}};
  }

  void train_(Slot& slot) {
    const Params params = params_();
    const plain::TrainingSet set = set_();
    vxClassifierDataProviderMemory data;
    // An earlier change may have left patterns of several lengths, or invalid ones.
    if (outcomeOf([&] { data.data(set.patterns, set.labels); }) != "done") return;
    EXPECT_EQ(outcomeOf([&] { slot.knn.train(data, params.knn); }),
              outcomeOf([&] { slot.twin.train(set, params.twin); }));
    slot.hand = Provider();
  }

  void trainIncremental_(Slot& slot) {
    const vxFeaturePattern pattern = pick_(9) == 0 ? *pooled_() : drawn_();
    const long label = nextLabel_++;
    EXPECT_EQ(outcomeOf([&] { slot.knn.trainIncremental(pattern, label); }),
              outcomeOf([&] { slot.twin.trainIncremental(pattern, label); }));
    if (pick_(12) == 0) run_(slot);
  }

  void retrain_(Slot& slot) {
    const Params params = params_();
    EXPECT_EQ(outcomeOf([&] { slot.knn.retrain(params.knn); }),
              outcomeOf([&] { slot.twin.retrain(params.twin); }));
  }

  void storeAndLoad_(Slot& slot) {
    if (!slot.knn.isTrained()) return;
    vxPtrHandle_const<vxClassifierDataProviderMemory> data = slot.knn.data();
    vxPtrHandle<vx_Classifier> pointer = slot.knn.clone();
    vxPtrHandle<vx_Classifier> read;
    slot.hand = Provider();
    load(stored(data, pointer), slot.hand, read);
    slot.knn = dynamic_cast<const vx_ClassifierKNN&>(*read);
    if (pick_(2) == 0) slot.hand = Provider();
    slot.twin.params = {};
    auto set = std::make_shared<plain::TrainingSet>(*slot.twin.set);
    for (auto& pattern : set->patterns) pattern.reset(new vxFeaturePattern(*pattern));
    slot.twin.set = set;
  }

  void changePattern_() {
    vxFeaturePattern& pattern = *pooled_();
    std::vector<double> x = drawn_().featureMeasurements(true);
    const std::size_t way = pick_(12);
    if (way == 0) {
      x.push_back(1.0);
    } else if (way == 1) {
      pattern = vxFeaturePattern(x, {0});
    } else if (way == 2) {
      x[0] = std::numeric_limits<double>::quiet_NaN();
    } else if (way == 3) {
      *pooled_() = std::move(pattern);
    } else if (way == 4) {
      std::swap(pattern, *pooled_());
    } else if (way == 5) {
      vxFeaturePattern other(x, {});
      load(stored(static_cast<vxPersistent&>(other)), static_cast<vxPersistent&>(pattern));
    }
    if (way == 1 || (way >= 3 && way <= 5)) {
      // Most accidents are soon made good, or no run would answer any more.
      if (pick_(3) != 0) return;
      for (const Pattern& each : pool_) {
        if (each->numInvalid() != 0 || each->numMeasurements() != static_cast<long>(dimension_)) {
          *each = drawn_();
        }
      }
    } else {
      pattern = vxFeaturePattern(x, {});
    }
  }

  void changeSet_(Slot& slot) {
    if (slot.hand.isNull()) return;
    vxClassifierDataProviderMemory& data = *slot.hand;
    const auto addPattern = [&] {
      const Pattern pattern = pooled_();
      const long label = nextLabel_++;
      if (outcomeOf([&] { data.addData(pattern, label); }) != "done") return;
      slot.twin.set->patterns.push_back(pattern);
      slot.twin.set->labels.push_back(label);
    };
    if (pick_(2) == 0) {
      for (std::size_t n = pick_(30); n > 0; --n) addPattern();
      return;
    }
    const plain::TrainingSet set = set_();
    vxClassifierDataProviderMemory other;
    if (outcomeOf([&] { other.data(set.patterns, set.labels); }) != "done") return;
    switch (pick_(5)) {
      case 0:
        data.data(set.patterns, set.labels);
        break;
      case 1:
        data = other;
        break;
      case 2:
        data = std::move(other);
        break;
      case 3:
        std::swap(data, other);
        break;
      default: {
        // The set's packed form goes with a set of its own, and its patterns come back.
        vxClassifierDataProviderMemory kept(std::move(data));
        data = std::move(kept);
        return;
      }
    }
    *slot.twin.set = set;
  }

  void run_(Slot& slot) {
    const bool hasSome = slot.twin.isTrained() && !slot.twin.set->patterns.empty();
    const vxFeaturePattern query =
        hasSome && pick_(3) == 0 ? *slot.twin.set->patterns[pick_(slot.twin.set->patterns.size())]
                                 : drawn_();
    const long stopAt = pick_(6) == 0 ? static_cast<long>(1 + pick_(120)) : 0;
    const std::string attended = outcomeOfRun(slot.twin, query, stopAt);
    const auto unattended = [&](const auto& classifier) {
      vxClassifierResult result;
      const std::string outcome = outcomeOf([&] { classifier.run(query, result); });
      return outcome + bitsOf(result);
    };
    const std::string expected = unattended(slot.twin);
    atEverySimdLevel([&] {
      ASSERT_EQ(outcomeOfRun(slot.knn, query, stopAt), attended);
      ASSERT_EQ(unattended(slot.knn), expected);
    });
    if (expected.rfind("done", 0) == 0) ++runsThatAnswered_;
  }

  const knn_data::Kind& kind_;
  Random random_;
  std::size_t dimension_ = 1;
  std::vector<Pattern> pool_;
  std::vector<Norm> norms_;
  long nextLabel_ = 0;
  Slot slots_[3];
  std::vector<vxClassifierDataProviderMemory> copies_;
  long runsThatAnswered_ = 0;
};

TEST(NeighbourSearchSharedTest, AnswersBitForBitLikeItsPlainTwin) {
  long runsThatAnswered = 0;
  std::uint64_t seed = 0;
  for (const knn_data::Kind& kind : knn_data::kinds()) {
    for (int i = 0; i < 3; ++i) {
      Host host(kind, ++seed);
      for (int step = 0; step < 100 && !HasFailure(); ++step) {
        SCOPED_TRACE(std::string(kind.name) + ", seed " + std::to_string(seed) + ", step " +
                     std::to_string(step));
        host.step();
      }
      runsThatAnswered += host.runsThatAnswered();
    }
  }
  EXPECT_GT(runsThatAnswered, 800);
}

/// 200 patterns, the number of each as label, all nearest to themselves.
vxClassifierDataProviderMemory line() {
  std::vector<LabelledSample> samples;
  for (long i = 0; i < 200; ++i) samples.push_back({{static_cast<double>(i), 0.0, 1.0}, i});
  return providerOf(samples);
}

std::vector<long> neighbours(const vx_ClassifierKNN& classifier, double x) {
  vxClassifierResult result;
  classifier.run({{x, 0.0, 1.0}, {}}, result);
  return labelsOf(result);
}

TEST(NeighbourSearchSharedTest, PollsOncePerStoredPatternAndStopsAtAnyOfThem) {
  vx_ClassifierKNN classifier;
  classifier.train(line(), vxClassifierTrainParamsKNN(2));
  const std::string before =
      bitsOf(vxClassifierResult({vxClassifierCategoryResult(77, 0.5, 1.0, 3.0)}, 0.25));
  atEverySimdLevel([&] {
    // One more for each of the two categories of the result.
    EXPECT_EQ(outcomeOfRun(classifier, {{7.1, 0.0, 1.0}, {}}).rfind("done after 202 polls", 0), 0u);
    for (long stopAt = 1; stopAt <= 200; ++stopAt) {
      EXPECT_EQ(outcomeOfRun(classifier, {{7.1, 0.0, 1.0}, {}}, stopAt),
                "vxStopRequested: " + vfNarrow(vxStopRequested().message()) + " after " +
                    std::to_string(stopAt) + " polls; " + before);
    }
  });
}

TEST(NeighbourSearchSharedTest, SurvivesASearchOfTheAttentionHandler) {
  struct Context {
    vx_ClassifierKNN other;
    bool isBusy = false;
  } context;
  context.other.train(line(), vxClassifierTrainParamsKNN(3));
  vx_ClassifierKNN classifier;
  classifier.train(line(), vxClassifierTrainParamsKNN(1));
  vfSetAttentionHandler(
      [](void* pointer) {
        auto* const inner = static_cast<Context*>(pointer);
        if (inner->isBusy) return false;
        inner->isBusy = true;
        neighbours(inner->other, 150.0);
        inner->isBusy = false;
        return false;
      },
      &context);
  const std::vector<long> found = neighbours(classifier, 7.0);
  vfSetAttentionHandler(nullptr, nullptr);
  EXPECT_EQ(found, (std::vector<long>{7}));
}

TEST(NeighbourSearchSharedTest, OutlivesASetThatIsMovedToItself) {
  vx_ClassifierKNN original;
  original.train(line(), vxClassifierTrainParamsKNN(1));
  vxPtrHandle_const<vxClassifierDataProviderMemory> set = original.data();
  vxPtrHandle<vx_Classifier> pointer = original.clone();
  Provider data;
  vxPtrHandle<vx_Classifier> classifier;
  load(stored(set, pointer), data, classifier);
  const auto& knn = dynamic_cast<const vx_ClassifierKNN&>(*classifier);
  EXPECT_EQ(neighbours(knn, 7.0), (std::vector<long>{7}));
  vxClassifierDataProviderMemory& same = *data;
  *data = std::move(same);
  // What is left is valid, whatever it is.
  data->data({}, {});
  data->addData(sharedPattern({1.0, 0.0, 1.0}), 4);
  EXPECT_EQ(neighbours(knn, 7.0), (std::vector<long>{4}));
}

}  // namespace
