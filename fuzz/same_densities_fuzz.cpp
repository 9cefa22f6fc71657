// SPDX-License-Identifier: MIT
// The Bayesian classifier and its normal densities against their definition: trained with the same
// samples, at each level of instructions, after loading, and after a model was changed behind the
// classifier's back.

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "fuzz/byte_streams.h"
#include "fuzz/draw.h"
#include "fuzz/outcome_bits.h"
#include "fuzz/target.h"
#include "tests/support/plain_bayes.h"
#include "vxclss/vxclss.h"
#include "vxfoundation/archive.h"

namespace {

using fuzz::Draw;

class Comparison {
 public:
  Comparison(const std::uint8_t* data, std::size_t size) : draw_(data, size) {
    dimension_ = 1 + draw_.below(8);
    numCategories_ = 1 + (draw_.rarely(8) ? draw_.below(40) : draw_.below(6));
    setTypes_();
  }

  void run() {
    if (!train_()) return;
    query_();
    query_();
    if (draw_.rarely(4)) storeAndLoad_();
    query_();
    if (draw_.rarely(2)) adapt_();
    query_();
    query_();
  }

 private:
  using Types = vxClassifierDistributionTypes;

  void setTypes_() {
    if (draw_.rarely(2)) return;
    for (long i = draw_.below(6); i > 0; --i) {
      params_.types.setDependent(draw_.below(numCategories_), indices_());
    }
    for (long i = draw_.rarely(4) ? draw_.below(4) : 0; i > 0; --i) {
      try {
        params_.types.distributionTypeOverride(draw_.below(numCategories_), draw_.below(dimension_),
                                               Types::eBinomial);
      } catch (const vxClassifierDefs::BadParams&) {
        // A dependent measurement is normal.
      }
    }
    params_.maxima =
        vxFeaturePattern(std::vector<double>(static_cast<std::size_t>(dimension_), 5.0), {});
    for (long i = draw_.below(3); i > 0; --i) {
      params_.frequencies.categoryFrequencyOverride(draw_.below(numCategories_),
                                                    static_cast<double>(1 + draw_.below(4)));
    }
  }

  std::vector<long> indices_() {
    std::vector<long> indices;
    const long mask = draw_.byte() | 1;
    for (long i = 0; i < dimension_; ++i) {
      if ((mask >> i) % 2 != 0) indices.push_back(i);
    }
    return indices;
  }

  vxFeaturePattern pattern_() {
    std::vector<double> values(static_cast<std::size_t>(dimension_));
    for (double& value : values) value = draw_.number();
    std::vector<long> invalid;
    if (draw_.rarely(5)) invalid = indices_();
    return {values, invalid};
  }

  bool train_() {
    vxClassifierDataProviderMemory provider;
    std::vector<vxFeaturePattern> patterns;
    std::vector<long> labels;
    const long perCategory = 1 + draw_.below(5);
    for (long label = 0; label < numCategories_; ++label) {
      for (long i = 0; i < perCategory; ++i) {
        patterns.push_back(pattern_());
        labels.push_back(label);
        provider.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(patterns.back())),
                         label);
      }
    }
    const vxClassifierTrainParamsBayesian params(params_.types.record(), params_.frequencies,
                                                 params_.costs, params_.maxima);
    std::string expected = fuzz::outcomeBits([&] {
      twin_.train(patterns, labels, params_);
      return 0L;
    });
    const std::string outcome = fuzz::outcomeBits([&] {
      classifier_.train(provider, params);
      return 0L;
    });
    fuzz::demandSame(outcome, expected, "training ends as its definition says");
    return classifier_.isTrained() && outcome.size() == sizeof(long);
  }

  void query_() {
    const vxFeaturePattern pattern = pattern_();
    const std::string expected = fuzz::runBits(twin_, pattern);
    fuzz::atEachLevel([&] {
      fuzz::demandSame(fuzz::runBits(classifier_, pattern), expected,
                       "a run gives what its definition says");
      const auto models = classifier_.categoryModels();
      const std::size_t i = static_cast<std::size_t>(pattern.numMeasurements()) % models.size();
      fuzz::demand(
          fuzz::outcomeBits([&] { return models[i]->matchScore(pattern, nullptr, 0); }) ==
              fuzz::outcomeBits([&] { return plain::Bayes::matchScore(twin_.models[i], pattern); }),
          "a model gives the sum of its densities");
    });
  }

  void storeAndLoad_() {
    fuzz::ByteSink sink;
    std::ostream out(&sink);
    vxOutputArchive output(out);
    static_cast<vxArchive&>(output) || static_cast<vxPersistent&>(classifier_);
    fuzz::ByteSource source(reinterpret_cast<const std::uint8_t*>(sink.bytes.data()),
                            sink.bytes.size());
    std::istream in(&source);
    vxInputArchive input(in);
    static_cast<vxArchive&>(input) || static_cast<vxPersistent&>(classifier_);
    isLoaded_ = true;
  }

  // A copy shares the models, so what changes one of them changes both.
  void adapt_() {
    if (isLoaded_) return;  // an archive does not hold what updates go on from
    const vxFeaturePattern pattern = pattern_();
    const auto number = static_cast<std::size_t>(draw_.below(numCategories_));
    auto& model = const_cast<vx_CategoryModel&>(*classifier_.categoryModels()[number]);
    fuzz::demand(fuzz::outcomeBits([&] { return model.adapt(pattern, nullptr, 0), 0L; }) ==
                     fuzz::outcomeBits([&] {
                       plain::Bayes::adapt(twin_.models[number], pattern);
                       return 0L;
                     }),
                 "an update ends as its definition says");
  }

  Draw draw_;
  long dimension_;
  long numCategories_;
  plain::Bayes::Params params_;
  vx_ClassifierBayesian classifier_;
  plain::Bayes twin_;
  bool isLoaded_ = false;
};

}  // namespace

VX_FUZZ_TARGET(same_densities) { Comparison(data, size).run(); }
