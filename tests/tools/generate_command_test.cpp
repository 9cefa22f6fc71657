// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <vxfoundation/random.h>

#include <sstream>
#include <string>

#include "tests/tools/command_line.h"
#include "tools/table.h"

namespace {

using GenerateCommandTest = CommandLineTest;

TEST_F(GenerateCommandTest, WritesEveryPatternOfEveryCategory) {
  const Outcome outcome =
      run({"generate", "--category", "a:b: 10,1 ; -5, 0.5", "--category", "c, \"d\":0,0;1e3,2",
           "--patterns", "4", "--columns", "width, h\xC3\xB6he", "-o", "d.csv"});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, "d.csv: 4 patterns of each of 2 categories, 2 measurements\n");

  std::istringstream header(contentOf(scratch_.path("d.csv")));
  std::string line;
  std::getline(header, line);
  EXPECT_EQ(line, "width,h\xC3\xB6he,category");

  const cli::Dataset data =
      cli::readDataset(scratch_.path("d.csv"), {"category", {}}, false, [](const cli::Table&) {});
  EXPECT_EQ(data.names.categories, (Names{"a:b", "c, \"d\""}));
  EXPECT_EQ(data.labels, (std::vector<long>{0, 0, 0, 0, 1, 1, 1, 1}));
  vxRandomGaussian first(1);
  vxRandomGaussian second(1);
  for (std::size_t i = 0; i < 4; ++i) {
    const double x = first.next(10.0, 1.0);
    const double y = first.next(-5.0, 0.5);
    EXPECT_EQ(*data.patterns[i], vxFeaturePattern({x, y}, {})) << i;
    const double flat = second.next(0.0, 0.0);
    const double steep = second.next(1000.0, 2.0);
    EXPECT_EQ(*data.patterns[4 + i], vxFeaturePattern({flat, steep}, {})) << i;
  }
}

TEST_F(GenerateCommandTest, NamesColumnsByThemselves) {
  ASSERT_EQ(run({"generate", "--category", "a:7,0;8,0;9,0", "--patterns", "1", "-o", "d.csv"}).err,
            "");
  EXPECT_EQ(contentOf(scratch_.path("d.csv")), "x1,x2,x3,category\n7,8,9,a\n");
}

TEST_F(GenerateCommandTest, MakesDataThatTheOtherCommandsRead) {
  ASSERT_EQ(run({"generate", "--category", "a:0,1;0,1", "--category", "b:9,1;9,1", "--patterns",
                 "20", "-o", "d.csv"})
                .err,
            "");
  const Outcome outcome = run({"evaluate", "d.csv", "--label", "category", "--method", "bayes"});
  EXPECT_EQ(lineOf(outcome.out, "accuracy"), "accuracy            100.0 % (40 of 40)");
}

TEST_F(GenerateCommandTest, RefusesBadInputInOneLineAndWritesNothing) {
  const auto with = [](const std::string& category, Names options) {
    Names arguments{"generate",   "--category", "a:0,1;0,1", "--category", category,
                    "--patterns", "2",          "-o",        "d.csv"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
  };
  expectRefusals({
      {"no category",
       {"generate", "--patterns", "2", "-o", "d.csv"},
       "--category is required (see vxclss generate --help)"},
      {"no patterns",
       {"generate", "--category", "a:0,1", "--patterns", "0", "-o", "d.csv"},
       "--patterns: \"0\" is not a whole number from 1 to 2147483647 (see vxclss generate --help)"},
      {"no name", with("0,1;0,1", {}), "--category: \"0,1;0,1\" is not NAME:MEAN,SD;MEAN,SD..."},
      {"empty name", with(" :0,1;0,1", {}), "--category: \" :0,1;0,1\" has no name"},
      {"no distribution", with("b:", {}), "--category: \"b:\" has \"\" in place of MEAN,SD"},
      {"three numbers", with("b:0,1,2;0,1", {}),
       "--category: \"b:0,1,2;0,1\" has \"0,1,2\" in place of MEAN,SD"},
      {"end", with("b:0,1;0,1;", {}), "--category: \"b:0,1;0,1;\" has \"\" in place of MEAN,SD"},
      {"mean in letters", with("b:x,1;0,1", {}),
       "--category: \"b:x,1;0,1\" has a mean \"x\" that is not a number"},
      {"endless mean", with("b:inf,1;0,1", {}),
       "--category: \"b:inf,1;0,1\" has a mean \"inf\" that is not a number"},
      {"negative deviation", with("b:0,-1;0,1", {}),
       "--category: \"b:0,-1;0,1\" has a deviation \"-1\" that is not a number >= 0"},
      {"fewer measurements", with("b:0,1", {}),
       "--category: \"b:0,1\" has 1 measurements; the first category has 2"},
      {"category twice", with("a :5,1;5,1", {}),
       "--category: \"a :5,1;5,1\" names a category that there is already"},
      {"values too large", with("b:1e308,1e308;0,1", {}),
       "--category: the values of \"b\" are too large for a double"},
      {"fewer columns", with("b:0,1;0,1", {"--columns", "x"}),
       "--columns: 1 names for 2 measurements"},
      {"column twice", with("b:0,1;0,1", {"--columns", "x, x"}),
       "--columns: two columns named \"x\""},
      {"column like the label", with("b:0,1;0,1", {"--columns", "x,category"}),
       "--columns: two columns named \"category\""},
      {"column without a name", with("b:0,1;0,1", {"--columns", "x,"}),
       "--columns: \"\" is no name"},
  });
}

}  // namespace
