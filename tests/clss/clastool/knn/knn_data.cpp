// SPDX-License-Identifier: MIT
#include "tests/clss/clastool/knn/knn_data.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

#include "clastool/clastool/code_grid.h"
#include "tests/support/numbers.h"
#include "tests/support/samples.h"

namespace knn_data {

namespace {

double whole(Random& random, std::size_t) { return static_cast<double>(random() % 5) - 2.0; }
double count8(Random& random, std::size_t) { return static_cast<double>(random() % 256); }
double mantissa(Random& random, std::size_t) { return fraction(random); }
double offset1e4(Random& random, std::size_t) { return 1e4 + fraction(random); }
double offset1e15(Random& random, std::size_t) { return 1e15 + 4.0 * fraction(random); }
double offset1e17(Random& random, std::size_t axis) {
  return (axis % 2 == 0 ? 1e17 : -3.0) + 100.0 * fraction(random);
}
/// Steps of a few units in the last place, some axes finer than others.
double fewUnits(Random& random, std::size_t axis) {
  const double low = std::ldexp(1.0, static_cast<int>(52 - axis % 3));
  return (axis % 2 == 0 ? low : -low) + static_cast<double>(random() % 9) / 2.0;
}
double scaled(Random& random, std::size_t axis) {
  return fraction(random) * std::pow(10.0, static_cast<double>(axis % 13) - 6.0);
}
double mixedUnits(Random& random, std::size_t axis) {
  return fraction(random) * std::pow(10.0, static_cast<double>(axis % 5));
}
double equal(Random&, std::size_t axis) { return 0.1 * static_cast<double>(axis); }
double halfConstant(Random& random, std::size_t axis) {
  return axis % 2 == 0 ? 1234.5 : fraction(random);
}
double mostlyZero(Random& random, std::size_t) {
  return random() % 10 == 0 ? fraction(random) : 0.0;
}
double veryRare(Random& random, std::size_t) {
  return random() % 400 == 0 ? 1e3 * fraction(random) : 0.0;
}
double denormal(Random& random, std::size_t) {
  return static_cast<double>(random() % 1000) * std::numeric_limits<double>::denorm_min();
}
template <int kExponent>
double ofSize(Random& random, std::size_t) {
  return std::ldexp(fraction(random), kExponent);
}
double anySize(Random& random, std::size_t) {
  return std::ldexp(fraction(random), static_cast<int>(random() % 2040) - 1020);
}
double steep(Random& random, std::size_t) { return std::exp(12.0 * fraction(random)); }
double withInfinities(Random& random, std::size_t) {
  return random() % 60 == 0 ? (random() % 2 == 0 ? kInfinity : -kInfinity) : fraction(random);
}
double withNaNs(Random& random, std::size_t) {
  return random() % 60 == 0 ? kNaN : fraction(random);
}
/// Two bunches that are far apart.
double bunches(Random& random, std::size_t axis) {
  return (random() % 2 == 0 ? 0.0 : 1e6) + fraction(random) * static_cast<double>(axis + 1);
}

void oneOutlier(Random& random, Set& set) {
  std::vector<double>& row = set.rows[random() % set.rows.size()];
  row[random() % row.size()] = 1e6;
}
/// Measurements at the edges of the cells of a grid whose steps are 1, and queries a little beyond
/// its box: codes mislead as far as they can.
double cellEdge(Random& random, std::size_t) {
  return static_cast<double>(random() % 4) + (random() % 2 == 0 ? 0.49 : -0.49);
}
void beyondTheCells(Random& random, Set& set) {
  const bool areWide = vx_CodeGrid::lastCode(set.rows[0].size()) > 255;
  std::fill(set.rows.front().begin(), set.rows.front().end(), 0.0);
  std::fill(set.rows.back().begin(), set.rows.back().end(), areWide ? 16383.0 : 255.0);
  for (auto& query : set.queries) {
    const auto shift = static_cast<double>(random() % 16);
    for (double& value : query) value -= shift;
  }
}
void hugeOutlier(Random& random, Set& set) {
  std::vector<double>& row = set.rows[random() % set.rows.size()];
  row.assign(row.size(), random() % 2 == 0 ? 1e308 : -1e200);
}
void duplicates(Random& random, Set& set) {
  for (auto& row : set.rows) {
    if (random() % 3 == 0) row = set.queries[random() % 2];
    if (random() % 3 == 0) row = set.rows[random() % set.rows.size()];
  }
}
/// The same offsets from the first query in another order and with other signs: equal distances,
/// but for the order in which their parts are added up.
void nearTies(Random& random, Set& set) {
  if (random() % 2 == 0) set.queries[0].assign(set.queries[0].size(), 0.0);
  std::vector<double> offsets(set.queries[0].size());
  for (double& offset : offsets) offset = fraction(random);
  for (auto& row : set.rows) {
    if (random() % 3 == 0) continue;
    std::shuffle(offsets.begin(), offsets.end(), random);
    for (std::size_t j = 0; j < row.size(); ++j) {
      row[j] = set.queries[0][j] + (random() % 2 == 0 ? offsets[j] : -offsets[j]);
    }
  }
}
/// Neighbours in numbers: the next double to another row's.
void nextDoubles(Random& random, Set& set) {
  for (std::size_t i = 1; i < set.rows.size(); ++i) {
    set.rows[i] = set.rows[random() % i];
    double& value = set.rows[i][random() % set.rows[i].size()];
    value = std::nextafter(value, random() % 2 == 0 ? kInfinity : -kInfinity);
  }
}
/// Sorted rows: the nearest come last.
void sorted(Random&, Set& set) {
  std::sort(set.rows.begin(), set.rows.end(),
            [](const auto& a, const auto& b) { return std::fabs(a[0]) > std::fabs(b[0]); });
}

}  // namespace

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = {
      {"WholeNumbers", &whole},
      {"Counts", &count8},
      {"FullMantissas", &mantissa},
      {"Sorted", &mantissa, &sorted},
      {"Offset1e4", &offset1e4},
      {"Offset1e15", &offset1e15},
      {"Offset1e17", &offset1e17},
      {"FewUnitsInTheLastPlace", &fewUnits},
      {"ScalesOfTwelveDecades", &scaled},
      {"MixedUnits", &mixedUnits},
      {"OneOutlier", &mantissa, &oneOutlier},
      {"HugeOutlier", &mantissa, &hugeOutlier},
      {"EdgesOfCells", &cellEdge, &beyondTheCells},
      {"AllEqual", &equal},
      {"Duplicates", &mantissa, &duplicates},
      {"NearTies", &mantissa, &nearTies},
      {"NearTiesFarOut", &offset1e4, &nearTies},
      {"NextDoubles", &mantissa, &nextDoubles},
      {"HalfConstant", &halfConstant},
      {"MostlyZero", &mostlyZero},
      {"VeryRarelyNotZero", &veryRare},
      {"Denormals", &denormal},
      {"SquaresNearTheSmallest", &ofSize<-482>},
      {"SquaresBelowTheSmallest", &ofSize<-535>},
      {"FloatsTooSmall", &ofSize<-142>},
      {"FloatsTooGreat", &ofSize<133>},
      {"Tiny", &ofSize<-960>},
      {"SquaresNearTheGreatest", &ofSize<481>},
      {"SquaresAboveTheGreatest", &ofSize<512>},
      {"Huge", &ofSize<963>},
      {"Greatest", &ofSize<1023>},
      {"AnySize", &anySize},
      {"Steep", &steep},
      {"Bunches", &bunches},
      {"Infinities", &withInfinities},
      {"NaNs", &withNaNs},
  };
  return all;
}

double fraction(Random& random) {
  const auto bits = static_cast<double>(static_cast<std::int64_t>(random()) >> 10);
  return std::ldexp(bits, -53);
}

Set make(const Kind& kind, Random& random, std::size_t count, std::size_t numMeasurements) {
  const auto row = [&] {
    std::vector<double> values;
    for (std::size_t j = 0; j < numMeasurements; ++j) values.push_back(kind.draw(random, j));
    return values;
  };
  Set set;
  for (std::size_t i = 0; i < count; ++i) set.rows.push_back(row());
  for (std::size_t i = 0; i < 2; ++i) set.queries.push_back(row());
  if (kind.finish != nullptr) kind.finish(random, set);

  set.queries.push_back(set.rows[random() % count]);
  set.queries.push_back(set.queries.back());
  set.queries.back()[random() % numMeasurements] *= 1.0 + 1e-9;
  set.queries.push_back(row());
  const double far[] = {3.0, -1e3, 1e7};
  for (double& value : set.queries.back()) value *= far[count % 3];
  set.queries.push_back(row());
  const double outside[] = {1e300, kInfinity, kNaN, -1e30};
  set.queries.back()[random() % numMeasurements] = outside[random() % std::size(outside)];
  return set;
}

vxClassifierDataProviderMemory labelledByNumber(const Rows& rows) {
  std::vector<LabelledSample> samples;
  for (const auto& row : rows) samples.push_back({row, static_cast<long>(samples.size())});
  return providerOf(samples);
}

}  // namespace knn_data
