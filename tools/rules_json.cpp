// SPDX-License-Identifier: MIT
#include "tools/rules_json.h"

#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include "tools/json_file.h"
#include "tools/name_options.h"
#include "tools/text.h"

namespace cli {
namespace {

using Score = vxPtrHandle<vxClsFtSc>;

/// The five numbers of one side.
struct Side {
  explicit Side(const JsonValue& value)
      : x0(value.member("x0").number()),
        x1(value.member("x1").number()),
        xc(value.member("xc").number()),
        y0(value.member("y0").number()),
        y1(value.member("y1").number()) {
    value.allowOnly({"x0", "x1", "xc", "y0", "y1"});
  }

  double x0, x1, xc, y0, y1;
};

Score oneSided(const JsonValue& value) {
  const Side side(value);
  const vxPtrHandle<vxClassifierFeatureScoreOneSided> score(new vxClassifierFeatureScoreOneSided);
  try {
    score->init(side.x0, side.x1, side.xc, side.y0, side.y1);
  } catch (const vxClassifierDefs::BadParams& error) {
    value.refuse(vfNarrow(error.message()));
  }
  return score;
}

Score twoSided(const JsonValue& value) {
  value.allowOnly({"low", "high"});
  // Each side by itself first, so that an error names it.
  oneSided(value.member("low"));
  oneSided(value.member("high"));
  const Side low(value.member("low"));
  const Side high(value.member("high"));
  const vxPtrHandle<vxClassifierFeatureScoreTwoSided> score(new vxClassifierFeatureScoreTwoSided);
  try {
    score->init(low.x0, low.x1, low.xc, high.x0, high.x1, high.xc, low.y0, low.y1, high.y0,
                high.y1);
  } catch (const vxClassifierDefs::BadParams& error) {
    value.refuse(vfNarrow(error.message()));
  }
  return score;
}

Score scoreAt(const JsonValue& value) {
  if (value.isText()) {
    const std::string text = value.text();
    if (text == "ignore") return Score(new vxClassifierFeatureScoreIgnore);
    value.refuse(shown(text) + " is no score; there are: ignore, one-sided, two-sided");
  }
  value.allowOnly({"one-sided", "two-sided"});
  if (value.keys().size() != 1) value.refuse("not one of one-sided, two-sided");
  if (value.has("one-sided")) return oneSided(value.member("one-sided"));
  return twoSided(value.member("two-sided"));
}

vxClassifierRule ruleAt(const JsonValue& value, RuleFile& file) {
  value.allowOnly({"category", "scores"});
  const std::string category = value.member("category").name();
  long label = positionOf(file.categories, category);
  if (label < 0) {
    label = static_cast<long>(file.categories.size());
    file.categories.push_back(category);
  }
  const JsonValue given = value.member("scores");
  std::vector<Score> scores(file.features.size());
  for (const std::string& key : given.keys()) {
    const long feature = positionOf(file.features, key);
    if (feature < 0) {
      given.refuse(
          fmt::format("no feature {}; there are: {}", shown(key), fmt::join(file.features, ", ")));
    }
    Score& score = scores[static_cast<std::size_t>(feature)];
    if (score) given.refuse(fmt::format("{} a second time", shown(trimmed(key))));
    score = scoreAt(given.member(key));
  }
  for (Score& score : scores) {
    if (!score) score.reset(new vxClassifierFeatureScoreIgnore);
  }
  vxClassifierRule rule;
  rule.init(scores, label);
  return rule;
}

}  // namespace

RuleFile readRules(const std::string& path) {
  const JsonFile json(path);
  const JsonValue root = json.root();
  root.allowOnly({"features", "rules"});
  RuleFile file;
  file.features = root.member("features").names();
  const JsonValue list = root.member("rules");
  std::vector<vxClassifierRule> rules;
  for (const JsonValue& element : list.elements()) rules.push_back(ruleAt(element, file));
  if (rules.empty()) list.refuse("an empty list");
  file.table.train(rules);
  return file;
}

}  // namespace cli
