// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/belt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/core.hpp>

#include "examples/inspect_parts/sighting.h"

namespace parts {
namespace {

bool areEqual(const BeltPicture& a, const BeltPicture& b) {
  return a.kinds == b.kinds && cv::countNonZero(a.grey != b.grey) == 0 &&
         cv::countNonZero(a.owner != b.owner) == 0;
}

TEST(RenderBeltTest, GivesThePictureOfItsSeed) {
  const BeltPicture picture = renderBelt({6, 1, 1, 1}, 5);
  EXPECT_TRUE(areEqual(picture, renderBelt({6, 1, 1, 1}, 5)));
  EXPECT_FALSE(areEqual(picture, renderBelt({6, 1, 1, 1}, 6)));
}

TEST(RenderBeltTest, PutsDownWhatIsAsked) {
  const BeltPicture picture = renderBelt({7, 2, 1, 2}, 3);
  EXPECT_EQ(picture.kinds.size(), 9u);
  EXPECT_EQ(std::count_if(picture.kinds.begin(), picture.kinds.end(), isKnown), 7);
}

TEST(LookAtTest, NamesEveryPartThatLiesFree) {
  const BeltPicture picture = renderBelt({10, 3, 0, 0}, 4);
  long numLost = -1;
  std::vector<Kind> seen;
  for (const Sighting& sighting : lookAt(picture, &numLost)) {
    ASSERT_EQ(sighting.kinds.size(), 1u);
    EXPECT_FALSE(sighting.blob.isCutOff);
    EXPECT_EQ(sighting.label() >= 0, isKnown(sighting.kinds.front()));
    seen.push_back(sighting.kinds.front());
  }
  EXPECT_EQ(numLost, 0);
  std::vector<Kind> there = picture.kinds;
  std::sort(there.begin(), there.end());
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, there);
}

TEST(LookAtTest, TakesTouchingPartsForOneThatIsNoCategory) {
  const std::vector<Sighting> sightings = lookAt(renderBelt({2, 0, 1, 0}, 1));
  ASSERT_EQ(sightings.size(), 1u);
  EXPECT_EQ(sightings.front().kinds.size(), 2u);
  EXPECT_EQ(sightings.front().label(), -1);
}

TEST(LookAtTest, SeesWhatIsCutOff) {
  const std::vector<Sighting> sightings = lookAt(renderBelt({1, 0, 0, 1}, 1));
  ASSERT_EQ(sightings.size(), 1u);
  EXPECT_TRUE(sightings.front().blob.isCutOff);
}

}  // namespace
}  // namespace parts
