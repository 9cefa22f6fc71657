// SPDX-License-Identifier: MIT
#include "tools/table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/scratch.h"

namespace {

using cli::Dataset;
using Texts = std::vector<std::string>;
using Labels = std::vector<long>;

class TableTest : public testing::Test {
 protected:
  Dataset read(const std::string& text, bool allowInvalid = true, const Texts& ignored = {}) const {
    return cli::readDataset(scratch_.file("d.csv", text), {"kind", ignored}, allowInvalid,
                            [](const cli::Table&) {});
  }
  std::string refused(const std::string& text, bool allowInvalid = true,
                      const Texts& ignored = {}) const {
    return scratch_.withoutPath(refusal([&] { read(text, allowInvalid, ignored); }));
  }

  Scratch scratch_;
};

TEST_F(TableTest, MakesPatternsOfNamedColumns) {
  const Dataset data = read("b , kind,a\n1, x ,+2\n\n 3e1 ,y,\t-4\n");
  EXPECT_EQ(data.names.measurements, (Texts{"b", "a"}));
  EXPECT_EQ(data.names.categories, (Texts{"x", "y"}));
  EXPECT_EQ(data.labels, (Labels{0, 1}));
  EXPECT_EQ(data.rows, (Labels{2, 4}));
  EXPECT_EQ(*data.patterns[0], vxFeaturePattern({1.0, 2.0}, {}));
  EXPECT_EQ(*data.patterns[1], vxFeaturePattern({30.0, -4.0}, {}));
}

TEST_F(TableTest, NumbersCategoriesByTheirNamesWhateverTheRows) {
  EXPECT_EQ(read("a,kind\n1,z\n2,\xC3\xA4\n3,B\n4,a\n5,z\n").labels, (Labels{2, 3, 0, 1, 2}));
  EXPECT_EQ(read("a,kind\n5,z\n4,a\n3,B\n2,\xC3\xA4\n1,z\n").labels, (Labels{2, 1, 0, 3, 2}));
}

TEST_F(TableTest, TakesEmptyCellsAndNanForInvalidMeasurements) {
  const Dataset data = read("a,b,c,d,kind\n,nan, NaN ,4,x\n");
  EXPECT_EQ(*data.patterns[0], vxFeaturePattern({0.0, 0.0, 0.0, 4.0}, {0, 1, 2}));
}

TEST_F(TableTest, TakesAnEmptyLabelForUnknown) {
  const Dataset data = read("a,kind\n1,\n2,x\n3, \n4,\"\"\n", false);
  EXPECT_EQ(data.labels, (Labels{-1, 0, -1, -1}));
  EXPECT_EQ(data.numLabelled(), 1);
}

TEST_F(TableTest, LetsAPatternOfUnknownCategoryMissMeasurements) {
  EXPECT_EQ(*read("a,kind\n,\n2,x\n", false).patterns[0], vxFeaturePattern({0.0}, {0}));
  EXPECT_EQ(refused("a,kind\n,\n2,x\n,y\n", false),
            "d.csv, row 4, column \"a\": a value is missing, and this method needs every one");
}

TEST_F(TableTest, IgnoresNamedColumns) {
  const Dataset data = read(",id,a,kind\n7,seven,1,x\n", false, {"id", ""});
  EXPECT_EQ(data.names.measurements, (Texts{"a"}));
}

TEST_F(TableTest, NamesFileRowAndColumnOfBadInput) {
  const struct {
    const char* name;
    std::string text;
    Texts ignored;
    const char* refusal;
  } table[] = {
      {"empty file", "", {}, "d.csv: no rows, not even one of column names"},
      {"blank lines only", "\n\n", {}, "d.csv: no rows, not even one of column names"},
      {"header only", "a,kind\n", {}, "d.csv: no rows after the column names"},
      {"no label column", "a,b\n1,2\n", {}, "d.csv: no column \"kind\""},
      {"no ignored column", "a,kind\n1,x\n", {"id"}, "d.csv: no column \"id\""},
      {"label ignored",
       "a,kind\n1,x\n",
       {"kind"},
       "d.csv, row 1, column \"kind\": is the label and can't be ignored"},
      {"same name twice", "a,kind, a\n1,x,2\n", {}, "d.csv, row 1: two columns named \"a\""},
      {"no name",
       "a,kind,\n1,x,2\n",
       {},
       "d.csv, row 1: cell 3 names no column; --ignore \"\" leaves it out"},
      {"no measurement", "kind\nx\n", {}, "d.csv, row 1: no measurement column beside \"kind\""},
      {"all ignored",
       "a,kind\n1,x\n",
       {"a"},
       "d.csv, row 1: no measurement column beside \"kind\""},
      {"short row",
       "a,kind\n1,x\n2\n",
       {},
       "d.csv, row 3, column \"kind\": no cell; the row has 1 of 2"},
      {"long row", "a,kind\n1,x,3\n", {}, "d.csv, row 2: 3 cells for 2 columns"},
      {"a word",
       "a,b,kind\n1,2,x\n\n1,two,x\n",
       {},
       "d.csv, row 4, column \"b\": \"two\" is not a number"},
      {"a decimal comma",
       "a,kind\n\"1,5\",x\n",
       {},
       "d.csv, row 2, column \"a\": \"1,5\" is not a number"},
      {"too large",
       "a,kind\n1e999,x\n",
       {},
       "d.csv, row 2, column \"a\": \"1e999\" is not a number"},
      {"infinite",
       "a,kind\n-inf,x\n",
       {},
       "d.csv, row 2, column \"a\": \"-inf\" is not a finite number"},
      {"a word without a category",
       "a,kind\n1,x\ntwo,\n",
       {},
       "d.csv, row 3, column \"a\": \"two\" is not a number"},
      {"a name of two lines",
       "\"a\nb\",kind\nc,x\n",
       {},
       "d.csv, row 3, column \"a\\x0ab\": \"c\" is not a number"},
      {"column name not UTF-8",
       "a\xFF,kind\n1,x\n",
       {},
       "d.csv, row 1: cell 1: \"a\\xff\" is not UTF-8 text"},
      {"category not UTF-8",
       "a,kind\n1,x\n1,\xE4\n",
       {},
       "d.csv, row 3, column \"kind\": \"\\xe4\" is not UTF-8 text"},
      {"every label empty",
       "a,kind\n1,\n2,\n",
       {},
       "d.csv: no row has a category in column \"kind\""},
      {"quote", "a,kind\n1,\"x\n", {}, "d.csv, row 2: cell 2: a quote that is never closed"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(refused(row.text, true, row.ignored), row.refusal);
  }
}

TEST_F(TableTest, NamesTheFileThatCantBeRead) {
  const auto open = [&](const std::string& name) {
    return scratch_.withoutPath(refusal([&] { cli::Table table(scratch_.path(name)); }));
  };
  EXPECT_EQ(open("none.csv"), "none.csv: No such file or directory");
  EXPECT_EQ(open("."), ".: is a directory");
}

}  // namespace
