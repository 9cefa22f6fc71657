// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_MEASURING_H_
#define EXAMPLES_INSPECT_PARTS_MEASURING_H_

#include <vxclss/vxclss.h>

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace parts {

/// What is measured of a part, in units that make all of one magnitude.
enum Measurement : long {
  kArea,         ///< cm2, holes left out
  kPerimeter,    ///< cm, of the outer edge
  kCircularity,  ///< 4 pi area / perimeter^2, holes filled: 1 for a disc
  kElongation,   ///< long by short side of the smallest rectangle around it
  kSolidity,     ///< share of its convex hull, holes filled
  kHoles,        ///< number
  kHoleShare,    ///< area of the holes, share of the filled area
  kGrey,         ///< mean brightness, the belt's being 0.1
  kContrast,     ///< standard deviation of the brightness
  kNumMeasurements
};
extern const std::array<const char*, kNumMeasurements> kMeasurementNames;

/// Those that say something of a part of which the picture shows only a piece.
constexpr bool isOfSurface(long measurement) { return measurement >= kGrey; }

/// Something that is brighter than the belt.
struct Blob {
  std::vector<std::vector<cv::Point>> outlines;  ///< the outer one, then those of the holes
  cv::Rect box;
  bool isCutOff;                                ///< it touches the picture's border
  vxPtrHandle_const<vxFeaturePattern> pattern;  ///< kNumMeasurements; cut off, of the surface only
};

/// Everything on the belt, from top to bottom; specks are left out.
///
/// Throws std::invalid_argument for a picture smaller than 64 x 64.
std::vector<Blob> measureBlobs(const cv::Mat1b& picture);

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_MEASURING_H_
