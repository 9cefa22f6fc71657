// SPDX-License-Identifier: MIT
#ifndef TESTS_TOOLS_EVAL_SAMPLES_H_
#define TESTS_TOOLS_EVAL_SAMPLES_H_

#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <string>
#include <vector>

#include "tests/support/samples.h"
#include "tools/eval/evaluation.h"

/// Measurements "m0", "m1", ... and categories "c0", "c1", ...; pattern i stands in row i + 2.
inline eval::Dataset datasetOf(const std::vector<LabelledSample>& samples) {
  eval::Dataset data;
  long highest = -1;
  for (const LabelledSample& sample : samples) {
    data.patterns.push_back(sharedPattern(sample.measurements, sample.invalid));
    data.labels.push_back(sample.label);
    data.rows.push_back(static_cast<long>(data.rows.size()) + 2);
    if (sample.label > highest) highest = sample.label;
  }
  for (std::size_t i = 0; i < samples.at(0).measurements.size(); ++i) {
    data.measurements.push_back("m" + std::to_string(i));
  }
  for (long i = 0; i <= highest; ++i) data.categories.push_back("c" + std::to_string(i));
  return data;
}

/// Overlapping clouds of three categories, two measurements; the same on every machine.
inline eval::Dataset clouds(long perCategory) {
  std::vector<LabelledSample> samples;
  vxRandomGaussian random(3);
  for (long i = 0; i < perCategory; ++i) {
    for (long label = 0; label < 3; ++label) {
      const double x = random.next(static_cast<double>(label), 0.7);
      samples.push_back({{x, random.next(0.3 * x, 0.5)}, label});
    }
  }
  return datasetOf(samples);
}

inline vxClassifierTrainParamsBayesian bayes(
    const vxClassifierCosts& costs = vxClassifierCosts(1.0),
    const vxClassifierFrequencies& frequencies = vxClassifierFrequencies(1.0),
    const vxClassifierDistributionTypes& types = vxClassifierDistributionTypes()) {
  return {types, frequencies, costs, vxFeaturePattern({}, {})};
}

inline vxClassifierTrainParamsKNN neighbours(
    long k, const vxClassifierCosts& costs = vxClassifierCosts(1.0), double order = 2.0) {
  return {k, vxPatternDistanceMetricNorm(order), costs};
}

/// With every question asked.
inline eval::Evaluation evaluated(const eval::Dataset& data, const vxClassifierTrainParams& params,
                                  long folds) {
  return eval::evaluate(data, params, eval::stratifiedFolds(data.labels, folds, 1), {true, true},
                        [](std::size_t) {});
}

/// A record as if a tool had given these class scores to labels 0, 1, ..., every cost being 1.
inline eval::Record recordOf(long trueLabel, const std::vector<double>& classScores) {
  std::vector<vxClassifierCategoryResult> results;
  for (const double score : classScores) {
    results.emplace_back(static_cast<long>(results.size()), score, score, 1.0 - score);
  }
  eval::Record record;
  record.trueLabel = trueLabel;
  record.result = vxClassifierResult(results, 0.0);
  return record;
}

inline eval::Evaluation evaluationOf(const std::vector<eval::Record>& records,
                                     std::size_t numCategories,
                                     const vxClassifierCosts& costs = vxClassifierCosts(1.0)) {
  eval::Evaluation evaluation(numCategories, {vxClassifierFrequencies(1.0), costs});
  for (const eval::Record& record : records) evaluation.add(record);
  return evaluation;
}

#endif  // TESTS_TOOLS_EVAL_SAMPLES_H_
