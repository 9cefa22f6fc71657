// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REPORT_STYLE_H_
#define TOOLS_EVAL_REPORT_STYLE_H_

namespace eval {

/// The page's style sheet: light or dark as the reader's system is.
///
/// The colours c0 to c7 of categories are chosen after M. Okabe and K. Ito ("Color universal
/// design", 2008), for people of any colour vision, and adapted to either background.
extern const char* const kStyle;

}  // namespace eval

#endif  // TOOLS_EVAL_REPORT_STYLE_H_
