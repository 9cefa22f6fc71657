// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <utility>
#include <vector>

#include "clastool/clastool/result_weighting.h"
#include "tests/support/allocation_meter.h"
#include "tests/support/attention_counter.h"
#include "tests/support/error_matcher.h"
#include "tests/support/weighting_problem.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/exception.h"

namespace {

const std::size_t kCounts[] = {1, 3, 16, 17, 40, 300};

void weighInto(vxClassifierResult& result, const WeightingProblem& problem,
               const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs) {
  vx_ResultWeighting::weigh(problem.matches.data(), problem.matches.size(), frequencies, costs,
                            -2.5, result);
}

TEST(ResultWeightingMemoryTest, TakesWhatTheResultHolds) {
  for (const std::size_t count : kCounts) {
    SCOPED_TRACE(count);
    const WeightingProblem problem(1, count, WeightingProblem::kFullMantissa);
    const vxClassifierFrequencies frequencies = problem.frequencies.record();
    const vxClassifierCosts costs = problem.costs.record();
    const vxClassifierResult first(problem.matches, frequencies, costs, 0.0);
    const AllocationMeter meter;
    const vxClassifierResult result(problem.matches, frequencies, costs, 0.0);
    EXPECT_EQ(meter.calls(), 1u);
    EXPECT_EQ(meter.bytes(), count * sizeof(vxClassifierCategoryResult));
  }
}

TEST(ResultWeightingMemoryTest, TakesWhatAGivenResultHolds) {
  for (const std::size_t count : kCounts) {
    SCOPED_TRACE(count);
    std::vector<vxClassifierCategoryResult> given;
    for (std::size_t i = count; i > 0; --i) {
      given.emplace_back(static_cast<long>(i), 0.0, 1.0, static_cast<double>(i));
    }
    const vxClassifierResult first(given, 0.0);
    const AllocationMeter meter;
    const vxClassifierResult result(given, 0.0);
    EXPECT_EQ(meter.calls(), 1u);
  }
}

TEST(ResultWeightingMemoryTest, TakesNothingWhereTheResultHasRoom) {
  for (const std::size_t count : kCounts) {
    SCOPED_TRACE(count);
    const WeightingProblem problem(1, count, WeightingProblem::kFullMantissa);
    const vxClassifierFrequencies frequencies = problem.frequencies.record();
    const vxClassifierCosts costs = problem.costs.record();
    vxClassifierResult result;
    weighInto(result, problem, frequencies, costs);
    const AllocationMeter meter;
    weighInto(result, problem, frequencies, costs);
    EXPECT_EQ(meter.calls(), 0u);
  }
}

TEST(ResultWeightingMemoryTest, ReplacesResultsOfAnyLength) {
  vxClassifierResult result;
  for (const std::size_t count : {40u, 3u, 300u, 17u, 16u, 1u}) {
    SCOPED_TRACE(count);
    const WeightingProblem problem(1, count, WeightingProblem::kFullMantissa);
    weighInto(result, problem, problem.frequencies.record(), problem.costs.record());
    EXPECT_TRUE(result == problem.result());
  }
}

TEST(ResultWeightingMemoryTest, LeavesTheResultAloneWhateverPollStops) {
  for (const std::size_t count : {3u, 40u}) {
    const WeightingProblem problem(1, count, WeightingProblem::kFullMantissa);
    const vxClassifierFrequencies frequencies = problem.frequencies.record();
    const vxClassifierCosts costs = problem.costs.record();
    const WeightingProblem before(2, 50, WeightingProblem::kWholeNumbers);
    vxClassifierResult result = before.result();
    for (std::size_t stopAt = 1; stopAt <= count; ++stopAt) {
      const AttentionCounter attention(static_cast<long>(stopAt));
      expectRefused<vxStopRequested>(
          result, [&] { weighInto(result, problem, frequencies, costs); },
          vxStopRequested().message());
      EXPECT_EQ(attention.polls(), static_cast<long>(stopAt));
    }
    weighInto(result, problem, frequencies, costs);
    EXPECT_TRUE(result == problem.result()) << "what a stopped call left does no harm";
  }
}

/// Weighs something else at every poll.
bool weighOther(void* context) {
  auto& [other, isBusy] = *static_cast<std::pair<const WeightingProblem*, bool>*>(context);
  if (isBusy) return false;
  isBusy = true;
  EXPECT_EQ(other->result().categoryResults().size(), other->matches.size());
  isBusy = false;
  return false;
}

TEST(ResultWeightingMemoryTest, LetsAHandlerWeighOtherResults) {
  for (const std::size_t count : {3u, 40u}) {
    const WeightingProblem problem(1, count, WeightingProblem::kFullMantissa);
    const WeightingProblem other(2, 60, WeightingProblem::kFullMantissa);
    const vxClassifierResult expected = problem.result();
    std::pair<const WeightingProblem*, bool> context(&other, false);
    vfSetAttentionHandler(&weighOther, &context);
    const vxClassifierResult result = problem.result();
    vfSetAttentionHandler(nullptr, nullptr);
    EXPECT_TRUE(result == expected);
  }
}

/// Makes one decision dearer.
bool raiseCost(void* context) {
  static_cast<vxClassifierCosts*>(context)->misclassificationCostOverride(1, 2, 8.0);
  return false;
}

TEST(ResultWeightingMemoryTest, LooksAtCostsAfterTheLastPoll) {
  vxClassifierCosts costs(1.0);
  vfSetAttentionHandler(&raiseCost, &costs);
  const vxClassifierResult result({match(1, 0.5), match(2, 0.5)}, vxClassifierFrequencies(1.0),
                                  costs, 0.0);
  vfSetAttentionHandler(nullptr, nullptr);
  EXPECT_TRUE(isSame(result.categoryResults(), {{1, 0.5, 0.5, 0.5}, {2, 0.5, 0.5, 4.0}}));
}

}  // namespace
