// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "tests/tools/command_line.h"

namespace {

const char* const kSide = R"({"x0": 0, "x1": 1, "xc": 2, "y0": 1, "y1": 0.25})";

/// A file of one rule for feature w.
std::string withScore(const std::string& score) {
  return R"({"features": ["w"], "rules": [{"category": "a", "scores": {"w": )" + score + "}}]}";
}

class RulesCommandTest : public CommandLineTest {
 protected:
  std::string decisions(const std::string& rules, const std::string& data,
                        const std::string& threshold) const {
    scratch_.file("r.json", rules);
    scratch_.file("d.csv", data);
    const Outcome outcome = run({"rules", "r.json", "d.csv", "--threshold", threshold});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

TEST_F(RulesCommandTest, TheFirstRuleAboveTheThresholdDecides) {
  // At w = 4 the first rule scores 0.75, the second 1: its two sides meet there.
  const std::string rules = R"({
    "features": ["w", "h"],
    "rules": [
      {"category": "nut, M4", "scores": {
        "w": {"one-sided": {"x0": 0, "x1": 8, "xc": 8, "y0": 1, "y1": 0.5}}}},
      {"category": "bolt", "scores": {
        "w": {"two-sided": {"low": {"x0": 4, "x1": 2, "xc": 2, "y0": 1, "y1": 0},
                            "high": {"x0": 4, "x1": 8, "xc": 8, "y0": 1, "y1": 0}}},
        "h": "ignore"}}]})";
  const std::string data = "h,kind,w\n0,,4\n\n0,,9\n0,,8\n0,,1\n";
  EXPECT_EQ(decisions(rules, data, "0.7"), "row,category\n2,\"nut, M4\"\n4,\n5,\n6,\"nut, M4\"\n");
  EXPECT_EQ(decisions(rules, data, "0.75"), "row,category\n2,bolt\n4,\n5,\n6,\"nut, M4\"\n");
  EXPECT_EQ(decisions(rules, data, "0"),
            "row,category\n2,\"nut, M4\"\n4,\n5,\"nut, M4\"\n6,\"nut, M4\"\n");
  EXPECT_EQ(decisions(rules, data, "1"), "row,category\n2,\n4,\n5,\n6,\n");
}

TEST_F(RulesCommandTest, ScoresByTheGeometricMeanOfWhatCounts) {
  // Both features score 0.25 and 1 at (1, 0); the mean is 0.5, whatever a third one holds.
  const std::string rules = std::string(R"({"features": ["a", "b", "c"], "rules": [
    {"category": "x", "scores": {"a": {"one-sided": )") +
                            kSide + R"(}, " b ": {"one-sided": )" + kSide + R"(}}},
    {"category": "y", "scores": {}}, {"category": "x", "scores": {}}]})";
  EXPECT_EQ(decisions(rules, "a,b,c\n1,0,-5\n", "0.49"), "row,category\n2,x\n");
  EXPECT_EQ(decisions(rules, "a,b,c\n1,0,-5\n", "0.5"), "row,category\n2,y\n");
}

TEST_F(RulesCommandTest, WritesAFileWholeOrNotAtAll) {
  scratch_.file("r.json", withScore("\"ignore\""));
  scratch_.file("d.csv", "w\n1\n");
  const Outcome outcome = run({"rules", "r.json", "d.csv", "--threshold", "0", "-o", "o.csv"});
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(contentOf(scratch_.path("o.csv")), "row,category\n2,a\n");
}

TEST_F(RulesCommandTest, NamesThePlaceOfWhatItRefuses) {
  scratch_.file("d.csv", "w\n1\n");
  const std::string place = "/rules/0/scores/w";
  const std::string side = kSide;
  const struct {
    const char* name;
    std::string content;
    std::string refusal;
  } table[] = {
      {"no features", R"({"rules": []})", "no \"features\""},
      {"no rules", R"({"features": ["w"]})", "no \"rules\""},
      {"empty rules", R"({"features": ["w"], "rules": []})", "/rules: an empty list"},
      {"unknown part", R"({"features": ["w"], "rule": []})",
       "unknown key \"rule\"; there are: features, rules"},
      {"no category", R"({"features": ["w"], "rules": [{"scores": {}}]})",
       "/rules/0: no \"category\""},
      {"no scores", R"({"features": ["w"], "rules": [{"category": "a"}]})",
       "/rules/0: no \"scores\""},
      {"strange feature",
       R"({"features": ["w"], "rules": [{"category": "a", "scores": {"h": "ignore"}}]})",
       "/rules/0/scores: no feature \"h\"; there are: w"},
      {"feature twice",
       R"({"features": ["w"], "rules": [{"category": "a", "scores": {"w": "ignore",
                                                                     " w": "ignore"}}]})",
       "/rules/0/scores: \"w\" a second time"},
      {"strange word", withScore("\"none\""),
       place + ": \"none\" is no score; there are: ignore, one-sided, two-sided"},
      {"strange score", withScore("{\"ramp\": 1}"),
       place + ": unknown key \"ramp\"; there are: one-sided, two-sided"},
      {"no score", withScore("{}"), place + ": not one of one-sided, two-sided"},
      {"number missing", withScore(R"({"one-sided": {"x0": 1, "x1": 2, "y0": 1, "y1": 1}})"),
       place + "/one-sided: no \"xc\""},
      {"number too many",
       withScore(R"({"one-sided": {"x0": 0, "x1": 1, "xc": 2, "y0": 1, "y1": 0, "y2": 0}})"),
       place + "/one-sided: unknown key \"y2\"; there are: x0, x1, xc, y0, y1"},
      {"score above 1",
       withScore(R"({"one-sided": {"x0": 0, "x1": 1, "xc": 2, "y0": 1.5, "y1": 0}})"),
       place + "/one-sided: y0 must be between 0 and 1"},
      {"x out of order",
       withScore(R"({"one-sided": {"x0": 0, "x1": 3, "xc": 2, "y0": 1, "y1": 0}})"),
       place + "/one-sided: x1 must be lie between x0 and xc"},
      {"one side", withScore(R"({"two-sided": {"low": )" + side + "}}"),
       place + "/two-sided: no \"high\""},
      {"bad high side",
       withScore(R"({"two-sided": {"low": )" + side +
                 R"(, "high": {"x0": 3, "x1": 4, "xc": 5, "y0": 1, "y1": 2}}})"),
       place + "/two-sided/high: y1 must be between 0 and 1"},
      {"sides that overlap",
       withScore(R"({"two-sided": {"low": )" + side + ", \"high\": " + side + "}}"),
       place + "/two-sided: x0 > lowest || x1 > lowest || xc > lowest"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.name);
    scratch_.file("r.json", row.content);
    const Outcome outcome = run({"rules", "r.json", "d.csv", "--threshold", "0.5"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "vxclss: r.json: " + row.refusal + "\n");
  }
}

TEST_F(RulesCommandTest, RefusesBadInputInOneLine) {
  scratch_.file("r.json", withScore("\"ignore\""));
  scratch_.file("d.csv", "w\n1\n");
  scratch_.file("other.csv", "h\n1\n");
  scratch_.file("hole.csv", "w,h\n1,1\n,1\n");
  const auto with = [](const std::string& data, const std::string& threshold) {
    return Names{"rules", "r.json", data, "--threshold", threshold, "-o", "o.csv"};
  };
  expectRefusals({
      {"no threshold",
       {"rules", "r.json", "d.csv"},
       "--threshold is required (see vxclss rules --help)"},
      {"threshold above 1", with("d.csv", "1.5"),
       "--threshold: \"1.5\" is not a number from 0 to 1 (see vxclss rules --help)"},
      {"threshold in letters", with("d.csv", "nan"),
       "--threshold: \"nan\" is not a number from 0 to 1 (see vxclss rules --help)"},
      {"no such column", with("other.csv", "0"), "other.csv: no column \"w\""},
      {"hole", with("hole.csv", "0"),
       "hole.csv, row 3, column \"w\": a value is missing, and this method needs every one"},
  });
}

}  // namespace
