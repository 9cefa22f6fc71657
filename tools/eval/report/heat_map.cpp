// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "tools/eval/report/html.h"
#include "tools/eval/report/sections.h"

namespace eval {
namespace {

/// From this share on a cell is so strong that its text takes the page's colour.
constexpr double kStrongRight = 0.68;
constexpr double kStrongWrong = 0.75;

/// With more categories cells are small; with more kinds of mistakes only the most frequent are
/// told at first.
constexpr long kMostRoomy = 8;
constexpr std::size_t kMostTold = 12;

std::string cell(const Page& page, long t, long d) {
  const Confusion& confusion = page.confusion();
  const long count = confusion.count(t, d);
  const std::string figure = page.count(fmt::format("/confusion/counts/{}/{}", t, d));
  if (count == 0) return fmt::format("<td class=\"none\">{}</td>", figure);
  const double share = static_cast<double>(count) / static_cast<double>(confusion.numOf(t));
  return fmt::format(
      "<td class=\"{}{}\" style=\"--s:{:.3f}\"><a href=\"#cell-{}-{}\">{}<small>{}</small></a></td>",
      t == d ? "right" : "wrong", share >= (t == d ? kStrongRight : kStrongWrong) ? " strong" : "",
      share, t, d, figure, percent(share));
}

std::string matrix(const Page& page) {
  std::string text = fmt::format(
      "<div class=\"wide\"><table class=\"heat{}\">\n<thead><tr><td></td><th colspan=\"{}\" "
      "class=\"side\">decided</th></tr>\n<tr><th class=\"side\">true</th>",
      page.numCategories() > kMostRoomy ? " compact" : "", page.numCategories());
  for (long d = 0; d < page.numCategories(); ++d) {
    text += fmt::format("<th scope=\"col\">{}</th>", page.tag(d, 24));
  }
  text += "<th class=\"number\">all</th></tr></thead>\n<tbody>\n";
  for (long t = 0; t < page.numCategories(); ++t) {
    text += fmt::format("<tr><th scope=\"row\">{}</th>", page.tag(t, 24));
    for (long d = 0; d < page.numCategories(); ++d) text += cell(page, t, d);
    text += fmt::format("<td class=\"number\">{}</td></tr>\n", page.confusion().numOf(t));
  }
  return text + "</tbody>\n</table></div>\n";
}

/// A mistake leads to its explanation; the many right decisions stand as ranges of rows.
std::string members(const Page& page, long t, long d) {
  std::vector<long> rows;
  std::string links;
  for (const std::size_t member : page.confusion().members(t, d)) {
    const std::string row = page.rowOf(page.evaluation().records()[member]);
    const std::string id = t == d ? "" : mistakeId(page, member);
    if (id.empty()) {
      rows.push_back(page.data().rows[page.evaluation().records()[member].pattern]);
    } else {
      links += fmt::format("<a href=\"#{}\">{}</a> ", id, row);
    }
  }
  std::sort(rows.begin(), rows.end());
  return links + ranges(rows);
}

std::string cellText(const Page& page, long t, long d) {
  const long count = page.confusion().count(t, d);
  const std::string title =
      t == d ? page.tag(t) : page.tag(t) + " <span class=\"muted\">decided</span> " + page.tag(d);
  return fmt::format(
      "<div class=\"cell\" id=\"cell-{}-{}\"><h3>{} <span class=\"muted\">{}</span></h3>"
      "<p class=\"rows\">{} {}</p></div>\n",
      t, d, title, count, count == 1 ? "row" : "rows", members(page, t, d));
}

std::string folded(const std::string& title, const std::string& cells, bool isOpen) {
  return fmt::format(
      "<details{}><summary>{}</summary>\n<div class=\"cells\">\n{}</div></details>\n",
      isOpen ? " open" : "", title, cells);
}

/// The most frequent mistakes first.
std::string wrongCells(const Page& page) {
  const Confusion& confusion = page.confusion();
  std::vector<std::pair<long, long>> cells;
  for (long t = 0; t < page.numCategories(); ++t) {
    for (long d = 0; d < page.numCategories(); ++d) {
      if (t != d && confusion.count(t, d) > 0) cells.emplace_back(t, d);
    }
  }
  if (cells.empty()) return "<p>No pattern was decided wrongly.</p>\n";
  std::stable_sort(cells.begin(), cells.end(), [&](const auto& a, const auto& b) {
    return confusion.count(a.first, a.second) > confusion.count(b.first, b.second);
  });
  std::string first;
  std::string rest;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    (i < kMostTold ? first : rest) += cellText(page, cells[i].first, cells[i].second);
  }
  return "<h3 class=\"list\">Decided wrongly</h3>\n<div class=\"cells\">\n" + first + "</div>\n" +
         (rest.empty() ? ""
                       : folded(fmt::format("{} more", cells.size() - kMostTold), rest, false));
}

std::string rightCells(const Page& page) {
  std::string cells;
  for (long label = 0; label < page.numCategories(); ++label) {
    if (page.confusion().count(label, label) > 0) cells += cellText(page, label, label);
  }
  return folded("Decided rightly", cells, page.numCategories() <= kMostRoomy);
}

}  // namespace

std::string confusionSection(const Page& page) {
  return section("confusion", "What is taken for what",
                 "A row for each true category, a column for each decision; shades tell shares of "
                 "the row. A cell leads to its patterns, given by their lines in the data file.",
                 matrix(page) + wrongCells(page) + rightCells(page));
}

}  // namespace eval
