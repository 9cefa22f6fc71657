// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_KNN_NEIGHBOUR_SEARCH_H_
#define CLSS_CLASTOOL_KNN_NEIGHBOUR_SEARCH_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "clastool/clastool/packed_patterns.h"
#include "code_scan.h"
#include "vxclss/distance_metric.h"

/// Finds the k nearest of packed patterns without measuring most of their distances: exactly those
/// that inserting every pattern into a vx_NeighbourList by its distance leaves there.
///
/// Whichever patterns are left out, the list is the same as long as all stay that are at most as
/// far as its last place in the end. So bounds may reject patterns: bounds of whole numbers
/// (vx_CodeGrid) nearly all of them, plain sums of differences or squares the rest but the
/// neighbours themselves.
///
/// A plain sum isn't the distance's own sum, which goes through pow. pow and its inverse are right
/// to a few units in the last place, a sum of d terms to d of them; so with an order p two plain
/// sums that differ by more than a share of (4 d + 64) p 2^-52 rank as the distances do. Only
/// patterns that are closer than that to the k-th are asked for their distance. Sums below 1e-290
/// may have lost digits and count as equal, those above 1e290 are left to the definition.
///
/// An object keeps the memory of its last search.
class vx_NeighbourSearch {
 public:
  /// Sets neighbours(), in no particular order. False where the search must go by the definition:
  /// for a query that isn't finite, orders far from 1, distances near the ends of doubles.
  ///
  /// `query` is valid and as long as the packed patterns, which are usable; k is at least 1.
  bool find(const vx_PackedPatterns& patterns, const vxFeaturePattern& query,
            const vxPatternDistanceMetricNorm& norm, std::size_t k);

  const std::vector<long>& neighbours() const { return neighbours_; }

 private:
  /// Patterns that may be among the k nearest as far as scores tell, in the order of their indices.
  class Candidates {
   public:
    /// Scores end at `most`; `slack` is how far the codes may lead astray, in steps of their grid.
    void start(std::size_t k, double slack, bool areSquares, std::uint32_t most);
    /// From the first pattern again, with a limit that stays.
    void startAgain(std::uint32_t limit);
    /// Those of 32 patterns that are found.
    void add(const std::uint32_t* scores, std::uint32_t found, std::size_t firstIndex,
             const vx_CodeScan& scan);
    /// Leaves out what can't be among the k nearest unless it lies outside the grid's box.
    void prune(const vx_CodeScan& scan);
    void keepUpTo(std::uint32_t limit);
    /// A score that k candidates or a few more don't exceed: the more exact, the fewer stay.
    std::uint32_t kthScore(const vx_CodeScan& scan);

    std::size_t size() const { return size_; }
    std::size_t index(std::size_t i) const { return indices_[i]; }
    std::uint32_t score(std::size_t i) const { return scores_[i]; }
    /// No pattern of a score up to this was left out.
    std::uint32_t limit() const { return limit_; }
    std::uint32_t asLimit(double score) const;

   private:
    std::vector<std::uint32_t> scores_;
    std::vector<std::uint32_t> indices_;
    std::size_t size_ = 0;
    std::size_t pruneAt_ = 0;
    std::size_t k_ = 0;
    double slack_ = 0.0;
    bool areSquares_ = false;
    bool mayPrune_ = true;
    std::uint32_t most_ = 0;
    std::uint32_t limit_ = 0;
  };

  bool findBySums(const vx_PackedPatterns& patterns, const vxFeaturePattern& query,
                  const vxPatternDistanceMetricNorm& norm, std::size_t k);
  bool findByBounds(const vx_PackedPatterns& patterns, const vxFeaturePattern& query,
                    const vxPatternDistanceMetricNorm& norm, std::size_t k);
  void encodeQuery(const vx_PackedPatterns& patterns, const double* x);
  void collect(const vx_PackedPatterns& patterns, bool areSquares);
  double sumOfBest(const vx_PackedPatterns& patterns, const double* x, bool areSquares);
  double sumUp(const vx_PackedPatterns& patterns, const double* x, bool areSquares, std::size_t k);
  void settleTies(const vx_PackedPatterns& patterns, const vxFeaturePattern& query,
                  const vxPatternDistanceMetricNorm& norm, std::size_t k, double margin);

  std::vector<long> neighbours_;
  Candidates candidates_;
  std::vector<std::uint16_t> codes_;
  std::vector<vx_CodeScan::Line> queryLines_;
  vx_CodeGrid::Residual residual_{0.0, 0.0};
  std::vector<double> sums_;    // of the candidates
  std::vector<double> ranked_;  // the same, partly sorted
  std::vector<double> distances_;
  std::vector<float> bounds_;  // of all patterns
};

#endif  // CLSS_CLASTOOL_KNN_NEIGHBOUR_SEARCH_H_
