// SPDX-License-Identifier: MIT
// The search against its definition, at every level of instructions, on data that rounding, cutting
// and clamping might harm. Each stored pattern bears a label of its own, so that the categories of
// a result are exactly the neighbours.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "clastool/clastool/code_grid.h"
#include "tests/clss/clastool/knn/knn_data.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_knn.h"
#include "tests/support/samples.h"
#include "tests/support/simd_levels.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"

namespace {

using knn_data::Random;

plain::TrainingSet setOf(const vxClassifierDataProviderMemory& data) {
  plain::TrainingSet set;
  for (long i = 0; i < data.numPatterns(); ++i) {
    set.patterns.push_back(data.featurePattern(i));
    set.labels.push_back(data.categoryLabel(i));
  }
  return set;
}

/// The plain distance from one query, worked out once for each of `count` stored patterns: the
/// definition asks for them in turn, search by search.
plain::Distance remembered(double order, std::size_t count) {
  struct Known {
    std::vector<double> distances;
    std::size_t asked = 0;
  };
  const auto known = std::make_shared<Known>();
  const plain::Distance distance = plain::norm(order);
  return [=](const vxFeaturePattern& query, const vxFeaturePattern& stored) {
    const std::size_t i = known->asked++ % count;
    if (known->distances.size() < count) known->distances.push_back(distance(query, stored));
    return known->distances[i];
  };
}

/// Searches with a classifier of `data` for the neighbours of all queries.
void expectPlainNeighbours(const vxClassifierDataProviderMemory& data,
                           const knn_data::Rows& queries, double order,
                           const std::vector<long>& ks) {
  const vxClassifierCosts costs(1.0);
  const plain::TrainingSet set = setOf(data);
  plain::Knn twin;
  twin.train(set, {1, plain::norm(order), costs});
  vx_ClassifierKNN knn;
  knn.train(data, vxClassifierTrainParamsKNN(1));
  for (std::size_t i = 0; i < queries.size(); ++i) {
    const vxFeaturePattern query(queries[i], {});
    const plain::Distance distance = remembered(order, set.patterns.size());
    for (const long k : ks) {
      SCOPED_TRACE("order " + std::to_string(order) + ", k " + std::to_string(k) + ", query " +
                   std::to_string(i));
      twin.retrain({k, distance, costs});
      vxClassifierResult expected;
      twin.run(query, expected);
      knn.retrain(vxClassifierTrainParamsKNN(k, vxPatternDistanceMetricNorm(order), costs));
      atEverySimdLevel([&] {
        vxClassifierResult result;
        knn.run(query, result);
        ASSERT_EQ(labelsOf(result), labelsOf(expected));
        ASSERT_TRUE(result == expected);
      });
      if (testing::Test::HasFailure()) return;
    }
  }
}

class NeighbourSearchQuickTest : public testing::TestWithParam<knn_data::Kind> {
 protected:
  void expectPlainNeighboursOf(std::uint64_t seed, std::size_t count, std::size_t numMeasurements,
                               const std::vector<double>& orders, const std::vector<long>& ks) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", " + std::to_string(count) + " patterns of " +
                 std::to_string(numMeasurements));
    Random random(seed);
    const knn_data::Set set = knn_data::make(GetParam(), random, count, numMeasurements);
    const vxClassifierDataProviderMemory data = knn_data::labelledByNumber(set.rows);
    for (const double order : orders) expectPlainNeighbours(data, set.queries, order, ks);
  }
};

constexpr std::size_t kDimensions[] = {1, 2, 3, 4, 7, 8, 9, 15, 16, 17, 33, 70};

TEST_P(NeighbourSearchQuickTest, FindsThePlainNeighboursInSmallSets) {
  std::uint64_t seed = 0;
  for (const long n : {1L, 2L, 3L, 5L, 31L, 32L, 33L, 64L, 65L, 96L}) {
    if (HasFailure()) return;
    ++seed;
    const std::size_t d = kDimensions[seed * 5 % std::size(kDimensions)];
    std::vector<long> ks = {1, 2, n / 2 + 1, n};
    if (n > 1) ks.push_back(n - 1);
    expectPlainNeighboursOf(seed, static_cast<std::size_t>(n), d, {2.0, 1.0}, ks);
  }
}

TEST_P(NeighbourSearchQuickTest, FindsThePlainNeighboursInSetsThatFillSeveralBlocks) {
  std::uint64_t seed = 100;
  for (const long n : {127L, 128L, 257L, 300L}) {
    if (HasFailure()) return;
    ++seed;
    const std::size_t d = kDimensions[seed * 5 % std::size(kDimensions)];
    expectPlainNeighboursOf(seed, static_cast<std::size_t>(n), d, {2.0, 1.0}, {1, 3, 20, 120});
  }
}

TEST_P(NeighbourSearchQuickTest, FindsThePlainNeighboursByAnyOrder) {
  const double orders[] = {0.05, 0.1,   0.5,   1.0 + 1e-15, 1.5, 2.0 - 1e-15, 3.0,
                           7.0,  99.99, 100.0, 101.0,       1e6, 1e308,       1e-300};
  for (std::size_t i = 0; i < std::size(orders) && !HasFailure(); ++i) {
    const std::size_t d = kDimensions[i * 5 % std::size(kDimensions)];
    expectPlainNeighboursOf(200 + i, 40 + 9 * i, d, {orders[i]}, {1, 4, 33});
  }
}

INSTANTIATE_TEST_SUITE_P(Data, NeighbourSearchQuickTest, testing::ValuesIn(knn_data::kinds()),
                         knn_data::nameOf);

class NeighbourSearchLargeTest : public NeighbourSearchQuickTest {};

TEST_P(NeighbourSearchLargeTest, FindsThePlainNeighbours) {
  expectPlainNeighboursOf(1, 3000, 4, {2.0, 3.0}, {1, 5, 25});
  if (!HasFailure()) expectPlainNeighboursOf(2, 3001, 9, {2.0, 1.0}, {2, 100});
}

std::vector<knn_data::Kind> largeKinds() {
  std::vector<knn_data::Kind> some;
  for (const knn_data::Kind& kind : knn_data::kinds()) {
    const std::string name = kind.name;
    for (const char* wanted : {"WholeNumbers", "FullMantissas", "Sorted", "OneOutlier", "NearTies",
                               "MixedUnits", "VeryRarelyNotZero", "Bunches"}) {
      if (name == wanted) some.push_back(kind);
    }
  }
  return some;
}

INSTANTIATE_TEST_SUITE_P(Data, NeighbourSearchLargeTest, testing::ValuesIn(largeKinds()),
                         knn_data::nameOf);

TEST(NeighbourSearchCellTest, FindsANeighbourThatCodesPushBehindThoseOutsideTheBox) {
  // Steps are 1. Three rows have the query's codes, each with a measurement outside the box; the
  // next row is nearer by 0.08, though six steps away by its code.
  for (const std::size_t d : {4, 8, 9, 30}) {
    const double last = vx_CodeGrid::lastCode(d);
    const auto row = [d](double x, std::size_t axis, double y) {
      std::vector<double> values(d);
      values[0] = x;
      values[axis] += y;
      return values;
    };
    knn_data::Rows rows = {row(100.49, 1, 5.1), row(100.49, 2, 5.1), row(100.49, 3, -5.1),
                           row(105.51, 1, 0.0)};
    for (int i = 0; i < 300; ++i) {
      rows.push_back(row(std::floor(80.0 * i / 300.0), 1, 0.0));
      rows.push_back(row(last - std::floor(80.0 * i / 300.0), 1, 0.0));
    }
    const knn_data::Rows queries = {row(100.49, 1, 0.0)};
    for (const double order : {1.0, 2.0}) {
      expectPlainNeighbours(knn_data::labelledByNumber(rows), queries, order, {1});
    }
  }
}

TEST(NeighbourSearchOrderTest, FindsThePlainNeighboursInMeasurementsOfAnySize) {
  // From one end of doubles to the other; single precision ends far before.
  for (int exponent = -1060; exponent <= 1020 && !testing::Test::HasFailure();) {
    SCOPED_TRACE("exponent " + std::to_string(exponent));
    Random random(1);
    for (const std::size_t d : {2, 10}) {
      knn_data::Set set = knn_data::make(knn_data::kinds()[2], random, 200, d);
      for (knn_data::Rows* rows : {&set.rows, &set.queries}) {
        for (auto& row : *rows) {
          for (double& x : row) x = std::ldexp(x, exponent);
        }
      }
      const vxClassifierDataProviderMemory data = knn_data::labelledByNumber(set.rows);
      set.queries.resize(1);
      for (const double order : {0.1, 0.5, 0.8, 3.0, 20.0}) {
        expectPlainNeighbours(data, set.queries, order, {1, 5});
      }
    }
    const bool isSingle = std::abs(exponent) < 160;
    exponent += isSingle ? 5 : 60;
  }
}

TEST(NeighbourSearchToolTest, GivesBitForBitThePlainResultWithFewLabels) {
  for (const knn_data::Kind& kind : knn_data::kinds()) {
    SCOPED_TRACE(kind.name);
    Random random(7);
    const knn_data::Set set = knn_data::make(kind, random, 150, 5);
    std::vector<LabelledSample> samples;
    for (const auto& row : set.rows) samples.push_back({row, static_cast<long>(random() % 4)});
    const vxClassifierDataProviderMemory data = providerOf(samples);
    vxClassifierCosts costs(0.75);
    costs.misclassificationCostOverride(1, 2, 3.5);
    for (const long k : {1L, 6L, 40L}) {
      vxClassifierTool tool;
      tool.train(data, vxClassifierTrainParamsKNN(k, vxPatternDistanceMetricNorm(2.0), costs));
      plain::Knn twin;
      twin.train(setOf(data), {k, plain::norm(2.0), costs});
      for (const auto& query : set.queries) {
        const std::string expected = outcomeOfRun(twin, {query, {}});
        atEverySimdLevel([&] { ASSERT_EQ(outcomeOfRun(tool, {query, {}}), expected); });
      }
    }
  }
}

}  // namespace
