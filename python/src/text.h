// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_TEXT_H_
#define VXCLSS_PYTHON_TEXT_H_

#include <string>

#include "bindings.h"

namespace vxpy {

/// As Python shows it.
inline std::string shown(const py::object& value) { return py::repr(value).cast<std::string>(); }
inline std::string shown(double number) { return shown(py::float_(number)); }

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_TEXT_H_
