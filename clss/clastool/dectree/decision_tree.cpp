// SPDX-License-Identifier: MIT
#include "vxclss/decision_tree.h"

#include <functional>
#include <typeinfo>
#include <unordered_set>
#include <utility>

#include "vxfoundation/archive.h"

namespace {

using Pair = std::pair<const vxDecisionTree*, const vxDecisionTree*>;

struct PairHash {
  std::size_t operator()(const Pair& pair) const {
    const std::hash<const vxDecisionTree*> hash;
    return hash(pair.first) * 31 + hash(pair.second);
  }
};

// A class derived from vxDecisionTreeNode may answer for itself.
const vxDecisionTreeNode* exactNode(const vxDecisionTree& tree) {
  const bool isNode = typeid(tree) == typeid(vxDecisionTreeNode);
  return isNode ? static_cast<const vxDecisionTreeNode*>(&tree) : nullptr;
}

}  // namespace

vxDecisionTree::~vxDecisionTree() = default;

bool vxDecisionTree::isEqual(const vxDecisionTree&) const { return true; }

long vxDecisionTree::numCategories() const { return static_cast<long>(categoryLabels().size()); }

void vxDecisionTree::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxDecisionTree)}) {
    vxPersistent::dispatchSerialize(archive);
  }
}

vxDecisionTreeLeaf::vxDecisionTreeLeaf(const vxClassifierResult& classifierResult)
    : classifierResult_(classifierResult) {}

vxDecisionTreeLeaf& vxDecisionTreeLeaf::operator=(const vxDecisionTreeLeaf& other) {
  return *this = vxDecisionTreeLeaf(other);
}

vxDecisionTreeLeaf::~vxDecisionTreeLeaf() = default;

void vxDecisionTreeLeaf::classifierResult(const vxClassifierResult& result) {
  vxClassifierResult copy = result;
  mutating_();
  classifierResult_ = std::move(copy);
}

std::vector<long> vxDecisionTreeLeaf::categoryLabels() const {
  std::vector<long> labels;
  for (const vxClassifierCategoryResult& category : classifierResult_.categoryResults()) {
    labels.push_back(category.categoryLabel());
  }
  return labels;
}

vxPtrHandle<vxDecisionTree> vxDecisionTreeLeaf::clone() const {
  return vxPtrHandle<vxDecisionTree>(new vxDecisionTreeLeaf(*this));
}

bool vxDecisionTreeLeaf::isEqual(const vxDecisionTree& other) const {
  const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(&other);
  return leaf != nullptr && classifierResult_ == leaf->classifierResult_;
}

void vxDecisionTreeLeaf::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxDecisionTreeLeaf)}) {
    vxDecisionTree::dispatchSerialize(archive);
    archive || classifierResult_;
  }
}

vxPersistent* vxDecisionTreeLeaf::make() { return new vxDecisionTreeLeaf(vxClassifierResult()); }
vx_Instantiator vxDecisionTreeLeaf::sExemplar(typeid(vxDecisionTreeLeaf),
                                              &vxDecisionTreeLeaf::make);

vxDecisionTreeNode::vxDecisionTreeNode()
    : trueTree_(new vxDecisionTreeLeaf(vxClassifierResult())),
      falseTree_(trueTree_),
      predicate_(new vxRangePredicate) {}

vxDecisionTreeNode::vxDecisionTreeNode(const vxPredicateFunction& predicate,
                                       const vxDecisionTree& trueTree,
                                       const vxDecisionTree& falseTree)
    : trueTree_(trueTree.clone()), falseTree_(falseTree.clone()), predicate_(predicate.clone()) {}

vxDecisionTreeNode& vxDecisionTreeNode::operator=(const vxDecisionTreeNode& other) {
  vxDecisionTreeNode copy(other);  // `other` may be a node below this one
  vxDecisionTree::operator=(other);
  trueTree_.swap(copy.trueTree_);
  falseTree_.swap(copy.falseTree_);
  predicate_.swap(copy.predicate_);
  return *this;
}

vxDecisionTreeNode::~vxDecisionTreeNode() {
  release_(std::move(trueTree_));
  release_(std::move(falseTree_));
}

void vxDecisionTreeNode::trueTree(const vxDecisionTree& tree) {
  Subtree copy = tree.clone();
  mutating_();
  trueTree_.swap(copy);
}

void vxDecisionTreeNode::falseTree(const vxDecisionTree& tree) {
  Subtree copy = tree.clone();
  mutating_();
  falseTree_.swap(copy);
}

void vxDecisionTreeNode::predicateFunction(const vxPredicateFunction& predicate) {
  vxPtrHandle_const<vxPredicateFunction> copy = predicate.clone();
  mutating_();
  predicate_.swap(copy);
}

// Visits leaves with the false side first; each adds what is not in the list yet, but the very
// first gives its labels as they are. A subtree met again has nothing to add.
std::vector<long> vxDecisionTreeNode::categoryLabels() const {
  std::vector<long> labels;
  std::unordered_set<long> known;
  std::unordered_set<const vxDecisionTree*> visited;
  std::vector<const vxDecisionTree*> toVisit = {this};
  bool isFirst = true;
  while (!toVisit.empty()) {
    const vxDecisionTree* tree = toVisit.back();
    toVisit.pop_back();
    if (!visited.insert(tree).second) continue;
    // The object asked answers as a node, whatever its class.
    const vxDecisionTreeNode* node = tree == this ? this : exactNode(*tree);
    if (node != nullptr) {
      toVisit.push_back(&*node->trueTree_);
      toVisit.push_back(&*node->falseTree_);
      continue;
    }
    for (const long label : tree->categoryLabels()) {
      if (known.insert(label).second || isFirst) labels.push_back(label);
    }
    isFirst = false;
  }
  return labels;
}

vxPtrHandle<vxDecisionTree> vxDecisionTreeNode::clone() const {
  return vxPtrHandle<vxDecisionTree>(new vxDecisionTreeNode(*this));
}

// Compares each pair of objects once: a pair met again was found equal, or the answer is known.
// Even a pair of one object with itself is compared, since a NaN in a leaf makes it differ.
bool vxDecisionTreeNode::isEqual(const vxDecisionTree& other) const {
  using Handles = std::pair<const Subtree*, const Subtree*>;
  std::unordered_set<Pair, PairHash> visited;
  std::vector<Handles> toVisit;
  const auto compareNodes = [&toVisit](const vxDecisionTreeNode& a, const vxDecisionTree& tree) {
    const auto* b = dynamic_cast<const vxDecisionTreeNode*>(&tree);
    if (b == nullptr || !a.predicate_->isEqual(*b->predicate_)) return false;
    toVisit.emplace_back(&a.falseTree_, &b->falseTree_);
    toVisit.emplace_back(&a.trueTree_, &b->trueTree_);  // is compared first
    return true;
  };

  if (!compareNodes(*this, other)) return false;
  while (!toVisit.empty()) {
    const vxDecisionTree& a = **toVisit.back().first;
    const vxDecisionTree& b = **toVisit.back().second;
    toVisit.pop_back();
    if (!visited.emplace(&a, &b).second) continue;
    const vxDecisionTreeNode* node = exactNode(a);
    if (!(node != nullptr ? compareNodes(*node, b) : a.isEqual(b))) return false;
  }
  return true;
}

// The node that `subtree` alone keeps alive, if it is one.
vxDecisionTreeNode* vxDecisionTreeNode::soleNode_(const Subtree& subtree) {
  if (subtree.isNull() || subtree->referenceCount() != 1) return nullptr;
  return const_cast<vxDecisionTreeNode*>(exactNode(*subtree));
}

// Frees a subtree of any depth without recursion and without memory: while the node on top has a
// true subtree that dies too, that one is rotated above it; then the node itself can go.
void vxDecisionTreeNode::release_(Subtree subtree) {
  while (vxDecisionTreeNode* top = soleNode_(subtree)) {
    if (vxDecisionTreeNode* child = soleNode_(top->trueTree_)) {
      Subtree newTop = std::move(top->trueTree_);
      top->trueTree_ = std::move(child->falseTree_);
      child->falseTree_ = std::move(subtree);
      subtree = std::move(newTop);
    } else {
      top->trueTree_.reset();
      Subtree rest = std::move(top->falseTree_);
      subtree = std::move(rest);
    }
  }
}

void vxDecisionTreeNode::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxDecisionTreeNode)}) {
    vxDecisionTree::dispatchSerialize(archive);
    vfTransferStaged(archive, *this, [&archive](vxDecisionTreeNode& target) {
      archive || target.trueTree_ || target.falseTree_ || target.predicate_;
    });
  }
}

vxPersistent* vxDecisionTreeNode::make() { return new vxDecisionTreeNode; }
vx_Instantiator vxDecisionTreeNode::sExemplar(typeid(vxDecisionTreeNode),
                                              &vxDecisionTreeNode::make);
