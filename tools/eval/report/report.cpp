// SPDX-License-Identifier: MIT
#include "tools/eval/report/report.h"

#include <fmt/format.h>

#include <string>
#include <utility>

#include "tools/eval/evaluation_json.h"
#include "tools/eval/report/html.h"
#include "tools/eval/report/sections.h"
#include "tools/eval/report/style.h"

namespace eval {
namespace {

struct Part {
  const char* id;
  const char* name;  // in the row of links
  std::string (*section)(const Page&);
};

constexpr Part kParts[] = {
    {"overview", "At a glance", overviewSection},
    {"confusion", "Confusion", confusionSection},
    {"pairs", "Pairs", pairsSection},
    {"densities", "Distributions", densitiesSection},
    {"reject", "Rejecting", rejectSection},
    {"calibration", "Calibration", calibrationSection},
    {"costs", "Costs", sweepSection},
    {"mistakes", "Mistakes", mistakesSection},
};

std::string head(const Page& page) {
  const std::string title = escaped(page.input.title);
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<title>{0}: evaluation</title>\n<link rel=\"icon\" href=\"data:,\">\n"
      "<style>{1}</style>\n</head>\n<body>\n"
      "<header>\n<p class=\"kicker\">Evaluation</p>\n<h1>{0}</h1>\n<p class=\"facts\">{2} patterns "
      "tested, {3} measurements, {4} categories &middot; method {5} &middot; {6}</p>\n</header>\n",
      title, kStyle, page.count("/patterns"), page.data().measurements.size(), page.numCategories(),
      escaped(page.input.method), escaped(page.input.split));
}

}  // namespace

void writeReport(std::ostream& out, const ReportInput& input) {
  const Json json = evaluationJson(input.data, input.evaluation);
  vxClassifierTool tool;
  const Split none{1, std::vector<long>(input.data.patterns.size(), -1)};
  tool.train(trainingSet(input.data, none, 0), input.params);
  const Page page{input, json, tool, shownMistakes(input.evaluation)};
  std::string links;
  std::string sections;
  for (const Part& part : kParts) {
    input.poll();
    const std::string section = part.section(page);
    if (section.empty()) continue;
    links += fmt::format("<a href=\"#{}\">{}</a>\n", part.id, part.name);
    sections += section;
  }
  out << head(page) << "<nav><div>\n"
      << links << "</div></nav>\n<main>\n"
      << sections
      << "</main>\n<footer>Made by vxclss evaluate. Figures carry their exact values: see the data "
         "elements of this page, or --json.</footer>\n</body>\n</html>\n";
}

}  // namespace eval
