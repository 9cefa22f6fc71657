// SPDX-License-Identifier: MIT
#ifndef VXCLSS_DISTANCE_METRIC_H_
#define VXCLSS_DISTANCE_METRIC_H_

#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// A distance between two patterns. A host may derive its own.
class VXCLSS_EXPORT vxPatternDistanceMetric : public virtual vxPersistent,
                                              public virtual vxRepBase {
 public:
  ~vxPatternDistanceMetric() override;

  virtual double distance(const vxFeaturePattern& a, const vxFeaturePattern& b) const = 0;

  /// A new copy of the concrete object.
  virtual vxPtrHandle<vxPatternDistanceMetric> clone() const = 0;

  /// True here: the base has nothing to compare.
  virtual bool isEquivalent(const vxPatternDistanceMetric& other) const;

 protected:
  vxPatternDistanceMetric() = default;
  vxPatternDistanceMetric(const vxPatternDistanceMetric&) = default;
  vxPatternDistanceMetric& operator=(const vxPatternDistanceMetric&) = default;

  void dispatchSerialize(vxArchive& archive) override;
};

/// The Minkowski distance (sum_i |a_i - b_i|^p)^(1/p) of order p > 0.
///
/// Every order goes through the C library's pow, orders 1 and 2 too, so equal inputs give equal
/// bits whatever the order. An order below 1 is allowed, though it is no metric.
///
/// Two norms are equal unless one order is less than the other; so a NaN order, which only an
/// archive can bring, equals every order.
class VXCLSS_EXPORT vxPatternDistanceMetricNorm : public vxPatternDistanceMetric {
 public:
  /// Throws BadParams unless order > 0.
  explicit vxPatternDistanceMetricNorm(double order);
  vxPatternDistanceMetricNorm(const vxPatternDistanceMetricNorm&) = default;
  vxPatternDistanceMetricNorm& operator=(const vxPatternDistanceMetricNorm&) = default;
  ~vxPatternDistanceMetricNorm() override;

  double order() const { return order_; }
  /// Throws BadParams unless order > 0.
  void order(double order);

  /// Throws BadFeatures if the patterns differ in their number of measurements, then if one of
  /// them has an invalid measurement, `a` before `b`.
  double distance(const vxFeaturePattern& a, const vxFeaturePattern& b) const override;

  vxPtrHandle<vxPatternDistanceMetric> clone() const override;

  /// False for another class.
  bool isEquivalent(const vxPatternDistanceMetric& other) const override;

  bool operator==(const vxPatternDistanceMetricNorm& other) const { return isEquivalent(other); }
  bool operator!=(const vxPatternDistanceMetricNorm& other) const { return !(*this == other); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  double order_ = 2.0;
};

#endif  // VXCLSS_DISTANCE_METRIC_H_
