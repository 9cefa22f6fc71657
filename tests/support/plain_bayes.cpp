// SPDX-License-Identifier: MIT
#include "tests/support/plain_bayes.h"

#include <cmath>
#include <cstddef>

#include "vxclss/errors.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"
#include "vxfoundation/text.h"

namespace plain {

namespace {

std::shared_ptr<vx_ProbabilityDensityFunction> newDensity(DistributionTypes::Type type,
                                                          const std::vector<long>& group,
                                                          const vxFeaturePattern& maxima) {
  if (type == vxClassifierDistributionTypes::eNormal) {
    return std::make_shared<vx_PDFMultivariateNormal>();
  }
  if (type == vxClassifierDistributionTypes::eBinomial) {
    const vxFeaturePattern own = Bayes::reduced(maxima, group);
    return std::make_shared<vx_PDFBinomial>(own.isValid(0) ? own : vxFeaturePattern({1.0}, {}));
  }
  if (type == vxClassifierDistributionTypes::ePoisson) {
    throw vxClassifierDefs::NotImplemented(L"Poisson distribution is not implemented");
  }
  if (type == vxClassifierDistributionTypes::eUniform) {
    throw vxClassifierDefs::NotImplemented(L"Uniform distribution is not implemented");
  }
  throw vxClassifierDefs::BadParams(L"Unknown distribution type");
}

Bayes::Model newModel(long label, long numMeasurements, const Bayes::Params& params) {
  Bayes::Model model{label, {}};
  const auto isGrouped = [&model](long measurement) {
    for (const Bayes::Group& group : model.groups) {
      for (const long member : group.members) {
        if (member == measurement) return true;
      }
    }
    return false;
  };
  std::vector<DistributionTypes::Type> types;
  for (long m = 0; m < numMeasurements; ++m) {
    if (isGrouped(m)) continue;
    const DistributionTypes::Set* set = params.types.setOf(label, m);
    model.groups.push_back({set != nullptr ? set->members : std::vector<long>{m}, nullptr});
    types.push_back(params.types.distributionType(label, m));
  }
  for (std::size_t k = 0; k < types.size(); ++k) {
    Bayes::Group& group = model.groups[k];
    group.density = newDensity(types[k], group.members, params.maxima);
  }
  return model;
}

}  // namespace

Real logBinomial(Real n, Real k, Real theta) {
  return std::lgamma(n + 1) - std::lgamma(n - k + 1) - std::lgamma(k + 1) + k * std::log(theta) +
         (n - k) * std::log1p(-theta);
}

void Bayes::train(const std::vector<vxFeaturePattern>& patterns, const std::vector<long>& labels,
                  const Params& newParams) {
  const long numMeasurements = patterns.empty() ? 0 : patterns[0].numMeasurements();
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    if (labels[i] == -1) continue;
    Model* known = nullptr;
    for (Model& model : models) {
      if (known == nullptr && model.label == labels[i]) known = &model;
    }
    if (known != nullptr) {
      adapt(*known, patterns[i]);
    } else {
      Model model = newModel(labels[i], numMeasurements, newParams);
      adapt(model, patterns[i]);
      models.push_back(model);
    }
  }
  params = newParams;
}

void Bayes::run(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
  std::vector<double> scores;
  for (const Model& model : models) {
    vfThrowExceptionOnFailure(vfCheckAttention());
    scores.push_back(matchScore(model, pattern));
  }
  vfThrowExceptionOnFailure(vfCheckAttention());
  double best = -HUGE_VAL;
  for (const double score : scores) {
    if (score > best) best = score;
  }
  const double offset = std::log(1.0) - best;
  std::vector<vxClassifierCategoryResult> matches;
  for (std::size_t i = 0; i < models.size(); ++i) {
    matches.emplace_back(models[i].label, std::exp(offset + scores[i]), 0.0, 0.0);
  }
  result = vxClassifierResult(matches, params.frequencies, params.costs, offset);
}

vxFeaturePattern Bayes::reduced(const vxFeaturePattern& pattern, const std::vector<long>& group) {
  std::vector<double> values(group.size(), 0.0);
  std::vector<long> invalid;
  for (std::size_t j = 0; j < group.size(); ++j) {
    if (pattern.isValid(group[j])) {
      values[j] = pattern.featureMeasurement(group[j], true);
    } else {
      invalid.push_back(static_cast<long>(j));
    }
  }
  return {values, invalid};
}

double Bayes::matchScore(const Model& model, const vxFeaturePattern& pattern) {
  double score = 0.0;
  for (const Group& group : model.groups) {
    try {
      score += group.density->logValue(reduced(pattern, group.members));
    } catch (const vxClassifierDefs::InsufficientTrainData& error) {
      throw vxClassifierDefs::InsufficientTrainData(error.message() + L" for category " +
                                                    vfStr(model.label));
    }
  }
  return score;
}

void Bayes::adapt(Model& model, const vxFeaturePattern& pattern) {
  for (const Group& group : model.groups) {
    group.density->updateWithData({reduced(pattern, group.members)});
  }
}

}  // namespace plain
