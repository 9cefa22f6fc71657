// SPDX-License-Identifier: MIT
#include "tools/eval/evaluation_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/tools/eval/samples.h"

namespace {

using eval::Json;

TEST(EvaluationJsonTest, TellsPatternsByRowAndCategoriesByName) {
  eval::Evaluation evaluation = evaluationOf({}, 2);
  const eval::Dataset data = datasetOf({{{0}, 0}, {{1}, 1}, {{2}, 0}});
  for (std::size_t i = 0; i < 3; ++i) {
    eval::Record record = recordOf(data.labels[i], {0.75, 0.25});
    record.pattern = i;
    evaluation.add(record);
  }
  // No tool took part, so there is no order of categories to weigh anew by.
  EXPECT_THROW(eval::evaluationJson(data, evaluation), std::out_of_range);
}

TEST(EvaluationJsonTest, HoldsWhatTheEvaluationTells) {
  const eval::Dataset data = clouds(20);
  const eval::Evaluation evaluation = evaluated(data, bayes(), 4);
  const Json json = eval::evaluationJson(data, evaluation);
  const eval::Confusion& confusion = evaluation.confusion();
  EXPECT_EQ(json["patterns"], 60);
  EXPECT_EQ(json["accuracy"], confusion.accuracy());
  EXPECT_EQ(json["log_loss"], evaluation.logLoss());
  EXPECT_EQ(json["mean_expected_cost"], evaluation.meanExpectedCost());
  EXPECT_EQ(json["mean_actual_cost"], evaluation.meanActualCost());
  EXPECT_EQ(json["categories"][1]["name"], "c1");
  EXPECT_EQ(json["categories"][1]["recall"], confusion.recall(1));
  EXPECT_EQ(json["confusion"]["counts"][1][2], confusion.count(1, 2));
  EXPECT_EQ(json["confusion"]["rows"][1][2].size(),
            static_cast<std::size_t>(confusion.count(1, 2)));
  EXPECT_EQ(json["reject_curves"]["fit"].size(), 60u);
  EXPECT_EQ(json["calibration"]["bins"].size(), 10u);
  EXPECT_EQ(json["cost_sweeps"].size(), 6u);
  ASSERT_EQ(json["records"].size(), 60u);
  for (std::size_t i = 0; i < 60; ++i) {
    const Json& told = json["records"][i];
    const eval::Record& record = evaluation.records()[i];
    EXPECT_EQ(told["row"], static_cast<long>(i) + 2);
    EXPECT_EQ(told["results"][0]["class_score"], record.decision().classScore());
    EXPECT_EQ(told["fit"], record.fit);
    EXPECT_EQ(told.contains("contributions"), !record.isCorrect());
  }
}

TEST(EvaluationJsonTest, IsTheSameForTheSameInput) {
  const eval::Dataset data = clouds(20);
  EXPECT_EQ(eval::evaluationJson(data, evaluated(data, bayes(), 4)).dump(),
            eval::evaluationJson(data, evaluated(data, bayes(), 4)).dump());
}

TEST(EvaluationJsonTest, WritesNumbersThatJsonLacksAsTexts) {
  EXPECT_EQ(eval::jsonNumber(std::nan("")), "nan");
  EXPECT_EQ(eval::jsonNumber(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(eval::jsonNumber(-std::numeric_limits<double>::infinity()), "-inf");
  EXPECT_EQ(eval::jsonNumber(0.1), 0.1);
}

TEST(TimingsJsonTest, TellsSecondsInAllAndForAPattern) {
  const Json json = eval::timingsJson({3.0, 6, 2.0, 4});
  EXPECT_EQ(json["train_seconds"], 3.0);
  EXPECT_EQ(json["train_seconds_per_pattern"], 0.5);
  EXPECT_EQ(json["run_seconds"], 2.0);
  EXPECT_EQ(json["run_seconds_per_pattern"], 0.5);
}

}  // namespace
