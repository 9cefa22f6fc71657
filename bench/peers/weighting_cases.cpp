// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxclss/vxclss.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/peers/cases.h"
#include "bench/peers/data.h"

namespace peers {

namespace {

/// How many inputs to go round in: so many that no branch predictor learns them.
std::size_t numInputs(std::size_t numCategories) {
  return std::max<std::size_t>(16, 30000 / numCategories);
}

using CategoryResults = std::vector<vxClassifierCategoryResult>;
using Scores = std::vector<double>;

/// Match scores of one magnitude, so that every category counts.
Scores evenScores(std::size_t numCategories, long seed) {
  vxRandomUniform random(seed);
  Scores scores(numCategories);
  for (double& score : scores) score = random.next(0.0, 1.0);
  return scores;
}

/// Likelihood ratios to the best of normal densities of unit spread around random means: all but a
/// few vanish beside it.
Scores likelihoodScores(std::size_t numCategories, long seed) {
  constexpr std::size_t kD = 16;
  constexpr double kSpreadOfMeans = 3.0;
  vxRandomGaussian random(seed);
  Scores logs(numCategories);
  for (double& log : logs) {
    for (std::size_t j = 0; j < kD; ++j) {
      const double deviation = random.next(0.0, kSpreadOfMeans);
      log -= 0.5 * deviation * deviation;
    }
  }
  const double best = *std::max_element(logs.begin(), logs.end());
  for (double& score : logs) score = std::exp(score - best);
  return logs;
}

struct Weights {
  vxClassifierFrequencies frequencies{1.0};
  vxClassifierCosts costs{1.0};
};

/// A frequency for every category, and a cost for mistaking it for the next one.
Weights overrides(std::size_t numCategories) {
  Weights weights;
  vxRandomUniform random(3);
  for (std::size_t i = 0; i < numCategories; ++i) {
    const auto label = static_cast<long>(i), next = static_cast<long>((i + 1) % numCategories);
    weights.frequencies.categoryFrequencyOverride(label, random.next(0.5, 2.0));
    weights.costs.misclassificationCostOverride(label, next, random.next(0.0, 9.0));
  }
  return weights;
}

/// Whether scores and costs are, bit for bit, those of the weighting's definition.
bool isRight(const CategoryResults& input, const Weights& weights) {
  const std::size_t n = input.size();
  std::vector<double> weighted(n);
  double sumOfFrequencies = 0.0, sum = 0.0;
  for (const auto& category : input) {
    sumOfFrequencies += weights.frequencies.categoryFrequency(category.categoryLabel());
  }
  for (std::size_t i = 0; i < n; ++i) {
    weighted[i] = input[i].matchScore() *
                  weights.frequencies.categoryFrequency(input[i].categoryLabel()) /
                  sumOfFrequencies;
    sum += weighted[i];
  }
  const vxClassifierResult result(input, weights.frequencies, weights.costs, 0.0);
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    const long label = category.categoryLabel();  // which is its place, too
    double cost = 0.0;
    for (std::size_t j = 0; j < n; ++j) {
      if (input[j].categoryLabel() == label) continue;
      cost += weights.costs.misclassificationCost(input[j].categoryLabel(), label) * weighted[j];
    }
    if (category.expectedCost() != cost / sum ||
        category.classScore() != weighted[static_cast<std::size_t>(label)] / sum) {
      return false;
    }
  }
  return result.categoryResults().size() == n;
}

std::vector<CategoryResults> inputsOf(Scores (*make)(std::size_t, long),
                                      std::size_t numCategories) {
  std::vector<CategoryResults> inputs;
  for (std::size_t i = 0; i < numInputs(numCategories); ++i) {
    CategoryResults input;
    for (const double score : make(numCategories, static_cast<long>(i + 1))) {
      input.emplace_back(static_cast<long>(input.size()), score, 0.0, 0.0);
    }
    inputs.push_back(input);
  }
  return inputs;
}

Contestant weighing(const char* name, const std::vector<CategoryResults>& inputs,
                    const Weights& weights) {
  return contestant(name, [&inputs, &weights, turn = Rotation(inputs.size())]() mutable {
    const vxClassifierResult result(inputs[turn.next()], weights.frequencies, weights.costs, 0.0);
  });
}

Times timesFor(Scores (*make)(std::size_t, long), std::size_t numCategories, const Extent& extent,
               Report& report) {
  const std::vector<CategoryResults> inputs = inputsOf(make, numCategories);
  const Weights uniform, overridden = overrides(numCategories);
  for (const Weights* weights : {&uniform, &overridden}) {
    const bool right = isRight(inputs[0], *weights);
    report.answers("result weighting, vxclss, bit for bit", 1, right ? 0 : 1);
    if (!right) report.wrong(fmt::format("result weighting, C = {}", numCategories));
  }
  std::vector<Scores> unsorted;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    unsorted.push_back(evenScores(numCategories, static_cast<long>(i + 1)));
  }
  Scores sorted;
  return inTurns({weighing("vxclss, uniform costs", inputs, uniform),
                  weighing("vxclss, with overrides", inputs, overridden),
                  contestant("std::sort of C doubles",
                             [&, turn = Rotation(unsorted.size())]() mutable {
                               sorted = unsorted[turn.next()];
                               std::sort(sorted.begin(), sorted.end());
                             })},
                 extent.effort);
}

}  // namespace

void measureWeighting(const Extent& extent, Report& report) {
  constexpr const char* kGroup = "result weighting, C = 1000";
  const auto measure = [&](const char* scores, Scores (*make)(std::size_t, long)) {
    const Times times = timesFor(make, 1000, extent, report);
    report.times(fmt::format("result weighting, C = 1000, {}", scores), times);
    const double uniform = times.at("vxclss, uniform costs");
    report.figure(kGroup, fmt::format("{}, uniform costs, of std::sort of 1000 doubles", scores),
                  uniform / times.at("std::sort of C doubles"), "", atMost(3.0));
    report.figure(kGroup, fmt::format("{}, with overrides, of the uniform time", scores),
                  times.at("vxclss, with overrides") / uniform, "", atMost(3.0));
  };
  measure("scores of a Bayes run", &likelihoodScores);
  measure("even scores", &evenScores);
  if (!extent.withPlots) return;
  for (const std::size_t numCategories : {2, 5, 10, 30, 100, 300, 1000}) {
    report.point("weighting by C", static_cast<double>(numCategories),
                 timesFor(&likelihoodScores, numCategories, extent, report));
  }
}

}  // namespace peers
