// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ARCHIVED_CLASSES_H_
#define TESTS_SUPPORT_ARCHIVED_CLASSES_H_

#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/numbers.h"
#include "vxclss/vxclss.h"
#include "vxfoundation/vxfoundation.h"

/// What the archive test needs of a class, one entry each: objects with little and with much in
/// them, and a call of everything that looks at one.
template <class T, class = void>
struct Archived;

template <class T>
struct Sample {
  std::string name;
  T object;
};
template <class T>
using Samples = std::vector<Sample<T>>;

/// Makes each call; an error of the library is an answer too.
template <class... Calls>
void tryAll(Calls&&... calls) {
  const auto tryOne = [](auto& call) {
    try {
      static_cast<void>(call());
    } catch (const vxException&) {
      return;
    }
  };
  (tryOne(calls), ...);
}

template <class T>
struct Archived<T, std::enable_if_t<std::is_base_of_v<vxClassifierDefs::Errors, T>>> {
  static Samples<T> samples() {
    return {{"empty", T()}, {"text", T(std::wstring(L"k\u00e9\0\u4e2d", 4))}};
  }
  static void use(const T& error) {
    tryAll([&] { return error.message(true); }, [&] { return error.errorNumber(); });
  }
};

template <>
struct Archived<vxFeaturePattern> {
  static Samples<vxFeaturePattern> samples() {
    return {{"empty", {{}, {}}},
            {"rich", {{1.5, -0.0, 0.1, -kInfinity}, {1, 3}}},
            {"nan", {{2.0, kNaN}, {}}}};
  }
  static void use(const vxFeaturePattern& pattern) {
    const long last = pattern.numMeasurements() - 1;
    tryAll([&] { return pattern.isValid(last); }, [&] { return pattern.numInvalid(); },
           [&] { return vxFeaturePattern(pattern).invalidFeatureIndices(); },
           [&] { return pattern.featureMeasurement(last, true); },
           [&] { return pattern.featureMeasurement(last, false); },
           [&] { return pattern.featureMeasurements(true); });
  }
};

template <>
struct Archived<vxClassifierDataProviderMemory> {
  static vxClassifierDataProviderMemory filled() {
    const vxPtrHandle_const<vxFeaturePattern> shared(new vxFeaturePattern({0.5, 2.0}, {}));
    const vxPtrHandle_const<vxFeaturePattern> other(new vxFeaturePattern({-1.0, 4.0}, {}));
    vxClassifierDataProviderMemory provider;
    provider.setName(L"n\u00e9");
    provider.setDescription(L"d");
    provider.data({shared, other, shared}, {3, -1, 8});
    return provider;
  }
  static Samples<vxClassifierDataProviderMemory> samples() {
    vxClassifierDataProviderMemory withoutPattern;
    withoutPattern.data({vxPtrHandle_const<vxFeaturePattern>()}, {2});
    return {{"empty", {}}, {"rich", filled()}, {"null", withoutPattern}};
  }
  static void use(const vxClassifierDataProviderMemory& provider) {
    tryAll([&] { return provider.name() + provider.description(); },
           [&] { return provider.numMeasurements(); });
    for (long i = -1; i <= provider.numPatterns(); ++i) {
      tryAll([&] { return provider.categoryLabel(i); },
             [&] { Archived<vxFeaturePattern>::use(*provider.featurePattern(i)); });
    }
  }
};

template <>
struct Archived<vxClassifierCosts> {
  static vxClassifierCosts filled() {
    vxClassifierCosts costs(0.25);
    costs.misclassificationCostOverride(3, 8, 5.0);
    costs.misclassificationCostOverride(8, 3, 0.0);
    return costs;
  }
  static Samples<vxClassifierCosts> samples() {
    return {{"plain", vxClassifierCosts(1.0)}, {"rich", filled()}};
  }
  static void use(const vxClassifierCosts& costs) {
    tryAll([&] { return costs.defaultMisclassificationCost(); },
           [&] { return costs.misclassificationCost(3, 8); },
           [&] { vxClassifierCosts(costs).misclassificationCostOverride(3, 8, 1.0); },
           [&] { vxClassifierCosts(costs).misclassificationCostOverride(4, 8, 1.0); },
           [&] { vxClassifierCosts(costs).clearMisclassificationOverrides(); });
  }
};

template <>
struct Archived<vxClassifierFrequencies> {
  static Samples<vxClassifierFrequencies> samples() {
    vxClassifierFrequencies frequencies(2.0);
    frequencies.categoryFrequencyOverride(7, 0.5);
    frequencies.categoryFrequencyOverride(0, 3.0);
    return {{"plain", vxClassifierFrequencies(1.0)}, {"rich", frequencies}};
  }
  static void use(const vxClassifierFrequencies& frequencies) {
    tryAll([&] { return frequencies.defaultCategoryFrequency(); },
           [&] { return frequencies.categoryFrequency(7); },
           [&] { vxClassifierFrequencies(frequencies).categoryFrequencyOverride(7, 1.0); },
           [&] { vxClassifierFrequencies(frequencies).categoryFrequencyOverride(8, 1.0); },
           [&] { vxClassifierFrequencies(frequencies).clearFrequencyOverrides(); });
  }
};

template <>
struct Archived<vxClassifierCategoryResult> {
  static Samples<vxClassifierCategoryResult> samples() {
    return {{"plain", {0, 0.0, 0.0, 0.0}}, {"rich", {2147483647, 0.25, 1.0, 1e300}}};
  }
  static void use(const vxClassifierCategoryResult& result) {
    tryAll([&] { return vxClassifierResult({result}, 0.0); });
  }
};

template <>
struct Archived<vxClassifierResult> {
  static Samples<vxClassifierResult> samples() {
    const std::vector<vxClassifierCategoryResult> categories = {{1, 0.5, 0.25, 2.0},
                                                                {0, 1.0, 0.75, 0.5}};
    return {{"empty", {}}, {"rich", {categories, -3.5}}};
  }
  static void use(const vxClassifierResult& result) {
    tryAll([&] { return result.matchScoreFactorLog(); },
           [&] { return vxClassifierResult(result.categoryResults(), 0.0); },
           [&] {
             return vxClassifierResult(result.categoryResults(), vxClassifierFrequencies(1.0),
                                       vxClassifierCosts(1.0), 0.0);
           });
  }
};

template <>
struct Archived<vxPatternDistanceMetricNorm> {
  static Samples<vxPatternDistanceMetricNorm> samples() {
    return {{"plain", vxPatternDistanceMetricNorm(2.0)},
            {"rich", vxPatternDistanceMetricNorm(0.75)}};
  }
  static void use(const vxPatternDistanceMetricNorm& metric) {
    const vxFeaturePattern pattern({1.0, 2.0}, {});
    tryAll([&] { return metric.order(); }, [&] { return metric.distance(pattern, pattern); });
  }
};

template <>
struct Archived<vxClassifierTrainParamsKNN> {
  static vxClassifierTrainParamsKNN filled() {
    return {25, vxPatternDistanceMetricNorm(3.0), Archived<vxClassifierCosts>::filled()};
  }
  static Samples<vxClassifierTrainParamsKNN> samples() {
    return {{"plain", vxClassifierTrainParamsKNN(1)}, {"rich", filled()}};
  }
  static void use(const vxClassifierTrainParamsKNN& params) {
    tryAll([&] { return params.k(); }, [&] { return params.distanceMetric()->clone(); },
           [&] { Archived<vxClassifierCosts>::use(params.misclassificationCosts()); },
           [&] {
             vxClassifierTool tool;
             tool.train(Archived<vxClassifierDataProviderMemory>::filled(), params);
             vxClassifierResult result;
             tool.run(vxFeaturePattern({1.0, 2.0}, {}), result);
           });
  }
};

template <>
struct Archived<vx_ClassifierKNN> {
  static vx_ClassifierKNN trained() {
    vx_ClassifierKNN classifier;
    classifier.train(Archived<vxClassifierDataProviderMemory>::filled(),
                     Archived<vxClassifierTrainParamsKNN>::filled());
    return classifier;
  }
  static Samples<vx_ClassifierKNN> samples() { return {{"untrained", {}}, {"trained", trained()}}; }
  static void use(const vx_ClassifierKNN& classifier) {
    const vxFeaturePattern pattern({1.0, 2.0}, {});
    vxClassifierResult result;
    tryAll([&] { classifier.run(pattern, result); }, [&] { return classifier.trainParams(); },
           [&] { Archived<vxClassifierDataProviderMemory>::use(*classifier.data()); },
           [&] {
             vx_ClassifierKNN copy(classifier);
             copy.retrain(*copy.trainParams());
             copy.run(pattern, result);
             copy.trainIncremental(pattern, 0);
             copy.untrain();
           });
  }
};

#endif  // TESTS_SUPPORT_ARCHIVED_CLASSES_H_
