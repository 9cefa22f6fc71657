// SPDX-License-Identifier: MIT
#include "vxclss/frequencies.h"

#include "make_room.h"
#include "record_archive.h"
#include "vxclss/errors.h"

namespace {

void checkFrequency(double frequency) {
  if (frequency <= 0.0) throw vxClassifierDefs::BadParams(L"Category frequencies must be > 0.0");
}

}  // namespace

vxClassifierFrequencies::vxClassifierFrequencies(double defaultFrequency) {
  defaultCategoryFrequency(defaultFrequency);
}

void vxClassifierFrequencies::defaultCategoryFrequency(double frequency) {
  checkFrequency(frequency);
  defaultFrequency_ = frequency;
}

void vxClassifierFrequencies::categoryFrequencyOverride(long label, double frequency) {
  checkFrequency(frequency);
  const long index = freqOverrideIndex_(label);
  if (index >= 0) {
    overrideFrequencies_[static_cast<std::size_t>(index)] = frequency;
    return;
  }
  vx_makeRoom(overrideLabels_, overrideFrequencies_);
  overrideLabels_.push_back(label);
  overrideFrequencies_.push_back(frequency);
}

double vxClassifierFrequencies::categoryFrequency(long label) const {
  const long index = freqOverrideIndex_(label);
  return index >= 0 ? overrideFrequencies_[static_cast<std::size_t>(index)] : defaultFrequency_;
}

void vxClassifierFrequencies::clearFrequencyOverrides() {
  overrideLabels_.clear();
  overrideFrequencies_.clear();
}

bool vxClassifierFrequencies::operator==(const vxClassifierFrequencies& other) const {
  return defaultFrequency_ == other.defaultFrequency_ && overrideLabels_ == other.overrideLabels_ &&
         overrideFrequencies_ == other.overrideFrequencies_;
}

long vxClassifierFrequencies::freqOverrideIndex_(long label) const {
  if (label < 0) throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0");
  for (std::size_t i = 0; i < overrideLabels_.size(); ++i) {
    if (overrideLabels_[i] == label) return static_cast<long>(i);
  }
  return -1;
}

vxArchive& operator||(vxArchive& archive, vxClassifierFrequencies& frequencies) {
  const auto fields = [&archive](vxClassifierFrequencies& target) {
    archive || target.defaultFrequency_ || target.overrideLabels_ || target.overrideFrequencies_;
    if (target.overrideLabels_.size() != target.overrideFrequencies_.size()) {
      throw vxArchive::Malformed(L"Frequency overrides that differ in number");
    }
  };
  return vx_transferRecord(archive, frequencies, {"clss/clastool/clastool", __LINE__}, fields, 1.0);
}
