// SPDX-License-Identifier: MIT
#include "vxclss/classifier_knn.h"

#include <algorithm>
#include <limits>
#include <map>

#include "vxclss/errors.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"

namespace {

constexpr long kUnknownLabel = -1;

[[noreturn]] void throwUnsupportedMeasurements() {
  throw vxClassifierDefs::BadFeatures(
      L"K-nearest neighbor classification does not support invalid measurements");
}

}  // namespace

vx_ClassifierKNN::vx_ClassifierKNN() : params_(1) {}

vx_ClassifierKNN& vx_ClassifierKNN::operator=(const vx_ClassifierKNN& other) {
  params_ = other.params_;  // the only step that can fail
  vx_Classifier::operator=(other);
  data_ = other.data_;
  return *this;
}

vx_ClassifierKNN::~vx_ClassifierKNN() = default;

vxPtrHandle<vx_Classifier> vx_ClassifierKNN::clone() const {
  return vxPtrHandle<vx_Classifier>(new vx_ClassifierKNN(*this));
}

bool vx_ClassifierKNN::isEquivalent(const vx_Classifier& other) const {
  const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(&other);
  return knn != nullptr && *this == *knn;
}

bool vx_ClassifierKNN::operator==(const vx_ClassifierKNN& other) const {
  return vx_Classifier::isEquivalent(other) && (data_.isNull() || *data_ == *other.data_);
}

void vx_ClassifierKNN::train_(const vxClassifierDataProvider& data,
                              const vxClassifierTrainParams& params) {
  params_ = vfCheckedCast<vxClassifierTrainParamsKNN>(params);
  data_.reset(new vxClassifierDataProviderMemory);
  data_->setName(data.name());
  data_->setDescription(data.description());

  std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
  std::vector<long> labels;
  const long count = data.numPatterns();
  for (long i = 0; i < count; ++i) {
    const vxPtrHandle_const<vxFeaturePattern> pattern = data.featurePattern(i);
    if (pattern->numInvalid() != 0) throwUnsupportedMeasurements();
    const long label = data.categoryLabel(i);
    if (label == kUnknownLabel) continue;
    patterns.push_back(pattern);
    labels.push_back(label);
  }
  data_->data(patterns, labels);
}

void vx_ClassifierKNN::retrain_(const vxClassifierTrainParams& params) {
  if (heldTrainParams_().isNull()) vfThrowBadPointer();
  params_ = vfCheckedCast<vxClassifierTrainParamsKNN>(params);
}

void vx_ClassifierKNN::trainStart_(const vxClassifierTrainParams&) {}

void vx_ClassifierKNN::trainIncremental_(const vxFeaturePattern& pattern, long label) {
  data_->addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(pattern)), label);
}

void vx_ClassifierKNN::untrain_() { data_.reset(); }

bool vx_ClassifierKNN::isTrained_() const { return !data_.isNull(); }

void vx_ClassifierKNN::checkRunnable_() const {
  if (data_->numPatterns() == 0) {
    throw vxClassifierDefs::InsufficientTrainData(L"No valid data was provided for training.");
  }
}

void vx_ClassifierKNN::run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
  checkRunnable_();
  if (pattern.numInvalid() != 0 || pattern.numMeasurements() != data_->numMeasurements()) {
    throwUnsupportedMeasurements();
  }
  std::vector<long> indices;
  std::vector<double> distances;
  findNearestNeighbors_(pattern, params_.k(), indices, distances);

  std::vector<vxClassifierCategoryResult> matchResults;
  fillMatchResults_(indices, matchResults);
  result = vxClassifierResult(matchResults, vxClassifierFrequencies(1.0),
                              params_.misclassificationCosts(), 0.0);
}

void vx_ClassifierKNN::recordTrainInputs_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierKNN::recordTrainDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierKNN::recordTrainResults_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierKNN::recordRunInputs_(vxDiagObject*, unsigned long,
                                        const vxFeaturePattern&) const {}
void vx_ClassifierKNN::recordRunDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierKNN::recordRunResults_(vxDiagObject*, unsigned long, const vxFeaturePattern&,
                                         const vxClassifierResult&) const {}

void vx_ClassifierKNN::findNearestNeighbors_(const vxFeaturePattern& pattern, long k,
                                             std::vector<long>& indices,
                                             std::vector<double>& distances) const {
  const long stored = data_->numPatterns();
  const auto places = static_cast<std::size_t>(std::min(k, stored));  // k may be huge
  indices.assign(places, 0);
  distances.assign(places, std::numeric_limits<double>::infinity());
  const vxPtrHandle_const<vxPatternDistanceMetric> metric = params_.distanceMetric();

  std::size_t count = 0;
  for (long i = 0; i < stored; ++i) {
    vfThrowExceptionOnFailure(vfCheckAttention());
    const double d = metric->distance(pattern, *data_->featurePattern(i));
    if (count == places && d >= distances.back()) continue;

    // A NaN stops the scan at once, and so does a NaN already in the list.
    std::size_t place = 0;
    while (d > distances[place]) ++place;
    if (count < places) ++count;
    for (std::size_t last = count - 1; last > place; --last) {
      indices[last] = indices[last - 1];
      distances[last] = distances[last - 1];
    }
    indices[place] = i;
    distances[place] = d;
  }
}

void vx_ClassifierKNN::fillMatchResults_(const std::vector<long>& indices,
                                         std::vector<vxClassifierCategoryResult>& results) const {
  std::map<long, long> neighboursByLabel;
  for (const long index : indices) ++neighboursByLabel[data_->categoryLabel(index)];
  const double share = 1.0 / static_cast<double>(indices.size());
  for (const auto& [label, neighbours] : neighboursByLabel) {
    results.emplace_back(label, static_cast<double>(neighbours) * share, 0.0, 0.0);
  }
}

void vx_ClassifierKNN::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_ClassifierKNN)}) {
    vfTransferStaged(archive, *this, [&archive](vx_ClassifierKNN& target) {
      target.vx_Classifier::dispatchSerialize(archive);
      archive || target.data_;
    });
  }
}

vxPersistent* vx_ClassifierKNN::make() { return new vx_ClassifierKNN; }
vx_Instantiator vx_ClassifierKNN::sExemplar(typeid(vx_ClassifierKNN), &vx_ClassifierKNN::make);
