// SPDX-License-Identifier: MIT
#include "bindings.h"

PYBIND11_MODULE(_core, module) {
  module.doc() = "The compiled part of vxclss; import vxclss instead.";
  module.attr("__version__") = VXCLSS_VERSION;
  vxpy::addErrors(module);
  vxpy::addInterrupts(module);
  vxpy::addPatterns(module);
  vxpy::addCosts(module);
  vxpy::addDistributionTypes(module);
  vxpy::addResults(module);
  vxpy::addParams(module);
  vxpy::addTrees(module);
  vxpy::addDensities(module);
  vxpy::addClassifiers(module);
  vxpy::addTool(module);
  vxpy::addRules(module);
  vxpy::addGenerators(module);
  vxpy::addModels(module);
}
