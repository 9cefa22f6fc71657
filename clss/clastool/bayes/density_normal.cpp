// SPDX-License-Identifier: MIT
#include <utility>

#include "kernel/normal_density.h"
#include "vxclss/density.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/status.h"

namespace {

vx_KernelPattern kernelPattern(const vxFeaturePattern& pattern) {
  vx_KernelPattern kernel;
  kernel.values = pattern.featureMeasurements(false);
  for (long i = 0; i < pattern.numMeasurements(); ++i) {
    if (!pattern.isValid(i)) kernel.invalidIndices.push_back(static_cast<std::int32_t>(i));
  }
  return kernel;
}

vxNMMatrix foundationMatrix(const vx_KernelMatrix& kernel) {
  vxNMMatrix matrix(static_cast<long>(kernel.rows), static_cast<long>(kernel.columns));
  const double* element = kernel.elements.data();
  for (long row = 0; row < matrix.rows(); ++row) {
    for (long column = 0; column < matrix.columns(); ++column) {
      matrix.element(row, column, *element++);
    }
  }
  return matrix;
}

vx_KernelMatrix kernelMatrix(const vxNMMatrix& matrix) {
  vx_KernelMatrix kernel;
  kernel.resize(static_cast<std::size_t>(matrix.rows()),
                static_cast<std::size_t>(matrix.columns()));
  double* element = kernel.elements.data();
  for (long row = 0; row < matrix.rows(); ++row) {
    for (long column = 0; column < matrix.columns(); ++column) {
      *element++ = matrix.element(row, column);
    }
  }
  return kernel;
}

bool isPossibleState(const vxNMMatrix& mean, const vxNMMatrix& covariance, long sampleCount) {
  return (mean.columns() == 1 || mean.rows() == 0) && covariance.rows() == mean.rows() &&
         covariance.columns() == mean.rows() && sampleCount >= 0;
}

}  // namespace

vx_PDFMultivariateNormal::vx_PDFMultivariateNormal()
    : state_(std::make_unique<vx_NormalDensity>()) {}

vx_PDFMultivariateNormal::vx_PDFMultivariateNormal(const vx_PDFMultivariateNormal& other)
    : vx_ProbabilityDensityFunction(other),
      state_(std::make_unique<vx_NormalDensity>(*other.state_)) {}

vx_PDFMultivariateNormal& vx_PDFMultivariateNormal::operator=(
    const vx_PDFMultivariateNormal& other) {
  vx_ProbabilityDensityFunction::operator=(other);
  *state_ = *other.state_;
  return *this;
}

vx_PDFMultivariateNormal::~vx_PDFMultivariateNormal() = default;

double vx_PDFMultivariateNormal::logValue(const vxFeaturePattern& pattern) const {
  double value = 0.0;
  vfThrowExceptionOnFailure(state_->logDensity(kernelPattern(pattern), value));
  return value;
}

bool vx_PDFMultivariateNormal::isEquivalent(const vx_ProbabilityDensityFunction& other) const {
  const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(&other);
  return normal != nullptr && *this == *normal;
}

void vx_PDFMultivariateNormal::updateWithData(const std::vector<vxFeaturePattern>& patterns) {
  updateWithDataNormalize(patterns, 1.0);
}

void vx_PDFMultivariateNormal::updateWithDataNormalize(
    const std::vector<vxFeaturePattern>& patterns, double normalizer) {
  std::vector<vx_KernelPattern> kernelPatterns;
  kernelPatterns.reserve(patterns.size());
  for (const vxFeaturePattern& pattern : patterns) {
    kernelPatterns.push_back(kernelPattern(pattern));
  }
  mutating_();
  vfThrowExceptionOnFailure(state_->update(kernelPatterns, normalizer));
}

void vx_PDFMultivariateNormal::clear() {
  mutating_();
  *state_ = vx_NormalDensity();
}

vxNMMatrix vx_PDFMultivariateNormal::mean() const { return foundationMatrix(state_->mean()); }

vxNMMatrix vx_PDFMultivariateNormal::covariance() const {
  return foundationMatrix(state_->covariance());
}

long vx_PDFMultivariateNormal::sampleCount() const { return state_->sampleCount(); }

bool vx_PDFMultivariateNormal::isValid() const { return sampleCount() > 0; }

bool vx_PDFMultivariateNormal::operator==(const vx_PDFMultivariateNormal& other) const {
  return sampleCount() == other.sampleCount() && mean() == other.mean() &&
         covariance() == other.covariance();
}

void vx_PDFMultivariateNormal::serialize_(vxArchive& archive, unsigned char version) {
  if (version != 0) throw vxArchive::UnknownVersion();
  vx_ProbabilityDensityFunction::dispatchSerialize(archive);
  vxNMMatrix matrices[2];
  long count = 0;
  if (archive.isStoring()) {
    matrices[0] = mean();
    matrices[1] = covariance();
    count = sampleCount();
  }
  archive || matrices[0] || matrices[1] || count;
  if (archive.isStoring()) return;
  if (!isPossibleState(matrices[0], matrices[1], count)) {
    throw vxArchive::Malformed(L"A normal density of an impossible shape");
  }
  state_->restore(kernelMatrix(matrices[0]), kernelMatrix(matrices[1]),
                  static_cast<std::int32_t>(count));
}

void vx_PDFMultivariateNormal::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_PDFMultivariateNormal)}) {
    serialize_(archive, 0);
  }
}

vxPersistent* vx_PDFMultivariateNormal::make() { return new vx_PDFMultivariateNormal; }
vx_Instantiator vx_PDFMultivariateNormal::sExemplar(typeid(vx_PDFMultivariateNormal),
                                                    &vx_PDFMultivariateNormal::make);
