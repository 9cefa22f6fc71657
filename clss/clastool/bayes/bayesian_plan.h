// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_BAYES_BAYESIAN_PLAN_H_
#define CLSS_CLASTOOL_BAYES_BAYESIAN_PLAN_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "bayesian_block.h"
#include "kernel/normal_density.h"
#include "vxclss/category_model_bayesian.h"
#include "vxclss/density.h"
#include "vxfoundation/handle.h"

/// A classifier's normal densities, laid out for running: the categories that group their
/// measurements alike in blocks that are evaluated together.
///
/// Gives the bits of vx_CategoryModelBayesian::matchScore(). To that are left categories with
/// anything but trained normal densities, and patterns that lack a measurement or have an invalid
/// one in a group of several. A density that stands in several places is laid out for the first of
/// its categories only: a few references in an archive must not grow into many copies.
///
/// Copies of a model share its densities, and a host may hold a model itself, so both may change
/// behind the classifier's back; the plan notices and steps aside for good.
class vx_BayesianPlan {
 public:
  /// What a run writes to; its contents are left over from run to run.
  struct Room {
    std::vector<double> numbers;
    double* aligned = nullptr;  // the first of them in use
    std::vector<char> valid;    // a flag a measurement; none if all are valid
  };

  explicit vx_BayesianPlan(const std::vector<vxPtrHandle<vx_CategoryModel>>& models);

  /// Makes `room` ready for one run; false if the pattern is not for the plan.
  bool takes(const vxFeaturePattern& pattern, Room& room) const;

  /// Whether models and densities are still those that the plan was made from.
  bool isUpToDate() const {
    return epoch_.load(std::memory_order_acquire) == vx_NormalDensity::epoch()
               ? !isOutdated_.load(std::memory_order_relaxed)
               : isStillUpToDate_();
  }

  bool covers(std::size_t category) const { return places_[category].block != kNoBlock; }

  /// The match score of a category that is covered. The categories of one run are asked in order.
  double matchScore(std::size_t category, const vxFeaturePattern& pattern, Room& room) const;

 private:
  static constexpr std::size_t kNoBlock = static_cast<std::size_t>(-1);

  struct Place {
    std::size_t block = kNoBlock;
    std::size_t lane = 0;
  };
  struct Source {
    const vx_NormalDensity* density;
    std::uint64_t serial;
  };
  struct Model {
    const vx_CategoryModelBayesian* model;
    std::uint64_t revision;
  };

  using Densities = std::set<const vx_NormalDensity*>;

  bool add_(const vx_CategoryModelBayesian& model, Densities& laidOut,
            std::vector<double>& constants);
  bool isStillUpToDate_() const;

  std::vector<Place> places_;  // one a category
  std::vector<vx_BayesianBlock> blocks_;
  std::size_t roomSize_ = 0;    // what the largest block needs
  long largestMember_ = -1;     // index of a measurement
  std::vector<long> together_;  // members of groups of several
  std::vector<Model> models_;
  std::vector<Source> sources_;  // kept alive by the models, as long as those are the same

  mutable std::atomic<std::uint64_t> epoch_;
  mutable std::atomic<bool> isOutdated_{false};
};

#endif  // CLSS_CLASTOOL_BAYES_BAYESIAN_PLAN_H_
