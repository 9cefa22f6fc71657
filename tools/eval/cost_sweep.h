// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_COST_SWEEP_H_
#define TOOLS_EVAL_COST_SWEEP_H_

#include <cstddef>
#include <vector>

#include "tools/eval/evaluation.h"

namespace eval {

/// What is decided, and paid, where one misclassification has another cost.
struct SweepPoint {
  double cost;            // of that misclassification
  double meanActualCost;  // with it, deciding anew
  double keptDecisions;   // with it, deciding as before
  long misses;            // patterns of the true label that are assigned to the assigned one
  long falseAlarms;       // the other way round
  long errors;            // wrong decisions in all
};

struct CostSweep {
  long trueLabel;
  long assignedLabel;
  double costNow;
  std::vector<SweepPoint> points;  // ascending by cost
};

/// The decision that a tool retrained with `costs` takes: the same weighting of the same match
/// scores, so that not a bit differs.
vxClassifierResult reweighted(const Evaluation& evaluation, const Record& record,
                              const vxClassifierCosts& costs);

CostSweep costSweep(const Evaluation& evaluation, long trueLabel, long assignedLabel,
                    const std::vector<double>& costs);

/// From a hundredth to a hundred times the cost now (of 1, if that is 0), five a decade, and the
/// cost now itself.
std::vector<double> sweptCosts(const Evaluation& evaluation, long trueLabel, long assignedLabel);

/// For the `count` most frequent confusions, the most frequent first; of equal ones the lower
/// labels first. Pairs that were never confused follow, as long as there are some.
std::vector<CostSweep> costSweeps(const Evaluation& evaluation, std::size_t count);

}  // namespace eval

#endif  // TOOLS_EVAL_COST_SWEEP_H_
