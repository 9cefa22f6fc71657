// SPDX-License-Identifier: MIT
#include "tools/eval/contribution.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <numeric>

#include "tools/eval/nearest.h"

namespace eval {
namespace {

using Groups = std::vector<std::vector<long>>;

const vx_CategoryModelBayesian* modelOf(const vx_ClassifierBayesian& classifier, long label) {
  for (const vxPtrHandle_const<vx_CategoryModel>& model : classifier.categoryModels()) {
    if (model->categoryLabel() != label) continue;
    return dynamic_cast<const vx_CategoryModelBayesian*>(model.get());
  }
  return nullptr;
}

/// The finest partition of [0, numMeasurements) that splits no group of either list: entry i is the
/// first measurement of i's part.
std::vector<long> commonParts(long numMeasurements, const Groups& a, const Groups& b) {
  std::vector<long> part(static_cast<std::size_t>(numMeasurements));
  std::iota(part.begin(), part.end(), 0L);
  for (const Groups* groups : {&a, &b}) {
    for (const std::vector<long>& group : *groups) {
      std::vector<long> touched;
      for (const long member : group) {
        if (member < numMeasurements) touched.push_back(part[static_cast<std::size_t>(member)]);
      }
      if (touched.empty()) continue;
      const long first = *std::min_element(touched.begin(), touched.end());
      for (long& own : part) {
        if (std::find(touched.begin(), touched.end(), own) != touched.end()) own = first;
      }
    }
  }
  return part;
}

/// The measurements of a group, as its density takes them.
vxFeaturePattern cut(const vxFeaturePattern& pattern, const std::vector<long>& group) {
  std::vector<double> measurements;
  std::vector<long> invalid;
  for (const long member : group) {
    if (!pattern.isValid(member)) invalid.push_back(static_cast<long>(measurements.size()));
    measurements.push_back(pattern.featureMeasurement(member, false));
  }
  return {measurements, invalid};
}

/// Adds each group's log density to its part.
void addDensities(const vx_CategoryModelBayesian& model, const vxFeaturePattern& pattern,
                  const std::vector<long>& part, double Contribution::*sum,
                  std::map<long, Contribution>& byPart) {
  const auto densities = model.densities();
  for (std::size_t k = 0; k < densities.size(); ++k) {
    const std::vector<long>& group = model.measurementGroups().at(k);
    if (group.empty() || group[0] >= static_cast<long>(part.size())) continue;
    byPart[part[static_cast<std::size_t>(group[0])]].*sum +=
        densities[k]->logValue(cut(pattern, group));
  }
}

Explanation ofDensities(const vx_ClassifierBayesian& classifier, const vxFeaturePattern& pattern,
                        long decidedLabel, long trueLabel) {
  const vx_CategoryModelBayesian* decided = modelOf(classifier, decidedLabel);
  const vx_CategoryModelBayesian* correct = modelOf(classifier, trueLabel);
  if (decided == nullptr || correct == nullptr) return {};
  const std::vector<long> part = commonParts(
      pattern.numMeasurements(), decided->measurementGroups(), correct->measurementGroups());
  std::map<long, Contribution> byPart;
  for (std::size_t i = 0; i < part.size(); ++i) {
    byPart[part[i]].measurements.push_back(static_cast<long>(i));
  }
  addDensities(*decided, pattern, part, &Contribution::forDecided, byPart);
  addDensities(*correct, pattern, part, &Contribution::forTrue, byPart);
  Explanation explanation;
  for (const auto& entry : byPart) explanation.contributions.push_back(entry.second);
  return explanation;
}

Explanation ofNeighbours(const vx_ClassifierKNN& classifier, const vxFeaturePattern& pattern,
                         long decidedLabel, long trueLabel) {
  const vxPtrHandle_const<vxPatternDistanceMetric> metric = classifier.params().distanceMetric();
  const auto* norm = dynamic_cast<const vxPatternDistanceMetricNorm*>(metric.get());
  const long decided = nearestStored(classifier, pattern, decidedLabel).index;
  const long correct = nearestStored(classifier, pattern, trueLabel).index;
  if (norm == nullptr || decided < 0 || correct < 0) return {};
  const auto score = [&](long stored, long i) {
    const vxFeaturePattern& other = *classifier.data()->featurePattern(stored);
    return -std::pow(
        std::fabs(pattern.featureMeasurement(i, false) - other.featureMeasurement(i, false)),
        norm->order());
  };
  Explanation explanation;
  for (long i = 0; i < pattern.numMeasurements(); ++i) {
    explanation.contributions.push_back({{i}, score(decided, i), score(correct, i)});
  }
  return explanation;
}

}  // namespace

Explanation explanation(const vxClassifierTool& tool, const vxFeaturePattern& pattern,
                        long decidedLabel, long trueLabel) {
  const vxPtrHandle_const<vx_Classifier> classifier = tool.classifier();
  if (const auto* bayes = dynamic_cast<const vx_ClassifierBayesian*>(classifier.get())) {
    return ofDensities(*bayes, pattern, decidedLabel, trueLabel);
  }
  if (const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(classifier.get())) {
    return ofNeighbours(*knn, pattern, decidedLabel, trueLabel);
  }
  return {};
}

}  // namespace eval
