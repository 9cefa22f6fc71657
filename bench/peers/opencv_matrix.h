// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_OPENCV_MATRIX_H_
#define BENCH_PEERS_OPENCV_MATRIX_H_

#include <opencv2/core.hpp>

#include "bench/peers/data.h"

namespace peers {

/// In float32, the only number that OpenCV's classifiers take.
inline cv::Mat matrixOf(const Rows& rows) {
  cv::Mat matrix;
  const cv::Mat doubles(static_cast<int>(rows.n), static_cast<int>(rows.d), CV_64F,
                        const_cast<double*>(rows.values.data()));
  doubles.convertTo(matrix, CV_32F);
  return matrix;
}

/// One column of the categories in turn.
inline cv::Mat labelsOf(const Rows& rows, std::size_t numCategories) {
  cv::Mat labels(static_cast<int>(rows.n), 1, CV_32S);
  for (int i = 0; i < labels.rows; ++i) {
    labels.at<int>(i) = static_cast<int>(labelOf(static_cast<std::size_t>(i), numCategories));
  }
  return labels;
}

}  // namespace peers

#endif  // BENCH_PEERS_OPENCV_MATRIX_H_
