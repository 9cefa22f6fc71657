// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_MATRIX_H_
#define VXFOUNDATION_MATRIX_H_

#include <cstddef>
#include <string>
#include <vector>

#include "vxfoundation/exception.h"
#include "vxfoundation/export.h"

class vxArchive;

/// A matrix index outside the matrix, or a size that no matrix can have.
class VXFOUNDATION_EXPORT vxBadMatrix : public vxExceptionWithString {
 public:
  explicit vxBadMatrix(const std::wstring& message = std::wstring());
  long errorNumber() const override;
  void suicideAndRethrow() override;
};

/// A dense matrix of doubles.
///
/// Equality: same shape and every element equal as doubles, so a NaN makes matrices unequal.
class VXFOUNDATION_EXPORT vxNMMatrix {
 public:
  /// 0 x 0.
  vxNMMatrix() = default;

  /// rows x columns, filled with 0. Throws vxBadMatrix for a negative or an overflowing size.
  vxNMMatrix(long rows, long columns);
  vxNMMatrix(const vxNMMatrix&) = default;
  vxNMMatrix(vxNMMatrix&& other) noexcept;  ///< Leaves `other` 0 x 0.
  vxNMMatrix& operator=(const vxNMMatrix& other);
  vxNMMatrix& operator=(vxNMMatrix&& other) noexcept;
  ~vxNMMatrix() = default;

  long rows() const { return rows_; }
  long columns() const { return columns_; }

  /// Reads or writes one element. Throws vxBadMatrix for an index outside the matrix.
  double element(long row, long column) const { return elements_[index_(row, column)]; }
  void element(long row, long column, double value) { elements_[index_(row, column)] = value; }

  bool operator==(const vxNMMatrix& other) const;
  bool operator!=(const vxNMMatrix& other) const { return !(*this == other); }

 private:
  friend VXFOUNDATION_EXPORT vxArchive& operator||(vxArchive& archive, vxNMMatrix& matrix);

  void swap_(vxNMMatrix& other) noexcept;
  std::size_t index_(long row, long column) const;

  long rows_ = 0;
  long columns_ = 0;
  std::vector<double> elements_;  // row-major
};

/// Transfers rows, columns and the elements; a failed load leaves `matrix` as it was.
/// Throws vxArchive::Malformed for a shape that no matrix has.
VXFOUNDATION_EXPORT vxArchive& operator||(vxArchive& archive, vxNMMatrix& matrix);

#endif  // VXFOUNDATION_MATRIX_H_
