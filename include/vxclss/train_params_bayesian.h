// SPDX-License-Identifier: MIT
#ifndef VXCLSS_TRAIN_PARAMS_BAYESIAN_H_
#define VXCLSS_TRAIN_PARAMS_BAYESIAN_H_

#include "vxclss/costs.h"
#include "vxclss/distribution_types.h"
#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/frequencies.h"
#include "vxclss/train_params.h"

/// Selects the Bayesian technique: distributions, category frequencies, costs, and the largest
/// values of binomial measurements.
///
/// Measurement m of `maxMeasurementValues`, if valid, is the largest value that a binomial
/// measurement m of any category may take; 1.0 otherwise. Equality compares all four.
class VXCLSS_EXPORT vxClassifierTrainParamsBayesian : public vxClassifierTrainParams {
 public:
  vxClassifierTrainParamsBayesian(const vxClassifierDistributionTypes& distributionTypes,
                                  const vxClassifierFrequencies& categoryFrequencies,
                                  const vxClassifierCosts& misclassificationCosts,
                                  const vxFeaturePattern& maxMeasurementValues);
  vxClassifierTrainParamsBayesian(const vxClassifierTrainParamsBayesian& other);
  vxClassifierTrainParamsBayesian& operator=(const vxClassifierTrainParamsBayesian& other);
  ~vxClassifierTrainParamsBayesian() override;

  const vxClassifierDistributionTypes& distributionTypes() const { return distributionTypes_; }
  void distributionTypes(const vxClassifierDistributionTypes& types);

  const vxClassifierFrequencies& categoryFrequencies() const { return categoryFrequencies_; }
  void categoryFrequencies(const vxClassifierFrequencies& frequencies);

  const vxClassifierCosts& misclassificationCosts() const { return misclassificationCosts_; }
  void misclassificationCosts(const vxClassifierCosts& costs);

  const vxFeaturePattern& maxMeasurementValues() const { return maxMeasurementValues_; }
  void maxMeasurementValues(const vxFeaturePattern& values);

  vxPtrHandle<vxClassifierTrainParams> clone() const override;

  bool operator==(const vxClassifierTrainParamsBayesian& other) const { return isEqual_(other); }
  bool operator!=(const vxClassifierTrainParamsBayesian& other) const { return !(*this == other); }

 protected:
  bool isEqual_(const vxClassifierTrainParams& other) const override;
  bool isSameTechnique_(const vxClassifierTrainParams& other) const override;
  vx_Classifier* newClassifier_() const override;
  void dispatchSerialize(vxArchive& archive) override;

 private:
  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  vxClassifierDistributionTypes distributionTypes_;
  vxClassifierFrequencies categoryFrequencies_;
  vxClassifierCosts misclassificationCosts_;
  vxFeaturePattern maxMeasurementValues_;
};

#endif  // VXCLSS_TRAIN_PARAMS_BAYESIAN_H_
