// SPDX-License-Identifier: MIT
#ifndef VXCLSS_DENSITY_H_
#define VXCLSS_DENSITY_H_

#include <memory>
#include <vector>

#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/matrix.h"
#include "vxfoundation/persistent.h"

class vx_NormalDensity;

/// A probability density over a group of measurements, learnt from samples one after another.
///
/// Patterns hold the group's measurements only. Const operations on one object may run on many
/// threads. A host may derive its own.
class VXCLSS_EXPORT vx_ProbabilityDensityFunction : public vxPersistent, public vxRepBase {
 public:
  ~vx_ProbabilityDensityFunction() override;

  /// Natural logarithm of the density at the pattern.
  virtual double logValue(const vxFeaturePattern& pattern) const = 0;

  virtual bool isEquivalent(const vx_ProbabilityDensityFunction& other) const = 0;

  /// Folds further samples in.
  virtual void updateWithData(const std::vector<vxFeaturePattern>& patterns) = 0;

  /// Forgets all samples.
  virtual void clear() = 0;

 protected:
  vx_ProbabilityDensityFunction() = default;
  vx_ProbabilityDensityFunction(const vx_ProbabilityDensityFunction&) = default;
  vx_ProbabilityDensityFunction& operator=(const vx_ProbabilityDensityFunction&) = default;

  void serialize_(vxArchive& archive, unsigned char version);
  void dispatchSerialize(vxArchive& archive) override;
};

/// A multivariate normal density.
///
/// Invalid measurements are left out: of the means and covariances, and of the density, which is
/// then the marginal one of the valid measurements. The covariance has the divisor n - 1; one that
/// is singular is regularised when the density is evaluated, but not where it is shown. The first
/// update after construction or clear() fixes the dimension.
///
/// Equality: sample count, mean and covariance.
class VXCLSS_EXPORT vx_PDFMultivariateNormal : public vx_ProbabilityDensityFunction {
 public:
  vx_PDFMultivariateNormal();
  vx_PDFMultivariateNormal(const vx_PDFMultivariateNormal& other);
  vx_PDFMultivariateNormal& operator=(const vx_PDFMultivariateNormal& other);
  ~vx_PDFMultivariateNormal() override;

  /// 0.0 if no measurement is valid. Throws InsufficientTrainData if there is no sample, or a
  /// valid measurement has fewer than two; vxStatusException for a pattern of another dimension.
  double logValue(const vxFeaturePattern& pattern) const override;

  /// False for another class.
  bool isEquivalent(const vx_ProbabilityDensityFunction& other) const override;

  /// The same as updateWithDataNormalize(patterns, 1.0).
  void updateWithData(const std::vector<vxFeaturePattern>& patterns) override;

  /// Divides every measurement by `normalizer` first. Throws BadParams, before anything is folded
  /// in, if a pattern has another dimension.
  void updateWithDataNormalize(const std::vector<vxFeaturePattern>& patterns, double normalizer);

  void clear() override;

  /// d x 1; 0 x 0 while empty.
  vxNMMatrix mean() const;
  /// d x d; the variance of a measurement with fewer than two samples is -0.0.
  vxNMMatrix covariance() const;

  /// Samples with at least one valid measurement.
  long sampleCount() const;
  /// sampleCount() > 0.
  bool isValid() const;

  bool operator==(const vx_PDFMultivariateNormal& other) const;
  bool operator!=(const vx_PDFMultivariateNormal& other) const { return !(*this == other); }

 protected:
  void serialize_(vxArchive& archive, unsigned char version);
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend class vx_PDFBinomial;
  friend class vx_GroupAccess;

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  std::unique_ptr<vx_NormalDensity> state_;
};

/// A binomial density of one measurement: the number of successes in N trials is the measurement
/// times N, divided by its largest value.
///
/// The number of trials and the success probability theta are estimated from mean m and variance v
/// of the samples divided by the largest value: theta = m, N = m (1 - m) / v, rounded (method of
/// moments). So at least two different samples are needed.
///
/// Neither comparing nor archiving takes the samples' mean and variance into account: a loaded
/// density estimates from its new samples alone. In a comparison a NaN equals every number.
class VXCLSS_EXPORT vx_PDFBinomial : public vx_ProbabilityDensityFunction {
 public:
  /// Measurement 0 of `maxValue` is the largest value.
  /// Throws BadFeatures if it is missing or invalid.
  explicit vx_PDFBinomial(const vxFeaturePattern& maxValue);
  vx_PDFBinomial(const vx_PDFBinomial&) = default;
  vx_PDFBinomial& operator=(const vx_PDFBinomial& other);
  ~vx_PDFBinomial() override;

  /// Success probability; 0.0 in a new object.
  double theta() const { return theta_; }
  /// Number of trials; 0 until it was estimated.
  long numTrials() const { return numTrials_; }
  double maximumValue() const { return maximumValue_; }

  /// 0.0 if the measurement is invalid.
  ///
  /// Throws InsufficientTrainData if the number of trials is 0; NotImplemented unless the pattern
  /// has one measurement; BadParams if that is above the largest value. Theta of 0 or 1 gives
  /// infinities or NaN.
  double logValue(const vxFeaturePattern& pattern) const override;

  /// False for another class.
  bool isEquivalent(const vx_ProbabilityDensityFunction& other) const override;

  /// Throws NotImplemented unless the first pattern has one measurement; BadParams if a valid
  /// measurement is above the largest value. An empty vector changes nothing.
  void updateWithData(const std::vector<vxFeaturePattern>& patterns) override;

  /// Forgets samples and number of trials; theta and largest value stay.
  void clear() override;

  bool operator==(const vx_PDFBinomial& other) const;
  bool operator!=(const vx_PDFBinomial& other) const { return !(*this == other); }

 protected:
  void serialize_(vxArchive& archive, unsigned char version);
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend class vx_GroupAccess;

  void checkTrained_() const;
  void checkTrainValue_(double measurement) const;
  double logValueOf_(double measurement) const;
  void updateWithValue_(double measurement, bool isValid);
  void estimate_();

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  long numTrials_ = 0;
  double theta_ = 0.0;
  double maximumValue_ = 1.0;
  vx_PDFMultivariateNormal accumulator_;
};

#endif  // VXCLSS_DENSITY_H_
