// SPDX-License-Identifier: MIT
// Each function below evaluates the groups of a category as vx_NormalFactor::logDensity() does, and
// adds their values in order: scoreOne() for one category, the others for one category a lane, the
// constants of eight of them lying side by side. A lane goes through the operations of scoreOne()
// in the same order, so the bits are the same. What is left out is what changes no bit: for a group
// of one, the factor 1 of the diagonal and the sum of squares that begins with 0.
//
// A lane without a category repeats the first one, so that it raises no floating-point exception
// that isn't raised anyway.
#include "bayesian_block.h"

#include <algorithm>

#include "kernel/normal_factor.h"
#include "kernel/simd.h"

#ifdef VX_SIMD_X86
#include <immintrin.h>
#endif

namespace {

using Shape = vx_BayesianBlock::Shape;

constexpr std::size_t kLanes = vx_BayesianBlock::kLanes;

bool isUsed(const vx_BayesianQuery& query, std::size_t measurement) {
  return query.valid == nullptr || query.valid[measurement];
}

// The constants stand `stride` apart.
double scoreOne(const Shape& shape, const double* next, std::size_t stride,
                const vx_BayesianQuery& query, double* z) {
  const double* const x = query.measurements;
  const std::size_t* member = shape.members.data();
  double score = 0.0;
  for (const std::size_t size : shape.sizes) {
    if (size == 1) {
      const std::size_t single = *member++;
      if (isUsed(query, single)) {
        const double deviation = (x[single] - next[0]) * next[stride];
        score += next[2 * stride] - 0.5 * (deviation * deviation);
      }
      next += 3 * stride;
      continue;
    }
    for (std::size_t i = 0; i < size; ++i, next += 2 * stride) {
      z[i] = (x[*member++] - next[0]) * next[stride];
    }
    double square = 0.0;
    for (std::size_t j = 0; j < size; ++j) {
      const double y = z[j] * *next;
      square += y * y;
      next += stride;
      for (std::size_t i = j + 1; i < size; ++i, next += stride) z[i] -= *next * y;
    }
    score += *next - 0.5 * square;
    next += stride;
  }
  return score;
}

#ifdef VX_SIMD_X86

VX_SIMD_AVX2 void scoreFour(const Shape& shape, const double* next, const vx_BayesianQuery& query,
                            double* z, double* scores) {
  const double* const x = query.measurements;
  const std::size_t* member = shape.members.data();
  const __m256d half = _mm256_set1_pd(0.5);
  __m256d score = _mm256_setzero_pd();
  for (const std::size_t size : shape.sizes) {
    if (size == 1) {
      const std::size_t single = *member++;
      if (isUsed(query, single)) {
        const __m256d deviation =
            _mm256_mul_pd(_mm256_sub_pd(_mm256_set1_pd(x[single]), _mm256_load_pd(next)),
                          _mm256_load_pd(next + kLanes));
        const __m256d square = _mm256_mul_pd(deviation, deviation);
        score = _mm256_add_pd(
            score, _mm256_sub_pd(_mm256_load_pd(next + 2 * kLanes), _mm256_mul_pd(half, square)));
      }
      next += 3 * kLanes;
      continue;
    }
    for (std::size_t i = 0; i < size; ++i, next += 2 * kLanes) {
      const __m256d deviation = _mm256_sub_pd(_mm256_set1_pd(x[*member++]), _mm256_load_pd(next));
      _mm256_store_pd(z + 4 * i, _mm256_mul_pd(deviation, _mm256_load_pd(next + kLanes)));
    }
    __m256d square = _mm256_setzero_pd();
    for (std::size_t j = 0; j < size; ++j) {
      const __m256d y = _mm256_mul_pd(_mm256_load_pd(z + 4 * j), _mm256_load_pd(next));
      square = _mm256_add_pd(square, _mm256_mul_pd(y, y));
      next += kLanes;
      for (std::size_t i = j + 1; i < size; ++i, next += kLanes) {
        const __m256d share = _mm256_mul_pd(_mm256_load_pd(next), y);
        _mm256_store_pd(z + 4 * i, _mm256_sub_pd(_mm256_load_pd(z + 4 * i), share));
      }
    }
    score = _mm256_add_pd(score, _mm256_sub_pd(_mm256_load_pd(next), _mm256_mul_pd(half, square)));
    next += kLanes;
  }
  _mm256_storeu_pd(scores, score);
}

VX_SIMD_AVX512 void scoreEight(const Shape& shape, const double* next,
                               const vx_BayesianQuery& query, double* z, double* scores) {
  const double* const x = query.measurements;
  const std::size_t* member = shape.members.data();
  const __m512d half = _mm512_set1_pd(0.5);
  __m512d score = _mm512_setzero_pd();
  for (const std::size_t size : shape.sizes) {
    if (size == 1) {
      const std::size_t single = *member++;
      if (isUsed(query, single)) {
        const __m512d deviation =
            _mm512_mul_pd(_mm512_sub_pd(_mm512_set1_pd(x[single]), _mm512_load_pd(next)),
                          _mm512_load_pd(next + kLanes));
        const __m512d square = _mm512_mul_pd(deviation, deviation);
        score = _mm512_add_pd(
            score, _mm512_sub_pd(_mm512_load_pd(next + 2 * kLanes), _mm512_mul_pd(half, square)));
      }
      next += 3 * kLanes;
      continue;
    }
    for (std::size_t i = 0; i < size; ++i, next += 2 * kLanes) {
      const __m512d deviation = _mm512_sub_pd(_mm512_set1_pd(x[*member++]), _mm512_load_pd(next));
      _mm512_store_pd(z + 8 * i, _mm512_mul_pd(deviation, _mm512_load_pd(next + kLanes)));
    }
    __m512d square = _mm512_setzero_pd();
    for (std::size_t j = 0; j < size; ++j) {
      const __m512d y = _mm512_mul_pd(_mm512_load_pd(z + 8 * j), _mm512_load_pd(next));
      square = _mm512_add_pd(square, _mm512_mul_pd(y, y));
      next += kLanes;
      for (std::size_t i = j + 1; i < size; ++i, next += kLanes) {
        const __m512d share = _mm512_mul_pd(_mm512_load_pd(next), y);
        _mm512_store_pd(z + 8 * i, _mm512_sub_pd(_mm512_load_pd(z + 8 * i), share));
      }
    }
    score = _mm512_add_pd(score, _mm512_sub_pd(_mm512_load_pd(next), _mm512_mul_pd(half, square)));
    next += kLanes;
  }
  _mm512_storeu_pd(scores, score);
}

#endif  // VX_SIMD_X86

}  // namespace

vx_BayesianBlock::vx_BayesianBlock(const Groups& groups,
                                   const std::vector<std::vector<double>>& constants)
    : numCategories_(constants.size()) {
  for (const std::vector<long>& group : groups) {
    shape_.sizes.push_back(group.size());
    shape_.members.insert(shape_.members.end(), group.begin(), group.end());
    largestGroup_ = std::max(largestGroup_, group.size());
  }
  if (numCategories_ == 1) {
    single_ = constants.front();
    return;
  }
  lanes_.resize(constants.front().size());
  for (std::size_t k = 0; k < lanes_.size(); ++k) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      lanes_[k].of[lane] = constants[lane < numCategories_ ? lane : 0][k];
    }
  }
}

// In the order in which they are used: the mean and scale of each member; unless it is alone, each
// column of the triangular factor, its inverse diagonal element first; the constant.
void vx_BayesianBlock::appendConstants(const vx_NormalFactor& factor,
                                       std::vector<double>& constants) {
  const std::size_t d = factor.dimension();
  for (std::size_t i = 0; i < d; ++i) {
    constants.push_back(factor.mean(i));
    constants.push_back(factor.scale(i));
  }
  const double* column = factor.columns();
  for (std::size_t j = 0; j < d && d > 1; ++j) {
    constants.push_back(factor.inverseDiagonal(j));
    constants.insert(constants.end(), column, column + (d - j - 1));
    column += d - j - 1;
  }
  constants.push_back(factor.constant());
}

void vx_BayesianBlock::scores(const vx_BayesianQuery& query, double* room, double* scores) const {
  if (numCategories_ == 1) {
    scores[0] = scoreOne(shape_, single_.data(), 1, query, room);
    return;
  }
  const double* const constants = lanes_.front().of;
#ifdef VX_SIMD_X86
  if (vx_simd() >= vx_Simd::kAvx512 && numCategories_ > 4) {
    scoreEight(shape_, constants, query, room, scores);
    return;
  }
  if (vx_simd() >= vx_Simd::kAvx2) {
    scoreFour(shape_, constants, query, room, scores);
    if (numCategories_ > 4) scoreFour(shape_, constants + 4, query, room, scores + 4);
    return;
  }
#endif
  for (std::size_t lane = 0; lane < numCategories_; ++lane) {
    scores[lane] = scoreOne(shape_, constants + lane, kLanes, query, room);
  }
}
