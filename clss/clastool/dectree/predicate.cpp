// SPDX-License-Identifier: MIT
#include "vxclss/predicate.h"

#include <algorithm>
#include <typeinfo>

#include "predicate_outcome.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

void checkIndex(long index) {
  if (index < 0) {
    throw vxClassifierDefs::BadIndex(
        L"Measurement index must be >= 0 and < number of measurements.");
  }
}

const std::vector<long>& checkedIndices(const std::vector<long>& indices) {
  std::for_each(indices.begin(), indices.end(), checkIndex);
  return indices;
}

// `other` if it is of the exact class of `predicate`, else null.
template <class T>
const T* sameClass(const T& predicate, const vxPredicateFunction& other) {
  return typeid(predicate) == typeid(other) ? static_cast<const T*>(&other) : nullptr;
}

}  // namespace

vxPredicateFunction::~vxPredicateFunction() = default;

bool vxPredicateFunction::isEqual(const vxPredicateFunction&) const { return true; }

void vxPredicateFunction::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxPredicateFunction)}) {
    vxPersistent::dispatchSerialize(archive);
  }
}

vxComparisonPredicate::vxComparisonPredicate(long measurementIndex1, long measurementIndex2)
    : measurementIndex1_(measurementIndex1), measurementIndex2_(measurementIndex2) {
  if (measurementIndex1 == measurementIndex2) {
    throw vxClassifierDefs::BadParams(L"Measurement indices must be different.");
  }
  checkIndex(measurementIndex1);
  checkIndex(measurementIndex2);
}

vxComparisonPredicate::~vxComparisonPredicate() = default;

bool vxComparisonPredicate::outcome(const vxFeaturePattern& pattern) const {
  return vx_PredicateOutcome::of(*this, vx_PatternView(pattern));
}

vxPtrHandle<vxPredicateFunction> vxComparisonPredicate::clone() const {
  return vxPtrHandle<vxPredicateFunction>(new vxComparisonPredicate(*this));
}

bool vxComparisonPredicate::isEqual(const vxPredicateFunction& other) const {
  const auto* comparison = sameClass(*this, other);
  return comparison != nullptr && measurementIndex1_ == comparison->measurementIndex1_ &&
         measurementIndex2_ == comparison->measurementIndex2_;
}

void vxComparisonPredicate::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxComparisonPredicate)}) {
    vxPredicateFunction::dispatchSerialize(archive);
    const auto fields = [&archive](vxComparisonPredicate& target) {
      archive || target.measurementIndex1_ || target.measurementIndex2_;
    };
    vfTransferStaged(archive, *this, fields, 0, 1);
  }
}

vxPersistent* vxComparisonPredicate::make() { return new vxComparisonPredicate(0, 1); }
vx_Instantiator vxComparisonPredicate::sExemplar(typeid(vxComparisonPredicate),
                                                 &vxComparisonPredicate::make);

vxRangePredicate::vxRangePredicate() : vxRangePredicate(vxRange::FullRange(), {0}) {}

vxRangePredicate::vxRangePredicate(const vxRange& range,
                                   const std::vector<long>& measurementIndices)
    : measurementRange_(range),
      measurementIndices_(checkedIndices(measurementIndices)),
      firstIndex_(measurementIndices.empty() ? 0 : measurementIndices.front()) {}

vxRangePredicate& vxRangePredicate::operator=(const vxRangePredicate& other) {
  return *this = vxRangePredicate(other);
}

vxRangePredicate::~vxRangePredicate() = default;

bool vxRangePredicate::outcome(const vxFeaturePattern& pattern) const {
  return vx_PredicateOutcome::of(*this, vx_PatternView(pattern));
}

vxPtrHandle<vxPredicateFunction> vxRangePredicate::clone() const {
  return vxPtrHandle<vxPredicateFunction>(new vxRangePredicate(*this));
}

bool vxRangePredicate::isEqual(const vxPredicateFunction& other) const {
  const auto* range = sameClass(*this, other);
  return range != nullptr && measurementRange_ == range->measurementRange_ &&
         measurementIndices_ == range->measurementIndices_;
}

void vxRangePredicate::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxRangePredicate)}) {
    vxPredicateFunction::dispatchSerialize(archive);
    vfTransferStaged(archive, *this, [&archive](vxRangePredicate& target) {
      archive || target.measurementRange_ || target.measurementIndices_;
      if (archive.isStoring() || target.measurementIndices_.empty()) return;
      target.firstIndex_ = target.measurementIndices_.front();
    });
  }
}

vxPersistent* vxRangePredicate::make() { return new vxRangePredicate; }
vx_Instantiator vxRangePredicate::sExemplar(typeid(vxRangePredicate), &vxRangePredicate::make);

vxValidityPredicate::vxValidityPredicate() : vxValidityPredicate(std::vector<long>{0}) {}

vxValidityPredicate::vxValidityPredicate(const std::vector<long>& measurementIndices)
    : measurementIndices_(checkedIndices(measurementIndices)) {}

vxValidityPredicate& vxValidityPredicate::operator=(const vxValidityPredicate& other) {
  return *this = vxValidityPredicate(other);
}

vxValidityPredicate::~vxValidityPredicate() = default;

bool vxValidityPredicate::outcome(const vxFeaturePattern& pattern) const {
  return vx_PredicateOutcome::of(*this, vx_PatternView(pattern));
}

vxPtrHandle<vxPredicateFunction> vxValidityPredicate::clone() const {
  return vxPtrHandle<vxPredicateFunction>(new vxValidityPredicate(*this));
}

bool vxValidityPredicate::isEqual(const vxPredicateFunction& other) const {
  const auto* validity = sameClass(*this, other);
  return validity != nullptr && measurementIndices_ == validity->measurementIndices_;
}

void vxValidityPredicate::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxValidityPredicate)}) {
    vxPredicateFunction::dispatchSerialize(archive);
    vfTransferStaged(archive, *this, [&archive](vxValidityPredicate& target) {
      archive || target.measurementIndices_;
    });
  }
}

vxPersistent* vxValidityPredicate::make() { return new vxValidityPredicate; }
vx_Instantiator vxValidityPredicate::sExemplar(typeid(vxValidityPredicate),
                                               &vxValidityPredicate::make);
