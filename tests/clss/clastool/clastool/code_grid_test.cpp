// SPDX-License-Identifier: MIT
#include "clastool/clastool/code_grid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/clss/clastool/knn/knn_data.h"
#include "tests/support/simd_levels.h"

namespace {

using knn_data::Random;
using Row = std::vector<double>;

std::vector<double> flat(const knn_data::Rows& rows) {
  std::vector<double> all;
  for (const Row& row : rows) all.insert(all.end(), row.begin(), row.end());
  return all;
}

bool isFinite(const Row& row) {
  return std::all_of(row.begin(), row.end(), [](double x) { return std::isfinite(x); });
}

/// A point and its place on the grid.
struct Encoded {
  Encoded(const vx_CodeGrid& grid, const Row& row)
      : x(row), codes(grid.numCodes() + 1, 99), residual(grid.encode(row.data(), codes.data())) {}

  Row x;
  std::vector<std::uint16_t> codes;  // and one more, not to be written
  vx_CodeGrid::Residual residual;
};

/// True distances, code distances, and whether the former are as great as those promise.
void expectBounds(const vx_CodeGrid& grid, const Encoded& a, const Encoded& b) {
  long double absolute = 0.0L;
  long double squares = 0.0L;
  long double absoluteOfCodes = 0.0L;
  long double squaresOfCodes = 0.0L;
  for (std::size_t j = 0; j < a.x.size(); ++j) {
    const long double difference = std::fabs(static_cast<long double>(a.x[j]) - b.x[j]);
    const long double steps = std::fabs(static_cast<long double>(a.codes[j]) - b.codes[j]);
    absolute += difference;
    squares += difference * difference;
    absoluteOfCodes += steps;
    squaresOfCodes += steps * steps;
    // What a bound of each measurement alone rests on.
    ASSERT_GE(difference + 2.0L * grid.worstResidual(), steps * grid.step()) << j;
  }
  const long double step = grid.step();
  // 1e-12: what adding up here may lose.
  ASSERT_GE((absolute + a.residual.absolute + b.residual.absolute) * (1.0L + 1e-12L),
            step * absoluteOfCodes);
  // Residuals this small have no squares; the search takes such distances for equal.
  if (step < 1e-145L) return;
  ASSERT_GE((std::sqrt(squares) + a.residual.euclidean + b.residual.euclidean) * (1.0L + 1e-12L),
            step * std::sqrt(squaresOfCodes));
}

class CodeGridTest : public testing::TestWithParam<knn_data::Kind> {};

TEST_P(CodeGridTest, BoundsDistancesFromBelow) {
  Random random(3);
  for (const std::size_t d : {1, 2, 5, 7, 8, 9, 16, 23, 40, 70}) {
    const std::size_t counts[] = {2, 30, 600};
    const knn_data::Set set = knn_data::make(GetParam(), random, counts[random() % 3], d);
    knn_data::Rows rows;
    std::copy_if(set.rows.begin(), set.rows.end(), std::back_inserter(rows), isFinite);
    if (rows.empty()) continue;
    const vx_CodeGrid grid(flat(rows).data(), rows.size(), d);
    if (!grid.isUsable()) continue;

    rows.resize(std::min<std::size_t>(rows.size(), 25));
    std::copy_if(set.queries.begin(), set.queries.end(), std::back_inserter(rows), isFinite);
    std::vector<Encoded> points;
    for (const Row& row : rows) points.emplace_back(grid, row);
    for (const Encoded& a : points) {
      EXPECT_LE(a.residual.absolute,
                static_cast<double>(d) * (grid.worstResidual() * 1.001 + 1e-300));
      for (const Encoded& b : points) {
        ASSERT_NO_FATAL_FAILURE(expectBounds(grid, a, b)) << d << " measurements";
      }
    }
  }
}

TEST_P(CodeGridTest, GivesTheSameCodesAtEverySimdLevel) {
  Random random(4);
  for (const std::size_t d : {1, 7, 8, 9, 33}) {
    const knn_data::Set set = knn_data::make(GetParam(), random, 50, d);
    if (!std::all_of(set.rows.begin(), set.rows.end(), isFinite)) continue;
    const vx_CodeGrid grid(flat(set.rows).data(), set.rows.size(), d);
    if (!grid.isUsable()) continue;
    EXPECT_EQ(grid.numCodes(), (d + 7) / 8 * 8);
    for (const Row& row : set.queries) {
      if (!isFinite(row)) continue;
      vx_simdLimit(vx_Simd::kPlain);
      const Encoded plain(grid, row);
      EXPECT_EQ(plain.codes.back(), 99);
      for (std::size_t j = d; j < grid.numCodes(); ++j) EXPECT_EQ(plain.codes[j], 0);
      atEverySimdLevel([&] {
        const Encoded encoded(grid, row);
        EXPECT_EQ(encoded.codes, plain.codes);
        EXPECT_EQ(encoded.residual.absolute, plain.residual.absolute);
        EXPECT_EQ(encoded.residual.euclidean, plain.residual.euclidean);
      });
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Data, CodeGridTest, testing::ValuesIn(knn_data::kinds()),
                         knn_data::nameOf);

TEST(CodeGridStepTest, BoundsDistancesWhereStepsAreAsSmallAsRounding) {
  // Offsets around a power of two, where the doubles on both sides differ in spacing, and a second
  // axis that sets the step to any multiple of that.
  Random random(5);
  for (int round = 0; round < 3000; ++round) {
    const double unit = 0.5;
    const double low = (random() % 2 == 0 ? 1.0 : -1.0) * 0x1p52 +
                       unit * (static_cast<double>(random() % 64) - 32.0);
    const double first = unit * static_cast<double>(1 + random() % 600);
    const double second = 255.0 * unit * (1.0 + static_cast<double>(random() % 12)) *
                          (1.0 + 0x1p-52 * (static_cast<double>(random() % 9) - 4.0)) /
                          static_cast<double>(1 + random() % 4);
    const knn_data::Rows rows = {{low, 0.0}, {low + first, second}};
    const vx_CodeGrid grid(flat(rows).data(), 2, 2);
    if (!grid.isUsable()) continue;
    std::vector<Encoded> points;
    for (int i = 0; i < 12; ++i) {
      const double x = low + unit * static_cast<double>(random() % 640) - 10.0;
      points.emplace_back(grid, Row{i < 2 ? rows[static_cast<std::size_t>(i)][0] : x,
                                    second * knn_data::fraction(random)});
    }
    for (const Encoded& a : points) {
      for (const Encoded& b : points) ASSERT_NO_FATAL_FAILURE(expectBounds(grid, a, b)) << round;
    }
  }
}

TEST(CodeGridStepTest, GivesNoMoreCodesThanAScoreHasRoomFor) {
  Random random(6);
  for (const std::size_t d : {1, 7, 8, 9, 20, 100, 1500}) {
    const knn_data::Set set = knn_data::make(knn_data::kinds()[2], random, 40, d);
    const vx_CodeGrid grid(flat(set.rows).data(), 40, d);
    ASSERT_TRUE(grid.isUsable());
    for (const Row& row : set.rows) {
      const Encoded encoded(grid, row);
      EXPECT_LE(*std::max_element(encoded.codes.begin(), encoded.codes.end() - 1),
                vx_CodeGrid::lastCode(d));
    }
  }
}

TEST(CodeGridStepTest, LeavesAnOutlierOutOfTheStep) {
  Random random(7);
  knn_data::Rows rows = knn_data::make(knn_data::kinds()[2], random, 1000, 3).rows;
  const double step = vx_CodeGrid(flat(rows).data(), rows.size(), 3).step();
  rows[500] = {1e9, -1e9, 1e300};
  EXPECT_LE(vx_CodeGrid(flat(rows).data(), rows.size(), 3).step(), 1.1 * step);
}

TEST(CodeGridStepTest, IsNotUsableWithoutAStep) {
  const double most = std::numeric_limits<double>::max();
  const double least = std::numeric_limits<double>::denorm_min();
  const knn_data::Rows sets[] = {{{1.0, 2.0}},
                                 {{1.0, 2.0}, {1.0, 2.0}, {1.0, 2.0}},
                                 {{0.0}, {-0.0}},
                                 {{most}, {-most}},
                                 {{0.0}, {most}},
                                 {{0.0}, {1e292}},
                                 {{0.0}, {least}},
                                 {{0.0}, {1e-289}},
                                 {{1e295, 0.0}, {1e295, 1.0}}};
  EXPECT_FALSE(vx_CodeGrid().isUsable());
  for (const knn_data::Rows& rows : sets) {
    EXPECT_FALSE(vx_CodeGrid(flat(rows).data(), rows.size(), rows[0].size()).isUsable());
  }
  const knn_data::Rows usable = {{0.0}, {1e-280}};
  EXPECT_TRUE(vx_CodeGrid(flat(usable).data(), 2, 1).isUsable());
}

}  // namespace
