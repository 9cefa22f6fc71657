// SPDX-License-Identifier: MIT
#include "bench/peers/cases.h"

#ifdef PEERS_HAVE_OPENCV
#include <fmt/format.h>
#include <vxclss/vxclss.h>

#include <cmath>
#include <limits>
#include <opencv2/ml.hpp>
#include <vector>

#include "bench/peers/data.h"
#include "bench/peers/opencv_matrix.h"
#endif

namespace peers {

#ifdef PEERS_HAVE_OPENCV

namespace {

constexpr std::size_t kWays = 1024;
constexpr std::size_t kD = 16;

using Tree = vxPtrHandle_const<vxDecisionTree>;
using Nodes = std::vector<cv::ml::DTrees::Node>;
using Splits = std::vector<cv::ml::DTrees::Split>;

/// Measurements that float32 holds too, so that both libraries walk the same way.
Rows floatRows(std::size_t n, long seed) {
  Rows rows = makeRows(Kind::kUniform, n, kD, seed);
  for (double& x : rows.values) x = static_cast<double>(static_cast<float>(x));
  return rows;
}

/// The category of a row: where a weighted sum of its measurements lies.
int categoryOf(const double* row) {
  constexpr double kPerUnit = 4.0;
  double sum = 0.0;
  for (std::size_t j = 0; j < kD; ++j) sum += std::cos(static_cast<double>(j)) * row[j];
  return static_cast<int>(std::floor(kPerUnit * (sum + static_cast<double>(kD))));
}

/// A tree of up to `depth` questions. No question splits a weighted sum, so it takes many.
cv::Ptr<cv::ml::DTrees> trainedTree(std::size_t depth) {
  const Rows rows = floatRows(20000, /*seed=*/1);
  cv::Mat labels(static_cast<int>(rows.n), 1, CV_32S);
  for (int i = 0; i < labels.rows; ++i) {
    labels.at<int>(i) = categoryOf(rows.row(static_cast<std::size_t>(i)));
  }
  const cv::Ptr<cv::ml::DTrees> tree = cv::ml::DTrees::create();
  tree->setMaxDepth(static_cast<int>(depth));
  tree->setMinSampleCount(2);
  tree->setCVFolds(0);
  tree->setUseSurrogates(false);
  tree->train(matrixOf(rows), cv::ml::ROW_SAMPLE, labels);
  return tree;
}

const cv::ml::DTrees::Split& splitOf(const Nodes& nodes, const Splits& splits, int node) {
  return splits.at(static_cast<std::size_t>(nodes.at(static_cast<std::size_t>(node)).split));
}

bool isLeft(const cv::ml::DTrees::Split& split, const double* row) {
  return (row[split.varIdx] <= static_cast<double>(split.c)) != split.inversed;
}

std::size_t lengthOfWay(const Nodes& nodes, const Splits& splits, const double* row) {
  std::size_t length = 0;
  for (int node = 0; nodes[static_cast<std::size_t>(node)].split >= 0; ++length) {
    const auto& at = nodes[static_cast<std::size_t>(node)];
    node = isLeft(splitOf(nodes, splits, node), row) ? at.left : at.right;
  }
  return length;
}

/// The same tree of this library's.
Tree treeFrom(const Nodes& nodes, const Splits& splits, int index) {
  const cv::ml::DTrees::Node& node = nodes.at(static_cast<std::size_t>(index));
  if (node.split < 0) {
    return Tree(new vxDecisionTreeLeaf(
        vxClassifierResult({{std::lround(node.value), 1.0, 1.0, 0.0}}, 0.0)));
  }
  const cv::ml::DTrees::Split& split = splitOf(nodes, splits, index);
  const vxRange upToThreshold(-std::numeric_limits<double>::max(), static_cast<double>(split.c));
  const Tree left = treeFrom(nodes, splits, node.left);
  const Tree right = treeFrom(nodes, splits, node.right);
  return Tree(new vxDecisionTreeNode(vxRangePredicate(upToThreshold, {split.varIdx}),
                                     split.inversed ? *right : *left,
                                     split.inversed ? *left : *right));
}

/// Rows that `depth` questions lead to a leaf.
Rows queriesOf(const Nodes& nodes, const Splits& splits, std::size_t depth) {
  const Rows candidates = floatRows(100000, /*seed=*/3);
  Rows queries{0, kD, {}};
  for (std::size_t i = 0; i < candidates.n && queries.n < kWays; ++i) {
    if (lengthOfWay(nodes, splits, candidates.row(i)) != depth) continue;
    queries.values.insert(queries.values.end(), candidates.row(i), candidates.row(i) + kD);
    ++queries.n;
  }
  return queries;
}

Times timesOf(std::size_t depth, const Extent& extent, Report& report) {
  const cv::Ptr<cv::ml::DTrees> trained = trainedTree(depth);
  const Nodes& nodes = trained->getNodes();
  const Splits& splits = trained->getSplits();
  const Rows queryRows = queriesOf(nodes, splits, depth);
  const Patterns patterns = patternsOf(queryRows);
  vxClassifierTool tool;
  tool.train(*treeFrom(nodes, splits, trained->getRoots().front()));
  vxClassifierResult result;
  std::vector<cv::Mat> samples;
  for (std::size_t i = 0; i < queryRows.n; ++i) {
    samples.push_back(matrixOf(queryRows).row(static_cast<int>(i)).clone());
    tool.run(*patterns[i], result);
    const bool isRight = result.categoryResults().front().categoryLabel() ==
                         std::lround(trained->predict(samples[i]));
    report.answers("decision trees, vxclss against OpenCV", 1, isRight ? 0 : 1);
    if (!isRight) report.wrong(fmt::format("decision tree of depth {}", depth));
  }
  volatile float label = 0.0F;
  return inTurns({contestant("vxclss",
                             [&, turn = Rotation(patterns.size())]() mutable {
                               tool.run(*patterns[turn.next()], result);
                             }),
                  contestant("OpenCV DTrees",
                             [&, turn = Rotation(patterns.size())]() mutable {
                               label = trained->predict(samples[turn.next()]);
                             })},
                 extent.effort);
}

}  // namespace

void measureTrees(const Extent& extent, Report& report) {
  for (const std::size_t depth : {10, 20}) {
    const Times times = timesOf(depth, extent, report);
    report.times(fmt::format("decision tree, depth {}", depth), times);
    report.figure("decision tree", fmt::format("walk of {} questions, of OpenCV DTrees", depth),
                  times.at("vxclss") / times.at("OpenCV DTrees"), "", atMost(0.7));
  }
  if (!extent.withPlots) return;
  for (const std::size_t depth : {2, 5, 10, 15, 20}) {
    report.point("tree by depth", static_cast<double>(depth), timesOf(depth, extent, report));
  }
}

#else

void measureTrees(const Extent&, Report&) {}

#endif

}  // namespace peers
