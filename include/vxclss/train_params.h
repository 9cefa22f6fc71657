// SPDX-License-Identifier: MIT
#ifndef VXCLSS_TRAIN_PARAMS_H_
#define VXCLSS_TRAIN_PARAMS_H_

#include "vxclss/export.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

class vx_Classifier;

/// Parameters of a training; their class selects the technique and makes its classifier.
///
/// A host adds a technique by deriving from this class and from vx_Classifier.
class VXCLSS_EXPORT vxClassifierTrainParams : public virtual vxPersistent,
                                              public virtual vxRepBase {
 public:
  ~vxClassifierTrainParams() override;

  /// Whether the tool checks, after training, that the classifier can run. True in a new object
  /// and in every copy: copying and archiving leave the flag alone.
  bool throwIfNotReady() const { return throwIfNotReady_; }
  void throwIfNotReady(bool value);

  /// A deep copy.
  virtual vxPtrHandle<vxClassifierTrainParams> clone() const = 0;

 protected:
  vxClassifierTrainParams() = default;
  vxClassifierTrainParams(const vxClassifierTrainParams& other);
  vxClassifierTrainParams& operator=(const vxClassifierTrainParams& other);

  /// True here: the base has nothing to compare.
  virtual bool isEqual_(const vxClassifierTrainParams& other) const;

  /// Whether `other` selects the same technique.
  virtual bool isSameTechnique_(const vxClassifierTrainParams& other) const = 0;

  /// A new, untrained classifier of the technique; the caller owns it.
  virtual vx_Classifier* newClassifier_() const = 0;

  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend class vx_Classifier;
  friend class vxClassifierTool;

  bool throwIfNotReady_ = true;
};

#endif  // VXCLSS_TRAIN_PARAMS_H_
