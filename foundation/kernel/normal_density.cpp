// SPDX-License-Identifier: MIT
// Means and sums of products of deviations, one sample at a time, each centred on the running mean
// (B. P. Welford, "Note on a method for calculating corrected sums of squares and products",
// Technometrics 4(3), 1962, 419-420). Nothing large is ever subtracted from something large, so a
// mean of 1e9 with a deviation of 1 keeps the variance; d^2 / 2 multiplications a sample.
#include "kernel/normal_density.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

#include "kernel/normal_fold.h"
#include "kernel/scratch.h"

namespace {

std::atomic<std::uint64_t> currentEpoch{0};

// Position of (row, column), row >= column, in a packed lower triangle.
std::size_t packed(std::size_t row, std::size_t column) { return row * (row + 1) / 2 + column; }

bool areAllValid(const bool* valid, std::size_t count) {
  return valid == nullptr || std::find(valid, valid + count, false) == valid + count;
}

// The kernel's two ways to say which measurements are valid; gives null if all are.
const bool* validityOf(const vx_KernelPattern& pattern, bool* flags) {
  if (pattern.invalidIndices.empty()) return nullptr;
  std::fill(flags, flags + pattern.values.size(), true);
  for (const std::int32_t index : pattern.invalidIndices) {
    flags[static_cast<std::size_t>(index)] = false;
  }
  return flags;
}

// A damaged archive may claim any count; from the largest one on samples still change the means.
void countOneMore(std::int32_t& count) {
  if (count < std::numeric_limits<std::int32_t>::max()) ++count;
}

// Dividing by 1.0 changes nothing but takes most of the time of an update.
const double* divided(const double* values, std::size_t count, double normalizer, double* scaled) {
  if (normalizer == 1.0) return values;
  for (std::size_t i = 0; i < count; ++i) scaled[i] = values[i] / normalizer;
  return scaled;
}

bool isMarked(double value) { return value == 0.0 && std::signbit(value); }

}  // namespace

void vx_KernelMatrix::resize(std::size_t newRows, std::size_t newColumns) {
  elements.assign(newRows * newColumns, 0.0);
  rows = newRows;
  columns = newColumns;
}

vx_NormalDensity::vx_NormalDensity(const vx_NormalDensity& other)
    : sampleCount_(other.sampleCount_),
      mean_(other.mean_),
      comoments_(other.comoments_),
      pairCounts_(other.pairCounts_),
      rowMeans_(other.rowMeans_),
      columnMeans_(other.columnMeans_),
      restored_(other.restored_) {}

vx_NormalDensity& vx_NormalDensity::operator=(const vx_NormalDensity& other) {
  vx_NormalDensity copy(other);
  dropFactor_();
  swapStatistics_(copy);
  return *this;
}

vx_NormalDensity::~vx_NormalDensity() { delete factor_.load(std::memory_order_acquire); }

double vx_NormalDensity::covariance(std::size_t row, std::size_t column) const {
  if (!restored_.empty()) return restored_[row * dimension() + column];
  const std::size_t place = packed(std::max(row, column), std::min(row, column));
  const std::int32_t count = pairCounts_.empty() ? sampleCount_ : pairCounts_[place];
  if (count < 2) return row == column ? -0.0 : 0.0;
  return comoments_[place] / (count - 1);
}

vx_KernelMatrix vx_NormalDensity::mean() const {
  vx_KernelMatrix matrix;
  matrix.resize(dimension(), dimension() == 0 ? 0 : 1);
  matrix.elements = mean_;
  return matrix;
}

vx_KernelMatrix vx_NormalDensity::covariance() const {
  const std::size_t d = dimension();
  vx_KernelMatrix matrix;
  matrix.resize(d, d);
  for (std::size_t row = 0; row < d; ++row) {
    for (std::size_t column = 0; column < d; ++column) {
      matrix.elements[row * d + column] = covariance(row, column);
    }
  }
  return matrix;
}

void vx_NormalDensity::restore(const vx_KernelMatrix& mean, const vx_KernelMatrix& covariance,
                               std::int32_t sampleCount) {
  vx_NormalDensity fresh;
  fresh.sampleCount_ = sampleCount;
  fresh.mean_ = mean.elements;
  fresh.restored_ = covariance.elements;
  *this = fresh;
}

long vx_NormalDensity::update(const std::vector<vx_KernelPattern>& patterns, double normalizer) {
  if (patterns.empty()) return 0;
  const std::size_t d = dimension() > 0 ? dimension() : patterns.front().values.size();
  bool withInvalid = false;
  for (const vx_KernelPattern& pattern : patterns) {
    if (pattern.values.size() != d) return kVxDimensionChanged;
    withInvalid = withInvalid || !pattern.invalidIndices.empty();
  }
  vx_Scratch<double> scaled(d);
  vx_Scratch<double> room(2 * d);
  vx_Scratch<bool> flags(d);
  prepare_(d, withInvalid);
  for (const vx_KernelPattern& pattern : patterns) {
    const double* const x = divided(pattern.values.data(), d, normalizer, scaled.data());
    fold_(x, validityOf(pattern, flags.data()), room.data());
  }
  return 0;
}

long vx_NormalDensity::update(const double* values, const bool* valid, std::size_t dimension,
                              double normalizer) {
  if (mean_.size() > 0 && dimension != mean_.size()) return kVxDimensionChanged;
  vx_Scratch<double> scaled(dimension);
  vx_Scratch<double> room(2 * dimension);
  prepare_(dimension, !areAllValid(valid, dimension));
  fold_(divided(values, dimension, normalizer, scaled.data()), valid, room.data());
  return 0;
}

long vx_NormalDensity::logDensity(const vx_KernelPattern& pattern, double& value) const {
  vx_Scratch<bool> flags(pattern.values.size());
  const bool* valid = validityOf(pattern, flags.data());
  return logDensity(pattern.values.data(), valid, pattern.values.size(), value);
}

long vx_NormalDensity::logDensity(const double* values, const bool* valid, std::size_t dimension,
                                  double& value) const {
  if (sampleCount_ == 0) return kVxNoUsableData;
  if (dimension != mean_.size()) return kVxOtherDimension;

  vx_Scratch<double> x(dimension);
  if (areAllValid(valid, dimension)) {
    const vx_NormalFactor* whole = factor();
    if (whole == nullptr) return kVxNoUsableData;
    std::copy(values, values + dimension, x.data());
    value = whole->logDensity(x.data());
    return 0;
  }

  std::vector<std::size_t> members;
  std::vector<double> means;
  for (std::size_t i = 0; i < dimension; ++i) {
    if (!valid[i]) continue;
    if (!isEvaluable_(i)) return kVxNoUsableData;
    x.data()[members.size()] = values[i];
    members.push_back(i);
    means.push_back(mean_[i]);
  }
  if (members.empty()) {
    value = 0.0;
    return 0;
  }
  const vx_NormalFactor marginal(std::move(means), [&](std::size_t row, std::size_t column) {
    return covariance(members[row], members[column]);
  });
  value = marginal.logDensity(x.data());
  return 0;
}

const vx_NormalFactor* vx_NormalDensity::factor() const {
  if (const vx_NormalFactor* made = factor_.load(std::memory_order_acquire)) return made;
  for (std::size_t i = 0; i < dimension(); ++i) {
    if (!isEvaluable_(i)) return nullptr;
  }
  auto fresh = std::make_unique<const vx_NormalFactor>(
      mean_, [this](std::size_t row, std::size_t column) { return covariance(row, column); });
  const vx_NormalFactor* current = nullptr;
  if (!factor_.compare_exchange_strong(current, fresh.get(), std::memory_order_acq_rel)) {
    return current;  // another thread was faster; GCOVR_EXCL_LINE
  }
  return fresh.release();
}

std::uint64_t vx_NormalDensity::factorSerial() const {
  const vx_NormalFactor* made = factor_.load(std::memory_order_acquire);
  return made == nullptr ? 0 : made->serial();
}

std::uint64_t vx_NormalDensity::epoch() { return currentEpoch.load(std::memory_order_acquire); }

void vx_NormalDensity::advanceEpoch() { currentEpoch.fetch_add(1, std::memory_order_release); }

// Everything that can fail in an update comes here, before the first sample is folded in, and on a
// copy.
void vx_NormalDensity::prepare_(std::size_t dimension, bool withInvalid) {
  const bool addsCounts = withInvalid && pairCounts_.empty();
  if (mean_.empty() || addsCounts || !restored_.empty()) {
    vx_NormalDensity prepared(*this);
    if (!restored_.empty()) prepared.takeUpRestored_();
    if (mean_.empty()) {
      prepared.mean_.assign(dimension, -0.0);
      prepared.comoments_.assign(packed(dimension, 0), 0.0);
    }
    if (withInvalid && prepared.pairCounts_.empty()) prepared.countPairs_();
    swapStatistics_(prepared);
  }
  dropFactor_();
}

// The number of samples behind each measurement was not archived beyond what the signs of zeros
// tell: none, one, or else the whole count.
void vx_NormalDensity::takeUpRestored_() {
  const std::size_t d = dimension();
  const auto countOf = [this](std::size_t i) {
    if (!isMarked(covariance(i, i))) return sampleCount_;
    return std::min(sampleCount_, isMarked(mean_[i]) ? 0 : 1);
  };
  std::vector<double> comoments(packed(d, 0));
  std::vector<std::int32_t> counts(comoments.size());
  for (std::size_t row = 0; row < d; ++row) {
    for (std::size_t column = 0; column <= row; ++column) {
      const std::int32_t count = std::min(countOf(row), countOf(column));
      counts[packed(row, column)] = count;
      comoments[packed(row, column)] = count < 2 ? 0.0 : covariance(row, column) * (count - 1);
    }
  }
  const bool isUniform = std::all_of(counts.begin(), counts.end(),
                                     [this](std::int32_t count) { return count == sampleCount_; });
  if (!isUniform) {
    countPairs_();
    pairCounts_.swap(counts);
  }
  comoments_.swap(comoments);
  restored_.clear();
}

// Gives every pair a count and means of its own, equal to the common ones up to now.
void vx_NormalDensity::countPairs_() {
  const std::size_t d = dimension();
  std::vector<std::int32_t> counts(packed(d, 0), sampleCount_);
  std::vector<double> rowMeans(counts.size());
  std::vector<double> columnMeans(counts.size());
  for (std::size_t row = 0; row < d; ++row) {
    for (std::size_t column = 0; column <= row; ++column) {
      rowMeans[packed(row, column)] = mean_[row];
      columnMeans[packed(row, column)] = mean_[column];
    }
  }
  pairCounts_.swap(counts);
  rowMeans_.swap(rowMeans);
  columnMeans_.swap(columnMeans);
}

void vx_NormalDensity::fold_(const double* x, const bool* valid, double* room) {
  if (pairCounts_.empty()) {
    double* const after = room + dimension();
    moveMeans_(x, room, after);
    vx_addProducts(room, after, 1, dimension(), comoments_.data());
    return;
  }
  const auto isValid = [valid](std::size_t i) { return valid == nullptr || valid[i]; };
  bool isAnyValid = false;
  for (std::size_t i = 0; i < dimension(); ++i) {
    if (!isValid(i)) continue;
    isAnyValid = true;
    for (std::size_t j = 0; j <= i; ++j) {
      if (!isValid(j)) continue;
      const std::size_t place = packed(i, j);
      countOneMore(pairCounts_[place]);
      const double n = pairCounts_[place];
      const double deviation = x[i] - rowMeans_[place];
      rowMeans_[place] = rowMeans_[place] + deviation / n + 0.0;
      columnMeans_[place] = columnMeans_[place] + (x[j] - columnMeans_[place]) / n + 0.0;
      comoments_[place] += deviation * (x[j] - columnMeans_[place]);
    }
    mean_[i] = rowMeans_[packed(i, i)];
  }
  if (isAnyValid) countOneMore(sampleCount_);
}

void vx_NormalDensity::moveMeans_(const double* x, double* before, double* after) {
  if (dimension() > 0) countOneMore(sampleCount_);
  vx_moveMeans(x, sampleCount_, dimension(), mean_.data(), before, after);
}

void vx_NormalDensity::swapStatistics_(vx_NormalDensity& other) noexcept {
  std::swap(sampleCount_, other.sampleCount_);
  mean_.swap(other.mean_);
  comoments_.swap(other.comoments_);
  pairCounts_.swap(other.pairCounts_);
  rowMeans_.swap(other.rowMeans_);
  columnMeans_.swap(other.columnMeans_);
  restored_.swap(other.restored_);
}

void vx_NormalDensity::dropFactor_() noexcept {
  if (factor_.load(std::memory_order_relaxed) == nullptr) return;  // the common case, made cheap
  delete factor_.exchange(nullptr, std::memory_order_acq_rel);
  advanceEpoch();
}

bool vx_NormalDensity::isEvaluable_(std::size_t i) const { return !isMarked(covariance(i, i)); }
