// SPDX-License-Identifier: MIT
#include "bayesian_learner.h"

#include <algorithm>
#include <utility>

#include "group_access.h"

vx_BayesianLearner::vx_BayesianLearner(vx_CategoryModelBayesian& model) : model_(model) {
  std::vector<vx_NormalDensity*> singles;
  std::vector<std::pair<Members, vx_NormalDensity*>> groups;
  for (std::size_t k = 0; k < model.densities_.size(); ++k) {
    vx_NormalDensity* const density = vx_GroupAccess::normalState(*model.densities_[k]);
    const std::vector<long>& group = model.groups_[k];
    if (density == nullptr ||
        (!group.empty() && *std::min_element(group.begin(), group.end()) < 0)) {
      return;
    }
    Members members;
    Members& list = group.size() == 1 ? singles_ : members;
    for (const long index : group) {
      list.add(index);
      numLookedAt_ = std::max(numLookedAt_, index + 1);
    }
    if (group.size() == 1) {
      singles.push_back(density);
    } else {
      groups.emplace_back(std::move(members), density);
    }
  }
  std::size_t largest = singles.size();
  groups_.reserve(groups.size());
  for (auto& [members, density] : groups) {
    const std::size_t size = members.indices.size();
    largest = std::max(largest, size);
    groups_.push_back({std::move(members), vx_NormalBatch(*density, size)});
  }
  lanes_ = std::make_unique<vx_NormalLanes>(std::move(singles));
  x_.resize(largest);
  valid_ = std::make_unique<bool[]>(largest);
  isNormal_ = true;
}

vx_BayesianLearner::~vx_BayesianLearner() {
  for (Group& group : groups_) group.batch.write();
  if (lanes_) lanes_->write();
}

void vx_BayesianLearner::adapt(const vxFeaturePattern& pattern) {
  if (!isNormal_) {
    model_.adapt(pattern, nullptr, 0);
    return;
  }
  for (Group& group : groups_) {
    const Sample sample = sample_(group.members, pattern);
    group.batch.fold(sample.x, sample.valid);
  }
  const Sample sample = sample_(singles_, pattern);
  lanes_->fold(sample.x, sample.valid);
}

void vx_BayesianLearner::Members::add(long index) {
  isRun = isRun && (indices.empty() || index == indices.back() + 1);
  indices.push_back(index);
}

vx_BayesianLearner::Sample vx_BayesianLearner::sample_(const Members& members,
                                                       const vxFeaturePattern& pattern) {
  const std::vector<long>& indices = members.indices;
  if (indices.empty()) return {nullptr, nullptr};
  const double* const measurements = pattern.featureMeasurements(false).data();
  if (pattern.numInvalid() == 0 && numLookedAt_ <= pattern.numMeasurements()) {
    if (members.isRun) return {measurements + indices.front(), nullptr};
    for (std::size_t j = 0; j < indices.size(); ++j) x_[j] = measurements[indices[j]];
    return {x_.data(), nullptr};
  }
  for (std::size_t j = 0; j < indices.size(); ++j) {
    valid_[j] = pattern.isValid(indices[j]);
    x_[j] = valid_[j] ? measurements[indices[j]] : 0.0;
  }
  return {x_.data(), valid_.get()};
}
