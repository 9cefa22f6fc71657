// SPDX-License-Identifier: MIT
#include "tests/support/mock_technique.h"

#include <utility>

std::string MockScript::nameOf(const void* object) const {
  if (object == nullptr) return "null";
  const auto found = names.find(object);
  return found == names.end() ? "?" : found->second;
}

void MockScript::reach(const std::string& hook, const std::string& arguments) {
  calls.push_back(hook + arguments);
  const auto action = at.find(hook);
  if (action != at.end()) action->second();
}

MockScript::Calls MockScript::take() {
  Calls taken;
  for (std::string& call : calls) {
    if (call != "isTrained_") taken.push_back(std::move(call));
  }
  calls.clear();
  return taken;
}

std::string MockScript::takeLast() {
  const Calls taken = take();
  return taken.empty() ? "" : taken.back();
}

MockParams::MockParams(MockScript& script, const std::string& title, long technique, long value)
    : script_(&script), title_(title), technique_(technique), value_(value) {}

std::string MockParams::titleOf(const vxClassifierTrainParams& params) {
  const auto* mock = dynamic_cast<const MockParams*>(&params);
  return mock == nullptr ? "?" : mock->title_;
}

vxPtrHandle<vxClassifierTrainParams> MockParams::clone() const {
  script_->reach("clone", "(" + title_ + ")");
  vxPtrHandle<MockParams> copy(new MockParams(*this));
  copy->title_ += "'";
  return copy;
}

bool MockParams::isEqual_(const vxClassifierTrainParams& other) const {
  script_->reach("isEqual_", "(" + title_ + ", " + titleOf(other) + ")");
  const auto* mock = dynamic_cast<const MockParams*>(&other);
  return mock != nullptr && value_ == mock->value_;
}

bool MockParams::isSameTechnique_(const vxClassifierTrainParams& other) const {
  script_->reach("isSameTechnique_", "(" + title_ + ", " + titleOf(other) + ")");
  const auto* mock = dynamic_cast<const MockParams*>(&other);
  return mock != nullptr && technique_ == mock->technique_;
}

vx_Classifier* MockParams::newClassifier_() const {
  script_->reach("newClassifier_", "(" + title_ + ")");
  return script_->makesNull ? nullptr : new MockClassifier(*script_);
}

MockClassifier::MockClassifier(MockScript& script) : script_(&script) {
  ++script_->classifiersAlive;
}

MockClassifier::MockClassifier(const MockClassifier& other)
    : vx_Classifier(other), script_(other.script_), trained_(other.trained_) {
  ++script_->classifiersAlive;
}

MockClassifier::~MockClassifier() {
  --script_->classifiersAlive;
  script_->calls.push_back("~MockClassifier");
}

vxPtrHandle<vx_Classifier> MockClassifier::clone() const {
  script_->reach("cloneClassifier", "");
  return vxPtrHandle<vx_Classifier>(new MockClassifier(*this));
}

void MockClassifier::train_(const vxClassifierDataProvider& data,
                            const vxClassifierTrainParams& params) {
  trained_ = script_->trainsTo;
  script_->reach("train_", "(" + script_->nameOf(&data) + ", " + MockParams::titleOf(params) + ")");
}

void MockClassifier::retrain_(const vxClassifierTrainParams& params) {
  script_->reach("retrain_", "(" + MockParams::titleOf(params) + ")");
}

void MockClassifier::trainStart_(const vxClassifierTrainParams& params) {
  trained_ = script_->startsTo;
  script_->reach("trainStart_", "(" + MockParams::titleOf(params) + ")");
}

void MockClassifier::trainIncremental_(const vxFeaturePattern& pattern, long label) {
  script_->reach("trainIncremental_",
                 "(" + script_->nameOf(&pattern) + ", " + std::to_string(label) + ")");
}

void MockClassifier::untrain_() {
  script_->reach("untrain_", "");
  trained_ = false;
}

bool MockClassifier::isTrained_() const {
  script_->reach("isTrained_", "");
  return trained_;
}

void MockClassifier::checkRunnable_() const { script_->reach("checkRunnable_", ""); }

void MockClassifier::run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
  script_->reach("run_", "(" + script_->nameOf(&pattern) + ", " + script_->nameOf(&result) + ")");
}

void MockClassifier::recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const {
  script_->reach("recordTrainInputs_",
                 "(" + script_->nameOf(diag) + ", " + std::to_string(flags) + ")");
}

void MockClassifier::recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const {
  script_->reach("recordTrainDetails_",
                 "(" + script_->nameOf(diag) + ", " + std::to_string(flags) + ")");
}

void MockClassifier::recordTrainResults_(vxDiagObject* diag, unsigned long flags) const {
  script_->reach("recordTrainResults_",
                 "(" + script_->nameOf(diag) + ", " + std::to_string(flags) + ")");
}

void MockClassifier::recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                                      const vxFeaturePattern& pattern) const {
  script_->reach("recordRunInputs_", "(" + script_->nameOf(diag) + ", " + std::to_string(flags) +
                                         ", " + script_->nameOf(&pattern) + ")");
}

void MockClassifier::recordRunDetails_(vxDiagObject* diag, unsigned long flags) const {
  script_->reach("recordRunDetails_",
                 "(" + script_->nameOf(diag) + ", " + std::to_string(flags) + ")");
}

void MockClassifier::recordRunResults_(vxDiagObject* diag, unsigned long flags,
                                       const vxFeaturePattern& pattern,
                                       const vxClassifierResult& result) const {
  script_->reach("recordRunResults_", "(" + script_->nameOf(diag) + ", " + std::to_string(flags) +
                                          ", " + script_->nameOf(&pattern) + ", " +
                                          script_->nameOf(&result) + ")");
}
