// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REPORT_REGIONS_H_
#define TOOLS_EVAL_REPORT_REGIONS_H_

#include <vxclss/vxclss.h>

#include <functional>
#include <string>
#include <vector>

#include "tools/eval/report/page.h"

namespace eval {

/// Smallest and largest valid value of a measurement among the labelled patterns, and some room at
/// either end; [0, 1] without a value.
struct Span {
  double low;
  double high;
};

Span spanOf(const Dataset& data, long measurement);

/// The middle value of a measurement, NaN without a valid one.
double medianOf(const Dataset& data, long measurement);

/// What is decided at the middles of the cells of a square grid over two measurements.
struct DecisionGrid {
  long resolution;
  std::vector<long> labels;  // row by row from the lowest; -1 where there is no decision
};

/// Decides on pairs of measurements.
class RegionFinder {
 public:
  explicit RegionFinder(const Page& page);

  /// By these two measurements alone: where densities decide, all others count as invalid; other
  /// techniques are trained on patterns of the two.
  DecisionGrid alone(long xMeasurement, long yMeasurement) const;

  /// With every other measurement at its median, or invalid if it has none.
  DecisionGrid atMedians(long xMeasurement, long yMeasurement) const;

 private:
  using PatternAt = std::function<vxFeaturePattern(double, double)>;

  DecisionGrid grid_(const vxClassifierTool& tool, long xMeasurement, long yMeasurement,
                     const PatternAt& patternAt) const;

  const Page& page_;
  std::vector<double> medians_;
  long resolution_;
};

/// The grid as SVG paths, one a category, in a square of `resolution` units with the lowest row at
/// the bottom.
std::string regionPaths(const DecisionGrid& grid);

}  // namespace eval

#endif  // TOOLS_EVAL_REPORT_REGIONS_H_
