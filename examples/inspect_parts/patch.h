// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_PATCH_H_
#define EXAMPLES_INSPECT_PARTS_PATCH_H_

#include <opencv2/core.hpp>

#include "examples/inspect_parts/random.h"
#include "examples/inspect_parts/shape.h"

namespace parts {

constexpr double kPixelsPerMm = 8.0;

/// One part as the camera sees it under even light, cut out.
struct Patch {
  cv::Mat1f grey;   ///< [0, 1]
  cv::Mat1f cover;  ///< how much of each pixel the part covers, [0, 1]
};

/// `angle` in radians, the light from above left.
Patch renderPatch(const Shape& shape, double angle, Random& random);

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_PATCH_H_
