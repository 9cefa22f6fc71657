// SPDX-License-Identifier: MIT
#include "tools/eval/evaluation.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "tools/eval/fit.h"
#include "tools/eval/scores.h"

namespace eval {
namespace {

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// In the order in which the technique hands its match scores on.
std::vector<long> labelOrderOf(const vxClassifierTool& tool, std::size_t numCategories) {
  const vxPtrHandle_const<vx_Classifier> classifier = tool.classifier();
  if (const auto* bayes = dynamic_cast<const vx_ClassifierBayesian*>(classifier.get())) {
    return bayes->categoryLabels();
  }
  std::vector<long> ascending;
  for (std::size_t i = 0; i < numCategories; ++i) ascending.push_back(static_cast<long>(i));
  return ascending;
}

}  // namespace

Weighting weightingOf(const vxClassifierTrainParams& params) {
  if (const auto* bayes = dynamic_cast<const vxClassifierTrainParamsBayesian*>(&params)) {
    return {bayes->categoryFrequencies(), bayes->misclassificationCosts()};
  }
  if (const auto* knn = dynamic_cast<const vxClassifierTrainParamsKNN*>(&params)) {
    return {vxClassifierFrequencies(1.0), knn->misclassificationCosts()};
  }
  throw vxClassifierDefs::BadMethod(L"The costs of this technique are not known");
}

Evaluation::Evaluation(std::size_t numCategories, Weighting weighting)
    : weighting_(std::move(weighting)), confusion_(numCategories) {}

void Evaluation::add(const Record& record) {
  confusion_.add(record.trueLabel, record.decidedLabel(), records_.size());
  records_.push_back(record);
}

const Explanation* Evaluation::explanation(const Record& record) const {
  const auto found = explanations_.find(record.pattern);
  return found != explanations_.end() ? &found->second : nullptr;
}

double Evaluation::meanExpectedCost() const { return eval::meanExpectedCost(records_); }

double Evaluation::meanActualCost() const {
  return eval::meanActualCost(records_, weighting_.costs);
}

double Evaluation::logLoss() const { return eval::logLoss(records_); }

/// One call of evaluate().
class Evaluator {
 public:
  Evaluator(const Dataset& data, const vxClassifierTrainParams& params, const Split& split,
            const Questions& questions)
      : data_(data),
        params_(params),
        split_(split),
        questions_(questions),
        result_(data.categories.size(), weightingOf(params)) {}

  Evaluation run(const std::function<void(std::size_t)>& onPattern) {
    for (long round = 0; round < split_.rounds; ++round) {
      train_(round);
      for (std::size_t i = 0; i < data_.patterns.size(); ++i) {
        if (split_.roundOf[i] != round) continue;
        test_(i, round);
        onPattern(i);
      }
    }
    return inOrder_();
  }

 private:
  void train_(long round) {
    const vxClassifierDataProviderMemory provider = trainingSet(data_, split_, round);
    const auto start = std::chrono::steady_clock::now();
    tool_.train(provider, params_);
    result_.timings_.trainSeconds += secondsSince(start);
    result_.timings_.trainedPatterns += provider.numPatterns();
    result_.labelOrders_.push_back(labelOrderOf(tool_, data_.categories.size()));
  }

  void test_(std::size_t index, long round) {
    const vxFeaturePattern& pattern = *data_.patterns[index];
    Record record;
    record.pattern = index;
    record.round = round;
    record.trueLabel = data_.labels[index];
    const auto start = std::chrono::steady_clock::now();
    tool_.run(pattern, record.result);
    result_.timings_.runSeconds += secondsSince(start);
    ++result_.timings_.testedPatterns;
    if (questions_.fit) record.fit = absoluteFit(tool_, pattern, record.result);
    if (questions_.explain && !record.isCorrect()) {
      result_.explanations_[index] =
          explanation(tool_, pattern, record.decidedLabel(), record.trueLabel);
    }
    records_.push_back(std::move(record));
  }

  Evaluation inOrder_() {
    std::sort(records_.begin(), records_.end(),
              [](const Record& a, const Record& b) { return a.pattern < b.pattern; });
    for (const Record& record : records_) result_.add(record);
    return std::move(result_);
  }

  const Dataset& data_;
  const vxClassifierTrainParams& params_;
  const Split& split_;
  const Questions& questions_;
  vxClassifierTool tool_;
  std::vector<Record> records_;
  Evaluation result_;
};

Evaluation evaluate(const Dataset& data, const vxClassifierTrainParams& params, const Split& split,
                    const Questions& questions, const std::function<void(std::size_t)>& onPattern) {
  return Evaluator(data, params, split, questions).run(onPattern);
}

}  // namespace eval
