// SPDX-License-Identifier: MIT
#include "vxclss/train_params_bayesian.h"

#include <utility>

#include "vxclss/classifier_bayesian.h"
#include "vxfoundation/archive.h"

vxClassifierTrainParamsBayesian::vxClassifierTrainParamsBayesian(
    const vxClassifierDistributionTypes& distributionTypes,
    const vxClassifierFrequencies& categoryFrequencies,
    const vxClassifierCosts& misclassificationCosts, const vxFeaturePattern& maxMeasurementValues)
    : distributionTypes_(distributionTypes),
      categoryFrequencies_(categoryFrequencies),
      misclassificationCosts_(misclassificationCosts),
      maxMeasurementValues_(maxMeasurementValues) {}

vxClassifierTrainParamsBayesian::vxClassifierTrainParamsBayesian(
    const vxClassifierTrainParamsBayesian&) = default;

vxClassifierTrainParamsBayesian& vxClassifierTrainParamsBayesian::operator=(
    const vxClassifierTrainParamsBayesian& other) {
  vxClassifierTrainParamsBayesian copy(other);
  vxClassifierTrainParams::operator=(other);
  distributionTypes_ = std::move(copy.distributionTypes_);
  categoryFrequencies_ = std::move(copy.categoryFrequencies_);
  misclassificationCosts_ = std::move(copy.misclassificationCosts_);
  maxMeasurementValues_ = std::move(copy.maxMeasurementValues_);
  return *this;
}

vxClassifierTrainParamsBayesian::~vxClassifierTrainParamsBayesian() = default;

void vxClassifierTrainParamsBayesian::distributionTypes(
    const vxClassifierDistributionTypes& types) {
  vxClassifierDistributionTypes copy = types;
  mutating_();
  distributionTypes_ = std::move(copy);
}

void vxClassifierTrainParamsBayesian::categoryFrequencies(
    const vxClassifierFrequencies& frequencies) {
  vxClassifierFrequencies copy = frequencies;
  mutating_();
  categoryFrequencies_ = std::move(copy);
}

void vxClassifierTrainParamsBayesian::misclassificationCosts(const vxClassifierCosts& costs) {
  vxClassifierCosts copy = costs;
  mutating_();
  misclassificationCosts_ = std::move(copy);
}

void vxClassifierTrainParamsBayesian::maxMeasurementValues(const vxFeaturePattern& values) {
  mutating_();
  maxMeasurementValues_ = values;
}

vxPtrHandle<vxClassifierTrainParams> vxClassifierTrainParamsBayesian::clone() const {
  return vxPtrHandle<vxClassifierTrainParams>(new vxClassifierTrainParamsBayesian(*this));
}

bool vxClassifierTrainParamsBayesian::isEqual_(const vxClassifierTrainParams& other) const {
  const auto* bayesian = dynamic_cast<const vxClassifierTrainParamsBayesian*>(&other);
  return bayesian != nullptr && distributionTypes_ == bayesian->distributionTypes_ &&
         misclassificationCosts_ == bayesian->misclassificationCosts_ &&
         categoryFrequencies_ == bayesian->categoryFrequencies_ &&
         maxMeasurementValues_ == bayesian->maxMeasurementValues_;
}

bool vxClassifierTrainParamsBayesian::isSameTechnique_(const vxClassifierTrainParams& other) const {
  return dynamic_cast<const vxClassifierTrainParamsBayesian*>(&other) != nullptr;
}

vx_Classifier* vxClassifierTrainParamsBayesian::newClassifier_() const {
  return new vx_ClassifierBayesian;
}

void vxClassifierTrainParamsBayesian::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxClassifierTrainParamsBayesian)}) {
    vxClassifierTrainParams::dispatchSerialize(archive);
    const auto fields = [&archive](vxClassifierTrainParamsBayesian& target) {
      archive || target.distributionTypes_ || target.misclassificationCosts_ ||
          target.categoryFrequencies_ || target.maxMeasurementValues_;
    };
    vfTransferStaged(archive, *this, fields, vxClassifierDistributionTypes(),
                     vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                     vxFeaturePattern({}, {}));
  }
}

vxPersistent* vxClassifierTrainParamsBayesian::make() {
  return new vxClassifierTrainParamsBayesian(vxClassifierDistributionTypes(),
                                             vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                                             vxFeaturePattern({}, {}));
}
vx_Instantiator vxClassifierTrainParamsBayesian::sExemplar(typeid(vxClassifierTrainParamsBayesian),
                                                           &vxClassifierTrainParamsBayesian::make);
