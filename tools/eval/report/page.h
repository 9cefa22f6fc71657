// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REPORT_PAGE_H_
#define TOOLS_EVAL_REPORT_PAGE_H_

#include <cstddef>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "tools/eval/dataset.h"
#include "tools/eval/evaluation.h"

namespace eval {

/// What a report is about. What it refers to outlives it.
struct ReportInput {
  const Dataset& data;
  const Evaluation& evaluation;
  const vxClassifierTrainParams& params;  // that the evaluation trained with
  std::string title;                      // what the data is called
  std::string method;                     // in words
  std::string split;                      // in words
  std::vector<long> plotted;              // measurements that are plotted, ascending
  std::function<void()> poll;             // called now and then; may throw to stop
};

/// What the sections of a report are made of.
struct Page {
  const ReportInput& input;
  const nlohmann::ordered_json& json;  // evaluationJson()
  const vxClassifierTool& tool;        // trained on every labelled pattern
  std::vector<std::size_t> mistakes;   // shownMistakes()

  const Dataset& data() const { return input.data; }
  const Evaluation& evaluation() const { return input.evaluation; }
  const Confusion& confusion() const { return input.evaluation.confusion(); }
  long numCategories() const { return static_cast<long>(input.data.categories.size()); }

  /// Names as the page shows them, escaped; `most` characters of them.
  std::string category(long label, std::size_t most = 40) const;
  std::string measurement(long index, std::size_t most = 40) const;
  std::string rowOf(const Record& record) const;

  /// The classes by which a category's colour is chosen.
  static std::string colour(long label);

  /// A mark in the category's colour and its name.
  std::string tag(long label, std::size_t most = 40) const;

  /// The number at a place of the JSON, which goes with it.
  std::string figure(const std::string& pointer,
                     const std::function<std::string(double)>& format) const;
  std::string count(const std::string& pointer) const;
};

/// A section of the page, with the id that links lead to. `lead` is HTML.
std::string section(const std::string& id, const std::string& title, const std::string& lead,
                    const std::string& body);

/// One choice of several, without a script: an invisible button for each, which must stand before
/// what it shows, in the same parent.
struct Choice {
  std::string id;     // of the button, letters, digits and dashes
  std::string label;  // HTML
  std::string shows;  // a selector of what is seen while this is chosen
};

/// The buttons; those of one group exclude each other, the first is chosen at first.
std::string choiceButtons(const std::string& group, const std::vector<Choice>& choices);

/// The labels to click on, in a row, and the style that makes them work.
std::string choiceLabels(const std::vector<Choice>& choices);
std::string choiceStyle(const std::vector<Choice>& choices);

}  // namespace eval

#endif  // TOOLS_EVAL_REPORT_PAGE_H_
