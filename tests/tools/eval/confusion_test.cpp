// SPDX-License-Identifier: MIT
#include "tools/eval/confusion.h"

#include <gtest/gtest.h>
#include <vxclss/vxclss.h>

#include <cmath>
#include <vector>

namespace {

using eval::Confusion;

Confusion example() {
  Confusion confusion(4);
  confusion.add(0, 0, 10);
  confusion.add(0, 0, 11);
  confusion.add(0, 2, 12);
  confusion.add(1, 0, 13);
  return confusion;
}

TEST(ConfusionTest, CountsDecisionsAndKeepsWhichTheyWere) {
  const Confusion confusion = example();
  EXPECT_EQ(confusion.count(0, 0), 2);
  EXPECT_EQ(confusion.count(0, 2), 1);
  EXPECT_EQ(confusion.count(1, 0), 1);
  EXPECT_EQ(confusion.count(2, 0), 0);
  EXPECT_EQ(confusion.members(0, 0), (std::vector<std::size_t>{10, 11}));
  EXPECT_EQ(confusion.numOf(0), 3);
  EXPECT_EQ(confusion.numDecided(0), 3);
  EXPECT_EQ(confusion.numPatterns(), 4);
  EXPECT_EQ(confusion.numCorrect(), 2);
}

TEST(ConfusionTest, TellsShares) {
  const Confusion confusion = example();
  EXPECT_EQ(confusion.accuracy(), 0.5);
  EXPECT_EQ(confusion.recall(0), 2.0 / 3.0);
  EXPECT_EQ(confusion.recall(1), 0.0);
  EXPECT_EQ(confusion.precision(0), 2.0 / 3.0);
  EXPECT_EQ(confusion.precision(2), 0.0);
  EXPECT_EQ(confusion.f1(0), 4.0 / 6.0);
  EXPECT_EQ(confusion.f1(1), 0.0);
}

TEST(ConfusionTest, HasNoShareOfNothing) {
  const Confusion confusion = example();
  EXPECT_TRUE(std::isnan(confusion.recall(2)));
  EXPECT_TRUE(std::isnan(confusion.precision(1)));
  EXPECT_TRUE(std::isnan(confusion.f1(3)));
  EXPECT_TRUE(std::isnan(Confusion(2).accuracy()));
}

TEST(ConfusionTest, RefusesLabelsThatItDoesNotKnow) {
  Confusion confusion(2);
  EXPECT_THROW(confusion.add(-1, 0, 0), vxClassifierDefs::BadLabel);
  EXPECT_THROW(confusion.add(2, 0, 0), vxClassifierDefs::BadLabel);
  EXPECT_THROW(confusion.add(0, 2, 0), vxClassifierDefs::BadLabel);
  EXPECT_EQ(confusion.numPatterns(), 0);
}

}  // namespace
