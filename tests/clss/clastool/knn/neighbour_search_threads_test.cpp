// SPDX-License-Identifier: MIT
// Threads that lay out one training set for the search, or notice a change of it, at the same time.

#include <gtest/gtest.h>

#include <vector>

#include "tests/clss/clastool/knn/knn_data.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/on_threads.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"

namespace {

constexpr int kThreads = 8;

class NeighbourSearchThreadsTest : public testing::Test {
 protected:
  NeighbourSearchThreadsTest() {
    knn_data::Random random(1);
    const auto draw = [&] {
      std::vector<double> x(5);
      for (double& value : x) value = knn_data::fraction(random);
      return vxFeaturePattern(x, {});
    };
    std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
    std::vector<long> labels;
    for (long i = 0; i < 700; ++i) {
      patterns_.emplace_back(new vxFeaturePattern(draw()));
      patterns.push_back(patterns_.back());
      labels.push_back(i);
    }
    data_.data(patterns, labels);
    for (int i = 0; i < kThreads; ++i) queries_.push_back(draw());
  }

  std::vector<long> neighbours(const vx_Classifier& classifier, int query) const {
    vxClassifierResult result;
    classifier.run(queries_[static_cast<std::size_t>(query)], result);
    return labelsOf(result);
  }

  std::vector<std::vector<long>> allNeighbours(const vx_Classifier& classifier) const {
    std::vector<std::vector<long>> all;
    for (int i = 0; i < kThreads; ++i) all.push_back(neighbours(classifier, i));
    return all;
  }

  static vxPtrHandle<vx_Classifier> reloaded(const vx_ClassifierKNN& classifier) {
    vxPtrHandle<vx_Classifier> pointer = classifier.clone();
    vxPtrHandle<vx_Classifier> read;
    load(stored(pointer), read);
    return read;
  }

  void expectOnThreads(const vx_Classifier& classifier,
                       const std::vector<std::vector<long>>& expected) const {
    onThreads(kThreads, [&](int thread) {
      for (int i = 0; i < kThreads; ++i) {
        const int query = (i + thread) % kThreads;
        EXPECT_EQ(neighbours(classifier, query), expected[static_cast<std::size_t>(query)]);
      }
    });
  }

  std::vector<vxPtrHandle<vxFeaturePattern>> patterns_;
  vxClassifierDataProviderMemory data_;
  std::vector<vxFeaturePattern> queries_;
};

TEST_F(NeighbourSearchThreadsTest, LayOutAFreshlyLoadedSetAtOnce) {
  vx_ClassifierKNN classifier;
  classifier.train(data_, vxClassifierTrainParamsKNN(1));
  const auto expected = allNeighbours(classifier);
  for (int round = 0; round < 5; ++round) expectOnThreads(*reloaded(classifier), expected);
}

TEST_F(NeighbourSearchThreadsTest, NoticeAChangedPatternAtOnce) {
  vx_ClassifierKNN classifier;
  classifier.train(data_, vxClassifierTrainParamsKNN(3));
  const vx_ClassifierKNN copy(classifier);
  for (std::size_t i = 0; i < kThreads; ++i) {
    *patterns_[i] = queries_[i];
    vx_ClassifierKNN fresh;
    fresh.train(data_, vxClassifierTrainParamsKNN(3));
    const auto expected = allNeighbours(fresh);
    EXPECT_TRUE(testing::Value(expected[i], testing::Contains(static_cast<long>(i))));
    expectOnThreads(copy, expected);
  }
}

TEST_F(NeighbourSearchThreadsTest, RunWhileOthersChangeSetsOfTheirOwnAndShareItsPatterns) {
  vx_ClassifierKNN classifier;
  classifier.train(data_, vxClassifierTrainParamsKNN(3));
  const auto expected = allNeighbours(classifier);
  onThreads(kThreads, [&](int thread) {
    for (int i = 0; i < kThreads; ++i) {
      EXPECT_EQ(neighbours(classifier, i), expected[static_cast<std::size_t>(i)]);
      // Marks the shared patterns again and takes the marks back.
      vx_ClassifierKNN other;
      other.train(data_, vxClassifierTrainParamsKNN(3));
      EXPECT_EQ(neighbours(other, thread), expected[static_cast<std::size_t>(thread)]);
      // Moves the counter.
      const vxPtrHandle<vxFeaturePattern> own(new vxFeaturePattern({0.0}, {}));
      vxClassifierDataProviderMemory data = providerOf({{{1.0}, 1}, {{2.0}, 2}});
      data.addData(own, 3);
      other.train(data, vxClassifierTrainParamsKNN(1));
      vxClassifierResult result;
      other.run({{10.0}, {}}, result);
      EXPECT_EQ(labelsOf(result), (std::vector<long>{2}));
      *own = vxFeaturePattern({9.0}, {});
      other.run({{10.0}, {}}, result);
      EXPECT_EQ(labelsOf(result), (std::vector<long>{3}));
    }
  });
}

}  // namespace
