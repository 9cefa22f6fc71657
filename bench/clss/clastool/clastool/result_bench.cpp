// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace {

// More inputs of few categories, so that branch prediction can't learn them all.
std::size_t numInputs(long numCategories) {
  return std::max<std::size_t>(16, 4096 / static_cast<std::size_t>(numCategories));
}

using CategoryResults = std::vector<vxClassifierCategoryResult>;

CategoryResults randomMatchScores(long numCategories, vxRandomUniform& random) {
  CategoryResults scores;
  for (long label = 0; label < numCategories; ++label) {
    scores.emplace_back(label, random.next(0.0, 1.0), 0.0, 0.0);
  }
  return scores;
}

/// Whether the first decision is the cheapest one, of the cost that the definition gives.
bool isRight(const vxClassifierResult& result, const vxClassifierCosts& costs) {
  const CategoryResults& categories = result.categoryResults();
  const vxClassifierCategoryResult& first = categories.front();
  double expected = 0.0;
  for (const vxClassifierCategoryResult& other : categories) {
    if (other.expectedCost() < first.expectedCost()) return false;
    if (other.categoryLabel() == first.categoryLabel()) continue;
    expected += other.classScore() *
                costs.misclassificationCost(other.categoryLabel(), first.categoryLabel());
  }
  return std::fabs(first.expectedCost() - expected) <= 1e-9;
}

void weigh(benchmark::State& state, const vxClassifierFrequencies& frequencies,
           const vxClassifierCosts& costs) {
  vxRandomUniform random(1);
  std::vector<CategoryResults> inputs;
  while (inputs.size() < numInputs(state.range(0))) {
    inputs.push_back(randomMatchScores(state.range(0), random));
  }
  if (!isRight(vxClassifierResult(inputs[0], frequencies, costs, 0.0), costs)) {
    state.SkipWithError("wrong result");
  }
  std::size_t turn = 0;
  for (auto _ : state) {
    if (++turn == inputs.size()) turn = 0;
    benchmark::DoNotOptimize(vxClassifierResult(inputs[turn], frequencies, costs, 0.0));
  }
}

void resultWithoutOverrides(benchmark::State& state) {
  weigh(state, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0));
}
BENCHMARK(resultWithoutOverrides)
    ->ArgName("C")
    ->Arg(2)
    ->Arg(3)
    ->Arg(10)
    ->Arg(30)
    ->Arg(100)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond);

/// A frequency for every category, and a cost for mistaking it for the next one.
void resultWithOverrides(benchmark::State& state) {
  vxClassifierFrequencies frequencies(1.0);
  vxClassifierCosts costs(1.0);
  vxRandomUniform random(2);
  for (long label = 0; label < state.range(0); ++label) {
    frequencies.categoryFrequencyOverride(label, random.next(0.5, 2.0));
    costs.misclassificationCostOverride(label, (label + 1) % state.range(0), random.next(0.0, 9.0));
  }
  weigh(state, frequencies, costs);
}
BENCHMARK(resultWithOverrides)
    ->ArgName("C")
    ->Arg(2)
    ->Arg(3)
    ->Arg(10)
    ->Arg(30)
    ->Arg(100)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond);

/// What sorting as many numbers takes, for comparison.
void sortNumbers(benchmark::State& state) {
  vxRandomUniform random(1);
  std::vector<std::vector<double>> inputs;
  while (inputs.size() < numInputs(state.range(0))) {
    std::vector<double>& input = inputs.emplace_back();
    for (long i = 0; i < state.range(0); ++i) input.push_back(random.next(0.0, 1.0));
  }
  std::vector<double> numbers;
  std::size_t turn = 0;
  for (auto _ : state) {
    if (++turn == inputs.size()) turn = 0;
    numbers = inputs[turn];
    std::sort(numbers.begin(), numbers.end());
    benchmark::DoNotOptimize(numbers.data());
  }
}
BENCHMARK(sortNumbers)->ArgName("n")->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
