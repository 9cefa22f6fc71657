// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/tools/command_line.h"

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
  const std::string shown = run({"show", "m.model"}).out;
  EXPECT_NE(shown.find("\n" + blockOf("What a model holds", "text") + "\n"), std::string::npos)
      << shown;
}

TEST_F(CommandLinePageTest, DrawsTheTreeOfItsFile) {
  scratch_.file("parts.json", blockOf("Decision trees", "json"));
  ASSERT_EQ(run({"tree", "parts.json", "-o", "parts.model"}).err, "");
  const std::string shown = run({"show", "parts.model"}).out;
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
