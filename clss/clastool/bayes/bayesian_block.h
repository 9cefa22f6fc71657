// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_BAYES_BAYESIAN_BLOCK_H_
#define CLSS_CLASTOOL_BAYES_BAYESIAN_BLOCK_H_

#include <cstddef>
#include <vector>

class vx_NormalFactor;

/// The measurements of a pattern, with a flag each that tells which are valid; without flags all
/// are.
struct vx_BayesianQuery {
  const double* measurements;
  const char* valid;
};

/// Up to eight categories of normal densities that group their measurements alike, for evaluating
/// all of them together.
class vx_BayesianBlock {
 public:
  static constexpr std::size_t kLanes = 8;
  using Groups = std::vector<std::vector<long>>;
  /// The sizes of the groups, and the indices of all their members.
  struct Shape {
    std::vector<std::size_t> sizes;
    std::vector<std::size_t> members;
  };

  /// `constants` are those of each category, group by group; there is at least one group. Groups
  /// are not empty, indices not negative.
  vx_BayesianBlock(const Groups& groups, const std::vector<std::vector<double>>& constants);

  /// Appends what a category needs of one group's density.
  static void appendConstants(const vx_NormalFactor& factor, std::vector<double>& constants);

  /// Numbers of room that scores() needs, which is to be aligned to 64 bytes.
  std::size_t roomSize() const { return kLanes * largestGroup_; }

  /// The match score of each category, from `scores[0]` on; there is room for kLanes. An invalid
  /// single measurement is left out; those of larger groups are valid.
  void scores(const vx_BayesianQuery& query, double* room, double* scores) const;

 private:
  struct alignas(64) Lanes {
    double of[kLanes];
  };

  Shape shape_;
  std::size_t largestGroup_ = 0;
  std::size_t numCategories_;
  std::vector<Lanes> lanes_;    // of several categories, side by side
  std::vector<double> single_;  // of one category alone
};

#endif  // CLSS_CLASTOOL_BAYES_BAYESIAN_BLOCK_H_
