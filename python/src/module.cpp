// SPDX-License-Identifier: MIT
#include "bindings.h"

namespace py = pybind11;

namespace {

/// The iterator by index that Python makes of a sequence anyway, under the name that type checkers
/// look for.
void addIteration(py::object cls) {
  cls.attr("__iter__") = py::cpp_function(
      [](const py::object& self) {
        return py::reinterpret_steal<py::object>(PySeqIter_New(self.ptr()));
      },
      py::name("__iter__"), py::is_method(cls));
}

}  // namespace

PYBIND11_MODULE(_core, module) {
  module.doc() = "The compiled part of vxclss; import vxclss instead.";
  module.attr("__version__") = VXCLSS_VERSION;
  vxpy::addErrors(module);
  vxpy::addArchives(module);
  vxpy::addInterrupts(module);
  vxpy::addPatterns(module);
  vxpy::addCosts(module);
  vxpy::addDistributionTypes(module);
  vxpy::addResults(module);
  vxpy::addParams(module);
  vxpy::addTrees(module);
  vxpy::addDensities(module);
  vxpy::addClassifiers(module);
  vxpy::addTool(module);
  vxpy::addRules(module);
  vxpy::addGenerators(module);
  vxpy::addModels(module);
  addIteration(module.attr("DataProvider"));
  addIteration(module.attr("Result"));
}
