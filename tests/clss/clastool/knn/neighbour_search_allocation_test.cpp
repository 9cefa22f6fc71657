// SPDX-License-Identifier: MIT
// Searches, and the laying out of patterns for them, while allocations fail.

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/failing_operation.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"

namespace {

/// Patterns on a curve, each with its number as label; with 20 measurements or with two.
vxClassifierDataProviderMemory curve(long count, bool isLong) {
  std::vector<LabelledSample> samples;
  for (long i = 0; i < count; ++i) {
    const auto x = static_cast<double>(i);
    std::vector<double> values = {x, 0.001 * x * x};
    if (isLong) values.resize(20, 0.5 * x);
    samples.push_back({values, i});
  }
  return providerOf(samples);
}

vxFeaturePattern queryAt(double x, bool isLong) {
  std::vector<double> values = {x, 0.001 * x * x};
  if (isLong) values.resize(20, 0.5 * x);
  return {values, {}};
}

std::vector<long> firstNumbers(long count) {
  std::vector<long> numbers;
  for (long i = 0; i < count; ++i) numbers.push_back(i);
  return numbers;
}

struct SearchCase {
  double order;
  long k;
  bool isLong;
};

/// A thread of its own has no memory of earlier searches.
template <class Body>
void onFreshThread(const Body& body) {
  std::thread thread(body);
  thread.join();
}

class NeighbourSearchAllocationTest : public testing::TestWithParam<SearchCase> {
 protected:
  static vxClassifierTrainParamsKNN params() {
    return {GetParam().k, vxPatternDistanceMetricNorm(GetParam().order), vxClassifierCosts(1.0)};
  }
  static void run(const vx_Classifier& classifier, vxClassifierResult& result) {
    classifier.run(queryAt(-1.0, GetParam().isLong), result);
  }
  static void expectRightAnswer(const vx_Classifier& classifier) {
    vxClassifierResult result;
    run(classifier, result);
    EXPECT_EQ(labelsOf(result), firstNumbers(GetParam().k));
  }
};

TEST_P(NeighbourSearchAllocationTest, AnswersAfterAFailedTraining) {
  const vxClassifierDataProviderMemory data = curve(150, GetParam().isLong);
  const vxClassifierTrainParamsKNN wanted = params();
  EXPECT_GT(forEachFailure([&](std::size_t number, allocator::Failing failing) {
              vx_ClassifierKNN classifier;
              bool wasMet = false;
              const FailureOutcome outcome =
                  withFailure(number, failing, wasMet, [&] { classifier.train(data, wanted); });
              if (outcome != FailureOutcome::kDone) classifier.train(data, wanted);
              expectRightAnswer(classifier);
              return wasMet;
            }),
            10);
}

TEST_P(NeighbourSearchAllocationTest, AnswersAfterAFailedFirstSearchOfAFreshThread) {
  vx_ClassifierKNN small;
  small.train(curve(120, GetParam().isLong), params());
  vx_ClassifierKNN trained;
  trained.train(curve(900, GetParam().isLong), params());
  vxPtrHandle<vx_Classifier> pointer = trained.clone();
  const std::string bytes = stored(pointer);
  const vxClassifierTrainParamsKNN wanted = params();

  EXPECT_GT(forEachFailure([&](std::size_t number, allocator::Failing failing) {
              vxPtrHandle<vx_Classifier> fresh;
              load(bytes, fresh);
              fresh->retrain(wanted);
              bool wasMet = false;
              onFreshThread([&] {
                vxClassifierResult result({vxClassifierCategoryResult(77, 0.5, 1.0, 3.0)}, 0.25);
                const vxClassifierResult before(result);
                const FailureOutcome outcome =
                    withFailure(number, failing, wasMet, [&] { run(*fresh, result); });
                if (outcome == FailureOutcome::kDone) {
                  EXPECT_EQ(labelsOf(result), firstNumbers(GetParam().k));
                } else {
                  EXPECT_EQ(result, before);
                }
                expectRightAnswer(small);
                expectRightAnswer(*fresh);
                expectRightAnswer(trained);
              });
              return wasMet;
            }),
            10);
}

TEST_P(NeighbourSearchAllocationTest, AnswersAfterAPatternThatCouldNotBeAdded) {
  const vxFeaturePattern far = queryAt(1e4, GetParam().isLong);
  EXPECT_GT(
      forEachFailure([&](std::size_t number, allocator::Failing failing) {
        vx_ClassifierKNN classifier;
        classifier.train(curve(128, GetParam().isLong), params());
        bool wasMet = false;
        const FailureOutcome outcome =
            withFailure(number, failing, wasMet, [&] { classifier.trainIncremental(far, 5000); });
        EXPECT_EQ(classifier.data()->numPatterns(), outcome == FailureOutcome::kDone ? 129 : 128);
        expectRightAnswer(classifier);
        return wasMet;
      }),
      2);
}

INSTANTIATE_TEST_SUITE_P(Cases, NeighbourSearchAllocationTest,
                         testing::Values(SearchCase{2.0, 1, false}, SearchCase{2.0, 90, false},
                                         SearchCase{2.0, 1, true}, SearchCase{1.0, 90, true},
                                         SearchCase{3.0, 7, false}, SearchCase{3.0, 7, true}),
                         [](const auto& row) {
                           return "Order" + std::to_string(static_cast<int>(row.param.order)) +
                                  "With" + std::to_string(row.param.k) +
                                  (row.param.isLong ? "Long" : "Short");
                         });

}  // namespace
