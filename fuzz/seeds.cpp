// SPDX-License-Identifier: MIT
#include "fuzz/seeds.h"

#include <cstdint>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <tuple>

#include "fuzz/families.h"
#include "tests/support/golden_archive.h"
#include "tools/model_file.h"

namespace fuzz {
namespace {

using Inputs = std::vector<std::string>;

/// What an archive writes.
template <class Store>
std::string storedBy(Store&& store) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  store(archive);
  return stream.str();
}

template <class T>
std::string byPointer(const T& object, int times) {
  return storedBy([&](vxArchive& archive) {
    vxPersistent* unused = nullptr;
    for (int i = 0; i < times; ++i) vxPersistent::serializePointer(archive, &object, unused);
  });
}

/// The golden archives of a class; of one that has none, what its samples are stored as.
template <class T>
Inputs archivesOf() {
  Inputs archives;
  for (const GoldenArchive& golden : goldenArchives(vfClassName(typeid(T)))) {
    archives.push_back(golden.bytes);
  }
  if (!archives.empty()) return archives;
  for (const Sample<T>& sample : Archived<T>::samples()) {
    if constexpr (isPersistent<T>) {
      archives.push_back(byPointer(sample.object, 1));
    } else {
      archives.push_back(*storedBytes(sample.object));
    }
  }
  return archives;
}

std::string headed(std::size_t number, std::uint8_t flags, const std::string& archive) {
  return static_cast<char>(static_cast<std::uint8_t>(number) | flags) + archive;
}

template <class T>
void addSeeds(std::size_t number, Inputs& seeds) {
  for (const std::string& archive : archivesOf<T>()) seeds.push_back(headed(number, 0, archive));
  for (const Sample<T>& sample : Archived<T>::samples()) {
    const std::string inPlace = *storedBytes(sample.object);
    seeds.push_back(headed(number, Head::kInPlace, inPlace));
    if constexpr (isPersistent<T>) {
      seeds.push_back(headed(number, Head::kTwice, byPointer(sample.object, 2)));
    } else {
      seeds.push_back(headed(number, Head::kTwice, inPlace + inPlace));
    }
  }
}

template <class... T>
Inputs seedsOfFamily(const Family<T...>*) {
  Inputs seeds;
  std::size_t number = 0;
  (addSeeds<T>(number++, seeds), ...);
  return seeds;
}
template <class AnyFamily>
Inputs familySeeds() {
  return seedsOfFamily(static_cast<const AnyFamily*>(nullptr));
}

/// A tool of each technique, larger than the golden ones.
std::vector<vxClassifierTool> tools() {
  std::mt19937 random(1);
  vxClassifierDataProviderMemory data;
  for (int i = 0; i < 12; ++i) {
    std::vector<double> values;
    for (int m = 0; m < 3; ++m) values.push_back(static_cast<double>(random() % 64) / 8.0);
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(values, {})), i % 3);
  }
  std::vector<vxClassifierTool> tools(3);
  tools[0].train(data, Archived<vxClassifierTrainParamsKNN>::filled());
  vxClassifierDistributionTypes types;
  types.setDependent(1, {0, 2});
  types.distributionTypeOverride(2, 1, vxClassifierDistributionTypes::eBinomial);
  tools[1].train(data,
                 vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0),
                                                 vxClassifierCosts(1.0), {{8.0, 8.0, 8.0}, {}}));
  vxDecisionTreeNode tree = Archived<vxDecisionTreeNode>::filled();
  for (int i = 0; i < 3; ++i) {
    tree = vxDecisionTreeNode(vxRangePredicate({0.5, 1.5 + i}, {i}), tree,
                              Archived<vxDecisionTreeLeaf>::filled());
  }
  tools[2].train(tree);
  return tools;
}

Inputs toolSeeds() {
  Inputs seeds = familySeeds<Tool>();
  for (const vxClassifierTool& tool : tools()) seeds.push_back(headed(0, 0, *storedBytes(tool)));
  return seeds;
}

Inputs modelSeeds() {
  Inputs seeds;
  for (const vxClassifierTool& tool : tools()) {
    cli::Model model{tool, {{"width", "h\u00f6he", "holes"}, {"nut", "bolt", "M4"}}};
    std::ostringstream stream(std::ios::binary);
    cli::writeModel(model, stream);
    seeds.push_back(stream.str());
  }
  return seeds;
}

Inputs csvSeeds() {
  return {"a,b,c\n1,2,nut\n3,4,bolt\n", "\xEF\xBB\xBF\"a\",c,x\r\n1e5,\"b,\"\"q\"\"\",\r\n,,\r\n",
          "c\n\"two\nlines\"\n", " a , c \nnan,u\n-0.5,\n inf,v\n"};
}

Inputs jsonSeeds() {
  return {R"({"features": ["w", "h"], "rules": [{"category": "nut", "scores": {
 "w": {"one-sided": {"x0": 0, "x1": 8, "xc": 8, "y0": 1, "y1": 0.5}}, "h": "ignore"}},
 {"category": "b", "scores": {"w": {"two-sided": {
 "low": {"x0": 4, "x1": 2, "xc": 2, "y0": 1, "y1": 0},
 "high": {"x0": 4, "x1": 8, "xc": 8, "y0": 1, "y1": 0}}}}}]})",
          R"({"measurements": ["w", "h"], "categories": ["nut", "b"], "tree": {
 "if": {"valid": ["w", "h"]}, "true": {"if": {"compare": ["h", ">", "w"]}, "true": "b",
 "false": {"if": {"range": {"of": "h", "from": 1, "to": 2}}, "true": "nut", "false":
 {"results": [{"category": "nut", "match_score": 1, "class_score": 0.7, "expected_cost": 0.3}]}}},
 "false": "nut"}})"};
}

Inputs randomSeeds() {
  std::mt19937 random(1);
  Inputs seeds(40);
  for (std::string& seed : seeds) {
    for (std::size_t left = random() % 500; left > 0; --left) {
      seed.push_back(static_cast<char>(random() & 0xff));
    }
  }
  return seeds;
}

}  // namespace

std::vector<std::string> seedsOf(const std::string& target) {
  static const std::map<std::string, Inputs (*)()> makers = {
      {"bayes", &familySeeds<Bayes>},
      {"bayes_params", &familySeeds<BayesParams>},
      {"csv", &csvSeeds},
      {"errors", &familySeeds<Errors>},
      {"foundation", &familySeeds<Foundation>},
      {"json", &jsonSeeds},
      {"knn", &familySeeds<Knn>},
      {"model_file", &modelSeeds},
      {"patterns", &familySeeds<Patterns>},
      {"records", &familySeeds<Records>},
      {"rules", &familySeeds<Rules>},
      {"same_densities", &randomSeeds},
      {"same_neighbours", &randomSeeds},
      {"same_weights", &randomSeeds},
      {"tool", &toolSeeds},
      {"trees", &familySeeds<Trees>},
  };
  const auto maker = makers.find(target);
  if (maker == makers.end()) throw std::invalid_argument("no target " + target);
  return maker->second();
}

}  // namespace fuzz
