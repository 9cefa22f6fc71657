// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/tools/command_line.h"
#include "tools/correlation.h"
#include "tools/json_text.h"
#include "tools/paired_test.h"

namespace {

using cli::Json;

class CompareCommandTest : public CommandLineTest {
 protected:
  /// What compare tells of d.csv, by the techniques' names.
  std::map<std::string, Json> compared(Names options) const {
    options.insert(options.begin(), {"compare", "d.csv", "--label", "kind", "--json"});
    const Outcome outcome = run(options);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    std::map<std::string, Json> techniques;
    const Json json = Json::parse(outcome.out);
    for (const Json& technique : json["techniques"]) {
      techniques[technique["name"]] = technique;
    }
    return techniques;
  }

  cli::Dataset dataset(const std::string& content) const {
    return cli::readDataset(scratch_.file("d.csv", content), {"kind", {}}, true,
                            [](const cli::Table&) {});
  }
};

TEST_F(CompareCommandTest, GivesTheFiguresThatEvaluateGives) {
  const Outcome outcome = run({"compare", kIris, "--label", "species", "--folds", "5", "--json"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err, "");
  const Json json = Json::parse(outcome.out);
  EXPECT_EQ(json["patterns"], 150);
  EXPECT_EQ(json["split"], Json::parse(R"({"kind": "folds", "folds": 5, "seed": 1})"));
  EXPECT_EQ(json["techniques"].size(), 10u);
  double last = 0.0;
  for (const Json& technique : json["techniques"]) {
    SCOPED_TRACE(technique["name"].get<std::string>());
    Names arguments{"evaluate", kIris, "--label", "species", "--folds", "5", "--json"};
    for (const Json& argument : technique["arguments"]) arguments.push_back(argument);
    const Json evaluated = Json::parse(run(arguments).out);
    for (const char* key :
         {"correct", "accuracy", "log_loss", "mean_expected_cost", "mean_actual_cost"}) {
      EXPECT_EQ(technique[key], evaluated[key]) << key;
    }
    EXPECT_GE(technique["mean_actual_cost"], last);
    last = technique["mean_actual_cost"];
  }
}

TEST_F(CompareCommandTest, PrintsTheCheapestFirstAndHowToTrainIt) {
  // The second measurement follows the first one; only both together tell the categories.
  std::string data = "x,y,kind\n";
  for (int i = 0; i < 40; ++i) {
    const double x = 0.37 * ((i * 7) % 40);
    const double wobble = 0.05 * ((i * 11) % 13 - 6);
    data += fmt::format("{},{},{}\n", x, x + wobble + (i % 2 == 0 ? 0.0 : 1.0),
                        i % 2 == 0 ? "it's low" : "high");
  }
  scratch_.file("d.csv", data);
  const Outcome outcome =
      run({"compare", "d.csv", "--label", "kind", "--folds", "4", "--cost", "it's low,high=2"});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out.substr(0, 92),
            "d.csv: 40 patterns, 2 measurements, 2 categories\n"
            "4 folds, seed 1, the same for all\n"
            "\n        ")
      << outcome.out;
  const std::string best = lineOf(outcome.out, "bayes, all dependent");
  EXPECT_NE(best.find("  100.0 %  91.2 % to 100.0 %"), std::string::npos) << outcome.out;
  EXPECT_EQ(best.substr(best.size() - 6), "  best");
  const std::string worst = lineOf(outcome.out, "bayes, independent ");
  EXPECT_NE(worst.find("  differs, p "), std::string::npos) << worst;
  EXPECT_EQ(lineOf(outcome.out, "To train"),
            "To train the best: vxclss train d.csv --label=kind --method=bayes --dependent=x,y "
            "'--cost=it'\\''s low,high=2' -o MODEL");
}

TEST_F(CompareCommandTest, CountsTheSamePatternsForAllAndComparesThemInPairs) {
  std::string data = "x,kind\n";
  for (int i = 0; i < 30; ++i)
    data += fmt::format("{},{}\n", (i * 17) % 31, i % 3 == 0 ? "a" : "b");
  scratch_.file("d.csv", data);
  const auto techniques = compared({"--folds", "3", "--seed", "7"});
  long bestCorrect = -1;
  for (const auto& [name, technique] : techniques) {
    if (technique["against_best"]["p"] == 1.0 &&
        technique["against_best"]["only_best_correct"] == 0 &&
        technique["against_best"]["only_this_correct"] == 0) {
      bestCorrect = technique["correct"];
    }
  }
  for (const auto& [name, technique] : techniques) {
    SCOPED_TRACE(name);
    EXPECT_EQ(technique["tested"], 30);
    const long onlyBest = technique["against_best"]["only_best_correct"];
    const long onlyThis = technique["against_best"]["only_this_correct"];
    EXPECT_EQ(bestCorrect - technique["correct"].get<long>(), onlyBest - onlyThis);
    EXPECT_EQ(technique["against_best"]["p"], cli::mcNemarTest(onlyBest, onlyThis));
    EXPECT_EQ(technique["against_best"]["within_noise"],
              cli::mcNemarTest(onlyBest, onlyThis) >= 0.05);
  }
}

TEST_F(CompareCommandTest, TriesWhatTheDataCallFor) {
  scratch_.file("d.csv",
                "x,holes,kind\n0.5,0,a\n1.5,1,a\n2.25,2,a\n0.75,1,a\n1.25,0,a\n2.5,2,a\n"
                "3.5,1,b\n4.25,3,b\n5.5,2,b\n6.5,4,b\n7.5,2,b\n5.75,3,b\n4.5,1,b\n6.25,4,b\n");
  const auto techniques = compared({"--folds", "2", "--cost", "a,b=3"});
  EXPECT_EQ(techniques.at("bayes, independent, frequencies as counted")["arguments"],
            Json::parse(R"(["--method=bayes", "--frequency=a=6", "--frequency=b=8"])"));
  EXPECT_EQ(techniques.at("bayes, independent, counts binomial")["arguments"],
            Json::parse(R"(["--method=bayes", "--distribution=holes=binomial",
                            "--maximum=holes=4"])"));
  EXPECT_EQ(techniques.count("bayes, correlated dependent"), 0u);
  // Costs of 3 and 1 show in the mean.
  const Json& nearest = techniques.at("knn, k 1");
  const double mistakes = 14.0 - nearest["correct"].get<double>();
  EXPECT_GE(nearest["mean_actual_cost"], mistakes / 14.0);
}

TEST_F(CompareCommandTest, TellsWhatCannotWorkAndWhy) {
  scratch_.file("d.csv",
                "x,y,kind\n0,1,a\n1,3,a\n2,,a\n3,2,a\n10,1,b\n11,2,b\n12,2.5,b\n13,0.5,b\n,,\n"
                "4,1,c\n");
  const auto techniques = compared({"--folds", "3"});
  EXPECT_EQ(techniques.at("knn, k 5")["obstacle"],
            "needs every measurement; 1 of 9 patterns lack one, the first in row 4");
  EXPECT_EQ(techniques.at("bayes, independent")["obstacle"],
            "No valid data has been used to train the distribution for category \"c\"");
  const Outcome outcome = run({"compare", "d.csv", "--label", "kind", "--folds", "3"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_NE(outcome.out.find("not counted, without a category: 1\n"), std::string::npos);
  EXPECT_NE(
      outcome.out.find("\nneeds every measurement; 1 of 9 patterns lack one, the first in "
                       "row 4\n  knn, k 1; knn, k 3; knn, k 5; knn, k 9; knn, k 15; knn, k 1, "
                       "order 1; knn, k 5, order 1\n"),
      std::string::npos)
      << outcome.out;
  EXPECT_EQ(outcome.out.find("To train"), std::string::npos);
}

TEST_F(CompareCommandTest, RefusesBadInput) {
  scratch_.file("d.csv", "x,kind\n0,a\n1,b\n2,a\n");
  scratch_.file("empty.csv", "");
  scratch_.file("text.csv", "x,kind\nred,a\n");
  expectRefusals({
      {"no data", {"compare"}, "DATA.csv is required (see vxclss compare --help)"},
      {"no such file",
       {"compare", "none.csv", "--label", "kind"},
       "none.csv: No such file or directory"},
      {"empty",
       {"compare", "empty.csv", "--label", "kind"},
       "empty.csv: no rows, not even one of column names"},
      {"no such column", {"compare", "d.csv", "--label", "sort"}, "d.csv: no column \"sort\""},
      {"no number",
       {"compare", "text.csv", "--label", "kind"},
       "text.csv, row 2, column \"x\": \"red\" is not a number"},
      {"too many folds",
       {"compare", "d.csv", "--label", "kind"},
       "d.csv: 3 patterns of known category are too few for 10 folds"},
      {"cost of a stranger",
       {"compare", "d.csv", "--label", "kind", "--folds", "2", "--cost", "a,c=1"},
       "--cost: \"a,c=1\" does not name two categories of the data: a, b"},
  });
}

TEST_F(CompareCommandTest, GroupsWhatCorrelatesWithinTheCategories) {
  // Over all patterns x and y rise together, within a category they don't; y and z do.
  EXPECT_EQ(cli::correlatedGroups(dataset("x,y,z,kind\n0,0,5,a\n1,1,7,a\n0,1,7,a\n1,0,5,a\n"
                                          "10,10,5,b\n11,11,7.5,b\n10,11,7,b\n11,10,5,b\n,,,\n"),
                                  0.5),
            (std::vector<std::vector<long>>{{1, 2}}));
  // w and z have nothing to do with each other but what x and y share; u is constant.
  EXPECT_EQ(cli::correlatedGroups(dataset("u,w,x,y,kind\n1,0,0,4,a\n1,1,1.5,3,a\n1,2,2,2,a\n"
                                          "1,3,2.5,,a\n1,4,4,0,a\n"),
                                  0.5),
            (std::vector<std::vector<long>>{{1, 2, 3}}));
  EXPECT_TRUE(cli::correlatedGroups(dataset("x,y,kind\n0,0,a\n1,1,b\n"), 0.5).empty());
}

TEST(PairedTestTest, GivesTheBinomialTail) {
  EXPECT_EQ(cli::mcNemarTest(0, 0), 1.0);
  EXPECT_EQ(cli::mcNemarTest(4, 4), 1.0);
  EXPECT_NEAR(cli::mcNemarTest(5, 0), 2.0 / 32.0, 1e-12);
  EXPECT_NEAR(cli::mcNemarTest(0, 6), 2.0 / 64.0, 1e-12);
  EXPECT_NEAR(cli::mcNemarTest(1, 8), 2.0 * 10.0 / 512.0, 1e-12);
  EXPECT_EQ(cli::mcNemarTest(8, 1), cli::mcNemarTest(1, 8));
  // 2 * sum of binomial(200000, i) / 2^200000 up to 99500, by the normal distribution.
  EXPECT_NEAR(cli::mcNemarTest(99500, 100500), std::erfc(999.0 / std::sqrt(200000.0 * 2.0)), 1e-6);
}

}  // namespace
