// SPDX-License-Identifier: MIT
#include "packed_patterns.h"

#include <algorithm>
#include <cmath>
#include <new>

vx_PackedPatterns::vx_PackedPatterns(const Patterns& patterns)
    : changesSeen_(vxFeaturePattern::PackedMark::changes.load()) {
  if (patterns.empty() || patterns.front().isNull()) return;
  numMeasurements_ = static_cast<std::size_t>(patterns.front()->numMeasurements());
  try {
    patterns_.reserve(patterns.size());
    rows_.reserve(patterns.size() * numMeasurements_);
    for (const auto& pattern : patterns) {
      if (!add_(pattern.get())) {
        clear_();
        return;
      }
    }
    grid_ = vx_CodeGrid(rows_.data(), size(), numMeasurements_);
    if (!grid_.isUsable()) {
      clear_();
      return;
    }
    sizeOfGrid_ = size();
    codes_.resize(grid_.numCodes());
    lines_.resize(numBlocks() * numLines());
  } catch (...) {
    clear_();
    throw;
  }
  for (std::size_t i = 0; i < size(); ++i) encode_(i);
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
  try {
    if (!add_(patterns.back().get())) return false;
    lines_.resize(numBlocks() * numLines());
  } catch (const std::bad_alloc&) {
    return false;
  }
  encode_(size() - 1);
  return true;
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

bool vx_PackedPatterns::add_(const vxFeaturePattern* pattern) {
  if (pattern == nullptr || pattern->numInvalid_ != 0) return false;
  const std::vector<double>& x = pattern->measurements_;
  if (x.empty() || x.size() != numMeasurements_) return false;
  double zero = 0.0;  // a NaN once it met an infinity or a NaN
  for (const double value : x) zero += 0.0 * value;
  if (zero != 0.0) return false;

  rows_.insert(rows_.end(), x.begin(), x.end());
  patterns_.push_back(pattern);
  pattern->packed_.add();
  return true;
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
