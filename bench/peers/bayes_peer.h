// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_BAYES_PEER_H_
#define BENCH_PEERS_BAYES_PEER_H_

#include <cstddef>
#include <memory>

#include "bench/peers/data.h"

namespace peers {

/// A normal density with full covariance for each of the categories, which take turns in the rows.
class BayesPeer {
 public:
  virtual ~BayesPeer() = default;

  /// Trains anew on the rows that it was made with.
  virtual void train() = 0;

  /// The label of query `query`.
  virtual long predict(std::size_t query) = 0;
};

using BayesPeerPtr = std::unique_ptr<BayesPeer>;

/// Trained; null where OpenCV wasn't found by the build.
BayesPeerPtr makeOpenCvBayes(const Rows& rows, const Rows& queries, std::size_t numCategories);

}  // namespace peers

#endif  // BENCH_PEERS_BAYES_PEER_H_
