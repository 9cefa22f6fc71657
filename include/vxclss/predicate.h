// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PREDICATE_H_
#define VXCLSS_PREDICATE_H_

#include <vector>

#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"
#include "vxfoundation/range.h"

/// A yes-or-no question about a pattern, asked at a node of a decision tree.
///
/// Fixed once constructed. A measurement past a pattern's end counts as invalid. A host may derive
/// its own. Const operations on one object may run on many threads.
class VXCLSS_EXPORT vxPredicateFunction : public vxPersistent, public vxRepBase {
 public:
  ~vxPredicateFunction() override;

  virtual bool outcome(const vxFeaturePattern& pattern) const = 0;

  /// A copy of the concrete object.
  virtual vxPtrHandle<vxPredicateFunction> clone() const = 0;

  /// True here: the base has nothing to compare.
  virtual bool isEqual(const vxPredicateFunction& other) const;

 protected:
  vxPredicateFunction() = default;
  vxPredicateFunction(const vxPredicateFunction&) = default;
  vxPredicateFunction(vxPredicateFunction&&) = default;
  vxPredicateFunction& operator=(const vxPredicateFunction&) = default;
  vxPredicateFunction& operator=(vxPredicateFunction&&) = default;

  void dispatchSerialize(vxArchive& archive) override;
};

/// Whether one measurement is greater than another; false if one of them is invalid.
///
/// Swap the indices to ask for less. Equality: the same indices in the same places.
class VXCLSS_EXPORT vxComparisonPredicate : public vxPredicateFunction {
 public:
  /// Throws BadParams if the indices are equal; BadIndex if one is < 0.
  vxComparisonPredicate(long measurementIndex1, long measurementIndex2);
  ~vxComparisonPredicate() override;
  vxComparisonPredicate(const vxComparisonPredicate&) = default;
  vxComparisonPredicate& operator=(const vxComparisonPredicate&) = default;

  long measurementIndex1() const { return measurementIndex1_; }
  long measurementIndex2() const { return measurementIndex2_; }

  bool outcome(const vxFeaturePattern& pattern) const override;
  vxPtrHandle<vxPredicateFunction> clone() const override;
  bool isEqual(const vxPredicateFunction& other) const override;
  bool operator==(const vxComparisonPredicate& other) const { return isEqual(other); }
  bool operator!=(const vxComparisonPredicate& other) const { return !(*this == other); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend struct vx_PredicateOutcome;

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  long measurementIndex1_;
  long measurementIndex2_;
};

/// Whether all listed measurements are valid and within a range; true for an empty list.
///
/// Equality: equal ranges, the same indices in the same order.
class VXCLSS_EXPORT vxRangePredicate : public vxPredicateFunction {
 public:
  /// The full range, measurement 0.
  vxRangePredicate();
  /// Throws BadIndex if an index is < 0.
  vxRangePredicate(const vxRange& range, const std::vector<long>& measurementIndices);
  vxRangePredicate(const vxRangePredicate&) = default;
  vxRangePredicate(vxRangePredicate&&) = default;
  vxRangePredicate& operator=(const vxRangePredicate& other);
  vxRangePredicate& operator=(vxRangePredicate&&) = default;
  ~vxRangePredicate() override;

  vxRange measurementRange() const { return measurementRange_; }
  std::vector<long> measurementIndices() const { return measurementIndices_; }

  bool outcome(const vxFeaturePattern& pattern) const override;
  vxPtrHandle<vxPredicateFunction> clone() const override;
  bool isEqual(const vxPredicateFunction& other) const override;
  bool operator==(const vxRangePredicate& other) const { return isEqual(other); }
  bool operator!=(const vxRangePredicate& other) const { return !(*this == other); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend struct vx_PredicateOutcome;

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  vxRange measurementRange_;
  std::vector<long> measurementIndices_;
  long firstIndex_ = 0;  // of them; here it is at hand where the list has to be fetched
};

/// Whether all listed measurements are valid; true for an empty list.
///
/// Equality: the same indices in the same order.
class VXCLSS_EXPORT vxValidityPredicate : public vxPredicateFunction {
 public:
  /// Measurement 0.
  vxValidityPredicate();
  /// Throws BadIndex if an index is < 0.
  explicit vxValidityPredicate(const std::vector<long>& measurementIndices);
  vxValidityPredicate(const vxValidityPredicate&) = default;
  vxValidityPredicate(vxValidityPredicate&&) = default;
  vxValidityPredicate& operator=(const vxValidityPredicate& other);
  vxValidityPredicate& operator=(vxValidityPredicate&&) = default;
  ~vxValidityPredicate() override;

  std::vector<long> measurementIndices() const { return measurementIndices_; }

  bool outcome(const vxFeaturePattern& pattern) const override;
  vxPtrHandle<vxPredicateFunction> clone() const override;
  bool isEqual(const vxPredicateFunction& other) const override;
  bool operator==(const vxValidityPredicate& other) const { return isEqual(other); }
  bool operator!=(const vxValidityPredicate& other) const { return !(*this == other); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend struct vx_PredicateOutcome;

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  std::vector<long> measurementIndices_;
};

#endif  // VXCLSS_PREDICATE_H_
