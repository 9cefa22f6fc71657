// SPDX-License-Identifier: MIT
// The nearest-neighbour search against its definition: one sequence of operations on a classifier
// and on its plain twin, a run at each level of instructions.

#include <cmath>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "fuzz/byte_streams.h"
#include "fuzz/draw.h"
#include "fuzz/outcome_bits.h"
#include "fuzz/target.h"
#include "tests/support/plain_knn.h"
#include "vxclss/vxclss.h"
#include "vxfoundation/archive.h"

namespace {

using fuzz::Draw;
using SharedPattern = vxPtrHandle<vxFeaturePattern>;

class Sequence {
 public:
  Sequence(const std::uint8_t* data, std::size_t size) : draw_(data, size) {
    dimension_ = draw_.rarely(8) ? draw_.below(70) : draw_.below(9);
  }

  void run() {
    train_();
    for (int i = 0; i < 8 && !draw_.isEmpty(); ++i) step_();
    query_();
  }

 private:
  void step_() {
    switch (draw_.below(10)) {
      case 0:
        return train_();
      case 1:
        return trainIncremental_();
      case 2:
        return retrain_();
      case 3:
        return storeAndLoad_();
      case 4:
        return assign_();
      case 5:
        knn_ = vx_ClassifierKNN(knn_);
        return;
      default:
        return query_();
    }
  }

  std::vector<double> measurements_() {
    std::vector<double> values(static_cast<std::size_t>(dimension_));
    for (double& value : values) value = draw_.number();
    return values;
  }

  // A pattern much like `model`: rotated, with some signs changed, moved by a last bit or far away.
  std::vector<double> variant_(const std::vector<double>& model, long number) {
    std::vector<double> values = model;
    for (std::size_t i = 0; i < values.size(); ++i) {
      double& value = values[i];
      value = model[(i + static_cast<std::size_t>(number)) % model.size()];
      if ((number >> (i % 8)) % 2 != 0) value = -value;
    }
    if (values.empty()) return values;
    double& one = values[static_cast<std::size_t>(number) % values.size()];
    if (number % 5 == 1) one = std::nextafter(one, HUGE_VAL);
    if (number % 5 == 2) one += static_cast<double>(number);
    return values;
  }

  void train_() {
    vxClassifierDataProviderMemory provider;
    plain::TrainingSet set;
    shared_.clear();
    const long rows = draw_.below(6);
    const long variants = draw_.rarely(6) ? draw_.below(50) : draw_.below(5);
    for (long row = 0; row < rows; ++row) {
      const std::vector<double> values = measurements_();
      const long label = draw_.rarely(30) ? -1 : draw_.below(40);
      for (long i = 0; i <= variants; ++i) {
        const SharedPattern pattern(
            new vxFeaturePattern(i == 0 ? values : variant_(values, i), {}));
        shared_.push_back(pattern);
        provider.addData(pattern, label == -1 ? -1 : label + i);
        set.patterns.emplace_back(pattern);
        set.labels.push_back(label == -1 ? -1 : label + i);
      }
    }
    const Params params = params_();
    const auto outcome = [](auto&& body) { return fuzz::outcomeBits([&] { return body(), 0L; }); };
    fuzz::demand(outcome([&] { knn_.train(provider, params.knn); }) ==
                     outcome([&] { twin_.train(set, params.twin); }),
                 "training ends as its definition says");
  }

  struct Params {
    vxClassifierTrainParamsKNN knn;
    plain::Knn::Params twin;
  };

  Params params_() {
    static constexpr long kPlaces[] = {1, 1, 2, 3, 5, 8, 25, 2000000000};
    static constexpr double kOrders[] = {2.0, 2.0, 2.0, 1.0, 3.0, 0.5, 4.0, 1e6};
    const long k = kPlaces[draw_.below(8)];
    double order = kOrders[draw_.below(8)];
    if (draw_.rarely(16)) order = std::fabs(draw_.number());
    if (!(order > 0.0)) order = 1.5;
    vxClassifierCosts costs(static_cast<double>(draw_.below(3)));
    for (long i = draw_.below(3); i > 0; --i) {
      costs.misclassificationCostOverride(draw_.below(4), 4 + draw_.below(4), 0.3);
    }
    return {vxClassifierTrainParamsKNN(k, vxPatternDistanceMetricNorm(order), costs),
            {k, plain::norm(order), costs}};
  }

  void trainIncremental_() {
    const vxFeaturePattern pattern(measurements_(), {});
    const long label = draw_.below(5);
    knn_.trainIncremental(pattern, label);
    twin_.trainIncremental(pattern, label);
  }

  void retrain_() {
    const Params params = params_();
    knn_.retrain(params.knn);
    twin_.retrain(params.twin);
  }

  // What is loaded has patterns of its own and runs with the parameters of a new classifier.
  void storeAndLoad_() {
    fuzz::ByteSink sink;
    std::ostream out(&sink);
    vxOutputArchive output(out);
    static_cast<vxArchive&>(output) || static_cast<vxPersistent&>(knn_);
    fuzz::ByteSource source(reinterpret_cast<const std::uint8_t*>(sink.bytes.data()),
                            sink.bytes.size());
    std::istream in(&source);
    vxInputArchive input(in);
    static_cast<vxArchive&>(input) || static_cast<vxPersistent&>(knn_);
    twin_.set = std::make_shared<plain::TrainingSet>(*twin_.set);
    twin_.params = plain::Knn::Params();
    for (long i = 0; i < knn_.data()->numPatterns(); ++i) {
      twin_.set->patterns[static_cast<std::size_t>(i)] = knn_.data()->featurePattern(i);
    }
    shared_.clear();
  }

  // A caller may assign to a pattern that it shares with a classifier.
  void assign_() {
    if (shared_.empty()) return;
    SharedPattern& pattern = shared_[static_cast<std::size_t>(draw_.byte()) * 7 % shared_.size()];
    *pattern =
        vxFeaturePattern(measurements_(), draw_.rarely(8) && dimension_ > 0 ? std::vector<long>{0}
                                                                            : std::vector<long>());
  }

  void query_() {
    std::vector<double> values = measurements_();
    if (!shared_.empty() && draw_.rarely(4)) {
      // Among what is stored, where ties and near ties are.
      values =
          shared_[static_cast<std::size_t>(draw_.byte()) % shared_.size()]->featureMeasurements(
              false);
      values = variant_(values, draw_.below(8));
    }
    const vxFeaturePattern query(values, {});
    const std::string expected = fuzz::runBits(twin_, query);
    fuzz::atEachLevel([&] {
      fuzz::demandSame(fuzz::runBits(knn_, query), expected,
                       "the search finds what its definition finds");
    });
  }

  Draw draw_;
  long dimension_;
  vx_ClassifierKNN knn_;
  plain::Knn twin_;
  std::vector<SharedPattern> shared_;
};

}  // namespace

VX_FUZZ_TARGET(same_neighbours) { Sequence(data, size).run(); }
