// SPDX-License-Identifier: MIT
#include "tests/support/plain_knn.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>

#include "vxclss/errors.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"

namespace plain {

namespace {

// Compiled without the compiler's own idea of pow: it would turn pow(x, 2.0) into x * x, which is
// another number now and then.
double normDistance(double order, const vxFeaturePattern& a, const vxFeaturePattern& b) {
  if (a.numMeasurements() != b.numMeasurements()) {
    throw vxClassifierDefs::BadFeatures(
        L"Pattern distance function requires the number of measurementsin the two patterns to be equal");
  }
  double sum = 0.0;
  for (std::size_t i = 0; i < static_cast<std::size_t>(a.numMeasurements()); ++i) {
    const double ai = a.featureMeasurements(true)[i];
    const double bi = b.featureMeasurements(true)[i];
    sum += std::pow(std::fabs(ai - bi), order);
  }
  return std::pow(sum, 1.0 / order);
}

[[noreturn]] void throwInvalidMeasurements() {
  throw vxClassifierDefs::BadFeatures(
      L"K-nearest neighbor classification does not support invalid measurements");
}

}  // namespace

Distance norm(double order) {
  return [order](const vxFeaturePattern& a, const vxFeaturePattern& b) {
    return normDistance(order, a, b);
  };
}

void Knn::train(const TrainingSet& data, const Params& newParams) {
  untrain();
  params = newParams;
  set = std::make_shared<TrainingSet>();
  TrainingSet kept;
  for (std::size_t i = 0; i < data.patterns.size(); ++i) {
    if (data.patterns[i]->numInvalid() != 0) throwInvalidMeasurements();
    if (data.labels[i] == -1) continue;
    kept.patterns.push_back(data.patterns[i]);
    kept.labels.push_back(data.labels[i]);
  }
  for (const auto& pattern : kept.patterns) {
    if (pattern->numMeasurements() != kept.patterns[0]->numMeasurements()) {
      throw vxClassifierDefs::BadFeatures(
          L"Feature patterns must all have the same number of measurements");
    }
  }
  for (const long label : kept.labels) {
    if (label < -1) {
      throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0 or unknown");
    }
  }
  *set = kept;
  holdsTrainParams = true;
}

void Knn::trainStart() {
  untrain();
  holdsTrainParams = true;
}

void Knn::untrain() {
  if (isTrained()) holdsTrainParams = false;
  set.reset();
}

void Knn::retrain(const Params& newParams) {
  if (!isTrained()) {
    throw vxClassifierDefs::NotTrained(L"Classifier tool must be trained before retraining.");
  }
  if (!holdsTrainParams) {
    throw vxClassifierDefs::BadMethod(L"Cannot retrain with a different classification technique.");
  }
  params = newParams;
}

void Knn::trainIncremental(const vxFeaturePattern& pattern, long label) {
  if (!isTrained()) {
    throw vxClassifierDefs::NotTrained(
        L"Classifier tool must be trained before incremental training.");
  }
  if (!set->patterns.empty() && pattern.numMeasurements() != set->patterns[0]->numMeasurements()) {
    throw vxClassifierDefs::BadFeatures(
        L"Feature pattern must have the same number of measurements as the rest of the data.");
  }
  if (label < -1) throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0 or unknown");
  set->patterns.emplace_back(new vxFeaturePattern(pattern));
  set->labels.push_back(label);
}

// A list of k places, of which those beyond the number of stored patterns could never be taken.
std::vector<long> Knn::nearestNeighbors_(const vxFeaturePattern& query) const {
  const std::size_t stored = set->patterns.size();
  const std::size_t k = std::min(static_cast<std::size_t>(params.k), stored);
  std::vector<long> indices(k);
  std::vector<double> distances(k, std::numeric_limits<double>::infinity());
  std::size_t count = 0;
  for (std::size_t i = 0; i < stored; ++i) {
    vfThrowExceptionOnFailure(vfCheckAttention());
    const double d = params.distance(query, *set->patterns[i]);
    if (count >= k && d >= distances[k - 1]) continue;
    std::size_t pos = 0;
    while (d > distances[pos]) ++pos;
    if (count < k) ++count;
    for (std::size_t to = count - 1; to > pos; --to) {
      indices[to] = indices[to - 1];
      distances[to] = distances[to - 1];
    }
    indices[pos] = static_cast<long>(i);
    distances[pos] = d;
  }
  indices.resize(count);
  return indices;
}

void Knn::run(const vxFeaturePattern& query, vxClassifierResult& result) const {
  if (!isTrained()) {
    throw vxClassifierDefs::NotTrained(L"Classifier tool must be trained before running.");
  }
  if (set->patterns.empty()) {
    throw vxClassifierDefs::InsufficientTrainData(L"No valid data was provided for training.");
  }
  if (query.numInvalid() != 0 || query.numMeasurements() != set->patterns[0]->numMeasurements()) {
    throwInvalidMeasurements();
  }
  const std::vector<long> indices = nearestNeighbors_(query);

  std::map<long, long> counts;
  for (const long index : indices) ++counts[set->labels[static_cast<std::size_t>(index)]];
  const double m = static_cast<double>(indices.size());
  std::vector<vxClassifierCategoryResult> matches;
  for (const auto& [label, count] : counts) {
    matches.emplace_back(label, static_cast<double>(count) * (1.0 / m), 0.0, 0.0);
  }
  result = vxClassifierResult(matches, vxClassifierFrequencies(1.0), params.costs, 0.0);
}

}  // namespace plain
