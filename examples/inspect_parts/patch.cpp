// SPDX-License-Identifier: MIT
// Heights are taken at four points a pixel; the slope between them gives the shading: matt metal
// (J. H. Lambert) with a highlight (B. T. Phong, Communications of the ACM 18(6), 1975, 311-317).
#include "examples/inspect_parts/patch.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace parts {
namespace {

constexpr int kOversampling = 2;
constexpr double kStep = 1.0 / (kPixelsPerMm * kOversampling);  // mm

struct Vector {
  double x, y, z;
};

constexpr Vector kLight = {-0.48, -0.56, 0.675};

double shade(const Vector& normal) {
  const double facing = normal.x * kLight.x + normal.y * kLight.y + normal.z * kLight.z;
  // The camera looks straight down, so of the mirrored light only its upward part counts.
  const double mirrored = 2.0 * facing * normal.z - kLight.z;
  return 0.36 + 0.76 * std::max(facing, 0.0) + 0.38 * std::pow(std::max(mirrored, 0.0), 14.0);
}

/// Heights over a grid of `size` points, and one more row and column for the slopes.
cv::Mat1f heightsOf(const Shape& shape, double angle, cv::Size size, cv::Point2d middle) {
  cv::Mat1f heights(size.height + 1, size.width + 1, 0.0F);
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  for (int row = 0; row < heights.rows; ++row) {
    for (int column = 0; column < heights.cols; ++column) {
      const double dx = (column - middle.x) * kStep;
      const double dy = (row - middle.y) * kStep;
      const double x = c * dx + s * dy;
      const double y = c * dy - s * dx;
      if (std::fabs(x) > shape.reachX || std::fabs(y) > shape.reachY) continue;
      heights(row, column) = static_cast<float>(shape.height(x, y));
    }
  }
  return heights;
}

}  // namespace

Patch renderPatch(const Shape& shape, double angle, Random& random) {
  const double c = std::fabs(std::cos(angle));
  const double s = std::fabs(std::sin(angle));
  const cv::Size size(
      2 * static_cast<int>((c * shape.reachX + s * shape.reachY) * kPixelsPerMm + 2.0),
      2 * static_cast<int>((s * shape.reachX + c * shape.reachY) * kPixelsPerMm + 2.0));
  const cv::Size grid(size.width * kOversampling, size.height * kOversampling);
  const cv::Point2d middle(0.5 * grid.width + random.between(-1.0, 1.0),
                           0.5 * grid.height + random.between(-1.0, 1.0));
  const cv::Mat1f heights = heightsOf(shape, angle, grid, middle);
  cv::Mat1f grey(grid, 0.0F);
  cv::Mat1f cover(grid, 0.0F);
  for (int row = 0; row < grid.height; ++row) {
    for (int column = 0; column < grid.width; ++column) {
      const float here = heights(row, column);
      if (here <= 0.0F) continue;
      const double dx = (heights(row, column + 1) - here) / kStep;
      const double dy = (heights(row + 1, column) - here) / kStep;
      const double length = std::sqrt(dx * dx + dy * dy + 1.0);
      cover(row, column) = 1.0F;
      grey(row, column) =
          static_cast<float>(shape.finish * shade({-dx / length, -dy / length, 1.0 / length}));
    }
  }
  Patch patch;
  cv::resize(grey, patch.grey, size, 0.0, 0.0, cv::INTER_AREA);
  cv::resize(cover, patch.cover, size, 0.0, 0.0, cv::INTER_AREA);
  // So far a pixel that the part covers in part is darker for it.
  cv::divide(patch.grey, cv::max(patch.cover, 1e-3), patch.grey);
  return patch;
}

}  // namespace parts
