// SPDX-License-Identifier: MIT
#include "tools/eval/report/regions.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace eval {
namespace {

/// Valid values among the labelled patterns.
std::vector<double> valuesOf(const Dataset& data, long measurement) {
  std::vector<double> values;
  for (std::size_t i = 0; i < data.patterns.size(); ++i) {
    if (data.labels[i] < 0 || !data.patterns[i]->isValid(measurement)) continue;
    values.push_back(data.patterns[i]->featureMeasurement(measurement, false));
  }
  return values;
}

/// So fine that all pairs together take a few seconds.
long resolutionFor(const Page& page) {
  constexpr double kSteps = 1e9;
  constexpr double kFinest = 120.0;
  constexpr double kCoarsest = 24.0;
  const auto plotted = static_cast<double>(page.input.plotted.size());
  const auto measurements = static_cast<double>(page.data().measurements.size());
  const bool isBayes =
      dynamic_cast<const vx_ClassifierBayesian*>(page.tool.classifier().get()) != nullptr;
  const double steps = (isBayes ? 20.0 * static_cast<double>(page.numCategories())
                                : static_cast<double>(page.data().patterns.size())) *
                       (measurements + 10.0) * std::max(1.0, plotted * (plotted - 1.0));
  return static_cast<long>(std::clamp(std::sqrt(kSteps / steps), kCoarsest, kFinest));
}

long decidedAt(const vxClassifierTool& tool, const vxFeaturePattern& pattern) {
  vxClassifierResult result;
  try {
    tool.run(pattern, result);
  } catch (const vxClassifierDefs::Errors&) {
    return -1;  // such as a value above the largest one of a binomial measurement
  }
  const vxClassifierCategoryResult& decision = result.categoryResults().at(0);
  return std::isnan(decision.expectedCost()) ? -1 : decision.categoryLabel();
}

}  // namespace

Span spanOf(const Dataset& data, long measurement) {
  const std::vector<double> values = valuesOf(data, measurement);
  if (values.empty()) return {0.0, 1.0};
  const auto ends = std::minmax_element(values.begin(), values.end());
  const double width = *ends.second - *ends.first;
  const double room = width > 0.0 ? 0.05 * width : std::max(1.0, std::fabs(*ends.first)) * 0.5;
  return {*ends.first - room, *ends.second + room};
}

double medianOf(const Dataset& data, long measurement) {
  std::vector<double> values = valuesOf(data, measurement);
  if (values.empty()) return std::nan("");
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

RegionFinder::RegionFinder(const Page& page) : page_(page), resolution_(resolutionFor(page)) {
  for (std::size_t i = 0; i < page.data().measurements.size(); ++i) {
    medians_.push_back(medianOf(page.data(), static_cast<long>(i)));
  }
}

DecisionGrid RegionFinder::alone(long xMeasurement, long yMeasurement) const {
  if (dynamic_cast<const vx_ClassifierBayesian*>(page_.tool.classifier().get()) != nullptr) {
    std::vector<long> others;
    for (long i = 0; i < static_cast<long>(medians_.size()); ++i) {
      if (i != xMeasurement && i != yMeasurement) others.push_back(i);
    }
    std::vector<double> values(medians_.size(), 0.0);
    return grid_(page_.tool, xMeasurement, yMeasurement, [&](double x, double y) {
      values[static_cast<std::size_t>(xMeasurement)] = x;
      values[static_cast<std::size_t>(yMeasurement)] = y;
      return vxFeaturePattern(values, others);
    });
  }
  vxClassifierDataProviderMemory pairs;
  const Dataset& data = page_.data();
  for (std::size_t i = 0; i < data.patterns.size(); ++i) {
    if (data.labels[i] < 0) continue;
    const std::vector<double>& all = data.patterns[i]->featureMeasurements(false);
    pairs.addData(PatternHandle(new vxFeaturePattern({all[static_cast<std::size_t>(xMeasurement)],
                                                      all[static_cast<std::size_t>(yMeasurement)]},
                                                     {})),
                  data.labels[i]);
  }
  vxClassifierTool tool;
  tool.train(pairs, page_.input.params);
  return grid_(tool, xMeasurement, yMeasurement, [](double x, double y) {
    return vxFeaturePattern({x, y}, {});
  });
}

DecisionGrid RegionFinder::atMedians(long xMeasurement, long yMeasurement) const {
  std::vector<double> values;
  std::vector<long> unknown;
  for (std::size_t i = 0; i < medians_.size(); ++i) {
    const bool isKnown = !std::isnan(medians_[i]);
    values.push_back(isKnown ? medians_[i] : 0.0);
    if (!isKnown) unknown.push_back(static_cast<long>(i));
  }
  return grid_(page_.tool, xMeasurement, yMeasurement, [&](double x, double y) {
    values[static_cast<std::size_t>(xMeasurement)] = x;
    values[static_cast<std::size_t>(yMeasurement)] = y;
    return vxFeaturePattern(values, unknown);
  });
}

DecisionGrid RegionFinder::grid_(const vxClassifierTool& tool, long xMeasurement, long yMeasurement,
                                 const PatternAt& patternAt) const {
  const Span xSpan = spanOf(page_.data(), xMeasurement);
  const Span ySpan = spanOf(page_.data(), yMeasurement);
  const auto middle = [&](const Span& span, long cell) {
    return span.low + (span.high - span.low) * (static_cast<double>(cell) + 0.5) /
                          static_cast<double>(resolution_);
  };
  DecisionGrid grid{resolution_, {}};
  for (long row = 0; row < resolution_; ++row) {
    page_.input.poll();
    for (long column = 0; column < resolution_; ++column) {
      grid.labels.push_back(decidedAt(tool, patternAt(middle(xSpan, column), middle(ySpan, row))));
    }
  }
  return grid;
}

std::string regionPaths(const DecisionGrid& grid) {
  std::map<long, std::string> paths;
  const auto n = static_cast<std::size_t>(grid.resolution);
  for (std::size_t row = 0; row < n; ++row) {
    const long* const labels = &grid.labels[row * n];
    for (std::size_t first = 0; first < n;) {
      std::size_t end = first;
      while (end < n && labels[end] == labels[first]) ++end;
      if (labels[first] >= 0) {
        paths[labels[first]] +=
            fmt::format("M{},{}h{}v1h-{}z", first, n - 1 - row, end - first, end - first);
      }
      first = end;
    }
  }
  std::string text;
  for (const auto& [label, path] : paths) {
    text += fmt::format("<path class=\"region {}\" d=\"{}\"/>", Page::colour(label), path);
  }
  return text;
}

}  // namespace eval
