// SPDX-License-Identifier: MIT
#ifndef VXCLSS_CLASSIFIER_TOOL_H_
#define VXCLSS_CLASSIFIER_TOOL_H_

#include "vxclss/classifier.h"
#include "vxclss/data_provider.h"
#include "vxclss/decision_tree.h"
#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/result.h"
#include "vxclss/train_params.h"
#include "vxfoundation/diag.h"
#include "vxfoundation/handle.h"

class vxArchive;

/// Trains, runs, copies and archives a classifier of any technique.
///
/// A tool holds no classifier until it is first trained; it may also hold an untrained one.
/// Equality: both untrained, or both trained and their classifiers equivalent.
///
/// run() on one object may be called on many threads.
class VXCLSS_EXPORT vxClassifierTool {
 public:
  vxClassifierTool();

  /// Copies are deep: two tools never share a classifier. An untrained source gives an empty tool;
  /// assigning a tool to itself leaves it empty.
  vxClassifierTool(const vxClassifierTool& other);
  vxClassifierTool& operator=(const vxClassifierTool& other);

  /// Untrains first; what a host's technique throws then is swallowed.
  ~vxClassifierTool();

  /// Replaces the classifier by a new one of the technique that `params` select, trained on
  /// `data`. If params.throwIfNotReady() is set, checks that it can run.
  ///
  /// Throws NotImplemented if making the classifier throws, which leaves the tool empty; what the
  /// training throws, which leaves the tool as the technique left it; what the check throws, which
  /// leaves it untrained.
  void train(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params,
             vxDiagObject* diag = nullptr, unsigned long flags = 0);

  /// Replaces the classifier by a decision tree: a clone of `tree`, nothing about which is
  /// checked. There are no parameters then.
  void train(const vxDecisionTree& tree, vxDiagObject* diag = nullptr, unsigned long flags = 0);

  /// Takes new parameters of the same technique without the data, and checks as train() does.
  /// Throws NotTrained, BadMethod, then what the technique and the check throw.
  void retrain(const vxClassifierTrainParams& params, vxDiagObject* diag = nullptr,
               unsigned long flags = 0);

  /// Classifies one pattern. Throws NotTrained, then what the technique throws, which leaves
  /// `result` as it was.
  void run(const vxFeaturePattern& pattern, vxClassifierResult& result,
           vxDiagObject* diag = nullptr, unsigned long flags = 0) const;

  /// Untrains the classifier held, which stays in the tool.
  void untrain();

  bool isTrained() const;

  /// The parameters of the last training, shared. Throws NotTrained; BadMethod if there are none.
  vxPtrHandle_const<vxClassifierTrainParams> trainParams() const;

  /// The tree that the tool was trained from, shared.
  /// Throws NotTrained; BadMethod if the classifier is of another technique.
  vxPtrHandle_const<vxDecisionTree> decisionTree() const;

  /// The classifier held, empty if there is none.
  vxPtrHandle_const<vx_Classifier> classifier() const { return classifier_; }

  bool operator==(const vxClassifierTool& other) const;
  bool operator!=(const vxClassifierTool& other) const { return !(*this == other); }

 private:
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierTool& tool);

  void checkReady_(const vxClassifierTrainParams& params);

  vxPtrHandle<vx_Classifier> classifier_;
};

/// Loading releases the classifier held as soon as the version byte was read; a load that fails
/// after that leaves an empty tool.
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierTool& tool);

#endif  // VXCLSS_CLASSIFIER_TOOL_H_
