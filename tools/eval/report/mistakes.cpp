// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "tools/eval/report/html.h"
#include "tools/eval/report/sections.h"
#include "tools/eval/scores.h"

namespace eval {
namespace {

constexpr std::size_t kMostMistakes = 100;
constexpr std::size_t kMostBars = 12;
constexpr double kWidth = 620.0;
constexpr double kMiddle = 390.0;
constexpr double kReach = 160.0;
constexpr double kRow = 24.0;

double difference(const Contribution& group) { return group.forDecided - group.forTrue; }

std::string namesOf(const Page& page, const Contribution& group, std::size_t most) {
  std::string text;
  for (const long i : group.measurements) {
    text += (text.empty() ? "" : " + ") + page.data().measurements.at(static_cast<std::size_t>(i));
  }
  return escaped(clipped(text, most));
}

std::string valuesOf(const Page& page, const Record& record, const Contribution& group) {
  const vxFeaturePattern& pattern = *page.data().patterns[record.pattern];
  std::string text;
  for (const long i : group.measurements) {
    text += text.empty() ? "" : "; ";
    text += pattern.isValid(i) ? shortNumber(pattern.featureMeasurement(i, false)) : "missing";
  }
  return text;
}

/// The groups that matter most, in their order.
std::vector<std::size_t> largest(const std::vector<Contribution>& groups) {
  std::vector<std::size_t> places(groups.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  std::stable_sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) {
    return std::fabs(difference(groups[a])) > std::fabs(difference(groups[b]));
  });
  if (places.size() > kMostBars) places.resize(kMostBars);
  std::sort(places.begin(), places.end());
  return places;
}

/// A bar to the right for what spoke for the decision, to the left for the true category.
std::string bars(const Page& page, const Record& record, const std::vector<Contribution>& groups) {
  const std::vector<std::size_t> places = largest(groups);
  double widest = 0.0;
  for (const std::size_t i : places) {
    if (std::isfinite(difference(groups[i]))) {
      widest = std::max(widest, std::fabs(difference(groups[i])));
    }
  }
  if (widest == 0.0) widest = 1.0;
  std::string text;
  double y = 22.0;
  for (const std::size_t i : places) {
    const double value = difference(groups[i]);
    const double reach = std::isnan(value) ? 0.0 : std::clamp(value / widest, -1.0, 1.0) * kReach;
    const long label = value >= 0.0 ? record.decidedLabel() : record.trueLabel;
    text += fmt::format(
        "<text class=\"tick end\" x=\"215\" y=\"{}\">{}</text><path class=\"bar solid {}\" "
        "d=\"M{},{}H{}v15H{}z\"/><text class=\"tick {}\" x=\"{}\" y=\"{}\">{}</text>\n",
        coordinate(y + 12.0), namesOf(page, groups[i], 34), Page::colour(label),
        coordinate(kMiddle), coordinate(y), coordinate(kMiddle + reach), coordinate(kMiddle),
        value >= 0.0 ? "" : "end", coordinate(kMiddle + reach + (value >= 0.0 ? 5.0 : -5.0)),
        coordinate(y + 12.0), shortNumber(value));
    y += kRow;
  }
  return fmt::format(
      "<svg class=\"chart\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\" role=\"img\" "
      "aria-label=\"contribution of each measurement\">"
      "<text class=\"axis end\" x=\"{2}\" y=\"12\">\u2190 for {3}</text>"
      "<text class=\"axis\" x=\"{4}\" y=\"12\">for {5} \u2192</text>\n{6}"
      "<path class=\"base\" d=\"M{7},18V{8}\"/></svg>\n",
      coordinate(kWidth), coordinate(y + 6.0), coordinate(kMiddle - 8.0),
      page.category(record.trueLabel, 24), coordinate(kMiddle + 8.0),
      page.category(record.decidedLabel(), 24), text, coordinate(kMiddle), coordinate(y));
}

std::string table(const Page& page, std::size_t place, const Record& record,
                  const std::vector<Contribution>& groups) {
  std::string text = fmt::format(
      "<div class=\"wide\"><table class=\"figures\">\n<thead><tr><th>measurements</th>"
      "<th class=\"number\">value</th><th class=\"number\">for {}</th>"
      "<th class=\"number\">for {}</th></tr></thead>\n<tbody>\n",
      page.category(record.decidedLabel(), 24), page.category(record.trueLabel, 24));
  for (const std::size_t i : largest(groups)) {
    const std::string at = fmt::format("/records/{}/contributions/{}/", place, i);
    text += fmt::format(
        "<tr><th scope=\"row\">{}</th><td class=\"number\">{}</td><td class=\"number\">{}</td>"
        "<td class=\"number\">{}</td></tr>\n",
        namesOf(page, groups[i], 60), valuesOf(page, record, groups[i]),
        page.figure(at + "for_decided", shortNumber), page.figure(at + "for_true", shortNumber));
  }
  text += "</tbody>\n</table></div>\n";
  if (groups.size() > kMostBars) {
    text += fmt::format("<p class=\"note\">The {} of {} that differ most.</p>\n", kMostBars,
                        groups.size());
  }
  return text;
}

/// The place of a category in the record's results, -1 if it is none of them.
long placeOf(const Record& record, long label) {
  const auto& results = record.result.categoryResults();
  for (std::size_t i = 0; i < results.size(); ++i) {
    if (results[i].categoryLabel() == label) return static_cast<long>(i);
  }
  return -1;
}

std::string card(const Page& page, std::size_t place, bool isOpen) {
  const Record& record = page.evaluation().records()[place];
  const Explanation* why = page.evaluation().explanation(record);
  const long truth = placeOf(record, record.trueLabel);
  const std::string at = fmt::format("/records/{}/", place);
  std::string text = fmt::format(
      "<details class=\"mistake\" id=\"{}\"{}>\n<summary><b>row {}</b> {} <span class=\"muted\">"
      "decided</span> {} <span class=\"muted\">class scores</span> {} : {} "
      "<span class=\"muted\">cost</span> {}</summary>\n",
      mistakeId(page, place), isOpen ? " open" : "", page.rowOf(record), page.tag(record.trueLabel),
      page.tag(record.decidedLabel()), page.figure(at + "results/0/class_score", shortNumber),
      truth >= 0 ? page.figure(at + fmt::format("results/{}/class_score", truth), shortNumber)
                 : "0",
      page.figure(at + "actual_cost", shortNumber));
  if (why == nullptr || why->contributions.empty()) {
    return text +
           "<p class=\"note\">What the measurements contributed is not known here: the "
           "classifier of this round knew one of the two categories not at all, or measures "
           "in a way that can't be split.</p>\n</details>\n";
  }
  return text + bars(page, record, why->contributions) +
         table(page, place, record, why->contributions) + "</details>\n";
}

std::string lead(const Page& page) {
  const bool isBayes =
      dynamic_cast<const vx_ClassifierBayesian*>(page.tool.classifier().get()) != nullptr;
  return isBayes
             ? "A bar tells by how much the log density of a group of measurements was higher in "
               "one category than in the other; all bars add up to the logarithm of the two match "
               "scores&rsquo; ratio. Frequencies and costs come on top."
             : "A bar compares the nearest patterns of both categories: |difference| in that "
               "measurement to the power of the norm&rsquo;s order, of the one less that of the "
               "other. Where one bar dwarfs the rest, scaling the measurements may help.";
}

}  // namespace

std::vector<std::size_t> shownMistakes(const Evaluation& evaluation) {
  struct Mistake {
    std::size_t place;
    double cost;
    double surety;
  };
  std::vector<Mistake> mistakes;
  for (std::size_t i = 0; i < evaluation.records().size(); ++i) {
    const Record& record = evaluation.records()[i];
    if (record.isCorrect()) continue;
    const double surety = record.decision().classScore() - record.classScore(record.trueLabel);
    mistakes.push_back(
        {i, actualCost(evaluation.weighting().costs, record.trueLabel, record.decidedLabel()),
         std::isnan(surety) ? 0.0 : surety});
  }
  std::stable_sort(mistakes.begin(), mistakes.end(), [](const Mistake& a, const Mistake& b) {
    return a.cost != b.cost ? a.cost > b.cost : a.surety > b.surety;
  });
  std::vector<std::size_t> places;
  for (const Mistake& mistake : mistakes) {
    if (places.size() == kMostMistakes) break;
    places.push_back(mistake.place);
  }
  return places;
}

std::string mistakeId(const Page& page, std::size_t record) {
  const std::vector<std::size_t>& shown = page.mistakes;
  if (std::find(shown.begin(), shown.end(), record) == shown.end()) return "";
  return "row-" + page.rowOf(page.evaluation().records()[record]);
}

std::string mistakesSection(const Page& page) {
  const std::vector<std::size_t>& shown = page.mistakes;
  if (shown.empty()) return "";
  std::string body;
  const std::size_t all =
      static_cast<std::size_t>(page.confusion().numPatterns() - page.confusion().numCorrect());
  if (all > shown.size()) {
    body += fmt::format("<p class=\"note\">The {} dearest and surest of {} mistakes.</p>\n",
                        shown.size(), all);
  }
  for (const std::size_t place : shown) body += card(page, place, place == shown.front());
  return section("mistakes", "Why it went wrong", lead(page), body);
}

}  // namespace eval
