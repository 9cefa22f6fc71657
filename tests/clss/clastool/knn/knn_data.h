// SPDX-License-Identifier: MIT
#ifndef TESTS_CLSS_CLASTOOL_KNN_KNN_DATA_H_
#define TESTS_CLSS_CLASTOOL_KNN_KNN_DATA_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "vxclss/classifier_knn.h"

/// Training sets and queries that make searches go wrong which round or cut corners.
namespace knn_data {

using Random = std::mt19937_64;
using Rows = std::vector<std::vector<double>>;

struct Set {
  Rows rows;
  Rows queries;  // among, near and far from the rows
};

/// How measurements of one kind come about.
struct Kind {
  const char* name;
  /// One measurement of axis `axis`.
  double (*draw)(Random& random, std::size_t axis);
  /// What is then done to the whole set, if anything.
  void (*finish)(Random& random, Set& set) = nullptr;
};

inline void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }
inline std::string nameOf(const testing::TestParamInfo<Kind>& row) { return row.param.name; }

const std::vector<Kind>& kinds();

/// `count` rows of `numMeasurements`.
Set make(const Kind& kind, Random& random, std::size_t count, std::size_t numMeasurements);

/// In [-1, 1), all bits of the mantissa in use.
double fraction(Random& random);

/// Each row with its number as label.
vxClassifierDataProviderMemory labelledByNumber(const Rows& rows);

}  // namespace knn_data

#endif  // TESTS_CLSS_CLASTOOL_KNN_KNN_DATA_H_
