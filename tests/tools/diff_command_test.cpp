// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include "tests/tools/command_line.h"
#include "tools/json_diff.h"

namespace {

using cli::Json;

class DiffCommandTest : public CommandLineTest {
 protected:
  DiffCommandTest() {
    scratch_.file("d.csv", "x,y,kind\n0,0,a\n2,4,a\n4,8,a\n1,5,b\n3,7,b\n2,5,b\n");
  }

  /// Trains on d.csv.
  void train_(const std::string& model, const Names& more) const {
    Names arguments{"train", "d.csv", "--label", "kind", "-o", model};
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(run(arguments).err, "");
  }

  /// What diff prints of two models that differ, without the first line.
  std::string differences_(const std::string& a, const std::string& b) const {
    const Outcome outcome = run({"diff", a, b});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err, "");
    const std::string head = a + " and " + b + " differ\n";
    EXPECT_EQ(outcome.out.substr(0, head.size()), head);
    return outcome.out.substr(head.size());
  }
};

TEST_F(DiffCommandTest, FindsEqualModelsEqual) {
  for (const Names& options : {Names{"--k", "3"}, Names{"--method", "bayes"}}) {
    train_("a.model", options);
    train_("b.model", options);
    const Outcome outcome = run({"diff", "a.model", "b.model"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "a.model and b.model are equal\n");
  }
  const Outcome told = run({"diff", "a.model", "b.model", "--json"});
  EXPECT_EQ(told.code, 0);
  Json json = Json::parse(told.out);
  EXPECT_EQ(scratch_.withoutPath(json["a"]), "a.model");
  EXPECT_EQ(scratch_.withoutPath(json["b"]), "b.model");
  json.erase("a");
  json.erase("b");
  EXPECT_EQ(json, Json::parse(R"({"equal": true, "same_bytes": true, "differences": []})"));
}

TEST_F(DiffCommandTest, TellsWhenOnlyTheBytesDiffer) {
  // Costs in another order.
  train_("a.model", {"--cost", "a,b=2", "--cost", "b,a=3"});
  train_("b.model", {"--cost", "b,a=3", "--cost", "a,b=2"});
  const Outcome outcome = run({"diff", "a.model", "b.model"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.out, "a.model and b.model are equal, though not byte for byte\n");
  EXPECT_EQ(Json::parse(run({"diff", "a.model", "b.model", "--json"}).out)["same_bytes"], false);
}

TEST_F(DiffCommandTest, NamesTheParametersThatDiffer) {
  train_("a.model", {"--k", "3", "--cost", "a,b=2"});
  train_("b.model", {"--k", "5", "--order", "1", "--cost", "a,b=2.5", "--cost", "b,a=4"});
  EXPECT_EQ(differences_("a.model", "b.model"),
            "  k: 3 -> 5\n"
            "  distance / order: 2.0 -> 1.0\n"
            "  costs / pairs / a taken for b / cost: 2.0 -> 2.5\n"
            "  costs / pairs / b taken for a: nothing -> "
            "{\"true\":\"b\",\"assigned\":\"a\",\"cost\":4.0}\n");
  const Outcome told = run({"diff", "a.model", "b.model", "--json"});
  EXPECT_EQ(told.code, 1);
  EXPECT_EQ(Json::parse(told.out)["differences"], Json::parse(R"([
      {"path": ["k"], "a": 3, "b": 5},
      {"path": ["distance", "order"], "a": 2.0, "b": 1.0},
      {"path": ["costs", "pairs", "a taken for b", "cost"], "a": 2.0, "b": 2.5},
      {"path": ["costs", "pairs", "b taken for a"],
       "b": {"true": "b", "assigned": "a", "cost": 4.0}}])"));
}

TEST_F(DiffCommandTest, NamesTheDensitiesThatDiffer) {
  train_("a.model", {"--method", "bayes", "--dependent", "a:x,y"});
  scratch_.file("d.csv", "x,y,kind\n0,0,a\n2,4,a\n4,9.5,a\n1,5,b\n3,7,b\n2,5,b\n");
  train_("b.model", {"--method", "bayes", "--dependent", "a:x,y"});
  EXPECT_EQ(differences_("a.model", "b.model"),
            "  models / a / densities / x, y / mean / y: 4.0 -> 4.5\n"
            "  models / a / densities / x, y / covariance / x / y: 8.0 -> 9.5\n"
            "  models / a / densities / x, y / covariance / y / x: 8.0 -> 9.5\n"
            "  models / a / densities / x, y / covariance / y / y: 16.0 -> 22.75\n");
  train_("c.model", {"--method", "bayes", "--frequency", "b=3"});
  const std::string text = differences_("b.model", "c.model");
  EXPECT_NE(text.find("  models / a / densities / x, y: {\"measurements\""), std::string::npos);
  EXPECT_NE(text.find("  models / a / densities / x: nothing -> {"), std::string::npos);
  EXPECT_NE(text.find("  models / b / frequency: 1.0 -> 3.0\n"), std::string::npos) << text;
}

TEST_F(DiffCommandTest, ComparesStoredPatternsWhereverTheyStand) {
  train_("a.model", {});
  scratch_.file("d.csv", "x,y,kind\n0,0,a\n4,8,a\n2,4,a\n1,5,b\n3,7,b\n2,5,b\n");
  train_("b.model", {});
  EXPECT_EQ(differences_("a.model", "b.model"), "  stored_patterns / order: 1 -> 2\n");
  scratch_.file("d.csv", "x,y,kind\n0,-0,a\n2,4,a\n4,8.5,a\n1,5,b\n3,7,b\n2,5,b\n2,5,b\n");
  train_("b.model", {});
  EXPECT_EQ(differences_("a.model", "b.model"),
            "  stored_patterns / total: 6 -> 7\n"
            "  stored_patterns / categories / b / patterns: 3 -> 4\n"
            "  stored_patterns / unmatched: 1 -> 2\n");
}

TEST_F(DiffCommandTest, FollowsTrees) {
  const std::string start = R"({"measurements": ["x", "y"], "categories": ["a", "b"], "tree": )";
  scratch_.file("a.json", start + R"({"if": {"range": {"of": "x", "from": 1}}, "true": "a",
      "false": {"if": {"valid": "y"}, "true": "a", "false": "b"}}})");
  scratch_.file("b.json", start + R"({"if": {"range": {"of": "x", "from": 1.5}}, "true": "b",
      "false": {"if": {"compare": ["x", ">", "y"]}, "true": "a", "false": "b"}}})");
  ASSERT_EQ(run({"tree", "a.json", "-o", "a.model"}).err, "");
  ASSERT_EQ(run({"tree", "b.json", "-o", "b.model"}).err, "");
  EXPECT_EQ(differences_("a.model", "b.model"),
            "  tree / if / range / from: 1.0 -> 1.5\n"
            "  tree / true: a -> b\n"
            "  tree / false / if: {\"valid\":[\"y\"]} -> {\"compare\":[\"x\",\">\",\"y\"]}\n");
}

TEST_F(DiffCommandTest, ComparesWhatDifferentTechniquesHaveInCommon) {
  train_("a.model", {"--default-cost", "2"});
  train_("b.model", {"--method", "bayes"});
  EXPECT_EQ(differences_("a.model", "b.model"),
            "  method: knn -> bayes\n"
            "  costs / default: 2.0 -> 1.0\n");
}

TEST_F(DiffCommandTest, TellsNamesThatDiffer) {
  train_("a.model", {});
  scratch_.file("d.csv", "x,z,kind\n0,0,a\n2,4,a\n4,8,a\n1,5,\"c\x1b\"\n");
  train_("b.model", {});
  const std::string expected =
      "  measurements: [\"x\",\"y\"] -> [\"x\",\"z\"]\n"
      "  categories: [\"a\",\"b\"] -> [\"a\",\"c\\u001b\"]\n";
  EXPECT_EQ(differences_("a.model", "b.model").substr(0, expected.size()), expected);
}

TEST_F(DiffCommandTest, EndsWithTwoWhereItCannotCompare) {
  train_("a.model", {});
  const std::string bytes = contentOf(scratch_.path("a.model"));
  scratch_.file("cut.model", bytes.substr(0, 50));
  scratch_.file("empty.model", "");
  expectRefusals({
      {"one model", {"diff", "a.model"}, "B.model is required (see vxclss diff --help)"},
      {"no such file", {"diff", "a.model", "none.model"}, "none.model: No such file or directory"},
      {"not a model",
       {"diff", "d.csv", "a.model"},
       "d.csv: not a vxclss model file: unknown version of a part of it"},
      {"empty",
       {"diff", "a.model", "empty.model"},
       "empty.model: not a vxclss model file: The archive ends too early"},
      {"cut short",
       {"diff", "a.model", "cut.model", "--json"},
       "cut.model: not a vxclss model file: The archive ends too early"},
  });
}

TEST_F(DiffCommandTest, DoesNotCallAnInternalErrorADifference) {
  train_("a.model", {});
  const std::string model = scratch_.path("a.model");
  struct Failing : std::streambuf {
    int_type overflow(int_type) override { throw std::runtime_error("no room"); }
  } failing;
  std::ostream broken(&failing);
  broken.exceptions(std::ios::badbit);
  std::ostringstream err;
  const char* const argv[] = {"vxclss", "diff", model.c_str(), model.c_str()};
  EXPECT_EQ(cli::runCommandLine(4, argv, {broken, err, false, false}), 2);
  EXPECT_EQ(err.str(), "vxclss: no room\n");
  const char* const inspect[] = {"vxclss", "inspect", model.c_str()};
  EXPECT_EQ(cli::runCommandLine(3, inspect, {broken, err, false, false}), 1);
}

TEST(JsonDiffTest, TellsOrdersAndListsOfNoSubject) {
  const auto text = [](const char* a, const char* b) {
    std::string all;
    for (const cli::JsonDifference& d : cli::jsonDifferences(Json::parse(a), Json::parse(b))) {
      for (const std::string& step : d.path) all += "/" + step;
      all += " " + (d.a ? d.a->dump() : "") + ":" + (d.b ? d.b->dump() : "") + ";";
    }
    return all;
  };
  EXPECT_EQ(text(R"([{"category": "a"}, {"category": "b"}])",
                 R"([{"category": "b"}, {"category": "a"}])"),
            "/order [\"a\",\"b\"]:[\"b\",\"a\"];");
  EXPECT_EQ(text("[1, null, 3]", "[1, 2, 3]"), "/1 null:2;");
  EXPECT_EQ(text("[1, 2]", "[1, 2, 3]"), " [1,2]:[1,2,3];");
  EXPECT_EQ(text(R"({"a": 1, "b": 2})", R"({"b": 2, "c": 3})"), "/a 1:;/c :3;");
  EXPECT_EQ(text(R"({"a": 1})", R"({"b": 2})"), " {\"a\":1}:{\"b\":2};");
}

}  // namespace
