// SPDX-License-Identifier: MIT
#include "vxclss/classifier_knn.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "clastool/clastool/lent.h"
#include "clastool/clastool/result_weighting.h"
#include "kernel/attended.h"
#include "kernel/scratch.h"
#include "neighbour_list.h"
#include "neighbour_search.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"

namespace {

constexpr long kUnknownLabel = -1;

/// What a run needs, kept by its thread.
struct RunRoom {
  vx_NeighbourSearch search;
  std::vector<vxClassifierCategoryResult> matchResults;
};

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
    vxPtrHandle_const<vxFeaturePattern> pattern = data.featurePattern(i);
    if (pattern->numInvalid() != 0) throwUnsupportedMeasurements();
    const long label = data.categoryLabel(i);
    if (label == kUnknownLabel) continue;
    patterns.push_back(std::move(pattern));
    labels.push_back(label);
  }
  data_->data_(std::move(patterns), std::move(labels));
  data_->packedPatterns_();
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
  vx_Lent<RunRoom> room;
  std::vector<vxClassifierCategoryResult>& matchResults = room->matchResults;
  matchResults.clear();
  if (findQuickly_(pattern, room->search)) {
    fillMatchResults_(room->search.neighbours(), matchResults);
  } else {
    std::vector<long> indices;
    std::vector<double> distances;
    findNearestNeighbors_(pattern, params_.k(), indices, distances);
    fillMatchResults_(indices, matchResults);
  }
  vx_ResultWeighting::weigh(matchResults.data(), matchResults.size(), vxClassifierFrequencies(1.0),
                            params_.misclassificationCosts(), 0.0, result);
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
  const vxPtrHandle_const<vxPatternDistanceMetric> metric = params_.distanceMetric();
  // k may be huge.
  vx_NeighbourList list(static_cast<std::size_t>(std::min(k, stored)), indices, distances);
  for (long i = 0; i < stored; ++i) {
    vfThrowExceptionOnFailure(vfCheckAttention());
    list.admit(i, metric->distance(pattern, *data_->featurePattern(i)));
  }
}

bool vx_ClassifierKNN::findQuickly_(const vxFeaturePattern& pattern,
                                    vx_NeighbourSearch& search) const {
  const vxClassifierDataProviderMemory& data = *data_;
  // No handle of its own: threads that run at once would hand its count to and fro.
  const vxPatternDistanceMetric* metric = params_.distanceMetric_.get();
  // A host's own class may answer otherwise.
  if (metric == nullptr || typeid(*metric) != typeid(vxPatternDistanceMetricNorm) ||
      typeid(data) != typeid(vxClassifierDataProviderMemory)) {
    return false;
  }
  const vx_PackedPatterns* packed = data.packedPatterns_();
  if (packed == nullptr || !packed->isUsable()) return false;

  if (!search.find(*packed, pattern, static_cast<const vxPatternDistanceMetricNorm&>(*metric),
                   static_cast<std::size_t>(params_.k()))) {
    return false;
  }
  // No distance can fail here, so all polls may come after all distances.
  const long polls = vx_isAttended() ? data.numPatterns() : 0;
  for (long i = 0; i < polls; ++i) vfThrowExceptionOnFailure(vfCheckAttention());
  return true;
}

void vx_ClassifierKNN::fillMatchResults_(const std::vector<long>& indices,
                                         std::vector<vxClassifierCategoryResult>& results) const {
  vx_Scratch<long> scratch(indices.size());
  long* const labels = scratch.data();
  long* const end = std::transform(indices.begin(), indices.end(), labels,
                                   [this](long index) { return data_->categoryLabel(index); });
  std::sort(labels, end);
  const double share = 1.0 / static_cast<double>(indices.size());
  std::size_t categories = 0;
  for (const long* label = labels; label != end; ++label) {
    if (label == labels || label[0] != label[-1]) ++categories;
  }
  results.reserve(categories);
  for (const long* first = labels; first != end;) {
    const long* const last = std::upper_bound(first, static_cast<const long*>(end), *first);
    results.emplace_back(*first, static_cast<double>(last - first) * share, 0.0, 0.0);
    first = last;
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
