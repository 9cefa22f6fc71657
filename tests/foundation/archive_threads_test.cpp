// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"
#include "vxfoundation/archive.h"

namespace {

using samples::Everything;
using samples::Node;
using samples::Trouble;

constexpr int kThreads = 4;
constexpr int kRounds = 100;

/// Runs `body` on several threads at once.
template <class Body>
void onThreads(Body&& body) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&body] {
      for (int round = 0; round < kRounds; ++round) body();
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(ArchiveThreadsTest, StoreOneObjectAtOnce) {
  const vxPtrHandle<Everything> shared = Everything::filled();
  const std::string expected = stored(*Everything::filled());
  onThreads([&] { EXPECT_EQ(stored(*shared), expected); });
}

TEST(ArchiveThreadsTest, StoreOneObjectThroughPointersAtOnce) {
  for (int fresh = 0; fresh < 20; ++fresh) {
    // Nobody has stored it yet, so the threads meet at its first stamp.
    const vxPtrHandle<Everything> shared = Everything::filled();
    onThreads([&] {
      vxPtrHandle<Everything> mine(shared);
      vxPtrHandle<Everything> first;
      vxPtrHandle<Everything> second;
      load(stored(mine, mine), first, second);
      EXPECT_TRUE(first == second);
      EXPECT_EQ(first->number, -2);
    });
  }
}

TEST(ArchiveThreadsTest, StoreOneErrorAtOnce) {
  Trouble shared(L"shared");
  const std::string expected = stored(shared);
  onThreads([&] { EXPECT_EQ(stored(shared), expected); });
}

TEST(ArchiveThreadsTest, LoadAtOnce) {
  vxPtrHandle<Everything> source = Everything::filled();
  const std::string bytes = stored(source);
  const int before = Node::numAlive();
  onThreads([&] { EXPECT_EQ(loaded<vxPtrHandle<Everything>>(bytes)->diamond->bottom, 4); });
  EXPECT_EQ(Node::numAlive(), before);
}

}  // namespace
