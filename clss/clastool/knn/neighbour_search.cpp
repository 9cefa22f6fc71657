// SPDX-License-Identifier: MIT
#include "neighbour_search.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>

#include "neighbour_list.h"

namespace {

constexpr std::size_t kLanes = vx_PackedPatterns::kLanes;
constexpr double kTiny = 1e-290;  // sums between these two are as exact as any
constexpr double kHuge = 1e290;
constexpr std::size_t kPruneEvery = 4;   // times as many blocks as the last time
constexpr double kRoundUp = 1.0 + 1e-9;  // more than the bounds' own arithmetic loses

double absoluteSum(const double* x, const double* y, std::size_t n) {
  std::array<double, 4> sums{};
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    for (std::size_t j = 0; j < 4; ++j) sums[j] += std::fabs(x[i + j] - y[i + j]);
  }
  for (; i < n; ++i) sums[0] += std::fabs(x[i] - y[i]);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

double squareSum(const double* x, const double* y, std::size_t n) {
  std::array<double, 4> sums{};
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    for (std::size_t j = 0; j < 4; ++j) {
      const double difference = x[i + j] - y[i + j];
      sums[j] += difference * difference;
    }
  }
  for (; i < n; ++i) sums[0] += (x[i] - y[i]) * (x[i] - y[i]);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

// Powers of the differences that codes are sure of, by as many upper bits as a byte holds.
using Powers = std::array<float, 256>;

void addBytePowers(const vx_CodeScan::Line& line, const std::uint16_t* query, const Powers& powers,
                   float* bounds) {
  const int first = query[0];
  const int second = query[1];
  for (std::size_t lane = 0; lane < kLanes; ++lane) {
    const int word = line.words[lane];
    bounds[lane] += powers[static_cast<std::size_t>(std::abs((word & 0xff) - first))] +
                    powers[static_cast<std::size_t>(std::abs((word >> 8) - second))];
  }
}

void addWordPowers(const vx_CodeScan::Line* twoLines, const std::uint16_t* query,
                   const Powers& powers, int shift, float* bounds) {
  const int first = query[0];
  const int second = query[1];
  for (std::size_t lane = 0; lane < kLanes; ++lane) {
    const std::uint16_t* words = &twoLines[lane / 16].words[2 * (lane % 16)];
    bounds[lane] += powers[static_cast<std::size_t>(std::abs(words[0] - first) >> shift)] +
                    powers[static_cast<std::size_t>(std::abs(words[1] - second) >> shift)];
  }
}

}  // namespace

bool vx_NeighbourSearch::find(const vx_PackedPatterns& patterns, const vxFeaturePattern& query,
                              const vxPatternDistanceMetricNorm& norm, std::size_t k) {
  if (k >= patterns.size()) {
    neighbours_.resize(patterns.size());
    std::iota(neighbours_.begin(), neighbours_.end(), 0L);
    return true;
  }
  const std::vector<double>& x = query.featureMeasurements(true);
  if (!std::all_of(x.begin(), x.end(), [](double value) { return std::isfinite(value); })) {
    return false;
  }
  encodeQuery(patterns, x.data());
  if (norm.order() == 1.0 || norm.order() == 2.0) return findBySums(patterns, query, norm, k);
  if (norm.order() >= 0.1 && norm.order() <= 100.0) return findByBounds(patterns, query, norm, k);
  return false;
}

void vx_NeighbourSearch::encodeQuery(const vx_PackedPatterns& patterns, const double* x) {
  codes_.resize(patterns.grid().numCodes());
  residual_ = patterns.grid().encode(x, codes_.data());
  queryLines_.resize(patterns.numPairs());
  for (std::size_t j = 0; j < queryLines_.size(); ++j) {
    auto& words = queryLines_[j].words;
    const std::uint16_t first = codes_[2 * j];
    const std::uint16_t second = codes_[2 * j + 1];
    if (patterns.isWide()) {
      for (std::size_t i = 0; i < words.size(); i += 2) {
        words[i] = first;
        words[i + 1] = second;
      }
    } else {
      words.fill(vx_bytePair(first, second));
    }
  }
}

bool vx_NeighbourSearch::findBySums(const vx_PackedPatterns& patterns,
                                    const vxFeaturePattern& query,
                                    const vxPatternDistanceMetricNorm& norm, std::size_t k) {
  const double* x = query.featureMeasurements(true).data();
  const bool areSquares = norm.order() == 2.0;
  const double step = patterns.grid().step();
  const double slack = areSquares ? patterns.residual().euclidean + residual_.euclidean
                                  : patterns.residual().absolute + residual_.absolute;
  const double margin =
      (4.0 * static_cast<double>(patterns.numMeasurements()) + 64.0) * norm.order() * 0x1p-52;

  candidates_.start(k, slack / step, areSquares,
                    patterns.isWide() ? vx_CodeScan::kMostOfWords : vx_CodeScan::kMostOfBytes);
  collect(patterns, areSquares);
  // Of many candidates the best give a bound first, so that most of the others need no sum.
  const bool areMany = candidates_.size() > 4 * k;
  double kthSum = areMany ? sumOfBest(patterns, x, areSquares) : sumUp(patterns, x, areSquares, k);
  if (!(kthSum <= kHuge)) return false;

  // How far a neighbour may be, then which score that allows. Where patterns or the query lie
  // outside the grid's box, scores are too small and the first look left out too much.
  const double farthest = std::max(kthSum, kTiny) * (1.0 + 2.0 * margin);
  const double score = ((areSquares ? std::sqrt(farthest) : farthest) + slack) / step * kRoundUp;
  const std::uint32_t needed = candidates_.asLimit((areSquares ? score * score : score) * kRoundUp);
  const bool leftOutTooMuch = needed > candidates_.limit();
  if (leftOutTooMuch) {
    candidates_.startAgain(needed);
    collect(patterns, areSquares);
  } else if (areMany) {
    candidates_.keepUpTo(needed);
  }
  if (leftOutTooMuch || areMany) kthSum = sumUp(patterns, x, areSquares, k);

  neighbours_.clear();
  double next = std::numeric_limits<double>::infinity();
  for (std::size_t i = k; i < ranked_.size(); ++i) next = std::min(next, ranked_[i]);
  if (next > std::max(kthSum, kTiny) * (1.0 + margin)) {
    for (std::size_t i = 0; i < candidates_.size(); ++i) {
      if (sums_[i] <= kthSum) neighbours_.push_back(static_cast<long>(candidates_.index(i)));
    }
  } else {
    settleTies(patterns, query, norm, k, margin);
  }
  return true;
}

void vx_NeighbourSearch::collect(const vx_PackedPatterns& patterns, bool areSquares) {
  const vx_CodeScan& scan = vx_CodeScan::at(vx_simd());
  const vx_CodeScan::Finders& finders = patterns.isWide() ? scan.words : scan.bytes;
  const vx_CodeScan::Find findNext = areSquares ? finders.bySquares : finders.byAbsolutes;
  const vx_CodeScan::Task task = {patterns.lines(), queryLines_.data(), patterns.numPairs(),
                                  patterns.numBlocks()};
  std::array<std::uint32_t, kLanes> scores;
  std::uint32_t found = 0;
  std::size_t pruneAt = kPruneEvery;
  for (std::size_t block = 0;; ++block) {
    block = findNext(task, block, candidates_.limit(), scores.data(), found);
    if (block == task.numBlocks) break;
    const std::size_t inBlock = patterns.size() - block * kLanes;
    if (inBlock < kLanes) found &= (std::uint32_t{1} << inBlock) - 1;  // not the padding
    candidates_.add(scores.data(), found, block * kLanes, scan);
    // Candidates become rarer as more patterns were seen; a lower limit saves looking at those.
    if (block >= pruneAt) {
      candidates_.prune(scan);
      pruneAt = kPruneEvery * block;
    }
  }
  candidates_.prune(scan);
}

/// The greatest sum of the candidates with the best scores, of which there are k or a few more.
double vx_NeighbourSearch::sumOfBest(const vx_PackedPatterns& patterns, const double* x,
                                     bool areSquares) {
  const std::uint32_t limit = candidates_.kthScore(vx_CodeScan::at(vx_simd()));
  double greatest = 0.0;
  for (std::size_t i = 0; i < candidates_.size(); ++i) {
    if (candidates_.score(i) > limit) continue;
    const double* y = patterns.row(candidates_.index(i));
    const std::size_t n = patterns.numMeasurements();
    greatest = std::max(greatest, areSquares ? squareSum(x, y, n) : absoluteSum(x, y, n));
  }
  return greatest;
}

/// Sums up all candidates; gives the k-th smallest sum.
double vx_NeighbourSearch::sumUp(const vx_PackedPatterns& patterns, const double* x,
                                 bool areSquares, std::size_t k) {
  const std::size_t n = patterns.numMeasurements();
  sums_.resize(candidates_.size());
  for (std::size_t i = 0; i < sums_.size(); ++i) {
    const double* y = patterns.row(candidates_.index(i));
    sums_[i] = areSquares ? squareSum(x, y, n) : absoluteSum(x, y, n);
  }
  ranked_ = sums_;
  const auto kth = ranked_.begin() + static_cast<std::ptrdiff_t>(k - 1);
  std::nth_element(ranked_.begin(), kth, ranked_.end());
  return *kth;
}

/// Sets the neighbours where sums leave open which patterns are nearer: those clearly below the
/// group of near ties around the k-th are in, the others enter the list by their distances.
void vx_NeighbourSearch::settleTies(const vx_PackedPatterns& patterns,
                                    const vxFeaturePattern& query,
                                    const vxPatternDistanceMetricNorm& norm, std::size_t k,
                                    double margin) {
  std::sort(ranked_.begin(), ranked_.begin() + static_cast<std::ptrdiff_t>(k));
  double lowestTie = ranked_[k - 1];
  const double highestTie = std::max(lowestTie, kTiny) * (1.0 + margin);
  for (std::size_t i = k - 1; i > 0; --i) {
    if (std::max(ranked_[i - 1], kTiny) * (1.0 + margin) < lowestTie) break;
    lowestTie = ranked_[i - 1];
  }
  vx_NeighbourList list(k, neighbours_, distances_);
  for (std::size_t i = 0; i < candidates_.size(); ++i) {
    if (sums_[i] > highestTie) continue;
    const std::size_t index = candidates_.index(i);
    const bool isIn = sums_[i] < lowestTie;
    list.admit(static_cast<long>(index),
               isIn ? -1.0 : norm.distance(query, patterns.pattern(index)));
  }
}

/// For any order: the powers of the differences that codes are sure of, added up, reject; the rest
/// enter the list by their distances. A limit comes from the k patterns of the least bounds.
bool vx_NeighbourSearch::findByBounds(const vx_PackedPatterns& patterns,
                                      const vxFeaturePattern& query,
                                      const vxPatternDistanceMetricNorm& norm, std::size_t k) {
  const vx_CodeGrid& grid = patterns.grid();
  if (!(grid.step() > 1e-30 && grid.step() < 1e30)) return false;  // not for floats
  Powers powers;
  int shift = 0;
  while (vx_CodeGrid::lastCode(patterns.numMeasurements()) >> shift >= powers.size()) ++shift;
  const double step = grid.step() * (1 << shift);
  for (std::size_t i = 0; i < powers.size(); ++i) {
    const double sure = static_cast<double>(i) * step - 2.0 * grid.worstResidual();
    powers[i] = std::pow(static_cast<float>(std::max(0.0, sure)), static_cast<float>(norm.order()));
  }
  bounds_.assign(patterns.numBlocks() * kLanes, 0.0F);
  for (std::size_t block = 0; block < patterns.numBlocks(); ++block) {
    const vx_CodeScan::Line* lines = patterns.lines() + block * patterns.numLines();
    float* bounds = bounds_.data() + block * kLanes;
    for (std::size_t j = 0; j < patterns.numPairs(); ++j) {
      const std::uint16_t* codes = &codes_[2 * j];
      if (patterns.isWide()) {
        addWordPowers(&lines[2 * j], codes, powers, shift, bounds);
      } else {
        addBytePowers(lines[j], codes, powers, bounds);
      }
    }
  }
  bounds_.resize(patterns.size());
  vx_NeighbourList least(k, neighbours_, distances_);
  for (std::size_t i = 0; i < bounds_.size(); ++i) {
    least.admit(static_cast<long>(i), bounds_[i]);
  }
  double farthest = 0.0;
  for (const long i : neighbours_) {
    const vxFeaturePattern& pattern = patterns.pattern(static_cast<std::size_t>(i));
    farthest = std::max(farthest, norm.distance(query, pattern));
  }
  // Sums of floats lose less than 2^-23 a term, and what is too small for them next to nothing.
  const double lost = 1e-4 + 0x1p-22 * static_cast<double>(patterns.numMeasurements());
  const double widened = std::pow(farthest, norm.order()) * (1.0 + lost) * (1.0 + lost);
  if (!(widened < 1e38)) return false;
  const auto limit = static_cast<float>(widened) + std::numeric_limits<float>::min();

  vx_NeighbourList list(k, neighbours_, distances_);
  for (std::size_t i = 0; i < bounds_.size(); ++i) {
    if (bounds_[i] > limit) continue;
    list.admit(static_cast<long>(i), norm.distance(query, patterns.pattern(i)));
  }
  return true;
}

std::uint32_t vx_NeighbourSearch::Candidates::asLimit(double score) const {
  return score < most_ ? static_cast<std::uint32_t>(score) : most_;
}

void vx_NeighbourSearch::Candidates::start(std::size_t k, double slack, bool areSquares,
                                           std::uint32_t most) {
  k_ = k;
  slack_ = slack;
  areSquares_ = areSquares;
  mayPrune_ = true;
  most_ = most;
  limit_ = most;
  size_ = 0;
  pruneAt_ = kLanes * ((2 * k + 2 * kLanes - 1) / kLanes);
}

void vx_NeighbourSearch::Candidates::startAgain(std::uint32_t limit) {
  mayPrune_ = false;
  limit_ = limit;
  size_ = 0;
}

void vx_NeighbourSearch::Candidates::add(const std::uint32_t* scores, std::uint32_t found,
                                         std::size_t firstIndex, const vx_CodeScan& scan) {
  if (size_ + 2 * kLanes > scores_.size()) {
    indices_.resize(2 * size_ + 4 * kLanes);
    scores_.resize(2 * size_ + 4 * kLanes);  // the one that is asked, last
  }
  std::uint32_t* score = scores_.data() + size_;
  std::uint32_t* index = indices_.data() + size_;
  if (found == ~std::uint32_t{0}) {
    std::copy(scores, scores + kLanes, score);
    std::iota(index, index + kLanes, static_cast<std::uint32_t>(firstIndex));
    size_ += kLanes;
  } else {
    for (; found != 0; found &= found - 1, ++size_) {
      const std::size_t lane = vx_lowestBit(found);
      *score++ = scores[lane];
      *index++ = static_cast<std::uint32_t>(firstIndex + lane);
    }
  }
  if (mayPrune_ && size_ >= pruneAt_) {
    prune(scan);
    if (2 * size_ > pruneAt_) pruneAt_ *= 2;
  }
}

void vx_NeighbourSearch::Candidates::prune(const vx_CodeScan& scan) {
  if (!mayPrune_ || size_ <= k_) return;
  const double kth = kthScore(scan);
  double farthest = areSquares_ ? std::sqrt(kth) + 2.0 * slack_ : kth + 2.0 * slack_;
  if (areSquares_) farthest *= farthest;
  const std::uint32_t limit = asLimit(farthest + 1.0);
  if (limit < limit_) keepUpTo(limit);
}

void vx_NeighbourSearch::Candidates::keepUpTo(std::uint32_t limit) {
  limit_ = limit;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < size_; ++i) {
    const std::uint32_t score = scores_[i];
    scores_[kept] = score;
    indices_[kept] = indices_[i];
    kept += score <= limit ? 1 : 0;
  }
  size_ = kept;
}

std::uint32_t vx_NeighbourSearch::Candidates::kthScore(const vx_CodeScan& scan) {
  std::fill_n(scores_.begin() + static_cast<std::ptrdiff_t>(size_), kLanes, most_);
  const std::size_t blocks = (size_ + kLanes - 1) / kLanes;
  const std::size_t enough = k_ + k_ / 4 + 1;
  std::uint32_t low = 0;
  std::uint32_t high = limit_;
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    const std::size_t count = scan.countAtMost(scores_.data(), blocks, middle);
    if (count < k_) {
      low = middle + 1;
    } else {
      high = middle;
      if (count <= enough) break;
    }
  }
  return high;
}
