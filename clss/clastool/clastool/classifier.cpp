// SPDX-License-Identifier: MIT
#include "vxclss/classifier.h"

#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

vx_Classifier::~vx_Classifier() = default;

bool vx_Classifier::isEquivalent(const vx_Classifier& other) const {
  if (isTrained_() != other.isTrained_()) return false;
  if (trainParams_ && other.trainParams_) return trainParams_->isEqual_(*other.trainParams_);
  return trainParams_.isNull() && other.trainParams_.isNull();
}

void vx_Classifier::train(const vxClassifierDataProvider& data,
                          const vxClassifierTrainParams& params, vxDiagObject* diag,
                          unsigned long flags) {
  if (isTrained_()) untrain();
  mutating_();
  vxDiagObject* const destination = vxDiagObject::getRecordingDestination(diag, flags);
  recordTrainInputs_(destination, flags);
  train_(data, params);
  trainParams_ = params.clone();
  recordTrainDetails_(diag, flags);  // not the destination: details go to the caller's own object
  recordTrainResults_(destination, flags);
}

void vx_Classifier::trainStart(const vxClassifierTrainParams& params) {
  if (isTrained_()) untrain();
  mutating_();
  trainStart_(params);
  trainParams_ = params.clone();
}

void vx_Classifier::trainIncremental(const vxFeaturePattern& pattern, long label, vxDiagObject*,
                                     unsigned long) {
  if (!isTrained_()) {
    throw vxClassifierDefs::NotTrained(
        L"Classifier tool must be trained before incremental training.");
  }
  mutating_();
  trainIncremental_(pattern, label);
}

void vx_Classifier::retrain(const vxClassifierTrainParams& params, vxDiagObject*, unsigned long) {
  if (!isTrained_()) {
    throw vxClassifierDefs::NotTrained(L"Classifier tool must be trained before retraining.");
  }
  if (trainParams_.isNull() || !params.isSameTechnique_(*trainParams_)) {
    throw vxClassifierDefs::BadMethod(L"Cannot retrain with a different classification technique.");
  }
  mutating_();
  retrain_(params);
  trainParams_ = params.clone();
}

void vx_Classifier::run(const vxFeaturePattern& pattern, vxClassifierResult& result,
                        vxDiagObject* diag, unsigned long flags) const {
  if (!isTrained_()) {
    throw vxClassifierDefs::NotTrained(L"Classifier tool must be trained before running.");
  }
  vxDiagObject* const destination = vxDiagObject::getRecordingDestination(diag, flags);
  recordRunInputs_(destination, flags, pattern);
  run_(pattern, result);
  recordRunDetails_(destination, flags);
  recordRunResults_(destination, flags, pattern, result);
}

void vx_Classifier::untrain() {
  if (!isTrained_()) return;
  mutating_();
  untrain_();
  trainParams_.reset();
}

bool vx_Classifier::isTrained() const { return isTrained_(); }

vxPtrHandle_const<vxClassifierTrainParams> vx_Classifier::trainParams() const {
  if (!isTrained_()) {
    throw vxClassifierDefs::NotTrained(
        L"Classifier tool must be trained before requesting the training parameters.");
  }
  if (trainParams_.isNull()) {
    throw vxClassifierDefs::BadMethod(L"Classifier tool was not automatically trained.");
  }
  return trainParams_;
}

void vx_Classifier::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_Classifier)}) {
    vxPersistent::dispatchSerialize(archive);
    archive || trainParams_;
  }
}
