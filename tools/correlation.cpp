// SPDX-License-Identifier: MIT
#include "tools/correlation.h"

#include <cmath>
#include <cstddef>
#include <map>
#include <numeric>

#include "tools/stop.h"

namespace cli {
namespace {

using Rows = std::vector<std::vector<double>>;  // NaN where a measurement is invalid

/// The labelled patterns, each less the means of its category.
Rows centred(const Dataset& data) {
  const std::size_t width = data.names.measurements.size();
  Rows sums(data.names.categories.size(), std::vector<double>(width, 0.0));
  Rows counts = sums;
  Rows rows;
  std::vector<std::size_t> labels;
  for (std::size_t p = 0; p < data.patterns.size(); ++p) {
    if (data.labels[p] < 0) continue;
    labels.push_back(static_cast<std::size_t>(data.labels[p]));
    rows.emplace_back(width, std::nan(""));
    for (std::size_t i = 0; i < width; ++i) {
      const auto index = static_cast<long>(i);
      if (!data.patterns[p]->isValid(index)) continue;
      rows.back()[i] = data.patterns[p]->featureMeasurement(index, true);
      sums[labels.back()][i] += rows.back()[i];
      counts[labels.back()][i] += 1.0;
    }
  }
  for (std::size_t p = 0; p < rows.size(); ++p) {
    for (std::size_t i = 0; i < width; ++i) rows[p][i] -= sums[labels[p]][i] / counts[labels[p]][i];
  }
  return rows;
}

double correlation(const Rows& rows, std::size_t a, std::size_t b) {
  double sumAA = 0.0;
  double sumAB = 0.0;
  double sumBB = 0.0;
  for (const std::vector<double>& row : rows) {
    if (std::isnan(row[a]) || std::isnan(row[b])) continue;
    sumAA += row[a] * row[a];
    sumAB += row[a] * row[b];
    sumBB += row[b] * row[b];
  }
  const double scale = std::sqrt(sumAA) * std::sqrt(sumBB);
  return scale > 0.0 ? sumAB / scale : 0.0;
}

}  // namespace

std::vector<std::vector<long>> correlatedGroups(const Dataset& data, double threshold) {
  const Rows rows = centred(data);
  const std::size_t width = data.names.measurements.size();
  std::vector<std::size_t> groupOf(width);  // named by its first member
  std::iota(groupOf.begin(), groupOf.end(), std::size_t{0});
  for (std::size_t a = 0; a < width; ++a) {
    for (std::size_t b = a + 1; b < width; ++b) {
      throwIfStopped();
      if (groupOf[a] == groupOf[b] || !(std::abs(correlation(rows, a, b)) > threshold)) continue;
      const std::size_t kept = std::min(groupOf[a], groupOf[b]);
      const std::size_t gone = std::max(groupOf[a], groupOf[b]);
      for (std::size_t& group : groupOf) {
        if (group == gone) group = kept;
      }
    }
  }
  std::map<std::size_t, std::vector<long>> members;
  for (std::size_t i = 0; i < width; ++i) members[groupOf[i]].push_back(static_cast<long>(i));
  std::vector<std::vector<long>> groups;
  for (const auto& [first, group] : members) {
    if (group.size() > 1) groups.push_back(group);
  }
  return groups;
}

}  // namespace cli
