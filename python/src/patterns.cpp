// SPDX-License-Identifier: MIT
#include "patterns.h"

#include <pybind11/stl.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "archive.h"
#include "arrays.h"
#include "bindings.h"

namespace vxpy {
namespace {

using Pattern = vxFeaturePattern;
using PatternHandle = vxPtrHandle_const<Pattern>;
using Provider = vxClassifierDataProviderMemory;

void copyTo(const Pattern& pattern, double* values) {
  const std::vector<double>& stored = pattern.featureMeasurements(false);
  for (std::size_t i = 0; i < stored.size(); ++i) {
    values[i] = pattern.isValid(static_cast<long>(i)) ? stored[i]
                                                      : std::numeric_limits<double>::quiet_NaN();
  }
}

py::array_t<double> withNaN(const Pattern& pattern) {
  py::array_t<double> array(pattern.numMeasurements());
  copyTo(pattern, array.mutable_data());
  return array;
}

vxPtrHandle<Pattern> newPattern(const py::object& measurements, const std::vector<long>& invalid,
                                bool nanIsInvalid) {
  std::vector<double> values = numbers(measurements, "measurements");
  std::vector<long> hidden = invalid;
  for (std::size_t i = 0; nanIsInvalid && i < values.size(); ++i) {
    if (!std::isnan(values[i])) continue;
    hidden.push_back(static_cast<long>(i));
    values[i] = 0.0;
  }
  return vxPtrHandle<Pattern>(new Pattern(values, hidden));
}

void addPattern(py::module_& module) {
  py::class_<Pattern, vxPtrHandle<Pattern>> cls(
      module, "FeaturePattern",
      "One sample: measurements, each with a validity flag (vxFeaturePattern). Never changes.\n\n"
      "Equality compares numbers and flags exactly, the numbers of invalid measurements too.");
  cls.def(
      py::init(&newPattern), py::arg("measurements"), py::arg("invalid") = std::vector<long>(),
      py::kw_only(), py::arg("nan_is_invalid") = true,
      "A pattern of a list of numbers. Measurements whose indices are in `invalid` are invalid,\n"
      "and so is every NaN, which is stored as 0, unless `nan_is_invalid` is False.\n\n"
      "Raises BadIndex for an index outside the list.");
  cls.def_property_readonly("num_measurements", &Pattern::numMeasurements,
                            "Number of measurements, the invalid ones included.");
  cls.def_property_readonly("num_invalid", &Pattern::numInvalid, "Number of invalid measurements.");
  cls.def_property_readonly("invalid_feature_indices", &Pattern::invalidFeatureIndices,
                            "Indices of the invalid measurements, ascending.");
  cls.def_property_readonly(
      "valid",
      [](const Pattern& self) {
        py::array_t<bool> flags(self.numMeasurements());
        for (long i = 0; i < self.numMeasurements(); ++i) flags.mutable_at(i) = self.isValid(i);
        return flags;
      },
      "Validity flags, a new array of bool.");
  cls.def("is_valid", &Pattern::isValid, py::arg("index"),
          "False also past the last measurement. Raises BadIndex for an index below 0.");
  cls.def("feature_measurement", &Pattern::featureMeasurement, py::arg("index"),
          py::arg("throw_if_invalid") = true,
          "One measurement. Raises BadIndex for an index below 0; BadFeatures for an invalid\n"
          "measurement or one past the last, or gives its stored number and 0 there.");
  cls.def(
      "feature_measurements",
      [](const Pattern& self, bool throwIfInvalid) {
        return arrayOf(self.featureMeasurements(throwIfInvalid));
      },
      py::arg("throw_if_invalid") = false,
      "The stored numbers, a new array. Raises BadFeatures if asked to and one is invalid.");
  cls.def("to_array", &withNaN, "The measurements with NaN for invalid ones, a new array.");
  cls.def(
      "__array__",
      [](const Pattern& self, const py::object& type) -> py::object {
        py::object array = withNaN(self);
        return type.is_none() ? array : array.attr("astype")(type);
      },
      py::arg("dtype") = py::none());
  cls.def("__len__", &Pattern::numMeasurements);
  cls.def(
      "__eq__", [](const Pattern& a, const Pattern& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const Pattern& self) {
    return "FeaturePattern(" + shownNumbers(withNaN(self)) + ")";
  });
  addSharedArchive(cls, std::vector<double>(), std::vector<long>());
}

PatternHandle patternOf(const py::object& object) {
  if (py::isinstance<Pattern>(object)) return PatternHandle(object.cast<const Pattern*>());
  return newPattern(object, {}, true);
}

// Fewer rows are not worth to wait for the GIL again, which may take 5 ms.
constexpr std::ptrdiff_t kMany = 4096;

void extend(Provider& provider, const py::object& X, const py::object& y) {
  const Rows rows(X, "X");
  const std::vector<long> labels = wholeNumbers(y, "y");
  if (rows.size() != static_cast<std::ptrdiff_t>(labels.size())) {
    throw py::value_error("X has " + std::to_string(rows.size()) + " rows and y has " +
                          std::to_string(labels.size()) + " labels");
  }
  std::vector<PatternHandle> patterns;
  patterns.reserve(labels.size());
  PatternMaker maker(rows.width());
  {
    std::optional<py::gil_scoped_release> release;
    if (rows.size() > kMany) release.emplace();
    for (std::ptrdiff_t i = 0; i < rows.size(); ++i) {
      rows.read(i, maker.values());
      patterns.emplace_back(new Pattern(maker.make()));
    }
  }
  if (provider.numPatterns() == 0) {
    provider.data(patterns, labels);
    return;
  }
  // What data() would refuse of all patterns, the new ones and one of the others show.
  std::vector<PatternHandle> shown = patterns;
  std::vector<long> shownLabels = labels;
  shown.insert(shown.begin(), provider.featurePattern(0));
  shownLabels.insert(shownLabels.begin(), provider.categoryLabel(0));
  Provider().data(shown, shownLabels);
  for (std::size_t i = 0; i < labels.size(); ++i) provider.addData(patterns[i], labels[i]);
}

py::array_t<double> matrixOf(const Provider& provider) {
  const long rows = provider.numPatterns();
  const long width = provider.numMeasurements();
  py::array_t<double> matrix({rows, width});
  for (long i = 0; i < rows; ++i) {
    copyTo(*provider.featurePattern(i), matrix.mutable_data() + i * width);
  }
  return matrix;
}

py::array_t<std::int64_t> labelsOf(const Provider& provider) {
  py::array_t<std::int64_t> labels(provider.numPatterns());
  for (long i = 0; i < provider.numPatterns(); ++i) {
    labels.mutable_at(i) = provider.categoryLabel(i);
  }
  return labels;
}

void addProvider(py::module_& module) {
  py::class_<Provider, vxPtrHandle<Provider>> cls(
      module, "DataProvider",
      "Patterns and their labels in memory (vxClassifierDataProviderMemory).\n\n"
      "A label is >= 0 for a category, -1 for an unknown one. Equality compares patterns, labels,\n"
      "name and description.");
  cls.def(py::init([](const py::object& X, const py::object& y, const std::wstring& name,
                      const std::wstring& description) {
            vxPtrHandle<Provider> provider(new Provider);
            if (!X.is_none() || !y.is_none()) extend(*provider, X, y);
            provider->setName(name);
            provider->setDescription(description);
            return provider;
          }),
          py::arg("X") = py::none(), py::arg("y") = py::none(), py::kw_only(), py::arg("name") = "",
          py::arg("description") = "",
          "A provider of the rows of X (n x d, NaN is invalid) and their labels y (n).\n\n"
          "Raises ValueError for shapes that don't fit; BadLabel for a label below -1.");
  cls.def(
      "append",
      [](Provider& self, const py::object& pattern, long label) {
        self.addData(patternOf(pattern), label);
      },
      py::arg("pattern"), py::arg("label"),
      "Adds one pattern, a FeaturePattern or a list of numbers (vxClassifier...::addData).\n\n"
      "Raises BadFeatures for another number of measurements; BadLabel for a label below -1.");
  cls.def("extend", &extend, py::arg("X"), py::arg("y"),
          "Adds the rows of X and their labels; all of them or, if one is refused, none.");
  cls.def_property("name", &Provider::name, &Provider::setName,
                   "Any text; a nearest-neighbour classifier keeps it with the patterns.");
  cls.def_property("description", &Provider::description, &Provider::setDescription,
                   "Any text, kept as the name is.");
  cls.def_property_readonly("num_measurements", &Provider::numMeasurements,
                            "Measurements of each pattern; 0 without patterns.");
  cls.def_property_readonly("num_patterns", &Provider::numPatterns,
                            "Number of patterns, also len(provider).");
  cls.def(
      "feature_pattern",
      [](const Provider& self, long index) { return wrapped(self.featurePattern(index)); },
      py::arg("index"), "Raises BadIndex outside [0, num_patterns).");
  cls.def("category_label", &Provider::categoryLabel, py::arg("index"),
          "Raises BadIndex outside [0, num_patterns).");
  cls.def_property_readonly("labels", &labelsOf, "All labels, a new array of int64.");
  cls.def(
      "to_arrays",
      [](const Provider& self) { return py::make_tuple(matrixOf(self), labelsOf(self)); },
      "New arrays X (n x d, NaN for invalid) and y (n).");
  cls.def("__len__", &Provider::numPatterns);
  cls.def(
      "__getitem__",
      [](const Provider& self, long index) {
        if (index < 0) index += self.numPatterns();
        return py::make_tuple(wrapped(self.featurePattern(index)), self.categoryLabel(index));
      },
      py::arg("index"), "Pattern and label.");
  cls.def(
      "__eq__", [](const Provider& a, const Provider& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const Provider& self) {
    const std::string name = vfNarrow(self.name());
    return "<DataProvider" + (name.empty() ? name : " '" + name + "'") + " of " +
           std::to_string(self.numPatterns()) + " patterns x " +
           std::to_string(self.numMeasurements()) + " measurements>";
  });
  addSharedArchive(cls);
}

}  // namespace

vxFeaturePattern patternFrom(const py::object& object) { return *patternOf(object); }

std::string shownNumbers(const py::object& array) {
  constexpr std::size_t kMost = 12;  // of a long list the first ones tell enough
  const std::size_t size = py::len(array);
  if (size <= kMost) return py::str(array.attr("tolist")()).cast<std::string>();
  const py::object first = array[py::slice(0, kMost, 1)];
  std::string text = py::str(first.attr("tolist")()).cast<std::string>();
  text.pop_back();
  return text + ", ... " + std::to_string(size) + " numbers]";
}

void addPatterns(py::module_& module) {
  addPattern(module);
  addProvider(module);
}

}  // namespace vxpy
