// SPDX-License-Identifier: MIT
// What surprises hosts, each with its way out; docs/traps.md tells why.
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <cmath>
#include <exception>
#include <iostream>
#include <limits>
#include <sstream>
#include <vector>

vxPtrHandle_const<vxFeaturePattern> vfPart(double size) {
  return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({size}, {}));
}

// Sizes 1, 2 and 3 of category 0; 7, 8 and 9 of category 1.
vxClassifierDataProviderMemory vfParts() {
  vxClassifierDataProviderMemory data;
  for (const double size : {1.0, 2.0, 3.0}) data.addData(vfPart(size), 0);
  for (const double size : {7.0, 8.0, 9.0}) data.addData(vfPart(size), 1);
  return data;
}

vxClassifierTrainParamsBayesian vfBayes() {
  return {vxClassifierDistributionTypes(), vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
          vxFeaturePattern({}, {})};
}

vxClassifierResult vfRun(const vxClassifierTool& tool, double size) {
  vxClassifierResult result;
  tool.run(*vfPart(size), result);
  return result;
}

const char* vfYesNo(bool value) { return value ? "yes" : "no"; }

void vfReadyFlag() {
  vxClassifierTrainParamsKNN params(3);
  params.throwIfNotReady(false);
  vxClassifierTool tool;
  tool.train(vfParts(), params);
  std::cout << "checked, says the host: " << vfYesNo(params.throwIfNotReady())
            << ", says the tool: " << vfYesNo(tool.trainParams()->throwIfNotReady()) << "\n";
}

void vfLoadedNeighbours() {
  vxClassifierTool trained;
  trained.train(vfParts(), vxClassifierTrainParamsKNN(5));
  std::stringstream file(std::ios::in | std::ios::out | std::ios::binary);
  vxOutputArchive output(file);
  output || trained;
  vxClassifierTool loaded;
  vxInputArchive input(file);
  input || loaded;

  const auto share = [](const vxClassifierTool& tool) {
    return vfRun(tool, 2.0).categoryResults().front().classScore();
  };
  std::cout << "equal: " << vfYesNo(loaded == trained) << ", trained " << share(trained)
            << ", loaded " << share(loaded);
  loaded.retrain(*loaded.trainParams());
  std::cout << ", retrained " << share(loaded) << "\n";
}

void vfSharedTrainingSet() {
  vx_ClassifierKNN classifier;
  classifier.train(vfParts(), vxClassifierTrainParamsKNN(1));
  const vx_ClassifierKNN copy = classifier;
  classifier.trainIncremental(*vfPart(5.0), 2);
  std::cout << "patterns of the copy: " << copy.data()->numPatterns();

  vx_ClassifierKNN ownSet;
  ownSet.train(*classifier.data(), *classifier.trainParams());
  classifier.trainIncremental(*vfPart(6.0), 2);
  std::cout << ", of one trained anew: " << ownSet.data()->numPatterns() << "\n";
}

void vfIncrementalBayes() {
  vx_ClassifierBayesian classifier, same;
  classifier.train(vfParts(), vfBayes());
  same.train(vfParts(), vfBayes());
  classifier.trainIncremental(*vfPart(5.0), 0);
  classifier.trainIncremental(*vfPart(6.0), 2);
  std::cout << "learnt nothing: " << vfYesNo(classifier == same) << "\n";
}

void vfBestMatchScore() {
  vxClassifierTool tool;
  tool.train(vfParts(), vfBayes());
  for (const double size : {2.0, 1000.0}) {
    const vxClassifierResult result = vfRun(tool, size);
    std::cout << "size " << size << ": best match score "
              << result.categoryResults().front().matchScore() << ", misfit "
              << result.matchScoreFactorLog() << "\n";
  }
}

void vfPlaceIsNoLabel() {
  vxClassifierTool tool;
  tool.train(vfParts(), vxClassifierTrainParamsKNN(3));
  const vxClassifierResult result = vfRun(tool, 8.0);
  std::cout << result.categoryResults().size() << " result, of category "
            << result.categoryResults()[0].categoryLabel() << "\n";
}

void vfFrequenciesOfTheData() {
  vxClassifierDataProviderMemory data = vfParts();
  for (int i = 0; i < 30; ++i) {  // ten times as many of category 0, spread as before
    data.addData(vfPart(1.0 + i % 3), 0);
  }
  vxClassifierTool tool;
  const auto share = [&tool] {
    const vxClassifierResult result = vfRun(tool, 4.9);
    const auto& first = result.categoryResults().front();
    return first.categoryLabel() == 0 ? first.classScore() : 1.0 - first.classScore();
  };
  vxClassifierTrainParamsBayesian params = vfBayes();
  tool.train(data, params);
  std::cout << "category 0, of the data: " << share();
  vxClassifierFrequencies frequencies(1.0);
  frequencies.categoryFrequencyOverride(0, 11.0);
  params.categoryFrequencies(frequencies);
  tool.retrain(params);
  std::cout << ", with frequencies: " << share() << "\n";
}

void vfFailedTraining() {
  vxClassifierTool tool;
  tool.train(vfParts(), vfBayes());
  vxClassifierDataProviderMemory tooFew;
  tooFew.addData(vfPart(1.0), 0);
  vxClassifierTool next = tool;
  try {
    next.train(tooFew, vfBayes());
    tool = next;
  } catch (const vxClassifierDefs::InsufficientTrainData&) {
    std::cout << "still trained: " << vfYesNo(next.isTrained())
              << ", the one that was kept: " << vfYesNo(tool.isTrained()) << "\n";
  }
}

void vfSelfAssignment() {
  vxClassifierTool tool;
  tool.train(vfParts(), vfBayes());
  const vxClassifierTool& same = tool;
  tool = same;
  std::cout << "trained after tool = tool: " << vfYesNo(tool.isTrained()) << "\n";
}

void vfNoStdException() {
  try {
    try {
      vfRun(vxClassifierTool(), 1.0);
    } catch (const std::exception&) {
      std::cout << "never here\n";
    }
  } catch (const vxException& error) {
    std::cout << "not a std::exception: 0x" << std::hex << error.errorNumber() << std::dec << "\n";
  }
}

void vfUnflaggedNaN() {
  const double missing = std::numeric_limits<double>::quiet_NaN();
  vxClassifierTool tool;
  tool.train(vfParts(), vfBayes());
  const auto score = [&tool](const vxFeaturePattern& pattern) {
    vxClassifierResult result;
    tool.run(pattern, result);
    return result.categoryResults().front().classScore();
  };
  std::cout << "score is a number, NaN: " << vfYesNo(!std::isnan(score({{missing}, {}})))
            << ", flagged NaN: " << vfYesNo(!std::isnan(score({{missing}, {0}}))) << "\n";
}

void vfHiddenNumber() {
  const vxFeaturePattern pattern({3.0, 4.0}, {1});
  std::cout << "invalid: " << pattern.featureMeasurement(1, false)
            << ", past the end: " << pattern.featureMeasurement(7, false);
  try {
    pattern.featureMeasurement(1, true);
  } catch (const vxClassifierDefs::BadFeatures&) {
    std::cout << ", asked to throw: BadFeatures\n";
  }
}

void vfDefaultOverride() {
  using Types = vxClassifierDistributionTypes;
  Types types(Types::eNormal);
  types.distributionTypeOverride(0, 2, Types::eBinomial);
  types.distributionTypeOverride(0, 2, Types::eNormal);
  std::cout << "normal again: " << vfYesNo(types.distributionType(0, 2) == Types::eNormal);
  types.clearDistributionOverrides();
  std::cout << ", cleared: " << vfYesNo(types.distributionType(0, 2) == Types::eNormal) << "\n";
}

void vfOrderedCosts() {
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(/*trueLabel=*/1, /*assignedLabel=*/0, 20.0);
  std::cout << "1 taken for 0: " << costs.misclassificationCost(1, 0)
            << ", 0 taken for 1: " << costs.misclassificationCost(0, 1) << "\n";
}

void vfInvalidInATree() {
  const vxFeaturePattern unmeasured({5.0, 0.0}, {1});
  std::cout << "0 above 1: " << vfYesNo(vxComparisonPredicate(0, 1).outcome(unmeasured))
            << ", 1 above 0: " << vfYesNo(vxComparisonPredicate(1, 0).outcome(unmeasured))
            << ", both valid: " << vfYesNo(vxValidityPredicate({0, 1}).outcome(unmeasured)) << "\n";
}

void vfFirstRule() {
  using Score = vxClassifierFeatureScoreOneSided;  // 1 at 0, falling to 0 at 1
  vxClassifierRule loose, strict;
  loose.init({vxPtrHandle<vxClsFtSc>(new vxClassifierFeatureScoreIgnore)}, 0);
  strict.init({vxPtrHandle<vxClsFtSc>(new Score)}, 1);
  vxClassifierRuleTable looseFirst, strictFirst;
  looseFirst.train({loose, strict});
  strictFirst.train({strict, loose});
  const vxClassifierFeatureVector half({0.5}), whole({0.0});
  std::cout << "loose first: " << looseFirst.classifyHardThreshold(whole, 0.5)
            << ", strict first: " << strictFirst.classifyHardThreshold(whole, 0.5)
            << ", a score at the threshold: " << strictFirst.classifyHardThreshold(half, 0.5)
            << "\n";
}

void vfOneSeed() {
  const auto bolts = vx_ClassDataGenerator({{10.0, 1.0}}, 2).generateData();
  const auto pins = vx_ClassDataGenerator({{20.0, 1.0}}, 2).generateData();
  for (long i = 0; i < 2; ++i) {
    std::cout << (i == 0 ? "" : ", ") << bolts.featurePattern(i)->featureMeasurement(0, true)
              << " and " << pins.featurePattern(i)->featureMeasurement(0, true);
  }
  std::cout << "\n";
}

int main() try {
  vfReadyFlag();
  vfLoadedNeighbours();
  vfSharedTrainingSet();
  vfIncrementalBayes();
  vfBestMatchScore();
  vfPlaceIsNoLabel();
  vfFrequenciesOfTheData();
  vfFailedTraining();
  vfSelfAssignment();
  vfNoStdException();
  vfUnflaggedNaN();
  vfHiddenNumber();
  vfDefaultOverride();
  vfOrderedCosts();
  vfInvalidInATree();
  vfFirstRule();
  vfOneSeed();
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
