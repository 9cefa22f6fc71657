// SPDX-License-Identifier: MIT
#include "bench/peers/bayes_peer.h"

#ifdef PEERS_HAVE_OPENCV
#include <opencv2/ml.hpp>

#include "bench/peers/opencv_matrix.h"
#endif

namespace peers {

#ifdef PEERS_HAVE_OPENCV

namespace {

class OpenCvBayes : public BayesPeer {
 public:
  OpenCvBayes(const Rows& rows, const Rows& queries, std::size_t numCategories)
      : rows_(matrixOf(rows)), labels_(labelsOf(rows, numCategories)), queries_(matrixOf(queries)) {
    train();
  }

  void train() override {
    bayes_ = cv::ml::NormalBayesClassifier::create();
    bayes_->train(rows_, cv::ml::ROW_SAMPLE, labels_);
  }

  long predict(std::size_t query) override {
    return std::lround(bayes_->predict(queries_.row(static_cast<int>(query))));
  }

 private:
  cv::Mat rows_;
  cv::Mat labels_;
  cv::Mat queries_;
  cv::Ptr<cv::ml::NormalBayesClassifier> bayes_;
};

}  // namespace

BayesPeerPtr makeOpenCvBayes(const Rows& rows, const Rows& queries, std::size_t numCategories) {
  return std::make_unique<OpenCvBayes>(rows, queries, numCategories);
}

#else

BayesPeerPtr makeOpenCvBayes(const Rows&, const Rows&, std::size_t) { return nullptr; }

#endif

}  // namespace peers
