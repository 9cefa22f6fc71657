// SPDX-License-Identifier: MIT
#include "tools/eval/evaluation_json.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "tools/eval/calibration.h"
#include "tools/eval/cost_sweep.h"
#include "tools/eval/reject_curve.h"
#include "tools/eval/scores.h"

namespace eval {
namespace {

const std::string& category(const Dataset& data, long label) {
  return data.categories.at(static_cast<std::size_t>(label));
}

Json interval(const Interval& interval) {
  return {
      {"confidence", 0.95}, {"low", jsonNumber(interval.low)}, {"high", jsonNumber(interval.high)}};
}

/// A row of counts and, apart, of the cells' patterns, for each true category.
std::pair<Json, Json> confusionParts(const Dataset& data, const Evaluation& evaluation) {
  const Confusion& confusion = evaluation.confusion();
  Json counts = Json::array();
  Json cells = Json::array();
  for (long t = 0; t < confusion.numCategories(); ++t) {
    Json countRow = Json::array();
    Json cellRow = Json::array();
    for (long d = 0; d < confusion.numCategories(); ++d) {
      Json rows = Json::array();
      for (const std::size_t member : confusion.members(t, d)) {
        rows.push_back(data.rows[evaluation.records()[member].pattern]);
      }
      countRow.push_back(confusion.count(t, d));
      cellRow.push_back(std::move(rows));
    }
    counts.push_back(std::move(countRow));
    cells.push_back(std::move(cellRow));
  }
  return {std::move(counts), std::move(cells)};
}

Json categoriesJson(const Dataset& data, const Confusion& confusion) {
  Json all = Json::array();
  for (long label = 0; label < confusion.numCategories(); ++label) {
    all.push_back({{"name", category(data, label)},
                   {"patterns", confusion.numOf(label)},
                   {"decisions", confusion.numDecided(label)},
                   {"correct", confusion.count(label, label)},
                   {"recall", jsonNumber(confusion.recall(label))},
                   {"precision", jsonNumber(confusion.precision(label))},
                   {"f1", jsonNumber(confusion.f1(label))}});
  }
  return all;
}

Json curveJson(const Evaluation& evaluation, Criterion criterion) {
  Json points = Json::array();
  for (const RejectPoint& point : thinned(rejectCurve(evaluation, criterion), kCurvePoints)) {
    points.push_back({{"threshold", jsonNumber(point.threshold)},
                      {"accepted", point.accepted},
                      {"correct", point.correct},
                      {"rejected", jsonNumber(point.rejected)},
                      {"error_rate", jsonNumber(point.errorRate)},
                      {"mean_actual_cost", jsonNumber(point.meanActualCost)}});
  }
  return points;
}

Json calibrationJson(const Evaluation& evaluation) {
  const std::vector<CalibrationBin> bins = calibration(evaluation.records());
  Json told = Json::array();
  for (const CalibrationBin& bin : bins) {
    told.push_back({{"low", bin.low},
                    {"high", bin.high},
                    {"decisions", bin.decisions},
                    {"correct", bin.correct},
                    {"mean_class_score", jsonNumber(bin.meanClassScore)},
                    {"share_correct", jsonNumber(bin.shareCorrect)},
                    {"interval", interval(bin.interval)}});
  }
  return {{"expected_error", jsonNumber(calibrationError(bins))}, {"bins", std::move(told)}};
}

Json sweepsJson(const Dataset& data, const Evaluation& evaluation) {
  Json all = Json::array();
  for (const CostSweep& sweep : costSweeps(evaluation, kSweeps)) {
    Json points = Json::array();
    for (const SweepPoint& point : sweep.points) {
      points.push_back({{"cost", jsonNumber(point.cost)},
                        {"mean_actual_cost", jsonNumber(point.meanActualCost)},
                        {"mean_actual_cost_of_decisions_now", jsonNumber(point.keptDecisions)},
                        {"misses", point.misses},
                        {"false_alarms", point.falseAlarms},
                        {"errors", point.errors}});
    }
    all.push_back({{"true", category(data, sweep.trueLabel)},
                   {"assigned", category(data, sweep.assignedLabel)},
                   {"cost_now", jsonNumber(sweep.costNow)},
                   {"points", std::move(points)}});
  }
  return all;
}

Json explanationJson(const Dataset& data, const Explanation& explanation) {
  Json groups = Json::array();
  for (const Contribution& group : explanation.contributions) {
    Json names = Json::array();
    for (const long i : group.measurements) {
      names.push_back(data.measurements.at(static_cast<std::size_t>(i)));
    }
    groups.push_back({{"measurements", std::move(names)},
                      {"for_decided", jsonNumber(group.forDecided)},
                      {"for_true", jsonNumber(group.forTrue)}});
  }
  return groups;
}

Json recordJson(const Dataset& data, const Evaluation& evaluation, const Record& record) {
  Json scores = Json::array();
  for (const vxClassifierCategoryResult& result : record.result.categoryResults()) {
    scores.push_back({{"category", category(data, result.categoryLabel())},
                      {"class_score", jsonNumber(result.classScore())},
                      {"match_score", jsonNumber(result.matchScore())},
                      {"expected_cost", jsonNumber(result.expectedCost())}});
  }
  Json told = {{"row", data.rows[record.pattern]},
               {"round", record.round},
               {"true", category(data, record.trueLabel)},
               {"decided", category(data, record.decidedLabel())},
               {"actual_cost", jsonNumber(actualCost(evaluation.weighting().costs, record.trueLabel,
                                                     record.decidedLabel()))},
               {"margin", jsonNumber(record.margin())},
               {"fit", jsonNumber(record.fit)},
               {"match_score_factor_log", jsonNumber(record.result.matchScoreFactorLog())},
               {"results", std::move(scores)}};
  if (const Explanation* explanation = evaluation.explanation(record)) {
    told["contributions"] = explanationJson(data, *explanation);
  }
  return told;
}

}  // namespace

Json jsonNumber(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0.0 ? "inf" : "-inf";
  return value;
}

Json evaluationJson(const Dataset& data, const Evaluation& evaluation) {
  const Confusion& confusion = evaluation.confusion();
  auto [counts, cells] = confusionParts(data, evaluation);
  Json records = Json::array();
  for (const Record& record : evaluation.records()) {
    records.push_back(recordJson(data, evaluation, record));
  }
  return {{"patterns", confusion.numPatterns()},
          {"correct", confusion.numCorrect()},
          {"accuracy", jsonNumber(confusion.accuracy())},
          {"accuracy_interval",
           interval(wilsonInterval(confusion.numCorrect(), confusion.numPatterns()))},
          {"log_loss", jsonNumber(evaluation.logLoss())},
          {"mean_expected_cost", jsonNumber(evaluation.meanExpectedCost())},
          {"mean_actual_cost", jsonNumber(evaluation.meanActualCost())},
          {"categories", categoriesJson(data, confusion)},
          {"confusion", {{"counts", std::move(counts)}, {"rows", std::move(cells)}}},
          {"reject_curves",
           {{"expected_cost", curveJson(evaluation, Criterion::eExpectedCost)},
            {"margin", curveJson(evaluation, Criterion::eMargin)},
            {"fit", curveJson(evaluation, Criterion::eFit)}}},
          {"calibration", calibrationJson(evaluation)},
          {"cost_sweeps", sweepsJson(data, evaluation)},
          {"records", std::move(records)}};
}

Json timingsJson(const Timings& timings) {
  const auto each = [](double seconds, long patterns) {
    return jsonNumber(seconds / static_cast<double>(patterns));
  };
  return {{"train_seconds", timings.trainSeconds},
          {"train_seconds_per_pattern", each(timings.trainSeconds, timings.trainedPatterns)},
          {"run_seconds", timings.runSeconds},
          {"run_seconds_per_pattern", each(timings.runSeconds, timings.testedPatterns)}};
}

}  // namespace eval
