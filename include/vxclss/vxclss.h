// SPDX-License-Identifier: MIT
#ifndef VXCLSS_VXCLSS_H_
#define VXCLSS_VXCLSS_H_

#include "vxclss/category_model.h"
#include "vxclss/category_model_bayesian.h"
#include "vxclss/classifier.h"
#include "vxclss/classifier_bayesian.h"
#include "vxclss/classifier_decision_tree.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/costs.h"
#include "vxclss/data_generator.h"
#include "vxclss/data_provider.h"
#include "vxclss/decision_tree.h"
#include "vxclss/density.h"
#include "vxclss/distance_metric.h"
#include "vxclss/distribution_types.h"
#include "vxclss/errors.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/feature_score.h"
#include "vxclss/frequencies.h"
#include "vxclss/predicate.h"
#include "vxclss/result.h"
#include "vxclss/rule_table.h"
#include "vxclss/train_params.h"
#include "vxclss/train_params_bayesian.h"
#include "vxclss/train_params_knn.h"
#include "vxclss/version.h"

#endif  // VXCLSS_VXCLSS_H_
