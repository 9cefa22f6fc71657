// SPDX-License-Identifier: MIT
// The weighting of match results against its definition, at each level of instructions.

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "fuzz/draw.h"
#include "fuzz/outcome_bits.h"
#include "fuzz/target.h"
#include "tests/support/plain_result.h"
#include "vxclss/vxclss.h"

namespace {

using fuzz::Draw;
using Categories = std::vector<vxClassifierCategoryResult>;

/// In [0, 1], or NaN: what a match score may be.
double score(Draw& draw) {
  const std::uint8_t kind = draw.byte();
  if (kind < 64) return static_cast<double>(kind % 5) / 4.0;
  if (kind < 96) return 0.0;
  const double number = std::fabs(draw.number());
  if (std::isnan(number)) return number;
  return number > 1.0 ? 1.0 / number : number;
}

/// At least 0, infinite or NaN too.
double cost(Draw& draw) {
  return draw.rarely(4) ? std::fabs(draw.number()) : static_cast<double>(draw.below(4));
}

/// Above 0, infinite or NaN too.
double frequency(Draw& draw) {
  const double number = cost(draw);
  return number == 0.0 ? 0.5 : number;
}

/// No standing of a NaN among costs is right or wrong, so there the order is left out.
std::string bitsOf(Categories categories) {
  const auto hasNoCost = [](const auto& category) { return std::isnan(category.expectedCost()); };
  if (std::any_of(categories.begin(), categories.end(), hasNoCost)) {
    std::sort(categories.begin(), categories.end(),
              [](const auto& a, const auto& b) { return a.categoryLabel() < b.categoryLabel(); });
  }
  std::string bits;
  for (const auto& category : categories) fuzz::appendBits(bits, category);
  return bits;
}

bool areDifferent(const Categories& categories) {
  std::set<long> labels;
  for (const auto& category : categories) labels.insert(category.categoryLabel());
  return labels.size() == categories.size();
}

}  // namespace

VX_FUZZ_TARGET(same_weights) {
  Draw draw(data, size);
  const long count = draw.rarely(8) ? draw.below(100) : draw.below(20);
  const long repeats = draw.rarely(8) ? 1 + draw.below(3) : 1;
  const long stride = 1 + draw.below(3);
  plain::Frequencies frequencies;
  plain::Costs costs;
  frequencies.defaultFrequency = frequency(draw);
  costs.defaultCost = cost(draw);
  for (long i = draw.rarely(6) ? draw.below(40) : draw.below(4); i > 0; --i) {
    const long trueLabel = draw.below(24) * stride;
    const long assigned = draw.below(24) * stride;
    if (trueLabel != assigned) costs.set(trueLabel, assigned, cost(draw));
  }
  for (long i = draw.below(20); i > 0; --i) frequencies.set(draw.below(24), frequency(draw));

  Categories matches;
  for (long i = 0; i < count; ++i) {
    // Far labels lie between near ones, where lookups by place would go wrong.
    const long label = draw.rarely(20) ? draw.below(8) : i * stride;
    matches.emplace_back(label, score(draw), 0.0, 0.0);
  }
  for (long r = 1; r < repeats; ++r) {
    for (long i = 0; i < count; ++i) {
      const auto& model = matches[static_cast<std::size_t>(i)];
      matches.emplace_back(model.categoryLabel() + 1000 * r, model.matchScore(), 0.0, 0.0);
    }
  }

  const vxClassifierFrequencies frequencyRecord = frequencies.record();
  const vxClassifierCosts costRecord = costs.record();
  std::string expected;
  vxClassifierResult result;
  fuzz::atEachLevel([&] {
    const std::string bits = fuzz::outcomeBits([&] {
      result = vxClassifierResult(matches, frequencyRecord, costRecord, 0.25);
      return result;
    });
    if (expected.empty()) expected = bits;
    fuzz::demandSame(bits, expected, "every level gives the same");
  });

  double priorSum = 0.0;
  double weightSum = 0.0;
  for (const auto& match : matches) priorSum += frequencies.of(match.categoryLabel());
  for (const auto& match : matches) {
    weightSum += match.matchScore() * frequencies.of(match.categoryLabel()) / priorSum;
  }
  if (!areDifferent(matches) || matches.empty() || priorSum == 0.0 || weightSum == 0.0) return;
  Categories weighed;
  try {
    weighed = plain::weigh(matches, frequencies, costs);
  } catch (const vxClassifierDefs::BadParams&) {
    fuzz::demand(result.categoryResults().empty(), "what has no result is refused");
    return;
  }
  plain::sortByExpectedCost(weighed);
  fuzz::demand(bitsOf(weighed) == bitsOf(result.categoryResults()),
               "the weighting gives what its definition says");
}
