// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/tools/command_line.h"

namespace {

using EvaluateCommandTest = CommandLineTest;
using nlohmann::json;

const char* const kTiny = "x,kind\n0,a\n1,a\n,\n4,b\n5,b\n8,b\n8.5,a\n";

Names evaluate(const std::string& data, const std::string& label, Names more = {}) {
  Names arguments{"evaluate", data, "--label", label};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

TEST_F(EvaluateCommandTest, PrintsJsonInPlaceOfTheText) {
  scratch_.file("d.csv", kTiny);
  const Outcome outcome = run(evaluate("d.csv", "kind", {"--k", "1", "--folds", "6", "--json"}));
  EXPECT_EQ(outcome.err, "");
  const json told = json::parse(outcome.out);
  EXPECT_EQ(told["data"], "d.csv");
  EXPECT_EQ(told["labelled_patterns"], 6);
  EXPECT_EQ(told["method"]["name"], "knn");
  EXPECT_EQ(told["method"]["options"], "k 1, order 2");
  EXPECT_EQ(told["split"], (json{{"kind", "folds"}, {"folds", 6}, {"seed", 1}}));
  EXPECT_EQ(told["confusion"]["counts"], (json{{2, 1}, {1, 2}}));
  EXPECT_EQ(told["confusion"]["rows"], (json{{{2, 3}, {8}}, {{7}, {5, 6}}}));
  EXPECT_EQ(told["records"][5]["fit"], -0.5);
  EXPECT_EQ(told["records"][5]["contributions"][0]["for_true"], -56.25);
  EXPECT_GT(told["timings"]["run_seconds"], 0.0);
}

TEST_F(EvaluateCommandTest, WritesJsonToAFileBesideTheText) {
  scratch_.file("d.csv", kTiny);
  const Names plain = evaluate("d.csv", "kind", {"--folds", "2"});
  Names toFile = plain;
  toFile.insert(toFile.end(), {"--json", "-o", "out.json"});
  const Outcome outcome = run(toFile);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(lineOf(outcome.out, "accuracy"), lineOf(run(plain).out, "accuracy"));
  EXPECT_EQ(json::parse(contentOf(scratch_.path("out.json")))["patterns"], 6);
}

TEST_F(EvaluateCommandTest, TellsTheSameEachTimeButForTimings) {
  const Names arguments = evaluate(kIris, "species", {"--method", "bayes", "--json"});
  json first = json::parse(run(arguments).out);
  json second = json::parse(run(arguments).out);
  EXPECT_EQ(first.erase("timings"), 1u);
  second.erase("timings");
  EXPECT_EQ(first, second);
}

TEST_F(EvaluateCommandTest, HoldsOutAFraction) {
  const Outcome outcome = run(evaluate(kIris, "species", {"--holdout", "0.2", "--seed", "3"}));
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(lineOf(outcome.out, "method"),
            "method knn (k 5, order 2), fraction 0.2 held out, seed 3");
  EXPECT_EQ(lineOf(outcome.out, "setosa"),
            "setosa              10           0          0     10  100.0 %    100.0 %");
}

TEST_F(EvaluateCommandTest, WritesTheSameReportEachTime) {
  const Names arguments = evaluate(kIris, "species", {"--method", "bayes", "--report"});
  std::string first;
  for (const char* const name : {"a.html", "b.html"}) {
    Names toFile = arguments;
    toFile.push_back(scratch_.path(name));
    const Outcome outcome = run(toFile);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(lineOf(outcome.out, "accuracy"), "accuracy            96.0 % (144 of 150)");
    const std::string report = contentOf(scratch_.path(name));
    EXPECT_EQ(report.compare(0, 15, "<!DOCTYPE html>"), 0);
    if (first.empty()) first = report;
    EXPECT_EQ(report, first);
  }
}

TEST_F(EvaluateCommandTest, PlotsTheMeasurementsAskedFor) {
  const std::string path = scratch_.path("r.html");
  ASSERT_EQ(run(evaluate(kIris, "species",
                         {"--report", path, "--plot", "petal_width", "--plot", "sepal_length",
                          "--plot", "petal_width"}))
                .err,
            "");
  const std::string report = contentOf(path);
  EXPECT_NE(report.find("id=\"pair-0-3\""), std::string::npos);
  EXPECT_EQ(report.find("id=\"pair-0-1\""), std::string::npos);
  EXPECT_NE(report.find("2 of 4 measurements are shown"), std::string::npos);
}

TEST_F(EvaluateCommandTest, LeavesNoReportWhereItFails) {
  scratch_.file("t.csv", kTiny);
  const Names before = scratch_.names();
  const Outcome outcome = run(evaluate("t.csv", "kind",
                                       {"--method", "bayes", "--folds", "6", "--dependent", "x,x",
                                        "--report", scratch_.path("r.html")}));
  EXPECT_EQ(outcome.code, 2);
  EXPECT_EQ(scratch_.names(), before);
}

TEST_F(EvaluateCommandTest, RefusesWhatItCannotSplit) {
  scratch_.file("d.csv", "x,kind\n0,a\n1,b\n2,c\n");
  scratch_.file("t.csv", kTiny);
  expectRefusals({
      {"one of each", evaluate("d.csv", "kind", {"--holdout", "0.5"}),
       "d.csv: 3 patterns of known category are too few to hold out 0.5"},
      {"too many folds", evaluate("t.csv", "kind", {"--folds", "7"}),
       "t.csv: 6 patterns of known category are too few for 7 folds"},
      {"no fraction", evaluate("t.csv", "kind", {"--holdout", "1"}),
       "--holdout: \"1\" is not a number between 0 and 1 (see vxclss evaluate --help)"},
      {"both", evaluate("t.csv", "kind", {"--holdout", "0.5", "--folds", "2"}),
       "--folds excludes --holdout (see vxclss evaluate --help)"},
      {"output without JSON", evaluate("t.csv", "kind", {"-o", "x.json"}),
       "--output requires --json (see vxclss evaluate --help)"},
      {"no report", evaluate("t.csv", "kind", {"--folds", "2", "--report", "/no/such/r.html"}),
       "/no/such/r.html: No such file or directory"},
      {"unknown plot",
       evaluate("t.csv", "kind", {"--folds", "2", "--report", "/no/r.html", "--plot", "y"}),
       "--plot: t.csv: no measurement \"y\""},
      {"plot without report", evaluate("t.csv", "kind", {"--plot", "x"}),
       "--plot requires --report (see vxclss evaluate --help)"},
      {"no directory",
       evaluate("t.csv", "kind", {"--folds", "2", "--json", "-o", "/no/such/x.json"}),
       "/no/such/x.json: No such file or directory"},
  });
}

}  // namespace
