// SPDX-License-Identifier: MIT
#include "tools/paired_test.h"

#include <algorithm>
#include <cmath>

namespace cli {

double mcNemarTest(long onlyFirst, long onlySecond) {
  const auto count = static_cast<double>(onlyFirst + onlySecond);
  const long fewer = std::min(onlyFirst, onlySecond);
  double tail = 0.0;
  for (long i = 0; i <= fewer; ++i) {
    const auto successes = static_cast<double>(i);
    tail += std::exp(std::lgamma(count + 1.0) - std::lgamma(successes + 1.0) -
                     std::lgamma(count - successes + 1.0) - count * std::log(2.0));
  }
  return std::min(1.0, 2.0 * tail);
}

}  // namespace cli
