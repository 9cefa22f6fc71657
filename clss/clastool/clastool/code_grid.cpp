// SPDX-License-Identifier: MIT
#include "code_grid.h"

#include <algorithm>
#include <cmath>

#include "kernel/simd.h"

namespace {

constexpr double kTail = 0.002;  // of the rows, left out at each end of an axis

constexpr double kFartherThanMost = 240.0;  // whose square is a score that 16 bits hold

struct Range {
  double low;
  double high;
};

/// What is left of a sample without its tails, which are put in order at its ends.
Range innerRange(std::vector<double>& values) {
  const auto tail = static_cast<std::ptrdiff_t>(kTail * static_cast<double>(values.size()));
  std::nth_element(values.begin(), values.begin() + tail, values.end());
  const double low = values[static_cast<std::size_t>(tail)];
  std::nth_element(values.begin() + tail, values.end() - 1 - tail, values.end());
  return {low, *(values.end() - 1 - tail)};
}

/// The sum of squared differences of two clamped values, on average.
double meanSquaredDifference(const std::vector<double>& values, const Range& range) {
  const double middle = 0.5 * range.low + 0.5 * range.high;
  double sum = 0.0;
  double squares = 0.0;
  for (const double value : values) {
    const double clamped = std::min(std::max(value, range.low), range.high) - middle;
    sum += clamped;
    squares += clamped * clamped;
  }
  const auto n = static_cast<double>(values.size());
  return 2.0 * std::max(0.0, squares - sum * sum / n) / n;
}

}  // namespace

vx_CodeGrid::vx_CodeGrid(const double* rows, std::size_t count, std::size_t numMeasurements)
    : numMeasurements_(numMeasurements), axes_((numMeasurements + kLanes - 1) / kLanes) {
  std::vector<double> values(count);
  double widest = 0.0;
  double largest = 0.0;
  double meanSquare = 0.0;  // of the distance between two patterns
  for (std::size_t j = 0; j < numMeasurements; ++j) {
    for (std::size_t i = 0; i < count; ++i) values[i] = rows[i * numMeasurements + j];
    const Range range = innerRange(values);
    axes_[j / kLanes].low[j % kLanes] = range.low;
    axes_[j / kLanes].high[j % kLanes] = range.high;
    widest = std::max(widest, range.high - range.low);
    largest = std::max({largest, std::fabs(range.low), std::fabs(range.high)});
    meanSquare += meanSquaredDifference(values, range);
  }
  const double last = lastCode(numMeasurements);
  const double leastStep = isWide() ? 0.0 : std::sqrt(meanSquare) / kFartherThanMost;
  const double step = std::max(widest / last, leastStep);
  // Neither may lose digits to an end of the range of doubles.
  if (!(step > 1e-290 && step < 1e290 && largest < 1e290)) return;

  step_ = step;
  inverse_ = 1.0 / step;
  rounding_ = (largest + widest) * 0x1p-49;
  for (Axes& axes : axes_) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      const double range = axes.high[lane] - axes.low[lane];
      axes.lastCode[lane] = std::min(last, std::floor(range * inverse_ + 0.5));
      axes.base[lane] = axes.low[lane] + 0.5 * (range - axes.lastCode[lane] * step);
    }
  }
}

std::uint32_t vx_CodeGrid::lastCode(std::size_t numMeasurements) {
  return numMeasurements <= 8 ? 16383 : 255;
}

struct vx_CodeGrid::Sums {
  std::array<double, kLanes> absolute{};
  std::array<double, kLanes> squares{};
};

// Loops of a fixed length over doubles, which compilers turn into vector code as they stand.
[[gnu::always_inline]] inline void vx_CodeGrid::encodeLanes(const Axes& axes, double step,
                                                            double inverse, const double* x,
                                                            std::uint16_t* codes, Sums& sums) {
  constexpr double kRounds = 0x1.8p52;  // what is added to it loses its fraction
  std::array<double, kLanes> whole;
  std::array<double, kLanes> residual;
  for (std::size_t j = 0; j < kLanes; ++j) {
    const double notBelow = x[j] > axes.low[j] ? x[j] : axes.low[j];
    const double clamped = notBelow < axes.high[j] ? notBelow : axes.high[j];
    const double nearest = ((clamped - axes.base[j]) * inverse + kRounds) - kRounds;
    whole[j] = nearest < axes.lastCode[j] ? nearest : axes.lastCode[j];
    residual[j] = clamped - (axes.base[j] + whole[j] * step);
  }
  for (std::size_t j = 0; j < kLanes; ++j) sums.absolute[j] += std::fabs(residual[j]);
  for (std::size_t j = 0; j < kLanes; ++j) sums.squares[j] += residual[j] * residual[j];
  for (std::size_t j = 0; j < kLanes; ++j) {
    codes[j] = static_cast<std::uint16_t>(static_cast<std::int32_t>(whole[j]));
  }
}

[[gnu::always_inline]] inline void vx_CodeGrid::encodeAll(const double* x, std::uint16_t* codes,
                                                          Sums& sums) const {
  const std::size_t full = numMeasurements_ / kLanes;
  for (std::size_t i = 0; i < full; ++i) {
    encodeLanes(axes_[i], step_, inverse_, x + i * kLanes, codes + i * kLanes, sums);
  }
  if (full == axes_.size()) return;
  std::array<double, kLanes> rest{};
  std::copy(x + full * kLanes, x + numMeasurements_, rest.begin());
  encodeLanes(axes_[full], step_, inverse_, rest.data(), codes + full * kLanes, sums);
}

#ifdef VX_SIMD_X86
VX_SIMD_AVX2 void vx_CodeGrid::encodeAllAvx2(const double* x, std::uint16_t* codes,
                                             Sums& sums) const {
  encodeAll(x, codes, sums);
}
#endif

vx_CodeGrid::Residual vx_CodeGrid::encode(const double* x, std::uint16_t* codes) const {
  Sums sums;
#ifdef VX_SIMD_X86
  if (vx_simd() >= vx_Simd::kAvx2) {
    encodeAllAvx2(x, codes, sums);
  } else {
    encodeAll(x, codes, sums);
  }
#else
  encodeAll(x, codes, sums);
#endif
  double absolute = 0.0;
  double squares = 0.0;
  for (std::size_t j = 0; j < kLanes; ++j) {
    absolute += sums.absolute[j];
    squares += sums.squares[j];
  }
  const auto n = static_cast<double>(numMeasurements_);
  return {absolute * (1.0 + 1e-12) + n * rounding_,
          std::sqrt(squares) * (1.0 + 1e-12) + std::sqrt(n) * rounding_};
}
