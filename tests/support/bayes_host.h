// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_BAYES_HOST_H_
#define TESTS_SUPPORT_BAYES_HOST_H_

#include <vector>

#include "vxclss/classifier_bayesian.h"
#include "vxclss/density.h"
#include "vxfoundation/archive.h"

namespace host {

/// A density of a host: answers what one of the library's answers, which nobody else knows it to
/// be, and keeps the patterns that it was given.
template <class Density>
class Wrapped : public vx_ProbabilityDensityFunction {
 public:
  explicit Wrapped(const Density& density) : density_(density) {}

  double logValue(const vxFeaturePattern& pattern) const override {
    seen.push_back(pattern);
    return density_.logValue(pattern);
  }
  bool isEquivalent(const vx_ProbabilityDensityFunction& other) const override {
    const auto* wrapped = dynamic_cast<const Wrapped*>(&other);
    return wrapped != nullptr && density_ == wrapped->density_;
  }
  void updateWithData(const std::vector<vxFeaturePattern>& patterns) override {
    seen.insert(seen.end(), patterns.begin(), patterns.end());
    density_.updateWithData(patterns);
  }
  void clear() override { density_.clear(); }

  static inline std::vector<vxFeaturePattern> seen;

 protected:
  void dispatchSerialize(vxArchive& archive) override { archive || density_; }

 private:
  Density density_;
};

class WrappedNormal : public Wrapped<vx_PDFMultivariateNormal> {
 public:
  explicit WrappedNormal(const vx_PDFMultivariateNormal& density = {}) : Wrapped(density) {}
};

class WrappedBinomial : public Wrapped<vx_PDFBinomial> {
 public:
  explicit WrappedBinomial(const vx_PDFBinomial& density = vx_PDFBinomial(vxFeaturePattern({1.0},
                                                                                           {})))
      : Wrapped(density) {}
};

/// The densities are known to archives while this lives.
class DensityRegistration {
 private:
  vx_Instantiator normal_{typeid(WrappedNormal),
                          [] { return static_cast<vxPersistent*>(new WrappedNormal); }};
  vx_Instantiator binomial_{typeid(WrappedBinomial),
                            [] { return static_cast<vxPersistent*>(new WrappedBinomial); }};
};

/// A classifier of the same content in which every density is a host's.
vx_ClassifierBayesian wrapped(const vx_ClassifierBayesian& classifier);

}  // namespace host

#endif  // TESTS_SUPPORT_BAYES_HOST_H_
