// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_SKLEARN_PEER_H_
#define BENCH_PEERS_SKLEARN_PEER_H_

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "bench/peers/data.h"
#include "bench/peers/measure.h"
#include "bench/peers/report.h"

namespace peers {

/// scikit-learn's GaussianNB in a process of its own, which works only while it is asked and
/// measures its own processor time.
class SklearnPeer {
 public:
  /// Null if python3 can't import scikit-learn.
  static std::unique_ptr<SklearnPeer> start(Report& report);

  SklearnPeer(const SklearnPeer&) = delete;
  SklearnPeer& operator=(const SklearnPeer&) = delete;
  ~SklearnPeer();

  /// Fits a new model on the rows of these categories in turn, and keeps `queries` to predict.
  void fit(const Rows& rows, std::size_t numCategories, const Rows& queries);

  /// What it decides on the queries.
  std::vector<long> labels();

  Contestant oneRow();
  /// One row of a batch of so many, at most 1000.
  Contestant perRowOf(long batch);
  Contestant training();

 private:
  SklearnPeer() = default;
  nlohmann::json ask_(const nlohmann::json& question);
  Contestant contestant_(const std::string& name, const nlohmann::json& question);

  pid_t child_ = -1;
  std::FILE* questions_ = nullptr;
  std::FILE* answers_ = nullptr;
};

}  // namespace peers

#endif  // BENCH_PEERS_SKLEARN_PEER_H_
