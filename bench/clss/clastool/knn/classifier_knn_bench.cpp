// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace {

constexpr long kCategories = 5;
constexpr long kQueries = 64;

using PatternHandle = vxPtrHandle_const<vxFeaturePattern>;

/// Patterns of unit spread around a mean of their category, the categories in turn.
vxClassifierDataProviderMemory randomData(long n, long d, long seed) {
  vxRandomGaussian random(seed);
  std::vector<PatternHandle> patterns;
  std::vector<long> labels;
  std::vector<double> measurements(static_cast<std::size_t>(d));
  for (long i = 0; i < n; ++i) {
    labels.push_back(i % kCategories);
    for (double& x : measurements) x = random.next(0.5 * static_cast<double>(labels.back()), 1.0);
    patterns.emplace_back(new vxFeaturePattern(measurements, {}));
  }
  vxClassifierDataProviderMemory data;
  data.data(patterns, labels);
  return data;
}

/// The training set of a size. It takes longer to make than to search, so the last one is kept.
const vxClassifierDataProviderMemory& trainingData(long n, long d) {
  static vxClassifierDataProviderMemory last;
  if (last.numPatterns() != n || last.numMeasurements() != d) last = randomData(n, d, /*seed=*/1);
  return last;
}

/// Whether the match scores are the shares of the k nearest patterns, found by sorting.
bool isRight(const vxClassifierResult& result, const vxClassifierDataProviderMemory& data,
             const vxFeaturePattern& query, long k) {
  const vxPatternDistanceMetricNorm metric(2.0);
  std::vector<std::pair<double, long>> neighbours;
  for (long i = 0; i < data.numPatterns(); ++i) {
    neighbours.emplace_back(metric.distance(query, *data.featurePattern(i)), data.categoryLabel(i));
  }
  std::partial_sort(neighbours.begin(), neighbours.begin() + k, neighbours.end());
  std::map<long, double> shares;
  for (long i = 0; i < k; ++i) {
    shares[neighbours[static_cast<std::size_t>(i)].second] += 1.0 / static_cast<double>(k);
  }
  if (result.categoryResults().size() != shares.size()) return false;
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    if (std::fabs(category.matchScore() - shares[category.categoryLabel()]) > 1e-9) return false;
  }
  return true;
}

void knnTrain(benchmark::State& state) {
  // Two sets in turn, so that no training finds the memory of the one before it.
  const vxClassifierDataProviderMemory sets[] = {randomData(state.range(0), state.range(1), 1),
                                                 randomData(state.range(0), state.range(1), 2)};
  const vxClassifierTrainParamsKNN params(5);
  vxClassifierTool tool;
  tool.train(sets[0], params);
  vxClassifierResult result;
  const vxFeaturePattern query(*sets[0].featurePattern(0));
  tool.run(query, result);
  if (!isRight(result, sets[0], query, params.k())) state.SkipWithError("wrong result");

  std::size_t turn = 0;
  for (auto _ : state) tool.train(sets[turn++ % 2], params);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(knnTrain)
    ->ArgNames({"n", "d"})
    ->ArgsProduct({{1000, 100000}, {4, 16, 64}})
    ->Unit(benchmark::kMicrosecond);

void knnRun(benchmark::State& state) {
  const long k = state.range(2);
  const vxClassifierDataProviderMemory& data = trainingData(state.range(0), state.range(1));
  const vxClassifierDataProviderMemory queries = randomData(kQueries, state.range(1), /*seed=*/2);
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsKNN(k));
  vxClassifierResult result;
  tool.run(*queries.featurePattern(0), result);
  if (!isRight(result, data, *queries.featurePattern(0), k)) state.SkipWithError("wrong result");

  std::vector<PatternHandle> patterns;
  for (long i = 0; i < kQueries; ++i) patterns.push_back(queries.featurePattern(i));
  std::size_t turn = 0;
  for (auto _ : state) {
    tool.run(*patterns[turn++ % kQueries], result);
    benchmark::DoNotOptimize(result);
  }
}
BENCHMARK(knnRun)
    ->ArgNames({"n", "d", "k"})
    ->Apply([](auto* run) {
      for (const long n : {1000, 100000}) {
        for (const long d : {4, 16, 64}) {
          for (const long k : {1, 5, 25}) run->Args({n, d, k});
        }
      }
    }) -> Unit(benchmark::kMicrosecond);

}  // namespace
