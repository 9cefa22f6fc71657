// SPDX-License-Identifier: MIT
//
// The width of the bins is D. Freedman's and P. Diaconis' ("On the histogram as a density
// estimator", Zeitschrift fuer Wahrscheinlichkeitstheorie 57(4), 1981, 453-476), within bounds.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "tools/eval/report/chart.h"
#include "tools/eval/report/html.h"
#include "tools/eval/report/regions.h"
#include "tools/eval/report/sections.h"

namespace eval {
namespace {

constexpr double kWidth = 360.0;
constexpr double kRowHeight = 56.0;
constexpr double kNameWidth = 96.0;
constexpr double kAxisHeight = 40.0;
constexpr std::size_t kCurveSteps = 120;

std::vector<double> valuesOf(const Dataset& data, long measurement, long label) {
  std::vector<double> values;
  for (std::size_t i = 0; i < data.patterns.size(); ++i) {
    if (data.labels[i] != label || !data.patterns[i]->isValid(measurement)) continue;
    values.push_back(data.patterns[i]->featureMeasurement(measurement, false));
  }
  std::sort(values.begin(), values.end());
  return values;
}

/// As many as the narrowest category needs, within bounds.
std::size_t binsFor(const Dataset& data, long measurement, const Span& span) {
  double bins = 16.0;
  for (std::size_t label = 0; label < data.categories.size(); ++label) {
    const auto values = valuesOf(data, measurement, static_cast<long>(label));
    if (values.empty()) continue;
    const double quartiles = values[values.size() * 3 / 4] - values[values.size() / 4];
    const double width = 2.0 * quartiles / std::cbrt(static_cast<double>(values.size()));
    if (width > 0.0) bins = std::max(bins, (span.high - span.low) / width);
  }
  return static_cast<std::size_t>(std::min(bins, 40.0));
}

/// The share of the values in each bin, divided by the bin's width.
std::vector<double> histogram(const std::vector<double>& values, const Span& span,
                              std::size_t bins) {
  std::vector<double> density(bins, 0.0);
  const double width = (span.high - span.low) / static_cast<double>(bins);
  for (const double value : values) {
    const auto bin = static_cast<std::size_t>((value - span.low) / width);
    density[std::min(bin, bins - 1)] += 1.0 / (static_cast<double>(values.size()) * width);
  }
  return density;
}

/// The marginal of a measurement in a normal group.
Points normalCurve(double mean, double variance, const Span& span) {
  Points curve;
  if (!(variance > 0.0)) return curve;
  constexpr double kTwoPi = 6.283185307179586;
  for (std::size_t i = 0; i <= kCurveSteps; ++i) {
    const double x = span.low + (span.high - span.low) * static_cast<double>(i) /
                                    static_cast<double>(kCurveSteps);
    curve.emplace_back(
        x, std::exp(-0.5 * (x - mean) * (x - mean) / variance) / std::sqrt(kTwoPi * variance));
  }
  return curve;
}

/// The probability of each number of successes, spread over the values that are rounded to it.
Points binomialCurve(const vx_PDFBinomial& density) {
  Points curve;
  const long trials = density.numTrials();
  if (trials < 1 || trials > 400) return curve;
  const double step = density.maximumValue() / static_cast<double>(trials);
  for (long k = 0; k <= trials; ++k) {
    const double x = k == trials ? density.maximumValue() : static_cast<double>(k) * step;
    curve.emplace_back(x, std::exp(density.logValue(vxFeaturePattern({x}, {}))) / step);
  }
  return curve;
}

/// What the model holds for a measurement of a category; empty for techniques without densities.
Points modelCurve(const Page& page, long measurement, long label, const Span& span) {
  const auto classifier = page.tool.classifier();
  const auto* bayes = dynamic_cast<const vx_ClassifierBayesian*>(classifier.get());
  if (bayes == nullptr) return {};
  for (const auto& any : bayes->categoryModels()) {
    const auto* model = dynamic_cast<const vx_CategoryModelBayesian*>(any.get());
    if (model == nullptr || model->categoryLabel() != label) continue;
    const auto densities = model->densities();
    for (std::size_t k = 0; k < densities.size(); ++k) {
      const std::vector<long>& group = model->measurementGroups().at(k);
      const auto member = std::find(group.begin(), group.end(), measurement);
      if (member == group.end()) continue;
      const long place = member - group.begin();
      if (const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(densities[k].get())) {
        return normalCurve(normal->mean().element(place, 0),
                           normal->covariance().element(place, place), span);
      }
      if (const auto* binomial = dynamic_cast<const vx_PDFBinomial*>(densities[k].get())) {
        return binomialCurve(*binomial);
      }
    }
  }
  return {};
}

/// One measurement: a row for each category, all with the same axis and scale.
class Ridges {
 public:
  Ridges(const Page& page, long measurement)
      : page_(page),
        measurement_(measurement),
        span_(spanOf(page.data(), measurement)),
        bins_(binsFor(page.data(), measurement, span_)) {
    for (long label = 0; label < page.numCategories(); ++label) {
      bars_.push_back(histogram(valuesOf(page.data(), measurement, label), span_, bins_));
      curves_.push_back(modelCurve(page, measurement, label, span_));
    }
  }

  std::string text() const {
    const double height = kRowHeight * static_cast<double>(bars_.size()) + kAxisHeight;
    std::string body;
    for (std::size_t row = 0; row < bars_.size(); ++row) body += row_(row);
    return fmt::format(
        "<figure class=\"ridges\"><svg class=\"chart\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" "
        "height=\"{1}\" role=\"img\" aria-label=\"distribution of {2} in each category\">\n"
        "{3}{4}</svg></figure>\n",
        coordinate(kWidth), coordinate(height), page_.measurement(measurement_), body,
        axis_(height));
  }

 private:
  double x_(double value) const {
    return kNameWidth +
           (value - span_.low) / (span_.high - span_.low) * (kWidth - kNameWidth - 8.0);
  }

  /// A category that is very narrow would flatten all others, so each row has a scale of its own.
  double highest_(std::size_t row) const {
    double highest = *std::max_element(bars_[row].begin(), bars_[row].end());
    double curve = 0.0;
    for (const auto& point : curves_[row]) curve = std::max(curve, point.second);
    // A density that towers above its data is cut, not the data.
    highest = std::max(highest, std::min(curve, 2.5 * highest));
    return highest > 0.0 ? highest : 1.0;
  }

  std::string row_(std::size_t row) const {
    const double base = kRowHeight * static_cast<double>(row + 1);
    const double scale = (kRowHeight - 10.0) / highest_(row);
    const auto label = static_cast<long>(row);
    std::string bars;
    const double width = (span_.high - span_.low) / static_cast<double>(bins_);
    for (std::size_t bin = 0; bin < bins_; ++bin) {
      if (bars_[row][bin] <= 0.0) continue;
      const double from = x_(span_.low + width * static_cast<double>(bin)) + 0.5;
      const double to = x_(span_.low + width * static_cast<double>(bin + 1)) - 0.5;
      bars +=
          fmt::format("M{},{}V{}H{}V{}z", coordinate(from), coordinate(base),
                      coordinate(base - scale * bars_[row][bin]), coordinate(to), coordinate(base));
    }
    std::string curve;
    for (const auto& [x, density] : curves_[row]) {
      if (x < span_.low || x > span_.high) continue;
      curve += fmt::format("{}{},{}", curve.empty() ? "M" : "L", coordinate(x_(x)),
                           coordinate(base - std::min(scale * density, kRowHeight - 4.0)));
    }
    return fmt::format(
        "<path class=\"base\" d=\"M{0},{1}H{2}\"/><path class=\"bar {3}\" d=\"{4}\"/>"
        "<path class=\"line {3}\" d=\"{5}\"/><text class=\"tick end\" x=\"{6}\" y=\"{7}\">{8}</text>\n",
        coordinate(kNameWidth), coordinate(base), coordinate(kWidth - 8.0), Page::colour(label),
        bars, curve, coordinate(kNameWidth - 8.0), coordinate(base - 6.0),
        page_.category(label, 11));
  }

  std::string axis_(double height) const {
    std::string text;
    const double base = height - kAxisHeight;
    for (const double tick : ticks({span_.low, span_.high, ""}, 5)) {
      text += fmt::format(
          "<path class=\"grid\" d=\"M{0},{1}V{2}\"/><text class=\"tick middle\" x=\"{0}\" y=\"{3}\">"
          "{4}</text>\n",
          coordinate(x_(tick)), coordinate(base), coordinate(base + 4.0), coordinate(base + 16.0),
          shortNumber(tick));
    }
    return text + fmt::format("<text class=\"axis middle\" x=\"{}\" y=\"{}\">{}</text>\n",
                              coordinate((kNameWidth + kWidth - 8.0) / 2.0),
                              coordinate(height - 6.0), page_.measurement(measurement_));
  }

  const Page& page_;
  long measurement_;
  Span span_;
  std::size_t bins_;
  std::vector<std::vector<double>> bars_;  // by label
  std::vector<Points> curves_;
};

}  // namespace

std::string densitiesSection(const Page& page) {
  std::string body = "<div class=\"panels\">\n";
  for (const long measurement : page.input.plotted) body += Ridges(page, measurement).text();
  const bool isBayes =
      dynamic_cast<const vx_ClassifierBayesian*>(page.tool.classifier().get()) != nullptr;
  return section("densities", "Measurements by category",
                 isBayes
                     ? "Bars: the patterns. Lines: the densities that the classifier has learnt "
                       "from all of them. Where the two part, another distribution or a "
                       "transformed measurement may serve better. Every row has its own height."
                     : "How the patterns of each category are distributed; every row has its "
                       "own height.",
                 body + "</div>\n");
}

}  // namespace eval
