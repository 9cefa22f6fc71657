// SPDX-License-Identifier: MIT
#include <cmath>
#include <limits>

#include "bench/peers/neighbour_peer.h"

namespace peers {

namespace {

/// The k nearest so far, nearest first. Of equal ones the later is nearer, but none equal to the
/// last of a full list comes in.
class NearestList {
 public:
  void start(std::size_t k) {
    k_ = k;
    count_ = 0;
    indices_.resize(k);
    distances_.assign(k, std::numeric_limits<double>::infinity());
  }

  void offer(long index, double distance) {
    if (count_ >= k_ && distance >= distances_[k_ - 1]) return;
    std::size_t place = 0;
    while (distance > distances_[place]) ++place;
    if (count_ < k_) ++count_;
    for (std::size_t i = count_ - 1; i > place; --i) {
      indices_[i] = indices_[i - 1];
      distances_[i] = distances_[i - 1];
    }
    indices_[place] = index;
    distances_[place] = distance;
  }

  const std::vector<long>& indices() const { return indices_; }

 private:
  std::size_t k_ = 0;
  std::size_t count_ = 0;
  std::vector<long> indices_;
  std::vector<double> distances_;
};

class PlainScan : public NeighbourPeer {
 public:
  PlainScan(const Rows& rows, const Rows& queries)
      : NeighbourPeer("plain double scan", kReference), rows_(rows), queries_(queries) {}

  void search(std::size_t query, std::size_t k) override {
    const double* const q = queries_.row(query);
    nearest_.start(k);
    for (std::size_t i = 0; i < rows_.n; ++i) {
      const double* const row = rows_.row(i);
      double sum = 0.0;
      for (std::size_t j = 0; j < rows_.d; ++j) sum += (q[j] - row[j]) * (q[j] - row[j]);
      nearest_.offer(static_cast<long>(i), sum);
    }
  }

  std::vector<long> found() const override { return nearest_.indices(); }

 private:
  const Rows& rows_;
  const Rows& queries_;
  NearestList nearest_;
};

class LiteralScan : public NeighbourPeer {
 public:
  LiteralScan(const Patterns& rows, const Patterns& queries, double order)
      : NeighbourPeer("literal form", kReference), rows_(rows), queries_(queries), order_(order) {}

  void search(std::size_t query, std::size_t k) override {
    nearest_.start(k);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      nearest_.offer(static_cast<long>(i), literalDistance(*queries_[query], *rows_[i], order_));
    }
  }

  std::vector<long> found() const override { return nearest_.indices(); }

 private:
  const Patterns& rows_;
  const Patterns& queries_;
  double order_;
  NearestList nearest_;
};

}  // namespace

double literalDistance(const vxFeaturePattern& a, const vxFeaturePattern& b, double order) {
  const std::vector<double>& x = a.featureMeasurements(true);
  const std::vector<double>& y = b.featureMeasurements(true);
  double sum = 0.0;
  for (std::size_t j = 0; j < x.size(); ++j) sum += std::pow(std::fabs(x[j] - y[j]), order);
  return std::pow(sum, 1.0 / order);
}

NeighbourPeerPtr makePlainScan(const Rows& rows, const Rows& queries, double order) {
  if (order != 2.0) return nullptr;
  return std::make_unique<PlainScan>(rows, queries);
}

NeighbourPeerPtr makeLiteralScan(const Patterns& rows, const Patterns& queries, double order) {
  return std::make_unique<LiteralScan>(rows, queries, order);
}

}  // namespace peers
