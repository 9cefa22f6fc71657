// SPDX-License-Identifier: MIT
#include "vxclss/rule_table.h"

#include <algorithm>
#include <cmath>
#include <typeinfo>

#include "score_in_line.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

constexpr double kDoesNotCount = -1.0;  // what vxClassifierFeatureScoreIgnore answers

using Methods = std::vector<vxPtrHandle<vxClsFtSc>>;

// What function.score(x) answers or throws, without a call where the class is one of the library's
// and there is nothing to throw.
double scoreOf(const vxClsFtSc& function, double x) {
  if (&typeid(function) == &typeid(vxClassifierFeatureScoreTwoSided)) {
    const auto& band = static_cast<const vxClassifierFeatureScoreTwoSided&>(function);
    if (vx_ScoreInLine::isInOrder(band)) return vx_ScoreInLine::score(band, x);
  } else if (&typeid(function) == &typeid(vxClassifierFeatureScoreOneSided)) {
    const auto& side = static_cast<const vxClassifierFeatureScoreOneSided&>(function);
    if (vx_ScoreInLine::isInOrder(side)) return vx_ScoreInLine::score(side, x);
  } else if (&typeid(function) == &typeid(vxClassifierFeatureScoreIgnore)) {
    return kDoesNotCount;
  }
  return function.score(x);
}

// The product of the scores that count, and their number. No function is left out, even after a 0:
// a later one may still have something to throw.
struct Product {
  Product(const Methods& methods, const std::vector<double>& values) {
    if (values.size() != methods.size()) {
      throw vxClassifierDefs::BadParams(L"MismatchedFeatureVectorSize");
    }
    if (values.empty()) {
      throw vxClassifierDefs::BadParams(L"featureVector.featureValues().size() == 0");
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
      const double score = scoreOf(*methods[i], values[i]);
      if (score == kDoesNotCount) continue;
      value *= score;
      ++counted;
    }
  }

  // A rule that ignores everything fits everything: 1 to an infinite power is 1.
  double mean() const {
    return value > 0.0 ? std::pow(value, 1.0 / static_cast<double>(counted)) : value;
  }

  double value = 1.0;
  long counted = 0;
};

// Tells most products whose mean is not above a threshold t without the root: it is below t if the
// product is below t^n. The margin, of a millionth in the product, is one of 1e-6 / n in the mean,
// far more than two powers can be wrong by.
class Threshold {
 public:
  explicit Threshold(double value) : value_(value) {}

  bool isBelow(const Product& product) {
    if (product.counted != counted_) {
      counted_ = product.counted;
      const double power = std::pow(value_, static_cast<double>(counted_));
      constexpr double kFullPrecision = 1e-300;
      surelyNot_ =
          counted_ > 0 && counted_ < kMost && power > kFullPrecision ? power * (1.0 - 1e-6) : 0.0;
    }
    if (product.value > 0.0 && product.value < surelyNot_) return false;
    return product.mean() > value_;
  }

 private:
  static constexpr long kMost = 1'000'000;

  double value_;
  long counted_ = -1;
  double surelyNot_ = 0.0;  // a positive product below this has a mean below the threshold
};

// A vector whose elements are loaded over those of the target: one that brings nothing stays.
template <class T>
void transferOver(vxArchive& archive, std::vector<T>& values) {
  const std::size_t count = vfTransferVectorHead(archive, values.size());
  if (archive.isStoring()) {
    for (T& value : values) archive || value;
    return;
  }
  std::vector<T> loaded;
  while (loaded.size() < count) {
    const std::size_t i = loaded.size();
    loaded.push_back(i < values.size() ? values[i] : T());
    archive || loaded.back();
  }
  values.swap(loaded);
}

}  // namespace

vxClassifierFeatureVector::vxClassifierFeatureVector(const std::vector<double>& featureValues)
    : featureValues_(featureValues) {}

void vxClassifierRule::init(const std::vector<vxPtrHandle<vxClsFtSc>>& scoringMethods, long label) {
  if (label < 0) throw vxClassifierDefs::BadParams(L"label < 0");
  if (scoringMethods.empty()) throw vxClassifierDefs::BadParams(L"scoringMethods.size() == 0");
  scoringMethods_ = scoringMethods;
  label_ = label;
}

double vxClassifierRule::score(const vxClassifierFeatureVector& featureVector) const {
  return Product(scoringMethods_, featureVector.featureValues()).mean();
}

bool vxClassifierRule::operator==(const vxClassifierRule& other) const {
  const auto isSame = [](const vxPtrHandle<vxClsFtSc>& a, const vxPtrHandle<vxClsFtSc>& b) {
    return *a == *b;
  };
  return scoringMethods_.size() == other.scoringMethods_.size() &&
         std::equal(scoringMethods_.begin(), scoringMethods_.end(), other.scoringMethods_.begin(),
                    isSame) &&
         label_ == other.label_;
}

void vxClassifierRuleTable::train(const std::vector<vxClassifierRule>& rules) {
  if (rules.empty()) throw vxClassifierDefs::BadParams(L"rules.size() == 0");
  const std::size_t ruleSize = rules.front().scoringMethods().size();
  for (const vxClassifierRule& rule : rules) {
    if (rule.scoringMethods().size() != ruleSize) {
      // Hosts compare with the letter i, whichever rule it is.
      throw vxClassifierDefs::BadParams(L"rules[i].scoringMethods().size() != ruleSize");
    }
  }
  std::vector<vxClassifierRule> copy = rules;
  rules_.swap(copy);
}

long vxClassifierRuleTable::classifyHardThreshold(const vxClassifierFeatureVector& featureVector,
                                                  double hardThreshold) const {
  if (hardThreshold < 0 || hardThreshold > 1) {
    throw vxClassifierDefs::BadParams(L"hardThreshold < 0 || hardThreshold > 1");
  }
  if (rules_.empty()) {
    throw vxClassifierDefs::NotTrained(
        L"the rule table needs to be trained before it can classify");
  }
  if (featureVector.featureValues().empty()) {
    throw vxClassifierDefs::BadParams(L"featureVector.featureValues().size() == 0");
  }
  if (featureVector.featureValues().size() != rules_[0].scoringMethods().size()) {
    // Hosts compare with the closing parenthesis too many.
    throw vxClassifierDefs::BadParams(
        L"featureVector.featureValues().size() != rules_[0].scoringMethods().size())");
  }
  Threshold threshold(hardThreshold);
  for (const vxClassifierRule& rule : rules_) {
    const Product product(rule.scoringMethods(), featureVector.featureValues());
    if (threshold.isBelow(product)) return rule.label();
  }
  return -1;
}

vxArchive& operator||(vxArchive& archive, vxClassifierFeatureVector& featureVector) {
  return archive || featureVector.featureValues_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierRule& rule) {
  vx_Transfer transfer(archive);
  const auto fields = [&archive](vxClassifierRule& target) {
    transferOver(archive, target.scoringMethods_);
    archive || target.label_;
  };
  vfTransferStaged(archive, rule, fields, rule);
  transfer.complete();
  return archive;
}

vxArchive& operator||(vxArchive& archive, vxClassifierRuleTable& table) {
  vx_Transfer transfer(archive);
  const auto fields = [&archive](vxClassifierRuleTable& target) {
    transferOver(archive, target.rules_);
  };
  vfTransferStaged(archive, table, fields, table);
  transfer.complete();
  return archive;
}
