// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "tools/eval/report/report.h"

namespace eval {
namespace {

struct Moments {
  double count = 0.0;
  double mean = 0.0;
  double squares = 0.0;  // of deviations from the mean

  void add(double value) {
    count += 1.0;
    const double before = value - mean;
    mean += before / count;
    squares += before * (value - mean);
  }
};

double varianceRatio(const Dataset& data, long measurement) {
  std::vector<Moments> categories(data.categories.size());
  Moments all;
  for (std::size_t i = 0; i < data.patterns.size(); ++i) {
    if (data.labels[i] < 0 || !data.patterns[i]->isValid(measurement)) continue;
    const double value = data.patterns[i]->featureMeasurement(measurement, false);
    categories[static_cast<std::size_t>(data.labels[i])].add(value);
    all.add(value);
  }
  double within = 0.0;
  for (const Moments& category : categories) within += category.squares;
  const double between = all.squares - within;
  if (!(between > 0.0)) return 0.0;
  return within > 0.0 ? between / within : std::numeric_limits<double>::max();
}

}  // namespace

std::vector<long> tellingMeasurements(const Dataset& data, std::size_t count) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < data.measurements.size(); ++i) {
    ratios.push_back(varianceRatio(data, static_cast<long>(i)));
  }
  std::vector<long> order(ratios.size());
  std::iota(order.begin(), order.end(), 0L);
  std::stable_sort(order.begin(), order.end(), [&](long a, long b) {
    return ratios[static_cast<std::size_t>(a)] > ratios[static_cast<std::size_t>(b)];
  });
  if (order.size() > count) order.resize(count);
  std::sort(order.begin(), order.end());
  return order;
}

}  // namespace eval
