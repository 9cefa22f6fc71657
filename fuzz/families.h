// SPDX-License-Identifier: MIT
#ifndef FUZZ_FAMILIES_H_
#define FUZZ_FAMILIES_H_

#include "fuzz/archived.h"
#include "fuzz/archived_host_classes.h"
#include "tests/support/archived_classes_bayes.h"
#include "tests/support/archived_classes_tool.h"
#include "tests/support/archived_classes_trees.h"

// What the archive targets load. The place in a family is what the first byte of an input says, so
// a class is added at the end.
namespace fuzz {

using Foundation =
    Family<samples::Everything, samples::Node, samples::Trouble, ArchivedVector<double>,
           ArchivedVector<bool>, ArchivedVector<std::wstring>>;

using Errors = Family<vxClassifierDefs::BadFeatures, vxClassifierDefs::BadIndex,
                      vxClassifierDefs::BadLabel, vxClassifierDefs::BadMethod,
                      vxClassifierDefs::BadParams, vxClassifierDefs::InsufficientTrainData,
                      vxClassifierDefs::NotImplemented, vxClassifierDefs::NotTrained>;

using Patterns = Family<vxFeaturePattern, vxClassifierDataProviderMemory>;

using Records = Family<vxClassifierCosts, vxClassifierFrequencies, vxClassifierCategoryResult,
                       vxClassifierResult>;

using BayesParams = Family<vxClassifierDistributionTypes, vxClassifierTrainParamsBayesian>;

using Bayes = Family<vx_PDFMultivariateNormal, vx_PDFBinomial, vx_CategoryModelBayesian,
                     vx_ClassifierBayesian>;

using Knn = Family<vxPatternDistanceMetricNorm, vxClassifierTrainParamsKNN, vx_ClassifierKNN>;

using Trees = Family<vxComparisonPredicate, vxRangePredicate, vxValidityPredicate,
                     vxDecisionTreeLeaf, vxDecisionTreeNode, vx_ClassifierDecisionTree>;

using Rules =
    Family<vxClassifierFeatureScoreOneSided, vxClassifierFeatureScoreTwoSided, ArchivedScoreHandle,
           vxClassifierFeatureVector, vxClassifierRule, vxClassifierRuleTable>;

using Tool = Family<vxClassifierTool>;

}  // namespace fuzz

#endif  // FUZZ_FAMILIES_H_
