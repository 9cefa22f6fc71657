// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_BELT_H_
#define EXAMPLES_INSPECT_PARTS_BELT_H_

#include <opencv2/core.hpp>
#include <vector>

#include "examples/inspect_parts/shape.h"

namespace parts {

/// A picture from above the belt, and what is known of it because it was made up.
struct BeltPicture {
  cv::Mat1b grey;
  std::vector<Kind> kinds;  ///< of the parts that lie there
  cv::Mat1w owner;          ///< for each pixel the part that it shows, counted from 1; 0: the belt
};

/// What to put on the belt.
struct BeltContent {
  int numKnown = 16;    ///< parts of the kinds to be told apart, in turn
  int numUnknown = 0;   ///< parts of the other kinds, in turn
  int numTouching = 1;  ///< of the known ones, how many touch another part
  int numCutOff = 2;    ///< of the known ones, how many the picture's border cuts off
};

/// Places and poses, sizes, light and noise follow from the seed. A part for which there is no room
/// left is left out.
BeltPicture renderBelt(const BeltContent& content, long seed);

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_BELT_H_
