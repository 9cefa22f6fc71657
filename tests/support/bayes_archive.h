// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_BAYES_ARCHIVE_H_
#define TESTS_SUPPORT_BAYES_ARCHIVE_H_

#include <string>
#include <vector>

#include "vxclss/category_model_bayesian.h"
#include "vxclss/classifier_bayesian.h"
#include "vxfoundation/persistent.h"

/// A category model as bytes may bring it: any numbers, and null or objects of any class in the
/// places of the densities.
struct ArchivedBayesModel {
  long label;
  long numMeasurements;
  std::vector<std::vector<long>> groups;
  std::vector<const vxPersistent*> densities;
};

/// In place, not through a pointer.
std::string bayesModelBytes(const ArchivedBayesModel& model);
vx_CategoryModelBayesian bayesModel(const ArchivedBayesModel& model);

/// The same of a classifier, with anything in the places of parameters and models.
std::string bayesClassifierBytes(const vxPersistent* params, std::vector<long> labels,
                                 const std::vector<const vxPersistent*>& models);

/// A normal density of these statistics: a d x 1 mean, a d x d covariance.
std::string normalBytes(const std::vector<double>& mean, const std::vector<double>& covariance,
                        long sampleCount);

std::string binomialBytes(long numTrials, double theta, double maximumValue);

#endif  // TESTS_SUPPORT_BAYES_ARCHIVE_H_
