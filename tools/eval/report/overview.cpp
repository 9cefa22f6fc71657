// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include "tools/eval/report/html.h"
#include "tools/eval/report/sections.h"

namespace eval {
namespace {

std::string tile(const std::string& title, const std::string& value, const std::string& note) {
  return fmt::format(
      "<div class=\"tile\"><h3>{}</h3><p class=\"big\">{}</p><p class=\"note\">{}</p></div>\n",
      title, value, note);
}

std::string tiles(const Page& page) {
  return "<div class=\"tiles\">\n" +
         tile("Accuracy", page.figure("/accuracy", percent),
              fmt::format("{} of {} right; 95&nbsp;% interval {} to {}", page.count("/correct"),
                          page.count("/patterns"), page.figure("/accuracy_interval/low", percent),
                          page.figure("/accuracy_interval/high", percent))) +
         tile("Mean actual cost", page.figure("/mean_actual_cost", shortNumber),
              "what a decision cost, by the categories that were true") +
         tile("Mean expected cost", page.figure("/mean_expected_cost", shortNumber),
              "what the classifier itself expected it to cost") +
         tile("Log loss", page.figure("/log_loss", shortNumber),
              "mean of &minus;ln(class score of the true category)") +
         tile("Calibration error", page.figure("/calibration/expected_error", percent),
              "mean gap between class score and share of right decisions") +
         "</div>\n";
}

std::string bar(const std::string& figure, double share, const std::string& colour) {
  return fmt::format("<td class=\"bar\"><span class=\"fill {}\" style=\"width:{}%\"></span>{}</td>",
                     colour, coordinate(share >= 0.0 ? 100.0 * share : 0.0), figure);
}

std::string categoryTable(const Page& page) {
  std::string text =
      "<div class=\"wide\"><table class=\"figures\">\n<thead><tr><th>category</th>"
      "<th class=\"number\">patterns</th><th class=\"number\">decisions</th><th>recall</th>"
      "<th>precision</th><th>F1</th></tr></thead>\n<tbody>\n";
  for (long label = 0; label < page.numCategories(); ++label) {
    const std::string at = fmt::format("/categories/{}/", label);
    const std::string colour = Page::colour(label);
    const Confusion& confusion = page.confusion();
    text += fmt::format(
        "<tr><th scope=\"row\">{}</th><td class=\"number\">{}</td><td class=\"number\">{}</td>"
        "{}{}{}</tr>\n",
        page.tag(label), page.count(at + "patterns"), page.count(at + "decisions"),
        bar(page.figure(at + "recall", percent), confusion.recall(label), colour),
        bar(page.figure(at + "precision", percent), confusion.precision(label), colour),
        bar(page.figure(at + "f1", percent), confusion.f1(label), colour));
  }
  return text + "</tbody>\n</table></div>\n";
}

}  // namespace

std::string overviewSection(const Page& page) {
  return section("overview", "At a glance",
                 "Every pattern was decided by a classifier that had not learnt from it. "
                 "<em>Recall</em> is the share of a category&rsquo;s patterns that was decided "
                 "rightly, <em>precision</em> the share of the decisions for it that was right.",
                 tiles(page) + categoryTable(page));
}

}  // namespace eval
