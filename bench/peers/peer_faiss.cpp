// SPDX-License-Identifier: MIT
#include "bench/peers/neighbour_peer.h"

#ifdef PEERS_HAVE_FAISS
#include <faiss/IndexFlat.h>
#include <fmt/format.h>
#include <omp.h>
#endif

namespace peers {

#ifdef PEERS_HAVE_FAISS

namespace {

class Faiss : public NeighbourPeer {
 public:
  Faiss(const Rows& rows, const Rows& queries, double order)
      : NeighbourPeer("FAISS flat", kBruteForce),
        d_(rows.d),
        queries_(queries.floats()),
        index_(static_cast<faiss::Index::idx_t>(rows.d), metricOf_(order)) {
    index_.metric_arg = static_cast<float>(order);
    index_.add(static_cast<faiss::Index::idx_t>(rows.n), rows.floats().data());
  }

  void search(std::size_t query, std::size_t k) override {
    distances_.resize(k);
    indices_.resize(k);
    index_.search(1, queries_.data() + query * d_, static_cast<faiss::Index::idx_t>(k),
                  distances_.data(), indices_.data());
  }

  std::vector<long> found() const override { return {indices_.begin(), indices_.end()}; }

 private:
  static faiss::MetricType metricOf_(double order) {
    if (order == 2.0) return faiss::METRIC_L2;
    return order == 1.0 ? faiss::METRIC_L1 : faiss::METRIC_Lp;
  }

  std::size_t d_;
  std::vector<float> queries_;
  faiss::IndexFlat index_;
  std::vector<float> distances_;
  std::vector<faiss::Index::idx_t> indices_;
};

}  // namespace

NeighbourPeerPtr makeFaiss(const Rows& rows, const Rows& queries, double order) {
  return std::make_unique<Faiss>(rows, queries, order);
}

void setUpFaiss(Report& report) {
  omp_set_num_threads(1);
  report.fact("FAISS", fmt::format("{}.{}.{}, float32", FAISS_VERSION_MAJOR, FAISS_VERSION_MINOR,
                                   FAISS_VERSION_PATCH));
}

#else

NeighbourPeerPtr makeFaiss(const Rows&, const Rows&, double) { return nullptr; }
void setUpFaiss(Report&) {}

#endif

}  // namespace peers
