// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_EXPECTED_COSTS_H_
#define CLSS_CLASTOOL_CLASTOOL_EXPECTED_COSTS_H_

#include <cstddef>
#include <vector>

#include "lane_adder.h"

class vxClassifierCosts;
class vx_LabelPlaces;

/// The sums behind the expected costs of a result's categories.
class vx_ExpectedCosts {
 public:
  /// Sets sums[i] to the sum over j != i of cost(j, i) * weights[j], added to 0.0 in the order of
  /// j, for `count` categories. Prepares `places` where it looks up overrides.
  void sum(const vxClassifierCosts& costs, vx_LabelPlaces& places, const double* weights,
           std::size_t count, double* sums);

  /// The same for at most vx_LabelPlaces::kFew categories, without taking memory.
  static void sumFew(const vxClassifierCosts& costs, vx_LabelPlaces& places, const double* weights,
                     std::size_t count, double* sums);

 private:
  /// A sum that gets a term of its own in this row; sums are numbered as categories are, then in
  /// the order of special_.
  struct Exception {
    std::size_t row;
    std::size_t lane;
    double term;
    std::size_t next;
  };

  void fillRows_(const vxClassifierCosts& costs, const double* weights, std::size_t count);
  void findExceptions_(const vxClassifierCosts& costs, vx_LabelPlaces& places,
                       const double* weights, std::size_t count);
  void addException_(std::size_t row, std::size_t lane, double term);
  void groupExceptions_();
  void sumTriangle_(std::size_t begin, std::size_t end);
  void sumSpecial_(double* sums);

  vx_LaneAdder adder_ = vx_LaneAdder::forSimd();
  std::vector<std::size_t> rowOf_;  // by category; kNone where it adds nothing
  std::vector<double> terms_;       // by row: the category's weight at the default cost
  std::vector<double> prefixes_;    // sums of the terms before each row, and of all
  std::vector<double> triangle_;    // by row: the sum of all terms but its own
  std::vector<Exception> exceptions_;
  std::size_t numExceptions_ = 0;
  std::vector<std::size_t> firstOfRow_;
  std::vector<std::size_t> firstOfGroup_;
  std::vector<std::size_t> special_;        // categories whose sums have exceptions
  std::vector<std::size_t> specialNumber_;  // by category
};

#endif  // CLSS_CLASTOOL_CLASTOOL_EXPECTED_COSTS_H_
