// SPDX-License-Identifier: MIT
#include "vxfoundation/attention.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "tests/support/host_error.h"
#include "vxfoundation/exception.h"
#include "vxfoundation/status.h"

namespace {

struct Host {
  std::atomic<bool> stop{false};
  std::atomic<int> polls{0};
};

bool readFlag(void* context) {
  Host& host = *static_cast<Host*>(context);
  ++host.polls;
  return host.stop;
}
bool alwaysStop(void*) { return true; }
bool throwHostError(void*) { throw HostError(); }
bool isWithoutContext(void* context) { return context == nullptr; }

bool isFailure(long status) { return (static_cast<std::uint32_t>(status) & 0x80000000u) != 0; }

class AttentionTest : public testing::Test {
 protected:
  ~AttentionTest() override { vfSetAttentionHandler(nullptr, nullptr); }
};

TEST_F(AttentionTest, IsSuccessWithoutAHandler) {
  EXPECT_EQ(vfCheckAttention(), 0);
  EXPECT_NO_THROW(vfThrowExceptionOnFailure(vfCheckAttention()));
}

TEST_F(AttentionTest, AsksTheHandlerWithItsContextAtEveryPoll) {
  Host host;
  vfSetAttentionHandler(readFlag, &host);
  EXPECT_EQ(vfCheckAttention(), 0);
  EXPECT_EQ(vfCheckAttention(), 0);
  EXPECT_EQ(host.polls, 2);

  vfSetAttentionHandler(isWithoutContext, nullptr);
  EXPECT_TRUE(isFailure(vfCheckAttention()));
}

TEST_F(AttentionTest, SaysFailureWithTheFoundationsModuleAndItsFirstCode) {
  vfSetAttentionHandler(alwaysStop, nullptr);
  const auto word = static_cast<std::uint32_t>(vfCheckAttention());
  EXPECT_TRUE(isFailure(vfCheckAttention()));
  EXPECT_EQ((word & 0x7fffffff) >> 5, 1u);
  EXPECT_EQ(word & 0x1f, 1u);
}

TEST_F(AttentionTest, BecomesAStopRequestOnce) {
  Host host;
  vfSetAttentionHandler(readFlag, &host);
  host.stop = true;
  EXPECT_TRUE(isFailure(vfCheckAttention()));
  EXPECT_THROW(vfThrowExceptionOnFailure(vfCheckAttention()), vxStopRequested);
  host.stop = false;
  EXPECT_NO_THROW(vfThrowExceptionOnFailure(vfCheckAttention()));
}

TEST_F(AttentionTest, MeansTheSameWithASignExtendedStatus) {
  vfSetAttentionHandler(alwaysStop, nullptr);
  const long status = static_cast<std::int32_t>(static_cast<std::uint32_t>(vfCheckAttention()));
  EXPECT_THROW(vfThrowExceptionOnFailure(status), vxStopRequested);
}

TEST_F(AttentionTest, ForgetsAHandlerThatWasRemovedOrReplaced) {
  Host first;
  Host second;
  vfSetAttentionHandler(readFlag, &first);
  vfSetAttentionHandler(readFlag, &second);
  EXPECT_EQ(vfCheckAttention(), 0);
  EXPECT_EQ(first.polls, 0);
  EXPECT_EQ(second.polls, 1);

  vfSetAttentionHandler(nullptr, &second);
  second.stop = true;
  EXPECT_EQ(vfCheckAttention(), 0);
  EXPECT_EQ(second.polls, 1);
}

TEST_F(AttentionTest, LetsAnExceptionOfTheHandlerPass) {
  vfSetAttentionHandler(throwHostError, nullptr);
  EXPECT_THROW(vfCheckAttention(), HostError);
}

TEST_F(AttentionTest, IsPolledFromSeveralThreads) {
  constexpr int kThreads = 4;
  Host host;
  vfSetAttentionHandler(readFlag, &host);
  std::atomic<int> stopped{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&stopped] {
      try {
        while (true) vfThrowExceptionOnFailure(vfCheckAttention());
      } catch (const vxStopRequested&) {
        ++stopped;
      }
    });
  }
  while (host.polls < 100) std::this_thread::yield();
  host.stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(stopped, kThreads);
}

}  // namespace
