// SPDX-License-Identifier: MIT
// Threads that meet at one object of any class; see also tests/clss/threads_test.cpp.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/support/archived_types.h"
#include "tests/support/on_threads.h"
#include "tests/support/outcome.h"
#include "tests/support/technique_samples.h"
#include "vxfoundation/attention.h"

namespace {

constexpr int kThreads = 8;
constexpr int kQueries = 16;
constexpr int kFreshModels = 10;

std::string runOf(const vxClassifierTool& tool, int query) {
  vxClassifierResult result;
  const std::string outcome = outcomeOf([&] { tool.run(techniqueQuery(query), result); });
  return outcome + " " + bitsOf(result);
}

std::vector<std::string> runsOf(const vxClassifierTool& tool) {
  std::vector<std::string> runs;
  for (int query = 0; query < kQueries; ++query) runs.push_back(runOf(tool, query));
  return runs;
}

/// A trained tool, and what makes one of the same answers that nobody has run yet.
struct Fresh {
  std::string name;
  std::function<vxClassifierTool()> make;

  friend std::ostream& operator<<(std::ostream& out, const Fresh& fresh) {
    return out << fresh.name;
  }
};

std::vector<Fresh> freshTools() {
  std::vector<Fresh> all;
  for (const Technique& technique : techniques()) {
    const auto load = [technique] {
      return loaded<vxClassifierTool>(inPlace(technique.trained()));
    };
    all.push_back({technique.name + "Loaded", load});
    all.push_back({technique.name + "Trained", [technique] { return technique.trained(); }});
    if (!technique.retrain) continue;
    all.push_back({technique.name + "LoadedAndRetrained", [load, technique] {
                     vxClassifierTool tool = load();
                     technique.retrain(tool);
                     return tool;
                   }});
  }
  return all;
}

class FreshToolTest : public testing::TestWithParam<Fresh> {
 protected:
  ~FreshToolTest() override { vfSetAttentionHandler(nullptr, nullptr); }
};

// The first runs meet where the classifier keeps what makes later ones fast.
TEST_P(FreshToolTest, IsRunByEightThreadsAtOnce) {
  const std::vector<std::string> expected = runsOf(GetParam().make());
  for (int fresh = 0; fresh < kFreshModels; ++fresh) {
    const vxClassifierTool tool = GetParam().make();
    onThreads(kThreads, [&](int thread) {
      for (int i = 0; i < kQueries; ++i) {
        const int query = (i + thread) % kQueries;
        EXPECT_EQ(runOf(tool, query), expected[static_cast<std::size_t>(query)]);
      }
    });
  }
}

TEST_P(FreshToolTest, IsStoredByTwoThreadsComparedAndRunByOthers) {
  const vxClassifierTool reference = GetParam().make();
  const std::vector<std::string> expected = runsOf(reference);
  const std::string bytes = inPlace(reference);
  for (int fresh = 0; fresh < kFreshModels; ++fresh) {
    const vxClassifierTool tool = GetParam().make();
    onThreads(kThreads, [&](int thread) {
      for (int i = 0; i < kQueries; ++i) {
        if (thread < 2) {
          EXPECT_EQ(inPlace(tool), bytes);
        } else if (thread < 4) {
          EXPECT_TRUE(tool == reference);
          EXPECT_TRUE(vxClassifierTool(tool) == tool);
        } else {
          EXPECT_EQ(runOf(tool, i), expected[static_cast<std::size_t>(i)]);
        }
      }
    });
  }
}

// A ring: each thread runs what it was given, hands it on and takes the next; whoever is last
// destroys it.
TEST_P(FreshToolTest, CrossesThreadsInAHandle) {
  const std::vector<std::string> expected = runsOf(GetParam().make());
  const vxClassifierTool tool = GetParam().make();
  struct Place {
    std::atomic<const vx_Classifier*> offered{nullptr};
  };
  std::vector<Place> ring(kThreads);
  onThreads(kThreads, [&](int thread) {
    vxPtrHandle_const<vx_Classifier> held(tool.classifier()->clone());
    Place& next = ring[static_cast<std::size_t>((thread + 1) % kThreads)];
    Place& mine = ring[static_cast<std::size_t>(thread)];
    for (int i = 0; i < kQueries; ++i) {
      vxClassifierResult result;
      const std::string outcome = outcomeOf([&] { held->run(techniqueQuery(i), result); });
      EXPECT_EQ(outcome + " " + bitsOf(result), expected[static_cast<std::size_t>(i)]);

      // The neighbour takes a handle of its own, and this thread then gives up its own.
      const vx_Classifier* nobody = nullptr;
      while (!next.offered.compare_exchange_weak(nobody, held.get(), std::memory_order_acq_rel)) {
        nobody = nullptr;
        std::this_thread::yield();
      }
      const vx_Classifier* offered = nullptr;
      while ((offered = mine.offered.load(std::memory_order_acquire)) == nullptr) {
        std::this_thread::yield();
      }
      const vxPtrHandle_const<vx_Classifier> taken(offered);
      mine.offered.store(nullptr, std::memory_order_release);
      while (next.offered.load(std::memory_order_acquire) == held.get()) std::this_thread::yield();
      held = taken;
    }
  });
  for (const Place& place : ring) EXPECT_EQ(place.offered.load(), nullptr);
}

TEST_P(FreshToolTest, IsStoppedInAllThreadsByAHostsFlag) {
  const std::vector<std::string> expected = runsOf(GetParam().make());
  std::atomic<bool> stop{false};
  vfSetAttentionHandler([](void* flag) { return static_cast<std::atomic<bool>*>(flag)->load(); },
                        &stop);
  const vxClassifierTool tool = GetParam().make();
  std::atomic<int> running{0};
  onThreads(kThreads + 1, [&](int thread) {
    if (thread == kThreads) {
      while (running < kThreads) std::this_thread::yield();
      stop = true;
      return;
    }
    const int query = thread % 3 + 1;
    vxClassifierResult result;
    tool.run(techniqueQuery(query), result);
    const std::string before = bitsOf(result);
    ++running;
    EXPECT_THROW(for (;;) tool.run(techniqueQuery(query), result), vxStopRequested);
    EXPECT_EQ(bitsOf(result), before);
  });

  stop = false;
  EXPECT_EQ(runsOf(tool), expected);
}

INSTANTIATE_TEST_SUITE_P(Tools, FreshToolTest, testing::ValuesIn(freshTools()),
                         [](const testing::TestParamInfo<Fresh>& row) { return row.param.name; });

template <class T>
class OneObjectTest : public testing::Test {};
TYPED_TEST_SUITE(OneObjectTest, ArchivedTypes, ClassNames);

/// By pointer where the class has a name, so that the threads meet at the object's first stamp.
template <class T>
std::string whole(const T& object) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  storeWhole(archive, object);
  return stream.str();
}

/// Uses of a copy would change these two: copies share their patterns and their densities.
template <class T>
constexpr bool isUsedByReadingAlone =
    !std::is_same_v<T, vx_ClassifierKNN> && !std::is_same_v<T, vx_CategoryModelBayesian>;

template <class T>
void read(const T& object) {
  const T copy(object);
  tryAll([&] { return areEqual(copy, object); });
  if constexpr (isUsedByReadingAlone<T>) Archived<T>::use(object);
}

TYPED_TEST(OneObjectTest, IsStoredByTwoThreadsAndReadByTwo) {
  const auto samples = Archived<TypeParam>::samples();
  for (std::size_t number = 0; number < samples.size(); ++number) {
    const auto& sample = samples[number];
    const std::string bytes = whole(sample.object);
    for (int fresh = 0; fresh < kFreshModels; ++fresh) {
      // Nobody has stored it or its parts before.
      const TypeParam object = Archived<TypeParam>::samples()[number].object;
      const std::string expected = bytes;
      onThreads(4, [&](int thread) {
        for (int i = 0; i < 5; ++i) {
          if (thread < 2) {
            EXPECT_EQ(whole(object), expected);
            EXPECT_EQ(whole(sample.object), bytes);
          } else {
            read(object);
            read(sample.object);
          }
        }
      });
    }
  }
}

TYPED_TEST(OneObjectTest, IsLoadedByEightThreadsAtOnce) {
  const auto samples = Archived<TypeParam>::samples();
  const std::string bytes = whole(samples.back().object);
  const std::string expected = inPlace(samples.back().object);
  onThreads(kThreads, [&](int) {
    std::istringstream stream(bytes, std::ios::binary);
    vxInputArchive archive(stream);
    TypeParam target = samples.front().object;
    const auto arrived = loadWhole(archive, target);
    EXPECT_EQ(inPlace(*arrived), expected);
  });
}

}  // namespace
