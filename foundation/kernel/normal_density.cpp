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
  sampleCount_ = copy.sampleCount_;
  mean_.swap(copy.mean_);
  comoments_.swap(copy.comoments_);
  pairCounts_.swap(copy.pairCounts_);
  rowMeans_.swap(copy.rowMeans_);
  columnMeans_.swap(copy.columnMeans_);
  restored_.swap(copy.restored_);
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
  prepare_(d, withInvalid);
  vx_Scratch<double> scaled(d);
  vx_Scratch<bool> flags(d);
  for (const vx_KernelPattern& pattern : patterns) {
    for (std::size_t i = 0; i < d; ++i) scaled.data()[i] = pattern.values[i] / normalizer;
    foldValid_(scaled.data(), validityOf(pattern, flags.data()));
  }
  return 0;
}

long vx_NormalDensity::update(const double* values, const bool* valid, std::size_t dimension,
                              double normalizer) {
  if (mean_.size() > 0 && dimension != mean_.size()) return kVxDimensionChanged;
  prepare_(dimension, !areAllValid(valid, dimension));
  vx_Scratch<double> scaled(dimension);
  for (std::size_t i = 0; i < dimension; ++i) scaled.data()[i] = values[i] / normalizer;
  foldValid_(scaled.data(), valid);
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
    return current;  // another thread was faster
  }
  return fresh.release();
}

std::uint64_t vx_NormalDensity::factorSerial() const {
  const vx_NormalFactor* made = factor_.load(std::memory_order_acquire);
  return made == nullptr ? 0 : made->serial();
}

std::uint64_t vx_NormalDensity::epoch() { return currentEpoch.load(std::memory_order_acquire); }

void vx_NormalDensity::advanceEpoch() { currentEpoch.fetch_add(1, std::memory_order_release); }

// Everything that can fail in an update comes here, before the first sample is folded in.
void vx_NormalDensity::prepare_(std::size_t dimension, bool withInvalid) {
  dropFactor_();
  if (!restored_.empty()) takeUpRestored_();
  if (mean_.empty()) {
    std::vector<double> comoments(packed(dimension, 0));
    mean_.assign(dimension, -0.0);
    comoments_.swap(comoments);
  }
  if (withInvalid && pairCounts_.empty()) countPairs_();
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

void vx_NormalDensity::fold_(const double* x) {
  if (dimension() == 0) return;
  countOneMore(sampleCount_);
  const double n = sampleCount_;
  double* row = comoments_.data();
  for (std::size_t i = 0; i < dimension(); ++i) {
    const double deviation = x[i] - mean_[i];
    // The first sum of a mean without samples, -0.0, must not keep the sign of a zero.
    mean_[i] = mean_[i] + deviation / n + 0.0;
    for (std::size_t j = 0; j <= i; ++j) row[j] += deviation * (x[j] - mean_[j]);
    row += i + 1;
  }
}

void vx_NormalDensity::foldValid_(const double* x, const bool* valid) {
  if (pairCounts_.empty()) {
    fold_(x);
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

void vx_NormalDensity::dropFactor_() noexcept {
  const vx_NormalFactor* dropped = factor_.exchange(nullptr, std::memory_order_acq_rel);
  if (dropped == nullptr) return;
  delete dropped;
  advanceEpoch();
}

bool vx_NormalDensity::isEvaluable_(std::size_t i) const { return !isMarked(covariance(i, i)); }
