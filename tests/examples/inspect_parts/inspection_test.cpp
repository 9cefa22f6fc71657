// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/inspection.h"

#include <gtest/gtest.h>

#include <vector>

#include "examples/inspect_parts/measuring.h"
#include "examples/inspect_parts/random.h"

namespace parts {
namespace {

using Pattern = vxPtrHandle_const<vxFeaturePattern>;

const std::vector<double> kDisc = {1.0, 4.0, 0.9, 1.0, 0.98, 1.0, 0.3, 0.4, 0.1};
const std::vector<double> kBar = {0.5, 4.5, 0.4, 4.0, 0.97, 0.0, 0.0, 0.7, 0.1};
const std::vector<long> kNotOfSurface = {kArea,     kPerimeter, kCircularity, kElongation,
                                         kSolidity, kHoles,     kHoleShare};

Pattern partLike(std::vector<double> values, Random& random) {
  for (double& value : values) value += random.around(0.0, 0.02);
  return Pattern(new vxFeaturePattern(values, {}));
}

Inspection trained() {
  Random random(1);
  vxClassifierDataProviderMemory data;
  for (int i = 0; i < 40; ++i) {
    data.addData(partLike(kDisc, random), 0);
    data.addData(partLike(kBar, random), 1);
  }
  data.addData(partLike(std::vector<double>(kNumMeasurements, 9.0), random), -1);
  return Inspection(data);
}

TEST(InspectionTest, AcceptsWhatItHasSeen) {
  const Inspection inspection = trained();
  const Decision disc = inspection.decide({kDisc, {}});
  EXPECT_EQ(disc.verdict, Decision::kAccepted);
  EXPECT_EQ(disc.label, 0);
  EXPECT_GT(disc.fit, disc.leastFit);
  EXPECT_EQ(inspection.decide({kBar, {}}).label, 1);
}

TEST(InspectionTest, RejectsWhatFitsNothing) {
  std::vector<double> odd = kDisc;
  odd[kSolidity] = 0.6;
  const Decision decision = trained().decide({odd, {}});
  EXPECT_EQ(decision.verdict, Decision::kUnknown);
  EXPECT_LT(decision.fit, decision.leastFit);
  EXPECT_GT(decision.classScore, 0.99);  // which is why the scores alone won't do
}

TEST(InspectionTest, DecidesByTheSurfaceOfACutOffPart) {
  const Inspection inspection = trained();
  const Decision bar = inspection.decide({kBar, kNotOfSurface});
  EXPECT_EQ(bar.verdict, Decision::kAccepted);
  EXPECT_EQ(bar.label, 1);

  std::vector<double> dark = kBar;
  dark[kGrey] = 0.1;
  EXPECT_EQ(inspection.decide({dark, kNotOfSurface}).verdict, Decision::kUnknown);
}

TEST(InspectionTest, IsUnsureBetweenTwoCategories) {
  // Of one surface and never seen whole side by side, so that a cut-off part may be either.
  Random random(2);
  vxClassifierDataProviderMemory data;
  std::vector<double> bar = kBar;
  bar[kGrey] = kDisc[kGrey];
  for (int i = 0; i < 40; ++i) {
    data.addData(partLike(kDisc, random), 0);
    data.addData(partLike(bar, random), 1);
  }
  EXPECT_EQ(Inspection(data).decide({kDisc, kNotOfSurface}).verdict, Decision::kUnsure);
}

TEST(InspectionTest, RefusesACategoryOfOnePart) {
  Random random(3);
  vxClassifierDataProviderMemory data;
  data.addData(partLike(kDisc, random), 0);
  EXPECT_THROW(Inspection{data}, vxClassifierDefs::InsufficientTrainData);
}

}  // namespace
}  // namespace parts
