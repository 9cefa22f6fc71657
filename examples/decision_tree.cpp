// SPDX-License-Identifier: MIT
#include <vxclss/vxclss.h>

#include <iostream>

int main() try {
  const vxDecisionTreeLeaf bolt(vxClassifierResult({{0, 1.0, 1.0, 0.0}}, 0.0));
  const vxDecisionTreeLeaf washer(vxClassifierResult({{1, 1.0, 1.0, 0.0}}, 0.0));
  const vxDecisionTreeLeaf unclear(vxClassifierResult({{1, 1, 0.6, 0.4}, {0, 1, 0.4, 0.6}}, 0.0));
  const vxDecisionTreeNode measured(vxComparisonPredicate(0, 1), bolt, washer);  // length > width
  vxClassifierTool tool;
  tool.train(vxDecisionTreeNode(vxValidityPredicate({0, 1}), measured, unclear));
  vxClassifierResult result;
  tool.run(vxFeaturePattern({12.0, 5.0}, {}), result);
  std::cout << "category " << result.categoryResults().front().categoryLabel() << "\n";
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
