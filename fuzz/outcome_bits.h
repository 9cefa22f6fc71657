// SPDX-License-Identifier: MIT
#ifndef FUZZ_OUTCOME_BITS_H_
#define FUZZ_OUTCOME_BITS_H_

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <typeinfo>
#include <utility>

#include "fuzz/target.h"
#include "kernel/simd.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/result.h"
#include "vxfoundation/exception.h"

namespace fuzz {

/// Every bit of an answer, so that -0 differs from 0. All NaNs are one: which of two that meet in
/// an addition comes out is the compiler's choice.
inline void appendBits(std::string& bits, double value) {
  if (std::isnan(value)) value = std::numeric_limits<double>::quiet_NaN();
  bits.append(reinterpret_cast<const char*>(&value), sizeof(value));
}
inline void appendBits(std::string& bits, long value) {
  bits.append(reinterpret_cast<const char*>(&value), sizeof(value));
}
inline void appendBits(std::string& bits, const vxClassifierCategoryResult& category) {
  appendBits(bits, category.categoryLabel());
  appendBits(bits, category.matchScore());
  appendBits(bits, category.classScore());
  appendBits(bits, category.expectedCost());
}
inline void appendBits(std::string& bits, const vxClassifierResult& result) {
  appendBits(bits, result.matchScoreFactorLog());
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    appendBits(bits, category);
  }
}

/// What `answer()` gives, or the class and the text of the library's error that it throws.
template <class Answer>
std::string outcomeBits(Answer&& answer) {
  std::string bits;
  try {
    appendBits(bits, answer());
  } catch (const vxExceptionWithString& error) {
    bits = typeid(error).name();
    for (const wchar_t character : error.message()) {
      appendBits(bits, static_cast<long>(character));
    }
  } catch (const vxException& error) {
    bits = typeid(error).name();
  }
  return bits;
}

/// The same of a run of any classifier, model or tool.
template <class Classifier>
std::string runBits(const Classifier& classifier, const vxFeaturePattern& pattern) {
  return outcomeBits([&] {
    vxClassifierResult result;
    classifier.run(pattern, result);
    return result;
  });
}

/// Ends the program unless both are the same; a finding then shows how they differ.
inline void demandSame(const std::string& outcome, const std::string& expected, const char* what) {
  if (outcome == expected) return;
  for (const std::string* bits : {&expected, &outcome}) {
    std::fprintf(stderr, "fuzz: %s", bits == &expected ? "expected" : "     got");
    for (const char byte : *bits) std::fprintf(stderr, " %02x", static_cast<unsigned char>(byte));
    std::fprintf(stderr, "\n");
  }
  demand(false, what);
}

/// Calls `body()` at each level of instructions that this processor has.
template <class Body>
void atEachLevel(Body&& body) {
  for (const vx_Simd level : {vx_Simd::kPlain, vx_Simd::kAvx2, vx_Simd::kAvx512}) {
    if (level > vx_simdDetected()) break;
    vx_simdLimit(level);
    body();
  }
  vx_simdLimit(vx_Simd::kAvx512);
}

}  // namespace fuzz

#endif  // FUZZ_OUTCOME_BITS_H_
