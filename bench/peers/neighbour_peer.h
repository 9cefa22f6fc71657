// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_NEIGHBOUR_PEER_H_
#define BENCH_PEERS_NEIGHBOUR_PEER_H_

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "bench/peers/data.h"
#include "bench/peers/report.h"

namespace peers {

/// Another way to find the stored rows nearest to a query.
///
/// Holds rows and queries in the form it wants, made before the clock runs.
class NeighbourPeer {
 public:
  enum Method { kBruteForce, kTree, kReference };

  NeighbourPeer(std::string name, Method method) : name_(std::move(name)), method_(method) {}
  virtual ~NeighbourPeer() = default;

  const std::string& name() const { return name_; }
  Method method() const { return method_; }

  /// Finds the k rows nearest to query `query`; k at most the number of rows.
  virtual void search(std::size_t query, std::size_t k) = 0;

  /// Indices of the rows that the last search found, in any order.
  virtual std::vector<long> found() const = 0;

 private:
  std::string name_;
  Method method_;
};

using NeighbourPeerPtr = std::unique_ptr<NeighbourPeer>;

/// Each gives null where the library wasn't found by the build or doesn't know the order.
NeighbourPeerPtr makeFaiss(const Rows& rows, const Rows& queries, double order);
NeighbourPeerPtr makeOpenCv(const Rows& rows, const Rows& queries, double order);
NeighbourPeerPtr makeFlannLinear(const Rows& rows, const Rows& queries, double order);
NeighbourPeerPtr makeFlannTree(const Rows& rows, const Rows& queries, double order);
NeighbourPeerPtr makeNanoflann(const Rows& rows, const Rows& queries, double order);

/// Squared Euclidean distances over one array of doubles; order 2 only. Refers to its arguments.
NeighbourPeerPtr makePlainScan(const Rows& rows, const Rows& queries, double order);

/// The distance as its definition is written: a pow for each measurement.
double literalDistance(const vxFeaturePattern& a, const vxFeaturePattern& b, double order);

/// The definition as it is written, over the stored patterns as objects. Any order. Refers to its
/// arguments.
NeighbourPeerPtr makeLiteralScan(const Patterns& rows, const Patterns& queries, double order);

/// Threads off, versions into the report.
void setUpFaiss(Report& report);
void setUpOpenCv(Report& report);
void setUpKdTrees(Report& report);

}  // namespace peers

#endif  // BENCH_PEERS_NEIGHBOUR_PEER_H_
