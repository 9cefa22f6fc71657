// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REPORT_CHART_H_
#define TOOLS_EVAL_REPORT_CHART_H_

#include <string>
#include <utility>
#include <vector>

namespace eval {

using Points = std::vector<std::pair<double, double>>;

/// What numbers an axis shows.
struct Axis {
  double low;
  double high;
  std::string title;
  bool isLogarithmic = false;  // low > 0 then
  bool isShare = false;        // ticks in per cent
};

/// Round numbers within the axis, some `count` of them.
std::vector<double> ticks(const Axis& axis, int count);

/// From 0, or the lowest value if that is lower, to a little more than the highest.
Axis axisFromZero(const std::vector<double>& values, std::string title);

/// A plot with axes, as inline SVG. Colours come from the page's classes.
class Chart {
 public:
  /// `description` tells what the plot shows to those who can't see it; plain text, as the titles.
  Chart(double width, double height, Axis x, Axis y, const std::string& description);

  /// Where a value stands in the picture.
  double x(double value) const;
  double y(double value) const;

  /// The part of the picture that is plotted on.
  double left() const { return left_; }
  double right() const { return right_; }
  double top() const { return top_; }
  double bottom() const { return bottom_; }

  /// A line through the points, what is no number left out; `asSteps` keeps the height of a point
  /// up to the next.
  void line(const Points& points, const std::string& classes, bool asSteps = false);

  /// Anything else, which is cut at the axes if `inside`.
  void add(const std::string& svg, bool inside = false);

  std::string text() const;

 private:
  double place_(const Axis& axis, double value, double from, double to) const;
  std::string frame_() const;

  double width_;
  double height_;
  Axis xAxis_;
  Axis yAxis_;
  double left_;
  double right_;
  double top_;
  double bottom_;
  std::string description_;
  std::string body_;
};

}  // namespace eval

#endif  // TOOLS_EVAL_REPORT_CHART_H_
