// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_DATA_H_
#define BENCH_PEERS_DATA_H_

#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <cstddef>
#include <string>
#include <vector>

namespace peers {

/// What measurements look like.
enum class Kind {
  kMixture,  ///< five normal distributions that overlap
  kUniform,
  kCounts,    ///< whole numbers from 0 to 255
  kOffset,    ///< 1e4 added
  kOutlier,   ///< one row of 1e6
  kUnits,     ///< measurements in units of 1 to 1e4
  kNearTies,  ///< around each query, at one distance but for rounding
};

std::string nameOf(Kind kind);

/// A matrix, row by row.
struct Rows {
  std::size_t n = 0;
  std::size_t d = 0;
  std::vector<double> values;

  const double* row(std::size_t i) const { return values.data() + i * d; }
  std::vector<double> measurements(std::size_t i) const { return {row(i), row(i) + d}; }
  std::vector<float> floats() const { return {values.begin(), values.end()}; }
};

/// Rows `i` and `i + 5` come from the same one of the five distributions, from which all kinds are
/// made but the uniform one.
Rows makeRows(Kind kind, std::size_t n, std::size_t d, long seed);

constexpr std::size_t kQueries = 64;

/// Queries of this kind, to go round in.
Rows makeQueries(Kind kind, std::size_t d);

/// The category of row i, of `numCategories`.
inline long labelOf(std::size_t i, std::size_t numCategories) {
  return static_cast<long>(i % numCategories);
}

using Patterns = std::vector<vxPtrHandle_const<vxFeaturePattern>>;

Patterns patternsOf(const Rows& rows);

/// The rows, those of the categories in turn.
vxClassifierDataProviderMemory dataOf(const Rows& rows, std::size_t numCategories);

/// Something to go round in, so that no two calls in a row have the same input.
class Rotation {
 public:
  explicit Rotation(std::size_t size) : size_(size) {}
  std::size_t next() {
    if (++at_ >= size_) at_ = 0;
    return at_;
  }

 private:
  std::size_t size_;
  std::size_t at_ = 0;
};

}  // namespace peers

#endif  // BENCH_PEERS_DATA_H_
