// SPDX-License-Identifier: MIT
#include "tools/eval/report/report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/eval/samples.h"
#include "tools/eval/evaluation_json.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string reportOf(const eval::Dataset& data, const vxClassifierTrainParams& params,
                     const std::vector<long>& plotted = {0, 1}) {
  const eval::Evaluation evaluation = evaluated(data, params, 4);
  std::ostringstream out;
  eval::writeReport(out,
                    {data, evaluation, params, "data.csv", "a method", "4 folds", plotted, [] {}});
  return out.str();
}

/// Names that would break out of any tag, and measurements that are missing.
eval::Dataset hostile() {
  eval::Dataset data = clouds(20);
  data.categories = {"<script>alert(1)</script>", "\"'><img src=x onerror=y>", "\x01&amp;\u00FC"};
  data.measurements = {"</style><i>", "'a' < \"b\" & c"};
  for (const std::size_t i : {3u, 17u, 40u}) {
    data.patterns[i] = sharedPattern(data.patterns[i]->featureMeasurements(false), {1});
  }
  data.labels[5] = -1;
  return data;
}

/// What stands between each `start` and the next double quote.
std::vector<std::string> all(const std::string& text, const std::string& start) {
  std::vector<std::string> found;
  for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at + 1)) {
    const std::size_t first = at + start.size();
    found.push_back(text.substr(first, text.find('"', first) - first));
  }
  return found;
}

/// What is wrong with the nesting of the tags, if anything.
std::string faultIn(const std::string& page) {
  const std::set<std::string> voids{"meta", "link", "input"};
  std::vector<std::string> open;
  for (std::size_t at = page.find("<html"); at != std::string::npos; at = page.find('<', at + 1)) {
    const std::string tag = page.substr(at, page.find('>', at) + 1 - at);
    const bool isEnd = tag[1] == '/';
    const std::size_t first = isEnd ? 2 : 1;
    const std::string name = tag.substr(first, tag.find_first_of(" />\n", first) - first);
    if (name.empty() || std::count(tag.begin(), tag.end(), '"') % 2 != 0 ||
        tag.find('<', 1) != std::string::npos) {
      return "no tag: " + tag.substr(0, 80);
    }
    if (isEnd) {
      if (open.empty() || open.back() != name) return "unexpected " + tag;
      open.pop_back();
    } else if (tag[tag.size() - 2] != '/' && voids.count(name) == 0) {
      open.push_back(name);
    }
  }
  return open.empty() ? "" : "left open: " + open.back();
}

TEST(ReportTest, IsTheSameForTheSameInput) {
  EXPECT_EQ(reportOf(clouds(20), bayes()), reportOf(clouds(20), bayes()));
}

TEST(ReportTest, NeedsNothingBesideItself) {
  for (const std::string& page :
       {reportOf(clouds(20), bayes()), reportOf(clouds(20), neighbours(3))}) {
    for (const char* const foreign :
         {"<script", "http:", "https:", "src=", "url(", "@import", "<iframe"}) {
      EXPECT_THAT(page, Not(HasSubstr(foreign)));
    }
  }
}

TEST(ReportTest, IsWellFormedWhateverTheNames) {
  eval::Dataset data = hostile();
  const std::string page = reportOf(data, bayes());
  EXPECT_EQ(faultIn(page), "");
  EXPECT_THAT(page, Not(HasSubstr("<script")));
  EXPECT_THAT(page, Not(HasSubstr("<img")));
  EXPECT_THAT(page, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;"));
  EXPECT_EQ(faultIn(reportOf(clouds(20), neighbours(3))), "");
}

TEST(ReportTest, HasNoNumberThatABrowserCannotDraw) {
  const std::string page = reportOf(hostile(), bayes());
  for (const std::string& path : all(page, " d=\"")) {
    EXPECT_EQ(path.find_first_of("ni"), std::string::npos) << path;
  }
}

TEST(ReportTest, LinksToWhatItHolds) {
  const std::string page = reportOf(clouds(20), bayes());
  const std::vector<std::string> ids = all(page, " id=\"");
  const std::set<std::string> known(ids.begin(), ids.end());
  EXPECT_EQ(known.size(), ids.size());
  const std::vector<std::string> links = all(page, " href=\"#");
  EXPECT_GT(links.size(), 20u);
  for (const std::string& link : links) EXPECT_EQ(known.count(link), 1u) << link;
  for (const std::string& id : all(page, " for=\"")) EXPECT_EQ(known.count(id), 1u) << id;
}

TEST(ReportTest, CarriesTheFiguresOfTheJson) {
  const eval::Dataset data = clouds(20);
  for (const bool isBayes : {true, false}) {
    const std::string page = isBayes ? reportOf(data, bayes()) : reportOf(data, neighbours(3));
    const eval::Json json = eval::evaluationJson(
        data, isBayes ? evaluated(data, bayes(), 4) : evaluated(data, neighbours(3), 4));
    const std::vector<std::string> paths = all(page, "<data data-path=\"");
    const std::vector<std::string> values = all(page, "\" value=\"");
    ASSERT_GT(paths.size(), 200u);
    ASSERT_EQ(paths.size(), values.size());
    for (std::size_t i = 0; i < paths.size(); ++i) {
      const eval::Json& told = json.at(eval::Json::json_pointer(paths[i]));
      EXPECT_EQ(eval::jsonNumber(std::stod(values[i])),
                told.is_number() ? eval::Json(told.get<double>()) : told)
          << paths[i];
    }
  }
}

TEST(ReportTest, ListsEveryPatternInItsCell) {
  const eval::Dataset data = clouds(20);
  const eval::Evaluation evaluation = evaluated(data, bayes(), 4);
  const std::string page = reportOf(data, bayes());
  for (const eval::Record& record : evaluation.records()) {
    if (record.isCorrect()) continue;
    const std::string id = "row-" + std::to_string(data.rows[record.pattern]);
    EXPECT_THAT(page, HasSubstr("href=\"#" + id + "\""));
    EXPECT_THAT(page, HasSubstr("<details class=\"mistake\" id=\"" + id + "\""));
  }
}

TEST(ReportTest, LeavesOutPairsWhereThereIsOneMeasurement) {
  const std::string page = reportOf(
      datasetOf(
          {{{0}, 0}, {{1}, 0}, {{2}, 0}, {{0.5}, 0}, {{9}, 1}, {{8}, 1}, {{7}, 1}, {{8.5}, 1}}),
      neighbours(1), {0});
  EXPECT_THAT(page, Not(HasSubstr("Measurements in pairs")));
  EXPECT_THAT(page, HasSubstr("No pattern was decided wrongly."));
  EXPECT_EQ(faultIn(page), "");
}

TEST(ReportTest, StopsWhereTheCallerThrows) {
  const eval::Dataset data = clouds(10);
  const eval::Evaluation evaluation = evaluated(data, bayes(), 4);
  const auto params = bayes();
  std::ostringstream out;
  EXPECT_THROW(
      eval::writeReport(
          out, {data, evaluation, params, "", "", "", {0, 1}, [] { throw vxStopRequested(); }}),
      vxStopRequested);
}

}  // namespace
