// SPDX-License-Identifier: MIT
#include "tools/eval/cost_sweep.h"

#include <algorithm>
#include <cmath>

#include "tools/eval/scores.h"

namespace eval {
namespace {

SweepPoint pointOf(const Evaluation& evaluation, long trueLabel, long assignedLabel, double cost) {
  vxClassifierCosts costs = evaluation.weighting().costs;
  costs.misclassificationCostOverride(trueLabel, assignedLabel, cost);
  SweepPoint point{cost, 0.0, meanActualCost(evaluation.records(), costs), 0, 0, 0};
  for (const Record& record : evaluation.records()) {
    const vxClassifierResult result = reweighted(evaluation, record, costs);
    const long decided = result.categoryResults().at(0).categoryLabel();
    point.meanActualCost += actualCost(costs, record.trueLabel, decided);
    if (decided != record.trueLabel) ++point.errors;
    if (record.trueLabel == trueLabel && decided == assignedLabel) ++point.misses;
    if (record.trueLabel == assignedLabel && decided == trueLabel) ++point.falseAlarms;
  }
  point.meanActualCost /= static_cast<double>(evaluation.records().size());
  return point;
}

}  // namespace

vxClassifierResult reweighted(const Evaluation& evaluation, const Record& record,
                              const vxClassifierCosts& costs) {
  std::vector<vxClassifierCategoryResult> scores;
  for (const long label : evaluation.labelOrder(record.round)) {
    if (const vxClassifierCategoryResult* category = record.categoryResult(label)) {
      scores.push_back(*category);
    }
  }
  return {scores, evaluation.weighting().frequencies, costs, record.result.matchScoreFactorLog()};
}

CostSweep costSweep(const Evaluation& evaluation, long trueLabel, long assignedLabel,
                    const std::vector<double>& costs) {
  CostSweep sweep{trueLabel,
                  assignedLabel,
                  evaluation.weighting().costs.misclassificationCost(trueLabel, assignedLabel),
                  {}};
  for (const double cost : costs) {
    sweep.points.push_back(pointOf(evaluation, trueLabel, assignedLabel, cost));
  }
  return sweep;
}

std::vector<double> sweptCosts(const Evaluation& evaluation, long trueLabel, long assignedLabel) {
  const double now = evaluation.weighting().costs.misclassificationCost(trueLabel, assignedLabel);
  const double middle = now > 0.0 && std::isfinite(now) ? now : 1.0;
  std::vector<double> costs;
  for (int step = -10; step <= 10; ++step) {
    // Two significant digits, so that every C library gives the same costs.
    constexpr double kFactors[] = {1.0, 1.6, 2.5, 4.0, 6.3};
    constexpr double kDecades[] = {0.01, 0.1, 1.0, 10.0, 100.0};
    const int place = step + 10;
    costs.push_back(middle * kFactors[place % 5] * kDecades[place / 5]);
  }
  if (now == 0.0) costs.insert(costs.begin(), 0.0);
  return costs;
}

std::vector<CostSweep> costSweeps(const Evaluation& evaluation, std::size_t count) {
  struct Pair {
    long trueLabel;
    long assignedLabel;
    long confused;
  };
  std::vector<Pair> pairs;
  const Confusion& confusion = evaluation.confusion();
  for (long t = 0; t < confusion.numCategories(); ++t) {
    for (long a = 0; a < confusion.numCategories(); ++a) {
      if (a != t && confusion.numOf(t) > 0) pairs.push_back({t, a, confusion.count(t, a)});
    }
  }
  std::stable_sort(pairs.begin(), pairs.end(),
                   [](const Pair& a, const Pair& b) { return a.confused > b.confused; });
  std::vector<CostSweep> sweeps;
  for (const Pair& pair : pairs) {
    if (sweeps.size() == count) break;
    sweeps.push_back(costSweep(evaluation, pair.trueLabel, pair.assignedLabel,
                               sweptCosts(evaluation, pair.trueLabel, pair.assignedLabel)));
  }
  return sweeps;
}

}  // namespace eval
