// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include "archive.h"
#include "bindings.h"
#include "overrides.h"

namespace vxpy {
namespace {

using Costs = vxClassifierCosts;
using Frequencies = vxClassifierFrequencies;
using Pair = std::pair<long, long>;

py::dict overridesOf(const Costs& costs) {
  py::dict overrides;
  readArchived(costs, [&](vxArchive& archive) {
    double standard = 0;
    std::vector<long> trueLabels, assignedLabels;
    std::vector<double> values;
    archive || standard || trueLabels || assignedLabels || values;
    for (std::size_t i = 0; i < values.size(); ++i) {
      overrides[py::make_tuple(trueLabels[i], assignedLabels[i])] = values[i];
    }
  });
  return overrides;
}

py::dict overridesOf(const Frequencies& frequencies) {
  py::dict overrides;
  readArchived(frequencies, [&](vxArchive& archive) {
    double standard = 0;
    std::vector<long> labels;
    std::vector<double> values;
    archive || standard || labels || values;
    for (std::size_t i = 0; i < values.size(); ++i) overrides[py::int_(labels[i])] = values[i];
  });
  return overrides;
}

void addCostsClass(py::module_& module) {
  py::class_<Costs> cls(
      module, "Costs", py::is_final(),
      "What it costs to mistake one category for another (vxClassifierCosts): a default, and\n"
      "overrides for ordered pairs of true and assigned label. Never changes.\n\n"
      "Costs are >= 0, in any unit; a correct decision costs nothing.");
  cls.def(py::init([](double standard, const py::object& overrides) {
            Costs costs(standard);
            for (const py::handle item : itemsOf(overrides)) {
              const auto [pair, cost] = itemOf<Pair, double>(item, "pairs of labels to costs");
              costs.misclassificationCostOverride(pair.first, pair.second, cost);
            }
            return costs;
          }),
          py::arg("default") = 1.0, py::arg("overrides") = py::none(),
          "`overrides` maps (true label, assigned label) to a cost.\n\n"
          "Raises BadParams for a cost below 0; BadLabel for a pair of equal or negative labels.");
  cls.def_property_readonly("default",
                            py::overload_cast<>(&Costs::defaultMisclassificationCost, py::const_),
                            "Cost of every mistake without an override, >= 0.");
  cls.def_property_readonly(
      "overrides", [](const Costs& self) { return overridesOf(self); },
      "A new dict of (true label, assigned label) to cost, in order.");
  cls.def("misclassification_cost", &Costs::misclassificationCost, py::arg("true_label"),
          py::arg("assigned_label"),
          "The cost of a pair. Raises BadLabel for equal or negative labels.");
  cls.def(
      "with_override",
      [](const Costs& self, long trueLabel, long assignedLabel, double cost) {
        Costs changed = self;
        changed.misclassificationCostOverride(trueLabel, assignedLabel, cost);
        return changed;
      },
      py::arg("true_label"), py::arg("assigned_label"), py::arg("cost"),
      "New costs, with one more pair.");
  cls.def(
      "__eq__", [](const Costs& a, const Costs& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const Costs& self) {
    const py::dict overrides = overridesOf(self);
    return "Costs(" + shown(self.defaultMisclassificationCost()) +
           (overrides.empty() ? "" : ", " + shown(overrides)) + ")";
  });
  addValueArchive(cls, 1.0);
}

void addFrequenciesClass(py::module_& module) {
  py::class_<Frequencies> cls(
      module, "Frequencies", py::is_final(),
      "How often each category occurs, relative to the others (vxClassifierFrequencies): a default,\n"
      "and overrides by label. Never changes.\n\n"
      "Frequencies are > 0 and need not sum to 1.");
  cls.def(py::init([](double standard, const py::object& overrides) {
            Frequencies frequencies(standard);
            for (const py::handle item : itemsOf(overrides)) {
              const auto [label, frequency] = itemOf<long, double>(item, "labels to frequencies");
              frequencies.categoryFrequencyOverride(label, frequency);
            }
            return frequencies;
          }),
          py::arg("default") = 1.0, py::arg("overrides") = py::none(),
          "`overrides` maps a label to a frequency.\n\n"
          "Raises BadParams for a frequency that is not above 0; BadLabel for a negative label.");
  cls.def_property_readonly("default",
                            py::overload_cast<>(&Frequencies::defaultCategoryFrequency, py::const_),
                            "Frequency of every label without an override, > 0.");
  cls.def_property_readonly(
      "overrides", [](const Frequencies& self) { return overridesOf(self); },
      "A new dict of label to frequency, in order.");
  cls.def("category_frequency", &Frequencies::categoryFrequency, py::arg("label"),
          "The frequency of a label. Raises BadLabel for a negative one.");
  cls.def(
      "with_override",
      [](const Frequencies& self, long label, double frequency) {
        Frequencies changed = self;
        changed.categoryFrequencyOverride(label, frequency);
        return changed;
      },
      py::arg("label"), py::arg("frequency"), "New frequencies, with one more label.");
  cls.def(
      "__eq__", [](const Frequencies& a, const Frequencies& b) { return a == b; },
      py::is_operator());
  cls.def("__repr__", [](const Frequencies& self) {
    const py::dict overrides = overridesOf(self);
    return "Frequencies(" + shown(self.defaultCategoryFrequency()) +
           (overrides.empty() ? "" : ", " + shown(overrides)) + ")";
  });
  addValueArchive(cls, 1.0);
}

}  // namespace

void addCosts(py::module_& module) {
  addCostsClass(module);
  addFrequenciesClass(module);
}

}  // namespace vxpy
