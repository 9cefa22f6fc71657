// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/inspection.h"

#include <algorithm>
#include <set>
#include <vector>

#include "examples/inspect_parts/measuring.h"

namespace parts {
namespace {

/// A new part may fit worse than every part of the training, by this factor in its likelihood.
constexpr double kSlackLog = 7.0;

/// Of the cost of one mistake.
constexpr double kMaxExpectedCost = 0.05;

/// The larger of two washers has the longer edge, so the measurements of size go together; those of
/// shape and surface do too. Each category has sets of its own.
vxClassifierTrainParamsBayesian paramsFor(const vxClassifierDataProvider& data) {
  vxClassifierDistributionTypes types;
  std::set<long> labels;
  for (long i = 0; i < data.numPatterns(); ++i) {
    if (data.categoryLabel(i) >= 0) labels.insert(data.categoryLabel(i));
  }
  for (const long label : labels) {
    types.setDependent(label, {kArea, kPerimeter, kCircularity, kElongation, kSolidity});
    types.setDependent(label, {kGrey, kContrast});
  }
  return vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0),
                                         vxClassifierCosts(1.0), vxFeaturePattern({}, {}));
}

/// The same part, as if the picture's border cut it off.
vxFeaturePattern cutOff(const vxFeaturePattern& pattern) {
  std::vector<long> invalid;
  for (long i = 0; i < pattern.numMeasurements(); ++i) {
    if (!isOfSurface(i)) invalid.push_back(i);
  }
  return {pattern.featureMeasurements(false), invalid};
}

}  // namespace

Inspection::Inspection(const vxClassifierDataProvider& data) {
  tool_.train(data, paramsFor(data));
  learnLeastFits_(data);
}

void Inspection::learnLeastFits_(const vxClassifierDataProvider& data) {
  vxClassifierResult result;
  const auto learn = [&](long label, const vxFeaturePattern& pattern) {
    tool_.run(pattern, result);
    if (result.categoryResults().front().categoryLabel() != label) return;
    const double fit = fitOf_(result) - kSlackLog;
    const auto [least, isNew] = leastFits_.try_emplace(caseOf_(label, pattern), fit);
    if (!isNew) least->second = std::min(least->second, fit);
  };
  for (long i = 0; i < data.numPatterns(); ++i) {
    const long label = data.categoryLabel(i);
    if (label < 0) continue;
    const vxFeaturePattern& pattern = *data.featurePattern(i);
    learn(label, pattern);
    if (pattern.isValid(kArea)) learn(label, cutOff(pattern));
  }
}

Decision Inspection::decide(const vxFeaturePattern& pattern) const {
  vxClassifierResult result;
  tool_.run(pattern, result);
  const vxClassifierCategoryResult& best = result.categoryResults().front();
  const double fit = fitOf_(result);
  const auto least = leastFits_.find(caseOf_(best.categoryLabel(), pattern));
  Decision decision{Decision::kAccepted, best.categoryLabel(), best.classScore(), fit,
                    least == leastFits_.end() ? fit : least->second};
  if (least == leastFits_.end() || fit < least->second) {
    decision.verdict = Decision::kUnknown;
  } else if (best.expectedCost() > kMaxExpectedCost) {
    decision.verdict = Decision::kUnsure;
  }
  return decision;
}

double Inspection::fitOf_(const vxClassifierResult& result) {
  return -result.matchScoreFactorLog();
}

Inspection::Case Inspection::caseOf_(long label, const vxFeaturePattern& pattern) const {
  return {label, !pattern.isValid(kArea)};
}

}  // namespace parts
