// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/tools/command_line.h"
#include "tools/model_file.h"

namespace {

const char* const kNames = R"("measurements": ["w", "h", "a/b~c"], "categories": ["nut", "bolt"])";

/// A file with these names and this tree.
std::string withNames(const std::string& tree) {
  return std::string("{") + kNames + ", \"tree\": " + tree + "}";
}

std::string node(const std::string& question) {
  return R"({"if": )" + question + R"(, "true": "nut", "false": "bolt"})";
}

class TreeCommandTest : public CommandLineTest {
 protected:
  /// What the command says of this file.
  std::string refusalOf(const std::string& content) const {
    scratch_.file("t.json", content);
    const Names before = scratch_.names();
    const Outcome outcome = run({"tree", "t.json", "-o", "t.model"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(scratch_.names(), before);
    return outcome.err;
  }

  vxClassifierTool toolOf(const std::string& tree) const {
    scratch_.file("t.json", withNames(tree));
    const Outcome outcome = run({"tree", "t.json", "-o", "t.model"});
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "t.model: a tree of 3 measurements and 2 categories\n");
    return cli::readModel(scratch_.path("t.model")).tool;
  }

  /// A chain of `levels` nodes.
  static std::string chain(int levels) {
    std::string text;
    for (int i = 0; i < levels; ++i) text += R"({"if":{"valid":"w"},"true":"nut","false":)";
    return text + "\"bolt\"" + std::string(static_cast<std::size_t>(levels), '}');
  }
};

vxDecisionTreeLeaf leaf(long label) {
  return vxDecisionTreeLeaf(vxClassifierResult({{label, 1.0, 1.0, 0.0}}, 0.0));
}

TEST_F(TreeCommandTest, MakesTheTreeThatTheFileDescribes) {
  const vxClassifierTool tool = toolOf(R"({
    "if": {"range": {"of": ["w", " h "], "from": 1, "to": 2.5}},
    "true": {"if": {"compare": ["w", "<", "a/b~c"]}, "true": "nut", "false": "bolt"},
    "false": {
      "if": {"valid": "h"},
      "true": {"results": [
        {"category": "nut", "match_score": 0.5, "class_score": 0.2, "expected_cost": 3},
        {"category": "bolt", "match_score": 1, "class_score": 0.6, "expected_cost": 1}]},
      "false": {"if": {"range": {"of": "h", "to": 0}}, "true": "nut", "false": "nut"}}})");
  const vxDecisionTreeLeaf scored(vxClassifierResult({{0, 0.5, 0.2, 3}, {1, 1, 0.6, 1}}, 0));
  const double infinity = std::numeric_limits<double>::infinity();
  const vxDecisionTreeNode low(vxRangePredicate(vxRange(-infinity, 0.0), {1}), leaf(0), leaf(0));
  const vxDecisionTreeNode expected(
      vxRangePredicate(vxRange(1.0, 2.5), {0, 1}),
      vxDecisionTreeNode(vxComparisonPredicate(2, 0), leaf(0), leaf(1)),
      vxDecisionTreeNode(vxValidityPredicate({1}), scored, low));
  vxClassifierTool other;
  other.train(expected);
  EXPECT_EQ(tool, other);
}

TEST_F(TreeCommandTest, RunsTheModel) {
  scratch_.file("t.json", withNames(R"({
    "if": {"compare": ["w", ">", "h"]},
    "true": "nut",
    "false": {"results": [
      {"category": "nut", "match_score": 0.5, "class_score": 0.25, "expected_cost": 1.5},
      {"category": "bolt", "match_score": 1, "class_score": 0.75, "expected_cost": 0.5}]}})"));
  scratch_.file("n.csv", "h,w,a/b~c\n1,2,0\n2,1,0\n,9,0\n");
  ASSERT_EQ(run({"tree", "t.json", "-o", "t.model"}).code, 0);
  const std::string header = "row,category,class_score,match_score,expected_cost\n";
  EXPECT_EQ(run({"run", "t.model", "n.csv"}).out,
            header + "2,nut,1,1,0\n3,bolt,0.75,1,0.5\n4,bolt,0.75,1,0.5\n");
  EXPECT_EQ(run({"run", "t.model", "n.csv", "--all"}).out,
            header +
                "2,nut,1,1,0\n3,bolt,0.75,1,0.5\n3,nut,0.25,0.5,1.5\n"
                "4,bolt,0.75,1,0.5\n4,nut,0.25,0.5,1.5\n");
  EXPECT_EQ(run({"retrain", "t.model", "--frequency", "nut=2"}).err,
            "vxclss: t.model: a tree has neither frequencies nor costs\n");
}

TEST_F(TreeCommandTest, NamesThePlaceOfWhatItRefuses) {
  const std::string measurements = "; there are: w, h, a/b~c";
  const std::string result =
      R"({"category": "nut", "match_score": 1, "class_score": 1, "expected_cost": 0})";
  const struct {
    const char* name;
    std::string content;
    std::string refusal;
  } table[] = {
      {"list", "[]", "not an object"},
      {"unknown part", "{\"trees\": 1}",
       "unknown key \"trees\"; there are: measurements, categories, tree"},
      {"no names", R"({"tree": "nut"})", "no \"measurements\""},
      {"no tree", std::string("{") + kNames + "}", "no \"tree\""},
      {"empty list", R"({"measurements": []})", "/measurements: an empty list"},
      {"name twice", R"({"measurements": ["a", " a"]})", "/measurements/1: \"a\" a second time"},
      {"empty name", R"({"measurements": ["a", " "]})", "/measurements/1: an empty name"},
      {"number for a name", R"({"measurements": [1]})", "/measurements/0: not a text"},
      {"text for names", R"({"measurements": "a"})", "/measurements: not a list"},
      {"strange leaf", withNames("\"screw\""),
       "/tree: no category \"screw\"; there are: nut, bolt"},
      {"number for a tree", withNames("1"),
       "/tree: neither a category, nor \"if\", \"true\" and \"false\", nor \"results\""},
      {"no answer", withNames(R"({"if": {"valid": "w"}, "true": "nut"})"), "/tree: no \"false\""},
      {"answer too many", withNames(R"({"if": {"valid": "w"}, "maybe": "nut"})"),
       "/tree: unknown key \"maybe\"; there are: if, true, false"},
      {"no question", withNames(node("{}")), "/tree/if: not one of compare, range, valid"},
      {"two questions", withNames(node(R"({"valid": "w", "compare": ["w", ">", "h"]})")),
       "/tree/if: not one of compare, range, valid"},
      {"unknown question", withNames(node(R"({"equal": "w"})")),
       "/tree/if: unknown key \"equal\"; there are: compare, range, valid"},
      {"strange measurement", withNames(node(R"({"valid": ["w", "x"]})")),
       "/tree/if/valid/1: no measurement \"x\"" + measurements},
      {"nothing valid", withNames(node(R"({"valid": []})")), "/tree/if/valid: an empty list"},
      {"compare two", withNames(node(R"({"compare": ["w", "h"]})")),
       "/tree/if/compare: not a measurement, \">\" or \"<\", and a measurement"},
      {"compare otherwise", withNames(node(R"({"compare": ["w", "==", "h"]})")),
       "/tree/if/compare/1: \"==\" is neither \">\" nor \"<\""},
      {"compare with itself", withNames(node(R"({"compare": ["w", "<", "w"]})")),
       "/tree/if/compare: Measurement indices must be different."},
      {"range of nothing", withNames(node(R"({"range": {"from": 1}})")),
       "/tree/if/range: no \"of\""},
      {"range upside down",
       withNames(R"({"if": {"valid": "w"}, "false": "nut", "true": )" +
                 node(R"({"range": {"of": "w", "from": 2, "to": 1.5}})") + "}"),
       "/tree/true/if/range: \"from\" 2 is above \"to\" 1.5"},
      {"range in letters", withNames(node(R"({"range": {"of": "w", "to": "5"}})")),
       "/tree/if/range/to: not a number"},
      {"score above 1",
       withNames(R"({"results": [{"category": "nut", "match_score": 2, "class_score": 1,
                                  "expected_cost": 0}]})"),
       "/tree/results/0: Scores must be >= 0.0 and <= 1.0"},
      {"no cost", withNames(R"({"results": [{"category": "nut", "match_score": 1,
                                             "class_score": 1}]})"),
       "/tree/results/0: no \"expected_cost\""},
      {"category twice", withNames("{\"results\": [" + result + ", " + result + "]}"),
       "/tree: The category labels of the match results must be unique."},
      {"no results", withNames(R"({"results": []})"),
       "/tree: At least one of the classification scores must be > 0."},
      {"key twice", withNames(R"({"if": {"valid": "w"}, "true": "nut", "true": "bolt"})"),
       "/tree/true: stands there twice"},
      {"key twice in a list", R"({"a/b": ["x", [], {"~": 1, "~": 2}]})",
       "/a~1b/2/~0: stands there twice"},
      {"no JSON", "nut",
       "parse error at line 1, column 3: syntax error while parsing value - "
       "invalid literal; last read: 'nut'"},
      {"huge number", R"({"tree": 1e999})", "number overflow parsing '1e999'"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(refusalOf(row.content), "vxclss: t.json: " + row.refusal + "\n");
  }
}

TEST_F(TreeCommandTest, RefusesBadFiles) {
  scratch_.file("t.json", withNames("\"nut\""));
  expectRefusals({
      {"no output", {"tree", "t.json"}, "--output is required (see vxclss tree --help)"},
      {"no file", {"tree", "none.json", "-o", "t.model"}, "none.json: No such file or directory"},
      {"nowhere to write",
       {"tree", "t.json", "-o", "no/where.model"},
       "no/where.model: No such file or directory"},
  });
}

TEST_F(TreeCommandTest, TakesTheDepthThatAModelFileHolds) {
  const vxClassifierTool tool = toolOf(chain(990));
  vxClassifierResult result;
  tool.run(vxFeaturePattern({0.0}, {0}), result);
  EXPECT_EQ(result.categoryResults().at(0).categoryLabel(), 1);

  EXPECT_EQ(refusalOf(withNames(chain(999))), "vxclss: t.json: /tree: Objects nest too deep\n");
  const std::string deep = refusalOf(withNames(chain(100000)));
  EXPECT_EQ(deep.substr(0, 34), "vxclss: t.json: /tree/false/false/");
  EXPECT_EQ(deep.substr(deep.size() - 55),
            "/false/false/true: more levels than a model file holds\n");
  EXPECT_LT(deep.size(), 300u);
}

TEST_F(TreeCommandTest, DepthOfTheFileDoesNotExhaustTheStack) {
  const std::string lists(200000, '[');
  EXPECT_EQ(refusalOf(lists + std::string(200000, ']')), "vxclss: t.json: not an object\n");
  EXPECT_EQ(refusalOf(lists).substr(0, 42), "vxclss: t.json: parse error at line 1, col");
}

}  // namespace
