// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/tools/command_line.h"
#include "tools/json_text.h"

namespace {

using CommandLinePageTest = CommandLineTest;

/// The fenced block under `heading` of docs/command_line.md whose fence bears `kind`.
std::string blockOf(const std::string& heading, const std::string& kind) {
  const std::string page = contentOf(VXCLSS_SOURCE_TREE "/docs/command_line.md");
  const std::string fence = "\n```" + kind + "\n";
  const std::size_t section = page.find("\n## " + heading + "\n");
  const std::size_t start = page.find(fence, section);
  EXPECT_NE(std::max(section, start), std::string::npos) << heading;
  const std::size_t content = start + fence.size();
  return page.substr(content, page.find("```", content) - content);
}

TEST_F(CommandLinePageTest, ShowsTheModelThatItTells) {
  ASSERT_EQ(run({"train", kIris, "--label", "species", "--method", "bayes", "--dependent",
                 "setosa:sepal_length,petal_length,petal_width", "-o", "m.model"})
                .err,
            "");
  const std::string shown = run({"inspect", "m.model"}).out;
  EXPECT_NE(shown.find("\n" + blockOf("What a model holds", "text") + "\n"), std::string::npos)
      << shown;
}

TEST_F(CommandLinePageTest, ShowsTheJsonThatItTells) {
  scratch_.file("d.csv", "width,height,kind\n1,5,bolt\n1,6,bolt\n3,1,nut\n3,2,nut\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--k", "3", "--cost", "bolt,nut=4", "-o",
                 "m.model"})
                .err,
            "");
  EXPECT_EQ(cli::Json::parse(run({"inspect", "m.model", "--json"}).out),
            cli::Json::parse(blockOf("What a model holds", "json")));

  ASSERT_EQ(run({"train", kIris, "--label", "species", "-o", "iris.model"}).err, "");
  const std::string lines = run({"run", "iris.model", kIris, "--json"}).out;
  EXPECT_EQ(lines.substr(0, lines.find('\n') + 1), blockOf("For programs", "json"));
}

/// Without what a clock says: the two columns of times.
std::string withoutTimes(const std::string& table, const std::string& head) {
  const std::size_t start = head.find("mean cost") + std::string("mean cost").size();
  const std::size_t end = head.find("a pattern") + std::string("a pattern").size();
  std::string text;
  std::istringstream stream(table);
  for (std::string line; std::getline(stream, line);) text += line.erase(start, end - start) + "\n";
  return text;
}

TEST_F(CommandLinePageTest, ComparesTechniquesAsItTells) {
  const std::string out = run({"compare", kIris, "--label", "species"}).out;
  const std::size_t start = out.find("\n\n") + 2;
  const std::string table = out.substr(start, out.find("\n\n", start) + 1 - start);
  EXPECT_EQ(withoutTimes(table, table.substr(0, table.find('\n'))),
            blockOf("Which technique?", "text"));
}

TEST_F(CommandLinePageTest, TellsTheDifferenceOfItsModels) {
  scratch_.file("d.csv", "x,kind\n1,crack\n2,crack\n3,good\n5,good\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--method", "bayes", "--frequency",
                 "crack=0.01", "-o", "parts.model"})
                .err,
            "");
  ASSERT_EQ(run({"retrain", "parts.model", "--frequency", "crack=0.001", "--cost", "crack,good=50",
                 "--default-cost", "2", "-o", "strict.model"})
                .err,
            "");
  EXPECT_EQ(run({"diff", "parts.model", "strict.model"}).out,
            blockOf("Is it sound, and what has changed?", "text"));
}

TEST_F(CommandLinePageTest, DrawsTheTreeOfItsFile) {
  scratch_.file("parts.json", blockOf("Decision trees", "json"));
  ASSERT_EQ(run({"tree", "parts.json", "-o", "parts.model"}).err, "");
  const std::string shown = run({"inspect", "parts.model"}).out;
  EXPECT_EQ(shown, "method: tree (decision tree)\nmeasurements: width, height, holes\n\n" +
                       blockOf("Decision trees", "text"));
}

TEST_F(CommandLinePageTest, DecidesByItsRules) {
  scratch_.file("parts.json", blockOf("Rules", "json"));
  scratch_.file("new.csv", "gloss,holes,width\n1,1,9\n1,0.1,9\n");
  EXPECT_EQ(run({"rules", "parts.json", "new.csv", "--threshold", "0.5"}).out,
            blockOf("Rules", "text"));
}

}  // namespace
