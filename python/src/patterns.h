// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_PATTERNS_H_
#define VXCLSS_PYTHON_PATTERNS_H_

#include <string>

#include "bindings.h"

namespace vxpy {

/// A pattern of a FeaturePattern or a list of numbers, where NaN is invalid.
vxFeaturePattern patternFrom(const py::object& object);

/// The numbers of an array as Python shows a list of them.
std::string shownNumbers(const py::object& array);

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_PATTERNS_H_
