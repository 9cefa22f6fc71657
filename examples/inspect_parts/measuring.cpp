// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/measuring.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <utility>

namespace parts {

const std::array<const char*, kNumMeasurements> kMeasurementNames = {
    "area",  "perimeter",  "circularity", "elongation", "solidity",
    "holes", "hole_share", "grey",        "contrast"};

namespace {

constexpr double kPixelsPerCm = 80.0;
constexpr double kMinBlobArea = 250.0;  // pixels; anything smaller is dirt
constexpr double kMinHoleArea = 12.0;
constexpr double kBeltGrey = 0.1;
constexpr double kPi = 3.14159265358979323846;

/// Brightness in units of the belt's around it, which takes out how the light falls off. The belt
/// shows where a large median looks past the parts; a small picture will do for that.
cv::Mat1f evenlyLit(const cv::Mat1b& picture) {
  constexpr int kReduction = 8;
  cv::Mat1b small;
  cv::resize(picture, small, cv::Size(), 1.0 / kReduction, 1.0 / kReduction, cv::INTER_AREA);
  const int shorter = std::min(small.rows, small.cols);
  cv::medianBlur(small, small, std::min(61, shorter - 1 + shorter % 2));
  cv::Mat1f belt;
  small.convertTo(belt, CV_32F);
  cv::GaussianBlur(belt, belt, cv::Size(), 6.0);
  cv::resize(belt, belt, picture.size(), 0.0, 0.0, cv::INTER_LINEAR);
  cv::Mat1f even;
  picture.convertTo(even, CV_32F, kBeltGrey);
  cv::divide(even, cv::max(belt, 1.0F), even);
  return even;
}

/// What is clearly brighter than the belt. Grooves of a thread and turns of a spring are closed up.
cv::Mat1b foregroundOf(const cv::Mat1f& even) {
  cv::Mat1f smooth;
  cv::GaussianBlur(even, smooth, cv::Size(5, 5), 1.0);
  cv::Mat1b foreground;
  cv::compare(smooth, 1.75 * kBeltGrey, foreground, cv::CMP_GT);
  cv::morphologyEx(foreground, foreground, cv::MORPH_CLOSE,
                   cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(5, 5)));
  return foreground;
}

bool touchesBorder(const cv::Rect& box, const cv::Size& picture) {
  return box.x <= 0 || box.y <= 0 || box.br().x >= picture.width || box.br().y >= picture.height;
}

void measureOutline(const Blob& blob, std::vector<double>& values) {
  const std::vector<cv::Point>& outer = blob.outlines.front();
  const double filled = cv::contourArea(outer);
  double holes = 0.0;
  for (std::size_t i = 1; i < blob.outlines.size(); ++i) holes += cv::contourArea(blob.outlines[i]);
  const double perimeter = cv::arcLength(outer, true);
  std::vector<cv::Point> hull;
  cv::convexHull(outer, hull);
  const cv::Size2f box = cv::minAreaRect(outer).size;

  values[kArea] = (filled - holes) / (kPixelsPerCm * kPixelsPerCm);
  values[kPerimeter] = perimeter / kPixelsPerCm;
  values[kCircularity] = 4.0 * kPi * filled / (perimeter * perimeter);
  values[kElongation] = std::max(box.width, box.height) / std::min(box.width, box.height);
  values[kSolidity] = filled / cv::contourArea(hull);
  values[kHoles] = static_cast<double>(blob.outlines.size() - 1);
  values[kHoleShare] = holes / filled;
}

void measureSurface(const Blob& blob, const cv::Mat1f& even, std::vector<double>& values) {
  cv::Mat1b mask(blob.box.size(), std::uint8_t{0});
  cv::drawContours(mask, blob.outlines, -1, cv::Scalar(255), cv::FILLED, cv::LINE_8, cv::noArray(),
                   1, -blob.box.tl());
  cv::Scalar mean, deviation;
  cv::meanStdDev(even(blob.box), mean, deviation, mask);
  values[kGrey] = mean[0];
  values[kContrast] = deviation[0];
}

Blob measured(std::vector<std::vector<cv::Point>> outlines, const cv::Mat1f& even) {
  Blob blob{std::move(outlines), {}, false, {}};
  blob.box = cv::boundingRect(blob.outlines.front());
  blob.isCutOff = touchesBorder(blob.box, even.size());

  std::vector<double> values(kNumMeasurements, 0.0);
  std::vector<long> invalid;
  if (blob.isCutOff) {
    for (long i = 0; i < kNumMeasurements; ++i) {
      if (!isOfSurface(i)) invalid.push_back(i);
    }
  } else {
    measureOutline(blob, values);
  }
  measureSurface(blob, even, values);
  blob.pattern = vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(values, invalid));
  return blob;
}

}  // namespace

std::vector<Blob> measureBlobs(const cv::Mat1b& picture) {
  if (picture.rows < 64 || picture.cols < 64) {
    throw std::invalid_argument("a picture of at least 64 x 64 pixels is needed");
  }
  const cv::Mat1f even = evenlyLit(picture);
  std::vector<std::vector<cv::Point>> contours;
  std::vector<cv::Vec4i> tree;  // next, previous, first hole, parent
  cv::findContours(foregroundOf(even), contours, tree, cv::RETR_CCOMP, cv::CHAIN_APPROX_NONE);

  std::vector<Blob> blobs;
  for (std::size_t i = 0; i < contours.size(); ++i) {
    if (tree[i][3] >= 0 || cv::contourArea(contours[i]) < kMinBlobArea) continue;
    std::vector<std::vector<cv::Point>> outlines = {contours[i]};
    for (int hole = tree[i][2]; hole >= 0; hole = tree[static_cast<std::size_t>(hole)][0]) {
      const auto& outline = contours[static_cast<std::size_t>(hole)];
      if (cv::contourArea(outline) >= kMinHoleArea) outlines.push_back(outline);
    }
    blobs.push_back(measured(std::move(outlines), even));
  }
  std::sort(blobs.begin(), blobs.end(), [](const Blob& a, const Blob& b) {
    return std::pair(a.box.y, a.box.x) < std::pair(b.box.y, b.box.x);
  });
  return blobs;
}

}  // namespace parts
