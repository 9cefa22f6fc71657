// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <vxclss/version.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/command_line.h"
#include "tools/json_text.h"
#include "tools/model_check.h"

namespace {

using cli::FileState;
using cli::ModelCheck;

std::string bytesOf(double value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

/// `text` with `to` where `from` stands first.
std::string changed(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos);
  return text.replace(at, from.size(), to);
}

class CheckCommandTest : public CommandLineTest {
 protected:
  CheckCommandTest() {
    scratch_.file("d.csv", "x,y,n,kind\n0,0,2,a\n2,4,4,a\n4,8,6,a\n1,5,2,b\n2,7,4,b\n1.5,5,6,b\n");
    scratch_.file("t.json", R"({"measurements": ["x", "y"], "categories": ["a", "b"], "tree":
        {"if": {"compare": ["x", ">", "y"]}, "true": "a", "false":
         {"if": {"range": {"of": ["x"], "to": 1}}, "true": "a", "false": "b"}}})");
    const Names train{"train", "d.csv", "--label", "kind", "--cost", "a,b=7"};
    make_(train, {"--k", "3", "--order", "1.5", "-o", "knn.model"});
    make_(train, {"--method", "bayes", "--distribution", "n=binomial", "--maximum", "n=10",
                  "--dependent", "x,y", "--frequency", "a=0.375", "-o", "bayes.model"});
    make_({"tree", "t.json", "-o", "tree.model"}, {});
  }

  std::string bytes_(const std::string& name) const { return contentOf(scratch_.path(name)); }

  /// The bytes of a model that a host stored.
  static std::string stored(cli::Model& model) {
    std::ostringstream stream;
    cli::writeModel(model, stream);
    return stream.str();
  }

 private:
  void make_(Names arguments, const Names& more) const {
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(run(arguments).err, "");
  }
};

TEST_F(CheckCommandTest, FindsEveryModelOfTheCommandsSound) {
  for (const std::string method : {"knn", "bayes", "tree"}) {
    const std::string name = method + ".model";
    const Outcome outcome = run({"check", name});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out.substr(0, name.size() + 8), name + ": sound\n") << outcome.out;
  }
  ASSERT_EQ(run({"retrain", "bayes.model", "--frequency", "b=2"}).err, "");
  EXPECT_EQ(run({"check", "bayes.model"}).code, 0);
  ASSERT_EQ(run({"retrain", "knn.model", "--cost", "b,a=0"}).err, "");
  EXPECT_EQ(run({"check", "knn.model"}).code, 0);
}

TEST_F(CheckCommandTest, TellsWhatAModelIs) {
  const std::size_t size = bytes_("knn.model").size();
  EXPECT_EQ(run({"check", "knn.model"}).out,
            "knn.model: sound\n"
            "  knn model of 3 measurements and 2 categories\n"
            "  model file of version 0, which vxclss " VXCLSS_VERSION " writes; " +
                std::to_string(size) + " bytes\n");
  cli::Json json = cli::Json::parse(run({"check", "tree.model", "--json"}).out);
  EXPECT_EQ(scratch_.withoutPath(json["file"]), "tree.model");
  EXPECT_EQ(json["bytes"], bytes_("tree.model").size());
  json.erase("file");
  json.erase("bytes");
  EXPECT_EQ(json, cli::Json::parse(R"({"state": "sound", "faults": [], "version": 0,
      "method": "tree", "measurements": 2, "categories": 2})"));
}

TEST_F(CheckCommandTest, TellsDamageFromOtherFilesAndNewerVersions) {
  const std::string model = bytes_("bayes.model");
  scratch_.file("empty.model", "");
  scratch_.file("cut.model", model.substr(0, model.size() / 2));
  scratch_.file("long.model", model + "x");
  scratch_.file("newer.model", changed(model, std::string("l\0\0\0\0", 5),  // the tag's end
                                       std::string("l\0\0\0\7", 5)));
  scratch_.file("part.model", "\1" + model.substr(1));
  scratch_.file("class.model", changed(model, "vx_ClassifierBayesian", "vx_ClassifierBayesiaX"));
  struct Row {
    const char* file;
    int code;
    const char* state;
    const char* fault;
  };
  const std::vector<Row> rows{
      {"empty.model", 4, "not a model", "it is empty"},
      {"d.csv", 4, "not a model", "it does not begin as one"},
      {"t.json", 4, "not a model", "it does not begin as one"},
      {"cut.model", 3, "damaged", "The archive ends too early"},
      {"long.model", 3, "damaged", "bytes after its end"},
      {"newer.model", 5, "newer version", "a model file of version 7; only version 0 is known"},
      {"part.model", 5, "newer version", "unknown version of a part of it"},
      {"class.model", 5, "newer version", "its classifier is a \"vx_ClassifierBayesiaX\", which"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.file);
    const Outcome outcome = run({"check", row.file});
    EXPECT_EQ(outcome.code, row.code);
    EXPECT_EQ(outcome.err, "");
    const std::string expected = std::string(row.file) + ": " + row.state + ": " + row.fault;
    EXPECT_EQ(outcome.out.substr(0, expected.size()), expected);
    const Outcome told = run({"check", row.file, "--json"});
    EXPECT_EQ(told.code, row.code);
    const cli::Json json = cli::Json::parse(told.out);
    EXPECT_EQ(json["state"], row.state);
    EXPECT_EQ(json["faults"].size(), 1u);
    EXPECT_FALSE(json.contains("method"));
  }
}

TEST_F(CheckCommandTest, RefusesWhatItCannotRead) {
  expectRefusals({
      {"no model", {"check"}, "MODEL is required (see vxclss check --help)"},
      {"no such file", {"check", "none.model"}, "none.model: No such file or directory"},
      {"directory", {"check", "/"}, "/: is a directory"},
  });
}

TEST_F(CheckCommandTest, FindsNoPartOfAModelSound) {
  for (const char* name : {"knn.model", "bayes.model", "tree.model"}) {
    const std::string bytes = bytes_(name);
    int numNotModels = 0;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      const ModelCheck check = cli::checkModel(bytes.substr(0, size));
      ASSERT_FALSE(check.faults.empty()) << name << ' ' << size;
      if (check.state == FileState::kNotAModel) {
        ++numNotModels;
      } else {
        ASSERT_EQ(check.state, FileState::kDamaged) << name << ' ' << size;
      }
    }
    // Five bytes and less tell nothing, and the tool by itself is a host's archive.
    EXPECT_EQ(numNotModels, 7) << name;
  }
}

TEST_F(CheckCommandTest, SurvivesEveryChangeOfOneByte) {
  for (const char* name : {"knn.model", "bayes.model", "tree.model"}) {
    const std::string bytes = bytes_(name);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      for (const char change : {'\x01', '\x80', '\xFF'}) {
        std::string damaged = bytes;
        damaged[i] = static_cast<char>(damaged[i] ^ change);
        const ModelCheck check = cli::checkModel(damaged);
        ASSERT_EQ(check.state == FileState::kSound, check.faults.empty()) << name << ' ' << i;
        ASSERT_TRUE(check.state != FileState::kSound || check.model) << name << ' ' << i;
      }
    }
  }
}

TEST_F(CheckCommandTest, FindsValuesThatNoCommandWrites) {
  struct Row {
    const char* name;
    std::string bytes;
    std::vector<std::string> faults;
  };
  const std::string knn = bytes_("knn.model");
  const std::string bayes = bytes_("bayes.model");
  const std::string tree = bytes_("tree.model");
  const std::vector<Row> rows{
      {"cost", changed(knn, bytesOf(7.0), bytesOf(-7.0)), {"a cost of -7"}},
      {"order", changed(knn, bytesOf(1.5), bytesOf(0.0)), {"a norm of order 0"}},
      {"frequency", changed(bayes, bytesOf(0.375), bytesOf(INFINITY)), {"a frequency of inf"}},
      {"theta",
       changed(bayes, bytesOf(0.4), bytesOf(1.5)),
       {"a: a binomial density that no samples have"}},
      {"variance",
       changed(bayes, bytesOf(16.0), bytesOf(-16.0)),
       {"a: means and covariances that no samples have"}},
      {"name twice",
       changed(tree, std::string("b\0\0\0", 4), std::string("a\0\0\0", 4)),
       {"category \"a\" twice"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const ModelCheck check = cli::checkModel(row.bytes);
    EXPECT_EQ(check.state, FileState::kDamaged);
    EXPECT_EQ(check.faults, row.faults);
  }
}

TEST_F(CheckCommandTest, FindsNamesThatDoNotFit) {
  cli::Model model;
  vxClassifierDataProviderMemory data;
  data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({1.0, 2.0}, {})), 1);
  model.tool.train(data, vxClassifierTrainParamsKNN(1));
  model.names = {{"x"}, {"a"}};
  EXPECT_EQ(cli::checkModel(stored(model)).faults,
            (Names{"stored pattern 0 has 2 measurements, and there are names for 1",
                   "stored pattern 0 is of category 1, which has no name"}));

  const vxDecisionTreeLeaf leaf(vxClassifierResult({{3, 1.0, 1.0, 0.0}}, 0.0));
  model.tool.train(vxDecisionTreeNode(vxComparisonPredicate(0, 4), leaf, leaf));
  model.names = {{"x", ""}, {"a"}};
  EXPECT_EQ(cli::checkModel(stored(model)).faults,
            (Names{"the name of a measurement is empty",
                   "a question for measurement 4, which has no name",
                   "a leaf decides for category 3", "a leaf decides for category 3"}));
}

TEST_F(CheckCommandTest, ListsTwentyFaultsAndCountsTheOthers) {
  cli::Model model;
  vxClassifierDataProviderMemory data;
  for (int i = 0; i < 50; ++i) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({1.0}, {})), 1);
  }
  model.tool.train(data, vxClassifierTrainParamsKNN(1));
  model.names = {{"x"}, {"a"}};
  const ModelCheck check = cli::checkModel(stored(model));
  ASSERT_EQ(check.faults.size(), 21u);
  EXPECT_EQ(check.faults.back(), "and 30 more");
}

TEST_F(CheckCommandTest, TakesWhatAHostShares) {
  const vxDecisionTreeLeaf leaf(vxClassifierResult({{0, 1.0, 1.0, 0.0}}, 0.0));
  vxDecisionTreeNode tree(vxValidityPredicate({0}), leaf, leaf);
  for (int level = 0; level < 60; ++level) {
    tree = vxDecisionTreeNode(vxValidityPredicate({0}), tree, tree);
  }
  cli::Model model;
  model.names = {{"w"}, {"good"}};
  model.tool.train(tree);
  EXPECT_EQ(cli::checkModel(stored(model)).faults, Names());

  const vxPtrHandle_const<vxFeaturePattern> pattern(new vxFeaturePattern({1.0}, {}));
  vxClassifierDataProviderMemory data;
  data.setName(L"parts");
  data.addData(pattern, 0);
  data.addData(pattern, 0);
  model.tool.train(data, vxClassifierTrainParamsKNN(1));
  EXPECT_EQ(cli::checkModel(stored(model)).faults, Names());
}

}  // namespace
