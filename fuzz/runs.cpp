// SPDX-License-Identifier: MIT
#include "fuzz/runs.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "fuzz/outcome_bits.h"
#include "fuzz/target.h"
#include "tests/support/archived_classes.h"
#include "tests/support/plain_bayes.h"
#include "tests/support/plain_knn.h"

namespace fuzz {
namespace {

// More measurements than an input of the usual size describes are not worth their time.
constexpr long kMostMeasurements = 600;

/// `answer(pattern)` for both patterns of an object.
template <class Answer>
std::string outcomes(Numbers& numbers, long numMeasurements, Answer&& answer) {
  std::string bits;
  for (const bool withInvalid : {false, true}) {
    const vxFeaturePattern pattern = numbers.pattern(numMeasurements, withInvalid);
    bits += outcomeBits([&] { return answer(pattern); });
  }
  return bits;
}

/// The same of a classifier at each level, which must be what `plainly(pattern)` gives.
template <class Classifier, class Plainly>
std::string checkedRuns(const Classifier& classifier, Numbers& numbers, long numMeasurements,
                        Plainly&& plainly) {
  std::string all;
  for (const bool withInvalid : {false, true}) {
    const vxFeaturePattern pattern = numbers.pattern(numMeasurements, withInvalid);
    const std::string expected = outcomeBits([&] { return plainly(pattern); });
    atEachLevel([&] {
      demandSame(runBits(classifier, pattern), expected, "a run gives what its definition says");
    });
    all += expected;
  }
  return all;
}

/// What a predicate says of a pattern. An index that is negative, as only an archive can bring it,
/// is the pattern's to refuse.
bool plainOutcome(const vxPredicateFunction& predicate, const vxFeaturePattern& pattern) {
  const auto value = [&pattern](long index) { return pattern.featureMeasurement(index, true); };
  const auto isValid = [&pattern](long index) { return pattern.isValid(index); };
  if (const auto* comparison = dynamic_cast<const vxComparisonPredicate*>(&predicate)) {
    const long first = comparison->measurementIndex1();
    const long second = comparison->measurementIndex2();
    return isValid(first) && isValid(second) && value(first) > value(second);
  }
  if (const auto* range = dynamic_cast<const vxRangePredicate*>(&predicate)) {
    const std::vector<long> indices = range->measurementIndices();
    return std::all_of(indices.begin(), indices.end(), [&](long index) {
      return isValid(index) && range->measurementRange().isWithin(value(index));
    });
  }
  const std::vector<long> indices =
      dynamic_cast<const vxValidityPredicate&>(predicate).measurementIndices();
  return std::all_of(indices.begin(), indices.end(), isValid);
}

vxClassifierResult plainWalk(const vxDecisionTree& root, const vxFeaturePattern& pattern) {
  const vxDecisionTree* tree = &root;
  while (const auto* node = dynamic_cast<const vxDecisionTreeNode*>(tree)) {
    const bool outcome = plainOutcome(*node->predicateFunction(), pattern);
    tree = &*(outcome ? node->trueTree() : node->falseTree());
  }
  return dynamic_cast<const vxDecisionTreeLeaf&>(*tree).classifierResult();
}

vxClassifierResult runOf(const vx_Classifier& classifier, const vxFeaturePattern& pattern) {
  vxClassifierResult result;
  classifier.run(pattern, result);
  return result;
}

/// A twin of the classifier, or nothing where only the library's own code applies: without metric
/// or patterns.
std::unique_ptr<plain::Knn> twinOf(const vx_ClassifierKNN& classifier) {
  const auto data = classifier.data();
  const auto metric = classifier.params().distanceMetric();
  const auto* norm = dynamic_cast<const vxPatternDistanceMetricNorm*>(metric.get());
  if (!data || norm == nullptr) return nullptr;
  auto twin = std::make_unique<plain::Knn>();
  twin->params.k = classifier.params().k();
  twin->params.distance = plain::norm(norm->order());
  twin->params.costs = classifier.params().misclassificationCosts();
  twin->set = std::make_shared<plain::TrainingSet>();
  for (long i = 0; i < data->numPatterns(); ++i) {
    twin->set->patterns.push_back(data->featurePattern(i));
    twin->set->labels.push_back(data->categoryLabel(i));
    if (!twin->set->patterns.back()) return nullptr;
  }
  return twin;
}

/// The log-likelihood of a category as its densities give it, one by one.
double plainMatchScore(const vx_CategoryModelBayesian& model, const vxFeaturePattern& pattern) {
  double score = 0.0;
  const auto densities = model.densities();
  try {
    for (std::size_t k = 0; k < densities.size(); ++k) {
      const vx_ProbabilityDensityFunction& density = *densities[k];
      score += density.logValue(plain::Bayes::reduced(pattern, model.measurementGroups()[k]));
    }
  } catch (const vxClassifierDefs::InsufficientTrainData& error) {
    throw vxClassifierDefs::InsufficientTrainData(error.message() + L" for category " +
                                                  std::to_wstring(model.categoryLabel()));
  }
  return score;
}

vxClassifierResult plainBayes(const vx_ClassifierBayesian& classifier,
                              const vxClassifierTrainParamsBayesian& params,
                              const vxFeaturePattern& pattern) {
  const auto models = classifier.categoryModels();
  std::vector<double> scores;
  double best = -HUGE_VAL;
  for (const auto& model : models) {
    scores.push_back(
        plainMatchScore(dynamic_cast<const vx_CategoryModelBayesian&>(*model), pattern));
    if (scores.back() > best) best = scores.back();
  }
  std::vector<vxClassifierCategoryResult> matches;
  for (std::size_t i = 0; i < models.size(); ++i) {
    matches.emplace_back(models[i]->categoryLabel(), std::exp(0.0 - best + scores[i]), 0.0, 0.0);
  }
  return {matches, params.categoryFrequencies(), params.misclassificationCosts(), 0.0 - best};
}

long numMeasurementsOf(const vx_ClassifierBayesian& classifier) {
  long most = 0;
  for (const auto& model : classifier.categoryModels()) {
    if (model) most = std::max(most, model->numMeasurements());
  }
  return std::min(most, kMostMeasurements);
}

}  // namespace

vxFeaturePattern Numbers::pattern(long numMeasurements, bool withInvalid) {
  std::vector<double> values(static_cast<std::size_t>(numMeasurements));
  std::vector<long> invalid;
  for (long i = 0; i < numMeasurements; ++i) {
    values[static_cast<std::size_t>(i)] =
        draw_.isEmpty() ? static_cast<double>(i % 5) : draw_.number();
    if (withInvalid && (draw_.isEmpty() ? i == 1 : draw_.rarely(4))) invalid.push_back(i);
  }
  return {values, invalid};
}

std::string runs(const vx_ClassifierKNN& classifier, Numbers numbers) {
  long count = 2;
  tryAll([&] { count = classifier.data()->numMeasurements(); });  // none if untrained or damaged
  const auto twin = twinOf(classifier);
  if (!twin) {
    return outcomes(numbers, count,
                    [&](const auto& pattern) { return runOf(classifier, pattern); });
  }
  return checkedRuns(classifier, numbers, count, [&](const auto& pattern) {
    vxClassifierResult result;
    twin->run(pattern, result);
    return result;
  });
}

std::string runs(const vx_ClassifierBayesian& classifier, Numbers numbers) {
  const long count = numMeasurementsOf(classifier);
  vxPtrHandle_const<vxClassifierTrainParams> params;
  tryAll([&] { params = classifier.trainParams(); });
  const auto* bayesian = dynamic_cast<const vxClassifierTrainParamsBayesian*>(params.get());
  if (bayesian == nullptr) {
    return outcomes(numbers, count,
                    [&](const auto& pattern) { return runOf(classifier, pattern); });
  }
  return checkedRuns(classifier, numbers, count, [&](const auto& pattern) {
    return plainBayes(classifier, *bayesian, pattern);
  });
}

std::string runs(const vx_ClassifierDecisionTree& classifier, Numbers numbers) {
  if (!classifier.decisionTree()) {
    return outcomes(numbers, 4, [&](const auto& pattern) { return runOf(classifier, pattern); });
  }
  return checkedRuns(classifier, numbers, 4, [&](const auto& pattern) {
    return plainWalk(*classifier.decisionTree(), pattern);
  });
}

std::string runs(const vxClassifierTool& tool, Numbers numbers) {
  const vx_Classifier* classifier = tool.classifier().get();
  if (const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(classifier)) {
    return runs(*knn, numbers);
  }
  if (const auto* bayes = dynamic_cast<const vx_ClassifierBayesian*>(classifier)) {
    return runs(*bayes, numbers);
  }
  if (const auto* tree = dynamic_cast<const vx_ClassifierDecisionTree*>(classifier)) {
    return runs(*tree, numbers);
  }
  return runBits(tool, numbers.pattern(2, false));
}

std::string runs(const vx_CategoryModelBayesian& model, Numbers numbers) {
  const long count = std::min(std::max(model.numMeasurements(), 0L), kMostMeasurements);
  Numbers again = numbers;
  const std::string bits = outcomes(
      numbers, count, [&](const auto& pattern) { return model.matchScore(pattern, nullptr, 0); });
  demand(bits == outcomes(again, count,
                          [&](const auto& pattern) { return plainMatchScore(model, pattern); }),
         "a model gives the sum of its densities");
  return bits;
}

std::string runs(const vx_ProbabilityDensityFunction& density, Numbers numbers) {
  long count = 1;
  if (const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(&density)) {
    tryAll([&] { count = std::max(normal->mean().rows(), 1L); });
  }
  return outcomes(numbers, count, [&](const auto& pattern) { return density.logValue(pattern); });
}

std::string runs(const vxPatternDistanceMetric& metric, Numbers numbers) {
  const vxFeaturePattern other = numbers.pattern(4, false);
  return outcomes(numbers, 4, [&](const auto& pattern) { return metric.distance(pattern, other); });
}

std::string runs(const vxPredicateFunction& predicate, Numbers numbers) {
  Numbers again = numbers;
  const std::string bits = outcomes(numbers, 4, [&](const auto& pattern) {
    return static_cast<long>(predicate.outcome(pattern));
  });
  demand(bits == outcomes(again, 4,
                          [&](const auto& pattern) {
                            return static_cast<long>(plainOutcome(predicate, pattern));
                          }),
         "a predicate says what its definition says");
  return bits;
}

std::string runs(const vxDecisionTree& tree, Numbers numbers) {
  std::string bits;
  tryAll([&] {
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(tree);
    bits = runs(classifier, numbers);
  });
  tryAll([&] {
    for (const long label : tree.categoryLabels()) appendBits(bits, label);
  });
  return bits;
}

std::string runs(const vxClassifierRule& rule, Numbers numbers) {
  const auto count = static_cast<long>(rule.scoringMethods().size());
  return outcomes(numbers, std::min(count, kMostMeasurements), [&](const auto& pattern) {
    return rule.score(vxClassifierFeatureVector(pattern.featureMeasurements(false)));
  });
}

std::string runs(const vxClassifierRuleTable& table, Numbers numbers) {
  const auto& rules = table.rules();
  const long count = rules.empty() ? 1 : static_cast<long>(rules.front().scoringMethods().size());
  return outcomes(numbers, std::min(count, kMostMeasurements), [&](const auto& pattern) {
    const vxClassifierFeatureVector vector(pattern.featureMeasurements(false));
    return table.classifyHardThreshold(vector, 0.5) + table.classifyHardThreshold(vector, 0.0);
  });
}

std::string runs(const vxClsFtSc& score, Numbers numbers) {
  return outcomes(numbers, 1, [&](const auto& pattern) {
    return score.score(pattern.featureMeasurements(false).front());
  });
}

}  // namespace fuzz
