// SPDX-License-Identifier: MIT
#include "vxclss/classifier_tool.h"

#include "vxclss/classifier_decision_tree.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

vxClassifierTool::vxClassifierTool() = default;

vxClassifierTool::vxClassifierTool(const vxClassifierTool& other) { *this = other; }

vxClassifierTool& vxClassifierTool::operator=(const vxClassifierTool& other) {
  classifier_.reset();  // also where other is this tool: self-assignment leaves it empty
  if (other.isTrained()) classifier_ = other.classifier_->clone();
  return *this;
}

vxClassifierTool::~vxClassifierTool() {
  try {
    untrain();
  } catch (...) {
    // A destructor can't report what a host's technique throws here.
  }
}

void vxClassifierTool::train(const vxClassifierDataProvider& data,
                             const vxClassifierTrainParams& params, vxDiagObject* diag,
                             unsigned long flags) {
  if (isTrained()) untrain();
  try {
    classifier_.reset(params.newClassifier_());
  } catch (...) {
    classifier_.reset();
    throw vxClassifierDefs::NotImplemented(
        L"The classification method specified by the training parameters is not implemented.");
  }
  classifier_->train(data, params, diag, flags);
  checkReady_(params);
}

void vxClassifierTool::train(const vxDecisionTree& tree, vxDiagObject* diag, unsigned long flags) {
  const vxPtrHandle_const<vxDecisionTree> copy = tree.clone();  // `tree` may be held by this tool
  const vxPtrHandle<vx_ClassifierDecisionTree> classifier(new vx_ClassifierDecisionTree);
  if (isTrained()) untrain();
  classifier_ = classifier;
  classifier->trainManual(*copy, diag, flags);
}

void vxClassifierTool::retrain(const vxClassifierTrainParams& params, vxDiagObject* diag,
                               unsigned long flags) {
  if (classifier_.isNull()) {
    throw vxClassifierDefs::NotTrained(L"Classifier tool must be trained before retraining.");
  }
  classifier_->retrain(params, diag, flags);
  checkReady_(params);
}

void vxClassifierTool::run(const vxFeaturePattern& pattern, vxClassifierResult& result,
                           vxDiagObject* diag, unsigned long flags) const {
  if (classifier_.isNull()) {
    throw vxClassifierDefs::NotTrained(L"Classifier tool must be trained before running.");
  }
  classifier_->run(pattern, result, diag, flags);
}

void vxClassifierTool::untrain() {
  if (classifier_) classifier_->untrain();
}

bool vxClassifierTool::isTrained() const { return classifier_ && classifier_->isTrained(); }

vxPtrHandle_const<vxClassifierTrainParams> vxClassifierTool::trainParams() const {
  if (classifier_.isNull()) {
    throw vxClassifierDefs::NotTrained(
        L"Classifier tool must be trained before requesting the training parameters.");
  }
  return classifier_->trainParams();
}

vxPtrHandle_const<vxDecisionTree> vxClassifierTool::decisionTree() const {
  if (!isTrained()) {
    throw vxClassifierDefs::NotTrained(
        L"Classifier tool must be trained before requesting the decision tree.");
  }
  const auto* classifier = dynamic_cast<const vx_ClassifierDecisionTree*>(classifier_.get());
  if (classifier == nullptr) {
    throw vxClassifierDefs::BadMethod(L"Classifier tool was not trained using a decision tree.");
  }
  return classifier->decisionTree();
}

bool vxClassifierTool::operator==(const vxClassifierTool& other) const {
  if (isTrained() != other.isTrained()) return false;
  return !isTrained() || classifier_->isEquivalent(*other.classifier_);
}

void vxClassifierTool::checkReady_(const vxClassifierTrainParams& params) {
  if (!params.throwIfNotReady()) return;
  try {
    classifier_->checkRunnable_();
  } catch (const vxClassifierDefs::Errors&) {
    untrain();
    throw;
  }
}

vxArchive& operator||(vxArchive& archive, vxClassifierTool& tool) {
  vx_Transfer transfer(archive);
  vfTransferVersion(archive);
  archive || tool.classifier_;
  transfer.complete();
  return archive;
}
