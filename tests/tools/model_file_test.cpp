// SPDX-License-Identifier: MIT
#include "tools/model_file.h"

#include <gtest/gtest.h>
#include <vxfoundation/vxfoundation.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/scratch.h"

namespace {

using cli::Model;
using PatternHandle = vxPtrHandle_const<vxFeaturePattern>;

PatternHandle pattern(double x, double y) {
  return PatternHandle(new vxFeaturePattern({x, y}, {}));
}

/// k = 5 decides otherwise than the k = 1 that a loaded classifier begins with.
Model trainedModel() {
  vxClassifierDataProviderMemory data;
  data.addData(pattern(0.0, 0.0), 1);
  for (const double x : {1.0, 1.5, 2.0, 2.5}) data.addData(pattern(x, x), 0);
  Model model;
  model.names = {{"width", "h\xC3\xB6he"}, {"na\xC3\xAFve", "\xF0\x9F\x94\xA9 bolt"}};
  vxClassifierCosts costs(2.0);
  costs.misclassificationCostOverride(0, 1, 7.0);
  model.tool.train(data, vxClassifierTrainParamsKNN(5, vxPatternDistanceMetricNorm(1.0), costs));
  return model;
}

std::string bytesOf(Model model) {
  std::ostringstream stream;
  cli::writeModel(model, stream);
  return stream.str();
}

Model read(const std::string& bytes) {
  std::istringstream stream(bytes);
  return cli::readModel(stream, "m");
}

std::string refused(const std::string& bytes) {
  return refusal([&] { read(bytes); });
}

vxClassifierResult resultOf(const vxClassifierTool& tool) {
  vxClassifierResult result;
  tool.run(*pattern(0.1, 0.2), result);
  return result;
}

TEST(ModelFileTest, BringsBackToolNamesAndParameters) {
  const Model model = trainedModel();
  const Model loaded = read(bytesOf(model));
  EXPECT_EQ(loaded.tool, model.tool);
  EXPECT_EQ(loaded.names.measurements, model.names.measurements);
  EXPECT_EQ(loaded.names.categories, model.names.categories);
  EXPECT_EQ(resultOf(loaded.tool), resultOf(model.tool));
  EXPECT_EQ(resultOf(loaded.tool).categoryResults().size(), 2u);
}

TEST(ModelFileTest, BeginsWithTheToolThatAHostLoadsInThreeLines) {
  Model model = trainedModel();
  const Scratch scratch;
  const std::string path = scratch.file("m", bytesOf(model));

  std::ifstream stream(path, std::ios::binary);
  vxInputArchive archive(stream);
  vxClassifierTool tool;
  archive || tool;
  EXPECT_EQ(tool, model.tool);
  EXPECT_EQ(resultOf(tool).categoryResults().size(), 1u);  // k = 1 until retrained

  std::wstring tag;
  unsigned char version = 255;
  std::vector<std::wstring> measurements;
  std::vector<std::wstring> categories;
  archive || tag || version || measurements || categories;
  EXPECT_EQ(tag, L"vxclss model");
  EXPECT_EQ(version, 0);
  EXPECT_EQ(measurements, (std::vector<std::wstring>{L"width", L"h\u00F6he"}));
  EXPECT_EQ(categories, (std::vector<std::wstring>{L"na\u00EFve", L"\U0001F529 bolt"}));
  EXPECT_EQ(stream.peek(), std::ifstream::traits_type::eof());
}

TEST(ModelFileTest, RefusesAFileCutShortAnywhere) {
  const std::string bytes = bytesOf(trainedModel());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    const std::string text = refused(bytes.substr(0, size));
    ASSERT_EQ(text.substr(0, 28), "m: not a vxclss model file: ") << size;
    ASSERT_GT(text.size(), 28u) << size;
  }
}

TEST(ModelFileTest, RefusesBytesAfterItsEnd) {
  const std::string bytes = bytesOf(trainedModel());
  EXPECT_EQ(refused(bytes + '\0'), "m: not a vxclss model file: bytes after its end");
  EXPECT_EQ(refused(bytes + bytes), "m: not a vxclss model file: bytes after its end");
}

TEST(ModelFileTest, SurvivesEveryChangeOfOneByte) {
  const std::string bytes = bytesOf(trainedModel());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (const char change : {'\x01', '\x80', '\xFF'}) {
      std::string damaged = bytes;
      damaged[i] = static_cast<char>(damaged[i] ^ change);
      // A change of a number or of a letter stays a model; all else is refused, and nothing else is
      // thrown.
      refused(damaged);
    }
  }
}

TEST(ModelFileTest, SaysWhatIsWrongWithAFileOfAnotherKind) {
  const std::string bytes = bytesOf(trainedModel());
  std::string newer = bytes;
  const std::size_t tag = bytes.find(std::string("l\0\0\0\0", 5));  // the tag's end, the version
  ASSERT_NE(tag, std::string::npos);
  newer[tag + 4] = 1;
  EXPECT_EQ(refused(newer), "m: a model file of version 1; only version 0 is known");

  std::string otherTag = bytes;
  otherTag[tag] = 'x';
  EXPECT_EQ(refused(otherTag), "m: not a vxclss model file: a tool, but no names behind it");

  Model untrained;
  EXPECT_EQ(refused(bytesOf(untrained)), "m: not a vxclss model file: its tool is not trained");
  EXPECT_EQ(refused("a,b\n1,2\n").substr(0, 28), "m: not a vxclss model file: ");
}

TEST(ModelFileTest, NamesTheFileThatCantBeRead) {
  const Scratch scratch;
  EXPECT_EQ(scratch.withoutPath(refusal([&] { cli::readModel(scratch.path("none")); })),
            "none: No such file or directory");
  EXPECT_EQ(refusal([] { cli::readModel("/"); }), "/: is a directory");
}

}  // namespace
