// SPDX-License-Identifier: MIT
#include "vxfoundation/matrix.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "tests/support/archive_helpers.h"
#include "tests/support/error_matcher.h"
#include "tests/support/numbers.h"
#include "vxfoundation/archive.h"

namespace {

constexpr long kMostLong = std::numeric_limits<long>::max();

/// 2 x 3, the element (r, c) being 10 r + c.
vxNMMatrix counted() {
  vxNMMatrix matrix(2, 3);
  for (long row = 0; row < 2; ++row) {
    for (long column = 0; column < 3; ++column) {
      matrix.element(row, column, static_cast<double>(10 * row + column));
    }
  }
  return matrix;
}

TEST(NMMatrixTest, IsEmptyByDefault) {
  const vxNMMatrix matrix;
  EXPECT_EQ(matrix.rows(), 0);
  EXPECT_EQ(matrix.columns(), 0);
  EXPECT_TRUE(matrix == vxNMMatrix(0, 0));
}

TEST(NMMatrixTest, IsFilledWithZeros) {
  const vxNMMatrix matrix(2, 3);
  EXPECT_EQ(matrix.rows(), 2);
  EXPECT_EQ(matrix.columns(), 3);
  for (long row = 0; row < 2; ++row) {
    for (long column = 0; column < 3; ++column) EXPECT_EQ(matrix.element(row, column), 0.0);
  }
}

TEST(NMMatrixTest, KeepsEveryElementApart) {
  const vxNMMatrix matrix = counted();
  for (long row = 0; row < 2; ++row) {
    for (long column = 0; column < 3; ++column) {
      EXPECT_EQ(matrix.element(row, column), static_cast<double>(10 * row + column));
    }
  }
}

TEST(NMMatrixTest, RefusesAnIndexOutside) {
  vxNMMatrix matrix = counted();
  const vxNMMatrix before(matrix);
  const std::pair<long, long> outside[] = {{-1, 0}, {0, -1}, {2, 0},         {0, 3},
                                           {1, 3},  {-1, 3}, {kMostLong, 0}, {0, kMostLong}};
  for (const auto& [row, column] : outside) {
    EXPECT_THROW(matrix.element(row, column), vxBadMatrix) << row << ", " << column;
    EXPECT_THROW(matrix.element(row, column, 1.0), vxBadMatrix) << row << ", " << column;
  }
  EXPECT_TRUE(matrix == before);
  EXPECT_THROW(vxNMMatrix().element(0, 0), vxException);
  EXPECT_THROW(vxNMMatrix(3, 0).element(0, 0), vxException);
}

TEST(NMMatrixTest, RefusesANegativeOrAnOverflowingSize) {
  EXPECT_THROW(vxNMMatrix(-1, 0), vxBadMatrix);
  EXPECT_THROW(vxNMMatrix(0, -1), vxBadMatrix);
  EXPECT_THROW(vxNMMatrix(-1, -1), vxBadMatrix);
  EXPECT_THROW(vxNMMatrix(kMostLong, kMostLong), vxBadMatrix);
  EXPECT_THROW(vxNMMatrix(kMostLong, 2), vxBadMatrix);
  // The products of these wrap around to 0.
  const long half = static_cast<long>(1UL << (sizeof(long) * 4));
  EXPECT_THROW(vxNMMatrix(half, half), vxBadMatrix);
}

TEST(NMMatrixTest, ComparesShapeAndEveryElement) {
  vxNMMatrix other = counted();
  EXPECT_TRUE(counted() == other);
  EXPECT_FALSE(counted() != other);
  other.element(1, 2, 12.5);
  EXPECT_FALSE(counted() == other);
  EXPECT_TRUE(counted() != other);
  EXPECT_FALSE(vxNMMatrix(2, 3) == vxNMMatrix(3, 2));
  EXPECT_FALSE(vxNMMatrix(0, 2) == vxNMMatrix(0, 3));
  EXPECT_FALSE(vxNMMatrix(0, 2) == vxNMMatrix(2, 0));
}

TEST(NMMatrixTest, ComparesElementsAsDoubles) {
  vxNMMatrix zero(1, 1);
  vxNMMatrix other(1, 1);
  other.element(0, 0, -0.0);
  EXPECT_TRUE(zero == other);
  other.element(0, 0, kNaN);
  EXPECT_FALSE(other == vxNMMatrix(other));
}

TEST(NMMatrixTest, CopiesItsElements) {
  vxNMMatrix matrix = counted();
  vxNMMatrix copy(matrix);
  copy.element(0, 0, 99.0);
  EXPECT_TRUE(matrix == counted());
  matrix = copy;
  EXPECT_EQ(matrix.element(0, 0), 99.0);
}

TEST(NMMatrixTest, IsWholeAfterBeingMovedFrom) {
  vxNMMatrix source = counted();
  const vxNMMatrix target(std::move(source));
  EXPECT_TRUE(target == counted());
  EXPECT_TRUE(source == counted() || source == vxNMMatrix(0, 0));

  vxNMMatrix assigned;
  source = counted();
  assigned = std::move(source);
  EXPECT_TRUE(assigned == counted());
  EXPECT_TRUE(source == counted() || source == vxNMMatrix(0, 0));
}

TEST(NMMatrixTest, IsArchivedAsRowsColumnsAndElementsByRow) {
  vxNMMatrix matrix(1, 2);
  matrix.element(0, 0, 1.0);
  matrix.element(0, 1, -2.0);
  EXPECT_EQ(storedHex(matrix), packedHex("01000000 02000000 000000000000f03f 00000000000000c0"));
  EXPECT_TRUE(loaded<vxNMMatrix>(stored(matrix)) == matrix);
  EXPECT_TRUE(loaded<vxNMMatrix>(stored(counted())) == counted());
}

TEST(NMMatrixTest, KeepsTheShapeOfAMatrixWithoutElementsInAnArchive) {
  EXPECT_TRUE(loaded<vxNMMatrix>(stored(vxNMMatrix(4, 0))) == vxNMMatrix(4, 0));
  EXPECT_TRUE(loaded<vxNMMatrix>(stored(vxNMMatrix())) == vxNMMatrix());
}

TEST(NMMatrixTest, StaysAsItWasAfterALoadThatFails) {
  const char* const rows[] = {
      "ffffffff 01000000",                                  // -1 x 1
      "01000000 ffffffff",                                  // 1 x -1
      "00000080 00000080",                                  // the most negative size
      "ffffff7f ffffff7f 0000000000000000",                 // an impossible size
      "02000000 01000000 0000000000000000 00000000000000",  // a byte short
      "01000000",
  };
  for (const char* row : rows) {
    vxNMMatrix target = counted();
    EXPECT_THROW(load(fromHex(row), target), vxArchive::Malformed) << row;
    EXPECT_TRUE(target == counted()) << row;
  }
}

}  // namespace
