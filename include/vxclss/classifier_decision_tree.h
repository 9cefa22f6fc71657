// SPDX-License-Identifier: MIT
#ifndef VXCLSS_CLASSIFIER_DECISION_TREE_H_
#define VXCLSS_CLASSIFIER_DECISION_TREE_H_

#include "vxclss/classifier.h"
#include "vxclss/decision_tree.h"
#include "vxclss/export.h"
#include "vxfoundation/handle.h"

/// The decision-tree technique: answers with the result of the leaf that a pattern reaches.
///
/// The tree comes from the caller; there is no automatic and no incremental training. Copies share
/// the tree. Equality: equal trees; vxBadPointer if one is missing.
class VXCLSS_EXPORT vx_ClassifierDecisionTree : public vx_Classifier {
 public:
  vx_ClassifierDecisionTree();
  vx_ClassifierDecisionTree(const vx_ClassifierDecisionTree&) = default;
  vx_ClassifierDecisionTree& operator=(const vx_ClassifierDecisionTree&) = default;
  ~vx_ClassifierDecisionTree() override;

  /// Untrains a trained classifier, then takes a clone of `tree`. Nothing about the tree is
  /// checked. Calls the recording hooks as vx_Classifier::train() does.
  void trainManual(const vxDecisionTree& tree, vxDiagObject* diag = nullptr,
                   unsigned long flags = 0);

  /// The tree, empty when untrained.
  const vxPtrHandle_const<vxDecisionTree>& decisionTree() const { return tree_; }

  vxPtrHandle<vx_Classifier> clone() const override;
  bool isEquivalent(const vx_Classifier& other) const override;
  bool operator==(const vx_ClassifierDecisionTree& other) const;
  bool operator!=(const vx_ClassifierDecisionTree& other) const { return !(*this == other); }

 protected:
  /// These four always throw NotImplemented.
  void train_(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) override;
  void retrain_(const vxClassifierTrainParams& params) override;
  void trainStart_(const vxClassifierTrainParams& params) override;
  void trainIncremental_(const vxFeaturePattern& pattern, long label) override;

  void untrain_() override;
  bool isTrained_() const override;

  /// Accepts every tree.
  void checkRunnable_() const override;

  /// Throws vxBadPointer for a missing tree, predicate or subtree on the way, or one that is
  /// neither leaf nor node. Polls the attention check once a level.
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

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  vxPtrHandle_const<vxDecisionTree> tree_;
};

#endif  // VXCLSS_CLASSIFIER_DECISION_TREE_H_
