// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ARCHIVED_CLASSES_BAYES_H_
#define TESTS_SUPPORT_ARCHIVED_CLASSES_BAYES_H_

#include <vector>

#include "tests/support/archived_classes.h"
#include "vxclss/category_model_bayesian.h"
#include "vxclss/classifier_bayesian.h"
#include "vxclss/density.h"
#include "vxclss/distribution_types.h"
#include "vxclss/train_params_bayesian.h"

template <>
struct Archived<vxClassifierDistributionTypes> {
  using Types = vxClassifierDistributionTypes;
  static Types filled() {
    Types types(Types::eBinomial);
    types.distributionTypeOverride(8, 1, Types::eNormal);
    types.distributionTypeOverride(3, 2, Types::ePoisson);
    types.setDependent(8, {1});
    types.setDependent(3, {1, 0});
    return types;
  }
  static Samples<Types> samples() { return {{"plain", Types()}, {"rich", filled()}}; }
  static void use(const Types& types) {
    tryAll([&] { return types.defaultDistributionType(); },
           [&] { return types.distributionType(8, 1); },
           [&] {
             return types.isDependent(3, {0, 1});
           },
           [&] { Types(types).distributionTypeOverride(8, 3, Types::eUniform); },
           [&] {
             Types(types).setDependent(3, {1, 5, 2});
           },
           [&] { Types(types).clearDistributionOverrides(); });
  }
};

template <>
struct Archived<vx_PDFMultivariateNormal> {
  static vx_PDFMultivariateNormal filled() {
    vx_PDFMultivariateNormal density;
    density.updateWithData({{{1.0, 4.0}, {}}, {{3.0, 2.0}, {}}, {{5.0, 0.0}, {1}}});
    return density;
  }
  static Samples<vx_PDFMultivariateNormal> samples() {
    vx_PDFMultivariateNormal once;
    once.updateWithData({{{2.0, 0.0}, {1}}});
    return {{"empty", {}}, {"once", once}, {"rich", filled()}};
  }
  static void use(const vx_PDFMultivariateNormal& density) {
    const vxFeaturePattern pattern({1.0, 2.0}, {});
    tryAll([&] { return density.logValue(pattern); },
           [&] {
             return density.logValue({{1.0, 2.0}, {0}});
           },
           [&] { return density.isValid(); }, [&] { return density.mean(); },
           [&] { return density.covariance(); },
           [&] {
             vx_PDFMultivariateNormal copy(density);
             copy.updateWithData({pattern, {{0.5, 7.0}, {1}}});
             copy.logValue(pattern);
             copy.clear();
           });
  }
};

template <>
struct Archived<vx_PDFBinomial> {
  static vx_PDFBinomial filled() {
    vx_PDFBinomial density({{4.0}, {}});
    density.updateWithData({{{1.0}, {}}, {{3.0}, {}}});
    return density;
  }
  static Samples<vx_PDFBinomial> samples() {
    return {{"empty", vx_PDFBinomial({{2.0}, {}})}, {"rich", filled()}};
  }
  static void use(const vx_PDFBinomial& density) {
    tryAll(
        [&] {
          return density.logValue({{1.0}, {}});
        },
        [&] {
          return density.logValue({{-1e9}, {}});
        },
        [&] { return density.theta() + density.maximumValue(); },
        [&] { return density.numTrials(); },
        [&] {
          vx_PDFBinomial copy(density);
          copy.updateWithData({{{1.0}, {}}, {{0.5}, {}}});
          copy.logValue({{1.0}, {}});
          copy.clear();
        });
  }
};

template <>
struct Archived<vx_CategoryModelBayesian> {
  static vx_CategoryModelBayesian filled() {
    vx_CategoryModelBayesian model(
        7, {{2, 0}, {1}},
        {vxClassifierDistributionTypes::eNormal, vxClassifierDistributionTypes::eBinomial},
        {{0.0, 4.0}, {}});
    for (const double x : {1.0, 3.0}) model.adapt({{x, x, 4.0 * x}, {}}, nullptr, 0);
    return model;
  }
  static Samples<vx_CategoryModelBayesian> samples() { return {{"empty", {}}, {"rich", filled()}}; }
  static void use(const vx_CategoryModelBayesian& model) {
    const vxFeaturePattern pattern({1.0, 2.0, 3.0}, {});
    tryAll([&] { return model.matchScore(pattern, nullptr, 0); },
           [&] {
             return model.matchScore({{1.0}, {}}, nullptr, 0);
           },
           [&] { return model.measurementGroups().size() + model.densities().size(); },
           [&] { vx_CategoryModelBayesian(model).adapt(pattern, nullptr, 0); });
  }
};

template <>
struct Archived<vxClassifierTrainParamsBayesian> {
  static vxClassifierTrainParamsBayesian plain() {
    return {vxClassifierDistributionTypes(),
            vxClassifierFrequencies(1.0),
            vxClassifierCosts(1.0),
            {{}, {}}};
  }
  static vxClassifierTrainParamsBayesian filled() {
    vxClassifierDistributionTypes types;
    types.distributionTypeOverride(8, 1, vxClassifierDistributionTypes::eBinomial);
    types.setDependent(3, {1, 0});
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(8, 0.5);
    return {types, frequencies, Archived<vxClassifierCosts>::filled(), {{0.5, 8.0}, {0}}};
  }
  static Samples<vxClassifierTrainParamsBayesian> samples() {
    return {{"plain", plain()}, {"rich", filled()}};
  }
  static void use(const vxClassifierTrainParamsBayesian& params) {
    Archived<vxClassifierDistributionTypes>::use(params.distributionTypes());
    Archived<vxClassifierFrequencies>::use(params.categoryFrequencies());
    Archived<vxClassifierCosts>::use(params.misclassificationCosts());
    Archived<vxFeaturePattern>::use(params.maxMeasurementValues());
    tryAll([&] {
      vxClassifierTool tool;
      tool.train(Archived<vxClassifierDataProviderMemory>::filled(), params);
    });
  }
};

template <>
struct Archived<vx_ClassifierBayesian> {
  static vxClassifierDataProviderMemory data() {
    vxClassifierDataProviderMemory data;
    const std::vector<std::vector<double>> rows = {{0.5, 2.0}, {1.5, 4.0}, {1.0, 5.0}, {2.5, 1.0}};
    for (std::size_t i = 0; i < rows.size(); ++i) {
      data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(rows[i], {})),
                   i % 2 == 0 ? 8 : 3);
    }
    return data;
  }
  static vx_ClassifierBayesian trained() {
    vx_ClassifierBayesian classifier;
    classifier.train(data(), Archived<vxClassifierTrainParamsBayesian>::filled());
    return classifier;
  }
  static Samples<vx_ClassifierBayesian> samples() {
    return {{"untrained", {}}, {"trained", trained()}};
  }
  static void use(const vx_ClassifierBayesian& classifier) {
    const vxFeaturePattern pattern({1.0, 2.0}, {});
    vxClassifierResult result;
    tryAll([&] { classifier.run(pattern, result); },
           [&] {
             classifier.run({{1.0, 2.0}, {0}}, result);
           },
           [&] { return classifier.trainParams(); },
           [&] {
             vx_ClassifierBayesian copy(classifier);
             copy.retrain(*copy.trainParams());
             copy.run(pattern, result);
             copy.trainIncremental(pattern, 0);
             copy.untrain();
           });
  }
};

#endif  // TESTS_SUPPORT_ARCHIVED_CLASSES_BAYES_H_
