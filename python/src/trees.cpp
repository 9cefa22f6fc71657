// SPDX-License-Identifier: MIT
#include "trees.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "archive.h"
#include "bindings.h"
#include "patterns.h"
#include "results.h"
#include "text.h"

namespace vxpy {
namespace {

using Predicate = vxPredicateFunction;
using Tree = vxDecisionTree;
using Leaf = vxDecisionTreeLeaf;
using Node = vxDecisionTreeNode;
using Range = std::pair<double, double>;

void addComparison(py::module_& module) {
  using Comparison = vxComparisonPredicate;
  py::class_<Comparison, Predicate, vxPtrHandle<Comparison>> cls(
      module, "ComparisonPredicate", py::is_final(),
      "Whether one measurement is greater than another; no if one of them is invalid\n"
      "(vxComparisonPredicate). Swap the indices to ask for less.");
  cls.def(py::init<long, long>(), py::arg("measurement_index1"), py::arg("measurement_index2"),
          "Raises BadParams for equal indices; BadIndex for one below 0.");
  cls.def_property_readonly("measurement_index1", &Comparison::measurementIndex1,
                            "Index of the measurement that shall be greater, >= 0.");
  cls.def_property_readonly("measurement_index2", &Comparison::measurementIndex2,
                            "Index of the measurement that it is compared with, >= 0.");
  cls.def("__repr__", [](const Comparison& self) {
    return "ComparisonPredicate(" + std::to_string(self.measurementIndex1()) + ", " +
           std::to_string(self.measurementIndex2()) + ")";
  });
  addSharedArchive(cls, 0L, 1L);
}

void addRange(py::module_& module) {
  using InRange = vxRangePredicate;
  py::class_<InRange, Predicate, vxPtrHandle<InRange>> cls(
      module, "RangePredicate", py::is_final(),
      "Whether all listed measurements are valid and within a range, ends included\n"
      "(vxRangePredicate). An empty list makes it yes; NaN is in no range but the full one.");
  cls.def(py::init([](const std::optional<Range>& range, const std::vector<long>& indices) {
            const vxRange full = vxRange::FullRange();
            return new InRange(range ? vxRange(range->first, range->second) : full, indices);
          }),
          py::arg("measurement_range") = py::none(),
          py::arg("measurement_indices") = std::vector<long>{0},
          "`measurement_range` is (low, high), None the full range. Raises BadIndex for an index\n"
          "below 0.");
  cls.def_property_readonly(
      "measurement_range",
      [](const InRange& self) {
        return Range(self.measurementRange().low(), self.measurementRange().high());
      },
      "(low, high), in the unit of the measurements; both belong to the range.");
  cls.def_property_readonly("measurement_indices", &InRange::measurementIndices,
                            "A new list of the indices that are asked about, >= 0.");
  cls.def("__repr__", [](const InRange& self) {
    return "RangePredicate((" + shown(self.measurementRange().low()) + ", " +
           shown(self.measurementRange().high()) + "), " +
           shown(py::cast(self.measurementIndices())) + ")";
  });
  addSharedArchive(cls);
}

void addValidity(py::module_& module) {
  using Validity = vxValidityPredicate;
  py::class_<Validity, Predicate, vxPtrHandle<Validity>> cls(
      module, "ValidityPredicate", py::is_final(),
      "Whether all listed measurements are valid; yes for an empty list (vxValidityPredicate).");
  cls.def(py::init<const std::vector<long>&>(),
          py::arg("measurement_indices") = std::vector<long>{0},
          "Raises BadIndex for an index below 0.");
  cls.def_property_readonly("measurement_indices", &Validity::measurementIndices,
                            "A new list of the indices that are asked about, >= 0.");
  cls.def("__repr__", [](const Validity& self) {
    return "ValidityPredicate(" + shown(py::cast(self.measurementIndices())) + ")";
  });
  addSharedArchive(cls);
}

void addPredicates(py::module_& module) {
  py::class_<Predicate, vxPtrHandle<Predicate>> base(
      module, "Predicate",
      "A yes-or-no question about a pattern (vxPredicateFunction). Never changes.\n"
      "A measurement past a pattern's end counts as invalid.");
  base.def(
      "outcome",
      [](const Predicate& self, const py::object& pattern) {
        return self.outcome(patternFrom(pattern));
      },
      py::arg("pattern"), "The answer for a FeaturePattern or a list of numbers.");
  base.def(
      "__eq__", [](const Predicate& a, const Predicate& b) { return a.isEqual(b); },
      py::is_operator());
  addComparison(module);
  addRange(module);
  addValidity(module);
}

void addTreeClasses(py::module_& module) {
  py::class_<Tree, vxPtrHandle<Tree>> base(
      module, "DecisionTree",
      "A binary tree of questions with a ready-made result at each leaf (vxDecisionTree).\n"
      "Never changes, so trees may share subtrees.");
  base.def_property_readonly(
      "category_labels", &Tree::categoryLabels,
      "Every label that some leaf can give, those below the false side first.");
  base.def_property_readonly("num_categories", &Tree::numCategories,
                             "How many labels category_labels has.");
  base.def(
      "__eq__", [](const Tree& a, const Tree& b) { return a.isEqual(b); }, py::is_operator());

  py::class_<Leaf, Tree, vxPtrHandle<Leaf>> leaf(module, "DecisionTreeLeaf", py::is_final(),
                                                 "The end of a walk (vxDecisionTreeLeaf).");
  leaf.def(py::init<const vxClassifierResult&>(), py::arg("classifier_result"),
           "A leaf that answers with a Result.");
  leaf.def_property_readonly(
      "classifier_result", [](const Leaf& self) { return self.classifierResult(); },
      "The Result that it answers with.");
  leaf.def("__repr__", [](const Leaf& self) {
    return "DecisionTreeLeaf(" + shownResult(self.classifierResult()) + ")";
  });
  addSharedArchive(leaf, vxClassifierResult());

  py::class_<Node, Tree, vxPtrHandle<Node>> node(module, "DecisionTreeNode", py::is_final(),
                                                 "A question and what follows from either answer\n"
                                                 "(vxDecisionTreeNode).");
  node.def(py::init<const Predicate&, const Tree&, const Tree&>(), py::arg("predicate_function"),
           py::arg("true_tree"), py::arg("false_tree"),
           "A node that holds copies of the arguments; a subtree's copy shares what is below it.");
  node.def_property_readonly(
      "predicate_function", [](const Node& self) { return wrapped(self.predicateFunction()); },
      "The Predicate that it asks.");
  node.def_property_readonly(
      "true_tree", [](const Node& self) { return wrapped(self.trueTree()); },
      "The DecisionTree where the answer is yes.");
  node.def_property_readonly(
      "false_tree", [](const Node& self) { return wrapped(self.falseTree()); },
      "The DecisionTree where the answer is no.");
  // The subtrees of a large tree would fill pages.
  node.def("__repr__", [](const Node& self) {
    return "<DecisionTreeNode that asks " + shown(wrapped(self.predicateFunction())) + ">";
  });
  addSharedArchive(node);
}

}  // namespace

long askedMeasurements(const vxDecisionTree& root) {
  long most = -1;
  const auto ask = [&most](long index) { most = std::max(most, index); };
  std::vector<const Tree*> left{&root};
  std::unordered_set<const Tree*> seen{&root};  // subtrees may be shared
  while (!left.empty()) {
    const auto* node = dynamic_cast<const Node*>(left.back());
    left.pop_back();
    if (node == nullptr) continue;
    const Predicate* question = node->predicateFunction().get();
    if (const auto* comparison = dynamic_cast<const vxComparisonPredicate*>(question)) {
      ask(comparison->measurementIndex1());
      ask(comparison->measurementIndex2());
    } else if (const auto* range = dynamic_cast<const vxRangePredicate*>(question)) {
      for (const long index : range->measurementIndices()) ask(index);
    } else if (const auto* validity = dynamic_cast<const vxValidityPredicate*>(question)) {
      for (const long index : validity->measurementIndices()) ask(index);
    }
    for (const Tree* below : {node->trueTree().get(), node->falseTree().get()}) {
      if (below != nullptr && seen.insert(below).second) left.push_back(below);
    }
  }
  return most + 1;
}

void addTrees(py::module_& module) {
  addPredicates(module);
  addTreeClasses(module);
}

}  // namespace vxpy
