// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <string>
#include <vector>

#include "archive.h"
#include "bindings.h"
#include "patterns.h"
#include "text.h"

namespace vxpy {
namespace {

using Metric = vxPatternDistanceMetric;
using Norm = vxPatternDistanceMetricNorm;
using Params = vxClassifierTrainParams;
using ParamsKNN = vxClassifierTrainParamsKNN;
using ParamsBayesian = vxClassifierTrainParamsBayesian;

std::string readyText(const Params& params) {
  return params.throwIfNotReady() ? ")" : ", throw_if_not_ready=False)";
}

/// Adds replace(), which makes another object of the fields but for those given.
void addReplace(py::object cls, const std::vector<std::string>& fields) {
  cls.attr("replace") = py::cpp_function(
      [cls, fields](const py::object& self, const py::kwargs& changes) {
        py::dict arguments;
        for (const std::string& field : fields) {
          arguments[field.c_str()] = self.attr(field.c_str());
        }
        arguments.attr("update")(changes);
        return cls(**arguments);
      },
      py::name("replace"), py::is_method(cls),
      "A copy in which the fields that are named as keywords have other values.");
}

void addMetrics(py::module_& module) {
  py::class_<Metric, vxPtrHandle<Metric>> base(
      module, "DistanceMetric", "A distance between two patterns (vxPatternDistanceMetric).");
  base.def(
      "distance",
      [](const Metric& self, const py::object& a, const py::object& b) {
        return self.distance(patternFrom(a), patternFrom(b));
      },
      py::arg("a"), py::arg("b"),
      "The distance of two patterns or lists of numbers.\n\n"
      "Raises BadFeatures for patterns of different size or with an invalid measurement.");
  base.def(
      "__eq__", [](const Metric& a, const Metric& b) { return a.isEquivalent(b); },
      py::is_operator());

  py::class_<Norm, Metric, vxPtrHandle<Norm>> norm(
      module, "Norm", py::is_final(),
      "The Minkowski distance (sum |a_i - b_i|^p)^(1/p) (vxPatternDistanceMetricNorm).\n"
      "Never changes.");
  norm.def(py::init<double>(), py::arg("order") = 2.0, "Raises BadParams unless order > 0.");
  norm.def_property_readonly("order", py::overload_cast<>(&Norm::order, py::const_),
                             "The p of the formula, > 0.");
  norm.def("__repr__", [](const Norm& self) { return "Norm(" + shown(self.order()) + ")"; });
  addSharedArchive(norm, 2.0);
}

void addKNN(py::module_& module) {
  py::class_<ParamsKNN, Params, vxPtrHandle<ParamsKNN>> cls(
      module, "TrainParamsKNN", py::is_final(),
      "Selects the nearest-neighbour technique: number of neighbours, distance, costs\n"
      "(vxClassifierTrainParamsKNN). Never changes.");
  cls.def(
      py::init([](long k, const py::object& metric, const vxClassifierCosts* costs,
                  bool throwIfNotReady) {
        vxPtrHandle<ParamsKNN> params(new ParamsKNN(k));
        if (py::isinstance<Metric>(metric)) {
          params->distanceMetric(metric.cast<const Metric&>());
        } else if (!metric.is_none()) {
          const double order = PyFloat_AsDouble(metric.ptr());
          if (PyErr_Occurred() != nullptr) throw py::error_already_set();
          params->distanceMetric(Norm(order));
        }
        if (costs != nullptr) params->misclassificationCosts(*costs);
        params->throwIfNotReady(throwIfNotReady);
        return params;
      }),
      py::arg("k") = 5, py::kw_only(), py::arg("distance_metric") = py::none(),
      py::arg("misclassification_costs") = py::none(), py::arg("throw_if_not_ready") = true,
      "`distance_metric` is a DistanceMetric or the order of a norm; without it the distance is\n"
      "Euclidean. Without costs every mistake costs 1.\n\n"
      "Raises BadParams for k < 1 or an order that is not above 0.");
  cls.def_property_readonly("k", py::overload_cast<>(&ParamsKNN::k, py::const_),
                            "How many neighbours decide, >= 1.");
  cls.def_property_readonly(
      "distance_metric", [](const ParamsKNN& self) { return wrapped(self.distanceMetric()); },
      "The DistanceMetric that makes a pattern a neighbour.");
  cls.def_property_readonly(
      "misclassification_costs",
      [](const ParamsKNN& self) { return self.misclassificationCosts(); },
      "The Costs of mistakes.");
  cls.def(
      "__eq__", [](const ParamsKNN& a, const ParamsKNN& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const ParamsKNN& self) {
    return "TrainParamsKNN(" + std::to_string(self.k()) +
           ", distance_metric=" + shown(wrapped(self.distanceMetric())) +
           ", misclassification_costs=" + shown(py::cast(self.misclassificationCosts())) +
           readyText(self);
  });
  addReplace(cls, {"k", "distance_metric", "misclassification_costs", "throw_if_not_ready"});
  addSharedArchive(cls, 1L);
}

void addBayesian(py::module_& module) {
  py::class_<ParamsBayesian, Params, vxPtrHandle<ParamsBayesian>> cls(
      module, "TrainParamsBayesian", py::is_final(),
      "Selects the Bayesian technique: distributions, category frequencies, costs, and the largest\n"
      "values of binomial measurements (vxClassifierTrainParamsBayesian). Never changes.");
  cls.def(
      py::init([](const vxClassifierDistributionTypes& types,
                  const vxClassifierFrequencies* frequencies, const vxClassifierCosts* costs,
                  const py::object& maxima, bool throwIfNotReady) {
        vxPtrHandle<ParamsBayesian> params(
            new ParamsBayesian(types, frequencies ? *frequencies : vxClassifierFrequencies(1.0),
                               costs ? *costs : vxClassifierCosts(1.0), patternFrom(maxima)));
        params->throwIfNotReady(throwIfNotReady);
        return params;
      }),
      py::arg("distribution_types") = vxClassifierDistributionTypes(), py::kw_only(),
      py::arg("category_frequencies") = py::none(), py::arg("misclassification_costs") = py::none(),
      py::arg("max_measurement_values") = py::tuple(), py::arg("throw_if_not_ready") = true,
      "Without frequencies all categories are equally frequent; without costs every mistake\n"
      "costs 1. `max_measurement_values` is a FeaturePattern or a list of numbers; where it has\n"
      "none, or NaN, the largest value of a binomial measurement is 1.");
  cls.def_property_readonly(
      "distribution_types", [](const ParamsBayesian& self) { return self.distributionTypes(); },
      "The DistributionTypes of the measurements.");
  cls.def_property_readonly(
      "category_frequencies", [](const ParamsBayesian& self) { return self.categoryFrequencies(); },
      "The Frequencies of the categories.");
  cls.def_property_readonly(
      "misclassification_costs",
      [](const ParamsBayesian& self) { return self.misclassificationCosts(); },
      "The Costs of mistakes.");
  cls.def_property_readonly(
      "max_measurement_values",
      [](const ParamsBayesian& self) {
        return vxPtrHandle<vxFeaturePattern>(new vxFeaturePattern(self.maxMeasurementValues()));
      },
      "Largest value of each binomial measurement, in its unit: a FeaturePattern. Where it has none,\n"
      "or an invalid one, the largest value is 1.");
  cls.def(
      "__eq__", [](const ParamsBayesian& a, const ParamsBayesian& b) { return a == b; },
      py::is_operator());
  cls.def("__repr__", [](const ParamsBayesian& self) {
    std::string text =
        "TrainParamsBayesian(" + shown(py::cast(self.distributionTypes())) +
        ", category_frequencies=" + shown(py::cast(self.categoryFrequencies())) +
        ", misclassification_costs=" + shown(py::cast(self.misclassificationCosts()));
    const vxFeaturePattern& maxima = self.maxMeasurementValues();
    if (maxima.numMeasurements() != 0) {
      const vxPtrHandle<vxFeaturePattern> copy(new vxFeaturePattern(maxima));
      text += ", max_measurement_values=" + shown(py::cast(copy));
    }
    return text + readyText(self);
  });
  addReplace(cls, {"distribution_types", "category_frequencies", "misclassification_costs",
                   "max_measurement_values", "throw_if_not_ready"});
  addSharedArchive(cls, vxClassifierDistributionTypes(), vxClassifierFrequencies(1.0),
                   vxClassifierCosts(1.0), vxFeaturePattern({}, {}));
}

}  // namespace

void addParams(py::module_& module) {
  addMetrics(module);
  py::class_<Params, vxPtrHandle<Params>> base(
      module, "TrainParams",
      "Parameters of a training; their class selects the technique (vxClassifierTrainParams).");
  base.def_property_readonly("throw_if_not_ready",
                             py::overload_cast<>(&Params::throwIfNotReady, py::const_),
                             "Whether training ends with a check that the classifier can run.\n"
                             "True in everything that was copied, pickled or loaded.");
  addKNN(module);
  addBayesian(module);
}

}  // namespace vxpy
