// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REPORT_HTML_H_
#define TOOLS_EVAL_REPORT_HTML_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace eval {

/// Text that may stand between tags and in quoted attributes, whatever it holds. Characters that
/// HTML forbids become U+FFFD.
std::string escaped(std::string_view text);

/// The first characters of a UTF-8 text, then an ellipsis if it has more than `most`. Not escaped.
std::string clipped(std::string_view text, std::size_t most);

/// For people: four significant digits with a true minus sign; a dash for NaN.
std::string shortNumber(double value);

/// A share, "96.7 %".
std::string percent(double share);

/// A coordinate, to a tenth.
std::string coordinate(double value);

/// Ascending whole numbers, runs of them joined by a dash.
std::string ranges(const std::vector<long>& numbers);

}  // namespace eval

#endif  // TOOLS_EVAL_REPORT_HTML_H_
