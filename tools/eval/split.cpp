// SPDX-License-Identifier: MIT
//
// Stratified cross-validation and hold-out (R. Kohavi, "A study of cross-validation and bootstrap
// for accuracy estimation and model selection", Proceedings of IJCAI 14(2), 1995, 1137-1143). The
// tested share of each category is found by the method of largest remainders.
#include "tools/eval/split.h"

#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace eval {
namespace {

/// Fisher and Yates' shuffle, from the end.
void shuffle(std::vector<std::size_t>& indices, vxRandomUniform& random) {
  for (std::size_t i = indices.size(); i > 1; --i) {
    const double drawn = random.next(0.0, static_cast<double>(i));
    std::swap(indices[i - 1], indices[static_cast<std::size_t>(drawn)]);
  }
}

/// The labelled patterns, category by category, those of one shuffled.
std::vector<std::size_t> shuffledByCategory(const std::vector<long>& labels, long seed) {
  std::vector<std::size_t> members(labels.size());
  std::iota(members.begin(), members.end(), std::size_t{0});
  vxRandomUniform random(seed);
  shuffle(members, random);
  std::stable_sort(members.begin(), members.end(),
                   [&](std::size_t a, std::size_t b) { return labels[a] < labels[b]; });
  members.erase(members.begin(), std::find_if(members.begin(), members.end(),
                                              [&](std::size_t i) { return labels[i] >= 0; }));
  return members;
}

struct Stratum {
  std::size_t first;  // place of its first member
  long size;
  long tested;
  double remainder;  // of what the fraction would have tested
};

std::vector<Stratum> strataOf(const std::vector<std::size_t>& members,
                              const std::vector<long>& labels, double fraction) {
  std::vector<Stratum> strata;
  for (std::size_t i = 0; i < members.size(); ++i) {
    if (i == 0 || labels[members[i]] != labels[members[i - 1]]) strata.push_back({i, 0, 0, 0.0});
    ++strata.back().size;
  }
  for (Stratum& stratum : strata) {
    const double share = fraction * static_cast<double>(stratum.size);
    stratum.tested = static_cast<long>(share);
    stratum.remainder = share - std::floor(share);
  }
  return strata;
}

/// Hands out what rounding down left over, the largest remainder first.
void testOneMoreEach(std::vector<Stratum>& strata, long wanted) {
  std::vector<Stratum*> order;
  for (Stratum& stratum : strata) {
    wanted -= stratum.tested;
    if (stratum.tested + 1 < stratum.size) order.push_back(&stratum);
  }
  std::stable_sort(order.begin(), order.end(),
                   [](const Stratum* a, const Stratum* b) { return a->remainder > b->remainder; });
  for (Stratum* stratum : order) {
    if (wanted-- <= 0) break;
    ++stratum->tested;
  }
}

}  // namespace

long Split::numTested() const {
  return static_cast<long>(roundOf.size()) -
         static_cast<long>(std::count(roundOf.begin(), roundOf.end(), -1L));
}

Split stratifiedFolds(const std::vector<long>& labels, long folds, long seed) {
  if (folds < 2) throw std::invalid_argument("cross-validation needs two folds or more");
  Split split{folds, std::vector<long>(labels.size(), -1)};
  long next = 0;
  for (const std::size_t index : shuffledByCategory(labels, seed)) {
    split.roundOf[index] = next;
    next = (next + 1) % folds;
  }
  return split;
}

Split stratifiedHoldOut(const std::vector<long>& labels, double fraction, long seed) {
  if (!(fraction > 0.0 && fraction < 1.0)) {
    throw std::invalid_argument("the fraction held out lies between 0 and 1");
  }
  const std::vector<std::size_t> members = shuffledByCategory(labels, seed);
  std::vector<Stratum> strata = strataOf(members, labels, fraction);
  testOneMoreEach(strata, std::lround(fraction * static_cast<double>(members.size())));
  Split split{1, std::vector<long>(labels.size(), -1)};
  for (const Stratum& stratum : strata) {
    for (long i = 0; i < stratum.tested; ++i) {
      split.roundOf[members[stratum.first + static_cast<std::size_t>(i)]] = 0;
    }
  }
  return split;
}

vxClassifierDataProviderMemory trainingSet(const Dataset& data, const Split& split, long round) {
  std::vector<PatternHandle> kept;
  std::vector<long> keptLabels;
  for (std::size_t i = 0; i < data.patterns.size(); ++i) {
    if (data.labels[i] < 0 || split.roundOf[i] == round) continue;
    kept.push_back(data.patterns[i]);
    keptLabels.push_back(data.labels[i]);
  }
  vxClassifierDataProviderMemory provider;
  provider.data(kept, keptLabels);
  return provider;
}

}  // namespace eval
