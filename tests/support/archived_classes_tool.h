// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ARCHIVED_CLASSES_TOOL_H_
#define TESTS_SUPPORT_ARCHIVED_CLASSES_TOOL_H_

#include "tests/support/archived_classes.h"
#include "tests/support/archived_classes_bayes.h"
#include "tests/support/archived_classes_trees.h"
#include "vxclss/classifier_tool.h"

template <>
struct Archived<vxClassifierTool> {
  static Samples<vxClassifierTool> samples() {
    vxClassifierTool trained;
    trained.train(Archived<vxClassifierDataProviderMemory>::filled(),
                  Archived<vxClassifierTrainParamsKNN>::filled());
    vxClassifierTool bayesian;
    bayesian.train(Archived<vx_ClassifierBayesian>::data(),
                   Archived<vxClassifierTrainParamsBayesian>::filled());
    vxClassifierTool tree;
    tree.train(*Archived<vx_ClassifierDecisionTree>::trained().decisionTree());
    return {{"empty", {}}, {"trained", trained}, {"bayesian", bayesian}, {"tree", tree}};
  }
  static void use(const vxClassifierTool& tool) {
    const vxFeaturePattern pattern({1.0, 2.0}, {});
    vxClassifierResult result;
    tryAll([&] { return tool.isTrained(); }, [&] { return tool.trainParams(); },
           [&] { tool.run(pattern, result); },
           [&] {
             vxClassifierTool copy(tool);
             copy.retrain(*copy.trainParams());
             copy.run(pattern, result);
             copy.untrain();
           });
  }
};

#endif  // TESTS_SUPPORT_ARCHIVED_CLASSES_TOOL_H_
