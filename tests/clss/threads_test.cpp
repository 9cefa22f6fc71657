// SPDX-License-Identifier: MIT
// What threads may do at once: everything const on one object, and anything on objects of their
// own that share parts.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/on_threads.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"
#include "vxfoundation/attention.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 20;

class ThreadsTest : public testing::Test {
 protected:
  ThreadsTest() {
    std::vector<LabelledSample> samples;
    for (long i = 0; i < 60; ++i) {
      samples.push_back({{static_cast<double>(i % 7), static_cast<double>(i % 11)}, i % 4});
    }
    data_ = providerOf(samples);
    tool_.train(data_, vxClassifierTrainParamsKNN(5));
  }
  ~ThreadsTest() override { vfSetAttentionHandler(nullptr, nullptr); }

  static vxFeaturePattern query(int number) {
    return {{0.5 * (number % 16), 0.25 * (number % 40)}, {}};
  }
  static vxClassifierResult run(const vxClassifierTool& tool, int number) {
    vxClassifierResult result;
    tool.run(query(number), result);
    return result;
  }
  static std::vector<vxClassifierResult> runAll(const vxClassifierTool& tool) {
    std::vector<vxClassifierResult> results;
    for (int i = 0; i < kRounds; ++i) results.push_back(run(tool, i));
    return results;
  }
  vxClassifierDataProviderMemory data_;
  vxClassifierTool tool_;
};

TEST_F(ThreadsTest, RunOneFreshlyLoadedTool) {
  vxClassifierTool reference;
  load(stored(tool_), reference);
  const std::vector<vxClassifierResult> expected = runAll(reference);

  vxClassifierTool tool;
  load(stored(tool_), tool);
  onThreads(kThreads, [&](int thread) {
    for (int i = 0; i < kRounds; ++i) {
      const int number = (i + thread) % kRounds;
      EXPECT_EQ(run(tool, number), expected[static_cast<std::size_t>(number)]);
    }
  });
}

TEST_F(ThreadsTest, RunOneFreshlyRetrainedTool) {
  const std::vector<vxClassifierResult> expected = runAll(tool_);
  vxClassifierTool tool;
  load(stored(tool_), tool);
  tool.retrain(*tool.trainParams(), nullptr, 0);
  onThreads(kThreads, [&](int) { EXPECT_EQ(runAll(tool), expected); });
}

TEST_F(ThreadsTest, RunAndRetrainCopiesThatShareTheirPatterns) {
  const std::vector<vxClassifierResult> expected = runAll(tool_);
  onThreads(kThreads, [&](int thread) {
    for (int i = 0; i < kRounds; ++i) {
      vxClassifierTool own(tool_);
      EXPECT_TRUE(own == tool_);
      EXPECT_EQ(run(own, i), expected[static_cast<std::size_t>(i)]);
      own.retrain(vxClassifierTrainParamsKNN(thread % 3 + 1));
      run(own, i);
      own.untrain();
      own.train(data_, vxClassifierTrainParamsKNN(5));
      EXPECT_EQ(run(own, i), expected[static_cast<std::size_t>(i)]);
    }
  });
  EXPECT_EQ(runAll(tool_), expected);
}

TEST_F(ThreadsTest, ArchiveOneToolAndRunIt) {
  const std::string bytes = stored(tool_);
  const std::vector<vxClassifierResult> expected = runAll(tool_);
  vxClassifierTool fresh(tool_);
  onThreads(4, [&](int thread) {
    for (int i = 0; i < kRounds; ++i) {
      if (thread < 2) {
        EXPECT_EQ(stored(fresh), bytes);
      } else {
        EXPECT_EQ(run(fresh, i), expected[static_cast<std::size_t>(i)]);
      }
    }
  });
}

TEST_F(ThreadsTest, ArchiveOneProvider) {
  const std::string bytes = stored(data_);
  onThreads(2, [&](int) {
    for (int i = 0; i < kRounds; ++i) {
      EXPECT_EQ(stored(data_), bytes);
      vxClassifierDataProviderMemory read;
      load(bytes, read);
      EXPECT_TRUE(read == data_);
    }
  });
}

TEST_F(ThreadsTest, ArchiveOneProviderThroughPointers) {
  const vxPtrHandle_const<vxClassifierDataProviderMemory> shared(
      new vxClassifierDataProviderMemory(data_));
  vxPtrHandle_const<vxClassifierDataProviderMemory> first(shared);
  const std::string bytes = stored(first);
  const vxPtrHandle_const<vxClassifierDataProviderMemory> fresh(
      new vxClassifierDataProviderMemory(data_));
  onThreads(2, [&](int) {
    vxPtrHandle_const<vxClassifierDataProviderMemory> own(fresh);
    for (int i = 0; i < kRounds; ++i) EXPECT_EQ(stored(own), bytes);
  });
}

TEST_F(ThreadsTest, LoadAtTheSameTime) {
  const std::string bytes = stored(tool_);
  onThreads(kThreads, [&](int) {
    for (int i = 0; i < kRounds; ++i) {
      vxClassifierTool read;
      load(bytes, read);
      EXPECT_TRUE(read == tool_);
    }
  });
}

TEST_F(ThreadsTest, CopyHandlesToOneObject) {
  const vxPtrHandle_const<vxClassifierTrainParams> params = tool_.trainParams();
  const vxPtrHandle_const<vxFeaturePattern> pattern = data_.featurePattern(0);
  const long paramsCount = params->referenceCount();
  const long patternCount = pattern->referenceCount();
  onThreads(kThreads, [&](int) {
    std::vector<vxPtrHandle_const<vxFeaturePattern>> handles;
    for (int i = 0; i < 500; ++i) {
      handles.push_back(data_.featurePattern(0));
      const vxPtrHandle_const<vxClassifierTrainParams> copy(tool_.trainParams());
      EXPECT_EQ(copy, params);
      if (i % 3 == 0) handles.clear();
    }
  });
  EXPECT_EQ(params->referenceCount(), paramsCount);
  EXPECT_EQ(pattern->referenceCount(), patternCount);
}

TEST_F(ThreadsTest, ReleaseTheLastHandleOnAnyThread) {
  std::vector<vxPtrHandle_const<vx_Classifier>> handles(
      kThreads, vxPtrHandle_const<vx_Classifier>(tool_.classifier()->clone()));
  onThreads(kThreads, [&](int thread) { handles[static_cast<std::size_t>(thread)].reset(); });
  for (const auto& handle : handles) EXPECT_TRUE(handle.isNull());
}

TEST_F(ThreadsTest, AreAllStoppedByTheHost) {
  std::atomic<bool> stop{false};
  vfSetAttentionHandler([](void* flag) { return static_cast<std::atomic<bool>*>(flag)->load(); },
                        &stop);
  std::atomic<int> running{0};
  onThreads(kThreads + 1, [&](int thread) {
    if (thread == kThreads) {
      while (running < kThreads) std::this_thread::yield();
      stop = true;
      return;
    }
    const vxFeaturePattern pattern = query(thread);
    vxClassifierResult result;
    tool_.run(pattern, result);
    const vxClassifierResult before(result);
    ++running;
    // Every run but the one that is stopped leaves the same result.
    EXPECT_THROW(for (;;) tool_.run(pattern, result), vxStopRequested);
    EXPECT_EQ(result, before);
  });

  stop = false;
  vxClassifierResult result;
  EXPECT_NO_THROW(tool_.run(query(0), result));
}

}  // namespace
