// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_ERRORS_H_
#define VXCLSS_PYTHON_ERRORS_H_

#include <exception>

namespace vxpy {

/// Throws what Python raises for `error`, an error of the library with the row in which it arose;
/// others pass as they are. Needs the GIL.
[[noreturn]] void throwFromRow(const std::exception_ptr& error, long row);

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_ERRORS_H_
