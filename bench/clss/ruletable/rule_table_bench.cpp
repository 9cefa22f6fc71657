// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace {

constexpr std::size_t kQueries = 64;
constexpr double kPlateau = 0.25;  // half the width of a band, and of what is above 0 besides
constexpr double kEnd = 1.5;

using Centres = std::vector<std::vector<double>>;  // of each rule, for each feature

std::vector<double> randomValues(std::size_t count, vxRandomUniform& random) {
  std::vector<double> values(count);
  for (double& x : values) x = random.next(0.0, 1.0);
  return values;
}

vxClassifierRuleTable tableOf(const Centres& centres) {
  std::vector<vxClassifierRule> rules;
  for (const std::vector<double>& bands : centres) {
    std::vector<vxPtrHandle<vxClsFtSc>> methods;
    for (const double x : bands) {
      const vxPtrHandle<vxClassifierFeatureScoreTwoSided> band(
          new vxClassifierFeatureScoreTwoSided);
      band->init(x - kPlateau, x - kEnd, x - kEnd, x + kPlateau, x + kEnd, x + kEnd, 1.0, 0.0, 1.0,
                 0.0);
      methods.push_back(band);
    }
    vxClassifierRule rule;
    rule.init(methods, static_cast<long>(rules.size()));
    rules.push_back(rule);
  }
  vxClassifierRuleTable table;
  table.train(rules);
  return table;
}

/// The first rule whose geometric mean is above the threshold, -1 if there is none.
long plainLabel(const Centres& centres, const std::vector<double>& values, double threshold) {
  for (std::size_t rule = 0; rule < centres.size(); ++rule) {
    double sumOfLogs = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
      const double distance = std::fabs(values[i] - centres[rule][i]);
      if (distance > kPlateau) sumOfLogs += std::log((kEnd - distance) / (kEnd - kPlateau));
    }
    if (std::exp(sumOfLogs / static_cast<double>(values.size())) > threshold) {
      return static_cast<long>(rule);
    }
  }
  return -1;
}

void ruleTableClassify(benchmark::State& state) {
  const auto numRules = static_cast<std::size_t>(state.range(0));
  const auto numFeatures = static_cast<std::size_t>(state.range(1));
  vxRandomUniform random(1);
  Centres centres;
  while (centres.size() < numRules) centres.push_back(randomValues(numFeatures, random));
  const vxClassifierRuleTable table = tableOf(centres);
  std::vector<vxClassifierFeatureVector> queries;
  while (queries.size() < kQueries) queries.emplace_back(randomValues(numFeatures, random));
  for (const vxClassifierFeatureVector& query : queries) {
    for (const double threshold : {0.7, 0.9, 0.95}) {
      if (table.classifyHardThreshold(query, threshold) !=
          plainLabel(centres, query.featureValues(), threshold)) {
        state.SkipWithError("wrong result");
      }
    }
  }

  // No rule is above 1.0, so that every one of them is scored.
  std::size_t turn = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(table.classifyHardThreshold(queries[turn++ % kQueries], 1.0));
  }
}
BENCHMARK(ruleTableClassify)
    ->ArgNames({"rules", "features"})
    ->Args({100, 16})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
