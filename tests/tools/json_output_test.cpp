// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/tools/command_line.h"
#include "tools/json_text.h"

namespace {

using cli::Json;

class JsonOutputTest : public CommandLineTest {
 protected:
  JsonOutputTest() {
    scratch_.file("d.csv", "x,y,kind\n0,0,\"b, \xC3\xA4\"\n1,1,a\n2,2,a\n9,9,\n");
    scratch_.file("n.csv", "x,y\n0,0\n2,2\n");
  }

  /// What a command prints, read as JSON.
  Json told(const Names& arguments) const {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    return Json::parse(outcome.out);
  }
};

TEST_F(JsonOutputTest, TrainTellsWhatItLearntFrom) {
  EXPECT_EQ(told({"train", "d.csv", "--label", "kind", "--k", "3", "-o", "m.model", "--json"}),
            Json::parse(R"({"model": "m.model", "method": "knn", "options": "k 3, order 2",
                "patterns": 3, "without_category": 1, "measurements": ["x", "y"],
                "categories": [{"category": "a", "patterns": 2},
                               {"category": "b, \u00e4", "patterns": 1}]})"));
}

TEST_F(JsonOutputTest, RetrainTellsWhatItChanged) {
  scratch_.file("p.csv", "x,kind\n0,a\n1,a\n2,b\n4,b\n");
  ASSERT_EQ(run({"train", "p.csv", "--label", "kind", "--method", "bayes", "-o", "m.model"}).err,
            "");
  EXPECT_EQ(told({"retrain", "m.model", "--frequency", "b=0.5", "--cost", "a,b=3", "-o", "n.model",
                  "--json"}),
            Json::parse(R"({"model": "n.model", "from": "m.model", "method": "bayes",
                "costs": {"default": 1.0,
                          "pairs": [{"true": "a", "assigned": "b", "cost": 3.0}]},
                "frequencies": {"default": 1.0,
                                "categories": [{"category": "b", "frequency": 0.5}]}})"));
}

TEST_F(JsonOutputTest, TreeAndGenerateTellWhatTheyMade) {
  scratch_.file("t.json", R"({"measurements": ["x"], "categories": ["a", "b"], "tree": "b"})");
  EXPECT_EQ(told({"tree", "t.json", "-o", "t.model", "--json"}),
            Json::parse(R"({"model": "t.model", "method": "tree", "measurements": ["x"],
                "categories": ["a", "b"]})"));
  EXPECT_EQ(told({"generate", "--category", "a:0,1;1,1", "--category", "b:3,1;2,2", "--patterns",
                  "4", "--columns", "w,h", "-o", "g.csv", "--json"}),
            Json::parse(R"({"file": "g.csv", "label": "category", "patterns_of_each": 4,
                "measurements": ["w", "h"], "categories": ["a", "b"]})"));
}

TEST_F(JsonOutputTest, RunWritesAnObjectALine) {
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--k", "3", "--order", "1", "--cost",
                 "b, \xC3\xA4,a=4", "-o", "m.model"})
                .err,
            "");
  EXPECT_EQ(run({"run", "m.model", "n.csv", "--json"}).out,
            "{\"row\":2,\"category\":\"b, \xC3\xA4\",\"class_score\":0.3333333333333333,"
            "\"match_score\":0.3333333333333333,\"expected_cost\":0.6666666666666666}\n"
            "{\"row\":3,\"category\":\"b, \xC3\xA4\",\"class_score\":0.3333333333333333,"
            "\"match_score\":0.3333333333333333,\"expected_cost\":0.6666666666666666}\n");
  ASSERT_EQ(run({"run", "m.model", "n.csv", "--all", "--json", "-o", "r.json"}).out, "");
  const std::string lines = contentOf(scratch_.path("r.json"));
  const Json line = Json::parse(lines.substr(0, lines.find('\n')));
  EXPECT_EQ(line["row"], 2);
  ASSERT_EQ(line["categories"].size(), 2u);
  EXPECT_EQ(line["categories"][0]["category"], "b, \xC3\xA4");
  EXPECT_EQ(line["categories"][1]["expected_cost"], 4.0 / 3.0);
}

TEST_F(JsonOutputTest, RulesWriteAnObjectALine) {
  scratch_.file("r.json", R"({"features": ["x"], "rules": [{"category": "small \"x\"", "scores":
      {"x": {"one-sided": {"x0": 1, "x1": 2, "xc": 2, "y0": 1, "y1": 0}}}}]})");
  EXPECT_EQ(run({"rules", "r.json", "n.csv", "--threshold", "0.5", "--json"}).out,
            "{\"row\":2,\"category\":\"small \\\"x\\\"\"}\n"
            "{\"row\":3,\"category\":null}\n");
}

TEST_F(JsonOutputTest, FailuresStayALineOnStandardError) {
  expectRefusals({
      {"train",
       {"train", "none.csv", "--label", "kind", "-o", "m.model", "--json"},
       "none.csv: No such file or directory"},
      {"run",
       {"run", "d.csv", "n.csv", "--json"},
       "d.csv: not a vxclss model file: unknown "
       "version of a part of it"},
  });
}

}  // namespace
