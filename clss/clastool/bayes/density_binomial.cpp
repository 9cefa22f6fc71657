// SPDX-License-Identifier: MIT
#include <array>
#include <cmath>

#include "kernel/normal_density.h"
#include "saturating_cast.h"
#include "vxclss/density.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

// Two samples closer than that have no variance worth a number of trials.
constexpr double kSmallestVariance = 1e-15;

constexpr std::size_t kTabulated = 1024;

// ln n! for n = 0 ... 1024, summed up as ln 2 + ln 3 + ...
const std::array<double, kTabulated + 1>& logFactorials() {
  static const std::array<double, kTabulated + 1> table = [] {
    std::array<double, kTabulated + 1> sums{};
    for (std::size_t n = 2; n <= kTabulated; ++n) {
      sums[n] = sums[n - 1] + std::log(static_cast<double>(n));
    }
    return sums;
  }();
  return table;
}

// Natural logarithm of n!, 0.0 for n < 2. Beyond the table Stirling's series (M. Abramowitz,
// I. A. Stegun, Handbook of Mathematical Functions, Dover 1965, 6.1.41), whose next term is below
// 1e-24 there, so that a huge number of trials costs no more than a small one.
double lnFact(std::int64_t n) {
  if (n < 2) return 0.0;
  if (n <= static_cast<std::int64_t>(kTabulated)) {
    return logFactorials()[static_cast<std::size_t>(n)];
  }
  constexpr double kHalfLn2Pi = 0x1.d67f1c864beb4p-1;
  const double x = static_cast<double>(n);
  const double inverse = 1.0 / x;
  const double square = inverse * inverse;
  const double series = inverse * (1.0 / 12.0 - square * (1.0 / 360.0 - square * (1.0 / 1260.0)));
  return (x + 0.5) * std::log(x) - x + kHalfLn2Pi + series;
}

[[noreturn]] void throwMultivariate() {
  throw vxClassifierDefs::NotImplemented(
      L"Multivariate Binomial Distributions are not implemented");
}

bool isDifferent(double a, double b) { return a < b || a > b; }  // a NaN differs from nothing

}  // namespace

vx_PDFBinomial::vx_PDFBinomial(const vxFeaturePattern& maxValue)
    : maximumValue_(maxValue.featureMeasurement(0, true)) {}

vx_PDFBinomial& vx_PDFBinomial::operator=(const vx_PDFBinomial& other) {
  accumulator_ = other.accumulator_;  // the only step that can fail
  vx_ProbabilityDensityFunction::operator=(other);
  numTrials_ = other.numTrials_;
  theta_ = other.theta_;
  maximumValue_ = other.maximumValue_;
  return *this;
}

vx_PDFBinomial::~vx_PDFBinomial() = default;

double vx_PDFBinomial::logValue(const vxFeaturePattern& pattern) const {
  checkTrained_();
  if (pattern.numMeasurements() != 1) throwMultivariate();
  if (!pattern.isValid(0)) return 0.0;
  return logValueOf_(pattern.featureMeasurement(0, true));
}

bool vx_PDFBinomial::isEquivalent(const vx_ProbabilityDensityFunction& other) const {
  const auto* binomial = dynamic_cast<const vx_PDFBinomial*>(&other);
  return binomial != nullptr && *this == *binomial;
}

void vx_PDFBinomial::updateWithData(const std::vector<vxFeaturePattern>& patterns) {
  if (patterns.empty()) return;
  if (patterns.front().numMeasurements() != 1) throwMultivariate();
  for (const vxFeaturePattern& pattern : patterns) {
    for (long i = 0; i < pattern.numMeasurements(); ++i) {
      if (pattern.isValid(i)) checkTrainValue_(pattern.featureMeasurement(i, true));
    }
  }
  mutating_();
  accumulator_.updateWithDataNormalize(patterns, maximumValue_);
  estimate_();
}

void vx_PDFBinomial::clear() {
  accumulator_.clear();
  mutating_();
  numTrials_ = 0;
}

bool vx_PDFBinomial::operator==(const vx_PDFBinomial& other) const {
  return numTrials_ == other.numTrials_ && !isDifferent(theta_, other.theta_) &&
         !isDifferent(maximumValue_, other.maximumValue_);
}

void vx_PDFBinomial::checkTrained_() const {
  if (numTrials_ == 0) {
    throw vxClassifierDefs::InsufficientTrainData(
        L"Insufficient data has been used to train the distribution");
  }
}

void vx_PDFBinomial::checkTrainValue_(double measurement) const {
  if (measurement > maximumValue_) {
    throw vxClassifierDefs::BadParams(
        L"Train data measurement cannot exceed its maximum value when using binomial distribution");
  }
}

double vx_PDFBinomial::logValueOf_(double measurement) const {
  if (measurement > maximumValue_) {
    throw vxClassifierDefs::BadParams(L"Feature measurement must be <= specified maximum value");
  }
  const std::int64_t trials = numTrials_;
  const std::int64_t successes =
      vx_saturatingCast(measurement * static_cast<double>(trials) / maximumValue_ + 0.5);
  const std::int64_t failures = trials - successes;
  return lnFact(trials) - (lnFact(failures) + lnFact(successes)) +
         static_cast<double>(successes) * std::log(theta_) +
         static_cast<double>(failures) * std::log(1.0 - theta_);
}

void vx_PDFBinomial::updateWithValue_(double measurement, bool isValid) {
  if (isValid) checkTrainValue_(measurement);
  mutating_();
  accumulator_.state_->update(&measurement, &isValid, 1, maximumValue_);
  estimate_();
}

void vx_PDFBinomial::estimate_() {
  const vx_NormalDensity& samples = *accumulator_.state_;
  if (samples.sampleCount() < 1) return;
  const double mean = samples.mean(0);
  const double variance = samples.covariance(0, 0);
  theta_ = mean;
  if (!(std::fabs(variance) > kSmallestVariance)) return;
  numTrials_ = vx_saturatingCast((1.0 - mean) * mean / variance + 0.5);
}

void vx_PDFBinomial::serialize_(vxArchive& archive, unsigned char version) {
  if (version != 0) throw vxArchive::UnknownVersion();
  vx_ProbabilityDensityFunction::dispatchSerialize(archive);
  // A loaded density has no samples: only what they gave is archived.
  const auto fields = [&archive](vx_PDFBinomial& target) {
    archive || target.numTrials_ || target.theta_ || target.maximumValue_;
  };
  vfTransferStaged(archive, *this, fields, vxFeaturePattern({1.0}, {}));
}

void vx_PDFBinomial::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_PDFBinomial)}) {
    serialize_(archive, 0);
  }
}

vxPersistent* vx_PDFBinomial::make() { return new vx_PDFBinomial(vxFeaturePattern({1.0}, {})); }
vx_Instantiator vx_PDFBinomial::sExemplar(typeid(vx_PDFBinomial), &vx_PDFBinomial::make);
