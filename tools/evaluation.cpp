// SPDX-License-Identifier: MIT
//
// Stratified k-fold cross-validation (R. Kohavi, "A study of cross-validation and bootstrap for
// accuracy estimation and model selection", Proceedings of IJCAI 14(2), 1995, 1137-1143).
#include "tools/evaluation.h"

#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <chrono>
#include <numeric>
#include <utility>

namespace cli {
namespace {

/// Fisher and Yates' shuffle, from the end.
void shuffle(std::vector<std::size_t>& indices, vxRandomUniform& random) {
  for (std::size_t i = indices.size(); i > 1; --i) {
    const double drawn = random.next(0.0, static_cast<double>(i));
    std::swap(indices[i - 1], indices[static_cast<std::size_t>(drawn)]);
  }
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

std::vector<long> stratifiedFolds(const std::vector<long>& labels, long folds, long seed) {
  std::vector<std::size_t> members(labels.size());
  std::iota(members.begin(), members.end(), std::size_t{0});
  vxRandomUniform random(seed);
  shuffle(members, random);
  std::stable_sort(members.begin(), members.end(),
                   [&](std::size_t a, std::size_t b) { return labels[a] < labels[b]; });
  std::vector<long> result(labels.size(), -1);
  long next = 0;
  for (const std::size_t index : members) {
    if (labels[index] < 0) continue;
    result[index] = next;
    next = (next + 1) % folds;
  }
  return result;
}

vxClassifierDataProviderMemory trainingSet(const std::vector<PatternHandle>& patterns,
                                           const std::vector<long>& labels,
                                           const std::vector<long>& folds, long left) {
  std::vector<PatternHandle> kept;
  std::vector<long> keptLabels;
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    if (labels[i] < 0 || folds[i] == left) continue;
    kept.push_back(patterns[i]);
    keptLabels.push_back(labels[i]);
  }
  vxClassifierDataProviderMemory provider;
  provider.data(kept, keptLabels);
  return provider;
}

Evaluation::Evaluation(std::size_t numCategories)
    : confusion_(numCategories, std::vector<long>(numCategories, 0)) {}

void Evaluation::add(long trueLabel, const vxClassifierResult& result) {
  const vxClassifierCategoryResult& decision = result.categoryResults().at(0);
  for (const long label : {trueLabel, decision.categoryLabel()}) {
    if (label < 0 || label >= numCategories()) {
      throw vxClassifierDefs::BadLabel(L"No category of the evaluation has this label");
    }
  }
  ++confusion_[static_cast<std::size_t>(trueLabel)]
              [static_cast<std::size_t>(decision.categoryLabel())];
  expectedCost_ += decision.expectedCost();
}

long Evaluation::count(long trueLabel, long assignedLabel) const {
  return confusion_[static_cast<std::size_t>(trueLabel)][static_cast<std::size_t>(assignedLabel)];
}

long Evaluation::numOf(long trueLabel) const {
  const std::vector<long>& row = confusion_[static_cast<std::size_t>(trueLabel)];
  return std::accumulate(row.begin(), row.end(), 0L);
}

long Evaluation::numPatterns() const {
  long sum = 0;
  for (long label = 0; label < numCategories(); ++label) sum += numOf(label);
  return sum;
}

long Evaluation::numCorrect() const {
  long sum = 0;
  for (long label = 0; label < numCategories(); ++label) sum += count(label, label);
  return sum;
}

double Evaluation::recall(long trueLabel) const {
  return static_cast<double>(count(trueLabel, trueLabel)) / static_cast<double>(numOf(trueLabel));
}

double Evaluation::accuracy() const {
  return static_cast<double>(numCorrect()) / static_cast<double>(numPatterns());
}

double Evaluation::meanExpectedCost() const {
  return expectedCost_ / static_cast<double>(numPatterns());
}

Evaluation crossValidate(const std::vector<PatternHandle>& patterns,
                         const std::vector<long>& labels, std::size_t numCategories,
                         const vxClassifierTrainParams& params, long folds, long seed,
                         const std::function<void(std::size_t)>& onPattern) {
  const std::vector<long> foldOf = stratifiedFolds(labels, folds, seed);
  Evaluation evaluation(numCategories);
  vxClassifierTool tool;
  vxClassifierResult result;
  for (long fold = 0; fold < folds; ++fold) {
    tool.train(trainingSet(patterns, labels, foldOf, fold), params);
    for (std::size_t i = 0; i < patterns.size(); ++i) {
      if (foldOf[i] != fold) continue;
      const auto start = std::chrono::steady_clock::now();
      tool.run(*patterns[i], result);
      evaluation.addSeconds(secondsSince(start));
      evaluation.add(labels[i], result);
      onPattern(i);
    }
  }
  return evaluation;
}

}  // namespace cli
