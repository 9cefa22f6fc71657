// SPDX-License-Identifier: MIT
#include "vxclss/train_params_knn.h"

#include <utility>

#include "vxclss/classifier_knn.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN(long k)
    : vxClassifierTrainParamsKNN(k, vxPatternDistanceMetricNorm(2.0), vxClassifierCosts(1.0)) {}

vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN(long k,
                                                       const vxPatternDistanceMetric& metric,
                                                       const vxClassifierCosts& costs)
    : misclassificationCosts_(costs) {
  this->k(k);
  distanceMetric(metric);
}

vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN(const vxClassifierTrainParamsKNN&) = default;

vxClassifierTrainParamsKNN& vxClassifierTrainParamsKNN::operator=(
    const vxClassifierTrainParamsKNN& other) {
  vxClassifierCosts costs = other.misclassificationCosts_;
  vxClassifierTrainParams::operator=(other);
  k_ = other.k_;
  distanceMetric_ = other.distanceMetric_;
  misclassificationCosts_ = std::move(costs);
  return *this;
}

vxClassifierTrainParamsKNN::~vxClassifierTrainParamsKNN() = default;

void vxClassifierTrainParamsKNN::k(long k) {
  if (k < 1) throw vxClassifierDefs::BadParams(L"K must be >= 1");
  mutating_();
  k_ = k;
}

void vxClassifierTrainParamsKNN::distanceMetric(const vxPatternDistanceMetric& metric) {
  vxPtrHandle_const<vxPatternDistanceMetric> copy = metric.clone();
  mutating_();
  distanceMetric_.swap(copy);
}

void vxClassifierTrainParamsKNN::misclassificationCosts(const vxClassifierCosts& costs) {
  vxClassifierCosts copy = costs;
  mutating_();
  misclassificationCosts_ = std::move(copy);
}

vxPtrHandle<vxClassifierTrainParams> vxClassifierTrainParamsKNN::clone() const {
  return vxPtrHandle<vxClassifierTrainParams>(new vxClassifierTrainParamsKNN(*this));
}

bool vxClassifierTrainParamsKNN::isEqual_(const vxClassifierTrainParams& other) const {
  const auto* knn = dynamic_cast<const vxClassifierTrainParamsKNN*>(&other);
  return knn != nullptr && k_ == knn->k_ && distanceMetric_->isEquivalent(*knn->distanceMetric_) &&
         misclassificationCosts_ == knn->misclassificationCosts_;
}

bool vxClassifierTrainParamsKNN::isSameTechnique_(const vxClassifierTrainParams& other) const {
  return dynamic_cast<const vxClassifierTrainParamsKNN*>(&other) != nullptr;
}

vx_Classifier* vxClassifierTrainParamsKNN::newClassifier_() const { return new vx_ClassifierKNN; }

void vxClassifierTrainParamsKNN::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxClassifierTrainParamsKNN)}) {
    vxClassifierTrainParams::dispatchSerialize(archive);
    const auto fields = [&archive](vxClassifierTrainParamsKNN& target) {
      archive || target.k_ || target.distanceMetric_ || target.misclassificationCosts_;
      if (target.k_ < 1) throw vxArchive::Malformed(L"A number of neighbours below 1");
    };
    vfTransferStaged(archive, *this, fields, 1);
  }
}

vxPersistent* vxClassifierTrainParamsKNN::make() { return new vxClassifierTrainParamsKNN(1); }
vx_Instantiator vxClassifierTrainParamsKNN::sExemplar(typeid(vxClassifierTrainParamsKNN),
                                                      &vxClassifierTrainParamsKNN::make);
