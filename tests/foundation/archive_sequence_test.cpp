// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"
#include "vxfoundation/archive.h"

namespace {

using samples::Node;
using NodeHandle = vxPtrHandle<Node>;

/// Stores a random sequence of values and objects, then expects the same sequence from the bytes.
///
/// Every content that an object of the pool ever had bears a label of its own, so the label tells
/// which loaded handles must be the same object.
class Sequence {
 public:
  explicit Sequence(unsigned seed) : random_(seed), output_(stream_), pool_(6) {
    for (NodeHandle& node : pool_) node.reset(new Node(++lastLabel_));
  }

  void store(int steps) {
    for (int i = 0; i < steps; ++i) step_();
  }

  void expectTheSameBack() {
    std::istringstream stream(stream_.str(), std::ios::binary);
    vxInputArchive input(stream);
    for (const auto& check : checks_) check(input);
    EXPECT_EQ(stream.peek(), std::istringstream::traits_type::eof());
  }

 private:
  int below_(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }
  NodeHandle& anyNode_() { return pool_[static_cast<std::size_t>(below_(6))]; }

  void step_() {
    switch (below_(12)) {
      case 0:
        return transfer_(static_cast<unsigned char>(below_(256)));
      case 1:
        return transfer_(static_cast<long>(static_cast<std::int32_t>(random_())));
      case 2:
        return transfer_(static_cast<unsigned long>(random_() & 0xffffffffu));
      case 3:
        return transfer_(static_cast<double>(random_()) / 3.0);
      case 4:
        return transfer_(std::wstring(static_cast<std::size_t>(below_(5)), L'\u20ac'));
      case 5:
        return transfer_(std::vector<bool>(static_cast<std::size_t>(below_(9)), true));
      case 6:
        return transfer_(std::vector<double>(static_cast<std::size_t>(below_(700)), 0.1));
      case 7:
        return transferInPlace_();
      case 8:
        anyNode_()->label(++lastLabel_);
        return;  // changed by its class
      case 9:
        *anyNode_() = Node(++lastLabel_, NodeHandle());
        return;  // assigned to
      case 10:
        anyNode_().reset(new Node(++lastLabel_));
        return;  // destroyed and replaced
      default:
        return transferNodes_();
    }
  }

  template <class T>
  void transfer_(T value) {
    output_ || value;
    checks_.push_back([value](vxArchive& input) {
      T read{};
      input || read;
      EXPECT_EQ(read, value);
    });
  }

  void transferInPlace_() {
    Node& node = *anyNode_();
    output_ || node;
    checks_.push_back([label = node.label()](vxArchive& input) {
      Node read(-1);
      input || read;
      EXPECT_EQ(read.label(), label);
    });
  }

  void transferNodes_() {
    std::vector<NodeHandle> nodes(static_cast<std::size_t>(below_(4)));
    std::vector<long> labels;
    for (NodeHandle& node : nodes) {
      if (below_(5) > 0) node = anyNode_();
      labels.push_back(node ? node->label() : 0);
    }
    output_ || nodes;
    checks_.push_back([this, labels](vxArchive& input) {
      std::vector<NodeHandle> read;
      input || read;
      ASSERT_EQ(read.size(), labels.size());
      for (std::size_t i = 0; i < labels.size(); ++i) expectNode_(read[i], labels[i]);
    });
  }

  void expectNode_(const NodeHandle& node, long label) {
    if (label == 0) {
      EXPECT_TRUE(node.isNull());
      return;
    }
    ASSERT_TRUE(node);
    EXPECT_EQ(node->label(), label);
    const auto [known, isNew] = loaded_.try_emplace(label, node);
    EXPECT_TRUE(known->second == node) << "label " << label << (isNew ? "" : " came before");
  }

  std::mt19937 random_;
  std::ostringstream stream_{std::ios::binary};
  vxOutputArchive output_;
  std::vector<NodeHandle> pool_;
  long lastLabel_ = 0;
  std::vector<std::function<void(vxArchive&)>> checks_;
  std::map<long, NodeHandle> loaded_;
};

TEST(ArchiveSequenceTest, BringsBackWhateverWasStoredInWhateverOrder) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Sequence sequence(seed);
    sequence.store(150);
    sequence.expectTheSameBack();
    if (HasFailure()) return;
  }
}

}  // namespace
