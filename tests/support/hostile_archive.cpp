// SPDX-License-Identifier: MIT
#include "tests/support/hostile_archive.h"

#include <functional>
#include <utility>

#include "tests/support/archive_helpers.h"
#include "vxclss/costs.h"
#include "vxfoundation/archive.h"

// Stands in the archive for a class of the library, whose name has the same length and is put in
// its place afterwards.
namespace forged {

class Object : public vxPersistent, public vxRepBase {
 public:
  explicit Object(std::function<void(vxArchive&)> write) : write_(std::move(write)) {}

 protected:
  void dispatchSerialize(vxArchive& archive) override { write_(archive); }

 private:
  std::function<void(vxArchive&)> write_;
};

class Neighbor : public Object {
  using Object::Object;
};
class TrainParamsHostile : public Object {
  using Object::Object;
};
class ProviderOfHostileBytes : public Object {
  using Object::Object;
};

}  // namespace forged

namespace {

vxPersistent* makeNothing() { return nullptr; }

std::string pointerBytes(const vxPersistent& object, bool insideATool) {
  const vx_Instantiator classifier(typeid(forged::Neighbor), &makeNothing);
  const vx_Instantiator params(typeid(forged::TrainParamsHostile), &makeNothing);
  const vx_Instantiator provider(typeid(forged::ProviderOfHostileBytes), &makeNothing);
  std::ostringstream stream(std::ios::binary);
  {
    vxOutputArchive archive(stream);
    if (insideATool) writeVersions(archive, 1);
    writePointer(archive, &object);
  }
  std::string bytes = stream.str();
  const std::pair<std::string, std::string> names[] = {
      {"forged::Neighbor", "vx_ClassifierKNN"},
      {"forged::TrainParamsHostile", "vxClassifierTrainParamsKNN"},
      {"forged::ProviderOfHostileBytes", "vxClassifierDataProviderMemory"}};
  for (const auto& [forgedName, name] : names) {
    const std::size_t found = bytes.find(forgedName);
    if (found == std::string::npos) continue;
    EXPECT_EQ(forgedName.size(), name.size());
    bytes.replace(found, forgedName.size(), name);
  }
  return bytes;
}

}  // namespace

std::string hostileToolBytes(const vxPersistent* params, const HostileSet& set) {
  const forged::ProviderOfHostileBytes provider([copy = set](vxArchive& archive) mutable {
    writeVersions(archive, 2);
    std::wstring name;
    std::wstring description;
    archive || name || description || copy.patterns || copy.labels;
  });
  return hostileToolBytes(params, &provider);
}

std::string hostileToolBytes(const vxPersistent* params, const vxPersistent* data) {
  const forged::Neighbor classifier([=](vxArchive& archive) {
    writeVersions(archive, 2);
    writePointer(archive, params);
    writePointer(archive, data);
  });
  return pointerBytes(classifier, true);
}

std::string hostileParamsBytes(long k, const vxPersistent* metric) {
  const forged::TrainParamsHostile params([=](vxArchive& archive) {
    writeVersions(archive, 2);
    long places = k;
    archive || places;
    writePointer(archive, metric);
    vxClassifierCosts costs(1.0);
    archive || costs;
  });
  return pointerBytes(params, false);
}
