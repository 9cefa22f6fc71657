// SPDX-License-Identifier: MIT
#include "bench/peers/data.h"

#include <algorithm>
#include <cmath>

namespace peers {

namespace {

constexpr std::size_t kDistributions = 5;

void fillMixture(Rows& rows, long seed) {
  vxRandomGaussian random(seed);
  for (std::size_t i = 0; i < rows.n; ++i) {
    const double mean = 0.5 * static_cast<double>(labelOf(i, kDistributions));
    for (std::size_t j = 0; j < rows.d; ++j) rows.values[i * rows.d + j] = random.next(mean, 1.0);
  }
}

void fillUniform(Rows& rows, long seed) {
  vxRandomUniform random(seed);
  for (double& x : rows.values) x = random.next(0.0, 1.0);
}

/// The measurements' units grow evenly, in logarithms, from 1 to 1e4.
void changeUnits(Rows& rows) {
  for (std::size_t j = 0; j < rows.d; ++j) {
    const double unit = std::pow(
        1e4, static_cast<double>(j) / static_cast<double>(std::max<std::size_t>(rows.d - 1, 1)));
    for (std::size_t i = 0; i < rows.n; ++i) rows.values[i * rows.d + j] *= unit;
  }
}

/// Row i is query i % kQueries and one and the same offset, its measurements in another order and
/// with other signs.
void placeAroundQueries(Rows& rows, long seed) {
  const Rows queries = makeQueries(Kind::kNearTies, rows.d);
  vxRandomUniform random(seed);
  std::vector<double> offset(rows.d);
  for (double& x : offset) x = random.next(0.1, 1.0);
  for (std::size_t i = 0; i < rows.n; ++i) {
    for (std::size_t j = rows.d; j > 1; --j) {
      std::swap(offset[j - 1],
                offset[static_cast<std::size_t>(random.next(0.0, static_cast<double>(j)))]);
    }
    for (std::size_t j = 0; j < rows.d; ++j) {
      const double sign = random.next(-1.0, 1.0) < 0.0 ? -1.0 : 1.0;
      rows.values[i * rows.d + j] = queries.row(i % kQueries)[j] + sign * offset[j];
    }
  }
}

void changeTo(Kind kind, Rows& rows, long seed) {
  constexpr double kOffset = 1e4, kFarAway = 1e6, kGreyPerUnit = 32.0, kGreyOfZero = 96.0;
  switch (kind) {
    case Kind::kMixture:
    case Kind::kUniform:
      break;
    case Kind::kCounts:
      for (double& x : rows.values) {
        x = std::clamp(std::floor(kGreyOfZero + kGreyPerUnit * x), 0.0, 255.0);
      }
      break;
    case Kind::kOffset:
      for (double& x : rows.values) x += kOffset;
      break;
    case Kind::kOutlier:
      if (rows.n <= kQueries) break;
      std::fill_n(rows.values.begin() + static_cast<std::ptrdiff_t>(rows.n / 2 * rows.d), rows.d,
                  kFarAway);
      break;
    case Kind::kUnits:
      changeUnits(rows);
      break;
    case Kind::kNearTies:
      placeAroundQueries(rows, seed);
      break;
  }
}

}  // namespace

std::string nameOf(Kind kind) {
  switch (kind) {
    case Kind::kMixture:
      return "mixture";
    case Kind::kUniform:
      return "uniform";
    case Kind::kCounts:
      return "8-bit counts";
    case Kind::kOffset:
      return "offset 1e4";
    case Kind::kOutlier:
      return "one outlier of 1e6";
    case Kind::kUnits:
      return "units of 1 to 1e4";
    case Kind::kNearTies:
      return "near ties";
  }
  return "";
}

Rows makeRows(Kind kind, std::size_t n, std::size_t d, long seed) {
  Rows rows{n, d, std::vector<double>(n * d)};
  if (kind == Kind::kUniform) {
    fillUniform(rows, seed);
  } else {
    fillMixture(rows, seed);
  }
  changeTo(kind, rows, seed);
  return rows;
}

Rows makeQueries(Kind kind, std::size_t d) {
  return makeRows(kind == Kind::kNearTies ? Kind::kMixture : kind, kQueries, d, /*seed=*/2);
}

Patterns patternsOf(const Rows& rows) {
  Patterns patterns;
  patterns.reserve(rows.n);
  for (std::size_t i = 0; i < rows.n; ++i) {
    patterns.emplace_back(new vxFeaturePattern(rows.measurements(i), {}));
  }
  return patterns;
}

vxClassifierDataProviderMemory dataOf(const Rows& rows, std::size_t numCategories) {
  std::vector<long> labels;
  for (std::size_t i = 0; i < rows.n; ++i) labels.push_back(labelOf(i, numCategories));
  vxClassifierDataProviderMemory data;
  data.data(patternsOf(rows), labels);
  return data;
}

}  // namespace peers
