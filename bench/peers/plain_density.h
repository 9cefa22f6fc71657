// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_PLAIN_DENSITY_H_
#define BENCH_PEERS_PLAIN_DENSITY_H_

#include <vxclss/vxclss.h>

#include <cstddef>
#include <vector>

#include "bench/peers/data.h"

namespace peers {

/// Normal densities by their definition, to compare answers with: two passes over the data, then
/// elimination at each evaluation.
class PlainDensities {
 public:
  /// Rows of the categories in turn.
  PlainDensities(const Rows& rows, std::size_t numCategories, bool isFull);

  /// Whether the match scores are the densities' ratios to the largest one.
  bool agree(const double* query, const vxClassifierResult& result) const;

 private:
  double logValue_(std::size_t category, const double* query) const;

  std::size_t d_;
  std::vector<std::vector<double>> means_;
  std::vector<std::vector<double>> covariances_;  // row by row
};

}  // namespace peers

#endif  // BENCH_PEERS_PLAIN_DENSITY_H_
