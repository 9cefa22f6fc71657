// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include "bindings.h"

namespace vxpy {
namespace {

using ClassGenerator = vx_ClassDataGenerator;
using TotalGenerator = vx_TotalDataGenerator;

template <class Generator>
vxPtrHandle<vxClassifierDataProviderMemory> generate(Generator& generator) {
  return vxPtrHandle<vxClassifierDataProviderMemory>(
      new vxClassifierDataProviderMemory(generator.generateData()));
}

}  // namespace

void addGenerators(py::module_& module) {
  py::class_<ClassGenerator>(
      module, "ClassDataGenerator",
      "Makes random patterns of one category, each measurement from a normal distribution\n"
      "(vx_ClassDataGenerator). Every generator starts from the same seed.")
      .def(py::init([](const std::vector<std::pair<double, double>>& distributions, long number) {
             std::vector<vxPair<double>> pairs;
             for (const auto& [mean, spread] : distributions) pairs.emplace_back(mean, spread);
             return ClassGenerator(pairs, number);
           }),
           py::arg("distributions") = std::vector<std::pair<double, double>>(),
           py::arg("num_patterns") = 0, "One pair of mean and standard deviation a measurement.")
      .def("generate_data", &generate<ClassGenerator>,
           "A DataProvider of label 0; the same patterns at every call.");
  py::class_<TotalGenerator>(
      module, "TotalDataGenerator",
      "Combines generators of several categories, in shuffled order (vx_TotalDataGenerator).\n"
      "It hands out only as many patterns of a category, and in all, as a pattern has\n"
      "measurements.")
      .def(py::init<const std::vector<ClassGenerator>&>(),
           py::arg("generators") = std::vector<ClassGenerator>(),
           "The place of a ClassDataGenerator is its category's label.")
      .def("generate_data", &generate<TotalGenerator>,
           "A DataProvider. Raises BadIndex if a category has fewer patterns than measurements;\n"
           "BadFeatures if the generators differ in their number of measurements.");
}

}  // namespace vxpy
