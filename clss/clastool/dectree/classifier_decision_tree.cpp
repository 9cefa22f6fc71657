// SPDX-License-Identifier: MIT
#include "vxclss/classifier_decision_tree.h"

#include <typeinfo>

#include "vxclss/errors.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"

namespace {

[[noreturn]] void throwNoAutomaticTraining() {
  throw vxClassifierDefs::NotImplemented(L"Automatic decision tree training is not implemented.");
}

[[noreturn]] void throwNoIncrementalTraining() {
  throw vxClassifierDefs::NotImplemented(L"Incremental decision tree training is not implemented.");
}

// Comparing type identities is much faster than a cast and right for all but derived classes.
template <class T>
const T* treeAs(const vxDecisionTree& tree) {
  if (typeid(tree) == typeid(T)) return static_cast<const T*>(&tree);
  return dynamic_cast<const T*>(&tree);
}

}  // namespace

vx_ClassifierDecisionTree::vx_ClassifierDecisionTree() = default;

vx_ClassifierDecisionTree::~vx_ClassifierDecisionTree() = default;

void vx_ClassifierDecisionTree::trainManual(const vxDecisionTree& tree, vxDiagObject* diag,
                                            unsigned long flags) {
  const vxPtrHandle_const<vxDecisionTree> copy = tree.clone();  // `tree` may be held by this one
  if (isTrained()) untrain();
  mutating_();
  tree_ = copy;
  vxDiagObject* const destination = vxDiagObject::getRecordingDestination(diag, flags);
  recordTrainInputs_(destination, flags);
  recordTrainDetails_(diag, flags);
  recordTrainResults_(destination, flags);
}

vxPtrHandle<vx_Classifier> vx_ClassifierDecisionTree::clone() const {
  return vxPtrHandle<vx_Classifier>(new vx_ClassifierDecisionTree(*this));
}

bool vx_ClassifierDecisionTree::isEquivalent(const vx_Classifier& other) const {
  const auto* tree = dynamic_cast<const vx_ClassifierDecisionTree*>(&other);
  return tree != nullptr && *this == *tree;
}

bool vx_ClassifierDecisionTree::operator==(const vx_ClassifierDecisionTree& other) const {
  return vx_Classifier::isEquivalent(other) && tree_->isEqual(*other.tree_);
}

void vx_ClassifierDecisionTree::train_(const vxClassifierDataProvider&,
                                       const vxClassifierTrainParams&) {
  throwNoAutomaticTraining();
}

void vx_ClassifierDecisionTree::retrain_(const vxClassifierTrainParams&) {
  throwNoAutomaticTraining();
}

void vx_ClassifierDecisionTree::trainStart_(const vxClassifierTrainParams&) {
  throwNoIncrementalTraining();
}

void vx_ClassifierDecisionTree::trainIncremental_(const vxFeaturePattern&, long) {
  throwNoIncrementalTraining();
}

void vx_ClassifierDecisionTree::untrain_() { tree_.reset(); }

bool vx_ClassifierDecisionTree::isTrained_() const { return !tree_.isNull(); }

void vx_ClassifierDecisionTree::checkRunnable_() const {}

void vx_ClassifierDecisionTree::run_(const vxFeaturePattern& pattern,
                                     vxClassifierResult& result) const {
  const vxDecisionTree* tree = &*tree_;
  for (;;) {
    vfThrowExceptionOnFailure(vfCheckAttention());
    if (const auto* node = treeAs<vxDecisionTreeNode>(*tree)) {
      tree = node->predicate_->outcome(pattern) ? &*node->trueTree_ : &*node->falseTree_;
    } else if (const auto* leaf = treeAs<vxDecisionTreeLeaf>(*tree)) {
      result = leaf->classifierResult();
      return;
    } else {
      vfThrowBadPointer();
    }
  }
}

void vx_ClassifierDecisionTree::recordTrainInputs_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierDecisionTree::recordTrainDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierDecisionTree::recordTrainResults_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierDecisionTree::recordRunInputs_(vxDiagObject*, unsigned long,
                                                 const vxFeaturePattern&) const {}
void vx_ClassifierDecisionTree::recordRunDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierDecisionTree::recordRunResults_(vxDiagObject*, unsigned long,
                                                  const vxFeaturePattern&,
                                                  const vxClassifierResult&) const {}

void vx_ClassifierDecisionTree::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_ClassifierDecisionTree)}) {
    vfTransferStaged(archive, *this, [&archive](vx_ClassifierDecisionTree& target) {
      target.vx_Classifier::dispatchSerialize(archive);
      archive || target.tree_;
    });
  }
}

vxPersistent* vx_ClassifierDecisionTree::make() { return new vx_ClassifierDecisionTree; }
vx_Instantiator vx_ClassifierDecisionTree::sExemplar(typeid(vx_ClassifierDecisionTree),
                                                     &vx_ClassifierDecisionTree::make);
