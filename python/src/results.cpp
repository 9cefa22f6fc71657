// SPDX-License-Identifier: MIT
#include "results.h"

#include <pybind11/stl.h>

#include <string>
#include <vector>

#include "archive.h"
#include "text.h"

namespace vxpy {
namespace {

using Category = vxClassifierCategoryResult;
using Result = vxClassifierResult;

std::string shownCategory(const Category& category) {
  return "CategoryResult(" + std::to_string(category.categoryLabel()) +
         ", match_score=" + shown(category.matchScore()) +
         ", class_score=" + shown(category.classScore()) +
         ", expected_cost=" + shown(category.expectedCost()) + ")";
}

void addCategory(py::module_& module) {
  py::class_<Category> cls(module, "CategoryResult", py::is_final(),
                           "What a classification says of one category\n"
                           "(vxClassifierCategoryResult). Never changes.");
  cls.def(py::init<long, double, double, double>(), py::arg("category_label"),
          py::arg("match_score") = 1.0, py::arg("class_score") = 1.0,
          py::arg("expected_cost") = 0.0,
          "Raises BadLabel for a negative label; BadParams for a score outside [0, 1] or a cost\n"
          "below 0.");
  cls.def_property_readonly("category_label", &Category::categoryLabel,
                            "Label of the category, >= 0.");
  cls.def_property_readonly("match_score", &Category::matchScore,
                            "How well the pattern matches the category, [0, 1].");
  cls.def_property_readonly("class_score", &Category::classScore,
                            "The category's posterior, [0, 1].");
  cls.def_property_readonly("expected_cost", &Category::expectedCost,
                            "Expected cost of deciding for the category, >= 0.");
  cls.def(
      "__eq__", [](const Category& a, const Category& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const Category& self) { return shownCategory(self); });
  addValueArchive(cls, 0L, 0.0, 0.0, 0.0);
}

void addResult(py::module_& module) {
  py::class_<Result> cls(
      module, "Result", py::is_final(),
      "What a classification says of every category, the cheapest decision first\n"
      "(vxClassifierResult). A sequence of CategoryResult that never changes.");
  cls.def(py::init([](const std::vector<Category>& categories, double factor,
                      const vxClassifierFrequencies* frequencies, const vxClassifierCosts* costs) {
            if (categories.empty() && frequencies == nullptr && costs == nullptr) return Result();
            if (frequencies == nullptr && costs == nullptr) return Result(categories, factor);
            return Result(categories, frequencies ? *frequencies : vxClassifierFrequencies(1.0),
                          costs ? *costs : vxClassifierCosts(1.0), factor);
          }),
          py::arg("category_results") = std::vector<Category>(),
          py::arg("match_score_factor_log") = 0.0, py::kw_only(),
          py::arg("frequencies") = py::none(), py::arg("costs") = py::none(),
          "From categories whose class scores and expected costs are known, or, given frequencies\n"
          "or costs, from their match scores alone.\n\n"
          "Raises BadParams for two equal labels, then if no score is above 0.");
  cls.def_property_readonly("category_results", &Result::categoryResults,
                            "A new list, ascending by expected cost.");
  cls.def_property_readonly("match_score_factor_log", &Result::matchScoreFactorLog,
                            "Natural logarithm of the factor by which match scores were scaled.");
  cls.def_property_readonly(
      "label",
      [](const Result& self) -> py::object {
        if (self.categoryResults().empty()) return py::none();
        return py::int_(self.categoryResults().front().categoryLabel());
      },
      "Label of the cheapest decision; None without categories.");
  cls.def("__len__", [](const Result& self) { return self.categoryResults().size(); });
  cls.def(
      "__getitem__",
      [](const Result& self, std::ptrdiff_t index) {
        const auto size = static_cast<std::ptrdiff_t>(self.categoryResults().size());
        if (index < 0) index += size;
        if (index < 0 || index >= size) throw py::index_error("no category at this index");
        return self.categoryResults()[static_cast<std::size_t>(index)];
      },
      py::arg("index"));
  cls.def(
      "__eq__", [](const Result& a, const Result& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", &shownResult);
  addValueArchive(cls);
}

}  // namespace

std::string shownResult(const Result& result) {
  std::string text = "Result([";
  const char* separator = "";
  for (const Category& category : result.categoryResults()) {
    text += separator + shownCategory(category);
    separator = ", ";
  }
  return text + "], match_score_factor_log=" + shown(result.matchScoreFactorLog()) + ")";
}

void addResults(py::module_& module) {
  addCategory(module);
  addResult(module);
}

}  // namespace vxpy
