// SPDX-License-Identifier: MIT
// Hashes over many results. Those that need nothing but what IEEE 754 fixes are recorded here and
// hold for every build; those that go through the C library's functions hold wherever these give
// the same bits, so they are printed, and run.sh compares the builds.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/simd_levels.h"
#include "tests/support/technique_samples.h"
#include "vxclss/vxclss.h"
#include "vxfoundation/random.h"

namespace {

using Rows = std::vector<std::vector<double>>;

/// Fowler, Noll and Vo's hash FNV-1a of numbers, the same on every machine.
class Bits {
 public:
  void add(std::uint64_t number) {
    for (int shift = 0; shift < 64; shift += 8) {
      hash_ = (hash_ ^ (number >> shift & 0xff)) * 0x100000001b3;
    }
  }
  void add(long number) { add(static_cast<std::uint64_t>(number)); }
  /// Processors differ in the sign of a NaN that they make.
  void add(double number) {
    if (std::isnan(number)) number = std::numeric_limits<double>::quiet_NaN();
    std::uint64_t bits;
    std::memcpy(&bits, &number, sizeof(bits));
    add(bits);
  }
  void add(const std::string& bytes) {
    for (const char byte : bytes) add(std::uint64_t{static_cast<unsigned char>(byte)});
  }
  void add(const vxClassifierResult& result) {
    add(result.matchScoreFactorLog());
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
      add(category.categoryLabel());
      add(category.matchScore());
      add(category.classScore());
      add(category.expectedCost());
    }
  }

  std::string hex() const {
    char digits[17];
    std::snprintf(digits, sizeof(digits), "%08lx%08lx", static_cast<unsigned long>(hash_ >> 32),
                  static_cast<unsigned long>(hash_ & 0xffffffff));
    return digits;
  }

 private:
  std::uint64_t hash_ = 0xcbf29ce484222325;
};

/// Numbers whose mantissas are in full use, or small whole ones, which make ties.
class Numbers {
 public:
  explicit Numbers(long seed, bool isWhole = false) : random_(seed), isWhole_(isWhole) {}

  double next(double low, double high) {
    const double drawn = random_.next(low, high);
    return isWhole_ ? std::floor(drawn) : drawn;
  }
  long label(long count) { return static_cast<long>(random_.next(0.0, double(count))); }
  std::vector<double> row(std::size_t size) {
    std::vector<double> values(size);
    for (double& value : values) value = next(-3.0, 4.0);
    return values;
  }
  Rows rows(std::size_t count, std::size_t size) {
    Rows list(count);
    for (std::vector<double>& values : list) values = row(size);
    return list;
  }

 private:
  vxRandomUniform random_;
  bool isWhole_;
};

void addUniform(Bits& bits) {
  for (const long seed : {0L, 1L, -1L, 7L, 2147483647L, -2147483647L - 1}) {
    vxRandomUniform random(seed);
    for (int i = 0; i < 2000; ++i) bits.add(random.next(0.0, 1.0));
    for (int i = 0; i < 2000; ++i) bits.add(random.next(-3.0, 10.0));
  }
}

void addGaussian(Bits& bits) {
  for (const long seed : {0L, 1L, -1L, 7L, 2147483647L, -2147483647L - 1}) {
    vxRandomGaussian random(seed);
    for (int i = 0; i < 2000; ++i) bits.add(random.next(5.0, 0.3));
  }
}

void addGeneratedData(Bits& bits) {
  std::vector<vx_ClassDataGenerator> generators;
  for (const double mean : {-1.0, 0.1, 2.5}) {
    generators.emplace_back(std::vector<vxPair<double>>(40, {mean, 0.7}), 40);
  }
  vxClassifierDataProviderMemory data = vx_TotalDataGenerator(generators).generateData();
  bits.add(stored(data));
}

/// A training set of `numLabels` categories, or with each pattern's number as its label.
vxClassifierDataProviderMemory trainingSet(Numbers& numbers, std::size_t count, std::size_t size,
                                           long numLabels = 0) {
  vxClassifierDataProviderMemory data;
  for (std::size_t i = 0; i < count; ++i) {
    const long label = numLabels == 0 ? static_cast<long>(i) : numbers.label(numLabels);
    std::vector<double> row = numbers.row(size);
    for (double& value : row) value += static_cast<double>(label % 5) / 4.0;
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(row, {})), label);
  }
  return data;
}

void addNeighbours(Bits& bits, bool isWhole, const std::vector<double>& orders) {
  Numbers numbers(3, isWhole);
  for (const std::size_t size : {1, 4, 13}) {
    for (const long numLabels : {0L, 4L}) {
      const auto data = trainingSet(numbers, 300, size, numLabels);
      for (const double order : orders) {
        vxClassifierTool tool;
        tool.train(data, knnParams(7, order));
        for (int i = 0; i < 100; ++i) {
          vxClassifierResult result;
          tool.run({numbers.row(size), {}}, result);
          bits.add(result);
        }
      }
    }
  }
}
void addNeighboursOfWhole(Bits& bits) { addNeighbours(bits, true, {1.0, 2.0, 3.0}); }
void addNeighboursOfFull(Bits& bits) { addNeighbours(bits, false, {1.0, 2.0, 3.0, 0.5}); }

void addDistances(Bits& bits, const std::vector<double>& orders) {
  Numbers numbers(4);
  for (const double order : orders) {
    const vxPatternDistanceMetricNorm norm(order);
    for (int i = 0; i < 3000; ++i) {
      bits.add(norm.distance({numbers.row(5), {}}, {numbers.row(5), {}}));
    }
  }
}
/// The first power is exact.
void addDistancesOfOrder1(Bits& bits) { addDistances(bits, {1.0}); }
void addDistancesOfOrder2(Bits& bits) { addDistances(bits, {2.0}); }
void addOtherDistances(Bits& bits) { addDistances(bits, {0.5, 2.5, 3.0, 10.0}); }

void addWeightings(Bits& bits) {
  for (const bool isWhole : {true, false}) {
    Numbers numbers(5, isWhole);
    for (long count = 1; count <= 40; ++count) {
      for (int repeat = 0; repeat < 20; ++repeat) {
        std::vector<vxClassifierCategoryResult> matches;
        for (long label = 0; label < count; ++label) {
          matches.emplace_back(2 * label, label == 0 ? 1.0 : numbers.next(0.0, 3.0) / 3.0, 0.0,
                               0.0);
        }
        vxClassifierFrequencies frequencies(numbers.next(1.0, 4.0));
        vxClassifierCosts costs(numbers.next(0.0, 3.0));
        for (long i = 0; i < count; ++i) {
          const long label = numbers.label(2 * count);
          frequencies.categoryFrequencyOverride(label, numbers.next(1.0, 4.0));
          const long other = numbers.label(2 * count);
          if (label == other) continue;
          costs.misclassificationCostOverride(label, other, numbers.next(0.0, 5.0));
        }
        bits.add(vxClassifierResult(matches, frequencies, costs, -2.5));
      }
    }
  }
}

vxClassifierTool trainedBayes(Numbers& numbers) {
  vxClassifierDistributionTypes types;
  types.setDependent(0, {3, 1});
  types.setDependent(2, {0, 3, 4});
  vxClassifierTool tool;
  tool.train(trainingSet(numbers, 200, 6, 4),
             vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0),
                                             vxClassifierCosts(1.0), {{}, {}}));
  return tool;
}

void addBayesModels(Bits& bits) {
  Numbers numbers(6);
  for (int i = 0; i < 10; ++i) {
    vxClassifierTool tool = trainedBayes(numbers);
    bits.add(stored(tool));
  }
}

template <class Check>
void forEachBayesResult(Check check) {
  Numbers numbers(7);
  for (int i = 0; i < 5; ++i) {
    const vxClassifierTool tool = trainedBayes(numbers);
    for (long j = 0; j < 300; ++j) {
      vxClassifierResult result;
      tool.run({numbers.row(6), j % 3 == 0 ? std::vector<long>{j % 6} : std::vector<long>()},
               result);
      check(result);
    }
  }
}
void addBayesRanking(Bits& bits) {
  forEachBayesResult([&bits](const vxClassifierResult& result) {
    for (const auto& category : result.categoryResults()) bits.add(category.categoryLabel());
  });
}
void addBayesResults(Bits& bits) {
  forEachBayesResult([&bits](const vxClassifierResult& result) { bits.add(result); });
}

/// Conversions to a whole number, far out of range too, decide the counts.
void addBinomialCounts(Bits& bits) {
  Numbers numbers(8);
  for (int i = 0; i < 2000; ++i) {
    const double spread = std::ldexp(1.0, -static_cast<int>(numbers.label(30)));
    vx_PDFBinomial density(vxFeaturePattern({1.0}, {}));
    for (int j = 0; j < 2; ++j) {
      density.updateWithData({{{numbers.next(-0.5, 0.5) * spread + 0.25}, {}}});
    }
    bits.add(density.numTrials());
    bits.add(density.theta());
  }
}

void addTrees(Bits& bits) {
  vxClassifierTool tool;
  tool.train(*techniqueTree());
  for (int i = 0; i < 200; ++i) {
    vxClassifierResult result;
    tool.run(techniqueQuery(i), result);
    bits.add(result);
  }
}

vxClassifierRule ruleOf(Numbers& numbers, std::size_t size, long label) {
  std::vector<vxPtrHandle<vxClsFtSc>> methods;
  for (std::size_t i = 0; i < size; ++i) {
    vxClassifierFeatureScoreOneSided score;
    score.init(-3.0, numbers.next(-2.5, 3.5), 4.0, 1.0, 0.25);
    methods.emplace_back(score.clone());
  }
  vxClassifierRule rule;
  rule.init(methods, label);
  return rule;
}
void addFeatureScores(Bits& bits) {
  Numbers numbers(9);
  for (int i = 0; i < 200; ++i) {
    const vxClassifierRule rule = ruleOf(numbers, 1, 0);
    for (int j = 0; j < 10; ++j) bits.add(rule.scoringMethods()[0]->score(numbers.next(-4.0, 5.0)));
  }
}
void addRuleScores(Bits& bits) {
  Numbers numbers(10);
  for (int i = 0; i < 200; ++i) {
    const vxClassifierRule rule = ruleOf(numbers, 5, 0);
    for (int j = 0; j < 10; ++j) bits.add(rule.score(vxClassifierFeatureVector(numbers.row(5))));
  }
}
void addRuleTables(Bits& bits) {
  Numbers numbers(11);
  for (int i = 0; i < 20; ++i) {
    std::vector<vxClassifierRule> rules;
    for (long label = 0; label < 8; ++label) rules.push_back(ruleOf(numbers, 5, label));
    vxClassifierRuleTable table;
    table.train(rules);
    for (int j = 0; j < 50; ++j) {
      bits.add(table.classifyHardThreshold(vxClassifierFeatureVector(numbers.row(5)), 0.3));
    }
  }
}

template <double (*function)(double)>
void addFunction(Bits& bits, double low, double high) {
  Numbers numbers(12);
  for (int i = 0; i < 20000; ++i) bits.add(function(numbers.next(low, high)));
}
void addExp(Bits& bits) { addFunction<std::exp>(bits, -40.0, 40.0); }
void addLog(Bits& bits) { addFunction<std::log>(bits, 0.0, 100.0); }
void addPow(Bits& bits) {
  Numbers numbers(13);
  for (int i = 0; i < 5000; ++i) {
    const double base = numbers.next(0.0, 10.0);
    for (const double order : {2.0, 0.5, 3.0, 1.0 / 3.0}) bits.add(std::pow(base, order));
  }
}

struct Computation {
  const char* name;
  void (*add)(Bits&);
  const char* recorded = "";
};
void PrintTo(const Computation& row, std::ostream* out) { *out << row.name; }
std::string nameOf(const testing::TestParamInfo<Computation>& row) { return row.param.name; }

std::string hashOf(const Computation& computation) {
  Bits bits;
  computation.add(bits);
  return bits.hex();
}

class SameBitsTest : public testing::TestWithParam<Computation> {};

TEST_P(SameBitsTest, AreTheRecordedOnes) {
  atEverySimdLevel([] { EXPECT_EQ(hashOf(GetParam()), GetParam().recorded); });
}

INSTANTIATE_TEST_SUITE_P(
    Arithmetic, SameBitsTest,
    testing::Values(
        Computation{"UniformNumbers", addUniform, "2ff9b70c9c6eba52"},
        Computation{"GaussianNumbers", addGaussian, "72610ecd95f07f95"},
        Computation{"GeneratedData", addGeneratedData, "555cf30555baca0a"},
        Computation{"NeighboursOfWholeNumbers", addNeighboursOfWhole, "0a980bdf2837b55f"},
        Computation{"NeighboursOfFullMantissas", addNeighboursOfFull, "d26420c98c70b99f"},
        Computation{"DistancesOfOrder1", addDistancesOfOrder1, "5fc248e161874443"},
        Computation{"Weightings", addWeightings, "f079c24e0f63dc77"},
        Computation{"BayesModels", addBayesModels, "cc067858ff37f11e"},
        Computation{"BayesRanking", addBayesRanking, "98b31d30a0509e45"},
        Computation{"BinomialCounts", addBinomialCounts, "0e7fa49b9bfa68db"},
        Computation{"Trees", addTrees, "986524553e07de25"},
        Computation{"FeatureScores", addFeatureScores, "a56f95317310759f"},
        Computation{"RuleTables", addRuleTables, "ea2ef234e778db95"}),
    nameOf);

class CLibraryBitsTest : public testing::TestWithParam<Computation> {};

TEST_P(CLibraryBitsTest, AreTheSameWithAnyRegisters) {
  vx_simdLimit(vx_Simd::kPlain);
  const std::string plain = hashOf(GetParam());
  std::cout << "[   BITS   ] " << GetParam().name << ' ' << plain << '\n';
  atEverySimdLevel([&plain] { EXPECT_EQ(hashOf(GetParam()), plain); });
}

INSTANTIATE_TEST_SUITE_P(Functions, CLibraryBitsTest,
                         testing::Values(Computation{"exp", addExp}, Computation{"log", addLog},
                                         Computation{"pow", addPow},
                                         Computation{"DistancesOfOrder2", addDistancesOfOrder2},
                                         Computation{"OtherDistances", addOtherDistances},
                                         Computation{"BayesResults", addBayesResults},
                                         Computation{"RuleScores", addRuleScores}),
                         nameOf);

}  // namespace
