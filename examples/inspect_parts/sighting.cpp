// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/sighting.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <utility>

namespace parts {
namespace {

/// A blob shows a part if this share of what it shows is that part's.
constexpr double kMinShare = 0.1;

/// Indices of the parts that the blob shows.
std::vector<std::size_t> partsIn(const Blob& blob, const BeltPicture& picture) {
  cv::Mat1b mask(blob.box.size(), std::uint8_t{0});
  cv::drawContours(mask, blob.outlines, -1, cv::Scalar(255), cv::FILLED, cv::LINE_8, cv::noArray(),
                   1, -blob.box.tl());
  const cv::Mat1w owner = picture.owner(blob.box);
  std::vector<long> counts(picture.kinds.size() + 1, 0);
  for (int row = 0; row < mask.rows; ++row) {
    for (int column = 0; column < mask.cols; ++column) {
      if (mask(row, column) != 0) ++counts[owner(row, column)];
    }
  }
  const double numShown = std::accumulate(counts.begin(), counts.end(), 0.0);
  std::vector<std::size_t> shown;
  for (std::size_t i = 1; i < counts.size(); ++i) {
    if (static_cast<double>(counts[i]) >= kMinShare * numShown) shown.push_back(i - 1);
  }
  return shown;
}

}  // namespace

std::vector<Sighting> lookAt(const BeltPicture& picture, long* numLost) {
  std::vector<Sighting> sightings;
  std::vector<bool> isSeen(picture.kinds.size(), false);
  for (Blob& blob : measureBlobs(picture.grey)) {
    Sighting sighting{std::move(blob), {}};
    for (const std::size_t part : partsIn(sighting.blob, picture)) {
      sighting.kinds.push_back(picture.kinds[part]);
      isSeen[part] = true;
    }
    sightings.push_back(std::move(sighting));
  }
  if (numLost != nullptr) *numLost = std::count(isSeen.begin(), isSeen.end(), false);
  return sightings;
}

}  // namespace parts
