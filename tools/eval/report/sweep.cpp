// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include "tools/eval/cost_sweep.h"
#include "tools/eval/evaluation_json.h"
#include "tools/eval/report/chart.h"
#include "tools/eval/report/html.h"
#include "tools/eval/report/sections.h"

namespace eval {
namespace {

Axis costAxis(const CostSweep& sweep) {
  const double low = sweep.points.front().cost;
  return {low > 0.0 ? low : sweep.points.at(1).cost, sweep.points.back().cost,
          "cost of this misclassification", true};
}

template <class Number>
Points pointsOf(const CostSweep& sweep, Number SweepPoint::*what) {
  Points points;
  for (const SweepPoint& point : sweep.points) {
    points.emplace_back(point.cost, static_cast<double>(point.*what));
  }
  return points;
}

void addCostNow(Chart& chart, const CostSweep& sweep) {
  if (sweep.costNow <= 0.0) return;
  chart.add(fmt::format(
      "<path class=\"now\" d=\"M{0},{1}V{2}\"/><text class=\"tick\" x=\"{3}\" y=\"{4}\">now</text>",
      coordinate(chart.x(sweep.costNow)), coordinate(chart.top()), coordinate(chart.bottom()),
      coordinate(chart.x(sweep.costNow) + 5.0), coordinate(chart.top() + 11.0)));
}

std::string costPlot(const CostSweep& sweep) {
  // Decisions that don't adapt soon cost so much that nothing else could be seen beside them.
  std::vector<double> costs;
  for (const SweepPoint& point : sweep.points) costs.push_back(1.6 * point.meanActualCost);
  Chart chart(540, 300, costAxis(sweep), axisFromZero(costs, "mean actual cost"),
              "mean actual cost against the cost of the misclassification");
  addCostNow(chart, sweep);
  const Points kept = pointsOf(sweep, &SweepPoint::keptDecisions);
  std::string path;
  for (const auto& [cost, mean] : kept) {
    if (cost <= 0.0) continue;
    path += fmt::format("{}{},{}", path.empty() ? "M" : "L", coordinate(chart.x(cost)),
                        coordinate(chart.y(mean)));
  }
  chart.add(fmt::format("<path class=\"line k1\" d=\"{}\"/>", path), true);
  chart.line(pointsOf(sweep, &SweepPoint::meanActualCost), "k0");
  return "<figure>" + chart.text() + "</figure>\n";
}

std::string countPlot(const CostSweep& sweep) {
  std::vector<double> counts;
  for (const SweepPoint& point : sweep.points) counts.push_back(static_cast<double>(point.errors));
  Chart chart(540, 300, costAxis(sweep), axisFromZero(counts, "patterns"),
              "mistakes against the cost of the misclassification");
  addCostNow(chart, sweep);
  chart.line(pointsOf(sweep, &SweepPoint::errors), "k2");
  chart.line(pointsOf(sweep, &SweepPoint::falseAlarms), "k1");
  chart.line(pointsOf(sweep, &SweepPoint::misses), "k0");
  return "<figure>" + chart.text() + "</figure>\n";
}

std::string key(const std::string& style, const std::string& name) {
  return fmt::format(
      "<span class=\"tag\"><svg class=\"mark\" viewBox=\"0 0 26 14\" width=\"26\" height=\"14\" "
      "aria-hidden=\"true\"><path class=\"line {}\" d=\"M1,7H25\"/></svg> {}</span> ",
      style, name);
}

std::string table(const Page& page, std::size_t place, const CostSweep& sweep) {
  std::string text =
      "<div class=\"wide\"><table class=\"figures\">\n<thead><tr><th>cost</th>"
      "<th class=\"number\">mean actual cost</th><th class=\"number\">if decided as now</th>"
      "<th class=\"number\">of this kind</th><th class=\"number\">the other way round</th>"
      "<th class=\"number\">all mistakes</th></tr></thead>\n<tbody>\n";
  for (std::size_t i = 0; i < sweep.points.size(); ++i) {
    const std::string at = fmt::format("/cost_sweeps/{}/points/{}/", place, i);
    text += fmt::format(
        "<tr><th scope=\"row\">{}</th><td class=\"number\">{}</td><td class=\"number\">{}</td>"
        "<td class=\"number\">{}</td><td class=\"number\">{}</td><td class=\"number\">{}</td></tr>\n",
        page.figure(at + "cost", shortNumber), page.figure(at + "mean_actual_cost", shortNumber),
        page.figure(at + "mean_actual_cost_of_decisions_now", shortNumber),
        page.count(at + "misses"), page.count(at + "false_alarms"), page.count(at + "errors"));
  }
  return text + "</tbody>\n</table></div>\n";
}

std::string panel(const Page& page, std::size_t place, const CostSweep& sweep) {
  const std::string t = page.category(sweep.trueLabel);
  const std::string a = page.category(sweep.assignedLabel);
  return fmt::format("<div class=\"sweep sweep-{}\">\n<div class=\"panels two\">\n", place) +
         "<div>" + costPlot(sweep) + "<p class=\"legend\">" + key("k0", "deciding anew") +
         key("k1", "deciding as now") + "</p></div>\n<div>" + countPlot(sweep) +
         "<p class=\"legend\">" + key("k0", t + " decided " + a) + key("k1", a + " decided " + t) +
         key("k2", "all mistakes") + "</p></div>\n</div>\n" +
         "<details><summary>Numbers</summary>\n" + table(page, place, sweep) +
         "</details>\n</div>\n";
}

}  // namespace

std::string sweepSection(const Page& page) {
  const std::vector<CostSweep> sweeps = costSweeps(page.evaluation(), kSweeps);
  if (sweeps.empty()) return "";
  std::vector<Choice> choices;
  std::string panels;
  for (std::size_t i = 0; i < sweeps.size(); ++i) {
    const std::string id = fmt::format("sweep-{}", i);
    choices.push_back({"choose-" + id,
                       page.category(sweeps[i].trueLabel, 20) + " decided " +
                           page.category(sweeps[i].assignedLabel, 20),
                       "." + id});
    panels += panel(page, i, sweeps[i]);
  }
  return section("costs", "What a mistake may cost",
                 "One kind of mistake is made dearer and cheaper than it is now, and every pattern "
                 "is decided anew from the same scores, just as a classifier retrained with these "
                 "costs would. Pick the cost at which the remaining mistakes suit you.",
                 choiceStyle(choices) + choiceButtons("sweep", choices) + "<div>\n" +
                     choiceLabels(choices) + panels + "</div>\n");
}

}  // namespace eval
