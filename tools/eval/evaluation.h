// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_EVALUATION_H_
#define TOOLS_EVAL_EVALUATION_H_

#include <vxclss/vxclss.h>

#include <cstddef>
#include <functional>
#include <map>
#include <vector>

#include "tools/eval/confusion.h"
#include "tools/eval/contribution.h"
#include "tools/eval/dataset.h"
#include "tools/eval/record.h"
#include "tools/eval/split.h"

namespace eval {

/// How a technique turns match scores into decisions.
struct Weighting {
  vxClassifierFrequencies frequencies{1.0};
  vxClassifierCosts costs{1.0};
};

/// That of parameters. Throws vxClassifierDefs::BadMethod for a technique that isn't known here.
Weighting weightingOf(const vxClassifierTrainParams& params);

/// Where the time went, all rounds together.
struct Timings {
  double trainSeconds = 0.0;
  long trainedPatterns = 0;  // a pattern counts once a round
  double runSeconds = 0.0;
  long testedPatterns = 0;
};

/// What decisions on patterns of known category were worth. All but the timings depends on the
/// arguments of evaluate() alone.
class Evaluation {
 public:
  Evaluation(std::size_t numCategories, Weighting weighting);

  /// Throws vxClassifierDefs::BadLabel, if the label or the decision is no category of these.
  void add(const Record& record);

  /// In the order of the patterns, once evaluate() is done.
  const std::vector<Record>& records() const { return records_; }

  /// Its members are places in records().
  const Confusion& confusion() const { return confusion_; }

  const Weighting& weighting() const { return weighting_; }
  const Timings& timings() const { return timings_; }

  /// The categories that the round's tool knew, in its own order.
  const std::vector<long>& labelOrder(long round) const {
    return labelOrders_.at(static_cast<std::size_t>(round));
  }

  /// Why a pattern was decided as it was; null unless it was decided wrongly and evaluate() was to
  /// explain.
  const Explanation* explanation(const Record& record) const;

  double meanExpectedCost() const;
  double meanActualCost() const;
  double logLoss() const;

 private:
  friend class Evaluator;

  Weighting weighting_;
  std::vector<Record> records_;
  Confusion confusion_;
  std::vector<std::vector<long>> labelOrders_;       // by round
  std::map<std::size_t, Explanation> explanations_;  // by pattern
  Timings timings_;
};

/// What evaluate() finds out beside the decisions; each may take as long as those.
struct Questions {
  bool fit = false;      // Record::fit
  bool explain = false;  // Evaluation::explanation()
};

/// Has each tested pattern classified by a tool that was trained with `params` on the round's other
/// patterns. Calls `onPattern` after each decision with the pattern's index; it may throw to stop.
///
/// Throws what training and running throw.
Evaluation evaluate(const Dataset& data, const vxClassifierTrainParams& params, const Split& split,
                    const Questions& questions, const std::function<void(std::size_t)>& onPattern);

}  // namespace eval

#endif  // TOOLS_EVAL_EVALUATION_H_
