// SPDX-License-Identifier: MIT
#include <vxclss/vxclss.h>

#include <iostream>

int main() try {
  const vxPtrHandle<vxClassifierFeatureScoreTwoSided> area(new vxClassifierFeatureScoreTwoSided);
  area->init(40, 30, 30, 60, 70, 70, 1, 0, 1, 0);  // 1 from 40 to 60, falling to 0 at 30 and 70
  const vxPtrHandle<vxClsFtSc> damage(new vxClassifierFeatureScoreOneSided);  // 1 at 0, 0 at 1
  vxClassifierRule bolt;
  bolt.init({area, damage}, 0);
  vxClassifierRuleTable table;
  table.train({bolt});
  const vxClassifierFeatureVector part({32.5, 0.0});  // scores 0.25 and 1, together 0.5
  std::cout << "category " << table.classifyHardThreshold(part, 0.4) << "\n";
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
