// SPDX-License-Identifier: MIT
#include "tools/eval/report/regions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "tests/tools/eval/samples.h"
#include "tools/eval/report/mark.h"
#include "tools/eval/report/report.h"

namespace {

using eval::DecisionGrid;

/// Category 1 lies to the right of 0; the third measurement parts 0 and 2.
eval::Dataset threeMeasurements() {
  return datasetOf({{{0, 0, 0}, 0},
                    {{1, 1, 1}, 0},
                    {{0, 1, 0}, 0},
                    {{8, 0, 0}, 1},
                    {{9, 1, 1}, 1},
                    {{8, 1, 0}, 1},
                    {{0, 0, 9}, 2},
                    {{1, 1, 8}, 2},
                    {{0, 1, 9}, 2},
                    {{5, 5, 5}, -1}});
}

class RegionsTest : public testing::Test {
 protected:
  /// The grids of the first two measurements.
  template <class Grid>
  DecisionGrid grid_(const vxClassifierTrainParams& params, Grid grid) {
    const eval::Evaluation evaluation = evaluated(data_, params, 3);
    const eval::ReportInput input{data_, evaluation, params, "",
                                  "",    "",         {0, 1}, [this] { ++polls_; }};
    vxClassifierTool tool;
    tool.train(eval::trainingSet(data_, {1, std::vector<long>(data_.labels.size(), -1)}, 0),
               params);
    const nlohmann::ordered_json json;
    const eval::Page page{input, json, tool, {}};
    return (eval::RegionFinder(page).*grid)(0, 1);
  }

  static long at_(const DecisionGrid& grid, double x, double y) {
    const auto n = static_cast<double>(grid.resolution);
    return grid.labels[static_cast<std::size_t>(std::floor(y * n) * n + std::floor(x * n))];
  }

  eval::Dataset data_ = threeMeasurements();
  long polls_ = 0;
};

TEST_F(RegionsTest, OfTwoMeasurementsAloneIgnoreTheOthers) {
  for (const vxClassifierTrainParams* params :
       {static_cast<const vxClassifierTrainParams*>(new vxClassifierTrainParamsKNN(neighbours(1))),
        static_cast<const vxClassifierTrainParams*>(
            new vxClassifierTrainParamsBayesian(bayes()))}) {
    const vxPtrHandle_const<vxClassifierTrainParams> owner(params);
    const DecisionGrid grid = grid_(*params, &eval::RegionFinder::alone);
    EXPECT_EQ(grid.labels.size(), static_cast<std::size_t>(grid.resolution * grid.resolution));
    EXPECT_EQ(at_(grid, 0.95, 0.5), 1);
    EXPECT_NE(at_(grid, 0.05, 0.5), 1);
    EXPECT_GE(polls_, grid.resolution);
  }
}

TEST_F(RegionsTest, AtTheMediansDecideAsTheWholeClassifier) {
  // The third median is 1, next to category 0.
  const DecisionGrid grid = grid_(neighbours(1), &eval::RegionFinder::atMedians);
  EXPECT_EQ(at_(grid, 0.05, 0.5), 0);
  EXPECT_EQ(at_(grid, 0.95, 0.5), 1);
}

TEST_F(RegionsTest, StayEmptyWhereTheClassifierRefuses) {
  for (std::size_t i = 0; i < data_.patterns.size(); ++i) {
    std::vector<double> values = data_.patterns[i]->featureMeasurements(false);
    values[1] = static_cast<double>(i % 3) / 3.0;
    data_.patterns[i] = sharedPattern(values);
  }
  vxClassifierDistributionTypes types;
  for (long label = 0; label < 3; ++label) {
    types.distributionTypeOverride(label, 1, vxClassifierDistributionTypes::eBinomial);
  }
  const vxClassifierTrainParamsBayesian params(types, vxClassifierFrequencies(1.0),
                                               vxClassifierCosts(1.0),
                                               vxFeaturePattern({0, 0.667, 0}, {0, 2}));
  const DecisionGrid grid = grid_(params, &eval::RegionFinder::alone);
  EXPECT_EQ(at_(grid, 0.5, 0.99), -1);
  EXPECT_GE(at_(grid, 0.5, 0.5), 0);
}

TEST(RegionPathsTest, JoinCellsOfARow) {
  EXPECT_EQ(eval::regionPaths({2, {0, 0, 1, -1}}),
            "<path class=\"region c0\" d=\"M0,1h2v1h-2z\"/>"
            "<path class=\"region c1\" d=\"M0,0h1v1h-1z\"/>");
}

TEST(SpanTest, LeavesRoomAroundTheValidLabelledValues) {
  const eval::Dataset data = datasetOf({{{1}, 0}, {{3}, 1}, {{99}, 0, {0}}, {{-50}, -1}});
  EXPECT_DOUBLE_EQ(eval::spanOf(data, 0).low, 0.9);
  EXPECT_DOUBLE_EQ(eval::spanOf(data, 0).high, 3.1);
  EXPECT_EQ(eval::medianOf(data, 0), 3.0);
}

TEST(SpanTest, IsNeverEmpty) {
  const eval::Dataset constant = datasetOf({{{4}, 0}, {{4}, 1}});
  EXPECT_LT(eval::spanOf(constant, 0).low, 4.0);
  EXPECT_GT(eval::spanOf(constant, 0).high, 4.0);
  const eval::Dataset none = datasetOf({{{4}, 0, {0}}, {{4}, 1, {0}}});
  EXPECT_EQ(eval::spanOf(none, 0).high, 1.0);
  EXPECT_TRUE(std::isnan(eval::medianOf(none, 0)));
}

TEST(TellingMeasurementsTest, PartTheCategoriesBest) {
  const eval::Dataset data =
      datasetOf({{{0, 5, 1, 0}, 0}, {{1, 6, 1, 9}, 0}, {{0, 7, 1, 4}, 1}, {{1, 8, 1, 50}, 1}});
  EXPECT_EQ(eval::tellingMeasurements(data, 1), (std::vector<long>{1}));
  EXPECT_EQ(eval::tellingMeasurements(data, 2), (std::vector<long>{1, 3}));
  EXPECT_EQ(eval::tellingMeasurements(data, 9), (std::vector<long>{0, 1, 2, 3}));
}

TEST(MarkTest, TellsFortyEightCategoriesApart) {
  std::set<std::pair<long, std::string>> seen;
  for (long label = 0; label < 48; ++label) {
    seen.emplace(label % eval::kColours, eval::markPath(label, 0, 0, 3));
  }
  EXPECT_EQ(seen.size(), 48u);
}

}  // namespace
