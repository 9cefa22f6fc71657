// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "tools/eval/report/chart.h"
#include "tools/eval/report/html.h"
#include "tools/eval/report/mark.h"
#include "tools/eval/report/regions.h"
#include "tools/eval/report/sections.h"

namespace eval {
namespace {

constexpr double kThumb = 100.0;
constexpr std::size_t kMostPoints = 1500;

/// The patterns to draw where there are too many: evenly spread over the file, the labelled only.
std::vector<std::size_t> drawnPatterns(const Dataset& data) {
  std::vector<std::size_t> labelled;
  for (std::size_t i = 0; i < data.labels.size(); ++i) {
    if (data.labels[i] >= 0) labelled.push_back(i);
  }
  if (labelled.size() <= kMostPoints) return labelled;
  std::vector<std::size_t> drawn;
  for (std::size_t i = 0; i < kMostPoints; ++i) {
    drawn.push_back(labelled[i * labelled.size() / kMostPoints]);
  }
  return drawn;
}

bool hasBoth(const vxFeaturePattern& pattern, long x, long y) {
  return pattern.isValid(x) && pattern.isValid(y);
}

class Pairs {
 public:
  explicit Pairs(const Page& page)
      : page_(page), drawn_(drawnPatterns(page.data())), finder_(page) {
    for (const long i : page.input.plotted) spans_[i] = spanOf(page.data(), i);
  }

  /// A table whose lower half shows each pair small, with the names on the diagonal.
  std::string matrix() const {
    const std::vector<long>& plotted = page_.input.plotted;
    std::string text = fmt::format(
        "<div class=\"matrix\" style=\"grid-template-columns:repeat({},1fr)\">\n", plotted.size());
    for (std::size_t row = 0; row < plotted.size(); ++row) {
      for (std::size_t column = 0; column < plotted.size(); ++column) {
        if (column == row) {
          text +=
              fmt::format("<div class=\"name\">{}</div>\n", page_.measurement(plotted[row], 24));
        } else if (column < row) {
          text += thumb_(plotted[column], plotted[row]);
        } else {
          text += "<div></div>\n";
        }
      }
    }
    return text + "</div>\n";
  }

  std::vector<Choice> choices() const {
    std::vector<Choice> choices;
    const std::vector<long>& plotted = page_.input.plotted;
    for (std::size_t row = 1; row < plotted.size(); ++row) {
      for (std::size_t column = 0; column < row; ++column) {
        const std::string id = idOf_(plotted[column], plotted[row]);
        choices.push_back({id, "", "." + id});
      }
    }
    // The pair that the eye meets first: the last two measurements.
    std::rotate(choices.begin(), choices.end() - 1, choices.end());
    return choices;
  }

  std::string plots() const {
    std::string text;
    const std::vector<long>& plotted = page_.input.plotted;
    for (std::size_t row = 1; row < plotted.size(); ++row) {
      for (std::size_t column = 0; column < row; ++column) {
        text += plot_(plotted[column], plotted[row]);
      }
    }
    return text;
  }

 private:
  static std::string idOf_(long x, long y) { return fmt::format("pair-{}-{}", x, y); }

  double share_(long measurement, const vxFeaturePattern& pattern) const {
    const Span& span = spans_.at(measurement);
    return (pattern.featureMeasurement(measurement, false) - span.low) / (span.high - span.low);
  }

  std::string thumb_(long x, long y) const {
    std::map<long, std::string> paths;
    for (const std::size_t i : drawn_) {
      const vxFeaturePattern& pattern = *page_.data().patterns[i];
      if (!hasBoth(pattern, x, y)) continue;
      paths[page_.data().labels[i]] +=
          fmt::format("M{},{}h0", coordinate(share_(x, pattern) * kThumb),
                      coordinate((1.0 - share_(y, pattern)) * kThumb));
    }
    std::string points;
    for (const auto& [label, path] : paths) {
      points += fmt::format("<path class=\"dot {}\" d=\"{}\"/>", Page::colour(label), path);
    }
    return fmt::format(
        "<label class=\"thumb\" for=\"{}\" title=\"{} against {}\"><svg viewBox=\"0 0 100 100\" "
        "role=\"img\" aria-label=\"{} against {}\">{}</svg></label>\n",
        idOf_(x, y), page_.measurement(y), page_.measurement(x), page_.measurement(y),
        page_.measurement(x), points);
  }

  std::string regions_(const Chart& chart, const DecisionGrid& grid, const char* kind) const {
    const double n = static_cast<double>(grid.resolution);
    return fmt::format(
        "<g class=\"{}\" transform=\"translate({:.4f},{:.4f}) scale({:.5f},{:.5f})\">{}</g>", kind,
        chart.left(), chart.top(), (chart.right() - chart.left()) / n,
        (chart.bottom() - chart.top()) / n, regionPaths(grid));
  }

  std::string marks_(const Chart& chart, long x, long y) const {
    std::map<long, std::string> paths;
    for (const std::size_t i : drawn_) {
      const vxFeaturePattern& pattern = *page_.data().patterns[i];
      if (!hasBoth(pattern, x, y)) continue;
      const long label = page_.data().labels[i];
      paths[label] += markPath(label, chart.x(pattern.featureMeasurement(x, false)),
                               chart.y(pattern.featureMeasurement(y, false)), 3.2);
    }
    std::string text;
    for (const auto& [label, path] : paths) {
      text += fmt::format("<path class=\"point {}\" d=\"{}\"/>", Page::colour(label), path);
    }
    return text;
  }

  /// A ring around each pattern that was decided wrongly, in the colour of the decision.
  std::string rings_(const Chart& chart, long x, long y) const {
    std::string text;
    for (const std::size_t place : page_.mistakes) {
      const Record& record = page_.evaluation().records()[place];
      const vxFeaturePattern& pattern = *page_.data().patterns[record.pattern];
      if (!hasBoth(pattern, x, y)) continue;
      text += fmt::format(
          "<a href=\"#{}\"><circle class=\"ring {}\" cx=\"{}\" cy=\"{}\" r=\"7\"><title>row {}: {}, "
          "decided {}</title></circle></a>",
          mistakeId(page_, place), Page::colour(record.decidedLabel()),
          coordinate(chart.x(pattern.featureMeasurement(x, false))),
          coordinate(chart.y(pattern.featureMeasurement(y, false))), page_.rowOf(record),
          page_.category(record.trueLabel), page_.category(record.decidedLabel()));
    }
    return text;
  }

  std::string plot_(long x, long y) const {
    const Span& xSpan = spans_.at(x);
    const Span& ySpan = spans_.at(y);
    const std::vector<std::string>& names = page_.data().measurements;
    const std::string& xName = names[static_cast<std::size_t>(x)];
    const std::string& yName = names[static_cast<std::size_t>(y)];
    Chart chart(540, 470, {xSpan.low, xSpan.high, xName}, {ySpan.low, ySpan.high, yName},
                yName + " against " + xName + ", with the regions of the decisions");
    chart.add(regions_(chart, finder_.alone(x, y), "alone"));
    chart.add(regions_(chart, finder_.atMedians(x, y), "median"));
    chart.add(marks_(chart, x, y));
    chart.add(rings_(chart, x, y));
    return fmt::format("<figure class=\"pair {}\">{}</figure>\n", idOf_(x, y), chart.text());
  }

  const Page& page_;
  std::vector<std::size_t> drawn_;
  RegionFinder finder_;
  std::map<long, Span> spans_;
};

std::string legend(const Page& page) {
  std::string text = "<p class=\"legend\">";
  for (long label = 0; label < page.numCategories(); ++label) text += page.tag(label) + " ";
  return text +
         "<span class=\"tag\"><svg class=\"mark\" viewBox=\"0 0 14 14\" width=\"14\" height=\"14\" "
         "aria-hidden=\"true\"><circle class=\"ring\" cx=\"7\" cy=\"7\" r=\"5.5\"/></svg> decided "
         "wrongly, ring in the colour of the decision</span></p>\n";
}

std::string medians(const Page& page) {
  std::string text;
  for (std::size_t i = 0; i < page.data().measurements.size(); ++i) {
    if (i == 20) return text + ", \u2026";
    text += fmt::format("{}{}&nbsp;{}", i == 0 ? "" : ", ", page.measurement(static_cast<long>(i)),
                        shortNumber(medianOf(page.data(), static_cast<long>(i))));
  }
  return text;
}

std::string notes(const Page& page) {
  std::string text = fmt::format(
      "<p class=\"note alone\">Regions: what the method decides from these two measurements "
      "alone.</p>\n<p class=\"note median\">Regions: what the classifier that learnt from every "
      "pattern decides where all other measurements have their medians ({}).</p>\n",
      medians(page));
  const std::size_t all = page.data().measurements.size();
  if (page.input.plotted.size() < all) {
    text += fmt::format("<p class=\"note\">{} of {} measurements are shown.</p>\n",
                        page.input.plotted.size(), all);
  }
  const std::size_t drawn = drawnPatterns(page.data()).size();
  if (drawn == kMostPoints) {
    text += fmt::format(
        "<p class=\"note\">{} patterns are drawn, evenly spread over the file.</p>\n", drawn);
  }
  return text;
}

}  // namespace

std::string pairsSection(const Page& page) {
  if (page.input.plotted.size() < 2) return "";
  const Pairs pairs(page);
  const std::vector<Choice> pairChoices = pairs.choices();
  const std::vector<Choice> regionChoices{{"by-alone", "from these two alone", ".alone"},
                                          {"by-median", "others at their medians", ".median"}};
  const std::string body =
      choiceStyle(pairChoices) + choiceStyle(regionChoices) + choiceButtons("pair", pairChoices) +
      choiceButtons("regions", regionChoices) + "<div class=\"pairs\">\n" + pairs.matrix() +
      "<div class=\"shown\">\n" + choiceLabels(regionChoices) + pairs.plots() + legend(page) +
      notes(page) + "</div>\n</div>\n";
  return section("pairs", "Measurements in pairs",
                 "Click a small plot to see it large, with the regions in which each category is "
                 "decided for.",
                 body);
}

}  // namespace eval
