// SPDX-License-Identifier: MIT
#include "bench/peers/neighbour_peer.h"

#ifdef PEERS_HAVE_FLANN
#include <flann/flann.hpp>
#endif
#ifdef PEERS_HAVE_NANOFLANN
#include <fmt/format.h>

#include <nanoflann.hpp>
#endif

namespace peers {

#ifdef PEERS_HAVE_FLANN

namespace {

flann::Matrix<double> matrixOf(Rows& rows) { return {rows.values.data(), rows.n, rows.d}; }

/// Finds the exact neighbours, in doubles, by the index that `params` select.
template <class Distance>
class Flann : public NeighbourPeer {
 public:
  Flann(const char* name, Method method, const Rows& rows, const Rows& queries,
        const flann::IndexParams& params, const Distance& distance)
      : NeighbourPeer(name, method),
        rows_(rows),
        queries_(queries),
        index_(matrixOf(rows_), params, distance) {
    index_.buildIndex();
  }

  void search(std::size_t query, std::size_t k) override {
    indices_.resize(k);
    distances_.resize(k);
    flann::Matrix<std::size_t> indices(indices_.data(), 1, k);
    flann::Matrix<double> distances(distances_.data(), 1, k);
    const flann::Matrix<double> one(queries_.values.data() + query * queries_.d, 1, queries_.d);
    index_.knnSearch(one, indices, distances, k, params_);
  }

  std::vector<long> found() const override { return {indices_.begin(), indices_.end()}; }

 private:
  Rows rows_;
  Rows queries_;
  flann::Index<Distance> index_;
  flann::SearchParams params_{flann::FLANN_CHECKS_UNLIMITED};  // on one core, which is its default
  std::vector<std::size_t> indices_;
  std::vector<double> distances_;
};

}  // namespace

NeighbourPeerPtr makeFlannLinear(const Rows& rows, const Rows& queries, double order) {
  constexpr const char* kName = "FLANN linear";
  const flann::LinearIndexParams params;
  if (order == 1.0) {
    return std::make_unique<Flann<flann::L1<double>>>(kName, NeighbourPeer::kBruteForce, rows,
                                                      queries, params, flann::L1<double>());
  }
  if (order != static_cast<int>(order)) return nullptr;
  const flann::MinkowskiDistance<double> distance(static_cast<int>(order));
  return std::make_unique<Flann<flann::MinkowskiDistance<double>>>(
      kName, NeighbourPeer::kBruteForce, rows, queries, params, distance);
}

NeighbourPeerPtr makeFlannTree(const Rows& rows, const Rows& queries, double order) {
  if (order != 2.0) return nullptr;
  return std::make_unique<Flann<flann::L2<double>>>("FLANN kd-tree", NeighbourPeer::kTree, rows,
                                                    queries, flann::KDTreeSingleIndexParams(),
                                                    flann::L2<double>());
}

#else

NeighbourPeerPtr makeFlannLinear(const Rows&, const Rows&, double) { return nullptr; }
NeighbourPeerPtr makeFlannTree(const Rows&, const Rows&, double) { return nullptr; }

#endif

#ifdef PEERS_HAVE_NANOFLANN

namespace {

/// How nanoflann sees the rows; it fixes the names.
// NOLINTBEGIN(readability-identifier-naming)
struct RowsAdaptor {
  Rows rows;

  std::size_t kdtree_get_point_count() const { return rows.n; }
  double kdtree_get_pt(std::size_t i, std::size_t j) const { return rows.row(i)[j]; }
  template <class Box>
  bool kdtree_get_bbox(Box&) const {
    return false;
  }
};
// NOLINTEND(readability-identifier-naming)

class Nanoflann : public NeighbourPeer {
 public:
  Nanoflann(const Rows& rows, const Rows& queries)
      : NeighbourPeer("nanoflann kd-tree", kTree),
        rows_{rows},
        queries_(queries),
        index_(static_cast<int>(rows.d), rows_) {}

  void search(std::size_t query, std::size_t k) override {
    indices_.resize(k);
    distances_.resize(k);
    index_.knnSearch(queries_.row(query), k, indices_.data(), distances_.data());
  }

  std::vector<long> found() const override { return {indices_.begin(), indices_.end()}; }

 private:
  using Distance = nanoflann::L2_Adaptor<double, RowsAdaptor>;

  RowsAdaptor rows_;
  Rows queries_;
  nanoflann::KDTreeSingleIndexAdaptor<Distance, RowsAdaptor, -1, std::size_t> index_;
  std::vector<std::size_t> indices_;
  std::vector<double> distances_;
};

}  // namespace

NeighbourPeerPtr makeNanoflann(const Rows& rows, const Rows& queries, double order) {
  if (order != 2.0) return nullptr;
  return std::make_unique<Nanoflann>(rows, queries);
}

#else

NeighbourPeerPtr makeNanoflann(const Rows&, const Rows&, double) { return nullptr; }

#endif

void setUpKdTrees(Report& report) {
#ifdef PEERS_HAVE_FLANN
  report.fact("FLANN", std::string(FLANN_VERSION_) + ", double");
#endif
#ifdef PEERS_HAVE_NANOFLANN
  constexpr int kVersion = NANOFLANN_VERSION;
  report.fact("nanoflann",
              fmt::format("{}.{}.{}, double", kVersion >> 8, (kVersion >> 4) & 15, kVersion & 15));
#endif
  static_cast<void>(report);
}

}  // namespace peers
