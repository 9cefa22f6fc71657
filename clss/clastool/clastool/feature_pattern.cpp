// SPDX-License-Identifier: MIT
#include "vxclss/feature_pattern.h"

#include <algorithm>
#include <utility>

#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

void checkNotNegative(long index) {
  if (index < 0) throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be >= 0");
}

}  // namespace

vxFeaturePattern::vxFeaturePattern(const std::vector<double>& measurements,
                                   const std::vector<long>& invalidIndices) {
  for (const long index : invalidIndices) {
    checkNotNegative(index);
    if (static_cast<std::size_t>(index) >= measurements.size()) {
      throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be < number of features");
    }
    if (validity_.empty()) validity_.assign(measurements.size(), true);
    std::vector<bool>::reference isValid = validity_[static_cast<std::size_t>(index)];
    if (isValid) ++numInvalid_;
    isValid = false;
  }
  measurements_ = measurements;
}

vxFeaturePattern::vxFeaturePattern(vxFeaturePattern&& other) noexcept
    : vxPersistent(std::move(other)),
      vxRepBase(other),
      measurements_(std::move(other.measurements_)),
      validity_(std::move(other.validity_)),
      numInvalid_(std::exchange(other.numInvalid_, 0)) {
  other.packed_.valueChanges();
}

vxFeaturePattern& vxFeaturePattern::operator=(const vxFeaturePattern& other) {
  return *this = vxFeaturePattern(other);
}

vxFeaturePattern& vxFeaturePattern::operator=(vxFeaturePattern&& other) noexcept {
  if (this == &other) return *this;
  vxPersistent::operator=(std::move(other));
  packed_.valueChanges();
  other.packed_.valueChanges();
  measurements_ = std::move(other.measurements_);
  validity_ = std::move(other.validity_);
  numInvalid_ = std::exchange(other.numInvalid_, 0);
  return *this;
}

vxFeaturePattern::~vxFeaturePattern() = default;

std::atomic<std::uint64_t> vxFeaturePattern::PackedMark::changes{0};

bool vxFeaturePattern::isValid(long index) const {
  checkNotNegative(index);
  if (index >= numMeasurements()) return false;
  return validity_.empty() || validity_[static_cast<std::size_t>(index)];
}

std::vector<long> vxFeaturePattern::invalidFeatureIndices() {
  std::vector<long> indices;
  for (long i = 0; i < numMeasurements(); ++i) {
    if (!isValid(i)) indices.push_back(i);
  }
  return indices;
}

double vxFeaturePattern::featureMeasurement(long index, bool throwIfInvalid) const {
  const bool valid = isValid(index);
  if (!valid && throwIfInvalid) {
    throw vxClassifierDefs::BadFeatures(
        L"The measurement for the specified measurement index is not valid.");
  }
  return index < numMeasurements() ? measurements_[static_cast<std::size_t>(index)] : 0.0;
}

const std::vector<double>& vxFeaturePattern::featureMeasurements(bool throwIfInvalid) const {
  if (throwIfInvalid && numInvalid() >= 1) {
    throw vxClassifierDefs::BadFeatures(
        L"Access to full feature vector requires that all features are valid.");
  }
  return measurements_;
}

bool vxFeaturePattern::operator==(const vxFeaturePattern& other) const {
  return measurements_ == other.measurements_ && validity_ == other.validity_;
}

void vxFeaturePattern::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxFeaturePattern)}) {
    vxPersistent::dispatchSerialize(archive);
    if (archive.isStoring()) {
      std::vector<bool> validity = validity_;
      if (validity.empty()) validity.assign(measurements_.size(), true);
      archive || measurements_ || validity;
      return;
    }
    std::vector<double> measurements;
    std::vector<bool> validity;
    archive || measurements || validity;
    if (measurements.size() != validity.size()) {
      throw vxArchive::Malformed(L"A pattern without a validity flag for each measurement");
    }
    mutating_();
    packed_.valueChanges();
    measurements_.swap(measurements);
    numInvalid_ = std::count(validity.begin(), validity.end(), false);
    if (numInvalid_ == 0) validity.clear();
    validity_.swap(validity);
  }
}

vxPersistent* vxFeaturePattern::make() { return new vxFeaturePattern({}, {}); }
vx_Instantiator vxFeaturePattern::sExemplar(typeid(vxFeaturePattern), &vxFeaturePattern::make);
