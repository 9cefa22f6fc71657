// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/measuring.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace parts {
namespace {

constexpr int kBelt = 30;
constexpr int kPart = 150;

cv::Mat1b emptyBelt() { return cv::Mat1b(400, 600, kBelt); }

double measurementOf(const Blob& blob, Measurement measurement) {
  return blob.pattern->featureMeasurement(measurement, true);
}

TEST(MeasureBlobsTest, FindsNothingOnAnEmptyBelt) {
  EXPECT_TRUE(measureBlobs(emptyBelt()).empty());
}

TEST(MeasureBlobsTest, MeasuresADisc) {
  cv::Mat1b picture = emptyBelt();
  cv::circle(picture, {300, 200}, 40, kPart, cv::FILLED);

  const std::vector<Blob> blobs = measureBlobs(picture);

  ASSERT_EQ(blobs.size(), 1u);
  EXPECT_FALSE(blobs[0].isCutOff);
  EXPECT_EQ(blobs[0].pattern->numInvalid(), 0);
  EXPECT_NEAR(measurementOf(blobs[0], kArea), 3.1416 * 0.5 * 0.5, 0.03);
  EXPECT_NEAR(measurementOf(blobs[0], kPerimeter), 3.1416, 0.2);
  EXPECT_NEAR(measurementOf(blobs[0], kCircularity), 0.9, 0.03);  // of steps from pixel to pixel
  EXPECT_NEAR(measurementOf(blobs[0], kElongation), 1.0, 0.02);
  EXPECT_GT(measurementOf(blobs[0], kSolidity), 0.98);
  EXPECT_EQ(measurementOf(blobs[0], kHoles), 0.0);
  EXPECT_EQ(measurementOf(blobs[0], kHoleShare), 0.0);
  EXPECT_NEAR(measurementOf(blobs[0], kGrey), 0.1 * kPart / kBelt, 0.02);
}

TEST(MeasureBlobsTest, MeasuresABarInAnyPose) {
  for (const float angle : {0.0F, 30.0F, 90.0F}) {
    cv::Mat1b picture = emptyBelt();
    std::vector<cv::Point> corners;
    std::vector<cv::Point2f> exact(4);
    cv::RotatedRect({300, 200}, {160, 40}, angle).points(exact.data());
    for (const cv::Point2f& corner : exact) corners.emplace_back(corner);
    cv::fillConvexPoly(picture, corners, kPart);

    const std::vector<Blob> blobs = measureBlobs(picture);

    ASSERT_EQ(blobs.size(), 1u) << angle;
    EXPECT_NEAR(measurementOf(blobs[0], kArea), 2.0 * 0.5, 0.08) << angle;
    EXPECT_NEAR(measurementOf(blobs[0], kElongation), 4.0, 0.2) << angle;
    EXPECT_GT(measurementOf(blobs[0], kSolidity), 0.95) << angle;
  }
}

TEST(MeasureBlobsTest, CountsHolesAndLeavesThemOutOfTheArea) {
  cv::Mat1b picture = emptyBelt();
  cv::rectangle(picture, {200, 150, 160, 80}, kPart, cv::FILLED);
  cv::rectangle(picture, {220, 170, 40, 40}, kBelt, cv::FILLED);
  cv::rectangle(picture, {300, 170, 40, 40}, kBelt, cv::FILLED);

  const std::vector<Blob> blobs = measureBlobs(picture);

  ASSERT_EQ(blobs.size(), 1u);
  EXPECT_EQ(measurementOf(blobs[0], kHoles), 2.0);
  EXPECT_NEAR(measurementOf(blobs[0], kArea), 2.0 - 0.5, 0.08);
  EXPECT_NEAR(measurementOf(blobs[0], kHoleShare), 0.25, 0.03);
}

TEST(MeasureBlobsTest, TakesOfACutOffPartOnlyItsSurface) {
  for (const cv::Point middle : {cv::Point(0, 200), {599, 200}, {300, 0}, {300, 399}}) {
    cv::Mat1b picture = emptyBelt();
    cv::circle(picture, middle, 40, kPart, cv::FILLED);

    const std::vector<Blob> blobs = measureBlobs(picture);

    ASSERT_EQ(blobs.size(), 1u) << middle;
    EXPECT_TRUE(blobs[0].isCutOff) << middle;
    for (long i = 0; i < kNumMeasurements; ++i) {
      EXPECT_EQ(blobs[0].pattern->isValid(i), isOfSurface(i)) << middle << kMeasurementNames.at(i);
    }
    EXPECT_NEAR(measurementOf(blobs[0], kGrey), 0.1 * kPart / kBelt, 0.02) << middle;
  }
}

TEST(MeasureBlobsTest, SeesTheSameGreyInHalfTheLight) {
  cv::Mat1b picture = emptyBelt();
  cv::circle(picture, {300, 200}, 40, kPart, cv::FILLED);
  cv::Mat1b darker;
  picture.convertTo(darker, CV_8U, 0.5);

  EXPECT_NEAR(measurementOf(measureBlobs(picture).at(0), kGrey),
              measurementOf(measureBlobs(darker).at(0), kGrey), 1e-3);
}

TEST(MeasureBlobsTest, LeavesOutSpecks) {
  cv::Mat1b picture = emptyBelt();
  cv::circle(picture, {300, 200}, 3, kPart, cv::FILLED);
  EXPECT_TRUE(measureBlobs(picture).empty());
}

TEST(MeasureBlobsTest, RefusesATinyPicture) {
  EXPECT_THROW(measureBlobs(cv::Mat1b(63, 64, kBelt)), std::invalid_argument);
}

}  // namespace
}  // namespace parts
