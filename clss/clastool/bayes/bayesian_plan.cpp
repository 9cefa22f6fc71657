// SPDX-License-Identifier: MIT
#include "bayesian_plan.h"

#include <algorithm>

#include "group_access.h"
#include "kernel/scratch.h"

vx_BayesianPlan::vx_BayesianPlan(const std::vector<vxPtrHandle<vx_CategoryModel>>& models)
    : categories_(models.size()), epoch_(vx_NormalDensity::epoch()) {
  for (std::size_t i = 0; i < models.size(); ++i) {
    Category& category = categories_[i];
    category.firstSingle = singles_.size();
    category.firstGroup = groups_.size();
    category.isCovered = add_(models[i].get());
    if (!category.isCovered) {
      singles_.resize(category.firstSingle);
      groups_.resize(category.firstGroup);
    }
    category.endSingle = singles_.size();
    category.endGroup = groups_.size();
  }
}

bool vx_BayesianPlan::isUsable(long numMeasurements) const {
  if (numMeasurements < smallestPattern_) return false;
  const std::uint64_t now = vx_NormalDensity::epoch();
  if (epoch_.load(std::memory_order_acquire) != now) {
    if (!isUpToDate_()) isOutdated_.store(true, std::memory_order_relaxed);
    epoch_.store(now, std::memory_order_release);
  }
  return !isOutdated_.load(std::memory_order_relaxed);
}

bool vx_BayesianPlan::isUpToDate_() const {
  // The models first: one that was assigned to may have freed its densities.
  return std::all_of(
             models_.begin(), models_.end(),
             [](const Model& kept) { return kept.model->revision_.number() == kept.revision; }) &&
         std::all_of(sources_.begin(), sources_.end(), [](const Source& kept) {
           return kept.density->factorSerial() == kept.serial;
         });
}

double vx_BayesianPlan::matchScore(std::size_t category, const double* x) const {
  const Category& plan = categories_[category];
  double score = 0.0;
  std::size_t next = plan.firstSingle;
  for (std::size_t k = plan.firstGroup; k < plan.endGroup; ++k) {
    const Group& group = groups_[k];
    score = addSingles_(score, next, plan.firstSingle + group.singlesBefore, x);
    next = plan.firstSingle + group.singlesBefore;

    const std::size_t dimension = group.factor->dimension();
    vx_Scratch<double> values(dimension);
    for (std::size_t j = 0; j < dimension; ++j) {
      values.data()[j] = x[members_[group.firstMember + j]];
    }
    score += group.factor->logDensity(values.data());
  }
  return addSingles_(score, next, plan.endSingle, x);
}

bool vx_BayesianPlan::add_(const vx_CategoryModel* model) {
  const auto* bayesian = dynamic_cast<const vx_CategoryModelBayesian*>(model);
  if (bayesian == nullptr || typeid(*bayesian) != typeid(vx_CategoryModelBayesian)) return false;
  models_.push_back({bayesian, bayesian->revision_.number()});
  const std::size_t firstSingle = singles_.size();
  const auto densities = bayesian->densities();
  for (std::size_t k = 0; k < densities.size(); ++k) {
    const std::vector<long>& group = bayesian->measurementGroups()[k];
    if (!addGroup_(group, densities[k].get(), firstSingle)) return false;
  }
  return true;
}

bool vx_BayesianPlan::addGroup_(const std::vector<long>& group,
                                const vx_ProbabilityDensityFunction* density,
                                std::size_t firstSingle) {
  const vx_NormalDensity* state = density ? vx_GroupAccess::normalState(*density) : nullptr;
  const bool isPlain = state != nullptr && state->sampleCount() > 0 && !group.empty() &&
                       state->dimension() == group.size() &&
                       *std::min_element(group.begin(), group.end()) >= 0;
  const vx_NormalFactor* factor = isPlain ? state->factor() : nullptr;
  if (factor == nullptr) return false;

  sources_.push_back({state, factor->serial()});
  smallestPattern_ = std::max(smallestPattern_, *std::max_element(group.begin(), group.end()) + 1);
  if (group.size() == 1) {
    singles_.push_back({factor->mean(0), factor->scale(0), factor->constant(),
                        static_cast<std::size_t>(group.front())});
  } else {
    groups_.push_back({factor, members_.size(), singles_.size() - firstSingle});
    members_.insert(members_.end(), group.begin(), group.end());
  }
  return true;
}

double vx_BayesianPlan::addSingles_(double score, std::size_t from, std::size_t to,
                                    const double* x) const {
  for (std::size_t k = from; k < to; ++k) {
    const Single& single = singles_[k];
    const double z = (x[single.measurement] - single.mean) * single.scale;
    score += single.constant - 0.5 * (z * z);
  }
  return score;
}
