// SPDX-License-Identifier: MIT
// Hosts that destroy what others hold, go on with an archive after an error, and put archives
// inside their own objects.

#include <gtest/gtest.h>

#include <istream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"
#include "tests/support/faulty_device.h"
#include "tests/support/host_provider.h"
#include "tests/support/outcome.h"
#include "tests/support/samples.h"
#include "tests/support/technique_samples.h"
#include "vxclss/errors.h"

namespace {

using samples::Node;
using samples::Trouble;
using NodeHandle = vxPtrHandle<Node>;

std::string runOf(const vxClassifierTool& tool, int query) {
  vxClassifierResult result;
  const std::string outcome = outcomeOf([&] { tool.run(techniqueQuery(query), result); });
  return outcome + " " + bitsOf(result);
}

TEST(DestroyedProviderTest, LeavesTheClassifierItsPatterns) {
  const vxClassifierDataProviderMemory data = techniqueData();
  for (const Technique& technique : techniques()) {
    if (!technique.params) continue;
    auto provider = std::make_unique<vxClassifierDataProviderMemory>(data);
    vxClassifierTool tool;
    tool.train(*provider, *technique.params);
    const std::string before = runOf(tool, 1);
    provider.reset();
    EXPECT_EQ(runOf(tool, 1), before);
    EXPECT_EQ(runOf(vxClassifierTool(tool), 1), before);
    EXPECT_EQ(runOf(tool, 2), runOf(technique.trained(), 2));
  }
}

TEST(DestroyedProviderTest, MayHaveMadeThePatternsThatTheClassifierKeeps) {
  vxClassifierTool tool;
  {
    const HostProvider provider({sharedPattern({0.0}), sharedPattern({4.0})}, {1, 2});
    tool.train(provider, knnParams(1));
  }
  vxClassifierResult result;
  tool.run({{3.0}, {}}, result);
  EXPECT_EQ(labelsOf(result), std::vector<long>{2});
}

TEST(DestroyedProviderTest, LeavesItsPatternsToWhoeverHoldsThem) {
  auto provider = std::make_unique<vxClassifierDataProviderMemory>(techniqueData());
  const vxPtrHandle_const<vxFeaturePattern> pattern = provider->featurePattern(0);
  const vxFeaturePattern copy(*pattern);
  EXPECT_EQ(pattern->referenceCount(), 2);
  provider.reset();
  EXPECT_EQ(pattern->referenceCount(), 1);
  EXPECT_TRUE(*pattern == copy);
}

// The tool owns its classifier: it untrains it when it goes, also one that a host still holds.
TEST(DestroyedToolTest, LeavesAClassifierThatIsUntrained) {
  for (const Technique& technique : techniques()) {
    auto tool = std::make_unique<vxClassifierTool>(technique.trained());
    const vxPtrHandle_const<vx_Classifier> shared = tool->classifier();
    const vxPtrHandle_const<vx_Classifier> own = shared->clone();
    tool.reset();
    EXPECT_FALSE(shared->isTrained());
    vxClassifierResult result;
    EXPECT_THROW(shared->run(techniqueQuery(1), result), vxClassifierDefs::NotTrained);
    EXPECT_NO_THROW(own->run(techniqueQuery(1), result));
  }
}

TEST(DestroyedToolTest, LeavesParametersAndTreeToWhoeverHoldsThem) {
  auto tool = std::make_unique<vxClassifierTool>(techniques()[2].trained());
  const vxPtrHandle_const<vxDecisionTree> tree = tool->decisionTree();
  const std::vector<long> labels = tree->categoryLabels();
  *tool = techniques()[1].trained();
  const vxPtrHandle_const<vxClassifierTrainParams> params = tool->trainParams();
  tool.reset();
  EXPECT_EQ(tree->categoryLabels(), labels);
  vxClassifierTool another;
  EXPECT_NO_THROW(another.train(techniqueData(), *params));
}

// After an error the stream stands in the middle of an object: what follows is noise, and is
// treated as such.
TEST(InputArchiveAfterAnErrorTest, ReadsObjectsOrRefuses) {
  std::string bytes;
  for (const Technique& technique : techniques()) {
    vxClassifierTool tool = technique.trained();
    bytes += stored(tool);
  }
  constexpr int kAttempts = 20;
  int tools = 0;
  for (std::size_t place = 0; place < bytes.size(); place += 31) {
    std::string changed = bytes;
    changed[place] = static_cast<char>(changed[place] ^ 0x55);
    FaultyDevice device(changed);
    std::istream stream(&device);
    vxInputArchive archive(stream);
    vxClassifierTool tool;
    for (int attempt = 0; attempt < kAttempts && stream.good(); ++attempt) {
      if (!succeedsOrRefuses([&] { archive || tool; })) continue;
      runOf(tool, 1);
      ++tools;
    }
  }
  EXPECT_GT(tools, 0);
}

TEST(InputArchiveAfterAnErrorTest, KnowsWhatArrivedBefore) {
  // A list, half of an object, and a reference back to the list's second node.
  NodeHandle list = Node::list(2);
  const std::string bytes = stored(list) + fromHex("02 00000000 01") + fromHex("03 01000000");
  std::istringstream stream(bytes, std::ios::binary);
  vxInputArchive archive(stream);
  NodeHandle first;
  NodeHandle half;
  NodeHandle second;
  archive || first;
  EXPECT_THROW(archive || half, vxArchive::UnknownVersion);
  EXPECT_TRUE(half.isNull());
  archive || second;
  EXPECT_EQ(second, first->next());
}

TEST(OutputArchiveAfterAnErrorTest, StoresAsIfNothingHadHappened) {
  NodeHandle list = Node::list(2);
  NodeHandle deep = Node::list(vxArchive::kMaximumNesting + 1);
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  archive || list;
  for (int i = 0; i < 3; ++i) EXPECT_THROW(archive || deep, vxArchive::Unstorable);
  archive || list;
  std::string expected = stored(list, list);
  EXPECT_EQ(toHex(stream.str()), toHex(expected));
}

/// A host's object that keeps a whole tool in an archive of its own, as a text.
class Capsule : public vxPersistent, public vxRepBase {
 public:
  vxClassifierTool tool;
  NodeHandle node;
  bool isDamaged = false;

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Capsule)}) {
      std::wstring text;
      if (archive.isStoring()) {
        std::string bytes = stored(tool, node);
        if (isDamaged) bytes.resize(bytes.size() / 2);
        for (const char byte : bytes) text += static_cast<unsigned char>(byte);
      }
      archive || text || node;
      if (archive.isStoring()) return;
      std::string bytes;
      for (const wchar_t character : text) bytes += static_cast<char>(character);
      NodeHandle inner;
      load(bytes, tool, inner);
      EXPECT_NE(inner, node) << "each archive has objects of its own";
    }
  }

 private:
  static vxPersistent* make() { return new Capsule; }
  static const vx_Instantiator sExemplar;
};
const vx_Instantiator Capsule::sExemplar(typeid(Capsule), &Capsule::make);

class NestedArchiveTest : public testing::Test {
 protected:
  static vxPtrHandle<Capsule> filled(const Technique& technique) {
    vxPtrHandle<Capsule> capsule(new Capsule);
    technique.train(capsule->tool);
    capsule->node = Node::list(3);
    return capsule;
  }
};

TEST_F(NestedArchiveTest, BringsItsObjectsBack) {
  for (const Technique& technique : techniques()) {
    vxPtrHandle<Capsule> capsule = filled(technique);
    const auto arrived = loaded<vxPtrHandle<Capsule>>(stored(capsule));
    EXPECT_EQ(runOf(arrived->tool, 1), runOf(loaded<vxClassifierTool>(stored(capsule->tool)), 1));
    EXPECT_EQ(arrived->node->next()->label(), 2);
    EXPECT_EQ(toHex(stored(vxPtrHandle<Capsule>(arrived))), toHex(stored(capsule)));
  }
}

TEST_F(NestedArchiveTest, PassesItsErrorToTheOuterOne) {
  vxPtrHandle<Capsule> capsule = filled(techniques()[0]);
  capsule->isDamaged = true;
  NodeHandle after(new Node(7));
  const std::string bytes = stored(capsule, after);
  std::istringstream stream(bytes, std::ios::binary);
  vxInputArchive archive(stream);
  vxPtrHandle<Capsule> target = filled(techniques()[1]);
  NodeHandle arrived;
  EXPECT_THROW(archive || target, vxArchive::Malformed);
  EXPECT_TRUE(target.isNull());
  // The damage was inside the text, which was read to its end.
  archive || arrived;
  EXPECT_EQ(arrived->label(), 7);
}

TEST_F(NestedArchiveTest, LeavesTheOuterOneAsItWasWhenItRefuses) {
  vxPtrHandle<Capsule> capsule = filled(techniques()[0]);
  capsule->node = Node::list(vxArchive::kMaximumNesting + 1);
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  EXPECT_THROW(archive || capsule, vxArchive::Unstorable);
  EXPECT_EQ(stream.str(), "");
  capsule->node = Node::list(1);
  archive || capsule;
  EXPECT_EQ(toHex(stream.str()), toHex(stored(capsule)));
}

// An object in place within its own transfer has its marks already: nothing is stored twice.
TEST_F(NestedArchiveTest, MayStoreTheSamePartAsTheOuterOne) {
  struct Twice : vxPersistent {
    Node part{5};
    std::string inner;
    void dispatchSerialize(vxArchive& archive) override {
      if (const vx_ArchiveLevel level{archive, *this, typeid(Twice)}) {
        inner = stored(part);
        archive || part || part;
        EXPECT_EQ(inner, stored(part));
      }
    }
  };
  Twice twice;
  const std::string bytes = stored(twice);
  EXPECT_EQ(toHex(bytes), "00" + toHex(twice.inner) + toHex(twice.inner));
}

}  // namespace
