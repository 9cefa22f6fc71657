// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REPORT_SECTIONS_H_
#define TOOLS_EVAL_REPORT_SECTIONS_H_

#include <cstddef>
#include <string>
#include <vector>

#include "tools/eval/report/page.h"

namespace eval {

/// The key figures, and recall and precision of each category.
std::string overviewSection(const Page& page);

/// The confusion matrix as a heat map, and the patterns of each cell.
std::string confusionSection(const Page& page);

/// The plotted measurements in pairs, with what is decided where.
std::string pairsSection(const Page& page);

/// How each plotted measurement is distributed in each category.
std::string densitiesSection(const Page& page);

/// What rejecting doubtful decisions gains.
std::string rejectSection(const Page& page);

/// Whether class scores are probabilities.
std::string calibrationSection(const Page& page);

/// What decisions cost as one misclassification cost grows.
std::string sweepSection(const Page& page);

/// Why patterns were decided wrongly.
std::string mistakesSection(const Page& page);

/// Places in the records of the mistakes that are explained: the dearest first, of these the surest
/// ones, of these the first.
std::vector<std::size_t> shownMistakes(const Evaluation& evaluation);

/// The id of a shown mistake, "" for a pattern that is none.
std::string mistakeId(const Page& page, std::size_t record);

}  // namespace eval

#endif  // TOOLS_EVAL_REPORT_SECTIONS_H_
