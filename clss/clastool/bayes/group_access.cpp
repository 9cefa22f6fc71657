// SPDX-License-Identifier: MIT
#include "group_access.h"

#include <typeinfo>

#include "kernel/normal_density.h"
#include "kernel/scratch.h"
#include "vxfoundation/status.h"

namespace {

// The group's measurements on the stack, with their validity.
class Gathered {
 public:
  Gathered(const vxFeaturePattern& pattern, const std::vector<long>& group)
      : values_(group.size()), valid_(group.size()) {
    for (std::size_t j = 0; j < group.size(); ++j) {
      valid()[j] = pattern.isValid(group[j]);
      values()[j] = valid()[j] ? pattern.featureMeasurement(group[j], true) : 0.0;
    }
  }
  double* values() { return values_.data(); }
  bool* valid() { return valid_.data(); }

 private:
  vx_Scratch<double> values_;
  vx_Scratch<bool> valid_;
};

}  // namespace

vxFeaturePattern vx_GroupAccess::reduced(const vxFeaturePattern& pattern,
                                         const std::vector<long>& group) {
  std::vector<double> values(group.size(), 0.0);
  std::vector<long> invalid;
  for (std::size_t j = 0; j < group.size(); ++j) {
    if (pattern.isValid(group[j])) {
      values[j] = pattern.featureMeasurement(group[j], true);
    } else {
      invalid.push_back(static_cast<long>(j));
    }
  }
  return vxFeaturePattern(values, invalid);
}

double vx_GroupAccess::logValue(const vx_ProbabilityDensityFunction& density,
                                const std::vector<long>& group, const vxFeaturePattern& pattern) {
  if (const vx_NormalDensity* state = normalState(density)) {
    Gathered gathered(pattern, group);
    double value = 0.0;
    vfThrowExceptionOnFailure(
        state->logDensity(gathered.values(), gathered.valid(), group.size(), value));
    return value;
  }
  if (typeid(density) == typeid(vx_PDFBinomial) && group.size() == 1) {
    const auto& binomial = static_cast<const vx_PDFBinomial&>(density);
    Gathered gathered(pattern, group);
    binomial.checkTrained_();
    return *gathered.valid() ? binomial.logValueOf_(*gathered.values()) : 0.0;
  }
  return density.logValue(reduced(pattern, group));
}

void vx_GroupAccess::update(vx_ProbabilityDensityFunction& density, const std::vector<long>& group,
                            const vxFeaturePattern& pattern) {
  if (typeid(density) == typeid(vx_PDFMultivariateNormal)) {
    auto& normal = static_cast<vx_PDFMultivariateNormal&>(density);
    Gathered gathered(pattern, group);
    normal.mutating_();
    vfThrowExceptionOnFailure(
        normal.state_->update(gathered.values(), gathered.valid(), group.size(), 1.0));
  } else if (typeid(density) == typeid(vx_PDFBinomial) && group.size() == 1) {
    Gathered gathered(pattern, group);
    static_cast<vx_PDFBinomial&>(density).updateWithValue_(*gathered.values(), *gathered.valid());
  } else {
    density.updateWithData({reduced(pattern, group)});
  }
}

const vx_NormalDensity* vx_GroupAccess::normalState(const vx_ProbabilityDensityFunction& density) {
  if (typeid(density) != typeid(vx_PDFMultivariateNormal)) return nullptr;
  return static_cast<const vx_PDFMultivariateNormal&>(density).state_.get();
}

vx_NormalDensity* vx_GroupAccess::normalState(vx_ProbabilityDensityFunction& density) {
  if (typeid(density) != typeid(vx_PDFMultivariateNormal)) return nullptr;
  return static_cast<vx_PDFMultivariateNormal&>(density).state_.get();
}
