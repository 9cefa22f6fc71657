// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/tools/command_line.h"
#include "tools/error.h"
#include "tools/model_file.h"
#include "tools/model_json.h"
#include "tools/model_text.h"
#include "tools/tree_text.h"

namespace {

class InspectCommandTest : public CommandLineTest {
 protected:
  void store(cli::Model& model, const std::string& name) const {
    std::ofstream stream(scratch_.path(name), std::ios::binary);
    cli::writeModel(model, stream);
  }

  /// What inspect prints of a tree over measurements w and h.
  std::string shown(const vxDecisionTree& tree) const {
    cli::Model model;
    model.names = {{"w", "h"}, {"good", "bad"}};
    model.tool.train(tree);
    store(model, "t.model");
    const Outcome outcome = run({"inspect", "t.model"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    const std::string head = "method: tree (decision tree)\nmeasurements: w, h\n\n";
    EXPECT_EQ(outcome.out.substr(0, head.size()), head);
    return outcome.out.substr(std::min(head.size(), outcome.out.size()));
  }
};

vxDecisionTreeLeaf leaf(long label) {
  return vxDecisionTreeLeaf(vxClassifierResult({{label, 1.0, 1.0, 0.0}}, 0.0));
}

TEST_F(InspectCommandTest, TellsWhatNearestNeighboursHold) {
  scratch_.file("d.csv", "x,y,kind\n0,1,a\n1,2,a\n2,3,\"b\x1b\"\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--k", "3", "--order", "1", "--cost",
                 "a,b\x1b=2.5", "-o", "m.model"})
                .err,
            "");
  EXPECT_EQ(run({"inspect", "m.model"}).out,
            "method: knn (k nearest neighbours)\n"
            "measurements: x, y\n"
            "k: 3\n"
            "distance: norm of order 1 (city-block)\n"
            "cost of a wrong decision: 1\n"
            "  a taken for b\\x1b: 2.5\n"
            "stored patterns: 3\n"
            "  a: 2\n"
            "  b\\x1b: 1\n");
}

TEST_F(InspectCommandTest, TellsTheDensitiesOfBayes) {
  // Category a: x and y rise together; n has mean 4 of 10 and variance 4 of 100, so theta is 0.4
  // and the number of trials 0.4 * 0.6 / 0.04 = 6.
  scratch_.file("d.csv",
                "x,y,n,kind\n0,0,2,a\n2,4,4,a\n4,8,6,a\n"
                "1,5,2,b\n1,5,4,b\n,5,6,b\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "m.model",
                 "--distribution", "n=binomial", "--maximum", "n=10", "--dependent", "x,y",
                 "--frequency", "b=0.25"})
                .err,
            "");
  EXPECT_EQ(run({"inspect", "m.model"}).out,
            "method: bayes (Bayesian classification)\n"
            "measurements: x, y, n\n"
            "cost of a wrong decision: 1\n"
            "\n"
            "category a: frequency 1\n"
            "  x, y: normal, dependent (3 samples); correlations on the right\n"
            "           mean  standard deviation    (1)\n"
            "    (1) x     2                   2\n"
            "    (2) y     4                   4  1.000\n"
            "  n: binomial, 6 trials, theta 0.4, maximum 10\n"
            "\n"
            "category b: frequency 0.25\n"
            "  x, y: normal, dependent (3 samples); correlations on the right\n"
            "           mean  standard deviation  (1)\n"
            "    (1) x     1                   0\n"
            "    (2) y     5                   0    -\n"
            "  n: binomial, 6 trials, theta 0.4, maximum 10\n");

  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--method", "bayes", "--ignore", "x",
                 "--ignore", "n", "-o", "m.model"})
                .err,
            "");
  EXPECT_EQ(lineOf(run({"inspect", "m.model"}).out, "  y"),
            "  y: normal, mean 4, standard deviation 4 (3 samples)");
}

TEST_F(InspectCommandTest, DrawsATree) {
  const double infinity = std::numeric_limits<double>::infinity();
  const vxDecisionTreeLeaf scored(
      vxClassifierResult({{0, 0.5, 0.25, 0.5}, {1, 1.0, 0.75, 0.25}}, 0.0));
  const vxDecisionTreeNode compared(vxComparisonPredicate(1, 0), leaf(1), scored);
  const vxDecisionTreeNode above(vxRangePredicate(vxRange(0.1, infinity), {0, 1}), leaf(0),
                                 leaf(7));
  const vxDecisionTreeNode valid(vxValidityPredicate({0, 5}), compared, above);
  const vxDecisionTreeNode below(vxRangePredicate(vxRange(-infinity, -1e-300), {1}), valid,
                                 leaf(1));
  EXPECT_EQ(shown(vxDecisionTreeNode(vxRangePredicate(vxRange(1.5, 2.0), {0}), leaf(0), below)),
            "w in [1.5, 2]?\n"
            "├─ yes: good\n"
            "└─ no: h <= -1e-300?\n"
            "   ├─ yes: w, measurement 5 valid?\n"
            "   │  ├─ yes: h > w?\n"
            "   │  │  ├─ yes: bad\n"
            "   │  │  └─ no: bad (match score 1, class score 0.75, expected cost 0.25); "
            "good (match score 0.5, class score 0.25, expected cost 0.5)\n"
            "   │  └─ no: w, h >= 0.1?\n"
            "   │     ├─ yes: good\n"
            "   │     └─ no: category 7\n"
            "   └─ no: bad\n");
  EXPECT_EQ(shown(leaf(1)), "bad\n");
  EXPECT_EQ(shown(vxDecisionTreeNode()),
            "w valid?\n"
            "├─ yes: no category\n"
            "└─ no: no category\n");
}

TEST_F(InspectCommandTest, DrawsWhatNodesShareOnce) {
  const vxDecisionTreeNode inner(vxValidityPredicate({0}), leaf(0), leaf(1));
  const vxDecisionTreeNode middle(vxComparisonPredicate(0, 1), inner, leaf(1));
  // Both answers get a copy of `middle`, and the copies share what is below.
  EXPECT_EQ(shown(vxDecisionTreeNode(vxValidityPredicate({1}), middle, middle)),
            "h valid?\n"
            "├─ yes: w > h?\n"
            "│  ├─ yes: [1] w valid?\n"
            "│  │  ├─ yes: good\n"
            "│  │  └─ no: bad\n"
            "│  └─ no: bad\n"
            "└─ no: w > h?\n"
            "   ├─ yes: as [1]\n"
            "   └─ no: bad\n");
}

TEST(TreeTextTest, SixtySharedLevelsTakeALineOrTwoEach) {
  vxDecisionTreeNode tree;
  for (int level = 0; level < 60; ++level) {
    tree = vxDecisionTreeNode(vxValidityPredicate({0}), tree, tree);
  }
  const std::string text = cli::treeText(&tree, {{"w"}, {}});
  EXPECT_LT(std::count(text.begin(), text.end(), '\n'), 60 * 8);
  EXPECT_NE(text.find("as [58]"), std::string::npos);
}

TEST(TreeTextTest, DepthDoesNotExhaustTheStack) {
  vxDecisionTreeNode tree(vxValidityPredicate({0}), leaf(0), leaf(0));
  const int depth = 2000;
  for (int level = 1; level < depth; ++level) {
    tree = vxDecisionTreeNode(vxValidityPredicate({0}), leaf(0), tree);
  }
  const std::string text = cli::treeText(&tree, {{"w"}, {"good"}});
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2 * depth + 1);
}

TEST(TreeTextTest, SaysWhatIsMissing) {
  EXPECT_EQ(cli::treeText(nullptr, {{"w"}, {"good"}}), "missing\n");
  EXPECT_EQ(cli::predicateText(vxRangePredicate(vxRange(0.0, 1.0), {}), {}), "always");
  EXPECT_EQ(cli::predicateText(vxValidityPredicate(std::vector<long>()), {}), "always");
}

TEST_F(InspectCommandTest, SurvivesEveryChangeOfOneByte) {
  scratch_.file("d.csv", "x,y,n,kind\n0,0,2,a\n2,4,4,a\n4,8,6,a\n1,5,2,b\n2,7,4,b\n,5,6,b\n");
  scratch_.file("t.json", R"({"measurements": ["x", "y"], "categories": ["a", "b"], "tree":
      {"if": {"compare": ["x", ">", "y"]}, "true": "a", "false":
       {"if": {"range": {"of": ["x"], "to": 1}}, "true": "a", "false": "b"}}})");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "bayes.model",
                 "--distribution", "n=binomial", "--maximum", "n=10", "--dependent", "x,y"})
                .err,
            "");
  ASSERT_EQ(run({"tree", "t.json", "-o", "tree.model"}).err, "");
  for (const char* name : {"bayes.model", "tree.model"}) {
    const std::string bytes = contentOf(scratch_.path(name));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      for (const char change : {'\x01', '\x80', '\xFF'}) {
        std::string damaged = bytes;
        damaged[i] = static_cast<char>(damaged[i] ^ change);
        std::istringstream stream(damaged);
        try {
          const cli::Model model = cli::readModel(stream, "m");
          EXPECT_NE(cli::jsonText(cli::modelJson(model)), "");
          EXPECT_NE(cli::modelText(model), "");
        } catch (const cli::InputError&) {
        } catch (const vxClassifierDefs::Errors&) {
          // A label or an order that a setter would have refused.
        }
      }
    }
  }
}

TEST_F(InspectCommandTest, AnswersToItsFormerName) {
  scratch_.file("d.csv", "x,kind\n0,a\n1,b\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "-o", "m.model"}).err, "");
  EXPECT_EQ(run({"show", "m.model"}).out, run({"inspect", "m.model"}).out);
}

TEST_F(InspectCommandTest, GivesNearestNeighboursAsJson) {
  scratch_.file("d.csv", "x,y,kind\n0,1,a\n1,2,a\n2,3,\"b\x1b\"\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--k", "3", "--order", "1.5",
                 "--default-cost", "2", "--cost", "a,b\x1b=2", "-o", "m.model"})
                .err,
            "");
  const Outcome outcome = run({"inspect", "m.model", "--json"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(cli::Json::parse(outcome.out), cli::Json::parse(R"({
      "method": "knn", "measurements": ["x", "y"], "categories": ["a", "b\u001b"],
      "k": 3, "distance": {"kind": "norm", "order": 1.5},
      "costs": {"default": 2.0,
                "pairs": [{"true": "a", "assigned": "b\u001b", "cost": 2.0}]},
      "stored_patterns": {"total": 3, "categories": [
          {"category": "a", "patterns": 2}, {"category": "b\u001b", "patterns": 1}]}})"));
}

TEST_F(InspectCommandTest, GivesBayesAsJson) {
  // See TellsTheDensitiesOfBayes.
  scratch_.file("d.csv",
                "x,y,n,kind\n0,0,2,a\n2,4,4,a\n4,8,6,a\n"
                "1,5,2,b\n1,5,4,b\n,5,6,b\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "m.model",
                 "--distribution", "n=binomial", "--maximum", "n=10", "--dependent", "a:x,y",
                 "--frequency", "b=0.25"})
                .err,
            "");
  cli::Json json = cli::Json::parse(run({"inspect", "m.model", "--json"}).out);
  for (auto& model : json["models"]) {
    cli::Json& binomial = model["densities"].back();
    EXPECT_NEAR(binomial["theta"], 0.4, 1e-15);
    binomial.erase("theta");
  }
  EXPECT_EQ(json, cli::Json::parse(R"({
      "method": "bayes", "measurements": ["x", "y", "n"], "categories": ["a", "b"],
      "costs": {"default": 1.0, "pairs": []},
      "frequencies": {"default": 1.0, "categories": [{"category": "b", "frequency": 0.25}]},
      "models": [
        {"category": "a", "frequency": 1.0, "densities": [
          {"measurements": ["x", "y"], "distribution": "normal", "samples": 3,
           "mean": [2.0, 4.0], "covariance": [[4.0, 8.0], [8.0, 16.0]]},
          {"measurements": ["n"], "distribution": "binomial", "trials": 6, "maximum": 10.0}]},
        {"category": "b", "frequency": 0.25, "densities": [
          {"measurements": ["x"], "distribution": "normal", "samples": 2,
           "mean": [1.0], "covariance": [[0.0]]},
          {"measurements": ["y"], "distribution": "normal", "samples": 3,
           "mean": [5.0], "covariance": [[0.0]]},
          {"measurements": ["n"], "distribution": "binomial", "trials": 6, "maximum": 10.0}]}
      ]})"));
}

TEST_F(InspectCommandTest, GivesATreeInTheFormThatMakesIt) {
  scratch_.file("t.json", R"({"measurements": ["w", "h"], "categories": ["good", "bad"], "tree":
      {"if": {"compare": ["w", "<", "h"]}, "true": "good", "false":
       {"if": {"range": {"of": "w", "to": 1.5}}, "true":
        {"if": {"valid": ["h", "w"]}, "true": "good", "false": "bad"}, "false":
        {"results": [
          {"category": "bad", "match_score": 0.5, "class_score": 0.75, "expected_cost": 0.25},
          {"category": "good", "match_score": 1, "class_score": 0.25, "expected_cost": 2}]}}}})");
  ASSERT_EQ(run({"tree", "t.json", "-o", "t.model"}).err, "");
  const Outcome outcome = run({"inspect", "t.model", "--json"});
  cli::Json json = cli::Json::parse(outcome.out);
  EXPECT_EQ(json["method"], "tree");
  EXPECT_EQ(json["tree"]["if"], cli::Json::parse(R"({"compare": ["h", ">", "w"]})"));
  json.erase("method");
  scratch_.file("again.json", json.dump());
  ASSERT_EQ(run({"tree", "again.json", "-o", "again.model"}).err, "");
  EXPECT_EQ(contentOf(scratch_.path("again.model")), contentOf(scratch_.path("t.model")));
}

TEST_F(InspectCommandTest, WritesSharedNodesOnceAsJson) {
  vxDecisionTreeNode tree(vxValidityPredicate({5}), leaf(0), leaf(9));
  for (int level = 0; level < 60; ++level) {
    tree = vxDecisionTreeNode(vxComparisonPredicate(0, 1), tree, tree);
  }
  cli::Model model;
  model.names = {{"w", "h"}, {"good", "bad"}};
  model.tool.train(tree);
  store(model, "t.model");
  const cli::Json json = cli::Json::parse(run({"inspect", "t.model", "--json"}).out);
  EXPECT_LT(json.dump().size(), 20000u);
  EXPECT_EQ(json["tree"]["true"]["true"]["id"], 1);
  EXPECT_EQ(json["tree"]["false"]["true"], cli::Json::parse(R"({"same_as": 1})"));
  const std::string text = json.dump();
  EXPECT_NE(text.find(R"({"valid":[5]},"true":"good","false":{"results":[{"category":9,)"),
            std::string::npos)
      << text;
}

TEST_F(InspectCommandTest, GivesEqualModelsEqualBytes) {
  scratch_.file("d.csv", "x,y,kind\n0,1,a\n1,2,a\n2,3,b\n2.5,1,b\n");
  const Names bayes{"train", "d.csv", "--label", "kind", "--method", "bayes", "-o"};
  for (const char* name : {"m.model", "n.model"}) {
    Names arguments = bayes;
    arguments.emplace_back(name);
    ASSERT_EQ(run(arguments).err, "");
  }
  const std::string bytes = run({"inspect", "m.model", "--json"}).out;
  EXPECT_EQ(run({"inspect", "n.model", "--json"}).out, bytes);
  ASSERT_EQ(run({"retrain", "m.model", "--default-cost", "1"}).err, "");
  EXPECT_EQ(run({"inspect", "m.model", "--json"}).out, bytes);
  EXPECT_NE(bytes.find("\n  \"method\": \"bayes\",\n  \"measurements\": [\n"), std::string::npos);
}

TEST(JsonTextTest, NumbersOutsideOfJsonBecomeTexts) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(
      cli::jsonLine({cli::jsonNumber(-infinity), cli::jsonNumber(infinity),
                     cli::jsonNumber(std::nan("")), cli::jsonNumber(0.1), cli::jsonNumber(-0.0)}),
      "[\"-inf\",\"inf\",\"nan\",0.1,-0.0]\n");
  EXPECT_EQ(cli::jsonLine("\xff"), "\"\xEF\xBF\xBD\"\n");
}

TEST_F(InspectCommandTest, RefusesWhatIsNoModel) {
  scratch_.file("d.csv", "x,kind\n0,a\n");
  scratch_.file("empty.model", "");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "-o", "m.model"}).err, "");
  const std::string bytes = contentOf(scratch_.path("m.model"));
  scratch_.file("cut.model", bytes.substr(0, bytes.size() - 1));
  expectRefusals({
      {"no model", {"inspect"}, "MODEL is required (see vxclss inspect --help)"},
      {"no such model", {"inspect", "none.model"}, "none.model: No such file or directory"},
      {"data",
       {"inspect", "d.csv"},
       "d.csv: not a vxclss model file: unknown version of a part of it"},
      {"empty",
       {"inspect", "empty.model", "--json"},
       "empty.model: not a vxclss model file: The archive ends too early"},
      {"cut short",
       {"inspect", "cut.model", "--json"},
       "cut.model: not a vxclss model file: The archive ends too early"},
  });
}

}  // namespace
