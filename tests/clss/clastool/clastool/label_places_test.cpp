// SPDX-License-Identifier: MIT
#include "clastool/clastool/label_places.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "vxclss/result.h"

namespace {

using Categories = std::vector<vxClassifierCategoryResult>;

constexpr long kLargest = std::numeric_limits<long>::max();

struct Row {
  const char* name;
  std::size_t count;
  long factor;
  bool isShuffled;
};

class LabelPlacesTest : public testing::TestWithParam<Row> {
 protected:
  LabelPlacesTest() {
    const Row& row = GetParam();
    for (std::size_t i = 0; i < row.count; ++i) {
      labels_.push_back(3 + static_cast<long>(i) * row.factor);
    }
    if (row.isShuffled) std::shuffle(labels_.begin(), labels_.end(), std::mt19937(1));
  }

  Categories categories() const {
    Categories list;
    for (const long label : labels_) list.emplace_back(label, 0.0, 0.0, 0.0);
    return list;
  }

  std::vector<long> labels_;
};

TEST_P(LabelPlacesTest, FindsEveryLabelAndNoOther) {
  const Categories given = categories();
  vx_LabelPlaces places;
  ASSERT_TRUE(places.assign(given.data(), given.size()));
  places.prepare();
  for (std::size_t i = 0; i < labels_.size(); ++i) {
    EXPECT_EQ(places.find(labels_[i]), i);
    for (const long other : {labels_[i] - 1, labels_[i] + 1, -labels_[i], labels_[i] + 64}) {
      const auto known = std::find(labels_.begin(), labels_.end(), other);
      const std::size_t place = known == labels_.end()
                                    ? vx_LabelPlaces::kNowhere
                                    : static_cast<std::size_t>(known - labels_.begin());
      EXPECT_EQ(places.find(other), place) << other;
    }
  }
  for (const long other : {-1L, 0L, -kLargest - 1, kLargest}) {
    EXPECT_EQ(places.find(other), vx_LabelPlaces::kNowhere) << other;
  }
}

TEST_P(LabelPlacesTest, TellsWhetherTwoLabelsAreEqual) {
  vx_LabelPlaces places;
  for (std::size_t from = 0; from < labels_.size(); from += 1 + labels_.size() / 9) {
    for (std::size_t to = 0; to < labels_.size(); to += 1 + labels_.size() / 7) {
      Categories given = categories();
      given[to] = given[from];
      EXPECT_EQ(places.assign(given.data(), given.size()), from == to) << from << " as " << to;
    }
  }
}

TEST_P(LabelPlacesTest, ForgetsTheCategoriesBefore) {
  const Categories before = {{7, 0, 0, 0}, {5, 0, 0, 0}};
  const Categories given = categories();
  vx_LabelPlaces places;
  for (const Categories* list : {&before, &given, &before}) {
    ASSERT_TRUE(places.assign(list->data(), list->size()));
    places.prepare();
    EXPECT_EQ(places.find((*list)[1].categoryLabel()), 1u);
    EXPECT_EQ(places.find(3) == vx_LabelPlaces::kNowhere, list == &before);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Labels, LabelPlacesTest,
    testing::Values(Row{"few_ascending", 3, 1, false}, Row{"few_shuffled", 16, 1, true},
                    Row{"few_far_apart", 16, 64, true}, Row{"close_ascending", 17, 1, false},
                    Row{"close_shuffled", 500, 2, true}, Row{"at_the_limit_of_tables", 40, 8, true},
                    Row{"beyond_the_limit_of_tables", 40, 9, true},
                    Row{"far_apart_ascending", 100, 1000003, false},
                    Row{"far_apart_shuffled", 333, 1000003, true}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(LabelPlacesFarApartTest, TakesNoTableAsLongAsTheyLieApart) {
  for (const std::size_t count : {2u, 20u}) {
    Categories given;
    for (std::size_t i = 2; i < count; ++i) given.emplace_back(static_cast<long>(i), 0, 0, 0);
    given.emplace_back(kLargest, 0, 0, 0);
    given.emplace_back(0, 0, 0, 0);
    vx_LabelPlaces places;
    ASSERT_TRUE(places.assign(given.data(), given.size()));
    places.prepare();
    EXPECT_EQ(places.find(kLargest), count - 2);
    EXPECT_EQ(places.find(0), count - 1);
    EXPECT_EQ(places.find(-1), vx_LabelPlaces::kNowhere);
  }
}

TEST(LabelPlacesOfNothingTest, FindsNothing) {
  vx_LabelPlaces places;
  ASSERT_TRUE(places.assign(nullptr, 0));
  places.prepare();
  EXPECT_EQ(places.find(0), vx_LabelPlaces::kNowhere);
}

}  // namespace
