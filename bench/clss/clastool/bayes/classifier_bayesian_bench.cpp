// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <vector>

namespace {

constexpr long kQueries = 64;
constexpr double kLn2Pi = 0x1.d67f1c864beb4p+0;

using PatternHandle = vxPtrHandle_const<vxFeaturePattern>;
using Matrix = std::vector<std::vector<double>>;

/// How the measurements of a category are grouped.
enum Grouping { kSingle, kDependent };

/// Patterns around a mean of their category, the categories in turn; neighbouring measurements
/// correlate.
vxClassifierDataProviderMemory randomData(long n, long numCategories, long d, long seed) {
  vxRandomGaussian random(seed);
  std::vector<PatternHandle> patterns;
  std::vector<long> labels;
  std::vector<double> measurements(static_cast<std::size_t>(d));
  for (long i = 0; i < n; ++i) {
    labels.push_back(i % numCategories);
    const double mean = 0.1 * static_cast<double>(labels.back());
    double common = 0.0;
    for (double& x : measurements) {
      common = 0.5 * common + random.next(0.0, 1.0);
      x = mean + common;
    }
    patterns.emplace_back(new vxFeaturePattern(measurements, {}));
  }
  vxClassifierDataProviderMemory data;
  data.data(patterns, labels);
  return data;
}

vxClassifierTrainParamsBayesian paramsFor(long numCategories, long d, Grouping grouping) {
  vxClassifierDistributionTypes types;
  std::vector<long> all(static_cast<std::size_t>(d));
  std::iota(all.begin(), all.end(), 0L);
  for (long label = 0; grouping == kDependent && label < numCategories; ++label) {
    types.setDependent(label, all);
  }
  return {types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), vxFeaturePattern({}, {})};
}

/// The normal density by its definition; eliminates `covariance`.
double plainLogDensity(Matrix covariance, const std::vector<double>& deviations) {
  const std::size_t d = deviations.size();
  std::vector<double> rest = deviations;
  double logValue = 0.0;
  for (std::size_t k = 0; k < d; ++k) {
    const double pivot = covariance[k][k];
    logValue -= 0.5 * (kLn2Pi + std::log(pivot) + rest[k] * rest[k] / pivot);
    for (std::size_t i = k + 1; i < d; ++i) {
      const double factor = covariance[i][k] / pivot;
      rest[i] -= factor * rest[k];
      for (std::size_t j = k + 1; j < d; ++j) covariance[i][j] -= factor * covariance[k][j];
    }
  }
  return logValue;
}

double plainLogLikelihood(const vxClassifierDataProviderMemory& data, long label,
                          const vxFeaturePattern& query, Grouping grouping) {
  std::vector<std::vector<double>> samples;
  for (long i = 0; i < data.numPatterns(); ++i) {
    if (data.categoryLabel(i) == label) {
      samples.push_back(data.featurePattern(i)->featureMeasurements(true));
    }
  }
  const std::size_t d = query.featureMeasurements(true).size();
  std::vector<double> mean(d), deviations(d);
  for (std::size_t j = 0; j < d; ++j) {
    for (const auto& sample : samples) mean[j] += sample[j] / static_cast<double>(samples.size());
    deviations[j] = query.featureMeasurements(true)[j] - mean[j];
  }
  Matrix covariance(d, std::vector<double>(d));
  for (const auto& sample : samples) {
    for (std::size_t i = 0; i < d; ++i) {
      for (std::size_t j = 0; j < d; ++j) {
        if (grouping == kSingle && i != j) continue;
        covariance[i][j] +=
            (sample[i] - mean[i]) * (sample[j] - mean[j]) / static_cast<double>(samples.size() - 1);
      }
    }
  }
  return plainLogDensity(covariance, deviations);
}

/// Whether the match scores are the likelihoods that the definition gives.
bool isRight(const vxClassifierResult& result, const vxClassifierDataProviderMemory& data,
             const vxFeaturePattern& query, Grouping grouping) {
  return std::all_of(result.categoryResults().begin(), result.categoryResults().end(),
                     [&](const vxClassifierCategoryResult& category) {
                       const double likelihood =
                           plainLogLikelihood(data, category.categoryLabel(), query, grouping);
                       const double expected = std::exp(likelihood + result.matchScoreFactorLog());
                       return std::fabs(category.matchScore() - expected) <= 1e-6;
                     });
}

void train(benchmark::State& state, Grouping grouping) {
  const long n = state.range(0), d = state.range(1), numCategories = state.range(2);
  const vxClassifierDataProviderMemory data = randomData(n, numCategories, d, /*seed=*/1);
  const vxClassifierTrainParamsBayesian params = paramsFor(numCategories, d, grouping);
  vxClassifierTool tool;
  tool.train(data, params);
  const vxFeaturePattern query(*randomData(1, numCategories, d, /*seed=*/2).featurePattern(0));
  vxClassifierResult result;
  tool.run(query, result);
  if (!isRight(result, data, query, grouping)) state.SkipWithError("wrong result");

  for (auto _ : state) tool.train(data, params);
  state.SetItemsProcessed(state.iterations() * n);
}

void bayesTrainSingle(benchmark::State& state) { train(state, kSingle); }
BENCHMARK(bayesTrainSingle)
    ->ArgNames({"n", "d", "C"})
    ->Args({100000, 32, 10})
    ->Unit(benchmark::kMillisecond);

void bayesTrainDependent(benchmark::State& state) { train(state, kDependent); }
BENCHMARK(bayesTrainDependent)
    ->ArgNames({"n", "d", "C"})
    ->Args({100000, 32, 10})
    ->Unit(benchmark::kMillisecond);

void run(benchmark::State& state, Grouping grouping) {
  const long numCategories = state.range(0), d = state.range(1);
  const vxClassifierDataProviderMemory data = randomData(numCategories * 4 * d, numCategories, d,
                                                         /*seed=*/1);
  const vxClassifierDataProviderMemory queries = randomData(kQueries, numCategories, d, /*seed=*/2);
  vxClassifierTool tool;
  tool.train(data, paramsFor(numCategories, d, grouping));
  vxClassifierResult result;
  tool.run(*queries.featurePattern(0), result);
  if (!isRight(result, data, *queries.featurePattern(0), grouping)) {
    state.SkipWithError("wrong result");
  }

  std::vector<PatternHandle> patterns;
  for (long i = 0; i < kQueries; ++i) patterns.push_back(queries.featurePattern(i));
  std::size_t turn = 0;
  for (auto _ : state) {
    tool.run(*patterns[turn++ % kQueries], result);
    benchmark::DoNotOptimize(result);
  }
}

void bayesRunSingle(benchmark::State& state) { run(state, kSingle); }
BENCHMARK(bayesRunSingle)
    ->ArgNames({"C", "d"})
    ->ArgsProduct({{3, 30, 300}, {8, 32}})
    ->Unit(benchmark::kMicrosecond);

void bayesRunDependent(benchmark::State& state) { run(state, kDependent); }
BENCHMARK(bayesRunDependent)
    ->ArgNames({"C", "d"})
    ->ArgsProduct({{3, 30}, {8, 32}})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
