// SPDX-License-Identifier: MIT
//
// The interval is E. B. Wilson's ("Probable inference, the law of succession, and statistical
// inference", Journal of the American Statistical Association 22(158), 1927, 209-212): unlike the
// normal approximation's it is of use for few trials and for shares near 0 and 1.
#include "tools/eval/scores.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace eval {
namespace {

constexpr double kNormalQuantile = 1.959963984540054;  // of 0.975

template <class Value>
double meanOf(const std::vector<Record>& records, Value value) {
  double sum = 0.0;
  for (const Record& record : records) sum += value(record);
  return sum / static_cast<double>(records.size());
}

}  // namespace

Interval wilsonInterval(long successes, long trials) {
  const auto n = static_cast<double>(trials);
  const double share = static_cast<double>(successes) / n;
  const double z = kNormalQuantile;
  const double centre = (share + z * z / (2.0 * n)) / (1.0 + z * z / n);
  const double half =
      z / (1.0 + z * z / n) * std::sqrt(share * (1.0 - share) / n + z * z / (4.0 * n * n));
  if (trials == 0) return {share, share};
  // Exactly 0 and 1 there, but for rounding.
  return {successes == 0 ? 0.0 : centre - half, successes == trials ? 1.0 : centre + half};
}

double actualCost(const vxClassifierCosts& costs, long trueLabel, long decidedLabel) {
  return trueLabel == decidedLabel ? 0.0 : costs.misclassificationCost(trueLabel, decidedLabel);
}

double meanExpectedCost(const std::vector<Record>& records) {
  return meanOf(records, [](const Record& record) { return record.decision().expectedCost(); });
}

double meanActualCost(const std::vector<Record>& records, const vxClassifierCosts& costs) {
  return meanOf(records, [&](const Record& record) {
    return actualCost(costs, record.trueLabel, record.decidedLabel());
  });
}

double logLoss(const std::vector<Record>& records) {
  constexpr double kLeast = std::numeric_limits<double>::epsilon();
  return meanOf(records, [&](const Record& record) {
    const double score = record.classScore(record.trueLabel);
    return -std::log(score < kLeast ? kLeast : score);
  });
}

}  // namespace eval
