// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_BAYES_BAYESIAN_PLAN_H_
#define CLSS_CLASTOOL_BAYES_BAYESIAN_PLAN_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernel/normal_density.h"
#include "vxclss/category_model_bayesian.h"
#include "vxclss/density.h"
#include "vxfoundation/handle.h"

/// A classifier's normal densities, laid out for running: each single measurement's mean, scale
/// and constant one after another in the order in which they are added, each larger group's factor
/// by reference.
///
/// Gives the bits of vx_CategoryModelBayesian::matchScore() for patterns whose measurements are
/// all valid. Categories with anything but trained normal densities are left to that.
///
/// Copies of a model share its densities, and a host may hold a model itself, so both may change
/// behind the classifier's back; the plan notices and steps aside for good.
class vx_BayesianPlan {
 public:
  explicit vx_BayesianPlan(const std::vector<vxPtrHandle<vx_CategoryModel>>& models);

  /// Whether the plan may be used now for a pattern of so many valid measurements.
  bool isUsable(long numMeasurements) const;

  bool covers(std::size_t category) const { return categories_[category].isCovered; }

  /// The match score of a category that is covered; `x` are the pattern's measurements.
  double matchScore(std::size_t category, const double* x) const;

 private:
  struct Single {
    double mean;
    double scale;
    double constant;
    std::size_t measurement;
  };
  struct Group {
    const vx_NormalFactor* factor;  // owned by its density
    std::size_t firstMember;
    std::size_t singlesBefore;  // how many singles of the category are added first
  };
  struct Category {
    bool isCovered = false;
    std::size_t firstSingle = 0;
    std::size_t endSingle = 0;
    std::size_t firstGroup = 0;
    std::size_t endGroup = 0;
  };
  struct Source {
    const vx_NormalDensity* density;
    std::uint64_t serial;
  };
  struct Model {
    const vx_CategoryModelBayesian* model;
    std::uint64_t revision;
  };

  bool isUpToDate_() const;
  bool add_(const vx_CategoryModel* model);
  bool addGroup_(const std::vector<long>& group, const vx_ProbabilityDensityFunction* density,
                 std::size_t firstSingle);
  double addSingles_(double score, std::size_t from, std::size_t to, const double* x) const;

  std::vector<Category> categories_;
  std::vector<Single> singles_;
  std::vector<Group> groups_;
  std::vector<std::size_t> members_;  // of the groups
  std::vector<Model> models_;
  std::vector<Source> sources_;  // kept alive by the models, as long as those are the same
  long smallestPattern_ = 0;

  mutable std::atomic<std::uint64_t> epoch_;
  mutable std::atomic<bool> isOutdated_{false};
};

#endif  // CLSS_CLASTOOL_BAYES_BAYESIAN_PLAN_H_
