// SPDX-License-Identifier: MIT
#ifndef VXCLSS_TRAIN_PARAMS_KNN_H_
#define VXCLSS_TRAIN_PARAMS_KNN_H_

#include "vxclss/costs.h"
#include "vxclss/distance_metric.h"
#include "vxclss/export.h"
#include "vxclss/train_params.h"
#include "vxfoundation/handle.h"

/// Selects the k-nearest-neighbour technique: number of neighbours, distance and costs.
///
/// Equality: equal k, equivalent metrics, equal costs.
class VXCLSS_EXPORT vxClassifierTrainParamsKNN : public vxClassifierTrainParams {
 public:
  /// Euclidean distance, every misclassification costs 1. Throws BadParams if k < 1.
  explicit vxClassifierTrainParamsKNN(long k);

  /// Keeps a clone of `metric`. Throws BadParams if k < 1.
  vxClassifierTrainParamsKNN(long k, const vxPatternDistanceMetric& metric,
                             const vxClassifierCosts& costs);

  /// Copies share the metric, which no holder ever changes.
  vxClassifierTrainParamsKNN(const vxClassifierTrainParamsKNN& other);
  vxClassifierTrainParamsKNN& operator=(const vxClassifierTrainParamsKNN& other);
  ~vxClassifierTrainParamsKNN() override;

  long k() const { return k_; }
  /// Throws BadParams if k < 1.
  void k(long k);

  vxPtrHandle_const<vxPatternDistanceMetric> distanceMetric() const { return distanceMetric_; }
  /// Keeps a clone.
  void distanceMetric(const vxPatternDistanceMetric& metric);

  const vxClassifierCosts& misclassificationCosts() const { return misclassificationCosts_; }
  void misclassificationCosts(const vxClassifierCosts& costs);

  vxPtrHandle<vxClassifierTrainParams> clone() const override;

  /// Both throw vxBadPointer if a metric is missing, as a damaged archive may leave it.
  bool operator==(const vxClassifierTrainParamsKNN& other) const { return isEqual_(other); }
  bool operator!=(const vxClassifierTrainParamsKNN& other) const { return !(*this == other); }

 protected:
  bool isEqual_(const vxClassifierTrainParams& other) const override;
  bool isSameTechnique_(const vxClassifierTrainParams& other) const override;
  vx_Classifier* newClassifier_() const override;
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend class vx_ClassifierKNN;

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  long k_;
  vxPtrHandle_const<vxPatternDistanceMetric> distanceMetric_;
  vxClassifierCosts misclassificationCosts_;
};

#endif  // VXCLSS_TRAIN_PARAMS_KNN_H_
