// SPDX-License-Identifier: MIT
//
// C. K. Chow, "On optimum recognition error and reject tradeoff", IEEE Transactions on Information
// Theory 16(1), 1970, 41-46.
#include "tools/eval/reject_curve.h"

#include <algorithm>
#include <cmath>

#include "tools/eval/scores.h"

namespace eval {
namespace {

struct Doubt {
  double value;   // of the criterion
  double safety;  // the same, made so that the smallest is rejected first; never NaN
  const Record* record;
};

double valueOf(const Record& record, Criterion criterion) {
  if (criterion == Criterion::eExpectedCost) return record.decision().expectedCost();
  if (criterion == Criterion::eMargin) return record.margin();
  return record.fit;
}

/// The safest first.
std::vector<Doubt> sortedDoubts(const Evaluation& evaluation, Criterion criterion) {
  std::vector<Doubt> doubts;
  for (const Record& record : evaluation.records()) {
    const double value = valueOf(record, criterion);
    double safety = criterion == Criterion::eExpectedCost ? -value : value;
    if (std::isnan(safety)) safety = -HUGE_VAL;
    doubts.push_back({value, safety, &record});
  }
  std::stable_sort(doubts.begin(), doubts.end(),
                   [](const Doubt& a, const Doubt& b) { return a.safety > b.safety; });
  return doubts;
}

}  // namespace

std::vector<RejectPoint> rejectCurve(const Evaluation& evaluation, Criterion criterion) {
  const std::vector<Doubt> doubts = sortedDoubts(evaluation, criterion);
  const bool isKnown = std::any_of(doubts.begin(), doubts.end(),
                                   [](const Doubt& doubt) { return !std::isnan(doubt.value); });
  if (!isKnown) return {};
  const auto all = static_cast<double>(doubts.size());
  std::vector<RejectPoint> curve;
  long correct = 0;
  double cost = 0.0;
  for (std::size_t i = 0; i < doubts.size(); ++i) {
    const Record& record = *doubts[i].record;
    correct += record.isCorrect() ? 1 : 0;
    cost += actualCost(evaluation.weighting().costs, record.trueLabel, record.decidedLabel());
    if (i + 1 < doubts.size() && doubts[i + 1].safety == doubts[i].safety) continue;
    const auto accepted = static_cast<long>(i) + 1;
    const auto kept = static_cast<double>(accepted);
    curve.push_back({doubts[i].value, accepted, correct, (all - kept) / all,
                     static_cast<double>(accepted - correct) / kept, cost / kept});
  }
  std::reverse(curve.begin(), curve.end());
  return curve;
}

std::vector<RejectPoint> thinned(const std::vector<RejectPoint>& curve, std::size_t count) {
  if (curve.size() <= count) return curve;
  std::vector<RejectPoint> points;
  for (std::size_t i = 0; i < count; ++i) {
    points.push_back(curve[i * (curve.size() - 1) / (count - 1)]);
  }
  return points;
}

}  // namespace eval
