// SPDX-License-Identifier: MIT
#include "arrays.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace vxpy {
namespace {

template <class Element>
void readElements(const char* row, std::ptrdiff_t stride, std::ptrdiff_t count, double* values) {
  for (std::ptrdiff_t i = 0; i < count; ++i, row += stride) {
    Element element;
    std::memcpy(&element, row, sizeof element);  // arrays may lie unaligned
    values[i] = static_cast<double>(element);
  }
}

template <>
void readElements<double>(const char* row, std::ptrdiff_t stride, std::ptrdiff_t count,
                          double* values) {
  if (stride == sizeof(double)) {
    if (count != 0) std::memcpy(values, row, static_cast<std::size_t>(count) * sizeof(double));
    return;
  }
  for (std::ptrdiff_t i = 0; i < count; ++i, row += stride) {
    std::memcpy(values + i, row, sizeof(double));
  }
}

using Read = void (*)(const char*, std::ptrdiff_t, std::ptrdiff_t, double*);

/// How elements of the type are read; null for a kind that has to be converted first.
Read readerOf(const py::dtype& type) {
  const char order = type.byteorder();
  if (order != '=' && order != '|') return nullptr;
  const auto size = type.itemsize();
  switch (type.kind()) {
    case 'f':
      return size == 8 ? readElements<double> : size == 4 ? readElements<float> : nullptr;
    case 'i':
      return size == 8   ? readElements<std::int64_t>
             : size == 4 ? readElements<std::int32_t>
             : size == 2 ? readElements<std::int16_t>
                         : readElements<std::int8_t>;
    case 'u':
      return size == 8   ? readElements<std::uint64_t>
             : size == 4 ? readElements<std::uint32_t>
             : size == 2 ? readElements<std::uint16_t>
                         : readElements<std::uint8_t>;
    case 'b':
      return readElements<std::uint8_t>;
    default:
      return nullptr;
  }
}

/// A data frame's own conversion, as NA can't be made a float; `array` if it has none of that form.
py::array withoutNA(const py::object& frame, const py::array& array) {
  try {
    return frame.attr("to_numpy")(py::arg("dtype") = "float64",
                                  py::arg("na_value") = std::numeric_limits<double>::quiet_NaN());
  } catch (const py::error_already_set& error) {
    if (!error.matches(PyExc_TypeError)) throw;
    return array;
  }
}

/// What numpy makes of the object, with NaN for masked elements. Of a kind that readerOf() knows.
py::array numericArray(const py::object& object, const char* what) {
  py::object source = object;
  if (py::hasattr(object, "mask") && py::hasattr(object, "filled")) {
    source =
        object.attr("astype")("float64").attr("filled")(std::numeric_limits<double>::quiet_NaN());
  }
  py::array array = py::module_::import("numpy").attr("asarray")(source);
  if (array.dtype().kind() == 'O' && py::hasattr(source, "to_numpy"))
    array = withoutNA(source, array);
  const char kind = array.dtype().kind();
  if (std::strchr("cMmVUS", kind) != nullptr) {
    throw py::type_error(std::string(what) + " holds " +
                         py::str(array.dtype()).cast<std::string>() + ", not real numbers");
  }
  if (readerOf(array.dtype()) == nullptr) array = array.attr("astype")("float64");
  return array;
}

[[noreturn]] void refuseDimensions(const char* what, const py::array& array, const char* wanted) {
  throw py::value_error(std::string(what) + " has " + std::to_string(array.ndim()) +
                        " dimensions; " + wanted);
}

py::array listOf(const py::object& object, const char* what) {
  py::array array = numericArray(object, what);
  if (array.ndim() != 1) refuseDimensions(what, array, "a list of numbers has one");
  return array;
}

}  // namespace

Rows::Rows(const py::object& matrix, const char* what) {
  if (py::isinstance<vxFeaturePattern>(matrix)) {
    throw py::type_error(std::string(what) +
                         " is a FeaturePattern, one row; a batch has rows and measurements");
  }
  array_ = numericArray(matrix, what);
  if (array_.ndim() != 2) {
    refuseDimensions(what, array_,
                     "a batch has two, rows and measurements (one row: X.reshape(1, -1))");
  }
  base_ = static_cast<const char*>(array_.data());
  rows_ = array_.shape(0);
  columns_ = array_.shape(1);
  rowStride_ = array_.strides(0);
  columnStride_ = array_.strides(1);
  read_ = readerOf(array_.dtype());
}

std::vector<double> numbers(const py::object& list, const char* what) {
  const py::array array = listOf(list, what);
  std::vector<double> values(static_cast<std::size_t>(array.shape(0)));
  readerOf(array.dtype())(static_cast<const char*>(array.data()), array.strides(0), array.shape(0),
                          values.data());
  return values;
}

std::vector<long> wholeNumbers(const py::object& list, const char* what) {
  const py::array array = listOf(list, what);
  const char kind = array.dtype().kind();
  if (kind == 'f' || kind == 'u') {
    constexpr double kPastLongs = 9223372036854775808.0;
    for (const double number : numbers(array, what)) {
      if (!(std::floor(number) == number)) {
        throw py::value_error(std::string(what) + " holds a number that is not whole");
      }
      if (!(std::fabs(number) < kPastLongs)) {
        throw py::value_error(std::string(what) + " holds a number that is too large");
      }
    }
  }
  const auto integers = py::array_t<std::int64_t, py::array::c_style | py::array::forcecast>(array);
  const std::int64_t* const data = integers.data();
  return {data, data + integers.size()};
}

py::array_t<double> arrayOf(const std::vector<double>& values) {
  return py::array_t<double>(static_cast<py::ssize_t>(values.size()), values.data());
}

py::array_t<std::int64_t> arrayOf(const std::vector<long>& values) {
  py::array_t<std::int64_t> array(static_cast<py::ssize_t>(values.size()));
  std::int64_t* out = array.mutable_data();
  for (const long value : values) *out++ = value;
  return array;
}

vxFeaturePattern PatternMaker::make() {
  invalid_.clear();
  int numNaN = 0;  // counted without a branch, as there mostly is none
  for (const double value : values_) numNaN += value != value ? 1 : 0;
  for (std::size_t i = 0; numNaN != 0 && i < values_.size(); ++i) {
    if (!std::isnan(values_[i])) continue;
    invalid_.push_back(static_cast<long>(i));
    values_[i] = 0.0;
  }
  return vxFeaturePattern(values_, invalid_);
}

}  // namespace vxpy
