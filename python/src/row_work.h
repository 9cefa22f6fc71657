// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_ROW_WORK_H_
#define VXCLSS_PYTHON_ROW_WORK_H_

#include <cstddef>
#include <functional>

#include "bindings.h"
#include "interrupts.h"

namespace vxpy {

/// How many threads `n_jobs` means: None is 1, a negative number counts down from all processors
/// that the process may use, -1 being all of them. Throws ValueError for 0.
int threadsOf(const py::object& jobs);

/// Throws TypeError if `n_jobs` is given for a single row.
void refuseJobs(const py::object& jobs);

/// Does something with one row; one for each thread, so it may keep what rows can share.
using RowWork = std::function<void(std::ptrdiff_t row)>;

/// Calls the work for every row in [0, rows), on `threads` threads with the caller's among them and
/// without the GIL. What the first failing row throws is thrown with the row's number, as it would
/// be if rows came one after another; Ctrl-C ends the batch with what the signal's handler raises.
///
/// `slowness` belongs to what runs, null for what the attention hook is never asked in.
void forEachRow(std::ptrdiff_t rows, int threads, Slowness* slowness,
                const std::function<RowWork()>& newWork);

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_ROW_WORK_H_
