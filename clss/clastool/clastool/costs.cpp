// SPDX-License-Identifier: MIT
#include "vxclss/costs.h"

#include "make_room.h"
#include "record_archive.h"
#include "vxclss/errors.h"

namespace {

void checkCost(double cost) {
  if (cost < 0.0) throw vxClassifierDefs::BadParams(L"Costs must be >= 0.0");
}

void checkDifferent(long trueLabel, long assignedLabel) {
  if (trueLabel == assignedLabel) {
    throw vxClassifierDefs::BadLabel(L"Category labels must be different");
  }
}

}  // namespace

vxClassifierCosts::vxClassifierCosts(double defaultCost) {
  defaultMisclassificationCost(defaultCost);
}

void vxClassifierCosts::defaultMisclassificationCost(double cost) {
  checkCost(cost);
  defaultCost_ = cost;
}

void vxClassifierCosts::misclassificationCostOverride(long trueLabel, long assignedLabel,
                                                      double cost) {
  checkCost(cost);
  checkDifferent(trueLabel, assignedLabel);
  const long index = misclOverrideIndex_(trueLabel, assignedLabel);
  if (index >= 0) {
    overrideCosts_[static_cast<std::size_t>(index)] = cost;
    return;
  }
  vx_makeRoom(overrideTrueLabels_, overrideAssignedLabels_, overrideCosts_);
  overrideTrueLabels_.push_back(trueLabel);
  overrideAssignedLabels_.push_back(assignedLabel);
  overrideCosts_.push_back(cost);
}

double vxClassifierCosts::misclassificationCost(long trueLabel, long assignedLabel) const {
  checkDifferent(trueLabel, assignedLabel);
  const long index = misclOverrideIndex_(trueLabel, assignedLabel);
  return index >= 0 ? overrideCosts_[static_cast<std::size_t>(index)] : defaultCost_;
}

void vxClassifierCosts::clearMisclassificationOverrides() {
  overrideTrueLabels_.clear();
  overrideAssignedLabels_.clear();
  overrideCosts_.clear();
}

bool vxClassifierCosts::operator==(const vxClassifierCosts& other) const {
  return defaultCost_ == other.defaultCost_ && overrideTrueLabels_ == other.overrideTrueLabels_ &&
         overrideAssignedLabels_ == other.overrideAssignedLabels_ &&
         overrideCosts_ == other.overrideCosts_;
}

long vxClassifierCosts::misclOverrideIndex_(long trueLabel, long assignedLabel) const {
  if (trueLabel < 0 || assignedLabel < 0) {
    throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0");
  }
  for (std::size_t i = 0; i < overrideTrueLabels_.size(); ++i) {
    if (overrideTrueLabels_[i] == trueLabel && overrideAssignedLabels_[i] == assignedLabel) {
      return static_cast<long>(i);
    }
  }
  return -1;
}

vxArchive& operator||(vxArchive& archive, vxClassifierCosts& costs) {
  const auto fields = [&archive](vxClassifierCosts& target) {
    archive || target.defaultCost_ || target.overrideTrueLabels_ ||
        target.overrideAssignedLabels_ || target.overrideCosts_;
    if (target.overrideTrueLabels_.size() != target.overrideCosts_.size() ||
        target.overrideAssignedLabels_.size() != target.overrideCosts_.size()) {
      throw vxArchive::Malformed(L"Cost overrides that differ in number");
    }
  };
  return vx_transferRecord(archive, costs, {"clss/clastool/clastool", __LINE__}, fields, 0.0);
}
