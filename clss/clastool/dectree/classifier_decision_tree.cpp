// SPDX-License-Identifier: MIT
#include "vxclss/classifier_decision_tree.h"

#include <typeinfo>

#include "kernel/attended.h"
#include "predicate_outcome.h"
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

// `object` if it is of the very class T. Comparing the addresses takes two loads where a cast takes
// a search; that of another address, a derived class above all, is left to the cast.
template <class T, class Base>
const T* exactly(const Base& object) {
  return &typeid(object) == &typeid(T) ? static_cast<const T*>(&object) : nullptr;
}

const vxClassifierResult& resultOf(const vxDecisionTree& tree) {
  const auto* leaf = exactly<vxDecisionTreeLeaf>(tree);
  return (leaf != nullptr ? *leaf : vfCheckedCast<vxDecisionTreeLeaf>(tree)).classifierResult();
}

}  // namespace

// The walk. Nodes and predicates of the library are looked into where they stand, without a call:
// what they hold may be changed between two runs by whoever shares it (an archive or a clone() of a
// host can hand out a part of a tree), so nothing of them is kept. A predicate of a host is asked,
// and after it, as after an attention handler, the pattern is looked at anew.
class vx_TreeWalk {
 public:
  explicit vx_TreeWalk(const vxFeaturePattern& pattern) : pattern_(pattern), view_(pattern) {}

  const vxDecisionTree& leafBelow(const vxDecisionTree& root) {
    const vxDecisionTree* tree = &root;
    for (;;) {
      if (isAttended_) poll_();
      const vxDecisionTreeNode* node = exactly<vxDecisionTreeNode>(*tree);
      if (node == nullptr && exactly<vxDecisionTreeLeaf>(*tree) == nullptr) {
        node = dynamic_cast<const vxDecisionTreeNode*>(tree);
      }
      if (node == nullptr) return *tree;
      tree = outcome_(*node->predicate_) ? &*node->trueTree_ : &*node->falseTree_;
    }
  }

 private:
  void poll_() {
    vfThrowExceptionOnFailure(vfCheckAttention());
    lookAnew_();
  }

  void lookAnew_() {
    view_ = vx_PatternView(pattern_);
    isAttended_ = vx_isAttended();
  }

  bool outcome_(const vxPredicateFunction& predicate) {
    if (const auto* comparison = exactly<vxComparisonPredicate>(predicate)) {
      return vx_PredicateOutcome::of(*comparison, view_);
    }
    if (const auto* range = exactly<vxRangePredicate>(predicate)) {
      return vx_PredicateOutcome::of(*range, view_);
    }
    if (const auto* validity = exactly<vxValidityPredicate>(predicate)) {
      return vx_PredicateOutcome::of(*validity, view_);
    }
    const bool outcome = predicate.outcome(pattern_);
    lookAnew_();
    return outcome;
  }

  const vxFeaturePattern& pattern_;
  vx_PatternView view_;
  bool isAttended_ = vx_isAttended();
};

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
  result = resultOf(vx_TreeWalk(pattern).leafBelow(*tree_));
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
