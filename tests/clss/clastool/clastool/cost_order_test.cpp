// SPDX-License-Identifier: MIT
#include "clastool/clastool/cost_order.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

#include "tests/support/numbers.h"
#include "tests/support/plain_result.h"
#include "vxclss/result.h"

namespace {

std::vector<long> sortedPlaces(const std::vector<double>& costs) {
  std::vector<vx_PlacedCost> items;
  for (std::size_t i = 0; i < costs.size(); ++i) items.push_back({costs[i], i});
  std::vector<vx_PlacedCost> room(items.size());
  const vx_PlacedCost* sorted = vx_sortByCost(items.data(), room.data(), items.size());
  std::vector<long> places;
  for (std::size_t i = 0; i < costs.size(); ++i) {
    places.push_back(static_cast<long>(sorted[i].place));
  }
  return places;
}

std::vector<long> expectedPlaces(const std::vector<double>& costs) {
  std::vector<vxClassifierCategoryResult> results;
  for (std::size_t i = 0; i < costs.size(); ++i) {
    results.emplace_back(static_cast<long>(i), 0.0, 0.0, costs[i]);
  }
  plain::sortInRuns(results);
  std::vector<long> places;
  for (const auto& result : results) places.push_back(result.categoryLabel());
  return places;
}

template <class Cost>
void expectPlainOrder(Cost&& cost) {
  std::mt19937_64 random(1);
  for (std::size_t count = 0; count <= 300; ++count) {
    std::vector<double> costs;
    for (std::size_t i = 0; i < count; ++i) costs.push_back(cost(random));
    ASSERT_EQ(sortedPlaces(costs), expectedPlaces(costs)) << count << " costs";
  }
  std::vector<double> costs;
  for (std::size_t i = 0; i < 3000; ++i) costs.push_back(cost(random));
  EXPECT_EQ(sortedPlaces(costs), expectedPlaces(costs));
}

double fraction(std::mt19937_64& random) { return static_cast<double>(random() >> 11) * 0x1p-53; }

TEST(CostOrderTest, SortsDifferentCosts) { expectPlainOrder(fraction); }

TEST(CostOrderTest, KeepsTheOrderOfEqualCosts) {
  expectPlainOrder([](std::mt19937_64& random) { return static_cast<double>(random() % 5); });
  expectPlainOrder([](std::mt19937_64&) { return 0.5; });
}

TEST(CostOrderTest, TellsApartWhatDiffersInTheLastBit) {
  expectPlainOrder(
      [](std::mt19937_64& random) { return 1.0 + static_cast<double>(random() % 4) * 0x1p-52; });
}

TEST(CostOrderTest, SortsNumbersOfEverySize) {
  expectPlainOrder([](std::mt19937_64& random) {
    const double sizes[] = {0.0, kTiny, 1e-310, 1e-300, 1e-9, 1.0, 1e300, kInfinity};
    return sizes[random() % 8] * (1.0 + fraction(random));
  });
}

TEST(CostOrderTest, TakesBothZerosForEqual) {
  expectPlainOrder([](std::mt19937_64& random) {
    const double numbers[] = {0.0, -0.0, kTiny, 1.0};
    return numbers[random() % 4];
  });
}

TEST(CostOrderTest, DoesWithNanWhatInsertingAndMergingRunsDoes) {
  for (const unsigned oneIn : {2u, 5u, 100u}) {
    expectPlainOrder([oneIn](std::mt19937_64& random) {
      return random() % oneIn == 0 ? kNaN : fraction(random);
    });
  }
}

TEST(CostOrderTest, SortsNegativeCostsOfADamagedArchive) {
  std::mt19937_64 random(3);
  for (const std::size_t count : {5u, 50u, 500u}) {
    std::vector<double> costs;
    std::vector<double> shifted;  // into the range that categories take
    for (std::size_t i = 0; i < count; ++i) {
      shifted.push_back(static_cast<double>(random() % 64));
      costs.push_back(shifted.back() - 32.0);
    }
    EXPECT_EQ(sortedPlaces(costs), expectedPlaces(shifted));
  }
}

}  // namespace
