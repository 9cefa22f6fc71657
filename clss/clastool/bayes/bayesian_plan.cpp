// SPDX-License-Identifier: MIT
#include "bayesian_plan.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <typeinfo>
#include <utility>

#include "group_access.h"
#include "kernel/simd.h"

namespace {

using Groups = vx_BayesianBlock::Groups;

constexpr std::size_t kLanes = vx_BayesianBlock::kLanes;

// Where no wide registers take the lanes together, constants side by side only lie farther apart.
std::size_t lanesPerBlock() { return vx_simdDetected() == vx_Simd::kPlain ? 1 : kLanes; }

// The categories of a block to be.
struct Draft {
  Groups groups;
  std::vector<std::vector<double>> constants;
};

// The state of a density that the plan can take, together with its factor; null for any other.
const vx_NormalDensity* plainState(const vx_ProbabilityDensityFunction* density,
                                   const std::vector<long>& group) {
  const vx_NormalDensity* state = density ? vx_GroupAccess::normalState(*density) : nullptr;
  const bool isPlain = state != nullptr && state->sampleCount() > 0 && !group.empty() &&
                       state->dimension() == group.size() &&
                       *std::min_element(group.begin(), group.end()) >= 0;
  return isPlain && state->factor() != nullptr ? state : nullptr;
}

}  // namespace

vx_BayesianPlan::vx_BayesianPlan(const std::vector<vxPtrHandle<vx_CategoryModel>>& models)
    : places_(models.size()), epoch_(vx_NormalDensity::epoch()) {
  std::vector<Draft> drafts;
  Densities laidOut;
  std::map<Groups, std::size_t> filling;  // the draft that takes the next category of that grouping
  for (std::size_t i = 0; i < models.size(); ++i) {
    const auto* model = dynamic_cast<const vx_CategoryModelBayesian*>(models[i].get());
    std::vector<double> constants;
    if (model == nullptr || !add_(*model, laidOut, constants)) continue;
    Groups groups = model->groups_;
    groups.resize(model->densities_.size());
    const std::size_t fresh = drafts.size();
    std::size_t& draft = filling.try_emplace(groups, fresh).first->second;
    if (draft < fresh && drafts[draft].constants.size() == lanesPerBlock()) draft = fresh;
    if (draft == fresh) drafts.push_back({std::move(groups), {}});
    places_[i] = {draft, drafts[draft].constants.size()};
    drafts[draft].constants.push_back(std::move(constants));
  }

  std::set<long> together;
  blocks_.reserve(drafts.size());
  for (const Draft& draft : drafts) {
    blocks_.emplace_back(draft.groups, draft.constants);
    roomSize_ = std::max(roomSize_, blocks_.back().roomSize());
    for (const std::vector<long>& group : draft.groups) {
      largestMember_ = std::max(largestMember_, *std::max_element(group.begin(), group.end()));
      if (group.size() > 1) together.insert(group.begin(), group.end());
    }
  }
  together_.assign(together.begin(), together.end());
}

bool vx_BayesianPlan::takes(const vxFeaturePattern& pattern, Room& room) const {
  if (pattern.numMeasurements() <= largestMember_) return false;
  room.valid.clear();
  if (pattern.numInvalid() > 0) {
    const auto isValid = [&pattern](long measurement) { return pattern.isValid(measurement); };
    if (!std::all_of(together_.begin(), together_.end(), isValid)) return false;
    for (long m = 0; m < pattern.numMeasurements(); ++m) room.valid.push_back(isValid(m));
  }
  const std::size_t count = roomSize_ + kLanes * blocks_.size();
  if (room.numbers.size() < count + kLanes) room.numbers.resize(count + kLanes);
  void* start = room.numbers.data();
  std::size_t bytes = room.numbers.size() * sizeof(double);
  room.aligned = static_cast<double*>(
      std::align(kLanes * sizeof(double), count * sizeof(double), start, bytes));
  return true;
}

double vx_BayesianPlan::matchScore(std::size_t category, const vxFeaturePattern& pattern,
                                   Room& room) const {
  const Place& place = places_[category];
  double* const scores = room.aligned + roomSize_ + kLanes * place.block;
  if (place.lane == 0) {
    const char* const valid = room.valid.empty() ? nullptr : room.valid.data();
    blocks_[place.block].scores({pattern.featureMeasurements(false).data(), valid}, room.aligned,
                                scores);
  }
  return scores[place.lane];
}

bool vx_BayesianPlan::add_(const vx_CategoryModelBayesian& model, Densities& laidOut,
                           std::vector<double>& constants) {
  if (typeid(model) != typeid(vx_CategoryModelBayesian) || model.densities_.empty()) return false;
  std::vector<Source> sources;
  for (std::size_t k = 0; k < model.densities_.size(); ++k) {
    const vx_NormalDensity* state = plainState(model.densities_[k].get(), model.groups_[k]);
    if (state == nullptr || !laidOut.insert(state).second) return false;
    const vx_NormalFactor* factor = state->factor();
    vx_BayesianBlock::appendConstants(*factor, constants);
    sources.push_back({state, factor->serial()});
  }
  models_.push_back({&model, model.revision_.number()});
  sources_.insert(sources_.end(), sources.begin(), sources.end());
  return true;
}

bool vx_BayesianPlan::isStillUpToDate_() const {
  const std::uint64_t now = vx_NormalDensity::epoch();
  // The models first: one that was assigned to may have freed its densities.
  const bool isSame =
      std::all_of(
          models_.begin(), models_.end(),
          [](const Model& kept) { return kept.model->revision_.number() == kept.revision; }) &&
      std::all_of(sources_.begin(), sources_.end(),
                  [](const Source& kept) { return kept.density->factorSerial() == kept.serial; });
  if (!isSame) isOutdated_.store(true, std::memory_order_relaxed);
  epoch_.store(now, std::memory_order_release);
  return !isOutdated_.load(std::memory_order_relaxed);
}
