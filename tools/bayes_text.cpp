// SPDX-License-Identifier: MIT
#include "tools/bayes_text.h"

#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <cmath>
#include <vector>

#include "tools/columns.h"
#include "tools/model_text.h"

namespace cli {
namespace {

std::string number(double value) { return fmt::format("{:.6g}", value); }

/// The names of the group's measurements; one that a damaged file lost is told by its place.
std::vector<std::string> memberNames(const std::vector<long>& group, long dimension,
                                     const Names& names) {
  std::vector<std::string> members;
  for (long i = 0; i < dimension; ++i) {
    const auto place = static_cast<std::size_t>(i);
    members.push_back(place < group.size() ? measurementName(names, group[place])
                                           : fmt::format("member {}", i));
  }
  return members;
}

std::string deviation(double variance) {
  // A variance of -0.0 marks a measurement with fewer than two samples.
  return std::signbit(variance) ? "unknown" : number(std::sqrt(variance));
}

std::string correlation(const vxNMMatrix& covariance, long a, long b) {
  const double scale = std::sqrt(covariance.element(a, a)) * std::sqrt(covariance.element(b, b));
  return scale > 0.0 ? fmt::format("{:.3f}", covariance.element(a, b) / scale) : "-";
}

std::string samples(long count) { return fmt::format("{} sample{}", count, count == 1 ? "" : "s"); }

/// One line, or for a group of several measurements a table with the correlations below the
/// diagonal.
std::string normalText(const vx_PDFMultivariateNormal& density, const std::vector<long>& group,
                       const Names& names) {
  const vxNMMatrix mean = density.mean();
  const vxNMMatrix covariance = density.covariance();
  const long dimension = mean.rows();
  const std::vector<std::string> members = memberNames(group, dimension, names);
  if (dimension == 1) {
    return fmt::format("  {}: normal, mean {}, standard deviation {} ({})\n", members[0],
                       number(mean.element(0, 0)), deviation(covariance.element(0, 0)),
                       samples(density.sampleCount()));
  }
  std::vector<Cells> lines{{"", "mean", "standard deviation"}};
  for (long i = 0; i + 1 < dimension; ++i) lines[0].push_back(fmt::format("({})", i + 1));
  for (long i = 0; i < dimension; ++i) {
    Cells line{fmt::format("({}) {}", i + 1, members[static_cast<std::size_t>(i)]),
               number(mean.element(i, 0)), deviation(covariance.element(i, i))};
    for (long j = 0; j + 1 < dimension; ++j) {
      line.push_back(j < i ? correlation(covariance, i, j) : "");
    }
    lines.push_back(line);
  }
  return fmt::format("  {}: normal, dependent ({}); correlations on the right\n{}",
                     fmt::join(members, ", "), samples(density.sampleCount()),
                     aligned(lines, "    "));
}

std::string densityText(const vx_ProbabilityDensityFunction& density,
                        const std::vector<long>& group, const Names& names) {
  if (const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(&density)) {
    return normalText(*normal, group, names);
  }
  const std::vector<std::string> members =
      memberNames(group, static_cast<long>(group.size()), names);
  if (const auto* binomial = dynamic_cast<const vx_PDFBinomial*>(&density)) {
    return fmt::format("  {}: binomial, {} trials, theta {}, maximum {}\n",
                       fmt::join(members, ", "), binomial->numTrials(), number(binomial->theta()),
                       number(binomial->maximumValue()));
  }
  return fmt::format("  {}: a density of another kind\n", fmt::join(members, ", "));
}

}  // namespace

std::string bayesText(const vx_ClassifierBayesian& classifier,
                      const vxClassifierFrequencies& frequencies, const Names& names) {
  std::string text;
  for (const auto& model : classifier.categoryModels()) {
    const long label = model->categoryLabel();
    text += fmt::format("\ncategory {}: frequency {}\n", categoryName(names, label),
                        number(frequencies.categoryFrequency(label)));
    const auto& bayesian = vfCheckedCast<vx_CategoryModelBayesian>(*model);
    const auto densities = bayesian.densities();
    for (std::size_t k = 0; k < densities.size(); ++k) {
      text += densityText(*densities[k], bayesian.measurementGroups().at(k), names);
    }
  }
  return text;
}

}  // namespace cli
