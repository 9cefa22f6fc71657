// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_RESULTS_H_
#define VXCLSS_PYTHON_RESULTS_H_

#include "bindings.h"

namespace vxpy {

std::string shownResult(const vxClassifierResult& result);

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_RESULTS_H_
