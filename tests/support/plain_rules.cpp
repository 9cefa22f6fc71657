// SPDX-License-Identifier: MIT
#include "tests/support/plain_rules.h"

#include <algorithm>
#include <cmath>

namespace plain {

bool OneSided::isConsistent() const {
  const bool above = x1 > x0 && x1 > xc;
  const bool below = x1 < x0 && x1 < xc;
  return !above && !below;
}

double OneSided::score(double x) const {
  const double line = (y0 * x1 - y1 * x0 - (y0 - y1) * x) / (x1 - x0);
  if (x0 <= x1 && x1 <= xc) {
    if (x > xc) return 0.0;
    if (x >= x1) return y1;
    if (x <= x0) return y0;
    return line;
  }
  if (x < xc) return 0.0;
  if (x <= x1) return y1;
  if (x >= x0) return y0;
  return line;
}

double Function::score(double x) const {
  if (sides.empty()) return -1.0;
  if (sides.size() == 1) return sides[0].score(x);
  const OneSided& high = sides[1];
  const double lowest = std::min(high.x0, std::min(high.x1, high.xc));
  return x < lowest ? sides[0].score(x) : high.score(x);
}

vxPtrHandle<vxClsFtSc> Function::handle() const {
  if (sides.empty()) return vxPtrHandle<vxClsFtSc>(new vxClassifierFeatureScoreIgnore);
  const OneSided& low = sides[0];
  if (sides.size() == 1) {
    const vxPtrHandle<vxClassifierFeatureScoreOneSided> one(new vxClassifierFeatureScoreOneSided);
    one->init(low.x0, low.x1, low.xc, low.y0, low.y1);
    return one;
  }
  const OneSided& high = sides[1];
  const vxPtrHandle<vxClassifierFeatureScoreTwoSided> two(new vxClassifierFeatureScoreTwoSided);
  two->init(low.x0, low.x1, low.xc, high.x0, high.x1, high.xc, low.y0, low.y1, high.y0, high.y1);
  return two;
}

double Rule::score(const std::vector<double>& values) const {
  double product = 1.0;
  double counted = 0.0;
  for (std::size_t i = 0; i < functions.size(); ++i) {
    const double score = functions[i].score(values[i]);
    if (score == -1.0) continue;
    product *= score;
    counted += 1.0;
  }
  return product > 0.0 ? std::pow(product, 1.0 / counted) : product;
}

long classify(const std::vector<Rule>& rules, const std::vector<double>& values, double threshold) {
  for (const Rule& rule : rules) {
    if (rule.score(values) > threshold) return rule.label;
  }
  return -1;
}

}  // namespace plain
