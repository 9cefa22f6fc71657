// SPDX-License-Identifier: MIT
#include "bench/peers/neighbour_peer.h"

#ifdef PEERS_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/ml.hpp>

#include "bench/peers/opencv_matrix.h"
#endif

namespace peers {

#ifdef PEERS_HAVE_OPENCV

namespace {

class OpenCv : public NeighbourPeer {
 public:
  OpenCv(const Rows& rows, const Rows& queries)
      : NeighbourPeer("OpenCV brute force", kBruteForce), queries_(matrixOf(queries)) {
    // Rows as labels, which floats hold exactly, so that it tells which ones it found.
    cv::Mat labels(static_cast<int>(rows.n), 1, CV_32F);
    for (int i = 0; i < labels.rows; ++i) labels.at<float>(i) = static_cast<float>(i);
    knn_->setAlgorithmType(cv::ml::KNearest::BRUTE_FORCE);
    knn_->setIsClassifier(true);
    knn_->train(matrixOf(rows), cv::ml::ROW_SAMPLE, labels);
  }

  void search(std::size_t query, std::size_t k) override {
    knn_->findNearest(queries_.row(static_cast<int>(query)), static_cast<int>(k), cv::noArray(),
                      found_);
  }

  std::vector<long> found() const override {
    std::vector<long> indices;
    for (int i = 0; i < found_.cols; ++i) indices.push_back(std::lround(found_.at<float>(0, i)));
    return indices;
  }

 private:
  cv::Mat queries_;
  cv::Ptr<cv::ml::KNearest> knn_ = cv::ml::KNearest::create();
  cv::Mat found_;
};

}  // namespace

NeighbourPeerPtr makeOpenCv(const Rows& rows, const Rows& queries, double order) {
  if (order != 2.0) return nullptr;
  return std::make_unique<OpenCv>(rows, queries);
}

void setUpOpenCv(Report& report) {
  cv::setNumThreads(1);
  report.fact("OpenCV", std::string(CV_VERSION) + ", float32");
}

#else

NeighbourPeerPtr makeOpenCv(const Rows&, const Rows&, double) { return nullptr; }
void setUpOpenCv(Report&) {}

#endif

}  // namespace peers
