// SPDX-License-Identifier: MIT
#include "batch.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <set>
#include <utility>

#include "arrays.h"
#include "row_work.h"

namespace vxpy {
namespace {

/// Which column a label has.
class Columns {
 public:
  explicit Columns(const std::vector<long>& categories) : categories_(categories) {
    if (categories.empty() || categories.front() < 0) return;
    const auto end = static_cast<std::size_t>(categories.back()) + 1;
    if (end > kLargestTable + 4 * categories.size()) return;
    table_.assign(end, -1);
    for (std::size_t i = 0; i < categories.size(); ++i) {
      table_[static_cast<std::size_t>(categories[i])] = static_cast<std::ptrdiff_t>(i);
    }
  }

  std::ptrdiff_t of(long label) const {
    const auto place = static_cast<std::size_t>(label);
    if (place < table_.size()) return table_[place];
    const auto found = std::lower_bound(categories_.begin(), categories_.end(), label);
    return found != categories_.end() && *found == label ? found - categories_.begin() : -1;
  }

 private:
  static constexpr std::size_t kLargestTable = 4096;

  const std::vector<long>& categories_;
  std::vector<std::ptrdiff_t> table_;
};

/// Where the answers go, those that are wanted; matrices of one column a category.
struct Answers {
  std::int64_t* labels = nullptr;
  double* factors = nullptr;
  double* classScores = nullptr;
  double* matchScores = nullptr;
  double* expectedCosts = nullptr;

  void put(std::ptrdiff_t row, const vxClassifierResult& result, const Columns& columns,
           std::ptrdiff_t width) const {
    const std::vector<vxClassifierCategoryResult>& categories = result.categoryResults();
    if (labels != nullptr) {
      labels[row] = categories.empty() ? -1 : categories.front().categoryLabel();
    }
    if (factors != nullptr) factors[row] = result.matchScoreFactorLog();
    if (classScores == nullptr) return;
    const std::ptrdiff_t first = row * width;
    std::fill_n(classScores + first, width, 0.0);
    if (matchScores == nullptr) {
      for (const vxClassifierCategoryResult& category : categories) {
        classScores[first + columnOf_(category, columns)] = category.classScore();
      }
      return;
    }
    std::fill_n(matchScores + first, width, 0.0);
    std::fill_n(expectedCosts + first, width, std::numeric_limits<double>::quiet_NaN());
    for (const vxClassifierCategoryResult& category : categories) {
      const std::ptrdiff_t place = first + columnOf_(category, columns);
      classScores[place] = category.classScore();
      matchScores[place] = category.matchScore();
      expectedCosts[place] = category.expectedCost();
    }
  }

 private:
  static std::ptrdiff_t columnOf_(const vxClassifierCategoryResult& category,
                                  const Columns& columns) {
    const std::ptrdiff_t column = columns.of(category.categoryLabel());
    if (column < 0) throw vxBadPointer();
    return column;
  }
};

/// Throws BadFeatures for rows of a width that the classifier was not trained on. One by one, a
/// technique may take them, but a whole table of another width is a mistake.
void checkWidth(const BatchRunner& runner, const Rows& rows) {
  const auto width = static_cast<long>(rows.width());
  if (runner.leastWidth <= width && width <= runner.mostWidth) return;
  throw vxClassifierDefs::BadFeatures(
      L"X has " + vfStr(width) + L" measurements a row; the classifier was trained on " +
      vfStr(width < runner.leastWidth ? runner.leastWidth : runner.mostWidth));
}

void fill(const BatchRunner& runner, const Rows& rows, int threads, const Answers& answers) {
  const Columns columns(runner.categories);
  const auto width = static_cast<std::ptrdiff_t>(runner.categories.size());
  const vx_Classifier& classifier = *runner.classifier;
  forEachRow(rows.size(), threads, runner.slowness, [&]() -> RowWork {
    // A RowWork is copied, what it keeps is not.
    const auto maker = std::make_shared<PatternMaker>(rows.width());
    const auto result = std::make_shared<vxClassifierResult>();
    return [&, maker, result](std::ptrdiff_t row) {
      rows.read(row, maker->values());
      classifier.run(maker->make(), *result);
      answers.put(row, *result, columns, width);
    };
  });
}

void describe(const vx_ClassifierKNN& knn, BatchRunner& runner, std::set<long>& labels) {
  const vxPtrHandle_const<vxClassifierDataProviderMemory> data = knn.data();
  long last = -1;
  for (long i = 0; i < data->numPatterns(); ++i) {
    const long label = data->categoryLabel(i);
    if (label != last) labels.insert(label);
    last = label;
  }
  runner.leastWidth = runner.mostWidth = data->numMeasurements();
}

void describe(const vx_ClassifierBayesian& bayes, BatchRunner& runner, std::set<long>& labels) {
  labels.insert(bayes.categoryLabels().begin(), bayes.categoryLabels().end());
  runner.leastWidth = std::numeric_limits<long>::max();
  for (const vxPtrHandle_const<vx_CategoryModel>& model : bayes.categoryModels()) {
    runner.leastWidth = std::min(runner.leastWidth, model->numMeasurements());
    runner.mostWidth = std::max(runner.mostWidth, model->numMeasurements());
  }
}

}  // namespace

BatchRunner runnerOf(const vxPtrHandle_const<vx_Classifier>& classifier, Slowness& slowness) {
  if (!classifier->isTrained()) {
    vxClassifierResult result;
    classifier->run(vxFeaturePattern({}, {}), result);  // throws NotTrained
  }
  BatchRunner runner;
  runner.classifier = classifier;
  runner.slowness = &slowness;
  std::set<long> labels;
  if (const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(classifier.get())) {
    describe(*knn, runner, labels);
  } else if (const auto* bayes = dynamic_cast<const vx_ClassifierBayesian*>(classifier.get())) {
    describe(*bayes, runner, labels);
  } else if (const auto* tree = dynamic_cast<const vx_ClassifierDecisionTree*>(classifier.get())) {
    const std::vector<long> all = tree->decisionTree()->categoryLabels();
    labels.insert(all.begin(), all.end());
    runner.mostWidth = std::numeric_limits<long>::max();
  } else {
    throw vxClassifierDefs::NotImplemented(L"Batches of a technique of the host's own");
  }
  runner.categories.assign(labels.begin(), labels.end());
  return runner;
}

py::object runBatch(const BatchRunner& runner, const py::object& X, const py::object& jobs) {
  const Rows rows(X, "X");
  checkWidth(runner, rows);
  const int threads = threadsOf(jobs);
  const auto width = static_cast<py::ssize_t>(runner.categories.size());
  py::array_t<std::int64_t> labels(rows.size());
  py::array_t<double> factors(rows.size());
  py::array_t<double> classScores({rows.size(), width});
  py::array_t<double> matchScores({rows.size(), width});
  py::array_t<double> expectedCosts({rows.size(), width});
  Answers answers;
  answers.labels = labels.mutable_data();
  answers.factors = factors.mutable_data();
  answers.classScores = classScores.mutable_data();
  answers.matchScores = matchScores.mutable_data();
  answers.expectedCosts = expectedCosts.mutable_data();
  fill(runner, rows, threads, answers);
  return py::module_::import("vxclss._batch")
      .attr("BatchResult")(labels, arrayOf(runner.categories), classScores, matchScores,
                           expectedCosts, factors);
}

py::object decideBatch(const BatchRunner& runner, const py::object& X, const py::object& jobs) {
  const Rows rows(X, "X");
  checkWidth(runner, rows);
  py::array_t<std::int64_t> labels(rows.size());
  Answers answers;
  answers.labels = labels.mutable_data();
  fill(runner, rows, threadsOf(jobs), answers);
  return std::move(labels);
}

py::object scoreBatch(const BatchRunner& runner, const py::object& X, const py::object& jobs) {
  const Rows rows(X, "X");
  checkWidth(runner, rows);
  py::array_t<double> classScores(
      {rows.size(), static_cast<py::ssize_t>(runner.categories.size())});
  Answers answers;
  answers.classScores = classScores.mutable_data();
  fill(runner, rows, threadsOf(jobs), answers);
  return std::move(classScores);
}

}  // namespace vxpy
