// SPDX-License-Identifier: MIT
#include "vxclss/rule_table.h"

#include <algorithm>
#include <cmath>

#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

constexpr double kDoesNotCount = -1.0;  // what vxClassifierFeatureScoreIgnore answers

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
  const std::vector<double>& values = featureVector.featureValues();
  if (values.size() != scoringMethods_.size()) {
    throw vxClassifierDefs::BadParams(L"MismatchedFeatureVectorSize");
  }
  if (values.empty()) {
    throw vxClassifierDefs::BadParams(L"featureVector.featureValues().size() == 0");
  }
  double product = 1.0;
  long counted = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double score = scoringMethods_[i]->score(values[i]);
    if (score == kDoesNotCount) continue;
    product *= score;
    ++counted;
  }
  if (!(product > 0.0)) return product;
  // A rule that ignores everything fits everything: 1 to an infinite power is 1.
  return std::pow(product, 1.0 / static_cast<double>(counted));
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
  for (const vxClassifierRule& rule : rules_) {
    if (rule.score(featureVector) > hardThreshold) return rule.label();
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
