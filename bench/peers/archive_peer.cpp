// SPDX-License-Identifier: MIT
#include "bench/peers/archive_peer.h"

#include <algorithm>

#ifdef PEERS_HAVE_CEREAL
#include <cereal/archives/binary.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <cereal/version.hpp>
#endif
#ifdef PEERS_HAVE_BOOST
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/shared_ptr.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <boost/version.hpp>
#endif

namespace peers {

bool PeerModel::operator==(const PeerModel& other) const {
  return name == other.name && description == other.description && labels == other.labels &&
         std::equal(patterns.begin(), patterns.end(), other.patterns.begin(), other.patterns.end(),
                    [](const auto& a, const auto& b) {
                      return a->measurements == b->measurements && a->validity == b->validity;
                    });
}

PeerModel peerModelOf(const Rows& rows, std::size_t numCategories) {
  PeerModel model;
  for (std::size_t i = 0; i < rows.n; ++i) {
    model.patterns.push_back(std::make_shared<PeerPattern>(
        PeerPattern{rows.measurements(i), std::vector<bool>(rows.d, true)}));
    model.labels.push_back(static_cast<std::int32_t>(labelOf(i, numCategories)));
  }
  return model;
}

std::vector<ArchivePeer> archivePeers(Report& report) {
  std::vector<ArchivePeer> peers;
#ifdef PEERS_HAVE_CEREAL
  report.fact("cereal", std::to_string(CEREAL_VERSION_MAJOR) + "." +
                            std::to_string(CEREAL_VERSION_MINOR) + "." +
                            std::to_string(CEREAL_VERSION_PATCH));
  peers.push_back({"cereal",
                   [](const PeerModel& model, std::ostream& stream) {
                     cereal::BinaryOutputArchive archive(stream);
                     archive(model);
                   },
                   [](PeerModel& model, std::istream& stream) {
                     cereal::BinaryInputArchive archive(stream);
                     archive(model);
                   }});
#endif
#ifdef PEERS_HAVE_BOOST
  report.fact("Boost", std::to_string(BOOST_VERSION / 100000) + "." +
                           std::to_string(BOOST_VERSION / 100 % 1000));
  peers.push_back({"Boost",
                   [](const PeerModel& model, std::ostream& stream) {
                     boost::archive::binary_oarchive archive(stream);
                     archive << model;
                   },
                   [](PeerModel& model, std::istream& stream) {
                     boost::archive::binary_iarchive archive(stream);
                     archive >> model;
                   }});
#endif
  static_cast<void>(report);
  return peers;
}

}  // namespace peers
