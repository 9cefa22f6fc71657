// SPDX-License-Identifier: MIT
#include "tools/model_faults.h"

#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>

#include "tools/fault_list.h"
#include "tools/library_error.h"
#include "tools/model_parts.h"
#include "tools/model_text.h"
#include "tools/stop.h"
#include "tools/text.h"
#include "tools/tree_faults.h"

namespace cli {
namespace {

class FaultFinder {
 public:
  explicit FaultFinder(const Model& model) : model_(model), names_(model.names) {}

  std::vector<std::string> find() {
    checkNames_(names_.measurements, "measurement");
    checkNames_(names_.categories, "category");
    const vx_Classifier* classifier = model_.tool.classifier().get();
    if (const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(classifier)) {
      checkKnn_(*knn);
    } else if (const auto* bayes = dynamic_cast<const vx_ClassifierBayesian*>(classifier)) {
      checkBayes_(*bayes);
    } else if (const auto* tree = dynamic_cast<const vx_ClassifierDecisionTree*>(classifier)) {
      findTreeFaults(tree->decisionTree().get(), names_, faults_);
      if (faults_.isEmpty()) run_(std::vector<double>(names_.measurements.size(), 0.0));
    } else {
      add_("its classifier is of a host's own class");
    }
    return faults_.texts();
  }

 private:
  void add_(const std::string& fault) { faults_.add(fault); }
  void need_(bool condition, const std::string& fault) { faults_.need(condition, fault); }

  void checkNames_(const std::vector<std::string>& names, const char* kind) {
    need_(!names.empty(), fmt::format("no {} has a name", kind));
    std::set<std::string> known;
    for (const std::string& name : names) {
      need_(!name.empty(), fmt::format("the name of a {} is empty", kind));
      need_(known.insert(name).second, fmt::format("{} {} twice", kind, shown(name)));
    }
  }

  void checkCosts_(const vxClassifierCosts& costs) {
    need_(isCost(costs.defaultMisclassificationCost()),
          fmt::format("a cost of {}", costs.defaultMisclassificationCost()));
    for (const PairCost& own : ownCosts(costs, static_cast<long>(names_.categories.size()))) {
      need_(isCost(own.cost), fmt::format("a cost of {}", own.cost));
    }
  }

  void checkFrequencies_(const vxClassifierFrequencies& frequencies) {
    const auto check = [&](double frequency) {
      need_(std::isfinite(frequency) && frequency > 0.0,
            fmt::format("a frequency of {}", frequency));
    };
    check(frequencies.defaultCategoryFrequency());
    for (const auto& [label, frequency] :
         ownFrequencies(frequencies, static_cast<long>(names_.categories.size()))) {
      check(frequency);
    }
  }

  void checkKnn_(const vx_ClassifierKNN& knn) {
    const vxClassifierTrainParamsKNN& params = knn.params();
    checkCosts_(params.misclassificationCosts());
    const auto metric = params.distanceMetric();
    if (const auto* norm = dynamic_cast<const vxPatternDistanceMetricNorm*>(metric.get())) {
      need_(std::isfinite(norm->order()) && norm->order() > 0.0,
            fmt::format("a norm of order {}", norm->order()));
    } else {
      need_(!metric.isNull(), "no distance metric");
    }
    const auto data = knn.data();
    for (long i = 0; i < data->numPatterns(); ++i) {
      throwIfStopped();
      checkStored_(data->featurePattern(i).get(), data->categoryLabel(i), i);
    }
    if (!faults_.isEmpty()) return;
    need_(data->numPatterns() > 0, "no stored pattern");
    if (data->numPatterns() > 0) run_(data->featurePattern(0)->featureMeasurements(false));
  }

  void checkStored_(const vxFeaturePattern* pattern, long label, long index) {
    if (pattern == nullptr) {
      add_(fmt::format("stored pattern {} is missing", index));
      return;
    }
    need_(pattern->numMeasurements() == static_cast<long>(names_.measurements.size()),
          fmt::format("stored pattern {} has {} measurements, and there are names for {}", index,
                      pattern->numMeasurements(), names_.measurements.size()));
    need_(pattern->numInvalid() == 0,
          fmt::format("stored pattern {} has an invalid measurement", index));
    need_(isIndexOf(names_.categories, label),
          fmt::format("stored pattern {} is of {}, which has no name", index,
                      categoryName(names_, label)));
  }

  void checkBayes_(const vx_ClassifierBayesian& bayes) {
    try {
      const vxClassifierTrainParamsBayesian& params = bayesianParams(model_.tool);
      checkCosts_(params.misclassificationCosts());
      checkFrequencies_(params.categoryFrequencies());
    } catch (const vxException&) {
      add_("no parameters of its technique");
    }
    std::set<long> known;
    const auto models = bayes.categoryModels();
    for (std::size_t i = 0; i < models.size(); ++i) {
      const auto* model = dynamic_cast<const vx_CategoryModelBayesian*>(models[i].get());
      if (model == nullptr) {
        add_("the model of a category is missing");
        continue;
      }
      const long label = model->categoryLabel();
      need_(isIndexOf(names_.categories, label),
            fmt::format("{} has no name", categoryName(names_, label)));
      need_(known.insert(label).second,
            fmt::format("two models of {}", categoryName(names_, label)));
      need_(bayes.categoryLabels().at(i) == label,
            fmt::format("the model of {} is listed as that of {}", categoryName(names_, label),
                        categoryName(names_, bayes.categoryLabels()[i])));
      checkModel_(*model);
    }
    if (!faults_.isEmpty()) return;
    for (const std::vector<double>& pattern : typical_) run_(pattern);
  }

  /// Goes through the densities, and makes a pattern of their means.
  void checkModel_(const vx_CategoryModelBayesian& model) {
    owner_ = categoryName(names_, model.categoryLabel());
    need_(model.numMeasurements() == static_cast<long>(names_.measurements.size()),
          fmt::format("{}: {} measurements, and there are names for {}", owner_,
                      model.numMeasurements(), names_.measurements.size()));
    std::vector<double> means(names_.measurements.size(), 0.0);
    std::set<long> seen;
    const auto densities = model.densities();
    const auto& groups = model.measurementGroups();
    need_(groups.size() == densities.size(),
          fmt::format("{}: {} densities for {} groups of measurements", owner_, densities.size(),
                      groups.size()));
    for (std::size_t k = 0; k < std::min(groups.size(), densities.size()); ++k) {
      bool fits = true;
      for (const long index : groups[k]) {
        fits = fits && isIndexOf(names_.measurements, index) && seen.insert(index).second;
      }
      need_(fits, owner_ + ": a group of measurements that fit no pattern");
      if (fits) checkDensity_(densities[k].get(), groups[k], means);
    }
    typical_.push_back(means);
  }

  void checkDensity_(const vx_ProbabilityDensityFunction* density, const std::vector<long>& group,
                     std::vector<double>& means) {
    const auto place = [&](long i) {
      return static_cast<std::size_t>(group[static_cast<std::size_t>(i)]);
    };
    if (const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(density)) {
      const vxNMMatrix mean = normal->mean();
      const vxNMMatrix covariance = normal->covariance();
      if (mean.rows() != static_cast<long>(group.size())) {
        add_(fmt::format("{}: a density of {} measurements for {}", owner_, mean.rows(),
                         group.size()));
        return;
      }
      bool good = true;
      for (long i = 0; i < mean.rows(); ++i) {
        means[place(i)] = mean.element(i, 0);
        good = good && std::isfinite(mean.element(i, 0)) && covariance.element(i, i) >= 0.0;
        for (long j = 0; j < i; ++j) {
          good = good && covariance.element(i, j) == covariance.element(j, i);
        }
      }
      need_(good, owner_ + ": means and covariances that no samples have");
    } else if (const auto* binomial = dynamic_cast<const vx_PDFBinomial*>(density)) {
      const bool good = group.size() == 1 && binomial->numTrials() > 0 &&
                        isShare(binomial->theta()) && binomial->maximumValue() > 0.0;
      need_(good, owner_ + ": a binomial density that no samples have");
      if (good) means[place(0)] = binomial->theta() * binomial->maximumValue();
    } else {
      need_(density != nullptr, owner_ + ": a density is missing");
    }
  }

  void run_(const std::vector<double>& measurements) {
    throwIfStopped();
    vxClassifierResult result;
    try {
      model_.tool.run(vxFeaturePattern(measurements, {}), result);
    } catch (const vxStopRequested&) {
      throw;
    } catch (const vxClassifierDefs::Errors& error) {
      add_("it does not run: " + printable(libraryText(error, names_)));
    } catch (const vxException&) {
      add_("it does not run");
    }
  }

  const Model& model_;
  const Names& names_;
  FaultList faults_;
  std::string owner_;                         // the category under examination
  std::vector<std::vector<double>> typical_;  // of each category of a Bayesian model
};

}  // namespace

std::vector<std::string> modelFaults(const Model& model) { return FaultFinder(model).find(); }

}  // namespace cli
