// SPDX-License-Identifier: MIT
#ifndef VXCLSS_CLASSIFIER_BAYESIAN_H_
#define VXCLSS_CLASSIFIER_BAYESIAN_H_

#include <atomic>
#include <vector>

#include "vxclss/category_model.h"
#include "vxclss/classifier.h"
#include "vxclss/export.h"
#include "vxfoundation/handle.h"

class vxClassifierTrainParamsBayesian;
class vx_BayesianPlan;
class vx_CategoryModelBayesian;

/// The Bayesian technique: one vx_CategoryModelBayesian per category (R. O. Duda, P. E. Hart,
/// D. G. Stork, Pattern Classification, 2nd edition, Wiley 2001, chapter 2).
///
/// A category's match score is its likelihood divided by that of the best category, which gets
/// 1.0; the result's factor is minus the logarithm of the best likelihood. Copies share the
/// models. Equality: equal held parameters and equal models in order.
class VXCLSS_EXPORT vx_ClassifierBayesian : public vx_Classifier {
 public:
  vx_ClassifierBayesian();
  vx_ClassifierBayesian(const vx_ClassifierBayesian& other);
  vx_ClassifierBayesian& operator=(const vx_ClassifierBayesian& other);
  ~vx_ClassifierBayesian() override;

  /// Label of each model, in the order in which training met them.
  const std::vector<long>& categoryLabels() const { return labels_; }
  std::vector<vxPtrHandle_const<vx_CategoryModel>> categoryModels() const;

  vxPtrHandle<vx_Classifier> clone() const override;
  bool isEquivalent(const vx_Classifier& other) const override;
  bool operator==(const vx_ClassifierBayesian& other) const;
  bool operator!=(const vx_ClassifierBayesian& other) const { return !(*this == other); }

 protected:
  /// Makes a model at the first pattern of each category and folds every labelled pattern into
  /// its category's densities. Without a labelled pattern nothing is trained. What it throws
  /// leaves the models made so far.
  void train_(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) override;

  /// Accepts other frequencies and costs. Throws vxBadPointer if no parameters are held; BadParams
  /// if the distribution types differ, then if the maximum measurement values do.
  void retrain_(const vxClassifierTrainParams& params) override;

  /// Both do nothing: only train_ makes or changes models.
  void trainStart_(const vxClassifierTrainParams& params) override;
  void trainIncremental_(const vxFeaturePattern& pattern, long label) override;

  void untrain_() override;
  bool isTrained_() const override;

  /// Runs a pattern of zeros. Throws InsufficientTrainData without models, then what run_ throws.
  void checkRunnable_() const override;

  /// Throws what the models' matchScore does, in model order; vxBadPointer for a missing model or
  /// missing parameters. Polls the attention check before each model and once after.
  void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const override;

  void dispatchSerialize(vxArchive& archive) override;

 private:
  void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const override;
  void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const override;
  void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const override;
  void recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                        const vxFeaturePattern& pattern) const override;
  void recordRunDetails_(vxDiagObject* diag, unsigned long flags) const override;
  void recordRunResults_(vxDiagObject* diag, unsigned long flags, const vxFeaturePattern& pattern,
                         const vxClassifierResult& result) const override;

  vxPtrHandle<vx_CategoryModelBayesian> newModel_(
      long label, long numMeasurements, const vxClassifierTrainParamsBayesian& params) const;
  const vx_BayesianPlan* plan_() const;
  void dropPlan_() noexcept;

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  std::vector<long> labels_;
  std::vector<vxPtrHandle<vx_CategoryModel>> models_;  // one a label

  // Made at the first run after a change; see its class.
  mutable std::atomic<const vx_BayesianPlan*> currentPlan_{nullptr};
};

#endif  // VXCLSS_CLASSIFIER_BAYESIAN_H_
