// SPDX-License-Identifier: MIT
#include "tools/model_text.h"

#include <fmt/format.h>

#include <vector>

#include "tools/bayes_text.h"
#include "tools/model_parts.h"
#include "tools/text.h"
#include "tools/tree_text.h"

namespace cli {
namespace {

std::string nameAt(const std::vector<std::string>& names, long index, const char* kind) {
  const auto place = static_cast<std::size_t>(index);
  if (index < 0 || place >= names.size()) return fmt::format("{} {}", kind, index);
  return printable(names[place]);
}

std::string measurementsText(const Names& names) {
  std::vector<std::string> measurements;
  for (const std::string& name : names.measurements) measurements.push_back(printable(name));
  return fmt::format("measurements: {}\n", fmt::join(measurements, ", "));
}

/// Costs of their own follow the default, one a line.
std::string costsText(const vxClassifierCosts& costs, const Names& names) {
  std::string text =
      fmt::format("cost of a wrong decision: {:.6g}\n", costs.defaultMisclassificationCost());
  for (const PairCost& own : ownCosts(costs, static_cast<long>(names.categories.size()))) {
    text += fmt::format("  {} taken for {}: {:.6g}\n", categoryName(names, own.actual),
                        categoryName(names, own.assigned), own.cost);
  }
  return text;
}

std::string metricText(const vxPatternDistanceMetric* metric) {
  const auto* norm = dynamic_cast<const vxPatternDistanceMetricNorm*>(metric);
  if (norm == nullptr) return "of another kind";
  const double order = norm->order();
  const char* known = order == 2.0 ? " (Euclidean)" : order == 1.0 ? " (city-block)" : "";
  return fmt::format("norm of order {:.6g}{}", order, known);
}

std::string knnText(const vx_ClassifierKNN& classifier, const Names& names) {
  const vxClassifierTrainParamsKNN& params = classifier.params();
  const auto data = classifier.data();
  std::string text = fmt::format(
      "method: knn (k nearest neighbours)\n{}k: {}\ndistance: {}\n{}stored patterns: {}\n",
      measurementsText(names), params.k(), metricText(params.distanceMetric().get()),
      costsText(params.misclassificationCosts(), names), data->numPatterns());
  for (const auto& [label, count] : patternCounts(*data)) {
    text += fmt::format("  {}: {}\n", categoryName(names, label), count);
  }
  return text;
}

}  // namespace

std::string measurementName(const Names& names, long index) {
  return nameAt(names.measurements, index, "measurement");
}

std::string categoryName(const Names& names, long label) {
  return label == -1 ? "no category" : nameAt(names.categories, label, "category");
}

std::string modelText(const Model& model) {
  const auto classifier = model.tool.classifier();
  if (const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(classifier.get())) {
    return knnText(*knn, model.names);
  }
  if (const auto* bayes = dynamic_cast<const vx_ClassifierBayesian*>(classifier.get())) {
    const vxClassifierTrainParamsBayesian& params = bayesianParams(model.tool);
    return fmt::format("method: bayes (Bayesian classification)\n{}{}{}",
                       measurementsText(model.names),
                       costsText(params.misclassificationCosts(), model.names),
                       bayesText(*bayes, params.categoryFrequencies(), model.names));
  }
  if (const auto* tree = dynamic_cast<const vx_ClassifierDecisionTree*>(classifier.get())) {
    return fmt::format("method: tree (decision tree)\n{}\n{}", measurementsText(model.names),
                       treeText(tree->decisionTree().get(), model.names));
  }
  return "method: of another kind\n" + measurementsText(model.names);
}

}  // namespace cli
