// SPDX-License-Identifier: MIT
#ifndef TOOLS_PAIRED_TEST_H_
#define TOOLS_PAIRED_TEST_H_

namespace cli {

/// How probable it is that two equally good classifiers, tried on the same patterns, differ at
/// least as much as these two: `onlyFirst` patterns were decided correctly by the first alone,
/// `onlySecond` by the second alone. Both counts are >= 0; the exact test, two-sided
/// (Q. McNemar, "Note on the sampling error of the difference between correlated proportions or
/// percentages", Psychometrika 12(2), 1947, 153-157).
double mcNemarTest(long onlyFirst, long onlySecond);

}  // namespace cli

#endif  // TOOLS_PAIRED_TEST_H_
