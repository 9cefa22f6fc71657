// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REPORT_MARK_H_
#define TOOLS_EVAL_REPORT_MARK_H_

#include <string>

namespace eval {

/// Colours that the page has for categories. They and the shapes of marks come back in other
/// combinations, so that many categories can be told apart, also by those who see no colours.
constexpr long kColours = 8;

/// A mark of a category around a place, as part of an SVG path; `size` is half its width.
std::string markPath(long label, double x, double y, double size);

/// The mark as a picture in a line of text.
std::string markPicture(long label);

}  // namespace eval

#endif  // TOOLS_EVAL_REPORT_MARK_H_
