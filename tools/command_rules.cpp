// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxclss/vxclss.h>

#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/json_text.h"
#include "tools/number_options.h"
#include "tools/row_output.h"
#include "tools/rules_json.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kRulesExamples = R"(
Examples:
  vxclss rules parts.json new.csv --threshold 0.5
  vxclss rules parts.json new.csv --threshold 0.5 -o decisions.csv

The file holds the names of the columns that count and the rules:
  {
    "features": ["width", "holes", "gloss"],
    "rules": [
      {"category": "nut", "scores": {
        "width": {"two-sided": {
          "low":  {"x0": 10, "x1": 8,  "xc": 8,  "y0": 1, "y1": 0},
          "high": {"x0": 12, "x1": 14, "xc": 14, "y0": 1, "y1": 0}}},
        "holes": {"one-sided": {"x0": 1, "x1": 0, "xc": 0, "y0": 1, "y1": 0}}}},
      {"category": "washer", "scores": {"width": "ignore", "holes": "ignore"}}
    ]
  }

Each rule scores each feature from 0 to 1:
  one-sided   y0 up to x0, a straight line from there to y1 at x1, y1 up to xc, 0 beyond; with xc
              below x0 the same towards smaller values
  two-sided   the low side below the smallest x of the high side, the high side from there on
  ignore      the feature doesn't count; so doesn't one that the rule doesn't name
The score of a rule is the geometric mean of what counts, and 1 if nothing does. The first rule
whose score is above the threshold decides; categories may have several.

The output is CSV, one line a pattern: its row and the category, which is empty where no rule
passes (with --json: null). Every feature needs a value in every row.)";

class RulesCommand {
 public:
  RulesCommand(CLI::App& command, const Console& console) {
    command.add_option("RULES.json", rules_, "Features and rules")->type_name("")->required();
    rows_.emplace(command, console);
    command.add_option("--threshold", threshold_, "What a score must be above, from 0 to 1")
        ->check(share())
        ->type_name("T")
        ->required();
    command.footer(kRulesExamples);
  }

  void run() const {
    const RuleFile rules = readRules(rules_);
    Table table(rows_->dataPath());
    std::vector<std::size_t> columns;
    for (const std::string& name : rules.features) columns.push_back(table.column(name));
    const double threshold = numberOf(threshold_);
    rows_->write(table, "row,category\n", [&](std::string& text) {
      const auto pattern = table.pattern(columns, false);
      const long label = rules.table.classifyHardThreshold(
          vxClassifierFeatureVector(pattern->featureMeasurements(true)), threshold);
      const std::string* category =
          label < 0 ? nullptr : &rules.categories[static_cast<std::size_t>(label)];
      if (rows_->json()) {
        text += jsonLine(
            {{"row", table.row()}, {"category", category != nullptr ? Json(*category) : Json()}});
      } else {
        fmt::format_to(std::back_inserter(text), "{},{}\n", table.row(),
                       category != nullptr ? csvCell(*category) : "");
      }
    });
  }

 private:
  std::string rules_;
  std::optional<RowOutput> rows_;  // added after RULES.json, which stands first
  std::string threshold_;
};

}  // namespace

void addRules(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("rules", "Classify patterns by a table of rules");
  command->callback([rules = std::make_shared<RulesCommand>(*command, console)] { rules->run(); });
}

}  // namespace cli
