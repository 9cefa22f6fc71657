// SPDX-License-Identifier: MIT
#include "packed_patterns.h"

#include <algorithm>
#include <array>
#include <new>

namespace {

constexpr std::size_t kSample = 1024;  // patterns that a grid is made from

std::atomic<std::uint64_t> numberOfSets{0};

bool areFinite(const std::vector<double>& x) {
  std::array<double, 4> zeros{};  // a NaN once they met an infinity or a NaN
  std::size_t i = 0;
  for (; i + 4 <= x.size(); i += 4) {
    for (std::size_t j = 0; j < 4; ++j) zeros[j] += 0.0 * x[i + j];
  }
  for (; i < x.size(); ++i) zeros[0] += 0.0 * x[i];
  return (zeros[0] + zeros[1]) + (zeros[2] + zeros[3]) == 0.0;
}

}  // namespace

vx_PackedPatterns::vx_PackedPatterns(const Patterns& patterns)
    : number_(numberOfSets.fetch_add(1, std::memory_order_relaxed) + 1),
      changesSeen_(vxFeaturePattern::PackedMark::changes.load()) {
  try {
    bool isDone = mark_(patterns) && makeGrid_();
    if (isDone) {
      rows_.reserve(size() * numMeasurements_);
      lines_.resize(numBlocks() * numLines());
    }
    for (std::size_t i = 0; isDone && i < size(); ++i) isDone = layOut_(i);
    if (!isDone) clear_();
  } catch (...) {
    clear_();
    throw;
  }
}

/// Whether the patterns are worth laying out as far as can be told before their numbers are seen.
bool vx_PackedPatterns::mark_(const Patterns& patterns) {
  if (patterns.empty() || patterns.front().isNull()) return false;
  numMeasurements_ = static_cast<std::size_t>(patterns.front()->numMeasurements());
  patterns_.reserve(patterns.size());
  std::size_t distinct = 0;
  for (const auto& pattern : patterns) {
    if (!isFit_(pattern.get())) return false;
    patterns_.push_back(pattern.get());
    if (pattern->packed_.add(number_)) ++distinct;
  }
  return 4 * distinct >= size();
}

bool vx_PackedPatterns::isFit_(const vxFeaturePattern* pattern) const {
  return pattern != nullptr && pattern->numInvalid_ == 0 && numMeasurements_ > 0 &&
         pattern->measurements_.size() == numMeasurements_;
}

bool vx_PackedPatterns::makeGrid_() {
  const std::size_t samples = std::min(size(), kSample);
  std::vector<double> rows;
  rows.reserve(samples * numMeasurements_);
  for (std::size_t i = 0; i < samples; ++i) {
    const std::vector<double>& x = patterns_[i * size() / samples]->measurements_;
    if (!areFinite(x)) return false;
    rows.insert(rows.end(), x.begin(), x.end());
  }
  grid_ = vx_CodeGrid(rows.data(), samples, numMeasurements_);
  sizeOfGrid_ = size();
  codes_.resize(grid_.numCodes());
  return grid_.isUsable();
}

/// Takes up the numbers of a pattern that is fit and marked; there is room for its codes.
bool vx_PackedPatterns::layOut_(std::size_t index) {
  const std::vector<double>& x = patterns_[index]->measurements_;
  if (!areFinite(x)) return false;
  rows_.insert(rows_.end(), x.begin(), x.end());
  encode_(index);
  return true;
}

vx_PackedPatterns::~vx_PackedPatterns() { clear_(); }

void vx_PackedPatterns::clear_() noexcept {
  for (const vxFeaturePattern* pattern : patterns_) pattern->packed_.remove();
  patterns_ = {};
  rows_ = {};
  lines_ = {};
}

bool vx_PackedPatterns::append(const Patterns& patterns) noexcept {
  // A grid serves twice as many patterns as it was made for, so that its cost is a small share of
  // each pattern's.
  if (patterns_.empty()) return false;
  if (isOutdated_.load(std::memory_order_relaxed) || size() >= 2 * sizeOfGrid_) return false;
  const vxFeaturePattern* pattern = patterns.back().get();
  if (!isFit_(pattern)) return false;
  try {
    patterns_.push_back(pattern);
    pattern->packed_.add(number_);
    lines_.resize(numBlocks() * numLines());
    return layOut_(size() - 1);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool vx_PackedPatterns::isUsable() const {
  if (patterns_.empty()) return false;
  const std::uint64_t now = vxFeaturePattern::PackedMark::changes.load();
  if (changesSeen_.load(std::memory_order_acquire) != now) {
    if (!isUpToDate_()) isOutdated_.store(true, std::memory_order_relaxed);
    changesSeen_.store(now, std::memory_order_release);
  }
  return !isOutdated_.load(std::memory_order_relaxed);
}

bool vx_PackedPatterns::isUpToDate_() const {
  for (std::size_t i = 0; i < size(); ++i) {
    if (!holds_(*patterns_[i], i)) return false;
  }
  return true;
}

bool vx_PackedPatterns::holds_(const vxFeaturePattern& pattern, std::size_t index) const {
  const std::vector<double>& x = pattern.measurements_;
  return pattern.numInvalid_ == 0 && x.size() == numMeasurements_ &&
         std::equal(x.begin(), x.end(), row(index));
}

void vx_PackedPatterns::encode_(std::size_t index) {
  const vx_CodeGrid::Residual residual = grid_.encode(row(index), codes_.data());
  residual_.absolute = std::max(residual_.absolute, residual.absolute);
  residual_.euclidean = std::max(residual_.euclidean, residual.euclidean);

  Line* line = lines_.data() + index / kLanes * numLines();
  const std::size_t lane = index % kLanes;
  if (isWide()) {
    line += lane / 16;
    const std::size_t place = 2 * (lane % 16);
    for (std::size_t j = 0; j < numPairs(); ++j) {
      line[2 * j].words[place] = codes_[2 * j];
      line[2 * j].words[place + 1] = codes_[2 * j + 1];
    }
  } else {
    for (std::size_t j = 0; j < numPairs(); ++j) {
      line[j].words[lane] = vx_bytePair(codes_[2 * j], codes_[2 * j + 1]);
    }
  }
}
