// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PLAIN_RULES_H_
#define TESTS_SUPPORT_PLAIN_RULES_H_

#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "vxclss/feature_score.h"

/// Scores as their definition says them, from bare numbers.
namespace plain {

/// Every bit of a number, so that a NaN equals itself and -0 differs from 0.
inline std::uint64_t bitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof(bits));
  return bits;
}

/// The values of a one-sided function.
struct OneSided {
  double x0 = 0.0;
  double x1 = 1.0;
  double xc = 1.0;
  double y0 = 1.0;
  double y1 = 0.0;

  bool isConsistent() const;
  /// Of a consistent one.
  double score(double x) const;
};

/// What a function of a rule is made of: no side for one that ignores its feature.
struct Function {
  std::vector<OneSided> sides;

  double score(double x) const;
  /// The function itself.
  vxPtrHandle<vxClsFtSc> handle() const;
};

struct Rule {
  std::vector<Function> functions;
  long label = 0;

  double score(const std::vector<double>& values) const;
};

/// The label of the first rule above the threshold, -1 without one.
long classify(const std::vector<Rule>& rules, const std::vector<double>& values, double threshold);

}  // namespace plain

/// A score function of a host.
class HostScore : public vxClsFtSc {
 public:
  using Call = std::function<double(double)>;

  explicit HostScore(Call call) : call_(std::move(call)) {}

  double score(double x) const override { return call_(x); }
  vxClsFtSc* clone() const override { return new HostScore(*this); }
  bool operator==(const vxClsFtSc& other) const override { return this == &other; }

 private:
  Call call_;
};

#endif  // TESTS_SUPPORT_PLAIN_RULES_H_
