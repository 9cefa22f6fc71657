// SPDX-License-Identifier: MIT
#ifndef VXCLSS_CLASSIFIER_H_
#define VXCLSS_CLASSIFIER_H_

#include "vxclss/data_provider.h"
#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/result.h"
#include "vxclss/train_params.h"
#include "vxfoundation/diag.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// A classifier of some technique: fixed operations around the hooks that a technique implements.
///
/// The recording hooks receive what vxDiagObject::getRecordingDestination() gives for the caller's
/// object, and the flags that it may have changed; only recordTrainDetails_ receives the caller's
/// object itself. What a hook throws passes through.
///
/// run() on one object may be called on many threads.
class VXCLSS_EXPORT vx_Classifier : public vxPersistent, public vxRepBase {
 public:
  ~vx_Classifier() override;

  /// A deep copy, the trained model included.
  virtual vxPtrHandle<vx_Classifier> clone() const = 0;

  /// Whether both are trained alike with equal parameters; techniques compare their models too.
  virtual bool isEquivalent(const vx_Classifier& other) const;

  /// Untrains a trained classifier, then trains it from all of `data` and keeps a clone of
  /// `params`. Calls the recording hooks inputs, details, results around it.
  void train(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params,
             vxDiagObject* diag = nullptr, unsigned long flags = 0);

  /// Prepares training pattern by pattern and keeps a clone of `params`.
  void trainStart(const vxClassifierTrainParams& params);

  /// Adds one pattern to a trained classifier; diagnostics are not used.
  /// Throws NotTrained, then what the technique says of pattern and label.
  void trainIncremental(const vxFeaturePattern& pattern, long label, vxDiagObject* diag = nullptr,
                        unsigned long flags = 0);

  /// Takes new parameters without the data; diagnostics are not used.
  /// Throws NotTrained; BadMethod if `params` are of another technique or none are held.
  void retrain(const vxClassifierTrainParams& params, vxDiagObject* diag = nullptr,
               unsigned long flags = 0);

  /// Classifies one pattern. Throws NotTrained, then what the technique says of the pattern.
  void run(const vxFeaturePattern& pattern, vxClassifierResult& result,
           vxDiagObject* diag = nullptr, unsigned long flags = 0) const;

  /// Forgets model and parameters of a trained classifier; does nothing to another one.
  void untrain();

  bool isTrained() const;

  /// The parameters of the last training, shared.
  /// Throws NotTrained; BadMethod if the classifier was trained without parameters.
  vxPtrHandle_const<vxClassifierTrainParams> trainParams() const;

 protected:
  vx_Classifier() = default;
  vx_Classifier(const vx_Classifier&) = default;
  vx_Classifier& operator=(const vx_Classifier&) = default;

  virtual void train_(const vxClassifierDataProvider& data,
                      const vxClassifierTrainParams& params) = 0;
  virtual void retrain_(const vxClassifierTrainParams& params) = 0;
  virtual void trainStart_(const vxClassifierTrainParams& params) = 0;
  virtual void trainIncremental_(const vxFeaturePattern& pattern, long label) = 0;
  virtual void untrain_() = 0;
  virtual bool isTrained_() const = 0;

  /// Throws an error of vxClassifierDefs if the trained classifier cannot classify.
  virtual void checkRunnable_() const = 0;

  virtual void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const = 0;

  void dispatchSerialize(vxArchive& archive) override;

  /// The parameters held, empty if there are none.
  const vxPtrHandle_const<vxClassifierTrainParams>& heldTrainParams_() const {
    return trainParams_;
  }

 private:
  friend class vxClassifierTool;

  virtual void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const = 0;
  virtual void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const = 0;
  virtual void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const = 0;
  virtual void recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                                const vxFeaturePattern& pattern) const = 0;
  virtual void recordRunDetails_(vxDiagObject* diag, unsigned long flags) const = 0;
  virtual void recordRunResults_(vxDiagObject* diag, unsigned long flags,
                                 const vxFeaturePattern& pattern,
                                 const vxClassifierResult& result) const = 0;

  vxPtrHandle_const<vxClassifierTrainParams> trainParams_;
};

#endif  // VXCLSS_CLASSIFIER_H_
