// SPDX-License-Identifier: MIT
#include "tests/support/centroid_technique.h"

#include <cmath>

#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace host {

vxPtrHandle<vxClassifierTrainParams> CentroidParams::clone() const {
  return vxPtrHandle<CentroidParams>(new CentroidParams(*this));
}

bool CentroidParams::isEqual_(const vxClassifierTrainParams& other) const {
  const auto* params = dynamic_cast<const CentroidParams*>(&other);
  return params != nullptr && scale_ == params->scale_;
}

bool CentroidParams::isSameTechnique_(const vxClassifierTrainParams& other) const {
  return dynamic_cast<const CentroidParams*>(&other) != nullptr;
}

vx_Classifier* CentroidParams::newClassifier_() const {
  if (!(scale_ > 0.0)) throw vxClassifierDefs::BadParams(L"scale must be > 0");
  return new CentroidClassifier;
}

void CentroidParams::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(CentroidParams)}) {
    vxClassifierTrainParams::dispatchSerialize(archive);
    archive || scale_;
  }
}

double CentroidModel::matchScore(const vxFeaturePattern& pattern, vxDiagObject*,
                                 unsigned long) const {
  double square = 0.0;
  for (long i = 0; i < numMeasurements(); ++i) {
    const double mean = sums_[static_cast<std::size_t>(i)] / static_cast<double>(count_);
    const double difference = pattern.featureMeasurement(i, true) - mean;
    square += difference * difference;
  }
  return scale / (scale + std::sqrt(square));
}

void CentroidModel::adapt(const vxFeaturePattern& pattern, vxDiagObject*, unsigned long) {
  numMeasurements(pattern.numMeasurements());
  sums_.resize(static_cast<std::size_t>(pattern.numMeasurements()));
  for (std::size_t i = 0; i < sums_.size(); ++i) sums_[i] += pattern.featureMeasurements(true)[i];
  ++count_;
}

bool CentroidModel::operator==(const CentroidModel& other) const {
  return vx_CategoryModel::operator==(other) && scale == other.scale && sums_ == other.sums_ &&
         count_ == other.count_;
}

void CentroidModel::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(CentroidModel)}) {
    vx_CategoryModel::dispatchSerialize(archive);
    archive || scale || sums_ || count_;
    if (archive.isLoading() && sums_.size() != static_cast<std::size_t>(numMeasurements())) {
      throw vxArchive::Malformed(L"sums of a centroid");
    }
  }
}

CentroidClassifier::CentroidClassifier(const CentroidClassifier& other)
    : vx_Classifier(other), trained_(other.trained_) {
  for (const auto& model : other.models_) models_.emplace_back(new CentroidModel(*model));
}

vxPtrHandle<vx_Classifier> CentroidClassifier::clone() const {
  return vxPtrHandle<CentroidClassifier>(new CentroidClassifier(*this));
}

bool CentroidClassifier::isEquivalent(const vx_Classifier& other) const {
  const auto* centroid = dynamic_cast<const CentroidClassifier*>(&other);
  if (centroid == nullptr || !vx_Classifier::isEquivalent(other)) return false;
  if (models_.size() != centroid->models_.size()) return false;
  for (std::size_t i = 0; i < models_.size(); ++i) {
    if (!(*models_[i] == *centroid->models_[i])) return false;
  }
  return true;
}

void CentroidClassifier::train_(const vxClassifierDataProvider& data,
                                const vxClassifierTrainParams& params) {
  trainStart_(params);
  for (long i = 0; i < data.numPatterns(); ++i) {
    trainIncremental_(*data.featurePattern(i), data.categoryLabel(i));
  }
  retrain_(params);
}

void CentroidClassifier::retrain_(const vxClassifierTrainParams& params) {
  for (const auto& model : models_) model->scale = vfCheckedCast<CentroidParams>(params).scale();
}

void CentroidClassifier::trainStart_(const vxClassifierTrainParams&) {
  models_.clear();
  trained_ = 1;
}

void CentroidClassifier::trainIncremental_(const vxFeaturePattern& pattern, long label) {
  if (label < 0) throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0");
  for (const auto& model : models_) {
    if (model->categoryLabel() == label) return model->adapt(pattern, nullptr, 0);
  }
  models_.emplace_back(new CentroidModel);
  models_.back()->categoryLabel(label);
  models_.back()->adapt(pattern, nullptr, 0);
}

void CentroidClassifier::untrain_() {
  models_.clear();
  trained_ = 0;
}

void CentroidClassifier::checkRunnable_() const {
  if (models_.empty()) throw vxClassifierDefs::InsufficientTrainData(L"no centroid");
}

void CentroidClassifier::run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
  checkRunnable_();
  std::vector<vxClassifierCategoryResult> matches;
  for (const auto& model : models_) {
    matches.emplace_back(model->categoryLabel(), model->matchScore(pattern, nullptr, 0), 0.0, 0.0);
  }
  result = vxClassifierResult(matches, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), 0.0);
}

void CentroidClassifier::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(CentroidClassifier)}) {
    vx_Classifier::dispatchSerialize(archive);
    archive || trained_ || models_;
    if (archive.isStoring()) return;
    for (const auto& model : models_) {
      if (model.isNull()) throw vxArchive::Malformed(L"no centroid");
    }
  }
}

}  // namespace host
