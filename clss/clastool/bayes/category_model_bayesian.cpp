// SPDX-License-Identifier: MIT
#include "vxclss/category_model_bayesian.h"

#include <atomic>

#include "group_access.h"
#include "kernel/normal_density.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/text.h"

namespace {

using Type = vxClassifierDistributionTypes::DistributionType;
using Density = vxPtrHandle<vx_ProbabilityDensityFunction>;

Density newDensity(Type type, const std::vector<long>& group,
                   const vxFeaturePattern& maxMeasurementValues) {
  switch (type) {
    case vxClassifierDistributionTypes::eNormal:
      return Density(new vx_PDFMultivariateNormal);
    case vxClassifierDistributionTypes::eBinomial: {
      const vxFeaturePattern maxima = vx_GroupAccess::reduced(maxMeasurementValues, group);
      return Density(new vx_PDFBinomial(maxima.isValid(0) ? maxima : vxFeaturePattern({1.0}, {})));
    }
    case vxClassifierDistributionTypes::ePoisson:
      throw vxClassifierDefs::NotImplemented(L"Poisson distribution is not implemented");
    case vxClassifierDistributionTypes::eUniform:
      throw vxClassifierDefs::NotImplemented(L"Uniform distribution is not implemented");
  }
  throw vxClassifierDefs::BadParams(L"Unknown distribution type");
}

std::atomic<std::uint64_t> nextRevision{1};

}  // namespace

vx_CategoryModelBayesian::Revision::Revision()
    : number_(nextRevision.fetch_add(1, std::memory_order_relaxed)) {}

vx_CategoryModelBayesian::Revision::Revision(const Revision&) : Revision() {}

vx_CategoryModelBayesian::Revision& vx_CategoryModelBayesian::Revision::operator=(const Revision&) {
  number_ = Revision().number_;
  vx_NormalDensity::advanceEpoch();  // plans that hold the model's densities look again
  return *this;
}

vx_CategoryModelBayesian::vx_CategoryModelBayesian() = default;

vx_CategoryModelBayesian::vx_CategoryModelBayesian(long label,
                                                   const std::vector<std::vector<long>>& groups,
                                                   const std::vector<Type>& types,
                                                   const vxFeaturePattern& maxMeasurementValues)
    : groups_(groups), densities_(types.size()) {
  if (groups_.size() < types.size()) {
    throw vxClassifierDefs::BadParams(L"groups.size() < types.size()");
  }
  long total = 0;
  for (std::size_t k = 0; k < types.size(); ++k) {
    total += static_cast<long>(groups_[k].size());
    densities_[k] = newDensity(types[k], groups_[k], maxMeasurementValues);
  }
  categoryLabel(label);
  numMeasurements(total);
}

vx_CategoryModelBayesian& vx_CategoryModelBayesian::operator=(
    const vx_CategoryModelBayesian& other) {
  return *this = vx_CategoryModelBayesian(other);
}

vx_CategoryModelBayesian::~vx_CategoryModelBayesian() = default;

std::vector<vxPtrHandle_const<vx_ProbabilityDensityFunction>> vx_CategoryModelBayesian::densities()
    const {
  return {densities_.begin(), densities_.end()};
}

double vx_CategoryModelBayesian::matchScore(const vxFeaturePattern& pattern, vxDiagObject*,
                                            unsigned long) const {
  double score = 0.0;
  try {
    for (std::size_t k = 0; k < densities_.size(); ++k) {
      score += vx_GroupAccess::logValue(*densities_[k], groups_[k], pattern);
    }
  } catch (const vxClassifierDefs::InsufficientTrainData& error) {
    throw vxClassifierDefs::InsufficientTrainData(error.message() + L" for category " +
                                                  vfStr(categoryLabel()));
  }
  return score;
}

void vx_CategoryModelBayesian::adapt(const vxFeaturePattern& pattern, vxDiagObject*,
                                     unsigned long) {
  mutating_();
  for (std::size_t k = 0; k < densities_.size(); ++k) {
    vx_GroupAccess::update(*densities_[k], groups_[k], pattern);
  }
}

bool vx_CategoryModelBayesian::operator==(const vx_CategoryModelBayesian& other) const {
  if (!vx_CategoryModel::operator==(other) || densities_.size() != other.densities_.size()) {
    return false;
  }
  for (std::size_t k = 0; k < densities_.size(); ++k) {
    if (!densities_[k]->isEquivalent(*other.densities_[k])) return false;
  }
  return true;
}

void vx_CategoryModelBayesian::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_CategoryModelBayesian)}) {
    vfTransferStaged(archive, *this, [&archive](vx_CategoryModelBayesian& target) {
      target.vx_CategoryModel::dispatchSerialize(archive);
      archive || target.groups_ || target.densities_;
      if (target.groups_.size() < target.densities_.size()) {
        throw vxArchive::Malformed(L"Fewer measurement groups than densities");
      }
    });
  }
}

vxPersistent* vx_CategoryModelBayesian::make() { return new vx_CategoryModelBayesian; }
vx_Instantiator vx_CategoryModelBayesian::sExemplar(typeid(vx_CategoryModelBayesian),
                                                    &vx_CategoryModelBayesian::make);
