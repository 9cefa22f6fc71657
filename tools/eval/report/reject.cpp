// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>

#include "tools/eval/evaluation_json.h"
#include "tools/eval/reject_curve.h"
#include "tools/eval/report/chart.h"
#include "tools/eval/report/html.h"
#include "tools/eval/report/sections.h"

namespace eval {
namespace {

struct Curve {
  const char* key;  // in the JSON
  std::string name;
  const char* style;  // of its line
  std::vector<RejectPoint> points;
};

std::vector<Curve> curvesOf(const Page& page) {
  const bool isBayes =
      dynamic_cast<const vx_ClassifierBayesian*>(page.tool.classifier().get()) != nullptr;
  std::vector<Curve> curves{
      {"expected_cost", "expected cost", "k0", {}},
      {"margin", "margin of the class scores", "k1", {}},
      {"fit", isBayes ? "absolute fit (log-likelihood)" : "absolute fit (distance)", "k2", {}}};
  const Criterion criteria[] = {Criterion::eExpectedCost, Criterion::eMargin, Criterion::eFit};
  for (std::size_t i = 0; i < curves.size(); ++i) {
    curves[i].points = thinned(rejectCurve(page.evaluation(), criteria[i]), kCurvePoints);
  }
  return curves;
}

std::string plot(const std::vector<Curve>& curves, double RejectPoint::*what,
                 const std::string& title, bool isShare) {
  std::vector<double> values;
  for (const Curve& curve : curves) {
    for (const RejectPoint& point : curve.points) values.push_back(point.*what);
  }
  Axis y = axisFromZero(values, title);
  y.isShare = isShare;
  Chart chart(540, 300, {0.0, 1.0, "rejected", false, true}, y,
              title + " against the share rejected");
  for (const Curve& curve : curves) {
    Points points;
    for (const RejectPoint& point : curve.points) points.emplace_back(point.rejected, point.*what);
    chart.line(points, curve.style, true);
  }
  return "<figure>" + chart.text() + "</figure>\n";
}

std::string legend(const std::vector<Curve>& curves) {
  std::string text = "<p class=\"legend\">";
  for (const Curve& curve : curves) {
    text += fmt::format(
        "<span class=\"tag\"><svg class=\"mark\" viewBox=\"0 0 26 14\" width=\"26\" height=\"14\" "
        "aria-hidden=\"true\"><path class=\"line {}\" d=\"M1,7H25\"/></svg> rejecting by {}</span> ",
        curve.style, curve.name);
  }
  return text + "</p>\n";
}

/// The first point that rejects a share or more; the last one if none does.
std::size_t pointAt(const Curve& curve, double rejected) {
  const auto found =
      std::find_if(curve.points.begin(), curve.points.end(),
                   [&](const RejectPoint& point) { return point.rejected >= rejected; });
  return static_cast<std::size_t>((found == curve.points.end() ? found - 1 : found) -
                                  curve.points.begin());
}

std::string table(const Page& page, const std::vector<Curve>& curves) {
  std::string text =
      "<div class=\"wide\"><table class=\"figures\">\n<thead><tr><th>rejecting by</th>"
      "<th class=\"number\">threshold</th><th class=\"number\">rejected</th>"
      "<th class=\"number\">errors among the rest</th><th class=\"number\">mean actual cost</th>"
      "</tr></thead>\n<tbody>\n";
  for (const Curve& curve : curves) {
    if (curve.points.empty()) continue;
    std::size_t last = curve.points.size();
    for (const double rejected : {0.0, 0.02, 0.05, 0.1, 0.2}) {
      const std::size_t place = pointAt(curve, rejected);
      if (place == last) continue;
      last = place;
      const std::string at = fmt::format("/reject_curves/{}/{}/", curve.key, place);
      text += fmt::format(
          "<tr><th scope=\"row\">{}</th><td class=\"number\">{}</td><td class=\"number\">{}</td>"
          "<td class=\"number\">{}</td><td class=\"number\">{}</td></tr>\n",
          curve.name, page.figure(at + "threshold", shortNumber),
          page.figure(at + "rejected", percent), page.figure(at + "error_rate", percent),
          page.figure(at + "mean_actual_cost", shortNumber));
    }
  }
  return text + "</tbody>\n</table></div>\n";
}

}  // namespace

std::string rejectSection(const Page& page) {
  const std::vector<Curve> curves = curvesOf(page);
  return section(
      "reject", "Rejecting what is doubtful",
      "A host may hand doubtful patterns to a person. The further down a curve goes while little is "
      "rejected, the better its criterion tells mistakes beforehand: the expected cost and the "
      "margin find patterns between categories, the absolute fit finds those far from all of them.",
      "<div class=\"panels two\">\n" +
          plot(curves, &RejectPoint::errorRate, "errors among the rest", true) +
          plot(curves, &RejectPoint::meanActualCost, "mean actual cost of the rest", false) +
          "</div>\n" + legend(curves) +
          "<details><summary>Thresholds</summary>\n<p class=\"note\">What the threshold itself has "
          "is kept, what is beyond it is rejected.</p>\n" +
          table(page, curves) + "</details>\n");
}

}  // namespace eval
