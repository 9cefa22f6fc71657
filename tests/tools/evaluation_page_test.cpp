// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/support/page.h"
#include "tests/tools/command_line.h"

namespace {

constexpr const char* kPage = "docs/evaluation.md";

class EvaluationPageTest : public testing::Test {
 protected:
  /// Runs a line of the page as if in the source tree, but for the files that it writes.
  Outcome run_(const std::string& line) const {
    std::istringstream words(line);
    Names arguments;
    for (std::string word; words >> word;) {
      if (word.rfind("examples/", 0) == 0) word = VXCLSS_SOURCE_TREE "/" + word;
      if (!arguments.empty() && (arguments.back() == "-o" || arguments.back() == "--report")) {
        word = scratch_.path(word);
      }
      arguments.push_back(word);
    }
    EXPECT_EQ(arguments.at(0), "vxclss");
    arguments.erase(arguments.begin());
    return vxclss(arguments);
  }

  Scratch scratch_;
};

TEST_F(EvaluationPageTest, ShowsCommandsThatRunAndWhatTheFirstPrints) {
  std::istringstream lines(pageBlock(kPage, "sh"));
  std::string first;
  for (std::string line; std::getline(lines, line);) {
    const Outcome outcome = run_(line);
    EXPECT_EQ(outcome.code, 0) << line;
    EXPECT_EQ(outcome.err, "") << line;
    if (first.empty()) first = outcome.out;
  }
  EXPECT_NE(first.find("\n\n" + pageBlock(kPage, "text output of evaluate") + "training "),
            std::string::npos)
      << first;
  EXPECT_EQ(scratch_.names(), (Names{"iris.html", "iris.json"}));
}

TEST_F(EvaluationPageTest, NamesEveryKeyOfTheJson) {
  const Outcome outcome =
      vxclss({"evaluate", kIris, "--label", "species", "--method", "bayes", "--json"});
  const auto told = nlohmann::json::parse(outcome.out);
  const std::string page = readSource(kPage);
  for (const nlohmann::json& object :
       {told, told["categories"][0], told["confusion"], told["reject_curves"],
        told["reject_curves"]["fit"][0], told["calibration"], told["cost_sweeps"][0],
        told["records"][0]}) {
    for (const auto& entry : object.items()) {
      EXPECT_NE(page.find("`" + entry.key() + "`"), std::string::npos) << entry.key();
    }
  }
}

TEST_F(EvaluationPageTest, NamesThePartsOfTheReport) {
  ASSERT_EQ(vxclss({"evaluate", kIris, "--label", "species", "--method", "bayes", "--report",
                    scratch_.path("iris.html")})
                .code,
            0);
  const std::string report = contentOf(scratch_.path("iris.html"));
  const std::string page = readSource(kPage);
  std::size_t parts = 0;
  for (std::size_t at = report.find("<h2>"); at != std::string::npos;
       at = report.find("<h2>", at + 1)) {
    const std::string title = report.substr(at + 4, report.find("</h2>", at) - at - 4);
    EXPECT_NE(page.find("| " + title + " | "), std::string::npos) << title;
    ++parts;
  }
  EXPECT_EQ(parts, 8u);
  EXPECT_NE(page.find("`<data data-path=\"/categories/1/recall\" value=\"0.94\">94.0 %</data>`"),
            std::string::npos);
  EXPECT_NE(
      report.find("<data data-path=\"/categories/1/recall\" value=\"0.94\">94.0\u00A0%</data>"),
      std::string::npos);
}

}  // namespace
