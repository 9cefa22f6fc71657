// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_EVALUATION_JSON_H_
#define TOOLS_EVAL_EVALUATION_JSON_H_

#include <cstddef>
#include <nlohmann/json.hpp>

#include "tools/eval/dataset.h"
#include "tools/eval/evaluation.h"

namespace eval {

using Json = nlohmann::ordered_json;

/// The number, exactly; a text, "nan", "inf" or "-inf", where JSON has no number for it.
Json jsonNumber(double value);

/// How many points of a reject curve and how many cost sweeps are told.
constexpr std::size_t kCurvePoints = 200;
constexpr std::size_t kSweeps = 12;

/// All that an evaluation tells but its timings: keys in a fixed order, categories by name,
/// patterns by row. Depends on the evaluation's input alone.
Json evaluationJson(const Dataset& data, const Evaluation& evaluation);

/// Seconds in all and a pattern.
Json timingsJson(const Timings& timings);

}  // namespace eval

#endif  // TOOLS_EVAL_EVALUATION_JSON_H_
