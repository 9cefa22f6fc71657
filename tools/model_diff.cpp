// SPDX-License-Identifier: MIT
#include "tools/model_diff.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "tools/model_json.h"

namespace cli {
namespace {

/// Where patterns of one content stand.
struct Places {
  std::vector<std::size_t> inA;
  std::vector<std::size_t> inB;
};

/// Equal for equal labels, measurements and validity; a NaN equals itself.
std::string contentOf(const vxFeaturePattern& pattern, long label) {
  std::string content(reinterpret_cast<const char*>(&label), sizeof label);
  for (long i = 0; i < pattern.numMeasurements(); ++i) {
    const double value = pattern.featureMeasurement(i, false) + 0.0;  // -0.0 becomes 0.0
    content.append(reinterpret_cast<const char*>(&value), sizeof value);
    content.push_back(pattern.isValid(i) ? 1 : 0);
  }
  return content;
}

void addPlaces(const vxClassifierDataProvider& data, std::map<std::string, Places>& places,
               std::vector<std::size_t> Places::*member) {
  for (long i = 0; i < data.numPatterns(); ++i) {
    const std::string content = contentOf(*data.featurePattern(i), data.categoryLabel(i));
    (places[content].*member).push_back(static_cast<std::size_t>(i));
  }
}

void comparePatterns(const vxClassifierDataProvider& a, const vxClassifierDataProvider& b,
                     std::vector<JsonDifference>& differences) {
  std::map<std::string, Places> places;
  addPlaces(a, places, &Places::inA);
  addPlaces(b, places, &Places::inB);
  std::size_t onlyInA = 0;
  std::size_t onlyInB = 0;
  std::map<std::size_t, std::size_t> moved;  // by the place in A
  for (const auto& [content, found] : places) {
    const std::size_t common = std::min(found.inA.size(), found.inB.size());
    onlyInA += found.inA.size() - common;
    onlyInB += found.inB.size() - common;
    for (std::size_t i = 0; i < common; ++i) {
      if (found.inA[i] != found.inB[i]) moved.emplace(found.inA[i], found.inB[i]);
    }
  }
  if (onlyInA > 0 || onlyInB > 0) {
    differences.push_back({{"stored_patterns", "unmatched"}, onlyInA, onlyInB});
  } else if (!moved.empty()) {
    differences.push_back(
        {{"stored_patterns", "order"}, moved.begin()->first, moved.begin()->second});
  }
}

void keepOnly(Json& object, const Json& other) {
  Json kept = Json::object();
  for (const auto& [key, value] : object.items()) {
    if (other.contains(key)) kept[key] = value;
  }
  object = std::move(kept);
}

}  // namespace

std::vector<JsonDifference> modelDifferences(const Model& a, const Model& b) {
  Json jsonA = modelJson(a);
  Json jsonB = modelJson(b);
  if (jsonA["method"] != jsonB["method"]) {
    keepOnly(jsonA, jsonB);
    keepOnly(jsonB, jsonA);
  }
  std::vector<JsonDifference> differences = jsonDifferences(jsonA, jsonB);
  const auto* knnA = dynamic_cast<const vx_ClassifierKNN*>(a.tool.classifier().get());
  const auto* knnB = dynamic_cast<const vx_ClassifierKNN*>(b.tool.classifier().get());
  if (knnA != nullptr && knnB != nullptr && a.names.measurements == b.names.measurements &&
      a.names.categories == b.names.categories) {
    comparePatterns(*knnA->data(), *knnB->data(), differences);
  }
  return differences;
}

}  // namespace cli
