// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace {

constexpr std::size_t kQueries = 64;

using Tree = vxPtrHandle_const<vxDecisionTree>;

Tree leaf(long label) {
  return Tree(new vxDecisionTreeLeaf(vxClassifierResult({{label, 1.0, 1.0, 0.0}}, 0.0)));
}

/// Each level asks about its own measurement: whether it is above the next one, or, where the
/// answer before was yes, whether it is positive. The last answer is the label.
Tree treeOf(long depth) {
  const vxRange positive(0.0, std::numeric_limits<double>::max());
  Tree afterNo = leaf(0), afterYes = leaf(1);
  for (long level = depth - 1; level >= 0; --level) {
    const Tree compares(
        new vxDecisionTreeNode(vxComparisonPredicate(level, level + 1), *afterYes, *afterNo));
    const Tree isWithin(
        new vxDecisionTreeNode(vxRangePredicate(positive, {level}), *afterYes, *afterNo));
    afterNo = compares;
    afterYes = isWithin;
  }
  return afterNo;
}

long plainLabel(const vxFeaturePattern& query, std::size_t depth) {
  const std::vector<double>& x = query.featureMeasurements(true);
  bool answer = false;
  for (std::size_t level = 0; level < depth; ++level) {
    answer = answer ? x[level] >= 0.0 : x[level] > x[level + 1];
  }
  return answer ? 1 : 0;
}

void decisionTreeWalk(benchmark::State& state) {
  const auto depth = static_cast<std::size_t>(state.range(0));
  vxRandomUniform random(1);
  std::vector<vxFeaturePattern> queries;
  while (queries.size() < kQueries) {
    std::vector<double> measurements(depth + 1);
    for (double& x : measurements) x = random.next(-1.0, 1.0);
    queries.emplace_back(measurements, std::vector<long>());
  }
  vxClassifierTool tool;
  tool.train(*treeOf(state.range(0)));
  vxClassifierResult result;
  for (const vxFeaturePattern& query : queries) {
    tool.run(query, result);
    if (result.categoryResults().front().categoryLabel() != plainLabel(query, depth)) {
      state.SkipWithError("wrong result");
    }
  }

  std::size_t turn = 0;
  for (auto _ : state) {
    tool.run(queries[turn++ % kQueries], result);
    benchmark::DoNotOptimize(result);
  }
}
BENCHMARK(decisionTreeWalk)->ArgName("depth")->Arg(10)->Arg(20)->Unit(benchmark::kNanosecond);

}  // namespace
