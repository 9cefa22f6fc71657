// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "tests/tools/command_line.h"
#include "tools/model_file.h"

namespace {

using BayesCommandTest = CommandLineTest;

const char* const kHeader = "row,category,class_score,match_score,expected_cost\n";

/// Categories a and b with means 1 and 5 and equal spreads, so that 3 is as far from either.
const char* const kPairs = "x,kind\n0,a\n2,a\n4,b\n6,b\n";

const vxClassifierTrainParamsBayesian& paramsOf(const cli::Model& model) {
  return vfCheckedCast<vxClassifierTrainParamsBayesian>(*model.tool.trainParams());
}

TEST_F(BayesCommandTest, EvaluatesIrisAsTextbooksDo) {
  const Outcome naive =
      run({"evaluate", kIris, "--label", "species", "--method", "bayes", "--folds", "10"});
  EXPECT_EQ(naive.err, "");
  EXPECT_EQ(lineOf(naive.out, "method"), "method bayes (normal, independent), 10 folds, seed 1");
  EXPECT_EQ(lineOf(naive.out, "accuracy"), "accuracy            96.0 % (144 of 150)");

  const std::string all = "sepal_length,sepal_width,petal_length,petal_width";
  const Outcome full =
      run({"evaluate", kIris, "--label", "species", "--method", "bayes", "--dependent", all});
  EXPECT_EQ(lineOf(full.out, "method"), "method bayes (dependent " + all + "), 10 folds, seed 1");
  EXPECT_EQ(lineOf(full.out, "accuracy"), "accuracy            96.7 % (145 of 150)");
}

TEST_F(BayesCommandTest, WeightsByFrequenciesAndCosts) {
  scratch_.file("d.csv", kPairs);
  scratch_.file("n.csv", "x\n3\n");
  const auto decisions = [&](Names options) {
    Names arguments{"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "m.model"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(run(arguments).err, "");
    return run({"run", "m.model", "n.csv", "--all"}).out;
  };
  EXPECT_EQ(decisions({}), kHeader + std::string("2,a,0.5,1,0.5\n2,b,0.5,1,0.5\n"));
  EXPECT_EQ(decisions({"--frequency", "b=3"}),
            kHeader + std::string("2,b,0.75,1,0.25\n2,a,0.25,1,0.75\n"));
  EXPECT_EQ(decisions({"--frequency", "b=3", "--cost", "a,b=8"}),
            kHeader + std::string("2,a,0.25,1,0.75\n2,b,0.75,1,2\n"));
  EXPECT_EQ(decisions({"--default-cost", "4", "--cost", "a,b=8"}),
            kHeader + std::string("2,a,0.5,1,2\n2,b,0.5,1,4\n"));
}

TEST_F(BayesCommandTest, TakesMeasurementsThatCouldNotBeTaken) {
  scratch_.file("d.csv", "x,y,kind\n0,,a\n2,1,a\n,2,a\n4,5,b\n6,6,b\n");
  scratch_.file("n.csv", "x,y\n,\n3,\n");
  const Outcome trained =
      run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "m.model"});
  EXPECT_EQ(trained.out,
            "m.model: bayes (normal, independent) trained on 5 patterns of 2 measurements\n"
            "categories: a, b\n");
  EXPECT_EQ(run({"run", "m.model", "n.csv"}).out, kHeader + std::string("2,a,0.5,1,0.5\n"
                                                                        "3,a,0.5,1,0.5\n"));
}

TEST_F(BayesCommandTest, ReadsNamesThatHoldTheirSeparators) {
  scratch_.file("d.csv",
                "\"w,h\",h,v,\"p:w\",kind\n"
                "0,1,2,5,p\n1,3,2,4,p\n2,2,3,6,p\n5,1,1,0,\"q=1,r\"\n6,4,5,1,\"q=1,r\"\n");
  Names arguments{"train",
                  "d.csv",
                  "--label",
                  "kind",
                  "--method",
                  "bayes",
                  "-o",
                  "m.model",
                  "--dependent",
                  "p: w,h , h",
                  "--distribution",
                  "q=1,r:p:w=binomial",
                  "--maximum",
                  "p:w = 10",
                  "--frequency",
                  "q=1,r=2.5",
                  "--cost",
                  "p,q=1,r= 0.5",
                  "--distribution",
                  "p:p:w=normal"};
  const Outcome outcome = run(arguments);
  ASSERT_EQ(outcome.err, "");
  const cli::Model model = cli::readModel(scratch_.path("m.model"));
  const vxClassifierTrainParamsBayesian& params = paramsOf(model);
  EXPECT_EQ(model.names.measurements, (Names{"w,h", "h", "v", "p:w"}));
  const vxClassifierDistributionTypes& types = params.distributionTypes();
  EXPECT_TRUE(types.isDependent(0, {0, 1}));
  EXPECT_FALSE(types.isDependent(0, {2}));
  EXPECT_FALSE(types.isDependent(1, {0}));
  EXPECT_EQ(types.distributionType(0, 3), vxClassifierDistributionTypes::eNormal);
  EXPECT_EQ(types.distributionType(1, 3), vxClassifierDistributionTypes::eBinomial);
  EXPECT_EQ(params.maxMeasurementValues(), vxFeaturePattern({0, 0, 0, 10}, {0, 1, 2}));
  EXPECT_EQ(params.categoryFrequencies().categoryFrequency(1), 2.5);
  EXPECT_EQ(params.misclassificationCosts().misclassificationCost(0, 1), 0.5);
  EXPECT_EQ(params.misclassificationCosts().misclassificationCost(1, 0), 1.0);
}

TEST_F(BayesCommandTest, ADistributionOfOneCategoryGoesBeforeThatOfAll) {
  scratch_.file("d.csv", "x,y,kind\n0,1,a\n1,2,a\n4,3,b\n6,3.5,b\n");
  ASSERT_EQ(
      run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "m.model",
           "--distribution", "b:x=normal", "--distribution", "x=binomial", "--maximum", "x=1"})
          .err,
      "");
  const auto types = paramsOf(cli::readModel(scratch_.path("m.model"))).distributionTypes();
  EXPECT_EQ(types.distributionType(0, 0), vxClassifierDistributionTypes::eBinomial);
  EXPECT_EQ(types.distributionType(1, 0), vxClassifierDistributionTypes::eNormal);
  EXPECT_EQ(types.distributionType(0, 1), vxClassifierDistributionTypes::eNormal);
}

TEST_F(BayesCommandTest, RefusesBadOptionsInOneLine) {
  scratch_.file("d.csv", "x,y,kind\n0,1,a\n2,3,a\n4,1,b\n6,5,b\n");
  scratch_.file("few.csv", "x,kind\n0,a\n2,a\n4,\"b 2\"\n");
  scratch_.file("twice.csv", "\"x,y\",x,y,kind\n0,1,2,a\n");
  const auto with = [](const std::string& data, Names options) {
    Names arguments{"train", data, "--label", "kind", "--method", "bayes", "-o", "m.model"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
  };
  const std::string names = "; columns: x, y; categories: a, b";
  expectRefusals({
      {"distribution of nothing", with("d.csv", {"--distribution", "x"}),
       "--distribution: \"x\" is not [CATEGORY:]COLUMN=normal|binomial"},
      {"unknown distribution", with("d.csv", {"--distribution", "x=poisson"}),
       "--distribution: \"poisson\" is no distribution; there are: normal, binomial"},
      {"distribution of a stranger", with("d.csv", {"--distribution", "z=normal"}),
       "--distribution: \"z=normal\" does not name [CATEGORY:]COLUMN of the data" + names},
      {"distribution in a strange category", with("d.csv", {"--distribution", "c:x=normal"}),
       "--distribution: \"c:x=normal\" does not name [CATEGORY:]COLUMN of the data" + names},
      {"dependent stranger", with("d.csv", {"--dependent", "x,z"}),
       "--dependent: \"x,z\" does not name [CATEGORY:]COLUMN,COLUMN,... of the data" + names},
      {"dependent alone", with("d.csv", {"--dependent", "b:x,x"}),
       "--dependent: \"b:x,x\" names fewer than two columns"},
      {"two readings", with("twice.csv", {"--dependent", "x,y,x"}),
       "--dependent: \"x,y,x\" can be read in more than one way"},
      {"dependent of two types",
       with("d.csv", {"--dependent", "x,y", "--distribution", "b:x=binomial"}),
       "--dependent: \"x,y\": The distribution types of dependent feature measurements must be the "
       "same."},
      {"maximum of nothing", with("d.csv", {"--maximum", "x"}),
       "--maximum: \"x\" is not COLUMN=VALUE"},
      {"maximum 0", with("d.csv", {"--maximum", "x=0"}), "--maximum: \"0\" is not a number > 0"},
      {"maximum of a stranger", with("d.csv", {"--maximum", "z=1"}),
       "--maximum: \"z=1\" does not name a column of the data: x, y"},
      {"maximum of a normal column", with("d.csv", {"--maximum", "x=1"}),
       "--maximum: \"x=1\" names a column that is binomial in no category"},
      {"frequency 0", with("d.csv", {"--frequency", "a=0"}),
       "--frequency: \"0\" is not a number > 0"},
      {"frequency of nothing", with("d.csv", {"--frequency", "a"}),
       "--frequency: \"a\" is not CATEGORY=VALUE"},
      {"frequency of a stranger", with("d.csv", {"--frequency", "c=1"}),
       "--frequency: \"c=1\" does not name a category of the data: a, b"},
      {"option of neighbours", with("d.csv", {"--k", "3"}),
       "--k: an option of --method knn, not of bayes"},
      {"option of bayes",
       {"evaluate", "d.csv", "--label", "kind", "--frequency", "a=1"},
       "--frequency: an option of --method bayes, not of knn"},
      {"a tree",
       {"train", "d.csv", "--label", "kind", "--method", "tree", "-o", "m.model"},
       "--method: a tree is not learnt from data; make one with vxclss tree"},
      {"one pattern of a category", with("few.csv", {}),
       "few.csv: No valid data has been used to train the distribution for category \"b 2\""},
      {"one pattern of a category in a fold",
       {"evaluate", "few.csv", "--label", "kind", "--method", "bayes", "--folds", "3"},
       "few.csv: No valid data has been used to train the distribution for category \"a\""},
      {"value above its maximum",
       with("d.csv", {"--distribution", "y=binomial", "--maximum", "y=4"}),
       "d.csv: Train data measurement cannot exceed its maximum value when using binomial "
       "distribution"},
      {"dependent binomials",
       with("d.csv",
            {"--distribution", "x=binomial", "--distribution", "y=binomial", "--dependent", "x,y"}),
       "d.csv: Multivariate Binomial Distributions are not implemented"},
  });
}

TEST_F(BayesCommandTest, NamesTheRowThatABinomialColumnCanNotHold) {
  scratch_.file("d.csv", "x,kind\n1,a\n2,a\n3,b\n5,b\n");
  scratch_.file("n.csv", "x\n1\n7\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "m.model",
                 "--distribution", "x=binomial", "--maximum", "x=6"})
                .err,
            "");
  EXPECT_EQ(run({"run", "m.model", "n.csv"}).err,
            "vxclss: n.csv, row 3: Feature measurement must be <= specified maximum value\n");
}

TEST_F(BayesCommandTest, RetrainsInPlaceFromWhatTheModelHolds) {
  scratch_.file("d.csv", kPairs);
  scratch_.file("n.csv", "x\n3\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "m.model",
                 "--frequency", "b=3"})
                .code,
            0);
  const Outcome other =
      run({"retrain", "m.model", "--cost", "a,b=8", "--default-cost", "2", "-o", "o.model"});
  EXPECT_EQ(other.err, "");
  EXPECT_EQ(other.out, "o.model: retrained\n");
  EXPECT_EQ(run({"run", "o.model", "n.csv", "--all"}).out,
            kHeader + std::string("2,a,0.25,1,1.5\n2,b,0.75,1,2\n"));
  EXPECT_EQ(run({"run", "m.model", "n.csv"}).out, kHeader + std::string("2,b,0.75,1,0.25\n"));

  EXPECT_EQ(run({"retrain", "m.model", "--frequency", "a=9"}).out, "m.model: retrained\n");
  EXPECT_EQ(run({"run", "m.model", "n.csv"}).out, kHeader + std::string("2,a,0.75,1,0.25\n"));

  // The same as training with it all at once.
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "t.model",
                 "--frequency", "b=3", "--frequency", "a=9"})
                .code,
            0);
  EXPECT_EQ(contentOf(scratch_.path("m.model")), contentOf(scratch_.path("t.model")));
}

TEST_F(BayesCommandTest, RetrainsTheCostsOfNearestNeighbours) {
  scratch_.file("d.csv", "x,kind\n0,a\n1,a\n2,b\n");
  scratch_.file("n.csv", "x\n1\n");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "--k", "3", "-o", "m.model"}).code, 0);
  EXPECT_EQ(run({"retrain", "m.model", "--cost", "b,a=6"}).err, "");
  EXPECT_EQ(
      run({"run", "m.model", "n.csv"}).out,
      kHeader + std::string("2,b,0.3333333333333333,0.3333333333333333,0.6666666666666666\n"));
}

TEST_F(BayesCommandTest, RefusesToRetrainInOneLineAndLeavesTheModel) {
  scratch_.file("d.csv", "x,kind\n0,a\n1,a\n2,b\n4,b\n");
  scratch_.file("t.json", R"({"measurements": ["x"], "categories": ["a"], "tree": "a"})");
  ASSERT_EQ(run({"train", "d.csv", "--label", "kind", "-o", "knn.model"}).code, 0);
  ASSERT_EQ(
      run({"train", "d.csv", "--label", "kind", "--method", "bayes", "-o", "bayes.model"}).code, 0);
  const std::string before = contentOf(scratch_.path("bayes.model"));
  expectRefusals({
      {"nothing",
       {"retrain", "bayes.model"},
       "nothing to change; give --frequency, --cost or --default-cost"},
      {"nothing but a name",
       {"retrain", "bayes.model", "-o", "o.model"},
       "nothing to change; give --frequency, --cost or --default-cost"},
      {"no such model",
       {"retrain", "none.model", "--frequency", "a=1"},
       "none.model: No such file or directory"},
      {"a stranger",
       {"retrain", "bayes.model", "--frequency", "c=1"},
       "--frequency: \"c=1\" does not name a category of the model: a, b"},
      {"cost of a stranger",
       {"retrain", "bayes.model", "--frequency", "a=1", "--cost", "a,c=1"},
       "--cost: \"a,c=1\" does not name two categories of the model: a, b"},
      {"bad cost",
       {"retrain", "bayes.model", "--default-cost", "-1"},
       "--default-cost: \"-1\" is not a number >= 0 (see vxclss retrain --help)"},
      {"frequency for neighbours",
       {"retrain", "knn.model", "--frequency", "a=1"},
       "knn.model: nearest neighbours know no --frequency; give costs alone"},
      {"nowhere to write",
       {"retrain", "bayes.model", "--frequency", "a=2", "-o", "no/where.model"},
       "no/where.model: No such file or directory"},
  });
  EXPECT_EQ(contentOf(scratch_.path("bayes.model")), before);
}

}  // namespace
