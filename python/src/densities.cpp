// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <memory>
#include <string>

#include "archive.h"
#include "arrays.h"
#include "bindings.h"
#include "patterns.h"
#include "row_work.h"
#include "text.h"

namespace vxpy {
namespace {

using Density = vx_ProbabilityDensityFunction;
using Normal = vx_PDFMultivariateNormal;
using Binomial = vx_PDFBinomial;
using Model = vx_CategoryModelBayesian;

py::array_t<double> arrayOf(const vxNMMatrix& matrix) {
  py::array_t<double> array({matrix.rows(), matrix.columns()});
  for (long i = 0; i < matrix.rows(); ++i) {
    for (long j = 0; j < matrix.columns(); ++j) array.mutable_at(i, j) = matrix.element(i, j);
  }
  return array;
}

void addDensityClasses(py::module_& module) {
  py::class_<Density, vxPtrHandle<Density>> base(
      module, "Density",
      "A probability density over a group of measurements (vx_ProbabilityDensityFunction).\n"
      "What a classifier hands out never changes.");
  base.def(
      "log_value",
      [](const Density& self, const py::object& pattern) {
        return self.logValue(patternFrom(pattern));
      },
      py::arg("pattern"),
      "Natural logarithm of the density at a FeaturePattern or a list of numbers, which hold\n"
      "the group's measurements only; over the valid ones, so 0 if there are none.\n\n"
      "Raises InsufficientTrainData where there were too few samples; for a pattern of another\n"
      "dimension StatusError (normal) or NotSupported (binomial); BadParams for a value above\n"
      "the largest of a binomial density.");
  base.def(
      "log_values",
      [](const Density& self, const py::object& X) {
        const Rows rows(X, "X");
        py::array_t<double> values(rows.size());
        double* const out = values.mutable_data();
        forEachRow(rows.size(), 1, nullptr, [&]() -> RowWork {
          const auto maker = std::make_shared<PatternMaker>(rows.width());
          return [&, maker](std::ptrdiff_t row) {
            rows.read(row, maker->values());
            out[row] = self.logValue(maker->make());
          };
        });
        return values;
      },
      py::arg("X"),
      "log_value() of each row of X, a new array. What it raises has `row` set; Ctrl-C ends it.");
  base.def(
      "__eq__", [](const Density& a, const Density& b) { return a.isEquivalent(b); },
      py::is_operator());

  py::class_<Normal, Density, vxPtrHandle<Normal>> normal(
      module, "NormalDensity", py::is_final(),
      "A multivariate normal density (vx_PDFMultivariateNormal).");
  normal.def_property_readonly(
      "mean", [](const Normal& self) { return arrayOf(self.mean()).attr("reshape")(-1); },
      "A new array of d numbers.");
  normal.def_property_readonly(
      "covariance", [](const Normal& self) { return arrayOf(self.covariance()); },
      "A new array, d x d; the variance of a measurement with fewer than two samples is -0.0.");
  normal.def_property_readonly("sample_count", &Normal::sampleCount,
                               "Samples with at least one valid measurement.");
  normal.def_property_readonly("is_valid", &Normal::isValid, "Whether there was a sample.");
  normal.def("__repr__", [](const Normal& self) {
    return "<NormalDensity of " + std::to_string(self.mean().rows()) + " measurements, " +
           std::to_string(self.sampleCount()) + " samples>";
  });
  addSharedArchive(normal);

  py::class_<Binomial, Density, vxPtrHandle<Binomial>> binomial(
      module, "BinomialDensity", py::is_final(),
      "A binomial density of one measurement (vx_PDFBinomial).");
  binomial.def_property_readonly("theta", &Binomial::theta, "Success probability, [0, 1].");
  binomial.def_property_readonly("num_trials", &Binomial::numTrials, "0 until it was estimated.");
  binomial.def_property_readonly(
      "maximum_value", &Binomial::maximumValue,
      "Largest value of the measurement, in its own unit; it stands for as many successes as trials.");
  binomial.def("__repr__", [](const Binomial& self) {
    return "<BinomialDensity of " + std::to_string(self.numTrials()) + " trials, theta " +
           shown(self.theta()) + ", maximum " + shown(self.maximumValue()) + ">";
  });
  addSharedArchive(binomial, vxFeaturePattern({1.0}, {}));
}

void addModel(py::module_& module) {
  py::class_<Model, vxPtrHandle<Model>> cls(
      module, "CategoryModelBayesian", py::is_final(),
      "One category as a product of independent densities over groups of measurements\n"
      "(vx_CategoryModelBayesian). What a classifier hands out never changes.");
  cls.def_property_readonly(
      "category_label", [](const Model& self) { return self.categoryLabel(); },
      "Label of the category, >= 0.");
  cls.def_property_readonly(
      "num_measurements", [](const Model& self) { return self.numMeasurements(); },
      "Measurements of a pattern that the model was trained on.");
  cls.def_property_readonly("measurement_groups", &Model::measurementGroups,
                            "A new list of lists of measurement indices.");
  cls.def_property_readonly(
      "densities",
      [](const Model& self) {
        py::list densities;
        for (const auto& density : self.densities()) densities.append(wrapped(density));
        return densities;
      },
      "The Density of each group.");
  cls.def(
      "match_score",
      [](const Model& self, const py::object& pattern) {
        return self.matchScore(patternFrom(pattern), nullptr, 0);
      },
      py::arg("pattern"),
      "Log-likelihood of the category for a FeaturePattern or a list of numbers.\n\n"
      "Raises InsufficientTrainData, and what a density raises.");
  cls.def(
      "__eq__", [](const Model& a, const Model& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const Model& self) {
    return "<CategoryModelBayesian of category " + std::to_string(self.categoryLabel()) + ": " +
           std::to_string(self.measurementGroups().size()) + " densities over " +
           std::to_string(self.numMeasurements()) + " measurements>";
  });
  addSharedArchive(cls);
}

}  // namespace

void addDensities(py::module_& module) {
  addDensityClasses(module);
  addModel(module);
}

}  // namespace vxpy
