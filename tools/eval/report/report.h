// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REPORT_REPORT_H_
#define TOOLS_EVAL_REPORT_REPORT_H_

#include <cstddef>
#include <ostream>
#include <vector>

#include "tools/eval/report/page.h"

namespace eval {

/// Writes an evaluation for people: one HTML file that needs nothing else, no network and no
/// script. Its plots are inline SVG; figures stand in <data> elements, whose data-path is the
/// figure's place in evaluationJson(). The same input gives the same bytes.
///
/// The evaluation must have asked every question. Throws what training and running throw.
void writeReport(std::ostream& out, const ReportInput& input);

/// The `count` measurements that part the categories best, ascending: those with the largest ratio
/// of the sum of squares between categories to that within, the first of equal ones.
std::vector<long> tellingMeasurements(const Dataset& data, std::size_t count);

}  // namespace eval

#endif  // TOOLS_EVAL_REPORT_REPORT_H_
