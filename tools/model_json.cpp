// SPDX-License-Identifier: MIT
#include "tools/model_json.h"

#include <vxfoundation/vxfoundation.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <vector>

#include "tools/error.h"
#include "tools/model_parts.h"
#include "tools/tree_to_json.h"

namespace cli {
namespace {

Json nameAt(const std::vector<std::string>& names, long index) {
  const auto place = static_cast<std::size_t>(index);
  if (index < 0 || place >= names.size()) return index;
  return names[place];
}

Json costsJson(const vxClassifierCosts& costs, const Names& names) {
  Json pairs = Json::array();
  for (const PairCost& own : ownCosts(costs, static_cast<long>(names.categories.size()))) {
    pairs.push_back({{"true", names.categories[static_cast<std::size_t>(own.actual)]},
                     {"assigned", names.categories[static_cast<std::size_t>(own.assigned)]},
                     {"cost", jsonNumber(own.cost)}});
  }
  return {{"default", jsonNumber(costs.defaultMisclassificationCost())}, {"pairs", pairs}};
}

Json frequenciesJson(const vxClassifierFrequencies& frequencies, const Names& names) {
  Json categories = Json::array();
  for (const auto& [label, frequency] :
       ownFrequencies(frequencies, static_cast<long>(names.categories.size()))) {
    categories.push_back(
        {{"category", categoryJson(names, label)}, {"frequency", jsonNumber(frequency)}});
  }
  return {{"default", jsonNumber(frequencies.defaultCategoryFrequency())},
          {"categories", categories}};
}

Json distanceJson(const vxPatternDistanceMetric* metric) {
  const auto* norm = dynamic_cast<const vxPatternDistanceMetricNorm*>(metric);
  if (norm == nullptr) return {{"kind", "other"}};
  return {{"kind", "norm"}, {"order", jsonNumber(norm->order())}};
}

void addKnn(Json& json, const vx_ClassifierKNN& classifier, const Names& names) {
  const vxClassifierTrainParamsKNN& params = classifier.params();
  json["k"] = params.k();
  json["distance"] = distanceJson(params.distanceMetric().get());
  json["costs"] = costsJson(params.misclassificationCosts(), names);
  Json counts = Json::array();
  for (const auto& [label, count] : patternCounts(*classifier.data())) {
    counts.push_back({{"category", categoryJson(names, label)}, {"patterns", count}});
  }
  json["stored_patterns"] = {{"total", classifier.data()->numPatterns()}, {"categories", counts}};
}

Json memberNames(const std::vector<long>& group, const Names& names) {
  Json members = Json::array();
  for (const long index : group) members.push_back(measurementJson(names, index));
  return members;
}

Json normalJson(const vx_PDFMultivariateNormal& density, const std::vector<long>& group,
                const Names& names) {
  const vxNMMatrix mean = density.mean();
  const vxNMMatrix covariance = density.covariance();
  Json means = Json::array();
  for (long i = 0; i < mean.rows(); ++i) means.push_back(jsonNumber(mean.element(i, 0)));
  Json rows = Json::array();
  for (long i = 0; i < covariance.rows(); ++i) {
    Json row = Json::array();
    for (long j = 0; j < covariance.columns(); ++j) {
      const double value = covariance.element(i, j);
      // A variance of -0.0 marks a measurement with fewer than two samples.
      row.push_back(i == j && std::signbit(value) && value == 0.0 ? Json() : jsonNumber(value));
    }
    rows.push_back(row);
  }
  return {{"measurements", memberNames(group, names)},
          {"distribution", "normal"},
          {"samples", density.sampleCount()},
          {"mean", means},
          {"covariance", rows}};
}

Json densityJson(const vx_ProbabilityDensityFunction* density, const std::vector<long>& group,
                 const Names& names) {
  if (const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(density)) {
    return normalJson(*normal, group, names);
  }
  const auto* binomial = dynamic_cast<const vx_PDFBinomial*>(density);
  if (binomial == nullptr) {
    return {{"measurements", memberNames(group, names)}, {"distribution", "other"}};
  }
  return {{"measurements", memberNames(group, names)},
          {"distribution", "binomial"},
          {"trials", binomial->numTrials()},
          {"theta", jsonNumber(binomial->theta())},
          {"maximum", jsonNumber(binomial->maximumValue())}};
}

void addBayes(Json& json, const vxClassifierTool& tool, const vx_ClassifierBayesian& classifier,
              const Names& names) {
  const vxClassifierTrainParamsBayesian& params = bayesianParams(tool);
  json["costs"] = costsJson(params.misclassificationCosts(), names);
  json["frequencies"] = frequenciesJson(params.categoryFrequencies(), names);
  Json models = Json::array();
  for (const auto& held : classifier.categoryModels()) {
    const auto& model = vfCheckedCast<vx_CategoryModelBayesian>(*held);
    const long label = model.categoryLabel();
    const auto densities = model.densities();
    Json all = Json::array();
    for (std::size_t k = 0; k < densities.size(); ++k) {
      all.push_back(densityJson(densities[k].get(), model.measurementGroups().at(k), names));
    }
    models.push_back(
        {{"category", categoryJson(names, label)},
         {"frequency", jsonNumber(params.categoryFrequencies().categoryFrequency(label))},
         {"densities", all}});
  }
  json["models"] = models;
}

}  // namespace

Json measurementJson(const Names& names, long index) { return nameAt(names.measurements, index); }

Json categoryJson(const Names& names, long label) {
  return label == -1 ? Json() : nameAt(names.categories, label);
}

Json modelJson(const Model& model) {
  Json json{{"method", methodName(model.tool)},
            {"measurements", model.names.measurements},
            {"categories", model.names.categories}};
  const vx_Classifier* classifier = model.tool.classifier().get();
  if (const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(classifier)) {
    addKnn(json, *knn, model.names);
  } else if (const auto* bayes = dynamic_cast<const vx_ClassifierBayesian*>(classifier)) {
    addBayes(json, model.tool, *bayes, model.names);
  } else if (const auto* tree = dynamic_cast<const vx_ClassifierDecisionTree*>(classifier)) {
    json["tree"] = treeJson(tree->decisionTree().get(), model.names);
  }
  return json;
}

}  // namespace cli
