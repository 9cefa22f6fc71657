// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_ARCHIVE_PEER_H_
#define BENCH_PEERS_ARCHIVE_PEER_H_

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "bench/peers/data.h"
#include "bench/peers/report.h"

namespace peers {

/// A pattern with what this library's has, on the heap and shared like it.
struct PeerPattern {
  std::vector<double> measurements;
  std::vector<bool> validity;

  template <class Archive>
  void serialize(Archive& archive, unsigned) {
    archive& measurements& validity;
  }
};

/// The content of a nearest-neighbour model, as objects that other libraries can archive.
struct PeerModel {
  std::wstring name;
  std::wstring description;
  std::vector<std::shared_ptr<PeerPattern>> patterns;
  std::vector<std::int32_t> labels;

  bool operator==(const PeerModel& other) const;

  template <class Archive>
  void serialize(Archive& archive, unsigned) {
    archive& name& description& patterns& labels;
  }
};

PeerModel peerModelOf(const Rows& rows, std::size_t numCategories);

/// A library that archives objects, in its own binary format.
struct ArchivePeer {
  std::string name;
  std::function<void(const PeerModel&, std::ostream&)> store;
  std::function<void(PeerModel&, std::istream&)> load;
};

/// Those that the build found; their versions go into the report.
std::vector<ArchivePeer> archivePeers(Report& report);

}  // namespace peers

#endif  // BENCH_PEERS_ARCHIVE_PEER_H_
