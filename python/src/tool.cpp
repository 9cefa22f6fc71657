// SPDX-License-Identifier: MIT
#include "tool.h"

#include <pybind11/stl.h>

#include <string>
#include <utility>

#include "archive.h"
#include "arrays.h"
#include "classifiers.h"
#include "interrupts.h"
#include "row_work.h"
#include "text.h"
#include "trees.h"

namespace vxpy {
namespace {

using Provider = vxClassifierDataProviderMemory;
using Params = vxClassifierTrainParams;

Tool& train(Tool& tool, const Provider& data, const Params& params) {
  const Provider copy(data);  // other threads may add to the original meanwhile
  tool.replaceWith(vxClassifierTool(), [&](vxClassifierTool& fresh) {
    runWatched(nullptr, [&] { fresh.train(copy, params); });
  });
  return tool;
}

Tool& trainTree(Tool& tool, const vxDecisionTree& tree) {
  tool.replaceWith(vxClassifierTool(), [&](vxClassifierTool& fresh) { fresh.train(tree); });
  return tool;
}

Tool& retrain(Tool& tool, const Params& params) {
  tool.replaceWith(tool.get(), [&](vxClassifierTool& copy) {
    runWatched(nullptr, [&] { copy.retrain(params); });
  });
  return tool;
}

vxClassifierResult runOne(const Tool& tool, const vxFeaturePattern& pattern) {
  const std::shared_ptr<const void> kept = tool.keep();
  const vxClassifierTool& held = tool.get();
  vxClassifierResult result;
  runWatched(&tool.slowness(), [&] { held.run(pattern, result); });
  return result;
}

py::object runMany(const Tool& tool, const py::object& X, const py::object& jobs) {
  const std::shared_ptr<const void> kept = tool.keep();
  return runBatch(tool.runner(), X, jobs);
}

py::object runAny(const Tool& tool, const py::object& X, const py::object& jobs) {
  if (py::isinstance<vxFeaturePattern>(X)) {
    refuseJobs(jobs);
    return py::cast(runOne(tool, X.cast<const vxFeaturePattern&>()));
  }
  return runMany(tool, X, jobs);
}

py::object decide(const Tool& tool, const py::object& X, const py::object& jobs) {
  const std::shared_ptr<const void> kept = tool.keep();
  return decideBatch(tool.runner(), X, jobs);
}

py::object classScores(const Tool& tool, const py::object& X, const py::object& jobs) {
  const std::shared_ptr<const void> kept = tool.keep();
  return scoreBatch(tool.runner(), X, jobs);
}

std::string shownTool(const Tool& tool) {
  if (!tool.get().isTrained()) return "<Tool, untrained>";
  const py::object classifier = classifierOf(tool.get().classifier(), tool.keep());
  return "<Tool with " + shown(classifier) + ">";
}

}  // namespace

const BatchRunner& Tool::runner() const {
  State& state = *state_;
  if (!state.runner) {
    if (!state.tool.isTrained()) {
      vxClassifierResult result;
      state.tool.run(vxFeaturePattern({}, {}), result);  // throws NotTrained
    }
    state.runner = runnerOf(state.tool.classifier(), state.slowness);
  }
  return *state.runner;
}

void storeTool(vxArchive& archive, const vxClassifierTool& tool) {
  archive || const_cast<vxClassifierTool&>(tool);  // a transfer runs both ways
}

void loadTool(vxArchive& archive, vxClassifierTool& tool) {
  archive || tool;
  restoreParams(tool);
}

void addTool(py::module_& module) {
  py::class_<Tool> cls(
      module, "Tool",
      "Trains, runs, copies and archives a classifier of any technique (vxClassifierTool).\n\n"
      "Runs release the GIL and may go on in many threads; a run goes on with what it has begun\n"
      "with when another thread trains the tool. A training that fails leaves the tool as it was.");
  cls.def(py::init<>(), "A tool without a classifier.");
  cls.def(
      "train", &train, py::arg("data"), py::arg("params"),
      "Trains from a DataProvider with the technique that `params` select. Returns the tool.\n\n"
      "Raises what the technique says of data and parameters; InsufficientTrainData if it could\n"
      "not run and params.throw_if_not_ready is set.");
  cls.def("train", &trainTree, py::arg("tree"),
          "Takes a DecisionTree, about which nothing is checked. Returns the tool.");
  cls.def("retrain", &retrain, py::arg("params"),
          "Takes new parameters of the same technique, without the data. Returns the tool.\n\n"
          "Raises NotTrained, BadMethod, then what the technique and the check raise.");
  cls.def("run", &runOne, py::arg("X"));
  cls.def(
      "run", &runAny, py::arg("X"), py::arg("n_jobs") = py::none(),
      "Classifies a FeaturePattern, which gives a Result, or the rows of X (n x d), which gives\n"
      "a BatchResult: bit for bit what one row after another gives.\n\n"
      "X is read where it lies if it holds floats or integers, in any order and with any\n"
      "strides; NaN is an invalid measurement. `n_jobs` threads share the rows: None is one,\n"
      "-1 as many as there are processors.\n\n"
      "Raises NotTrained; BadFeatures for another number of columns; what the technique says of\n"
      "the first row that it refuses, with `row` set; KeyboardInterrupt on Ctrl-C. TypeError for\n"
      "`n_jobs` with a FeaturePattern.");
  cls.def("run_batch", &runMany, py::arg("X"), py::arg("n_jobs") = py::none(),
          "run() for the rows of X.");
  cls.def("decide", &decide, py::arg("X"), py::arg("n_jobs") = py::none(),
          "Only the labels of run(X), an array of int64 (n).");
  cls.def("class_scores", &classScores, py::arg("X"), py::arg("n_jobs") = py::none(),
          "Only the class scores of run(X), an array of float64 (n, c).");
  cls.def(
      "untrain", [](Tool& self) { self = Tool(); }, "Forgets what was trained.");
  cls.def_property_readonly(
      "is_trained", [](const Tool& self) { return self.get().isTrained(); },
      "Whether it was trained; a tool trained without the check may still lack the data to run.");
  cls.def_property_readonly(
      "category_labels", [](const Tool& self) { return arrayOf(self.runner().categories); },
      "Labels of the columns of a batch, ascending; a new array of int64. Raises NotTrained.");
  cls.def_property_readonly(
      "measurement_counts",
      [](const Tool& self) -> py::object {
        const BatchRunner& runner = self.runner();
        if (const auto* tree =
                dynamic_cast<const vx_ClassifierDecisionTree*>(self.get().classifier().get())) {
          return py::make_tuple(askedMeasurements(*tree->decisionTree()), py::none());
        }
        return py::make_tuple(runner.leastWidth, runner.mostWidth);
      },
      "How many measurements the rows of a batch have, (least, most). For a decision tree as many as\n"
      "its questions ask about, and None: further ones do no harm. Raises NotTrained.");
  cls.def_property_readonly(
      "train_params", [](const Tool& self) { return wrapped(self.get().trainParams()); },
      "Parameters of the last training. Raises NotTrained; BadMethod for a decision tree.");
  cls.def_property_readonly(
      "decision_tree", [](const Tool& self) { return wrapped(self.get().decisionTree()); },
      "Raises NotTrained; BadMethod for another technique.");
  cls.def_property_readonly(
      "classifier",
      [](const Tool& self) { return classifierOf(self.get().classifier(), self.keep()); },
      "The Classifier that the tool holds, which can't be changed; None if there is none.");
  cls.def(
      "__eq__", [](const Tool& a, const Tool& b) { return a.get() == b.get(); }, py::is_operator());
  cls.def("__repr__", &shownTool);
  addArchive(
      cls, [](vxArchive& archive, const Tool& tool) { storeTool(archive, tool.get()); },
      [](vxArchive& archive) {
        auto tool = std::make_unique<Tool>();
        tool->replaceWith(vxClassifierTool(),
                          [&](vxClassifierTool& fresh) { loadTool(archive, fresh); });
        return tool;
      });
}

}  // namespace vxpy
