// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_CODE_GRID_H_
#define CLSS_CLASTOOL_CLASTOOL_CODE_GRID_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Rounds measurements to whole numbers of one byte, or of 12 to 14 bits where there are few of
/// them, in such a way that distances between the numbers bound the true distances from below.
///
/// A pattern x is first clamped to a box, x', and then moved to the nearest point x^ of a grid of
/// one step s for all measurements; its codes are the grid's coordinates. Clamping two points to
/// one box never lengthens their distance, and the triangle inequality does the rest:
///
///     |x - y|  >=  |x' - y'|  >=  s |code(x) - code(y)| - |x' - x^| - |y' - y^|
///
/// for the sum of absolute differences as for the Euclidean norm. The two residuals are small and
/// known, and only whole numbers remain to be added up for each pair of points. The box leaves out
/// the outermost 0.2 % of a sample at each end, so that an outlier doesn't coarsen the step.
class vx_CodeGrid {
 public:
  /// How far a point is from its place on the grid; never too small.
  struct Residual {
    double absolute;   // sum of absolute differences
    double euclidean;  // root of the sum of squares
  };

  vx_CodeGrid() = default;

  /// For what `count` rows of finite numbers, one after another, are a sample of.
  vx_CodeGrid(const double* rows, std::size_t count, std::size_t numMeasurements);

  /// The greatest code of so many measurements: a byte's, or one of 14 bits. Few measurements leave
  /// room for those and need them, since neighbours are so near there that bytes would tell them
  /// badly apart. As many squares of it as there are measurements add up to less than 2^31.
  static std::uint32_t lastCode(std::size_t numMeasurements);

  /// Whether codes are more than bytes.
  bool isWide() const { return lastCode(numMeasurements_) > 255; }

  /// False where no step could be found: all rows are equal, or their range is beyond doubles.
  bool isUsable() const { return step_ > 0.0; }
  double step() const { return step_; }
  /// The number of measurements, rounded up to whole groups of eight.
  std::size_t numCodes() const { return kLanes * axes_.size(); }
  /// The most by which a clamped measurement is away from its code's place.
  double worstResidual() const { return 0.5 * step_ * (1.0 + 1e-9) + rounding_; }

  /// The codes of finite measurements; `codes` has room for numCodes().
  Residual encode(const double* x, std::uint16_t* codes) const;

 private:
  static constexpr std::size_t kLanes = 8;

  /// Eight measurements side by side; those past the last one have a box at 0 and one code.
  struct Axes {
    std::array<double, kLanes> low{};
    std::array<double, kLanes> high{};
    std::array<double, kLanes> base{};  // where code 0 is
    std::array<double, kLanes> lastCode{};
  };

  struct Sums;
  static void encodeLanes(const Axes& axes, double step, double inverse, const double* x,
                          std::uint16_t* codes, Sums& sums);
  void encodeAll(const double* x, std::uint16_t* codes, Sums& sums) const;
  void encodeAllAvx2(const double* x, std::uint16_t* codes, Sums& sums) const;

  std::size_t numMeasurements_ = 0;
  std::vector<Axes> axes_;
  double step_ = 0.0;
  double inverse_ = 0.0;
  double rounding_ = 0.0;  // more than what rounding may take off a measurement's residual
};

#endif  // CLSS_CLASTOOL_CLASTOOL_CODE_GRID_H_
