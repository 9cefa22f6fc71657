// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_BATCH_H_
#define VXCLSS_PYTHON_BATCH_H_

#include <vector>

#include "bindings.h"
#include "interrupts.h"

namespace vxpy {

/// A trained classifier, as a batch needs it.
struct BatchRunner {
  vxPtrHandle_const<vx_Classifier> classifier;
  std::vector<long> categories;  ///< ascending
  long leastWidth = 0;           ///< measurements that a row may have
  long mostWidth = 0;
  Slowness* slowness = nullptr;
};

/// Throws NotTrained; NotImplemented for a class that is not of this library, as its categories are
/// unknown.
BatchRunner runnerOf(const vxPtrHandle_const<vx_Classifier>& classifier, Slowness& slowness);

/// A vxclss.BatchResult for the rows of X.
py::object runBatch(const BatchRunner& runner, const py::object& X, const py::object& jobs);

/// Only the labels of the decisions, an array of int64.
py::object decideBatch(const BatchRunner& runner, const py::object& X, const py::object& jobs);

/// Only the class scores, a matrix of one column a category.
py::object scoreBatch(const BatchRunner& runner, const py::object& X, const py::object& jobs);

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_BATCH_H_
