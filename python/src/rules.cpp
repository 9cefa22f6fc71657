// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <memory>
#include <string>
#include <vector>

#include "archive.h"
#include "arrays.h"
#include "bindings.h"
#include "patterns.h"
#include "row_work.h"
#include "text.h"

namespace vxpy {
namespace {

using Score = vxClsFtSc;
using Ignore = vxClassifierFeatureScoreIgnore;
using OneSided = vxClassifierFeatureScoreOneSided;
using TwoSided = vxClassifierFeatureScoreTwoSided;
using Vector = vxClassifierFeatureVector;
using Rule = vxClassifierRule;
using Table = vxClassifierRuleTable;
using Handles = std::vector<vxPtrHandle<Score>>;

std::string joined(std::initializer_list<double> numbers) {
  std::string text;
  for (const double number : numbers) text += (text.empty() ? "" : ", ") + shown(number);
  return text;
}

void addScores(py::module_& module) {
  py::class_<Score, vxPtrHandle<Score>> base(
      module, "FeatureScore",
      "Maps a feature's value to a degree of membership in [0, 1], or to -1: the feature doesn't\n"
      "count (vxClsFtSc). Never changes, so rules may share one.");
  base.def(
      "score", [](const Score& self, double x) { return self.score(x); }, py::arg("x"),
      "The degree for a feature's value, [0, 1], or -1.\n\n"
      "Raises BadParams for x values that are out of order, which only an archive can hold.");
  base.def(
      "__eq__", [](const Score& a, const Score& b) { return a == b; }, py::is_operator());

  py::class_<Ignore, Score, vxPtrHandle<Ignore>> ignore(
      module, "FeatureScoreIgnore", py::is_final(),
      "A feature that doesn't count: -1 for every value.");
  ignore.def(py::init<>());
  ignore.def("__repr__", [](const Ignore&) { return "FeatureScoreIgnore()"; });
  addSharedArchive(ignore);

  py::class_<OneSided, Score, vxPtrHandle<OneSided>> one(
      module, "FeatureScoreOneSided", py::is_final(),
      "y0 up to x0, a straight line to y1 at x1, y1 up to the cut-off xc, 0 beyond; towards smaller\n"
      "values if xc < x0.");
  one.def(py::init([](double x0, double x1, double xc, double y0, double y1) {
            vxPtrHandle<OneSided> score(new OneSided);
            score->init(x0, x1, xc, y0, y1);
            return score;
          }),
          py::arg("x0") = 0.0, py::arg("x1") = 1.0, py::arg("xc") = 1.0, py::arg("y0") = 1.0,
          py::arg("y1") = 0.0,
          "Raises BadParams if y0 or y1 is outside [0, 1], or x1 not between x0 and xc.");
  one.def_property_readonly("x0", py::overload_cast<>(&OneSided::x0, py::const_),
                            "Up to here the score is y0, in the feature's unit.");
  one.def_property_readonly("x1", py::overload_cast<>(&OneSided::x1, py::const_),
                            "From here to the cut-off the score is y1, in the feature's unit.");
  one.def_property_readonly("xc", py::overload_cast<>(&OneSided::xc, py::const_),
                            "The cut-off, beyond which the score is 0, in the feature's unit.");
  one.def_property_readonly("y0", py::overload_cast<>(&OneSided::y0, py::const_),
                            "The score up to x0, [0, 1].");
  one.def_property_readonly("y1", py::overload_cast<>(&OneSided::y1, py::const_),
                            "The score from x1 to xc, [0, 1].");
  one.def("__repr__", [](const OneSided& s) {
    return "FeatureScoreOneSided(" + joined({s.x0(), s.x1(), s.xc(), s.y0(), s.y1()}) + ")";
  });
  addSharedArchive(one);
}

void addTwoSided(py::module_& module) {
  py::class_<TwoSided, Score, vxPtrHandle<TwoSided>> cls(
      module, "FeatureScoreTwoSided", py::is_final(),
      "Two one-sided functions for a band of good values: the low one below the smallest x value of\n"
      "the high one, the high one from there on.");
  cls.def(py::init([](double x0, double x1, double xc, double x0h, double x1h, double xch,
                      double y0, double y1, double y0h, double y1h) {
            vxPtrHandle<TwoSided> score(new TwoSided);
            score->init(x0, x1, xc, x0h, x1h, xch, y0, y1, y0h, y1h);
            return score;
          }),
          py::arg("x0") = 0.0, py::arg("x1") = -1.0, py::arg("xc") = -1.0, py::arg("x0h") = 0.0,
          py::arg("x1h") = 1.0, py::arg("xch") = 1.0, py::arg("y0") = 1.0, py::arg("y1") = 0.0,
          py::arg("y0h") = 1.0, py::arg("y1h") = 0.0,
          "Raises BadParams for a low x value above the smallest high one, and as the one-sided\n"
          "function does. By default a triangle: 1 at 0, falling to 0 at -1 and 1.");
  const auto property = [&cls](const char* name, double (TwoSided::*get)() const,
                               const char* meaning) {
    cls.def_property_readonly(name, get, meaning);
  };
  property("x0", &TwoSided::x0, "x0 of the low side, in the feature's unit.");
  property("x1", &TwoSided::x1, "x1 of the low side, in the feature's unit.");
  property("xc", &TwoSided::xc, "xc of the low side, in the feature's unit.");
  property("x0h", &TwoSided::x0h, "x0 of the high side, in the feature's unit.");
  property("x1h", &TwoSided::x1h, "x1 of the high side, in the feature's unit.");
  property("xch", &TwoSided::xch, "xc of the high side, in the feature's unit.");
  property("y0", &TwoSided::y0, "y0 of the low side, [0, 1].");
  property("y1", &TwoSided::y1, "y1 of the low side, [0, 1].");
  property("y0h", &TwoSided::y0h, "y0 of the high side, [0, 1].");
  property("y1h", &TwoSided::y1h, "y1 of the high side, [0, 1].");
  cls.def_property_readonly(
      "low", [](const TwoSided& self) { return vxPtrHandle<OneSided>(self.Low().clone()); },
      "The low side, a new FeatureScoreOneSided.");
  cls.def_property_readonly(
      "high", [](const TwoSided& self) { return vxPtrHandle<OneSided>(self.High().clone()); },
      "The high side, a new FeatureScoreOneSided.");
  cls.def("__repr__", [](const TwoSided& s) {
    return "FeatureScoreTwoSided(" +
           joined({s.x0(), s.x1(), s.xc(), s.x0h(), s.x1h(), s.xch(), s.y0(), s.y1(), s.y0h(),
                   s.y1h()}) +
           ")";
  });
  addSharedArchive(cls);
}

void addVector(py::module_& module) {
  py::class_<Vector> cls(module, "FeatureVector", py::is_final(),
                         "The feature values of one object (vxClassifierFeatureVector). There are\n"
                         "no validity flags: give NaN for a feature that could not be measured.");
  cls.def(py::init([](const py::object& values) { return Vector(numbers(values, "values")); }),
          py::arg("feature_values"));
  cls.def_property_readonly(
      "feature_values", [](const Vector& self) { return arrayOf(self.featureValues()); },
      "A new array.");
  cls.def("__len__", [](const Vector& self) { return self.featureValues().size(); });
  cls.def("__repr__", [](const Vector& self) {
    return "FeatureVector(" + shownNumbers(arrayOf(self.featureValues())) + ")";
  });
  addValueArchive(cls, std::vector<double>());
}

Vector vectorFrom(const py::object& object) {
  if (py::isinstance<Vector>(object)) return object.cast<Vector>();
  return Vector(numbers(object, "feature_vector"));
}

void addRule(py::module_& module) {
  py::class_<Rule> cls(module, "Rule", py::is_final(),
                       "One category's score function for each feature (vxClassifierRule). Never\n"
                       "changes.");
  cls.def(py::init([](const Handles& methods, long label) {
            for (const vxPtrHandle<Score>& method : methods) {
              if (method.isNull()) throw py::type_error("a scoring method is None");
            }
            Rule rule;
            rule.init(methods, label);
            return rule;
          }),
          py::arg("scoring_methods"), py::arg("label"),
          "Raises BadParams for a negative label or an empty list.");
  cls.def_property_readonly("scoring_methods", &Rule::scoringMethods,
                            "A new list of the FeatureScore of each feature, in their order.");
  cls.def_property_readonly("label", &Rule::label, "Label of the category, >= 0.");
  cls.def(
      "score",
      [](const Rule& self, const py::object& vector) { return self.score(vectorFrom(vector)); },
      py::arg("feature_vector"),
      "Geometric mean of the scores that count, for a FeatureVector or a list of numbers.\n\n"
      "Raises BadParams for another number of values.");
  cls.def(
      "__eq__", [](const Rule& a, const Rule& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const Rule& self) {
    return "Rule(" + shown(py::cast(self.scoringMethods())) + ", " + std::to_string(self.label()) +
           ")";
  });
  addValueArchive(cls);
}

/// Calls `put(row, vector)` for every row of X.
template <class Put>
void forEachVector(const Rows& rows, const py::object& jobs, const Put& put) {
  forEachRow(rows.size(), threadsOf(jobs), nullptr, [&]() -> RowWork {
    const auto values =
        std::make_shared<std::vector<double>>(static_cast<std::size_t>(rows.width()));
    return [&, values](std::ptrdiff_t row) {
      rows.read(row, values->data());
      put(row, Vector(*values));
    };
  });
}

py::object classify(const Table& table, const py::object& X, double threshold,
                    const py::object& jobs) {
  if (py::isinstance<Vector>(X)) {
    refuseJobs(jobs);
    return py::int_(table.classifyHardThreshold(X.cast<const Vector&>(), threshold));
  }
  const Rows rows(X, "X");
  const Table kept(table);  // other threads may train the table meanwhile
  py::array_t<std::int64_t> labels(rows.size());
  std::int64_t* const out = labels.mutable_data();
  forEachVector(rows, jobs, [&, out](std::ptrdiff_t row, const Vector& vector) {
    out[row] = kept.classifyHardThreshold(vector, threshold);
  });
  return std::move(labels);
}

py::array_t<double> ruleScores(const Table& table, const py::object& X, const py::object& jobs) {
  const Rows rows(X, "X");
  const std::vector<Rule> rules = table.rules();
  const auto width = static_cast<std::ptrdiff_t>(rules.size());
  py::array_t<double> scores({rows.size(), width});
  double* const out = scores.mutable_data();
  forEachVector(rows, jobs, [&, out](std::ptrdiff_t row, const Vector& vector) {
    double* score = out + row * width;
    for (const Rule& rule : rules) *score++ = rule.score(vector);
  });
  return scores;
}

void addTable(py::module_& module) {
  py::class_<Table> cls(
      module, "RuleTable",
      "Rules in order of precedence: the first one that scores above a threshold\n"
      "decides (vxClassifierRuleTable).");
  cls.def(py::init([](const std::vector<Rule>& rules) {
            Table table;
            if (!rules.empty()) table.train(rules);
            return table;
          }),
          py::arg("rules") = std::vector<Rule>(), "As train(); without rules it is not trained.");
  cls.def("train", &Table::train, py::arg("rules"),
          "Raises BadParams without rules, then for rules of different size.");
  cls.def_property_readonly("rules", &Table::rules, "A new list.");
  cls.def(
      "classify_hard_threshold", &classify, py::arg("X"), py::arg("hard_threshold"),
      py::arg("n_jobs") = py::none(),
      "The label of the first rule whose score is above the threshold, -1 if there is none: an\n"
      "int for a FeatureVector, an array of int64 for the rows of X (n x d).\n\n"
      "Raises BadParams for a threshold outside [0, 1] or rows of another size; NotTrained.");
  cls.def("rule_scores", &ruleScores, py::arg("X"), py::arg("n_jobs") = py::none(),
          "The score of every rule for every row of X, a new array (n x rules).");
  cls.def("__len__", [](const Table& self) { return self.rules().size(); });
  cls.def(
      "__eq__", [](const Table& a, const Table& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const Table& self) {
    return "<RuleTable of " + std::to_string(self.rules().size()) + " rules>";
  });
  addValueArchive(cls);
}

}  // namespace

void addRules(py::module_& module) {
  addScores(module);
  addTwoSided(module);
  addVector(module);
  addRule(module);
  addTable(module);
}

}  // namespace vxpy
