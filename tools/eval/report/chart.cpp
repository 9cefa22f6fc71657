// SPDX-License-Identifier: MIT
#include "tools/eval/report/chart.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "tools/eval/report/html.h"

namespace eval {
namespace {

constexpr double kLeftMargin = 58.0;
constexpr double kRightMargin = 20.0;
constexpr double kTopMargin = 10.0;
constexpr double kBottomMargin = 44.0;

/// 1, 2 or 5 times a power of ten, so that some `count` steps fill the span.
double roundStep(double span, int count) {
  const double raw = span / count;
  const double decade = std::pow(10.0, std::floor(std::log10(raw)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * decade >= raw * 0.999) return factor * decade;
  }
  return 10.0 * decade;
}

std::string tickText(const Axis& axis, double value) {
  if (axis.isShare) return shortNumber(std::round(value * 1e6) / 1e4) + " %";
  return shortNumber(value);
}

}  // namespace

std::vector<double> ticks(const Axis& axis, int count) {
  std::vector<double> result;
  if (!(axis.high > axis.low) || !std::isfinite(axis.high - axis.low)) return {axis.low};
  if (axis.isLogarithmic) {
    const int first = static_cast<int>(std::ceil(std::log10(axis.low) - 1e-9));
    const int last = static_cast<int>(std::floor(std::log10(axis.high) + 1e-9));
    for (int power = first; power <= last; ++power) result.push_back(std::pow(10.0, power));
    return result;
  }
  const double step = roundStep(axis.high - axis.low, count);
  const double first = std::ceil(axis.low / step - 1e-9);
  for (double i = first; i * step <= axis.high + 1e-9 * step; i += 1.0) {
    result.push_back(i * step);
    if (result.size() > 50) break;  // where the span is lost in the rounding of its ends
  }
  return result;
}

Axis axisFromZero(const std::vector<double>& values, std::string title) {
  double low = 0.0;
  double high = 0.0;
  for (const double value : values) {
    if (!std::isfinite(value)) continue;
    low = std::min(low, value);
    high = std::max(high, value);
  }
  if (high == low) high = low + 1.0;
  return {low, high + 0.06 * (high - low), std::move(title)};
}

Chart::Chart(double width, double height, Axis x, Axis y, const std::string& description)
    : width_(width),
      height_(height),
      xAxis_(std::move(x)),
      yAxis_(std::move(y)),
      left_(kLeftMargin),
      right_(width - kRightMargin),
      top_(kTopMargin),
      bottom_(height - kBottomMargin),
      description_(escaped(description)) {}

double Chart::x(double value) const { return place_(xAxis_, value, left_, right_); }

double Chart::y(double value) const { return place_(yAxis_, value, bottom_, top_); }

double Chart::place_(const Axis& axis, double value, double from, double to) const {
  const auto scaled = [&](double v) { return axis.isLogarithmic ? std::log10(v) : v; };
  const double share = (scaled(value) - scaled(axis.low)) / (scaled(axis.high) - scaled(axis.low));
  return from + std::clamp(share, -1.0, 2.0) * (to - from);
}

void Chart::line(const Points& points, const std::string& classes, bool asSteps) {
  std::string path;
  for (const auto& [pointX, pointY] : points) {
    if (!std::isfinite(pointX) || !std::isfinite(pointY)) continue;
    if (xAxis_.isLogarithmic && pointX <= 0.0) continue;
    const std::string at = coordinate(x(pointX));
    if (asSteps && !path.empty()) path += "H" + at;
    path += fmt::format("{}{},{}", path.empty() ? "M" : "L", at, coordinate(y(pointY)));
  }
  add(fmt::format("<path class=\"line {}\" d=\"{}\"/>", classes, path));
}

void Chart::add(const std::string& svg, bool inside) {
  if (!inside) {
    body_ += svg + "\n";
    return;
  }
  body_ += fmt::format(
      "<svg x=\"{0}\" y=\"{1}\" width=\"{2}\" height=\"{3}\" viewBox=\"{0} {1} {2} {3}\">{4}</svg>\n",
      coordinate(left_), coordinate(top_), coordinate(right_ - left_), coordinate(bottom_ - top_),
      svg);
}

std::string Chart::frame_() const {
  std::string text;
  for (const double tick : ticks(yAxis_, 5)) {
    text += fmt::format(
        "<path class=\"grid\" d=\"M{0},{1}H{2}\"/><text class=\"tick end\" x=\"{3}\" y=\"{4}\">{5}</text>\n",
        coordinate(left_), coordinate(y(tick)), coordinate(right_), coordinate(left_ - 7.0),
        coordinate(y(tick) + 3.5), tickText(yAxis_, tick));
  }
  for (const double tick : ticks(xAxis_, 6)) {
    text += fmt::format(
        "<path class=\"grid\" d=\"M{0},{1}V{2}\"/><text class=\"tick middle\" x=\"{0}\" y=\"{3}\">{4}</text>\n",
        coordinate(x(tick)), coordinate(top_), coordinate(bottom_), coordinate(bottom_ + 16.0),
        tickText(xAxis_, tick));
  }
  const double middle = (top_ + bottom_) / 2.0;
  text += fmt::format(
      "<text class=\"axis middle\" x=\"{}\" y=\"{}\">{}</text>\n"
      "<text class=\"axis middle\" transform=\"translate(13,{}) rotate(-90)\">{}</text>\n",
      coordinate((left_ + right_) / 2.0), coordinate(height_ - 6.0),
      escaped(clipped(xAxis_.title, 60)), coordinate(middle), escaped(clipped(yAxis_.title, 44)));
  return text;
}

std::string Chart::text() const {
  return fmt::format(
      "<svg class=\"chart\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\" role=\"img\" "
      "aria-label=\"{2}\">\n{3}{4}<path class=\"base\" d=\"M{5},{6}V{7}H{8}\"/>\n</svg>\n",
      coordinate(width_), coordinate(height_), description_, frame_(), body_, coordinate(left_),
      coordinate(top_), coordinate(bottom_), coordinate(right_));
}

}  // namespace eval
