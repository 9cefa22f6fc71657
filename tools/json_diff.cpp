// SPDX-License-Identifier: MIT
#include "tools/json_diff.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace cli {
namespace {

using Labels = std::vector<std::string>;

std::string nameOf(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

/// What an element of a list is about; empty if it doesn't say.
std::string subjectOf(const Json& element) {
  if (!element.is_object()) return {};
  if (element.contains("category")) return nameOf(element["category"]);
  if (element.contains("assigned") && element.contains("true")) {
    return fmt::format("{} taken for {}", nameOf(element["true"]), nameOf(element["assigned"]));
  }
  if (!element.contains("measurements")) return {};
  Labels names;
  for (const Json& name : element["measurements"]) names.push_back(nameOf(name));
  return fmt::format("{}", fmt::join(names, ", "));
}

/// The subjects of a list's elements; none unless every element has one of its own.
Labels subjectsOf(const Json& list) {
  Labels subjects;
  std::set<std::string> known;
  for (const Json& element : list) {
    subjects.push_back(subjectOf(element));
    if (subjects.back().empty() || !known.insert(subjects.back()).second) return {};
  }
  return subjects;
}

bool isNumeric(const Json& list) {
  return std::all_of(list.begin(), list.end(), [](const Json& element) {
    return element.is_number() || element.is_null() || element.is_array();
  });
}

class Comparison {
 public:
  std::vector<JsonDifference> of(const Json& a, const Json& b) {
    compare_(a, b);
    return std::move(found_);
  }

 private:
  void differ_(std::optional<Json> a, std::optional<Json> b) {
    found_.push_back({path_, std::move(a), std::move(b)});
  }

  void compare_(const Json& a, const Json& b) {
    if (a == b) return;
    if (a.is_object() && b.is_object() && haveAKeyInCommon_(a, b)) {
      compareObjects_(a, b);
    } else if (a.is_array() && b.is_array()) {
      compareLists_(a, b);
    } else {
      differ_(a, b);
    }
  }

  static bool haveAKeyInCommon_(const Json& a, const Json& b) {
    return std::any_of(a.items().begin(), a.items().end(),
                       [&](const auto& item) { return b.contains(item.key()); });
  }

  void compareObjects_(const Json& a, const Json& b) {
    const Labels outer = measurements_;
    measurements_ = measurementsOf_(a, b);
    for (const auto& [key, value] : a.items()) {
      path_.push_back(key);
      if (b.contains(key)) {
        compare_(value, b[key]);
      } else {
        differ_(value, std::nullopt);
      }
      path_.pop_back();
    }
    for (const auto& [key, value] : b.items()) {
      if (a.contains(key)) continue;
      path_.push_back(key);
      differ_(std::nullopt, value);
      path_.pop_back();
    }
    measurements_ = outer;
  }

  /// Names for the numbers in these objects.
  static Labels measurementsOf_(const Json& a, const Json& b) {
    Labels names;
    if (!a.contains("measurements") || !b.contains("measurements")) return names;
    if (a["measurements"] != b["measurements"]) return names;
    for (const Json& name : a["measurements"]) names.push_back(nameOf(name));
    return names;
  }

  void compareLists_(const Json& a, const Json& b) {
    const Labels subjectsA = subjectsOf(a);
    const Labels subjectsB = subjectsOf(b);
    if (subjectsA.size() == a.size() && subjectsB.size() == b.size()) {
      compareSubjects_(a, subjectsA, b, subjectsB);
    } else if (a.size() == b.size() && isNumeric(a) && isNumeric(b)) {
      for (std::size_t i = 0; i < a.size(); ++i) {
        path_.push_back(measurements_.size() == a.size() ? measurements_[i] : std::to_string(i));
        compare_(a[i], b[i]);
        path_.pop_back();
      }
    } else {
      differ_(a, b);
    }
  }

  void compareSubjects_(const Json& a, const Labels& subjectsA, const Json& b,
                        const Labels& subjectsB) {
    const auto placeIn = [](const Labels& subjects, const std::string& subject) {
      return static_cast<std::size_t>(std::find(subjects.begin(), subjects.end(), subject) -
                                      subjects.begin());
    };
    Labels commonA;
    Labels commonB;
    for (std::size_t i = 0; i < a.size(); ++i) {
      const std::size_t place = placeIn(subjectsB, subjectsA[i]);
      path_.push_back(subjectsA[i]);
      if (place < b.size()) {
        commonA.push_back(subjectsA[i]);
        compare_(a[i], b[place]);
      } else {
        differ_(a[i], std::nullopt);
      }
      path_.pop_back();
    }
    for (std::size_t i = 0; i < b.size(); ++i) {
      if (placeIn(subjectsA, subjectsB[i]) < a.size()) {
        commonB.push_back(subjectsB[i]);
        continue;
      }
      path_.push_back(subjectsB[i]);
      differ_(std::nullopt, b[i]);
      path_.pop_back();
    }
    if (commonA == commonB) return;
    path_.push_back("order");
    differ_(commonA, commonB);
    path_.pop_back();
  }

  Labels path_;
  Labels measurements_;
  std::vector<JsonDifference> found_;
};

}  // namespace

std::vector<JsonDifference> jsonDifferences(const Json& a, const Json& b) {
  return Comparison().of(a, b);
}

}  // namespace cli
