// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include "bindings.h"

namespace vxpy {
namespace {

using Distributions = std::vector<std::pair<double, double>>;

std::vector<vxPair<double>> pairsOf(const Distributions& distributions) {
  std::vector<vxPair<double>> pairs;
  for (const auto& [mean, spread] : distributions) pairs.emplace_back(mean, spread);
  return pairs;
}

/// A generator can't be asked for what it was made of, so that is kept beside it.
struct ClassGenerator : vx_ClassDataGenerator {
  ClassGenerator(const Distributions& ofMeasurements, long number)
      : vx_ClassDataGenerator(pairsOf(ofMeasurements), number),
        distributions(ofMeasurements),
        numPatterns(number) {}

  py::tuple arguments() const { return py::make_tuple(distributions, numPatterns); }

  Distributions distributions;
  long numPatterns;
};

struct TotalGenerator : vx_TotalDataGenerator {
  explicit TotalGenerator(const std::vector<ClassGenerator>& ofCategories)
      : vx_TotalDataGenerator({ofCategories.begin(), ofCategories.end()}),
        generators(ofCategories) {}

  py::tuple arguments() const { return py::make_tuple(generators); }

  std::vector<ClassGenerator> generators;
};

/// Adds what the two kinds have in common.
template <class Class>
void addGenerator(Class& cls, const char* what) {
  using Generator = typename Class::type;
  cls.def(
      "generate_data",
      [](Generator& self) {
        return vxPtrHandle<vxClassifierDataProviderMemory>(
            new vxClassifierDataProviderMemory(self.generateData()));
      },
      what);
  cls.def("__repr__", [](const Generator& self) {
    std::string text;
    for (const py::handle argument : self.arguments()) {
      text += (text.empty() ? "" : ", ") + py::repr(argument).cast<std::string>();
    }
    return py::type::of<Generator>().attr("__name__").template cast<std::string>() + "(" + text +
           ")";
  });
  cls.def("__reduce__", [](const py::object& self) {
    return py::make_tuple(py::type::of(self), self.cast<const Generator&>().arguments());
  });
}

}  // namespace

void addGenerators(py::module_& module) {
  py::class_<ClassGenerator> one(
      module, "ClassDataGenerator", py::is_final(),
      "Makes random patterns of one category, each measurement from a normal distribution\n"
      "(vx_ClassDataGenerator). Every generator starts from the same seed, so a copy, or one that\n"
      "was pickled, gives the same patterns.");
  one.def(py::init<const Distributions&, long>(), py::arg("distributions") = Distributions(),
          py::arg("num_patterns") = 0,
          "One pair of mean and standard deviation a measurement. Nothing is checked.");
  addGenerator(one,
               "A DataProvider of label 0; the same patterns at every call.\n\n"
               "Without distributions each call adds another batch of patterns without\n"
               "measurements, and a copy begins anew.");

  py::class_<TotalGenerator> total(
      module, "TotalDataGenerator", py::is_final(),
      "Combines generators of several categories, in shuffled order (vx_TotalDataGenerator).\n"
      "It hands out only as many patterns of a category, and in all, as a pattern has\n"
      "measurements. A copy, or one that was pickled, gives the same patterns.");
  total.def(py::init<const std::vector<ClassGenerator>&>(),
            py::arg("generators") = std::vector<ClassGenerator>(),
            "The place of a ClassDataGenerator is its category's label.");
  addGenerator(
      total,
      "A DataProvider. Raises BadIndex if a category has fewer patterns than measurements;\n"
      "BadFeatures if the generators differ in their number of measurements.");
}

}  // namespace vxpy
