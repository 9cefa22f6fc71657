// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_BINDINGS_H_
#define VXCLSS_PYTHON_BINDINGS_H_

#include <pybind11/pybind11.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

// The count is in the object, so a holder may be made from a bare pointer at any time.
PYBIND11_DECLARE_HOLDER_TYPE(T, vxPtrHandle<T>, true)

namespace vxpy {

namespace py = pybind11;

/// Python's object for a shared one: of its most derived class that Python knows, and the same one
/// as long as it lives. None for an empty handle.
///
/// Constness is dropped, so only classes without mutators in Python may come this way.
template <class T>
py::object wrapped(const vxPtrHandle_const<T>& handle) {
  return py::cast(const_cast<T*>(handle.get()), py::return_value_policy::take_ownership);
}

// Each adds what its source is named for; bases come before what derives from them.
void addErrors(py::module_& module);
void addArchives(py::module_& module);
void addInterrupts(py::module_& module);
void addPatterns(py::module_& module);
void addCosts(py::module_& module);
void addDistributionTypes(py::module_& module);
void addResults(py::module_& module);
void addParams(py::module_& module);
void addTrees(py::module_& module);
void addDensities(py::module_& module);
void addClassifiers(py::module_& module);
void addTool(py::module_& module);
void addRules(py::module_& module);
void addGenerators(py::module_& module);
void addModels(py::module_& module);

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_BINDINGS_H_
