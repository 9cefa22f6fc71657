// SPDX-License-Identifier: MIT
#include "tests/tools/command_line.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <vxclss/version.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tools/model_file.h"

namespace {

TEST_F(CommandLineTest, TellsItsVersionAndItsUse) {
  EXPECT_EQ(run({"--version"}).out, "vxclss " VXCLSS_VERSION "\n");
  const Names commands{"",      "train", "run",  "evaluate", "compare",  "retrain",    "inspect",
                       "check", "diff",  "tree", "rules",    "generate", "completion", "manual"};
  for (const std::string& command : commands) {
    const Outcome help = command.empty() ? run({"--help"}) : run({command, "--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_NE(help.out.find("Examples:\n  vxclss "), std::string::npos) << help.out;
  }
}

TEST_F(CommandLineTest, EvaluatesNearestNeighboursOnIris) {
  const Outcome outcome = run(
      {"evaluate", kIris, "--label", "species", "--method", "knn", "--k", "5", "--folds", "10"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(lineOf(outcome.out, "method"), "method knn (k 5, order 2), 10 folds, seed 1");
  EXPECT_EQ(lineOf(outcome.out, "setosa"),
            "setosa              50           0          0     50  100.0 %    100.0 %");
  EXPECT_EQ(lineOf(outcome.out, "accuracy"), "accuracy            96.7 % (145 of 150)");
  EXPECT_EQ(lineOf(outcome.out, "mean"), "mean expected cost  0.036");
}

TEST_F(CommandLineTest, EvaluatesATinySetAsOneDoesByHand) {
  scratch_.file("d.csv", "x,kind\n0,a\n1,a\n,\n4,b\n5,b\n8,b\n8.5,a\n");
  const Outcome outcome = run({"evaluate", "d.csv", "--label", "kind", "--k", "1", "--folds", "6"});
  const std::string training = lineOf(outcome.out, "training");
  EXPECT_NE(training.find(" s"), std::string::npos);
  const std::string speed = lineOf(outcome.out, "speed");
  EXPECT_NE(speed.find(" patterns per second"), std::string::npos);
  EXPECT_EQ(outcome.out,
            "d.csv: 6 patterns, 1 measurements, 2 categories\n"
            "not counted, without a category: 1\n"
            "method knn (k 1, order 2), 6 folds, seed 1\n\n"
            "true \\ decided  a  b  total  recall  precision\n"
            "a               2  1      3  66.7 %     66.7 %\n"
            "b               1  2      3  66.7 %     66.7 %\n\n"
            "accuracy            66.7 % (4 of 6)\n"
            "its 95 % interval   30.0 % to 90.3 %\n"
            "mean expected cost  0\n"
            "mean actual cost    0.3333\n"
            "log loss            12.01\n" +
                training + "\n" + speed + "\n");
}

TEST_F(CommandLineTest, RunsWhatItTrained) {
  scratch_.file("d.csv", "x,y,kind\n0,0,\"b, no. 1\"\n1,1,a\n2,2,a\n9,9,\n");
  const Outcome trained = run({"train", "d.csv", "--label", "kind", "--k", "3", "--order", "1",
                               "--cost", "b, no. 1,a=4", "-o", "m.model"});
  EXPECT_EQ(trained.err, "");
  EXPECT_EQ(trained.out,
            "m.model: knn (k 3, order 1) trained on 3 patterns of 2 measurements\n"
            "categories: a, b, no. 1\n"
            "left out, without a category: 1\n");

  scratch_.file("n.csv", "x,y\n0,0\n");
  EXPECT_EQ(run({"run", "m.model", "n.csv"}).out,
            "row,category,class_score,match_score,expected_cost\n"
            "2,\"b, no. 1\",0.3333333333333333,0.3333333333333333,0.6666666666666666\n");
  const Outcome all = run({"run", "m.model", "n.csv", "--all", "-o", "all.csv"});
  EXPECT_EQ(all.code, 0);
  EXPECT_EQ(all.out, "");
  EXPECT_EQ(contentOf(scratch_.path("all.csv")),
            "row,category,class_score,match_score,expected_cost\n"
            "2,\"b, no. 1\",0.3333333333333333,0.3333333333333333,0.6666666666666666\n"
            "2,a,0.6666666666666666,0.6666666666666666,1.3333333333333333\n");
}

TEST_F(CommandLineTest, FindsColumnsByName) {
  scratch_.file("d.csv", "x,kind,y\n0,a,5\n1,a,6\n7,b,0\n8,b,1\n");
  scratch_.file("permuted.csv", "y,x,kind\n1,8,b\n5,0,a\n0,7,b\n6,1,a\n");
  scratch_.file("n.csv", "x,y\n2,3\n6,1\n5,4\n");
  scratch_.file("more.csv", "remark,y,kind,x\r\nnone,3,,2\r\n\"two\nlines\",1,,6\r\n-,4,?,5\r\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--k", "1", "-o", "m.model"}).code, 0);
  ASSERT_EQ(run({"train", "permuted.csv", "--label", "kind", "--k", "1", "-o", "p.model"}).code, 0);
  const std::string expected = run({"run", "m.model", "n.csv"}).out;
  EXPECT_EQ(
      expected,
      "row,category,class_score,match_score,expected_cost\n2,a,1,1,0\n3,b,1,1,0\n4,b,1,1,0\n");
  EXPECT_EQ(run({"run", "p.model", "n.csv"}).out, expected);
  EXPECT_EQ(
      run({"run", "m.model", "more.csv"}).out,
      "row,category,class_score,match_score,expected_cost\n2,a,1,1,0\n3,b,1,1,0\n5,b,1,1,0\n");
}

TEST_F(CommandLineTest, ModelsDoNotDependOnTheOrderOfCategories) {
  scratch_.file("d.csv", "x,kind\n1,z\n2,a\n3,m\n");
  scratch_.file("r.csv", "x,kind\n3,m\n2,a\n1,z\n");
  scratch_.file("n.csv", "x\n2.2\n");
  for (const char* data : {"d.csv", "r.csv"}) {
    ASSERT_EQ(run({"train", data, "--label", "kind", "--k", "3", "-o", "m.model"}).code, 0);
    EXPECT_EQ(run({"run", "m.model", "n.csv"}).out.substr(51, 4), "2,a,") << data;
  }
}

TEST_F(CommandLineTest, RefusesBadInputInOneLineAndWritesNothing) {
  scratch_.file("d.csv", "x,y,kind\n0,0,a\n1,,b\n");
  scratch_.file("good.csv", "x,y,kind\n0,0,a\n1,1,b\n");
  ASSERT_EQ(run({"train", "good.csv", "--label", "kind", "-o", "good.model"}).code, 0);
  scratch_.file("bad.csv", "x,y\n1,2\n3,four\n");
  scratch_.file("missing.csv", "x,z\n1,2\n");
  scratch_.file("hole.csv", "x,y\n1,2\n3,\n");
  scratch_.file("header.csv", "x,y\n");
  scratch_.file("empty.csv", "");
  ASSERT_EQ(mkfifo(scratch_.path("pipe.out").c_str(), 0600), 0);
  expectRefusals({
      {"no command", {}, "A subcommand is required (see vxclss --help)"},
      {"unknown command", {"trein"}, "no command \"trein\" (see vxclss --help)"},
      {"no data", {"train"}, "DATA.csv is required (see vxclss train --help)"},
      {"no output",
       {"train", "good.csv", "--label", "kind"},
       "--output is required (see vxclss train --help)"},
      {"unknown option",
       {"run", "a", "b", "--some"},
       "The following argument was not expected: --some (see vxclss run --help)"},
      {"k = 0",
       {"evaluate", "good.csv", "--label", "kind", "--k", "0"},
       "--k: \"0\" is not a whole number from 1 to 2147483647 (see vxclss evaluate --help)"},
      {"order = 0",
       {"evaluate", "good.csv", "--label", "kind", "--order", "0"},
       "--order: \"0\" is not a number > 0 (see vxclss evaluate --help)"},
      {"one fold",
       {"evaluate", "good.csv", "--label", "kind", "--folds", "1"},
       "--folds: \"1\" is not a whole number from 2 to 2147483647 (see vxclss evaluate --help)"},
      {"too many folds",
       {"evaluate", "good.csv", "--label", "kind", "--folds", "3"},
       "good.csv: 2 patterns of known category are too few for 3 folds"},
      {"unknown method",
       {"train", "good.csv", "--label", "kind", "--method", "magic", "-o", "m.model"},
       "--method: no method \"magic\"; there are: knn, bayes"},
      {"negative cost",
       {"train", "good.csv", "--label", "kind", "--cost", "a,b=-1", "-o", "m.model"},
       "--cost: \"-1\" is not a number >= 0"},
      {"cost of nothing",
       {"train", "good.csv", "--label", "kind", "--cost", "a,b", "-o", "m.model"},
       "--cost: \"a,b\" is not TRUE,ASSIGNED=COST"},
      {"cost of a stranger",
       {"train", "good.csv", "--label", "kind", "--cost", "a,c=1", "-o", "m.model"},
       "--cost: \"a,c=1\" does not name two categories of the data: a, b"},
      {"cost of being right",
       {"train", "good.csv", "--label", "kind", "--cost", "a,a=1", "-o", "m.model"},
       "--cost: \"a,a=1\" names one category twice; a correct decision is free"},
      {"missing label column",
       {"train", "good.csv", "--label", "sort", "-o", "m.model"},
       "good.csv: no column \"sort\""},
      {"hole in the training data",
       {"train", "d.csv", "--label", "kind", "-o", "m.model"},
       "d.csv, row 3, column \"y\": a value is missing, and this method needs every one"},
      {"no such data",
       {"train", "none.csv", "--label", "kind", "-o", "m.model"},
       "none.csv: No such file or directory"},
      {"nowhere to write",
       {"train", "good.csv", "--label", "kind", "-o", "no/where.model"},
       "no/where.model: No such file or directory"},
      {"no such model", {"run", "none.model", "bad.csv"}, "none.model: No such file or directory"},
      {"data for a model",
       {"run", "bad.csv", "bad.csv"},
       "bad.csv: not a vxclss model file: unknown version of a part of it"},
      {"not a number",
       {"run", "good.model", "bad.csv", "-o", "o.csv"},
       "bad.csv, row 3, column \"y\": \"four\" is not a number"},
      {"missing column",
       {"run", "good.model", "missing.csv", "-o", "o.csv"},
       "missing.csv: no column \"y\""},
      {"hole",
       {"run", "good.model", "hole.csv", "-o", "o.csv"},
       "hole.csv, row 3, column \"y\": a value is missing, and this method needs every one"},
      {"header only",
       {"run", "good.model", "header.csv"},
       "header.csv: no rows after the column names"},
      {"empty",
       {"run", "good.model", "empty.csv"},
       "empty.csv: no rows, not even one of column names"},
      {"directory", {"run", "good.model", "/"}, "/: is a directory"},
      {"output onto a pipe",
       {"run", "good.model", "good.csv", "-o", "pipe.out"},
       "pipe.out: is not a regular file"},
  });
}

TEST_F(CommandLineTest, RefusesADecisionThatTheModelHasNoNameFor) {
  scratch_.file("d.csv", "x\n1\n");
  vxClassifierDataProviderMemory data;
  data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({1.0}, {})), 1);
  cli::Model model;
  model.names = {{"x"}, {"label 0"}};
  model.tool.train(data, vxClassifierTrainParamsKNN(1));
  std::ofstream stream(scratch_.path("m.model"), std::ios::binary);
  cli::writeModel(model, stream);
  stream.close();
  const Outcome outcome = run({"run", "m.model", "d.csv"});
  EXPECT_EQ(outcome.code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "vxclss: m.model: no name for category 1\n");
}

TEST_F(CommandLineTest, SaysWhenStandardOutputTakesNothing) {
  ASSERT_EQ(run({"train", kIris, "--label", "species", "-o", "m.model"}).code, 0);
  std::ostringstream out;
  std::ostringstream err;
  out.setstate(std::ios::badbit);
  const std::string model = scratch_.path("m.model");
  const char* const argv[] = {"vxclss", "run", model.c_str(), kIris.c_str()};
  EXPECT_EQ(cli::runCommandLine(4, argv, {out, err, false, false}), 2);
  EXPECT_EQ(err.str(), "vxclss: standard output: cannot be written\n");
}

TEST_F(CommandLineTest, KeepsTheOldModelWhenTheDiskIsFull) {
  ASSERT_EQ(run({"train", kIris, "--label", "species", "-o", "m.model"}).code, 0);
  const std::string before = contentOf(scratch_.path("m.model"));
  Outcome outcome;
  {
    const FileSizeLimit limit(1000);
    outcome = run({"train", kIris, "--label", "species", "--k", "7", "-o", "m.model"});
  }
  EXPECT_EQ(outcome.code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "vxclss: m.model: File too large\n");
  EXPECT_EQ(contentOf(scratch_.path("m.model")), before);
  EXPECT_EQ(scratch_.names(), Names{"m.model"});
}

TEST_F(CommandLineTest, ASignalStopsItAndLeavesNothingBehind) {
  ASSERT_EQ(run({"train", kIris, "--label", "species", "-o", "m.model"}).code, 0);
  const std::string pipe = scratch_.path("pipe.csv");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const Names before = scratch_.names();
  std::thread writer([&] {
    // The pipe opens once the command reads, so the signal finds its handler in place.
    std::ofstream stream(pipe);
    raise(SIGTERM);
    stream << contentOf(kIris) << std::flush;
  });
  const Outcome outcome = run({"run", "m.model", "pipe.csv", "-o", "o.csv"});
  writer.join();
  EXPECT_EQ(outcome.code, 130);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "vxclss: stopped\n");
  EXPECT_EQ(scratch_.names(), before);
}

TEST_F(CommandLineTest, ASecondSignalEndsItAndLeavesNothingBehind) {
  ASSERT_EQ(run({"train", kIris, "--label", "species", "-o", "m.model"}).code, 0);
  const std::string pipe = scratch_.path("pipe.csv");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const Names before = scratch_.names();
  const auto stopTwice = [&] {
    std::thread([&] {
      std::ofstream stream(pipe);
      stream << "sepal_length,sepal_width,petal_length,petal_width\n" << std::flush;
      // The temporary file is there as soon as the header was read.
      while (scratch_.names() == before) std::this_thread::yield();
      raise(SIGINT);
      raise(SIGINT);
    }).detach();
    run({"run", "m.model", "pipe.csv", "-o", "o.csv"});
  };
  EXPECT_EXIT(stopTwice(), testing::ExitedWithCode(130), "");
  EXPECT_EQ(scratch_.names(), before);
}

}  // namespace
