// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>

#include "tools/eval/calibration.h"
#include "tools/eval/report/chart.h"
#include "tools/eval/report/html.h"
#include "tools/eval/report/sections.h"

namespace eval {
namespace {

std::string reliability(const std::vector<CalibrationBin>& bins) {
  Chart chart(540, 360, {0.0, 1.0, "class score of the decision", false, true},
              {0.0, 1.0, "decided rightly", false, true},
              "share of right decisions against class score");
  chart.line({{0.0, 0.0}, {1.0, 1.0}}, "ideal");
  Points line;
  std::string marks;
  for (const CalibrationBin& bin : bins) {
    if (bin.decisions == 0) continue;
    line.emplace_back(bin.meanClassScore, bin.shareCorrect);
    const std::string x = coordinate(chart.x(bin.meanClassScore));
    marks += fmt::format(
        "<path class=\"whisker\" d=\"M{0},{1}V{2}\"/><circle class=\"bead\" cx=\"{0}\" cy=\"{3}\" "
        "r=\"4.5\"><title>{4} of {5} right</title></circle>",
        x, coordinate(chart.y(bin.interval.low)), coordinate(chart.y(bin.interval.high)),
        coordinate(chart.y(bin.shareCorrect)), bin.correct, bin.decisions);
  }
  chart.line(line, "k0");
  chart.add(marks);
  return "<figure>" + chart.text() + "</figure>\n";
}

std::string counts(const std::vector<CalibrationBin>& bins) {
  std::vector<double> numbers;
  numbers.reserve(bins.size());
  for (const CalibrationBin& bin : bins) numbers.push_back(static_cast<double>(bin.decisions));
  Chart chart(540, 360, {0.0, 1.0, "class score of the decision", false, true},
              axisFromZero(numbers, "decisions"), "number of decisions against class score");
  std::string bars;
  for (const CalibrationBin& bin : bins) {
    if (bin.decisions == 0) continue;
    bars += fmt::format("<path class=\"bar k0\" d=\"M{},{}V{}H{}V{}z\"/>",
                        coordinate(chart.x(bin.low) + 1.0), coordinate(chart.bottom()),
                        coordinate(chart.y(static_cast<double>(bin.decisions))),
                        coordinate(chart.x(bin.high) - 1.0), coordinate(chart.bottom()));
  }
  chart.add(bars);
  return "<figure>" + chart.text() + "</figure>\n";
}

std::string table(const Page& page, const std::vector<CalibrationBin>& bins) {
  std::string text =
      "<div class=\"wide\"><table class=\"figures\">\n<thead><tr><th>class score</th>"
      "<th class=\"number\">decisions</th><th class=\"number\">mean class score</th>"
      "<th class=\"number\">decided rightly</th><th class=\"number\">95&nbsp;% interval</th></tr>"
      "</thead>\n<tbody>\n";
  for (std::size_t i = 0; i < bins.size(); ++i) {
    if (bins[i].decisions == 0) continue;
    const std::string at = fmt::format("/calibration/bins/{}/", i);
    text += fmt::format(
        "<tr><th scope=\"row\">{} to {}</th><td class=\"number\">{}</td><td class=\"number\">{}</td>"
        "<td class=\"number\">{}</td><td class=\"number\">{} to {}</td></tr>\n",
        shortNumber(bins[i].low), shortNumber(bins[i].high), page.count(at + "decisions"),
        page.figure(at + "mean_class_score", shortNumber),
        page.figure(at + "share_correct", percent), page.figure(at + "interval/low", percent),
        page.figure(at + "interval/high", percent));
  }
  return text + "</tbody>\n</table></div>\n";
}

}  // namespace

std::string calibrationSection(const Page& page) {
  const std::vector<CalibrationBin> bins = calibration(page.evaluation().records());
  return section(
      "calibration", "Are class scores probabilities?",
      "Of the decisions with a class score of 80&nbsp;%, four in five should be right. Points below "
      "the diagonal: the classifier is too sure of itself, and its expected costs are too low. "
      "Whiskers tell the 95&nbsp;% interval.",
      "<div class=\"panels two\">\n" + reliability(bins) + counts(bins) +
          "</div>\n<details><summary>Numbers</summary>\n" + table(page, bins) + "</details>\n");
}

}  // namespace eval
