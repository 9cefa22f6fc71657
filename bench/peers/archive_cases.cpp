// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxclss/vxclss.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "bench/peers/archive_peer.h"
#include "bench/peers/cases.h"
#include "bench/peers/data.h"

namespace peers {

namespace {

constexpr std::size_t kN = 100000;
constexpr std::size_t kD = 16;
constexpr std::size_t kCategories = 5;

void store(vxClassifierTool& tool, std::ostream& stream) {
  vxOutputArchive archive(stream);
  archive || tool;
}

void load(vxClassifierTool& tool, std::istream& stream) {
  vxInputArchive archive(stream);
  archive || tool;
}

Contestant storing(const char* name, const std::function<void(std::ostream&)>& store) {
  // Written over each time: it is the archive that is measured, not the stream's growth.
  const auto stream = std::make_shared<std::ostringstream>();
  return contestant(name, [store, stream] {
    stream->seekp(0);
    store(*stream);
  });
}

/// Times loading alone; what was loaded is destroyed between.
template <class Object>
Contestant loading(const char* name, const std::string& bytes,
                   const std::function<void(Object&, std::istream&)>& load) {
  const auto stream = std::make_shared<std::istringstream>(bytes);
  return {name, [load, stream](long repeats) {
            double seconds = 0.0;
            for (long i = 0; i < repeats; ++i) {
              stream->seekg(0);
              Object loaded;
              const double start = processorSeconds();
              load(loaded, *stream);
              seconds += processorSeconds() - start;
            }
            return seconds;
          }};
}

void checkTool(const vxClassifierTool& tool, const std::string& bytes, Report& report) {
  std::istringstream stream(bytes);
  vxClassifierTool loaded;
  load(loaded, stream);
  const bool isRight = loaded == tool;
  report.answers("archives, vxclss", 1, isRight ? 0 : 1);
  if (!isRight) report.wrong("a loaded tool differs from the stored one");
}

}  // namespace

void measureArchives(const Extent& extent, Report& report) {
  const Rows rows = makeRows(Kind::kMixture, kN, kD, /*seed=*/1);
  vxClassifierTool tool;
  tool.train(dataOf(rows, kCategories), vxClassifierTrainParamsKNN(5));
  std::ostringstream stream;
  store(tool, stream);
  const std::string bytes = stream.str();
  checkTool(tool, bytes, report);

  std::vector<Contestant> stores = {
      storing("vxclss", [&tool](std::ostream& out) { store(tool, out); })};
  std::vector<Contestant> loads = {loading<vxClassifierTool>("vxclss", bytes, &load)};
  const PeerModel model = peerModelOf(rows, kCategories);
  for (const ArchivePeer& peer : archivePeers(report)) {
    std::ostringstream own;
    peer.store(model, own);
    std::istringstream back(own.str());
    PeerModel loaded;
    peer.load(loaded, back);
    if (!(loaded == model)) report.wrong(peer.name + ": a loaded model differs");
    stores.push_back(storing(
        peer.name.c_str(), [&model, store = peer.store](std::ostream& out) { store(model, out); }));
    loads.push_back(loading<PeerModel>(peer.name.c_str(), own.str(), peer.load));
  }

  const auto reportTimes = [&](const std::string& what, const Times& times) {
    constexpr const char* kGroup = "archive of a 1e5 x 16 nearest-neighbour model";
    report.times("archive, " + what, times);
    const double own = times.at("vxclss");
    report.figure(kGroup, what, 1e-9 * static_cast<double>(bytes.size()) / own, "GB/s",
                  atLeast(1.1));
    for (const auto& [name, seconds] : times) {
      if (name == "vxclss") continue;
      report.figure(kGroup, fmt::format("{}, of {}", what, name), own / seconds, "",
                    name == "cereal" ? atMost(0.45) : Goal());
    }
  };
  reportTimes("storing", inTurns(stores, extent.effort));
  reportTimes("loading", inTurns(loads, extent.effort));
}

}  // namespace peers
