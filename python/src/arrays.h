// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_ARRAYS_H_
#define VXCLSS_PYTHON_ARRAYS_H_

#include <pybind11/numpy.h>

#include <cstddef>
#include <vector>

#include "bindings.h"

namespace vxpy {

/// The rows of a matrix of numbers that Python owns, read where they lie.
///
/// Any layout of native float64, float32, bool and integers is read in place; other kinds of number
/// are converted to a float64 array first. Masked elements and pandas' NA become NaN.
class Rows {
 public:
  /// `what` names the argument in messages. Throws what Python raises for something that has not
  /// two dimensions, or is not made of real numbers.
  Rows(const py::object& matrix, const char* what);

  std::ptrdiff_t size() const { return rows_; }
  std::ptrdiff_t width() const { return columns_; }

  /// Copies row `index` to `values`, of width() elements. Needs no GIL.
  void read(std::ptrdiff_t index, double* values) const {
    read_(base_ + index * rowStride_, columnStride_, columns_, values);
  }

 private:
  using Read = void (*)(const char* row, std::ptrdiff_t stride, std::ptrdiff_t count,
                        double* values);

  py::array array_;  // keeps the elements
  const char* base_ = nullptr;
  std::ptrdiff_t rows_ = 0;
  std::ptrdiff_t columns_ = 0;
  std::ptrdiff_t rowStride_ = 0;
  std::ptrdiff_t columnStride_ = 0;
  Read read_ = nullptr;
};

/// A list of numbers: one dimension, any layout and kind. Masked elements and NA become NaN.
std::vector<double> numbers(const py::object& list, const char* what);

/// A list of whole numbers. Throws ValueError for one with a fraction or out of a long's range.
std::vector<long> wholeNumbers(const py::object& list, const char* what);

/// A new array with these values.
py::array_t<double> arrayOf(const std::vector<double>& values);
py::array_t<std::int64_t> arrayOf(const std::vector<long>& values);

/// Makes patterns of rows: a NaN is an invalid measurement, stored as 0.
///
/// Reuse one for many rows, so that only the pattern itself takes memory.
class PatternMaker {
 public:
  explicit PatternMaker(std::ptrdiff_t width) : values_(static_cast<std::size_t>(width)) {}

  double* values() { return values_.data(); }
  /// The pattern of what stands in values(); its NaN are gone afterwards.
  vxFeaturePattern make();

 private:
  std::vector<double> values_;
  std::vector<long> invalid_;
};

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_ARRAYS_H_
