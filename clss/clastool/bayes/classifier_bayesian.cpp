// SPDX-License-Identifier: MIT
#include "vxclss/classifier_bayesian.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <typeinfo>
#include <unordered_map>
#include <utility>

#include "bayesian_learner.h"
#include "bayesian_plan.h"
#include "clastool/clastool/lent.h"
#include "clastool/clastool/make_room.h"
#include "clastool/clastool/result_weighting.h"
#include "vxclss/category_model_bayesian.h"
#include "vxclss/data_provider.h"
#include "vxclss/errors.h"
#include "vxclss/train_params_bayesian.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"

namespace {

constexpr long kUnknownLabel = -1;

// A model that was trained looks at all measurements up to the last one. Others may leave gaps, but
// those of a damaged archive can be of any size, so up to this many measurements are given anyway.
constexpr long kMostWithGaps = 4096;

// How many measurements a check has to give a model; a host's model, as many as it says.
long numLookedAt(const vx_CategoryModel& model) {
  const auto* bayesian = dynamic_cast<const vx_CategoryModelBayesian*>(&model);
  if (bayesian == nullptr) return std::max(model.numMeasurements(), 0L);
  long largest = -1;
  long members = 0;
  for (const std::vector<long>& group : bayesian->measurementGroups()) {
    for (const long measurement : group) largest = std::max(largest, measurement);
    members += static_cast<long>(group.size());
  }
  const long most = std::max(members, kMostWithGaps);
  return largest < most ? largest + 1 : most;
}

bool isSameModel(const vxPtrHandle<vx_CategoryModel>& a, const vxPtrHandle<vx_CategoryModel>& b) {
  return vfCheckedCast<vx_CategoryModelBayesian>(*a) == vfCheckedCast<vx_CategoryModelBayesian>(*b);
}

// What a run writes to beside its result.
struct RunRoom {
  vx_BayesianPlan::Room ofPlan;
  std::vector<double> scores;
  std::vector<vxClassifierCategoryResult> matchResults;
};

}  // namespace

vx_ClassifierBayesian::vx_ClassifierBayesian() = default;

vx_ClassifierBayesian::vx_ClassifierBayesian(const vx_ClassifierBayesian& other)
    : vx_Classifier(other), labels_(other.labels_), models_(other.models_) {}

vx_ClassifierBayesian& vx_ClassifierBayesian::operator=(const vx_ClassifierBayesian& other) {
  std::vector<long> labels = other.labels_;
  std::vector<vxPtrHandle<vx_CategoryModel>> models = other.models_;
  vx_Classifier::operator=(other);
  dropPlan_();
  labels_.swap(labels);
  models_.swap(models);
  return *this;
}

vx_ClassifierBayesian::~vx_ClassifierBayesian() { dropPlan_(); }

std::vector<vxPtrHandle_const<vx_CategoryModel>> vx_ClassifierBayesian::categoryModels() const {
  return {models_.begin(), models_.end()};
}

vxPtrHandle<vx_Classifier> vx_ClassifierBayesian::clone() const {
  return vxPtrHandle<vx_Classifier>(new vx_ClassifierBayesian(*this));
}

bool vx_ClassifierBayesian::isEquivalent(const vx_Classifier& other) const {
  const auto* bayesian = dynamic_cast<const vx_ClassifierBayesian*>(&other);
  return bayesian != nullptr && *this == *bayesian;
}

bool vx_ClassifierBayesian::operator==(const vx_ClassifierBayesian& other) const {
  return vx_Classifier::isEquivalent(other) && models_.size() == other.models_.size() &&
         std::equal(models_.begin(), models_.end(), other.models_.begin(), isSameModel);
}

void vx_ClassifierBayesian::train_(const vxClassifierDataProvider& data,
                                   const vxClassifierTrainParams& params) {
  const auto& bayesian = vfCheckedCast<vxClassifierTrainParamsBayesian>(params);
  const long count = data.numPatterns();
  const long numMeasurements = data.numMeasurements();
  dropPlan_();

  // Nobody sees the models grow: they are all made here, and no code but ours runs meanwhile.
  const bool isUnseen = models_.empty() && typeid(data) == typeid(vxClassifierDataProviderMemory);
  std::vector<std::unique_ptr<vx_BayesianLearner>> learners;  // then one a model
  std::unordered_map<long, std::size_t> placeOf;
  for (std::size_t k = labels_.size(); k > 0; --k) placeOf[labels_[k - 1]] = k - 1;
  for (long i = 0; i < count; ++i) {
    const vxPtrHandle_const<vxFeaturePattern> pattern = data.featurePattern(i);
    const long label = data.categoryLabel(i);
    if (label == kUnknownLabel) continue;
    const auto known = placeOf.find(label);
    if (known != placeOf.end()) {
      if (isUnseen) {
        learners[known->second]->adapt(*pattern);
      } else {
        models_[known->second]->adapt(*pattern, nullptr, 0);
      }
      continue;
    }
    const vxPtrHandle<vx_CategoryModelBayesian> model = newModel_(label, numMeasurements, bayesian);
    auto learner = isUnseen ? std::make_unique<vx_BayesianLearner>(*model) : nullptr;
    if (isUnseen) {
      learner->adapt(*pattern);
    } else {
      model->adapt(*pattern, nullptr, 0);
    }
    placeOf[label] = models_.size();
    vx_makeRoom(labels_, models_, learners);
    labels_.push_back(label);
    models_.push_back(model);
    learners.push_back(std::move(learner));
  }
}

void vx_ClassifierBayesian::retrain_(const vxClassifierTrainParams& params) {
  const auto& changed = vfCheckedCast<vxClassifierTrainParamsBayesian>(params);
  const auto& held = vfCheckedCast<vxClassifierTrainParamsBayesian>(*heldTrainParams_());
  if (changed.distributionTypes() != held.distributionTypes()) {
    throw vxClassifierDefs::BadParams(
        L"Cannot retrain a Bayesian classifier with different distribution types.");
  }
  if (changed.maxMeasurementValues() != held.maxMeasurementValues()) {
    throw vxClassifierDefs::BadParams(
        L"Cannot retrain a Bayesian classifier with different maximum measurements values.");
  }
}

void vx_ClassifierBayesian::trainStart_(const vxClassifierTrainParams&) {}
void vx_ClassifierBayesian::trainIncremental_(const vxFeaturePattern&, long) {}

void vx_ClassifierBayesian::untrain_() {
  dropPlan_();
  models_.clear();
  labels_.clear();  // in step, so that training again starts from nothing
}

bool vx_ClassifierBayesian::isTrained_() const { return !models_.empty(); }

void vx_ClassifierBayesian::checkRunnable_() const {
  if (models_.empty()) {
    throw vxClassifierDefs::InsufficientTrainData(L"No valid data was provided for training.");
  }
  // Zeros that no model looks at are left out: a damaged archive may claim any number of them.
  long most = 0;
  for (const auto& model : models_) {
    if (model) most = std::max(most, numLookedAt(*model));
  }
  const long wanted = models_.front()->numMeasurements();
  const auto size = static_cast<std::size_t>(std::clamp(wanted, 0L, most));
  vxClassifierResult unused;
  run_(vxFeaturePattern(std::vector<double>(size, 0.0), {}), unused);
}

void vx_ClassifierBayesian::run_(const vxFeaturePattern& pattern,
                                 vxClassifierResult& result) const {
  vx_Lent<RunRoom> room;
  const vx_BayesianPlan& plan = *plan_();
  const bool isForPlan = plan.takes(pattern, room->ofPlan);

  std::vector<double>& scores = room->scores;
  scores.resize(models_.size());
  double best = -HUGE_VAL;
  for (std::size_t i = 0; i < models_.size(); ++i) {
    vfThrowExceptionOnFailure(vfCheckAttention());
    // A handler or a host's density may just have changed a model.
    scores[i] = isForPlan && plan.covers(i) && plan.isUpToDate()
                    ? plan.matchScore(i, pattern, room->ofPlan)
                    : models_[i]->matchScore(pattern, nullptr, 0);
    if (scores[i] > best) best = scores[i];
  }
  vfThrowExceptionOnFailure(vfCheckAttention());

  const auto& params = vfCheckedCast<vxClassifierTrainParamsBayesian>(*heldTrainParams_());
  const double offset = 0.0 - best;  // ln 1.0: the best category's score
  std::vector<vxClassifierCategoryResult>& matchResults = room->matchResults;
  matchResults.clear();
  matchResults.reserve(models_.size());
  for (std::size_t i = 0; i < models_.size(); ++i) {
    matchResults.emplace_back(models_[i]->categoryLabel(), std::exp(offset + scores[i]), 0.0, 0.0);
  }
  vx_ResultWeighting::weigh(matchResults.data(), matchResults.size(), params.categoryFrequencies(),
                            params.misclassificationCosts(), offset, result);
}

void vx_ClassifierBayesian::recordTrainInputs_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierBayesian::recordTrainDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierBayesian::recordTrainResults_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierBayesian::recordRunInputs_(vxDiagObject*, unsigned long,
                                             const vxFeaturePattern&) const {}
void vx_ClassifierBayesian::recordRunDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierBayesian::recordRunResults_(vxDiagObject*, unsigned long, const vxFeaturePattern&,
                                              const vxClassifierResult&) const {}

// Each dependency set of the category becomes a group at its lowest measurement, every other
// measurement a group of its own.
vxPtrHandle<vx_CategoryModelBayesian> vx_ClassifierBayesian::newModel_(
    long label, long numMeasurements, const vxClassifierTrainParamsBayesian& params) const {
  const vxClassifierDistributionTypes& distributions = params.distributionTypes();
  std::vector<std::vector<long>> groups;
  std::vector<vxClassifierDistributionTypes::DistributionType> types;
  std::vector<bool> isGrouped(static_cast<std::size_t>(std::max(numMeasurements, 0L)), false);
  for (long m = 0; m < numMeasurements; ++m) {
    if (isGrouped[static_cast<std::size_t>(m)]) continue;
    const std::vector<long>* set = distributions.dependencySet_(label, m);
    groups.push_back(set != nullptr ? *set : std::vector<long>{m});
    types.push_back(distributions.distributionType(label, m));
    for (const long member : groups.back()) {
      if (member >= 0 && member < numMeasurements)
        isGrouped[static_cast<std::size_t>(member)] = true;
    }
  }
  return vxPtrHandle<vx_CategoryModelBayesian>(
      new vx_CategoryModelBayesian(label, groups, types, params.maxMeasurementValues()));
}

const vx_BayesianPlan* vx_ClassifierBayesian::plan_() const {
  if (const vx_BayesianPlan* made = currentPlan_.load(std::memory_order_acquire)) return made;
  auto fresh = std::make_unique<const vx_BayesianPlan>(models_);
  const vx_BayesianPlan* current = nullptr;
  if (!currentPlan_.compare_exchange_strong(current, fresh.get(), std::memory_order_acq_rel)) {
    return current;  // another thread was faster; GCOVR_EXCL_LINE
  }
  return fresh.release();
}

void vx_ClassifierBayesian::dropPlan_() noexcept {
  delete currentPlan_.exchange(nullptr, std::memory_order_acq_rel);
}

void vx_ClassifierBayesian::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_ClassifierBayesian)}) {
    vfTransferStaged(archive, *this, [&archive](vx_ClassifierBayesian& target) {
      target.vx_Classifier::dispatchSerialize(archive);
      archive || target.labels_ || target.models_;
      if (target.labels_.size() != target.models_.size()) {
        throw vxArchive::Malformed(L"Category labels and models that differ in number");
      }
    });
  }
}

vxPersistent* vx_ClassifierBayesian::make() { return new vx_ClassifierBayesian; }
vx_Instantiator vx_ClassifierBayesian::sExemplar(typeid(vx_ClassifierBayesian),
                                                 &vx_ClassifierBayesian::make);
