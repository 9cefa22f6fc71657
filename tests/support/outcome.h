// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_OUTCOME_H_
#define TESTS_SUPPORT_OUTCOME_H_

#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>

#include "tests/support/attention_counter.h"
#include "tests/support/host_error.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/result.h"
#include "vxfoundation/exception.h"
#include "vxfoundation/text.h"

/// Every bit of a number, so that a NaN equals itself and -0 differs from 0.
inline std::string bitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof(bits));
  std::ostringstream text;
  text << std::hex << bits;
  return text.str();
}

inline std::string bitsOf(const vxClassifierResult& result) {
  std::string text = "factor " + bitsOf(result.matchScoreFactorLog());
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    text += "; " + std::to_string(category.categoryLabel()) + " " + bitsOf(category.matchScore()) +
            " " + bitsOf(category.classScore()) + " " + bitsOf(category.expectedCost());
  }
  return text;
}

/// What became of `body()`: "done", or the class and text of what it threw.
template <class Body>
std::string outcomeOf(Body&& body) {
  try {
    body();
  } catch (const vxExceptionWithString& error) {
    return vfClassName(typeid(error)) + ": " + vfNarrow(error.message());
  } catch (const HostError&) {
    return "HostError";
  }
  return "done";
}

/// What became of a run on `classifier`: polls of the attention check, error if any, and every bit
/// of the result, which began as one that no run gives. A stop is asked for at poll `stopAt`.
template <class Classifier>
std::string outcomeOfRun(const Classifier& classifier, const vxFeaturePattern& query,
                         long stopAt = 0) {
  vxClassifierResult result({vxClassifierCategoryResult(77, 0.5, 1.0, 3.0)}, 0.25);
  const AttentionCounter counter(stopAt);
  const std::string outcome = outcomeOf([&] { classifier.run(query, result); });
  return outcome + " after " + std::to_string(counter.polls()) + " polls; " + bitsOf(result);
}

#endif  // TESTS_SUPPORT_OUTCOME_H_
