// SPDX-License-Identifier: MIT
#include "tools/variants.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "tools/correlation.h"

namespace cli {
namespace {

constexpr double kCorrelated = 0.5;

/// A category with that many times the patterns of another makes counted frequencies worth a try.
constexpr double kUnequal = 1.2;

/// Values of more than that scatter like any other measurement.
constexpr double kLargestCount = 100.0;

Variant bayes(const std::string& name, std::vector<std::string> more) {
  Variant variant{"bayes, " + name, "bayes", {"--method=bayes"}};
  for (std::string& argument : more) variant.arguments.push_back(std::move(argument));
  return variant;
}

std::vector<std::string> dependentArguments(const Dataset& data,
                                            const std::vector<std::vector<long>>& groups) {
  std::vector<std::string> arguments;
  for (const std::vector<long>& group : groups) {
    std::vector<std::string> names;
    for (const long i : group) {
      names.push_back(data.names.measurements[static_cast<std::size_t>(i)]);
    }
    arguments.push_back(fmt::format("--dependent={}", fmt::join(names, ",")));
  }
  return arguments;
}

void addDependent(const Dataset& data, std::vector<Variant>& variants) {
  const std::size_t width = data.names.measurements.size();
  if (width < 2) return;
  std::vector<long> all;
  for (std::size_t i = 0; i < width; ++i) all.push_back(static_cast<long>(i));
  variants.push_back(bayes("all dependent", dependentArguments(data, {all})));
  const std::vector<std::vector<long>> groups = correlatedGroups(data, kCorrelated);
  if (groups.empty() || groups[0] == all) return;
  variants.push_back(bayes("correlated dependent", dependentArguments(data, groups)));
}

void addCountedFrequencies(const Dataset& data, std::vector<Variant>& variants) {
  std::vector<long> counts(data.names.categories.size(), 0);
  for (const long label : data.labels) {
    if (label >= 0) ++counts[static_cast<std::size_t>(label)];
  }
  const auto [fewest, most] = std::minmax_element(counts.begin(), counts.end());
  if (static_cast<double>(*most) <= kUnequal * static_cast<double>(*fewest)) return;
  std::vector<std::string> arguments;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    arguments.push_back(fmt::format("--frequency={}={}", data.names.categories[i], counts[i]));
  }
  variants.push_back(bayes("independent, frequencies as counted", arguments));
}

/// The largest value, if all are whole numbers from 0 to kLargestCount that differ; 0 if not.
double largestCount(const Dataset& data, std::size_t column) {
  double largest = 0.0;
  for (std::size_t p = 0; p < data.patterns.size(); ++p) {
    const auto index = static_cast<long>(column);
    if (data.labels[p] < 0 || !data.patterns[p]->isValid(index)) continue;
    const double value = data.patterns[p]->featureMeasurement(index, true);
    if (value < 0.0 || value > kLargestCount || value != std::floor(value)) return 0.0;
    largest = std::max(largest, value);
  }
  return largest;
}

void addBinomial(const Dataset& data, std::vector<Variant>& variants) {
  std::vector<std::string> arguments;
  for (std::size_t i = 0; i < data.names.measurements.size(); ++i) {
    const double largest = largestCount(data, i);
    if (largest < 1.0) continue;
    arguments.push_back(fmt::format("--distribution={}=binomial", data.names.measurements[i]));
    arguments.push_back(fmt::format("--maximum={}={}", data.names.measurements[i], largest));
  }
  if (!arguments.empty()) variants.push_back(bayes("independent, counts binomial", arguments));
}

}  // namespace

std::vector<Variant> variantsFor(const Dataset& data) {
  std::vector<Variant> variants;
  for (const long order : {2, 1}) {
    for (const long k : {1, 3, 5, 9, 15}) {
      if (order == 1 && k != 1 && k != 5) continue;
      variants.push_back({fmt::format("knn, k {}{}", k, order == 1 ? ", order 1" : ""),
                          "knn",
                          {"--method=knn", fmt::format("--k={}", k)}});
      if (order == 1) variants.back().arguments.emplace_back("--order=1");
    }
  }
  variants.push_back(bayes("independent", {}));
  addDependent(data, variants);
  addCountedFrequencies(data, variants);
  addBinomial(data, variants);
  return variants;
}

}  // namespace cli
